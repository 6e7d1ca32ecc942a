// SPDX-License-Identifier: GPL-3.0-or-later
// The settings store and the window places kept in it. Every test (and every
// data row) starts from a never-used store in a private folder.
#include "settings/settingsstore.h"
#include "uiservices/formposition.h"

#include <QDir>
#include <QScreen>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <QWidget>

#include <cmath>
#include <memory>

using namespace qor;
using namespace Qt::StringLiterals;

namespace {
// Absent keys are told from stored ones by a default no setting ever holds.
const QString kAbsent = u"<absent>"_s;
QString stored(const QString &section, const QString &key) { return settings::read(section, key, kAbsent); }
// Window places live under FormPositions, keyed by the form's name.
QString kept(const QString &formKey) { return stored(u"FormPositions"_s, formKey); }

struct Row {
    const char *section, *key, *text;  // text: nullptr when nothing is stored
    int expected;
    bool writtenBack = false;
};
void addRows(std::initializer_list<Row> rows)
{
    QTest::addColumn<Row>("r");
    for (const Row &r : rows)
        QTest::addRow("%s '%s'", r.key, r.text ? r.text : "absent") << r;
}

// Pixels as the store keeps them: twips, in decimal.
QString twips(double px)
{
    return QString::number(std::lround(px * 1440.0 / QGuiApplication::primaryScreen()->logicalDotsPerInchX()));
}

std::unique_ptr<QWidget> makeForm(const QString &name, const QRect &geometry = {})
{
    auto w = std::make_unique<QWidget>();
    w->setObjectName(name);
    if (geometry.isValid())  // the place is the outer corner, frame included
        w->move(geometry.topLeft()), w->resize(geometry.size());
    return w;
}

QPoint centredPlace(const QSize &outer)
{
    const QRect screen = QGuiApplication::primaryScreen()->geometry();
    return screen.topLeft() + QPoint((screen.width() - outer.width()) / 2, (screen.height() - outer.height()) / 2);
}
}  // namespace
Q_DECLARE_METATYPE(Row)

class TestSettings : public QObject {
    Q_OBJECT
    QTemporaryDir configHome, dataHome;
    int round = 0;

private slots:
    void initTestCase()
    {
        QVERIFY(configHome.isValid() && dataHome.isValid());
        qputenv("XDG_DATA_HOME", dataHome.path().toUtf8());
    }
    void init()
    {
        const QString dir = configHome.filePath(u"run%1"_s.arg(++round));
        QVERIFY(QDir().mkpath(dir));
        qputenv("XDG_CONFIG_HOME", dir.toUtf8());
        QVERIFY(!QFile::exists(settings::storePath()));
    }

    void firstRunDefaults()
    {
        // A few spot checks: what an absent key reads as, whether it is written back.
        const struct {
            const char *s, *k, *v;
            bool writtenBack;
        } rows[] = {
            {"Settings", "LastClicked", "0", true}, {"Settings", "InvoiceTitleOption", "0", true}, {"Settings", "InvoiceTitleSize", "2", true}, {"CustomerListPrint", "Columns", "3", false}, {"CustomerListPrint", "PageTitle", "Customer List", false}};
        for (const auto &r : rows) {
            const QString s = QString::fromLatin1(r.s), k = QString::fromLatin1(r.k), v = QString::fromLatin1(r.v);
            QCOMPARE(settings::value(s, k), v);
            QCOMPARE(stored(s, k), r.writtenBack ? v : kAbsent);
            settings::write(s, k, QString());  // a stored empty text is no value either
            QCOMPARE(settings::value(s, k), v);
        }
    }

    // Read rules, one row each: section, key, stored text (none: absent), what it reads as.
    void booleans_data()
    {
        addRows({{"Settings", "CheckToConfirmEdits", nullptr, true}, {"Printing", "KeepTwelveLines", nullptr, true}, {"Settings", "ExpertMode", nullptr, false}, {"Printing", "PrintDuplicateInvoices", nullptr, false}, {"Settings", "ExpertMode", "tRuE", true}, {"Settings", "ExpertMode", "yes", false}, {"Settings", "ExpertMode", "true ", false}, {"Printing", "KeepTwelveLines", "fAlSe", false}, {"Printing", "KeepTwelveLines", "", true}, {"Printing", "KeepTwelveLines", "no", true}, {"Messages", "DeletedCustomer", "TRUE", true}, {"CustomerListPrint", "PrintNotes", "False", false}});
    }
    void booleans()
    {
        QFETCH(Row, r);
        const QString s = QLatin1String(r.section), k = QLatin1String(r.key);
        if (r.text)
            settings::write(s, k, QLatin1String(r.text));
        QCOMPARE(settings::isOn(s, k), bool(r.expected));
        QCOMPARE(stored(s, k), r.text ? QLatin1String(r.text) : kAbsent);  // reading writes nothing
        settings::setOn(s, k, !r.expected);                                // as a check box writes it
        QCOMPARE(stored(s, k), r.expected ? u"False"_s : u"True"_s);
        QCOMPARE(settings::isOn(s, k), !r.expected);
    }

