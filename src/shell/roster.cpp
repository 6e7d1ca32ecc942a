// SPDX-License-Identifier: GPL-3.0-or-later
// The roster of the seven panels as data, and the builder that makes widgets
// of it. One row per control; the program reads the rows, so the place,
// caption and start state of a control is changed in one spot.
#include "shell/roster.h"
#include "uiservices/caption.h"
#include "uiservices/captions.h"
#include "uiservices/fonts.h"

#include "uiservices/assetpaths.h"
#include "uiservices/hovercommand.h"
#include "uiservices/twips.h"

#include <QApplication>
#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QIcon>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QStyleOptionButton>
#include <QStylePainter>
#include <QTreeView>
#include <QTreeWidget>

#include <algorithm>

namespace qor::roster {

namespace {

using K = Kind;
using F = FontStyle;
using A = Align;

// clang-format off
const Entry kRows[] = {
// panel 0, Customers
{0, nullptr, "txtSearch", K::TextBox, "search text", 840, 645, 2175, 315, 141, Hidden, 0, "Search text", F::ByRule, A::ByRule, NoColour, rgb(192, 255, 255)},
{0, nullptr, "cmdSearch", K::Button, "", 3120, 585, 375, 360, 140, NoFlags, 0, "Search"},
{0, nullptr, "txtField(0)", K::TextBox, "", 5400, 600, 2895, 315, 1, NoFlags, 32, "First Name"},
{0, nullptr, "txtField(1)", K::TextBox, "", 5400, 960, 2895, 315, 2, NoFlags, 32, "Last Name"},
{0, nullptr, "txtField(2)", K::TextBox, "", 5400, 1440, 2895, 315, 3, NoFlags, 32, "Address"},
{0, nullptr, "txtField(3)", K::TextBox, "", 5400, 1800, 2895, 315, 4, NoFlags, 32, "Address line 2"},
{0, nullptr, "txtField(4)", K::TextBox, "", 5400, 2160, 2895, 315, 5, NoFlags, 32, "Address line 3"},
{0, nullptr, "txtField(7)", K::TextBox, "", 5040, 3480, 3255, 1935, 8, MultiLine, 0, "Notes"},
{0, nullptr, "txtField(5)", K::TextBox, "", 5400, 2640, 2895, 315, 6, NoFlags, 128, "Email"},
{0, nullptr, "txtField(6)", K::TextBox, "", 5400, 3000, 2895, 315, 7, NoFlags, 128, "Phone #'s"},
{0, nullptr, "cmdUndo", K::Button, captions::DeleteExisting, 4200, 5520, 1935, 615, 9, Hidden},
{0, nullptr, "cmdAddNew", K::Button, captions::NewCustomer, 6360, 5520, 1935, 615, 0},
{0, nullptr, "cmdPrint", K::Button, "", 3600, 585, 375, 360, 11, NoFlags, 0, "Print customer list"},
{0, nullptr, "lvwCustomersVis", K::ListView, "", 120, 960, 3855, 5175, 10, NoFlags, 0, "List of Customers"},
{0, nullptr, "lblFirstName", K::Label, "First Name:", 4080, 615, 1275, 255, 76, NoFlags, 0, nullptr, F::FieldLabel, A::Right},
{0, nullptr, "lblLastName", K::Label, "Last Name:", 4080, 975, 1275, 255, 75, NoFlags, 0, nullptr, F::FieldLabel, A::Right},
{0, nullptr, "lblAddress", K::Label, "Address:", 4080, 1455, 1275, 255, 74, NoFlags, 0, nullptr, F::FieldLabel, A::Right},
{0, nullptr, "lblNotes", K::Label, "Notes:", 4080, 3495, 900, 255, 73, NoFlags, 0, nullptr, F::FieldLabel, A::Right},
{0, nullptr, "lblEmail", K::Label, "Email:", 4080, 2655, 1275, 255, 72, NoFlags, 0, nullptr, F::FieldLabel, A::Right},
{0, nullptr, "lblPhone", K::Label, "Phone #'s:", 4080, 3015, 1275, 255, 71, NoFlags, 0, nullptr, F::FieldLabel, A::Right},
{0, nullptr, "lblCustomers", K::Label, captions::ListOfCustomers, 120, 690, 2730, 210, 70},
{0, nullptr, "lblTop(0)", K::Label, "Customers", 0, 0, 8415, 375, 57, NoFlags, 0, nullptr, F::Title, A::Centre, rgb(0, 128, 0), rgb(255, 255, 255)},

// panel 1, Products && Services
{1, nullptr, "txtProductOrServiceName", K::TextBox, "", 2160, 840, 6105, 315, 13, NoFlags, 0, "Product or Service Name", F::ByRule, A::ByRule, NoColour, syscolor::InfoBackground},
{1, nullptr, "cmdAddNewItem", K::Button, captions::NewProductOrService, 6360, 5520, 1935, 615, 14},
{1, nullptr, "cmdCancelNewItem", K::Button, captions::CancelNew, 4200, 5520, 1935, 615, 15, Hidden},
{1, nullptr, "txtPrice", K::TextBox, "", 120, 840, 1815, 315, 12, NoFlags, 0, "Price", F::ByRule, A::ByRule, NoColour, syscolor::InfoBackground},
{1, nullptr, "lvwProducts(0)", K::ListView, "", 120, 1560, 8175, 3855, 16, NoFlags, 0, "List of Products and Services"},
{1, nullptr, "lblTop(1)", K::Label, "Products && Services", 0, 0, 8415, 375, 59, NoFlags, 0, nullptr, F::Title, A::Centre, rgb(0, 128, 0), rgb(255, 255, 255)},
{1, nullptr, "lblProductOrServiceName", K::Label, "Product or Service Name:", 2160, 600, 2310, 210, 95},
{1, nullptr, "lblPrice", K::Label, "Price:", 120, 600, 555, 240, 94},
{1, nullptr, "lblListOfProductsAndServices", K::Label, "List of Products and Services:", 120, 1320, 2730, 210, 93},

// panel 2, Bill Periods
{2, nullptr, "cmdCancelNewBP", K::Button, captions::CancelNew, 4200, 5520, 1935, 615, 23, Hidden},
{2, nullptr, "txtPField(3)", K::TextBox, "", 6960, 840, 1335, 315, 21, ReadOnly, 0, "Bill Due"},
{2, nullptr, "txtPField(2)", K::TextBox, "", 5520, 840, 1335, 315, 20, ReadOnly, 0, "Period End"},
{2, nullptr, "txtPField(1)", K::TextBox, "", 4080, 840, 1335, 315, 19, ReadOnly, 0, "Period Start"},
{2, nullptr, "cmdAddNewBP", K::Button, captions::NewBillPeriod, 6360, 5520, 1935, 615, 22},
{2, nullptr, "cmdResetCustomerAccounts", K::Button, captions::LogFullPayment, 120, 5520, 1935, 615, 25, Hidden},
{2, nullptr, "cmdAdjustBalance", K::Button, "Log &Payment && Optional Note", 2280, 5520, 1935, 615, 24, Hidden},
{2, nullptr, "tvwInvoiceRecords(0)", K::TreeView, "", 120, 1560, 3975, 3855, 26, NoFlags, 0, "Customer Accounts for This Period"},
{2, nullptr, "lvwProducts(1)", K::ListView, "", 4320, 1560, 3975, 3855, 27, Hidden, 0, "List of Products and Services"},
{2, nullptr, "cmbBillPeriod(1)", K::DropDown, "", 120, 840, 3135, 330, 18, NoFlags, 0, "Bill Period"},
{2, nullptr, "txtBillPeriod", K::TextBox, "", 120, 840, 2835, 330, 17, Hidden, 0, "Bill Period"},
{2, nullptr, "lblBillPeriodName", K::Label, "Bill Period:", 120, 600, 960, 210, 106},
{2, nullptr, "lblBillDue", K::Label, "Bill Due:", 6960, 600, 735, 210, 105},
{2, nullptr, "lblPeriodEnd", K::Label, "Period End:", 5520, 600, 1050, 210, 104},
{2, nullptr, "lblPeriodStart", K::Label, "Period Start:", 4080, 600, 1185, 210, 103},
{2, nullptr, "lblCustomerAccountsForThisPeriod", K::Label, "Customer Accounts for This Period:", 120, 1320, 3255, 210, 102},
{2, nullptr, "lblExample", K::Label, "(example: March 2004)", 120, 1155, 1710, 210, 101, Hidden, 0, nullptr, F::Italic},
{2, nullptr, "lblDoubleClickToAdd", K::Label, "  Double-click to Bill *Marked Customers:  ", 4320, 1320, 3855, 210, 100, Hidden, 0, nullptr, F::ByRule, A::ByRule, NoColour, syscolor::InfoBackground},
{2, nullptr, "lblTop(2)", K::Label, "Bill Periods", 0, 0, 8415, 375, 61, NoFlags, 0, nullptr, F::Title, A::Centre, rgb(0, 128, 0), rgb(255, 255, 255)},

// panel 3, Printing
{3, nullptr, "cmbBillPeriod(2)", K::DropDown, "", 120, 840, 3135, 330, 28, NoFlags, 0, "Bill Period"},
{3, nullptr, "cmdPrintSelectedInvoices", K::Button, "&Print Selected as Invoices", 6360, 5520, 1935, 615, 29},
{3, nullptr, "cmdPrintSelectedEnvelopes", K::Button, "Print Selected as &Envelopes", 4200, 5520, 1935, 615, 30},
{3, nullptr, "cmdStatements", K::Button, "&Statements", 3480, 795, 1455, 405, 107},
{3, nullptr, "cmdEmailSelected", K::Button, "E-&mail Selected", 2640, 5520, 1500, 615, 108},
{3, nullptr, "tvwInvoiceRecords(1)", K::TreeView, "", 120, 1320, 8175, 4095, 31, NoFlags, 0, "Customer accounts to print"},
{3, nullptr, "staPrinting", K::ProgressBar, "", 5400, 960, 2895, 255, 96, Hidden, 0, "Printing progress"},
{3, nullptr, "lblBillPeriodP2", K::Label, "Bill Period:", 120, 600, 960, 210, 99},
{3, nullptr, "lblPrinting", K::Label, "Sending to printer ...", 5400, 720, 1815, 255, 98, Hidden},
{3, nullptr, "lblPrintResult", K::Label, "", 5040, 600, 3255, 450, 143, Hidden, 0, "Last print run"},
{3, nullptr, "lblRightClickForNote", K::Label, "(Right-click customer to add a note to their bill.)", 120, 5640, 2205, 450, 97, NoFlags, 0, nullptr, F::ByRule, A::Centre, syscolor::GrayText},
{3, nullptr, "lblTop(3)", K::Label, "Printing", 0, 0, 8415, 375, 63, NoFlags, 0, nullptr, F::Title, A::Centre, rgb(0, 128, 0), rgb(255, 255, 255)},

// panel 4, Print Options
{4, nullptr, "fraPrintPreview", K::GroupFrame, "Print Preview", 4440, 600, 3615, 5415, 127},
{4, "fraPrintPreview", "cmdPrintPreviewBack", K::Button, "<", 960, 4440, 735, 615, 130, NoFlags, 0, "Previous invoice layout", F::Arrow},
{4, "fraPrintPreview", "cmdPrintPreviewForward", K::Button, ">", 1920, 4440, 735, 615, 129, NoFlags, 0, "Next invoice layout", F::Arrow},
{4, "fraPrintPreview", "picPrintPreviewTop(0)", K::Picture, "", 375, 495, 2880, 1575, 128, NoFlags, 0, "Preview of the invoice top, layout 1"},
{4, "fraPrintPreview", "picPrintPreviewTop(1)", K::Picture, "", 375, 495, 2880, 1575, 138, Hidden, 0, "Preview of the invoice top, layout 2"},
{4, "fraPrintPreview", "picPrintPreviewTop(2)", K::Picture, "", 375, 495, 2880, 1575, 139, Hidden, 0, "Preview of the invoice top, layout 3"},
{4, "fraPrintPreview", "picPrintPreviewBottom(0)", K::Picture, "", 375, 2070, 2880, 2160, 135, NoFlags, 0, "Preview of the invoice bottom, twelve lines"},
{4, "fraPrintPreview", "picPrintPreviewBottom(1)", K::Picture, "", 375, 2070, 2880, 2160, 136, Hidden, 0, "Preview of the invoice bottom, short list"},
{4, "fraPrintPreview", "picPrintPreviewBottom(2)", K::Picture, "", 375, 2070, 2880, 2160, 137, Hidden, 0, "Preview of the invoice bottom, text moved up"},
{4, nullptr, "fraInvoiceTitle", K::GroupFrame, "Invoice Title", 240, 600, 3735, 1575, 122},
{4, "fraInvoiceTitle", "fraSize", K::GroupFrame, "Size", 1560, 240, 1935, 615, 131},
{4, "fraSize", "optInvoiceTitleSize(0)", K::Option, "S", 120, 225, 585, 255, 134, NoFlags, 0, "Small"},
{4, "fraSize", "optInvoiceTitleSize(1)", K::Option, "M", 720, 225, 585, 255, 133, NoFlags, 0, "Medium"},
{4, "fraSize", "optInvoiceTitleSize(2)", K::Option, "L", 1320, 225, 585, 255, 132, NoFlags, 0, "Large"},
{4, "fraInvoiceTitle", "txtInvoiceTitle", K::TextBox, "", 1200, 1050, 2295, 285, 126, NoFlags, 0, "Other invoice title"},
{4, "fraInvoiceTitle", "optInvoiceTitle(2)", K::Option, "Other:", 240, 1080, 975, 255, 125},
{4, "fraInvoiceTitle", "optInvoiceTitle(1)", K::Option, "Estimate", 240, 720, 1095, 255, 124},
{4, "fraInvoiceTitle", "optInvoiceTitle(0)", K::Option, "Invoice", 240, 360, 1095, 255, 123},
{4, nullptr, "chkAddInvoiceDateToInvoice", K::CheckBox, "add invoice &date to invoice", 240, 2400, 3495, 375, 32},
{4, nullptr, "chkPrintDuplicateInvoices", K::CheckBox, "print d&uplicate invoices", 240, 2880, 3495, 375, 33},
{4, nullptr, "chkKeepTwelveLines", K::CheckBox, "keep &twelve lines in list of billed items", 240, 3360, 3495, 375, 34},
{4, nullptr, "chkMoveAccordingly", K::CheckBox, "&move bottom text up accordingly", 480, 3720, 3495, 375, 35},
{4, nullptr, "lblTop(4)", K::Label, "Print Options", 0, 0, 8415, 375, 65, NoFlags, 0, nullptr, F::Title, A::Centre, rgb(0, 128, 0), rgb(255, 255, 255)},

// panel 5, Options
{5, nullptr, "fraDocumentation", K::GroupFrame, "Documentation", 5040, 5160, 3255, 945, 77},
{5, "fraDocumentation", "cmdOpenHelp", K::HoverCommand, "", 2310, 150, 690, 735, 45, NoFlags, 0, "Help"},
{5, "fraDocumentation", "Label11", K::Label, "open QOR help file:", 195, 375, 2055, 285, 78, NoFlags, 0, nullptr, F::Arial12, A::Right, syscolor::Highlight},
{5, nullptr, "chkCheckToConfirmEdits", K::CheckBox, "check to confirm before deleting or applying edits to existing customers", 240, 2880, 3495, 375, 42, Checked},
{5, nullptr, "txtChangePath", K::TextBox, "", 240, 840, 3255, 285, 36, NoFlags, 0, "Current Qorvane Database Path"},
{5, nullptr, "cmdChangePath(0)", K::Button, "&New", 240, 1200, 735, 375, 37, NoFlags, 0, "New database"},
{5, nullptr, "cmdChangePath(1)", K::Button, "&Open", 1080, 1200, 735, 375, 38, NoFlags, 0, "Open database"},
{5, nullptr, "cmdChangePath(2)", K::Button, "&Save", 1920, 1200, 735, 375, 39, Hidden, 0, "Save database"},
{5, nullptr, "cmdChangePath(3)", K::Button, "Sv&As", 2760, 1200, 735, 375, 40, NoFlags, 0, "Save database as"},
{5, nullptr, "chkExpertMode", K::CheckBox, "", 240, 3480, 255, 375, 43, Checked, 0, "Expert Mode"},
{5, nullptr, "cmdCloseBooks", K::Button, "&Close the Books && Start New", 240, 2160, 3255, 375, 41},
{5, nullptr, "lblPathToCurrent", K::Label, "Current Qorvane Database Path:", 240, 600, 3255, 210, 83},
{5, nullptr, "lblCheckForNewVersion", K::Label, "check for new version", 5040, 660, 3255, 255, 44, NoFlags, 0, nullptr, F::Link, A::Right, syscolor::Highlight},
{5, nullptr, "lblVersionNumber", K::Label, "", 5040, 480, 3255, 255, 82, NoFlags, 0, "Version number", F::ByRule, A::Right},
{5, nullptr, "cmdEmailSettings", K::Button, "E-&mail Settings...", 240, 4200, 2175, 375, 142},
{5, nullptr, "lblQuickestWay", K::Label, "(The quickest way to save from any screen is the check mark top right.)", 240, 1620, 3255, 435, 81, NoFlags, 0, nullptr, F::ByRule, A::Centre, syscolor::GrayText},
{5, nullptr, "lblExpertMode2", K::Label, "(turn off hints && explanations)", 510, 3660, 2535, 210, 80, NoFlags, 0, nullptr, F::ByRule, A::Left, syscolor::GrayText},
{5, nullptr, "lblExpertMode1", K::Label, "Expert Mode", 510, 3450, 2535, 210, 79, NoFlags, 0, nullptr, F::ByRule, A::Left, syscolor::WindowText},
{5, nullptr, "lblTop(5)", K::Label, "Options", 0, 0, 8415, 375, 67, NoFlags, 0, nullptr, F::Title, A::Centre, rgb(0, 128, 0), rgb(255, 255, 255)},

// panel 6, Company Info
{6, nullptr, "txtCompanyDetails(8)", K::TextBox, "THANK YOU FOR YOUR BUSINESS!", 4320, 3360, 3975, 315, 54, NoFlags, 0, "Optional Invoice Closing"},
{6, nullptr, "txtCompanyDetails(0)", K::TextBox, "", 120, 840, 3975, 315, 46, NoFlags, 0, "Company Name"},
{6, nullptr, "txtCompanyDetails(4)", K::TextBox, "", 120, 3360, 3975, 315, 50, NoFlags, 0, "Company Phone / Fax / Email"},
{6, nullptr, "txtCompanyDetails(5)", K::TextBox, "", 4320, 840, 3975, 315, 51, NoFlags, 0, "Optional Company Slogan"},
{6, nullptr, "txtCompanyDetails(1)", K::TextBox, "", 120, 1680, 3975, 315, 47, NoFlags, 0, "Company Address"},
{6, nullptr, "txtCompanyDetails(2)", K::TextBox, "", 120, 2100, 3975, 315, 48, NoFlags, 0, "Company address line 2"},
{6, nullptr, "txtCompanyDetails(3)", K::TextBox, "", 120, 2520, 3975, 315, 49, NoFlags, 0, "Company address line 3"},
{6, nullptr, "txtCompanyDetails(7)", K::TextBox, "", 4320, 2520, 3975, 315, 53, NoFlags, 0, "Optional Make Checks Payable to"},
{6, nullptr, "txtCompanyDetails(6)", K::TextBox, "", 4320, 1680, 3975, 315, 52, NoFlags, 0, "Optional General Invoice Description"},
{6, nullptr, "lblSaveDatabaseToUpdate", K::Label, "Save database (check mark top right) to update company info.", 0, 5940, 8400, 210, 91, NoFlags, 0, nullptr, F::ByRule, A::Centre, syscolor::GrayText},
{6, nullptr, "lblLeaveOptionalEntriesBlank", K::Label, "Leave optional entries blank to omit from invoice.", 0, 5760, 8400, 210, 92, NoFlags, 0, nullptr, F::ByRule, A::Centre, syscolor::GrayText},
{6, nullptr, "lblInvoiceClosing", K::Label, "Optional Invoice Closing:", 4320, 3120, 3225, 210, 90},
{6, nullptr, "lblCompanyName", K::Label, "Company Name:", 120, 600, 2385, 210, 89},
{6, nullptr, "lblMakePayableTo", K::Label, "Optional Make Checks Payable to:", 4320, 2280, 2775, 210, 88},
{6, nullptr, "lblCompanySlogan", K::Label, "Optional Company Slogan:", 4320, 600, 2385, 210, 87},
{6, nullptr, "lblCompanyAddress", K::Label, "Company Address:", 120, 1440, 2385, 210, 86},
{6, nullptr, "lblCompanyPhone", K::Label, "Company Phone / Fax / Email:", 120, 3120, 2385, 210, 85},
{6, nullptr, "lblGeneralDescription", K::Label, "Optional General Invoice Description:", 4320, 1440, 3030, 210, 84},
{6, nullptr, "lblTop(6)", K::Label, "Company Info", 0, 0, 8415, 375, 69, NoFlags, 0, nullptr, F::Title, A::Centre, rgb(0, 128, 0), rgb(255, 255, 255)},
};
// clang-format on

// Push buttons and check boxes whose caption is wider than the control break
// it into lines at blanks, as the captions were drawn where they were
// designed. The text itself stays as set: handlers read it.
// Draws a caption into area, broken into lines at blanks, with the hot-key
// underline as the style shows it.
void drawWrappedCaption(QWidget *w, QStylePainter &painter, const QStyleOptionButton &option, const QRect &area,
                        int alignment, const QString &caption, QPalette::ColorRole role)
{
    int flags = alignment | Qt::TextShowMnemonic | Qt::TextWordWrap;
    if (!w->style()->styleHint(QStyle::SH_UnderlineShortcut, &option, w))
        flags |= Qt::TextHideMnemonic;
    w->style()->drawItemText(&painter, area, flags, w->palette(), w->isEnabled(), caption, role);
}

class WrappingButton : public QPushButton {
public:
    using QPushButton::QPushButton;

protected:
    void paintEvent(QPaintEvent *) override
    {
        QStylePainter painter(this);
        QStyleOptionButton option;
        initStyleOption(&option);
        const QString caption = option.text;
        option.text.clear();
        painter.drawControl(QStyle::CE_PushButton, option);
        const QRect area = style()->subElementRect(QStyle::SE_PushButtonContents, &option, this);
        const int shift = isDown() ? style()->pixelMetric(QStyle::PM_ButtonShiftHorizontal, &option, this) : 0;
        drawWrappedCaption(this, painter, option, area.translated(shift, shift), Qt::AlignCenter, caption,
                           QPalette::ButtonText);
    }
};

class WrappingCheckBox : public QCheckBox {
public:
    using QCheckBox::QCheckBox;

protected:
    void paintEvent(QPaintEvent *) override
    {
        QStylePainter painter(this);
        QStyleOptionButton option;
        initStyleOption(&option);
        const QString caption = option.text;
        option.text.clear();
        painter.drawControl(QStyle::CE_CheckBox, option);
        option.text = caption;
        const QRect area = style()->subElementRect(QStyle::SE_CheckBoxContents, &option, this);
        drawWrappedCaption(this, painter, option, area, Qt::AlignLeft | Qt::AlignVCenter, caption,
                           QPalette::WindowText);
    }
};

// A one-line label never clips its caption: it grows from the edge it is
// aligned to (both edges when centred).
void growToFitLabel(QLabel *l)
{
    if (l->wordWrap() || l->text().isEmpty())
        return;
    const int need = l->fontMetrics().horizontalAdvance(l->text()) + 1;
    const int extra = need - l->width();
    if (extra <= 0)
        return;
    QRect r = l->geometry();
    const Qt::Alignment h = l->alignment() & Qt::AlignHorizontal_Mask;
    if (h & Qt::AlignRight)
        r.setLeft(r.left() - extra);
    else if (h & Qt::AlignHCenter)
        r.adjust(-extra / 2, 0, extra - extra / 2, 0);
    else
        r.setRight(r.right() + extra);
    l->setGeometry(r);
}

bool isPanelOfOptions(int panel) { return panel >= 4 && panel <= 6; }

QWidget *makeWidget(const Entry &e, QWidget *parent)
{
    const QString caption = QString::fromUtf8(e.caption);
    switch (e.kind) {
    case K::TextBox:
        if (e.flags & MultiLine) {
            auto *t = new QPlainTextEdit(parent);
            t->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
            t->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
            t->setTabChangesFocus(true);
            t->setPlainText(caption);
            t->setReadOnly(e.flags & ReadOnly);
            return t;
        } else {
            auto *t = new QLineEdit(parent);
            if (e.maxLength > 0)
                t->setMaxLength(e.maxLength);
            t->setText(caption);
            t->setReadOnly(e.flags & ReadOnly);
            return t;
        }
    case K::ListView: {
        // A one-column list; each row keeps its table key in Qt::UserRole.
        auto *l = new QTreeWidget(parent);
        l->setColumnCount(1);
        // Hidden, yet a screen reader names the column by it.
        l->setHeaderLabels({accessibleNameOf(e)});
        l->setHeaderHidden(true);
        l->setRootIsDecorated(false);
        l->setSelectionMode(QAbstractItemView::SingleSelection);
        l->setUniformRowHeights(true);
        return l;
    }
    case K::TreeView: {
        // A view: the invoice records trees are models of their own.
        auto *t = new QTreeView(parent);
        t->setHeaderHidden(true);
        t->setSelectionMode(QAbstractItemView::SingleSelection);
        return t;
    }
    case K::DropDown: {
        auto *c = new QComboBox(parent);
        c->setEditable(false);
        return c;
    }
    case K::Label:
    case K::Picture: {
        auto *l = new QLabel(parent);
        l->setTextFormat(Qt::PlainText);
        l->setText(shownCaption(caption));
        l->setAlignment(alignmentOf(e));
        // Only labels tall enough for two lines wrap; a one-line label
        // clipped to a second line would lose its text.
        l->setWordWrap(e.kind == K::Label && e.height >= 400);
        return l;
    }
    case K::Button: {
        auto *b = new WrappingButton(caption, parent);
        b->setAutoDefault(false);
        return b;
    }
    case K::HoverCommand: {
        auto *h = new qor::HoverCommand(parent);
        h->setCaption(caption);
        return h;
    }
    case K::CheckBox: {
        auto *c = new WrappingCheckBox(caption, parent);
        c->setChecked(e.flags & Checked);
        return c;
    }
    case K::Option: {
        auto *o = new QRadioButton(caption, parent);
        o->setChecked(e.flags & Checked);
        return o;
    }
    case K::GroupFrame:
        return new QGroupBox(caption, parent);
    case K::ProgressBar: {
        auto *p = new QProgressBar(parent);
        p->setRange(0, 100);
        p->setValue(0);
        p->setTextVisible(false);
        return p;
    }
    }
    return new QWidget(parent);
}

QPalette::ColorRole backRole(const QWidget *w)
{
    if (qobject_cast<const QLineEdit *>(w) || qobject_cast<const QPlainTextEdit *>(w) || qobject_cast<const QComboBox *>(w) || qobject_cast<const QAbstractItemView *>(w))
        return QPalette::Base;
    if (qobject_cast<const QAbstractButton *>(w))
        return QPalette::Button;
    return QPalette::Window;
}

QPalette::ColorRole foreRole(const QWidget *w)
{
    if (qobject_cast<const QLineEdit *>(w) || qobject_cast<const QPlainTextEdit *>(w) || qobject_cast<const QComboBox *>(w) || qobject_cast<const QAbstractItemView *>(w))
        return QPalette::Text;
    if (qobject_cast<const QPushButton *>(w))
        return QPalette::ButtonText;
    return QPalette::WindowText;
}

// Buttons that show a picture in place of a caption.
struct ButtonPicture {
    const char *name;
    const char *resource;
    int width, height;  // pixels
};
const ButtonPicture kButtonPictures[] = {
    {"cmdPrint", assets::Printer, 18, 18},
    {"cmdSearch", assets::Search, 19, 18},
};

void setButtonPicture(QWidget *w, const Entry &e)
{
    for (const ButtonPicture &p : kButtonPictures) {
        if (qstrcmp(p.name, e.name) != 0)
            continue;
        if (auto *b = qobject_cast<QPushButton *>(w)) {
            b->setIcon(QIcon(QString::fromLatin1(p.resource)));
            b->setIconSize(QSize(p.width, p.height));
        }
    }
}

}  // namespace

std::span<const Entry> entries() { return {kRows, std::size(kRows)}; }

QList<const Entry *> entriesOf(int panelIndex)
{
    QList<const Entry *> out;
    for (const Entry &e : kRows)
        if (e.panel == panelIndex)
            out.append(&e);
    return out;
}

const Entry *find(QStringView name)
{
    for (const Entry &e : kRows)
        if (name == QLatin1String(e.name))
            return &e;
    return nullptr;
}

QString shownCaption(QStringView caption)
{
    return captionAsShown(caption);
}

QString accessibleNameOf(const Entry &e)
{
    if (e.accessible)
        return QString::fromUtf8(e.accessible);
    return shownCaption(QString::fromUtf8(e.caption)).trimmed();
}

QFont fontOf(const Entry &e)
{
    auto make = [](const char *family, double points, bool bold) {
        QFont f(QString::fromLatin1(family));
        f.setPointSizeF(points);
        f.setBold(bold);
        return f;
    };
    switch (e.font) {
    case F::FieldLabel: return make("Tahoma", 9.75, true);
    case F::Title: return make("Arial", 14.25, true);
    case F::Italic: {
        QFont f = make("Tahoma", 9, false);
        f.setItalic(true);
        return f;
    }
    case F::Arial12: return make("Arial", 12, true);
    case F::Link: {
        QFont f = make("Tahoma", 9, true);
        f.setUnderline(true);
        return f;
    }
    case F::Arrow: return make("Arial", 18, true);
    case F::ByRule: break;
    }
    switch (e.kind) {
    case K::Button:
    case K::HoverCommand:
        return make("Tahoma", 9.75, true);
    case K::TextBox:
    case K::DropDown:
        return make("Tahoma", 9, true);
    case K::ListView:
    case K::TreeView:
        return make("Tahoma", 9, false);
    case K::Label:
    case K::CheckBox:
    case K::Option:
    case K::GroupFrame:
        return isPanelOfOptions(e.panel) ? make("Arial", 8.25, true) : make("Tahoma", 9, true);
    case K::Picture:
    case K::ProgressBar:
        break;
    }
    return make("Tahoma", 9, false);
}

Qt::Alignment alignmentOf(const Entry &e)
{
    Qt::Alignment h = Qt::AlignLeft;
    switch (e.align) {
    case A::Centre: h = Qt::AlignHCenter; break;
    case A::Right: h = Qt::AlignRight; break;
    case A::Left:
    case A::ByRule: break;
    }
    if (e.kind == K::Picture)
        return Qt::AlignCenter;
    return h | (e.font == F::Title ? Qt::AlignVCenter : Qt::AlignTop);
}

QColor colour(OleColor value)
{
    if (value == NoColour)
        return {};
    return resolveOleColor(value, QApplication::palette());
}

void fitCaption(QLabel *label) { growToFitLabel(label); }

QPalette panelPalette(const QPalette &from)
{
    QPalette pal = from;
    for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
        pal.setColor(group, QPalette::Window, from.color(group, QPalette::Base));
        pal.setColor(group, QPalette::WindowText, from.color(group, QPalette::Text));
    }
    return pal;
}

