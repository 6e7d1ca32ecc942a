// qorvane-cli: checks and re-saves database files without the window, and
// writes envelopes and the customer list as PDF. It reads a file exactly as
// the program does at start (the file, then the customer names of the
// records) and writes exactly what the program's save writes, in the user's
// locale. Pages come from the same page layer as the program's printing.
#include "billing/accounts.h"
#include "database/database.h"
#include "database/regional.h"
#include "database/rowtypes.h"
#include "pages/customerlist.h"
#include "pages/envelope.h"
#include "pages/pdfoutput.h"
#include "shell/settingsstore.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QStringList>
#include <QTextStream>

#include <cstdio>
#include <memory>

namespace {

enum ExitCode { Ok = 0, Usage = 1, Rejected = 2, NotWritten = 3 };

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
    "  qorvane-cli --help          show this text\n"
    "  qorvane-cli --version       show the version\n"
    "\n"
    "Exit status: 0 the file was read (and written), 1 wrong arguments,\n"
    "2 the file was rejected (the reason goes to standard error),\n"
    "3 the output file could not be written.\n";

void err(const QString &text)
{
    QTextStream e(stderr);
    e << text << Qt::endl;
}

// Reads a file as the program does at start. A missing file is an error here:
// checking must not create anything.
bool load(qor::Database &db, const QString &path, QStringList &problems)
{
    const qor::ReadResult r = db.read(path, qor::Database::MissingFile::Reject);
    if (!r.ok()) {
        err(r.message);
        return false;
    }
    problems = db.fillInvoiceRecordNames();
    return true;
}

int check(const QString &path)
{
    qor::Database db;
    QStringList problems;
    if (!load(db, path, problems)) return Rejected;

    int customersArchived = 0;
    db.lvwCustomers.forEach([&](QStringView, QStringView text) {
        customersArchived += qor::customer::isArchived(text);
        return true;
    });
    int productsArchived = 0;
    db.lvwPAndS.forEach([&](QStringView, QStringView text) {
        productsArchived += qor::item::isArchived(text);
        return true;
    });

    QTextStream out(stdout);
    out << "customers: " << db.lvwCustomers.count() - customersArchived << " current, " << customersArchived
        << " archived\n";
    out << "products: " << db.lvwPAndS.count() - productsArchived << " current, " << productsArchived
        << " archived\n";
    out << "bill periods: " << db.lvwPeriods.count() << '\n';
    out << "invoice records: " << db.lvwInvoiceRecords.count() << '\n';
    for (const QString &p : problems) out << p << '\n';
    return Ok;
}

int resave(const QString &in, const QString &outPath)
{
    qor::Database db;
    QStringList problems;
    if (!load(db, in, problems)) return Rejected;
    for (const QString &p : problems) err(p);
    const qor::SaveResult s = db.save(outPath);
    if (!s.ok) {
        err(s.message);
        return NotWritten;
    }
    if (!s.keptCopy.isEmpty()) err(QStringLiteral("The old content of the file was kept as \"%1\".").arg(s.keptCopy));
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
            if (qor::plainNumber(o.customer).isEmpty()) return false;
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
            << qor::accounts::formatCents(p.billedCents, o.plain) << '\t'
            << qor::accounts::formatCents(p.owedCents, o.plain) << '\t' << p.paid << '\n';
    }
    return Ok;
}