    void numbers_data()
    {
        // The last field tells whether an absent key's default is written back.
        addRows({{"CustomerListPrint", "Columns", nullptr, 3}, {"CustomerListPrint", "Columns", "7", 3}, {"CustomerListPrint", "Columns", "4", 4}, {"CustomerListPrint", "Columns", "four", 3}, {"CustomerListPrint", "Columns", "2 columns", 2}, {"CustomerListPrint", "BlankLinesBetween", nullptr, 1, true}, {"CustomerListPrint", "BlankLinesBetween", "0", 0}, {"CustomerListPrint", "BlankLinesBetween", "5", 1}, {"CustomerListPrint", "BlankLinesBetween", "-2", 1}, {"Settings", "LastClicked", "2.5", 2}, {"Settings", "LastClicked", "3.5", 4},  // half to even
                 {"Settings", "LastClicked", "9", 0},
                 {"Settings", "InvoiceTitleOption", "x1", 0},
                 {"FormPositions", "frmX_Left", nullptr, -999},
                 {"FormPositions", "frmX_Left", "-45", -45}});
    }
    void numbers()
    {
        QFETCH(Row, r);
        const QString s = QLatin1String(r.section), k = QLatin1String(r.key);
        if (r.text)
            settings::write(s, k, QLatin1String(r.text));
        QCOMPARE(settings::readNumber(s, k, 77), r.expected);
        QCOMPARE(stored(s, k), r.text ? QLatin1String(r.text) : r.writtenBack ? QString::number(r.expected)
                                                                              : kAbsent);
        if (s == u"CustomerListPrint")  // the print form's two readers
            QCOMPARE(k == u"Columns" ? settings::customerListColumns() : settings::customerListBlankLines(),
                     r.expected);
    }

