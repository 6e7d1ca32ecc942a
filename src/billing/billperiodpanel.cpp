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

namespace {
QString periodField(int i) { return QStringLiteral("txtPField(%1)").arg(i); }
}  // namespace

BillPeriodPanel::BillPeriodPanel(AppContext &ctx, QWidget *parent) : Panel(2, ctx, parent)
{
    // The buttons, the chooser and the trees get their handlers with the bill
    // period logic.
}

QComboBox *BillPeriodPanel::chooser() const { return control<QComboBox>(QStringLiteral("cmbBillPeriod(1)")); }
QTreeWidget *BillPeriodPanel::tree() const { return control<QTreeWidget>(QStringLiteral("tvwInvoiceRecords(0)")); }
QTreeWidget *BillPeriodPanel::productList() const { return control<QTreeWidget>(QStringLiteral("lvwProducts(1)")); }

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
    QComboBox *box = chooser();
    if (box) {
        const QSignalBlocker quiet(box);
        box->clear();
    }
    if (auto *name = control<QLineEdit>(QStringLiteral("txtBillPeriod")))
        name->clear();
    if (QTreeWidget *t = tree())
        t->clear();
    clearEntryFields(2);

    const KeyedList &periods = ctx.db().lvwPeriods;
    if (periods.count() == 0 || !box)
        return;
    fillChooser(box, periods);
    if (box->count() > 0)
        box->setCurrentIndex(box->count() - 1);
}

void BillPeriodPanel::clearEntryFields(int kind)
{
    if (kind == 1) {
        if (auto *name = control<QLineEdit>(QStringLiteral("txtBillPeriod")))
            name->clear();
        if (QTreeWidget *t = tree())
            t->clear();
        for (int i = 1; i <= 3; ++i) {
            if (auto *f = control<QLineEdit>(periodField(i))) {
                f->clear();
                f->setReadOnly(false);
                // The bill due date still has to be typed: info colour.
                roster::setBackColour(f, i == 3 ? syscolor::InfoBackground : syscolor::Window);
            }
        }
    } else if (kind == 2) {
        for (int i = 1; i <= 3; ++i) {
            if (auto *f = control<QLineEdit>(periodField(i))) {
                f->setReadOnly(true);
                roster::setBackColour(f, syscolor::Window);
            }
        }
    }
}

void BillPeriodPanel::refreshProductList()
{
    QTreeWidget *list = productList();
    if (!list)
        return;
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
