// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// What an e-mail run sends, without windows: the customers of a run with
// their addresses, and for each one the message texts and the PDF of their
// pages, made when that customer's turn comes. The Printing panel, the
// Statements window and `qorvane-cli email` all send through these.
#include "mail/mail.h"
#include "printing/invoicerun.h"
#include "statements/statementrun.h"

#include <QDate>
#include <QHash>

#include <vector>

namespace qor {
class Database;
class InvoiceTree;
}  // namespace qor

namespace qor::mailruns {

// The customer whose number is cid as a run lists them: display name and
// e-mail field from the customer table.
mail::MailCustomer customerOf(const Database &db, const QString &cid);

// Invoices of one period: the ticked customer nodes of the print tree, in
// node order, and their messages. The tree and db must outlive the Compose.
QList<mail::MailCustomer> tickedCustomers(const Database &db, const InvoiceTree &tree);
mail::Compose invoiceMessages(const Database &db, const InvoiceTree &tree, const invoicerun::RunValues &run,
                              const QString &period, const mail::MailTexts &texts, QDate today = QDate::currentDate());

// Statements or reminders (run.reminder) of accounts (with their records);
// accounts and db must outlive the Compose.
QList<mail::MailCustomer> accountCustomers(const Database &db, const std::vector<statements::Account> &accounts);
mail::Compose statementMessages(const Database &db, const std::vector<statements::Account> &accounts,
                                const statements::RunValues &run, const mail::MailTexts &texts);

// Sends one message per customer and gives what became of each: in the
// window runEmail (mailgui/emailrun.h); a test puts its own transport here.
using EmailRun = std::function<QList<mail::CustomerResult>(const QList<mail::MailCustomer> &, const mail::Compose &)>;

// The customer numbers of the results that went out.
QStringList sentNumbers(const QList<mail::CustomerResult> &results);

}  // namespace qor::mailruns
