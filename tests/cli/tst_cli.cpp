// SPDX-License-Identifier: GPL-3.0-or-later
// qorvane-cli run as a separate program: its output, exit codes, and that it
// neither creates nor overwrites what it must not.
#include "../database/dbfiletest.h"
#include "../pages/pdfwords.h"
#include "database/money.h"
#include "database/regional.h"
#include "database/rowtypes.h"
#include "settings/settingsstore.h"
#include "tablesedit.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QRandomGenerator>
#include <QRegularExpression>

#include <sys/mount.h>
#include <sys/stat.h>
#include <cmath>

using namespace qor;
using namespace dbtest;

namespace {

struct Run {
    int exitCode = -1;
    QString out, err;
};

Run cli(const QStringList &args, const QString &locale = QStringLiteral("en_US"))
{
    QProcess p;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("LC_ALL"), locale + QStringLiteral(".UTF-8"));
    p.setProcessEnvironment(env);
    p.start(QStringLiteral(QORVANE_CLI_PATH), args);
    if (!p.waitForFinished(60000) || p.exitStatus() != QProcess::NormalExit) return {};
    return {p.exitCode(), QString::fromLocal8Bit(p.readAllStandardOutput()),
            QString::fromLocal8Bit(p.readAllStandardError())};
}

// Standard output of a run that succeeds; else its status and what it said.
QString ok(const QStringList &args)
{
    const Run r = cli(args);
    return r.exitCode == 0 ? r.out : QStringLiteral("status %1: %2").arg(r.exitCode).arg(r.err);
}

}  // namespace

class TestCli : public QObject {
    Q_OBJECT
    QTemporaryDir dir;
    QHash<QString, QString> place;  // the files the tests share, by a short name

private slots:
    void initTestCase()
    {
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
        QVERIFY(dir.isValid());
        qputenv("XDG_CONFIG_HOME", dir.filePath(QStringLiteral("config")).toUtf8());
        for (const char *name : {"books", "dup", "empty", "missing", "out", "alias", "pipe"})
            place.insert(u'%' + QLatin1String(name), dir.filePath(QLatin1String(name) + QStringLiteral(".xml")));
        place.insert("%nowhere", dir.filePath("no/such/folder/out.xml"));
        place.insert("%books", dir.filePath("%2 pay1roll.xml"));  // a name that isn't formatted again
        QCOMPARE(::mkfifo(QFile::encodeName(place["%pipe"]).constData(), 0600), 0);
        QVERIFY(writeFile(place["%dup"], crlf({"<Customers>", "<Customer CID=\"3\">", "</Customer>",
                                               "<Customer CID=\"3\">", "</Customer>", "</Customers>"})));

        // Books to print: four customers, of whom one archived and one paid up.
        Database db;
        qor::test::TablesEdit tables(db);
        tables.company[0] = QStringLiteral("Acme & Sons");
        tables.company[1] = QStringLiteral("9 Mill Road");
        tables.customers.add("1k", fields({"Ames, Al", "Al", "Ames", "1 Elm St", "", "Townsville", "", "", ""}));
        tables.customers.add("2k", fields({"zzzz\u00BBBell, Bo", "Bo", "Bell", "", "", "", "", "", ""}));
        tables.customers.add("3k", fields({"Cole, Cy", "Cy", "Cole", "", "", "", "", "", ""}));
        tables.customers.add("4k", fields({"Dunn, Di", "Di", "Dunn", "", "", "", "", "", ""}));
        tables.periods.add(QStringLiteral("May") + FieldSep, fields({"2024/05/01", "May", "2024/05/31", "2024/06/15"}));
        tables.items.add("5k", QStringLiteral("000000005.00$5.00 - Five"));
        tables.items.add("6k", QStringLiteral("000000006.00$6.00 - Six"));
        tables.invoiceRecords.add(fields({"May", "1", ""}), fields({"May", "Ames, Al", "1", "17", "5\u00026x2", ""}));
        tables.invoiceRecords.add(fields({"May", "3", ""}), fields({"May", "Cole, Cy", "3", "0", "5", ""}));
        tables.invoiceRecords.add(fields({"May", "4", ""}), fields({"May", "Dunn, Di", "4", "6", "6", ""}));
        // For check: a price that holds no amount, an archived item, and in a
        // period of their own (that starts before May) a balance (in exponent form) above what its
        // items bill, a credit and a record of a customer and an item that are not there.
        tables.items.add("8k", QStringLiteral("000000000.00call us - Advice"));
        tables.items.add("9k", QStringLiteral("000000006.00zzzz\u00BB$6.00 - Nine"));
        tables.periods.add(QStringLiteral("Odd") + FieldSep, fields({"2024/04/01", "Odd", "", ""}));
        tables.invoiceRecords.add(fields({"Odd", "1", ""}),
                                  fields({"Odd", "Ames, Al", "1", "1.5E+03", "8\u00029", ""}));
        tables.invoiceRecords.add(fields({"Odd", "10", ""}), fields({"Odd", "", "10", "0", "8\u000211", "gone"}));
        tables.invoiceRecords.add(fields({"Odd", "2", ""}), fields({"Odd", "Bell, Bo", "2", "-4.25", "5x3", ""}));
        tables.done();
        QVERIFY(writeFile(place["%books"], db.serialize()) && QFile::link(place["%books"], place["%alias"]));
        // A bill period and nothing else: nothing to print.
        Database none;
        qor::test::TablesEdit noRecords(none);
        noRecords.periods.add(QStringLiteral("May") + FieldSep,
                              fields({"2024/05/01", "May", "2024/05/31", "2024/06/15"}));
        noRecords.done();
        QVERIFY(writeFile(place["%empty"], none.serialize()));
    }

