#include "products/productpanel.h"

#include "billing/archiving.h"
#include "billing/frmchecking.h"
#include "database/database.h"
#include "database/entryrules.h"
#include "database/regional.h"
#include "database/rows.h"
#include "shell/appcontext.h"
#include "shell/roster.h"
#include "shell/settingsstore.h"

#include <QAbstractButton>
#include <QApplication>
#include <QEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMessageBox>
#include <QTreeWidget>

namespace qor {

namespace {
const QString kNewItem = QStringLiteral("&New Product or Service");
const QString kAddNew = QStringLiteral("&Add New");
const QString kDeleteExisting = QStringLiteral("&Delete Existing");
const QString kCancelNew = QStringLiteral("&Cancel New");
}  // namespace

ProductPanel::ProductPanel(AppContext &ctx, QWidget *parent) : Panel(1, ctx, parent)
{
    m_cmdAddNewItem = control<QAbstractButton>(QStringLiteral("cmdAddNewItem"));
    m_cmdCancelNewItem = control<QAbstractButton>(QStringLiteral("cmdCancelNewItem"));
    m_txtPrice = control<QLineEdit>(QStringLiteral("txtPrice"));
    m_txtName = control<QLineEdit>(QStringLiteral("txtProductOrServiceName"));
    m_lblPrice = controlWidget(QStringLiteral("lblPrice"));
    m_lblName = controlWidget(QStringLiteral("lblProductOrServiceName"));
    m_list = control<QTreeWidget>(QStringLiteral("lvwProducts(0)"));

    if (m_cmdAddNewItem)
        connect(m_cmdAddNewItem, &QAbstractButton::clicked, this, &ProductPanel::cmdAddNewItemClick);
    if (m_cmdCancelNewItem)
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
}

// The base lays out the panel, the first column of the list included.
void ProductPanel::arrange(double W, double H, int M) { Panel::arrange(W, H, M); }

QString ProductPanel::displayText(const QString &price, const QString &name)
{
    return regional::formatCurrency(regional::priceValue(price)) + QStringLiteral(" - ") + name;
}

bool ProductPanel::inEntry() const
{
    return m_cmdCancelNewItem && m_cmdCancelNewItem->text() == kCancelNew && m_txtPrice && !m_txtPrice->isHidden();
}

void ProductPanel::setInfoColour(QWidget *w, bool info)
{
    roster::setBackColour(w, info ? syscolor::InfoBackground : syscolor::Window);
}

int ProductPanel::findProductRow(const QString &text) const
{
    if (!m_list) return 0;
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
        ctx.db().lvwPAndS.forEach([&rows](QStringView key, QStringView text) {
            const QStringView shown = afterSortPrice(text);
            if (shown.startsWith(ArchiveMark)) return true;
            auto *item = new QTreeWidgetItem;
            item->setText(0, shown.toString());
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

// Both product lists (this one and the bill period panel's) follow the
// table, so the main window rebuilds them together.
void ProductPanel::refreshBothLists()
{
    ctx.refreshProductList();
}

void ProductPanel::showProductEntry(bool isNew)
{
    if (isNew) {
        if (m_txtPrice) m_txtPrice->clear();
        if (m_txtName) m_txtName->clear();
        if (m_cmdCancelNewItem) {
            m_cmdCancelNewItem->setText(kCancelNew);
            m_cmdCancelNewItem->show();
        }
        if (m_cmdAddNewItem) m_cmdAddNewItem->setText(kAddNew);
        setInfoColour(m_txtPrice, true);
        setInfoColour(m_txtName, true);
    } else {
        if (m_cmdCancelNewItem) {
            m_cmdCancelNewItem->setText(kDeleteExisting);
            m_cmdCancelNewItem->setVisible(m_list && m_list->topLevelItemCount() > 0);
        }
        if (m_cmdAddNewItem) m_cmdAddNewItem->setText(kNewItem);
    }
    for (QWidget *w : {m_lblPrice, static_cast<QWidget *>(m_txtPrice), m_lblName, static_cast<QWidget *>(m_txtName)})
        if (w) w->setVisible(isNew);
    if (m_cmdAddNewItem) m_cmdAddNewItem->setVisible(!isNew);
    if (isNew && m_txtPrice && !m_txtPrice->isHidden()) {
        m_txtPrice->setFocus(Qt::OtherFocusReason);
        m_addIsDefault = true;
    }
}

void ProductPanel::updateAddVisibility()
{
    if (!m_cmdAddNewItem || !m_txtPrice || !m_txtName) return;
    m_cmdAddNewItem->setVisible(regional::isNumeric(m_txtPrice->text()) && !m_txtName->text().isEmpty());
}

void ProductPanel::txtPriceChange()
{
    if (!inEntry()) return;
    updateAddVisibility();
    const QString t = m_txtPrice->text();
    setInfoColour(m_txtPrice, !(t.size() > 0 && regional::isNumeric(t)));
}

void ProductPanel::txtProductOrServiceNameChange()
{
    if (!inEntry() || !m_txtName) return;
    updateAddVisibility();
    setInfoColour(m_txtName, m_txtName->text().isEmpty());
}

void ProductPanel::cmdAddNewItemClick()
{
    if (!m_cmdAddNewItem) return;
    if (m_cmdAddNewItem->text() == kNewItem) showProductEntry(true);
    else addProduct();
}

void ProductPanel::cmdCancelNewItemClick()
{
    if (!m_cmdCancelNewItem) return;
    if (m_cmdCancelNewItem->text() == kDeleteExisting) deleteProduct();
    else showProductEntry(false);
}

void ProductPanel::selectKey(const QString &key)
{
    if (!m_list) return;
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
    const QString price = m_txtPrice ? m_txtPrice->text() : QString();
    const QString name = m_txtName ? m_txtName->text() : QString();
    // The button only shows for a numeric price; Enter could still reach here.
    if (!regional::isNumeric(price)) return false;
    const QString shown = displayText(price, name);
    if (const QString why = entry::productProblem(regional::formatCurrency(regional::priceValue(price)), name);
        !why.isEmpty()) {
        QMessageBox::warning(ctx.mainWindow(), QStringLiteral("QOR"), why);
        return false;
    }
    if (findProductRow(shown) > 0) {
        QMessageBox::warning(ctx.mainWindow(), QStringLiteral("Duplicate Product or Service Found"),
                             QStringLiteral("A product or service was found with the exact same price and name.\r\n\r\n"
                                            "(Products and Services can share the same name as long as they have unique prices.)"));
        return false;
    }
    Database &db = ctx.db();
    const QString key = QString::number(Database::nextKeyNumber(db.lvwPAndS) + 1) + QLatin1Char('k');
    db.lvwPAndS.add(key, regional::sortPrice(price) + shown);
    if (m_list) m_list->clear();
    refreshBothLists();
    selectKey(key);
    ctx.showDatabaseChanged(true);
    showProductEntry(false);
    return true;
}

void ProductPanel::deleteProduct()
{
    if (settings::confirmEditsText() != QLatin1String("False")) {
        QMessageBox box(QMessageBox::Warning, QStringLiteral("Delete Existing Product or Service???"),
                        QStringLiteral("Are you sure you want to delete this product or service from the database?"),
                        QMessageBox::Ok | QMessageBox::Cancel, ctx.mainWindow());
        box.setDefaultButton(QMessageBox::Ok);
        if (box.exec() != QMessageBox::Ok) return;
    }
    if (!m_list || m_list->isHidden()) return;
    m_list->setFocus(Qt::OtherFocusReason);
    QTreeWidgetItem *row = m_list->currentItem();
    if (!row) return;
    QString key = row->data(0, Qt::UserRole).toString();
    Database &db = ctx.db();
    if (!db.lvwPAndS.contains(key)) return;

    const bool found = productIsBilled(db, key, ctx.mainWindow());
    archiveProductStep(db, key, found);
    refreshBothLists();
    if (FrmChecking *w = FrmChecking::existing()) w->enableOK();
    ctx.showDatabaseChanged(true);
}

bool ProductPanel::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::KeyPress && m_addIsDefault && m_cmdAddNewItem) {
        auto *k = static_cast<QKeyEvent *>(event);
        if ((k->key() == Qt::Key_Return || k->key() == Qt::Key_Enter)
            && (watched == m_txtPrice || watched == m_txtName || watched == m_list)
            && m_cmdAddNewItem->isVisible() && m_cmdAddNewItem->isEnabled()) {
            m_cmdAddNewItem->click();
            return true;
        }
    }
    return Panel::eventFilter(watched, event);
}

}  // namespace qor
