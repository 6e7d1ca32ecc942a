// The database file as a whole: files that are refused, the copy kept of a
// file that could not be read, saves that fail, the placeholder customer,
// table order after a load, big files, and the scans and archive step of a delete.
#include "dbfiletest.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace qor;
using namespace dbtest;

namespace {

// A database with something in every table, to see a refused read empty it.
void preload(Database &db)
{
    db.company[0] = QStringLiteral("Before");
    db.lvwCustomers.add("1k", fields({"A", "A", "", "", "", "", "", "", ""}));
    db.lvwPeriods.add("P", fields({"2020/01/01", "P", "", ""}));
    db.lvwPAndS.add("1k", QStringLiteral("000000001.00$1.00 - X"));
    db.lvwInvoiceRecords.add("P|1|", fields({"P", "A", "1", "0", "1", ""}));
}

QByteArray customerFile(const QByteArray &cidA, const QByteArray &cidB)
{
    return crlf({"<QOR-DB>", "\t<Customers>", "\t\t<Customer CID=\"" + cidA + "\">", "\t\t\t<FName>Ann</FName>",
                 "\t\t</Customer>", "\t\t<Customer CID=\"" + cidB + "\">", "\t\t\t<FName>Bob</FName>",
                 "\t\t</Customer>", "\t</Customers>", "</QOR-DB>"});
}

}  // namespace

class TestDbFile : public QObject {
    Q_OBJECT
    QTemporaryDir dir;

private slots:
    void initTestCase()
    {
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
        QVERIFY(dir.isValid());
    }

    void refusedFiles_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<int>("line");
        QTest::addColumn<QString>("says");

