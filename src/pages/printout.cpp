#include "pages/printout.h"

#include "pages/painter.h"

#include <QPainter>
#include <QPrinter>
#include <QPrinterInfo>

namespace qor::pages {

QString defaultPrinterName()
{
    const QPrinterInfo info = QPrinterInfo::defaultPrinter();
    return info.isNull() ? QString() : info.printerName();
}

PrintOutcome printPages(const QList<Page> &pages, QPrinter &printer, const QString &jobName)
{
    PrintOutcome out;
    out.printer = printer.printerName();
    if (pages.isEmpty()) {
        out.status = PrintStatus::Printed;
        return out;
    }
    printer.setDocName(jobName);
    // The page's origin is the sheet's corner, not the printable area's.
    printer.setFullPage(true);
    printer.setPageOrientation(pages.first().isLandscape() ? QPageLayout::Landscape : QPageLayout::Portrait);
    QPainter painter;
    if (!painter.begin(&printer)) {
        out.reason = QStringLiteral("The printer \"%1\" could not start the job.").arg(out.printer);
        return out;
    }
    for (qsizetype i = 0; i < pages.size(); ++i) {
        if (i > 0 && !printer.newPage()) {
            printer.abort();
            painter.end();
            out.reason = QStringLiteral("The printer \"%1\" stopped the job.").arg(out.printer);
            return out;
        }
        scaleToTwips(painter);
        drawPage(painter, pages[i]);
    }
    if (!painter.end() || printer.printerState() == QPrinter::Error) {
        out.reason = QStringLiteral("The printer \"%1\" refused the job.").arg(out.printer);
        return out;
    }
    out.status = PrintStatus::Printed;
    return out;
}

PrintOutcome printToDefaultPrinter(const QList<Page> &pages, const QString &jobName)
{
    const QPrinterInfo info = QPrinterInfo::defaultPrinter();
    if (info.isNull()) {
        PrintOutcome out;
        out.status = PrintStatus::NoPrinter;
        return out;
    }
    QPrinter printer(info, QPrinter::HighResolution);
    return printPages(pages, printer, jobName);
}

}  // namespace qor::pages
