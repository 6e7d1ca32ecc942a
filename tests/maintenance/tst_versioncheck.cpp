// SPDX-License-Identifier: GPL-3.0-or-later
// The version check against local servers: an HTTPS server with a self-signed
// certificate this test makes and trusts, one with a certificate nobody
// trusts, a plain HTTP server, a closed port and a server that never answers.
#include "../customers/panelharness.h"
#include "maintenance/frmupdate.h"
#include "maintenance/versioncheck.h"

#include <QDir>
#include <QProcess>
#include <QSignalSpy>
#include <QSslConfiguration>
#include <QSslKey>
#include <QSslServer>
#include <QSslSocket>
#include <QTcpServer>
#include <QTcpSocket>

using namespace qor;
using namespace qor::maintenance;
using namespace qor::testing;
using namespace Qt::StringLiterals;

namespace {

// Answers every request with one fixed response, or never when it is empty;
// over TLS with the certificate given, else over plain HTTP.
class Responder : public QSslServer {
public:
    QByteArray response;
    QStringList paths;  // request lines seen

    Responder(const QSslCertificate &cert = {}, const QSslKey &key = {})
    {
        QSslConfiguration c = QSslConfiguration::defaultConfiguration();
        c.setLocalCertificate(cert);
        c.setPrivateKey(key);
        c.setPeerVerifyMode(QSslSocket::VerifyNone);
        setSslConfiguration(c);
        connect(this, &QTcpServer::pendingConnectionAvailable, this, [this] {
            while (QTcpSocket *s = nextPendingConnection())
                serve(s);
        });
        listen(QHostAddress::LocalHost);
    }
    QUrl url(const QString &scheme, const QString &path = u"/qorver.txt"_s) const
    {
        return QUrl(u"%1://127.0.0.1:%2%3"_s.arg(scheme).arg(serverPort()).arg(path));
    }

protected:
    void incomingConnection(qintptr handle) override
    {
        if (!sslConfiguration().localCertificate().isNull())
            return QSslServer::incomingConnection(handle);
        auto *s = new QTcpSocket(this);  // plain HTTP: no handshake
        s->setSocketDescriptor(handle);
        addPendingConnection(s);
    }

private:
    void serve(QTcpSocket *s)
    {
        QObject::connect(s, &QTcpSocket::readyRead, s, [this, s] {
            QByteArray &seen = m_buffers[s];
            seen += s->readAll();
            if (!seen.contains("\r\n\r\n"))
                return;
            paths << QString::fromLatin1(seen.left(seen.indexOf("\r\n")));
            seen.clear();
            if (response.isEmpty())
                return;  // hold the connection open, say nothing
            s->write(response);
            s->disconnectFromHost();
        });
    }
    QHash<QTcpSocket *, QByteArray> m_buffers;
};

QByteArray ok(const QByteArray &body, int status = 200)
{
    return "HTTP/1.1 " + QByteArray::number(status) + " X\r\nContent-Type: text/plain\r\nContent-Length: " +
           QByteArray::number(body.size()) + "\r\nConnection: close\r\n\r\n" + body;
}

}  // namespace

class TstVersionCheck : public QObject {
    Q_OBJECT
    QTemporaryDir tmp;
    QSslCertificate trusted, untrusted;
    QSslKey trustedKey, untrustedKey;

    // A self-signed certificate for 127.0.0.1 made with openssl.
    void makeCertificate(const QString &name, QSslCertificate &cert, QSslKey &key)
    {
        const QString c = tmp.filePath(name + u".crt"_s), k = tmp.filePath(name + u".key"_s);
        QProcess openssl;
        openssl.start(u"openssl"_s, {u"req"_s, u"-x509"_s, u"-newkey"_s, u"ec"_s, u"-pkeyopt"_s,
                                     u"ec_paramgen_curve:prime256v1"_s, u"-nodes"_s, u"-days"_s, u"2"_s,
                                     u"-subj"_s, u"/CN=127.0.0.1"_s, u"-addext"_s, u"subjectAltName=IP:127.0.0.1"_s,
                                     u"-keyout"_s, k, u"-out"_s, c});
        QVERIFY2(openssl.waitForFinished(60000) && openssl.exitCode() == 0, openssl.readAllStandardError().constData());
        QFile cf(c), kf(k);
        QVERIFY(cf.open(QIODevice::ReadOnly) && kf.open(QIODevice::ReadOnly));
        cert = QSslCertificate(cf.readAll()), key = QSslKey(kf.readAll(), QSsl::Ec);
        QVERIFY(!cert.isNull() && !key.isNull());
    }

