// SPDX-License-Identifier: GPL-3.0-or-later
// Sending to a real SMTP server on the loopback address (aiosmtpd) with TLS
// from a certificate made by the test: what arrives, as a mail reader parses
// it; runs that stop; the settings and run windows; the command line.
#include "smtpfixture.h"

#include "../database/dbfiletest.h"
#include "database/database.h"

#include "mail/mail.h"
#include "mail/passwords.h"
#include "mail/smtp.h"
#include "mailgui/emailrun.h"
#include "mailgui/frmemailsettings.h"
#include "settings/settingsstore.h"
#include "uiservices/dialogservice.h"

#include <QJsonArray>
#include <QLabel>
#include <QLineEdit>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTest>
#include <QTreeWidget>

using namespace qor;
using namespace qor::mail;
using namespace Qt::StringLiterals;

namespace {

const QString Password = u"pässword 1"_s;

MailAccount account(int port, Security s)
{
    return {u"localhost"_s, port, s, u"billing"_s, u"Bäcker & Co"_s, u"billing@example.com"_s, u"office@example.com"_s, true, {}};
}

// The customer's attachment: bytes of its own over many lines of base64.
QByteArray attachmentOf(const MailCustomer &c) { return "%PDF-1.4\n" + c.name.toUtf8().repeated(300); }

OutgoingMessage invoiceFor(const MailCustomer &c)
{
    const TemplateFields f{u"Bäcker & Co"_s, c.name, u"Mai/Juni"_s, Money::fromCents(9750), u"07/31/2026"_s};
    const MessageTexts t = composeTexts(loadTexts(), MailKind::Invoice, f, QDate(2026, 7, 1));
    const QString subject = u"Rechnung für "_s + c.name + u"\r\nBcc: spy@example.com"_s;
    return {subject, t.body, t.attachmentName, attachmentOf(c), {}};
}

}  // namespace
Q_DECLARE_METATYPE(qor::mail::Security)

class TestSmtp : public QObject {
    Q_OBJECT
    testing::SmtpFixture smtp;
    QTemporaryDir home;

    QList<CustomerResult> send(const MailAccount &a, const QList<MailCustomer> &customers, int *connections = nullptr)
    {
        SmtpOptions o = SmtpOptions::forAccount(a, Password);
        o.caFile = smtp.caFile();
        SmtpSession session(o);
        SentMailLog log;
        const auto results = SendRun(a, session, &log).run(customers, invoiceFor);
        if (connections) *connections = session.connectionsMade();
        return results;
    }

private slots:
    void initTestCase()
    {
        qputenv("XDG_CONFIG_HOME", home.filePath(u"config"_s).toUtf8());
        qputenv("XDG_DATA_HOME", home.filePath(u"data"_s).toUtf8());
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
        QVERIFY2(smtp.makeCertificates(), qPrintable(smtp.error));
    }