QColor groundOf(const QWidget *w)
{
    if (!w)
        return {};
    const QPalette::ColorRole role = backRole(w);
    if (role == QPalette::Base || qobject_cast<const QPushButton *>(w))
        return w->palette().color(QPalette::Active, role);
    for (const QWidget *p = w; p; p = p->parentWidget())
        if (p->autoFillBackground())
            return p->palette().color(QPalette::Active, p->backgroundRole());
    return w->palette().color(QPalette::Active, QPalette::Window);
}

void setBackColour(QWidget *w, OleColor value)
{
    if (!w || value == NoColour)
        return;
    QPalette pal = w->palette();
    const QColor c = colour(value);
    const QPalette::ColorRole role = backRole(w);
    pal.setColor(QPalette::All, role, c);
    // A background of the program's choosing gets text that reads on it,
    // whatever colours the desktop gives the text.
    if (role != QPalette::Button || qobject_cast<QPushButton *>(w)) {
        const QPalette::ColorRole fore = foreRole(w);
        for (const auto group : {QPalette::Active, QPalette::Inactive})
            pal.setColor(group, fore, readableOn(pal.color(group, fore), c, TextContrast));
    }
    w->setPalette(pal);
    if (role == QPalette::Window)
        w->setAutoFillBackground(true);
}

