// SPDX-License-Identifier: GPL-3.0-or-later
#include "printing/mailruns.h"

#include "billing/invoicetree.h"
#include "database/database.h"
#include "database/regional.h"
#include "database/rowtypes.h"
#include "pages/pdfoutput.h"

#include <QBuffer>

namespace qor::mailruns {

namespace {

// pages as the bytes of one PDF, or the reason it couldn't be made.
mail::OutgoingMessage withPdf(mail::OutgoingMessage m, const QList<pages::Page> &pages, const QPageSize &paper)
{
    if (pages.isEmpty()) {
        m.error = QStringLiteral("there is nothing to attach");
        return m;
    }
    QBuffer buffer(&m.pdf);
    buffer.open(QIODevice::WriteOnly);
    if (!pages::writePdf(pages, &buffer, paper, &m.error)) {
        m.pdf.clear();
        if (m.error.isEmpty()) m.error = QStringLiteral("the PDF could not be made");
    }
    return m;
}

mail::OutgoingMessage fromTexts(const mail::MessageTexts &t)
{
    mail::OutgoingMessage m;
    m.subject = t.subject;
    m.body = t.body;
    m.attachmentName = t.attachmentName;
    return m;
}

}  // namespace

mail::MailCustomer customerOf(const Database &db, const QString &cid)
{
    mail::MailCustomer c;
    c.number = cid;
    const QString key = numberKey(QStringView(cid));
    if (!db.customers().contains(key)) return c;
    if (const auto row = CustomerRow::parse(db.customers().textOf(key))) {
        c.name = customer::displayNameFor(row->firstName, row->lastName);
        c.addresses = row->email;
    }
    return c;
}

QList<mail::MailCustomer> tickedCustomers(const Database &db, const InvoiceTree &tree)
{
    QList<mail::MailCustomer> out;
    for (int node : tree.nodes()) {
        if (tree.kind(node) != NodeKind::Customer || !tree.checked(node)) continue;
        const NodeValues &v = tree.values(node);
        mail::MailCustomer c = customerOf(db, v.customer);
        c.name = v.label;  // as the tree shows it
        out.append(c);
    }
    return out;
}

mail::Compose invoiceMessages(const Database &db, const InvoiceTree &tree, const invoicerun::RunValues &run,
                              const QString &period, const mail::MailTexts &texts, QDate today)
{
    // The nodes by customer number, found once for the whole run.
    QHash<QString, int> nodes;
    for (int node : tree.nodes())
        if (tree.kind(node) == NodeKind::Customer) nodes.insert(tree.values(node).customer, node);
    invoicerun::RunValues oneCopy = run;
    oneCopy.options.printDuplicates = false;  // the customer's copy only
    return [&db, &tree, oneCopy, period, texts, today, nodes](const mail::MailCustomer &c) {
        const int node = nodes.value(c.number);
        const pages::InvoiceInput in = invoicerun::invoiceInputFor(db, tree, node, oneCopy);
        mail::TemplateFields f;
        f.company = oneCopy.company[0];
        f.customer = c.name;
        f.period = period;
        f.amount = in.balance;
        f.dueDate = oneCopy.billDue;
        mail::OutgoingMessage m = fromTexts(mail::composeTexts(texts, mail::MailKind::Invoice, f, today));
        return withPdf(std::move(m), invoicerun::invoicePagesFor(db, tree, node, oneCopy), pages::defaultPaper());
    };
}

QList<mail::MailCustomer> accountCustomers(const Database &db, const std::vector<statements::Account> &accounts)
{
    QList<mail::MailCustomer> out;
    out.reserve(qsizetype(accounts.size()));
    for (const statements::Account &a : accounts) {
        mail::MailCustomer c = customerOf(db, a.cid);
        c.name = a.name;
        out.append(c);
    }
    return out;
}

mail::Compose statementMessages(const Database &db, const std::vector<statements::Account> &accounts,
                                const statements::RunValues &run, const mail::MailTexts &texts)
{
    QHash<QString, size_t> index;
    for (size_t i = 0; i < accounts.size(); ++i) index.insert(accounts[i].cid, i);
    return [&db, &accounts, run, texts, index](const mail::MailCustomer &c) {
        const auto at = index.constFind(c.number);
        if (at == index.cend()) {
            mail::OutgoingMessage m;
            m.error = QStringLiteral("the customer owes nothing");
            return m;
        }
        const statements::Account &a = accounts[*at];
        mail::TemplateFields f;
        f.company = run.company[0];
        f.customer = a.name;
        f.period = regional::formatDate(run.asOf, regional::dateFormatString());
        f.amount = a.total;
        f.dueDate = a.oldestDue.isValid() ? regional::formatDate(a.oldestDue, regional::dateFormatString()) : QString();
        const mail::MailKind kind = run.reminder ? mail::MailKind::Reminder : mail::MailKind::Statement;
        mail::OutgoingMessage m = fromTexts(mail::composeTexts(texts, kind, f, run.asOf));
        return withPdf(std::move(m), statements::statementPages(db, a, run), pages::defaultPaper());
    };
}

QStringList sentNumbers(const QList<mail::CustomerResult> &results)
{
    QStringList out;
    for (const mail::CustomerResult &r : results)
        if (r.outcome == mail::CustomerResult::Outcome::Sent) out.append(r.customer.number);
    return out;
}

}  // namespace qor::mailruns
