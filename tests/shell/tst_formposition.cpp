// Window places and sizes kept per form, on the offscreen platform.
#include "shell/formposition.h"
#include "shell/settingsstore.h"

#include <QApplication>
#include <QDir>
#include <QScreen>
#include <QTemporaryDir>
#include <QTest>
#include <QWidget>

#include <cmath>
#include <memory>

using namespace qor;

namespace {
const QString kSection = QStringLiteral("FormPositions");
const QString kAbsent = QStringLiteral("<absent>");

QString stored(const QString &key) { return settings::read(kSection, key, kAbsent); }

// Pixels as the store keeps them: twips, in decimal.
QString twips(double px)
{
    return QString::number(std::lround(px * 1440.0 / QGuiApplication::primaryScreen()->logicalDotsPerInchX()));
}

std::unique_ptr<QWidget> makeForm(const QString &name)
{
    auto w = std::make_unique<QWidget>();
    w->setObjectName(name);
    return w;
}

// Where a form of this outer size stands when centred on the primary screen.
QPoint centredPlace(const QSize &outer)
{
    const QRect screen = QGuiApplication::primaryScreen()->geometry();
    return screen.topLeft() + QPoint((screen.width() - outer.width()) / 2, (screen.height() - outer.height()) / 2);
}

void storePlace(const QString &stem, int state, const QRect &px)
{
    settings::write(kSection, stem + QStringLiteral("_WindowState"), QString::number(state));
    settings::write(kSection, stem + QStringLiteral("_Left"), twips(px.x()));
    settings::write(kSection, stem + QStringLiteral("_Top"), twips(px.y()));
    settings::write(kSection, stem + QStringLiteral("_Width"), twips(px.width()));
    settings::write(kSection, stem + QStringLiteral("_Height"), twips(px.height()));
}
}  // namespace

class TestFormPosition : public QObject {
    Q_OBJECT
    QTemporaryDir configHome;
    int round = 0;

private slots:
    void init()
    {
        // Each test starts on a machine where no window was ever placed.
        const QString dir = configHome.filePath(QStringLiteral("run%1").arg(++round));
        QVERIFY(QDir().mkpath(dir));
        qputenv("XDG_CONFIG_HOME", dir.toUtf8());
    }
    void firstStartIsCentredAtDesignedSize();
    void normalRoundTrip();
    void maximisedKeepsEarlierNormalPlace();
    void minimisedRoundTrip();
    void formsDontDisturbEachOther();
    void placeOffAllScreensIsCentred_data();
    void placeOffAllScreensIsCentred();
    void fixedFormKeepsNoSize();
    void frameAllowance();
};

void TestFormPosition::firstStartIsCentredAtDesignedSize()
{
    auto form = makeForm(QStringLiteral("frmQOR"));
    setFormSizeTwips(form.get(), 10110, 6765);
    const QSize designed = form->size();
    QCOMPARE(twips(designed.width()), QStringLiteral("10110"));
    restoreFormPosition(form.get());
    QCOMPARE(form->size(), designed);
    QCOMPARE(form->pos(), centredPlace(designed));
    form->show();
    QVERIFY(QTest::qWaitForWindowExposed(form.get()));
    QCOMPARE(form->windowState(), Qt::WindowNoState);
    // Restoring writes nothing.
    QCOMPARE(stored(QStringLiteral("frmQOR_Left")), kAbsent);
    QCOMPARE(stored(QStringLiteral("frmQOR_WindowState")), kAbsent);
}

void TestFormPosition::normalRoundTrip()
{
    // Left and Top are the outer corner, frame included.
    {
        auto form = makeForm(QStringLiteral("frmListLVWs"));
        form->move(41, 57);
        form->resize(333, 222);
        form->show();
        QVERIFY(QTest::qWaitForWindowExposed(form.get()));
        QCOMPARE(form->pos(), QPoint(41, 57));
        saveFormPosition(form.get());
    }
    QCOMPARE(stored(QStringLiteral("frmListLVWs_WindowState")), QStringLiteral("0"));
    QCOMPARE(stored(QStringLiteral("frmListLVWs_Left")), twips(41));
    QCOMPARE(stored(QStringLiteral("frmListLVWs_Top")), twips(57));
    QCOMPARE(stored(QStringLiteral("frmListLVWs_Width")), twips(333));
    QCOMPARE(stored(QStringLiteral("frmListLVWs_Height")), twips(222));
    auto again = makeForm(QStringLiteral("frmListLVWs"));
    again->resize(500, 400);  // the designed size counts for nothing now
    restoreFormPosition(again.get());
    QCOMPARE(again->pos(), QPoint(41, 57));
    QCOMPARE(again->size(), QSize(333, 222));
}

