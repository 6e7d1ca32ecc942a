// SPDX-License-Identifier: GPL-3.0-or-later
#include "pages/invoice.h"

#include "pages/templates.h"
#include "pages/textlayout.h"

#include <algorithm>
#include <cmath>

namespace qor::pages {

namespace re = qor::regional;

InvoiceLine InvoiceLine::item(const QString &name, qint64 quantity, Money amount)
{
    return {quantity == 1 ? name : name + QStringLiteral(" (x%1)").arg(quantity), amount, false};
}

InvoiceLine InvoiceLine::invoiceNote(const QString &note) { return {note, Money(), true}; }

Money InvoiceInput::billed() const
{
    Money sum;
    for (const InvoiceLine &l : lines)
        if (!l.note)
            sum += l.amount;
    return sum;
}

namespace {

// The title, the company, the customer and the dates: the same on every page.
void composeHeader(Page &page, const InvoiceInput &in)
{
    const InvoiceOptions &opt = in.options;
    const int form = opt.templateNumber;

    // Title size and text.
    Element &title = page.at(QStringLiteral("lblInvoiceTitle"));
    title.fontSize = opt.titleSize == TitleSize::Small ? 16 : opt.titleSize == TitleSize::Medium ? 24
                                                                                                 : 36;
    title.text = opt.title == TitleOption::Invoice    ? QStringLiteral("INVOICE")
                 : opt.title == TitleOption::Estimate ? QStringLiteral("ESTIMATE")
                                                      : opt.titleText;
    fitAutoSize(title);
    // The two forms whose title keeps its box would cut a word wider than the
    // box ("INVOIC" at the large size): the box widens from its aligned edge
    // instead, so the title always reads whole.
    if (title.autoSize == AutoSize::Fixed) {
        const PageFont &font = pageFont(title);
        double widest = 0;
        for (const QString &word : title.text.split(u' ', Qt::SkipEmptyParts))
            widest = std::max(widest, font.advance(word));
        const int need = int(std::ceil(widest));
        if (need > title.width) {
            if (title.align == Align::Right)
                title.left -= need - title.width;
            else if (title.align == Align::Centre)
                title.left -= (need - title.width) / 2;
            title.width = need;
        }
    }

    // Company block; the address block repeats the name as its first line.
    page.at(QStringLiteral("lblCompanyName")).text = in.company[0];
    page.at(QStringLiteral("lblCompanySlogan")).text = in.company[5];
    for (int i = 0; i < 4; ++i)
        page.at(QStringLiteral("lblCompanyAddress"), i).text = in.company[i];
    // Without a fourth line the others move down, on the two forms that
    // frame or centre the block.
    if ((form == 0 || form == 1) && in.company[3].isEmpty()) {
        page.at(QStringLiteral("lblCompanyAddress"), 0).top = 2640;
        page.at(QStringLiteral("lblCompanyAddress"), 1).top = 2880;
        page.at(QStringLiteral("lblCompanyAddress"), 2).top = 3120;
    }

    // Bill-to block.
    page.at(QStringLiteral("lblBillTo"), 1).text = in.customer[1] + u' ' + in.customer[2];
    for (int i = 2; i <= 4; ++i)
        page.at(QStringLiteral("lblBillTo"), i).text = in.customer[i + 1];

    page.at(QStringLiteral("lblGeneralInvoiceDescription")).text = in.company[6];
    Element &due = page.at(QStringLiteral("lblBillDue"));
    due.text = QStringLiteral("BILL DUE: ") + in.billDue;

    // The invoice date, and where the due date goes with or without it.
    Element &date = page.at(QStringLiteral("lblInvoiceDate"));
    if (opt.addInvoiceDate) {
        date.text = QStringLiteral("INVOICE DATE: ") + re::formatDate(in.invoiceDate, in.dateFormat);
        date.visible = true;
        if (form == 0)
            due.top = 3030;
    } else if (form == 1) {
        due.top = 3840;
    } else if (form == 2) {
        due.top = 2400;
    }
}

// "Billed:" or "Paid:" in a line of the box, right-aligned as the total's
// caption is, with its amount.
void summaryLine(Page &page, int slot, const QString &caption, Money amount, const QLocale &locale)
{
    const Element &total = page.at(QStringLiteral("lblTotalDue"));
    Element &label = page.at(QStringLiteral("lblPS"), slot);
    label.text = caption;
    label.align = Align::Right;
    label.width = total.left + total.width - label.left;
    Element &am = page.at(QStringLiteral("lblAm"), slot);
    am.text = amount.toCurrencyText(locale);
    fitOnOneLine(am);
}

}  // namespace

QList<Page> composeInvoice(const InvoiceInput &in)
{
    const Page *form = invoiceTemplate(in.options.templateNumber);
    if (!form || in.lines.isEmpty())
        return {};
    const InvoiceOptions &opt = in.options;
    const Money billed = in.billed();
    // A part payment shows what was billed and what was paid in the last two
    // lines of the box; a balance above what was billed (a typed one, or an
    // old misreading) shows neither.
    const bool partPaid = in.balance.isPositive() && in.balance < billed;
    const int summary = partPaid ? 2 : 0;
    const qsizetype count = in.lines.size();
    const int pageCount = int((count + summary + MaxLines - 1) / MaxLines);

    Page header = *form;
    composeHeader(header, in);
    QList<Page> out;
    QString invoiceNote;
    qsizetype next = 0;
    for (int p = 1; p <= pageCount; ++p) {
        Page page = header;
        const bool last = p == pageCount;
        // A page before the last leaves at least one line for it, so the
        // total never stands under an empty box.
        const qsizetype room = last ? MaxLines : std::min<qsizetype>(MaxLines, count - next - 1);
        int lineIndex = -1;
        for (; next < count && lineIndex + 1 < room; ++next) {
            const InvoiceLine &line = in.lines[next];
            ++lineIndex;
            if (line.note) {
                // The note keeps its line blank and prints under the box.
                invoiceNote = line.text;
                continue;
            }
            page.at(QStringLiteral("lblPS"), lineIndex).text = line.text;
            Element &am = page.at(QStringLiteral("lblAm"), lineIndex);
            am.text = line.amount.toCurrencyText(in.locale);
            fitOnOneLine(am);
        }
        if (pageCount > 1) {
            Element &number = page.at(QStringLiteral("lblPageNumber"));
            number.text = QStringLiteral("Page %1 of %2").arg(p).arg(pageCount);
            number.visible = true;
        }
        if (!last) {
            page.at(QStringLiteral("lblTotalDue")).visible = false;
            page.at(QStringLiteral("lblTotalAm")).visible = false;
            for (const char *name : {"lblNote", "lblChecksPayableTo", "lblCompanyPhone", "lblInvoiceClosing"})
                page.at(QString::fromLatin1(name)).text.clear();
            out << page;
            continue;
        }

        const int lastSlot = lineIndex + summary;
        if (!opt.keepTwelveLines)
            CompactInvoiceLines(page, lastSlot, opt.moveBottomText);
        if (partPaid) {
            const int boxLines = opt.keepTwelveLines || lastSlot > 10 ? MaxLines : lastSlot + 1;
            summaryLine(page, boxLines - 2, QStringLiteral("Billed:"), billed, in.locale);
            summaryLine(page, boxLines - 1, QStringLiteral("Paid:"), billed - in.balance, in.locale);
        }
        page.at(QStringLiteral("lblNote")).text =
            invoiceNote.isEmpty() ? QString() : QStringLiteral("NOTE: ") + invoiceNote;
        page.at(QStringLiteral("lblChecksPayableTo")).text =
            in.company[7].isEmpty() ? QString() : QStringLiteral("Please make all checks payable to: ") + in.company[7];
        page.at(QStringLiteral("lblCompanyPhone")).text =
            in.company[4].isEmpty()
                ? QString()
                : QStringLiteral("If you have any questions about your bill, please call: ") + in.company[4];
        page.at(QStringLiteral("lblInvoiceClosing")).text = in.company[8];
        // The total due is what the customer still owes; paid in full, the
        // stamp says so.
        page.at(QStringLiteral("imgPaid")).visible = in.balance.isZero();
        Element &total = page.at(QStringLiteral("lblTotalAm"));
        total.text = in.balance.toCurrencyText(in.locale);
        fitOnOneLine(total);
        out << page;
    }
    return out;
}

void CompactInvoiceLines(Page &page, int n, bool moveBottomText)
{
    if (n > 10)
        return;
    for (int i = 0; i < MaxLines; ++i)
        page.at(QStringLiteral("lnePS"), i).visible = i <= n;
    const qint16 delta = qint16((11 - n) * LinePitch);
    Element &above = page.at(QStringLiteral("lneAboveTotal"));
    above.y1 -= delta;
    above.y2 -= delta;
    page.at(QStringLiteral("lblTotalDue")).top -= delta;
    page.at(QStringLiteral("lblTotalAm")).top -= delta;
    page.at(QStringLiteral("lblPageNumber")).top -= delta;
    page.at(QStringLiteral("shpPSBox")).height -= delta;
    page.at(QStringLiteral("lnePSAmDivider")).y2 -= delta;
    if (moveBottomText) {
        for (const char *name : {"lblNote", "lblChecksPayableTo", "lblCompanyPhone", "lblInvoiceClosing"})
            page.at(QString::fromLatin1(name)).top -= delta;
    }
}

}  // namespace qor::pages
