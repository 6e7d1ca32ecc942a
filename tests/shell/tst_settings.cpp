// The settings store on a machine where the program never ran: every test
// starts from an empty store in a private config folder.
#include "shell/settingsstore.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

using namespace qor;

namespace {
// Absent keys are told from stored ones by a default no setting ever holds.
const QString kAbsent = QStringLiteral("<absent>");
QString stored(const QString &section, const QString &key)
{
    return settings::read(section, key, kAbsent);
}
}  // namespace

class TestSettings : public QObject {
    Q_OBJECT
    QTemporaryDir configHome;
    QTemporaryDir dataHome;
    int round = 0;

private slots:
    void initTestCase();
    void init();

    void storeLivesInTheUsersConfigFolder();
    void firstRunDefaults_data();
    void firstRunDefaults();
    void booleanChecks_data();
    void booleanChecks();
    void getStoredSettingRules();
    void numbersAndRanges_data();
    void numbersAndRanges();
    void envelopeMargins();
    void databasePath();
};

void TestSettings::initTestCase()
{
    QVERIFY(configHome.isValid());
    QVERIFY(dataHome.isValid());
    // Before the first use of the store, so nothing reaches the real one.
    qputenv("XDG_CONFIG_HOME", configHome.path().toUtf8());
    qputenv("XDG_DATA_HOME", dataHome.path().toUtf8());
}

void TestSettings::init()
{
    // A fresh, never-used store for each test: a new config folder.
    const QString dir = configHome.filePath(QStringLiteral("run%1").arg(++round));
    QVERIFY(QDir().mkpath(dir));
    qputenv("XDG_CONFIG_HOME", dir.toUtf8());
    QVERIFY(!QFile::exists(settings::storePath()));
}

void TestSettings::storeLivesInTheUsersConfigFolder()
{
    const QString expected = qEnvironmentVariable("XDG_CONFIG_HOME") + QStringLiteral("/QOR/QOR.conf");
    QCOMPARE(settings::storePath(), expected);
    settings::putStoredSetting(QStringLiteral("InvoiceTitleText"), QStringLiteral("Acme, Inc. INVOICE"));
    settings::write(QStringLiteral("Printing"), QStringLiteral("X-Margin"), QStringLiteral("2.5"));
    settings::sync();
    QVERIFY(QFile::exists(expected));

    // One group per section, readable by any INI reader.
    QSettings ini(expected, QSettings::IniFormat);
    QCOMPARE(ini.childGroups(), QStringList({QStringLiteral("Printing"), QStringLiteral("Settings")}));
    QCOMPARE(ini.value(QStringLiteral("Settings/InvoiceTitleText")).toString(),
             QStringLiteral("Acme, Inc. INVOICE"));
}

// Section, key, what an absent key reads as, whether that is written back,
// and for Booleans whether the absent key counts as on.
void TestSettings::firstRunDefaults_data()
{
    QTest::addColumn<QString>("section");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("value");
    QTest::addColumn<bool>("writtenBack");
    QTest::addColumn<int>("on");  // -1: not a Boolean
    const struct { const char *s, *k, *v; bool wb; int on; } rows[] = {
        {"Settings", "CheckToConfirmEdits", "True", false, 1},
        {"Settings", "ExpertMode", "False", false, 0},
        {"Settings", "LastClicked", "0", true, -1},
        {"Settings", "InvoiceTitleOption", "0", true, -1},
        {"Settings", "InvoiceTitleText", "", false, -1},
        {"Settings", "InvoiceTitleSize", "2", true, -1},
        {"Printing", "AddInvoiceDateToInvoice", "False", false, 0},
        {"Printing", "PrintDuplicateInvoices", "False", false, 0},
        {"Printing", "KeepTwelveLines", "True", false, 1},
        {"Printing", "MoveBottomTextAccordingly", "False", false, 0},
        {"Printing", "PrintPreviewSelected", "0", false, -1},
        {"BrowseRecall", "LastViewedCustomer", "1", false, -1},
        {"Messages", "DontShowExplanationOfClosingBooks", "False", false, 0},
        {"Messages", "DontShowNeedToFillCompanyInfo", "False", false, 0},
        {"Messages", "DeletedCustomer", "False", false, 0},
        {"CustomerListPrint", "PageTitle", "Customer List", false, -1},
        {"CustomerListPrint", "Columns", "3", false, -1},
        {"CustomerListPrint", "BlankLinesBetween", "1", true, -1},
        {"CustomerListPrint", "PrintAddress", "True", false, 1},
        {"CustomerListPrint", "PrintEmail", "True", false, 1},
        {"CustomerListPrint", "PrintPhone", "True", false, 1},
        {"CustomerListPrint", "PrintNotes", "True", false, 1},
        {"CustomerListPrint", "PrintPageNumbers", "True", false, 1},
        {"CustomerListPrint", "PrintFontName", "Arial", false, -1},
        {"CustomerListPrint", "PrintFontStyleSize", "Regular 8", false, -1},
    };
    for (const auto &r : rows)
        QTest::newRow(r.k) << r.s << r.k << r.v << r.wb << r.on;
}

