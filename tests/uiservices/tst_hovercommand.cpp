// HoverCommand: paint decisions, placement arithmetic, the mouse and key state
// machine, and what actually lands in the pixels.
#include "uiservices/assetpaths.h"
#include "uiservices/hovercommand.h"

#include <QFocusEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QSignalSpy>
#include <QTest>

using namespace qor;
using hover::Edge;
using hover::State;

namespace {

void sendMove(QWidget *w, QPointF p, Qt::MouseButtons held = Qt::NoButton) {
    QMouseEvent e(QEvent::MouseMove, p, w->mapToGlobal(p), Qt::NoButton, held, Qt::NoModifier);
    QCoreApplication::sendEvent(w, &e);
}
void sendPress(QWidget *w, QPointF p, Qt::MouseButton b) {
    QMouseEvent e(QEvent::MouseButtonPress, p, w->mapToGlobal(p), b, b, Qt::NoModifier);
    QCoreApplication::sendEvent(w, &e);
}
void sendRelease(QWidget *w, QPointF p, Qt::MouseButton b) {
    QMouseEvent e(QEvent::MouseButtonRelease, p, w->mapToGlobal(p), b, Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(w, &e);
}
void sendKey(QWidget *w, QEvent::Type t, int key, bool autoRepeat = false) {
    QKeyEvent e(t, key, Qt::NoModifier, key == Qt::Key_Space ? QStringLiteral(" ") : QString(), autoRepeat);
    QCoreApplication::sendEvent(w, &e);
}
void sendFocus(QWidget *w, bool in) {
    QFocusEvent e(in ? QEvent::FocusIn : QEvent::FocusOut, Qt::TabFocusReason);
    QCoreApplication::sendEvent(w, &e);
}

// A 10x10 picture: ground colour with a 4x4 square of ink in the middle.
QImage squarePicture(QColor ground, QColor ink) {
    QImage img(10, 10, QImage::Format_RGB32);
    img.fill(ground);
    for (int y = 3; y < 7; ++y)
        for (int x = 3; x < 7; ++x) img.setPixelColor(x, y, ink);
    return img;
}

QColor px(const QImage &img, int x, int y) { return img.pixelColor(x, y); }

// A plain control for pixel checks: 40x20, no caption, left aligned with
// BorderOffset 5 so a 10x10 picture lands at (5, 5).
std::unique_ptr<HoverCommand> plainButton(int style) {
    auto b = std::make_unique<HoverCommand>();
    b->resize(40, 20);
    b->setCaption(QString());
    b->setStyleBits(style);
    b->setBorderOffset(5);
    b->setImageOffset(0);
    b->setBackColor(QColor(255, 0, 0));
    b->setHighlightColor(QColor(0, 255, 0));
    return b;
}

}  // namespace

class TestHoverCommand : public QObject {
    Q_OBJECT
private slots:
    void defaultsAndPropertyNotices();
    void systemColoursResolveThroughThePalette();
    void borderTablePerStyleAndState();
    void backgroundPictureAndFocusDecisions();
    void placementArithmetic();
    void mouseStateMachine();
    void dragOffLeavesOnce();
    void keyboardPressAndRelease();
    void keyColourIsTheTopLeftPixel();
    void hoverPictureOnlyUnderTheMouse();
    void pressMovesTheContent();
    void style80HoverFillAndFocusInset();
    void focusMarksPerStyle();
    void disabledPictureIsGreyed();
    void hoverTextColour();
    void backgroundFromParentOrTiles();
    void tabImagesAreCompiledIn();
};

void TestHoverCommand::defaultsAndPropertyNotices() {
    HoverCommand b;
    QCOMPARE(b.caption(), QStringLiteral("HoverCommand"));
    QCOMPARE(b.styleBits(), 2);
    QCOMPARE(b.imageOffset(), 10);
    QCOMPARE(b.borderOffset(), 10);
    QCOMPARE(b.hAlign(), 0);
    QCOMPARE(b.grabBG(), false);
    QVERIFY(b.isEnabled());
    QCOMPARE(b.foreColorValue(), 0x80000007u);
    QCOMPARE(b.backColorValue(), 0x8000000Fu);
    QCOMPARE(b.highlightColorValue(), 0x8000000Du);
    QVERIFY(b.picture().isNull() && b.hovPicture().isNull() && b.bgPicture().isNull());
    QCOMPARE(b.state(), State::Up);

    // The stored names reach the same values.
    QCOMPARE(b.property("Style").toInt(), 2);
    QVERIFY(b.setProperty("BorderOffset", 4));
    QCOMPARE(b.borderOffset(), 4);

    QSignalSpy spy(&b, &HoverCommand::propertyChanged);
    b.setStyleBits(33);
    b.setStyleBits(33);  // unchanged: no notice
    b.setHAlign(1);
    b.setHAlign(1);
    b.setCaption(QStringLiteral("&Go"));
    b.setCaption(QStringLiteral("&Go"));
    b.setBackColor(QColor(1, 2, 3));
    b.setBackColor(QColor(1, 2, 3));
    QImage pic(4, 4, QImage::Format_RGB32);
    pic.fill(Qt::white);
    b.setPicture(pic);
    b.setPicture(pic);  // pictures are always taken as new
    QStringList names;
    for (const auto &args : spy) names << args.at(0).toString();
    QCOMPARE(names, (QStringList{"Style", "HAlign", "Caption", "BackColor", "Picture", "Picture"}));
    QCOMPARE(b.backColorValue(), 0x00030201u);  // red in the low byte
    b.setTag(QStringLiteral("x"));
    QCOMPARE(b.tag().toString(), QStringLiteral("x"));

    // The stored form: all fourteen names, read back into a new control;
    // what a stored form lacks takes its default.
    b.setHovPicture(pic);
    b.setGrabBG(true);
    b.setForeColor(syscolor::WindowText);
    const QVariantMap stored = b.writeProperties();
    QCOMPARE(stored.size(), 14);
    HoverCommand copy;
    copy.readProperties(stored);
    QCOMPARE(copy.writeProperties(), stored);
    QCOMPARE(copy.caption(), QStringLiteral("&Go"));
    QCOMPARE(copy.foreColorValue(), 0x80000008u);
    QVERIFY(!copy.hovPicture().isNull());
    QVariantMap partial;
    partial.insert(QStringLiteral("Style"), 80);
    copy.readProperties(partial);
    QCOMPARE(copy.styleBits(), 80);
    QCOMPARE(copy.caption(), QStringLiteral("HoverCommand"));
    QCOMPARE(copy.borderOffset(), 10);
    QVERIFY(copy.picture().isNull() && copy.hovPicture().isNull());
    QCOMPARE(copy.grabBG(), false);
    QCOMPARE(copy.backColorValue(), 0x8000000Fu);
}

void TestHoverCommand::systemColoursResolveThroughThePalette() {
    QPalette pal;
    pal.setColor(QPalette::Button, QColor(10, 20, 30));
    pal.setColor(QPalette::Highlight, QColor(40, 50, 60));
    pal.setColor(QPalette::ToolTipBase, QColor(70, 80, 90));
    QCOMPARE(resolveOleColor(0x8000000F, pal), QColor(10, 20, 30));
    QCOMPARE(resolveOleColor(0x8000000D, pal), QColor(40, 50, 60));
    QCOMPARE(resolveOleColor(0x80000018, pal), QColor(70, 80, 90));
    QCOMPARE(resolveOleColor(0x000000FF, pal), QColor(255, 0, 0));
    QCOMPARE(resolveOleColor(0x00FF0000, pal), QColor(0, 0, 255));

    // Resolved at use: a palette change shows without setting the colour again.
    HoverCommand b;
    b.setPalette(pal);
    QCOMPARE(b.backColor(), QColor(10, 20, 30));
    pal.setColor(QPalette::Button, QColor(99, 99, 99));
    b.setPalette(pal);
    QCOMPARE(b.backColor(), QColor(99, 99, 99));
}

void TestHoverCommand::borderTablePerStyleAndState() {
    struct Row {
        int style;
        Edge up, hover, pressed;
    };
    const Row rows[] = {
        {0, Edge::Raised, Edge::Raised, Edge::Sunken},
        {2, Edge::ThinRaised, Edge::ThinRaised, Edge::ThinSunken},
        {1, Edge::None, Edge::Raised, Edge::Sunken},
        {3, Edge::None, Edge::ThinRaised, Edge::ThinSunken},
        {33, Edge::None, Edge::Raised, Edge::Sunken},
        {16, Edge::None, Edge::None, Edge::None},
        {80, Edge::None, Edge::None, Edge::None},
        {18, Edge::None, Edge::None, Edge::None},
        {4, Edge::Raised, Edge::Raised, Edge::Sunken},  // 4 means nothing
    };
    for (const Row &r : rows) {
        QCOMPARE(hover::borderFor(r.style, State::Up, false), r.up);
        QCOMPARE(hover::borderFor(r.style, State::Hover, false), r.hover);
        QCOMPARE(hover::borderFor(r.style, State::Pressed, false), r.pressed);
    }
    // Focus raises a flat control in state up, whatever the no-border bit says.
    QCOMPARE(hover::borderFor(33, State::Up, true), Edge::Raised);
    QCOMPARE(hover::borderFor(3, State::Up, true), Edge::ThinRaised);
    QCOMPARE(hover::borderFor(17, State::Up, true), Edge::Raised);
    QCOMPARE(hover::borderFor(33, State::Pressed, true), Edge::Sunken);
    // Not flat: focus changes nothing.
    QCOMPARE(hover::borderFor(80, State::Up, true), Edge::None);
    QCOMPARE(hover::borderFor(16, State::Hover, true), Edge::None);

    QCOMPARE(hover::pressOffset(33, State::Pressed), 2);
    QCOMPARE(hover::pressOffset(2, State::Pressed), 1);
    QCOMPARE(hover::pressOffset(3, State::Pressed), 1);
    QCOMPARE(hover::pressOffset(2, State::Hover), 0);
    QCOMPARE(hover::pressOffset(80, State::Up), 0);
}

void TestHoverCommand::backgroundPictureAndFocusDecisions() {
    using hover::Background;
    using hover::PictureChoice;
    QCOMPARE(hover::backgroundFor(80, State::Hover, true, true), Background::Highlight);
    QCOMPARE(hover::backgroundFor(80, State::Pressed, false, false), Background::BackColor);
    QCOMPARE(hover::backgroundFor(16, State::Hover, false, false), Background::BackColor);
    QCOMPARE(hover::backgroundFor(16, State::Up, false, true), Background::Grab);
    QCOMPARE(hover::backgroundFor(16, State::Up, true, true), Background::Tiled);
    QCOMPARE(hover::backgroundFor(64, State::Up, true, false), Background::Tiled);

    QCOMPARE(hover::pictureFor(State::Up, true, true), PictureChoice::Picture);
    QCOMPARE(hover::pictureFor(State::Hover, true, true), PictureChoice::HovPicture);
    QCOMPARE(hover::pictureFor(State::Pressed, true, true), PictureChoice::Picture);
    QCOMPARE(hover::pictureFor(State::Hover, true, false), PictureChoice::Picture);
    QCOMPARE(hover::pictureFor(State::Up, false, true), PictureChoice::None);
    QCOMPARE(hover::pictureFor(State::Hover, false, true), PictureChoice::HovPicture);
    QCOMPARE(hover::pictureFor(State::Hover, false, false), PictureChoice::None);

    QVERIFY(hover::focusRectFor(1, false, false, 50, 30).isEmpty());
    QCOMPARE(hover::focusRectFor(1, true, false, 50, 30), QRect(3, 3, 44, 24));
    QCOMPARE(hover::focusRectFor(80, true, true, 50, 30), QRect(3, 3, 44, 24));
    QCOMPARE(hover::focusRectFor(33, true, false, 50, 30), QRect(0, 0, 50, 30));
    QVERIFY(hover::focusRectFor(33, true, true, 50, 30).isEmpty());
}

void TestHoverCommand::placementArithmetic() {
    // The tab faces: 103x56 control, 95x51 picture, BorderOffset 4.
    QCOMPARE(hover::pictureOrigin(0, 103, 56, 95, 51, 0, 4, 0, 0), QPoint(4, 2));  // 2.5 -> 2
    QCOMPARE(hover::pictureOrigin(0, 103, 56, 95, 51, 0, 4, 0, 2), QPoint(6, 4));
    QCOMPARE(hover::pictureOrigin(0, 100, 57, 20, 20, 0, 4, 0, 0).y(), 18);  // 18.5 -> 18
    QCOMPARE(hover::pictureOrigin(0, 100, 59, 20, 20, 0, 4, 0, 0).y(), 20);  // 19.5 -> 20

    // Centred, empty caption: ImageOffset counts in the picture's width.
    QCOMPARE(hover::pictureOrigin(1, 100, 40, 20, 20, 0, 7, 10, 0), QPoint(35, 10));
    // Centred with a caption: picture and text as one block.
    for (int w : {100, 120, 150}) {
        for (int t : {0, 30, 44}) {
            const QPoint pic = hover::pictureOrigin(1, w, 40, 20, 20, t, 7, 10, 0);
            const QPoint cap = hover::captionOrigin(1, w, 40, t, 16, 20, 7, 10, 0);
            QCOMPARE(pic.x(), (w - 30 - t) / 2);
            QCOMPARE(cap.x() - pic.x(), 30);                 // picture, gap, text
            QCOMPARE(w - (cap.x() + t), pic.x());            // same margin both sides
        }
    }
    // Right aligned: text ends BorderOffset before the edge, picture before it.
    QCOMPARE(hover::pictureOrigin(2, 100, 40, 20, 20, 30, 5, 10, 0).x(), 35);
    QCOMPARE(hover::captionOrigin(2, 100, 40, 30, 16, 20, 5, 10, 0).x(), 65);
    // Left: the caption follows the picture and the gap; without one it
    // starts at BorderOffset.
    QCOMPARE(hover::captionOrigin(0, 100, 40, 30, 16, 20, 5, 10, 0), QPoint(35, 12));
    QCOMPARE(hover::captionOrigin(0, 100, 40, 30, 16, -1, 5, 10, 0), QPoint(5, 12));
    QCOMPARE(hover::captionOrigin(1, 101, 40, 30, 16, -1, 5, 10, 0).x(), 36);  // 35.5 -> 36
    QCOMPARE(hover::captionOrigin(1, 99, 40, 30, 16, -1, 5, 10, 0).x(), 34);   // 34.5 -> 34
    // Unknown alignment puts both at the left edge; the press still counts.
    QCOMPARE(hover::pictureOrigin(7, 100, 40, 20, 20, 0, 5, 10, 1).x(), 1);
    QCOMPARE(hover::captionOrigin(-1, 100, 40, 30, 16, 20, 5, 10, 2), QPoint(2, 14));
}

void TestHoverCommand::mouseStateMachine() {
    HoverCommand b;
    b.resize(40, 20);
    QStringList log;
    connect(&b, &HoverCommand::MouseMove, &b, [&](int bt, int, float, float) { log << QStringLiteral("move%1").arg(bt); });
    connect(&b, &HoverCommand::MouseLeave, &b, [&] { log << QStringLiteral("leave"); });
    connect(&b, &HoverCommand::MouseDown, &b, [&](int bt, int, float, float) { log << QStringLiteral("down%1").arg(bt); });
    connect(&b, &HoverCommand::MouseUp, &b, [&](int bt, int, float, float) { log << QStringLiteral("up%1").arg(bt); });
    connect(&b, &QAbstractButton::clicked, &b, [&] { log << QStringLiteral("click"); });

    sendMove(&b, {10, 10});
    QCOMPARE(b.state(), State::Hover);
    // Zero counts as outside, on either axis, as does the far edge.
    sendMove(&b, {0, 10});
    QCOMPARE(b.state(), State::Up);
    sendMove(&b, {10, 10});
    sendMove(&b, {10, 0});
    QCOMPARE(b.state(), State::Up);
    sendMove(&b, {10, 10});
    sendMove(&b, {40, 10});
    QCOMPARE(b.state(), State::Up);
    QCOMPARE(log, (QStringList{"move0", "leave", "move0", "leave", "move0", "leave"}));
    log.clear();

    // Right button: MouseDown without a state change; its release gives hover
    // and no click.
    sendMove(&b, {5, 5});
    sendPress(&b, {5, 5}, Qt::RightButton);
    QCOMPARE(b.state(), State::Hover);
    sendRelease(&b, {5, 5}, Qt::RightButton);
    QCOMPARE(b.state(), State::Hover);
    QCOMPARE(log, (QStringList{"move0", "down2", "up2"}));
    log.clear();

    // A right press from up also leaves the state alone.
    sendMove(&b, {0, 0});
    log.clear();
    sendPress(&b, {6, 6}, Qt::RightButton);
    QCOMPARE(b.state(), State::Up);
    sendRelease(&b, {6, 6}, Qt::RightButton);
    QCOMPARE(b.state(), State::Hover);
    log.clear();

    // Left click: pressed, then MouseUp, then the click, ending in up
    // although the mouse is still over the control.
    sendPress(&b, {6, 6}, Qt::LeftButton);
    QCOMPARE(b.state(), State::Pressed);
    sendMove(&b, {7, 7}, Qt::LeftButton);  // moving with the left button held keeps pressed
    QCOMPARE(b.state(), State::Pressed);
    sendRelease(&b, {7, 7}, Qt::LeftButton);
    QCOMPARE(b.state(), State::Up);
    QCOMPARE(log, (QStringList{"down1", "move1", "up1", "click"}));
    // The next move makes it hover again.
    sendMove(&b, {8, 8});
    QCOMPARE(b.state(), State::Hover);
}

void TestHoverCommand::dragOffLeavesOnce() {
    HoverCommand b;
    b.resize(40, 20);
    QSignalSpy leave(&b, &HoverCommand::MouseLeave);
    QSignalSpy up(&b, &HoverCommand::MouseUp);
    QSignalSpy click(&b, &QAbstractButton::clicked);
    sendMove(&b, {10, 10});
    sendPress(&b, {10, 10}, Qt::LeftButton);
    QCOMPARE(b.state(), State::Pressed);
    sendMove(&b, {-3, 10}, Qt::LeftButton);
    QCOMPARE(b.state(), State::Up);
    QCOMPARE(leave.count(), 1);
    // Let go of: further moves and the release outside aren't this control's.
    sendMove(&b, {-20, 10}, Qt::LeftButton);
    sendRelease(&b, {-20, 10}, Qt::LeftButton);
    QCOMPARE(leave.count(), 1);
    QCOMPARE(up.count(), 0);
    QCOMPARE(click.count(), 0);
    QCOMPARE(b.state(), State::Up);

    // Dragging back in and releasing over the control still counts as a click.
    sendPress(&b, {10, 10}, Qt::LeftButton);
    sendMove(&b, {50, 10}, Qt::LeftButton);
    sendMove(&b, {10, 10}, Qt::LeftButton);
    QCOMPARE(b.state(), State::Up);  // left held: no hover
    sendRelease(&b, {10, 10}, Qt::LeftButton);
    QCOMPARE(up.count(), 1);
    QCOMPARE(click.count(), 1);

    // Leaving without a button held (no further move arrives) also ends hover.
    sendMove(&b, {10, 10});
    QCOMPARE(b.state(), State::Hover);
    QEvent leaveEvent(QEvent::Leave);
    QCoreApplication::sendEvent(&b, &leaveEvent);
    QCOMPARE(b.state(), State::Up);
    QCOMPARE(leave.count(), 3);
}

void TestHoverCommand::keyboardPressAndRelease() {
    HoverCommand b;
    b.resize(40, 20);
    QSignalSpy click(&b, &QAbstractButton::clicked);
    for (int key : {int(Qt::Key_Space), int(Qt::Key_Return), int(Qt::Key_Enter)}) {
        const int before = click.count();
        sendKey(&b, QEvent::KeyPress, key);
        QCOMPARE(b.state(), State::Pressed);
        // Held down: the platform repeats press and release; still pressed.
        for (int i = 0; i < 3; ++i) {
            sendKey(&b, QEvent::KeyRelease, key, true);
            sendKey(&b, QEvent::KeyPress, key, true);
        }
        QCOMPARE(b.state(), State::Pressed);
        QCOMPARE(click.count(), before);
        sendKey(&b, QEvent::KeyRelease, key);
        QCOMPARE(b.state(), State::Up);
        QCOMPARE(click.count(), before + 1);
    }
    // A key release without a press does nothing; other keys don't press.
    sendKey(&b, QEvent::KeyRelease, Qt::Key_Space);
    sendKey(&b, QEvent::KeyPress, Qt::Key_A);
    QCOMPARE(b.state(), State::Up);
    QCOMPARE(click.count(), 3);
    // Disabled: keys do nothing.
    b.setEnabled(false);
    sendKey(&b, QEvent::KeyPress, Qt::Key_Space);
    sendKey(&b, QEvent::KeyRelease, Qt::Key_Space);
    QCOMPARE(b.state(), State::Up);
    QCOMPARE(click.count(), 3);
}

void TestHoverCommand::keyColourIsTheTopLeftPixel() {
    // White ground on a red control: the white shows the back colour.
    auto b = plainButton(16);
    b->setPicture(squarePicture(Qt::white, Qt::blue));
    QImage img = b->grab().toImage();
    QCOMPARE(px(img, 5, 5), QColor(Qt::red));    // picture corner, transparent
    QCOMPARE(px(img, 14, 14), QColor(Qt::red));  // other corner
    QCOMPARE(px(img, 9, 9), QColor(Qt::blue));   // the ink
    QCOMPARE(px(img, 30, 10), QColor(Qt::red));

    // The key is whatever the corner holds: blue corner, so the blue goes and
    // the white stays.
    b->setPicture(squarePicture(Qt::blue, Qt::white));
    img = b->grab().toImage();
    QCOMPARE(px(img, 5, 5), QColor(Qt::red));
    QCOMPARE(px(img, 9, 9), QColor(Qt::white));

    // A white control with a white-ground picture: the tabs of the main window.
    b->setBackColor(Qt::white);
    b->setPicture(squarePicture(Qt::white, QColor(0, 0, 102)));
    img = b->grab().toImage();
    QCOMPARE(px(img, 5, 5), QColor(Qt::white));
    QCOMPARE(px(img, 9, 9), QColor(0, 0, 102));

    // The keyed picture itself.
    const QImage keyed = hover::keyedPicture(squarePicture(Qt::green, Qt::black));
    QCOMPARE(qAlpha(keyed.pixel(0, 0)), 0);
    QCOMPARE(qAlpha(keyed.pixel(9, 9)), 0);
    QCOMPARE(keyed.pixelColor(4, 4), QColor(Qt::black));
}

void TestHoverCommand::hoverPictureOnlyUnderTheMouse() {
    auto b = plainButton(16);
    b->setHovPicture(squarePicture(Qt::white, Qt::blue));
    QCOMPARE(px(b->grab().toImage(), 9, 9), QColor(Qt::red));  // idle: nothing drawn
    sendMove(b.get(), {20, 10});
    QCOMPARE(b->state(), State::Hover);
    QCOMPARE(px(b->grab().toImage(), 9, 9), QColor(Qt::blue));
    // With both pictures, each shows in its state.
    b->setPicture(squarePicture(Qt::white, Qt::black));
    QCOMPARE(px(b->grab().toImage(), 9, 9), QColor(Qt::blue));
    sendMove(b.get(), {0, 10});
    QCOMPARE(px(b->grab().toImage(), 9, 9), QColor(Qt::black));
}

void TestHoverCommand::pressMovesTheContent() {
    // Style 33: the picture moves 2 pixels right and down while pressed.
    auto b = plainButton(33);
    b->setPicture(squarePicture(Qt::white, Qt::blue));
    // The ink square spans 8..11 when idle.
    QImage img = b->grab().toImage();
    QCOMPARE(px(img, 8, 8), QColor(Qt::blue));
    QCOMPARE(px(img, 12, 12), QColor(Qt::red));
    sendPress(b.get(), {20, 10}, Qt::LeftButton);
    img = b->grab().toImage();
    QCOMPARE(px(img, 9, 9), QColor(Qt::red));
    QCOMPARE(px(img, 10, 10), QColor(Qt::blue));
    QCOMPARE(px(img, 13, 13), QColor(Qt::blue));
    QCOMPARE(px(img, 14, 14), QColor(Qt::red));
    // A sunken border shows while pressed.
    QVERIFY(px(img, 0, 0) != QColor(Qt::red));

    // Thin: one pixel.
    auto t = plainButton(2);
    t->setPicture(squarePicture(Qt::white, Qt::blue));
    sendPress(t.get(), {20, 10}, Qt::LeftButton);
    img = t->grab().toImage();
    QCOMPARE(px(img, 8, 8), QColor(Qt::red));
    QCOMPARE(px(img, 9, 9), QColor(Qt::blue));
    QCOMPARE(px(img, 12, 12), QColor(Qt::blue));
    QCOMPARE(px(img, 13, 13), QColor(Qt::red));
}

void TestHoverCommand::style80HoverFillAndFocusInset() {
    auto b = plainButton(80);
    b->setPicture(squarePicture(Qt::white, Qt::black));
    QImage img = b->grab().toImage();
    QCOMPARE(px(img, 0, 0), QColor(Qt::red));
    QCOMPARE(px(img, 39, 19), QColor(Qt::red));
    sendMove(b.get(), {20, 10});
    img = b->grab().toImage();
    // Highlight behind the picture, even in its transparent part; no border.
    QCOMPARE(px(img, 0, 0), QColor(Qt::green));
    QCOMPARE(px(img, 39, 19), QColor(Qt::green));
    QCOMPARE(px(img, 5, 5), QColor(Qt::green));
    QCOMPARE(px(img, 9, 9), QColor(Qt::black));
    sendPress(b.get(), {20, 10}, Qt::LeftButton);
    img = b->grab().toImage();
    QCOMPARE(px(img, 0, 0), QColor(Qt::red));
    QCOMPARE(px(img, 39, 19), QColor(Qt::red));
    QCOMPARE(px(img, 11, 11), QColor(Qt::black));

    // Focus: the dotted rectangle inset by 3, none at the edge.
    sendRelease(b.get(), {20, 10}, Qt::LeftButton);
    sendFocus(b.get(), true);
    QVERIFY(b->hasFocusMark());
    img = b->grab().toImage();
    QCOMPARE(px(img, 3, 3), QColor(Qt::black));
    QCOMPARE(px(img, 3, 4), QColor(Qt::red));  // dotted
    QCOMPARE(px(img, 3, 5), QColor(Qt::black));
    QCOMPARE(px(img, 2, 2), QColor(Qt::red));
    QCOMPARE(px(img, 0, 0), QColor(Qt::red));
    sendFocus(b.get(), false);
    QCOMPARE(px(b->grab().toImage(), 3, 3), QColor(Qt::red));
}

void TestHoverCommand::focusMarksPerStyle() {
    // Style 33 with a HovPicture: a raised border in state up, no rectangle.
    auto tab = plainButton(33);
    tab->setHovPicture(squarePicture(Qt::white, Qt::blue));
    QImage img = tab->grab().toImage();
    QCOMPARE(px(img, 0, 0), QColor(Qt::red));
    QCOMPARE(px(img, 39, 19), QColor(Qt::red));
    sendFocus(tab.get(), true);
    img = tab->grab().toImage();
    QVERIFY(px(img, 0, 0) != QColor(Qt::red));
    QVERIFY(px(img, 39, 19) != QColor(Qt::red));
    // Raised: light at the top left, dark at the bottom right.
    QVERIFY(px(img, 1, 1).lightness() > px(img, 38, 18).lightness());
    for (int x = 2; x < 38; ++x) QCOMPARE(px(img, x, 3), QColor(Qt::red));

    // Style 1 without a HovPicture: raised border and a rectangle inset by 3.
    auto flat = plainButton(1);
    sendFocus(flat.get(), true);
    img = flat->grab().toImage();
    QVERIFY(px(img, 0, 0) != QColor(Qt::red));
    QCOMPARE(px(img, 3, 3), QColor(Qt::black));
    QCOMPARE(px(img, 36, 16), QColor(Qt::black));

    // Style 32 alone: the rectangle runs along the edge, over the border.
    auto edge = plainButton(32);
    sendFocus(edge.get(), true);
    img = edge->grab().toImage();
    QCOMPARE(px(img, 0, 0), QColor(Qt::black));
    QCOMPARE(px(img, 2, 0), QColor(Qt::black));
    QVERIFY(px(img, 3, 3) != QColor(Qt::black));

    // Sunken border while pressed: dark at the top left.
    auto plain = plainButton(0);
    sendPress(plain.get(), {20, 10}, Qt::LeftButton);
    img = plain->grab().toImage();
    QVERIFY(px(img, 1, 1).lightness() < px(img, 38, 18).lightness());
}

void TestHoverCommand::disabledPictureIsGreyed() {
    auto b = plainButton(16);
    b->setPicture(squarePicture(Qt::white, Qt::blue));
    b->setEnabled(false);
    const QImage img = b->grab().toImage();
    const QColor ink = px(img, 9, 9);
    QVERIFY(ink != QColor(Qt::blue));
    QCOMPARE(ink.red(), ink.green());  // grey
    QCOMPARE(ink.green(), ink.blue());
    QCOMPARE(px(img, 5, 5), QColor(Qt::red));  // the ground stays transparent
    // The embossed light edge one pixel below and right of the shape.
    QCOMPARE(px(img, 12, 12), b->palette().color(QPalette::Active, QPalette::Light));
    b->setEnabled(true);
    QCOMPARE(px(b->grab().toImage(), 9, 9), QColor(Qt::blue));
}

void TestHoverCommand::hoverTextColour() {
    auto countColour = [](const QImage &img, QColor c) {
        int n = 0;
        for (int y = 0; y < img.height(); ++y)
            for (int x = 0; x < img.width(); ++x) n += img.pixelColor(x, y) == c;
        return n;
    };
    HoverCommand b;
    b.resize(120, 40);
    QFont f(QStringLiteral("DejaVu Sans"));
    f.setPixelSize(24);
    f.setBold(true);
    b.setFont(f);
    b.setCaption(QStringLiteral("HIH"));
    b.setStyleBits(16 | 8);
    b.setBackColor(Qt::white);
    b.setForeColor(Qt::black);
    b.setHighlightColor(QColor(0, 0, 255));
    QImage img = b.grab().toImage();
    QVERIFY(countColour(img, Qt::black) > 20);
    QCOMPARE(countColour(img, Qt::blue), 0);
    sendMove(&b, {60, 20});
    img = b.grab().toImage();
    QVERIFY(countColour(img, Qt::blue) > 20);
    QCOMPARE(countColour(img, Qt::black), 0);
}

void TestHoverCommand::backgroundFromParentOrTiles() {
    // GrabBG: what the parent paints behind the control shows through.
    QWidget parent;
    parent.resize(100, 60);
    QPalette pal = parent.palette();
    pal.setColor(QPalette::Window, QColor(10, 200, 30));
    parent.setPalette(pal);
    parent.setAutoFillBackground(true);
    auto *b = new HoverCommand(&parent);
    b->setGeometry(20, 10, 40, 20);
    b->setCaption(QString());
    b->setStyleBits(16);
    b->setBackColor(QColor(255, 0, 0));
    QCOMPARE(px(b->grab().toImage(), 10, 10), QColor(Qt::red));
    b->setGrabBG(true);
    QCOMPARE(px(b->grab().toImage(), 10, 10), QColor(10, 200, 30));

    // A BGPicture wins over GrabBG and is tiled from the top left corner;
    // while pressed the tiles move with the content.
    QImage tile(4, 4, QImage::Format_RGB32);
    tile.fill(Qt::white);
    tile.setPixelColor(0, 0, Qt::black);
    b->setBGPicture(tile);
    QImage img = b->grab().toImage();
    QCOMPARE(px(img, 0, 0), QColor(Qt::black));
    QCOMPARE(px(img, 8, 4), QColor(Qt::black));
    QCOMPARE(px(img, 9, 4), QColor(Qt::white));
    sendPress(b, {10, 10}, Qt::LeftButton);
    img = b->grab().toImage();
    QCOMPARE(px(img, 10, 6), QColor(Qt::black));
    QCOMPARE(px(img, 8, 4), QColor(Qt::white));
}

void TestHoverCommand::tabImagesAreCompiledIn() {
    HoverCommand b;  // registers the resources
    for (int i = 0; i < 7; ++i) {
        const QImage face(assets::tabFace(i));
        const QImage hov(assets::tabFaceHover(i));
        QCOMPARE(face.size(), QSize(95, 51));
        QCOMPARE(hov.size(), QSize(95, 51));
        QCOMPARE(face.pixelColor(0, 0), QColor(Qt::white));
        QCOMPARE(hov.pixelColor(0, 0), QColor(Qt::white));
        // Drawn in the tab colours: dark blue, and green for the hover face.
        int blue = 0, green = 0;
        for (int y = 0; y < 51; ++y)
            for (int x = 0; x < 95; ++x) {
                blue += face.pixelColor(x, y) == QColor(0, 0, 102);
                green += hov.pixelColor(x, y) == QColor(50, 185, 70);
                QVERIFY(face.pixelColor(x, y) != QColor(50, 185, 70));
            }
        QVERIFY2(blue > 150 && green > 150, qPrintable(assets::tabFace(i)));
    }
    QCOMPARE(QImage(QString::fromLatin1(assets::CheckMark)).pixelColor(0, 0), QColor(0, 192, 0));
    QCOMPARE(QImage(QString::fromLatin1(assets::Cross)).pixelColor(0, 0), QColor(255, 0, 0));
    QCOMPARE(QImage(QString::fromLatin1(assets::Help)).size(), QSize(48, 48));
    QCOMPARE(QImage(QString::fromLatin1(assets::HelpHover)).size(), QSize(48, 48));
    QCOMPARE(QImage(QString::fromLatin1(assets::Printer)).size(), QSize(18, 18));
    QCOMPARE(QImage(QString::fromLatin1(assets::Search)).size(), QSize(19, 18));
    QCOMPARE(QImage(QString::fromLatin1(assets::Logo)).size(), QSize(32, 16));
}

QTEST_MAIN(TestHoverCommand)
#include "tst_hovercommand.moc"