    // Wrong arguments, files that can't be read or written and nothing to
    // print: the exit status and a word on standard error, nothing on
    // standard output, and no file made or changed.
    void refused_data()
    {
        QTest::addColumn<QStringList>("args");  // %name: a file of `place`
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("said");
        auto row = [](const QStringList &args, int status, const QString &said = {}) {
            QTest::newRow(qPrintable(args.join(u' '))) << args << status << said;
        };
        for (const QStringList &args : {QStringList{}, QStringList{"check"}, QStringList{"resave", "a"},
                                        QStringList{"frobnicate", "x"}, QStringList{"check", "a", "b"}})
            row(args, 1, "Usage");
        row({"check", "%dup"}, 2, "line 4");
        row({"check", "%missing"}, 2);
        row({"check", "%pipe"}, 2);  // a read would wait for a writer for ever
        row({"resave", "%dup", "%out"}, 2);
        row({"resave", "%missing", "%out"}, 2);
        row({"invoices", "%missing", "--period", "May", "-o", "%out"}, 2);
        row({"owing", "%missing"}, 2);
        // Never over its own input, by any name.
        row({"resave", "%books", "%books"}, 1, "%books");
        row({"resave", "%books", "%alias"}, 1, "%alias");
        row({"customers", "%books", "-o", "%books"}, 1);
        row({"envelopes", "%books", "--period", "May", "-o", "%books"}, 1);
        row({"statements", "%books", "-o", "%books"}, 1);
        // A place that can't be written: nothing left behind.
        row({"resave", "%books", "%nowhere"}, 3, "%nowhere");
        for (const char *what : {"envelopes", "invoices"})
            row({what, "%empty", "--period", "May", "-o", "%out"}, 5, "no file was written");
        row({"customers", "%empty", "-o", "%out"}, 5, "no file was written");
        row({"invoices", "%empty", "--period", "May", "--each", "%out"}, 5, "no file was written");
        row({"statements", "%books", "--customer", "3", "-o", "%out"}, 5, "owes nothing");
        row({"envelopes", "%books", "--period", "June", "-o", "%out"}, 4);
        row({"envelopes", "%books", "-o", "%out"}, 1);
        row({"customers", "%books", "-o", "%out", "--columns", "5"}, 1);
        row({"invoices", "%books", "--period", "May", "--customer", "2", "-o", "%out"}, 4);
        row({"invoices", "%books", "--period", "June", "-o", "%out"}, 4, "%books");
        row({"invoices", "%books", "--period", "May", "--customer", "4k", "-o", "%out"}, 1);
        row({"invoices", "%books", "--period", "May", "--template", "3", "-o", "%out"}, 1);
        row({"invoices", "%books", "--period", "May", "--paper", "legal", "-o", "%out"}, 1);
        row({"invoices", "%books", "--period", "May"}, 1);
        row({"invoices", "%books", "--period", "May", "--all", "--customer", "1", "-o", "%out"}, 1);
        row({"periods"}, 1);
        row({"periods", "%books", "--customer", "1"}, 1);
        for (const char *bad : {"--customer", "-x", "--customer k", "--customer 2k", "--customer abc"})
            row(QStringList{"owing", "%books"} + QString::fromLatin1(bad).split(u' '), 1);
        row({"owing", "%books", "--customer", "5000"}, 4);
        row({"statements", "%books", "--customer", "99", "-o", "%out"}, 4);
        row({"statements", "%books"}, 1);
        row({"statements", "%books", "-o", "%out", "--each", "%missing"}, 1);
        row({"statements", "%books", "--as-of", "2024-13-01", "-o", "%out"}, 1);
        row({"statements", "%books", "--overdue", "-3", "-o", "%out"}, 1);
        row({"statements", "%books", "--customer", "1x", "-o", "%out"}, 1);
        row({"aging", "%books", "--frob"}, 1);
    }
    void refused()
    {
        QFETCH(QStringList, args);
        QFETCH(int, status);
        QFETCH(QString, said);
        for (QString &a : args) a = place.value(a, a);
        const QByteArray before = readFile(place["%books"]);
        const Run r = cli(args);
        QCOMPARE(r.exitCode, status);
        QVERIFY2(r.out.isEmpty() && r.err.contains(QDir::toNativeSeparators(place.value(said, said))),
                 qPrintable(r.err));
        if (status == 2) QVERIFY(r.err.contains(QDir::toNativeSeparators(args[1])));  // the file refused
        QVERIFY(!QFileInfo::exists(place["%out"]) && !QFileInfo::exists(place["%missing"]) &&
                !QFileInfo::exists(dir.filePath("no")));
        QVERIFY(readFile(place["%books"]) == before);
    }

