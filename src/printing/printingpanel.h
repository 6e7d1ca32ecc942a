// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// fraMain(3), Printing: the second view of the period chooser and of the
// invoice records tree, the two print buttons and the progress of a run.
#include "pages/envelope.h"
#include "pages/invoice.h"
#include "pages/printout.h"
#include "printing/invoicerun.h"
#include "printing/mailruns.h"
#include "shell/panel.h"

#include <QPointer>
#include <QStringList>

#include <functional>

class QAbstractButton;
class QComboBox;
class QLabel;
class QProgressBar;
class QTreeView;

namespace qor {

namespace statements {
class FrmStatements;
}
class InvoiceTree;
class InvoiceTrees;
class InvoiceTreeView;

class PrintingPanel : public Panel {
    Q_OBJECT
public:
    PrintingPanel(AppContext &ctx, InvoiceTrees &trees, QWidget *parent = nullptr);

    // This panel's part of RefreshBillPeriodList: cmbBillPeriod(2) lists the
    // periods of lvwPeriods like the chooser on Bill Periods; it selects the
    // period on show, if any.
    void refreshBillPeriodList();

    QComboBox *chooser() const { return m_chooser; }  // cmbBillPeriod(2)
    QTreeView *tree() const { return m_tree; }        // tvwInvoiceRecords(1)
    // What the tree shows, in the order the print run walks it.
    InvoiceTree &treeModel() const;
    InvoiceTreeView *treeBinding() const { return m_binding; }

    // A right click on a customer: the invoice note for this print run.
    void tvwInvoiceRecordsMouseUp(Qt::MouseButton button);

    // cmdPrintSelectedEnvelopes: one envelope for each ticked customer of
    // tree 1, each its own print job.
    void cmdPrintSelectedEnvelopesClick();
    // The run over customer keys ("12k") in tree order: the stored margins
    // (defaults stored when X-Margin is empty), one job per envelope, "Printer
    // Error" and the job dropped when one fails, and the run goes on. Events
    // are let through between envelopes; a press meanwhile starts nothing.
    void printEnvelopes(const QStringList &customerKeys);
    bool isPrintingEnvelopes() const { return m_envelopeRun; }
    // The keys of tree 1's ticked customer nodes, in node order.
    QStringList tickedCustomerKeys() const;
    // The envelope of one customer as the run makes it.
    pages::EnvelopeInput envelopeFor(const QString &customerKey, int x, int y) const;

    // cmdPrintSelectedInvoices: NeedCompanyInfoFirst, then one page per
    // ticked customer in node order (the duplicate right after its invoice),
    // all pages as one print job. Changes no data.
    void cmdPrintSelectedInvoicesClick();
    // True when the run must stop so that the user can enter the company's
    // name or address first.
    bool needCompanyInfoFirst();
    // A print preview of one customer's invoice as it would print now, from
    // which it can be printed or saved as PDF. Nothing for a node that isn't
    // a customer or has no ticked line.
    void showInvoicePreview(int customerNode);

    // The options the run reads: the Print Options panel's controls and the
    // stored settings. The window sets it; alone, the stored options count.
    std::function<pages::InvoiceOptions()> invoiceOptions;
    // What opens the Company Info panel (ShowCompanyInfoPanel).
    std::function<void()> showCompanyInfoPanel;
    // Sends the pages of one run as one job. The program prints on the
    // default printer; a test writes them elsewhere.
    std::function<pages::PrintOutcome(const QList<pages::Page> &)> printInvoices;
    // When the preview is shown modally; a test sets it to look at the window
    // without blocking.
    std::function<void(QWidget *)> showPreviewWindow;

    // cmdEmailSelected: the invoice of each ticked customer as a PDF
    // attachment to their address; each customer whose message was sent is
    // unticked, so a print run afterwards prints the rest.
    void cmdEmailSelectedClick();
    mailruns::EmailRun emailRun;

    // cmdStatements: the Statements window, beside the main window; a second
    // press brings the open one forward.
    statements::FrmStatements *showStatementsWindow();

    // Prints one envelope as a job of its own. The program prints on the
    // default printer on the locale's envelope paper; a test puts its own here.
    std::function<pages::PrintOutcome(const pages::Page &)> printEnvelope;

    // The name the PDF of a period's invoices is offered under.
    static QString suggestedPdfName(const QString &period);
    // The line under the title that tells where the last run went.
    QLabel *printResult() const { return m_lblPrintResult; }

private:
    static QString countOf(qsizetype n, const char *thing);
    static QString pagesSentText(qsizetype pages, const QString &printer);
    void tellOutcome(const QString &text);
    void periodShown(int listIndex);
    invoicerun::RunValues runValues() const;
    InvoiceTrees &m_trees;
    InvoiceTreeView *m_binding = nullptr;
    QComboBox *m_chooser = nullptr;
    QTreeView *m_tree = nullptr;
    QAbstractButton *m_cmdPrintSelectedEnvelopes = nullptr;
    QAbstractButton *m_cmdPrintSelectedInvoices = nullptr;
    QPointer<statements::FrmStatements> m_statements;
    QLabel *m_lblPrinting = nullptr;
    QLabel *m_lblPrintResult = nullptr;
    QProgressBar *m_staPrinting = nullptr;
    bool m_envelopeRun = false;
};

}  // namespace qor
