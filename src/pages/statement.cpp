// SPDX-License-Identifier: GPL-3.0-or-later
#include "pages/statement.h"

#include "pages/templates.h"
#include "pages/textlayout.h"

#include <QRgb>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <memory>

namespace qor::pages {

namespace {

using namespace statementpage;

constexpr int Left = 600;
constexpr int Right = 10815;
constexpr int FullWidth = Right - Left;
constexpr int TableTop = 6720;       // where the invoices' item box starts
constexpr int LetterTop = 6240;      // a reminder's text, under the customer block
constexpr int ContinuedTop = 1620;   // content of the pages after the first
constexpr int HeaderHeight = 480;    // column captions and their rule
constexpr int SummaryHeight = 1320;  // aging box and total, without a credits line
constexpr double RowPoints = 10;
constexpr double LetterPoints = 11;

const QColor DarkGrey = QColor::fromRgb(0x404040);
const QColor Grey = QColor::fromRgb(0x808080);
const QColor LightGrey = QColor::fromRgb(0xC0C0C0);

struct Column {
    int left, width;
    Align align;
    const char *caption;
};
constexpr Column Columns[] = {
    {720, 3420, Align::Left, "BILL PERIOD"},
    {4200, 1500, Align::Centre, "BILL DUE"},
    {5760, 1500, Align::Right, "BILLED"},
    {7380, 1560, Align::Right, "PAID"},
    {9060, 1635, Align::Right, "BALANCE"},
};
constexpr int AmountLeft = 9060, AmountWidth = 1635;

// An amount (`amount`) is never broken over lines: it gets a smaller size where it is too wide.
Element text(const QString &name, int left, int top, int width, int height, double points, bool bold, Align align,
             const QString &t, const QColor &colour = Qt::black, bool amount = false)
{
    Element e;
    e.name = name;
    e.left = left;
    e.top = top;
    e.width = width;
    e.height = height;
    e.fontSize = points;
    e.bold = bold;
    e.align = align;
    e.text = t;
    e.colour = colour;
    if (amount)
        fitOnOneLine(e);
    return e;
}

Element rule(const QString &name, int x1, int y1, int x2, int y2, const QColor &colour, int pen)
{
    Element e;
    e.name = name;
    e.kind = Kind::Line;
    e.x1 = x1;
    e.y1 = y1;
    e.x2 = x2;
    e.y2 = y2;
    e.colour = colour;
    e.penPixels = pen;
    return e;
}

Element frame(const QString &name, int left, int top, int width, int height)
{
    Element e;
    e.name = name;
    e.kind = Kind::Box;
    e.left = left;
    e.top = top;
    e.width = width;
    e.height = height;
    e.colour = DarkGrey;
    e.penPixels = 2;
    return e;
}

// The parts of an invoice form that a statement draws its own way: the item
// box with its lines and total, the note, the stamp and the foot.
bool isInvoiceBody(const QString &name)
{
    static const char *const prefixes[] = {"shpPSBox", "Line3", "lnePSAmDivider", "lneAboveTotal", "lnePS(",
                                           "lblDescription", "lblAmount", "lblPS(", "lblAm(", "lblTotalDue",
                                           "lblTotalAm", "lblNote", "imgPaid", "lblChecksPayableTo",
                                           "lblCompanyPhone", "lblInvoiceClosing"};
    for (const char *p : prefixes)
        if (name.startsWith(QLatin1String(p)))
            return true;
    return false;
}

// An invoice form without the parts a statement draws its own way, and the
// form's foot lines for the last page: the same for every statement in that
// layout, so sorted out once.
struct StatementForm {
    Page page;
    Element foot[3];
};

const StatementForm &statementForm(const Page *form)
{
    static QHash<const Page *, std::shared_ptr<const StatementForm>> forms;
    if (const auto it = forms.constFind(form); it != forms.constEnd())
        return **it;
    auto made = std::make_shared<StatementForm>();
    QList<Element> kept;
    for (const Element &e : form->elements()) {
        if (!isInvoiceBody(e.name))
            kept << e;
        else if (e.name == u"lblChecksPayableTo")
            made->foot[0] = e;
        else if (e.name == u"lblCompanyPhone")
            made->foot[1] = e;
        else if (e.name == u"lblInvoiceClosing")
            made->foot[2] = e;
    }
    made->page = Page(form->name(), form->width(), form->height(), std::move(kept));
    forms.insert(form, made);
    return *made;
}

class Composer {
public:
    explicit Composer(const StatementInput &in) : in(in)
    {
        form = invoiceTemplate(in.templateNumber);
        if (!form)
            form = invoiceTemplate(0);
        title = in.reminder ? QStringLiteral("PAYMENT REMINDER") : QStringLiteral("STATEMENT OF ACCOUNT");
        customerName = (in.customer[1] + u' ' + in.customer[2]).trimmed();
        if (customerName.isEmpty())
            customerName = in.customer[0];
    }

