// SPDX-License-Identifier: GPL-3.0-or-later
#include "pages/printout.h"

#include "pages/painter.h"

#include <QPainter>
#include <QPrinter>
#include <QPrinterInfo>

#include <utility>

#if QOR_HAVE_CUPS
#include <cups/cups.h>
#endif

namespace qor::pages {

QString defaultPrinterName()
{
    const QPrinterInfo info = QPrinterInfo::defaultPrinter();
    if (!info.isNull())
        return info.printerName();
    const QStringList names = QPrinterInfo::availablePrinterNames();
    return names.isEmpty() ? QString() : names.first();
}

namespace {

// Whether the print system takes jobs for that printer now. Qt hands the job
// to CUPS without telling whether CUPS took it, so a queue that rejects jobs
// is asked about beforehand; the job would be lost without a word otherwise.
bool acceptsJobs(const QString &printer, QString *why)
{
#if QOR_HAVE_CUPS
    cups_dest_t *dest = cupsGetNamedDest(CUPS_HTTP_DEFAULT, printer.toLocal8Bit().constData(), nullptr);
    if (!dest)
        return true;  // not a CUPS queue: nothing to ask
    const char *accepting = cupsGetOption("printer-is-accepting-jobs", dest->num_options, dest->options);
    const char *message = cupsGetOption("printer-state-message", dest->num_options, dest->options);
    const bool ok = !accepting || QByteArray(accepting) != "false";
    if (!ok && why) {
        *why = QStringLiteral("The printer \"%1\" is not accepting jobs.").arg(printer);
        if (message && *message)
            *why += u' ' + QString::fromLocal8Bit(message);
    }
    cupsFreeDests(1, dest);
    return ok;
#else
    Q_UNUSED(printer);
    Q_UNUSED(why);
    return true;
#endif
}

}  // namespace

PrintOutcome printPages(const QList<Page> &pages, QPrinter &printer, const QString &jobName)
{
    bool given = false;
    return printPages([&] { return std::exchange(given, true) ? QList<Page>() : pages; }, printer, jobName);
}

PrintOutcome printPages(const PageSource &next, QPrinter &printer, const QString &jobName)
{
    PrintOutcome out;
    out.printer = printer.printerName();
    QList<Page> pages = next();
    if (pages.isEmpty()) {
        out.status = PrintStatus::Printed;
        return out;
    }
    if (printer.outputFormat() == QPrinter::NativeFormat && !acceptsJobs(out.printer, &out.reason))
        return out;
    printer.setDocName(jobName);
    // The page's origin is the sheet's corner, not the printable area's.
    printer.setFullPage(true);
    printer.setPageOrientation(pages.first().isLandscape() ? QPageLayout::Landscape : QPageLayout::Portrait);
    QPainter painter;
    if (!painter.begin(&printer)) {
        out.reason = QStringLiteral("The printer \"%1\" could not start the job.").arg(out.printer);
        return out;
    }
    bool first = true;
    while (!pages.isEmpty()) {
        for (const Page &page : std::as_const(pages)) {
            if (!first && !printer.newPage()) {
                printer.abort();
                painter.end();
                out.reason = QStringLiteral("The printer \"%1\" stopped the job.").arg(out.printer);
                return out;
            }
            first = false;
            scaleToTwips(painter);
            drawPage(painter, page);
        }
        pages = next();
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
    bool given = false;
    return printToDefaultPrinter([&] { return std::exchange(given, true) ? QList<Page>() : pages; }, jobName);
}

PrintOutcome printToDefaultPrinter(const PageSource &next, const QString &jobName)
{
    QPrinterInfo info = QPrinterInfo::defaultPrinter();
    // Printers but none marked as the default: the first one serves.
    if (info.isNull() && !QPrinterInfo::availablePrinterNames().isEmpty())
        info = QPrinterInfo::printerInfo(QPrinterInfo::availablePrinterNames().first());
    if (info.isNull()) {
        PrintOutcome out;
        out.status = PrintStatus::NoPrinter;
        return out;
    }
    QPrinter printer(info, QPrinter::HighResolution);
    return printPages(next, printer, jobName);
}

}  // namespace qor::pages
