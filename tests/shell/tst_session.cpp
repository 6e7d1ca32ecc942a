// SPDX-License-Identifier: GPL-3.0-or-later
// The session without a window: what a read and a save tell the views, and
// which questions they put to the session's owner, answered in advance.
#include "../database/dbfiletest.h"
#include "database/rowtypes.h"
#include "settings/settingsstore.h"
#include "shell/session.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>
#include <deque>

using namespace qor;
using namespace Qt::StringLiterals;
using Answer = SessionQuestions::Answer;
using Tone = SessionQuestions::Tone;

// Answers given in advance: each question takes the next queued answer, else
// `answer`; one the question has no button for is the question closed
// (Cancel). Every question is recorded; file names come from their queue.
struct ScriptedQuestions : SessionQuestions {
    QList<Question> seen;
    QStringList fileTitles;
    std::deque<Answer> nextAnswers;
    Answer answer = Answer::Cancel;
    std::deque<QString> nextFileNames;
    const Question &last() const { return seen.last(); }
    Answer ask(const Question &q) override
    {
        seen << q;
        Answer a = answer;
        if (!nextAnswers.empty()) a = nextAnswers.front(), nextAnswers.pop_front();
        return q.answers.contains(a) ? a : Answer::Cancel;
    }
    QString databaseFile(bool, const QString &title) override
    {
        fileTitles << title;
        if (nextFileNames.empty()) return {};
        const QString name = nextFileNames.front();
        nextFileNames.pop_front();
        return name;
    }
    bool goOnClosingBooks() override { return true; }
    bool statementsBeforeClosingBooks(const Database &, const QString &) override { return true; }
    bool mayDropOpenEntry(Database &) override { return true; }
};

