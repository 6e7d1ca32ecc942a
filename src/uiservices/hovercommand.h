// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// HoverCommand: the program's own push button. It paints itself (picture with
// a transparent key colour, caption, border, focus mark) and follows the mouse
// with three states: up, hover (mouse over it) and pressed.
//
// Clicks are QAbstractButton::clicked(); the other mouse notifications are the
// signals MouseLeave/MouseMove/MouseDown/MouseUp below. Every property that a
// stored form keeps is also a Q_PROPERTY under its stored name ("Caption",
// "Style", "Picture", ...), and setters emit propertyChanged(name).
#include "uiservices/olecolor.h"

#include <QAbstractButton>
#include <QImage>
#include <QPoint>
#include <QRect>
#include <QVariant>
#include <QVariantMap>

namespace qor {

namespace hover {

enum class State { Up,
                   Hover,
                   Pressed };

// Style bits. The value 4 has no meaning.
inline constexpr int Flat = 1;        // no border in state up unless focused
inline constexpr int Thin = 2;        // one-pixel borders, 1-pixel press offset
inline constexpr int HoverText = 8;   // caption in HighlightColor while hovering
inline constexpr int NoBorder = 16;   // no border in any state
inline constexpr int EdgeFocus = 32;  // focus rectangle on the edge; none with a HovPicture
inline constexpr int HoverFill = 64;  // background in HighlightColor while hovering

// Kinds of edge, numbered like the platform's edge flags.
enum class Edge { None = 0,
                  ThinRaised = 4,
                  Raised = 5,
                  ThinSunken = 8,
                  Sunken = 10 };

enum class Background { Highlight,
                        Grab,
                        BackColor,
                        Tiled };
enum class PictureChoice { None,
                           Picture,
                           HovPicture };

// Distance the content moves while pressed (0 in other states).
int pressOffset(int style, State state);
// The border drawn by the border table of the style.
Edge tableBorderFor(int style, State state);
// The border the control shows: the table's, or, for a flat control that has
// the focus in state up, the raised edge that makes it stand out.
Edge borderFor(int style, State state, bool hasFocus);
// What fills the background.
Background backgroundFor(int style, State state, bool hasBGPicture, bool grabBG);
// Which picture is drawn.
PictureChoice pictureFor(State state, bool hasPicture, bool hasHovPicture);
// Whether a focus rectangle is drawn, and where (an empty rect when none).
QRect focusRectFor(int style, bool hasFocus, bool hasHovPicture, int width, int height);

// Rounding of placement arithmetic: to the nearest whole number, exact halves
// to the even neighbour, as the platform's integer conversion does.
int roundHalfEven(double v);

// Top left corner of the picture. pw/ph: picture size, textWidth: width of the
// caption (0 when empty), all in pixels.
QPoint pictureOrigin(int hAlign, int width, int height, int pw, int ph, int textWidth,
                     int borderOffset, int imageOffset, int pressOffset);
// Top left corner of the caption. pw is the width of the chosen picture, or
// -1 when no picture is drawn.
QPoint captionOrigin(int hAlign, int width, int height, int textWidth, int textHeight, int pw,
                     int borderOffset, int imageOffset, int pressOffset);

// The picture with every pixel equal to its top-left pixel made transparent.
QImage keyedPicture(const QImage &picture);
// The disabled look of a keyed picture: its opaque shape embossed in the
// palette's light and dark greys.
QImage disabledPicture(const QImage &keyed, const QColor &light, const QColor &shadow);

}  // namespace hover

class HoverCommand : public QAbstractButton {
    Q_OBJECT
    Q_PROPERTY(QString Caption READ caption WRITE setCaption)
    Q_PROPERTY(int Style READ styleBits WRITE setStyleBits)
    Q_PROPERTY(QImage Picture READ picture WRITE setPicture)
    Q_PROPERTY(QImage HovPicture READ hovPicture WRITE setHovPicture)
    Q_PROPERTY(QImage BGPicture READ bgPicture WRITE setBGPicture)
    Q_PROPERTY(QFont Font READ font WRITE setFont)
    Q_PROPERTY(int ImageOffset READ imageOffset WRITE setImageOffset)
    Q_PROPERTY(int BorderOffset READ borderOffset WRITE setBorderOffset)
    Q_PROPERTY(int HAlign READ hAlign WRITE setHAlign)
    Q_PROPERTY(bool GrabBG READ grabBG WRITE setGrabBG)
    Q_PROPERTY(bool Enabled READ isEnabled WRITE setEnabled)
    Q_PROPERTY(quint32 ForeColor READ foreColorValue WRITE setForeColor)
    Q_PROPERTY(quint32 BackColor READ backColorValue WRITE setBackColor)
    Q_PROPERTY(quint32 HighlightColor READ highlightColorValue WRITE setHighlightColor)
    Q_PROPERTY(QVariant Tag READ tag WRITE setTag)

public:
    using State = hover::State;

