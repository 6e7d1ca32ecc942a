#include "printing/printingpanel.h"

#include "billing/billing.h"
#include "billing/billperiodpanel.h"
#include "billing/invoicetrees.h"
#include "billing/invoicetreeview.h"
#include "database/database.h"
#include "shell/appcontext.h"
#include "uiservices/dialogservice.h"

#include <QComboBox>
#include <QSignalBlocker>
#include <QTreeView>

namespace qor {

PrintingPanel::PrintingPanel(AppContext &ctx, QWidget *parent)
    : Panel(3, ctx, parent), m_trees(InvoiceTrees::of(ctx.db()))
{
    m_chooser = require<QComboBox>("cmbBillPeriod(2)");
    m_tree = require<QTreeView>("tvwInvoiceRecords(1)");
    m_binding = new InvoiceTreeView(m_tree, &m_trees.tree(1));
    // The print buttons get their handlers with the print run.

    connect(m_chooser, &QComboBox::currentIndexChanged, this,
            [this](int index) { m_trees.showPeriod(index, m_chooser->itemText(index)); });
    connect(&m_trees, &InvoiceTrees::periodShown, this, [this](int listIndex) { periodShown(listIndex); });
    connect(m_binding, &InvoiceTreeView::mouseUp, this,
            [this](Qt::MouseButton button) { tvwInvoiceRecordsMouseUp(button); });

    const Database &db = ctx.db();
    connect(&db, &Database::aboutToReload, this, [this] { m_trees.tree(1).clear(); });
    connect(&db, &Database::reloaded, this, &PrintingPanel::refreshBillPeriodList);
    connect(&db, &Database::tableChanged, this, [this](Database::Table table) {
        if (table == Database::Table::Periods) refreshBillPeriodList();
    });
}

InvoiceTree &PrintingPanel::treeModel() const { return m_trees.tree(1); }

void PrintingPanel::refreshBillPeriodList()
{
    BillPeriodPanel::fillChooser(m_chooser, ctx.db().lvwPeriods);
    // Both choosers show the same period: the one on show, when the Bill
    // Periods chooser has chosen it already.
    periodShown(m_trees.chosenIndex());
}

void PrintingPanel::periodShown(int listIndex)
{
    if (listIndex >= m_chooser->count() || m_chooser->currentIndex() == listIndex) return;
    const QSignalBlocker quiet(m_chooser);
    m_chooser->setCurrentIndex(listIndex);
}

void PrintingPanel::tvwInvoiceRecordsMouseUp(Qt::MouseButton button)
{
    // Nothing happens while the Bill Periods tree is empty, whichever tree.
    if (m_trees.tree(0).isEmpty() || button != Qt::RightButton) return;
    InvoiceTree &t = treeModel();
    const int node = m_binding->selectedNode();
    if (!billing::isCustomerKey(t.key(node))) return;
    const std::optional<QString> answer = DialogService::current().text(
        ctx.mainWindow(), billing::text::InvoiceNote.title, billing::text::InvoiceNote.text, QString());
    billing::addInvoiceNote(t, node, answer.value_or(QString()));
}

}  // namespace qor