QColor backColour(const QWidget *w)
{
    return w ? w->palette().color(QPalette::Active, backRole(w)) : QColor();
}

void setForeColour(QWidget *w, OleColor value)
{
    if (!w || value == NoColour)
        return;
    QPalette pal = w->palette();
    // A colour of the program's choosing still reads on the desktop's ground.
    const QColor c =
        readableOn(colour(value), groundOf(w), value == syscolor::GrayText ? HintContrast : TextContrast);
    pal.setColor(QPalette::Active, foreRole(w), c);
    pal.setColor(QPalette::Inactive, foreRole(w), c);
    w->setPalette(pal);
}

QColor foreColour(const QWidget *w)
{
    return w ? w->palette().color(QPalette::Active, foreRole(w)) : QColor();
}

void build(int panelIndex, QWidget *panel, QHash<QString, QWidget *> &controls)
{
    ensureDesignFonts();
    for (const Entry *e : entriesOf(panelIndex)) {
        QWidget *parent = panel;
        if (e->parent) {
            parent = controls.value(QString::fromLatin1(e->parent));
            Q_ASSERT_X(parent, "roster::build", e->name);
            if (!parent)
                parent = panel;
        }
        QWidget *w = makeWidget(*e, parent);
        const QString name = QString::fromLatin1(e->name);
        w->setObjectName(name);
        w->setFont(fontOf(*e));
        w->setGeometry(twipsToPx(e->left), twipsToPx(e->top), twipsToPx(e->width),
                       twipsToPx(e->height));
        w->setProperty(TabIndexProperty, e->tab);
        // A label's or a button's spoken name is its caption, read when asked:
        // a name stored now would stay behind when the caption changes.
        // Padded captions keep a stored, trimmed name.
        const QString caption = QString::fromUtf8(e->caption);
        const bool speaksCaption = !e->accessible && caption == caption.trimmed() && (qobject_cast<QLabel *>(w) || qobject_cast<QAbstractButton *>(w));
        if (!speaksCaption)
            w->setAccessibleName(accessibleNameOf(*e));
        setForeColour(w, e->fore);
        setBackColour(w, e->back);
        if (e->kind == K::Label)
            fitCaption(static_cast<QLabel *>(w));
        setButtonPicture(w, *e);
        if (e->font == F::Link)
            w->setCursor(Qt::PointingHandCursor);
        if (e->flags & Hidden)
            w->hide();  // explicitly: showing the panel leaves it hidden
        controls.insert(name, w);
    }
    // Each frame's options are one group of their own. Left to themselves,
    // options count every option below their parent as one group for the
    // keyboard, so the focus on an outer option took Tab away from the
    // options of a frame inside it.
    QHash<QWidget *, QButtonGroup *> groups;
    for (QWidget *w : std::as_const(controls)) {
        auto *option = qobject_cast<QRadioButton *>(w);
        if (!option)
            continue;
        QButtonGroup *&group = groups[option->parentWidget()];
        if (!group)
            group = new QButtonGroup(option->parentWidget());
        group->addButton(option);
    }
}

int tabIndexOf(const QWidget *w)
{
    if (!w)
        return -1;
    const QVariant v = w->property(TabIndexProperty);
    return v.isValid() ? v.toInt() : -1;
}

QList<QWidget *> chainTabOrder(QWidget *root)
{
    QList<QWidget *> tagged;
    if (!root)
        return tagged;
    if (tabIndexOf(root) >= 0)
        tagged.append(root);
    const auto children = root->findChildren<QWidget *>();
    for (QWidget *w : children)
        if (tabIndexOf(w) >= 0)
            tagged.append(w);
    std::stable_sort(tagged.begin(), tagged.end(), [](const QWidget *a, const QWidget *b) {
        return tabIndexOf(a) < tabIndexOf(b);
    });
    QWidget *previous = nullptr;
    for (QWidget *w : tagged) {
        if (!(w->focusPolicy() & Qt::TabFocus))
            continue;
        if (previous)
            QWidget::setTabOrder(previous, w);
        previous = w;
    }
    return tagged;
}

}  // namespace qor::roster
