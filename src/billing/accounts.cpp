#include "billing/accounts.h"

#include "database/database.h"
#include "database/regional.h"
#include "database/rowtypes.h"

#include <QHash>
#include <QLocale>
#include <cmath>
#include <limits>

namespace qor::accounts {

namespace {
constexpr qint64 MaxWhole = 9'000'000'000'000'000LL / 100;  // what fits as cents with room for sums

// Adds without wrapping round: an absurd file saturates instead.
qint64 plus(qint64 a, qint64 b)
{
    qint64 r;
    if (__builtin_add_overflow(a, b, &r)) return b > 0 ? std::numeric_limits<qint64>::max()
                                                       : std::numeric_limits<qint64>::min();
    return r;
}
qint64 times(qint64 a, qint64 b)
{
    qint64 r;
    if (__builtin_mul_overflow(a, b, &r)) return (a < 0) != (b < 0) ? std::numeric_limits<qint64>::min()
                                                                    : std::numeric_limits<qint64>::max();
    return r;
}
}  // namespace

std::optional<qint64> decimalCents(QStringView t)
{
    qsizetype i = 0;
    const qsizetype n = t.size();
    bool negative = false;
    if (i < n && (t[i] == u'-' || t[i] == u'+')) negative = t[i++] == u'-';
    qint64 whole = 0;
    int digits = 0;
    while (i < n && t[i].isDigit() && t[i].unicode() < 128) {
        whole = std::min(MaxWhole, whole * 10 + (t[i].unicode() - u'0'));
        ++i;
        ++digits;
    }
    int frac[3] = {0, 0, 0};
    if (i < n && t[i] == u'.') {
        ++i;
        for (int k = 0; i < n && t[i].isDigit() && t[i].unicode() < 128; ++k, ++i, ++digits)
            if (k < 3) frac[k] = t[i].unicode() - u'0';
    }
    if (digits == 0 || i != n) return std::nullopt;
    qint64 cents = whole * 100 + frac[0] * 10 + frac[1] + (frac[2] >= 5 ? 1 : 0);
    return negative ? -cents : cents;
}

qint64 priceCents(QStringView priceText)
{
    const double v = regional::priceValue(priceText);
    if (!std::isfinite(v) || std::fabs(v) >= double(MaxWhole)) return 0;
    return std::llround(v * 100.0);
}

QString formatCents(qint64 cents, bool plain)
{
    const bool negative = cents < 0;
    const quint64 magnitude = negative ? quint64(0) - quint64(cents) : quint64(cents);
    const QString frac = QStringLiteral("%1").arg(magnitude % 100, 2, 10, QLatin1Char('0'));
    if (plain) return (negative ? QStringLiteral("-") : QString()) + QString::number(magnitude / 100) + u'.' + frac;
    // Doubles hold every cent exactly up to 2^53; beyond, the locale's form of
    // the whole units and the cents, joined by hand.
    if (magnitude < (quint64(1) << 53)) return regional::formatCurrency(double(cents) / 100.0);
    const QLocale loc;
    return (negative ? QStringLiteral("-") : QString()) + loc.currencySymbol() + loc.toString(magnitude / 100)
         + loc.decimalPoint() + frac;
}

std::vector<PeriodSummary> periodSummaries(const Database &db)
{
    std::vector<PeriodSummary> out;
    QHash<QString, size_t> byName;
    db.lvwPeriods.forEach([&](QStringView, QStringView text) {
        if (const auto p = PeriodView::parse(text)) {
            const QString name = p->name.toString();
            if (!byName.contains(name)) byName.insert(name, out.size());
            out.push_back({name, p->start.toString(), p->end.toString(), p->billDue.toString()});
        }
        return true;
    });

    ItemPrices prices(db);
    QString lastName;
    size_t last = size_t(-1);
    db.lvwInvoiceRecords.forEach([&](QStringView, QStringView text) {
        const auto r = InvoiceRecordView::parse(text);
        if (!r) return true;
        if (last == size_t(-1) || r->period != lastName) {
            lastName = r->period.toString();
            last = byName.value(lastName, size_t(-1));
        }
        if (last == size_t(-1)) return true;
        PeriodSummary &s = out[last];
        ++s.records;
        const qint64 balance = decimalCents(r->balance).value_or(0);
        s.owedCents = plus(s.owedCents, balance);
        if (balance == 0) ++s.paid;
        s.billedCents = plus(s.billedCents, prices.billedCents(r->items));
        return true;
    });
    return out;
}

qint64 ItemPrices::priceOf(QStringView number)
{
    const QString n = number.toString();
    auto it = m_cents.constFind(n);
    if (it != m_cents.constEnd()) return *it;
    const QString key = numberKey(n);
    const qint64 cents =
        m_db.lvwPAndS.contains(key) ? priceCents(ItemView::parse(m_db.lvwPAndS.textOf(key)).priceText()) : 0;
    m_cents.insert(n, cents);
    return cents;
}

qint64 ItemPrices::billedCents(QStringView items)
{
    qint64 sum = 0;
    ItemEntry::forEach(items, [&](const ItemEntry &e, QStringView) {
        if (e.number.isEmpty()) return true;
        bool ok = false;
        const qint64 q = e.quantity.isEmpty() ? 1 : e.quantity.toLongLong(&ok);
        sum = plus(sum, times(priceOf(e.number), e.quantity.isEmpty() || ok ? q : 1));
        return true;
    });
    return sum;
}

Owing owing(const Database &db, const QString &cidFilter)
{
    const QString only = cidFilter.isEmpty() ? QString() : plainNumber(cidFilter);
    QHash<QString, int> periodOrder;
    int position = 0;
    db.lvwPeriods.forEach([&](QStringView, QStringView text) {
        if (const auto p = PeriodView::parse(text)) periodOrder.insert(p->name.toString(), ++position);
        return true;
    });

    struct Line {
        int order;
        QString period;
        qint64 cents;
    };
    QHash<QString, std::vector<Line>> byCustomer;
    db.lvwInvoiceRecords.forEach([&](QStringView, QStringView text) {
        const auto r = InvoiceRecordView::parse(text);
        if (!r || (!only.isEmpty() && r->cid != only)) return true;
        const qint64 cents = decimalCents(r->balance).value_or(0);
        if (cents == 0) return true;
        const QString period = r->period.toString();
        byCustomer[r->cid.toString()].push_back({periodOrder.value(period, position + 1), period, cents});
        return true;
    });

    Owing out;
    auto addCustomer = [&](const QString &cid, const QString &name) {
        auto it = byCustomer.find(cid);
        if (it == byCustomer.end()) return;
        std::vector<Line> &lines = *it;
        std::stable_sort(lines.begin(), lines.end(), [](const Line &a, const Line &b) { return a.order < b.order; });
        OwingCustomer c{cid, name, {}, 0};
        for (const Line &l : lines) {
            c.periods.append({l.period, l.cents});
            c.totalCents = plus(c.totalCents, l.cents);
        }
        out.totalCents = plus(out.totalCents, c.totalCents);
        out.customers.push_back(std::move(c));
        byCustomer.erase(it);
    };
    db.lvwCustomers.forEach([&](QStringView key, QStringView text) {
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

}  // namespace qor::accounts
