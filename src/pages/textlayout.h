// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// Fonts and line breaking of text elements, measured in twips. Fonts are set
// by pixel size in twips (a point is 20 twips), so measures are the same on
// every device and the painter only has to scale twips to the device.
#include "pages/page.h"

#include <QFont>
#include <QFontMetricsF>
#include <QHash>
#include <QList>
#include <QRawFont>
#include <QSizeF>

namespace qor::pages {

// Lets Arial (and the other faces the forms name) be drawn with Liberation
// Sans, which has Arial's metrics, where the system lacks them. Safe to call
// more than once; needs a QGuiApplication.
void ensurePageFonts();

// One line of text shaped once: its glyphs in one face and where each starts
// along the baseline, from the line's start. Shaping is the dearest step of
// drawing a text and a run of pages draws the same texts again and again.
// No glyphs where the text needs more than that (a fallback face, right to
// left, control characters): such a line is drawn the long way.
struct ShapedText {
    QRawFont face;
    QList<quint32> glyphs;
    QList<double> offsets;
};

// What a font remembers of its texts, bounded: when it is full the older
// half goes, so the texts that keep coming up (labels, company lines, dates)
// stay while a stream of one-off amounts passes through.
template <typename T>
class TextMemo {
public:
    bool find(const QString &text, T &out)
    {
        if (auto it = m_new.constFind(text); it != m_new.constEnd()) {
            out = *it;
            return true;
        }
        if (auto it = m_old.constFind(text); it != m_old.constEnd()) {
            out = *it;
            insert(text, out);
            return true;
        }
        return false;
    }
    void insert(const QString &text, const T &value)
    {
        if (m_new.size() >= Half) {
            m_old = std::move(m_new);
            m_new = QHash<QString, T>();
        }
        m_new.insert(text, value);
    }

private:
    static constexpr qsizetype Half = 20000;
    QHash<QString, T> m_new, m_old;
};

// The font of a text element, pixel size in twips, and its metrics. Cached:
// the same face, size and style give the same objects.
struct PageFont {
    explicit PageFont(const QFont &f) : font(f), metrics(f) {}
    QFont font;
    QFontMetricsF metrics;
    // The width of a text in this font, remembered: a run of invoices measures
    // the same labels, company lines and item names over and over.
    double advance(const QString &text) const;
    // The text shaped with this font, remembered as the widths are. A text
    // is shaped here from the second time it is asked for: one drawn only
    // once is drawn as a string at no more cost. No glyphs the first time.
    ShapedText shaped(const QString &text) const;

private:
    struct Shaping {
        bool once = true;  // asked for once, not shaped yet
        ShapedText text;
    };
    mutable TextMemo<double> m_advances;
    mutable TextMemo<Shaping> m_shaped;
};
const PageFont &pageFont(const QString &family, double points, bool bold, bool italic);
inline const PageFont &pageFont(const Element &e) { return pageFont(e.fontName, e.fontSize, e.bold, e.italic); }

// One line of a laid-out text: where its baseline starts, in page twips.
struct TextLine {
    QString text;
    double x = 0;
    double baseline = 0;
    double width = 0;
};

// The lines a text element shows. Line breaks in the text always start a new
// line. A fixed element wraps each line at word boundaries inside its width (a
// single word wider than the width is broken where it must be) and shows the
// lines whose baseline lies inside its height; an element that sizes itself
// doesn't wrap and shows every line.
QList<TextLine> layoutText(const Element &e);

// The size of a text with the element's font, one line for each line break
// and no wrapping: what an element that sizes itself takes.
QSizeF naturalTextSize(const Element &e);

// Gives an element that sizes itself the box of its text, keeping its left or
// right edge and its top. Does nothing to fixed elements.
void fitAutoSize(Element &e);

// An amount is one word that must show whole: broken inside its box, its cents
// would fall below the box and the page would state a wrong amount. Where the
// text is wider than the box, a smaller size (in quarter points) is chosen
// until it fits on one line; a text that fits keeps its size.
void fitOnOneLine(Element &e);

}  // namespace qor::pages
