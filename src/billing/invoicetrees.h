// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// The two invoice records trees of the open books, and the period they show.
// The Bill Periods panel and the Printing panel each have a chooser of the
// period; both always show the same one, and choosing it on either rebuilds
// both trees. The pair lives with the database (a child of it), so either
// panel finds it without reaching into the other.
#include "billing/invoicetree.h"

#include <QObject>
#include <QString>

namespace qor {

class Database;

class InvoiceTrees : public QObject {
    Q_OBJECT
public:
    // One pair per open books: the main window owns it and hands it to the
    // panels that show or change the trees.
    explicit InvoiceTrees(Database &db, QObject *parent = nullptr);
    Database &db() { return m_db; }
    // 0: the Bill Periods tree; 1: the Printing tree.
    InvoiceTree &tree(int index) { return index == 0 ? m_tree0 : m_tree1; }

    // The period on show: its position in the choosers (ListIndex, from 0)
    // and its name (the chooser's text); -1 and empty when none.
    int chosenIndex() const { return m_index; }
    QString chosenName() const { return m_name; }

    // ShowBillPeriod: the period at chooser position listIndex, whose name the
    // chooser shows. Nothing happens for no selection, or when the row at
    // that position of lvwPeriods isn't a period row. Otherwise both trees
    // are rebuilt and periodShown tells both panels. While an entry is open
    // only tree 1 is rebuilt: the entry keeps its tree, and the Printing
    // panel can print another period meanwhile.
    void showPeriod(int listIndex, const QString &name);
    // RefreshBillPeriodList empties the choosers: no period is on show.
    void forgetPeriod();

    // The entry of a new period lives in tree 0 from beginEntry() to
    // endEntry(): every current customer, marked, to start with.
    bool entryOpen() const { return m_entryOpen; }
    void beginEntry();
    // The entry is over (finalised or cancelled); tree 0 keeps what it holds
    // until the Bill Periods panel shows a period again.
    void endEntry() { m_entryOpen = false; }
    // Ends an open entry without asking (entryguard.h asks first): tree 0
    // shows the period on show again, and entryDropped tells the panel to go
    // back to view mode.
    void dropEntry();

signals:
    // Tree 1 (both trees outside an entry) shows the period at listIndex of
    // the choosers; row is its row text in lvwPeriods (for the dates).
    void periodShown(int listIndex, const QString &row);
    void entryDropped();

private:
    Database &m_db;
    InvoiceTree m_tree0{0}, m_tree1{1};
    int m_index = -1;
    QString m_name;
    bool m_entryOpen = false;
};

}  // namespace qor
