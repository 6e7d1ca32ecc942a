// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/statementcommands.h"

#include "cli/outputs.h"
#include "database/database.h"
#include "database/filesafety.h"
#include "database/rowtypes.h"
#include "statements/statementrun.h"

#include <QDir>
#include <QTextStream>

namespace qor::cli {

namespace {

// --as-of yyyy-mm-dd; today when not given.
bool readAsOf(const QString &text, QDate &asOf)
{
    asOf = QDate::fromString(text, QStringLiteral("yyyy-MM-dd"));
    if (!asOf.isValid()) err(QStringLiteral("--as-of takes a date written yyyy-mm-dd, such as 2024-06-30."));
    return asOf.isValid();
}

}  // namespace

int statementsCommand(const QStringList &args, const LoadFile &load)
{
    if (args.size() < 2) return Usage;
    const QString file = args[1];
    QString out, each, cid;
    QDate asOf = QDate::currentDate();
    int overdue = -1;
    for (qsizetype i = 2; i < args.size(); ++i) {
        const QString &f = args[i];
        const bool hasValue = i + 1 < args.size();
        if ((f == u"-o" || f == u"--output") && hasValue && out.isEmpty()) {
            out = args[++i];
        } else if (f == u"--each" && hasValue && each.isEmpty()) {
            each = args[++i];
        } else if (f == u"--customer" && hasValue && cid.isEmpty()) {
            cid = args[++i];
            if (!isCustomerNumber(cid)) {
                err(QStringLiteral("--customer takes a customer number, not \"%1\".").arg(cid));
                return Usage;
            }
        } else if (f == u"--as-of" && hasValue) {
            if (!readAsOf(args[++i], asOf)) return Usage;
        } else if (f == u"--overdue" && hasValue && overdue < 0) {
            bool ok = false;
            overdue = args[++i].toInt(&ok);
            if (!ok || overdue < 0) {
                err(QStringLiteral("--overdue takes a number of days, 0 or more."));
                return Usage;
            }
        } else {
            return Usage;
        }
    }
    if (out.isEmpty() == each.isEmpty()) return Usage;
    if (!out.isEmpty() && outputIsInput(out, {file})) return Usage;

    Database db;
    if (!load(db, file)) return Rejected;
    if (!cid.isEmpty() && !db.customers().contains(numberKey(QStringView(cid)))) {
        err(QStringLiteral("There is no customer %1 in the file.").arg(cid));
        return NotFound;
    }
    const bool reminder = overdue >= 0;
    statements::Report r =
        statements::report(db, asOf, statements::Detail::Records, cid.isEmpty() ? QStringList() : QStringList{cid});
    std::vector<statements::Account> accounts =
        reminder ? statements::dueReminders(std::move(r.accounts), overdue) : std::move(r.accounts);
    const QString day = asOf.toString(QStringLiteral("yyyy-MM-dd"));
    if (accounts.empty()) {
        if (reminder)
            err((cid.isEmpty() ? QStringLiteral("No customer is") : QStringLiteral("Customer %1 is not").arg(cid)) +
                QStringLiteral(" %1 or more days past due on %2: nothing written.").arg(overdue).arg(day));
        else
            err((cid.isEmpty() ? QStringLiteral("No customer owes anything")
                               : QStringLiteral("Customer %1 owes nothing").arg(cid)) +
                QStringLiteral(" on %1: nothing written.").arg(day));
        return NothingToPrint;
    }
    const statements::RunValues run = statements::storedRunValues(db, asOf, reminder);
    if (!each.isEmpty())
        for (const statements::Account &a : accounts)
            if (outputIsInput(
                    QDir(each).filePath(files::eachFileName(a.name, a.cid, statements::documentWhat(reminder, asOf))),
                    {file}))
                return Usage;
    QString why;
    if (!out.isEmpty()) {
        if (!statements::writeOneFile(db, accounts, run, out, &why)) {
            err(why);
            return NotWritten;
        }
    } else if (statements::writeEachFile(db, accounts, run, each, &why) != int(accounts.size())) {
        err(why);
        return NotWritten;
    }
    QTextStream(stdout) << accounts.size() << (reminder ? " reminders\n" : " statements\n");
    return Ok;
}

int agingCommand(const QStringList &args, const LoadFile &load)
{
    if (args.size() < 2) return Usage;
    QDate asOf = QDate::currentDate();
    bool plain = false;
    for (qsizetype i = 2; i < args.size(); ++i) {
        if (args[i] == u"--plain") plain = true;
        else if (args[i] == u"--as-of" && i + 1 < args.size()) {
            if (!readAsOf(args[++i], asOf)) return Usage;
        } else {
            return Usage;
        }
    }
    Database db;
    if (!load(db, args[1])) return Rejected;
    const statements::Report r = statements::report(db, asOf);
    auto amount = [plain](Money m) { return plain ? m.toPlainText() : m.toCurrencyText(); };
    QTextStream o(stdout);
    for (const statements::Account &a : r.accounts) {
        o << a.cid << '\t' << a.name << (a.archived ? " (archived)" : "") << '\t' << amount(a.total);
        for (const Money &m : a.aging) o << '\t' << amount(m);
        o << '\n';
    }
    o << "total\t\t" << amount(r.total);
    for (const Money &m : r.aging) o << '\t' << amount(m);
    o << '\n';
    return Ok;
}

}  // namespace qor::cli