void TestSettings::firstRunDefaults()
{
    QFETCH(QString, section);
    QFETCH(QString, key);
    QFETCH(QString, value);
    QFETCH(bool, writtenBack);
    QFETCH(int, on);
    QVERIFY(settings::findKey(section, key));
    if (on >= 0) {
        QCOMPARE(settings::isOn(section, key), on == 1);
        QCOMPARE(stored(section, key), kAbsent);  // reading a Boolean writes nothing
    }
    QCOMPARE(settings::value(section, key), value);
    QCOMPARE(stored(section, key), writtenBack ? value : kAbsent);
    // A stored empty text is no value either.
    settings::write(section, key, QString());
    QCOMPARE(settings::value(section, key), value);
    QCOMPARE(stored(section, key), writtenBack ? value : QString());
}

void TestSettings::booleanChecks_data()
{
    QTest::addColumn<QString>("section");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("on");
    // "true" check: only "true" in any case is on.
    for (const char *t : {"True", "true", "TRUE", "tRuE"})
        QTest::newRow(qPrintable(QStringLiteral("ExpertMode %1").arg(t))) << "Settings" << "ExpertMode" << t << true;
    for (const char *t : {"False", "", "yes", "1", " true", "true "})
        QTest::newRow(qPrintable(QStringLiteral("ExpertMode '%1'").arg(t))) << "Settings" << "ExpertMode" << t << false;
    // "false" check: only "false" in any case is off.
    for (const char *t : {"False", "false", "FALSE", "fAlSe"})
        QTest::newRow(qPrintable(QStringLiteral("KeepTwelveLines %1").arg(t))) << "Printing" << "KeepTwelveLines" << t << false;
    for (const char *t : {"True", "", "no", "0", "falsehood"})
        QTest::newRow(qPrintable(QStringLiteral("KeepTwelveLines '%1'").arg(t))) << "Printing" << "KeepTwelveLines" << t << true;
    QTest::newRow("message mark") << "Messages" << "DeletedCustomer" << "TRUE" << true;
    QTest::newRow("list print option") << "CustomerListPrint" << "PrintNotes" << "False" << false;
}

void TestSettings::booleanChecks()
{
    QFETCH(QString, section);
    QFETCH(QString, key);
    QFETCH(QString, text);
    QFETCH(bool, on);
    settings::write(section, key, text);
    QCOMPARE(settings::isOn(section, key), on);
    // A check box writes the two texts the program always wrote.
    settings::setOn(section, key, !on);
    QCOMPARE(stored(section, key), on ? QStringLiteral("False") : QStringLiteral("True"));
    QCOMPARE(settings::isOn(section, key), !on);
}