    void versionAndHelp()
    {
        QCOMPARE(ok({"--version"}), QStringLiteral("qorvane-cli " QOR_VERSION_TEXT "\n"));
        const Run help = cli({"--help"});  // on standard output, as asked for
        QVERIFY(help.exitCode == 0 && help.out.contains(QLatin1String("check FILE")) &&
                help.out.contains(QLatin1String("resave IN OUT")));
    }

    void checkAndResave()
    {
        const QString in = place["%books"], out = dir.filePath(QStringLiteral("resaved.xml"));
        const QByteArray given = readFile(in);
        const Run r = cli({"check", in});
        QVERIFY2(r.exitCode == 0 && r.err.isEmpty(), qPrintable(r.err));
        const QStringList lines = r.out.split(u'\n', Qt::SkipEmptyParts);
        QCOMPARE(lines.size(), 8);
        // The placeholder made for customer 10 counts as a current customer.
        QCOMPARE(lines.mid(0, 4), (QStringList{"customers: 4 current, 1 archived", "products: 3 current, 1 archived",
                                               "bill periods: 2", "invoice records: 6"}));
        const QString problems = lines.mid(4).join(u'\n');
        // Item 9 is archived, but there.
        QVERIFY2(problems.contains(u"customer number 10") && problems.contains(u"item number 11,") &&
                     !problems.contains(u"item number 9,"),
                 qPrintable(problems));
        QVERIFY2(
            r.out.endsWith(QStringLiteral("item number 8: the price \"call us\" holds no amount that can be read; it "
                                          "counts as 0\nbill period \"Odd\", customer number 1: the balance "
                                          "$1,500.00 is more than the $6.00 its items bill\n")),
            qPrintable(r.out));

        // resave writes what the program saves after a load, with the placeholder,
        // and first removes what an interrupted save of the same file left.
        const QString leftover = dir.filePath(QStringLiteral(".resaved.xml.new-Ab12Cd"));
        QVERIFY(writeOld(leftover, 60));
        QCOMPARE(cli({"resave", in, out}).exitCode, 0);
        QVERIFY(!QFileInfo::exists(leftover));
        QVERIFY(readFile(in) == given);  // neither command changes its input
        Database expected;
        QVERIFY(load(expected, dir, given).result.ok());
        const QByteArray written = readFile(out);
        QVERIFY(written == expected.serialize() &&
                written.contains("<Customer CID=\"10\">\r\n\t\t\t<FName>Deleted</FName>"));
        // Each resave keeps the file it replaces; versions lists them, oldest first.
        const QString again = dir.filePath(QStringLiteral("again.xml"));
        for (int i = 0; i < 3; ++i) QCOMPARE(cli({"resave", in, again}).exitCode, 0);
        const QStringList kept = cli({"versions", again}).out.split(u'\n', Qt::SkipEmptyParts);
        QCOMPARE(kept.size(), 2);
        const QRegularExpression form(QStringLiteral("/again.xml.versions/again-\\d{8}-\\d{6}(-2)?\\.xml\t\\d{4}(-\\d\\d){2} \\d\\d(:\\d\\d){2}$"));
        for (const QString &line : kept)
            QVERIFY2(form.match(line).hasMatch() && readFile(line.section(u'\t', 0, 0)) == readFile(again), qPrintable(line));
        QVERIFY(kept[0].section(u'\t', 1) < kept[1].section(u'\t', 1) || kept[1].contains(QLatin1String("-2.xml\t")));
    }

