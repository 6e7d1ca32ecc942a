#include "billing/billperiodpanel.h"

#include "database/database.h"
#include "database/rowtypes.h"
#include "shell/appcontext.h"
#include "shell/roster.h"

#include <QComboBox>
#include <QLineEdit>
#include <QSignalBlocker>
#include <QTreeWidget>

namespace qor {

BillPeriodPanel::BillPeriodPanel(AppContext &ctx, QWidget *parent) : Panel(2, ctx, parent)
{
    m_chooser = require<QComboBox>("cmbBillPeriod(1)");
    m_tree = require<QTreeWidget>("tvwInvoiceRecords(0)");
    m_products = require<QTreeWidget>("lvwProducts(1)");
    m_txtBillPeriod = require<QLineEdit>("txtBillPeriod");
    for (int i = 1; i <= 3; ++i)
        m_periodFields[size_t(i - 1)] = require<QLineEdit>(QStringLiteral("txtPField(%1)").arg(i));
    // The buttons, the chooser and the trees get their handlers with the bill
    // period logic.

    const Database &db = ctx.db();
    connect(&db, &Database::aboutToReload, this, [this] {
        m_tree->clear();
        m_products->clear();
    });
    connect(&db, &Database::reloaded, this, [this] {
        refreshBillPeriodList();
        refreshProductList();
    });
    connect(&db, &Database::tableChanged, this, [this](Database::Table table) {
        if (table == Database::Table::Periods) refreshBillPeriodList();
        else if (table == Database::Table::Items) refreshProductList();
    });
}

QComboBox *BillPeriodPanel::chooser() const { return m_chooser; }
QTreeWidget *BillPeriodPanel::tree() const { return m_tree; }
QTreeWidget *BillPeriodPanel::productList() const { return m_products; }

QStringList BillPeriodPanel::periodNames(const KeyedList &periods)
{
    QStringList names;
    periods.forEach([&names](QStringView, QStringView text) {
        if (const auto period = PeriodView::parse(text))
            names.append(period->name.toString());
        return true;
    });
    return names;
}

void BillPeriodPanel::fillChooser(QComboBox *box, const KeyedList &periods)
{
    if (!box)
        return;
    // Filling an empty box would select its first entry on the way.
    const QSignalBlocker quiet(box);
    box->clear();
    box->addItems(periodNames(periods));
    box->setCurrentIndex(-1);
}

void BillPeriodPanel::refreshBillPeriodList()
{
    QComboBox *box = m_chooser;
    {
        const QSignalBlocker quiet(box);
        box->clear();
    }
    m_txtBillPeriod->clear();
    m_tree->clear();
    clearEntryFields(2);

    const KeyedList &periods = ctx.db().lvwPeriods;
    if (periods.count() == 0)
        return;
    fillChooser(box, periods);
    if (box->count() > 0)
        box->setCurrentIndex(box->count() - 1);
}

void BillPeriodPanel::clearEntryFields(int kind)
{
    if (kind == 1) {
        m_txtBillPeriod->clear();
        m_tree->clear();
        for (int i = 1; i <= 3; ++i) {
            QLineEdit *f = m_periodFields[size_t(i - 1)];
            f->clear();
            f->setReadOnly(false);
            // The bill due date still has to be typed: info colour.
            roster::setBackColour(f, i == 3 ? syscolor::InfoBackground : syscolor::Window);
        }
    } else if (kind == 2) {
        for (QLineEdit *f : m_periodFields) {
            f->setReadOnly(true);
            roster::setBackColour(f, syscolor::Window);
        }
    }
}

void BillPeriodPanel::refreshProductList()
{
    QTreeWidget *list = m_products;
    list->clear();
    QList<QTreeWidgetItem *> rows;
    ctx.db().lvwPAndS.forEach([&rows](QStringView key, QStringView text) {
        const ItemView row = ItemView::parse(text);
        if (!row.archived) {
            auto *item = new QTreeWidgetItem(QStringList{row.listText.toString()});
            item->setData(0, Qt::UserRole, key.toString());
            rows.append(item);
        }
        return true;
    });
    list->addTopLevelItems(rows);
    if (!rows.isEmpty())
        list->setCurrentItem(rows.first());
}

}  // namespace qor