    QList<Page> run()
    {
        firstPage();
        if (in.reminder)
            letter();
        table();
        summary();
        closing();
        QList<Page> out;
        out.reserve(pages.size());
        const int count = int(pages.size());
        for (int i = 0; i < count; ++i) {
            // Page numbers only where there is more than one page.
            if (count > 1)
                pages[i].append(text(QStringLiteral("lblPageNumber"), 7815, 360, 3000, 255, 9, false, Align::Right,
                                     QStringLiteral("Page %1 of %2").arg(i + 1).arg(count)));
            out << Page(QStringLiteral("statement"), InvoiceWidth, InvoiceHeight, std::move(pages[i]));
        }
        return out;
    }

private:
    QString money(Money m) const { return m.toCurrencyText(in.locale); }
    QList<Element> &page() { return pages.last(); }

    // The first page: the chosen invoice form's company and customer blocks,
    // with the title and the date of the statement.
    void firstPage()
    {
        const StatementForm &shape = statementForm(form);
        Page p = shape.page;
        std::copy(std::begin(shape.foot), std::end(shape.foot), std::begin(foot));
        const int number = form == invoiceTemplate(1) ? 1 : form == invoiceTemplate(2) ? 2
                                                                                       : 0;
        Element &t = p.at(QStringLiteral("lblInvoiceTitle"));
        t.text = title;
        t.fontSize = number == 1 ? 15.75 : 16;
        if (t.autoSize != AutoSize::Fixed) {
            fitAutoSize(t);
        } else {
            // One line: the box widens from its aligned edge when it must.
            const int need = int(std::ceil(pageFont(t).advance(t.text)));
            if (need > t.width) {
                if (t.align == Align::Right)
                    t.left -= need - t.width;
                t.width = need;
            }
        }
        p.at(QStringLiteral("lblCompanyName")).text = in.company[0];
        p.at(QStringLiteral("lblCompanySlogan")).text = in.company[5];
        for (int i = 0; i < 4; ++i)
            p.at(QStringLiteral("lblCompanyAddress"), i).text = in.company[size_t(i)];
        if (number != 2 && in.company[3].isEmpty()) {
            p.at(QStringLiteral("lblCompanyAddress"), 0).top = 2640;
            p.at(QStringLiteral("lblCompanyAddress"), 1).top = 2880;
            p.at(QStringLiteral("lblCompanyAddress"), 2).top = 3120;
        }
        p.at(QStringLiteral("lblBillTo"), 1).text = in.customer[1] + u' ' + in.customer[2];
        for (int i = 2; i <= 4; ++i)
            p.at(QStringLiteral("lblBillTo"), i).text = in.customer[size_t(i + 1)];
        p.at(QStringLiteral("lblFor")).text = QStringLiteral("Account:");
        p.at(QStringLiteral("lblGeneralInvoiceDescription")).text = QStringLiteral("Customer number ") + in.cid;
        // The date and the amount stand where an invoice has its date and due date.
        Element &date = p.at(QStringLiteral("lblInvoiceDate"));
        date.text = QStringLiteral("DATE: ") + in.date;
        date.visible = true;
        Element &due = p.at(QStringLiteral("lblBillDue"));
        due.text = QStringLiteral("AMOUNT DUE: ") + money(in.total);
        if (number == 0)
            due.top = 3030;

        pages << std::move(p.elements());
        y = in.reminder ? LetterTop : TableTop;
    }

