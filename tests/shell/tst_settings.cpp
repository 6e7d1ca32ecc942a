// The settings store: read rules, defaults and where things live. Every test
// (and every data row) starts from a never-used store in a private folder.
#include "shell/settingsstore.h"

#include <QCoreApplication>
#include <QDir>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

using namespace qor;
using namespace Qt::StringLiterals;

namespace {
// Absent keys are told from stored ones by a default no setting ever holds.
const QString kAbsent = u"<absent>"_s;
QString stored(const QString &section, const QString &key) { return settings::read(section, key, kAbsent); }
}  // namespace

class TestSettings : public QObject {
    Q_OBJECT
    QTemporaryDir configHome, dataHome;
    int round = 0;

private slots:
    void initTestCase() {
        QVERIFY(configHome.isValid() && dataHome.isValid());
        qputenv("XDG_DATA_HOME", dataHome.path().toUtf8());
    }
    void init() {
        const QString dir = configHome.filePath(u"run%1"_s.arg(++round));
        QVERIFY(QDir().mkpath(dir));
        qputenv("XDG_CONFIG_HOME", dir.toUtf8());
        QVERIFY(!QFile::exists(settings::storePath()));
    }

    void firstRunDefaults() {
        // A few spot checks: what an absent key reads as, whether it is written back.
        const struct { const char *s, *k, *v; bool writtenBack; } rows[] = {
            {"Settings", "LastClicked", "0", true},           {"Settings", "InvoiceTitleOption", "0", true},
            {"Settings", "InvoiceTitleSize", "2", true},      {"CustomerListPrint", "Columns", "3", false},
            {"CustomerListPrint", "PageTitle", "Customer List", false}};
        for (const auto &r : rows) {
            const QString s = QString::fromLatin1(r.s), k = QString::fromLatin1(r.k), v = QString::fromLatin1(r.v);
            QCOMPARE(settings::value(s, k), v);
            QCOMPARE(stored(s, k), r.writtenBack ? v : kAbsent);
            settings::write(s, k, QString());  // a stored empty text is no value either
            QCOMPARE(settings::value(s, k), v);
        }
    }

    void booleans_data() {
        QTest::addColumn<QString>("section");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("text");  // null: nothing stored
        QTest::addColumn<bool>("on");
        const struct { const char *s, *k, *t; bool on; } rows[] = {
            {"Settings", "CheckToConfirmEdits", nullptr, true}, {"Printing", "KeepTwelveLines", nullptr, true},
            {"Settings", "ExpertMode", nullptr, false},         {"Printing", "PrintDuplicateInvoices", nullptr, false},
            {"Settings", "ExpertMode", "tRuE", true},           {"Settings", "ExpertMode", "yes", false},
            {"Settings", "ExpertMode", "true ", false},         {"Printing", "KeepTwelveLines", "fAlSe", false},
            {"Printing", "KeepTwelveLines", "", true},          {"Printing", "KeepTwelveLines", "no", true},
            {"Messages", "DeletedCustomer", "TRUE", true},      {"CustomerListPrint", "PrintNotes", "False", false}};
        for (const auto &r : rows)
            QTest::addRow("%s '%s'", r.k, r.t ? r.t : "absent")
                << r.s << r.k << (r.t ? QString::fromLatin1(r.t) : QString()) << r.on;
    }
    void booleans() {
        QFETCH(QString, section);
        QFETCH(QString, key);
        QFETCH(QString, text);
        QFETCH(bool, on);
        if (!text.isNull())
            settings::write(section, key, text);
        QCOMPARE(settings::isOn(section, key), on);
        QCOMPARE(stored(section, key), text.isNull() ? kAbsent : text);  // reading writes nothing
        settings::setOn(section, key, !on);  // as a check box writes it
        QCOMPARE(stored(section, key), on ? u"False"_s : u"True"_s);
        QCOMPARE(settings::isOn(section, key), !on);
    }

    void numbers_data() {
        QTest::addColumn<QString>("section");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("text");  // null: nothing stored
        QTest::addColumn<int>("number");
        QTest::addColumn<bool>("writtenBack");
        const struct { const char *s, *k, *t; int n; bool wb; } rows[] = {
            {"CustomerListPrint", "Columns", nullptr, 3, false},  {"CustomerListPrint", "Columns", "7", 3, false},
            {"CustomerListPrint", "Columns", "4", 4, false},      {"CustomerListPrint", "Columns", "four", 3, false},
            {"CustomerListPrint", "Columns", "2 columns", 2, false},
            {"CustomerListPrint", "BlankLinesBetween", nullptr, 1, true},
            {"CustomerListPrint", "BlankLinesBetween", "0", 0, false},
            {"CustomerListPrint", "BlankLinesBetween", "5", 1, false},
            {"CustomerListPrint", "BlankLinesBetween", "-2", 1, false},
            {"Settings", "LastClicked", "2.5", 2, false},         {"Settings", "LastClicked", "3.5", 4, false},
            {"Settings", "LastClicked", "9", 0, false},           {"Settings", "InvoiceTitleOption", "x1", 0, false},
            {"FormPositions", "frmX_Left", nullptr, -999, false}, {"FormPositions", "frmX_Left", "-45", -45, false}};
        for (const auto &r : rows)
            QTest::addRow("%s '%s'", r.k, r.t ? r.t : "absent")
                << r.s << r.k << (r.t ? QString::fromLatin1(r.t) : QString()) << r.n << r.wb;
    }
    void numbers() {
        QFETCH(QString, section);
        QFETCH(QString, key);
        QFETCH(QString, text);
        QFETCH(int, number);
        QFETCH(bool, writtenBack);
        if (!text.isNull())
            settings::write(section, key, text);
        QCOMPARE(settings::readNumber(section, key, 77), number);
        QCOMPARE(stored(section, key), !text.isNull() ? text : writtenBack ? QString::number(number) : kAbsent);
        if (section == u"CustomerListPrint")
            QCOMPARE(key == u"Columns" ? settings::customerListColumns() : settings::customerListBlankLines(), number);
    }

