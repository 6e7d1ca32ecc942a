// SPDX-License-Identifier: GPL-3.0-or-later
// Writes the sample invoices shown in the README: one PDF per form and a
// picture of each page, and the six preview pictures of the Print Options
// panel. Run by hand after a change of the forms:
//   qor-make-page-samples <folder>
#include "pages/painter.h"
#include "pages/pdfoutput.h"
#include "pages/preview.h"

#include <QDir>
#include <QGuiApplication>
#include <QLocale>
#include <QTextStream>

using namespace qor::pages;

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    // The samples show United States money and dates whatever the machine.
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    QTextStream err(stderr);
    if (argc < 2) {
        err << "usage: qor-make-page-samples <folder>\n";
        return 2;
    }
    const QDir dir(QString::fromLocal8Bit(argv[1]));
    QDir().mkpath(dir.path());
    bool ok = true;
    for (int t = 0; t < 3; ++t) {
        InvoiceInput in = sampleInvoice(t, 5, false, false);
        // The first form shows a paid customer with a note.
        if (t == 0) {
            in.balance = qor::Money();
            in.lines << InvoiceLine::invoiceNote(QStringLiteral("Paid in full, thank you & see you in spring"));
        }
        const Page page = composeInvoice(in).first();
        const QString base = dir.filePath(QStringLiteral("invoice-frmPrint%1").arg(t));
        QString why;
        if (!writePdf({page}, base + QStringLiteral(".pdf"), QPageSize(QPageSize::Letter), &why)) {
            err << base << ": " << why << "\n";
            ok = false;
        }
        ok &= renderPage(page, 816).save(base + QStringLiteral(".png"));
    }
    const PreviewPictures pics = makePreviewPictures();
    for (int i = 0; i < 3; ++i) {
        ok &= pics.top[i].save(dir.filePath(QStringLiteral("preview-top%1.png").arg(i)));
        ok &= pics.bottom[i].save(dir.filePath(QStringLiteral("preview-bottom%1.png").arg(i)));
    }
    return ok ? 0 : 1;
}
