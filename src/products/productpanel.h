// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// fraMain(1): the catalogue of products and services.
#include "shell/panel.h"

#include <QString>

class QAbstractButton;
class QLineEdit;
class QTreeWidget;

namespace qor {

class InvoiceTrees;

class ProductPanel : public Panel {
    Q_OBJECT
public:
    // trees: the invoice records trees, which a delete keeps in step.
    ProductPanel(AppContext &ctx, InvoiceTrees &trees, QWidget *parent = nullptr);

    void arrange(double W, double H, int M) override;

    // Rebuilds lvwProducts(0) from lvwPAndS (archived rows left out), goes to the
    // list state (ShowProductEntry(false)) and selects row 1 when there are rows.
    void refreshProductList();
    void showProductEntry(bool isNew);  // ShowProductEntry

    // Handlers and routines; each button handler reads its own caption first.
    void cmdAddNewItemClick();
    void cmdCancelNewItemClick();
    // False when nothing was added (a duplicate).
    bool addProduct();
    void deleteProduct();
    // 1-based position in lvwProducts(0) of the first row whose text is
    // exactly displayText, or 0.
    int findProductRow(const QString &displayText) const;
    void txtPriceChange();
    void txtProductOrServiceNameChange();

    QTreeWidget *list() const { return m_list; }
    // Enter presses cmdAddNewItem while it is visible, once an entry has made
    // it the default button.
    bool addIsDefault() const { return m_addIsDefault; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    InvoiceTrees &m_trees;
    void updateAddVisibility();
    void setInfoColour(QWidget *w, bool info);
    void selectKey(const QString &key);
    bool inEntry() const;

    QAbstractButton *m_cmdAddNewItem = nullptr;
    QAbstractButton *m_cmdCancelNewItem = nullptr;
    QLineEdit *m_txtPrice = nullptr;
    QLineEdit *m_txtName = nullptr;
    QWidget *m_lblPrice = nullptr;
    QWidget *m_lblName = nullptr;
    QTreeWidget *m_list = nullptr;
    bool m_addIsDefault = false;
};

}  // namespace qor
