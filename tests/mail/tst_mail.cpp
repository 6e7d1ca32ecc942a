// SPDX-License-Identifier: GPL-3.0-or-later
// The mail layer without a network: addresses, texts, MIME encoding, the
// account, the sent-mail log, a trial run to .eml files, the password store.
#include "mail/mail.h"
#include "mail/mime.h"
#include "mail/passwords.h"
#include "settings/settingsstore.h"

#include <QTemporaryDir>
#include <QTest>

using namespace qor;
using namespace qor::mail;
using namespace Qt::StringLiterals;

class TestMail : public QObject {
    Q_OBJECT
    QTemporaryDir home;

private slots:
    void initTestCase()
    {
        qputenv("XDG_CONFIG_HOME", home.filePath(u"config"_s).toUtf8());
        qputenv("XDG_DATA_HOME", home.filePath(u"data"_s).toUtf8());
    }

    void addresses_data()
    {
        QTest::addColumn<QString>("field");
        QTest::addColumn<QStringList>("valid");
        QTest::addColumn<QStringList>("invalid");
        QTest::newRow("one") << u"a@example.com"_s << QStringList{"a@example.com"} << QStringList{};
        QTest::newRow("three, both separators") << u"a@example.com; b@example.org,c@example.net"_s
                                                << QStringList{"a@example.com", "b@example.org", "c@example.net"}
                                                << QStringList{};
        QTest::newRow("name, mailto, blanks") << u" Jane Doe <jane@Example.COM> ;; mailto:x@example.com,"_s
                                              << QStringList{"jane@example.com", "x@example.com"} << QStringList{};
        QTest::newRow("same twice") << u"a@example.com, a@EXAMPLE.com"_s << QStringList{"a@example.com"}
                                    << QStringList{};
        QTest::newRow("international domain") << u"info@bücher.de"_s << QStringList{"info@xn--bcher-kva.de"}
                                              << QStringList{};
        QTest::newRow("address literal") << u"a@[192.0.2.1]; b@[300.0.2.1]"_s << QStringList{"a@[192.0.2.1]"}
                                         << QStringList{"b@[300.0.2.1]"};
        const QStringList bad{"no-at-sign", "a@@b.com", "a@localhost", ".a@example.com", "a..b@example.com",
                              "a@-x.com", "a@example.123", "jörg@example.com", "a b@example.com", "a@exa_mple.com"};
        QTest::newRow("not addresses") << bad.join(u"; ") << QStringList{} << bad;
    }
    void addresses()
    {
        QFETCH(QString, field);
        QFETCH(QStringList, valid);
        QFETCH(QStringList, invalid);
        const AddressList list = splitAddresses(field);
        QCOMPARE(list.valid, valid);
        QCOMPARE(list.invalid, invalid);
    }

    void attachmentNames_data()
    {
        QTest::addColumn<int>("kind");
        QTest::addColumn<QString>("company");
        QTest::addColumn<QString>("period");
        QTest::addColumn<QString>("expected");
        QTest::newRow("invoice") << 0 << u"Acme Ltd"_s << u"May 2024"_s << u"Acme Ltd - invoice May 2024.pdf"_s;
        QTest::newRow("slashes") << 0 << u"A/B\\C"_s << u"2024/05"_s << u"A-B-C - invoice 2024-05.pdf"_s;
        QTest::newRow("statement") << 1 << u"Acme"_s << u"May"_s << u"Acme - statement 2024-05-02.pdf"_s;
        QTest::newRow("control characters") << 2 << u"Acme\tLtd\r\n"_s << u""_s << u"Acme Ltd - reminder 2024-05-02.pdf"_s;
        QTest::newRow("no company") << 0 << u" "_s << u"May"_s << u"invoice May.pdf"_s;
        // 200 bytes at most: 92 two-byte letters and the 16 of the end.
        QTest::newRow("long") << 0 << QString(300, u'é') << u"P"_s << QString(92, u'é') + u" - invoice P.pdf"_s;
    }
    void attachmentNames()
    {
        QFETCH(int, kind);
        QFETCH(QString, company);
        QFETCH(QString, period);
        QFETCH(QString, expected);
        QCOMPARE(attachmentName(MailKind(kind), company, period, QDate(2024, 5, 2)), expected);
    }

