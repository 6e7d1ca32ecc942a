#include "printing/printingpanel.h"

#include "billing/billperiodpanel.h"
#include "database/database.h"
#include "shell/appcontext.h"

#include <QComboBox>
#include <QTreeWidget>

namespace qor {

PrintingPanel::PrintingPanel(AppContext &ctx, QWidget *parent) : Panel(3, ctx, parent)
{
    // The print buttons and the tree's note menu get their handlers with the
    // print run.
}

QComboBox *PrintingPanel::chooser() const { return control<QComboBox>(QStringLiteral("cmbBillPeriod(2)")); }
QTreeWidget *PrintingPanel::tree() const { return control<QTreeWidget>(QStringLiteral("tvwInvoiceRecords(1)")); }

void PrintingPanel::refreshBillPeriodList()
{
    BillPeriodPanel::fillChooser(chooser(), ctx.db().lvwPeriods);
}

}  // namespace qor
