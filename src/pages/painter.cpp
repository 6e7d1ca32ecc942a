// SPDX-License-Identifier: GPL-3.0-or-later
#include "pages/painter.h"

#include "pages/textlayout.h"

#include <QGlyphRun>
#include <QPaintDevice>
#include <QPaintEngine>
#include <QPainter>

#include <cmath>

// Resources of a static library must be registered by name, outside any
// namespace.
static void registerPageResources() { Q_INIT_RESOURCE(pages); }

namespace qor::pages {

namespace {

// Pixels of line widths and pictures are screen pixels of the forms'
// design: 15 twips each.
constexpr double TwipsPerPixel = 15.0;

// Draws one line of text as the glyphs its font shaped the first time the
// text came up, where the device is a PDF: shaping is the dearest step of a
// text and a run of pages draws the same texts again and again. The PDF
// comes out byte for byte as from the same line drawn as a string. False
// where the line must be drawn as a string (another device, a text the
// font doesn't shape into one plain run).
bool drawShaped(QPainter &p, const PageFont &font, const TextLine &l)
{
    const QPaintEngine *engine = p.paintEngine();
    if (!engine || engine->type() != QPaintEngine::Pdf)
        return false;
    const ShapedText s = font.shaped(l.text);
    if (s.glyphs.isEmpty())
        return false;
    QList<QPointF> positions;
    positions.reserve(s.offsets.size());
    for (double x : s.offsets)
        positions << QPointF(l.x + x, l.baseline);
    QGlyphRun run;
    run.setRawFont(s.face);
    run.setGlyphIndexes(s.glyphs);
    run.setPositions(positions);
    p.drawGlyphRun(QPointF(0, 0), run);
    return true;
}

void drawText(QPainter &p, const Element &e)
{
    if (e.opaque) {
        // The element's box, or its text's box when it sizes itself.
        QRectF box(e.left, e.top, e.width, e.height);
        if (e.autoSize != AutoSize::Fixed) {
            const QSizeF s = naturalTextSize(e);
            box.setSize(s);
            if (e.autoSize == AutoSize::KeepRight)
                box.moveLeft(e.left + e.width - s.width());
        }
        if (!box.isEmpty())
            p.fillRect(box, Qt::white);
    }
    if (e.text.isEmpty())
        return;
    const QList<TextLine> lines = layoutText(e);
    if (lines.isEmpty())
        return;
    const PageFont &font = pageFont(e);
    p.setPen(e.colour);
    bool fontSet = false;
    for (const TextLine &l : lines) {
        // A line the wrapping couldn't narrow enough is cut at the box.
        const bool tooWide = e.autoSize == AutoSize::Fixed && l.width > e.width + 0.5;
        if (!tooWide && drawShaped(p, font, l))
            continue;
        if (!fontSet) {
            p.setFont(font.font);
            fontSet = true;
        }
        if (tooWide) {
            p.save();
            p.setClipRect(QRectF(e.left, e.top, e.width, e.height), Qt::IntersectClip);
        }
        p.drawText(QPointF(l.x, l.baseline), l.text);
        if (tooWide)
            p.restore();
    }
}

QPen framePen(const Element &e)
{
    QPen pen(e.colour, std::max(1, e.penPixels) * TwipsPerPixel);
    pen.setCapStyle(Qt::FlatCap);
    pen.setJoinStyle(Qt::MiterJoin);
    return pen;
}

}  // namespace

QImage pictureImage(const QString &key)
{
    if (key != QLatin1String("paid"))
        return {};
    static const QImage paid = [] {
        registerPageResources();
        QImage img(QStringLiteral(":/pages/paid.png"));
        return img.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    }();
    return paid;
}

void scaleToTwips(QPainter &painter)
{
    QPaintDevice *d = painter.device();
    if (!d)
        return;
    painter.resetTransform();
    painter.scale(d->logicalDpiX() / 1440.0, d->logicalDpiY() / 1440.0);
}

void drawPage(QPainter &p, const Page &page)
{
    p.save();
    p.setBrush(Qt::NoBrush);
    for (const Element &e : page.elements()) {
        if (!e.visible)
            continue;
        switch (e.kind) {
        case Kind::Text:
            drawText(p, e);
            break;
        case Kind::Line:
            p.setPen(framePen(e));
            p.drawLine(QPointF(e.x1, e.y1), QPointF(e.x2, e.y2));
            break;
        case Kind::Box: {
            p.setPen(framePen(e));
            p.setBrush(Qt::NoBrush);
            const QRectF r(e.left, e.top, e.width, e.height);
            if (e.rounded) {
                const double radius = std::min(e.width, e.height) / 8.0;
                p.drawRoundedRect(r, radius, radius);
            } else {
                p.drawRect(r);
            }
            break;
        }
        case Kind::Picture: {
            const QImage img = pictureImage(e.picture);
            if (!img.isNull())
                p.drawImage(QRectF(e.left, e.top, img.width() * TwipsPerPixel, img.height() * TwipsPerPixel), img,
                            QRectF(img.rect()));
            break;
        }
        }
    }
    p.restore();
}

QImage renderPage(const Page &page, int pixelsWidth)
{
    const double scale = double(pixelsWidth) / page.width();
    const int h = int(std::lround(page.height() * scale));
    QImage img(pixelsWidth, std::max(1, h), QImage::Format_RGB32);
    img.fill(Qt::white);
    QPainter p(&img);
    p.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing | QPainter::SmoothPixmapTransform);
    p.scale(scale, scale);
    drawPage(p, page);
    return img;
}

}  // namespace qor::pages