    // A further page: a short heading, then the content from the top.
    void newPage()
    {
        QList<Element> e;
        e << text(QStringLiteral("lblContCompany"), Left, 720, 6000, 330, 12, true, Align::Left, in.company[0]);
        e << text(QStringLiteral("lblContTitle"), 5400, 720, Right - 5400, 330, 12, true, Align::Right,
                  title + QStringLiteral(" (continued)"), Grey);
        e << text(QStringLiteral("lblContCustomer"), Left, 1080, 6000, 255, 9.75, false, Align::Left,
                  customerName + QStringLiteral(", customer number ") + in.cid);
        e << text(QStringLiteral("lblContDate"), 5400, 1080, Right - 5400, 255, 9.75, false, Align::Right,
                  QStringLiteral("DATE: ") + in.date);
        e << rule(QStringLiteral("lneContHeading"), Left, 1410, Right, 1410, DarkGrey, 2);
        pages << e;
        y = ContinuedTop;
    }

    void letter()
    {
        const PageFont &font = pageFont(QStringLiteral("Arial"), LetterPoints, false, false);
        const int pitch = int(std::ceil(font.metrics.lineSpacing()));
        int n = 0;
        const QStringList paragraphs = QString(in.letter).replace(QLatin1String("\r\n"), QLatin1String("\n")).replace(u'\r', u'\n').split(u'\n');
        for (const QString &paragraph : paragraphs) {
            QStringList lines;
            if (!paragraph.trimmed().isEmpty()) {
                // Wrapped as the painter wraps it, then placed line by line so
                // a long letter runs on to the next page.
                Element probe = text({}, Left, 0, FullWidth, 1 << 24, LetterPoints, false, Align::Left, paragraph);
                for (const TextLine &l : layoutText(probe))
                    lines << l.text;
            } else {
                lines << QString();
            }
            for (const QString &l : lines) {
                if (y + pitch > ContentBottom)
                    newPage();
                if (!l.isEmpty())
                    page() << text(indexedName(QStringLiteral("lblLetter"), n++), Left, y, FullWidth + 60, pitch,
                                   LetterPoints, false, Align::Left, l);
                y += pitch;
            }
        }
        y += 240;
    }

    // The open records, as many to a page as fit, the captions on each page.
    void table()
    {
        const qsizetype total = in.lines.size();
        qsizetype next = 0;
        int part = 0;
        while (next < total) {
            int room = (ContentBottom - y - HeaderHeight - 30) / RowPitch;
            if (room < 1) {
                newPage();
                room = (ContentBottom - y - HeaderHeight - 30) / RowPitch;
            }
            const qsizetype n = std::min<qsizetype>(room, total - next);
            tablePart(part++, next, n);
            next += n;
            if (next < total)
                newPage();
        }
    }

