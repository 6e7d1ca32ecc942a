#include "pages/pdfoutput.h"

#include "pages/painter.h"

#include <QFile>
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

bool writePdf(const QList<Page> &pages, const QString &fileName, const QPageSize &paper, QString *error)
{
    QFile file(fileName);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        if (error)
            *error = file.errorString();
        return false;
    }
    const bool ok = writePdf(pages, &file, paper, error);
    file.close();
    if (!ok || file.error() != QFileDevice::NoError) {
        if (error && error->isEmpty())
            *error = file.errorString();
        return false;
    }
    return true;
}

}  // namespace qor::pages