    // Runs one check with window as the main window: the outcome and the
    // message boxes it showed.
    struct Run {
        VersionCheck::Outcome outcome;
        QStringList messages;
        bool returnedAtOnce;
    };
    Run check(QWidget &window, std::chrono::milliseconds timeout = std::chrono::milliseconds(10000))
    {
        Answerer a;
        a.answer = QMessageBox::Ok;
        VersionCheck *vc = VersionCheck::of(&window);
        vc->setTimeout(timeout);
        QSignalSpy done(vc, &VersionCheck::finished);
        Run r{VersionCheck::Outcome::Failed, {}, false};
        if (!vc->start())
            return r;
        r.returnedAtOnce = done.isEmpty();  // the window stays live while the request runs
        if (!done.wait(30000))
            return r;
        r.outcome = done.first().first().value<VersionCheck::Outcome>();
        for (const auto &s : a.seen()) {
            if (s.title != u"QOR" || s.buttons != QMessageBox::Ok)
                r.messages << u"(wrong box: %1)"_s.arg(s.title);
            r.messages << s.text;
        }
        return r;
    }

private slots:
    void initTestCase()
    {
        QVERIFY(tmp.isValid());
        qputenv("XDG_CONFIG_HOME", tmp.filePath(u"config"_s).toLocal8Bit());
        makeCertificate(u"trusted"_s, trusted, trustedKey);
        makeCertificate(u"untrusted"_s, untrusted, untrustedKey);
        // Trusted by this process as the system's own authorities are.
        QSslConfiguration conf = QSslConfiguration::defaultConfiguration();
        conf.addCaCertificate(trusted);
        QSslConfiguration::setDefaultConfiguration(conf);
    }
    void cleanup()
    {
        delete FrmUpdate::existing();
        qunsetenv(VersionUrlVariable);
    }

    void answers_data()
    {
        QTest::addColumn<QByteArray>("response");
        QTest::addColumn<int>("outcome");
        using O = VersionCheck::Outcome;
        QTest::newRow("equal") << ok("3019000\r\n") << int(O::UpToDate);
        QTest::newRow("higher revision") << ok("3019001") << int(O::NewVersion);
        QTest::newRow("higher, more fields") << ok("3020000,3.20,notes\r\nignored") << int(O::NewVersion);
        QTest::newRow("quoted first field") << ok("\"3019001\",x") << int(O::NewVersion);
        QTest::newRow("lower") << ok("3018999") << int(O::UpToDate);
        QTest::newRow("blanks around the number") << ok(" 3019001 \r\n") << int(O::NewVersion);
        QTest::newRow("ten digits") << ok("9999999999") << int(O::NewVersion);
        QTest::newRow("eleven digits") << ok("99999999999") << int(O::Failed);
        QTest::newRow("exponent") << ok("1e300") << int(O::Failed);
        QTest::newRow("sign") << ok("+3019001") << int(O::Failed);
        QTest::newRow("empty first field") << ok(",3019001") << int(O::Failed);
        QTest::newRow("empty body") << ok("") << int(O::Failed);
        QTest::newRow("blanks only") << ok(" \r\n\t\r\n") << int(O::Failed);
        QTest::newRow("binary") << ok(QByteArray("3019001\0", 8)) << int(O::Failed);
        QTest::newRow("too large") << ok("3019001\r\n" + QByteArray(MaxVersionFileSize, 'x')) << int(O::Failed);
        QTest::newRow("not found") << ok("3019001", 404) << int(O::Failed);
    }
    void answers()
    {
        QFETCH(QByteArray, response);
        QFETCH(int, outcome);
        Responder server(trusted, trustedKey);
        QVERIFY(server.isListening());
        server.response = response;
        qputenv(VersionUrlVariable, server.url(u"https"_s).toEncoded());
        const QStringList before = QDir(QCoreApplication::applicationDirPath()).entryList(QDir::Files);

        QWidget window;
        window.show();
        const Run r = check(window);
        QVERIFY(r.returnedAtOnce);
        QCOMPARE(int(r.outcome), outcome);
        QCOMPARE(server.paths, QStringList{u"GET /qorver.txt HTTP/1.1"_s});
        // A new version shows the form, owned (it stays above the main window) and modeless; else one message.
        const bool fresh = outcome == int(VersionCheck::Outcome::NewVersion);
        QCOMPARE(r.messages, fresh ? QStringList()
                             : outcome == int(VersionCheck::Outcome::Failed)
                                 ? QStringList{unableToConnectText()}
                                 : QStringList{u"You are currently running the latest version of the software."_s});
        QCOMPARE(FrmUpdate::existing() != nullptr, fresh);
        if (fresh)
            QVERIFY(FrmUpdate::isShowing() && FrmUpdate::existing()->parentWidget() == &window &&
                    !FrmUpdate::existing()->isModal());
        // Nothing is written anywhere: no local copy in the program's folder.
        QCOMPARE(QDir(QCoreApplication::applicationDirPath()).entryList(QDir::Files), before);
    }

