// SPDX-License-Identifier: GPL-3.0-or-later
#include "customers/customerlist.h"

#include "database/collation.h"
#include "database/keyedlist.h"
#include "database/regional.h"
#include "database/rowtypes.h"

#include <QHash>

namespace qor {

// Both sequences are in table order: walk them side by side. An old row whose
// key is gone, or was already put in further up, goes; a new row that isn't
// next in the old sequence is put in. When that takes many steps (or there is
// nothing shown to keep), a rebuild is the better way.
CustomerList::Update CustomerList::update(std::vector<Row> rows)
{
    constexpr int MaxChanges = 256;
    Update u;
    if (m_rows.empty()) {
        m_rows = std::move(rows);
        u.rebuild = true;
        return u;
    }
    QHash<QString, int> newIndex;
    newIndex.reserve(qsizetype(rows.size()));
    for (size_t j = 0; j < rows.size(); ++j) newIndex.insert(rows[j].key, int(j));

    // The shown list is always the rows already walked (as many as j) and
    // then the old rows from i on: a step's position is j.
    const int oldCount = count();
    int changes = 0;
    int i = 0;
    size_t j = 0;
    while (j < rows.size() && changes <= MaxChanges) {
        const int at = int(j);
        if (i < oldCount && m_rows[size_t(i)].key == rows[j].key) {
            if (m_rows[size_t(i)].name != rows[j].name) u.steps.push_back({Step::Rename, at, rows[j]});
            ++i;
            ++j;
        } else if (i < oldCount && newIndex.value(m_rows[size_t(i)].key, -1) < at) {
            u.steps.push_back({Step::Remove, at, m_rows[size_t(i)]});
            ++changes;
            ++i;
        } else {
            u.steps.push_back({Step::Insert, at, rows[j]});
            ++changes;
            ++j;
        }
    }
    for (; i < oldCount && changes <= MaxChanges; ++i, ++changes)
        u.steps.push_back({Step::Remove, int(rows.size()), m_rows[size_t(i)]});
    if (changes > MaxChanges) u = Update{true, {}};
    m_rows = std::move(rows);
    return u;
}

int CustomerList::insert(const QString &key, const QString &name, const KeyedList &table)
{
    int lo = 0, hi = count();
    while (lo < hi) {  // first row not below name
        const int mid = (lo + hi) / 2;
        if (compareRowText(m_rows[size_t(mid)].name, name) < 0) lo = mid + 1;
        else hi = mid;
    }
    int tablePos = -1;  // looked up only when a row of equal text is there
    while (lo < count()) {
        const Row &r = m_rows[size_t(lo)];
        if (compareRowText(r.name, name) != 0) break;
        if (tablePos < 0) tablePos = table.indexOf(key);
        if (table.indexOf(r.key) > tablePos) break;
        ++lo;
    }
    m_rows.insert(m_rows.begin() + lo, Row{key, name});
    return lo;
}

int CustomerList::remove(const QString &key)
{
    for (int i = 0; i < count(); ++i) {
        if (m_rows[size_t(i)].key == key) {
            m_rows.erase(m_rows.begin() + i);
            return i;
        }
    }
    return -1;
}

int CustomerList::find(const QString &name, const QString &excludeKey) const
{
    for (int i = 0; i < count(); ++i) {
        const Row &r = m_rows[size_t(i)];
        if (r.name != name) continue;
        if (!excludeKey.isEmpty() && r.key == excludeKey) continue;
        return i + 1;
    }
    return 0;
}

std::vector<CustomerList::Row> CustomerList::rowsOf(const KeyedList &table)
{
    std::vector<Row> rows;
    rows.reserve(size_t(table.count()));
    table.forEach([&rows](QStringView key, QStringView text) {
        const auto row = CustomerView::parse(text);
        if (!row || row->archived()) return true;
        rows.push_back({key.toString(), row->displayName.toString()});
        return true;
    });
    return rows;
}

int CustomerList::recalledPosition(const QString &stored, int count)
{
    bool ok = false;
    int wanted = stored.trimmed().toInt(&ok);
    if (!ok) wanted = int(regional::val(stored));
    if (wanted >= 1 && wanted <= count) return wanted;
    return count > 0 ? 1 : 0;
}

}  // namespace qor
