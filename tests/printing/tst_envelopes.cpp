// The envelope run on the Printing panel: one job per customer, the stored
// margins, a failed job reported and dropped while the run goes on, events
// let through, and no second run meanwhile.
#include "../customers/panelharness.h"

#include "pages/envelope.h"
#include "printing/printingpanel.h"

#include <QComboBox>
#include <QLabel>
#include <QProgressBar>

using namespace qor;
using namespace qor::testing;
using namespace Qt::StringLiterals;

class TstEnvelopes : public QObject {
    Q_OBJECT

private slots:
    void run()
    {
        Sandbox box;
        writeDatabase(box.db, {{1, u"Ann"_s, u"Lee"_s}, {2, u"Bob"_s, u"Ray"_s}, {3, u"Cy"_s, QString()}});
        auto w = openWindow(3);
        PrintingPanel *panel = w->printingPanel();
        QVERIFY(panel);
        Answerer answers;

        // Nothing ticked: no job and no message, the defaults stored.
        QList<pages::Page> jobs;
        panel->printEnvelope = [&](const pages::Page &p) {
            jobs << p;
            return pages::PrintOutcome{pages::PrintStatus::Printed, {}, {}};
        };
        panel->printEnvelopes({});
        QVERIFY(jobs.isEmpty());
        QVERIFY(answers.seen().isEmpty());
        QCOMPARE(settings::read(u"Printing"_s, u"X-Margin"_s), u"2"_s);
        QCOMPARE(settings::read(u"Printing"_s, u"Y-Margin"_s), u"12"_s);

        // Three customers, the second job refused.
        settings::write(u"Printing"_s, u"X-Margin"_s, u"3.5"_s);
        settings::write(u"Printing"_s, u"Y-Margin"_s, u"2.5"_s);
        bool eventRan = false;
        QMetaObject::invokeMethod(
            this, [&] { eventRan = true; }, Qt::QueuedConnection);
        int calls = 0;
        bool shownDuringRun = false, eventsDuringRun = false;
        panel->printEnvelope = [&](const pages::Page &p) {
            ++calls;
            shownDuringRun = panel->findChild<QLabel *>(u"lblPrinting"_s)->isVisible();
            // A press while the run is under way starts nothing.
            panel->cmdPrintSelectedEnvelopesClick();
            panel->printEnvelopes({u"1k"_s});
            if (calls == 2)
                eventsDuringRun = eventRan;
            if (calls == 2)
                return pages::PrintOutcome{pages::PrintStatus::Failed, u"lp0"_s, u"The printer is on fire."_s};
            jobs << p;
            return pages::PrintOutcome{pages::PrintStatus::Printed, {}, {}};
        };
        panel->printEnvelopes({u"1k"_s, u"2k"_s, u"3k"_s});
        QCOMPARE(calls, 3);
        QCOMPARE(jobs.size(), 2);
        QVERIFY(shownDuringRun);
        QVERIFY(eventsDuringRun);
        QVERIFY(!panel->isPrintingEnvelopes());
        QVERIFY(!panel->findChild<QLabel *>(u"lblPrinting"_s)->isVisible());
        QCOMPARE(answers.seen().size(), 1);
        QCOMPARE(answers.last().title, u"Printer Error"_s);
        QCOMPARE(answers.last().icon, QMessageBox::Critical);
        QCOMPARE(answers.last().text, u"An error has occoured: \nThe printer is on fire.\nThe printing job has been "
                                      "canceled, please try again."_s);

        // The envelopes: company from the file, the customer's name, margins
        // 3.5 -> 4 and 2.5 -> 2 centimetres.
        const pages::Page &first = jobs[0];
        QCOMPARE(first.elements().size(), 8);
        QCOMPARE(first.elements()[0].text, u"Test Co"_s);
        QCOMPARE(first.elements()[4].text, u"Ann Lee"_s);
        QCOMPARE(first.elements()[0].left, int(std::lround(4 * pages::TwipsPerCm)));
        QCOMPARE(first.elements()[0].top, int(std::lround(2 * pages::TwipsPerCm)));
        QCOMPARE(first.elements()[4].left, int(std::lround(11 * pages::TwipsPerCm)));
        QCOMPARE(jobs[1].elements()[4].text, u"Cy "_s);  // no last name: first name and a blank
        discard(w);
    }

    // The button walks the ticked customers of tree 1: those who owe, and
    // whoever the user ticks besides.
    void buttonWalksTree()
    {
        Sandbox box;
        writeDatabase(box.db, {{1, u"Ann"_s, u"Lee"_s}, {2, u"Bob"_s, u"Ray"_s}, {3, u"Cy"_s, QString()}},
                      {{5, u"Widget"_s, u"$5.00"_s}}, {{1, {u"5"_s}}, {3, {u"5"_s}}});
        auto w = openWindow(3);
        PrintingPanel *panel = w->printingPanel();
        panel->chooser()->setCurrentIndex(0);
        Answerer answers;
        QStringList names;
        panel->printEnvelope = [&](const pages::Page &p) {
            names << p.elements()[4].text;
            return pages::PrintOutcome{pages::PrintStatus::Printed, {}, {}};
        };
        // Node order: the records by customer name, "Cy" before "Lee, Ann".
        QCOMPARE(panel->tickedCustomerKeys(), QStringList({u"3k"_s, u"1k"_s}));
        click(panel->findChild<QAbstractButton *>(u"cmdPrintSelectedEnvelopes"_s));
        QCOMPARE(names, QStringList({u"Cy "_s, u"Ann Lee"_s}));
        QVERIFY(answers.seen().isEmpty());
        discard(w);
    }
};

QTEST_MAIN(TstEnvelopes)
#include "tst_envelopes.moc"
