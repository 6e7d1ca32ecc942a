// SPDX-License-Identifier: GPL-3.0-or-later
#include "pages/pdfoutput.h"

#include "database/filesafety.h"
#include "pages/painter.h"

#include <QBuffer>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QPainter>
#include <QPdfWriter>

#include <utility>

namespace qor::pages {

QPageSize defaultPaper()
{
    return QLocale().measurementSystem() == QLocale::ImperialUSSystem ? QPageSize(QPageSize::Letter)
                                                                      : QPageSize(QPageSize::A4);
}

namespace {

QPageLayout::Orientation orientationOf(const Page &p)
{
    return p.isLandscape() ? QPageLayout::Landscape : QPageLayout::Portrait;
}

}  // namespace

bool writePdf(const QList<Page> &pages, QIODevice *device, const QPageSize &paper, QString *error)
{
    bool given = false;
    return writePdf([&] { return std::exchange(given, true) ? QList<Page>() : pages; }, device, paper, error);
}

bool writePdf(const std::function<QList<Page>()> &next, QIODevice *device, const QPageSize &paper, QString *error)
{
    QList<Page> pages = next();
    QPdfWriter writer(device);
    writer.setCreator(QStringLiteral("Qorvane"));
    // One device unit per twip: the painter draws in the page's own measure.
    writer.setResolution(1440);
    writer.setPageLayout(QPageLayout(paper, pages.isEmpty() ? QPageLayout::Portrait : orientationOf(pages.first()),
                                     QMarginsF(0, 0, 0, 0)));
    QPainter painter;
    if (!painter.begin(&writer)) {
        if (error)
            *error = QStringLiteral("The PDF file could not be started.");
        return false;
    }
    bool first = true;
    while (!pages.isEmpty()) {
        for (const Page &page : std::as_const(pages)) {
            if (!first) {
                writer.setPageOrientation(orientationOf(page));
                writer.newPage();
            }
            first = false;
            scaleToTwips(painter);
            drawPage(painter, page);
        }
        pages = next();
    }
    return painter.end();
}

QString savePdf(const QByteArray &pdf, const QString &fileName)
{
    const QFileInfo target(fileName);
    if (target.exists() && !target.isFile()) return QStringLiteral("it is not a regular file");
    const qsizetype end = pdf.lastIndexOf("%%EOF");
    if (!pdf.startsWith("%PDF-") || end < 0 || !pdf.mid(end + 5).trimmed().isEmpty())
        return QStringLiteral("the document came out incomplete");
    files::removeStaleTemporaries(fileName, files::processStartTime());
    return files::writeVerified(fileName, pdf);
}

bool writePdf(const std::function<QList<Page>()> &next, const QString &fileName, const QPageSize &paper,
              QString *error)
{
    QByteArray pdf;
    QBuffer buffer(&pdf);
    buffer.open(QIODevice::WriteOnly);
    QString why;
    if (writePdf(next, &buffer, paper, &why)) why = savePdf(pdf, fileName);
    if (error) *error = why;
    return why.isEmpty();
}

bool writePdf(const QList<Page> &pages, const QString &fileName, const QPageSize &paper, QString *error)
{
    return writePdf([pages, done = false]() mutable { return std::exchange(done, true) ? QList<Page>() : pages; },
                    fileName, paper, error);
}

}  // namespace qor::pages