    void messagesArrive_data()
    {
        QTest::addColumn<QString>("tls");
        QTest::addColumn<Security>("security");
        QTest::newRow("STARTTLS") << u"starttls"_s << Security::StartTls;
        QTest::newRow("SSL/TLS") << u"implicit"_s << Security::SslTls;
    }
    void messagesArrive()
    {
        QFETCH(Security, security);
        QFETCH(QString, tls);
        const int port = smtp.start(tls, {"--user", "billing", "--password", Password, "--reject",
                                          "gone@example.org"});
        QVERIFY2(port, qPrintable(smtp.error));
        int connections = 0;
        const auto r = send(account(port, security),
                            {{u"7"_s, u"Jörg Meadows"_s, u"joerg@example.org; gone@example.org"_s},
                             {u"8"_s, u"No Mail"_s, u""_s},
                             {u"9"_s, u"Ann Oak"_s, u"Ann <ann@example.net>"_s}},
                            &connections);
        using O = CustomerResult::Outcome;
        QVERIFY(r[0].outcome == O::Sent && r[1].outcome == O::NoAddress && r[2].outcome == O::Sent);
        QCOMPARE(r[0].sentTo, QStringList{u"joerg@example.org"_s});
        QVERIFY2(r[2].words.startsWith(u"250 2.0.0 Ok: queued as Q2"_s), qPrintable(r[2].words));
        QVERIFY2(r[0].refused.value(0).contains(u"550 5.1.1 <gone@example.org>: Recipient address rejected"_s),
                 qPrintable(r[0].refused.join(u'|')));
        QCOMPARE(connections, 1);  // one connection for the whole run
        QStringList expected = {"connect", "auth tls=True", "message 1", "message 2"};
        if (security == Security::StartTls) expected.insert(1, u"starttls"_s);
        QCOMPARE(smtp.events(), expected);

        const QJsonObject m = smtp.message(1);
        for (const auto &[key, want] : {std::pair{"subject", u"Rechnung für Jörg Meadows  Bcc: spy@example.com"_s},
                                        {"from", u"Bäcker & Co <billing@example.com>"_s},
                                        {"reply-to", u"office@example.com"_s},
                                        {"to", u"joerg@example.org, gone@example.org"_s},
                                        {"attachment_type", u"application/pdf"_s},
                                        {"filename", u"Bäcker & Co - invoice Mai-Juni.pdf"_s}})
            QCOMPARE(m[QLatin1String(key)].toString(), want);
        QVERIFY2(m[u"bcc"].isNull() && m[u"defects"].toArray().isEmpty() && m[u"date_ok"].toBool(),
                 QJsonDocument(m).toJson().constData());
        QVERIFY(m[u"max_line"].toInt() <= 78 && m[u"message-id"].toString().endsWith(u"@example.com>"_s));
        QCOMPARE(m[u"rcpt_tos"].toVariant().toStringList(), QStringList({"joerg@example.org", "billing@example.com"}));
        QVERIFY2(m[u"body"].toString().contains(u"Dear Jörg Meadows,\n\nplease find attached our invoice for "
                                                "Mai/Juni. The amount of $97.50 is due by 07/31/2026."_s),
                 qPrintable(m[u"body"].toString()));
        QCOMPARE(dbtest::readFile(smtp.attachmentPath(1)), attachmentOf(r[0].customer));

        // One line per address in the log, the refused one with the server's words.
        const auto log = SentMailLog().entries().mid(SentMailLog().entries().size() - 3);
        QVERIFY(log[0].result == u"sent" && log[1].address == u"gone@example.org" &&
                log[1].result.startsWith(u"refused: 550 5.1.1"_s) && log[2].address == u"ann@example.net");
    }

