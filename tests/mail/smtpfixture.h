// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// A local SMTP server (aiosmtpd, tests/mail/smtpserver.py) with TLS from a
// certificate made here with openssl, trusted through a CA file. Used by the
// mail tests and the mail benchmark.
#include <QDir>
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
        auto run = [this](const QStringList &args) {
            QProcess p;
            p.start(QStringLiteral("openssl"), args);
            if (p.waitForFinished(60000) && p.exitCode() == 0) return true;
            error = QString::fromLocal8Bit(p.readAllStandardError());
            return false;
        };
        const QStringList ec = {QStringLiteral("-newkey"), QStringLiteral("ec"), QStringLiteral("-pkeyopt"),
                                QStringLiteral("ec_paramgen_curve:prime256v1"), QStringLiteral("-nodes")};
        if (!run(QStringList{"req", "-x509", "-days", "2", "-subj", "/CN=Qorvane Test CA", "-keyout", d + "ca.key",
                             "-out", caFile()} +
                 ec))
            return false;
        for (const QString name : {QStringLiteral("localhost"), QStringLiteral("wrong.example")}) {
            QFile ext(d + name + ".ext");
            if (!ext.open(QIODevice::WriteOnly)) return false;
            ext.write("subjectAltName=DNS:" + name.toLatin1() + (name == u"localhost" ? ",IP:127.0.0.1\n" : "\n"));
            ext.close();
            if (!run(QStringList{"req", "-subj", "/CN=" + name, "-keyout", d + name + ".key", "-out",
                                 d + name + ".csr"} +
                     ec) ||
                !run({"x509", "-req", "-in", d + name + ".csr", "-CA", caFile(), "-CAkey", d + "ca.key",
                      "-CAcreateserial", "-days", "2", "-extfile", ext.fileName(), "-out", d + name + ".pem"}))
                return false;
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