    explicit HoverCommand(QWidget *parent = nullptr);
    ~HoverCommand() override;

    // Kept for the container, not used by the control.
    QVariant tag() const { return m_tag; }
    void setTag(const QVariant &tag) { m_tag = tag; }

    bool grabBG() const { return m_grabBG; }
    void setGrabBG(bool on);
    int hAlign() const { return m_hAlign; }  // 0 left, 1 centre, 2 right
    void setHAlign(int align);
    int imageOffset() const { return m_imageOffset; }
    void setImageOffset(int px);
    int borderOffset() const { return m_borderOffset; }
    void setBorderOffset(int px);
    int styleBits() const { return m_style; }
    void setStyleBits(int style);

    // Pictures: a null image means none.
    QImage picture() const { return m_picture; }
    void setPicture(const QImage &image);
    QImage hovPicture() const { return m_hovPicture; }
    void setHovPicture(const QImage &image);
    QImage bgPicture() const { return m_bgPicture; }
    void setBGPicture(const QImage &image);

    // The caption is also the button's text, so "&" gives an Alt hot key.
    QString caption() const { return text(); }
    void setCaption(const QString &caption);

    // Colours are stored values (plain RGB 0x00BBGGRR or system colour, see
    // olecolor.h). Note that a QRgb is not such a value: pass a QColor.
    OleColor foreColorValue() const { return m_foreColor; }
    OleColor backColorValue() const { return m_backColor; }
    OleColor highlightColorValue() const { return m_highlightColor; }
    void setForeColor(OleColor c);
    void setBackColor(OleColor c);
    void setHighlightColor(OleColor c);
    void setForeColor(const QColor &c) { setForeColor(oleFromColor(c)); }
    void setBackColor(const QColor &c) { setBackColor(oleFromColor(c)); }
    void setHighlightColor(const QColor &c) { setHighlightColor(oleFromColor(c)); }
    // Without these, Qt::white would pick the stored-value overloads.
    void setForeColor(Qt::GlobalColor c) { setForeColor(QColor(c)); }
    void setBackColor(Qt::GlobalColor c) { setBackColor(QColor(c)); }
    void setHighlightColor(Qt::GlobalColor c) { setHighlightColor(QColor(c)); }
    // Resolved for drawing.
    QColor foreColor() const;
    QColor backColor() const;
    QColor highlightColor() const;

    // Repaints at once.
    void refresh();

    // The stored form: the fourteen stored properties under their names.
    // writeProperties gives all of them; readProperties takes each from the
    // map, or its default when the map lacks it.
    QVariantMap writeProperties() const;
    void readProperties(const QVariantMap &stored);

    State state() const { return m_state; }
    bool hasFocusMark() const { return m_hasFocus; }

    // The whole face as painted now (the same routine the paint event uses).
    QPixmap renderFace() const;

    QSize sizeHint() const override;

signals:
    // Button: 1 left, 2 right, 4 middle; Shift: 1 Shift, 2 Ctrl, 4 Alt.
    void MouseLeave();
    void MouseMove(int button, int shift, float x, float y);
    void MouseDown(int button, int shift, float x, float y);
    void MouseUp(int button, int shift, float x, float y);
    // A stored property changed (its stored name).
    void propertyChanged(const QString &name);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void keyReleaseEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void changeEvent(QEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    bool hitButton(const QPoint &pos) const override;

private:
    void setState(State s);
    void changed(const char *name);
    void mouseOutside();
    int textWidth() const;
    int textHeight() const;

    QVariant m_tag;
    bool m_grabBG = false;
    int m_hAlign = 0;
    int m_imageOffset = 10;
    int m_borderOffset = 10;
    int m_style = hover::Thin;
    QImage m_picture, m_hovPicture, m_bgPicture;
    OleColor m_foreColor = syscolor::MenuText;
    OleColor m_backColor = syscolor::ButtonFace;
    OleColor m_highlightColor = syscolor::Highlight;

    State m_state = State::Up;
    bool m_hasFocus = false;
    bool m_captured = false;     // the mouse is followed beyond the control
    bool m_leftPressed = false;  // a left press began on the control
};

}  // namespace qor
