// SPDX-License-Identifier: GPL-3.0-or-later
// bench_lists: the printed customer list of the large benchmark database
// (10,000 customers) to one PDF through the page layer — composition with
// its measuring, the painter and the PDF writer — best of three runs, with a
// PASS/FAIL line against 3 seconds; and, for scale, 1,000 envelopes to PDF.
// It is not a test.
//
//   bench_lists [--large-records N] [--locale NAME] [--keep FILE.pdf]
//
// The customers come from the same generator and seed as the other
// benchmarks' large database; the number of invoice records (default
// 1,000,000) doesn't change them, so a smaller N only makes the start quicker.
#include "dbgen.h"

#include "database/database.h"
#include "database/rowtypes.h"
#include "pages/customerlist.h"
#include "pages/envelope.h"
#include "pages/pdfoutput.h"

#include <QBuffer>
#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QLocale>

#include <cstdio>
#include <limits>

using namespace qor;

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    int records = 1000000;
    QString locale = QStringLiteral("en_US");
    QString keep;
    const QStringList args = app.arguments();
    for (qsizetype i = 1; i + 1 < args.size(); i += 2) {
        if (args[i] == u"--large-records") records = args[i + 1].toInt();
        else if (args[i] == u"--locale") locale = args[i + 1];
        else if (args[i] == u"--keep") keep = args[i + 1];
        else {
            std::fprintf(stderr, "bench_lists: unknown option %s\n", qPrintable(args[i]));
            return 64;
        }
    }
    QLocale::setDefault(QLocale(locale));

    QElapsedTimer t;
    t.start();
    Database db;
    bench::generate(db, bench::largeParams(locale, records));
    std::printf("bench_lists: %d customers, %d records generated in %.2f s\n", db.customers().count(),
                db.invoiceRecords().count(), t.elapsed() / 1000.0);

    pages::CustomerListOptions options;  // the defaults: every field, 3 columns, 1 blank line
    double bestCompose = std::numeric_limits<double>::max(), bestTotal = bestCompose;
    qsizetype pageCount = 0, bytes = 0;
    for (int run = 0; run < 3; ++run) {
        QBuffer pdf;
        pdf.open(QIODevice::WriteOnly);
        QElapsedTimer r;
        r.start();
        const QList<pages::Page> list = pages::composeCustomerList(db.customers(), options);
        const double composed = r.nsecsElapsed() / 1e9;
        if (!pages::writePdf(list, &pdf)) {
            std::fprintf(stderr, "bench_lists: the PDF could not be written\n");
            return 1;
        }
        const double total = r.nsecsElapsed() / 1e9;
        bestCompose = std::min(bestCompose, composed);
        bestTotal = std::min(bestTotal, total);
        pageCount = list.size();
        bytes = pdf.data().size();
        if (run == 0 && !keep.isEmpty()) {
            QFile f(keep);
            if (f.open(QIODevice::WriteOnly)) f.write(pdf.data());
        }
    }
    std::printf("customer list: %lld pages, %.1f MB; compose %.3f s, compose + PDF %.3f s (best of 3)\n",
                static_cast<long long>(pageCount), bytes / 1e6, bestCompose, bestTotal);
    std::printf("%s: customer list of %d customers to PDF in under 3 s\n", bestTotal < 3.0 ? "PASS" : "FAIL",
                db.customers().count());

    // 1,000 envelopes, for scale.
    QList<pages::Page> envelopes;
    QElapsedTimer e;
    e.start();
    pages::EnvelopeInput in;
    in.company = {QStringLiteral("Qorvane Test Co."), QStringLiteral("1 Main St"), QStringLiteral("Springfield"),
                  QString()};
    int n = 0;
    db.customers().forEach([&](QStringView, QStringView text) {
        const auto c = CustomerView::parse(text);
        if (!c) return true;
        in.firstName = c->firstName.toString();
        in.lastName = c->lastName.toString();
        in.address = {c->address1.toString(), c->address2.toString(), c->address3.toString()};
        envelopes << pages::composeEnvelope(in);
        return ++n < 1000;
    });
    QBuffer pdf;
    pdf.open(QIODevice::WriteOnly);
    pages::writePdf(envelopes, &pdf, pages::defaultEnvelopePaper());
    std::printf("envelopes: %lld to PDF in %.3f s, %.1f MB\n", static_cast<long long>(envelopes.size()),
                e.nsecsElapsed() / 1e9, pdf.data().size() / 1e6);
    return bestTotal < 3.0 ? 0 : 1;
}
