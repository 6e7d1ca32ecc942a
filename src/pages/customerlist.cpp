// SPDX-License-Identifier: GPL-3.0-or-later
#include "pages/customerlist.h"

#include "database/keyedlist.h"
#include "database/regional.h"
#include "database/rowtypes.h"
#include "pages/templates.h"
#include "pages/textlayout.h"

#include <QFontMetricsF>
#include <QPaintDevice>

#include <cmath>
#include <optional>

namespace qor::pages {

ListFont parseListFont(const QString &name, const QString &styleSize, double templateSize)
{
    ListFont f;
    f.name = name;
    f.bold = styleSize.contains(QLatin1String("Bold "), Qt::CaseInsensitive);
    f.italic = styleSize.contains(QLatin1String("Italic "), Qt::CaseInsensitive);
    QString rest = styleSize;
    for (const char *word : {"Bold ", "Italic ", "Regular "})
        rest.remove(QLatin1String(word), Qt::CaseInsensitive);
    const double size = regional::val(rest);
    f.size = size != 0 ? size : templateSize;
    return f;
}

QString fontStyleText(bool bold, bool italic, long points)
{
    QString style = bold && italic ? QStringLiteral("Bold Italic ")
                    : bold         ? QStringLiteral("Bold ")
                    : italic       ? QStringLiteral("Italic ")
                                   : QStringLiteral("Regular ");
    return style + QString::number(points);
}

QString CustomerListEntry(QStringView rowText, const CustomerListOptions &o)
{
    const std::optional<CustomerView> row = CustomerView::parse(rowText);
    if (!row)
        return {};
    static const QString End = QStringLiteral("\r\n");
    QString entry;
    entry += row->displayName;
    entry += End;
    auto addIf = [&](bool ticked, QStringView field) {
        if (ticked && !field.isEmpty()) {
            entry += field;
            entry += End;
        }
    };
    for (QStringView line : {row->address1, row->address2, row->address3})
        addIf(o.printAddress, line);
    addIf(o.printEmail, row->email);
    addIf(o.printPhone, row->phone);
    addIf(o.printNotes, row->notes);
    // B + 1 line ends with the last one cut off: B empty lines, and the next
    // entry starts on a line of its own.
    const int blank = o.blankLines < 0 || o.blankLines > 4 ? 1 : o.blankLines;
    for (int i = 0; i < blank; ++i)
        entry += End;
    entry.replace(u'&', QLatin1String("&&"));
    return entry;
}

QString labelText(QStringView marked)
{
    QString out;
    out.reserve(marked.size());
    for (qsizetype i = 0; i < marked.size(); ++i) {
        if (marked[i] == u'&') {
            if (i + 1 < marked.size() && marked[i + 1] == u'&') {
                out += u'&';
                ++i;
            }
            continue;
        }
        out += marked[i];
    }
    return out;
}

std::array<int, 4> columnLefts(int columns)
{
    switch (columns) {
    case 1: return {600, 0, 0, 0};
    case 2: return {600, 5880, 0, 0};
    case 4: return {600, 3240, 5880, 8520};
    default: return {600, 4120, 7640, 0};
    }
}

struct ListMetrics::Impl {
    std::optional<QFontMetricsF> device;
    double scale = 1;  // twips per device pixel
    const PageFont *page = nullptr;
};

ListMetrics::ListMetrics(const ListFont &font, const QPaintDevice *device) : d(std::make_unique<Impl>())
{
    ensurePageFonts();
    if (device && device->logicalDpiY() > 0) {
        QFont f(font.name);
        f.setPointSizeF(font.size);
        f.setBold(font.bold);
        f.setItalic(font.italic);
        d->device.emplace(f, device);
        d->scale = 1440.0 / device->logicalDpiY();
        m_lineHeight = d->device->lineSpacing() * d->scale;
    } else {
        d->page = &pageFont(font.name, font.size, font.bold, font.italic);
        m_lineHeight = d->page->metrics.lineSpacing();
    }
}

ListMetrics::~ListMetrics() = default;

double ListMetrics::advance(const QString &text) const
{
    if (d->device)
        return d->device->horizontalAdvance(text) * d->scale;
    return d->page->advance(text);
}

namespace {

// Line breaks as the labels count them: CR LF, LF or CR.
int lineBreaks(QStringView text)
{
    int n = 0;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] == u'\r') {
            ++n;
            if (i + 1 < text.size() && text[i + 1] == u'\n')
                ++i;
        } else if (text[i] == u'\n') {
            ++n;
        }
    }
    return n;
}