    void tablePart(int part, qsizetype from, qsizetype n)
    {
        QList<Element> &e = page();
        const QString p = QString::number(part);
        const int bottom = y + HeaderHeight + int(n) * RowPitch + 30;
        e << frame(QStringLiteral("shpStatement") + p, Left, y, FullWidth, bottom - y);
        for (const Column &c : Columns)
            e << text(QStringLiteral("lblHead") + p + QLatin1String(c.caption), c.left, y + 120, c.width, 255, 9.75,
                      true, c.align, QLatin1String(c.caption));
        e << rule(QStringLiteral("lneHead") + p, Left, y + 420, Right, y + 420, Grey, 2);
        for (qsizetype i = 0; i < n; ++i) {
            const StatementLine &l = in.lines[from + i];
            const int top = y + HeaderHeight + int(i) * RowPitch;
            const QString row = indexedName(QStringLiteral("lblRow"), int(from + i));
            const bool credit = l.balance.isNegative();
            const QString cells[] = {credit ? l.period + QStringLiteral(" (credit)") : l.period, l.due,
                                     money(l.billed), money(l.billed - l.balance), money(l.balance)};
            for (int c = 0; c < 5; ++c)
                e << text(row + QString::number(c), Columns[c].left, top, Columns[c].width, 255, RowPoints, false,
                          Columns[c].align, cells[c], Qt::black, c >= 2);
            if (i + 1 < n)
                e << rule(indexedName(QStringLiteral("lneRow"), int(from + i)), Left, top + 270, Right, top + 270,
                          LightGrey, 1);
        }
        y = bottom;
    }

    // The aging of what is owed, the credits and the total due.
    void summary()
    {
        const int height = SummaryHeight + (in.credits.isZero() ? 0 : RowPitch);
        if (y + height > ContentBottom)
            newPage();
        QList<Element> &e = page();
        const int top = y + 180;
        e << frame(QStringLiteral("shpAging"), Left, top, FullWidth, 600);
        const int cell = FullWidth / 5;
        static const char *const captions[] = {"Not yet due", "1\u201330 days", "31\u201360 days", "61\u201390 days",
                                               "Over 90 days"};
        for (int i = 0; i < 5; ++i) {
            const int left = Left + i * cell;
            if (i > 0)
                e << rule(indexedName(QStringLiteral("lneAging"), i), left, top, left, top + 600, Grey, 1);
            e << text(indexedName(QStringLiteral("lblAgingCaption"), i), left, top + 60, cell, 255, 9, true,
                      Align::Centre, QString::fromUtf8(captions[i]));
            e << text(indexedName(QStringLiteral("lblAging"), i), left, top + 300, cell, 255, RowPoints, false,
                      Align::Centre, money(in.aging[size_t(i)]), Qt::black, true);
        }
        int at = top + 780;
        if (!in.credits.isZero()) {
            e << text(QStringLiteral("lblCreditsCaption"), 5400, at, 3540, 255, RowPoints, false, Align::Right,
                      QStringLiteral("Less credits:"));
            e << text(QStringLiteral("lblCredits"), AmountLeft, at, AmountWidth, 255, RowPoints, false, Align::Right,
                      money(-in.credits), Qt::black, true);
            at += RowPitch;
        }
        e << text(QStringLiteral("lblTotalCaption"), 5400, at, 3540, 300, 12, true, Align::Right,
                  QStringLiteral("TOTAL DUE:"));
        e << text(QStringLiteral("lblTotal"), AmountLeft, at, AmountWidth, 300, 12, true, Align::Right,
                  money(in.total), Qt::black, true);
        y = at + 360;
    }

    // The company's closing lines, at the foot of the last page as on the invoices.
    void closing()
    {
        QList<Element> &e = page();
        if (!in.company[7].isEmpty()) {
            foot[0].text = QStringLiteral("Please make all checks payable to: ") + in.company[7];
            e << foot[0];
        }
        if (!in.company[4].isEmpty()) {
            foot[1].text = QStringLiteral("If you have any questions about your bill, please call: ") + in.company[4];
            e << foot[1];
        }
        if (!in.company[8].isEmpty()) {
            foot[2].text = in.company[8];
            e << foot[2];
        }
    }

    const StatementInput &in;
    const Page *form = nullptr;
    QString title, customerName;
    QList<QList<Element>> pages;
    Element foot[3];
    int y = 0;
};

}  // namespace

QList<Page> composeStatement(const StatementInput &input)
{
    return Composer(input).run();
}

}  // namespace qor::pages
