// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// Read-only statements of the bill periods and of what customers still owe,
// for the command-line tool, and the money checks of a file. Amounts are
// qor::Money: whole cents in 64 bits, so sums over a million records come
// out exact.
#include "database/money.h"

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>
#include <optional>
#include <vector>

namespace qor {
class Database;
}

namespace qor::accounts {

// The items of the table by number, each read once: its list text without
// the archive mark, and the price that text holds. An item number the table
// lacks gets a text that says so and the price 0; so does a price text that
// holds no amount.
class PriceBook {
public:
    explicit PriceBook(const Database &db) : m_db(db) {}
    struct Item {
        QString number;
        QString listText;
        Money price;
    };
    const Item &item(QStringView number);

private:
    const Database &m_db;
    QHash<QString, Item> m_items;
};
// What an item list ("7x3" ItemSep "9") bills at the items' present prices.
Money billedOf(PriceBook &prices, QStringView items);

// An amount in the user's currency form, or with plain true as "-1234.50".
QString formatMoney(Money amount, bool plain);

struct PeriodSummary {
    QString name, start, end, due;  // dates as stored
    int records = 0;
    Money billed;  // the item lists at the items' present prices
    Money owed;    // sum of the balances
    int paid = 0;  // records with balance 0
};
// One summary per period in table order.
std::vector<PeriodSummary> periodSummaries(const Database &db);

struct OwingCustomer {
    QString cid;
    QString name;                              // present display name without the archive mark
    QList<std::pair<QString, Money>> periods;  // period name, balance, in period order
    Money total;
};
struct Owing {
    std::vector<OwingCustomer> customers;  // in customer table order
    Money total;
};
// Every customer with a balance other than 0 in some period; with cid given,
// that customer alone ("12" or "12k").
Owing owing(const Database &db, const QString &cid = QString());

// What a check of the file reports about money, one line each, without
// changing anything: price texts that hold no amount (they count as 0),
// balances that aren't numbers (0 too), and records whose balance is more
// than their items bill (the mark of an amount misread by an older version).
QStringList moneyProblems(const Database &db);

}  // namespace qor::accounts
