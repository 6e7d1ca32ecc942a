// The session without a window: what a read and a save tell the views, and
// which questions they put through the dialog service, answered in advance.
#include "database/rowtypes.h"
#include "shell/session.h"
#include "shell/settingsstore.h"
#include "uiservices/dialogservice.h"

#include <QDir>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace qor;
using namespace Qt::StringLiterals;

class TstSession : public QObject {
    Q_OBJECT
    QTemporaryDir dir;
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
        settings::write(u"FileHandling"_s, u"DatabasePath"_s, path());
    }

    void loadTellsTheViewsInOrder()
    {
        struct Case { const char *name; QByteArray bytes; bool exists, fileRead, told; int customers; };
        const QByteArray good = "<QOR-DB>\r\n\t<Customers>\r\n\t\t<Customer CID=\"1\">\r\n\t\t\t<FName>Ann</FName>\r\n"
                                "\t\t\t<Current>Yes</Current>\r\n\t\t</Customer>\r\n\t</Customers>\r\n</QOR-DB>\r\n";
        const QByteArray refused = QByteArray("<QOR-DB>\r\n") + char(0) + QByteArray("\r\n</QOR-DB>\r\n");
        for (const Case &c : {Case{"missing", {}, false, false, false, 0}, Case{"read", good, true, true, false, 1},
                              Case{"refused", refused, true, false, true, 0}}) {
            QFile::remove(path());
            if (c.exists) writeFile(c.bytes);
            Session session;
            Database &db = session.db();
            db.setChanged(true);
            QStringList heard;
            connect(&db, &Database::aboutToReload, this, [&] { heard << u"about"_s; });
            connect(&db, &Database::fileRead, this, [&] { heard << (db.isChanged() ? u"read+changed"_s : u"read"_s); });
            connect(&db, &Database::reloaded, this, [&] { heard << u"reloaded"_s; });
            ScriptedDialogs dialogs;
            const ReadResult r = session.load();
            QCOMPARE(session.path(), path());
            QStringList expected{u"about"_s};
            if (c.fileRead) expected << u"read"_s;  // the changed state ends before the views hear it
            expected << u"reloaded"_s;
            QVERIFY2(heard == expected, c.name);
            QCOMPARE(db.isChanged(), !c.fileRead);
            QCOMPARE(db.lvwCustomers.count(), c.customers);
            QCOMPARE(dialogs.messages().size(), c.told ? 1 : 0);
            if (c.told) {
                QCOMPARE(dialogs.last().message.icon, QMessageBox::Warning);
                QCOMPARE(dialogs.last().message.title, u"QOR"_s);
                QCOMPARE(dialogs.last().message.text, r.message);
            }
        }
    }

    void saveTellsAFailureAndKeepsTheChange()
    {
        QFile::remove(path());
        Session session;
        ScriptedDialogs dialogs;
        session.load();
        CustomerRow ann;
        ann.firstName = u"Ann"_s;
        ann.displayName = ann.firstName;
        session.db().lvwCustomers.add(numberKey(1), ann.text());
        session.db().setChanged(true);

        QFile::remove(path());
        QVERIFY(QDir().mkdir(path()));  // a folder under the file's name: nothing may replace it
        QVERIFY(!session.save());
        QCOMPARE(dialogs.messages().size(), 1);
        QCOMPARE(dialogs.last().message.icon, QMessageBox::Critical);
        QVERIFY(session.db().isChanged());

        QVERIFY(QDir().rmdir(path()));
        QVERIFY(session.save());
        QVERIFY(!session.db().isChanged());
        QCOMPARE(dialogs.messages().size(), 1);
        Session again;
        again.load();
        QCOMPARE(again.db().lvwCustomers.textOf(u"1k"), ann.text());
    }

    void answersGivenInAdvance()
    {
        ScriptedDialogs outer;
        outer.answer = QMessageBox::Yes;
        {
            ScriptedDialogs inner;  // the last installed answers
            inner.nextAnswers = {QMessageBox::No, QMessageBox::Ok};
            inner.nextTexts = {u"typed"_s, std::nullopt};
            inner.nextFileNames = {u"/tmp/a.xml"_s};
            DialogService &d = DialogService::current();
            const auto yesNoCancel = QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel;
            QCOMPARE(d.warning(nullptr, u"t"_s, u"x"_s, yesNoCancel), QMessageBox::No);
            // An answer the box has no button for is the box closed: its Cancel.
            QCOMPARE(d.warning(nullptr, u"t"_s, u"x"_s, yesNoCancel), QMessageBox::Cancel);
            QCOMPARE(d.text(nullptr, u"t"_s, u"l"_s, {}), std::optional<QString>(u"typed"_s));
            QCOMPARE(d.text(nullptr, u"t"_s, u"l"_s, {}), std::nullopt);
            QCOMPARE(d.openFileName(nullptr, {}), u"/tmp/a.xml"_s);
            QCOMPARE(d.saveFileName(nullptr, {}), QString());  // nothing queued: cancelled
            QCOMPARE(d.messageForm(nullptr, {u"m"_s, u"Key"_s, u"OK"_s, u"Yes"_s}), u"Yes"_s);  // the close box
            QCOMPARE(inner.seen.size(), 7);
            QCOMPARE(outer.seen.size(), 0);
        }
        QCOMPARE(&DialogService::current(), static_cast<DialogService *>(&outer));
        QCOMPARE(DialogService::current().critical(nullptr, u"t"_s, u"x"_s), QMessageBox::Ok);
    }
};

QTEST_MAIN(TstSession)
#include "tst_session.moc"