int owing(const QString &path, const StatementOptions &o)
{
    qor::Database db;
    QStringList problems;
    if (!load(db, path, problems)) return Rejected;
    QTextStream out(stdout);
    const qor::accounts::Owing statement = qor::accounts::owing(db, o.customer);
    for (const qor::accounts::OwingCustomer &c : statement.customers) {
        out << c.name << '\t' << c.cid << '\n';
        for (const auto &[period, cents] : c.periods)
            out << '\t' << period << '\t' << qor::accounts::formatCents(cents, o.plain) << '\n';
        out << "\ttotal\t" << qor::accounts::formatCents(c.totalCents, o.plain) << '\n';
    }
    out << "total owed\t" << qor::accounts::formatCents(statement.totalCents, o.plain) << '\n';
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
        else if (!envelopes && f == u"--title" && hasValue) { a.title = args[++i]; a.hasTitle = true; }
        else if (!envelopes && f == u"--columns" && hasValue) {
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

int writePages(const QList<qor::pages::Page> &pages, const QString &out, const QPageSize &paper)
{
    QString why;
    if (!qor::pages::writePdf(pages, out, paper, &why)) {
        err(why);
        return NotWritten;
    }
    return Ok;
}

int envelopes(const QStringList &args)
{
    PageArgs a;
    if (!parsePageArgs(args, a, true)) {
        std::fputs(HelpText, stderr);
        return Usage;
    }
    qor::Database db;
    QStringList problems;
    if (!load(db, a.file, problems)) return Rejected;
    bool periodFound = false;
    db.lvwPeriods.forEach([&](QStringView, QStringView text) {
        const auto p = qor::PeriodView::parse(text);
        if (p && p->name == a.period) periodFound = true;
        return !periodFound;
    });
    if (!periodFound) {
        err(QStringLiteral("There is no bill period \"%1\" in the file.").arg(a.period));
        return Rejected;
    }
    // The margins as the program reads them; the settings are not written:
    // an empty X-Margin means the defaults.
    const QString printing = QStringLiteral("Printing");
    QString xText = qor::settings::read(printing, QStringLiteral("X-Margin"));
    QString yText = qor::settings::read(printing, QStringLiteral("Y-Margin"));
    if (xText.isEmpty()) {
        xText = QStringLiteral("2");
        yText = QStringLiteral("12");
    }
    qor::pages::EnvelopeInput in;
    for (int i = 0; i < 4; ++i) in.company[size_t(i)] = db.company[size_t(i)];
    in.x = qor::pages::marginCentimetres(xText);
    in.y = qor::pages::marginCentimetres(yText);
    // The customers of the period in the order of the print tree; those who
    // owe stand ticked.
    QList<qor::pages::Page> pages;
    db.lvwInvoiceRecords.forEach([&](QStringView, QStringView text) {
        const auto r = qor::InvoiceRecordView::parse(text);
        if (!r || r->period != a.period) return true;
        if (!a.all && qor::regional::val(r->balance) == 0) return true;
        const QString key = qor::numberKey(r->cid);
        if (!db.lvwCustomers.contains(key)) return true;
        const auto c = qor::CustomerView::parse(db.lvwCustomers.textOf(key));
        if (!c) return true;
        in.firstName = c->firstName.toString();
        in.lastName = c->lastName.toString();
        in.address = {c->address1.toString(), c->address2.toString(), c->address3.toString()};
        pages << qor::pages::composeEnvelope(in);
        return true;
    });
    const int rc = writePages(pages, a.out, qor::pages::defaultEnvelopePaper());
    if (rc == Ok) QTextStream(stdout) << pages.size() << " envelopes\n";
    return rc;
}

int customers(const QStringList &args)
{
    PageArgs a;
    if (!parsePageArgs(args, a, false)) {
        std::fputs(HelpText, stderr);
        return Usage;
    }
    qor::Database db;
    QStringList problems;
    if (!load(db, a.file, problems)) return Rejected;
    if (db.lvwCustomers.count() == 0) {
        err(QStringLiteral("There are no customers to print!"));
        return Rejected;
    }
    namespace s = qor::settings;
    const QString S = QStringLiteral("CustomerListPrint");
    qor::pages::CustomerListOptions o;
    o.pageTitle = a.hasTitle ? a.title : s::value(S, QStringLiteral("PageTitle"));
    o.columns = a.columns ? a.columns : s::customerListColumns();
    o.blankLines = s::customerListBlankLines();
    o.printAddress = s::isOn(S, QStringLiteral("PrintAddress"));
    o.printEmail = s::isOn(S, QStringLiteral("PrintEmail"));
    o.printPhone = s::isOn(S, QStringLiteral("PrintPhone"));
    o.printNotes = s::isOn(S, QStringLiteral("PrintNotes"));
    o.printPageNumbers = s::isOn(S, QStringLiteral("PrintPageNumbers"));
    o.fontName = s::value(S, QStringLiteral("PrintFontName"));
    o.fontStyleSize = s::value(S, QStringLiteral("PrintFontStyleSize"));
    // Measured as the PDF draws: a twip a unit, no device of its own.
    const QList<qor::pages::Page> pages = qor::pages::composeCustomerList(db.lvwCustomers, o);
    const int rc = writePages(pages, a.out, qor::pages::defaultPaper());
    if (rc == Ok) QTextStream(stdout) << pages.size() << " pages\n";
    return rc;
}

}  // namespace

int main(int argc, char **argv)
{
    // The page commands need fonts, so a GUI application without a screen.
    const bool pagesWanted = argc > 1 && (qstrcmp(argv[1], "envelopes") == 0 || qstrcmp(argv[1], "customers") == 0);
    if (pagesWanted && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    std::unique_ptr<QCoreApplication> appPtr(pagesWanted ? new QGuiApplication(argc, argv)
                                                          : new QCoreApplication(argc, argv));
    QCoreApplication &app = *appPtr;
    QCoreApplication::setApplicationName(QStringLiteral("qorvane-cli"));
    QCoreApplication::setApplicationVersion(QStringLiteral(QOR_VERSION_TEXT));
    const QStringList args = app.arguments().mid(1);

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
    if (!args.isEmpty() && args[0] == u"envelopes") return envelopes(args);
    if (!args.isEmpty() && args[0] == u"customers") return customers(args);
    StatementOptions options;
    if (args.size() >= 2 && args[0] == u"periods" && readOptions(args.mid(2), false, options))
        return periods(args[1], options);
    if (args.size() >= 2 && args[0] == u"owing" && readOptions(args.mid(2), true, options))
        return owing(args[1], options);


    std::fputs(HelpText, stderr);
    return Usage;
}