class TstSession : public QObject {
    Q_OBJECT
    QTemporaryDir dir;
    ScriptedQuestions dialogs;  // anew for each test
    QString path() const { return dir.path() + u"/QOR.xml"_s; }
    void writeFile(const QByteArray &bytes)
    {
        QFile f(path());
        QVERIFY(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
        f.write(bytes);
    }

private slots:
    void initTestCase()
    {
        qputenv("XDG_CONFIG_HOME", (dir.path() + u"/config"_s).toLocal8Bit());
        qputenv("XDG_DATA_HOME", (dir.path() + u"/data"_s).toLocal8Bit());
        settings::DatabasePath.set(path());
    }
    void init()
    {
        for (const QString &f : QDir(dir.path()).entryList(QDir::Files | QDir::Hidden)) QFile::remove(at(f));
        dialogs = ScriptedQuestions();
    }

    // An unsaved customer in the books.
    static void addCustomer(Session &session, int number, const QString &first)
    {
        CustomerRow c;
        c.firstName = c.displayName = first;
        session.db().addCustomer(c, numberKey(number));
    }
    // A loaded session whose books hold one unsaved customer.
    std::unique_ptr<Session> changedSession(SessionQuestions &questions, const QString &first = u"Ann"_s)
    {
        settings::DatabasePath.set(path());
        auto session = std::make_unique<Session>();
        session->setQuestions(&questions);
        session->load();
        addCustomer(*session, 1, first);
        return session;
    }
    QString at(const QString &name) const { return dir.filePath(name); }
    static std::unique_ptr<Database> readBack(const QString &file)
    {
        auto db = std::make_unique<Database>();
        db->read(file, Database::MissingFile::Reject);
        return db;
    }

    void loadTellsTheViewsInOrder()
    {
        const QByteArray good =
            "<QOR-DB>\r\n\t<Customers>\r\n\t\t<Customer CID=\"1\">\r\n\t\t\t<FName>Ann</FName>\r\n"
            "\t\t\t<Current>Yes</Current>\r\n\t\t</Customer>\r\n\t</Customers>\r\n</QOR-DB>\r\n";
        const QByteArray refused = QByteArray("<QOR-DB>\r\n") + char(0) + QByteArray("\r\n</QOR-DB>\r\n");
        // No file; one that reads; one that is refused (and told).
        for (const auto &[bytes, customers] : {std::pair{QByteArray(), 0}, {good, 1}, {refused, 0}}) {
            const bool exists = !bytes.isNull(), fileRead = customers > 0, told = exists && !fileRead;
            QFile::remove(path());
            if (exists) writeFile(bytes);
            Session session;
            Database &db = session.db();
            db.setChanged(true);
            QStringList heard;
            connect(&db, &Database::aboutToReload, this, [&] { heard << u"about"_s; });
            connect(&db, &Database::fileRead, this, [&] { heard << (db.isChanged() ? u"read+changed"_s : u"read"_s); });
            connect(&db, &Database::reloaded, this, [&] { heard << u"reloaded"_s; });
            ScriptedQuestions dialogs;
            session.setQuestions(&dialogs);
            const ReadResult r = session.load();
            QCOMPARE(session.path(), path());
            // The changed state ends before the views hear the file was read.
            QCOMPARE(heard.join(u' '), fileRead ? u"about read reloaded"_s : u"about reloaded"_s);
            QVERIFY(db.isChanged() != fileRead && db.customers().count() == customers);
            QCOMPARE(dialogs.seen.size(), told ? 1 : 0);
            if (told) QVERIFY(dialogs.last().tone == Tone::Warning && dialogs.last().text == r.message);
        }
    }

    void savesTellFailuresAndChangesOnDisk()
    {
        auto session = changedSession(dialogs);
        const QString ann = session->db().customers().textOf(u"1k");
        QFile::remove(path());
        QVERIFY(QDir().mkdir(path()));  // a folder under the file's name: nothing may replace it
        QVERIFY(!session->save());
        QVERIFY(dialogs.seen.size() == 1 && dialogs.last().tone == Tone::Critical && session->db().isChanged());
        QVERIFY(QDir().rmdir(path()));
        QVERIFY(session->save() && !session->db().isChanged() && dialogs.seen.size() == 1);
        // A save notices a file another program changed since it was read.
        session->db().setChanged(true);
        QVERIFY(dbtest::writeFile(path(), "<QOR-DB>\r\n</QOR-DB>\r\n"));
        for (auto answer : {Answer::Cancel, Answer::Yes}) {
            dialogs.nextAnswers = {answer};
            QCOMPARE(session->save(), answer == Answer::Yes);
            QVERIFY(dialogs.last().text.contains(u"changed on disk"_s));
            QCOMPARE(dbtest::readFile(path()).contains("Ann"), answer == Answer::Yes);
        }
        Session again;
        again.load();
        QCOMPARE(again.db().customers().textOf(u"1k"), ann);
    }

    // New, Open, Save As and closing the books once a name was typed: the file
    // the books then belong to, and what it and the old file hold. A step
    // that can't complete leaves the path, the settings and the books as they
    // were; the user hears why (said: the last message, else none after the
    // question about unsaved changes).
    void fileSteps_data()
    {
        QTest::addColumn<int>("button");  // 4: close the books
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("becomes");  // empty: nothing changed
        QTest::addColumn<int>("kept");         // customers in the old file
        QTest::addColumn<QString>("said");
        auto row = [](const char *name, int button, const char *typed, const char *becomes, int kept,
                      const char *said) {
            QTest::newRow(name) << button << QString::fromLatin1(typed) << QString::fromLatin1(becomes) << kept
                                << QString::fromLatin1(said);
        };
        const char *const taken = "new (unique) file name", *const notFolder = "Not a directory";
        row("new", 0, "Fresh", "Fresh.xml", 0, "");
        row("new, taken once .xml is added", 0, "QOR", "", 0, taken);
        row("new in a folder that is a file", 0, "blocker/New.xml", "", 0, notFolder);
        row("open an empty file", 1, "empty.xml", "empty.xml", 0, "");
        row("open a name no file has", 1, "Nowhere", "Nowhere.xml", 0, "");
        row("open a damaged file", 1, "damaged.xml", "", 0, "damaged.xml");
        row("save as", 3, "Books", "Books.xml", 0, "");
        row("save as, capitals kept", 3, "Copy.XML", "Copy.XML", 0, "");
        row("save as, cancelled", 3, "", "", 0, "");
        row("save as where nothing can be written", 3, "blocker/Copy.xml", "", 0, notFolder);
        row("close the books", 4, "Year2", "Year2.xml", 1, "");
        row("close the books, cancelled", 4, "", "", 0, taken);
        row("close the books, name taken", 4, "QOR", "", 0, taken);
        row("close the books there", 4, "blocker/Year2.xml", "", 1, notFolder);
    }
    void fileSteps()
    {
        QFETCH(int, button);
        QFETCH(QString, typed);
        QFETCH(QString, becomes);
        QFETCH(int, kept);
        QFETCH(QString, said);
        QVERIFY(dbtest::writeFile(at(u"blocker"_s), "a file, not a folder"));  // not a folder, even for root
        QVERIFY(dbtest::writeFile(at(u"damaged.xml"_s), "<QOR-DB>\r\n<Customers>\r\n</QOR-DB>\r\n"));
        QVERIFY(dbtest::writeFile(at(u"empty.xml"_s), QByteArray()));
        auto session = changedSession(dialogs);
        // Closing the books carries the customers and products over, not the periods and records.
        session->db().addItem(item::make(u"000000001.00"_s, u"$1.00"_s, u"Pen"_s));
        InvoiceRecordRow record;
        record.period = u"Jan"_s;
        record.cid = u"1"_s;
        PeriodRow period;
        period.name = record.period;
        QCOMPARE(session->db().addPeriod(period, {record}).rows, 1);
        dialogs.nextAnswers = {Answer::Discard};
        dialogs.nextFileNames = {typed.isEmpty() ? QString() : at(typed)};
        const bool done = button == 4 ? session->closeBooks() : session->changePath(Session::FileButton(button));
        QCOMPARE(done, !becomes.isEmpty());
        const QString now = done ? at(becomes) : path();
        QVERIFY(session->path() == now && settings::databasePath() == now);
        const QString heard = dialogs.seen.isEmpty() ? QString() : dialogs.last().text;
        QVERIFY2(said.isEmpty() ? heard.isEmpty() || heard.contains(u"not saved"_s) : heard.contains(said),
                 qPrintable(heard));
        // A file made where none was counts as a change, as at a first start.
        QCOMPARE(session->db().isChanged(), done ? typed == u"Nowhere" : kept == 0);
        QCOMPARE(readBack(path())->customers().count(), kept);
        // The books are what the new file holds: a new or opened one empty until its first save.
        const int carried = !done || button >= 3, billed = !done || button == 3;
        const auto file = done ? readBack(now) : nullptr;
        for (const Database *db : std::initializer_list<const Database *>{&session->db(), file.get()}) {
            QVERIFY(!db || (db->customers().count() == carried && db->items().count() == carried));
            QVERIFY(!db || (db->periods().count() == billed && db->invoiceRecords().count() == billed));
        }
    }

    // New and Open ask about unsaved changes first; Discard keeps a safety
    // copy that reads back the same, beside the file or else in the data
    // folder; when neither can be written, nothing goes without the user's word.
    void unsavedChangesAreAskedAboutAndKept()
    {
        QVERIFY(dbtest::writeFile(at(u"other.xml"_s), QByteArray()));
        auto session = changedSession(dialogs);
        const QByteArray unsaved = session->db().serialize();
        QVERIFY(!session->changePath(Session::FileButton::Open));  // Cancel: not even the file is asked for
        QVERIFY(dialogs.seen.size() == 1 && dialogs.fileTitles.isEmpty());
        QCOMPARE(dialogs.last().answers, QList<Answer>({Answer::Save, Answer::Discard, Answer::Cancel}));
        // Nothing can be written beside the file: the copy goes to the data folder.
        session->writeFault = [this](const QString &p) -> files::DeviceWrapper {
            if (p.startsWith(dir.path() + u"/QOR.xml"_s))
                return [](QIODevice &f) { return std::make_unique<dbtest::Failing>(f, 10); };
            return {};
        };
        dialogs.nextAnswers = {Answer::Discard};
        dialogs.nextFileNames = {at(u"other.xml"_s)};
        QVERIFY(session->changePath(Session::FileButton::Open) && session->path() == at(u"other.xml"_s));
        const QFileInfoList kept = QDir(Session::unsavedFolder()).entryInfoList({u"QOR.xml-*.unsaved-*"_s}, QDir::Files);
        QCOMPARE(kept.size(), 1);  // readable by the user alone
        QVERIFY(dbtest::readFile(kept[0].filePath()) == unsaved && !(kept[0].permissions() & 0x0077));
        // Nowhere to keep them: asked; Cancel keeps the books, Discard goes on.
        addCustomer(*session, 7, u"Bo"_s);
        session->writeFault = [](const QString &) -> files::DeviceWrapper {
            return [](QIODevice &f) { return std::make_unique<dbtest::Failing>(f, 0); };
        };
        for (auto last : {Answer::Cancel, Answer::Discard}) {
            dialogs.nextAnswers = {Answer::Discard, last};
            dialogs.nextFileNames = {path()};
            QCOMPARE(session->changePath(Session::FileButton::Open), last == Answer::Discard);
            QVERIFY(dialogs.last().tone == Tone::Critical && dialogs.last().text.contains(u"No space left"_s));
            QCOMPARE(session->path(), last == Answer::Discard ? path() : at(u"other.xml"_s));
        }
    }

    // Another program's lock: asked who holds it; read-only refuses to save,
    // take over needs a second word, cancel at start declines the file.
    void oneWriterPerFile()
    {
        QVERIFY(dbtest::writeFile(path(), QByteArray()));
        const QString lock = FileLock::lockPathOf(path());
        QVERIFY(dbtest::writeFile(lock, "4242\nqorvane\nelsewhere\n"));
        {
            Session cancelled;
            cancelled.setQuestions(&dialogs);
            cancelled.load();
            QVERIFY(cancelled.declinedAtStart() && dialogs.last().text.contains(u"elsewhere"_s));
        }
        Session readOnly;
        readOnly.setQuestions(&dialogs);
        dialogs.nextAnswers = {Answer::Open};
        readOnly.load();
        QVERIFY(readOnly.isReadOnly() && !readOnly.declinedAtStart());
        readOnly.db().setChanged(true);
        QVERIFY(!readOnly.save() && dialogs.last().text.contains(u"read-only"_s));
        QCOMPARE(QFileInfo(path()).size(), 0);
        QVERIFY(dbtest::readFile(lock).startsWith("4242"));  // still the other program's
        Session taken;
        taken.setQuestions(&dialogs);
        dialogs.nextAnswers = {Answer::Ignore, Answer::Cancel, Answer::Ignore, Answer::Ok};
        taken.load();
        QVERIFY(!taken.isReadOnly() &&
                dbtest::readFile(lock).startsWith(QByteArray::number(QCoreApplication::applicationPid())));
    }

    // Unsaved changes left by a crash come back at the next start, marked
    // changed, for the file they belong to; a save or Discard ends them.
    void recoveryAfterACrash()
    {
        QByteArray unsaved;
        for (auto answer : {Answer::Yes, Answer::Discard}) {
            QFile::remove(path());
            {
                auto crashed = changedSession(dialogs, u"Cara"_s);
                QVERIFY(crashed->writeRecovery());
                unsaved = crashed->db().serialize();
                const QString copy = crashed->recovery().databaseCopy();
                QVERIFY(dbtest::readFile(copy) == unsaved && !(QFileInfo(copy).permissions() & 0x0077));
            }  // ends without a save or an abandon
            settings::DatabasePath.set(at(u"elsewhere.xml"_s));
            Session next;
            next.setQuestions(&dialogs);
            next.load();
            dialogs.nextAnswers = {answer};
            QCOMPARE(next.offerRecovery(), answer == Answer::Yes);
            QCOMPARE(dialogs.last().title, u"Recover unsaved changes"_s);
            if (answer == Answer::Yes) {
                QVERIFY(next.db().serialize() == unsaved && next.db().isChanged());
                QVERIFY(next.path() == path() && settings::databasePath() == path());
                QVERIFY(next.recovery().pending());  // until the changes are saved
                // Then nothing unsaved, nothing to keep.
                QVERIFY(next.save() && !next.recovery().pending() && !next.writeRecovery());
            } else {
                QVERIFY(!next.recovery().pending());
                const QFileInfoList kept =
                    QDir(Session::unsavedFolder()).entryInfoList({u"QOR.xml-*.unsaved-*"_s}, QDir::Files, QDir::Time);
                QVERIFY(!kept.isEmpty() && dbtest::readFile(kept[0].filePath()) == unsaved);
            }
        }
    }

    // Each save keeps the file it replaces; the versions are listed, restore
    // as changed books, and stand in for a file that can't be read.
    void earlierVersions()
    {
        QDir(path() + u".versions"_s).removeRecursively();
        QDir(Session::unsavedFolder()).removeRecursively();
        auto session = changedSession(dialogs, u"First"_s);
        QVERIFY(session->save());
        const QByteArray first = dbtest::readFile(path());
        session->db().setCompanyField(0, u"Second"_s);
        QVERIFY(session->save());
        const QList<Session::EarlierCopy> copies = session->earlierCopies();
        // The empty file of the first start, then the first save.
        QVERIFY(copies.size() == 2 && dbtest::readFile(copies[0].path) == first);
        // Unsaved changes and Cancel: nothing is restored; Discard restores.
        session->db().setCompanyField(0, u"Third"_s);
        QVERIFY(!session->restoreCopy(copies[0].path) && session->db().company()[0] == u"Third");
        dialogs.nextAnswers = {Answer::Discard};
        QVERIFY(session->restoreCopy(copies[0].path) && session->db().isChanged());
        QCOMPARE(session->db().company()[0], QString());
        session.reset();
        QVERIFY(dbtest::writeFile(path(), "<QOR-DB>\r\n<Customers>\r\n"));
        dialogs.nextAnswers = {Answer::Open};
        Session after;
        after.setQuestions(&dialogs);
        QCOMPARE(after.load().status, ReadResult::Status::Rejected);
        QVERIFY(dialogs.last().text.contains(u"newest earlier version"_s));
        QVERIFY(after.db().serialize() == first && after.db().isChanged());
    }
};

QTEST_GUILESS_MAIN(TstSession)
#include "tst_session.moc"
