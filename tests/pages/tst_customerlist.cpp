// SPDX-License-Identifier: GPL-3.0-or-later
// The printed customer list: entries, fonts, columns and pages, and a long
// list written to PDF and read back word by word.
#include "pdfwords.h"

#include "database/keyedlist.h"
#include "database/rowtypes.h"
#include "pages/customerlist.h"
#include "pages/pdfoutput.h"

#include <QBuffer>
#include <QPdfWriter>
#include <QTest>

using namespace qor;
using namespace qor::pages;
using namespace Qt::StringLiterals;

namespace {

QString row(const QString &first, const QString &last = {}, const QString &a1 = {}, const QString &a2 = {},
            const QString &a3 = {}, const QString &email = {}, const QString &phone = {}, const QString &notes = {})
{
    return CustomerRow{customer::displayNameFor(first, last), first, last, a1, a2, a3, email, phone, notes}.text();
}

const Element &list(const Page &p, int i) { return p.at(u"lblList"_s, i); }

}  // namespace

class TstCustomerList : public QObject {
    Q_OBJECT

private slots:
    void entryText()
    {
        CustomerListOptions o;
        const QString full = row(u"Ann"_s, u"Lee & Co"_s, u"1 Main St"_s, QString(), u"Springfield"_s,
                                 u"ann@x.org"_s, u"555-1212"_s, u"call first\r\nafter 5"_s);
        // Empty address lines take no line; notes keep their breaks; one
        // blank line; the ampersand doubled for the label.
        QCOMPARE(CustomerListEntry(full, o),
                 u"Lee && Co, Ann\r\n1 Main St\r\nSpringfield\r\nann@x.org\r\n555-1212\r\ncall first\r\nafter 5\r\n\r\n"_s);
        QCOMPARE(labelText(CustomerListEntry(full, o)).count(u'&'), 1);
        // Nothing ticked, no blank lines: the display name alone.
        o.printAddress = o.printEmail = o.printPhone = o.printNotes = false;
        o.blankLines = 0;
        QCOMPARE(CustomerListEntry(full, o), u"Lee && Co, Ann\r\n"_s);
        o.blankLines = 4;
        QCOMPARE(CustomerListEntry(full, o), u"Lee && Co, Ann\r\n\r\n\r\n\r\n\r\n"_s);
        // A row that isn't a customer row adds nothing.
        QCOMPARE(CustomerListEntry(u"Ann\u0001Lee"_s, o), QString());
        QCOMPARE(labelText(u"&Print &&Co &"_s), u"Print &Co "_s);
    }

    void fontText()
    {
        // Style text and size as stored; a style without a number keeps the
        // template's size; case is ignored.
        for (const auto &[style, bold, italic, size] : {std::tuple{"Bold Italic 10", true, true, 10.0},
                                                        {"bold italic ", true, true, 8.25},
                                                        {"Regular 8", false, false, 8.0},
                                                        {"Italic 12", false, true, 12.0},
                                                        {"Bold 14", true, false, 14.0}}) {
            const ListFont f = parseListFont(u"Verdana"_s, QString::fromLatin1(style));
            QVERIFY2(f.name == u"Verdana" && f.bold == bold && f.italic == italic && f.size == size, style);
            // What the options window writes reads back the same.
            if (int(size) == size)
                QCOMPARE(fontStyleText(bold, italic, int(size)), QString::fromLatin1(style));
        }
    }

    void shortLists()
    {
        KeyedList t;
        QCOMPARE(composeCustomerList(t, {}).size(), 0);  // "There are no customers to print!"

        // Four names, no blank lines, one column: four lines in a row.
        for (const char *n : {"Adams", "Baker", "Cole", "Dunn"})
            t.add(numberKey(t.count() + 1), row(QString::fromLatin1(n)));
        t.add(u"9k"_s, customer::archivedText(row(u"Zed & Co"_s)));
        CustomerListOptions o{
            .pageTitle = u"Tom & Jerry's"_s, .columns = 1, .blankLines = 0, .fontStyleSize = u"Bold Italic 10"_s};
        QList<Page> pages = composeCustomerList(t, o);
        QCOMPARE(pages.size(), 1);
        const Page &p = pages[0];
        QCOMPARE(list(p, 0).text, u"Adams\r\nBaker\r\nCole\r\nDunn\r\n"_s);  // the archived one left out
        QCOMPARE(p.at(u"lblPageTitle"_s).text, u"Tom & Jerry's"_s);
        QCOMPARE(list(p, 4).text, u"Page #1"_s);
        QVERIFY(std::abs(list(p, 4).top + list(p, 4).height - PageNumberBottom) <= 1);
        for (int i = 0; i <= 4; ++i)
            QVERIFY(list(p, i).bold && list(p, i).italic && list(p, i).fontSize == 10.0);

        // Page numbers off: the element stays empty, nothing else changes.
        o.printPageNumbers = false;
        pages = composeCustomerList(t, o);
        QCOMPARE(list(pages[0], 0).text + list(pages[0], 4).text, u"Adams\r\nBaker\r\nCole\r\nDunn\r\n"_s);

        // Only archived customers: the page still goes out, with its title.
        KeyedList archived;
        archived.add(u"1k"_s, customer::archivedText(row(u"Gone"_s)));
        pages = composeCustomerList(archived, o);
        QVERIFY(pages.size() == 1 && list(pages[0], 0).text.isEmpty());
        QCOMPARE(pages[0].at(u"lblPageTitle"_s).text, u"Tom & Jerry's"_s);

        // A column count out of range counts as 3.
        QCOMPARE(columnLefts(9), columnLefts(3));
    }

