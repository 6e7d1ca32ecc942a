// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// The printed customer list: entries, columns and pages on the frmPrintC
// form. The composer reads plain values (the customer table and the list
// options as they stand), never a window, and measures with the metrics of
// the device the pages will be printed on.
#include "pages/page.h"

#include <QString>
#include <QStringView>

#include <array>
#include <memory>

class QPaintDevice;

namespace qor {
class KeyedList;
}

namespace qor::pages {

// The list options of one print, as the options window shows them.
struct CustomerListOptions {
    QString pageTitle = QStringLiteral("Customer List");
    int columns = 3;     // 1 to 4; others count as 3
    int blankLines = 1;  // 0 to 4; others count as 1
    bool printAddress = true;
    bool printEmail = true;
    bool printPhone = true;
    bool printNotes = true;
    bool printPageNumbers = true;
    QString fontName = QStringLiteral("Arial");           // lblFontName(0)
    QString fontStyleSize = QStringLiteral("Regular 8");  // lblFontName(1)
};

// The font of the list's elements: face, style and size read from the two
// font texts. Bold when the style text holds "Bold ", italic when it holds
// "Italic " (either case); what is left without "Bold ", "Italic " and
// "Regular " gives the size when its Val isn't 0, else the size stays
// `templateSize`.
struct ListFont {
    QString name = QStringLiteral("Arial");
    bool bold = false;
    bool italic = false;
    double size = 8.25;
};
ListFont parseListFont(const QString &name, const QString &styleSize, double templateSize = 8.25);
// The style text the options window shows and stores: "Regular ", "Bold ",
// "Italic " or "Bold Italic ", then the size in whole points ("Bold Italic 10").
QString fontStyleText(bool bold, bool italic, long points);

// The entry of one customer row: the display name and the ticked fields that
// aren't empty, one line each, then `blankLines` empty lines. Each "&" comes
// doubled, as the list's labels take it (one "&" is shown for two). A row
// without exactly nine fields gives an empty text.
QString CustomerListEntry(QStringView rowText, const CustomerListOptions &options);
// What a label shows of a text in that form: "&&" shows "&", a single "&"
// marks a hot key and isn't shown.
QString labelText(QStringView marked);

// A column is full when its text would grow higher than this.
constexpr int ColumnFullHeight = 12240;
// The page number's bottom edge.
constexpr int PageNumberBottom = 14640;
// Left edges of lblList(0) to (3) by the number of columns (0: not used).
std::array<int, 4> columnLefts(int columns);

// Line height and text widths of the list's font in twips, as a device
// measures them: the printer's own metrics when a device is given, the page
// layer's device-free metrics otherwise.
class ListMetrics {
public:
    ListMetrics(const ListFont &font, const QPaintDevice *device);
    ~ListMetrics();
    double lineHeight() const { return m_lineHeight; }
    double advance(const QString &text) const;

private:
    struct Impl;
    std::unique_ptr<Impl> d;
    double m_lineHeight = 0;
};

// The pages of the list: every current customer of the table in table order,
// archived ones left out, each page with the title (and "Page #N" when asked);
// the last page goes out however little it holds. An empty table gives no
// page at all (the caller says "There are no customers to print!").
// `measureOn` is the device the pages are for (the printer, the PDF writer);
// nullptr measures without one.
QList<Page> composeCustomerList(const KeyedList &customers, const CustomerListOptions &options,
                                const QPaintDevice *measureOn = nullptr);

}  // namespace qor::pages
