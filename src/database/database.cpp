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
    lvwCustomers.swap(other.lvwCustomers);
    lvwPeriods.swap(other.lvwPeriods);
    lvwPAndS.swap(other.lvwPAndS);
    lvwInvoiceRecords.swap(other.lvwInvoiceRecords);
    company.swap(other.company);
    m_afterRead = std::move(other.m_afterRead);
    other.m_afterRead = {};
    m_keepCopyOf += other.m_keepCopyOf;
    other.m_keepCopyOf.clear();
}

void Database::clear()
{
    m_afterRead = {};
    lvwCustomers.clear();
    lvwPeriods.clear();
    lvwPAndS.clear();
    lvwInvoiceRecords.clear();
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
    if (lvwCustomers.contains(key)) return customer::displayNameOf(lvwCustomers.textOf(key)).toString();
    // A placeholder without a usable number would be dropped by the next
    // load and made again: there is no spot to hold.
    if (!detail::usableNumber(number)) return QString();
    // The records point to a customer who has gone: hold the spot.
    lvwCustomers.add(key, customer::placeholder().text());
    if (onPlaceholderCreated) onPlaceholderCreated();
    return QString();
}

QString detail::itemProblem(QStringView period, QStringView cid, QStringView entry)
{
    return QStringLiteral("Bill period \"%1\", customer number %2: the record names item number %3, which is not "
                          "in the database.")
        .arg(period, cid, ItemEntry::parse(entry).number);
}

QStringList Database::fillInvoiceRecordNames()
{
    detail::AfterRead after = std::move(m_afterRead);
    m_afterRead = {};
    const int n = lvwInvoiceRecords.count();
    // What the read found still holds if nothing has touched the records since.
    const bool fromRead = after.valid && after.records == n;

    std::deque<QString> owned;  // keys the hashes below look at

    // Rows still without a name have five fields.
    std::vector<int> unnamed;
    if (fromRead) {
        unnamed = std::move(after.unnamedRows);
    } else {
        for (int i = 1; i <= n; ++i)
            if (record::isUnnamed(lvwInvoiceRecords.textView(i))) unnamed.push_back(i);
    }

    // Names by customer key without its final "k" (record CID + "k" = key),
    // needed only for rows the read could not name: a file this program wrote
    // gets all its names as it is read. The hashes hold views into strings
    // kept in a deque, so a look-up costs no allocation per record.
    QHash<QStringView, QString> names;
    if (!unnamed.empty()) {
        names.reserve(lvwCustomers.count());
        lvwCustomers.forEach([&](QStringView key, QStringView text) {
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
        lvwPAndS.forEach([&](QStringView key, QStringView) {
            if (!key.isEmpty()) {
                owned.push_back(key.chopped(1).toString());
                items.insert(owned.back());
            }
            return true;
        });
        for (int i = 1; i <= n; ++i) {
            const auto rec = InvoiceRecordView::parse(lvwInvoiceRecords.textView(i));
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
        const QStringView text = lvwInvoiceRecords.textView(i);
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
            if (compareRowText(text, lvwInvoiceRecords.textView(m.first)) < 0) m.first = i;
        }
    }
    std::vector<size_t> order(missing.size());
    for (size_t i = 0; i < order.size(); ++i) order[i] = i;
    std::sort(order.begin(), order.end(), [&](size_t a, size_t b) {
        return compareRowText(lvwInvoiceRecords.textView(missing[a].first),
                              lvwInvoiceRecords.textView(missing[b].first)) < 0;
    });
    QStringList problems;
    for (size_t idx : order) {
        const Missing &m = missing[idx];
        problems << QStringLiteral("Bill period \"%1\" has a record of customer number %2, who is not in the "
                                   "database: a placeholder customer \"Customer, Deleted\" was created.")
                        .arg(InvoiceRecordView::parse(lvwInvoiceRecords.textView(m.first))->period, m.cid);
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
        auto rec = InvoiceRecordView::parse(lvwInvoiceRecords.textView(i));
        if (!rec || rec->named) continue;
        // The record that asked for the placeholder gets its name as well, so
        // the table is the one the next load of the saved file gives.
        const QString name = names.value(detail::recordNumber(rec->cid, true));
        if (lvwInvoiceRecords.textView(i).size() > (qsizetype(1) << 20)) {
            // A huge record (a note of many megabytes) gets its name in place
            // rather than being built a second time beside itself.
            QString own = lvwInvoiceRecords.text(i);
            lvwInvoiceRecords.setText(i, QString());
            record::nameInPlace(own, name);
            lvwInvoiceRecords.setText(i, std::move(own));
            continue;
        }
        rec->named = true;
        rec->customerName = name;
        lvwInvoiceRecords.setText(i, rec->text());
    }
    lvwInvoiceRecords.resort();
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
    return anyRecord(lvwInvoiceRecords, progress, [&](QStringView text) {
        QStringView cid;
        return InvoiceRecordView::cidOf(text, cid) && cid == plain;
    });
}

bool Database::productIsBilled(const QString &psid, const std::function<void(float)> &progress) const
{
    const QString plain = plainNumber(psid);
    return anyRecord(lvwInvoiceRecords, progress, [&](QStringView text) {
        QStringView items;
        if (!InvoiceRecordView::itemsOf(text, items)) return false;
        bool billed = false;
        ItemEntry::forEach(items, [&](ItemEntry e, QStringView) { return !(billed = e.number == plain); });
        return billed;
    });
}

QString Database::deleteOrArchiveCustomer(KeyedList &customers, const QString &key, bool found)
{
    if (!found) {
        customers.remove(key);
        return QStringLiteral("deleted");
    }
    const QString text = customer::archivedText(customers.textOf(key));
    customers.remove(key);
    // Removing and adding again moves the row behind every current customer.
    customers.add(key, text);
    return QStringLiteral("archived");
}

QString Database::deleteOrArchiveProduct(KeyedList &products, const QString &key, bool found)
{
    if (!found) {
        products.remove(key);
        return QStringLiteral("deleted");
    }
    const QString text = item::archivedText(products.textOf(key));
    products.remove(key);
    products.add(key, text);
    return QStringLiteral("archived");
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
        r.message = QStringLiteral("The database could not be saved to \"%1\": that name belongs to something "
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
            r.message = QStringLiteral("The database was not saved to \"%1\": that file could not be read, and the "
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
        files::replaceFile(path, [this](QIODevice &device) { return writeTo(device); }, replace);
    if (!written.ok) return fail(written.reason);
    r.notes = written.notes;
    r.version = version;
    if (written.otherNames)
        r.notes << QStringLiteral("The file \"%1\" had other names (hard links). A save writes a new file, so those "
                                  "names still show the content it had before.")
                       .arg(name);
    if (options.versions) versions::prune(path, *options.versions);
    m_keepCopyOf.remove(absolute);
    return r;
}

}  // namespace qor
