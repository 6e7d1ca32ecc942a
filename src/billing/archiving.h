#pragma once
// Deleting a customer or an item: scan the invoice records (with frmChecking
// showing progress), then remove the row, or archive it when a record still
// refers to it.
#include <QString>

class QWidget;

namespace qor {

class Database;

// CustomerIsBilled / ProductIsBilled: show frmChecking, take every "k" out of
// key (left as the plain number for the caller) and scan. Returns Found.
bool customerIsBilled(Database &db, QString &key, QWidget *owner);
bool productIsBilled(Database &db, QString &key, QWidget *owner);

// The archive step after the scan: removes or archives the row under
// number + "k", sets staChecking to 100 and lblStatus to "Entry deleted." or
// "Entry archived.". The caller refreshes its list and enables cmdOK.
// Returns the word ("delete" or "archive"), or an empty text (nothing done)
// when there is no row under that key.
QString archiveCustomerStep(Database &db, const QString &number, bool found);
QString archiveProductStep(Database &db, const QString &number, bool found);

}  // namespace qor
