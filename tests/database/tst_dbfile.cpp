// SPDX-License-Identifier: GPL-3.0-or-later
// The database file as a whole: refused files and the copy kept of them,
// failed saves, versions, rights, the placeholder customer and big files.
#include "database/filesafety.h"
#include "database/versions.h"
#include "dbfiletest.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <memory>

using namespace qor;
using namespace dbtest;

namespace {

// Enough rows to cross the reader's and the writer's blocks, a note longer
// than a block, and a record of thousands of entries that name a missing item.
void fillBig(Database &db)
{
    qor::test::TablesEdit tables(db);
    for (int c = 1; c <= 500; ++c) {
        const QString last = QStringLiteral("Last%1").arg(c);
        tables.customers.append(QString::number(c) + u'k',
                                joined({last + ", First", "First", last, "Street & Co", "", "", "", "", ""}));
    }
    tables.customers.add("9999k", fields({"Long", "Long", "", "", "", "", "", ""}) + FieldSep + QString(9 << 20, u'x'));
    tables.items.add("1k", QStringLiteral("000000005.00$5.00 - Five"));
    for (int p = 0; p < 130; ++p)
        for (int c = 1; c <= 500; ++c)
            tables.invoiceRecords.append(QStringLiteral("P%1").arg(p) + FieldSep + QString::number(c) + FieldSep,
                                         QStringLiteral("P%1").arg(p) + FieldSep + FieldSep + QString::number(c) +
                                             fields({"", "1.5", "1\u00021x2", "n\u00E9"}));
    tables.invoiceRecords.append(fields({"Q", "1", ""}),
                                 fields({"Q", "", "1", "0", ""}) + QStringList(5000, "2x3").join(ItemSep) + FieldSep);
}

struct stat statOf(const QString &path)
{
    struct stat st {};
    ::stat(QFile::encodeName(path).constData(), &st);
    return st;
}

QByteArray customerFile(const QByteArray &cidA, const QByteArray &cidB)
{
    return crlf({"<QOR-DB>", "\t<Customers>", "\t\t<Customer CID=\"" + cidA + "\">", "\t\t\t<FName>Ann</FName>",
                 "\t\t</Customer>", "\t\t<Customer CID=\"" + cidB + "\">", "\t\t\t<FName>Bob</FName>",
                 "\t\t</Customer>", "\t</Customers>", "</QOR-DB>"});
}

}  // namespace

