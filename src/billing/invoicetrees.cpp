#include "billing/invoicetrees.h"

#include "billing/billing.h"
#include "database/database.h"
#include "database/rowtypes.h"

namespace qor {

InvoiceTrees::InvoiceTrees(Database &db) : QObject(&db), m_db(db)
{
    setObjectName(QStringLiteral("InvoiceTrees"));
}

InvoiceTrees &InvoiceTrees::of(Database &db)
{
    if (auto *t = db.findChild<InvoiceTrees *>(QStringLiteral("InvoiceTrees"), Qt::FindDirectChildrenOnly)) return *t;
    return *new InvoiceTrees(db);
}

void InvoiceTrees::showPeriod(int listIndex, const QString &name)
{
    if (listIndex < 0 || listIndex + 1 > m_db.lvwPeriods.count()) return;
    const QString row = m_db.lvwPeriods.text(listIndex + 1);
    if (!PeriodView::parse(row)) return;
    m_index = listIndex;
    m_name = name;
    billing::rebuildInvoiceTrees(m_tree0, m_tree1, m_db, name);
    emit periodShown(listIndex, row);
}

void InvoiceTrees::forgetPeriod()
{
    m_index = -1;
    m_name.clear();
}

}  // namespace qor