void TestSettings::getStoredSettingRules()
{
    const QString settingsSection = QStringLiteral("Settings");
    // Absent: the default is written back and given, lower-cased.
    QCOMPARE(settings::getStoredSetting(QStringLiteral("LastClicked"), QStringLiteral("0")), QStringLiteral("0"));
    QCOMPARE(stored(settingsSection, QStringLiteral("LastClicked")), QStringLiteral("0"));
    QCOMPARE(settings::getStoredSetting(QStringLiteral("SomeChoice"), QStringLiteral("MiXed")), QStringLiteral("mixed"));
    QCOMPARE(stored(settingsSection, QStringLiteral("SomeChoice")), QStringLiteral("MiXed"));

    // Stored values come back lower-cased unless the caller keeps the capitals.
    settings::putStoredSetting(QStringLiteral("InvoiceTitleText"), QStringLiteral("ACME Statement"));
    QCOMPARE(settings::getStoredSetting(QStringLiteral("InvoiceTitleText"), QString(), QStringLiteral("KeepCaps")),
             QStringLiteral("ACME Statement"));
    QCOMPARE(settings::getStoredSetting(QStringLiteral("InvoiceTitleText"), QString()),
             QStringLiteral("acme statement"));
    // Reading never alters what is stored.
    QCOMPARE(stored(settingsSection, QStringLiteral("InvoiceTitleText")), QStringLiteral("ACME Statement"));
    // The capitals are in the file, so they survive a restart.
    settings::sync();
    QFile f(settings::storePath());
    QVERIFY(f.open(QIODevice::ReadOnly));
    QVERIFY(f.readAll().contains("ACME Statement"));

    // A stored empty text counts as absent: the default replaces it.
    settings::putStoredSetting(QStringLiteral("InvoiceTitleSize"), QString());
    QCOMPARE(settings::getStoredSetting(QStringLiteral("InvoiceTitleSize"), QStringLiteral("2")), QStringLiteral("2"));
    QCOMPARE(stored(settingsSection, QStringLiteral("InvoiceTitleSize")), QStringLiteral("2"));
    // A default kept in capitals is written as given.
    QCOMPARE(settings::getStoredSetting(QStringLiteral("Caption"), QStringLiteral("Big TITLE"), QStringLiteral("KeepCaps")),
             QStringLiteral("Big TITLE"));
    // Only "KeepCaps" keeps capitals; other options don't.
    QCOMPARE(settings::getStoredSetting(QStringLiteral("Caption"), QString(), QStringLiteral("keepcaps")),
             QStringLiteral("big title"));
    // The section is always Settings.
    QCOMPARE(stored(QStringLiteral("Printing"), QStringLiteral("Caption")), kAbsent);
}

void TestSettings::numbersAndRanges_data()
{
    QTest::addColumn<QString>("section");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("text");  // kAbsent: nothing stored
    QTest::addColumn<int>("number");
    QTest::addColumn<QString>("storedAfter");
    const QString absent = kAbsent;
    QTest::newRow("columns absent") << "CustomerListPrint" << "Columns" << absent << 3 << absent;
    QTest::newRow("columns 7") << "CustomerListPrint" << "Columns" << "7" << 3 << "7";
    QTest::newRow("columns 0") << "CustomerListPrint" << "Columns" << "0" << 3 << "0";
    QTest::newRow("columns 1") << "CustomerListPrint" << "Columns" << "1" << 1 << "1";
    QTest::newRow("columns 4") << "CustomerListPrint" << "Columns" << "4" << 4 << "4";
    QTest::newRow("columns text") << "CustomerListPrint" << "Columns" << "four" << 3 << "four";
    QTest::newRow("columns leading number") << "CustomerListPrint" << "Columns" << "2 columns" << 2 << "2 columns";
    QTest::newRow("blank lines absent") << "CustomerListPrint" << "BlankLinesBetween" << absent << 1 << "1";
    QTest::newRow("blank lines 0") << "CustomerListPrint" << "BlankLinesBetween" << "0" << 0 << "0";
    QTest::newRow("blank lines 4") << "CustomerListPrint" << "BlankLinesBetween" << "4" << 4 << "4";
    QTest::newRow("blank lines 5") << "CustomerListPrint" << "BlankLinesBetween" << "5" << 1 << "5";
    QTest::newRow("blank lines negative") << "CustomerListPrint" << "BlankLinesBetween" << "-2" << 1 << "-2";
    QTest::newRow("panel absent") << "Settings" << "LastClicked" << absent << 0 << "0";
    QTest::newRow("panel 3") << "Settings" << "LastClicked" << "3" << 3 << "3";
    QTest::newRow("half to even down") << "Settings" << "LastClicked" << "2.5" << 2 << "2.5";
    QTest::newRow("half to even up") << "Settings" << "LastClicked" << "3.5" << 4 << "3.5";
    QTest::newRow("panel out of range") << "Settings" << "LastClicked" << "9" << 0 << "9";
    QTest::newRow("title size out of range") << "Settings" << "InvoiceTitleSize" << "3" << 2 << "3";
    QTest::newRow("not a number") << "Settings" << "InvoiceTitleOption" << "x1" << 0 << "x1";
    QTest::newRow("preview absent") << "Printing" << "PrintPreviewSelected" << absent << 0 << absent;
    QTest::newRow("last customer") << "BrowseRecall" << "LastViewedCustomer" << absent << 1 << absent;
    QTest::newRow("form state") << "FormPositions" << "frmX_WindowState" << absent << 0 << absent;
    QTest::newRow("form left") << "FormPositions" << "frmX_Left" << absent << -999 << absent;
    QTest::newRow("form left stored") << "FormPositions" << "frmX_Left" << "-45" << -45 << "-45";
}