// The text as a column shows it: each line no wider than `width`, so a line
// too wide is cut where the next column begins.
QString cutToWidth(const QString &text, double width, const ListMetrics &m)
{
    QString out;
    out.reserve(text.size());
    qsizetype start = 0;
    const qsizetype n = text.size();
    auto takeLine = [&](qsizetype end) {
        QString line = text.mid(start, end - start);
        if (!line.isEmpty() && m.advance(line) > width) {
            // The longest beginning that fits.
            qsizetype lo = 0, hi = line.size();
            while (lo < hi) {
                const qsizetype mid = (lo + hi + 1) / 2;
                if (m.advance(line.left(mid)) <= width)
                    lo = mid;
                else
                    hi = mid - 1;
            }
            line.truncate(lo);
        }
        out += line;
    };
    for (qsizetype i = 0; i < n; ++i) {
        const QChar c = text[i];
        if (c == u'\r' || c == u'\n') {
            takeLine(i);
            const qsizetype lineEnd = (c == u'\r' && i + 1 < n && text[i + 1] == u'\n') ? i + 2 : i + 1;
            out += text.mid(i, lineEnd - i);
            i = lineEnd - 1;
            start = lineEnd;
        }
    }
    takeLine(n);
    return out;
}

// One run of the list: the columns being filled and the pages made so far.
class ListRun {
public:
    ListRun(const CustomerListOptions &o, const QPaintDevice *device)
        : m_options(o),
          m_font(parseListFont(o.fontName, o.fontStyleSize)),
          m_metrics(m_font, device),
          m_columnCount(o.columns < 1 || o.columns > 4 ? 3 : o.columns),
          m_lefts(columnLefts(m_columnCount))
    {
        for (int c = 0; c < m_columnCount; ++c) {
            const int right = c + 1 < m_columnCount ? m_lefts[size_t(c) + 1] : ListWidth;
            m_widths[size_t(c)] = right - m_lefts[size_t(c)];
        }
    }

    void add(const QString &entry)
    {
        const int breaks = lineBreaks(entry);
        // The element's height with the entry behind its text: one line for
        // the text so far and one for each line end.
        const double height = (m_breaks[size_t(m_column)] + breaks + 1) * m_metrics.lineHeight();
        if (height > ColumnFullHeight) {
            ++m_column;
            if (m_column > m_columnCount - 1) {
                closePage();
                m_column = 0;
                for (auto &t : m_texts)
                    t.clear();
                m_breaks.fill(0);
            }
        }
        QString &text = m_texts[size_t(m_column)];
        text += cutToWidth(labelText(entry), m_widths[size_t(m_column)], m_metrics);
        m_breaks[size_t(m_column)] += breaks;
    }

    void closePage()
    {
        ++m_pageNumber;
        Page page = *pageTemplate(QStringLiteral("frmPrintC"));
        page.at(QStringLiteral("lblPageTitle")).text = m_options.pageTitle;
        for (int i = 0; i <= 4; ++i) {
            Element &e = page.at(QStringLiteral("lblList"), i);
            e.fontName = m_font.name;
            e.fontSize = m_font.size;
            e.bold = m_font.bold;
            e.italic = m_font.italic;
            if (i < 4) {
                if (m_lefts[size_t(i)] > 0)
                    e.left = m_lefts[size_t(i)];
                e.text = m_texts[size_t(i)];
            }
            e.width = 0;
            e.height = 0;
        }
        Element &number = page.at(QStringLiteral("lblList"), 4);
        if (m_options.printPageNumbers) {
            // Its bottom edge stands where one line of "Page 1" ends.
            number.top = PageNumberBottom - int(std::lround(m_metrics.lineHeight()));
            number.text = QStringLiteral("Page #") + QString::number(m_pageNumber);
        }
        for (int i = 0; i <= 4; ++i)
            fitAutoSize(page.at(QStringLiteral("lblList"), i));
        m_pages << std::move(page);
    }

    QList<Page> take() { return std::move(m_pages); }

private:
    const CustomerListOptions &m_options;
    ListFont m_font;
    ListMetrics m_metrics;
    int m_columnCount;
    std::array<int, 4> m_lefts;
    std::array<double, 4> m_widths{};
    std::array<QString, 4> m_texts;
    std::array<int, 4> m_breaks{};
    int m_column = 0;
    qint16 m_pageNumber = 0;
    QList<Page> m_pages;
};

}  // namespace

QList<Page> composeCustomerList(const KeyedList &customers, const CustomerListOptions &options,
                                const QPaintDevice *measureOn)
{
    if (customers.count() == 0)
        return {};
    ListRun run(options, measureOn);
    customers.forEach([&](QStringView, QStringView text) {
        const QString entry = CustomerListEntry(text, options);
        if (!QStringView(entry).startsWith(ArchiveMark))
            run.add(entry);
        return true;
    });
    run.closePage();
    return run.take();
}

}  // namespace qor::pages