    // Envelopes, the customer list and invoices as PDF, read back as text.
    // The invoices of a period as the print run makes them: the customers who
    // owe in the print tree's order, --all, --customer, the stored options,
    // the paper, and one file per customer.
    void pagesAsPdf()
    {
        const QString file = place["%books"];
        QTemporaryDir config;
        qputenv("XDG_CONFIG_HOME", config.path().toUtf8());  // the stored options: defaults

        const QString env = dir.filePath("env.pdf");
        QCOMPARE(ok({"envelopes", file, "--period", "May", "-o", env}), "2 envelopes\n");  // only the customers who owe
        QString t = pdfPageTexts(env).join(u' ');
        QVERIFY(t.contains("Acme & Sons") && t.contains("Al Ames") && t.contains("Townsville") && !t.contains("Cole"));
        QCOMPARE(ok({"envelopes", file, "--period", "May", "--all", "-o", env}), "3 envelopes\n");
        QVERIFY(pdfPageTexts(env).join(u' ').contains("Cy Cole"));
        // The locale's envelope, landscape: a 9 x 12 inch catalog envelope in the US, C4 elsewhere.
        auto paperOf = [](const QString &pdf) {
            QList<QSizeF> sizes;
            readPdfWords(pdf, nullptr, &sizes);
            return sizes.value(0).toSize();
        };
        QCOMPARE(paperOf(env), QSize(864, 648));
        QCOMPARE(cli({"envelopes", file, "--period", "May", "-o", env}, "de_DE").exitCode, 0);
        QCOMPARE(paperOf(env), QSize(918, 649));

        const QString list = dir.filePath("list.pdf");
        QCOMPARE(ok({"customers", file, "-o", list, "--title", "Route & Co", "--columns", "2"}), "1 pages\n");
        t = pdfPageTexts(list).join(u' ');
        QVERIFY(t.contains("Route & Co") && t.contains("Ames, Al") && t.contains("Cole, Cy") && t.contains("Page #1") &&
                !t.contains("Bell"));

        const QString out = dir.filePath("inv.pdf");
        QCOMPARE(ok({"invoices", file, "--period", "May", "-o", out}), "2 pages\n");
        QStringList pages = pdfPageTexts(out);
        QCOMPARE(pages.size(), 2);
        // The bill due date as the screen shows it.
        for (const char *shown : {"Al Ames", "Acme & Sons", "9 Mill Road", "Six (x2) $12.00", "$17.00", "06/15/2024"})
            QVERIFY2(pages[0].contains(shown), shown);
        QVERIFY(pages[1].contains("Di Dunn") && pages[1].contains("$6.00") && !pages.join("").contains("Cole"));
        QCOMPARE(paperOf(out), QSize(612, 792));  // en_US: Letter

        // Every customer, in the tree's order; the paid one totals zero.
        QCOMPARE(ok({"invoices", file, "--period", "May", "--all", "--paper", "a4", "-o", out}), "3 pages\n");
        pages = pdfPageTexts(out);
        QCOMPARE(pages.size(), 3);
        QVERIFY(pages[0].contains("Ames") && pages[1].contains("Cy Cole") && pages[2].contains("Dunn") &&
                pages[1].contains("TOTAL DUE: $0.00"));
        QCOMPARE(paperOf(out), QSize(595, 842));  // A4

        // One customer, the stored duplicates and title (the large title
        // reads whole on layout 2 too).
        settings::PrintDuplicateInvoices.set(true);
        settings::InvoiceTitleOption.set(1);
        QCOMPARE(ok({"invoices", file, "--period", "May", "--customer", "4", "--template", "2", "-o", out}),
                 "2 pages\n");
        pages = pdfPageTexts(out);
        QVERIFY(pages.size() == 2 && pages[0] == pages[1]);
        QVERIFY(pages[0].contains("Dunn") && pages[0].contains("ESTIMATE") && !pages[0].contains("Ames"));

        // One file per customer who owes, named after the customer and the
        // period; no duplicates there.
        const QString each = dir.filePath("each");
        QCOMPARE(ok({"invoices", file, "--period", "May", "--each", each}), "2 invoices\n");
        QStringList names = QDir(each).entryList(QDir::Files, QDir::Name);
        QCOMPARE(names, QStringList({"Ames, Al (1) - May.pdf", "Dunn, Di (4) - May.pdf"}));
        QCOMPARE(pdfPageTexts(QDir(each).filePath(names[1])).size(), 1);

        settings::PrintPreviewSelected.set(7);  // a stored layout that isn't one
        QCOMPARE(cli({"invoices", file, "--period", "May", "-o", out}).exitCode, 1);
    }

