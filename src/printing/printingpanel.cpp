#include "printing/printingpanel.h"

#include "billing/billperiodpanel.h"
#include "database/database.h"
#include "shell/appcontext.h"

#include <QComboBox>
#include <QTreeWidget>

namespace qor {

PrintingPanel::PrintingPanel(AppContext &ctx, QWidget *parent) : Panel(3, ctx, parent)
{
    m_chooser = require<QComboBox>("cmbBillPeriod(2)");
    m_tree = require<QTreeWidget>("tvwInvoiceRecords(1)");
    // The print buttons and the tree's note menu get their handlers with the
    // print run.

    const Database &db = ctx.db();
    connect(&db, &Database::aboutToReload, this, [this] { m_tree->clear(); });
    connect(&db, &Database::reloaded, this, &PrintingPanel::refreshBillPeriodList);
    connect(&db, &Database::tableChanged, this, [this](Database::Table table) {
        if (table == Database::Table::Periods) refreshBillPeriodList();
    });
}

QComboBox *PrintingPanel::chooser() const { return m_chooser; }
QTreeWidget *PrintingPanel::tree() const { return m_tree; }

void PrintingPanel::refreshBillPeriodList()
{
    BillPeriodPanel::fillChooser(m_chooser, ctx.db().lvwPeriods);
}

}  // namespace qor
