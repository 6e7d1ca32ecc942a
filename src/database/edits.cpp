#include "edits.h"

namespace qor::edits {

QString wordOf(Removal r)
{
    switch (r) {
    case Removal::Deleted: return QStringLiteral("delete");
    case Removal::Archived: return QStringLiteral("archive");
    case Removal::NotThere: break;
    }
    return {};
}

QString addCustomer(Database &db, const CustomerRow &row, const QString &key)
{
    const QString k = key.isEmpty() ? numberKey(Database::nextKeyNumber(db.lvwCustomers) + 1) : key;
    db.lvwCustomers.add(k, row.text());
    db.tableEdited(Database::Table::Customers);
    return k;
}

bool replaceCustomer(Database &db, const QString &key, const CustomerRow &row)
{
    if (!db.lvwCustomers.contains(key)) return false;
    // Removing and adding again puts the row at its sorted place.
    db.lvwCustomers.remove(key);
    db.lvwCustomers.add(key, row.text());
    db.tableEdited(Database::Table::Customers);
    return true;
}

Removal removeCustomer(Database &db, const QString &key, const Progress &progress, bool inUse)
{
    if (!db.lvwCustomers.contains(key)) return Removal::NotThere;
    const bool found = db.customerIsBilled(plainNumber(key), progress) || inUse;
    Database::deleteOrArchiveCustomer(db.lvwCustomers, key, found);
    db.tableEdited(Database::Table::Customers);
    return found ? Removal::Archived : Removal::Deleted;
}

QString addItem(Database &db, const ItemRow &row)
{
    const QString key = numberKey(Database::nextKeyNumber(db.lvwPAndS) + 1);
    db.lvwPAndS.add(key, row.text());
    db.tableEdited(Database::Table::Items);
    return key;
}

Removal removeItem(Database &db, const QString &key, const Progress &progress, bool inUse)
{
    if (!db.lvwPAndS.contains(key)) return Removal::NotThere;
    const bool found = db.productIsBilled(plainNumber(key), progress) || inUse;
    Database::deleteOrArchiveProduct(db.lvwPAndS, key, found);
    db.tableEdited(Database::Table::Items);
    return found ? Removal::Archived : Removal::Deleted;
}

}  // namespace qor::edits
