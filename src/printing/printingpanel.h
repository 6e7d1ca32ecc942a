#pragma once
// fraMain(3), Printing: the second view of the period chooser and of the
// invoice records tree, the two print buttons and the progress of a run.
#include "shell/panel.h"

class QComboBox;
class QTreeWidget;

namespace qor {

class PrintingPanel : public Panel {
    Q_OBJECT
public:
    explicit PrintingPanel(AppContext &ctx, QWidget *parent = nullptr);

    // This panel's part of RefreshBillPeriodList: cmbBillPeriod(2) lists the
    // periods of lvwPeriods like the chooser on Bill Periods, with no entry
    // selected.
    void refreshBillPeriodList();

    QComboBox *chooser() const;  // cmbBillPeriod(2)
    QTreeWidget *tree() const;   // tvwInvoiceRecords(1)

private:
    QComboBox *m_chooser = nullptr;
    QTreeWidget *m_tree = nullptr;
};

}  // namespace qor
