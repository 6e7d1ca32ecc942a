#pragma once
// fraMain(3), Printing: the second view of the period chooser and of the
// invoice records tree, the two print buttons and the progress of a run.
#include "shell/panel.h"

class QComboBox;
class QTreeView;

namespace qor {

class InvoiceTree;
class InvoiceTrees;
class InvoiceTreeView;

class PrintingPanel : public Panel {
    Q_OBJECT
public:
    explicit PrintingPanel(AppContext &ctx, QWidget *parent = nullptr);

    // This panel's part of RefreshBillPeriodList: cmbBillPeriod(2) lists the
    // periods of lvwPeriods like the chooser on Bill Periods; it selects the
    // period on show, if any.
    void refreshBillPeriodList();

    QComboBox *chooser() const { return m_chooser; }  // cmbBillPeriod(2)
    QTreeView *tree() const { return m_tree; }        // tvwInvoiceRecords(1)
    // What the tree shows, in the order the print run walks it.
    InvoiceTree &treeModel() const;
    InvoiceTreeView *treeBinding() const { return m_binding; }

    // A right click on a customer: the invoice note for this print run.
    void tvwInvoiceRecordsMouseUp(Qt::MouseButton button);

private:
    void periodShown(int listIndex);
    InvoiceTrees &m_trees;
    InvoiceTreeView *m_binding = nullptr;
    QComboBox *m_chooser = nullptr;
    QTreeView *m_tree = nullptr;
};

}  // namespace qor
