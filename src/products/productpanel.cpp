// SPDX-License-Identifier: GPL-3.0-or-later
#include "products/productpanel.h"

#include "billing/billing.h"
#include "billing/invoicetrees.h"
#include "database/database.h"
#include "database/rowtypes.h"
#include "settings/settingsstore.h"
#include "shell/appcontext.h"
#include "shell/roster.h"
#include "uiservices/dialogservice.h"
#include "uiservices/frmchecking.h"

#include <QAbstractButton>
#include <QApplication>
#include <QEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QScopedValueRollback>
#include <QTreeWidget>

namespace qor {

namespace {
using Mode = ProductEditor::Mode;
}  // namespace

ProductPanel::ProductPanel(AppContext &ctx, InvoiceTrees &trees, QWidget *parent)
    : Panel(1, ctx, parent), m_trees(trees)
{
    m_cmdAddNewItem = require<QAbstractButton>("cmdAddNewItem");
    m_cmdCancelNewItem = require<QAbstractButton>("cmdCancelNewItem");
    m_txtPrice = require<QLineEdit>("txtPrice");
    m_txtName = require<QLineEdit>("txtProductOrServiceName");
    m_lblPrice = require("lblPrice");
    m_lblName = require("lblProductOrServiceName");
    m_list = require<QTreeWidget>("lvwProducts(0)");

    connect(m_cmdAddNewItem, &QAbstractButton::clicked, this, &ProductPanel::cmdAddNewItemClick);
    connect(m_cmdCancelNewItem, &QAbstractButton::clicked, this, &ProductPanel::cmdCancelNewItemClick);
    if (m_txtPrice) {
        connect(m_txtPrice, &QLineEdit::textChanged, this, &ProductPanel::txtPriceChange);
        m_txtPrice->installEventFilter(this);
    }
    if (m_txtName) {
        connect(m_txtName, &QLineEdit::textChanged, this, &ProductPanel::txtProductOrServiceNameChange);
        m_txtName->installEventFilter(this);
    }
    if (m_list) {
        // Rows stand in table order, which is price order.
        m_list->setSortingEnabled(false);
        m_list->setUniformRowHeights(true);
        m_list->setSelectionMode(QAbstractItemView::SingleSelection);
        m_list->installEventFilter(this);
    }

    const Database &db = ctx.db();
    connect(&db, &Database::aboutToReload, this, [this] {
        m_list->clear();
    });
    connect(&db, &Database::reloaded, this, &ProductPanel::refreshProductList);
    connect(&db, &Database::tableChanged, this, [this](Database::Table table) {
        if (table == Database::Table::Items) refreshProductList();
    });
}

// The base lays out the panel, the first column of the list included.
void ProductPanel::arrange(double W, double H, int M) { Panel::arrange(W, H, M); }

void ProductPanel::setInfoColour(QWidget *w, bool info)
{
    roster::setBackColour(w, info ? syscolor::InfoBackground : syscolor::Window);
}

// The buttons, the entry fields and their colours as the editor holds them;
// only what differs is set.
void ProductPanel::showEditor()
{
    auto setButton = [](QAbstractButton *b, const QString &caption, bool shown) {
        b->setText(caption);
        if (b->isHidden() == shown) b->setVisible(shown);
    };
    setButton(m_cmdAddNewItem, ProductEditor::addNewCaption(m_editor.addNew().mode), m_editor.addNew().shown);
    setButton(m_cmdCancelNewItem, ProductEditor::cancelCaption(m_editor.cancel().mode), m_editor.cancel().shown);
    for (QWidget *w : {m_lblPrice, static_cast<QWidget *>(m_txtPrice), m_lblName, static_cast<QWidget *>(m_txtName)})
        if (w->isHidden() == m_editor.fieldsShown()) w->setVisible(m_editor.fieldsShown());
    if (m_priceAsksShown != m_editor.priceAsks()) setInfoColour(m_txtPrice, m_priceAsksShown = m_editor.priceAsks());
    if (m_nameAsksShown != m_editor.nameAsks()) setInfoColour(m_txtName, m_nameAsksShown = m_editor.nameAsks());
}

int ProductPanel::findProductRow(const QString &text) const
{
    const int n = m_list->topLevelItemCount();
    for (int i = 0; i < n; ++i)
        if (m_list->topLevelItem(i)->text(0) == text) return i + 1;
    return 0;
}

void ProductPanel::refreshProductList()
{
    if (m_list) {
        m_list->setUpdatesEnabled(false);
        m_list->clear();
        QList<QTreeWidgetItem *> rows;
        ctx.db().items().forEach([&rows](QStringView key, QStringView text) {
            const ItemView row = ItemView::parse(text);
            if (row.archived) return true;
            auto *item = new QTreeWidgetItem;
            item->setText(0, row.listText.toString());
            item->setData(0, Qt::UserRole, key.toString());
            rows.append(item);
            return true;
        });
        m_list->addTopLevelItems(rows);
        m_list->setUpdatesEnabled(true);
    }
    showProductEntry(false);
    if (m_list && m_list->topLevelItemCount() > 0) {
        QTreeWidgetItem *first = m_list->topLevelItem(0);
        m_list->setCurrentItem(first);
        first->setSelected(true);
    }
}

void ProductPanel::showProductEntry(bool isNew)
{
    if (isNew) {
        {
            // The editor empties its copy itself.
            const QScopedValueRollback filling(m_filling, true);
            m_txtPrice->clear();
            m_txtName->clear();
        }
        m_editor.startEntry();
    } else {
        m_editor.showList(m_list->topLevelItemCount() > 0);
    }
    showEditor();
    if (isNew) m_txtPrice->setFocus(Qt::OtherFocusReason);
}

void ProductPanel::txtPriceChange()
{
    if (m_filling) return;
    m_editor.typedPrice(m_txtPrice->text());
    showEditor();
}

void ProductPanel::txtProductOrServiceNameChange()
{
    if (m_filling) return;
    m_editor.typedName(m_txtName->text());
    showEditor();
}

void ProductPanel::cmdAddNewItemClick()
{
    if (m_editor.addNew().mode == Mode::Viewing) showProductEntry(true);
    else addProduct();
}

void ProductPanel::cmdCancelNewItemClick()
{
    if (m_editor.cancel().mode == Mode::Viewing) deleteProduct();
    else showProductEntry(false);
}

void ProductPanel::selectKey(const QString &key)
{
    const int n = m_list->topLevelItemCount();
    for (int i = 0; i < n; ++i) {
        QTreeWidgetItem *it = m_list->topLevelItem(i);
        if (it->data(0, Qt::UserRole).toString() == key) {
            m_list->setCurrentItem(it);
            it->setSelected(true);
            m_list->scrollToItem(it);
            return;
        }
    }
}

bool ProductPanel::addProduct()
{
    const ProductEditor::NewItem item =
        m_editor.newItem([this](const QString &listText) { return findProductRow(listText) > 0; });
    if (!item.problem.isEmpty()) {
        DialogService::current().warning(ctx.mainWindow(), AppTitle, item.problem);
        return false;
    }
    if (item.duplicate) {
        DialogService::current().warning(ctx.mainWindow(), QStringLiteral("Duplicate Product or Service Found"),
                                         QStringLiteral("A product or service was found with the exact same price and name.\r\n\r\n"
                                                        "(Products and Services can share the same name as long as they have unique prices.)"));
        return false;
    }
    // No row and no problem: not a price at all (Enter can ask without the button).
    if (!item.row) return false;
    // Both product lists (this one and the bill period panel's) follow the table.
    const QString key = ctx.db().addItem(*item.row).key;
    selectKey(key);
    showProductEntry(false);
    return true;
}

void ProductPanel::deleteProduct()
{
    if (settings::confirmEditsText() != QLatin1String("False")) {
        const auto answer = DialogService::current().warning(
            ctx.mainWindow(), QStringLiteral("Delete Existing Product or Service???"),
            QStringLiteral("Are you sure you want to delete this product or service from the database?"),
            QMessageBox::Ok | QMessageBox::Cancel, QMessageBox::Ok);
        if (answer != QMessageBox::Ok) return;
    }
    if (m_list->isHidden()) return;
    m_list->setFocus(Qt::OtherFocusReason);
    // Only the row the user sees highlighted is deleted: a current row
    // without the highlight (after an entry cleared it) is not a choice.
    QTreeWidgetItem *row = m_list->currentItem();
    if (!row || !row->isSelected()) return;
    QString key = row->data(0, Qt::UserRole).toString();
    Database &db = ctx.db();
    if (!db.items().contains(key)) return;

    FrmChecking &checking = ctx.showCheckingWindow();
    const EditOutcome removed =
        billing::removeItem(m_trees, key, [&checking](float percent) { checking.setProgress(percent); });
    checking.showOutcome(wordOf(removed.removal));
    checking.enableOK();
}

bool ProductPanel::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::KeyPress && m_editor.addIsDefault() && m_cmdAddNewItem) {
        auto *k = static_cast<QKeyEvent *>(event);
        if ((k->key() == Qt::Key_Return || k->key() == Qt::Key_Enter) && (watched == m_txtPrice || watched == m_txtName || watched == m_list) && m_cmdAddNewItem->isVisible() && m_cmdAddNewItem->isEnabled()) {
            m_cmdAddNewItem->click();
            return true;
        }
    }
    return Panel::eventFilter(watched, event);
}

}  // namespace qor
