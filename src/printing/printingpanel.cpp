#include "printing/printingpanel.h"

#include "billing/billing.h"
#include "billing/billperiodpanel.h"
#include "billing/invoicetrees.h"
#include "billing/invoicetreeview.h"
#include "database/database.h"
#include "database/rowtypes.h"
#include "pages/painter.h"
#include "pages/pdfoutput.h"
#include "printing/frmstatements.h"
#include "printing/invoicerun.h"
#include "shell/appcontext.h"
#include "shell/settingsstore.h"
#include "uiservices/dialogservice.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QCoreApplication>
#include <QLabel>
#include <QPrinter>
#include <QPainter>
#include <QPrintPreviewDialog>
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
    m_cmdPrintSelectedInvoices = require<QAbstractButton>("cmdPrintSelectedInvoices");
    connect(m_cmdPrintSelectedInvoices, &QAbstractButton::clicked, this,
            &PrintingPanel::cmdPrintSelectedInvoicesClick);
    connect(require<QAbstractButton>("cmdStatements"), &QAbstractButton::clicked, this,
            &PrintingPanel::showStatementsWindow);
    invoiceOptions = [] { return invoicerun::storedInvoiceOptions(); };
    printInvoices = [](const QList<pages::Page> &pages) {
        return pages::printToDefaultPrinter(pages, QStringLiteral("Invoices"));
    };
    showPreviewWindow = [](QWidget *w) {
        w->setAttribute(Qt::WA_DeleteOnClose);
        static_cast<QDialog *>(w)->exec();
    };
    connect(m_tree, &QTreeView::doubleClicked, this,
            [this](const QModelIndex &index) { showInvoicePreview(treeModel().nodeOf(index)); });

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
    BillPeriodPanel::fillChooser(m_chooser, ctx.db().periods());
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
        if (t.checked(node) && t.kind(node) == NodeKind::Customer)
            keys << numberKey(t.values(node).customer);
    });
    return keys;
}