    // Column and page breaks by the line height; the entry that didn't fit
    // opens the next column; a line too wide is cut at the next column.
    void breaks()
    {
        CustomerListOptions o{.columns = 2, .blankLines = 0, .printNotes = false};
        const ListMetrics m(parseListFont(o.fontName, o.fontStyleSize), nullptr);
        const int perColumn = int(ColumnFullHeight / m.lineHeight());  // lines that fit
        KeyedList t;
        // Single-line entries: a column holds perColumn - 1 of them (the text
        // ends in a line end, which takes a line of its own).
        const int n = 2 * (perColumn - 1) + 3;
        for (int i = 1; i <= n; ++i)
            t.add(numberKey(i), row(u"C%1"_s.arg(i, 4, 10, QChar(u'0')), {}, {}, {}, {}, {}, {}, QString(200, u'W')));
        const QList<Page> pages = composeCustomerList(t, o);
        QCOMPARE(pages.size(), 2);
        QStringList all;
        for (const Page &p : pages)
            for (int c = 0; c < 2; ++c)
                all += list(p, c).text.split(u"\r\n"_s, Qt::SkipEmptyParts);
        QStringList want;
        for (int i = 1; i <= n; ++i) want << u"C%1"_s.arg(i, 4, 10, QChar(u'0'));
        QCOMPARE(all, want);
        QCOMPARE(list(pages[0], 0).text.count(u"\r\n"_s), perColumn - 1);
        QVERIFY(list(pages[0], 0).height <= ColumnFullHeight + 1);
        QCOMPARE(list(pages[1], 0).text.left(5), u"C%1"_s.arg(2 * (perColumn - 1) + 1, 4, 10, QChar(u'0')));
        QCOMPARE(list(pages[1], 4).text, u"Page #2"_s);
        QCOMPARE(list(pages[1], 1).left, 5880);

        // A long line is cut where the next column begins.
        KeyedList wide;
        wide.add(u"1k"_s, row(u"N"_s, {}, {}, {}, {}, {}, {}, QString(300, u'W')));
        CustomerListOptions withNotes = o;
        withNotes.printNotes = true;
        const Page q = composeCustomerList(wide, withNotes).first();
        const QStringList lines = list(q, 0).text.split(u"\r\n"_s);
        QVERIFY(lines.size() >= 2 && lines[1].size() < 300);
        QVERIFY(m.advance(lines[1]) <= 5880 - 600 && m.advance(lines[1] + u'W') > 5880 - 600);
    }

    // A thousand customers with long notes in three columns, measured on the
    // PDF writer: nothing runs below a column's room, the title on every page.
    void thousandToPdf()
    {
        KeyedList t;
        const QString note =
            u"Delivery round on the eastern side of the river, gate code on the back of the card;"
            " second line\r\nthird line of the note\r\nfourth line"_s;
        for (int i = 1; i <= 1000; ++i)
            t.add(numberKey(i), row(u"Qx%1"_s.arg(i, 4, 10, QChar(u'0')), u"Customer"_s, u"%1 Long Road"_s.arg(i),
                                    u"Suite %1"_s.arg(i), u"Town"_s, u"c%1@example.com"_s.arg(i), u"555-0100"_s,
                                    note));
        CustomerListOptions o;
        QTemporaryDir dir;
        const QString file = dir.filePath(u"list.pdf"_s);
        // Measured on the PDF writer the pages are for.
        QBuffer probe;
        probe.open(QIODevice::WriteOnly);
        QPdfWriter writer(&probe);
        writer.setResolution(1440);
        const QList<Page> pages = composeCustomerList(t, o, &writer);
        QVERIFY(pages.size() >= 2);
        QVERIFY(writePdf(pages, file));
        QString why;
        const QList<PdfWord> words = readPdfWords(file, &why);
        QVERIFY2(!words.isEmpty(), qPrintable(why));
        QSet<int> titled;
        int lastPage = -1;
        for (const PdfWord &w : words) {
            if (w.text == u"List" && w.top < 1560)
                titled << w.page;
            if (w.text.startsWith(u"#"_s)) {
                QCOMPARE(w.text, u"#%1"_s.arg(w.page + 1));
                QVERIFY(w.bottom <= PageNumberBottom + 40 && w.bottom > PageNumberBottom - 300);
            } else if (w.text != u"Page") {  // nothing else runs below the column's room
                QVERIFY2(w.bottom <= 1560 + ColumnFullHeight + 60, qPrintable(w.text));
            }
            lastPage = std::max(lastPage, w.page);
        }
        QCOMPARE(lastPage + 1, pages.size());
        QCOMPARE(titled.size(), pages.size());
    }
};

QTEST_MAIN(TstCustomerList)
#include "tst_customerlist.moc"
