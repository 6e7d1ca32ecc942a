// SPDX-License-Identifier: GPL-3.0-or-later
#include "statements/statements.h"

#include "billing/accounts.h"
#include "database/database.h"
#include "database/regional.h"
#include "database/rowtypes.h"

#include <QHash>
#include <QSet>

#include <algorithm>

namespace qor::statements {

QString bucketCaption(int bucket)
{
    switch (bucket) {
    case NotYetDue: return QStringLiteral("Not yet due");
    case Days1To30: return QStringLiteral("1\u201330 days");
    case Days31To60: return QStringLiteral("31\u201360 days");
    case Days61To90: return QStringLiteral("61\u201390 days");
    default: return QStringLiteral("Over 90 days");
    }
}

int bucketOf(int daysPastDue)
{
    if (daysPastDue <= 0) return NotYetDue;
    if (daysPastDue <= 30) return Days1To30;
    if (daysPastDue <= 60) return Days31To60;
    if (daysPastDue <= 90) return Days61To90;
    return Over90Days;
}

QDate storedDate(QStringView text)
{
    // yyyy/m/d with one or two digits for month and day, nothing around it.
    int parts[3] = {0, 0, 0};
    int digits[3] = {0, 0, 0};
    int part = 0;
    for (QChar c : text) {
        if (c == u'/') {
            if (++part > 2) return {};
        } else if (c >= u'0' && c <= u'9') {
            if (++digits[part] > 4) return {};
            parts[part] = parts[part] * 10 + (c.unicode() - u'0');
        } else {
            return {};
        }
    }
    if (part != 2 || digits[0] != 4 || digits[1] < 1 || digits[1] > 2 || digits[2] < 1 || digits[2] > 2) return {};
    return QDate(parts[0], parts[1], parts[2]);
}

namespace {

struct PeriodInfo {
    int order = 0;    // position in the period table
    QDate agedBy;     // due date, else end date
    QString dueText;  // as the screen shows it
};

// What the walk gathers for one customer.
struct Gathered {
    Account account;
    QString recordName;                               // the name the records carry, for a customer the table lacks
    std::vector<std::pair<int, OpenRecord>> records;  // period order, record
};

QString plainCid(const QString &cid)
{
    return plainNumber(cid).trimmed();
}

}  // namespace

Report report(const Database &db, const QDate &asOf, Detail detail, const QStringList &cids)
{
    Report out;
    out.asOf = asOf;
    const bool withRecords = detail == Detail::Records;

    QSet<QString> only;
    for (const QString &c : cids) only.insert(plainCid(c));

    // The periods: what each record is aged by, read once per period.
    QHash<QString, PeriodInfo> periods;
    const QString dateForm = regional::dateFormatString();
    int position = 0;
    db.periods().forEach([&](QStringView, QStringView text) {
        const auto p = PeriodView::parse(text);
        if (!p) return true;
        PeriodInfo info;
        info.order = ++position;
        info.agedBy = storedDate(p->billDue);
        if (!info.agedBy.isValid()) info.agedBy = storedDate(p->end);
        info.dueText = info.agedBy.isValid() ? regional::formatDate(info.agedBy, dateForm) : p->billDue.toString();
        periods.insert(p->name.toString(), info);
        return true;
    });
    const PeriodInfo unknownPeriod{position + 1, {}, {}};

    // One walk over the records: only balances other than zero count.
    accounts::PriceBook prices(db);
    QHash<QString, Gathered> byCid;
    QString lastPeriod;
    const PeriodInfo *period = nullptr;
    db.invoiceRecords().forEach([&](QStringView, QStringView text) {
        const auto r = InvoiceRecordView::parse(text);
        if (!r || r->balance == u"0") return true;
        // An unreadable balance counts as nothing, as everywhere else.
        const Money balance = Money::fromStoredText(r->balance).value_or(Money());
        if (balance.isZero()) return true;
        const QString cid = r->cid.toString();
        if (!only.isEmpty() && !only.contains(cid)) return true;
        if (!period || r->period != lastPeriod) {
            lastPeriod = r->period.toString();
            const auto it = periods.constFind(lastPeriod);
            period = it == periods.constEnd() ? &unknownPeriod : &*it;
        }
        Gathered &g = byCid[cid];
        if (g.account.cid.isEmpty()) {
            g.account.cid = cid;
            g.recordName = r->customerName.toString();
        }
        Account &a = g.account;
        const int days = period->agedBy.isValid() ? int(period->agedBy.daysTo(asOf)) : 0;
        if (balance.isNegative()) {
            a.credits += -balance;
        } else {
            a.aging[size_t(bucketOf(days))] += balance;
            if (period->agedBy.isValid() && (!a.oldestDue.isValid() || period->agedBy < a.oldestDue))
                a.oldestDue = period->agedBy;
        }
        if (withRecords) {
            OpenRecord o;
            o.period = lastPeriod;
            o.dueText = period->dueText;
            o.due = period->agedBy;
            o.daysPastDue = days;
            o.balance = balance;
            o.billed = accounts::billedOf(prices, r->items);
            g.records.emplace_back(period->order, std::move(o));
        }
        return true;
    });

    auto finish = [&](Gathered &g) {
        Account &a = g.account;
        Money owed;
        for (const Money &m : a.aging) owed += m;
        a.total = owed - a.credits;
        if (!a.total.isPositive()) return;
        if (a.oldestDue.isValid()) a.daysPastDue = std::max(0, int(a.oldestDue.daysTo(asOf)));
        // Owed first, then credits; each oldest due first, undated last,
        // then in the order of the periods.
        std::stable_sort(g.records.begin(), g.records.end(), [](const auto &x, const auto &y) {
            const OpenRecord &a = x.second, &b = y.second;
            if (a.isCredit() != b.isCredit()) return b.isCredit();
            if (a.due.isValid() != b.due.isValid()) return a.due.isValid();
            if (a.due != b.due) return a.due < b.due;
            return x.first < y.first;
        });
        a.records.reserve(g.records.size());
        for (auto &r : g.records) a.records.push_back(std::move(r.second));
        for (int i = 0; i < BucketCount; ++i) out.aging[size_t(i)] += a.aging[size_t(i)];
        out.credits += a.credits;
        out.total += a.total;
        out.accounts.push_back(std::move(a));
    };

    db.customers().forEach([&](QStringView key, QStringView text) {
        if (byCid.isEmpty()) return false;
        const auto it = byCid.find(plainNumber(key));
        if (it == byCid.end()) return true;
        const QStringView name = customer::displayNameOf(text);
        it->account.archived = name.startsWith(ArchiveMark);
        it->account.name = (it->account.archived ? name.mid(ArchiveMark.size()) : name).toString();
        finish(*it);
        byCid.erase(it);
        return true;
    });
    // Customers the table lacks (the program makes a placeholder for them
    // when it reads the file): last, by number.
    QStringList rest = byCid.keys();
    std::sort(rest.begin(), rest.end(), [](const QString &a, const QString &b) {
        return a.size() != b.size() ? a.size() < b.size() : a < b;
    });
    for (const QString &cid : rest) {
        Gathered &g = byCid[cid];
        g.account.name = g.recordName;
        finish(g);
    }
    return out;
}

// ---------------------------------------------------------------- reminders

QString fillReminder(const QString &text, const ReminderFields &f)
{
    const std::pair<QLatin1String, const QString *> fields[] = {
        {QLatin1String("{customer}"), &f.customer},
        {QLatin1String("{amount}"), &f.amount},
        {QLatin1String("{oldest due date}"), &f.oldestDue},
        {QLatin1String("{days overdue}"), &f.daysOverdue},
        {QLatin1String("{company}"), &f.company},
    };
    QString out;
    out.reserve(text.size() + 64);
    const QStringView t(text);
    qsizetype i = 0;
    while (i < t.size()) {
        bool replaced = false;
        if (t[i] == u'{') {
            for (const auto &[name, value] : fields) {
                if (t.mid(i).startsWith(name)) {
                    out += *value;
                    i += name.size();
                    replaced = true;
                    break;
                }
            }
        }
        if (!replaced) out += t[i++];
    }
    return out;
}

QString defaultReminderText()
{
    return QStringLiteral(
        "Dear {customer},\n\n"
        "According to our records, {amount} is still open on your account. The oldest part of it was due on "
        "{oldest due date}, {days overdue} days ago.\n\n"
        "If your payment is already on its way, thank you, and please disregard this letter. Otherwise we would "
        "be grateful if you could settle the balance at your earliest convenience. The open items are listed "
        "below; if anything in them doesn't look right to you, please let us know.\n\n"
        "Kind regards,\n"
        "{company}");
}

QString documentWhat(bool reminder, const QDate &asOf)
{
    return (reminder ? QStringLiteral("reminder ") : QStringLiteral("statement ")) +
           asOf.toString(QStringLiteral("yyyy-MM-dd"));
}

}  // namespace qor::statements
