// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// What the customers owe on a given day. For each customer who owes: the
// records with a balance other than zero, oldest due first, the aging of what
// is owed by each record's bill due date, the credits and the total. One walk
// over the invoice records serves every customer at once; the Statements
// window, the printed statements and reminders and the command-line tool all
// take their numbers from here. Exact money throughout.
#include "database/money.h"

#include <QDate>
#include <QString>
#include <QStringList>
#include <QStringView>

#include <array>
#include <vector>

namespace qor {
class Database;
}

namespace qor::statements {

// The aging columns, by days past the bill due date.
enum Bucket { NotYetDue,
              Days1To30,
              Days31To60,
              Days61To90,
              Over90Days };
inline constexpr int BucketCount = 5;
using Aging = std::array<Money, BucketCount>;

// "Not yet due", "1–30 days", "31–60 days", "61–90 days", "Over 90 days".
QString bucketCaption(int bucket);
// The column of a balance that many days past due: today or later is not
// yet due, then 1 to 30, 31 to 60, 61 to 90, and beyond.
int bucketOf(int daysPastDue);

// A stored date "yyyy/mm/dd" (month and day may have one digit); invalid for
// anything else.
QDate storedDate(QStringView text);

struct OpenRecord {
    QString period;
    QString dueText;      // the date aged by, as the screen shows dates; as stored when it doesn't read
    QDate due;            // the bill due date, else the period's end; invalid when neither reads
    int daysPastDue = 0;  // from due to the day of the statement; 0 when undated
    Money balance;        // never zero; below zero a credit
    Money billed;         // the items at their present prices (Detail::Records only)
    Money paid() const { return billed - balance; }
    bool isCredit() const { return balance.isNegative(); }
};

struct Account {
    QString cid;   // plain number
    QString name;  // display name without the archive mark
    bool archived = false;
    Aging aging{};        // what is owed, by days past due; credits are not in here
    Money credits;        // the credits as a positive amount
    Money total;          // the aging less the credits
    QDate oldestDue;      // earliest due date of a balance owed; invalid when none is dated
    int daysPastDue = 0;  // of that oldest balance; 0 when not yet due or undated
    // The open records, owed ones oldest due first, then the credits
    // (Detail::Records only).
    std::vector<OpenRecord> records;
    bool isOverdue() const { return daysPastDue > 0; }
};

struct Report {
    QDate asOf;
    std::vector<Account> accounts;  // the customers who owe, in customer table order
    Aging aging{};                  // column sums over those customers
    Money credits, total;
};

enum class Detail {
    Totals,   // the sums only: what the list of customers needs
    Records,  // the open records too, with what each billed: what a statement needs
};

// The customers whose total is above zero on asOf. With cids given (plain
// numbers or keys, "12" or "12k"), only those are looked at. Customers the
// records name but the table lacks come last, by number.
Report report(const Database &db, const QDate &asOf, Detail detail = Detail::Totals,
              const QStringList &cids = {});

// ---------------------------------------------------------------- reminders
// The fields a reminder text may hold, each written in braces.
struct ReminderFields {
    QString customer;     // {customer}
    QString amount;       // {amount}
    QString oldestDue;    // {oldest due date}
    QString daysOverdue;  // {days overdue}
    QString company;      // {company}
};
// The text with every field replaced by its value, in one pass: a value that
// itself holds a field name stays as it is. Other braces are left alone.
QString fillReminder(const QString &text, const ReminderFields &fields);
// The letter the program starts with until the user writes their own.
QString defaultReminderText();

// What a statement's file is called after: "statement yyyy-mm-dd", or
// "reminder yyyy-mm-dd" for a reminder letter.
QString documentWhat(bool reminder, const QDate &asOf);

}  // namespace qor::statements
