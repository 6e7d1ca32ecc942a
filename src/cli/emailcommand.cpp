// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/emailcommand.h"

#include "billing/invoicetree.h"
#include "cli/outputs.h"
#include "database/database.h"
#include "database/filesafety.h"
#include "database/rowtypes.h"
#include "mail/passwords.h"
#include "mail/smtp.h"
#include "printing/mailruns.h"

#include <QTextStream>

#include <memory>

namespace qor::cli {

namespace {

struct EmailArgs {
    QString file, period, cid, dryRun;
    bool all = false, statements = false;
    int reminderDays = -1;
};

bool parse(const QStringList &args, EmailArgs &a)
{
    if (args.size() < 2) return false;
    a.file = args[1];
    for (qsizetype i = 2; i < args.size(); ++i) {
        const QString &f = args[i];
        const bool hasValue = i + 1 < args.size();
        if (f == u"--period" && hasValue && a.period.isEmpty()) {
            a.period = args[++i];
        } else if (f == u"--all") {
            a.all = true;
        } else if (f == u"--statements") {
            a.statements = true;
        } else if (f == u"--reminders" && hasValue && a.reminderDays < 0) {
            bool ok = false;
            a.reminderDays = args[++i].toInt(&ok);
            if (!ok || a.reminderDays < 0) {
                err(QStringLiteral("--reminders takes a number of days, 0 or more."));
                return false;
            }
        } else if (f == u"--customer" && hasValue && a.cid.isEmpty()) {
            a.cid = args[++i];
            if (!isCustomerNumber(a.cid)) {
                err(QStringLiteral("--customer takes a customer number, not \"%1\".").arg(a.cid));
                return false;
            }
        } else if (f == u"--dry-run" && hasValue && a.dryRun.isEmpty()) {
            a.dryRun = args[++i];
        } else {
            return false;
        }
    }
    // One kind of message a run, and --all only with invoices.
    const int kinds = int(!a.period.isEmpty()) + int(a.statements) + int(a.reminderDays >= 0);
    return kinds == 1 && (!a.all || (!a.period.isEmpty() && a.cid.isEmpty()));
}

// Where the messages go: the account's server, or a folder of .eml files.
std::unique_ptr<mail::Transport> transportFor(const EmailArgs &a, const mail::MailAccount &account, int &rc)
{
    if (!a.dryRun.isEmpty()) {
        if (const QString why = files::makePrivateFolder(a.dryRun); !why.isEmpty()) {
            err(QStringLiteral("The folder \"%1\" could not be made: %2.").arg(shown(a.dryRun), why));
            rc = NotWritten;
            return {};
        }
        return std::make_unique<mail::EmlFolder>(a.dryRun);
    }
    if (const QString problem = account.problem(); !problem.isEmpty()) {
        err(problem);
        rc = Usage;
        return {};
    }
    QString password = qEnvironmentVariable("QORVANE_SMTP_PASSWORD");
    if (password.isEmpty() && !account.user.isEmpty()) {
        // The keyring answers through its own jobs: fetchAndWait runs an
        // event loop until it does.
        const mail::PasswordStore::Reply r = mail::PasswordStore::current().fetchAndWait(account.passwordKey());
        if (r.status != mail::PasswordStore::Status::Found) {
            err(QStringLiteral("No password for %1 on %2 (%3): store it in E-mail Settings, or give it in "
                               "QORVANE_SMTP_PASSWORD.")
                    .arg(account.user, account.server,
                         r.message.isEmpty() ? QStringLiteral("not in the keyring") : r.message));
            rc = Usage;
            return {};
        }
        password = r.password;
    }
    return std::make_unique<mail::SmtpSession>(mail::SmtpOptions::forAccount(account, password));
}

}  // namespace

int emailCommand(const QStringList &args, const LoadFile &load)
{
    EmailArgs a;
    if (!parse(args, a)) return Usage;
    Database db;
    if (!load(db, a.file)) return Rejected;
    if (!a.cid.isEmpty() && !db.customers().contains(numberKey(QStringView(a.cid)))) {
        err(QStringLiteral("There is no customer %1 in \"%2\".").arg(a.cid, shown(a.file)));
        return NotFound;
    }

    // The customers and their messages, as the window makes them.
    const mail::MailTexts texts = mail::loadTexts();
    InvoiceTree tree(1);
    invoicerun::RunValues invoiceRun;
    std::vector<statements::Account> accounts;
    statements::RunValues statementRun;
    QList<mail::MailCustomer> customers;
    mail::Compose compose;
    if (!a.period.isEmpty()) {
        if (const int rc = periodTree(db, a.file, a.period, a.cid, a.all, tree); rc != Ok) return rc;
        if (const int rc = invoiceRunValues(db, a.period, -1, invoiceRun); rc != Ok) return rc;
        customers = mailruns::tickedCustomers(db, tree);
        compose = mailruns::invoiceMessages(db, tree, invoiceRun, a.period, texts);
    } else {
        const QDate today = QDate::currentDate();
        const bool reminder = a.reminderDays >= 0;
        statements::Report r = statements::report(db, today, statements::Detail::Records,
                                                  a.cid.isEmpty() ? QStringList() : QStringList{a.cid});
        accounts = reminder ? statements::dueReminders(std::move(r.accounts), a.reminderDays) : std::move(r.accounts);
        statementRun = statements::storedRunValues(db, today, reminder);
        customers = mailruns::accountCustomers(db, accounts);
        compose = mailruns::statementMessages(db, accounts, statementRun, texts);
    }
    if (customers.isEmpty()) {
        err(QStringLiteral("Nobody in \"%1\" is due such a message; nothing was sent.").arg(shown(a.file)));
        return NothingToPrint;
    }

    const mail::MailAccount account = mail::loadAccount();
    int rc = Ok;
    const std::unique_ptr<mail::Transport> transport = transportFor(a, account, rc);
    if (!transport) return rc;
    mail::SentMailLog log;
    mail::SendRun run(account, *transport, transport->sends() ? &log : nullptr);
    const QList<mail::CustomerResult> results = run.run(customers, compose);

    // One line per customer: number, name, what became of the message, and
    // the server's words or the reason.
    QTextStream out(stdout);
    int done = 0;
    for (const mail::CustomerResult &r : results) {
        using O = mail::CustomerResult::Outcome;
        out << r.customer.number << '\t' << r.customer.name << '\t' << mail::outcomeText(r.outcome);
        if (!r.words.isEmpty()) out << '\t' << QString(r.words).replace(u'\n', u' ');
        out << '\n';
        if (r.outcome == O::Sent || r.outcome == O::Written) ++done;
        else if (r.outcome != O::NoAddress) rc = NotWritten;
    }
    out << done << (transport->sends() ? " sent\n" : " written\n");
    out.flush();
    if (!run.logError().isEmpty()) err(QStringLiteral("The list of sent mail could not be written: %1").arg(run.logError()));
    return rc;
}

}  // namespace qor::cli