pages::EnvelopeInput PrintingPanel::envelopeFor(const QString &customerKey, int x, int y) const
{
    const Database &db = ctx.db();
    pages::EnvelopeInput in;
    for (int i = 0; i < 4; ++i)
        in.company[size_t(i)] = db.company()[size_t(i)];
    in.x = x;
    in.y = y;
    if (db.customers().contains(customerKey)) {
        if (const auto c = CustomerRow::parse(db.customers().textOf(customerKey))) {
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

bool PrintingPanel::needCompanyInfoFirst()
{
    if (!invoicerun::companyInfoMissing(ctx.db()))
        return false;
    const QString key = QStringLiteral("DontShowNeedToFillCompanyInfo");
    if (settings::read(QStringLiteral("Messages"), key).toLower() == u"true")
        return false;
    const QString text = QStringLiteral("You have not entered your company's name or address.\r\n\r\n"
                                        "Would you like to enter this information\r\nbefore printing your invoices?");
    const QString answer =
        DialogService::current().messageForm(ctx.mainWindow(), {text, key, QStringLiteral("YesNo"), QStringLiteral("Yes")});
    return answer == u"Yes";
}

invoicerun::RunValues PrintingPanel::runValues() const
{
    invoicerun::RunValues run;
    run.company = ctx.db().company();
    run.billDue = invoicerun::billDueOf(ctx.db(), m_trees.chosenName());
    run.options = invoiceOptions();
    return run;
}

QList<pages::Page> PrintingPanel::invoicePages() const
{
    return invoicerun::composeInvoiceRun(ctx.db(), treeModel(), runValues());
}

void PrintingPanel::cmdPrintSelectedInvoicesClick()
{
    if (needCompanyInfoFirst()) {
        if (showCompanyInfoPanel)
            showCompanyInfoPanel();
        return;
    }
    m_lblPrinting->show();
    m_staPrinting->setValue(0);
    m_staPrinting->show();
    // The pages are composed first, node by node, and sent as one job, so a
    // printer that refuses the run costs the run once and says so once.
    QList<pages::Page> pages;
    {
        const invoicerun::RunValues run = runValues();
        const InvoiceTree &t = treeModel();
        const std::vector<int> nodes = t.nodes();
        const double n = double(nodes.size()) + 1;
        for (size_t i = 0; i < nodes.size(); ++i) {
            m_staPrinting->setValue(int(double(i + 1) / n * 100));
            m_staPrinting->repaint();
            const int node = nodes[i];
            if (!t.checked(node) || t.kind(node) != NodeKind::Customer)
                continue;
            const QList<pages::Page> invoice = invoicerun::invoicePagesFor(ctx.db(), t, node, run);
            pages << invoice;
            if (run.options.printDuplicates)
                pages << invoice;
        }
    }
    const pages::PrintOutcome out = pages.isEmpty() ? pages::PrintOutcome{pages::PrintStatus::Printed, {}, {}}
                                                    : printInvoices(pages);
    m_lblPrinting->hide();
    m_staPrinting->hide();
    DialogService &dialogs = DialogService::current();
    if (out.status == pages::PrintStatus::NoPrinter) {
        const QMessageBox::StandardButton answer = dialogs.message(
            ctx.mainWindow(),
            {QMessageBox::Question, QStringLiteral("No Printer"),
             QStringLiteral("There is no printer on this system.\r\n\r\nWould you like to save the invoices as "
                            "a PDF file instead?"),
             QMessageBox::Yes | QMessageBox::No, QMessageBox::Yes});
        if (answer != QMessageBox::Yes)
            return;
        const QString file = dialogs.saveFileName(
            ctx.mainWindow(), {QStringLiteral("Save Invoices as PDF"), QString(), QStringLiteral("PDF (*.pdf)")});
        if (file.isEmpty())
            return;
        QString why;
        if (!pages::writePdf(pages, file, pages::defaultPaper(), &why))
            dialogs.critical(ctx.mainWindow(), QStringLiteral("Printer Error"), why);
    } else if (out.status == pages::PrintStatus::Failed) {
        dialogs.critical(ctx.mainWindow(), QStringLiteral("Printer Error"),
                         QStringLiteral("An error has occoured: \n") + out.reason +
                             QStringLiteral("\nThe printing job has been canceled, please try again."));
    }
}

void PrintingPanel::showInvoicePreview(int customerNode)
{
    const InvoiceTree &t = treeModel();
    if (t.kind(customerNode) != NodeKind::Customer)
        return;
    const QList<pages::Page> invoice = invoicerun::invoicePagesFor(ctx.db(), t, customerNode, runValues());
    if (invoice.isEmpty())
        return;
    auto *printer = new QPrinter(QPrinter::HighResolution);
    printer->setPageSize(pages::defaultPaper());
    printer->setFullPage(true);
    printer->setDocName(t.values(customerNode).label);
    auto *dialog = new QPrintPreviewDialog(printer, ctx.mainWindow());
    dialog->setObjectName(QStringLiteral("dlgInvoicePreview"));
    dialog->setWindowTitle(QStringLiteral("Invoice Preview"));
    connect(dialog, &QObject::destroyed, dialog, [printer] { delete printer; });
    connect(dialog, &QPrintPreviewDialog::paintRequested, dialog, [invoice](QPrinter *p) {
        p->setFullPage(true);
        QPainter painter(p);
        for (qsizetype i = 0; i < invoice.size(); ++i) {
            if (i > 0)
                p->newPage();
            painter.save();
            pages::scaleToTwips(painter);
            pages::drawPage(painter, invoice[i]);
            painter.restore();
        }
    });
    showPreviewWindow(dialog);
}

statements::FrmStatements *PrintingPanel::showStatementsWindow()
{
    if (!m_statements) {
        m_statements = new statements::FrmStatements(ctx.db(), ctx.mainWindow());
        m_statements->setAttribute(Qt::WA_DeleteOnClose);
    }
    m_statements->show();
    m_statements->raise();
    m_statements->activateWindow();
    return m_statements;
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
    if (t.kind(node) != NodeKind::Customer) return;
    const std::optional<QString> answer = DialogService::current().text(
        ctx.mainWindow(), billing::text::InvoiceNote.title, billing::text::InvoiceNote.text, QString());
    billing::addInvoiceNote(t, node, answer.value_or(QString()));
}

}  // namespace qor
