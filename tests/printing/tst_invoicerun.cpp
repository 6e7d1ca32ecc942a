// SPDX-License-Identifier: GPL-3.0-or-later
// The invoice and envelope runs through the real window: what it hands the
// composer and the printer, the company-info question, the run's label and
// bar, no printer and a refused job, the preview of one customer, with the
// stored print options they use.
#include "../customers/panelharness.h"
#include "../pages/pdfwords.h"

#include "billing/invoicetree.h"
#include "pages/envelope.h"
#include "printing/printingpanel.h"
#include "printing/printoptionspanel.h"

#include <QCheckBox>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <QProgressBar>

using namespace qor;
using namespace qor::testing;
using namespace Qt::StringLiterals;

class TstInvoiceRun : public QObject {
    Q_OBJECT
    std::unique_ptr<Sandbox> box;
    std::unique_ptr<FrmQOR> w;
    PrintingPanel *panel = nullptr;
    QAbstractButton *button(const QString &name) { return panel->findChild<QAbstractButton *>(name); }
    bool printingShown() { return panel->findChild<QLabel *>(u"lblPrinting"_s)->isVisible(); }
    // What the invoice runs sent to the printer, and what it answers.
    struct {
        QList<QList<pages::Page>> jobs;
        pages::PrintStatus status = pages::PrintStatus::Printed;
        QString printer;
        bool shownDuringRun = false;
        int barDuringRun = -1;
    } sent;

private slots:
    void initTestCase() { QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates)); }

    // Three customers, the stored layout 1, the window on the printing panel.
    void init()
    {
        box = std::make_unique<Sandbox>();
        writeDatabase(box->db, {{1, u"Ann"_s, u"Lee"_s}, {2, u"Bob"_s, u"Ray"_s}, {3, u"Cy"_s, QString()}},
                      {{5, u"Five"_s, u"$5.00"_s}, {6, u"Six"_s, u"$6.00"_s}},
                      {{1, {u"5"_s, u"6x2"_s}}, {2, {u"5"_s}}, {3, {u"6"_s}}});
        settings::PrintPreviewSelected.set(1);
        w = openWindow(3);
        panel = w->printingPanel();
        sent = {};
        panel->printInvoices = [this](const QList<pages::Page> &pages) {
            sent.jobs << pages;
            sent.shownDuringRun = printingShown();
            sent.barDuringRun = panel->findChild<QProgressBar *>(u"staPrinting"_s)->value();
            const bool failed = sent.status == pages::PrintStatus::Failed;
            return pages::PrintOutcome{sent.status, sent.printer, failed ? u"Out of paper."_s : QString()};
        };
    }
    void cleanup()
    {
        discard(w);
        box.reset();
    }

    // Which customers, in what order and with which duplicates, the run's
    // composer decides; here the window gives it the tree, the options panel's
    // choice and the file's values, shows the run, and hands one job over.
    void printRunWiring()
    {
        Answerer answers;
        const QByteArray before = box->fileBytes();
        InvoiceTree &t = panel->treeModel();
        // Duplicates on; Bob unticked: Cy and Ann, twice each.
        w->printOptionsPanel()->findChild<QCheckBox *>(u"chkPrintDuplicateInvoices"_s)->click();
        const int bob = t.find(u"2k"_s);
        t.setChecked(bob, false);
        click(button(u"cmdPrintSelectedInvoices"_s));
        QVERIFY(sent.jobs.size() == 1 && sent.jobs[0].size() == 4);
        QVERIFY(sent.shownDuringRun && sent.barDuringRun > 0 && sent.barDuringRun < 100 && !printingShown() &&
                !panel->findChild<QProgressBar *>(u"staPrinting"_s)->isVisible());
        // Ann was billed $17.00 and owes $10.00, due on the period's date.
        const pages::Page &ann = sent.jobs[0][2];
        QCOMPARE(ann.at(u"lblBillTo"_s, 1).text, u"Ann Lee"_s);
        QVERIFY(ann.at(u"lblCompanyName"_s).text == u"Test Co" && ann.at(u"lblTotalAm"_s).text == u"$10.00" &&
                ann.at(u"lblBillDue"_s).text.endsWith(u"02/15/2024"));
        // Nothing changed: no data, no changed state, the ticks as they were.
        QVERIFY(!w->databaseChanged() && box->fileBytes() == before && !t.checked(bob) &&
                answers.dialogs.seen.isEmpty());

        // Nothing ticked: no job, no message.
        for (int node : t.nodes())
            t.setChecked(node, false);
        click(button(u"cmdPrintSelectedInvoices"_s));
        QVERIFY(sent.jobs.size() == 1 && answers.dialogs.seen.isEmpty());
        QVERIFY(panel->printResult()->text().startsWith(u"Nothing to print"));
    }

    // The company-info question, then no printer and a refused job.
    void questionsAndFailures()
    {
        QAbstractButton *print = button(u"cmdPrintSelectedInvoices"_s);
        w->db().setCompanyField(0, QString());
        auto asking = std::make_unique<Answerer>();

        // Closed with its close box counts as Yes: to Company Info, nothing printed.
        click(print);
        QVERIFY(sent.jobs.isEmpty() && w->currentPanel() == 6 && asking->dialogs.seen.size() == 1);
        const auto &form = asking->dialogs.seen[0].form;
        QVERIFY(form.key == u"DontShowNeedToFillCompanyInfo" && form.presetAnswer == u"Yes" && form.buttons != u"OK");

        // No: the invoices print with the empty company fields.
        w->cmdTabClick(3);
        asking->dialogs.nextFormAnswers.push_back(u"No"_s);
        click(print);
        QVERIFY(sent.jobs.size() == 1 && w->currentPanel() == 3);

        // Marked not to be shown again: no question.
        settings::DontShowNeedToFillCompanyInfo.store(u"true"_s);
        click(print);
        QVERIFY(sent.jobs.size() == 2 && asking->dialogs.seen.size() == 2);

        // An address without a name: not asked either.
        settings::DontShowNeedToFillCompanyInfo.store(QString());
        w->db().setCompanyField(1, u"1 Main St"_s);
        click(print);
        QVERIFY(sent.jobs.size() == 3 && asking->dialogs.seen.size() == 2);
        asking.reset();

        // No printer: said once, and the same pages saved as the named PDF,
        // offered beside the books under the period's name; ".pdf" is added.
        Answerer answers;
        sent.status = pages::PrintStatus::NoPrinter;
        const QString pdf = box->dir.filePath(u"saved.pdf"_s);
        answers.dialogs.nextAnswers.push_back(QMessageBox::Yes);
        answers.dialogs.nextFileNames.push_back(box->dir.filePath(u"saved"_s));
        click(print);
        QVERIFY(answers.seen().size() == 1 && answers.last().text.contains(u"no printer"_s));
        QCOMPARE(answers.dialogs.seen.last().folder, box->dir.filePath(u"Jan invoices.pdf"_s));
        QCOMPARE(readPdfWords(pdf).last().page, 2);
        QVERIFY(sent.jobs.last().size() == 3 && panel->printResult()->text() == u"3 pages saved as "_s + pdf);
        QCOMPARE(PrintingPanel::suggestedPdfName(u" 11/2026 "_s), u"11-2026 invoices.pdf"_s);

        // Declined: no file asked for.
        answers.dialogs.nextAnswers.push_back(QMessageBox::No);
        const qsizetype asked = answers.dialogs.seen.size();
        click(print);
        QCOMPARE(answers.dialogs.seen.size(), asked + 1);

        // A refused job: one message for the whole run.
        sent.status = pages::PrintStatus::Failed;
        click(print);
        QVERIFY(answers.dialogs.seen.size() == asked + 2 && answers.last().text.contains(u"Out of paper."_s));
        QVERIFY(panel->printResult()->text().startsWith(u"Nothing printed"_s));
        // A printer: the line says how many pages went where.
        sent.status = pages::PrintStatus::Printed;
        sent.printer = u"Office"_s;
        click(print);
        QCOMPARE(panel->printResult()->text(), u"3 pages sent to Office."_s);
    }

    // The envelope run: one job per customer, the stored margins, a failed
    // job reported and dropped while the run goes on, events let through, and
    // no second run meanwhile.
    void envelopeRun()
    {
        Answerer answers;

        // Nothing to print: no message, the defaults stored.
        panel->printEnvelopes({});
        QVERIFY(answers.seen().isEmpty() && settings::XMargin.stored() == u"2" && settings::YMargin.stored() == u"12");

        // The ticked customers in node order (Bob unticked), the second job refused.
        settings::XMargin.store(u"3.5"_s);
        settings::YMargin.store(u"2.5"_s);
        bool eventRan = false;
        QMetaObject::invokeMethod(
            this, [&] { eventRan = true; }, Qt::QueuedConnection);
        int calls = 0;
        QList<pages::Page> jobs;
        bool shownDuringRun = false, eventsDuringRun = false;
        panel->printEnvelope = [&](const pages::Page &p) {
            ++calls;
            shownDuringRun = printingShown();
            // A press while the run is under way starts nothing.
            panel->cmdPrintSelectedEnvelopesClick();
            panel->printEnvelopes({u"1k"_s});
            if (calls != 2) {
                jobs << p;
                return pages::PrintOutcome{pages::PrintStatus::Printed, {}, {}};
            }
            eventsDuringRun = eventRan;
            return pages::PrintOutcome{pages::PrintStatus::Failed, u"lp0"_s, u"The printer is on fire."_s};
        };
        panel->treeModel().setChecked(panel->treeModel().find(u"2k"_s), false);
        click(button(u"cmdPrintSelectedEnvelopes"_s));
        QVERIFY(calls == 2 && jobs.size() == 1 && shownDuringRun && eventsDuringRun);
        QVERIFY(!panel->isPrintingEnvelopes() && !printingShown() && answers.seen().size() == 1);
        QVERIFY(answers.last().text.contains(u"The printer is on fire."_s));

        // Company from the file, the customer's name (no last name: first
        // name and a blank), the stored margins.
        const pages::Page &first = jobs[0];
        QVERIFY(first.elements()[0].text == u"Test Co" && first.elements()[4].text == u"Cy ");
        QCOMPARE(QPoint(first.elements()[0].left, first.elements()[0].top),
                 QPoint(std::lround(4 * pages::TwipsPerCm), std::lround(2 * pages::TwipsPerCm)));
    }

    void previewOfOneCustomer()
    {
        QWidget *shown = nullptr;
        panel->showPreviewWindow = [&](QWidget *dlg) { shown = dlg; };
        InvoiceTree &t = panel->treeModel();
        emit panel->tree()->doubleClicked(t.indexOf(t.find(u"3k"_s)));
        auto *preview = qobject_cast<QPrintPreviewDialog *>(shown);
        QVERIFY(preview);
        // It draws the customer's page: rendering asks for it once at least.
        int painted = 0;
        connect(preview, &QPrintPreviewDialog::paintRequested, this, [&] { ++painted; });
        preview->show();
        QTRY_VERIFY(painted > 0);
        delete preview;

        // An item line is no customer: no preview.
        shown = nullptr;
        emit panel->tree()->doubleClicked(t.indexOf(t.childrenOf(t.find(u"3k"_s)).front()));
        QVERIFY(!shown);
    }
};

QTEST_MAIN(TstInvoiceRun)
#include "tst_invoicerun.moc"
