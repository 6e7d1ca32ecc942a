// SPDX-License-Identifier: GPL-3.0-or-later
// qorvane-cli: checks and re-saves database files without the window, and
// writes envelopes and the customer list as PDF. It reads a file exactly as
// the program does at start (the file, then the customer names of the
// records) and writes exactly what the program's save writes, in the user's
// locale. Pages come from the same page layer as the program's printing.
#include "billing/accounts.h"
#include "billing/billing.h"
#include "billing/invoicetree.h"
#include "cli/emailcommand.h"
#include "cli/outputs.h"
#include "cli/statementcommands.h"
#include "database/database.h"
#include "database/filesafety.h"
#include "database/regional.h"
#include "database/rowtypes.h"
#include "database/versions.h"
#include "pages/customerlist.h"
#include "pages/envelope.h"
#include "pages/pdfoutput.h"
#include "printing/invoicerun.h"
#include "settings/settingsstore.h"
#include "shell/session.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QStringList>
#include <QTextStream>

#include <cstdio>
#include <memory>

#include <sys/stat.h>

namespace {

using namespace qor::cli;

const char *const HelpText =
    "Usage:\n"
    "  qorvane-cli check FILE      read FILE as the program does at start and\n"
    "                              print what it holds and any problem noticed\n"
    "  qorvane-cli resave IN OUT   read IN as check does and write it to OUT\n"
    "                              exactly as the program saves a database\n"
    "  qorvane-cli envelopes FILE --period NAME -o OUT.pdf [--all]\n"
    "                              one envelope per customer of the period who\n"
    "                              owes (--all: every customer of the period),\n"
    "                              at the stored envelope margins\n"
    "  qorvane-cli customers FILE -o OUT.pdf [--title TEXT] [--columns N]\n"
    "                              the printed customer list with the stored\n"
    "                              list options, the title and the number of\n"
    "                              columns (1 to 4) as given\n"
    "  qorvane-cli invoices FILE --period NAME (-o OUT.pdf | --each DIR)\n"
    "              [--all | --customer CID] [--template 0|1|2] [--paper letter|a4]\n"
    "                              the invoices of the period as the print run\n"
    "                              makes them: the customers who owe (--all:\n"
    "                              every customer of the period; --customer: that\n"
    "                              one), the stored print options, the file's\n"
    "                              company details; --each writes one PDF per\n"
    "                              customer, named after the customer and period\n"
    "  qorvane-cli periods FILE [--plain]\n"
    "                              one line per bill period, fields separated by\n"
    "                              tabs: name, start, end, due (as stored), records,\n"
    "                              total billed, total still owed, records paid\n"
    "  qorvane-cli owing FILE [--customer CID] [--plain]\n"
    "                              open balances: for each customer who owes, a line\n"
    "                              with the name and number, one tab-indented line\n"
    "                              per period with its balance, the customer's\n"
    "                              total; then the total of all\n"
    "                              Amounts are in the user's currency form; --plain\n"
    "                              prints plain numbers with \".\" for scripts.\n"
    "  qorvane-cli statements FILE [--customer CID] [--as-of yyyy-mm-dd]\n"
    "              [--overdue DAYS] (-o OUT.pdf | --each DIR)\n"
    "                              statements of account of the customers who owe\n"
    "                              (--customer: that one) on the day given (today\n"
    "                              when not): the open records oldest due first,\n"
    "                              the aging of what is owed, the total; --overdue:\n"
    "                              reminder letters for those whose oldest balance\n"
    "                              is at least DAYS past due; --each writes one PDF\n"
    "                              per customer, \"Name (CID) - statement\n"
    "                              yyyy-mm-dd.pdf\" (\"reminder\" for letters)\n"
    "  qorvane-cli aging FILE [--as-of yyyy-mm-dd] [--plain]\n"
    "                              one line per customer who owes, fields separated\n"
    "                              by tabs: number, name, total owed, then not yet\n"
    "                              due, 1-30, 31-60, 61-90 and over 90 days past\n"
    "                              the bill due date; then the total line\n"
    "  qorvane-cli email FILE (--period NAME [--all] | --statements | --reminders DAYS)\n"
    "              [--customer CID] [--dry-run DIR]\n"
    "                              e-mails to each customer with an address one\n"
    "                              PDF: the invoice of the period (those who owe;\n"
    "                              --all: every customer of the period), today's\n"
    "                              statement, or the reminder letter of those at\n"
    "                              least DAYS past due; with the account and texts\n"
    "                              of E-mail Settings, the password from the keyring\n"
    "                              or QORVANE_SMTP_PASSWORD; --dry-run writes each\n"
    "                              message to DIR as <number>.eml instead of sending.\n"
    "                              Prints one line per customer, fields separated\n"
    "                              by tabs: number, name, result, the server's words\n"
    "  qorvane-cli versions FILE   the earlier versions kept of FILE, oldest first:\n"
    "                              its path, a tab, its time (yyyy-MM-dd HH:mm:ss)\n"
    "  qorvane-cli --help          show this text\n"
    "  qorvane-cli --version       show the version\n"
    "\n"
    "An output is written beside its target and takes its name only when it is\n"
    "complete and checked; an output that is one of the inputs is refused.\n"
    "--each names each file \"<customer> (<number>) - <period>.pdf\", with \"/\" and\n"
    "control characters replaced by \"_\". --customer takes a customer number.\n"
    "\n"
    "Exit status:\n"
    "  0  done: the file was read, and every output written and checked\n"
    "  1  the command line is wrong (unknown command or option, a missing or bad\n"
    "     value, an output that is one of the inputs)\n"
    "  2  an input file was refused: missing, not a regular file (a pipe or\n"
    "     device), damaged or unreadable; the reason goes to standard error\n"
    "  3  an output could not be written (nothing of it is left behind), or a\n"
    "     message was refused or not sent\n"
    "  4  the bill period or customer asked for is not in the file\n"
    "  5  the file holds nothing to print or send (no customers for the list,\n"
    "     nobody who owes as asked for statements or e-mail)\n";

// Reads a file through the session, to look at it only: nothing is locked
// or asked, and a missing file is an error here: checking must not create
// anything. The books are moved into db.
bool load(qor::Database &db, const QString &path, QStringList &problems)
{
    qor::Session session;
    const qor::ReadResult r = session.openToRead(path, &problems);
    if (!r.ok()) {
        err(r.message);
        return false;
    }
    db.takeContentOf(session.db());
    return true;
}

int check(const QString &path)
{
    qor::Database db;
    QStringList problems;
    if (!load(db, path, problems)) return Rejected;

    int customersArchived = 0;
    db.customers().forEach([&](QStringView, QStringView text) {
        customersArchived += qor::customer::isArchived(text);
        return true;
    });
    int productsArchived = 0;
    db.items().forEach([&](QStringView, QStringView text) {
        productsArchived += qor::item::isArchived(text);
        return true;
    });

    QTextStream out(stdout);
    out << "customers: " << db.customers().count() - customersArchived << " current, " << customersArchived
        << " archived\n";
    out << "products: " << db.items().count() - productsArchived << " current, " << productsArchived
        << " archived\n";
    out << "bill periods: " << db.periods().count() << '\n';
    out << "invoice records: " << db.invoiceRecords().count() << '\n';
    for (const QString &p : problems) out << p << '\n';
    for (const QString &p : qor::accounts::moneyProblems(db)) out << p << '\n';
    return Ok;
}

int resave(const QString &in, const QString &outPath)
{
    if (outputIsInput(outPath, {in})) return Usage;
    qor::Database db;
    QStringList problems;
    if (!load(db, in, problems)) return Rejected;
    for (const QString &p : problems) err(p);
    // Saved as the program saves: what an interrupted save of it left goes,
    // and the file it replaces becomes an earlier version.
    qor::files::removeStaleTemporaries(outPath, qor::files::processStartTime());
    qor::Database::SaveOptions options;
    options.versions = qor::settings::versionPolicy();
    const qor::SaveResult s = db.save(outPath, options);
    if (!s.ok) {
        err(s.message);
        return NotWritten;
    }
    for (const QString &note : s.notes) err(note);
    if (!s.keptCopy.isEmpty()) err(QStringLiteral("The old content of the file was kept as \"%1\".").arg(shown(s.keptCopy)));
    return Ok;
}

int listVersions(const QString &path)
{
    QTextStream out(stdout);
    for (const qor::versions::Version &v : qor::versions::list(path))
        out << v.path << '\t' << v.time.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")) << '\n';
    return Ok;
}

// The arguments after the file of periods and owing: --plain, and for owing
// --customer CID. False for anything else.
struct StatementOptions {
    bool plain = false;
    QString customer;
};
bool readOptions(const QStringList &args, bool allowCustomer, StatementOptions &o)
{
    for (qsizetype i = 0; i < args.size(); ++i) {
        if (args[i] == u"--plain") {
            o.plain = true;
        } else if (allowCustomer && args[i] == u"--customer" && i + 1 < args.size() && o.customer.isEmpty()) {
            o.customer = args[++i];
            if (!isCustomerNumber(o.customer)) {
                err(QStringLiteral("--customer takes a customer number, not \"%1\".").arg(o.customer));
                return false;
            }
        } else {
            return false;
        }
    }
    return true;
}

int periods(const QString &path, const StatementOptions &o)
{
    qor::Database db;
    QStringList problems;
    if (!load(db, path, problems)) return Rejected;
    QTextStream out(stdout);
    for (const qor::accounts::PeriodSummary &p : qor::accounts::periodSummaries(db)) {
        out << p.name << '\t' << p.start << '\t' << p.end << '\t' << p.due << '\t' << p.records << '\t'
            << qor::accounts::formatMoney(p.billed, o.plain) << '\t'
            << qor::accounts::formatMoney(p.owed, o.plain) << '\t' << p.paid << '\n';
    }
    return Ok;
}

int owing(const QString &path, const StatementOptions &o)
{
    qor::Database db;
    QStringList problems;
    if (!load(db, path, problems)) return Rejected;
    if (!o.customer.isEmpty() && !db.customers().contains(qor::numberKey(QStringView(o.customer)))) {
        err(QStringLiteral("There is no customer number %1 in \"%2\".").arg(o.customer, shown(path)));
        return NotFound;
    }
    QTextStream out(stdout);
    const qor::accounts::Owing statement = qor::accounts::owing(db, o.customer);
    for (const qor::accounts::OwingCustomer &c : statement.customers) {
        out << c.name << '\t' << c.cid << '\n';
        for (const auto &[period, balance] : c.periods)
            out << '\t' << period << '\t' << qor::accounts::formatMoney(balance, o.plain) << '\n';
        out << "\ttotal\t" << qor::accounts::formatMoney(c.total, o.plain) << '\n';
    }
    out << "total owed\t" << qor::accounts::formatMoney(statement.total, o.plain) << '\n';
    return Ok;
}

// Options of the page commands: FILE first, then flags.
struct PageArgs {
    QString file, out, period, title;
    bool all = false, hasTitle = false;
    int columns = 0;
};

bool parsePageArgs(const QStringList &args, PageArgs &a, bool envelopes)
{
    if (args.size() < 2) return false;
    a.file = args[1];
    for (qsizetype i = 2; i < args.size(); ++i) {
        const QString &f = args[i];
        const bool hasValue = i + 1 < args.size();
        if ((f == u"-o" || f == u"--output") && hasValue) a.out = args[++i];
        else if (envelopes && f == u"--period" && hasValue) a.period = args[++i];
        else if (envelopes && f == u"--all") a.all = true;
        else if (!envelopes && f == u"--title" && hasValue) {
            a.title = args[++i];
            a.hasTitle = true;
        } else if (!envelopes && f == u"--columns" && hasValue) {
            bool ok = false;
            a.columns = args[++i].toInt(&ok);
            if (!ok || a.columns < 1 || a.columns > 4) {
                err(QStringLiteral("--columns takes 1, 2, 3 or 4."));
                return false;
            }
        } else return false;
    }
    return !a.out.isEmpty() && (!envelopes || !a.period.isEmpty());
}

int nothingToPrint(const QString &what)
{
    err(QStringLiteral("There are no %1 to print; no file was written.").arg(what));
    return NothingToPrint;
}

// Writes the pages as one PDF; no page writes no file (what names the pages).
int writePages(const QList<qor::pages::Page> &pages, const QString &out, const QPageSize &paper, const QString &what)
{
    if (pages.isEmpty()) return nothingToPrint(what);
    QBuffer pdf;
    pdf.open(QIODevice::WriteOnly);
    QString why;
    if (!qor::pages::writePdf(pages, &pdf, paper, &why)) {
        err(QStringLiteral("The PDF for \"%1\" could not be made: %2").arg(shown(out), why));
        return NotWritten;
    }
    return writeOutput(pdf.data(), out);
}

int envelopes(const QStringList &args)
{
    PageArgs a;
    if (!parsePageArgs(args, a, true)) {
        std::fputs(HelpText, stderr);
        return Usage;
    }
    if (outputIsInput(a.out, {a.file})) return Usage;
    qor::Database db;
    QStringList problems;
    if (!load(db, a.file, problems)) return Rejected;
    bool periodFound = false;
    db.periods().forEach([&](QStringView, QStringView text) {
        const auto p = qor::PeriodView::parse(text);
        if (p && p->name == a.period) periodFound = true;
        return !periodFound;
    });
    if (!periodFound) {
        err(QStringLiteral("There is no bill period \"%1\" in \"%2\".").arg(a.period, shown(a.file)));
        return NotFound;
    }
    // The margins as the program reads them; the settings are not written:
    // an empty X-Margin means the defaults.
    QString xText = qor::settings::XMargin.stored();
    QString yText = qor::settings::YMargin.stored();
    if (xText.isEmpty()) {
        xText = QStringLiteral("2");
        yText = QStringLiteral("12");
    }
    qor::pages::EnvelopeInput in;
    for (int i = 0; i < 4; ++i) in.company[size_t(i)] = db.company()[size_t(i)];
    in.x = qor::pages::marginCentimetres(xText);
    in.y = qor::pages::marginCentimetres(yText);
    // The customers of the period in the order of the print tree; those who
    // owe stand ticked.
    QList<qor::pages::Page> pages;
    db.invoiceRecords().forEach([&](QStringView, QStringView text) {
        const auto r = qor::InvoiceRecordView::parse(text);
        if (!r || r->period != a.period) return true;
        if (!a.all && qor::Money::fromStoredText(r->balance).value_or(qor::Money()).isZero()) return true;
        const QString key = qor::numberKey(r->cid);
        if (!db.customers().contains(key)) return true;
        const auto c = qor::CustomerView::parse(db.customers().textOf(key));
        if (!c) return true;
        in.firstName = c->firstName.toString();
        in.lastName = c->lastName.toString();
        in.address = {c->address1.toString(), c->address2.toString(), c->address3.toString()};
        pages << qor::pages::composeEnvelope(in);
        return true;
    });
    const int rc = writePages(pages, a.out, qor::pages::defaultEnvelopePaper(), QStringLiteral("envelopes"));
    if (rc == Ok) QTextStream(stdout) << pages.size() << " envelopes\n";
    return rc;
}

int invoices(const QStringList &args)
{
    if (args.size() < 2) {
        std::fputs(HelpText, stderr);
        return Usage;
    }
    QString file = args[1], out, period, cid, each;
    bool all = false;
    int templateNumber = -2;
    QPageSize paper = qor::pages::defaultPaper();
    for (qsizetype i = 2; i < args.size(); ++i) {
        const QString &f = args[i];
        const bool hasValue = i + 1 < args.size();
        if ((f == u"-o" || f == u"--output") && hasValue) out = args[++i];
        else if (f == u"--period" && hasValue) period = args[++i];
        else if (f == u"--all") all = true;
        else if (f == u"--customer" && hasValue) {
            cid = args[++i];
            if (!isCustomerNumber(cid)) {
                err(QStringLiteral("--customer takes a customer number, not \"%1\".").arg(cid));
                return Usage;
            }
        } else if (f == u"--each" && hasValue) each = args[++i];
        else if (f == u"--template" && hasValue) {
            const QString t = args[++i];
            if (t != u"0" && t != u"1" && t != u"2") {
                err(QStringLiteral("--template takes 0, 1 or 2."));
                return Usage;
            }
            templateNumber = t.toInt();
        } else if (f == u"--paper" && hasValue) {
            const QString p = args[++i].toLower();
            if (p == u"letter") paper = QPageSize(QPageSize::Letter);
            else if (p == u"a4") paper = QPageSize(QPageSize::A4);
            else {
                err(QStringLiteral("--paper takes letter or a4."));
                return Usage;
            }
        } else {
            std::fputs(HelpText, stderr);
            return Usage;
        }
    }
    if (period.isEmpty() || out.isEmpty() == each.isEmpty() || (all && !cid.isEmpty())) {
        std::fputs(HelpText, stderr);
        return Usage;
    }
    if (!out.isEmpty() && outputIsInput(out, {file})) return Usage;
    qor::Database db;
    QStringList problems;
    if (!load(db, file, problems)) return Rejected;
    qor::InvoiceTree tree(1);
    if (const int rc = periodTree(db, file, period, cid, all, tree); rc != Ok) return rc;
    qor::invoicerun::RunValues run;
    if (const int rc = invoiceRunValues(db, period, templateNumber, run); rc != Ok) return rc;
    std::vector<int> customers;
    for (int node : tree.nodes())
        if (tree.kind(node) == qor::NodeKind::Customer) customers.push_back(node);

    if (out.isEmpty()) {
        // One PDF per customer, for e-mailing; duplicates make no sense there.
        run.options.printDuplicates = false;
        QList<std::pair<QString, QList<qor::pages::Page>>> invoices;
        for (int node : customers) {
            if (!tree.checked(node)) continue;
            QList<qor::pages::Page> invoice = qor::invoicerun::invoicePagesFor(db, tree, node, run);
            if (invoice.isEmpty()) continue;
            const qor::NodeValues &v = tree.values(node);
            invoices.append({qor::files::eachFileName(v.label, v.customer, period), std::move(invoice)});
        }
        if (invoices.isEmpty()) return nothingToPrint(QStringLiteral("invoices"));
        if (const QString why = qor::files::makePrivateFolder(each); !why.isEmpty()) {
            err(QStringLiteral("The folder \"%1\" could not be made: %2.").arg(shown(each), why));
            return NotWritten;
        }
        for (const auto &[name, invoice] : invoices) {
            const QString target = QDir(each).filePath(name);
            if (outputIsInput(target, {file})) return Usage;
            const int rc = writePages(invoice, target, paper, QStringLiteral("invoices"));
            if (rc != Ok) return rc;
        }
        QTextStream(stdout) << invoices.size() << " invoices\n";
        return Ok;
    }
    const QList<qor::pages::Page> pages = qor::invoicerun::composeInvoiceRun(db, tree, run);
    const int rc = writePages(pages, out, paper, QStringLiteral("invoices"));
    if (rc == Ok) QTextStream(stdout) << pages.size() << " pages\n";
    return rc;
}

int customers(const QStringList &args)
{
    PageArgs a;
    if (!parsePageArgs(args, a, false)) {
        std::fputs(HelpText, stderr);
        return Usage;
    }
    if (outputIsInput(a.out, {a.file})) return Usage;
    qor::Database db;
    QStringList problems;
    if (!load(db, a.file, problems)) return Rejected;
    if (db.customers().count() == 0) {
        err(QStringLiteral("There are no customers to print in \"%1\"; no file was written.").arg(shown(a.file)));
        return NothingToPrint;
    }
    namespace s = qor::settings;
    qor::pages::CustomerListOptions o;
    o.pageTitle = a.hasTitle ? a.title : s::PageTitle.get();
    o.columns = a.columns ? a.columns : s::customerListColumns();
    o.blankLines = s::customerListBlankLines();
    o.printAddress = s::PrintAddress.isOn();
    o.printEmail = s::PrintEmail.isOn();
    o.printPhone = s::PrintPhone.isOn();
    o.printNotes = s::PrintNotes.isOn();
    o.printPageNumbers = s::PrintPageNumbers.isOn();
    o.fontName = s::PrintFontName.get();
    o.fontStyleSize = s::PrintFontStyleSize.get();
    // Measured as the PDF draws: a twip a unit, no device of its own.
    const QList<qor::pages::Page> pages = qor::pages::composeCustomerList(db.customers(), o);
    const int rc = writePages(pages, a.out, qor::pages::defaultPaper(), QStringLiteral("customers"));
    if (rc == Ok) QTextStream(stdout) << pages.size() << " pages\n";
    return rc;
}

}  // namespace

