// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// fraMain(1): the catalogue of products and services.
#include "products/producteditor.h"
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

    // Handlers and routines; each button handler acts on its button's mode.
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
    bool addIsDefault() const { return m_editor.addIsDefault(); }
    const ProductEditor &editor() const { return m_editor; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    InvoiceTrees &m_trees;
    void setInfoColour(QWidget *w, bool info);
    void showEditor();
    void selectKey(const QString &key);

    QAbstractButton *m_cmdAddNewItem = nullptr;
    QAbstractButton *m_cmdCancelNewItem = nullptr;
    QLineEdit *m_txtPrice = nullptr;
    QLineEdit *m_txtName = nullptr;
    QWidget *m_lblPrice = nullptr;
    QWidget *m_lblName = nullptr;
    QTreeWidget *m_list = nullptr;
    ProductEditor m_editor;
    bool m_filling = false;  // the panel empties the fields itself
    // Both fields start with the info background.
    bool m_priceAsksShown = true, m_nameAsksShown = true;
};

}  // namespace qor
