// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// The rows of the Customers list as the user sees them: the table's current
// customers in table order, each under its key. The panel's list widget shows
// these rows; this class decides where a new or renamed row goes and which
// rows a refresh takes out and puts in, so that the list follows the table
// row by row instead of being rebuilt (a rebuild of thousands of rows after
// one delete costs more than the delete).
#include <QString>
#include <vector>

namespace qor {

class KeyedList;

class CustomerList {
public:
    struct Row {
        QString key, name;
        bool operator==(const Row &) const = default;
    };
    // One change of the shown rows, at a 0-based position counted on the
    // rows as they are when the step comes.
    struct Step {
        enum Kind : quint8 { Remove,
                             Insert,
                             Rename } kind;
        int position;
        Row row;  // what Insert puts in, the name Rename gives
    };
    struct Update {
        bool rebuild = false;  // show rows() anew; no steps then
        std::vector<Step> steps;
    };

    const std::vector<Row> &rows() const { return m_rows; }
    int count() const { return int(m_rows.size()); }
    void clear() { m_rows.clear(); }

    // Brings the rows to `rows` (the table's current customers, in table
    // order): the steps, taken in turn, make the shown list the same.
    Update update(std::vector<Row> rows);
    // Puts a row at its sorted place; rows of equal text keep the order
    // their table rows have. Gives the row's 0-based position.
    int insert(const QString &key, const QString &name, const KeyedList &table);
    // Takes out the row under key; gives the 0-based position it had, or -1.
    int remove(const QString &key);
    // 1-based position of the first row whose text is exactly name, or 0.
    // A row under excludeKey is passed over.
    int find(const QString &name, const QString &excludeKey = {}) const;

    // The rows the list shows of the table: its current customers, passing
    // over archived and damaged rows.
    static std::vector<Row> rowsOf(const KeyedList &table);
    // The 1-based row to select after the list is filled: the stored
    // position when the list has it, else the first; 0 when there are no rows.
    static int recalledPosition(const QString &stored, int count);

private:
    std::vector<Row> m_rows;
};

}  // namespace qor
