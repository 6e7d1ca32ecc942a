// SPDX-License-Identifier: GPL-3.0-or-later
// Invoice pages to PDF: 1,000 invoices of twelve lines each through the page
// layer (composition, layout, painter, PDF writer), beside a bare QPainter
// loop that draws the same number of texts, lines, boxes and pictures to a
// PDF in the same run. Prints the best of three times of each, their ratio
// and the file sizes.
#include "pages/invoice.h"
#include "pages/painter.h"
#include "pages/pdfoutput.h"
#include "pages/preview.h"
#include "pages/textlayout.h"

#include <QBuffer>
#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QLocale>
#include <QPainter>
#include <QPdfWriter>
#include <QTemporaryDir>
#include <QTextStream>

#include <limits>

using namespace qor::pages;

namespace {

constexpr int Invoices = 1000;

QList<InvoiceInput> inputs()
{
    QList<InvoiceInput> out;
    for (int i = 0; i < Invoices; ++i) {
        InvoiceInput in = sampleInvoice(i % 3, 12, true, false);
        in.customer[1] = QStringLiteral("Customer");
        in.customer[2] = QString::number(i + 1);
        // Every seventh customer has paid: the stamp shows.
        if (i % 7 == 0)
            in.balance = qor::Money();
        out << in;
    }
    return out;
}

// What the bare loop draws: each visible element reduced to one drawing call
// with its place worked out beforehand.
struct Bare {
    enum { Text,
           Line,
           Box,
           Picture } kind;
    QFont font;
    QColor colour;
    QPointF at;
    QString text;
    QLineF line;
    QRectF rect;
    double pen = 15;
};

QList<Bare> bareOf(const Page &page)
{
    QList<Bare> out;
    for (const Element &e : page.elements()) {
        if (!e.visible)
            continue;
        Bare b;
        b.colour = e.colour;
        b.pen = e.penPixels * 15.0;
        switch (e.kind) {
        case Kind::Text:
            if (e.text.isEmpty())
                continue;
            b.kind = Bare::Text;
            b.font = pageFont(e).font;
            b.text = e.text;
            b.at = QPointF(e.left, e.top + pageFont(e).metrics.ascent());
            break;
        case Kind::Line:
            b.kind = Bare::Line;
            b.line = QLineF(e.x1, e.y1, e.x2, e.y2);
            break;
        case Kind::Box:
            b.kind = Bare::Box;
            b.rect = QRectF(e.left, e.top, e.width, e.height);
            break;
        case Kind::Picture:
            b.kind = Bare::Picture;
            b.rect = QRectF(e.left, e.top, e.width, e.height);
            break;
        }
        out << b;
    }
    return out;
}

qint64 count(const QByteArray &pdf, const char *what) { return pdf.count(what); }

}  // namespace

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    QTextStream out(stdout);
    const QList<InvoiceInput> in = inputs();
    // Warm the font cache and the stamp once, as a run after the first would.
    renderPage(composeInvoice(in.first()).first(), 100);

    // The page layer: compose every page, then write them as one PDF.
    QList<Page> pages;
    QBuffer layerPdf;
    qint64 composeNs = 0;
    auto runLayer = [&] {
        QElapsedTimer t;
        t.start();
        pages.clear();
        pages.reserve(Invoices);
        for (const InvoiceInput &i : in)
            pages << composeInvoice(i);
        composeNs = t.nsecsElapsed();
        layerPdf.close();
        layerPdf.setData(QByteArray());
        layerPdf.open(QIODevice::WriteOnly);
        if (!writePdf(pages, &layerPdf, QPageSize(QPageSize::Letter)))
            return qint64(-1);
        return t.nsecsElapsed();
    };

    // The bare loop: the same elements, placed beforehand, drawn straight.
    QList<QList<Bare>> bare;
    qint64 elements = 0;
    const QImage stamp = pictureImage(QStringLiteral("paid"));
    QBuffer barePdf;
    auto runBare = [&] {
        QElapsedTimer t;
        t.start();
        barePdf.close();
        barePdf.setData(QByteArray());
        barePdf.open(QIODevice::WriteOnly);
        QPdfWriter writer(&barePdf);
        writer.setResolution(1440);
        writer.setPageLayout(QPageLayout(QPageSize(QPageSize::Letter), QPageLayout::Portrait, QMarginsF()));
        QPainter p(&writer);
        for (qsizetype n = 0; n < bare.size(); ++n) {
            if (n > 0)
                writer.newPage();
            for (const Bare &b : bare[n]) {
                switch (b.kind) {
                case Bare::Text:
                    p.setFont(b.font);
                    p.setPen(b.colour);
                    p.drawText(b.at, b.text);
                    break;
                case Bare::Line:
                    p.setPen(QPen(b.colour, b.pen));
                    p.drawLine(b.line);
                    break;
                case Bare::Box:
                    p.setPen(QPen(b.colour, b.pen));
                    p.setBrush(Qt::NoBrush);
                    p.drawRect(b.rect);
                    break;
                case Bare::Picture:
                    p.drawImage(b.rect, stamp, QRectF(stamp.rect()));
                    break;
                }
            }
        }
        p.end();
        return t.nsecsElapsed();
    };

    // The machine is shared: each side runs three times, alternating, and
    // the best time of each counts.
    qint64 layerNs = std::numeric_limits<qint64>::max();
    qint64 bareNs = std::numeric_limits<qint64>::max();
    qint64 bestCompose = 0;
    for (int round = 0; round < 3; ++round) {
        const qint64 l = runLayer();
        if (l < 0) {
            out << "writing the PDF failed\n";
            return 1;
        }
        if (l < layerNs) {
            layerNs = l;
            bestCompose = composeNs;
        }
        if (bare.isEmpty()) {
            for (const Page &p : pages) {
                bare << bareOf(p);
                elements += bare.last().size();
            }
        }
        bareNs = std::min(bareNs, runBare());
    }
    composeNs = bestCompose;

    const QByteArray pdf = layerPdf.data();
    const double layerS = layerNs / 1e9;
    const double bareS = bareNs / 1e9;
    out << "bench_pages: " << Invoices << " invoices of twelve lines, " << elements << " drawn elements\n";
    out << QStringLiteral("  page layer      %1 s  (compose %2 s, paint and write %3 s)  target < 2 s\n")
               .arg(layerS, 0, 'f', 3)
               .arg(composeNs / 1e9, 0, 'f', 3)
               .arg((layerNs - composeNs) / 1e9, 0, 'f', 3);
    out << QStringLiteral("  bare QPainter   %1 s\n").arg(bareS, 0, 'f', 3);
    out << QStringLiteral("  ratio           %1  (aim <= 1.5)\n").arg(layerS / bareS, 0, 'f', 2);
    out << QStringLiteral("  PDF size        %1 MB (bare loop %2 MB)  target < 5 MB\n")
               .arg(pdf.size() / 1048576.0, 0, 'f', 2)
               .arg(barePdf.data().size() / 1048576.0, 0, 'f', 2);
    out << "  image objects   " << count(pdf, "/Subtype /Image") << " (the stamp and its mask)\n";
    out << "  font files      " << count(pdf, "/FontFile2") << "\n";
    if (argc > 1) {
        QFile f(QString::fromLocal8Bit(argv[1]));
        if (f.open(QIODevice::WriteOnly))
            f.write(pdf);
    }
    return 0;
}
