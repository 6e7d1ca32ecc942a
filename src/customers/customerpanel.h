// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// fraMain(0): the customer list and the entry fields of one customer.
#include "customers/customereditor.h"
#include "customers/customerlist.h"
#include "database/rowtypes.h"
#include "shell/panel.h"

#include <QString>
#include <array>
#include <vector>

class QTreeWidget;
class QTreeWidgetItem;
class QAbstractButton;
class QLabel;
class QLineEdit;

namespace qor {

class InvoiceTrees;

class CustomerPanel : public Panel {
    Q_OBJECT
public:
    // trees: the invoice records trees, which a delete keeps in step.
    CustomerPanel(AppContext &ctx, InvoiceTrees &trees, QWidget *parent = nullptr);

    void arrange(double W, double H, int M) override;

    void refreshCustomerList();  // RefreshCustomerList
    void showCustomerDetails();  // ShowCustomerDetails
    void resetCustomerPanel();   // ResetCustomerPanel (also after every database read)
    void clearEntryFields();     // ClearEntryFields(0): txtField(0..7) text and tag emptied
    void showAddNew();           // cmdAddNew shown (before the first read)

    QTreeWidget *list() const;     // lvwCustomersVis
    int rowCount() const;          // rows of lvwCustomersVis
    int selectedPosition() const;  // 1-based, 0 when none
    void focusList();              // gives lvwCustomersVis the focus when it has rows and is visible

    // The handlers and routines of the panel. Each button handler acts on
    // its button's mode in the editor.
    void cmdAddNewClick();
    void cmdUndoClick();
    void startNewCustomer();
    // key empty: a new CID is given and written back. False when the user
    // cancelled at the duplicate question (nothing changed then).
    bool addCustomer(QString &key);
    // False (after telling the user) when typed text can't be stored as it stands.
    bool entryStorable();
    void applyCustomerEdit();
    void undoCustomerEdit();
    void deleteCustomer();
    // 1-based position of the first row whose text is exactly name, or 0.
    // A row under excludeKey is passed over.
    int findCustomerRow(const QString &name, const QString &excludeKey = {}) const;
    void cmdSearchClick();
    void txtSearchChange();
    void txtFieldChange(int index);
    void txtFieldClick(int index);

    // Display name from the fields: "Last, First", or the first name alone.
    QString displayName() const;
    QString fieldText(int index) const;
    // The customer row the entry fields make.
    CustomerRow entryRow() const;
    QString fieldTag(int index) const { return m_editor.stored(index); }
    QString loadedKey() const { return m_editor.loadedKey(); }
    const CustomerEditor &editor() const { return m_editor; }

    static constexpr int FieldCount = CustomerRow::EntryCount;
    static constexpr int fieldLimit(int index) { return index <= 4 ? 32 : (index <= 6 ? 128 : 0); }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    InvoiceTrees &m_trees;
    QWidget *field(int index) const { return m_fields.at(size_t(index)); }
    void setFieldText(int index, const QString &text);
    void setTag(int index, const QString &tag);
    void setFieldInfoColour(int index, bool info);
    QTreeWidgetItem *selectedRow() const;
    void selectRow(QTreeWidgetItem *item);
    void selectPosition(int position);
    static QTreeWidgetItem *makeRow(const QString &key, const QString &name);
    void showUpdate(const CustomerList::Update &update);
    QTreeWidgetItem *insertVisibleRow(const QString &key, const QString &name);
    bool duplicateCheck(const QString &name, const QString &excludeKey);
    bool confirm(const QString &title, const QString &text);
    void setButton(QAbstractButton *b, const QString &caption, bool visible);
    void setPrintShown(bool shown);
    void showEditor();

    std::array<QWidget *, FieldCount> m_fields{};
    // The entry and the buttons' modes; the customer whose details the
    // fields were filled from is what an edit replaces, whatever row is
    // highlighted by then.
    CustomerEditor m_editor;
    // The rows lvwCustomersVis shows, kept in step with it.
    CustomerList m_rows;
    // Set while the panel fills the fields itself: the editor hears of the
    // fill once, when it is done.
    bool m_filling = false;
    std::array<bool, FieldCount> m_asksShown{};
    bool m_coloured = false;
    // Set while the panel moves the list's rows itself, so that the fields
    // don't follow a current row that is only passing through.
    bool m_holdFields = false;
    void followSelection();
    bool isNewEntry() const;
    QAbstractButton *m_cmdAddNew = nullptr;
    QAbstractButton *m_cmdUndo = nullptr;
    QAbstractButton *m_cmdPrint = nullptr;
    QAbstractButton *m_cmdSearch = nullptr;
    QLineEdit *m_txtSearch = nullptr;
    QLabel *m_lblCustomers = nullptr;
    QTreeWidget *m_list = nullptr;
};

}  // namespace qor
