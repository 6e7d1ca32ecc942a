// SPDX-License-Identifier: GPL-3.0-or-later
// The panel base: builds a panel's controls from the roster and lays them out
// for the window's size by one table of rules.
#include "shell/panel.h"

#include "database/database.h"
#include "shell/appcontext.h"
#include "shell/roster.h"
#include "uiservices/twips.h"

#include <QAbstractButton>
#include <QLabel>
#include <QTreeWidget>

#include <algorithm>
#include <cmath>
#include <span>

namespace qor {

namespace {

enum class Prop : quint8 { Left,
                           Top,
                           Width,
                           Height,
                           ColumnWidth,
                           Visible };

// What a rule's value is made of.
enum class Base : quint8 {
    M,                 // M + k
    W,                 // W + k
    H,                 // H + k
    Ref,               // ref.refProp + k
    WLessOwnLeft,      // W - (the control's own Left, as just set) + k
    MIfShownElseW,     // ref shown: M + k, else W + k2
    Changed,           // the database counts as changed
    ChangedNotExpert,  // changed, and the box ref is not checked
};

struct Rule {
    int panel;
    const char *control;
    Prop prop;
    Base base;
    double k = 0;
    const char *ref = nullptr;
    Prop refProp = Prop::Left;
    double k2 = 0;
};

// In this order; a rule that reads another control reads it after the rules
// above it have set it.
// clang-format off
const Rule kRules[] = {
    {0, "cmdPrint", Prop::Left, Base::M, -600},
    {0, "txtSearch", Prop::Width, Base::M, -2025},
    {0, "cmdSearch", Prop::Left, Base::M, -1080},
    {0, "lvwCustomersVis", Prop::Width, Base::M, -360},
    {0, "lvwCustomersVis", Prop::Height, Base::H, -1080},
    {0, "lblFirstName", Prop::Left, Base::M, -240},
    {0, "lblLastName", Prop::Left, Base::Ref, 0, "lblFirstName", Prop::Left},
    {0, "lblAddress", Prop::Left, Base::Ref, 0, "lblFirstName", Prop::Left},
    {0, "lblEmail", Prop::Left, Base::Ref, 0, "lblFirstName", Prop::Left},
    {0, "lblPhone", Prop::Left, Base::Ref, 0, "lblFirstName", Prop::Left},
    {0, "lblNotes", Prop::Left, Base::Ref, 0, "lblFirstName", Prop::Left},
    {0, "txtField(0)", Prop::Left, Base::M, 1200}, {0, "txtField(0)", Prop::Width, Base::WLessOwnLeft, -120},
    {0, "txtField(1)", Prop::Left, Base::M, 1200}, {0, "txtField(1)", Prop::Width, Base::WLessOwnLeft, -120},
    {0, "txtField(2)", Prop::Left, Base::M, 1200}, {0, "txtField(2)", Prop::Width, Base::WLessOwnLeft, -120},
    {0, "txtField(3)", Prop::Left, Base::M, 1200}, {0, "txtField(3)", Prop::Width, Base::WLessOwnLeft, -120},
    {0, "txtField(4)", Prop::Left, Base::M, 1200}, {0, "txtField(4)", Prop::Width, Base::WLessOwnLeft, -120},
    {0, "txtField(5)", Prop::Left, Base::M, 1200}, {0, "txtField(5)", Prop::Width, Base::WLessOwnLeft, -120},
    {0, "txtField(6)", Prop::Left, Base::M, 1200}, {0, "txtField(6)", Prop::Width, Base::WLessOwnLeft, -120},
    {0, "txtField(7)", Prop::Left, Base::M, 840},
    {0, "txtField(7)", Prop::Width, Base::WLessOwnLeft, -120},
    {0, "txtField(7)", Prop::Height, Base::H, -4305},
    {0, "cmdUndo", Prop::Left, Base::W, -4210},
    {0, "cmdUndo", Prop::Top, Base::H, -720},
    {0, "cmdAddNew", Prop::Left, Base::W, -2050},
    {0, "cmdAddNew", Prop::Top, Base::Ref, 0, "cmdUndo", Prop::Top},

    {1, "txtProductOrServiceName", Prop::Width, Base::W, -2295},
    {1, "lvwProducts(0)", Prop::Width, Base::W, -225},
    {1, "lvwProducts(0)", Prop::Height, Base::H, -2385},
    {1, "lvwProducts(0)", Prop::ColumnWidth, Base::W, -300},
    {1, "cmdCancelNewItem", Prop::Left, Base::W, -4210},
    {1, "cmdCancelNewItem", Prop::Top, Base::H, -720},
    {1, "cmdAddNewItem", Prop::Left, Base::W, -2050},
    {1, "cmdAddNewItem", Prop::Top, Base::Ref, 0, "cmdCancelNewItem", Prop::Top},

    // The tree shares the width with the product list only while that shows.
    {2, "tvwInvoiceRecords(0)", Prop::Width, Base::MIfShownElseW, -240, "lvwProducts(1)", Prop::Visible, -240},
    {2, "tvwInvoiceRecords(0)", Prop::Height, Base::H, -2400},
    {2, "lvwProducts(1)", Prop::Height, Base::Ref, 0, "tvwInvoiceRecords(0)", Prop::Height},
    {2, "lblDoubleClickToAdd", Prop::Left, Base::Ref, 360, "tvwInvoiceRecords(0)", Prop::Width},
    {2, "lvwProducts(1)", Prop::Left, Base::Ref, 0, "lblDoubleClickToAdd", Prop::Left},
    {2, "lvwProducts(1)", Prop::Width, Base::Ref, 0, "tvwInvoiceRecords(0)", Prop::Width},
    {2, "lvwProducts(1)", Prop::ColumnWidth, Base::Ref, -180, "lvwProducts(1)", Prop::Width},
    {2, "cmdResetCustomerAccounts", Prop::Top, Base::H, -720},
    {2, "cmdAdjustBalance", Prop::Top, Base::Ref, 0, "cmdResetCustomerAccounts", Prop::Top},
    {2, "cmdCancelNewBP", Prop::Left, Base::W, -4210},
    {2, "cmdCancelNewBP", Prop::Top, Base::Ref, 0, "cmdResetCustomerAccounts", Prop::Top},
    {2, "cmdAddNewBP", Prop::Left, Base::W, -2050},
    {2, "cmdAddNewBP", Prop::Top, Base::Ref, 0, "cmdResetCustomerAccounts", Prop::Top},

    {3, "lblPrinting", Prop::Left, Base::W, -3000},
    {3, "staPrinting", Prop::Left, Base::W, -3000},
    {3, "lblPrintResult", Prop::Width, Base::W, -5160},
    {3, "tvwInvoiceRecords(1)", Prop::Width, Base::W, -225},
    {3, "tvwInvoiceRecords(1)", Prop::Height, Base::H, -2145},
    {3, "cmdPrintSelectedInvoices", Prop::Left, Base::W, -4210},
    {3, "cmdPrintSelectedInvoices", Prop::Top, Base::H, -720},
    {3, "cmdPrintSelectedEnvelopes", Prop::Left, Base::W, -2050},
    {3, "cmdPrintSelectedEnvelopes", Prop::Top, Base::Ref, 0, "cmdPrintSelectedInvoices", Prop::Top},
    {3, "cmdEmailSelected", Prop::Left, Base::W, -5830},
    {3, "cmdEmailSelected", Prop::Top, Base::Ref, 0, "cmdPrintSelectedInvoices", Prop::Top},
    {3, "lblRightClickForNote", Prop::Top, Base::Ref, 120, "cmdPrintSelectedInvoices", Prop::Top},

    {4, "fraPrintPreview", Prop::Left, Base::M, 240},

    {5, "lblVersionNumber", Prop::Left, Base::W, -3495},
    {5, "lblCheckForNewVersion", Prop::Left, Base::Ref, 0, "lblVersionNumber", Prop::Left},
    {5, "fraDocumentation", Prop::Left, Base::Ref, 0, "lblVersionNumber", Prop::Left},
    {5, "fraDocumentation", Prop::Top, Base::H, -1080},
    // These two follow the changed state when the panel is arranged, not
    // when the state changes.
    {5, "cmdChangePath(2)", Prop::Visible, Base::Changed},
    {5, "lblQuickestWay", Prop::Visible, Base::ChangedNotExpert, 0, "chkExpertMode"},

    {6, "txtCompanyDetails(0)", Prop::Width, Base::M, -240},
    {6, "txtCompanyDetails(1)", Prop::Width, Base::M, -240},
    {6, "txtCompanyDetails(2)", Prop::Width, Base::M, -240},
    {6, "txtCompanyDetails(3)", Prop::Width, Base::M, -240},
    {6, "txtCompanyDetails(4)", Prop::Width, Base::M, -240},
    {6, "txtCompanyDetails(5)", Prop::Width, Base::M, -240},
    {6, "txtCompanyDetails(6)", Prop::Width, Base::M, -240},
    {6, "txtCompanyDetails(7)", Prop::Width, Base::M, -240},
    {6, "txtCompanyDetails(8)", Prop::Width, Base::M, -240},
    {6, "txtCompanyDetails(5)", Prop::Left, Base::M, 120},
    {6, "txtCompanyDetails(6)", Prop::Left, Base::M, 120},
    {6, "txtCompanyDetails(7)", Prop::Left, Base::M, 120},
    {6, "txtCompanyDetails(8)", Prop::Left, Base::M, 120},
    {6, "lblCompanySlogan", Prop::Left, Base::M, 120},
    {6, "lblGeneralDescription", Prop::Left, Base::Ref, 0, "lblCompanySlogan", Prop::Left},
    {6, "lblMakePayableTo", Prop::Left, Base::Ref, 0, "lblCompanySlogan", Prop::Left},
    {6, "lblInvoiceClosing", Prop::Left, Base::Ref, 0, "lblCompanySlogan", Prop::Left},
    {6, "lblLeaveOptionalEntriesBlank", Prop::Top, Base::H, -480},
    {6, "lblLeaveOptionalEntriesBlank", Prop::Width, Base::W, 0},
    {6, "lblSaveDatabaseToUpdate", Prop::Top, Base::H, -300},
    {6, "lblSaveDatabaseToUpdate", Prop::Width, Base::W, 0},
};
// clang-format on

double readProp(const QWidget *w, Prop p)
{
    switch (p) {
    case Prop::Left: return pxToTwips(w->x());
    case Prop::Top: return pxToTwips(w->y());
    case Prop::Width: return pxToTwips(w->width());
    case Prop::Height: return pxToTwips(w->height());
    case Prop::ColumnWidth:
        if (auto *t = qobject_cast<const QTreeWidget *>(w))
            return pxToTwips(t->columnWidth(0));
        return 0;
    case Prop::Visible: return w->isHidden() ? 0 : 1;
    }
    return 0;
}

void writeProp(QWidget *w, Prop p, double twips)
{
    const int px = twipsToPx(twips);
    switch (p) {
    case Prop::Left: w->move(px, w->y()); break;
    case Prop::Top: w->move(w->x(), px); break;
    case Prop::Width: w->resize(std::max(px, 0), w->height()); break;
    case Prop::Height: w->resize(w->width(), std::max(px, 0)); break;
    case Prop::ColumnWidth:
        if (auto *t = qobject_cast<QTreeWidget *>(w))
            t->setColumnWidth(0, std::max(px, 0));
        break;
    case Prop::Visible: w->setVisible(twips != 0); break;
    }
}

}  // namespace

struct Panel::Placed {
    const Rule *rule;
    QWidget *w;
    const QWidget *ref;
};

Panel::Panel(int index, AppContext &ctx, QWidget *parent)
    : QFrame(parent), ctx(ctx), m_index(index)
{
    setObjectName(QStringLiteral("fraMain(%1)").arg(index));
    setFrameShape(QFrame::NoFrame);
    setLineWidth(0);
    setAutoFillBackground(true);
    setPalette(roster::panelPalette(palette()));
    resize(twipsToPx(8400), twipsToPx(6240));
    roster::build(index, this, m_controls);
    auto *top = require<QLabel>(QStringLiteral("lblTop(%1)").arg(index));
    setAccessibleName(top->text());
    m_top = top;

    // The layout rules of this panel, each with its controls.
    for (const Rule &r : kRules) {
        if (r.panel != index)
            continue;
        m_placed.push_back({&r, require(r.control), r.ref ? require(r.ref) : nullptr});
    }
    // The hints of the window that stand on this panel (most panels have none).
    for (const char *hint : {"lblRightClickForNote", "lblExpertMode2", "lblLeaveOptionalEntriesBlank",
                             "lblSaveDatabaseToUpdate"})
        if (m_controls.contains(QString::fromLatin1(hint)))
            m_hints.push_back(require(hint));
    if (m_controls.contains(QStringLiteral("lblExpertMode1")))
        m_expertMode1 = require("lblExpertMode1");
    if (m_controls.contains(QStringLiteral("lblQuickestWay")))
        m_quickestWay = require("lblQuickestWay");
    if (m_controls.contains(QStringLiteral("lblDoubleClickToAdd")))
        m_doubleClickToAdd = require<QLabel>("lblDoubleClickToAdd");

    // Every panel starts hidden; the main window shows one at a time.
    hide();
}

Panel::~Panel() = default;

void Panel::missingControl(const QString &name, const char *type) const
{
    qFatal("%s has no control \"%s\" of type %s", qPrintable(objectName()), qPrintable(name), type);
}

int Panel::middleOf(double W)
{
    // nearbyint rounds an exact half to the even neighbour in the default
    // rounding mode.
    const double m = std::nearbyint(W / 2.0);
    return int(std::clamp(m, -32768.0, 32767.0));
}

void Panel::arrange(double W, double H, int M)
{
    resize(twipsToPx(W), twipsToPx(H));
    writeProp(m_top, Prop::Width, W);

    for (const Placed &p : m_placed) {
        const Rule &r = *p.rule;
        QWidget *w = p.w;
        const QWidget *ref = p.ref;
        double v = 0;
        switch (r.base) {
        case Base::M: v = M + r.k; break;
        case Base::W: v = W + r.k; break;
        case Base::H: v = H + r.k; break;
        case Base::Ref: v = (ref ? readProp(ref, r.refProp) : 0) + r.k; break;
        case Base::WLessOwnLeft: v = W - readProp(w, Prop::Left) + r.k; break;
        case Base::MIfShownElseW:
            v = (ref && !ref->isHidden()) ? M + r.k : W + r.k2;
            break;
        case Base::Changed: v = ctx.db().isChanged() ? 1 : 0; break;
        case Base::ChangedNotExpert: {
            auto *box = qobject_cast<const QAbstractButton *>(ref);
            v = (ctx.db().isChanged() && !(box && box->isChecked())) ? 1 : 0;
            break;
        }
        }
        writeProp(w, r.prop, v);
    }
    // Captions set since the panel was built (the entry modes' words) show whole.
    for (QLabel *label : findChildren<QLabel *>())
        if (m_controls.contains(label->objectName()))
            roster::fitCaption(label);
}

void Panel::applyExpertMode(bool expert)
{
    for (QWidget *w : m_hints)
        w->setVisible(!expert);

    if (m_expertMode1)
        writeProp(m_expertMode1, Prop::Top, expert ? 3555 : 3450);

    if (m_quickestWay) {
        if (expert)
            m_quickestWay->hide();
        else if (ctx.db().isChanged())
            m_quickestWay->show();  // with nothing changed its visibility stays as it is
    }

    if (QLabel *l = m_doubleClickToAdd) {
        if (expert) {
            roster::setBackColour(l, syscolor::ButtonFace);
            l->setText(QStringLiteral("List of Products and Services:"));
        } else {
            roster::setBackColour(l, syscolor::InfoBackground);
            l->setText(QStringLiteral("  Double-click to Bill *Marked Customers:  "));
        }
        l->setAccessibleName(l->text().trimmed());
    }
}

}  // namespace qor
