// SPDX-License-Identifier: GPL-3.0-or-later
#include "statements/statementsmodel.h"

#include "database/regional.h"

#include <algorithm>
#include <limits>
#include <numeric>

namespace qor::statements {

StatementsModel::StatementsModel(QObject *parent)
    : QAbstractTableModel(parent), m_dateForm(regional::dateFormatString())
{
}

void StatementsModel::setReport(Report report)
{
    beginResetModel();
    m_report = std::move(report);
    m_order.resize(m_report.accounts.size());
    std::iota(m_order.begin(), m_order.end(), 0);
    applySort();
    endResetModel();
}

const Account &StatementsModel::account(int row) const
{
    return m_report.accounts[size_t(m_order[size_t(row)])];
}

int StatementsModel::rowOf(const QString &cid) const
{
    for (size_t r = 0; r < m_order.size(); ++r)
        if (m_report.accounts[size_t(m_order[r])].cid == cid)
            return int(r);
    return -1;
}

int StatementsModel::findName(QStringView prefix) const
{
    if (prefix.isEmpty())
        return -1;
    for (size_t r = 0; r < m_order.size(); ++r)
        if (QStringView(m_report.accounts[size_t(m_order[r])].name).startsWith(prefix, Qt::CaseInsensitive))
            return int(r);
    return -1;
}

int StatementsModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_order.size());
}

int StatementsModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant StatementsModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= rowCount())
        return {};
    const Account &a = account(index.row());
    const int c = index.column();
    if (role == Qt::DisplayRole) {
        if (c == Name)
            return a.archived ? a.name + QStringLiteral(" (archived)") : a.name;
        if (c == Total)
            return a.total.toCurrencyText();
        if (c == OldestDue)
            return regional::formatDate(a.oldestDue, m_dateForm);
        if (c == Credits)
            return a.credits.isZero() ? QString() : (-a.credits).toCurrencyText();
        return a.aging[size_t(c - FirstAging)].toCurrencyText();
    }
    if (role == Qt::TextAlignmentRole) {
        if (c == Name)
            return int(Qt::AlignLeft | Qt::AlignVCenter);
        return int((c == OldestDue ? Qt::AlignHCenter : Qt::AlignRight) | Qt::AlignVCenter);
    }
    return {};
}

QVariant StatementsModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QAbstractTableModel::headerData(section, orientation, role);
    if (section == Name)
        return QStringLiteral("Customer");
    if (section == Total)
        return QStringLiteral("Total owed");
    if (section == OldestDue)
        return QStringLiteral("Oldest due");
    if (section == Credits)
        return QStringLiteral("Credits");
    return bucketCaption(section - FirstAging);
}

void StatementsModel::sort(int column, Qt::SortOrder order)
{
    if (column < 0 || column >= ColumnCount)
        return;
    emit layoutAboutToBeChanged({}, QAbstractItemModel::VerticalSortHint);
    const QModelIndexList before = persistentIndexList();
    std::vector<int> accountOf;
    accountOf.reserve(size_t(before.size()));
    for (const QModelIndex &i : before)
        accountOf.push_back(m_order[size_t(i.row())]);
    m_sortColumn = column;
    m_sortOrder = order;
    applySort();
    // Where each account stands now, so selections move with their rows.
    std::vector<int> rowOfAccount(m_order.size());
    for (size_t r = 0; r < m_order.size(); ++r)
        rowOfAccount[size_t(m_order[r])] = int(r);
    QModelIndexList after;
    after.reserve(before.size());
    for (qsizetype k = 0; k < before.size(); ++k)
        after << index(rowOfAccount[size_t(accountOf[size_t(k)])], before[k].column());
    changePersistentIndexList(before, after);
    emit layoutChanged({}, QAbstractItemModel::VerticalSortHint);
}

void StatementsModel::applySort()
{
    const std::vector<Account> &accounts = m_report.accounts;
    // The accounts come in customer table order, which is the order of the
    // names; every other column falls back on it for equal values.
    auto key = [&](int i) -> qint64 {
        const Account &a = accounts[size_t(i)];
        switch (m_sortColumn) {
        case Name: return i;
        case Total: return a.total.cents();
        case OldestDue: return a.oldestDue.isValid() ? a.oldestDue.toJulianDay() : std::numeric_limits<qint64>::max();
        case Credits: return a.credits.cents();
        default: return a.aging[size_t(m_sortColumn - FirstAging)].cents();
        }
    };
    std::vector<std::pair<qint64, int>> keyed(m_order.size());
    for (size_t r = 0; r < keyed.size(); ++r)
        keyed[r] = {key(int(r)), int(r)};
    const bool down = m_sortOrder == Qt::DescendingOrder;
    std::sort(keyed.begin(), keyed.end(), [down](const auto &a, const auto &b) {
        if (a.first != b.first) return down ? a.first > b.first : a.first < b.first;
        return a.second < b.second;
    });
    for (size_t r = 0; r < keyed.size(); ++r)
        m_order[r] = keyed[r].second;
}

}  // namespace qor::statements