    // Every run below stops at the message it fails (the first but for a
    // dropped connection), says why, sends nothing more, and never gives the
    // password to a connection without TLS.
    void stopsRun_data()
    {
        QTest::addColumn<QString>("tls");
        QTest::addColumn<Security>("security");
        QTest::addColumn<QStringList>("server");
        QTest::addColumn<QString>("cert");
        QTest::addColumn<int>("failed");
        QTest::addColumn<QString>("reason");
        const QStringList ok{"--user", "billing", "--password", Password}, drop{"--drop-at", "2"};
        const QString host = u"localhost"_s;
        QTest::newRow("no TLS, STARTTLS asked") << u"none"_s << Security::StartTls << ok << host << 0
                                                << u"offers no encryption"_s;
        QTest::newRow("no TLS, SSL/TLS asked") << u"none"_s << Security::SslTls << ok << host << 0
                                               << u"No encrypted connection"_s;
        QTest::newRow("wrong host name") << u"implicit"_s << Security::SslTls << ok << u"wrong.example"_s << 0
                                         << u"certificate could not be verified"_s;
        QTest::newRow("wrong password") << u"starttls"_s << Security::StartTls
                                        << QStringList{"--user", "billing", "--password", "guess"} << host << 0
                                        << u"refused the user name or password. (535"_s;
        QTest::newRow("dropped connection") << u"starttls"_s << Security::StartTls << ok + drop << host << 1
                                            << u"connection to the server was lost"_s;
    }
    void stopsRun()
    {
        QFETCH(QString, tls);
        QFETCH(Security, security);
        QFETCH(QStringList, server);
        QFETCH(QString, cert);
        QFETCH(int, failed);
        QFETCH(QString, reason);
        const int port = smtp.start(tls, server, cert);
        QVERIFY2(port, qPrintable(smtp.error));
        QList<MailCustomer> customers;
        for (int i = 1; i <= 3; ++i)
            customers << MailCustomer{QString::number(i), u"C%1"_s.arg(i), u"c%1@example.org"_s.arg(i)};
        const auto r = send(account(port, security), customers);
        using O = CustomerResult::Outcome;
        for (int i = 0; i < 3; ++i)
            QCOMPARE(int(r[i].outcome), int(i < failed ? O::Sent : i == failed ? O::Failed
                                                                               : O::NotSent));
        QVERIFY2(r[failed].words.contains(reason), qPrintable(r[failed].words));
        QVERIFY(r[failed + 1].words.contains(u"run stopped"_s));
        const QStringList events = smtp.events();
        QVERIFY2(events.filter(u"auth tls=False"_s).isEmpty() && events.filter(u"message"_s).size() == failed,
                 qPrintable(events.join(u'|')));
    }

    void settingsWindowAndRunWindow()
    {
        const int port = smtp.start(u"implicit"_s, {"--user", "billing", "--password", Password});
        QVERIFY2(port, qPrintable(smtp.error));
        settings::CAFile.set(smtp.caFile());
        MemoryPasswordStore keyring;
        keyring.keyringRunning = false;
        ScriptedDialogs dialogs;
        {
            FrmEmailSettings w;
            QSignalSpy read(&w, &FrmEmailSettings::passwordRead);
            QVERIFY(read.wait());
            QVERIFY(w.keyringLine()->text().startsWith(u"No keyring service is running"_s));
            w.findChild<QSpinBox *>(u"txtPort"_s)->setValue(port);
            for (const auto &[name, text] : {std::pair{"txtServer", u"localhost"_s},
                                             {"txtUser", u"billing"_s},
                                             {"txtPassword", Password},
                                             {"txtSenderAddress", u"billing@example.com"_s}}) {
                auto *e = w.findChild<QLineEdit *>(QString::fromLatin1(name));
                e->setFocus();
                e->insert(text);  // as typed: textEdited, then leaving the field
                emit e->editingFinished();
            }
            const Delivery d = w.cmdSendTestClick();
            QVERIFY2(d.status == Delivery::Status::Delivered, qPrintable(d.reason));
            QVERIFY2(dialogs.last().message.text.endsWith(u"The server answered: 250 2.0.0 Ok: queued as Q1"_s),
                     qPrintable(dialogs.last().message.text));
        }
        const QByteArray stored = dbtest::readFile(settings::storePath());
        QVERIFY(stored.contains("SmtpServer=localhost") && !stored.contains("ssword") && keyring.entries.isEmpty());

        // The run: the password typed above serves the whole run, unasked.
        const MailAccount a = loadAccount();
        const auto password = passwordForRun(nullptr, a);
        QVERIFY(password == Password && dialogs.seen.size() == 1);  // only the test message's box: no question
        SmtpSession session(SmtpOptions::forAccount(a, *password));
        SendRun run(a, session);
        FrmEmailRun w(run, {{u"1"_s, u"Ann"_s, u"ann@example.org"_s}, {u"2"_s, u"Bob"_s, u""_s}}, invoiceFor);
        QSignalSpy finished(&w, &FrmEmailRun::runFinished);
        w.start();
        QVERIFY(finished.wait(60000));
        QCOMPARE(w.summaryLine()->text(), u"1 sent, 1 no address."_s);
        QCOMPARE(w.resultList()->topLevelItem(0)->text(1), u"sent"_s);
    }

