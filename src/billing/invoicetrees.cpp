// SPDX-License-Identifier: GPL-3.0-or-later
#include "billing/invoicetrees.h"

#include "billing/billing.h"
#include "database/database.h"
#include "database/rowtypes.h"

namespace qor {

InvoiceTrees::InvoiceTrees(Database &db, QObject *parent) : QObject(parent), m_db(db)
{
    // Reading the books again ends any entry; whoever reads them has asked.
    connect(&db, &Database::aboutToReload, this, [this] {
        if (!m_entryOpen) return;
        m_entryOpen = false;
        m_tree0.clear();
        emit entryDropped();
    });
}

void InvoiceTrees::showPeriod(int listIndex, const QString &name)
{
    if (listIndex < 0 || listIndex + 1 > m_db.periods().count()) return;
    const QString row = m_db.periods().text(listIndex + 1);
    if (!PeriodView::parse(row)) return;
    m_index = listIndex;
    m_name = name;
    if (m_entryOpen) billing::rebuildInvoiceTree(m_tree1, m_db, name);
    else billing::rebuildInvoiceTrees(m_tree0, m_tree1, m_db, name);
    emit periodShown(listIndex, row);
}

void InvoiceTrees::beginEntry()
{
    m_entryOpen = true;
    billing::resetNewPeriodTree(m_tree0, m_db);
}

void InvoiceTrees::dropEntry()
{
    if (!m_entryOpen) return;
    m_entryOpen = false;
    if (m_index >= 0) showPeriod(m_index, m_name);
    else m_tree0.clear();
    emit entryDropped();
}

void InvoiceTrees::forgetPeriod()
{
    m_index = -1;
    m_name.clear();
}

}  // namespace qor
