#pragma once
// Read-only statements of the bill periods and of what customers still owe,
// for the command-line tool. Money here is whole cents in 64 bits, so sums
// over a million records come out exact; the program itself keeps balances
// as 32-bit floats, and these read them back to the cent.
#include <QHash>
#include <QList>
#include <QString>
#include <optional>
#include <vector>

namespace qor {
class Database;
}

namespace qor::accounts {

// Cents of a stored decimal text ("16.5" -> 1650, "-0.3" -> -30), rounded
// half away from zero at the third decimal. Nothing for a text that isn't a
// plain decimal number.
std::optional<qint64> decimalCents(QStringView text);
// Cents of a price as the lists show it (the user's currency form); 0 when it
// holds no number.
qint64 priceCents(QStringView priceText);
// An amount in the user's currency form, or with plain true as "-1234.50".
QString formatCents(qint64 cents, bool plain);

struct PeriodSummary {
    QString name, start, end, due;  // dates as stored
    int records = 0;
    qint64 billedCents = 0;  // the item lists at the items' present prices
    qint64 owedCents = 0;    // sum of the balances
    int paid = 0;            // records with balance 0
};
// One summary per period in table order.
std::vector<PeriodSummary> periodSummaries(const Database &db);

// What a record billed: its item list at the items' present prices (an item
// the table lacks counts 0). Each item's price is read once, so a walk over
// a million records looks up the few hundred items only.
class ItemPrices {
public:
    explicit ItemPrices(const Database &db) : m_db(db) {}
    qint64 billedCents(QStringView items);

private:
    qint64 priceOf(QStringView number);
    const Database &m_db;
    QHash<QString, qint64> m_cents;  // by item number
};

struct OwingCustomer {
    QString cid;
    QString name;  // present display name without the archive mark
    QList<std::pair<QString, qint64>> periods;  // period name, balance, in period order
    qint64 totalCents = 0;
};
struct Owing {
    std::vector<OwingCustomer> customers;  // in customer table order
    qint64 totalCents = 0;
};
// Every customer with a balance other than 0 in some period; with cid given,
// that customer alone ("12" or "12k").
Owing owing(const Database &db, const QString &cid = QString());

}  // namespace qor::accounts
