// SPDX-License-Identifier: GPL-3.0-or-later
// HoverCommand: paint decisions, placement, the mouse and key state machine,
// and what lands in the pixels.
#include "uiservices/assetpaths.h"
#include "uiservices/hovercommand.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QSignalSpy>
#include <QTest>

using namespace qor;
using hover::Edge;
using hover::State;

namespace {

void mouse(QWidget *w, QEvent::Type t, QPointF p, Qt::MouseButton b = Qt::NoButton, Qt::MouseButtons held = {})
{
    QMouseEvent e(t, p, w->mapToGlobal(p), b, held, Qt::NoModifier);
    QCoreApplication::sendEvent(w, &e);
}
void move(QWidget *w, QPointF p, Qt::MouseButtons held = {}) { mouse(w, QEvent::MouseMove, p, Qt::NoButton, held); }
void press(QWidget *w, QPointF p, Qt::MouseButton b = Qt::LeftButton) { mouse(w, QEvent::MouseButtonPress, p, b, b); }
void release(QWidget *w, QPointF p, Qt::MouseButton b = Qt::LeftButton) { mouse(w, QEvent::MouseButtonRelease, p, b); }
void key(QWidget *w, QEvent::Type t, int k, bool repeat = false)
{
    QKeyEvent e(t, k, Qt::NoModifier, k == Qt::Key_Space ? QStringLiteral(" ") : QString(), repeat);
    QCoreApplication::sendEvent(w, &e);
}
void focus(QWidget *w, bool in)
{
    QFocusEvent e(in ? QEvent::FocusIn : QEvent::FocusOut, Qt::TabFocusReason);
    QCoreApplication::sendEvent(w, &e);
}

// Checks the colours of a few pixels of what the control paints now.
struct Px {
    int x, y;
    QColor c;
};
void expect(QWidget *w, std::initializer_list<Px> want)
{
    const QImage img = w->grab().toImage();
    for (const Px &p : want)
        QVERIFY2(img.pixelColor(p.x, p.y) == p.c, qPrintable(QStringLiteral("pixel %1,%2").arg(p.x).arg(p.y)));
}

// 10x10: ground colour with a 4x4 square of ink at 3..6.
QImage square(QColor ground, QColor ink)
{
    QImage img(10, 10, QImage::Format_RGB32);
    img.fill(ground);
    for (int y = 3; y < 7; ++y)
        for (int x = 3; x < 7; ++x) img.setPixelColor(x, y, ink);
    return img;
}

int countColour(const QImage &img, QColor c)
{
    int n = 0;
    for (int y = 0; y < img.height(); ++y)
        for (int x = 0; x < img.width(); ++x) n += img.pixelColor(x, y) == c;
    return n;
}

// 40x20, red back, green highlight, no caption, left aligned: a 10x10 picture lands at (5, 5).
std::unique_ptr<HoverCommand> plain(int style, const QImage &pic = {})
{
    auto b = std::make_unique<HoverCommand>();
    b->resize(40, 20);
    b->setCaption(QString());
    b->setStyleBits(style);
    b->setBorderOffset(5);
    b->setImageOffset(0);
    b->setBackColor(QColor(255, 0, 0));
    b->setHighlightColor(QColor(0, 255, 0));
    if (!pic.isNull()) b->setPicture(pic);
    return b;
}

}  // namespace