void TestFormPosition::maximisedKeepsEarlierNormalPlace()
{
    // The last normal place, stored at an earlier close.
    const QRect normal(60, 40, 300, 200);
    storePlace(QStringLiteral("frmQOR"), 0, normal);
    {
        // The user moves it elsewhere, maximises and closes.
        auto form = makeForm(QStringLiteral("frmQOR"));
        form->setGeometry(10, 10, 200, 150);
        form->show();
        QVERIFY(QTest::qWaitForWindowExposed(form.get()));
        form->setWindowState(Qt::WindowMaximized);
        QTRY_VERIFY(form->isMaximized());
        saveFormPosition(form.get());
    }
    QCOMPARE(stored(QStringLiteral("frmQOR_WindowState")), QStringLiteral("2"));
    QCOMPARE(stored(QStringLiteral("frmQOR_Left")), twips(normal.x()));
    QCOMPARE(stored(QStringLiteral("frmQOR_Width")), twips(normal.width()));

    // Next start: maximised, and back to normal at the stored place and size.
    auto form = makeForm(QStringLiteral("frmQOR"));
    setFormSizeTwips(form.get(), 10110, 6765);
    restoreFormPosition(form.get());
    form->show();
    QVERIFY(QTest::qWaitForWindowExposed(form.get()));
    QTRY_VERIFY(form->isMaximized());
    QVERIFY(form->size() != normal.size());
    form->setWindowState(Qt::WindowNoState);
    QTRY_COMPARE(form->size(), normal.size());
    QCOMPARE(form->pos(), normal.topLeft());
}

void TestFormPosition::minimisedRoundTrip()
{
    {
        auto form = makeForm(QStringLiteral("frmChecking"));
        form->setGeometry(100, 90, 250, 120);
        form->show();
        QVERIFY(QTest::qWaitForWindowExposed(form.get()));
        saveFormPosition(form.get());
        form->setWindowState(Qt::WindowMinimized);
        QTRY_VERIFY(form->isMinimized());
        saveFormPosition(form.get());
    }
    QCOMPARE(stored(QStringLiteral("frmChecking_WindowState")), QStringLiteral("1"));
    auto form = makeForm(QStringLiteral("frmChecking"));
    restoreFormPosition(form.get());
    form->show();
    QTRY_VERIFY(form->isMinimized());
    form->setWindowState(Qt::WindowNoState);
    QTRY_COMPARE(form->geometry(), QRect(100, 90, 250, 120));
    // Closed normal again: the next start opens normal.
    saveFormPosition(form.get());
    auto third = makeForm(QStringLiteral("frmChecking"));
    restoreFormPosition(third.get());
    QCOMPARE(third->windowState(), Qt::WindowNoState);
}

void TestFormPosition::formsDontDisturbEachOther()
{
    auto a = makeForm(QStringLiteral("frmUpdate"));
    auto b = makeForm(QStringLiteral("frmListLVWs"));
    a->setGeometry(20, 30, 200, 100);
    b->setGeometry(300, 200, 150, 170);
    saveFormPosition(a.get());
    saveFormPosition(b.get());
    b->setWindowState(Qt::WindowMaximized);
    saveFormPosition(b.get());
    QCOMPARE(stored(QStringLiteral("frmUpdate_WindowState")), QStringLiteral("0"));
    QCOMPARE(stored(QStringLiteral("frmListLVWs_WindowState")), QStringLiteral("2"));

    auto a2 = makeForm(QStringLiteral("frmUpdate"));
    auto b2 = makeForm(QStringLiteral("frmListLVWs"));
    restoreFormPosition(a2.get());
    restoreFormPosition(b2.get());
    QCOMPARE(a2->geometry(), QRect(20, 30, 200, 100));
    QVERIFY(!(a2->windowState() & Qt::WindowMaximized));
    QCOMPARE(b2->geometry(), QRect(300, 200, 150, 170));  // the normal geometry under the state
    QVERIFY(b2->windowState() & Qt::WindowMaximized);

    // A form without a name has no keys and is left alone.
    auto nameless = std::make_unique<QWidget>();
    nameless->setGeometry(5, 6, 70, 80);
    restoreFormPosition(nameless.get());
    QCOMPARE(nameless->geometry(), QRect(5, 6, 70, 80));
}

