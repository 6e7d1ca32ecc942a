// SPDX-License-Identifier: GPL-3.0-or-later
// A system without any printer: the print layer says so, distinctly from a
// failed job, so that the caller can offer a PDF instead.
#include "pages/preview.h"
#include "pages/printout.h"

#include <QGuiApplication>
#include <QTest>

using namespace qor::pages;

class TstNoPrinter : public QObject {
    Q_OBJECT
private slots:
    void noPrinterIsToldApart()
    {
        QCOMPARE(defaultPrinterName(), QString());
        const PrintOutcome out = printToDefaultPrinter({composeInvoice(sampleInvoice(0, 1, true, false)).first()}, "none");
        QCOMPARE(out.status, PrintStatus::NoPrinter);
        QVERIFY(out.printer.isEmpty());
    }
};

int main(int argc, char **argv)
{
    // No print server to reach: CUPS sees no printer at all.
    qputenv("CUPS_SERVER", "/nonexistent/qorvane-no-cups.sock");
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    TstNoPrinter t;
    return QTest::qExec(&t, argc, argv);
}

#include "tst_noprinter.moc"
