// SPDX-License-Identifier: GPL-3.0-or-later
#include "printing/invoicerun.h"

#include "billing/billing.h"
#include "billing/invoicetree.h"
#include "database/database.h"
#include "database/regional.h"
#include "database/rowtypes.h"
#include "settings/settingsstore.h"

#include <cmath>

namespace qor::invoicerun {

namespace {

int storedIndex(const settings::Key &key, int defaultValue)
{
    const QString text = key.stored();
    if (text.trimmed().isEmpty())
        return defaultValue;
    return int(std::nearbyint(regional::val(text)));
}

}  // namespace

pages::InvoiceOptions storedInvoiceOptions()
{
    pages::InvoiceOptions o;
    // A number other than 0, 1 or 2 stays as it is: the run then prints nothing.
    const double selected = regional::val(settings::PrintPreviewSelected.stored());
    o.templateNumber = selected == 0 ? 0 : selected == 1 ? 1
                                       : selected == 2   ? 2
                                                         : -1;
    const int title = storedIndex(settings::InvoiceTitleOption, 0);
    o.title = title == 1 ? pages::TitleOption::Estimate : title == 2 ? pages::TitleOption::Other
                                                                     : pages::TitleOption::Invoice;
    o.titleText = settings::InvoiceTitleText.stored();
    const int size = storedIndex(settings::InvoiceTitleSize, 2);
    o.titleSize = size == 0 ? pages::TitleSize::Small : size == 1 ? pages::TitleSize::Medium
                                                                  : pages::TitleSize::Large;
    o.addInvoiceDate = settings::AddInvoiceDateToInvoice.isOn();
    o.printDuplicates = settings::PrintDuplicateInvoices.isOn();
    o.keepTwelveLines = settings::KeepTwelveLines.isOn();
    // chkMoveAccordingly counts only while it is enabled, that is without
    // twelve lines kept.
    o.moveBottomText = settings::MoveBottomTextAccordingly.isOn();
    return o;
}

QString billDueOf(const Database &db, const QString &period)
{
    QString due;
    db.periods().forEach([&](QStringView, QStringView text) {
        const auto p = PeriodView::parse(text);
        if (p && p->name == period) {
            due = billing::screenDate(p->billDue.toString());
            return false;
        }
        return true;
    });
    return due;
}

pages::InvoiceInput invoiceInputFor(const Database &db, const InvoiceTree &tree, int customerNode,
                                    const RunValues &run)
{
    pages::InvoiceInput in;
    in.company = run.company;
    in.billDue = run.billDue;
    in.options = run.options;
    const NodeValues &customer = tree.values(customerNode);
    in.balance = customer.balance.value_or(Money());
    const QString key = numberKey(customer.customer);
    if (db.customers().contains(key)) {
        if (const auto c = CustomerRow::parse(db.customers().textOf(key))) {
            in.customer[0] = c->displayName;
            for (int i = 0; i < CustomerRow::EntryCount; ++i)
                in.customer[size_t(i + 1)] = c->entry(i);
        }
    }
    for (int child : tree.childrenOf(customerNode)) {
        const NodeValues &v = tree.values(child);
        if (v.kind == NodeKind::FinalItem)
            in.lines << pages::InvoiceLine::item(ItemRow::nameOf(v.label).toString(), v.quantity, v.amount);
        else if (v.kind == NodeKind::InvoiceNote && tree.checked(child))
            in.lines << pages::InvoiceLine::invoiceNote(v.label);
    }
    return in;
}

QList<pages::Page> invoicePagesFor(const Database &db, const InvoiceTree &tree, int customerNode,
                                   const RunValues &run)
{
    return pages::composeInvoice(invoiceInputFor(db, tree, customerNode, run));
}

QList<pages::Page> composeInvoiceRun(const Database &db, const InvoiceTree &tree, const RunValues &run,
                                     const RunProgress &progress)
{
    QList<pages::Page> out;
    const std::vector<int> nodes = tree.nodes();
    for (size_t i = 0; i < nodes.size(); ++i) {
        if (progress)
            progress(qsizetype(i + 1), qsizetype(nodes.size()));
        const int node = nodes[i];
        if (!tree.checked(node) || tree.kind(node) != NodeKind::Customer)
            continue;
        const QList<pages::Page> invoice = invoicePagesFor(db, tree, node, run);
        out << invoice;
        if (run.options.printDuplicates)
            out << invoice;
    }
    return out;
}

bool companyInfoMissing(const Database &db) { return db.company()[0].isEmpty() && db.company()[1].isEmpty(); }

}  // namespace qor::invoicerun
