// SPDX-License-Identifier: GPL-3.0-or-later
#include "pages/templates.h"

#include <QRgb>

namespace qor::pages {

namespace {

// Which forms a row belongs to.
enum Forms : unsigned {
    P0 = 1,  // frmPrint0
    P1 = 2,  // frmPrint1
    P2 = 4,  // frmPrint2
    PC = 8,  // frmPrintC
    Invoices = P0 | P1 | P2,
};

enum Style : unsigned char { Regular,
                             Bold,
                             Italic };

constexpr QRgb Black = 0x000000;
constexpr QRgb DarkGrey = 0x404040;
constexpr QRgb Grey = 0x808080;
constexpr QRgb LightGrey = 0xC0C0C0;

// One element of one or more forms. For lines a, b, c, d are X1, Y1, X2, Y2;
// for everything else Left, Top, Width, Height. A row with count n > 1 stands
// for the indexed set name(0) .. name(n-1), each `pitch` twips below the one
// before it.
struct Row {
    unsigned forms;
    const char *name;
    Kind kind;
    int a, b, c, d;
    double size;
    Style style;
    Align align;
    QRgb colour;
    const char *text;
    int pen = 1;
    bool rounded = false;
    bool visible = true;
    AutoSize autoSize = AutoSize::Fixed;
    bool opaque = false;
    const char *font = "Arial";
    int count = 1;
    int pitch = 0;
};

constexpr Align L = Align::Left;
constexpr Align R = Align::Right;
constexpr Align C = Align::Centre;
constexpr Kind T = Kind::Text;

// Drawing order is table order: frames first, then the texts, the paid stamp
// last so it lies over everything; on the list page each column lies over the
// one to its left.
const Row Rows[] = {
    // Frames of frmPrint0 and frmPrint1.
    {P0, "Shape1", Kind::Box, 600, 2400, 10215, 1215, 0, Regular, L, DarkGrey, "", 2, true},
    {P0, "Shape2", Kind::Box, 600, 4080, 10215, 1575, 0, Regular, L, DarkGrey, "", 2, true},
    {P0, "Line1", Kind::Line, 5700, 2400, 5700, 3600, 0, Regular, L, DarkGrey, "", 2},
    {P0, "Line2", Kind::Line, 5700, 4080, 5700, 5640, 0, Regular, L, DarkGrey, "", 2},
    {P1, "Line1", Kind::Line, 600, 3600, 10800, 3600, 0, Regular, L, Black, "", 2},

    // The item box, the same on all three.
    {Invoices, "shpPSBox", Kind::Box, 600, 6720, 10215, 5415, 0, Regular, L, DarkGrey, "", 2},
    {Invoices, "Line3", Kind::Line, 600, 7200, 10800, 7200, 0, Regular, L, Grey, "", 2},
    {Invoices, "lnePSAmDivider", Kind::Line, 8640, 6720, 8640, 12120, 0, Regular, L, Grey, "", 2},
    {Invoices, "lneAboveTotal", Kind::Line, 600, 11640, 10800, 11640, 0, Regular, L, Grey, "", 2},
    {Invoices, "lnePS", Kind::Line, 600, 7560, 10800, 7560, 0, Regular, L, LightGrey, "", 1, false, true,
     AutoSize::Fixed, false, "Arial", 12, 360},

    // The texts that stand differently on each invoice form.
    {P0, "lblCompanyName", T, 600, 1440, 7095, 375, 18, Regular, L, Black, "[COMPANY NAME]"},
    {P1, "lblCompanyName", T, 600, 1440, 10215, 375, 18, Regular, C, Black, "[COMPANY NAME]"},
    {P2, "lblCompanyName", T, 840, 1440, 6975, 375, 18, Regular, L, Black, "[COMPANY NAME]"},
    {P0, "lblCompanySlogan", T, 600, 1800, 7095, 300, 11.25, Italic, L, Black, "[optional company slogan]"},
    {P1, "lblCompanySlogan", T, 600, 1800, 10215, 255, 11.25, Italic, C, Black, "[optional company slogan]"},
    {P2, "lblCompanySlogan", T, 840, 1800, 6975, 300, 11.25, Italic, L, Black, "[optional company slogan]"},
    {P0, "lblInvoiceTitle", T, 7860, 1335, 2955, 840, 36, Bold, R, Grey, "INVOICE", 1, false, true,
     AutoSize::KeepRight},
    {P1, "lblInvoiceTitle", T, 840, 3840, 2955, 840, 15.75, Bold, L, Grey, "INVOICE"},
    {P2, "lblInvoiceTitle", T, 7680, 1440, 2955, 840, 24, Bold, R, Grey, "INVOICE"},
    {P0, "lblCompanyAddress(0)", T, 840, 2520, 4815, 255, 9.75, Bold, L, Black, "[CompanyAddress1]"},
    {P1, "lblCompanyAddress(0)", T, 600, 2400, 10215, 255, 9, Regular, C, Black, "[CompanyAddress1]"},
    {P2, "lblCompanyAddress(0)", T, 840, 2400, 4815, 255, 9.75, Bold, L, Black, "[CompanyAddress1]"},
    {P0, "lblCompanyAddress(1)", T, 840, 2760, 4815, 255, 9.75, Bold, L, Black, "[CompanyAddress2]"},
    {P1, "lblCompanyAddress(1)", T, 600, 2640, 10215, 255, 9, Regular, C, Black, "[CompanyAddress2]"},
    {P2, "lblCompanyAddress(1)", T, 840, 2640, 4815, 255, 9.75, Bold, L, Black, "[CompanyAddress2]"},
    {P0, "lblCompanyAddress(2)", T, 840, 3000, 4815, 255, 9.75, Bold, L, Black, "[CompanyAddress3]"},
    {P1, "lblCompanyAddress(2)", T, 600, 2880, 10215, 255, 9, Regular, C, Black, "[CompanyAddress3]"},
    {P2, "lblCompanyAddress(2)", T, 840, 2880, 4815, 255, 9.75, Bold, L, Black, "[CompanyAddress3]"},
    {P0, "lblCompanyAddress(3)", T, 840, 3240, 4815, 255, 9.75, Bold, L, Black, "[CompanyAddress4]"},
    {P1, "lblCompanyAddress(3)", T, 600, 3120, 10215, 255, 9, Regular, C, Black, "[CompanyAddress4]"},
    {P2, "lblCompanyAddress(3)", T, 840, 3120, 4815, 255, 9.75, Bold, L, Black, "[CompanyAddress4]"},
    {P0, "lblInvoiceDate", T, 5700, 2595, 5115, 330, 14.25, Bold, C, Black, "[INVOICE DATE: 01/01/2001]", 1,
     false, false},
    {P1, "lblInvoiceDate", T, 6000, 3840, 4815, 375, 14.25, Bold, R, Black, "[INVOICE DATE: 01/01/2001]", 1,
     false, false},
    {P2, "lblInvoiceDate", T, 5520, 2400, 5115, 330, 12, Regular, R, Black, "[INVOICE DATE: 01/01/2001]", 1,
     false, false},
    {P0, "lblBillDue", T, 5700, 2835, 5115, 330, 14.25, Bold, C, Black, "[BILL DUE: 01/01/2001]"},
    {P1, "lblBillDue", T, 6000, 4200, 4815, 375, 14.25, Bold, R, Black, "[BILL DUE: 01/01/2001]"},
    {P2, "lblBillDue", T, 5520, 2760, 5115, 330, 12, Regular, R, Black, "[BILL DUE: 01/01/2001]"},
    {P0, "lblBillTo(0)", T, 840, 4200, 4815, 255, 9.75, Bold, L, Black, "Bill To:"},
    {P1, "lblBillTo(0)", T, 840, 4680, 4815, 255, 9.75, Bold, L, Black, "Bill To:"},
    {P2, "lblBillTo(0)", T, 840, 4320, 4815, 255, 9.75, Bold, L, Black, "Bill To:"},
    {P0, "lblBillTo(1)", T, 840, 4560, 4815, 255, 9.75, Bold, L, Black, "[BillTo1]"},
    {P1, "lblBillTo(1)", T, 840, 5040, 4815, 255, 9.75, Bold, L, Black, "[BillTo1]"},
    {P2, "lblBillTo(1)", T, 840, 4680, 4815, 255, 9.75, Bold, L, Black, "[BillTo1]"},
    {P0, "lblBillTo(2)", T, 840, 4800, 4815, 255, 9.75, Bold, L, Black, "[BillTo2]"},
    {P1, "lblBillTo(2)", T, 840, 5280, 4815, 255, 9.75, Bold, L, Black, "[BillTo2]"},
    {P2, "lblBillTo(2)", T, 840, 4920, 4815, 255, 9.75, Bold, L, Black, "[BillTo2]"},
    {P0, "lblBillTo(3)", T, 840, 5040, 4815, 255, 9.75, Bold, L, Black, "[BillTo3]"},
    {P1, "lblBillTo(3)", T, 840, 5520, 4815, 255, 9.75, Bold, L, Black, "[BillTo3]"},
    {P2, "lblBillTo(3)", T, 840, 5160, 4815, 255, 9.75, Bold, L, Black, "[BillTo3]"},
    {P0, "lblBillTo(4)", T, 840, 5280, 4815, 255, 9.75, Bold, L, Black, "[BillTo4]"},
    {P1, "lblBillTo(4)", T, 840, 5760, 4815, 255, 9.75, Bold, L, Black, "[BillTo4]"},
    {P2, "lblBillTo(4)", T, 840, 5400, 4815, 255, 9.75, Bold, L, Black, "[BillTo4]"},
    {P0, "lblFor", T, 5940, 4200, 4815, 255, 9.75, Bold, L, Black, "For:"},
    {P1, "lblFor", T, 6000, 4680, 4815, 255, 9.75, Bold, L, Black, "For:"},
    {P2, "lblFor", T, 5940, 4320, 4815, 255, 9.75, Bold, L, Black, "For:"},
    {P0, "lblGeneralInvoiceDescription", T, 5940, 4560, 4815, 255, 9.75, Bold, L, Black,
     "[General Invoice Description]"},
    {P1, "lblGeneralInvoiceDescription", T, 6000, 5040, 4815, 255, 9.75, Bold, L, Black,
     "[General Invoice Description]"},
    {P2, "lblGeneralInvoiceDescription", T, 5940, 4680, 4815, 255, 9.75, Bold, L, Black,
     "[General Invoice Description]"},

    // The texts that are the same on all three.
    {Invoices, "lblDescription", T, 600, 6840, 8055, 375, 12, Bold, C, Black, "DESCRIPTION"},
    {Invoices, "lblAmount", T, 8640, 6840, 2175, 375, 12, Bold, C, Black, "AMOUNT"},
    {Invoices, "lblPS", T, 840, 7320, 7695, 255, 11.25, Regular, L, Black, "", 1, false, true, AutoSize::Fixed,
     false, "Arial", 12, 360},
    {Invoices, "lblAm", T, 8640, 7320, 2175, 255, 11.25, Regular, C, Black, "", 1, false, true, AutoSize::Fixed,
     false, "Arial", 12, 360},
    {Invoices, "lblTotalDue", T, 6120, 11760, 2175, 255, 12, Bold, R, Black, "TOTAL DUE:"},
    {Invoices, "lblTotalAm", T, 8640, 11760, 2175, 255, 12, Bold, C, Black, "[total]"},
    // "Page n of m" of an invoice longer than one page, at the left of the total row.
    {Invoices, "lblPageNumber", T, 840, 11760, 4815, 255, 11.25, Regular, L, Black, "", 1, false, false},
    {Invoices, "lblNote", T, 600, 12600, 10215, 255, 12, Bold, C, Black, "NOTE: "},
    {Invoices, "lblChecksPayableTo", T, 600, 13320, 10215, 255, 9.75, Regular, L, Black,
     "Please make all checks payable to "},
    {Invoices, "lblCompanyPhone", T, 600, 13680, 10215, 255, 9.75, Regular, L, Black,
     "If you have any questions about your bill, please call: "},
    {Invoices, "lblInvoiceClosing", T, 600, 14160, 10215, 375, 15.75, Bold, C, Black,
     "THANK YOU FOR YOUR BUSINESS!"},
    // 387 by 244 pixels at 15 twips a pixel.
    {Invoices, "imgPaid", Kind::Picture, 1680, 7680, 5805, 3660, 0, Regular, L, Black, "", 1, false, false},

    // The customer list page. The columns size themselves to their text and
    // hide what lies under them, so a line too wide for its column is cut
    // where the next column begins.
    {PC, "lblPageTitle", T, 540, 840, 10455, 495, 18, Regular, C, Black, ""},
    {PC, "lblList(0)", T, 600, 1560, 0, 0, 8.25, Regular, L, Black, "", 1, false, true, AutoSize::KeepLeft, true},
    {PC, "lblList(1)", T, 3240, 1560, 0, 0, 8.25, Regular, L, Black, "", 1, false, true, AutoSize::KeepLeft, true},
    {PC, "lblList(2)", T, 5880, 1560, 0, 0, 8.25, Regular, L, Black, "", 1, false, true, AutoSize::KeepLeft, true},
    {PC, "lblList(3)", T, 8520, 1560, 0, 0, 8.25, Regular, L, Black, "", 1, false, true, AutoSize::KeepLeft, true},
    // The page number is in the form's default font.
    {PC, "lblList(4)", T, 5520, 14280, 0, 0, 8.25, Regular, C, Black, "", 1, false, true, AutoSize::KeepLeft,
     true, "MS Sans Serif"},
};

Element elementOf(const Row &r, int index)
{
    Element e;
    e.name = r.count > 1 ? indexedName(QString::fromLatin1(r.name), index) : QString::fromLatin1(r.name);
    e.kind = r.kind;
    const int shift = index * r.pitch;
    if (r.kind == Kind::Line) {
        e.x1 = r.a;
        e.y1 = r.b + shift;
        e.x2 = r.c;
        e.y2 = r.d + shift;
    } else {
        e.left = r.a;
        e.top = r.b + shift;
        e.width = r.c;
        e.height = r.d;
    }
    e.text = QString::fromLatin1(r.text);
    e.fontName = QString::fromLatin1(r.font);
    e.fontSize = r.size;
    e.bold = r.style == Bold;
    e.italic = r.style == Italic;
    e.align = r.align;
    e.autoSize = r.autoSize;
    e.opaque = r.opaque;
    e.colour = QColor::fromRgb(r.colour);
    e.penPixels = r.pen;
    e.rounded = r.rounded;
    e.visible = r.visible;
    if (r.kind == Kind::Picture)
        e.picture = QStringLiteral("paid");
    return e;
}

Page build(unsigned form, const char *name, int width, int height)
{
    QList<Element> elements;
    for (const Row &r : Rows) {
        if (!(r.forms & form))
            continue;
        for (int i = 0; i < r.count; ++i)
            elements.append(elementOf(r, i));
    }
    return Page(QString::fromLatin1(name), width, height, std::move(elements));
}

struct Forms4 {
    Page print0 = build(P0, "frmPrint0", InvoiceWidth, InvoiceHeight);
    Page print1 = build(P1, "frmPrint1", InvoiceWidth, InvoiceHeight);
    Page print2 = build(P2, "frmPrint2", InvoiceWidth, InvoiceHeight);
    Page printC = build(PC, "frmPrintC", ListWidth, ListHeight);
};

const Forms4 &forms()
{
    static const Forms4 f;
    return f;
}

}  // namespace

const Page *pageTemplate(const QString &formName)
{
    const Forms4 &f = forms();
    for (const Page *p : {&f.print0, &f.print1, &f.print2, &f.printC}) {
        if (p->name() == formName)
            return p;
    }
    return nullptr;
}

const Page *invoiceTemplate(int number)
{
    const Forms4 &f = forms();
    switch (number) {
    case 0: return &f.print0;
    case 1: return &f.print1;
    case 2: return &f.print2;
    default: return nullptr;
    }
}

}  // namespace qor::pages
