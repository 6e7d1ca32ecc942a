// SPDX-License-Identifier: GPL-3.0-or-later
// bench_statements: 10,000 statements of account to one PDF from the large
// benchmark database (10,000 customers, 1,000,000 records), beside the
// invoice run of the same database's latest period to one PDF. Prints the
// pages per second of each beyond the database's load (the walk over the
// records, composition, painting and the PDF writer all count), their time
// per page, and PASS/FAIL against 1,000 pages a second and the invoice run's
// time per page. It is not a test.
//
//   bench_statements [--large-records N] [--runs N] [--keep FILE.pdf] [--statements-only]
//
// The database is generated in memory by the same generator and seed as the
// other benchmarks'. When fewer than 10,000 customers owe, the list of those
// who do is gone through again until there are 10,000 statements.
#include "dbgen.h"

#include "billing/billing.h"
#include "billing/invoicetree.h"
#include "database/database.h"
#include "pages/pdfoutput.h"
#include "pages/preview.h"
#include "printing/invoicerun.h"
#include "statements/statementrun.h"

#include <QBuffer>
#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QLocale>
#include <QTemporaryDir>

#include <cstdio>
#include <ctime>
#include <limits>

using namespace qor;

namespace {

constexpr int Statements = 10000;
constexpr double TargetPagesPerSecond = 1000;

struct Result {
    double seconds = std::numeric_limits<double>::max();
    double cpu = 0;  // processor time of the same run
    qint64 pages = 0;
    qint64 bytes = 0;
    qint64 characters = 0;  // drawn: the PDF writer's work grows with them
};

qint64 charactersOf(const pages::Page &page)
{
    qint64 n = 0;
    for (const pages::Element &e : page.elements())
        if (e.visible && e.kind == pages::Kind::Text) n += e.text.size();
    return n;
}

// Processor time of this thread in seconds: on a machine shared with other
// work it says what a run costs when the wall clock can't.
double cpuSeconds()
{
    timespec ts{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
    return double(ts.tv_sec) + ts.tv_nsec / 1e9;
}

}  // namespace

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    // The stored options are the defaults: a settings store of our own.
    QTemporaryDir config;
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(config.path()));
    QGuiApplication app(argc, argv);
    int records = 1000000, runs = 3;
    QString keep;
    QStringList args = app.arguments();
    // For a profile of the statements alone.
    const bool statementsOnly = args.removeAll(QStringLiteral("--statements-only")) > 0;
    for (qsizetype i = 1; i + 1 < args.size(); i += 2) {
        if (args[i] == u"--large-records") records = args[i + 1].toInt();
        else if (args[i] == u"--runs") runs = std::max(1, args[i + 1].toInt());
        else if (args[i] == u"--keep") keep = args[i + 1];
        else {
            std::fprintf(stderr,
                         "usage: bench_statements [--large-records N] [--runs N] [--keep FILE.pdf]"
                         " [--statements-only]\n");
            return 64;
        }
    }
    const QString locale = QStringLiteral("en_US");
    QLocale::setDefault(QLocale(locale));

    QElapsedTimer t;
    t.start();
    Database db;
    bench::generate(db, bench::largeParams(locale, records));
    std::printf("bench_statements: %d customers, %d records generated in %.2f s (not counted)\n",
                db.customers().count(), db.invoiceRecords().count(), t.elapsed() / 1000.0);
    // Five days before the latest period's due date: every aging column has something.
    const QDate asOf(2027, 1, 10);

    // Statements: one walk over the records for every customer, then each
    // customer's pages composed and written as the PDF asks for them.
    Result st;
    qint64 owing = 0;
    double walk = 0, compose = 0;
    for (int run = 0; run < runs; ++run) {
        QBuffer pdf;
        pdf.open(QIODevice::WriteOnly);
        QElapsedTimer r;
        r.start();
        const double cpu = cpuSeconds();
        statements::Report report = statements::report(db, asOf, statements::Detail::Records);
        owing = qint64(report.accounts.size());
        std::vector<statements::Account> accounts;
        accounts.reserve(Statements);
        for (size_t i = 0; owing > 0 && accounts.size() < size_t(Statements); ++i)
            accounts.push_back(report.accounts[i % report.accounts.size()]);
        const statements::RunValues values = statements::storedRunValues(db, asOf, false);
        const double walked = cpuSeconds() - cpu;
        qint64 pages = 0, characters = 0;
        auto source = statements::pageSource(db, accounts, values);
        auto counted = [&] {
            QList<pages::Page> p = source();
            pages += p.size();
            for (const pages::Page &page : p) characters += charactersOf(page);
            return p;
        };
        if (!pages::writePdf(counted, &pdf, QPageSize(QPageSize::Letter))) {
            std::fprintf(stderr, "bench_statements: the PDF could not be written\n");
            return 1;
        }
        const double s = r.nsecsElapsed() / 1e9;
        if (s < st.seconds) {
            st = {s, cpuSeconds() - cpu, pages, pdf.data().size(), characters};
            walk = walked;
            // The composition alone, for the breakdown: the same pages made
            // and dropped.
            const double c = cpuSeconds();
            for (const statements::Account &a : accounts) statements::statementPages(db, a, values);
            compose = cpuSeconds() - c;
        }
        if (run == 0 && !keep.isEmpty()) {
            QFile f(keep);
            if (f.open(QIODevice::WriteOnly)) f.write(pdf.data());
        }
    }

    if (statementsOnly) {
        std::printf("statements: %lld pages in %.2f s (processor %.2f s)\n", static_cast<long long>(st.pages), st.seconds,
                    st.cpu);
        return 0;
    }
    // The invoice run of the latest period, every customer of it ticked.
    Result inv;
    const QString period = billing::periodNames(db).last();
    for (int run = 0; run < runs; ++run) {
        QBuffer pdf;
        pdf.open(QIODevice::WriteOnly);
        QElapsedTimer r;
        r.start();
        const double cpu = cpuSeconds();
        InvoiceTree tree(1);
        billing::rebuildInvoiceTree(tree, db, period);
        tree.forEachNode([&](int node) {
            if (tree.kind(node) == NodeKind::Customer) tree.setChecked(node, true);
        });
        invoicerun::RunValues values;
        values.company = db.company();
        values.billDue = invoicerun::billDueOf(db, period);
        values.options = invoicerun::storedInvoiceOptions();
        const QList<pages::Page> pages = invoicerun::composeInvoiceRun(db, tree, values);
        if (!pages::writePdf(pages, &pdf, QPageSize(QPageSize::Letter))) {
            std::fprintf(stderr, "bench_statements: the invoice PDF could not be written\n");
            return 1;
        }
        const double s = r.nsecsElapsed() / 1e9;
        if (s < inv.seconds) {
            inv = {s, cpuSeconds() - cpu, pages.size(), pdf.data().size(), 0};
            for (const pages::Page &page : pages) inv.characters += charactersOf(page);
        }
    }

    // Full invoices for scale: twelve lines each, the sample of the Print
    // Options preview, 1,000 of them as one run.
    Result full;
    for (int run = 0; run < runs; ++run) {
        QBuffer pdf;
        pdf.open(QIODevice::WriteOnly);
        QElapsedTimer r;
        r.start();
        const double cpu = cpuSeconds();
        QList<pages::Page> pages;
        for (int i = 0; i < 1000; ++i) {
            pages::InvoiceInput in = pages::sampleInvoice(0, 12, true, false);
            in.customer[2] = QString::number(i + 1);
            pages << pages::composeInvoice(in);
        }
        if (!pages::writePdf(pages, &pdf, QPageSize(QPageSize::Letter))) return 1;
        const double s = r.nsecsElapsed() / 1e9;
        if (s < full.seconds) {
            full = {s, cpuSeconds() - cpu, pages.size(), pdf.data().size(), 0};
            for (const pages::Page &page : pages) full.characters += charactersOf(page);
        }
    }

    const double stRate = st.pages / st.seconds, invRate = inv.pages / inv.seconds;
    const double stPerPage = st.seconds * 1e3 / st.pages, invPerPage = inv.seconds * 1e3 / inv.pages;
    std::printf(
        "statements: %d of %lld customers who owe, %lld pages, %.1f MB in %.2f s (processor %.2f s: walk %.2f,"
        " compose %.2f, paint and write the rest): %.0f pages/s, %.3f ms a page (best of %d)\n",
        Statements, static_cast<long long>(owing), static_cast<long long>(st.pages), st.bytes / 1e6,
        st.seconds, st.cpu, walk, compose, stRate, stPerPage, runs);
    std::printf(
        "invoices:   period \"%s\", %lld pages, %.1f MB in %.2f s (processor %.2f s): %.0f pages/s, %.3f ms a"
        " page (best of %d)\n",
        qPrintable(period), static_cast<long long>(inv.pages), inv.bytes / 1e6, inv.seconds, inv.cpu, invRate,
        invPerPage, runs);
    const bool fast = stRate >= TargetPagesPerSecond, even = stPerPage <= invPerPage;
    std::printf("full invoices (twelve lines): %lld pages in %.2f s (processor %.2f s): %.0f pages/s, %.3f ms a page\n",
                static_cast<long long>(full.pages), full.seconds, full.cpu, full.pages / full.seconds,
                full.seconds * 1e3 / full.pages);
    std::printf("characters drawn a page: statements %.0f, invoices %.0f, full invoices %.0f\n",
                double(st.characters) / st.pages, double(inv.characters) / inv.pages,
                double(full.characters) / full.pages);
    std::printf("processor time a page: statements %.3f ms, invoices %.3f ms, full invoices %.3f ms\n",
                st.cpu * 1e3 / st.pages, inv.cpu * 1e3 / inv.pages, full.cpu * 1e3 / full.pages);
    std::printf("%s: statements at %.0f pages/s (target >= %.0f)\n", fast ? "PASS" : "FAIL", stRate,
                TargetPagesPerSecond);
    std::printf("%s: a statement page %.3f ms, an invoice page %.3f ms\n", even ? "PASS" : "FAIL", stPerPage,
                invPerPage);
    return fast && even ? 0 : 1;
}