class TestHoverCommand : public QObject {
    Q_OBJECT
private slots:
    void propertiesAndPaintDecisions()
    {
        HoverCommand b;  // registers the images: the tab faces are compiled in
        for (int i = 0; i < 7; ++i) {
            const QImage face(assets::tabFace(i)), hov(assets::tabFaceHover(i));
            QVERIFY2(face.size() == QSize(95, 51) && countColour(face, QColor(0, 0, 102)) > 150 &&
                         countColour(hov, QColor(50, 185, 70)) > 150,
                     qPrintable(assets::tabFace(i)));
        }
        QSignalSpy spy(&b, &HoverCommand::propertyChanged);
        const QImage pic = square(Qt::white, Qt::white);
        for (int twice = 0; twice < 2; ++twice) {  // unchanged values give no second notice, pictures do
            b.setStyleBits(33);
            b.setBackColor(QColor(1, 2, 3));
            b.setPicture(pic);
        }
        QStringList names;
        for (const auto &args : spy) names << args.at(0).toString();
        QCOMPARE(names, (QStringList{"Style", "BackColor", "Picture", "Picture"}));
        QCOMPARE(b.backColorValue(), 0x00030201u);  // red in the low byte
        // The stored form round-trips; what it lacks takes its default.
        b.setForeColor(syscolor::WindowText);
        HoverCommand copy;
        copy.readProperties(b.writeProperties());
        QCOMPARE(copy.writeProperties(), b.writeProperties());
        copy.readProperties(QVariantMap{{QStringLiteral("Style"), 80}});
        QVERIFY(copy.styleBits() == 80 && copy.picture().isNull() && copy.backColorValue() == 0x8000000Fu);
        // System colours resolve through the palette at use.
        copy.setPalette(QPalette(QColor(99, 99, 99)));
        QCOMPARE(copy.backColor(), QColor(99, 99, 99));

        // Borders per style bit: 1 flat, 2 thin, 16 none; focus raises a flat one in state up.
        // clang-format off
        const std::tuple<int, State, bool, Edge> borders[] = {
            {0, State::Up, false, Edge::Raised}, {1, State::Up, false, Edge::None}, {1, State::Hover, false, Edge::Raised},
            {3, State::Pressed, false, Edge::ThinSunken}, {2, State::Up, false, Edge::ThinRaised},
            {16, State::Pressed, false, Edge::None}, {17, State::Up, true, Edge::Raised},
            {3, State::Up, true, Edge::ThinRaised}, {80, State::Up, true, Edge::None}};
        // clang-format on
        for (auto [style, state, focused, edge] : borders) QCOMPARE(hover::borderFor(style, state, focused), edge);
        QCOMPARE(hover::pictureFor(State::Pressed, true, true), hover::PictureChoice::Picture);
    }

    void placementArithmetic()
    {
        // Halves round to even: 2.5 -> 2, 18.5 -> 18, 19.5 -> 20; the press offset adds.
        QCOMPARE(hover::pictureOrigin(0, 103, 56, 95, 51, 0, 4, 0, 2), QPoint(6, 4));
        QCOMPARE(hover::pictureOrigin(0, 100, 57, 20, 20, 0, 4, 0, 0).y(), 18);
        QCOMPARE(hover::pictureOrigin(0, 100, 59, 20, 20, 0, 4, 0, 0).y(), 20);
        QCOMPARE(hover::captionOrigin(1, 101, 40, 30, 16, -1, 5, 10, 0).x(), 36);
        // Centred, no caption: ImageOffset counts in the picture's width.
        QCOMPARE(hover::pictureOrigin(1, 100, 40, 20, 20, 0, 7, 10, 0), QPoint(35, 10));
        // Centred with a caption: picture, gap and text as one block.
        for (int w : {100, 150})
            for (int t : {0, 30, 44}) {
                const QPoint pic = hover::pictureOrigin(1, w, 40, 20, 20, t, 7, 10, 0);
                const QPoint cap = hover::captionOrigin(1, w, 40, t, 16, 20, 7, 10, 0);
                QCOMPARE(cap.x() - pic.x(), 30);
                QCOMPARE(w - (cap.x() + t), pic.x());
            }
        // Right: text ends BorderOffset before the edge. Left: the caption follows
        // picture and gap, or starts at BorderOffset. Unknown: the left edge.
        QCOMPARE(hover::pictureOrigin(2, 100, 40, 20, 20, 30, 5, 10, 0).x(), 35);
        QCOMPARE(hover::captionOrigin(2, 100, 40, 30, 16, 20, 5, 10, 0).x(), 65);
        QCOMPARE(hover::captionOrigin(0, 100, 40, 30, 16, 20, 5, 10, 0), QPoint(35, 12));
        QCOMPARE(hover::captionOrigin(0, 100, 40, 30, 16, -1, 5, 10, 0), QPoint(5, 12));
        QCOMPARE(hover::captionOrigin(-1, 100, 40, 30, 16, 20, 5, 10, 2), QPoint(2, 14));
    }

