// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// The database: the four tables and the company fields, and the one file they
// are read from and saved to. No widgets here: the window shows views of this.
#include "filesafety.h"
#include "keyedlist.h"
#include "rows.h"
#include "rowtypes.h"
#include "versions.h"

#include <QObject>
#include <QSet>
#include <QString>
#include <QStringList>
#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

class QIODevice;

namespace qor {

namespace detail {
// What a read learned about the invoice records for the step that follows it
// (fillInvoiceRecordNames), so that step need not walk a million rows again.
struct AfterRead {
    bool valid = false;
    int records = 0;               // count of records the read left behind
    std::vector<int> unnamedRows;  // positions of rows still without a name
    bool itemsChecked = false;     // every entry was checked against the items
    QStringList itemProblems;      // records naming a missing item
    qint64 itemProblemCount = 0;
};
// At most this many records naming a missing item are told one by one.
inline constexpr int MaxItemProblems = 1000;
// The line telling that a record names a missing item; entry may hold "x" and
// the quantity.
QString itemProblem(QStringView period, QStringView cid, QStringView entry);
// A customer or item number the way a record header gives it: lower case, no
// blanks, and for customers no "k". A record's CID names the customer whose
// number reads the same.
QString recordNumber(QStringView text, bool dropK);
// Is the leading number of a record number greater than 0? Records without
// such a number are dropped by the reader.
bool usableNumber(QStringView number);
}  // namespace detail

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
    // The file held something but it could not be used as it is (Rejected,
    // or no section found): the first save under its name keeps a copy of it.
    bool keepsCopyOnSave = false;
    bool ok() const { return status != Status::Rejected; }
};

struct SaveResult {
    bool ok = true;
    QString message;    // for a failure: names the file and the reason
    QString keptCopy;   // path of the copy kept of an unreadable file, if one was made
    QString version;    // the earlier version kept of the replaced file, if one was
    QStringList notes;  // what the user is told once (no versions kept, hard links lost)
};

// The content of a database as plain tables: what a read or a bulk load fills
// before the database takes it over whole.
struct Tables {
    KeyedList customers;
    KeyedList periods;
    KeyedList items;
    KeyedList invoiceRecords;
    std::array<QString, CompanyFieldCount> company;

    void swap(Tables &other) noexcept;
    void clear();
};

// How a customer or an item left its table.
enum class Removal {
    NotThere,  // no row under the key: nothing changed
    Deleted,   // no record refers to it: the row is gone
    Archived,  // a record refers to it: the row stays, marked archived
};
// "delete" or "archive"; empty for NotThere.
QString wordOf(Removal r);

// What a change of the database came to. Refused changes leave everything as
// it was; message then says why.
struct EditOutcome {
    bool ok = false;
    QString key;                          // the row added, replaced or paid
    Removal removal = Removal::NotThere;  // for a delete-or-archive
    int rows = 0;                         // records a finalised period holds
    QString message;
    explicit operator bool() const { return ok; }
};

// The tables tell what changed: views subscribe to these signals instead of
// being refreshed by hand from the window. Every change goes through the
// operations below, and each one sends its own signal.
class Database : public QObject {
    Q_OBJECT
public:
    enum class Table { Customers,
                       Periods,
                       Items,
                       InvoiceRecords };
    Q_ENUM(Table)

    explicit Database(QObject *parent = nullptr);

    // The four tables and the company fields, to read.
    const KeyedList &customers() const { return m_t.customers; }
    const KeyedList &periods() const { return m_t.periods; }
    const KeyedList &items() const { return m_t.items; }
    const KeyedList &invoiceRecords() const { return m_t.invoiceRecords; }
    const std::array<QString, CompanyFieldCount> &company() const { return m_t.company; }

    // Progress of the scan before a delete: 0..100.
    using Progress = std::function<void(float)>;

    // Adds a customer under key, or under the next free number when key is
    // empty; the outcome gives the key. Refused when the key is taken.
    EditOutcome addCustomer(const CustomerRow &row, const QString &key = {});
    // Replaces the customer under key; the row moves to its sorted place.
    // Refused when there is no such customer.
    EditOutcome replaceCustomer(const QString &key, const CustomerRow &row);
    // Scans the records for the customer (progress as it goes), then deletes
    // the row, or archives it when a record still refers to it or the caller
    // knows of a use the records don't show yet (inUse: an open entry bills it).
    EditOutcome removeCustomer(const QString &key, const Progress &progress = {}, bool inUse = false);
    // Adds an item under the next free number; the outcome gives the key.
    EditOutcome addItem(const ItemRow &row);
    EditOutcome removeItem(const QString &key, const Progress &progress = {}, bool inUse = false);
    // Finalising: adds the period (under its name) and its records at once.
    // Refused when the name is empty or taken; a second record of the same
    // customer is left out. The outcome counts the records added.
    EditOutcome addPeriod(const PeriodRow &period, const std::vector<InvoiceRecordRow> &records);
    // Logs a payment on the record of customer cid in period: its balance and
    // note are replaced, its customer name becomes the present one. Refused
    // when there is no such record.
    EditOutcome logPayment(const QString &period, const QString &cid, const QString &balance, const QString &note);
    // Sets company field index (see CompanyFieldCount).
    void setCompanyField(int index, const QString &text);
    // Closing the books: a database that holds what carries over to the next
    // file (customers, items, company fields), and, once that file is written,
    // this one drops its periods and records as the start of a reload.
    std::unique_ptr<Database> carriedOver() const;
    void closeBooks();
    // The bulk-load path: the database takes over tables filled row by row in
    // any order (sorted here), as a reload.
    void load(Tables &&tables);
    // The reverse: the tables leave the database, which is left empty (a
    // tool that works on the bare tables from here on).
    Tables release();

