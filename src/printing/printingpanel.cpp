#include "printing/printingpanel.h"

#include "billing/billing.h"
#include "billing/billperiodpanel.h"
#include "billing/invoicetrees.h"
#include "billing/invoicetreeview.h"
#include "database/database.h"
#include "database/rowtypes.h"
#include "shell/appcontext.h"
#include "shell/settingsstore.h"
#include "uiservices/dialogservice.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QCoreApplication>
#include <QLabel>
#include <QPrinter>
#include <QPrinterInfo>
#include <QProgressBar>
#include <QSignalBlocker>
#include <QTreeView>

namespace qor {

PrintingPanel::PrintingPanel(AppContext &ctx, QWidget *parent)
    : Panel(3, ctx, parent), m_trees(InvoiceTrees::of(ctx.db()))
{
    m_chooser = require<QComboBox>("cmbBillPeriod(2)");
    m_tree = require<QTreeView>("tvwInvoiceRecords(1)");
    m_binding = new InvoiceTreeView(m_tree, &m_trees.tree(1));
    m_cmdPrintSelectedEnvelopes = require<QAbstractButton>("cmdPrintSelectedEnvelopes");
    m_lblPrinting = require<QLabel>("lblPrinting");
    m_staPrinting = require<QProgressBar>("staPrinting");
    connect(m_cmdPrintSelectedEnvelopes, &QAbstractButton::clicked, this,
            &PrintingPanel::cmdPrintSelectedEnvelopesClick);
    printEnvelope = [](const pages::Page &page) {
        const QString name = pages::defaultPrinterName();
        if (name.isEmpty()) {
            pages::PrintOutcome none;
            none.status = pages::PrintStatus::NoPrinter;
            none.reason = QStringLiteral("There is no printer on this system.");
            return none;
        }
        QPrinter printer(QPrinterInfo::printerInfo(name), QPrinter::HighResolution);
        printer.setPageSize(pages::defaultEnvelopePaper());
        return pages::printPages({page}, printer, QStringLiteral("Envelope"));
    };
    // The invoice button gets its handler with the invoice run.

    connect(m_chooser, &QComboBox::currentIndexChanged, this,
            [this](int index) { m_trees.showPeriod(index, m_chooser->itemText(index)); });
    connect(&m_trees, &InvoiceTrees::periodShown, this, [this](int listIndex) { periodShown(listIndex); });
    connect(m_binding, &InvoiceTreeView::mouseUp, this,
            [this](Qt::MouseButton button) { tvwInvoiceRecordsMouseUp(button); });

    const Database &db = ctx.db();
    connect(&db, &Database::aboutToReload, this, [this] { m_trees.tree(1).clear(); });
    connect(&db, &Database::reloaded, this, &PrintingPanel::refreshBillPeriodList);
    connect(&db, &Database::tableChanged, this, [this](Database::Table table) {
        if (table == Database::Table::Periods) refreshBillPeriodList();
    });
}

InvoiceTree &PrintingPanel::treeModel() const { return m_trees.tree(1); }

void PrintingPanel::refreshBillPeriodList()
{
    BillPeriodPanel::fillChooser(m_chooser, ctx.db().lvwPeriods);
    // Both choosers show the same period: the one on show, when the Bill
    // Periods chooser has chosen it already.
    periodShown(m_trees.chosenIndex());
}

QStringList PrintingPanel::tickedCustomerKeys() const
{
    // Node order: the order the nodes were added, as the print runs walk it.
    QStringList keys;
    const InvoiceTree &t = treeModel();
    t.forEachNode([&](int node) {
        if (t.checked(node) && billing::isCustomerKey(t.key(node)))
            keys << t.key(node);
    });
    return keys;
}

pages::EnvelopeInput PrintingPanel::envelopeFor(const QString &customerKey, int x, int y) const
{
    const Database &db = ctx.db();
    pages::EnvelopeInput in;
    for (int i = 0; i < 4; ++i)
        in.company[size_t(i)] = db.company[size_t(i)];
    in.x = x;
    in.y = y;
    if (db.lvwCustomers.contains(customerKey)) {
        if (const auto c = CustomerRow::parse(db.lvwCustomers.textOf(customerKey))) {
            in.firstName = c->firstName;
            in.lastName = c->lastName;
            in.address = {c->address1, c->address2, c->address3};
        }
    }
    return in;
}

void PrintingPanel::cmdPrintSelectedEnvelopesClick()
{
    if (m_envelopeRun)
        return;
    printEnvelopes(tickedCustomerKeys());
}

void PrintingPanel::printEnvelopes(const QStringList &customerKeys)
{
    if (m_envelopeRun)
        return;
    m_envelopeRun = true;
    // Stores both defaults when X-Margin is empty, also when nothing is ticked.
    settings::envelopeMarginX();
    m_lblPrinting->show();
    m_staPrinting->show();
    const qsizetype n = customerKeys.size() + 1;
    for (qsizetype i = 0; i < customerKeys.size(); ++i) {
        m_staPrinting->setValue(int(double(i + 1) / double(n) * 100));
        // Read at every envelope, as stored now.
        const int x = pages::wholeCentimetres(settings::envelopeMarginX());
        const int y = pages::wholeCentimetres(settings::envelopeMarginY());
        const pages::Page page = pages::composeEnvelope(envelopeFor(customerKeys[i], x, y));
        const pages::PrintOutcome out = printEnvelope(page);
        if (out.status != pages::PrintStatus::Printed) {
            DialogService::current().critical(this, QStringLiteral("Printer Error"),
                                              QStringLiteral("An error has occoured: \n") + out.reason +
                                                  QStringLiteral("\nThe printing job has been canceled, please "
                                                                 "try again."));
        }
        // The window repaints and answers between envelopes.
        QCoreApplication::processEvents();
    }
    m_staPrinting->setValue(100);
    m_lblPrinting->hide();
    m_staPrinting->hide();
    m_envelopeRun = false;
}

void PrintingPanel::periodShown(int listIndex)
{
    if (listIndex >= m_chooser->count() || m_chooser->currentIndex() == listIndex) return;
    const QSignalBlocker quiet(m_chooser);
    m_chooser->setCurrentIndex(listIndex);
}

void PrintingPanel::tvwInvoiceRecordsMouseUp(Qt::MouseButton button)
{
    // Nothing happens while the Bill Periods tree is empty, whichever tree.
    if (m_trees.tree(0).isEmpty() || button != Qt::RightButton) return;
    InvoiceTree &t = treeModel();
    const int node = m_binding->selectedNode();
    if (!billing::isCustomerKey(t.key(node))) return;
    const std::optional<QString> answer = DialogService::current().text(
        ctx.mainWindow(), billing::text::InvoiceNote.title, billing::text::InvoiceNote.text, QString());
    billing::addInvoiceNote(t, node, answer.value_or(QString()));
}

}  // namespace qor
