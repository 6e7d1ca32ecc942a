// SPDX-License-Identifier: GPL-3.0-or-later
// The settings store and the window places kept in it. Every test (and every
// data row) starts from a never-used store in a private folder.
#include "settings/settingsstore.h"
#include "uiservices/formposition.h"

#include <QDir>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <QWidget>

#include <cmath>
#include <memory>

using namespace qor;
using namespace Qt::StringLiterals;

namespace {
// Absent keys are told from stored ones by a text no setting ever holds.
const QString kAbsent = u"<absent>"_s;
QString orAbsent(const QString &t) { return t.isNull() ? kAbsent : t; }
QString stored(const settings::Key &k) { return orAbsent(k.stored()); }
QString kept(const settings::FormKey &k, const char *form) { return orAbsent(k.stored(QLatin1String(form))); }

// How a row reads its key: as a Boolean, a number (fallback 77; rounded half
// to even; a range without a stand-in keeps the number), the text by the
// table (fallback "fallback"), or as GetStoredSetting does.
enum class How { On,
                 Number,
                 Text,
                 StoredSetting };
struct Row {
    How how;
    const settings::Key *key;
    const char *text;  // nullptr when nothing is stored
    const char *reads;
    const char *after = nullptr;  // stored afterwards; nullptr: as before
};

QString readAs(How how, const settings::Key &k)
{
    if (how == How::On) return static_cast<const settings::Flag &>(k).isOn() ? u"on"_s : u"off"_s;
    if (how == How::Number) return QString::number(static_cast<const settings::Number &>(k).get(77));
    return how == How::Text ? k.text(u"fallback"_s) : k.storedSetting();
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

    // Each read rule of the table, one row per telling case: absent, empty,
    // out of range, case, written back or not.
    void reads_data()
    {
        using namespace settings;
        QTest::addColumn<Row>("r");
        const How On = How::On, N = How::Number, T = How::Text, G = How::StoredSetting;
        // clang-format off
        const Row rows[] = {
            {On, &CheckToConfirmEdits, nullptr, "on"}, {On, &KeepTwelveLines, "fAlSe", "off"}, {On, &KeepTwelveLines, "", "on"},
            {On, &KeepTwelveLines, "no", "on"}, {On, &ExpertMode, nullptr, "off"}, {On, &ExpertMode, "tRuE", "on"},
            {On, &ExpertMode, "true ", "off"}, {On, &DeletedCustomer, "yes", "off"},
            {N, &Columns, nullptr, "3"}, {N, &Columns, "7", "3"}, {N, &Columns, "4", "4"}, {N, &Columns, "four", "3"},
            {N, &Columns, "2 columns", "2"}, {N, &BlankLinesBetween, nullptr, "1", "1"}, {N, &BlankLinesBetween, "", "1", "1"},
            {N, &BlankLinesBetween, "0", "0"}, {N, &BlankLinesBetween, "-2", "1"},
            {N, &LastClicked, "2.5", "2"}, {N, &LastClicked, "3.5", "4"}, {N, &InvoiceTitleOption, "x1", "0"},
            {N, &SmtpPort, nullptr, "77"}, {N, &SmtpPort, "70000", "70000"},
            {T, &PageTitle, nullptr, "Customer List"}, {T, &PageTitle, "", "Customer List"},
            {T, &PageTitle, "Smith, Jones & Co", "Smith, Jones & Co"}, {T, &XMargin, nullptr, "2", "2"},
            {T, &DatabasePath, nullptr, "fallback"}, {G, &LastClicked, nullptr, "0", "0"}, {G, &InvoiceTitleSize, "", "2", "2"},
            {G, &InvoiceTitleOption, "ONE", "one"}, {G, &InvoiceTitleText, "ACME Inc", "ACME Inc"},
            {G, &InvoiceTitleText, nullptr, "", ""}};
        // clang-format on
        for (const Row &r : rows)
            QTest::addRow("%s '%s'", r.key->info().key, r.text ? r.text : "absent") << r;
    }
    void reads()
    {
        QFETCH(Row, r);
        if (r.text) r.key->store(QString::fromUtf8(r.text));
        QCOMPARE(readAs(r.how, *r.key), QString::fromUtf8(r.reads));
        const char *after = r.after ? r.after : r.text;
        QCOMPARE(stored(*r.key), after ? QString::fromUtf8(after) : kAbsent);
    }

    // What the typed objects write, into one INI file in the user's config
    // folder: one group per section, the text as given.
    void writesAndTheFile()
    {
        settings::ExpertMode.set(true);
        settings::KeepTwelveLines.set(false);
        settings::Columns.set(4);
        settings::InvoiceTitleText.set(u"ACME, Inc. Statement"_s);
        settings::sync();
        QSettings ini(qEnvironmentVariable("XDG_CONFIG_HOME") + u"/QOR/QOR.conf"_s, QSettings::IniFormat);
        QCOMPARE(ini.childGroups(), QStringList({u"CustomerListPrint"_s, u"Printing"_s, u"Settings"_s}));
        QCOMPARE(ini.value(u"Settings/ExpertMode"_s).toString() + ini.value(u"Printing/KeepTwelveLines"_s).toString() +
                     ini.value(u"CustomerListPrint/Columns"_s).toString(),
                 u"TrueFalse4"_s);
        QCOMPARE(ini.value(u"Settings/InvoiceTitleText"_s).toString(), u"ACME, Inc. Statement"_s);
        QCOMPARE(settings::customerListColumns() * 10 + settings::customerListBlankLines(), 41);  // the print form's readers
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
        settings::ExpertMode.set(true);
        settings::LastClicked.set(3);
        settings::setProblemReporter({});
        QVERIFY2(told.size() == 1 && told[0].contains(QDir::toNativeSeparators(settings::storePath())) &&
                     told[0].contains(u"Not a directory"_s),
                 qPrintable(told.value(0)));
        QCOMPARE(stored(settings::ExpertMode), kAbsent);
    }

    void envelopeMargins()
    {
        using settings::XMargin, settings::YMargin;
        QCOMPARE(settings::envelopeMarginY(), 12.0);
        QCOMPARE(stored(XMargin) + stored(YMargin), u"212"_s);  // both written
        XMargin.store(u"3.5cm"_s);                              // read by its leading number and left alone
        QVERIFY(settings::envelopeMarginX() == 3.5 && stored(XMargin) == u"3.5cm");
        // An empty X-Margin resets both; a stored one beside an empty Y-Margin isn't mended.
        XMargin.store(QString());
        YMargin.store(u"7"_s);
        QCOMPARE(settings::envelopeMarginY(), 12.0);
        YMargin.store(QString());
        QCOMPARE(settings::envelopeMarginY() + settings::envelopeMarginX(), 2.0);
        QCOMPARE(stored(YMargin), QString());
    }

    void databasePath()
    {
        // The test program's folder is writable: the file lives beside it, not written back.
        const QString beside = QCoreApplication::applicationDirPath() + u"/QOR.xml"_s;
        QVERIFY(settings::databasePath() == beside && stored(settings::DatabasePath) == kAbsent);
        // A program folder that can't take the file: the per-user data folder, made on the way.
        const QString userDir = dataHome.path() + u"/QOR"_s;
        QVERIFY(!QDir(userDir).exists());
        QCOMPARE(settings::defaultDatabasePath(dataHome.path() + u"/no/such"_s), userDir + "/QOR.xml");
        QVERIFY(QDir(userDir).exists());
        // A file for a folder; installed with the system's programs: the user's
        // folder, even when the folder could be written (as root can).
        for (const QString &program : {QCoreApplication::applicationFilePath(), u"/usr/bin"_s})
            QCOMPARE(settings::defaultDatabasePath(program), userDir + "/QOR.xml");
        settings::DatabasePath.set(QString());  // a stored empty path counts as none
        QCOMPARE(settings::databasePath(), beside);
    }

    void roundTrips()
    {
        auto update = makeForm(u"frmUpdate"_s, QRect(20, 30, 200, 100));
        saveFormPosition(update.get());
        const QRect normal(41, 57, 333, 222);
        const std::pair<Qt::WindowState, const char *> states[] = {
            {Qt::WindowNoState, "0"}, {Qt::WindowMaximized, "2"}, {Qt::WindowMinimized, "1"}};
        for (const auto &[state, code] : states) {
            auto form = makeForm(u"frmListLVWs"_s, state == Qt::WindowNoState ? normal : QRect(9, 9, 99, 99));
            form->show();
            QVERIFY(QTest::qWaitForWindowExposed(form.get()));
            form->setWindowState(state);
            QTRY_COMPARE(form->windowState(), Qt::WindowStates(state));
            saveFormPosition(form.get());  // not normal: the earlier normal place stays in the store
            QCOMPARE(kept(settings::FormWindowState, "frmListLVWs"), QLatin1String(code));
            auto again = makeForm(u"frmListLVWs"_s, QRect(0, 0, 500, 400));  // its designed size counts for nothing
            restoreFormPosition(again.get());
            // Back in its state, with the place to go back to.
            QVERIFY(again->windowState() == Qt::WindowStates(state) && again->geometry() == normal);
        }
        QCOMPARE(kept(settings::FormLeft, "frmListLVWs") + u' ' + kept(settings::FormHeight, "frmListLVWs"), twips(41) + u' ' + twips(222));
        // Each form keeps its own values; a form without a name has none.
        auto update2 = makeForm(u"frmUpdate"_s);
        restoreFormPosition(update2.get());
        QVERIFY(update2->geometry() == QRect(20, 30, 200, 100) && update2->windowState() == Qt::WindowNoState);
        auto nameless = makeForm(QString(), QRect(5, 6, 70, 80));
        restoreFormPosition(nameless.get());
        QCOMPARE(nameless->geometry(), QRect(5, 6, 70, 80));
    }

    void placeOffAllScreensIsCentred()
    {
        const QRect screen = QGuiApplication::primaryScreen()->geometry();
        // Where it was, whether it comes back centred: only a sliver showing is off; partly off but grabbable is not.
        // clang-format off
        const std::pair<QPoint, bool> rows[] = {
            {{screen.right() + 2000, 50}, true}, {{50, screen.bottom() + 500}, true}, {{-2000, -1500}, true},
            {{screen.right() - 5, 50}, true}, {{-100, 20}, false}, {screen.topLeft() + QPoint(10, 10), false}};
        // clang-format on
        for (const auto &[place, centred] : rows) {
            saveFormPosition(makeForm(u"frmChecking"_s, QRect(place, QSize(240, 160))).get());
            auto form = makeForm(u"frmChecking"_s);
            restoreFormPosition(form.get());
            QCOMPARE(form->geometry(), QRect(centred ? centredPlace(QSize(240, 160)) : place, QSize(240, 160)));
        }
    }

    void sizeRules()
    {
        // A fixed form keeps no size, and a size stored by hand doesn't change it.
        auto fixed = makeForm(u"frmUpdate"_s);
        fixed->setFixedSize(320, 180);
        fixed->move(70, 80);
        saveFormPosition(fixed.get());
        QCOMPARE(kept(settings::FormWidth, "frmUpdate"), kAbsent);
        settings::FormWidth.set(u"frmUpdate"_s, u"9000"_s);
        restoreFormPosition(fixed.get());
        QCOMPARE(fixed->geometry(), QRect(70, 80, 320, 180));
        // A sizable form with a stored zero width keeps its own size.
        auto zero = makeForm(u"frmZero"_s, QRect(30, 40, 210, 110));
        saveFormPosition(zero.get());
        settings::FormWidth.set(u"frmZero"_s, u"0"_s);
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
        QCOMPARE(kept(settings::FormHeight, "frmQOR"), QString::number(twips(400).toInt() + 450));
    }
};

QTEST_MAIN(TestSettings)
#include "tst_settings.moc"