    // ReadDatabase: empties everything, then reads path. A missing file is
    // created empty. A file that can't be accepted leaves every table and
    // company field empty and marks the path so that the first save over it
    // keeps a copy of the old file beside it. Refused: a key that comes twice
    // (customer number, item number, period name, customer within a period),
    // a NUL byte (a binary file; refused at the first block that holds one),
    // a file that can't be opened or read, a folder, a file larger than
    // MaxFileSize, a file the memory can't hold. Other control bytes are
    // text. Records without a usable number are dropped silently. Structure
    // is only what a line holds bare: escaped markup and the line breaks
    // inside a value come back as part of the value.
    ReadResult read(const QString &path);
    // What read() does when no file is there: the program makes an empty one,
    // a checking tool must not create anything and rejects the path instead.
    enum class MissingFile { Create,
                             Reject };
    ReadResult read(const QString &path, MissingFile missing);
    // Files larger than this are rejected rather than risking running out of
    // memory half-way through a load.
    static constexpr qint64 MaxFileSize = qint64(4) << 30;

    // SaveDatabase: writes the whole database to path safely — the old file
    // stays byte-identical unless the new content was written completely.
    // The new file is written beside the old one, synced, renamed over it
    // and the folder synced (files::replaceFile); it keeps the old file's
    // mode, owner, group and access ACL, and a new file is the user's alone.
    SaveResult save(const QString &path);
    // The same, with the new content passing through the device that wrap
    // makes around the temporary file (tests make it fail at any byte).
    using DeviceWrapper = files::DeviceWrapper;
    SaveResult save(const QString &path, const DeviceWrapper &wrap);
    struct SaveOptions {
        DeviceWrapper wrap;
        // Keep the replaced file as an earlier version, pruned by this policy.
        std::optional<versions::Policy> versions;
    };
    SaveResult save(const QString &path, const SaveOptions &options);
    // The exact bytes save() writes.
    QByteArray serialize() const;
    // Writes those bytes to any device; false when a write fails (the
    // device's errorString() tells why).
    bool writeTo(QIODevice &device) const;

    // FillInvoiceRecordNames: gives each invoice record its customer name and
    // re-sorts the records. Until it has run after a read, the records stand
    // in the order of the file, and a record whose customer was not known
    // when it was read has the five-field form (no name). Rows that already
    // have six fields are left as they are. Returns the problems noticed, one
    // line each (placeholder customers created, records naming a missing item).
    QStringList fillInvoiceRecordNames();
    // CustomerNameByCid: the display name of a customer number; when there is
    // no such customer a placeholder "Customer, Deleted" is created,
    // placeholderCreated() is heard and the empty text is returned.
    QString customerNameByCid(const QString &cid);

    // NextKeyNumber: the highest number among the keys, every "k" removed,
    // archived rows included; 0 for an empty table.
    static qint64 nextKeyNumber(const KeyedList &table);

    // Scans of the invoice records before a delete. progress gets 0..100.
    bool customerIsBilled(const QString &cid, const std::function<void(float)> &progress = {}) const;
    bool productIsBilled(const QString &psid, const std::function<void(float)> &progress = {}) const;
    void clear();

    // The changed state: the tables hold edits the file does not have yet.
    bool isChanged() const { return m_changed; }
    // Marking the database changed is how every edit is told: each time
    // (also when it already counts as changed) the revision goes up and
    // edited() is heard.
    void setChanged(bool changed);
    quint64 revision() const { return m_revision; }
    // Takes over the tables, company fields and what the read learned from
    // other, which is left empty (a file read aside becomes the open books).
    void takeContentOf(Database &other);
    // Around a read of the whole file: before it, when the file was read as
    // it is, and when everything is in (names of the records filled in).
    void beginReload() { emit aboutToReload(); }
    void announceFileRead() { emit fileRead(); }
    void endReload() { emit reloaded(); }

signals:
    // Everything is about to be emptied and read again: views drop what they show.
    void aboutToReload();
    // The file was read as it is (not created, not refused): views take the
    // values that come from the file alone (company fields, selection).
    void fileRead();
    // Everything was read again: views rebuild from the tables.
    void reloaded();
    void tableChanged(qor::Database::Table table);
    // A payment changed this one record and nothing else: the views of the
    // period update its node and keep their place.
    void recordChanged(const QString &period, const QString &cid);
    void companyFieldChanged(int index);
    // A record named a customer who is gone: a placeholder was created for cid.
    void placeholderCreated(const QString &cid);
    void changedStateChanged(bool changed);
    void edited();

private:
    // After an edit of one table: the views of it follow, then the database
    // counts as changed.
    void tableEdited(Table table);
    EditOutcome removeRow(Table table, const QString &key, bool found);

    Tables m_t;
    bool m_changed = false;
    quint64 m_revision = 0;
    // Files (canonical paths) whose old content must be kept before they are overwritten.
    QSet<QString> m_keepCopyOf;
    detail::AfterRead m_afterRead;
};

}  // namespace qor