        QTest::newRow("customer twice") << customerFile("7", "7") << 6 << "customer with the number 7";
        QTest::newRow("customer twice, once with k") << customerFile("7", "7K") << 6 << "number 7";
        QTest::newRow("item twice")
            << crlf({"<ProductsAndServices>", "<PS PSID=\"5\">", "<Item>A</Item>", "</PS>", "", "<!-- x -->",
                     "<PS PSID=\"5\">", "<Item>B</Item>", "</PS>", "</ProductsAndServices>"})
            << 7 << "item with the number 5";
        QTest::newRow("period twice")
            << crlf({"<BillPeriods>", "<BillPeriod>", "<BPName>May</BPName>", "</BillPeriod>", "<BillPeriod>",
                     "<BPName>May</BPName>", "</BillPeriod>", "</BillPeriods>"})
            << 5 << "bill period named \"May\"";
        QTest::newRow("record twice")
            << crlf({"<InvoiceRecords>", "<InvoiceRecord>", "<BP>May</BP>", "<CID>3</CID>", "</InvoiceRecord>",
                     "<InvoiceRecord>", "<BP>Jun</BP>", "<CID>3</CID>", "</InvoiceRecord>", "<InvoiceRecord>",
                     "<BP>May</BP>", "<CID>3</CID>", "</InvoiceRecord>", "</InvoiceRecords>"})
            << 10 << "record of customer 3 in bill period \"May\"";
        static const char withNul[] = "<QOR-DB>\r\n<Customers>\r\n\r\n<Cust\0omer>\r\n";
        QTest::newRow("NUL byte") << QByteArray(withNul, sizeof withNul - 1) << 4 << "0x00";
        QTest::newRow("control byte") << QByteArray("<QOR-DB>\n\x01\n") << 2 << "0x01";
        QTest::newRow("escape byte, CR line ends") << QByteArray("a\rb\rc\x1b\r") << 3 << "0x1b";
        const QString wide = QStringLiteral("<QOR-DB>\r\n");
        QTest::newRow("UTF-16 text")
            << QByteArray(reinterpret_cast<const char *>(wide.utf16()), wide.size() * 2) << 1 << "0x00";
    }

    void refusedFiles()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(int, line);
        QFETCH(QString, says);
        const QString path = dir.filePath(QStringLiteral("refused.xml"));
        QVERIFY(writeFile(path, bytes));
        Database db;
        preload(db);
        const ReadResult r = db.read(path);
        QCOMPARE(r.status, ReadResult::Status::Rejected);
        QVERIFY(!r.ok());
        QCOMPARE(r.line, line);
        QVERIFY2(r.message.contains(QDir::toNativeSeparators(path)), qPrintable(r.message));
        QVERIFY2(r.message.contains(QStringLiteral("line %1").arg(line)), qPrintable(r.message));
        QVERIFY2(r.message.contains(says), qPrintable(r.message));
        QVERIFY(r.keepsCopyOnSave);
        QVERIFY(tablesEmpty(db));
        // Nothing was written to the file by reading it.
        QVERIFY(readFile(path) == bytes);
    }

    void pathsThatCannotBeRead()
    {
        Database db;
        preload(db);
        const ReadResult folder = db.read(dir.path());
        QCOMPARE(folder.status, ReadResult::Status::Rejected);
        QVERIFY(folder.message.contains(QDir::toNativeSeparators(dir.path())));
        QVERIFY(tablesEmpty(db));

        // Missing: the program makes an empty file; a checking tool must not.
        const QString missing = dir.filePath(QStringLiteral("missing.xml"));
        preload(db);
        const ReadResult refused = db.read(missing, Database::MissingFile::Reject);
        QCOMPARE(refused.status, ReadResult::Status::Rejected);
        QVERIFY(refused.message.contains(QDir::toNativeSeparators(missing)));
        QVERIFY(!QFileInfo::exists(missing));
        QVERIFY(tablesEmpty(db));
        preload(db);
        const ReadResult created = db.read(missing);
        QCOMPARE(created.status, ReadResult::Status::Created);
        QVERIFY(created.message.isEmpty());
        QVERIFY(QFileInfo(missing).isFile());
        QCOMPARE(QFileInfo(missing).size(), 0);
        QVERIFY(tablesEmpty(db));
        const ReadResult cannotCreate = db.read(dir.filePath(QStringLiteral("no/such/folder/QOR.xml")));
        QCOMPARE(cannotCreate.status, ReadResult::Status::Rejected);

        // A file without read permission (only where permissions bind).
        const QString locked = dir.filePath(QStringLiteral("locked.xml"));
        QVERIFY(writeFile(locked, customerFile("1", "2")));
        QFile::setPermissions(locked, QFileDevice::WriteOwner);
        if (::access(QFile::encodeName(locked).constData(), R_OK) != 0) {
            preload(db);
            const ReadResult r = db.read(locked);
            QCOMPARE(r.status, ReadResult::Status::Rejected);
            QVERIFY(r.message.contains(QDir::toNativeSeparators(locked)));
            QVERIFY(tablesEmpty(db));
        }
        QFile::setPermissions(locked, QFileDevice::ReadOwner | QFileDevice::WriteOwner);

        // A form feed is text; an empty file is an empty database.
        Database ok;
        QVERIFY(load(ok, dir, "<CompanyInfo>\r\n<CompanyName>A\fB</CompanyName>\r\n</CompanyInfo>\r\n").result.ok());
        QCOMPARE(ok.company[0], QStringLiteral("A\fB"));
        const Loaded empty = load(ok, dir, QByteArray());
        QCOMPARE(empty.result.status, ReadResult::Status::Read);
        QVERIFY(!empty.result.keepsCopyOnSave);
        QVERIFY(tablesEmpty(ok));
    }

    void copyKeptOfUnreadableFile()
    {
        const QString path = dir.filePath(QStringLiteral("QOR.xml"));
        const QByteArray old = customerFile("4", "4");
        QVERIFY(writeFile(path, old));
        Database db;
        QCOMPARE(db.read(path).status, ReadResult::Status::Rejected);
        db.company[0] = QStringLiteral("New content");

        // Saving elsewhere leaves the mark on the unreadable file.
        const QString other = dir.filePath(QStringLiteral("other.xml"));
        SaveResult s = db.save(other);
        QVERIFY(s.ok);
        QVERIFY(s.keptCopy.isEmpty());

        s = db.save(path);
        QVERIFY2(s.ok, qPrintable(s.message));
        const QRegularExpression name(QStringLiteral("QOR\\.xml\\.unreadable-\\d{8}-\\d{6}$"));
        QVERIFY2(name.match(s.keptCopy).hasMatch(), qPrintable(s.keptCopy));
        QCOMPARE(QFileInfo(s.keptCopy).absolutePath(), QFileInfo(path).absolutePath());
        QVERIFY(readFile(s.keptCopy) == old);
        QVERIFY(readFile(path) == db.serialize());
        // Only the first save over it keeps a copy.
        const SaveResult second = db.save(path);
        QVERIFY(second.ok);
        QVERIFY(second.keptCopy.isEmpty());

        // Refused again within the same second: the second copy doesn't replace the first.
        QVERIFY(writeFile(path, old));
        QCOMPARE(db.read(path).status, ReadResult::Status::Rejected);
        const SaveResult a = db.save(path);
        QVERIFY(writeFile(path, old + "again"));
        QCOMPARE(db.read(path).status, ReadResult::Status::Rejected);
        const SaveResult b = db.save(path);
        QVERIFY(a.ok && b.ok);
        QVERIFY(!a.keptCopy.isEmpty() && !b.keptCopy.isEmpty());
        QVERIFY(a.keptCopy != b.keptCopy);
        QVERIFY(readFile(a.keptCopy) == old);
        QVERIFY(readFile(b.keptCopy) == old + "again");

        // A file with content but no section reads as empty, silently, and is kept too.
        const QString notes = dir.filePath(QStringLiteral("notes.xml"));
        QVERIFY(writeFile(notes, "Shopping list:\r\nmilk\r\n"));
        const ReadResult r = db.read(notes);
        QCOMPARE(r.status, ReadResult::Status::Read);
        QVERIFY(r.message.isEmpty());
        QVERIFY(r.keepsCopyOnSave);
        QVERIFY(tablesEmpty(db));
        const SaveResult kept = db.save(notes);
        QVERIFY(kept.ok);
        QVERIFY(readFile(kept.keptCopy) == "Shopping list:\r\nmilk\r\n");

        // Blank lines only: nothing to keep.
        QVERIFY(writeFile(notes, "\r\n  \t\r\n"));
        QVERIFY(!db.read(notes).keepsCopyOnSave);
        QVERIFY(db.save(notes).keptCopy.isEmpty());
        // A good read of a file clears the mark left by a refused one.
        QVERIFY(writeFile(path, old));
        QCOMPARE(db.read(path).status, ReadResult::Status::Rejected);
        QVERIFY(writeFile(path, customerFile("1", "2")));
        QVERIFY(db.read(path).ok());
        QVERIFY(db.save(path).keptCopy.isEmpty());
    }

    void failedSaveLeavesOldFile()
    {
        Database db;
        db.company[0] = QStringLiteral("Fresh");
        db.lvwCustomers.add("1k", fields({"A", "A", "", "", "", "", "", "", QString(300000, u'n').toUtf8().constData()}));

        // The folder is a regular file.
        const QString blocker = dir.filePath(QStringLiteral("blocker"));
        QVERIFY(writeFile(blocker, "not a folder"));
        const QString impossible = blocker + QStringLiteral("/QOR.xml");
        const SaveResult r = db.save(impossible);
        QVERIFY(!r.ok);
        QVERIFY2(r.message.contains(QDir::toNativeSeparators(impossible)), qPrintable(r.message));
        QVERIFY(readFile(blocker) == "not a folder");

        // The disk runs out half-way (a file size limit, which binds even root).
        QTemporaryDir own;
        const QString path = own.filePath(QStringLiteral("QOR.xml"));
        const QByteArray old = customerFile("1", "2");
        QVERIFY(writeFile(path, old));
        struct rlimit saved;
        QCOMPARE(getrlimit(RLIMIT_FSIZE, &saved), 0);
        struct rlimit small = saved;
        small.rlim_cur = 65536;
        auto previous = std::signal(SIGXFSZ, SIG_IGN);
        QCOMPARE(setrlimit(RLIMIT_FSIZE, &small), 0);
        const SaveResult full = db.save(path);
        setrlimit(RLIMIT_FSIZE, &saved);
        std::signal(SIGXFSZ, previous);
        QVERIFY(!full.ok);
        QVERIFY2(full.message.contains(QDir::toNativeSeparators(path)), qPrintable(full.message));
        QVERIFY(readFile(path) == old);
        // No half-written file is left beside it.
        QCOMPARE(QDir(own.path()).entryList(QDir::Files | QDir::Hidden), QStringList{"QOR.xml"});

        // A folder without write permission (only where permissions bind).
        QFile::setPermissions(own.path(), QFileDevice::ReadOwner | QFileDevice::ExeOwner);
        if (::access(QFile::encodeName(own.path()).constData(), W_OK) != 0) {
            const SaveResult denied = db.save(path);
            QVERIFY(!denied.ok);
            QVERIFY(denied.message.contains(QDir::toNativeSeparators(path)));
            QVERIFY(readFile(path) == old);
        }
        QFile::setPermissions(own.path(), QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);

        // A name that belongs to a folder or a pipe is left as it is.
        const QString folder = own.filePath(QStringLiteral("folder.xml"));
        QVERIFY(QDir(own.path()).mkdir(QStringLiteral("folder.xml")));
        const SaveResult onFolder = db.save(folder);
        QVERIFY(!onFolder.ok);
        QVERIFY(onFolder.message.contains(QDir::toNativeSeparators(folder)));
        QVERIFY(QFileInfo(folder).isDir());
        const QString pipe = own.filePath(QStringLiteral("pipe.xml"));
        QCOMPARE(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
        QVERIFY(!db.save(pipe).ok);
        QVERIFY(!QFileInfo(pipe).isFile() && QFileInfo::exists(pipe));

        // The save that can happen writes everything.
        QVERIFY(db.save(path).ok);
        QVERIFY(readFile(path) == db.serialize());
    }

    void placeholderCustomer()
    {
        Database db;
        int shown = 0;
        db.onPlaceholderCreated = [&shown] { ++shown; };
        const Loaded l = load(db, dir,
                              crlf({"<Customers>", "<Customer CID=\"3\">", "<FName>Cy</FName>",
                                    "<LName>Three</LName>", "<Current>No</Current>", "</Customer>", "</Customers>",
                                    "<InvoiceRecords>",
                                    "<InvoiceRecord>", "<BP>B</BP>", "<CID>9</CID>", "<PSID Number=\"1\">1</PSID>",
                                    "</InvoiceRecord>",
                                    "<InvoiceRecord>", "<BP>A</BP>", "<CID>9</CID>", "<PSID Number=\"1\">1</PSID>",
                                    "</InvoiceRecord>",
                                    "<InvoiceRecord>", "<BP>A</BP>", "<CID>3</CID>", "<PSID Number=\"1\">1</PSID>",
                                    "</InvoiceRecord>",
                                    "</InvoiceRecords>",
                                    "<ProductsAndServices>", "<PS PSID=\"1\">", "<Item>I</Item>", "</PS>",
                                    "</ProductsAndServices>"}));
        QVERIFY(l.result.ok());
        QCOMPARE(shown, 1);
        QCOMPARE(l.problems.size(), 1);
        QVERIFY2(l.problems[0].contains(QLatin1String("customer number 9")), qPrintable(l.problems[0]));
        QCOMPARE(rows(db.lvwCustomers), (QStringList{"9k = Customer, Deleted|Deleted|Customer||||||",
                                                     "3k = zzzz\u00BBThree, Cy|Cy|Three||||||"}));
        // The first record in table order asked for the name and got none; the
        // next one finds the placeholder. An archived customer's name shows plain.
        QCOMPARE(rows(db.lvwInvoiceRecords), (QStringList{"A|9| = A||9||1|", "A|3| = A|Three, Cy|3||1|",
                                                          "B|9| = B|Customer, Deleted|9||1|"}));

        QCOMPARE(db.customerNameByCid(QStringLiteral("3")), QStringLiteral("zzzz\u00BBThree, Cy"));
        QCOMPARE(db.customerNameByCid(QStringLiteral("9")), QStringLiteral("Customer, Deleted"));
        QCOMPARE(shown, 1);
        QCOMPARE(db.customerNameByCid(QStringLiteral("40")), QString());
        QCOMPARE(shown, 2);
        QVERIFY(db.lvwCustomers.contains(u"40k"));

        // The placeholder is saved like any customer.
        QVERIFY(db.serialize().contains(crlf({"\t\t<Customer CID=\"9\">", "\t\t\t<FName>Deleted</FName>",
                                              "\t\t\t<LName>Customer</LName>", "\t\t\t<Current>Yes</Current>"})));

        // Records made by the program (not read) are named the same way.
        Database made;
        made.lvwCustomers.add("1k", fields({"Ames, Al", "Al", "Ames", "", "", "", "", "", ""}));
        made.lvwInvoiceRecords.add("X|1|", fields({"X", "1", "0", "2", ""}));
        made.lvwInvoiceRecords.add("X|2|", fields({"X", "2", "0", "2", "n"}));
        const QStringList p = made.fillInvoiceRecordNames();
        QCOMPARE(rows(made.lvwInvoiceRecords), (QStringList{"X|2| = X||2|0|2|n", "X|1| = X|Ames, Al|1|0|2|"}));
        QCOMPARE(p.size(), 3);  // the placeholder and two records naming item 2
    }

    void tableOrderAfterLoad()
    {
        Database db;
        load(db, dir,
             crlf({"<Customers>",
                   "<Customer CID=\"1\">", "<FName>Zed</FName>", "<LName>Old</LName>", "<Current>No</Current>",
                   "</Customer>",
                   "<Customer CID=\"2\">", "<FName>Ann</FName>", "<LName>Young</LName>", "</Customer>",
                   "<Customer CID=\"3\">", "<FName>Bea</FName>", "<LName>Adams</LName>", "</Customer>",
                   "<Customer CID=\"4\">", "<FName>Cal</FName>", "</Customer>",
                   "</Customers>",
                   "<BillPeriods>",
                   "<BillPeriod>", "<BPName>Later</BPName>", "<BPStart>2024/02/01</BPStart>", "</BillPeriod>",
                   "<BillPeriod>", "<BPName>Earlier</BPName>", "<BPStart>2023/12/01</BPStart>", "</BillPeriod>",
                   "</BillPeriods>",
                   "<ProductsAndServices>",
                   "<PS PSID=\"1\">", "<Item>Big</Item>", "<ItemPrice>$40.00</ItemPrice>", "</PS>",
                   "<PS PSID=\"2\">", "<Item>Huge</Item>", "<ItemPrice>$1,234.00</ItemPrice>", "</PS>",
                   "<PS PSID=\"3\">", "<Item>Small</Item>", "<ItemPrice>$5.00</ItemPrice>",
                   "<Current>No</Current>", "</PS>",
                   "</ProductsAndServices>",
                   "<InvoiceRecords>",
                   "<InvoiceRecord>", "<BP>May</BP>", "<CID>2</CID>", "<PSID Number=\"1\">1</PSID>",
                   "</InvoiceRecord>",
                   "<InvoiceRecord>", "<BP>Apr</BP>", "<CID>2</CID>", "<PSID Number=\"1\">1</PSID>",
                   "</InvoiceRecord>",
                   "<InvoiceRecord>", "<BP>May</BP>", "<CID>3</CID>", "<PSID Number=\"1\">1</PSID>",
                   "</InvoiceRecord>",
                   "</InvoiceRecords>"}));
        QStringList keys;
        for (int i = 1; i <= db.lvwCustomers.count(); ++i) keys << db.lvwCustomers.key(i);
        QCOMPARE(keys, (QStringList{"3k", "4k", "2k", "1k"}));
        QCOMPARE(db.lvwPeriods.text(1).section(FieldSep, 1, 1), QStringLiteral("Earlier"));
        keys.clear();
        for (int i = 1; i <= db.lvwPAndS.count(); ++i) keys << db.lvwPAndS.key(i);
        QCOMPARE(keys, (QStringList{"3k", "1k", "2k"}));
        QCOMPARE(db.lvwPAndS.text(3), QStringLiteral("000001234.00$1,234.00 - Huge"));
        keys.clear();
        for (int i = 1; i <= db.lvwInvoiceRecords.count(); ++i)
            keys << visible(db.lvwInvoiceRecords.text(i).section(FieldSep, 0, 1));
        QCOMPARE(keys, (QStringList{"Apr|Young, Ann", "May|Adams, Bea", "May|Young, Ann"}));
        for (const KeyedList *t : {&db.lvwCustomers, &db.lvwPeriods, &db.lvwPAndS, &db.lvwInvoiceRecords})
            QVERIFY(t->isSorted());
    }

    void bigFilesAndLongLines()
    {
        // Enough rows to cross the reader's blocks, and a note longer than a block.
        Database db;
        for (int c = 1; c <= 500; ++c) {
            const QString n = QString::number(c);
            const QString last = QStringLiteral("Last") + n;
            db.lvwCustomers.append(n + u'k', last + QStringLiteral(", First") + FieldSep + QStringLiteral("First") + FieldSep + last +
                                                 FieldSep + QStringLiteral("Street & Co") + QString(5, FieldSep));
        }
        db.lvwCustomers.resort();
        db.lvwPAndS.add("1k", QStringLiteral("000000005.00$5.00 - Five"));
        for (int p = 0; p < 130; ++p) {
            const QString period = QStringLiteral("P%1").arg(p, 3, 10, QLatin1Char('0'));
            for (int c = 1; c <= 500; ++c) {
                const QString cid = QString::number(c);
                db.lvwInvoiceRecords.append(period + FieldSep + cid + FieldSep,
                                            period + FieldSep + FieldSep + cid + FieldSep + QStringLiteral("1.5") + FieldSep +
                                                QStringLiteral("1") + ItemSep + QStringLiteral("1x2") + FieldSep + QStringLiteral("n\u00E9"));
            }
        }
        const QString longNote(9 << 20, u'x');
        db.lvwCustomers.add("9999k", fields({"Long", "Long", "", "", "", "", "", "", ""}) + longNote);
        db.fillInvoiceRecordNames();
        const QByteArray bytes = db.serialize();
        QVERIFY(bytes.size() > 16 << 20);

        Database back;
        const Loaded l = load(back, dir, bytes, QStringLiteral("big.xml"));
        QVERIFY(l.result.ok());
        QVERIFY(l.problems.isEmpty());
        QCOMPARE(back.lvwInvoiceRecords.count(), 130 * 500);
        QCOMPARE(back.lvwCustomers.textOf(u"9999k").size(), db.lvwCustomers.textOf(u"9999k").size());
        QVERIFY(back.serialize() == bytes);

        // The same with LF line ends only, and with CR alone.
        QByteArray lf = bytes;
        lf.replace("\r\n", "\n");
        Database viaLf;
        QVERIFY(load(viaLf, dir, lf, QStringLiteral("big.xml")).result.ok());
        QVERIFY(viaLf.serialize() == bytes);
        lf.replace('\n', '\r');
        Database viaCr;
        QVERIFY(load(viaCr, dir, lf, QStringLiteral("big.xml")).result.ok());
        QVERIFY(viaCr.serialize() == bytes);
    }

    void scansAndArchive()
    {
        Database db;
        QCOMPARE(Database::nextKeyNumber(db.lvwCustomers), 0);
        db.lvwCustomers.add("2k", fields({"Bee, B", "B", "Bee", "", "", "", "", "", ""}));
        db.lvwCustomers.add("10k", fields({"Ace, A", "A", "Ace", "", "", "", "", "", ""}));
        db.lvwCustomers.add("7k", fields({"Cee, C", "C", "Cee", "", "", "", "", "", ""}));
        db.lvwPAndS.add("12k", QStringLiteral("000000005.00$5.00 - Twelve"));
        db.lvwPAndS.add("1k", QStringLiteral("000000040.00$40.00 - One"));
        db.lvwPAndS.add("3k", QStringLiteral("000000001.00$1.00 - Three"));
        db.lvwInvoiceRecords.add("May|70|", fields({"May", "X", "70", "0", "3", ""}));
        db.lvwInvoiceRecords.add("May|10|", fields({"May", "Ace, A", "10", "0", "12x3", ""}));
        db.lvwInvoiceRecords.add("Jun|10|", fields({"Jun", "Ace, A", "10", "0", "3\u000212x2", ""}));
        QCOMPARE(Database::nextKeyNumber(db.lvwCustomers), 10);
        QCOMPARE(Database::nextKeyNumber(db.lvwPAndS), 12);

        std::vector<float> steps;
        auto progress = [&steps](float p) { steps.push_back(p); };
        QVERIFY(!db.customerIsBilled(QStringLiteral("7k"), progress));
        QCOMPARE(steps.size(), size_t(3));
        QCOMPARE(steps.back(), 100.0f);
        steps.clear();
        QVERIFY(db.customerIsBilled(QStringLiteral("10k"), progress));
        QVERIFY(steps.size() < 3);  // stopped at the first match
        QVERIFY(db.customerIsBilled(QStringLiteral("70")));
        QVERIFY(!db.customerIsBilled(QStringLiteral("0")));
        QVERIFY(db.productIsBilled(QStringLiteral("12k")));  // as 12x3 and 12x2
        QVERIFY(db.productIsBilled(QStringLiteral("3")));
        QVERIFY(!db.productIsBilled(QStringLiteral("1k")));  // 12 is not 1
        QVERIFY(!Database().productIsBilled(QStringLiteral("1k")));

        // Never billed: removed. Billed: archived, and moved behind the others.
        QCOMPARE(Database::deleteOrArchiveCustomer(db.lvwCustomers, QStringLiteral("7k"), false),
                 QStringLiteral("deleted"));
        QVERIFY(!db.lvwCustomers.contains(u"7k"));
        QCOMPARE(Database::deleteOrArchiveCustomer(db.lvwCustomers, QStringLiteral("10k"), true),
                 QStringLiteral("archived"));
        QCOMPARE(db.lvwCustomers.key(db.lvwCustomers.count()), QStringLiteral("10k"));
        QCOMPARE(db.lvwCustomers.textOf(u"10k"), fields({"zzzz\u00BBAce, A", "A", "Ace", "", "", "", "", "", ""}));
        // The archived row still counts for the next number.
        QCOMPARE(Database::nextKeyNumber(db.lvwCustomers), 10);

        // An archived item keeps its place among the prices.
        QCOMPARE(Database::deleteOrArchiveProduct(db.lvwPAndS, QStringLiteral("12k"), true),
                 QStringLiteral("archived"));
        QCOMPARE(db.lvwPAndS.textOf(u"12k"), QStringLiteral("000000005.00zzzz\u00BB$5.00 - Twelve"));
        QCOMPARE(db.lvwPAndS.indexOf(u"12k"), 2);
        QCOMPARE(Database::deleteOrArchiveProduct(db.lvwPAndS, QStringLiteral("1k"), false),
                 QStringLiteral("deleted"));
        QCOMPARE(db.lvwPAndS.count(), 2);
        // Written as not current, and read back archived.
        Database back;
        load(back, dir, db.serialize());
        QCOMPARE(back.lvwPAndS.textOf(u"12k"), db.lvwPAndS.textOf(u"12k"));
        QCOMPARE(back.lvwCustomers.textOf(u"10k"), db.lvwCustomers.textOf(u"10k"));
    }
};

QTEST_GUILESS_MAIN(TestDbFile)
#include "tst_dbfile.moc"