void TestSettings::numbersAndRanges()
{
    QFETCH(QString, section);
    QFETCH(QString, key);
    QFETCH(QString, text);
    QFETCH(int, number);
    QFETCH(QString, storedAfter);
    if (text != kAbsent)
        settings::write(section, key, text);
    QCOMPARE(settings::readNumber(section, key, 77), number);
    QCOMPARE(stored(section, key), storedAfter);
    if (section == QLatin1String("CustomerListPrint")) {
        const int viaHelper = key == QLatin1String("Columns") ? settings::customerListColumns()
                                                               : settings::customerListBlankLines();
        QCOMPARE(viaHelper, number);
    }
}

void TestSettings::envelopeMargins()
{
    const QString printing = QStringLiteral("Printing");
    // Nothing stored: both margins get their defaults, and the store keeps them.
    QCOMPARE(settings::envelopeMarginX(), 2.0);
    QCOMPARE(settings::envelopeMarginY(), 12.0);
    QCOMPARE(stored(printing, QStringLiteral("X-Margin")), QStringLiteral("2"));
    QCOMPARE(stored(printing, QStringLiteral("Y-Margin")), QStringLiteral("12"));
    // Stored margins are read by their leading number and left alone.
    settings::write(printing, QStringLiteral("X-Margin"), QStringLiteral("3.5cm"));
    settings::write(printing, QStringLiteral("Y-Margin"), QStringLiteral("7"));
    QCOMPARE(settings::envelopeMarginX(), 3.5);
    QCOMPARE(settings::envelopeMarginY(), 7.0);
    QCOMPARE(stored(printing, QStringLiteral("X-Margin")), QStringLiteral("3.5cm"));
    // An empty X-Margin resets both, as the envelope run always did.
    settings::write(printing, QStringLiteral("X-Margin"), QString());
    QCOMPARE(settings::envelopeMarginY(), 12.0);
    QCOMPARE(settings::envelopeMarginX(), 2.0);
}

void TestSettings::databasePath()
{
    const QString fileHandling = QStringLiteral("FileHandling");
    const QString key = QStringLiteral("DatabasePath");
    // The test program's folder is writable, so the file lives beside it.
    const QString beside = QCoreApplication::applicationDirPath() + QStringLiteral("/QOR.xml");
    QCOMPARE(settings::defaultDatabasePath(), beside);
    QCOMPARE(settings::databasePath(), beside);
    QCOMPARE(stored(fileHandling, key), kAbsent);  // not written back
    QCOMPARE(settings::value(fileHandling, key), QString());

    // A program folder that can't take the file: the per-user data folder,
    // which is made on the way.
    const QString userDir = dataHome.path() + QStringLiteral("/QOR");
    QVERIFY(!QDir(userDir).exists());
    const QString gone = dataHome.path() + QStringLiteral("/no/such/folder");
    QCOMPARE(settings::defaultDatabasePath(gone), userDir + QStringLiteral("/QOR.xml"));
    QVERIFY(QDir(userDir).exists());
    QTemporaryDir plainFile;
    QFile notAFolder(plainFile.filePath(QStringLiteral("file")));
    QVERIFY(notAFolder.open(QIODevice::WriteOnly));
    notAFolder.close();
    QCOMPARE(settings::defaultDatabasePath(notAFolder.fileName()), userDir + QStringLiteral("/QOR.xml"));

    // A stored path wins, exactly as stored.
    const QString chosen = QStringLiteral("/srv/books/Firm 2024.xml");
    settings::write(fileHandling, key, chosen);
    QCOMPARE(settings::databasePath(), chosen);
    // An empty one counts as none.
    settings::write(fileHandling, key, QString());
    QCOMPARE(settings::databasePath(), beside);
}

QTEST_GUILESS_MAIN(TestSettings)
#include "tst_settings.moc"