    void periodsAndOwing()
    {
        const QString file = place["%books"];
        QCOMPARE(ok({"periods", file}),
                 QStringLiteral("Odd\t2024/04/01\t\t\t3\t$21.00\t$1,495.75\t1\n"
                                "May\t2024/05/01\t2024/05/31\t2024/06/15\t3\t$28.00\t$23.00\t1\n"));
        QCOMPARE(cli({"periods", file, "--plain"}).out.section(u'\n', 0, 0),
                 QStringLiteral("Odd\t2024/04/01\t\t\t3\t21.00\t1495.75\t1"));
        // Each customer's balances in the periods' order, whatever the records' order.
        QCOMPARE(ok({"owing", file, "--customer", "1"}),
                 QStringLiteral("Ames, Al\t1\n\tOdd\t$1,500.00\n\tMay\t$17.00\n\ttotal\t$1,517.00\n"
                                "total owed\t$1,517.00\n"));
        QCOMPARE(ok({"owing", file, "--plain", "--customer", "2"}),
                 QStringLiteral("Bell, Bo\t2\n\tOdd\t-4.25\n\ttotal\t-4.25\ntotal owed\t-4.25\n"));
        QCOMPARE(cli({"owing", file, "--customer", "3"}).out, QStringLiteral("total owed\t$0.00\n"));
        const QStringList all = cli({"owing", file, "--plain"}).out.split(u'\n', Qt::SkipEmptyParts);
        QVERIFY(all.size() == 4 + 3 + 3 + 1 && all.first() == u"Ames, Al\t1");
        QCOMPARE(all.last(), QStringLiteral("total owed\t1518.75"));
    }

    // An output that can't be written whole leaves nothing, and an older file under its name intact.
    void fullDisk()
    {
        const QString file = place["%books"];
        // A full disk: a small file system of its own, where one can be made.
        const QString small = dir.filePath(QStringLiteral("small"));
        QVERIFY(QDir().mkpath(small));
        if (::mount("tmpfs", QFile::encodeName(small).constData(), "tmpfs", 0, "size=16k") != 0)
            QSKIP("no tmpfs can be mounted here (not root): the full disk is tried with a failing device elsewhere");
        const QString out = small + QStringLiteral("/inv.pdf");
        QVERIFY(writeFile(out, "the old invoice"));
        const Run full = cli({"invoices", file, "--period", "May", "-o", out});
        const QByteArray after = readFile(out);
        const QStringList left = QDir(small).entryList(QDir::Files | QDir::Hidden);
        ::umount(QFile::encodeName(small).constData());
        QVERIFY2(full.exitCode == 3 && full.err.contains(QDir::toNativeSeparators(out)), qPrintable(full.err));
        QCOMPARE(after, QByteArray("the old invoice"));
        QCOMPARE(left, QStringList{"inv.pdf"});
    }

