// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// Statements and reminder letters as pages and PDF files, without windows:
// the numbers of statements.h, the customer's fields and the company's
// details put into the statement page of the page layer. The Statements
// window, closing the books, the command-line tool and e-mail take their
// pages from here.
#include "pages/page.h"
#include "pages/pdfoutput.h"
#include "pages/statement.h"
#include "statements/statements.h"

#include <QByteArray>
#include <QDate>
#include <QList>
#include <QPageSize>
#include <QString>

#include <array>
#include <functional>
#include <vector>

namespace qor {
class Database;
}

namespace qor::statements {

// ---------------------------------------------------------------- settings
// Reminders go to customers whose oldest balance is at least this many days
// past due (Printing/ReminderDays, 14 unless set).
int reminderDays();
void setReminderDays(int days);
// The reminder letter with its fields in braces (Printing/ReminderText; the
// default letter unless set).
QString reminderText();
void setReminderText(const QString &text);
// One PDF file per customer when statements are saved (Printing/StatementsOneFilePerCustomer).
bool oneFilePerCustomer();
void setOneFilePerCustomer(bool on);

// What is the same for every statement of one run.
struct RunValues {
    std::array<QString, 9> company;
    int templateNumber = 0;  // the invoice layout the user chose
    QDate asOf;
    bool reminder = false;
    QString letter;  // the reminder text, fields not yet filled
};
// The values as stored now: the file's company details, the chosen invoice
// layout, the stored reminder text.
RunValues storedRunValues(const Database &db, const QDate &asOf, bool reminder);

// The customers due a reminder: those whose oldest balance owed is at least
// days past due.
std::vector<Account> dueReminders(std::vector<Account> accounts, int days);

// One customer's page input; the account must hold its records.
pages::StatementInput statementInput(const Database &db, const Account &account, const RunValues &run);
QList<pages::Page> statementPages(const Database &db, const Account &account, const RunValues &run);

// The pages of the accounts one after another, one customer at a time, for
// pages::writePdf or a printer.
std::function<QList<pages::Page>()> pageSource(const Database &db, const std::vector<Account> &accounts,
                                               const RunValues &run);

// Writes all accounts' statements into one PDF file. The file is written
// beside the target and takes its place only when complete. False with a
// reason when it could not be written.
bool writeOneFile(const Database &db, const std::vector<Account> &accounts, const RunValues &run,
                  const QString &path, QString *error, const QPageSize &paper = pages::defaultPaper());
// Writes one PDF per account into folder (made when missing), named by
// files::eachFileName. Gives the number written; stops at the first failure.
int writeEachFile(const Database &db, const std::vector<Account> &accounts, const RunValues &run,
                  const QString &folder, QString *error, const QPageSize &paper = pages::defaultPaper());

}  // namespace qor::statements
