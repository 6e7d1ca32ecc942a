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
using namespace Qt::StringLiterals;

namespace {
const QString kAbsent = u"<absent>"_s;
QString stored(const QString &key) { return settings::read(u"FormPositions"_s, key, kAbsent); }

// Pixels as the store keeps them: twips, in decimal.
QString twips(double px) {
    return QString::number(std::lround(px * 1440.0 / QGuiApplication::primaryScreen()->logicalDotsPerInchX()));
}

std::unique_ptr<QWidget> makeForm(const QString &name, const QRect &geometry = {}) {
    auto w = std::make_unique<QWidget>();
    w->setObjectName(name);
    if (geometry.isValid()) {  // the place is the outer corner, frame included
        w->move(geometry.topLeft());
        w->resize(geometry.size());
    }
    return w;
}

QPoint centredPlace(const QSize &outer) {
    const QRect screen = QGuiApplication::primaryScreen()->geometry();
    return screen.topLeft() + QPoint((screen.width() - outer.width()) / 2, (screen.height() - outer.height()) / 2);
}

void storePlace(const QString &stem, int state, const QRect &px) {
    const QString values[] = {QString::number(state), twips(px.x()), twips(px.y()), twips(px.width()),
                              twips(px.height())};
    int i = 0;
    for (const char *suffix : {"_WindowState", "_Left", "_Top", "_Width", "_Height"})
        settings::write(u"FormPositions"_s, stem + QLatin1String(suffix), values[i++]);
}
}  // namespace

class TestFormPosition : public QObject {
    Q_OBJECT
    QTemporaryDir configHome;
    int round = 0;

private slots:
    void init() {  // each test starts where no window was ever placed
        const QString dir = configHome.filePath(u"run%1"_s.arg(++round));
        QVERIFY(QDir().mkpath(dir));
        qputenv("XDG_CONFIG_HOME", dir.toUtf8());
    }

    void firstStartAndNormalRoundTrip() {
        auto first = makeForm(u"frmQOR"_s, QRect(0, 0, 400, 300));
        restoreFormPosition(first.get());
        QCOMPARE(first->geometry(), QRect(centredPlace(QSize(400, 300)), QSize(400, 300)));
        QCOMPARE(stored(u"frmQOR_Left"_s) + stored(u"frmQOR_WindowState"_s), kAbsent + kAbsent);  // writes nothing

        auto lists = makeForm(u"frmListLVWs"_s, QRect(41, 57, 333, 222));
        auto update = makeForm(u"frmUpdate"_s, QRect(20, 30, 200, 100));
        lists->show();
        QVERIFY(QTest::qWaitForWindowExposed(lists.get()));
        saveFormPosition(lists.get());
        saveFormPosition(update.get());
        QCOMPARE(stored(u"frmListLVWs_WindowState"_s), u"0"_s);
        QCOMPARE(stored(u"frmListLVWs_Left"_s), twips(41));
        QCOMPARE(stored(u"frmListLVWs_Height"_s), twips(222));
        // Closing maximised keeps the earlier normal place; the other form is untouched.
        lists->setWindowState(Qt::WindowMaximized);
        QTRY_VERIFY(lists->isMaximized());
        saveFormPosition(lists.get());
        QCOMPARE(stored(u"frmListLVWs_WindowState"_s), u"2"_s);
        QCOMPARE(stored(u"frmListLVWs_Width"_s), twips(333));

        auto lists2 = makeForm(u"frmListLVWs"_s, QRect(0, 0, 500, 400));  // the designed size counts for nothing
        auto update2 = makeForm(u"frmUpdate"_s);
        restoreFormPosition(lists2.get());
        restoreFormPosition(update2.get());
        QVERIFY(lists2->windowState() & Qt::WindowMaximized);
        QCOMPARE(lists2->geometry(), QRect(41, 57, 333, 222));  // the normal geometry under the state
        QCOMPARE(update2->windowState(), Qt::WindowNoState);
        QCOMPARE(update2->geometry(), QRect(20, 30, 200, 100));

        auto nameless = makeForm(QString(), QRect(5, 6, 70, 80));  // no name, no keys: left alone
        restoreFormPosition(nameless.get());
        QCOMPARE(nameless->geometry(), QRect(5, 6, 70, 80));
    }