    // Random books, one period printed as invoices under several language
    // settings and all of them as statements, read back: each invoice's
    // "TOTAL DUE:" is the balance `owing` reports, its lines add up to what
    // its items bill and a part payment shows both; aging lists exactly the
    // customers who owe, and each one's statement totals what owing says.
    void moneyAcrossCommands()
    {
        QRandomGenerator rng(20240517);
        Database db;
        qor::test::TablesEdit tables(db);
        tables.company[0] = QStringLiteral("Acme & Sons");
        for (int i = 0; i < 8; ++i) {
            const QString p = QStringLiteral("P%1").arg(i);
            const QString due = QDate(2024, 6, 30).addDays(30 - 20 * i).toString(QStringLiteral("yyyy/MM/dd"));
            tables.periods.add(p + FieldSep, joined({QString(), p, QString(), due}));
        }
        // Prices typed under several language settings; names with " - ", "(x" and digits; totals
        // past what a float holds exactly and wider than a statement's amount column at its size.
        const char *const forms[] = {"en_US", "de_DE", "fr_FR", "de_CH", "en_GB", "C"};
        const char *const names[] = {"Hedge trim - large", "Filters (x2)", "Bag 12", "Lawn (x", "Pack - 3 (x10)"};
        std::vector<qint64> price(61);
        for (int n = 1; n <= 60; ++n) {
            price[size_t(n)] = 1 + rng.bounded(n % 7 == 0 ? 99999999 : 500000);
            const QString text = Money::fromCents(price[size_t(n)]).toCurrencyText(QLocale(forms[n % 6]));
            const QString name = names[n % 5] + QString::number(n);
            tables.items.add(numberKey(n), regional::sortPrice(text) + text + " - " + name);
        }
        // Per customer of P0 what the invoice shows: the lines' sum, billed
        // and paid (-1 where not shown, -2 where shown twice) and the total.
        QHash<QString, QList<qint64>> shown;
        qint64 allBilled = 0;
        for (int cid = 1; cid <= 40; ++cid) {
            const QString c = QString::number(cid), name = "Zed, C" + c;
            tables.customers.add(numberKey(cid), joined({cid % 7 ? name : u"zzzz\u00BB"_qs + name, "C" + c, "Zed", "",
                                                         "", "", "", "", ""}));
            QStringList entries;
            qint64 billed = 0;
            for (int n = 1 + int(rng.bounded(30)), count = cid <= 2 ? 30 : 1 + int(rng.bounded(30)); count--; ++n) {
                const int q = 1 + int(rng.bounded(99));
                entries << ItemEntry::make(QString::number(n), q);
                billed += price[size_t(n)] * q;
            }
            for (int i = 0; i < 8 && cid % 10; ++i) {  // every tenth never billed
                const QString p = QStringLiteral("P%1").arg(i);
                qint64 cents = rng.bounded(5) == 0 ? 0 : qint64(rng.bounded(40000)) - 8000;
                if (i == 0 && cid <= 12) {
                    cents = cid % 3 == 0 ? 0 : cid % 3 == 1 ? billed
                                                            : 1 + qint64(rng.bounded(quint64(billed)));
                    const bool part = cents > 0 && cents < billed;
                    shown.insert(c, {billed, part ? billed : -1, part ? billed - cents : -1, cents});
                    allBilled += billed;
                } else if (i == 0 || rng.bounded(3) == 0) {
                    continue;
                }
                const QString balance = Money::fromCents(cents).toStoredText();
                tables.invoiceRecords.add(joined({p, c, ""}),
                                          joined({p, name, c, balance, ItemEntry::join(entries), ""}));
            }
        }
        tables.done();
        const QString file = dir.filePath(QStringLiteral("random.xml"));
        QVERIFY(db.save(file).ok);
        QTemporaryDir config;
        qputenv("XDG_CONFIG_HOME", config.path().toUtf8());
        QCOMPARE(cli({"periods", file, "--plain"}).out.section(u'\t', 5, 5), Money::fromCents(allBilled).toPlainText());

        // What owing says: each customer's balance of P0, and the totals above zero.
        QHash<QString, qint64> owedP0;
        QHash<QString, QString> owed;
        QString cid;
        for (const QString &l : cli({"owing", file, "--plain"}).out.split(u'\n', Qt::SkipEmptyParts)) {
            const QString amount = l.section(u'\t', 2);
            if (!l.startsWith(u'\t')) cid = l.section(u'\t', 1);
            else if (l.startsWith(QLatin1String("\tP0\t"))) owedP0[cid] = Money::fromStoredText(amount)->cents();
            else if (l.startsWith(QLatin1String("\ttotal\t")) && !amount.startsWith(u'-') && amount != u"0.00")
                owed.insert(cid, amount);
        }
        for (auto it = shown.cbegin(); it != shown.cend(); ++it) QCOMPARE(owedP0.value(it.key()), it->last());
        for (const char *locale : {"en_US", "de_DE", "fr_FR", "de_CH"}) {
            const QString pdf = dir.filePath(QStringLiteral("property-%1.pdf").arg(locale));
            const QStringList args{"invoices", file, "--period", "P0", "--all", "--template", "0", "-o", pdf};
            QCOMPARE(cli(args, locale).exitCode, 0);
            // The words of each line of the item box and of the total row (row 12), by page.
            QMap<std::pair<int, int>, std::pair<QString, QString>> rows;  // caption, amount
            QHash<int, QString> customerOf;
            for (const PdfWord &w : readPdfWords(pdf)) {
                if (std::abs(w.top - 4560) < 150 && w.left < 5700 && w.text.startsWith(u'C'))
                    customerOf[w.page] = w.text.mid(1);  // the bill-to line "C12 Zed"
                const int row = int(std::floor((w.top - 7320 + 60) / 360));
                if (row < 0 || row > 12) continue;
                QString &part = w.left >= 8640 ? rows[{w.page, row}].second : rows[{w.page, row}].first;
                part += (part.isEmpty() ? "" : " ") + w.text;
            }
            QHash<QString, QList<qint64>> read;
            for (auto it = rows.cbegin(); it != rows.cend(); ++it) {
                if (it->second.isEmpty()) continue;
                const auto amount = Money::fromPriceText(it->second);
                QVERIFY2(amount, qPrintable(it->second));
                QList<qint64> &r = read[customerOf.value(it.key().first)];
                if (r.isEmpty()) r = {0, -1, -1, -1};
                const int at = it.key().second == 12 ? 3 : int(QStringList{"Billed:", "Paid:"}.indexOf(it->first)) + 1;
                r[at] = at == 0 ? r[0] + amount->cents() : (r[at] == -1 ? amount->cents() : -2);
            }
            QVERIFY2(read == shown, locale);
        }

        QVERIFY(owed.size() > 20);
        QStringList lines = ok({"aging", file, "--plain", "--as-of", "2024-06-30"}).split(u'\n', Qt::SkipEmptyParts);
        QVERIFY(lines.takeLast().startsWith(QLatin1String("total\t\t")));
        QCOMPARE(lines.size(), owed.size());
        for (const QString &l : lines) {
            const QStringList f = l.split(u'\t');
            QVERIFY2(
                f.size() == 8 && f[2] == owed.value(f[0]) && f[1].endsWith(u" (archived)") == (f[0].toInt() % 7 == 0),
                qPrintable(l));
        }

        const QString each = dir.filePath(QStringLiteral("statements"));
        QCOMPARE(ok({"statements", file, "--as-of", "2024-06-30", "--each", each}),
                 QStringLiteral("%1 statements\n").arg(owed.size()));
        QCOMPARE(QDir(each).count(), owed.size() + 2);  // with "." and ".."
        // Each customer's statement shows as its total due what aging and owing say.
        for (const QString &l : lines) {
            const QString pdf = QDir(each).filePath(
                QStringLiteral("Zed, C%1 (%1) - statement 2024-06-30.pdf").arg(l.section(u'\t', 0, 0)));
            const std::optional<Money> owes = Money::fromStoredText(l.section(u'\t', 2, 2));
            const QString due = pdfPageTexts(pdf).join(u' ').section(QStringLiteral("TOTAL DUE: "), 1);
            QVERIFY2(owes && due.section(u' ', 0, 0) == owes->toCurrencyText(), qPrintable(l));
        }

        // Reminders for fewer.
        const QString out = dir.filePath(QStringLiteral("r.pdf"));
        const Run late = cli({"statements", file, "--as-of", "2024-06-30", "--overdue", "100", "-o", out});
        QVERIFY(late.exitCode == 0 && late.out.endsWith(u" reminders\n") && QFileInfo::exists(out) &&
                late.out.section(u' ', 0, 0).toInt() < owed.size());
    }
};

QTEST_GUILESS_MAIN(TestCli)
#include "tst_cli.moc"
