// SPDX-License-Identifier: GPL-3.0-or-later
#include "database.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QSet>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <deque>
#include <limits>
#include <vector>

#include "collation.h"
#include "filesafety.h"
#include "rowtypes.h"
#include "versions.h"


namespace qor {

namespace {

// Val of the key digits: leading number, blanks skipped, anything else ends it.
double leadingNumber(QStringView s)
{
    qsizetype i = 0;
    while (i < s.size() && s[i] == u' ') ++i;
    double sign = 1;
    if (i < s.size() && (s[i] == u'-' || s[i] == u'+')) sign = s[i++] == u'-' ? -1 : 1;
    double v = 0, scale = 0;
    for (; i < s.size(); ++i) {
        const char16_t c = s[i].unicode();
        if (c >= u'0' && c <= u'9') {
            if (scale) {
                v += (c - u'0') * scale;
                scale /= 10;
            } else {
                v = v * 10 + (c - u'0');
            }
        } else if (c == u'.' && !scale) {
            scale = 0.1;
        } else {
            break;
        }
    }
    return sign * v;
}

}  // namespace

Database::Database(QObject *parent) : QObject(parent) {}

void Database::setChanged(bool changed)
{
    if (changed) {
        ++m_revision;
        emit edited();
    }
    if (m_changed == changed) return;
    m_changed = changed;
    emit changedStateChanged(changed);
}

void Database::tableEdited(Table table)
{
    emit tableChanged(table);
    setChanged(true);
}

void Database::takeContentOf(Database &other)
{
    clear();
    m_t.swap(other.m_t);
    m_afterRead = std::move(other.m_afterRead);
    other.m_afterRead = {};
    m_keepCopyOf += other.m_keepCopyOf;
    other.m_keepCopyOf.clear();
}

void Database::clear()
{
    m_afterRead = {};
    m_t.clear();
}

void Tables::swap(Tables &other) noexcept
{
    customers.swap(other.customers);
    periods.swap(other.periods);
    items.swap(other.items);
    invoiceRecords.swap(other.invoiceRecords);
    company.swap(other.company);
}

void Tables::clear()
{
    customers.clear();
    periods.clear();
    items.clear();
    invoiceRecords.clear();
    for (QString &c : company) c.clear();
}

qint64 Database::nextKeyNumber(const KeyedList &table)
{
    double highest = 0;
    table.forEach([&highest](QStringView key, QStringView) {
        highest = std::max(highest, leadingNumber(plainNumber(key)));
        return true;
    });
    if (highest >= 9.2e18) return std::numeric_limits<qint64>::max();
    return qint64(highest);
}

QString Database::customerNameByCid(const QString &cid)
{
    const QString number = detail::recordNumber(cid, true);
    const QString key = number + u'k';
    if (m_t.customers.contains(key)) return customer::displayNameOf(m_t.customers.textOf(key)).toString();
    // A placeholder without a usable number would be dropped by the next
    // load and made again: there is no spot to hold.
    if (!detail::usableNumber(number)) return QString();
    // The records point to a customer who has gone: hold the spot.
    m_t.customers.add(key, customer::placeholder().text());
    emit placeholderCreated(number);
    return QString();
}

QString detail::itemProblem(QStringView period, QStringView cid, QStringView entry)
{
    return QStringLiteral(
               "Bill period \"%1\", customer number %2: the record names item number %3, which is not "
               "in the database.")
        .arg(period, cid, ItemEntry::parse(entry).number);
}

QStringList Database::fillInvoiceRecordNames()
{
    detail::AfterRead after = std::move(m_afterRead);
    m_afterRead = {};
    const int n = m_t.invoiceRecords.count();
    // What the read found still holds if nothing has touched the records since.
    const bool fromRead = after.valid && after.records == n;

    std::deque<QString> owned;  // keys the hashes below look at

    // Rows still without a name have five fields.
    std::vector<int> unnamed;
    if (fromRead) {
        unnamed = std::move(after.unnamedRows);
    } else {
        for (int i = 1; i <= n; ++i)
            if (record::isUnnamed(m_t.invoiceRecords.textView(i))) unnamed.push_back(i);
    }

    // Names by customer key without its final "k" (record CID + "k" = key),
    // needed only for rows the read could not name: a file this program wrote
    // gets all its names as it is read. The hashes hold views into strings
    // kept in a deque, so a look-up costs no allocation per record.
    QHash<QStringView, QString> names;
    if (!unnamed.empty()) {
        names.reserve(m_t.customers.count());
        m_t.customers.forEach([&](QStringView key, QStringView text) {
            if (key.endsWith(u'k')) {
                QStringView name = customer::displayNameOf(text);
                if (name.startsWith(ArchiveMark)) name = name.mid(ArchiveMark.size());
                owned.push_back(key.chopped(1).toString());
                names.insert(owned.back(), name.toString());
            }
            return true;
        });
    }

    QStringList itemProblems;
    qint64 itemProblemCount = 0;
    if (fromRead && after.itemsChecked) {
        itemProblems = std::move(after.itemProblems);
        itemProblemCount = after.itemProblemCount;
    } else {
        QSet<QStringView> items;
        m_t.items.forEach([&](QStringView key, QStringView) {
            if (!key.isEmpty()) {
                owned.push_back(key.chopped(1).toString());
                items.insert(owned.back());
            }
            return true;
        });
        for (int i = 1; i <= n; ++i) {
            const auto rec = InvoiceRecordView::parse(m_t.invoiceRecords.textView(i));
            if (!rec || rec->items.isEmpty()) continue;
            rec->forEachEntry([&](ItemEntry e, QStringView entry) {
                if (!entry.isEmpty() && !items.contains(e.number) && itemProblemCount++ < detail::MaxItemProblems)
                    itemProblems << detail::itemProblem(rec->period, rec->cid, entry);
                return true;
            });
        }
    }

    // Records naming a missing customer: one placeholder per number, told
    // once, by the first of its records in table order.
    struct Missing {
        QString cid;
        int first;
    };
    std::vector<Missing> missing;
    QHash<QString, size_t> missingIndex;
    for (int i : unnamed) {
        const QStringView text = m_t.invoiceRecords.textView(i);
        const auto rec = InvoiceRecordView::parse(text);
        if (!rec) continue;
        const QString c = detail::recordNumber(rec->cid, true);
        if (names.contains(c) || !detail::usableNumber(c)) continue;
        auto it = missingIndex.find(c);
        if (it == missingIndex.end()) {
            missingIndex.insert(c, missing.size());
            missing.push_back({c, i});
        } else {
            Missing &m = missing[*it];
            if (compareRowText(text, m_t.invoiceRecords.textView(m.first)) < 0) m.first = i;
        }
    }
    std::vector<size_t> order(missing.size());
    for (size_t i = 0; i < order.size(); ++i) order[i] = i;
    std::sort(order.begin(), order.end(), [&](size_t a, size_t b) {
        return compareRowText(m_t.invoiceRecords.textView(missing[a].first),
                              m_t.invoiceRecords.textView(missing[b].first)) < 0;
    });
    QStringList problems;
    for (size_t idx : order) {
        const Missing &m = missing[idx];
        problems << QStringLiteral(
                        "Bill period \"%1\" has a record of customer number %2, who is not in the "
                        "database: a placeholder customer \"Customer, Deleted\" was created.")
                        .arg(InvoiceRecordView::parse(m_t.invoiceRecords.textView(m.first))->period, m.cid);
        customerNameByCid(m.cid);
        owned.push_back(m.cid);
        names.insert(owned.back(), QStringLiteral("Customer, Deleted"));
    }
    problems += itemProblems;
    if (itemProblemCount > detail::MaxItemProblems)
        problems << QStringLiteral("... and %1 more entries naming a missing item.")
                        .arg(itemProblemCount - detail::MaxItemProblems);

    // The five-field rows get their name.
    for (int i : unnamed) {
        auto rec = InvoiceRecordView::parse(m_t.invoiceRecords.textView(i));
        if (!rec || rec->named) continue;
        // The record that asked for the placeholder gets its name as well, so
        // the table is the one the next load of the saved file gives.
        const QString name = names.value(detail::recordNumber(rec->cid, true));
        if (m_t.invoiceRecords.textView(i).size() > (qsizetype(1) << 20)) {
            // A huge record (a note of many megabytes) gets its name in place
            // rather than being built a second time beside itself.
            QString own = m_t.invoiceRecords.text(i);
            m_t.invoiceRecords.setText(i, QString());
            record::nameInPlace(own, name);
            m_t.invoiceRecords.setText(i, std::move(own));
            continue;
        }
        rec->named = true;
        rec->customerName = name;
        m_t.invoiceRecords.setText(i, rec->text());
    }
    m_t.invoiceRecords.resort();
    return problems;
}

namespace {
// The walk of both scans: every record in table order, the progress set at
// each step, ending at the first record that matches.
bool anyRecord(const KeyedList &records, const std::function<void(float)> &progress,
               const std::function<bool(QStringView)> &matches)
{
    const int n = records.count();
    int i = 0;
    bool found = false;
    records.forEach([&](QStringView, QStringView text) {
        ++i;
        if (progress) progress(float(i) / float(n) * 100.0f);
        found = matches(text);
        return !found;
    });
    return found;
}
}  // namespace

bool Database::customerIsBilled(const QString &cid, const std::function<void(float)> &progress) const
{
    const QString plain = plainNumber(cid);
    return anyRecord(m_t.invoiceRecords, progress, [&](QStringView text) {
        QStringView cid;
        return InvoiceRecordView::cidOf(text, cid) && cid == plain;
    });
}

bool Database::productIsBilled(const QString &psid, const std::function<void(float)> &progress) const
{
    const QString plain = plainNumber(psid);
    return anyRecord(m_t.invoiceRecords, progress, [&](QStringView text) {
        QStringView items;
        if (!InvoiceRecordView::itemsOf(text, items)) return false;
        bool billed = false;
        ItemEntry::forEach(items, [&](ItemEntry e, QStringView) { return !(billed = e.number == plain); });
        return billed;
    });
}

// ---------------------------------------------------------------- changes

QString wordOf(Removal r)
{
    switch (r) {
    case Removal::Deleted: return QStringLiteral("delete");
    case Removal::Archived: return QStringLiteral("archive");
    case Removal::NotThere: break;
    }
    return {};
}

namespace {
EditOutcome done(const QString &key)
{
    EditOutcome r;
    r.ok = true;
    r.key = key;
    return r;
}

EditOutcome refused(const QString &why)
{
    EditOutcome r;
    r.message = why;
    return r;
}

QString withoutMark(QString name)
{
    if (name.startsWith(ArchiveMark)) name.remove(0, ArchiveMark.size());
    return name;
}
}  // namespace

EditOutcome Database::addCustomer(const CustomerRow &row, const QString &key)
{
    const QString k = key.isEmpty() ? numberKey(nextKeyNumber(m_t.customers) + 1) : key;
    if (m_t.customers.contains(k)) return refused(QStringLiteral("Customer number %1 is taken.").arg(plainNumber(k)));
    m_t.customers.add(k, row.text());
    tableEdited(Table::Customers);
    return done(k);
}

EditOutcome Database::replaceCustomer(const QString &key, const CustomerRow &row)
{
    if (!m_t.customers.contains(key))
        return refused(QStringLiteral("There is no customer number %1.").arg(plainNumber(key)));
    // Removing and adding again puts the row at its sorted place.
    m_t.customers.remove(key);
    m_t.customers.add(key, row.text());
    tableEdited(Table::Customers);
    return done(key);
}

EditOutcome Database::removeRow(Table table, const QString &key, bool found)
{
    KeyedList &rows = table == Table::Customers ? m_t.customers : m_t.items;
    EditOutcome r = done(key);
    if (!found) {
        rows.remove(key);
        r.removal = Removal::Deleted;
    } else {
        const QString text = table == Table::Customers ? customer::archivedText(rows.textOf(key))
                                                       : item::archivedText(rows.textOf(key));
        rows.remove(key);
        // Removing and adding again moves the row behind every current one.
        rows.add(key, text);
        r.removal = Removal::Archived;
    }
    tableEdited(table);
    return r;
}

EditOutcome Database::removeCustomer(const QString &key, const Progress &progress, bool inUse)
{
    if (!m_t.customers.contains(key)) return refused(QStringLiteral("There is no customer number %1.").arg(plainNumber(key)));
    return removeRow(Table::Customers, key, customerIsBilled(plainNumber(key), progress) || inUse);
}

EditOutcome Database::addItem(const ItemRow &row)
{
    const QString key = numberKey(nextKeyNumber(m_t.items) + 1);
    m_t.items.add(key, row.text());
    tableEdited(Table::Items);
    return done(key);
}

EditOutcome Database::removeItem(const QString &key, const Progress &progress, bool inUse)
{
    if (!m_t.items.contains(key)) return refused(QStringLiteral("There is no item number %1.").arg(plainNumber(key)));
    return removeRow(Table::Items, key, productIsBilled(plainNumber(key), progress) || inUse);
}

EditOutcome Database::addPeriod(const PeriodRow &period, const std::vector<InvoiceRecordRow> &records)
{
    const QString key = period::keyFor(period.name);
    if (period.name.isEmpty() || m_t.periods.contains(key) || m_t.periods.contains(period.name))
        return refused(QStringLiteral("The bill period \"%1\" is already in the database.").arg(period.name));
    m_t.periods.add(period.name, period.text());
    int added = 0;
    for (const InvoiceRecordRow &r : records) {
        const QString k = record::keyFor(period.name, r.cid);
        if (m_t.invoiceRecords.contains(k)) continue;  // a customer is billed once in a period
        m_t.invoiceRecords.add(k, r.text());
        ++added;
    }
    EditOutcome r = done(period.name);
    r.rows = added;
    // The records first: the lists of periods show the latest period, whose
    // records must be in by then.
    emit tableChanged(Table::InvoiceRecords);
    tableEdited(Table::Periods);
    return r;
}

EditOutcome Database::logPayment(const QString &period, const QString &cid, const QString &balance,
                                 const QString &note)
{
    const QString key = record::keyFor(period, cid);
    if (!m_t.invoiceRecords.contains(key))
        return refused(QStringLiteral("Bill period \"%1\" has no record of customer number %2.").arg(period, cid));
    const auto old = InvoiceRecordRow::parse(m_t.invoiceRecords.textOf(key));
    InvoiceRecordRow r;
    r.period = period;
    r.customerName = withoutMark(customerNameByCid(cid));
    r.cid = cid;
    r.balance = balance;
    r.items = old ? old->items : QString();
    r.note = note;
    // The name is the customer's present one. When it has changed since the
    // record was written, the row moves to where its new text sorts: the
    // walks over a period's records rely on the table's order.
    if (old && old->customerName != r.customerName) {
        m_t.invoiceRecords.remove(key);
        m_t.invoiceRecords.add(key, r.text());
    } else {
        m_t.invoiceRecords.setTextOf(key, r.text());
    }
    emit recordChanged(period, cid);
    setChanged(true);
    return done(key);
}

void Database::setCompanyField(int index, const QString &text)
{
    m_t.company[size_t(index)] = text;
    emit companyFieldChanged(index);
    setChanged(true);
}

std::unique_ptr<Database> Database::carriedOver() const
{
    auto next = std::make_unique<Database>();
    Tables t;
    auto copy = [](const KeyedList &from, KeyedList &to) {
        to.reserve(from.count());
        from.forEach([&to](QStringView key, QStringView text) {
            to.append(key.toString(), text.toString());
            return true;
        });
    };
    copy(m_t.customers, t.customers);
    copy(m_t.items, t.items);
    t.company = m_t.company;
    next->load(std::move(t));
    return next;
}

void Database::closeBooks()
{
    // Views emptied before a reload may empty the company fields with them:
    // these carry over.
    const auto company = m_t.company;
    emit aboutToReload();
    m_afterRead = {};
    m_t.periods.clear();
    m_t.invoiceRecords.clear();
    m_t.company = company;
}

void Database::load(Tables &&tables)
{
    emit aboutToReload();
    clear();
    m_t.swap(tables);
    m_t.customers.resort();
    m_t.periods.resort();
    m_t.items.resort();
    m_t.invoiceRecords.resort();
    emit reloaded();
}

Tables Database::release()
{
    // Out first: views emptied by the reload must not empty what leaves.
    Tables t;
    t.swap(m_t);
    emit aboutToReload();
    clear();
    emit reloaded();
    return t;
}

SaveResult Database::save(const QString &path) { return save(path, SaveOptions{}); }

SaveResult Database::save(const QString &path, const DeviceWrapper &wrap)
{
    SaveOptions options;
    options.wrap = wrap;
    return save(path, options);
}

SaveResult Database::save(const QString &path, const SaveOptions &options)
{
    SaveResult r;
    const QFileInfo info(path);
    const QString canonical = info.canonicalFilePath();
    const QString absolute = canonical.isEmpty() ? info.absoluteFilePath() : canonical;
    const QString name = QDir::toNativeSeparators(path);
    auto fail = [&r, &name](const QString &reason) {
        r.ok = false;
        r.message = QStringLiteral("The database could not be saved to \"%1\": %2. The file was left as it was.")
                        .arg(name, reason);
        return r;
    };

    // Only a regular file is ever replaced: a save must not turn a folder,
    // device or pipe that happens to carry the name into a file.
    if (info.exists() && !info.isFile()) {
        r.ok = false;
        r.message = QStringLiteral(
                        "The database could not be saved to \"%1\": that name belongs to something "
                        "that is not a file.")
                        .arg(name);
        return r;
    }

    // A file that could not be read is never overwritten blindly: keep its
    // old content beside it first.
    if (m_keepCopyOf.contains(absolute) && QFileInfo::exists(path)) {
        const QString stamp = QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-HHmmss"));
        QString copy = path + QStringLiteral(".unreadable-") + stamp;
        for (int i = 2; QFileInfo::exists(copy); ++i)
            copy = path + QStringLiteral(".unreadable-") + stamp + u'-' + QString::number(i);
        if (const QString why = files::copyFile(path, copy); !why.isEmpty()) {
            r.ok = false;
            r.message = QStringLiteral(
                            "The database was not saved to \"%1\": that file could not be read, and the "
                            "copy of it that must be kept first could not be made (%2).")
                            .arg(name, why);
            return r;
        }
        r.keptCopy = copy;
        m_keepCopyOf.remove(absolute);
    }

    files::ReplaceOptions replace;
    replace.wrap = options.wrap;
    QString version;
    if (options.versions) {
        // The file about to be replaced is kept before the new one takes its name.
        replace.beforeRename = [&version, &path](const QString &) {
            const versions::Kept kept = versions::keep(path);
            version = kept.path;
            return kept.problem;
        };
        replace.undoBeforeRename = [&version] {
            if (!version.isEmpty()) QFile::remove(version);
            version.clear();
        };
    }
    const files::ReplaceResult written =
        files::replaceFile(
            path, [this](QIODevice &device) { return writeTo(device); }, replace);
    if (!written.ok) return fail(written.reason);
    r.notes = written.notes;
    r.version = version;
    if (written.otherNames)
        r.notes << QStringLiteral(
                       "The file \"%1\" had other names (hard links). A save writes a new file, so those "
                       "names still show the content it had before.")
                       .arg(name);
    if (options.versions) versions::prune(path, *options.versions);
    m_keepCopyOf.remove(absolute);
    return r;
}

}  // namespace qor
