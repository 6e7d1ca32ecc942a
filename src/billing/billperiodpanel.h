#pragma once
// fraMain(2), Bill Periods: the period chooser, the period fields, the
// invoice records tree of the period and the list of products to bill.
#include "shell/panel.h"

#include <array>

class QComboBox;
class QLineEdit;
class QTreeWidget;

namespace qor {

class KeyedList;

class BillPeriodPanel : public Panel {
    Q_OBJECT
public:
    explicit BillPeriodPanel(AppContext &ctx, QWidget *parent = nullptr);

    // This panel's part of RefreshBillPeriodList: empties cmbBillPeriod(1),
    // txtBillPeriod and tvwInvoiceRecords(0), locks the period fields
    // (ClearEntryFields 2), lists the name of every well-formed row of
    // lvwPeriods and selects the last one; that selection is the chooser's
    // own change, so whatever shows a period follows it.
    void refreshBillPeriodList();
    // ClearEntryFields for kinds 1 (a new period is being entered) and 2 (no
    // entry under way); other kinds do nothing.
    void clearEntryFields(int kind);
    // lvwProducts(1) from lvwPAndS in table order, archived items left out,
    // each row keyed by its table key (Qt::UserRole); row 1 is selected when
    // there are rows.
    void refreshProductList();

    QComboBox *chooser() const;      // cmbBillPeriod(1)
    QTreeWidget *tree() const;       // tvwInvoiceRecords(0)
    QTreeWidget *productList() const;  // lvwProducts(1)

    // The period names a chooser lists: field 1 of each row of lvwPeriods
    // that has exactly three field separators, in table order.
    static QStringList periodNames(const KeyedList &periods);
    // Fills a chooser with periodNames(); no entry selected, no change signalled.
    static void fillChooser(QComboBox *box, const KeyedList &periods);

private:
    QComboBox *m_chooser = nullptr;          // cmbBillPeriod(1)
    QTreeWidget *m_tree = nullptr;           // tvwInvoiceRecords(0)
    QTreeWidget *m_products = nullptr;       // lvwProducts(1)
    QLineEdit *m_txtBillPeriod = nullptr;
    std::array<QLineEdit *, 3> m_periodFields{};  // txtPField(1..3)
};

}  // namespace qor
