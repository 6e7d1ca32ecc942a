#include "printing/printingpanel.h"

#include "billing/billperiodpanel.h"
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
#include <QTreeWidget>

#include <cmath>

namespace qor {

PrintingPanel::PrintingPanel(AppContext &ctx, QWidget *parent) : Panel(3, ctx, parent)
{
    m_chooser = require<QComboBox>("cmbBillPeriod(2)");
    m_tree = require<QTreeWidget>("tvwInvoiceRecords(1)");
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
    // The invoice button and the tree's note menu get their handlers with the
    // invoice run.

    const Database &db = ctx.db();
    connect(&db, &Database::aboutToReload, this, [this] { m_tree->clear(); });
    connect(&db, &Database::reloaded, this, &PrintingPanel::refreshBillPeriodList);
    connect(&db, &Database::tableChanged, this, [this](Database::Table table) {
        if (table == Database::Table::Periods) refreshBillPeriodList();
    });
}

QComboBox *PrintingPanel::chooser() const { return m_chooser; }
QTreeWidget *PrintingPanel::tree() const { return m_tree; }

QStringList PrintingPanel::tickedCustomerKeys() const
{
    QStringList keys;
    // Node order: depth first, as the tree shows them.
    std::function<void(QTreeWidgetItem *)> walk = [&](QTreeWidgetItem *item) {
        const QString key = item->data(0, Qt::UserRole).toString();
        if (item->checkState(0) == Qt::Checked && key.endsWith(u'k'))
            keys << key;
        for (int i = 0; i < item->childCount(); ++i)
            walk(item->child(i));
    };
    for (int i = 0; i < m_tree->topLevelItemCount(); ++i)
        walk(m_tree->topLevelItem(i));
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

void PrintingPanel::refreshBillPeriodList()
{
    BillPeriodPanel::fillChooser(m_chooser, ctx.db().lvwPeriods);
}

}  // namespace qor