class TestDbFile : public Fixture {
    Q_OBJECT

private slots:
    void refusedFiles_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<int>("line");
        QTest::addColumn<QString>("says");
        QTest::newRow("customer twice, once with k") << customerFile("7", "7K") << 6 << "customer with the number 7";
        QTest::newRow("item twice")
            << crlf({"<ProductsAndServices>", "<PS PSID=\"5\">", "<Item>A</Item>", "</PS>", "", "<!-- x -->",
                     "<PS PSID=\"5\">", "<Item>B</Item>", "</PS>", "</ProductsAndServices>"})
            << 7 << "item with the number 5";
        QTest::newRow("period twice") << crlf({"<BillPeriods>", "<BillPeriod>", "<BPName>May</BPName>", "</BillPeriod>",
                                               "<BillPeriod>", "<BPName>May</BPName>", "</BillPeriod>", "</BillPeriods>"})
                                      << 5 << "bill period named \"May\"";
        QTest::newRow("record twice")
            << crlf({"<InvoiceRecords>", "<InvoiceRecord>", "<BP>May</BP>", "<CID>3</CID>", "</InvoiceRecord>",
                     "<InvoiceRecord>", "<BP>Jun</BP>", "<CID>3</CID>", "</InvoiceRecord>", "<InvoiceRecord>",
                     "<BP>May</BP>", "<CID>3</CID>", "</InvoiceRecord>", "</InvoiceRecords>"})
            << 10 << "record of customer 3 in bill period \"May\"";
        static const char withNul[] = "<QOR-DB>\r\n<Customers>\r\n\r\n<Cust\0omer>\r\n";
        QTest::newRow("NUL byte") << QByteArray(withNul, sizeof withNul - 1) << 4 << "0x00";
        QTest::newRow("NUL in a CR-ended line") << QByteArray("a\rb\x1b\rc\0\r", 9) << 3 << "0x00";
        // Content without any section; an unrelated XML file; a root without
        // sections, or with text after it.
        QTest::newRow("no section") << QByteArray("Shopping list:\r\nmilk\r\n") << 1 << "\"Shopping list:\"";
        QTest::newRow("other XML") << crlf({"<?xml version=\"1.0\"?>", "<Customers>", "</Customers>"}) << 1
                                   << "looks damaged";
        QTest::newRow("empty root") << crlf({"<QOR-DB>", "</QOR-DB>"}) << 0 << "holds no section";
        QTest::newRow("text after the root") << crlf({"<QOR-DB>", "</QOR-DB>", "x"}) << 3 << "looks damaged";
        const QString wide = QStringLiteral("<QOR-DB>\r\n");
        QTest::newRow("UTF-16 text") << QByteArray(reinterpret_cast<const char *>(wide.utf16()), wide.size() * 2) << 1
                                     << "0x00";
    }

    void refusedFiles()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(int, line);
        QFETCH(QString, says);
        QTemporaryDir own;  // a copy of its own each
        const QString path = own.filePath(QStringLiteral("refused.xml"));
        QVERIFY(writeFile(path, bytes));
        Database db;
        fillEveryKind(db);
        const ReadResult r = db.read(path);
        QCOMPARE(r.status, ReadResult::Status::Rejected);
        QCOMPARE(r.line, line);
        for (const QString &part :
             {QDir::toNativeSeparators(path), line ? QStringLiteral("line %1").arg(line) : says, says})
            QVERIFY2(r.message.contains(part), qPrintable(r.message));
        QVERIFY(r.keepsCopyOnSave && tablesEmpty(db));
        // Saving elsewhere keeps nothing; the first save over it keeps a copy, named by the time; later ones don't.
        QVERIFY(db.save(own.filePath(QStringLiteral("elsewhere.xml"))).keptCopy.isEmpty());
        const SaveResult s = db.save(path);
        QVERIFY(db.save(path).keptCopy.isEmpty());
        QVERIFY2(s.ok && readFile(s.keptCopy) == bytes && readFile(path) == db.serialize(), qPrintable(s.message));
        const QRegularExpression named(QStringLiteral("/refused\\.xml\\.unreadable-\\d{8}-\\d{6}$"));
        QVERIFY2(s.keptCopy.contains(named), qPrintable(s.keptCopy));
    }

    void pathsThatCannotBeRead()
    {
        Database db;
        fillEveryKind(db);
        const ReadResult folder = db.read(dir.path());
        QCOMPARE(folder.status, ReadResult::Status::Rejected);
        QVERIFY(folder.message.contains(QDir::toNativeSeparators(dir.path())) && tablesEmpty(db));
        // Missing: the program makes an empty file; a checking tool must not.
        const QString missing = dir.filePath(QStringLiteral("missing.xml"));
        fillEveryKind(db);
        QCOMPARE(db.read(missing, Database::MissingFile::Reject).status, ReadResult::Status::Rejected);
        QVERIFY(!QFileInfo::exists(missing) && tablesEmpty(db));
        fillEveryKind(db);
        QCOMPARE(db.read(missing).status, ReadResult::Status::Created);
        QVERIFY(QFileInfo(missing).size() == 0 && tablesEmpty(db));
        QCOMPARE(db.read(dir.filePath(QStringLiteral("no/such/folder/QOR.xml"))).status, ReadResult::Status::Rejected);
    }

    void copyKeptOfUnreadableFile()
    {
        // Refused again within the same second: the second copy doesn't replace the first.
        const QString path = dir.filePath(QStringLiteral("QOR.xml"));
        const QByteArray old = customerFile("4", "4");
        Database db;
        QStringList kept;
        for (const QByteArray &bytes : QList<QByteArray>{old, old + "again"}) {
            QVERIFY(writeFile(path, bytes) && db.read(path).status == ReadResult::Status::Rejected);
            kept << db.save(path).keptCopy;
        }
        QVERIFY(kept[0] != kept[1] && readFile(kept[0]) == old && readFile(kept[1]) == old + "again");
        // Blank lines alone are nothing to keep.
        const QString notes = dir.filePath(QStringLiteral("notes.xml"));
        QVERIFY(writeFile(notes, "\r\n  \t\r\n") && !db.read(notes).keepsCopyOnSave);
        QVERIFY(db.save(notes).keptCopy.isEmpty());
        // A good read of a file clears the mark left by a refused one.
        QVERIFY(writeFile(path, old) && !db.read(path).ok());
        QVERIFY(writeFile(path, customerFile("1", "2")) && db.read(path).ok());
        QVERIFY(db.save(path).keptCopy.isEmpty());
    }

    void failedSavesLeaveOldFile()
    {
        // Bigger than the writer's blocks, so a failure can come in any of several writes.
        Database db;
        fillBig(db);
        db.fillInvoiceRecordNames();
        const QByteArray content = db.serialize();
        QVERIFY(content.size() > (qint64(16) << 20));
        QTemporaryDir own;
        const QString path = own.filePath(QStringLiteral("QOR.xml"));
        const QByteArray old = customerFile("1", "2");
        QVERIFY(writeFile(path, old));
        QVERIFY(QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup));
        auto oldFileAlone = [&] { return readFile(path) == old && QDir(own.path()).entryList(QDir::Files | QDir::Hidden) == QStringList{"QOR.xml"}; };

        // The disk runs out half-way (a file size limit, which binds even root).
        rlimit saved{};
        QCOMPARE(getrlimit(RLIMIT_FSIZE, &saved), 0);
        const rlimit small{65536, saved.rlim_max};
        auto previous = std::signal(SIGXFSZ, SIG_IGN);
        QCOMPARE(setrlimit(RLIMIT_FSIZE, &small), 0);
        const SaveResult full = db.save(path);
        setrlimit(RLIMIT_FSIZE, &saved);
        std::signal(SIGXFSZ, previous);
        // The message names the file and the system's own reason, not "Unknown error".
        QVERIFY2(!full.ok && oldFileAlone() && full.message.contains(QDir::toNativeSeparators(path)) &&
                     full.message.contains(QString::fromLocal8Bit(std::strerror(EFBIG))),
                 qPrintable(full.message));
        for (qint64 failAt : {qint64(0), qint64(1), qint64(4095), qint64(8) << 20, (qint64(8) << 20) + 1,
                              content.size() / 2, content.size() - 1}) {
            const SaveResult r = db.save(path, [failAt](QIODevice &file) { return std::make_unique<dbtest::Failing>(file, failAt); });
            QVERIFY2(!r.ok && oldFileAlone() && r.message.contains(QLatin1String("No space left on device")),
                     qPrintable(r.message));
        }
        // A folder that is a file, a name that is a folder or a pipe: each is left as it is.
        const QString blocker = own.filePath(QStringLiteral("blocker")),
                      folder = own.filePath(QStringLiteral("folder.xml")),
                      pipe = own.filePath(QStringLiteral("pipe.xml"));
        QVERIFY(writeFile(blocker, "not a folder") && QDir(own.path()).mkdir(QStringLiteral("folder.xml")));
        QCOMPARE(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
        for (const QString &target : {blocker + QStringLiteral("/QOR.xml"), folder, pipe}) {
            const SaveResult r = db.save(target);
            QVERIFY2(!r.ok && r.message.contains(QDir::toNativeSeparators(target)), qPrintable(r.message));
        }
        QVERIFY(readFile(blocker) == "not a folder" && QFileInfo(folder).isDir() && !QFileInfo(pipe).isFile() &&
                QFileInfo::exists(pipe));
        // The device that fails at the last byte only would have written it all,
        // and the permission bits of the old file stay with the new one.
        const SaveResult whole =
            db.save(path, [&](QIODevice &file) { return std::make_unique<dbtest::Failing>(file, content.size()); });
        QVERIFY2(whole.ok && readFile(path) == content, qPrintable(whole.message));
        QCOMPARE(statOf(path).st_mode & 07777, mode_t(0640));
        // Read back with any line end; past a thousand, the records naming a missing item are summed up.
        for (const QByteArray &variant :
             {content, QByteArray(content).replace("\r\n", "\n"), QByteArray(content).replace("\r\n", "\r")}) {
            Database back;
            const Loaded l = load(back, dir, variant);
            QVERIFY(l.result.ok() && back.invoiceRecords().count() == 130 * 500 + 1);
            QVERIFY(l.problems.size() == 1000 + 1 && l.problems.last().contains(QLatin1String("4000 more")));
            QVERIFY(back.serialize() == content);
        }
    }

    // Which versions a policy keeps: the newest n, the newest of each of the
    // last days, all within the size; the oldest go first.
    void versionsDropped_data()
    {
        QTest::addColumn<QStringList>("stamps");  // oldest first, "yyyy-MM-dd HH:mm size"
        QTest::addColumn<int>("newest");
        QTest::addColumn<int>("days");
        QTest::addColumn<int>("maxBytes");
        QTest::addColumn<QList<int>>("dropped");
        const QStringList sameDay{"2024-05-10 09:00 10", "2024-05-10 10:00 10", "2024-05-10 11:00 10",
                                  "2024-05-10 12:00 10"};
        QTest::newRow("newest two") << sameDay << 2 << 0 << 1000 << QList<int>{0, 1};
        QTest::newRow("one a day on top") << QStringList{"2024-05-08 09:00 10", "2024-05-08 17:00 10",
                                                         "2024-05-09 09:00 10", "2024-05-10 09:00 10",
                                                         "2024-05-10 12:00 10"}
                                          << 1 << 60 << 1000 << QList<int>{0, 3};
        QTest::newRow("days end") << QStringList{"2024-03-01 09:00 10", "2024-05-01 09:00 10", "2024-05-10 12:00 10"}
                                  << 1 << 60 << 1000 << QList<int>{0};
        QTest::newRow("size: oldest go first") << sameDay << 4 << 0 << 25 << QList<int>{0, 1};
        QTest::newRow("size never drops the newest") << QStringList{"2024-05-10 09:00 10", "2024-05-10 10:00 900"}
                                                     << 20 << 60 << 100 << QList<int>{0};
        QTest::newRow("nothing to drop") << sameDay << 20 << 60 << 1000 << QList<int>{};
    }
    void versionsDropped()
    {
        QFETCH(QStringList, stamps);
        QFETCH(int, newest);
        QFETCH(int, days);
        QFETCH(int, maxBytes);
        QFETCH(QList<int>, dropped);
        QList<versions::Version> list;
        for (const QString &s : stamps)
            list << versions::Version{{}, QDateTime::fromString(s.left(16), QStringLiteral("yyyy-MM-dd HH:mm")), s.mid(17).toLongLong()};
        const QDateTime now = QDateTime::fromString(QStringLiteral("2024-05-10 13:00"), QStringLiteral("yyyy-MM-dd HH:mm"));
        QCOMPARE(versions::toDrop(list, versions::Policy{newest, days, maxBytes}, now), dropped);
    }

    // Each save keeps the file it replaces: a hard link in "<name>.versions",
    // named by the replaced file's time, "-2" for a second in one second.
    void versionsKeptBySaves()
    {
        QTemporaryDir own;
        const QString path = own.filePath(QStringLiteral("shop.xml"));
        QVERIFY(writeFile(path, customerFile("1", "2")));
        const QDateTime stamp = QDateTime::fromString(QStringLiteral("2024-01-31 09:30:00"), QStringLiteral("yyyy-MM-dd HH:mm:ss"));
        auto setTime = [&path](const QDateTime &t) {
            QFile f(path);
            return f.open(QIODevice::ReadWrite) && f.setFileTime(t, QFileDevice::FileModificationTime);
        };
        Database db;
        fillEveryKind(db);
        Database::SaveOptions keep;
        keep.versions = versions::Policy{};
        QByteArray previous = readFile(path);
        for (int i = 0; i < 3; ++i) {
            QVERIFY(setTime(stamp));
            const ino_t before = statOf(path).st_ino;
            db.setCompanyField(0, QString::number(i));
            const SaveResult r = db.save(path, keep);
            QVERIFY2(r.ok && r.notes.isEmpty(), qPrintable(r.message + r.notes.join(u' ')));
            QCOMPARE(r.version, own.filePath(QStringLiteral("shop.xml.versions/shop-20240131-093000")) +
                                    (i ? QStringLiteral("-%1.xml").arg(i + 1) : QStringLiteral(".xml")));
            QCOMPARE(statOf(r.version).st_ino, before);  // linked, not copied
            QVERIFY(readFile(r.version) == previous);
            previous = readFile(path);
        }
        const QList<versions::Version> all = versions::list(path);
        QVERIFY(all.size() == 3 && all.first().time == stamp && all.last().path.endsWith(QLatin1String("-3.xml")));
        // Pruned to the newest one when the policy says so.
        keep.versions->newest = 1;
        keep.versions->days = 0;
        QVERIFY(db.save(path, keep).ok);
        QCOMPARE(versions::list(path).size(), 1);

        // Across file systems a version is a copy with the replaced file's time.
        if (QFileInfo(QStringLiteral("/dev/shm")).isDir() &&
            statOf(QStringLiteral("/dev/shm")).st_dev != statOf(own.path()).st_dev) {
            QTemporaryDir elsewhere(QStringLiteral("/dev/shm/qor-versions-XXXXXX"));
            QVERIFY(QDir(own.path()).rename(QStringLiteral("shop.xml.versions"), QStringLiteral("old.versions")));
            QVERIFY(QFile::link(elsewhere.path(), own.filePath(QStringLiteral("shop.xml.versions"))));
            QVERIFY(setTime(stamp.addSecs(60)));
            const QByteArray replaced = readFile(path);
            const SaveResult copied = db.save(path, keep);
            QVERIFY(copied.ok && copied.version.contains(QLatin1String("-20240131-093100")) &&
                    readFile(copied.version) == replaced);
            QCOMPARE(QFileInfo(copied.version).lastModified(), stamp.addSecs(60));
            QCOMPARE(QFileInfo(copied.version).permissions() & 0x0077, QFileDevice::Permissions());
            QFile::remove(own.filePath(QStringLiteral("shop.xml.versions")));
        } else {
            qWarning("no second file system at /dev/shm: the copy of a version is not tried");
        }
        // A folder that can't be made: the save goes on, and the user hears why.
        QVERIFY(writeFile(own.filePath(QStringLiteral("shop.xml.versions")), "a file, not a folder"));
        const SaveResult noFolder = db.save(path, keep);
        QVERIFY2(noFolder.ok && noFolder.version.isEmpty() && noFolder.notes.size() == 1 &&
                     noFolder.notes[0].contains(QLatin1String("shop.xml.versions")),
                 qPrintable(noFolder.notes.join(u'|')));
        QVERIFY(readFile(path) == db.serialize());
    }

    // Only the temporaries of interrupted saves of this file, older than the
    // running program, are cleaned up.
    void temporariesOfInterruptedSaves()
    {
        QTemporaryDir own;
        const QString path = own.filePath(QStringLiteral("QOR.xml"));
        const QDateTime start = QDateTime::currentDateTime();
        // name, written seconds before the start, removed
        const std::tuple<const char *, int, bool> leftovers[] = {
            {".QOR.xml.new-aB3xY9", 3600, true}, {".QOR.xml.new-aB3xY", 3600, false}, {".QOR.xml.new-aB3xY9z", 3600, false}, {".QOR.xml.new-aB3_Y9", 3600, false}, {".Other.xml.new-aB3xY9", 3600, false}, {"QOR.xml.new-aB3xY9", 3600, false}, {".QOR.xml.new-Later1", -3600, false}};
        for (auto [name, age, removed] : leftovers) QVERIFY(writeOld(own.filePath(name), age));
        QCOMPARE(files::removeStaleTemporaries(path, start), QStringList{own.filePath(".QOR.xml.new-aB3xY9")});
        for (auto [name, age, removed] : leftovers) QCOMPARE(QFileInfo::exists(own.filePath(name)), !removed);
    }

    // A new file is the user's alone whatever the umask; a replaced file keeps
    // its access ACL; other names of a replaced file are told; a copy counts
    // only once it reads back the same.
    void rightsOfWrittenFiles()
    {
        QTemporaryDir own;
        const mode_t mask = ::umask(0);
        const QString fresh = own.filePath(QStringLiteral("new.xml"));
        Database db;
        db.setCompanyField(0, QStringLiteral("Acme"));
        const bool saved = db.save(fresh).ok;
        const QString copy = own.filePath(QStringLiteral("copy"));
        const QString verified = files::writeVerified(copy, "bytes");
        ::umask(mask);
        QVERIFY(saved && verified.isEmpty());
        for (const QString &p : {fresh, copy})
            QCOMPARE(QFileInfo(p).permissions() & 0x7777, QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser);
        // The same copy through a disk that fills up: not written, nothing left.
        const QString full = files::writeVerified(own.filePath(QStringLiteral("full")), QByteArray(100000, 'x'),
                                                  [](QIODevice &f) { return std::make_unique<dbtest::Failing>(f, 5000); });
        QVERIFY(full.contains(QLatin1String("No space left")) &&
                !QFileInfo::exists(own.filePath(QStringLiteral("full"))));

        // An ACL giving user 4242 read access: version 2, then tag, rights, id.
        QByteArray acl;
        auto put = [&acl](auto v) { acl.append(reinterpret_cast<const char *>(&v), sizeof v); };
        put(quint32(2));
        const quint32 entries[] = {0x01, 6, ~0u, 0x02, 4, 4242, 0x04, 4, ~0u, 0x10, 4, ~0u, 0x20, 0, ~0u};
        for (size_t i = 0; i < std::size(entries); i += 3)
            put(quint16(entries[i])), put(quint16(entries[i + 1])), put(entries[i + 2]);
        const QByteArray name = QFile::encodeName(fresh);
        if (::setxattr(name.constData(), "system.posix_acl_access", acl.constData(), size_t(acl.size()), 0) != 0) {
            QVERIFY2(errno == ENOTSUP || errno == EOPNOTSUPP, std::strerror(errno));
            qWarning("no ACLs on this file system: keeping them is not tried");
        } else {
            db.setCompanyField(0, QStringLiteral("Changed"));
            QVERIFY(db.save(fresh).ok);
            char back[256];
            const ssize_t n = ::getxattr(name.constData(), "system.posix_acl_access", back, sizeof back);
            QCOMPARE(QByteArray(back, int(std::max<ssize_t>(n, 0))), acl);
        }
        // A second name of the file keeps the old content, and the save says so.
        const QString other = own.filePath(QStringLiteral("other-name.xml"));
        QCOMPARE(::link(name.constData(), QFile::encodeName(other).constData()), 0);
        const SaveResult linked = db.save(fresh);
        QVERIFY(linked.ok && linked.notes.size() == 1 && linked.notes[0].contains(QLatin1String("other names")));
    }

    void outOfMemoryIsToldNotAborted()
    {
        // A note of 200 MB needs 400 MB as text: in a process allowed 256 MB
        // more than it has, the load is refused with a message.
        const QString path = dir.filePath(QStringLiteral("huge.xml"));
        const QByteArray huge = "<Customers>\r\n<Customer CID=\"1\">\r\n<Notes>" + QByteArray(200 << 20, 'n') +
                                "</Notes>\r\n</Customer>\r\n</Customers>\r\n";
        QVERIFY(writeFile(path, huge));
        const pid_t child = fork();
        QVERIFY(child >= 0);
        if (child == 0) {
            // The address space in use now, from /proc, plus 256 MB.
            const qint64 pages = readFile(QStringLiteral("/proc/self/statm")).split(' ').value(0).toLongLong();
            struct rlimit limit;
            limit.rlim_cur = limit.rlim_max = rlim_t(pages * sysconf(_SC_PAGESIZE) + (qint64(256) << 20));
            setrlimit(RLIMIT_AS, &limit);
            Database db;
            const ReadResult r = db.read(path);
            const bool told = r.status == ReadResult::Status::Rejected && r.keepsCopyOnSave &&
                              r.message.contains(QLatin1String("not enough memory")) && tablesEmpty(db);
            _exit(told ? 0 : 1);
        }
        int status = 0;
        QCOMPARE(waitpid(child, &status, 0), child);
        QVERIFY2(WIFEXITED(status), "the load was aborted");
        QCOMPARE(WEXITSTATUS(status), 0);
        QVERIFY(readFile(path) == huge);
        QFile::remove(path);
    }

    // A record of a missing customer holds its place with a placeholder, named
    // in every record of it, as the next load of the saved file gives it; a
    // number in another form names the same customer; one without a usable
    // number gets none; empty item entries keep their places.
    void placeholderCustomer()
    {
        QList<QByteArray> lines{"<Customers>", "<Customer CID=\"3\">", "<FName>Cy</FName>", "<LName>Three</LName>",
                                "<Current>No</Current>", "</Customer>", "<Customer CID=\"5\">", "<FName>Five</FName>",
                                "</Customer>", "</Customers>", "<ProductsAndServices>", "<PS PSID=\"1\">", "</PS>",
                                "<PS PSID=\"2\">", "</PS>", "</ProductsAndServices>", "<InvoiceRecords>"};
        // period:customer number
        for (const char *p : {"B:9", "A:9", "A:3", "P1:5k", "P2: 5", "P3:5K", "P4:7A", "P5:7a", "P6:", "P7:0"}) {
            const QList<QByteArray> bc = QByteArray(p).split(':');
            lines += {"<InvoiceRecord>", "<BP>" + bc[0] + "</BP>", "<CID>" + bc[1] + "</CID>",
                      "<PSID Number=\"1\">1</PSID>", "<PSID Number=\"2\"></PSID>", "<PSID Number=\"3\">2x2</PSID>",
                      "</InvoiceRecord>"};
        }
        Database db;
        int shown = 0;
        QObject::connect(&db, &Database::placeholderCreated, [&shown] { ++shown; });
        const Loaded l = load(db, dir, crlf(lines << "</InvoiceRecords>"));
        QVERIFY(l.result.ok());
        QCOMPARE(shown, 2);  // 9 and 7a, each told once
        QVERIFY2(l.problems.size() == 2 && l.problems[0].contains(QLatin1String("customer number 9")),
                 qPrintable(l.problems.join(u'|')));
        const QString gone = QStringLiteral("Customer, Deleted|Deleted|Customer||||||");
        QCOMPARE(rows(db.customers()), (QStringList{"9k = " + gone, "7ak = " + gone, "5k = Five|Five|||||||",
                                                    "3k = zzzz\u00BBThree, Cy|Cy|Three||||||"}));
        // An archived customer's name shows plain.
        QCOMPARE(rows(db.invoiceRecords()),
                 (QStringList{"A|9| = A|Customer, Deleted|9||1++2x2|", "A|3| = A|Three, Cy|3||1++2x2|",
                              "B|9| = B|Customer, Deleted|9||1++2x2|", "P1|5k| = P1|Five|5k||1++2x2|",
                              "P2| 5| = P2|Five| 5||1++2x2|", "P3|5K| = P3|Five|5K||1++2x2|",
                              "P4|7A| = P4|Customer, Deleted|7A||1++2x2|", "P5|7a| = P5|Customer, Deleted|7a||1++2x2|",
                              "P6|| = P6||||1++2x2|", "P7|0| = P7||0||1++2x2|"}));
        QCOMPARE(db.customerNameByCid(QStringLiteral("3")), QStringLiteral("zzzz\u00BBThree, Cy"));
        QCOMPARE(db.customerNameByCid(QStringLiteral("40")), QString());
        QVERIFY(shown == 3 && db.customers().contains(u"40k"));
    }
};

QTEST_GUILESS_MAIN(TestDbFile)
#include "tst_dbfile.moc"
