// SPDX-License-Identifier: GPL-3.0-or-later
#include "pages/textlayout.h"

#include <QFontDatabase>
#include <QGlyphRun>
#include <QHash>
#include <QTextLayout>

#include <algorithm>
#include <cmath>
#include <memory>

namespace qor::pages {

void ensurePageFonts()
{
    static bool done = false;
    if (done)
        return;
    done = true;
    const QString standIn = QStringLiteral("Liberation Sans");
    if (!QFontDatabase::hasFamily(standIn))
        return;
    // MS Sans Serif is the forms' default face, used by the list's page number.
    for (const QString family : {QStringLiteral("Arial"), QStringLiteral("Tahoma"), QStringLiteral("MS Sans Serif")}) {
        if (!QFontDatabase::hasFamily(family))
            QFont::insertSubstitution(family, standIn);
    }
}

const PageFont &pageFont(const QString &family, double points, bool bold, bool italic)
{
    // Size in twips; every size the forms use is a whole number of twips.
    const int twips = int(std::lround(points * 20.0));
    const QPair<QString, int> key(family, twips * 4 + (bold ? 2 : 0) + (italic ? 1 : 0));
    static QHash<QPair<QString, int>, std::shared_ptr<PageFont>> cache;
    auto it = cache.constFind(key);
    if (it != cache.constEnd())
        return **it;
    ensurePageFonts();
    QFont f(family);
    f.setPixelSize(std::max(1, twips));
    f.setBold(bold);
    f.setItalic(italic);
    // Measures at this size must not depend on a device's hinting.
    f.setHintingPreference(QFont::PreferNoHinting);
    f.setKerning(true);
    auto pf = std::make_shared<PageFont>(f);
    cache.insert(key, pf);
    return *pf;
}

double PageFont::advance(const QString &text) const
{
    double w = 0;
    if (m_advances.find(text, w))
        return w;
    w = metrics.horizontalAdvance(text);
    m_advances.insert(text, w);
    return w;
}

ShapedText PageFont::shaped(const QString &text) const
{
    Shaping known;
    if (!m_shaped.find(text, known)) {
        m_shaped.insert(text, known);
        return {};
    }
    if (!known.once)
        return known.text;
    ShapedText s;
    const bool plain = std::all_of(text.cbegin(), text.cend(), [](QChar c) {
        return c.unicode() >= 0x20 && c.direction() != QChar::DirR && c.direction() != QChar::DirAL &&
               c.category() != QChar::Other_Format && c.category() != QChar::Other_Control &&
               c.category() != QChar::Separator_Line && c.category() != QChar::Separator_Paragraph;
    });
    if (plain && !text.isEmpty()) {
        QTextLayout layout(text, font);
        QTextOption option;
        option.setTextDirection(Qt::LeftToRight);
        option.setWrapMode(QTextOption::NoWrap);
        layout.setTextOption(option);
        layout.beginLayout();
        layout.createLine();
        layout.endLayout();
        const QList<QGlyphRun> runs = layout.glyphRuns();
        if (runs.size() == 1 && !runs[0].isRightToLeft()) {
            s.face = runs[0].rawFont();
            s.glyphs = runs[0].glyphIndexes();
            const QList<QPointF> positions = runs[0].positions();
            s.offsets.reserve(positions.size());
            for (const QPointF &p : positions)
                s.offsets << p.x();
            // Marks placed above or below their letter keep the long way.
            if (std::any_of(positions.cbegin(), positions.cend(),
                            [&](const QPointF &p) { return p.y() != positions.first().y(); }))
                s = ShapedText();
        }
    }
    m_shaped.insert(text, {false, s});
    return s;
}

namespace {

// Splits at CR LF, LF or CR.
QStringList splitLines(const QString &text)
{
    QStringList out;
    qsizetype start = 0;
    const qsizetype n = text.size();
    for (qsizetype i = 0; i < n; ++i) {
        const QChar c = text[i];
        if (c == u'\r' || c == u'\n') {
            out << text.mid(start, i - start);
            if (c == u'\r' && i + 1 < n && text[i + 1] == u'\n')
                ++i;
            start = i + 1;
        }
    }
    out << text.mid(start);
    return out;
}

// Breaks one line of text into lines no wider than `width`, at blanks; a word
// that alone is too wide is broken between characters.
void wrapInto(const QString &line, double width, const PageFont &fm, QStringList &out)
{
    if (fm.advance(line) <= width) {
        out << line;
        return;
    }
    QString current;
    auto pushCurrent = [&] {
        // Blanks at a break are not shown.
        qsizetype e = current.size();
        while (e > 0 && current[e - 1] == u' ')
            --e;
        out << current.left(e);
        current.clear();
    };
    qsizetype i = 0;
    const qsizetype n = line.size();
    while (i < n) {
        // The next word with the blanks in front of it.
        qsizetype j = i;
        while (j < n && line[j] == u' ')
            ++j;
        while (j < n && line[j] != u' ')
            ++j;
        const QString piece = line.mid(i, j - i);
        if (fm.advance(current + piece) <= width) {
            current += piece;
        } else if (!current.isEmpty()) {
            pushCurrent();
            // The blanks at the start of the next line are dropped too.
            qsizetype k = 0;
            while (k < piece.size() && piece[k] == u' ')
                ++k;
            current = piece.mid(k);
            // A word too long for a line of its own.
            while (fm.advance(current) > width && current.size() > 1) {
                qsizetype fit = 1;
                while (fit < current.size() && fm.advance(current.left(fit + 1)) <= width)
                    ++fit;
                out << current.left(fit);
                current = current.mid(fit);
            }
        } else {
            current = piece;
            while (fm.advance(current) > width && current.size() > 1) {
                qsizetype fit = 1;
                while (fit < current.size() && fm.advance(current.left(fit + 1)) <= width)
                    ++fit;
                out << current.left(fit);
                current = current.mid(fit);
            }
        }
        i = j;
    }
    if (!current.isEmpty())
        pushCurrent();
}

}  // namespace

QList<TextLine> layoutText(const Element &e)
{
    QList<TextLine> out;
    if (e.text.isEmpty())
        return out;
    const PageFont &fm = pageFont(e);
    const bool sized = e.autoSize != AutoSize::Fixed;
    const double ascent = fm.metrics.ascent();
    // Places a line of the given width inside the box.
    auto place = [&](const QString &text, double width, qsizetype i, double boxLeft, double boxWidth) {
        TextLine tl;
        tl.text = text;
        tl.width = width;
        tl.baseline = e.top + (ascent + double(i) * fm.metrics.lineSpacing());
        switch (e.align) {
        case Align::Left: tl.x = boxLeft; break;
        case Align::Right: tl.x = boxLeft + boxWidth - tl.width; break;
        case Align::Centre: tl.x = boxLeft + (boxWidth - tl.width) / 2.0; break;
        }
        out << tl;
    };

    const bool plain = !e.text.contains(u'\r') && !e.text.contains(u'\n');
    if (plain) {
        // Most texts of a page are one line that fits: measured once.
        const double width = fm.advance(e.text);
        if (sized) {
            place(e.text, width, 0, e.autoSize == AutoSize::KeepRight ? e.left + e.width - width : e.left, width);
            return out;
        }
        if (width <= e.width) {
            if (ascent <= e.height)
                place(e.text, width, 0, e.left, e.width);
            return out;
        }
    }

    QStringList lines;
    if (plain) {
        wrapInto(e.text, e.width, fm, lines);
    } else {
        for (const QString &l : splitLines(e.text)) {
            if (sized)
                lines << l;
            else
                wrapInto(l, e.width, fm, lines);
        }
    }

    const double pitch = fm.metrics.lineSpacing();
    double boxLeft = e.left;
    double boxWidth = e.width;
    if (sized) {
        // The box is the text's: keep the anchored edge, take the text's width.
        double widest = 0;
        for (const QString &l : lines)
            widest = std::max(widest, fm.advance(l));
        if (e.autoSize == AutoSize::KeepRight)
            boxLeft = e.left + e.width - widest;
        boxWidth = widest;
    }
    out.reserve(lines.size());
    for (qsizetype i = 0; i < lines.size(); ++i) {
        if (!sized && ascent + double(i) * pitch > e.height)
            break;
        place(lines[i], fm.advance(lines[i]), i, boxLeft, boxWidth);
    }
    return out;
}

QSizeF naturalTextSize(const Element &e)
{
    if (e.text.isEmpty())
        return {0, 0};
    const PageFont &fm = pageFont(e);
    double widest = 0;
    const QStringList lines = splitLines(e.text);
    for (const QString &l : lines)
        widest = std::max(widest, fm.advance(l));
    return {widest, double(lines.size()) * fm.metrics.lineSpacing()};
}

void fitAutoSize(Element &e)
{
    if (e.autoSize == AutoSize::Fixed)
        return;
    const QSizeF s = naturalTextSize(e);
    const int w = int(std::ceil(s.width()));
    const int h = int(std::ceil(s.height()));
    if (e.autoSize == AutoSize::KeepRight)
        e.left = e.left + e.width - w;
    e.width = w;
    e.height = h;
}

void fitOnOneLine(Element &e)
{
    const double width = pageFont(e).advance(e.text);
    if (width <= e.width || width <= 0)
        return;
    // The width is close to proportional to the size: start from the
    // proportion and step down where hinting makes it a little wider.
    double size = std::floor(e.fontSize * e.width / width * 4) / 4;
    while (size > 1 && pageFont(e.fontName, size, e.bold, e.italic).advance(e.text) > e.width)
        size -= 0.25;
    e.fontSize = std::max(size, 1.0);
}

}  // namespace qor::pages
