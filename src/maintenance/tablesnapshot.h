// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// The raw rows of one table as lines of text, taken at one moment: each row's
// whole Text with its separators, " ...key=", its Key. The lines live in one
// string, so a million rows cost one allocation and no object per row; the
// model shows them in a view that asks only for the rows on screen.
#include <QAbstractListModel>
#include <QString>
#include <vector>

namespace qor {
class KeyedList;
}

namespace qor::maintenance {

class TableSnapshot : public QAbstractListModel {
    Q_OBJECT
public:
    explicit TableSnapshot(QObject *parent = nullptr);

    // Replaces the lines by those of table, first row to last.
    void take(const KeyedList &table);
    void clear();

    // Every line followed by CR LF: the text the window shows.
    QString text() const;
    QString line(int row) const;
    // The row with the most characters (-1 when empty), for the view's width.
    int longestRow() const { return m_longest; }

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;

private:
    QString m_text;
    std::vector<qsizetype> m_starts;  // start of each line in m_text, and one past the end
    int m_longest = -1;
};

}  // namespace qor::maintenance
