// SPDX-License-Identifier: GPL-3.0-or-later
#include "billing/accounts.h"

#include "database/database.h"
#include "database/rowtypes.h"

#include <algorithm>

namespace qor::accounts {

const PriceBook::Item &PriceBook::item(QStringView number)
{
    const QString n = number.toString();
    auto it = m_items.constFind(n);
    if (it != m_items.constEnd()) return *it;
    Item i;
    i.number = n;
    const QString key = numberKey(n);
    if (m_db.items().contains(key)) {
        const ItemView row = ItemView::parse(m_db.items().textOf(key));
        i.listText = row.listText.toString();
        i.price = Money::fromPriceText(row.priceText()).value_or(Money());
    } else {
        // A damaged file, or an item deleted while an entry that billed it
        // was open: the line says so and bills nothing.
        i.listText = Money().toCurrencyText() + QStringLiteral(" - Item number %1, not in the database").arg(n);
    }
    return *m_items.insert(n, std::move(i));
}

Money billedOf(PriceBook &prices, QStringView items)
{
    Money billed;
    ItemEntry::forEach(items, [&](const ItemEntry &e, QStringView) {
        if (!e.number.isEmpty()) billed += prices.item(e.number).price.times(e.count());
        return true;
    });
    return billed;
}

QString formatMoney(Money amount, bool plain) { return plain ? amount.toPlainText() : amount.toCurrencyText(); }

std::vector<PeriodSummary> periodSummaries(const Database &db)
{
    std::vector<PeriodSummary> out;
    QHash<QString, size_t> byName;
    db.periods().forEach([&](QStringView, QStringView text) {
        if (const auto p = PeriodView::parse(text)) {
            const QString name = p->name.toString();
            if (!byName.contains(name)) byName.insert(name, out.size());
            out.push_back({name, p->start.toString(), p->end.toString(), p->billDue.toString()});
        }
        return true;
    });

    PriceBook prices(db);
    QString lastName;
    size_t last = size_t(-1);
    db.invoiceRecords().forEach([&](QStringView, QStringView text) {
        const auto r = InvoiceRecordView::parse(text);
        if (!r) return true;
        if (last == size_t(-1) || r->period != lastName) {
            lastName = r->period.toString();
            last = byName.value(lastName, size_t(-1));
        }
        if (last == size_t(-1)) return true;
        PeriodSummary &s = out[last];
        ++s.records;
        const Money balance = Money::fromStoredText(r->balance).value_or(Money());
        s.owed += balance;
        if (balance.isZero()) ++s.paid;
        s.billed += billedOf(prices, r->items);
        return true;
    });
    return out;
}

Owing owing(const Database &db, const QString &cidFilter)
{
    const QString only = cidFilter.isEmpty() ? QString() : plainNumber(cidFilter);
    QHash<QString, int> periodOrder;
    int position = 0;
    db.periods().forEach([&](QStringView, QStringView text) {
        if (const auto p = PeriodView::parse(text)) periodOrder.insert(p->name.toString(), ++position);
        return true;
    });

    struct Line {
        int order;
        QString period;
        Money balance;
    };
    QHash<QString, std::vector<Line>> byCustomer;
    db.invoiceRecords().forEach([&](QStringView, QStringView text) {
        const auto r = InvoiceRecordView::parse(text);
        if (!r || (!only.isEmpty() && r->cid != only)) return true;
        const Money balance = Money::fromStoredText(r->balance).value_or(Money());
        if (balance.isZero()) return true;
        const QString period = r->period.toString();
        byCustomer[r->cid.toString()].push_back({periodOrder.value(period, position + 1), period, balance});
        return true;
    });

    Owing out;
    auto addCustomer = [&](const QString &cid, const QString &name) {
        auto it = byCustomer.find(cid);
        if (it == byCustomer.end()) return;
        std::vector<Line> &lines = *it;
        std::stable_sort(lines.begin(), lines.end(), [](const Line &a, const Line &b) { return a.order < b.order; });
        OwingCustomer c{cid, name, {}, {}};
        for (const Line &l : lines) {
            c.periods.append({l.period, l.balance});
            c.total += l.balance;
        }
        out.total += c.total;
        out.customers.push_back(std::move(c));
        byCustomer.erase(it);
    };
    db.customers().forEach([&](QStringView key, QStringView text) {
        const QStringView name = customer::displayNameOf(text);
        addCustomer(plainNumber(key), (name.startsWith(ArchiveMark) ? name.mid(ArchiveMark.size()) : name).toString());
        return true;
    });
    // Records of customers the table lacks (the program would make a
    // placeholder for them): last, by number.
    QStringList rest = byCustomer.keys();
    std::sort(rest.begin(), rest.end(), [](const QString &a, const QString &b) {
        return a.size() != b.size() ? a.size() < b.size() : a < b;
    });
    for (const QString &cid : rest) addCustomer(cid, QString());
    return out;
}

QStringList moneyProblems(const Database &db)
{
    QStringList out;
    qint64 more = 0;
    auto tell = [&](const QString &line) {
        if (out.size() < detail::MaxItemProblems) out << line;
        else ++more;
    };
    db.items().forEach([&](QStringView key, QStringView text) {
        const ItemView row = ItemView::parse(text);
        if (!Money::fromPriceText(row.priceText()))
            tell(QStringLiteral("item number %1: the price \"%2\" holds no amount that can be read; it counts as 0")
                     .arg(plainNumber(key), row.priceText()));
        return true;
    });
    PriceBook prices(db);
    db.invoiceRecords().forEach([&](QStringView, QStringView text) {
        const auto r = InvoiceRecordView::parse(text);
        if (!r) return true;
        const QString where = QStringLiteral("bill period \"%1\", customer number %2: ").arg(r->period, r->cid);
        const auto balance = Money::fromStoredText(r->balance);
        const Money billed = billedOf(prices, r->items);
        if (!balance)
            tell(where + QStringLiteral("the balance \"%1\" is not a number; it counts as 0").arg(r->balance));
        else if (*balance > billed)
            tell(where + QStringLiteral("the balance %1 is more than the %2 its items bill")
                             .arg(balance->toCurrencyText(), billed.toCurrencyText()));
        return true;
    });
    if (more) out << QStringLiteral("%1 more such problems").arg(more);
    return out;
}

}  // namespace qor::accounts