    // qorvane-cli email: a period's invoices sent with the stored account
    // (the password from the environment), statements written as .eml files
    // a mail reader parses, and the command line checked.
    void commandLine()
    {
        const int port = smtp.start(u"starttls"_s, {"--user", "billing", "--password", Password});
        QVERIFY2(port, qPrintable(smtp.error));
        saveAccount(account(port, Security::StartTls));
        settings::CAFile.set(smtp.caFile());
        Database db;
        {
            test::TablesEdit tables(db);
            tables.company[0] = u"Acme"_s;
            tables.customers.add("1k",
                                 dbtest::fields({"Oak, Ann", "Ann", "Oak", "", "", "", "ann@example.org", "", ""}));
            tables.customers.add("2k", dbtest::fields({"Bell, Bo", "Bo", "Bell", "", "", "", "", "", ""}));
            for (const char *c : {"1", "2"})
                tables.invoiceRecords.add(dbtest::fields({"May", c, ""}), dbtest::fields({"May", "", c, "12.34", "5x3", ""}));
            tables.periods.add(u"May"_s + FieldSep, dbtest::fields({"2024/05/01", "May", "2024/05/31", "2024/06/15"}));
            tables.items.add("5k", u"000000005.00$5.00 - Five"_s);
        }
        const QString file = home.filePath(u"shop.xml"_s), outbox = home.filePath(u"outbox"_s);
        QVERIFY(db.save(file).ok);
        auto run = [&file](const QStringList &args) {
            QProcess p;
            QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
            env.insert(u"QORVANE_SMTP_PASSWORD"_s, Password);
            env.insert(u"LC_ALL"_s, u"en_US.UTF-8"_s);
            p.setProcessEnvironment(env);
            p.start(QStringLiteral(QORVANE_CLI_PATH), QStringList{u"email"_s, file} + args);
            p.waitForFinished(60000);
            return std::pair{p.exitCode(), QString::fromUtf8(p.readAllStandardOutput())};
        };
        const auto [rc, out] = run({u"--period"_s, u"May"_s});
        QVERIFY2(rc == 0 && out.contains(u"\tsent\t250 "_s) && out.contains(u"\tno address\n"_s) && out.endsWith(u"\n1 sent\n"_s), qPrintable(out));
        QCOMPARE(smtp.message(1)[u"filename"].toString(), u"Acme - invoice May.pdf"_s);
        QProcess pdf;
        pdf.start(u"pdftotext"_s, {smtp.attachmentPath(1), u"-"_s});
        QVERIFY(pdf.waitForFinished(60000));
        const QString page = QString::fromUtf8(pdf.readAllStandardOutput());
        QVERIFY2(page.contains(u"Ann"_s) && page.contains(u"$12.34"_s) && !page.contains(u"Bo"_s), qPrintable(page));
        // A trial run writes the statements as messages (of the form the server parsed above).
        QCOMPARE(run({u"--statements"_s, u"--dry-run"_s, outbox}).first, 0);
        const QByteArray eml = dbtest::readFile(outbox + u"/1.eml"_s);
        const QString name = u"Acme - statement "_s + QDate::currentDate().toString(u"yyyy-MM-dd"_s) + u".pdf"_s;
        QVERIFY2(eml.contains("filename=\"" + name.toLatin1() + '"'), eml.left(1000).constData());
        for (const auto &[args, status] : {std::pair{QStringList{u"--period"_s, u"June"_s}, 4},
                                           {{u"--period"_s, u"May"_s, u"--statements"_s}, 1},
                                           {{u"--statements"_s, u"--customer"_s, u"1x"_s}, 1},
                                           {{u"--reminders"_s, u"9999"_s}, 5}})
            QCOMPARE(run(args).first, status);
    }
};

QTEST_MAIN(TestSmtp)
#include "tst_smtp.moc"
