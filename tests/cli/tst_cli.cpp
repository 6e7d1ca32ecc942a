// qorvane-cli run as a separate program: its output, exit codes, and that it
// neither creates nor overwrites what it must not.
#include "database/database.h"
#include "database/rows.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace qor;

namespace {

struct Run {
    int exitCode = -1;
    QString out, err;
};

Run cli(const QStringList &args)
{
    QProcess p;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("LC_ALL"), QStringLiteral("en_US.UTF-8"));
    env.insert(QStringLiteral("LANG"), QStringLiteral("en_US.UTF-8"));
    p.setProcessEnvironment(env);
    p.start(QStringLiteral(QORVANE_CLI_PATH), args);
    Run r;
    if (!p.waitForFinished(60000) || p.exitStatus() != QProcess::NormalExit) return r;
    r.exitCode = p.exitCode();
    r.out = QString::fromLocal8Bit(p.readAllStandardOutput());
    r.err = QString::fromLocal8Bit(p.readAllStandardError());
    return r;
}

QByteArray readFile(const QString &path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

bool writeFile(const QString &path, const QByteArray &bytes)
{
    QFile f(path);
    return f.open(QIODevice::WriteOnly) && f.write(bytes) == bytes.size();
}

QString row(std::initializer_list<const char *> parts)
{
    QStringList l;
    for (const char *p : parts) l << QString::fromUtf8(p);
    return l.join(FieldSep);
}

// A file as the program saves it: two current customers and an archived one,
// a current and an archived item, one period, and records of which one names
// a customer and one an item that are not there.
QByteArray sample()
{
    Database db;
    db.company[0] = QStringLiteral("Acme & Sons");
    db.lvwCustomers.add("1k", row({"Ames, Al", "Al", "Ames", "", "", "", "", "", ""}));
    db.lvwCustomers.add("2k", row({"zzzz\u00BBBell, Bo", "Bo", "Bell", "", "", "", "", "", "note"}));
    db.lvwPeriods.add(QStringLiteral("May") + FieldSep, row({"2024/05/01", "May", "2024/05/31", "2024/06/15"}));
    db.lvwPAndS.add("5k", QStringLiteral("000000005.00$5.00 - Five"));
    db.lvwPAndS.add("6k", QStringLiteral("000000006.00zzzz\u00BB$6.00 - Six"));
    db.lvwInvoiceRecords.add(row({"May", "1", ""}), row({"May", "Ames, Al", "1", "5", "5\u00026x2", ""}));
    db.lvwInvoiceRecords.add(row({"May", "8", ""}), row({"May", "", "8", "0", "5\u00029", "gone"}));
    return db.serialize();
}

}  // namespace

class TestCli : public QObject {
    Q_OBJECT
    QTemporaryDir dir;

private slots:
    void initTestCase() { QVERIFY(dir.isValid()); }

    void versionHelpAndWrongArguments()
    {
        const Run v = cli({"--version"});
        QCOMPARE(v.exitCode, 0);
        QCOMPARE(v.out, QStringLiteral("qorvane-cli " QOR_VERSION_TEXT "\n"));
        QVERIFY(v.out.contains(QLatin1String("3.19.0")));
        const Run h = cli({"--help"});
        QCOMPARE(h.exitCode, 0);
        QVERIFY(h.out.contains(QLatin1String("check FILE")) && h.out.contains(QLatin1String("resave IN OUT")));
        for (const QStringList &bad : {QStringList{}, QStringList{"check"}, QStringList{"resave", "a"},
                                       QStringList{"frobnicate", "x"}, QStringList{"check", "a", "b"}}) {
            const Run r = cli(bad);
            QCOMPARE(r.exitCode, 1);
            QVERIFY(r.out.isEmpty());
            QVERIFY(r.err.contains(QLatin1String("Usage")));
        }
    }

