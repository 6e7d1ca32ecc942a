// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// Billing without windows: bill periods, the building of the invoice records
// trees, billing items during an entry, payments, and the texts the panels
// show for them. The panels read their controls, call these, and show the
// outcome; every rule about money and records lives here.
#include "billing/invoicetree.h"
#include "database/database.h"
#include "database/money.h"

#include <QDate>
#include <QString>
#include <QStringList>
#include <optional>

namespace qor {

class Database;
class InvoiceTrees;

namespace billing {

// The keys, texts and captions of the trees and of the bill period panel.
inline const QString RootKey = QStringLiteral("root_node");
inline const QString NewPeriodRootText = QStringLiteral("New Bill Period");
inline const QString NoteKeySuffix = QStringLiteral("note");

// A message box or input box: title (empty: the application's) and text.
struct Prompt {
    QString title;
    QString text;
};
namespace text {
inline const Prompt AddCustomersFirst{{}, QStringLiteral("Please add your Customers and your Products first.")};
inline const Prompt DuplicateName{QStringLiteral("Duplicate Name Found"),
                                  QStringLiteral("A Bill Period with the exact same name was found.\r\n\r\n"
                                                 "(Every Bill Period entry must have a unique name.)")};
inline const Prompt NothingBilled{QStringLiteral("No Customers Billed for this Period"),
                                  QStringLiteral("You'll need to bill some customers first before finalizing "
                                                 "this Bill Period.")};
inline const Prompt Finalise{{},
                             QStringLiteral("Once a Bill Period is entered, the entry is finalized and cannot be "
                                            "edited any further.\r\n\r\nAre you sure you wish to continue?")};
inline const Prompt NewBalance{QStringLiteral("Enter New Balance"), QStringLiteral("Enter the new balance for:")};
inline const Prompt OptionalNote{QStringLiteral("Optional Note"),
                                 QStringLiteral("Enter any optional note, such as a check number:")};
inline const Prompt InvoiceNote{QStringLiteral("Add a Note to Customer Bill"),
                                QStringLiteral("Enter your note to be added\r\nwhen this customer's bill is printed:")};
// Title of the refusal to bill an item a hundredth time.
inline const QString QuantityFullTitle = QStringLiteral("Quantity Limit Reached");
}  // namespace text
// The prompts of the two payment boxes with the customer's name under an empty line.
QString balancePrompt(const QString &name);
QString notePrompt(const QString &name);

// The greatest quantity an item line holds: two digits.
inline constexpr int MaxQuantity = 99;

// ---------------------------------------------------------------- dates
// The "(Example: March 2004)" hint for the name of a new period, in the
// user's language.
QString exampleText(const QDate &today);
// The bill due date lets "&Add New" show: at least 6 characters, a date.
bool dueDateAllowsAdd(QStringView text);
// ... and it is fully good (window colour): also the date separator exactly twice.
bool dueDateLooksGood(QStringView text, QStringView dateSeparator);
// A typed date in the chrono form "yyyy/mm/dd" of the tables; empty stays
// empty; what can't be read as a date is kept as typed.
QString chronoDate(const QString &typed);
// A stored date for the screen, in the user's date form; kept as stored when
// it isn't a chrono date.
QString screenDate(const QString &chrono);
// Text typed by the user for a row field: the characters that separate
// fields and items inside rows are taken out, so no typing can split a row.
QString rowSafe(QString typed);

// ---------------------------------------------------------------- periods
// FindPeriodRow: 1-based position of the first period whose name is exactly
// name (case counts), or 0.
int findPeriodRow(const Database &db, const QString &name);
// The period names in table order (the choosers' entries).
QStringList periodNames(const Database &db);
// TreeHasBilledItem: any node of the entry tree with a key ending in "b".
bool treeHasBilledItem(const InvoiceTree &tree);

// What "&Add New" may do before the user is asked to confirm.
enum class AddCheck { Ok,
                      DuplicateName,
                      NothingBilled };
AddCheck checkNewBillPeriod(const Database &db, const InvoiceTree &entryTree, const QString &name);
// The row and the records of AddBillPeriod after the confirmation: the period
// row goes into lvwPeriods under the name, and one record per customer with
// items (WalkInvoiceTree, FlushInvoiceRecord). Gives the number of records
// added. Dates are as typed; they are stored in the chrono form.
int finaliseBillPeriod(Database &db, const InvoiceTree &entryTree, const QString &name, const QString &start,
                       const QString &end, const QString &due);

// ---------------------------------------------------------------- trees
// ResetNewPeriodTree: the root "New Bill Period" and every current customer,
// marked, in table order.
void resetNewPeriodTree(InvoiceTree &tree, const Database &db);
// RebuildInvoiceTree: the tree of a finalised period from its records. The
// tree's index decides colours, ticks and record notes.
void rebuildInvoiceTree(InvoiceTree &tree, const Database &db, const QString &period);
// Both trees of one period with one walk over the records.
void rebuildInvoiceTrees(InvoiceTree &tree0, InvoiceTree &tree1, const Database &db, const QString &period);

// ---------------------------------------------------------------- billing items
// MarkOnlySelectedCustomer.
void markOnlyCustomer(InvoiceTree &tree, int selected);
// Ctrl + click: the customer's mark toggled, the others kept.
void toggleMark(InvoiceTree &tree, int customer);
// mnuSelectAll_Click.
void markAllCustomers(InvoiceTree &tree);

// What a double-click on a product did.
struct BillOutcome {
    int added = 0;   // new item nodes
    int raised = 0;  // quantities raised by one
    // "customer name" / "item text" of lines that already hold the greatest
    // quantity: left as they were.
    QList<std::pair<QString, QString>> refused;
    // The message naming them, empty when nothing was refused.
    QString refusalText() const;
};
// lvwProducts_DblClick: bills the product (its table key and its list text)
// to every marked customer of the entry tree.
BillOutcome billProductToMarked(InvoiceTree &tree, const QString &productKey, const QString &productText);
// DeleteBilledItem: the item node goes as a whole. False when node isn't an item under entry.
bool deleteBilledItem(InvoiceTree &tree, int node);

// An open entry as plain values, enough to build its tree again exactly: its
// name and dates as typed, its customers in tree order with their marks, and
// what was billed to whom.
struct BillEntry {
    struct Customer {
        QString number;
        bool marked = false;
        friend bool operator==(const Customer &, const Customer &) = default;
    };
    struct Item {
        QString customer, item;
        qint64 quantity = 1;
        friend bool operator==(const Item &, const Item &) = default;
    };
    QString name, start, end, due;
    QList<Customer> customers;
    QList<Item> items;  // in tree order
    friend bool operator==(const BillEntry &, const BillEntry &) = default;
};
// The customers, marks and items of an entry tree; name and dates stay empty
// (the panel's fields hold them).
BillEntry entryOf(const InvoiceTree &entryTree);
// The entry tree of entry: its customers under their present names, its
// items at their present list texts and prices.
void restoreEntry(InvoiceTree &entryTree, const Database &db, const BillEntry &entry);

// Deleting a customer or an item (key "12k"). One that a record or the open
// entry bills is archived, so its number is never given to another; a
// customer deleted outright also leaves the entry's tree, so nothing can be
// billed to a number that may come back.
EditOutcome removeCustomer(InvoiceTrees &trees, const QString &key, const Database::Progress &progress = {});
EditOutcome removeItem(InvoiceTrees &trees, const QString &key, const Database::Progress &progress = {});

// ---------------------------------------------------------------- payments
// LogPayment on the customer node of tree 0 of the period on show: the node's
// text, colour and note node, the record's balance and note, then tree 1
// rebuilt. False when nothing changed (a full payment for a paid customer
// without a note, or a node without a record).
bool logPayment(InvoiceTree &tree0, InvoiceTree &tree1, Database &db, int node, Money balance, const QString &note,
                const QString &period);

// The invoice note of tree 1: added under the customer node, ticked; a
// customer has at most one (a second keeps the first, ticked). Gives the
// note's node, 0 when nothing was added or the answer was empty.
int addInvoiceNote(InvoiceTree &tree1, int customer, const QString &answer);

}  // namespace billing
}  // namespace qor