    void connectionFailures_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::newRow("certificate nobody trusts") << u"untrusted"_s;
        QTest::newRow("plain http address") << u"plain"_s;
        QTest::newRow("redirect to plain http") << u"redirect"_s;
        QTest::newRow("refused connection") << u"refused"_s;
        QTest::newRow("server never answers") << u"silent"_s;
    }
    void connectionFailures()
    {
        QFETCH(QString, kind);
        Responder good(trusted, trustedKey), bad(untrusted, untrustedKey), plain;
        for (Responder *r : {&good, &bad, &plain}) r->response = ok("3019001");
        QUrl url = good.url(u"https"_s);
        if (kind == u"untrusted")
            url = bad.url(u"https"_s);
        else if (kind == u"plain")
            url = plain.url(u"http"_s);
        else if (kind == u"redirect")
            good.response = "HTTP/1.1 302 Found\r\nLocation: " + plain.url(u"http"_s).toEncoded() +
                            "\r\nContent-Length: 0\r\nConnection: close\r\n\r\n";
        else if (kind == u"silent")
            good.response.clear();
        else if (kind == u"refused") {
            QTcpServer gone;
            QVERIFY(gone.listen(QHostAddress::LocalHost));
            url = QUrl(u"https://127.0.0.1:%1/qorver.txt"_s.arg(gone.serverPort()));
        }
        qputenv(VersionUrlVariable, url.toEncoded());

        QWidget window;
        window.show();
        // A timer of the window keeps running while the request waits.
        int ticks = 0;
        QTimer tick;
        connect(&tick, &QTimer::timeout, [&] { ++ticks; });
        tick.start(20);
        const Run r = check(window, std::chrono::milliseconds(kind == u"silent" ? 500 : 10000));
        QCOMPARE(int(r.outcome), int(VersionCheck::Outcome::Failed));
        QCOMPARE(r.messages, QStringList{unableToConnectText()});
        QVERIFY(!FrmUpdate::existing() && plain.paths.isEmpty());  // nothing was asked over plain HTTP
        if (kind == u"silent") QVERIFY2(good.paths.size() == 1 && ticks >= 10, qPrintable(QString::number(ticks)));
    }

    void oneCheckAtATime()
    {
        Responder server(trusted, trustedKey);  // never answers
        qputenv(VersionUrlVariable, server.url(u"https"_s).toEncoded());
        auto window = std::make_unique<QWidget>();
        VersionCheck *vc = VersionCheck::of(window.get());
        vc->setTimeout(std::chrono::milliseconds(300));
        QCOMPARE(VersionCheck::of(window.get()), vc);  // one per window
        Answerer a;
        a.answer = QMessageBox::Ok;
        QSignalSpy done(vc, &VersionCheck::finished);
        QVERIFY(vc->start() && !vc->start());
        QVERIFY(done.wait(10000));
        QTest::qWait(100);
        QVERIFY(done.size() == 1 && a.seen().size() == 1 && !vc->isRunning());
        // A later one runs again; the window gone during it takes the request along, and nothing is shown.
        vc->setTimeout(std::chrono::milliseconds(10000));
        QVERIFY(vc->start());
        QTRY_COMPARE(server.paths.size(), 2);
        window.reset();
        QTest::qWait(200);
        QVERIFY(a.seen().size() == 1 && !FrmUpdate::existing());
    }
};

QTEST_MAIN(TstVersionCheck)
#include "tst_versioncheck.moc"
