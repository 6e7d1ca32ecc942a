#pragma once
// The database: the four tables and the company fields, and the one file they
// are read from and saved to. No widgets here: the window shows views of this.
#include "keyedlist.h"
#include "rows.h"

#include <QString>
#include <QStringList>
#include <array>
#include <functional>

namespace qor {

// Company fields by the index of txtCompanyDetails(i): 0 name, 1-3 address
// lines, 4 phone/fax/e-mail, 5 slogan, 6 general invoice description,
// 7 make checks payable to, 8 invoice closing.
inline constexpr int CompanyFieldCount = 9;

struct ReadResult {
    enum class Status {
        Read,      // the file was read (possibly empty, possibly without sections)
        Created,   // no file existed: an empty one was made, the tables are empty
        Rejected,  // the file could not be accepted: tables empty, see message
    };
    Status status = Status::Read;
    QString message;  // for Rejected: names the file and, where known, the line
    int line = 0;     // 1-based line of the problem, 0 when not tied to a line
    bool ok() const { return status != Status::Rejected; }
};

struct SaveResult {
    bool ok = true;
    QString message;     // for a failure: names the file and the reason
    QString keptCopy;    // path of the copy kept of an unreadable file, if one was made
};

class Database {
public:
    Database();

    // The four tables.
    KeyedList lvwCustomers;
    KeyedList lvwPeriods;
    KeyedList lvwPAndS;
    KeyedList lvwInvoiceRecords;
    std::array<QString, CompanyFieldCount> company;

    // ReadDatabase: empties everything, then reads path. A missing file is
    // created empty. A file that can't be accepted leaves every table and
    // company field empty and marks the path so that the first save over it
    // keeps a copy of the old file beside it.
    ReadResult read(const QString &path);

    // SaveDatabase: writes the whole database to path safely — the old file
    // stays byte-identical unless the new content was written completely.
    SaveResult save(const QString &path);
    // The exact bytes save() writes.
    QByteArray serialize() const;

    // FillInvoiceRecordNames: gives each invoice record its customer name and
    // re-sorts the records. Returns the problems noticed, one line each
    // (placeholder customers created, records naming a missing item).
    QStringList fillInvoiceRecordNames();
    // CustomerNameByCid: the display name of a customer number; when there is
    // no such customer a placeholder "Customer, Deleted" is created, the
    // placeholder hook runs and the empty text is returned.
    QString customerNameByCid(const QString &cid);
    // Called when a placeholder customer was created (the window shows its
    // one-time message and marks the database changed).
    std::function<void()> onPlaceholderCreated;

    // NextKeyNumber: the highest number among the keys, every "k" removed,
    // archived rows included; 0 for an empty table.
    static qint64 nextKeyNumber(const KeyedList &table);

    // Scans of the invoice records before a delete. progress gets 0..100.
    bool customerIsBilled(const QString &cid, const std::function<void(float)> &progress = {}) const;
    bool productIsBilled(const QString &psid, const std::function<void(float)> &progress = {}) const;
    // The archive step: archives the row under key when found, else removes it.
    // Returns "deleted" or "archived".
    static QString deleteOrArchiveCustomer(KeyedList &customers, const QString &key, bool found);
    static QString deleteOrArchiveProduct(KeyedList &products, const QString &key, bool found);

    void clear();

private:
    QString m_keepCopyOf;  // canonical path whose old content must be kept before overwriting
};

}  // namespace qor