    void templates()
    {
        const TemplateFields f{u"Acme"_s, u"{amount} Jones"_s, u"May"_s, Money::fromCents(123456), u"06/01/2024"_s};
        const QLocale us(QLocale::English, QLocale::UnitedStates);
        QCOMPARE(fillTemplate(u"{company}: {customer} owes {amount} for {period} by {due date}"_s, f, us),
                 u"Acme: {amount} Jones owes $1,234.56 for May by 06/01/2024"_s);
        // Any case; unknown names and lone braces stay.
        QCOMPARE(fillTemplate(u"{Company} {unknown} { {period"_s, f, us), u"Acme {unknown} { {period"_s);
    }

    void quotedPrintable_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QByteArray>("expected");
        QTest::newRow("equals, umlaut") << u"a=b é"_s << QByteArray("a=3Db =C3=A9");
        QTest::newRow("blank at line end") << u"end \nnext\t"_s << QByteArray("end=20\r\nnext=09");
        QTest::newRow("long line") << QString(80, u'x') << QByteArray(75, 'x') + "=\r\n" + QByteArray(5, 'x');
        QTest::newRow("escape at the edge") << QString(74, u'x') + u"é"_s
                                            << QByteArray(74, 'x') + "=\r\n=C3=A9";
    }
    void quotedPrintable()
    {
        QFETCH(QString, text);
        QFETCH(QByteArray, expected);
        QCOMPARE(mail::quotedPrintable(text), expected);
    }

    void headerWords()
    {
        // Line breaks typed into a subject can't start a header; long and
        // non-ASCII text is cut into encoded words of whole characters.
        const QString subject = u"Rechnung für Mai\r\nBcc: x@example.com "_s + QString(40, u'€');
        const QByteArray h = encodeHeaderText(subject, 9);
        QString decoded;
        int used = 9;  // "Subject: "
        for (const QByteArray &line : h.split('\n')) {
            const QByteArray w = line.trimmed();
            QVERIFY(used + w.size() <= 76);
            used = 1;
            QVERIFY(w.startsWith("=?UTF-8?B?") && w.endsWith("?="));
            decoded += QString::fromUtf8(QByteArray::fromBase64(w.mid(10, w.size() - 12)));
        }
        QCOMPARE(decoded, u"Rechnung für Mai  Bcc: x@example.com "_s + QString(40, u'€'));
        QCOMPARE(encodeHeaderText(u"Invoice May"_s, 9), QByteArray("Invoice May"));
    }

    void accountInSettings()
    {
        MailAccount a = loadAccount();
        QCOMPARE(a.port, 465);
        QVERIFY(a.security == Security::SslTls && !a.sendMeACopy && !a.problem().isEmpty());
        QCOMPARE(loadTexts().subjectOf(MailKind::Reminder), u"Payment reminder from {company}"_s);  // the last of three
        settings::MailSecurity.store(u"STARTTLS"_s);
        QCOMPARE(loadAccount().port, 587);  // the port follows the security while none is stored
        a = {u"smtp.example.com"_s, 2525, Security::StartTls, u"me"_s, u"Me"_s, u"me@example.com"_s, {}, true, {}};
        saveAccount(a);
        const MailAccount b = loadAccount();
        QVERIFY(b.server == a.server && b.port == 2525 && b.security == Security::StartTls && b.sendMeACopy &&
                b.problem().isEmpty());
        a.replyTo = u"not an address"_s;
        QVERIFY(a.problem().contains(u"reply-to"_s));
    }

    void sentMailLog()
    {
        SentMailLog log(home.filePath(u"data/QOR/sent-mail.log"_s));
        QVERIFY(QDir().mkpath(home.filePath(u"data/QOR"_s)));
        QFile widened(log.path());  // made by hand, readable by all
        QVERIFY(widened.open(QIODevice::WriteOnly) && widened.write("not a time\tx\n") > 0);
        widened.close();
        QVERIFY(widened.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ReadOther));
        const QDateTime now(QDate(2025, 6, 15), QTime(12, 0));
        QVERIFY(log.append({{now.addMonths(-13).addDays(-1), u"1"_s, u"a@example.com"_s, u"old"_s, u"sent"_s},
                            {now.addMonths(-13).addDays(1), u"2"_s, u"b@example.com"_s, u"kept"_s, u"sent"_s},
                            {now, u"3"_s, u"c@example.com"_s, u"tab\there"_s, u"refused: 550\nno"_s}}));
        QCOMPARE(QFile::permissions(log.path()), QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser);
        QVERIFY(log.prune(now) && log.prune(now));  // the second finds nothing to drop
        QCOMPARE(QFile::permissions(log.path()) & QFile::ReadOther, QFile::Permissions());
        const auto e = log.entries();
        QCOMPARE(e.size(), 2);  // the unreadable line is kept, but isn't an entry
        QVERIFY(e[0].subject == u"kept" && e[1].subject == u"tab here" && e[1].result == u"refused: 550 no");
        QCOMPARE(e[1].time, now);
    }

    void trialRun()
    {
        const QList<MailCustomer> customers = {{u"1"_s, u"Ann"_s, u"ann@example.com"_s},
                                               {u"2"_s, u"Bob"_s, u""_s},
                                               {u"3"_s, u"Cy"_s, u"cy at example"_s},
                                               {u"4"_s, u"Di"_s, u"di@example.com; nobody"_s},
                                               {u"5"_s, u"Ed"_s, u"ed@example.com"_s}};
        MailAccount a;
        a.server = u"smtp.example.com"_s;
        a.senderAddress = u"me@example.com"_s;
        QTemporaryDir out;
        EmlFolder folder(out.path());
        SendRun run(a, folder);
        QStringList composed;
        run.onResult = [&](int i, const CustomerResult &) { if (i == 3) run.cancel(); };
        const auto results = run.run(customers, [&](const MailCustomer &c) {
            composed << c.number;
            return OutgoingMessage{u"Invoice"_s, u"Hello"_s, u"a.pdf"_s, QByteArray("%PDF-1.4"), {}};
        });
        using O = CustomerResult::Outcome;
        QCOMPARE(composed, QStringList({"1", "4"}));  // nothing is made for a customer without an address
        const QList<O> outcomes = {O::Written, O::NoAddress, O::BadAddress, O::Written, O::NotSent};
        for (int i = 0; i < 5; ++i)
            QVERIFY2(results[i].outcome == outcomes[i], qPrintable(outcomeText(results[i].outcome)));
        QCOMPARE(results[3].refused, QStringList{u"nobody: not an e-mail address"_s});
        QCOMPARE(folder.written(), QStringList({out.filePath(u"1.eml"_s), out.filePath(u"4.eml"_s)}));
        QFile eml(folder.written().first());
        QVERIFY(eml.open(QIODevice::ReadOnly) && eml.readAll().contains("\r\nTo: ann@example.com\r\n"));
    }

    void passwordWithoutKeyring()
    {
        MemoryPasswordStore store;
        QCOMPARE(&PasswordStore::current(), &store);
        store.keyringRunning = false;
        QVERIFY(store.fetchAndWait(u"k"_s).status == PasswordStore::Status::NoKeyring &&
                !store.keyringProblem().isEmpty());
        // What is typed without a keyring serves the run unasked: the e-mail settings window's test shows it.
        store.keyringRunning = true;  // and once it runs, it holds what is stored and the problem is gone
        store.store(u"other"_s, u"pw"_s);
        QTRY_COMPARE(store.entries.value(u"other"_s), u"pw"_s);
        QVERIFY(store.fetchAndWait(u"other"_s).password == u"pw" && store.keyringProblem().isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestMail)
#include "tst_mail.moc"