    void storedSettingAndTheFile() {
        const QString S = u"Settings"_s, T = u"InvoiceTitleText"_s;
        // Absent: the default is written as given and handed back lower-cased.
        QCOMPARE(settings::getStoredSetting(u"SomeChoice"_s, u"MiXed"_s), u"mixed"_s);
        QCOMPARE(stored(S, u"SomeChoice"_s), u"MiXed"_s);
        // Stored text comes back lower-cased unless the option is exactly "KeepCaps".
        settings::putStoredSetting(T, u"ACME, Inc. Statement"_s);
        QCOMPARE(settings::getStoredSetting(T, QString(), u"KeepCaps"_s), u"ACME, Inc. Statement"_s);
        QCOMPARE(settings::getStoredSetting(T, QString(), u"keepcaps"_s), u"acme, inc. statement"_s);
        QCOMPARE(settings::getStoredSetting(u"Caption"_s, u"Big T"_s, u"KeepCaps"_s), u"Big T"_s);
        // A stored empty text counts as absent.
        settings::putStoredSetting(u"InvoiceTitleSize"_s, QString());
        QCOMPARE(settings::getStoredSetting(u"InvoiceTitleSize"_s, u"2"_s), u"2"_s);
        QCOMPARE(stored(S, u"InvoiceTitleSize"_s), u"2"_s);
        QCOMPARE(stored(u"Printing"_s, u"Caption"_s), kAbsent);

        // One INI file in the user's config folder, one group per section, the
        // text with its capitals and comma intact.
        settings::write(u"Printing"_s, u"X-Margin"_s, u"2.5"_s);
        settings::sync();
        const QString path = qEnvironmentVariable("XDG_CONFIG_HOME") + u"/QOR/QOR.conf"_s;
        QCOMPARE(settings::storePath(), path);
        QSettings ini(path, QSettings::IniFormat);
        QCOMPARE(ini.childGroups(), QStringList({u"Printing"_s, S}));
        QCOMPARE(ini.value(u"Settings/InvoiceTitleText"_s).toString(), u"ACME, Inc. Statement"_s);
    }

    void envelopeMargins() {
        const QString P = u"Printing"_s, X = u"X-Margin"_s, Y = u"Y-Margin"_s;
        QCOMPARE(settings::envelopeMarginX(), 2.0);
        QCOMPARE(settings::envelopeMarginY(), 12.0);
        QCOMPARE(stored(P, X) + stored(P, Y), u"212"_s);  // both written
        // Stored margins are read by their leading number and left alone.
        settings::write(P, X, u"3.5cm"_s);
        settings::write(P, Y, u"7"_s);
        QCOMPARE(settings::envelopeMarginX(), 3.5);
        QCOMPARE(settings::envelopeMarginY(), 7.0);
        QCOMPARE(stored(P, X), u"3.5cm"_s);
        // An empty X-Margin resets both.
        settings::write(P, X, QString());
        QCOMPARE(settings::envelopeMarginY(), 12.0);
        QCOMPARE(settings::envelopeMarginX(), 2.0);
    }

    void databasePath() {
        const QString F = u"FileHandling"_s, K = u"DatabasePath"_s;
        // The test program's folder is writable: the file lives beside it, not written back.
        const QString beside = QCoreApplication::applicationDirPath() + u"/QOR.xml"_s;
        QCOMPARE(settings::databasePath(), beside);
        QCOMPARE(stored(F, K), kAbsent);
        // A program folder that can't take the file: the per-user data folder, made on the way.
        const QString userDir = dataHome.path() + u"/QOR"_s;
        QVERIFY(!QDir(userDir).exists());
        QCOMPARE(settings::defaultDatabasePath(dataHome.path() + u"/no/such"_s), userDir + "/QOR.xml");
        QVERIFY(QDir(userDir).exists());
        QCOMPARE(settings::defaultDatabasePath(QCoreApplication::applicationFilePath()), userDir + "/QOR.xml");
        // A stored path wins exactly as stored; an empty one counts as none.
        settings::write(F, K, u"/srv/books/Firm 2024.xml"_s);
        QCOMPARE(settings::databasePath(), u"/srv/books/Firm 2024.xml"_s);
        settings::write(F, K, QString());
        QCOMPARE(settings::databasePath(), beside);
    }
};

QTEST_GUILESS_MAIN(TestSettings)
#include "tst_settings.moc"