    void mouseAndKeyStateMachine()
    {
        HoverCommand b;
        b.resize(40, 20);
        QStringList log;
        for (auto [signal, name] : {std::pair{&HoverCommand::MouseMove, "move"}, std::pair{&HoverCommand::MouseDown, "down"},
                                    std::pair{&HoverCommand::MouseUp, "up"}})
            connect(&b, signal, &b, [&log, name](int bt, int, float, float) { log << name + QString::number(bt); });
        connect(&b, &HoverCommand::MouseLeave, &b, [&log] { log << QStringLiteral("leave"); });
        connect(&b, &QAbstractButton::clicked, &b, [&log] { log << QStringLiteral("click"); });
        QString states;  // after each step: Up, Hover, Pressed
        const auto then = [&b, &states] { states += QLatin1Char("UHP"[int(b.state())]); };
        // Zero on either axis counts as outside, as does the far edge.
        for (QPointF out : {QPointF(0, 10), QPointF(10, 0), QPointF(40, 10)})
            move(&b, {10, 10}), then(), move(&b, out), then();
        // A right press changes no state; its release gives hover and no click.
        press(&b, {6, 6}, Qt::RightButton), then(), release(&b, {6, 6}, Qt::RightButton), then();
        // A left click ends in up, though the mouse is still over the control.
        press(&b, {6, 6}), move(&b, {7, 7}, Qt::LeftButton), then(), release(&b, {7, 7}), then();
        QCOMPARE(log.join(' '), "move0 leave move0 leave move0 leave down2 up2 down1 move1 up1 click");
        log.clear();
        // Dragged off: up and one leave; the release outside isn't this control's.
        press(&b, {10, 10}), move(&b, {-3, 10}, Qt::LeftButton), then();
        move(&b, {-20, 10}, Qt::LeftButton), release(&b, {-20, 10});
        QCOMPARE(log.join(' '), "down1 leave");
        // Dragged back in (no hover while held) and released over it: a click.
        press(&b, {10, 10}), move(&b, {50, 10}, Qt::LeftButton), move(&b, {10, 10}, Qt::LeftButton), then();
        release(&b, {10, 10});
        QVERIFY(log.endsWith(QStringLiteral("click")));
        // Leaving without a further move also ends hover.
        move(&b, {10, 10});
        QEvent leave(QEvent::Leave);
        QCoreApplication::sendEvent(&b, &leave);
        then();
        QCOMPARE(states, QStringLiteral("HUHUHUUHPUUUU"));
        QCOMPARE(log.count(QStringLiteral("leave")), 3);

        // Keys: held down, the platform repeats press and release.
        QSignalSpy click(&b, &QAbstractButton::clicked);
        for (int k : {int(Qt::Key_Space), int(Qt::Key_Return), int(Qt::Key_Enter)}) {
            const int before = click.count();
            key(&b, QEvent::KeyPress, k);
            for (int i = 0; i < 2; ++i) {
                key(&b, QEvent::KeyRelease, k, true);
                key(&b, QEvent::KeyPress, k, true);
            }
            QVERIFY(b.state() == State::Pressed && click.count() == before);
            key(&b, QEvent::KeyRelease, k);
            QVERIFY(b.state() == State::Up && click.count() == before + 1);
        }
        key(&b, QEvent::KeyRelease, Qt::Key_Space);  // a release without a press
        key(&b, QEvent::KeyPress, Qt::Key_A);
        b.setEnabled(false);
        key(&b, QEvent::KeyPress, Qt::Key_Space);
        key(&b, QEvent::KeyRelease, Qt::Key_Space);
        QVERIFY(b.state() == State::Up && click.count() == 3);
    }

