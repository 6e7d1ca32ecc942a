#include "maintenance/tablesnapshot.h"

#include "database/keyedlist.h"

namespace qor::maintenance {

namespace {
const QString KeyMark = QStringLiteral(" ...key=");
const QString CRLF = QStringLiteral("\r\n");
}  // namespace

TableSnapshot::TableSnapshot(QObject *parent) : QAbstractListModel(parent) {}

void TableSnapshot::take(const KeyedList &table) {
    beginResetModel();
    m_text.clear();
    m_starts.clear();
    m_longest = -1;

    // One pass for the size, one to copy: the text is allocated once.
    qsizetype total = 0;
    table.forEach([&total](QStringView key, QStringView text) {
        total += text.size() + key.size() + KeyMark.size() + CRLF.size();
        return true;
    });
    m_text.reserve(total);
    m_starts.reserve(size_t(table.count()) + 1);
    qsizetype longest = -1;
    table.forEach([&](QStringView key, QStringView text) {
        const qsizetype start = m_text.size();
        m_starts.push_back(start);
        m_text.append(text).append(KeyMark).append(key).append(CRLF);
        const qsizetype length = m_text.size() - start;
        if (length > longest) {
            longest = length;
            m_longest = int(m_starts.size()) - 1;
        }
        return true;
    });
    m_starts.push_back(m_text.size());
    endResetModel();
}

void TableSnapshot::clear() {
    beginResetModel();
    m_text.clear();
    m_starts.clear();
    m_longest = -1;
    endResetModel();
}

QString TableSnapshot::text() const { return m_text; }

QString TableSnapshot::line(int row) const {
    if (row < 0 || row >= rowCount())
        return {};
    const qsizetype start = m_starts[size_t(row)];
    return m_text.mid(start, m_starts[size_t(row) + 1] - start - CRLF.size());
}

int TableSnapshot::rowCount(const QModelIndex &parent) const {
    return parent.isValid() || m_starts.empty() ? 0 : int(m_starts.size()) - 1;
}

QVariant TableSnapshot::data(const QModelIndex &index, int role) const {
    if (role != Qt::DisplayRole || !index.isValid() || index.column() != 0)
        return {};
    return line(index.row());
}

}  // namespace qor::maintenance
