#include "pages/invoice.h"

#include "database/regional.h"
#include "pages/templates.h"
#include "pages/textlayout.h"

#include <algorithm>
#include <cmath>

namespace qor::pages {

namespace re = qor::regional;

InvoiceLine InvoiceLine::item(const QString &price, const QString &name, int quantity, bool ticked)
{
    QString t = price + QStringLiteral(" - ") + name;
    if (quantity >= 2)
        t += QStringLiteral(" (x") + QString::number(quantity) + u')';
    return {t, ticked};
}

InvoiceLine InvoiceLine::note(const QString &note, bool ticked)
{
    return {QStringLiteral("INVOICE NOTE: ") + note, ticked};
}

int parseBilledQuantity(const QString &s)
{
    // Quantities of one and two digits are read; the value of the digits is
    // what Val gives them, so "(xA)" counts as 0.
    const qsizetype n = s.size();
    if (n >= 5 && s.endsWith(u')') && QStringView(s).mid(n - 5, 3) == QLatin1String(" (x"))
        return int(re::val(QStringView(s).mid(n - 2, 1)));
    if (n >= 6 && s.endsWith(u')') && QStringView(s).mid(n - 6, 3) == QLatin1String(" (x"))
        return int(re::val(QStringView(s).mid(n - 3, 2)));
    return 1;
}

int ComposeInvoice(Page &page, const InvoiceInput &in)
{
    const InvoiceOptions &opt = in.options;
    const int form = opt.templateNumber;

    // Title size and text.
    Element &title = page.at(QStringLiteral("lblInvoiceTitle"));
    title.fontSize = opt.titleSize == TitleSize::Small ? 16 : opt.titleSize == TitleSize::Medium ? 24 : 36;
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

    // Paid stamp.
    if (in.customerNodeText.endsWith(QLatin1String(" - paid")))
        page.at(QStringLiteral("imgPaid")).visible = true;

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

    // The lines: one per ticked child, twelve at most.
    qint16 lineIndex = -1;
    float invoiceTotal = 0.0f;
    QString invoiceNote;
    for (const InvoiceLine &child : in.lines) {
        if (!child.ticked)
            continue;
        ++lineIndex;
        if (lineIndex == MaxLines)
            break;
        if (child.text.startsWith(QLatin1String("INVOICE NOTE: "))) {
            // The note keeps its line blank.
            invoiceNote = child.text.mid(14);
            continue;
        }
        const QStringList pieces = child.text.split(QStringLiteral(" - "));
        const QString description = pieces.value(1);
        page.at(QStringLiteral("lblPS"), lineIndex).text = description;
        // Read by the locale's own marks: "5,00 €" is five, not five hundred.
        const QString price = re::plainAmountText(pieces.value(0), in.currencySymbol);
        const qint16 quantity = qint16(parseBilledQuantity(description));
        const double lineAmount = re::val(price) * quantity;
        const QString amountText = re::str(lineAmount).trimmed();
        page.at(QStringLiteral("lblAm"), lineIndex).text = re::formatCurrency(re::val(amountText));
        // The running total is a 32-bit value, rounded at every step.
        invoiceTotal = float(double(invoiceTotal) + re::val(amountText));
    }

    if (!opt.keepTwelveLines)
        CompactInvoiceLines(page, lineIndex, opt.moveBottomText);
    if (lineIndex < 0)
        return lineIndex;

    page.at(QStringLiteral("lblNote")).text =
        invoiceNote.isEmpty() ? QString() : QStringLiteral("NOTE: ") + invoiceNote;
    page.at(QStringLiteral("lblChecksPayableTo")).text =
        in.company[7].isEmpty() ? QString() : QStringLiteral("Please make all checks payable to: ") + in.company[7];
    page.at(QStringLiteral("lblCompanyPhone")).text =
        in.company[4].isEmpty()
            ? QString()
            : QStringLiteral("If you have any questions about your bill, please call: ") + in.company[4];
    page.at(QStringLiteral("lblInvoiceClosing")).text = in.company[8];
    page.at(QStringLiteral("lblTotalAm")).text =
        re::formatCurrency(page.at(QStringLiteral("imgPaid")).visible ? 0.0 : double(invoiceTotal));
    return lineIndex;
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
    page.at(QStringLiteral("shpPSBox")).height -= delta;
    page.at(QStringLiteral("lnePSAmDivider")).y2 -= delta;
    if (moveBottomText) {
        for (const char *name : {"lblNote", "lblChecksPayableTo", "lblCompanyPhone", "lblInvoiceClosing"})
            page.at(QString::fromLatin1(name)).top -= delta;
    }
}

std::optional<Page> composeInvoicePage(const InvoiceInput &input)
{
    const Page *form = invoiceTemplate(input.options.templateNumber);
    if (!form)
        return std::nullopt;
    Page page = *form;
    if (ComposeInvoice(page, input) < 0)
        return std::nullopt;
    return page;
}

}  // namespace qor::pages