    void checkReportsWhatTheFileHolds()
    {
        const QString path = dir.filePath(QStringLiteral("good.xml"));
        const QByteArray bytes = sample();
        QVERIFY(writeFile(path, bytes));
        const Run r = cli({"check", path});
        QCOMPARE(r.exitCode, 0);
        QVERIFY2(r.err.isEmpty(), qPrintable(r.err));
        const QStringList lines = r.out.split(u'\n', Qt::SkipEmptyParts);
        QCOMPARE(lines.size(), 6);
        // The placeholder made for customer 8 counts as a current customer.
        QCOMPARE(lines.mid(0, 4), (QStringList{"customers: 2 current, 1 archived", "products: 1 current, 1 archived",
                                                "bill periods: 1", "invoice records: 2"}));
        const QString problems = lines.mid(4).join(u'\n');
        QVERIFY2(problems.contains(QLatin1String("customer number 8")), qPrintable(problems));
        QVERIFY(problems.contains(QLatin1String("item number 9,")));
        QVERIFY(problems.contains(QLatin1String("item number 6,")) == false);  // archived, but there
        // Checking changes nothing on disk.
        QVERIFY(readFile(path) == bytes);

        // An empty file is an empty database.
        const QString empty = dir.filePath(QStringLiteral("empty.xml"));
        QVERIFY(writeFile(empty, QByteArray()));
        const Run e = cli({"check", empty});
        QCOMPARE(e.exitCode, 0);
        QCOMPARE(e.out, QStringLiteral("customers: 0 current, 0 archived\nproducts: 0 current, 0 archived\n"
                                       "bill periods: 0\ninvoice records: 0\n"));
    }

    void refusedAndMissingFiles()
    {
        const QString dup = dir.filePath(QStringLiteral("dup.xml"));
        QVERIFY(writeFile(dup, "<Customers>\r\n<Customer CID=\"3\">\r\n</Customer>\r\n<Customer CID=\"3\">\r\n"
                               "</Customer>\r\n</Customers>\r\n"));
        const Run r = cli({"check", dup});
        QCOMPARE(r.exitCode, 2);
        QVERIFY(r.out.isEmpty());
        QVERIFY2(r.err.contains(QDir::toNativeSeparators(dup)) && r.err.contains(QLatin1String("line 4")),
                 qPrintable(r.err));

        const QString missing = dir.filePath(QStringLiteral("missing.xml"));
        const Run m = cli({"check", missing});
        QCOMPARE(m.exitCode, 2);
        QVERIFY(m.err.contains(QDir::toNativeSeparators(missing)));
        QVERIFY(!QFileInfo::exists(missing));

        // resave of a refused or missing file creates no output.
        const QString out = dir.filePath(QStringLiteral("out.xml"));
        QCOMPARE(cli({"resave", dup, out}).exitCode, 2);
        QVERIFY(!QFileInfo::exists(out));
        QCOMPARE(cli({"resave", missing, out}).exitCode, 2);
        QVERIFY(!QFileInfo::exists(out));
        QVERIFY(!QFileInfo::exists(missing));
    }

    void resaveWritesWhatTheProgramSaves()
    {
        const QString in = dir.filePath(QStringLiteral("in.xml"));
        const QString out = dir.filePath(QStringLiteral("resaved.xml"));
        const QByteArray bytes = sample();
        QVERIFY(writeFile(in, bytes));
        const Run r = cli({"resave", in, out});
        QCOMPARE(r.exitCode, 0);
        QVERIFY(readFile(in) == bytes);
        // The load added the placeholder customer; everything else is as it was.
        Database expected;
        QVERIFY(expected.read(in).ok());
        expected.fillInvoiceRecordNames();
        const QByteArray written = readFile(out);
        QVERIFY(written == expected.serialize());
        QVERIFY(written.contains("<Customer CID=\"8\">\r\n\t\t\t<FName>Deleted</FName>"));

        // The record that asked for the placeholder is named from the next load
        // on, which moves it; from then on a resave gives the same bytes, also
        // from a copy with LF line ends.
        const QString stable = dir.filePath(QStringLiteral("stable.xml"));
        QCOMPARE(cli({"resave", out, stable}).exitCode, 0);
        const QByteArray stableBytes = readFile(stable);
        QVERIFY(stableBytes != written);
        QByteArray lf = stableBytes;
        lf.replace("\r\n", "\n");
        QVERIFY(writeFile(in, lf));
        const QString again = dir.filePath(QStringLiteral("again.xml"));
        QCOMPARE(cli({"resave", in, again}).exitCode, 0);
        QVERIFY(readFile(again) == stableBytes);
        QCOMPARE(cli({"resave", stable, stable}).exitCode, 0);
        QVERIFY(readFile(stable) == stableBytes);

        // A place that can't be written: exit 3, nothing left behind.
        const QString nowhere = dir.filePath(QStringLiteral("no/such/folder/out.xml"));
        const Run bad = cli({"resave", out, nowhere});
        QCOMPARE(bad.exitCode, 3);
        QVERIFY(bad.err.contains(QDir::toNativeSeparators(nowhere)));
        QVERIFY(!QFileInfo::exists(dir.filePath(QStringLiteral("no"))));
    }
};

QTEST_GUILESS_MAIN(TestCli)
#include "tst_cli.moc"
