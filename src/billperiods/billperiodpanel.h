// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// fraMain(2), Bill Periods: the period chooser, the period fields, the
// invoice records tree of the period and the list of products to bill. In view
// mode it shows a finalised period and takes payments; in entry mode it builds
// a new period in the tree until "&Add New" finalises it. The rules live in
// billing.h; this class reads its controls, calls them and shows the outcome.
#include "billing/billing.h"
#include "billing/invoicetree.h"
#include "billperiods/billperiodeditor.h"
#include "database/money.h"
#include "shell/panel.h"

#include <array>

class QAbstractButton;
class QAction;
class QComboBox;
class QLabel;
class QLineEdit;
class QMenu;
class QTreeView;
class QTreeWidget;

namespace qor {

class KeyedList;
class InvoiceTree;
class InvoiceTrees;
class InvoiceTreeView;

class BillPeriodPanel : public Panel {
    Q_OBJECT
public:
    BillPeriodPanel(AppContext &ctx, InvoiceTrees &trees, QWidget *parent = nullptr);

    // This panel's part of RefreshBillPeriodList: empties cmbBillPeriod(1),
    // txtBillPeriod and tvwInvoiceRecords(0), locks the period fields
    // (ClearEntryFields 2), lists the name of every well-formed row of
    // lvwPeriods and selects the last one; that selection shows the period.
    void refreshBillPeriodList();
    // ClearEntryFields for kinds 1 (a new period is being entered) and 2 (no
    // entry under way); other kinds do nothing.
    void clearEntryFields(int kind);
    // lvwProducts(1) from lvwPAndS in table order, archived items left out,
    // each row keyed by its table key (Qt::UserRole); row 1 is selected when
    // there are rows.
    void refreshProductList();

    QComboBox *chooser() const { return m_chooser; }         // cmbBillPeriod(1)
    QTreeView *tree() const { return m_treeView; }           // tvwInvoiceRecords(0)
    QTreeWidget *productList() const { return m_products; }  // lvwProducts(1)
    InvoiceTree &treeModel() const;
    InvoiceTreeView *treeBinding() const { return m_binding; }
    const BillPeriodEditor &editor() const { return m_editor; }
    QMenu *popupC() const { return m_mnuPopupC; }  // mnuPopupC
    QMenu *popupB() const { return m_mnuPopupB; }  // mnuPopupB

    // The period names a chooser lists: field 1 of each row of lvwPeriods
    // that has exactly three field separators, in table order.
    static QStringList periodNames(const KeyedList &periods);
    // Fills a chooser with periodNames(); no entry selected, no change signalled.
    static void fillChooser(QComboBox *box, const KeyedList &periods);

    // The handlers, by the names the user meets them under.
    void cmdAddNewBPClick();
    void cmdCancelNewBPClick();
    void showBillPeriodEntry(bool isNew);
    void addBillPeriod();
    void cmdResetCustomerAccountsClick();
    void cmdAdjustBalanceClick();
    void lvwProductsDblClick();
    void tvwInvoiceRecordsMouseUp(Qt::MouseButton button, bool ctrl);
    void tvwInvoiceRecordsDblClick();
    // LogPayment on the selected customer; the buttons hide, the database changes.
    void logPayment(Money balance, const QString &note);

    // The entry under way as typed and billed; nothing outside an entry.
    std::optional<billing::BillEntry> openEntry() const;
    // Entry mode with entry's name, dates, marks and items (a recovered one).
    void reopenEntry(const billing::BillEntry &entry);

signals:
    // Something of the open entry changed: an item billed or removed, a
    // mark, the name or a date typed. No table changes with it.
    void entryEdited();

private:
    // The controls of view mode, whatever the trees show.
    void showViewControls();
    // The editor's look on the controls; showMode() also lays the panel out
    // for the mode and puts the focus where typing starts.
    void showLook();
    void showMode();
    void periodShown(int listIndex, const QString &row);
    void entryTouched();
    void rearrange();
    bool selectedHasRecord() const;
    // The kind of the selected node of tree 0; none when nothing is selected.
    std::optional<NodeKind> selectedKind() const;

    InvoiceTrees &m_trees;
    BillPeriodEditor m_editor;
    InvoiceTreeView *m_binding = nullptr;
    QComboBox *m_chooser = nullptr;     // cmbBillPeriod(1)
    QTreeView *m_treeView = nullptr;    // tvwInvoiceRecords(0)
    QTreeWidget *m_products = nullptr;  // lvwProducts(1)
    QLineEdit *m_txtBillPeriod = nullptr;
    std::array<QLineEdit *, 3> m_periodFields{};  // txtPField(1..3)
    QAbstractButton *m_cmdAddNewBP = nullptr, *m_cmdCancelNewBP = nullptr;
    QAbstractButton *m_cmdResetCustomerAccounts = nullptr, *m_cmdAdjustBalance = nullptr;
    QLabel *m_lblBillPeriodName = nullptr, *m_lblExample = nullptr, *m_lblDoubleClickToAdd = nullptr;
    QLabel *m_lblCustomerAccounts = nullptr;  // lblCustomerAccountsForThisPeriod
    QMenu *m_mnuPopupC = nullptr, *m_mnuPopupB = nullptr;
    QAction *m_mnuSelectThisOnly = nullptr, *m_mnuSelectAll = nullptr, *m_mnuDeleteItem = nullptr;
};

}  // namespace qor
