// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// The invoice print run without windows: the pages of the ticked customers of
// the print tree, composed from the tree's nodes, the customer table, the
// company's details and the print options. The Printing panel, the preview
// and the command-line tool all take their pages from here.
#include "pages/invoice.h"
#include "pages/page.h"

#include <QList>
#include <QString>

#include <array>
#include <functional>

namespace qor {

class Database;
class InvoiceTree;

namespace invoicerun {

// The print options as stored, without writing any default back.
pages::InvoiceOptions storedInvoiceOptions();

// The bill due date of a period as the screen shows it; empty for an unknown
// period.
QString billDueOf(const Database &db, const QString &period);

// What is the same for every customer of one run.
struct RunValues {
    std::array<QString, 9> company;
    QString billDue;
    pages::InvoiceOptions options;
};

// The composition input of one customer node: the customer's fields from
// lvwCustomers, every item of the node with its quantity and amount, the
// invoice note when it is ticked, and the balance the node holds.
pages::InvoiceInput invoiceInputFor(const Database &db, const InvoiceTree &tree, int customerNode,
                                    const RunValues &run);

// One customer's invoice, its pages in order; nothing when the node has no
// line or the template is not 0, 1 or 2.
QList<pages::Page> invoicePagesFor(const Database &db, const InvoiceTree &tree, int customerNode,
                                   const RunValues &run);

// Told before each node of the tree is looked at: how many so far, counting
// this one, and of how many nodes.
using RunProgress = std::function<void(qsizetype done, qsizetype of)>;

// The whole run: the invoice of every ticked customer node in node order,
// the duplicate of an invoice right after it when asked. Reads only.
QList<pages::Page> composeInvoiceRun(const Database &db, const InvoiceTree &tree, const RunValues &run,
                                     const RunProgress &progress = {});

// The run's question before printing: true when neither the company name nor
// the first address line holds text.
bool companyInfoMissing(const Database &db);

}  // namespace invoicerun
}  // namespace qor
