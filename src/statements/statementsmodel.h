// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// The customers who owe as a table for a view: name, total owed, the five
// aging columns, the credits (so that the row adds up) and the oldest due
// date. It sorts itself: a sort reorders a
// list of row numbers by values already at hand, so ten thousand customers
// sort in a few milliseconds, and selections follow their rows.
#include "statements/statements.h"

#include <QAbstractTableModel>

#include <vector>

namespace qor::statements {

class StatementsModel : public QAbstractTableModel {
    Q_OBJECT
public:
    enum Column { Name,
                  Total,
                  FirstAging,
                  Credits = FirstAging + BucketCount,
                  OldestDue,
                  ColumnCount };

    explicit StatementsModel(QObject *parent = nullptr);

    // Shows a new report, in the sort order in force.
    void setReport(Report report);
    const Report &report() const { return m_report; }
    // The customer on a row as shown.
    const Account &account(int row) const;
    // The row on which the customer with that number stands, or -1.
    int rowOf(const QString &cid) const;
    // The first row, as shown, whose name starts with prefix (case not
    // counted); -1 when none does.
    int findName(QStringView prefix) const;

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;

private:
    void applySort();
    Report m_report;
    std::vector<int> m_order;  // shown row -> account
    int m_sortColumn = Name;
    Qt::SortOrder m_sortOrder = Qt::AscendingOrder;
    QString m_dateForm;
};

}  // namespace qor::statements