    void storedSettingAndTheFile()
    {
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

    // A store that can't be written is told once, with its path and the
    // system's reason, and nothing stops.
    void storeThatCannotBeWritten()
    {
        const QString blocker = configHome.filePath(u"blocker%1"_s.arg(round));
        QFile f(blocker);
        QVERIFY(f.open(QIODevice::WriteOnly));
        qputenv("XDG_CONFIG_HOME", (blocker + u"/config"_s).toUtf8());
        QStringList told;
        settings::setProblemReporter([&told](const QString &problem) { told << problem; });
        settings::write(u"Settings"_s, u"ExpertMode"_s, u"True"_s);
        settings::write(u"Settings"_s, u"LastClicked"_s, u"3"_s);
        settings::setProblemReporter({});
        QCOMPARE(told.size(), 1);
        QVERIFY2(told[0].contains(QDir::toNativeSeparators(settings::storePath())) && told[0].contains(u"Not a directory"_s),
                 qPrintable(told[0]));
        QCOMPARE(settings::read(u"Settings"_s, u"ExpertMode"_s, u"absent"_s), u"absent"_s);
    }

    void envelopeMargins()
    {
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
        // A stored X-Margin with an empty Y-Margin isn't mended.
        settings::write(P, Y, QString());
        QCOMPARE(settings::envelopeMarginY(), 0.0);
        QCOMPARE(settings::envelopeMarginX(), 2.0);
        QCOMPARE(stored(P, Y), QString());
    }

    void databasePath()
    {
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
        // Installed with the system's programs: the user's folder, even when
        // the folder could be written (as root can).
        QCOMPARE(settings::defaultDatabasePath(u"/usr/bin"_s), userDir + "/QOR.xml");
        // A stored path wins exactly as stored; an empty one counts as none.
        settings::write(F, K, u"/srv/books/Firm 2024.xml"_s);
        QCOMPARE(settings::databasePath(), u"/srv/books/Firm 2024.xml"_s);
        settings::write(F, K, QString());
        QCOMPARE(settings::databasePath(), beside);
    }

    void roundTrips()
    {
        auto first = makeForm(u"frmQOR"_s, QRect(0, 0, 400, 300));
        restoreFormPosition(first.get());  // never placed: centred at its own size, and nothing written
        QCOMPARE(first->geometry(), QRect(centredPlace(QSize(400, 300)), QSize(400, 300)));
        QCOMPARE(kept(u"frmQOR_Left"_s) + kept(u"frmQOR_WindowState"_s), kAbsent + kAbsent);

        auto update = makeForm(u"frmUpdate"_s, QRect(20, 30, 200, 100));
        saveFormPosition(update.get());
        const QRect normal(41, 57, 333, 222);
        const struct {
            Qt::WindowState state;
            const char *code;
        } states[] = {
            {Qt::WindowNoState, "0"}, {Qt::WindowMaximized, "2"}, {Qt::WindowMinimized, "1"}};
        for (const auto &[state, code] : states) {
            auto form = makeForm(u"frmListLVWs"_s, state == Qt::WindowNoState ? normal : QRect(9, 9, 99, 99));
            form->show();
            QVERIFY(QTest::qWaitForWindowExposed(form.get()));
            form->setWindowState(state);
            QTRY_COMPARE(form->windowState(), Qt::WindowStates(state));
            saveFormPosition(form.get());  // not normal: the earlier normal place stays in the store
            QCOMPARE(kept(u"frmListLVWs_WindowState"_s), QLatin1String(code));
            auto again = makeForm(u"frmListLVWs"_s, QRect(0, 0, 500, 400));  // its designed size counts for nothing
            restoreFormPosition(again.get());
            QCOMPARE(again->windowState(), Qt::WindowStates(state));
            QCOMPARE(again->geometry(), normal);  // the place to go back to
        }
        QCOMPARE(kept(u"frmListLVWs_Left"_s) + u' ' + kept(u"frmListLVWs_Height"_s), twips(41) + u' ' + twips(222));
        // Each form keeps its own values; a form without a name has none.
        auto update2 = makeForm(u"frmUpdate"_s);
        restoreFormPosition(update2.get());
        QCOMPARE(update2->geometry(), QRect(20, 30, 200, 100));
        QCOMPARE(update2->windowState(), Qt::WindowNoState);
        auto nameless = makeForm(QString(), QRect(5, 6, 70, 80));
        restoreFormPosition(nameless.get());
        QCOMPARE(nameless->geometry(), QRect(5, 6, 70, 80));
    }

    void placeOffAllScreensIsCentred()
    {
        const QRect screen = QGuiApplication::primaryScreen()->geometry();
        const struct {
            QPoint place;
            bool centred;
        } rows[] = {
            {{screen.right() + 2000, 50}, true}, {{50, screen.bottom() + 500}, true}, {{-2000, -1500}, true}, {{screen.right() - 5, 50}, true},  // only a sliver shows
            {{-100, 20}, false},                                                                                                                 // partly off but grabbable
            {screen.topLeft() + QPoint(10, 10), false}};
        for (const auto &r : rows) {
            saveFormPosition(makeForm(u"frmChecking"_s, QRect(r.place, QSize(240, 160))).get());
            auto form = makeForm(u"frmChecking"_s);
            restoreFormPosition(form.get());
            QCOMPARE(form->size(), QSize(240, 160));
            QCOMPARE(form->pos(), r.centred ? centredPlace(QSize(240, 160)) : r.place);
        }
    }

    void sizeRules()
    {
        // A fixed form keeps no size, and a size stored by hand doesn't change it.
        auto fixed = makeForm(u"frmUpdate"_s);
        fixed->setFixedSize(320, 180);
        fixed->move(70, 80);
        saveFormPosition(fixed.get());
        QCOMPARE(kept(u"frmUpdate_Left"_s), twips(70));
        QCOMPARE(kept(u"frmUpdate_Width"_s) + kept(u"frmUpdate_Height"_s), kAbsent + kAbsent);
        settings::write(u"FormPositions"_s, u"frmUpdate_Width"_s, u"9000"_s);
        restoreFormPosition(fixed.get());
        QCOMPARE(fixed->geometry(), QRect(70, 80, 320, 180));
        // A sizable form with a stored zero width keeps its own size.
        auto zero = makeForm(u"frmZero"_s, QRect(30, 40, 210, 110));
        saveFormPosition(zero.get());
        settings::write(u"FormPositions"_s, u"frmZero_Width"_s, u"0"_s);
        zero->setGeometry(0, 0, 250, 150);
        restoreFormPosition(zero.get());
        QCOMPARE(QRect(zero->pos(), zero->size()), QRect(30, 40, 250, 150));

        // A declared frame allowance belongs to the outer size: centred and stored.
        auto form = makeForm(u"frmQOR"_s, QRect(0, 0, 600, 400));
        form->setProperty("qorFrameTwips", QSizeF(120, 450));
        restoreFormPosition(form.get());
        const double tpp = 1440.0 / QGuiApplication::primaryScreen()->logicalDotsPerInchX();
        QCOMPARE(form->pos(), centredPlace(QSize(600 + std::lround(120 / tpp), 400 + std::lround(450 / tpp))));
        saveFormPosition(form.get());
        QCOMPARE(kept(u"frmQOR_Height"_s), QString::number(twips(400).toInt() + 450));
    }
};

QTEST_MAIN(TestSettings)
#include "tst_settings.moc"