int main(int argc, char **argv)
{
    // The page commands need fonts, so a GUI application without a screen.
    const bool pagesWanted = argc > 1 && (qstrcmp(argv[1], "envelopes") == 0 || qstrcmp(argv[1], "customers") == 0 ||
                                          qstrcmp(argv[1], "invoices") == 0 ||
                                          qstrcmp(argv[1], "statements") == 0 || qstrcmp(argv[1], "email") == 0);
    if (pagesWanted && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    std::unique_ptr<QCoreApplication> appPtr(pagesWanted ? new QGuiApplication(argc, argv)
                                                         : new QCoreApplication(argc, argv));
    QCoreApplication &app = *appPtr;
    QCoreApplication::setApplicationName(QStringLiteral("qorvane-cli"));
    QCoreApplication::setApplicationVersion(QStringLiteral(QOR_VERSION_TEXT));
    const QStringList args = app.arguments().mid(1);
    // Every file and folder this tool makes is the user's alone.
    ::umask(077);
    qor::files::processStartTime();

    if (args.size() == 1 && (args[0] == u"--help" || args[0] == u"-h")) {
        std::fputs(HelpText, stdout);
        return Ok;
    }
    if (args.size() == 1 && args[0] == u"--version") {
        std::fputs("qorvane-cli " QOR_VERSION_TEXT "\n", stdout);
        return Ok;
    }
    if (args.size() == 2 && args[0] == u"check") return check(args[1]);
    if (args.size() == 3 && args[0] == u"resave") return resave(args[1], args[2]);
    if (args.size() == 2 && args[0] == u"versions") return listVersions(args[1]);
    if (!args.isEmpty() && args[0] == u"envelopes") return envelopes(args);
    if (!args.isEmpty() && args[0] == u"customers") return customers(args);
    if (!args.isEmpty() && args[0] == u"invoices") return invoices(args);
    const qor::cli::LoadFile loadFile = [](qor::Database &db, const QString &path) {
        QStringList problems;
        return load(db, path, problems);
    };
    for (const auto &[name, command] : {std::pair{"statements", &qor::cli::statementsCommand},
                                        std::pair{"aging", &qor::cli::agingCommand},
                                        std::pair{"email", &qor::cli::emailCommand}}) {
        if (args.isEmpty() || args[0] != QLatin1String(name)) continue;
        const int rc = command(args, loadFile);
        if (rc == Usage) std::fputs(HelpText, stderr);
        return rc;
    }
    StatementOptions options;
    if (args.size() >= 2 && args[0] == u"periods" && readOptions(args.mid(2), false, options))
        return periods(args[1], options);
    if (args.size() >= 2 && args[0] == u"owing" && readOptions(args.mid(2), true, options))
        return owing(args[1], options);


    std::fputs(HelpText, stderr);
    return Usage;
}
