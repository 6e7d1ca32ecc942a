// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// A customer's statement of account, or a reminder letter with the statement
// under it, in the house style of the invoices: the company and customer
// blocks of the chosen invoice layout, then the open records, the aging of
// what is owed, the credits and the total, and the company's closing lines.
// A statement that doesn't fit one page continues on further pages. The
// composer reads plain values, never a window or the database.
#include "database/money.h"
#include "pages/page.h"

#include <QList>
#include <QLocale>
#include <QString>

#include <array>

namespace qor::pages {

struct StatementLine {
    QString period;
    QString due;  // the date it is aged by, as the screen shows dates
    Money billed;
    Money balance;  // below zero: a credit
};

struct StatementInput {
    bool reminder = false;
    int templateNumber = 0;  // the invoice layout 0, 1 or 2; any other number draws layout 0
    // txtCompanyDetails(0..8): name, three address lines, phone, slogan,
    // general description, payee for checks, closing.
    std::array<QString, 9> company;
    // The customer's fields: 0 display name, 1 first name, 2 last name, 3 to 5
    // address lines, 6 e-mail, 7 phone, 8 notes.
    std::array<QString, 9> customer;
    QString cid;
    QString date;  // the day of the statement, as the screen shows dates
    // The open records: owed ones oldest due first, then the credits.
    QList<StatementLine> lines;
    std::array<Money, 5> aging{};  // Not yet due, 1-30, 31-60, 61-90, over 90 days
    Money credits;                 // positive
    Money total;
    QString letter;  // the reminder's text with its fields filled in
    QLocale locale;  // the form of the amounts
};

// Measures of the statement pages, in twips.
namespace statementpage {
constexpr int RowPitch = 300;
constexpr int ContentBottom = 13200;  // the closing lines stand below
}  // namespace statementpage

// The pages of one statement or reminder, in order; never empty.
QList<Page> composeStatement(const StatementInput &input);

}  // namespace qor::pages
