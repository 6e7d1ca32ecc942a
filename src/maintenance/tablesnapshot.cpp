// SPDX-License-Identifier: GPL-3.0-or-later
#include "maintenance/tablesnapshot.h"

#include "database/keyedlist.h"

#include <algorithm>

namespace qor::maintenance {

namespace {
const QString KeyMark = QStringLiteral(" ...key=");
const QString CRLF = QStringLiteral("\r\n");
}  // namespace

TableSnapshot::TableSnapshot(QObject *parent) : QAbstractListModel(parent) {}

void TableSnapshot::take(const KeyedList &table)
{
    beginResetModel();
    m_text.clear();
    m_starts.clear();
    m_longest = -1;

    // One pass for the size, one to copy: the text is allocated once and
    // filled through a pointer, a million rows in a few hundred megabytes a
    // second rather than one append at a time.
    qsizetype total = 0;
    table.forEach([&total](QStringView key, QStringView text) {
        total += text.size() + key.size() + KeyMark.size() + CRLF.size();
        return true;
    });
    m_text.resize(total);
    m_starts.reserve(size_t(table.count()) + 1);
    QChar *const begin = m_text.data();
    QChar *out = begin;
    auto put = [&out](QStringView part) { out = std::copy(part.begin(), part.end(), out); };
    qsizetype longest = -1;
    table.forEach([&](QStringView key, QStringView text) {
        QChar *const start = out;
        m_starts.push_back(start - begin);
        put(text);
        put(KeyMark);
        put(key);
        put(CRLF);
        if (out - start > longest) {
            longest = out - start;
            m_longest = int(m_starts.size()) - 1;
        }
        return true;
    });
    Q_ASSERT(out - begin == total);
    m_starts.push_back(m_text.size());
    endResetModel();
}

void TableSnapshot::clear()
{
    beginResetModel();
    m_text.clear();
    m_starts.clear();
    m_longest = -1;
    endResetModel();
}

QString TableSnapshot::text() const { return m_text; }

QString TableSnapshot::line(int row) const
{
    if (row < 0 || row >= rowCount())
        return {};
    const qsizetype start = m_starts[size_t(row)];
    return m_text.mid(start, m_starts[size_t(row) + 1] - start - CRLF.size());
}

int TableSnapshot::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() || m_starts.empty() ? 0 : int(m_starts.size()) - 1;
}

QVariant TableSnapshot::data(const QModelIndex &index, int role) const
{
    if (role != Qt::DisplayRole || !index.isValid() || index.column() != 0)
        return {};
    return line(index.row());
}

}  // namespace qor::maintenance
