// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// A local SMTP server (aiosmtpd, tests/mail/smtpserver.py) with TLS from a
// certificate made here with openssl, trusted through a CA file. Used by the
// mail tests and the mail benchmark.
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>

#include <memory>

namespace qor::testing {

class SmtpFixture {
public:
    QTemporaryDir tmp;
    QString error;

    // Makes a certificate authority and, signed by it, certificates for
    // "localhost" and for "wrong.example".
    bool makeCertificates()
    {
        const QString d = tmp.path() + u'/';
        for (const QString name : {u"ca"_qs, u"localhost"_qs, u"wrong.example"_qs}) {
            QStringList args{"req", "-x509", "-days", "2", "-nodes", "-newkey", "ec", "-pkeyopt",
                             "ec_paramgen_curve:prime256v1", "-subj", "/CN=" + name, "-keyout", d + name + ".key",
                             "-out", d + name + ".pem"};
            if (name != u"ca")
                args += QStringList{"-extensions", "v3_req", "-CA", caFile(), "-CAkey", d + "ca.key", "-addext",
                                    "subjectAltName=DNS:" + name + (name == u"localhost" ? ",IP:127.0.0.1" : "")};
            QProcess p;
            p.start(QStringLiteral("openssl"), args);
            if (!p.waitForFinished(60000) || p.exitCode() != 0) {
                error = QString::fromLocal8Bit(p.readAllStandardError());
                return false;
            }
        }
        return true;
    }
    QString caFile() const { return tmp.filePath(QStringLiteral("ca.pem")); }

    // Starts a server; tls "none", "starttls" or "implicit". Gives its port,
    // 0 when it didn't start.
    int start(const QString &tls, const QStringList &extra = {}, const QString &certName = QStringLiteral("localhost"))
    {
        stop();
        dir = std::make_unique<QTemporaryDir>();
        server = std::make_unique<QProcess>();
        server->setProcessChannelMode(QProcess::ForwardedErrorChannel);
        server->start(QStringLiteral(QOR_PYTHON3),
                      QStringList{QStringLiteral(QOR_SMTP_SERVER), "--dir", dir->path(), "--tls", tls, "--cert",
                                  tmp.filePath(certName + ".pem"), "--key", tmp.filePath(certName + ".key")} +
                          extra);
        while (!server->canReadLine())
            if (!server->waitForReadyRead(30000)) {
                error = QStringLiteral("the SMTP server did not start");
                return 0;
            }
        const QByteArray line = server->readLine().trimmed();
        error = QString::fromUtf8(line);
        return line.startsWith("READY ") ? line.mid(6).toInt() : 0;
    }
    void stop()
    {
        if (server) {
            server->kill();
            server->waitForFinished();
        }
        server.reset();
    }
    ~SmtpFixture() { stop(); }

    QStringList events() const
    {
        QFile f(dir->filePath(QStringLiteral("events.log")));
        return f.open(QIODevice::ReadOnly) ? QString::fromUtf8(f.readAll()).split(u'\n', Qt::SkipEmptyParts)
                                           : QStringList();
    }
    // The n-th message (from 1) as Python's email package read it.
    QJsonObject message(int n) const
    {
        QFile f(dir->filePath(QStringLiteral("msg%1.json").arg(n)));
        return f.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(f.readAll()).object() : QJsonObject();
    }
    QString attachmentPath(int n) const { return dir->filePath(QStringLiteral("msg%1.pdf").arg(n)); }

    std::unique_ptr<QTemporaryDir> dir;
    std::unique_ptr<QProcess> server;
};

}  // namespace qor::testing
