// SPDX-License-Identifier: GPL-3.0-or-later
#include "printing/printingpanel.h"

#include "billing/billing.h"
#include "billing/invoicetrees.h"
#include "billperiods/billperiodpanel.h"
#include "billperiods/invoicetreeview.h"
#include "database/database.h"
#include "database/rowtypes.h"
#include "mailgui/emailrun.h"
#include "pages/painter.h"
#include "pages/pdfoutput.h"
#include "printing/frmstatements.h"
#include "printing/invoicerun.h"
#include "settings/settingsstore.h"
#include "shell/appcontext.h"
#include "uiservices/dialogservice.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QCoreApplication>
#include <QDir>
#include <QLabel>
#include <QPainter>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <QPrinterInfo>
#include <QProgressBar>
#include <QSignalBlocker>
#include <QTreeView>

namespace qor {

PrintingPanel::PrintingPanel(AppContext &ctx, InvoiceTrees &trees, QWidget *parent)
    : Panel(3, ctx, parent), m_trees(trees)
{
    m_chooser = require<QComboBox>("cmbBillPeriod(2)");
    m_tree = require<QTreeView>("tvwInvoiceRecords(1)");
    m_binding = new InvoiceTreeView(m_tree, &m_trees.tree(1));
    m_cmdPrintSelectedEnvelopes = require<QAbstractButton>("cmdPrintSelectedEnvelopes");
    m_lblPrinting = require<QLabel>("lblPrinting");
    m_lblPrintResult = require<QLabel>("lblPrintResult");
    // Where the pages went: a path needs its whole width.
    m_lblPrintResult->setTextInteractionFlags(Qt::TextSelectableByMouse);
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
    connect(require<QAbstractButton>("cmdEmailSelected"), &QAbstractButton::clicked, this,
            &PrintingPanel::cmdEmailSelectedClick);
    emailRun = [this](const QList<mail::MailCustomer> &customers, const mail::Compose &compose) {
        return runEmail(this->ctx.mainWindow(), customers, compose);
    };
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
    tellOutcome(QString());
    m_lblPrinting->show();
    m_staPrinting->show();
    qsizetype printed = 0;
    QString printer;
    const qsizetype n = customerKeys.size() + 1;
    for (qsizetype i = 0; i < customerKeys.size(); ++i) {
        m_staPrinting->setValue(int(double(i + 1) / double(n) * 100));
        // Read at every envelope, as stored now.
        const int x = pages::wholeCentimetres(settings::envelopeMarginX());
        const int y = pages::wholeCentimetres(settings::envelopeMarginY());
        const pages::Page page = pages::composeEnvelope(envelopeFor(customerKeys[i], x, y));
        const pages::PrintOutcome out = printEnvelope(page);
        if (out.status == pages::PrintStatus::Printed) {
            ++printed;
            printer = out.printer;
        } else {
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
    const QString sent = countOf(printed, "envelope");
    tellOutcome(printer.isEmpty() ? QStringLiteral("%1 printed.").arg(sent)
                                  : QStringLiteral("%1 sent to %2.").arg(sent, printer));
}

bool PrintingPanel::needCompanyInfoFirst()
{
    if (!invoicerun::companyInfoMissing(ctx.db()))
        return false;
    const QString key = settings::DontShowNeedToFillCompanyInfo.name();
    if (settings::DontShowNeedToFillCompanyInfo.isOn())
        return false;
    const QString text = QStringLiteral(
        "You have not entered your company's name or address.\r\n\r\n"
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

void PrintingPanel::cmdPrintSelectedInvoicesClick()
{
    if (needCompanyInfoFirst()) {
        if (showCompanyInfoPanel)
            showCompanyInfoPanel();
        return;
    }
    tellOutcome(QString());
    m_lblPrinting->show();
    m_staPrinting->setValue(0);
    m_staPrinting->show();
    // The pages are composed first, node by node, and sent as one job, so a
    // printer that refuses the run costs the run once and says so once.
    const QList<pages::Page> pages =
        invoicerun::composeInvoiceRun(ctx.db(), treeModel(), runValues(), [this](qsizetype done, qsizetype of) {
            m_staPrinting->setValue(int(double(done) / double(of + 1) * 100));
            m_staPrinting->repaint();
        });
    const pages::PrintOutcome out = pages.isEmpty() ? pages::PrintOutcome{pages::PrintStatus::Printed, {}, {}}
                                                    : printInvoices(pages);
    m_lblPrinting->hide();
    m_staPrinting->hide();
    DialogService &dialogs = DialogService::current();
    if (out.status == pages::PrintStatus::Printed) {
        tellOutcome(pages.isEmpty() ? QStringLiteral("Nothing to print: no ticked customer has a ticked line.")
                                    : pagesSentText(pages.size(), out.printer));
    } else if (out.status == pages::PrintStatus::NoPrinter) {
        tellOutcome(QStringLiteral("Nothing printed: there is no printer on this system."));
        const QMessageBox::StandardButton answer = dialogs.message(
            ctx.mainWindow(),
            {QMessageBox::Question, QStringLiteral("No Printer"),
             QStringLiteral("There is no printer on this system.\r\n\r\nWould you like to save the invoices as "
                            "a PDF file instead?"),
             QMessageBox::Yes | QMessageBox::No, QMessageBox::Yes});
        if (answer != QMessageBox::Yes)
            return;
        QString file = dialogs.saveFileName(ctx.mainWindow(), {QStringLiteral("Save Invoices as PDF"),
                                                               suggestedPdfName(m_trees.chosenName()),
                                                               QStringLiteral("PDF (*.pdf)")});
        if (file.isEmpty())
            return;
        if (!file.endsWith(QLatin1String(".pdf"), Qt::CaseInsensitive))
            file += QStringLiteral(".pdf");
        QString why;
        if (!pages::writePdf(pages, file, pages::defaultPaper(), &why)) {
            tellOutcome(QStringLiteral("The PDF could not be saved."));
            dialogs.critical(ctx.mainWindow(), QStringLiteral("Printer Error"), why);
            return;
        }
        tellOutcome(QStringLiteral("%1 saved as %2").arg(countOf(pages.size(), "page"), QDir::toNativeSeparators(file)));
    } else if (out.status == pages::PrintStatus::Failed) {
        tellOutcome(QStringLiteral("Nothing printed: the printer refused the job."));
        dialogs.critical(ctx.mainWindow(), QStringLiteral("Printer Error"),
                         QStringLiteral("An error has occoured: \n") + out.reason +
                             QStringLiteral("\nThe printing job has been canceled, please try again."));
    }
}

QString PrintingPanel::suggestedPdfName(const QString &period)
{
    // A period's name may hold characters no file name can.
    QString name = period.trimmed();
    name.replace(u'/', u'-').replace(u'\\', u'-');
    return (name.isEmpty() ? QString() : name + u' ') + QStringLiteral("invoices.pdf");
}

QString PrintingPanel::countOf(qsizetype n, const char *thing)
{
    return QStringLiteral("%1 %2%3").arg(n).arg(QLatin1String(thing), n == 1 ? QString() : QStringLiteral("s"));
}

QString PrintingPanel::pagesSentText(qsizetype pages, const QString &printer)
{
    return printer.isEmpty() ? QStringLiteral("%1 sent to the printer.").arg(countOf(pages, "page"))
                             : QStringLiteral("%1 sent to %2.").arg(countOf(pages, "page"), printer);
}

void PrintingPanel::tellOutcome(const QString &text)
{
    m_lblPrintResult->setText(text);
    m_lblPrintResult->setVisible(!text.isEmpty());
}

void PrintingPanel::cmdEmailSelectedClick()
{
    if (needCompanyInfoFirst()) {
        if (showCompanyInfoPanel) showCompanyInfoPanel();
        return;
    }
    InvoiceTree &t = treeModel();
    const QList<mail::MailCustomer> customers = mailruns::tickedCustomers(ctx.db(), t);
    if (customers.isEmpty()) {
        DialogService::current().information(ctx.mainWindow(), QStringLiteral("E-mail Selected"),
                                             QStringLiteral("Tick the customers whose invoices are to be e-mailed."));
        return;
    }
    const auto results = emailRun(customers, mailruns::invoiceMessages(ctx.db(), t, runValues(), m_chooser->currentText(),
                                                                       mail::loadTexts()));
    for (const QString &cid : mailruns::sentNumbers(results))
        if (const int node = t.find(numberKey(QStringView(cid)))) t.setChecked(node, false);
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
