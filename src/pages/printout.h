// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// Pages to a printer: all pages of one run as one print job, through the same
// painter as the PDF. No windows: the caller decides what to tell the user,
// and when there is no printer at all it can offer a PDF instead.
#include "pages/page.h"

#include <QList>
#include <QString>

#include <functional>

class QPrinter;

namespace qor::pages {

enum class PrintStatus {
    Printed,    // the job went to the print system
    NoPrinter,  // the system has no printer at all: nothing was tried
    Failed,     // the printer refused the job; nothing of it was printed
};

struct PrintOutcome {
    PrintStatus status = PrintStatus::Failed;
    QString printer;  // the printer's name, when there was one
    QString reason;   // for Failed: what went wrong, as plain text
};

// The system's default printer (through CUPS on Linux), or the first printer
// when none is marked as the default; empty when there is no printer at all.
QString defaultPrinterName();

// Prints the pages as one job on `printer`, each page's top left corner at the
// sheet's, turned to the first page's orientation. A printer in PDF mode
// writes the same pages to its output file.
PrintOutcome printPages(const QList<Page> &pages, QPrinter &printer, const QString &jobName);
// The same on the default printer, at its own paper size. NoPrinter when the
// system has no printer; Failed when the printer doesn't take the job.
PrintOutcome printToDefaultPrinter(const QList<Page> &pages, const QString &jobName);
// Both for a long run: next() gives the following pages each time (one
// customer's, say) and an empty list at the end, so the job is drawn a few
// pages at a time instead of all of them held at once.
using PageSource = std::function<QList<Page>()>;
PrintOutcome printPages(const PageSource &next, QPrinter &printer, const QString &jobName);
PrintOutcome printToDefaultPrinter(const PageSource &next, const QString &jobName);

}  // namespace qor::pages