    void picturesAndGroundInThePixels()
    {
        // The key colour is whatever the top left pixel holds.
        auto b = plain(16, square(Qt::blue, Qt::white));
        expect(b.get(), {{5, 5, Qt::red}, {9, 9, Qt::white}});
        // Disabled: grey ink, transparent ground, light emboss one pixel down and right.
        b->setPicture(square(Qt::white, Qt::blue));
        b->setEnabled(false);
        const QColor ink = b->grab().toImage().pixelColor(9, 9);
        QVERIFY(ink != QColor(Qt::blue) && ink.red() == ink.green() && ink.green() == ink.blue());
        expect(b.get(), {{14, 14, Qt::red}, {12, 12, b->palette().color(QPalette::Active, QPalette::Light)}});
        // HovPicture only under the mouse; Picture otherwise.
        auto h = plain(16);
        h->setHovPicture(square(Qt::white, Qt::blue));
        expect(h.get(), {{9, 9, Qt::red}});
        move(h.get(), {20, 10});
        expect(h.get(), {{9, 9, Qt::blue}});
        h->setPicture(square(Qt::white, Qt::black));
        move(h.get(), {0, 10});
        expect(h.get(), {{9, 9, Qt::black}});
        // Pressed, the content moves 2 pixels (style 33) or 1 (thin): ink at 8..11 idle.
        for (auto [style, d] : {std::pair{33, 2}, std::pair{2, 1}}) {
            auto p = plain(style, square(Qt::white, Qt::blue));
            press(p.get(), {20, 10});
            expect(p.get(), {{7 + d, 7 + d, Qt::red}, {11 + d, 11 + d, Qt::blue}, {12 + d, 12 + d, Qt::red}});
        }

        // The ground: what the parent paints, or a BGPicture.
        QWidget parent;
        parent.setPalette(QPalette(Qt::gray, QColor(10, 200, 30)));  // button, window
        parent.setAutoFillBackground(true);
        auto *child = plain(16).release();
        child->setParent(&parent);
        child->move(20, 10);
        child->setGrabBG(true);
        expect(child, {{10, 10, QColor(10, 200, 30)}});
        // A BGPicture wins and is tiled from the corner; pressed, the tiles move too.
        QImage tile(4, 4, QImage::Format_RGB32);
        tile.fill(Qt::white);
        tile.setPixelColor(0, 0, Qt::black);
        child->setBGPicture(tile);
        expect(child, {{8, 4, Qt::black}, {9, 4, Qt::white}});
        press(child, {10, 10});
        expect(child, {{10, 6, Qt::black}, {8, 4, Qt::white}});
    }

    void bordersFocusAndHighlightInThePixels()
    {
        // Style 80: highlight behind everything while hovered, none pressed, no border;
        // focus draws a dotted rectangle inset by 3.
        auto b = plain(80, square(Qt::white, Qt::black));
        move(b.get(), {20, 10});
        expect(b.get(), {{0, 0, Qt::green}, {5, 5, Qt::green}, {9, 9, Qt::black}});
        press(b.get(), {20, 10});
        expect(b.get(), {{0, 0, Qt::red}});
        release(b.get(), {20, 10});
        focus(b.get(), true);
        expect(b.get(), {{3, 3, Qt::black}, {5, 3, Qt::black}, {3, 4, Qt::red}, {2, 2, Qt::red}});
        focus(b.get(), false);
        expect(b.get(), {{3, 3, Qt::red}});
        // Style 33 with a HovPicture: focus raises the border, no rectangle.
        auto tab = plain(33);
        tab->setHovPicture(square(Qt::white, Qt::blue));
        expect(tab.get(), {{0, 0, Qt::red}});
        focus(tab.get(), true);
        QImage img = tab->grab().toImage();
        QVERIFY(img.pixelColor(1, 1).lightness() > img.pixelColor(38, 18).lightness());
        for (int x = 2; x < 38; ++x) QCOMPARE(img.pixelColor(x, 3), QColor(Qt::red));
        // Style 32 alone: the rectangle runs along the edge. Style 0 pressed: sunken.
        QCOMPARE(hover::focusRectFor(32, true, false, 40, 20), QRect(0, 0, 40, 20));
        auto raised = plain(0);
        press(raised.get(), {20, 10});
        img = raised->grab().toImage();
        QVERIFY(img.pixelColor(1, 1).lightness() < img.pixelColor(38, 18).lightness());

        // Style 8: the caption takes the highlight colour under the mouse.
        auto t = plain(16 | 8);
        t->resize(120, 40);
        QFont f(QStringLiteral("DejaVu Sans"));
        f.setPixelSize(24);
        t->setFont(f);
        t->setCaption(QStringLiteral("HIH"));
        t->setForeColor(Qt::black);
        auto inked = [&t](QColor c) { return countColour(t->grab().toImage(), c); };
        QVERIFY(inked(Qt::black) > 20);
        move(t.get(), {60, 20});
        QVERIFY(inked(Qt::green) > 20 && inked(Qt::black) == 0);
    }
};

QTEST_MAIN(TestHoverCommand)
#include "tst_hovercommand.moc"