    void maximisedAndMinimisedComeBack() {
        const QRect normal(60, 40, 300, 200);
        for (int state : {2, 1}) {
            storePlace(u"frmChecking"_s, state, normal);
            auto form = makeForm(u"frmChecking"_s, QRect(10, 10, 500, 450));
            restoreFormPosition(form.get());
            form->show();
            QTRY_VERIFY(state == 2 ? form->isMaximized() : form->isMinimized());
            saveFormPosition(form.get());  // leaves the normal place in the store
            QCOMPARE(stored(u"frmChecking_WindowState"_s), QString::number(state));
            form->setWindowState(Qt::WindowNoState);
            QTRY_COMPARE(QRect(form->pos(), form->size()), normal);
            saveFormPosition(form.get());  // closed normal: the next start opens normal
            QCOMPARE(stored(u"frmChecking_WindowState"_s), u"0"_s);
        }
    }

    void placeOffAllScreensIsCentred() {
        const QRect screen = QGuiApplication::primaryScreen()->geometry();
        const struct { QPoint place; bool centred; } rows[] = {
            {{screen.right() + 2000, 50}, true}, {{50, screen.bottom() + 500}, true}, {{-2000, -1500}, true},
            {{screen.right() - 5, 50}, true},  // only a sliver shows
            {{-100, 20}, false},               // partly off but grabbable
            {screen.topLeft() + QPoint(10, 10), false}};
        for (const auto &r : rows) {
            storePlace(u"frmChecking"_s, 0, QRect(r.place, QSize(240, 160)));
            auto form = makeForm(u"frmChecking"_s);
            restoreFormPosition(form.get());
            QCOMPARE(form->size(), QSize(240, 160));
            QCOMPARE(form->pos(), r.centred ? centredPlace(QSize(240, 160)) : r.place);
        }
    }

    void sizeRules() {
        // A fixed form keeps no size, and a size stored by hand doesn't change it.
        auto fixed = makeForm(u"frmUpdate"_s);
        fixed->setFixedSize(320, 180);
        fixed->move(70, 80);
        saveFormPosition(fixed.get());
        QCOMPARE(stored(u"frmUpdate_Left"_s), twips(70));
        QCOMPARE(stored(u"frmUpdate_Width"_s) + stored(u"frmUpdate_Height"_s), kAbsent + kAbsent);
        settings::write(u"FormPositions"_s, u"frmUpdate_Width"_s, u"9000"_s);
        restoreFormPosition(fixed.get());
        QCOMPARE(fixed->geometry(), QRect(70, 80, 320, 180));
        // A sizable form with a stored zero width keeps its own size.
        auto zero = makeForm(u"frmZero"_s, QRect(0, 0, 210, 110));
        storePlace(u"frmZero"_s, 0, QRect(30, 40, 0, 500));
        restoreFormPosition(zero.get());
        QCOMPARE(zero->geometry(), QRect(30, 40, 210, 110));

        // A declared frame allowance is part of the stored and centred outer
        // size, and comes off again when the size is applied.
        const QSizeF frame(120, 450);
        auto form = makeForm(u"frmQOR"_s, QRect(0, 0, 600, 400));
        form->setProperty("qorFrameTwips", frame);
        QCOMPARE(int(std::lround(formHeightTwips(form.get()))), twips(400).toInt() + 450);
        saveFormPosition(form.get());
        QCOMPARE(stored(u"frmQOR_Width"_s), QString::number(twips(600).toInt() + 120));
        auto again = makeForm(u"frmQOR"_s);
        again->setProperty("qorFrameTwips", frame);
        settings::write(u"FormPositions"_s, u"frmQOR_Left"_s, u"-999"_s);
        settings::write(u"FormPositions"_s, u"frmQOR_Top"_s, u"-999"_s);
        restoreFormPosition(again.get());
        QCOMPARE(again->size(), QSize(600, 400));
        const double tpp = 1440.0 / QGuiApplication::primaryScreen()->logicalDotsPerInchX();
        QCOMPARE(again->pos(), centredPlace(QSize(600 + std::lround(120 / tpp), 400 + std::lround(450 / tpp))));
    }
};

QTEST_MAIN(TestFormPosition)
#include "tst_formposition.moc"