void TestFormPosition::placeOffAllScreensIsCentred_data()
{
    const QRect screen = QGuiApplication::primaryScreen()->geometry();
    QTest::addColumn<QPoint>("place");  // pixels
    QTest::addColumn<bool>("centred");
    QTest::newRow("far right") << QPoint(screen.right() + 2000, 50) << true;
    QTest::newRow("far below") << QPoint(50, screen.bottom() + 500) << true;
    QTest::newRow("far left and up") << QPoint(-2000, -1500) << true;
    QTest::newRow("only a sliver shows") << QPoint(screen.right() - 5, 50) << true;
    QTest::newRow("partly off but grabbable") << QPoint(-100, 20) << false;
    QTest::newRow("on screen") << QPoint(screen.x() + 10, screen.y() + 10) << false;
}

void TestFormPosition::placeOffAllScreensIsCentred()
{
    QFETCH(QPoint, place);
    QFETCH(bool, centred);
    const QSize size(240, 160);
    storePlace(QStringLiteral("frmChecking"), 0, QRect(place, size));
    auto form = makeForm(QStringLiteral("frmChecking"));
    restoreFormPosition(form.get());
    QCOMPARE(form->size(), size);
    QCOMPARE(form->pos(), centred ? centredPlace(size) : place);
}

void TestFormPosition::fixedFormKeepsNoSize()
{
    auto form = makeForm(QStringLiteral("frmUpdate"));
    form->setFixedSize(320, 180);
    form->move(70, 80);
    saveFormPosition(form.get());
    QCOMPARE(stored(QStringLiteral("frmUpdate_Left")), twips(70));
    QCOMPARE(stored(QStringLiteral("frmUpdate_Width")), kAbsent);
    QCOMPARE(stored(QStringLiteral("frmUpdate_Height")), kAbsent);
    // A size stored by hand doesn't change a fixed form either.
    settings::write(kSection, QStringLiteral("frmUpdate_Width"), QStringLiteral("9000"));
    settings::write(kSection, QStringLiteral("frmUpdate_Height"), QStringLiteral("9000"));
    auto again = makeForm(QStringLiteral("frmUpdate"));
    again->setFixedSize(320, 180);
    restoreFormPosition(again.get());
    QCOMPARE(again->geometry(), QRect(70, 80, 320, 180));

    // A sizable form with a stored zero width keeps its own size.
    auto sizable = makeForm(QStringLiteral("frmZero"));
    sizable->resize(210, 110);
    storePlace(QStringLiteral("frmZero"), 0, QRect(30, 40, 0, 500));
    restoreFormPosition(sizable.get());
    QCOMPARE(sizable->geometry(), QRect(30, 40, 210, 110));
}

void TestFormPosition::frameAllowance()
{
    // A declared frame allowance is part of the stored outer size and of the
    // size that is centred, and comes off again when the size is applied.
    auto form = makeForm(QStringLiteral("frmQOR"));
    form->setProperty("qorFrameTwips", QSizeF(120, 450));
    form->resize(600, 400);
    QCOMPARE(QString::number(std::lround(formWidthTwips(form.get()))),
             QString::number(twips(600).toInt() + 120));
    QCOMPARE(QString::number(std::lround(formHeightTwips(form.get()))),
             QString::number(twips(400).toInt() + 450));
    saveFormPosition(form.get());
    QCOMPARE(stored(QStringLiteral("frmQOR_Width")), QString::number(twips(600).toInt() + 120));

    auto again = makeForm(QStringLiteral("frmQOR"));
    again->setProperty("qorFrameTwips", QSizeF(120, 450));
    restoreFormPosition(again.get());
    QCOMPARE(again->size(), QSize(600, 400));
    settings::write(kSection, QStringLiteral("frmQOR_Left"), QStringLiteral("-999"));
    settings::write(kSection, QStringLiteral("frmQOR_Top"), QStringLiteral("-999"));
    restoreFormPosition(again.get());
    const double tpp = 1440.0 / QGuiApplication::primaryScreen()->logicalDotsPerInchX();
    QCOMPARE(again->pos(), centredPlace(QSize(600 + std::lround(120 / tpp), 400 + std::lround(450 / tpp))));
}

QTEST_MAIN(TestFormPosition)
#include "tst_formposition.moc"
