#pragma once
// The edits a user makes to customers and items, below any window: each
// changes the table, tells the database's views which table changed and
// marks the database changed. The questions around them (duplicates,
// confirmations) stay with the panels.
#include "database.h"
#include "rowtypes.h"

#include <QString>
#include <functional>

namespace qor::edits {

// Progress of the scan before a delete: 0..100.
using Progress = std::function<void(float)>;

enum class Removal {
    NotThere,  // no row under the key: nothing changed
    Deleted,   // no record refers to it: the row is gone
    Archived,  // a record refers to it: the row stays, marked archived
};
// "delete" or "archive"; empty for NotThere.
QString wordOf(Removal r);

// Adds a customer under key, or under the next free number when key is
// empty; gives the key.
QString addCustomer(Database &db, const CustomerRow &row, const QString &key = {});
// Replaces the customer under key; the row moves to its sorted place. False
// when there is no such customer.
bool replaceCustomer(Database &db, const QString &key, const CustomerRow &row);
// Scans the records for the customer (progress as it goes), then deletes the
// row, or archives it when a record still refers to it or the caller knows
// of a use the records don't show yet (inUse: an open entry bills it).
Removal removeCustomer(Database &db, const QString &key, const Progress &progress = {}, bool inUse = false);

// Adds an item under the next free number; gives the key.
QString addItem(Database &db, const ItemRow &row);
Removal removeItem(Database &db, const QString &key, const Progress &progress = {}, bool inUse = false);

}  // namespace qor::edits
