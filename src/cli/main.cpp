// qorvane-cli: checks and re-saves database files without the window.
// It reads a file exactly as the program does at start (the file, then the
// customer names of the records) and writes exactly what the program's save
// writes, in the user's locale.
#include "billing/accounts.h"
#include "database/database.h"
#include "database/rowtypes.h"

#include <QCoreApplication>
#include <QStringList>
#include <QTextStream>

#include <cstdio>

namespace {

enum ExitCode { Ok = 0, Usage = 1, Rejected = 2, NotWritten = 3 };

const char *const HelpText =
    "Usage:\n"
    "  qorvane-cli check FILE      read FILE as the program does at start and\n"
    "                              print what it holds and any problem noticed\n"
    "  qorvane-cli resave IN OUT   read IN as check does and write it to OUT\n"
    "                              exactly as the program saves a database\n"
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

}  // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
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
    StatementOptions options;
    if (args.size() >= 2 && args[0] == u"periods" && readOptions(args.mid(2), false, options))
        return periods(args[1], options);
    if (args.size() >= 2 && args[0] == u"owing" && readOptions(args.mid(2), true, options))
        return owing(args[1], options);

    std::fputs(HelpText, stderr);
    return Usage;
}
