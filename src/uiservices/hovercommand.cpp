// SPDX-License-Identifier: GPL-3.0-or-later
#include "uiservices/hovercommand.h"

#include "uiservices/assetpaths.h"
#include "uiservices/caption.h"

#include <QFocusEvent>
#include <QFontMetrics>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPixmap>
#include <cmath>

namespace qor {

namespace hover {

int pressOffset(int style, State state)
{
    if (state != State::Pressed) return 0;
    return (style & Thin) ? 1 : 2;
}

Edge tableBorderFor(int style, State state)
{
    if (style & NoBorder) return Edge::None;
    const bool flat = style & Flat;
    const bool thin = style & Thin;
    if (flat && state == State::Up) return Edge::None;
    if (state == State::Pressed) return thin ? Edge::ThinSunken : Edge::Sunken;
    return thin ? Edge::ThinRaised : Edge::Raised;
}

Edge borderFor(int style, State state, bool hasFocus)
{
    // A flat control with the focus stands out in state up; this ignores the
    // no-border bit on purpose, so the focus is always visible.
    if (hasFocus && (style & Flat) && state == State::Up)
        return (style & Thin) ? Edge::ThinRaised : Edge::Raised;
    return tableBorderFor(style, state);
}

Background backgroundFor(int style, State state, bool hasBGPicture, bool grabBG)
{
    if (state == State::Hover && (style & HoverFill)) return Background::Highlight;
    if (!hasBGPicture && grabBG) return Background::Grab;
    if (!hasBGPicture) return Background::BackColor;
    return Background::Tiled;
}

PictureChoice pictureFor(State state, bool hasPicture, bool hasHovPicture)
{
    if (state == State::Hover && hasHovPicture) return PictureChoice::HovPicture;
    return hasPicture ? PictureChoice::Picture : PictureChoice::None;
}

QRect focusRectFor(int style, bool hasFocus, bool hasHovPicture, int width, int height)
{
    if (!hasFocus) return {};
    if (hasHovPicture && (style & EdgeFocus)) return {};
    const QRect whole(0, 0, width, height);
    if (style & EdgeFocus) return whole;
    return whole.adjusted(3, 3, -3, -3);
}

int roundHalfEven(double v) { return int(std::nearbyint(v)); }

QPoint pictureOrigin(int hAlign, int width, int height, int pw, int ph, int textWidth,
                     int borderOffset, int imageOffset, int pressOffset)
{
    const int y = roundHalfEven((height - ph) / 2.0);
    int x = 0;
    switch (hAlign) {
    case 0: x = borderOffset; break;
    case 1: x = roundHalfEven((width - (imageOffset + pw + textWidth)) / 2.0); break;
    case 2: x = width - textWidth - borderOffset - imageOffset - pw; break;
    default: x = 0; break;
    }
    return {x + pressOffset, y + pressOffset};
}

QPoint captionOrigin(int hAlign, int width, int height, int textWidth, int textHeight, int pw,
                     int borderOffset, int imageOffset, int pressOffset)
{
    const bool hasPicture = pw >= 0;
    const int y = roundHalfEven((height - textHeight) / 2.0);
    int x = 0;
    switch (hAlign) {
    case 0: x = hasPicture ? borderOffset + imageOffset + pw : borderOffset; break;
    case 1:
        x = hasPicture ? roundHalfEven((width + imageOffset + pw - textWidth) / 2.0)
                       : roundHalfEven((width - textWidth) / 2.0);
        break;
    case 2: x = width - textWidth - borderOffset; break;
    default: x = 0; break;
    }
    return {x + pressOffset, y + pressOffset};
}

QImage keyedPicture(const QImage &picture)
{
    if (picture.isNull()) return {};
    QImage img = picture.convertToFormat(QImage::Format_ARGB32);
    const QRgb key = img.pixel(0, 0);
    for (int y = 0; y < img.height(); ++y) {
        auto *line = reinterpret_cast<QRgb *>(img.scanLine(y));
        for (int x = 0; x < img.width(); ++x)
            if (line[x] == key) line[x] = 0;
    }
    return img;
}

QImage disabledPicture(const QImage &keyed, const QColor &light, const QColor &shadow)
{
    if (keyed.isNull()) return {};
    QImage out(keyed.width() + 1, keyed.height() + 1, QImage::Format_ARGB32);
    out.fill(Qt::transparent);
    // Highlight one pixel down and right first, then the shape in shadow:
    // the usual engraved look of a disabled picture.
    for (int pass = 0; pass < 2; ++pass) {
        const int d = pass == 0 ? 1 : 0;
        const QRgb c = (pass == 0 ? light : shadow).rgb();
        for (int y = 0; y < keyed.height(); ++y)
            for (int x = 0; x < keyed.width(); ++x)
                if (qAlpha(keyed.pixel(x, y)) != 0) out.setPixel(x + d, y + d, c);
    }
    return out;
}

}  // namespace hover

using hover::State;

namespace {

int buttonValue(Qt::MouseButtons b)
{
    int v = 0;
    if (b & Qt::LeftButton) v |= 1;
    if (b & Qt::RightButton) v |= 2;
    if (b & Qt::MiddleButton) v |= 4;
    return v;
}

int shiftValue(Qt::KeyboardModifiers m)
{
    int v = 0;
    if (m & Qt::ShiftModifier) v |= 1;
    if (m & Qt::ControlModifier) v |= 2;
    if (m & Qt::AltModifier) v |= 4;
    return v;
}

void drawEdge(QPainter &p, const QRect &r, hover::Edge edge, const QPalette &pal)
{
    using hover::Edge;
    if (edge == Edge::None || r.width() < 2 || r.height() < 2) return;
    const QColor hilite = pal.color(QPalette::Active, QPalette::Light);
    const QColor light = pal.color(QPalette::Active, QPalette::Midlight);
    const QColor shadow = pal.color(QPalette::Active, QPalette::Dark);
    const QColor dark = pal.color(QPalette::Active, QPalette::Shadow);
    auto frame = [&p](const QRect &f, const QColor &topLeft, const QColor &bottomRight) {
        p.setPen(topLeft);
        p.drawLine(f.left(), f.top(), f.right() - 1, f.top());
        p.drawLine(f.left(), f.top(), f.left(), f.bottom() - 1);
        p.setPen(bottomRight);
        p.drawLine(f.left(), f.bottom(), f.right(), f.bottom());
        p.drawLine(f.right(), f.top(), f.right(), f.bottom());
    };
    const QRect inner = r.adjusted(1, 1, -1, -1);
    switch (edge) {
    case Edge::Raised:
        frame(r, light, dark);
        frame(inner, hilite, shadow);
        break;
    case Edge::Sunken:
        frame(r, shadow, hilite);
        frame(inner, dark, light);
        break;
    case Edge::ThinRaised: frame(r, hilite, shadow); break;
    case Edge::ThinSunken: frame(r, shadow, hilite); break;
    case Edge::None: break;
    }
}

// A dotted rectangle of every other pixel, in black.
void drawFocusRect(QPainter &p, const QRect &r)
{
    if (r.width() <= 0 || r.height() <= 0) return;
    p.setPen(Qt::black);
    for (int x = r.left(); x <= r.right(); ++x) {
        if ((x + r.top()) % 2 == 0) p.drawPoint(x, r.top());
        if ((x + r.bottom()) % 2 == 0) p.drawPoint(x, r.bottom());
    }
    for (int y = r.top(); y <= r.bottom(); ++y) {
        if ((r.left() + y) % 2 == 0) p.drawPoint(r.left(), y);
        if ((r.right() + y) % 2 == 0) p.drawPoint(r.right(), y);
    }
}

}  // namespace

HoverCommand::HoverCommand(QWidget *parent) : QAbstractButton(parent)
{
    assets::ensureLoaded();
    setText(QStringLiteral("HoverCommand"));
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setAttribute(Qt::WA_OpaquePaintEvent);
}

HoverCommand::~HoverCommand() = default;

void HoverCommand::changed(const char *name)
{
    emit propertyChanged(QString::fromLatin1(name));
    update();
}

void HoverCommand::setGrabBG(bool on)
{
    if (on == m_grabBG) return;
    m_grabBG = on;
    changed("GrabBG");
}

void HoverCommand::setHAlign(int align)
{
    if (align == m_hAlign) return;
    m_hAlign = align;
    changed("HAlign");
}

void HoverCommand::setImageOffset(int px)
{
    if (px == m_imageOffset) return;
    m_imageOffset = px;
    changed("ImageOffset");
}

void HoverCommand::setBorderOffset(int px)
{
    if (px == m_borderOffset) return;
    m_borderOffset = px;
    changed("BorderOffset");
}

void HoverCommand::setStyleBits(int style)
{
    if (style == m_style) return;
    m_style = style;
    changed("Style");
}

void HoverCommand::setPicture(const QImage &image)
{
    m_picture = image;
    changed("Picture");
}

void HoverCommand::setHovPicture(const QImage &image)
{
    m_hovPicture = image;
    changed("HovPicture");
}

void HoverCommand::setBGPicture(const QImage &image)
{
    m_bgPicture = image;
    changed("BGPicture");
}

void HoverCommand::setCaption(const QString &caption)
{
    if (caption == text()) return;
    setText(caption);
    changed("Caption");
}

void HoverCommand::setForeColor(OleColor c)
{
    if (c == m_foreColor) return;
    m_foreColor = c;
    changed("ForeColor");
}

void HoverCommand::setBackColor(OleColor c)
{
    if (c == m_backColor) return;
    m_backColor = c;
    changed("BackColor");
}

void HoverCommand::setHighlightColor(OleColor c)
{
    if (c == m_highlightColor) return;
    m_highlightColor = c;
    changed("HighlightColor");
}

QColor HoverCommand::foreColor() const { return resolveOleColor(m_foreColor, palette()); }
QColor HoverCommand::backColor() const { return resolveOleColor(m_backColor, palette()); }
QColor HoverCommand::highlightColor() const { return resolveOleColor(m_highlightColor, palette()); }

void HoverCommand::refresh() { repaint(); }

QVariantMap HoverCommand::writeProperties() const
{
    QVariantMap m;
    m.insert(QStringLiteral("Caption"), caption());
    m.insert(QStringLiteral("Style"), m_style);
    m.insert(QStringLiteral("Picture"), m_picture);
    m.insert(QStringLiteral("HovPicture"), m_hovPicture);
    m.insert(QStringLiteral("BGPicture"), m_bgPicture);
    m.insert(QStringLiteral("Font"), font());
    m.insert(QStringLiteral("ImageOffset"), m_imageOffset);
    m.insert(QStringLiteral("BorderOffset"), m_borderOffset);
    m.insert(QStringLiteral("HAlign"), m_hAlign);
    m.insert(QStringLiteral("GrabBG"), m_grabBG);
    m.insert(QStringLiteral("Enabled"), isEnabled());
    m.insert(QStringLiteral("ForeColor"), m_foreColor);
    m.insert(QStringLiteral("BackColor"), m_backColor);
    m.insert(QStringLiteral("HighlightColor"), m_highlightColor);
    return m;
}

void HoverCommand::readProperties(const QVariantMap &stored)
{
    auto get = [&stored](const char *name, const QVariant &def) {
        return stored.value(QString::fromLatin1(name), def);
    };
    setCaption(get("Caption", QStringLiteral("HoverCommand")).toString());
    setStyleBits(get("Style", hover::Thin).toInt());
    setHovPicture(get("HovPicture", QImage()).value<QImage>());
    setPicture(get("Picture", QImage()).value<QImage>());
    setBGPicture(get("BGPicture", QImage()).value<QImage>());
    if (stored.contains(QStringLiteral("Font")))
        setFont(stored.value(QStringLiteral("Font")).value<QFont>());
    else
        setFont(QFont());  // the surface's font
    setImageOffset(get("ImageOffset", 10).toInt());
    setBorderOffset(get("BorderOffset", 10).toInt());
    setHAlign(get("HAlign", 0).toInt());
    setGrabBG(get("GrabBG", false).toBool());
    setEnabled(get("Enabled", true).toBool());
    setForeColor(OleColor(get("ForeColor", syscolor::MenuText).toUInt()));
    setBackColor(OleColor(get("BackColor", syscolor::ButtonFace).toUInt()));
    setHighlightColor(OleColor(get("HighlightColor", syscolor::Highlight).toUInt()));
}

int HoverCommand::textWidth() const
{
    const QString shown = captionAsShown(text());
    return shown.isEmpty() ? 0 : QFontMetrics(font()).horizontalAdvance(shown);
}

int HoverCommand::textHeight() const { return QFontMetrics(font()).height(); }

QSize HoverCommand::sizeHint() const
{
    int w = 2 * m_borderOffset + textWidth();
    int h = textHeight();
    if (!m_picture.isNull()) {
        w += m_imageOffset + m_picture.width();
        h = qMax(h, m_picture.height());
    }
    return {w + 4, h + 8};
}

QPixmap HoverCommand::renderFace() const
{
    const int w = qMax(1, width());
    const int h = qMax(1, height());
    const qreal dpr = devicePixelRatioF();
    QPixmap buffer(QSize(qCeil(w * dpr), qCeil(h * dpr)));
    buffer.setDevicePixelRatio(dpr);
    QPainter p(&buffer);
    const QRect whole(0, 0, w, h);
    const int press = hover::pressOffset(m_style, m_state);

    switch (hover::backgroundFor(m_style, m_state, !m_bgPicture.isNull(), m_grabBG)) {
    case hover::Background::Highlight: p.fillRect(whole, highlightColor()); break;
    case hover::Background::BackColor: p.fillRect(whole, backColor()); break;
    case hover::Background::Grab:
        // What the parent paints behind the control; the back colour stands
        // wherever the parent paints nothing.
        p.fillRect(whole, backColor());
        if (QWidget *parent = parentWidget()) {
            p.translate(press, press);
            parent->render(&p, QPoint(), QRegion(geometry()), QWidget::DrawWindowBackground);
            p.resetTransform();
        }
        break;
    case hover::Background::Tiled: {
        p.setBrushOrigin(press, press);
        p.fillRect(whole, QBrush(QPixmap::fromImage(m_bgPicture)));
        p.setBrushOrigin(0, 0);
        break;
    }
    }

    const auto choice = hover::pictureFor(m_state, !m_picture.isNull(), !m_hovPicture.isNull());
    const QImage *pic = choice == hover::PictureChoice::HovPicture ? &m_hovPicture
                        : choice == hover::PictureChoice::Picture  ? &m_picture
                                                                   : nullptr;
    const int tw = textWidth();
    if (pic) {
        const QPoint at = hover::pictureOrigin(m_hAlign, w, h, pic->width(), pic->height(), tw,
                                               m_borderOffset, m_imageOffset, press);
        const QImage keyed = hover::keyedPicture(*pic);
        if (isEnabled())
            p.drawImage(at, keyed);
        else
            p.drawImage(at, hover::disabledPicture(keyed, palette().color(QPalette::Active, QPalette::Light),
                                                   palette().color(QPalette::Active, QPalette::Dark)));
    }

    if (!text().isEmpty()) {
        const int th = textHeight();
        const QPoint at = hover::captionOrigin(m_hAlign, w, h, tw, th, pic ? pic->width() : -1,
                                               m_borderOffset, m_imageOffset, press);
        p.setFont(font());
        const QRect box(at, QSize(tw + 2, th));
        const int flags = Qt::AlignLeft | Qt::AlignTop | Qt::TextShowMnemonic |
                          Qt::TextSingleLine | Qt::TextDontClip;
        if (isEnabled()) {
            const bool hot = (m_style & hover::HoverText) && m_state == State::Hover;
            p.setPen(hot ? highlightColor() : foreColor());
            p.drawText(box, flags, text());
        } else {
            p.setPen(palette().color(QPalette::Active, QPalette::Light));
            p.drawText(box.translated(1, 1), flags, text());
            p.setPen(palette().color(QPalette::Active, QPalette::Dark));
            p.drawText(box, flags, text());
        }
    }

    drawEdge(p, whole, hover::borderFor(m_style, m_state, m_hasFocus), palette());
    const QRect focus = hover::focusRectFor(m_style, m_hasFocus, !m_hovPicture.isNull(), w, h);
    if (!focus.isEmpty()) drawFocusRect(p, focus);
    p.end();
    return buffer;
}

void HoverCommand::paintEvent(QPaintEvent *)
{
    QPainter p(this);
    p.drawPixmap(0, 0, renderFace());
}

void HoverCommand::setState(State s)
{
    m_state = s;
    repaint();
}

void HoverCommand::mouseOutside()
{
    m_captured = false;
    setState(State::Up);
    emit MouseLeave();
}

void HoverCommand::mouseMoveEvent(QMouseEvent *event)
{
    if (!isEnabled()) return;
    const QPointF pos = event->position();
    // Zero counts as outside, like the far edges.
    const bool inside = pos.x() > 0 && pos.x() < width() && pos.y() > 0 && pos.y() < height();
    const int button = buttonValue(event->buttons());
    if (inside) {
        m_captured = true;
        if (button != 1 && m_state != State::Hover) setState(State::Hover);
        emit MouseMove(button, shiftValue(event->modifiers()), float(pos.x()), float(pos.y()));
    } else if (m_captured || (pos.x() >= 0 && pos.y() >= 0)) {
        // A move onto the first row or column is the control's own and counts
        // as leaving. Once let go, moves beyond the control belong to other
        // windows: the toolkit still delivers them while a button is held, so
        // they are ignored here.
        mouseOutside();
    }
}

void HoverCommand::leaveEvent(QEvent *event)
{
    QAbstractButton::leaveEvent(event);
    if (isEnabled() && m_captured) mouseOutside();
}

void HoverCommand::mousePressEvent(QMouseEvent *event)
{
    if (!isEnabled()) return;
    // A button pressed over the control holds the mouse to it.
    m_captured = true;
    m_leftPressed = event->button() == Qt::LeftButton;
    if (m_leftPressed) setState(State::Pressed);
    const QPointF pos = event->position();
    emit MouseDown(buttonValue(event->button()), shiftValue(event->modifiers()), float(pos.x()),
                   float(pos.y()));
}

void HoverCommand::mouseReleaseEvent(QMouseEvent *event)
{
    const QPointF pos = event->position();
    const bool over = rect().contains(pos.toPoint());
    if (!m_captured && !over) {
        // Released elsewhere after the mouse was let go: not this control's.
        m_leftPressed = false;
        return;
    }
    const bool wasLeft = m_leftPressed && event->button() == Qt::LeftButton;
    m_leftPressed = false;
    if (isEnabled()) {
        setState(State::Hover);
        emit MouseUp(buttonValue(event->button()), shiftValue(event->modifiers()), float(pos.x()),
                     float(pos.y()));
    }
    if (wasLeft && over) {
        // After a click the state is up although the mouse is still there;
        // the next move makes it hover again.
        setState(State::Up);
        if (isEnabled()) emit clicked(false);
    }
}

static bool isPressKey(int key)
{
    return key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Space;
}

void HoverCommand::keyPressEvent(QKeyEvent *event)
{
    if (!isPressKey(event->key()) || event->modifiers() & (Qt::ControlModifier | Qt::AltModifier)) {
        QWidget::keyPressEvent(event);
        return;
    }
    event->accept();
    if (isEnabled() && m_state != State::Pressed) setState(State::Pressed);
}

void HoverCommand::keyReleaseEvent(QKeyEvent *event)
{
    if (!isPressKey(event->key())) {
        QWidget::keyReleaseEvent(event);
        return;
    }
    event->accept();
    if (event->isAutoRepeat()) return;  // a held key repeats; only the real release counts
    if (isEnabled() && m_state == State::Pressed) {
        setState(State::Up);
        emit clicked(false);
    }
}

void HoverCommand::focusInEvent(QFocusEvent *event)
{
    QAbstractButton::focusInEvent(event);
    if (isEnabled()) {
        m_hasFocus = true;
        repaint();
    }
}

void HoverCommand::focusOutEvent(QFocusEvent *event)
{
    QAbstractButton::focusOutEvent(event);
    // Cleared also when the loss comes from being disabled, or the mark would
    // stay on after re-enabling.
    m_hasFocus = false;
    repaint();
}

void HoverCommand::changeEvent(QEvent *event)
{
    QAbstractButton::changeEvent(event);
    switch (event->type()) {
    case QEvent::EnabledChange: changed("Enabled"); break;
    case QEvent::FontChange: changed("Font"); break;
    case QEvent::PaletteChange: update(); break;
    default: break;
    }
}

void HoverCommand::hideEvent(QHideEvent *event)
{
    QAbstractButton::hideEvent(event);
    // A hidden control can't be under the mouse: it comes back idle rather
    // than in the state it was hidden in.
    m_captured = false;
    m_leftPressed = false;
    m_state = State::Up;
}

bool HoverCommand::hitButton(const QPoint &pos) const { return rect().contains(pos); }

}  // namespace qor
