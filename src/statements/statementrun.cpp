// SPDX-License-Identifier: GPL-3.0-or-later
#include "statements/statementrun.h"

#include "database/database.h"
#include "database/filesafety.h"
#include "database/regional.h"
#include "database/rowtypes.h"
#include "settings/settingsstore.h"

#include <QDir>

#include <cmath>

namespace qor::statements {

int reminderDays()
{
    return settings::ReminderDays.get();
}

void setReminderDays(int days)
{
    settings::ReminderDays.set(days);
}

QString reminderText()
{
    return settings::ReminderText.get(defaultReminderText());
}

void setReminderText(const QString &text)
{
    settings::ReminderText.set(text);
}

bool oneFilePerCustomer()
{
    return settings::StatementsOneFilePerCustomer.isOn();
}

void setOneFilePerCustomer(bool on)
{
    settings::StatementsOneFilePerCustomer.set(on);
}

RunValues storedRunValues(const Database &db, const QDate &asOf, bool reminder)
{
    RunValues run;
    run.company = db.company();
    // The layout the invoices print in; a number the forms don't have draws the first.
    const double chosen = regional::val(settings::PrintPreviewSelected.stored());
    run.templateNumber = chosen == 1 ? 1 : chosen == 2 ? 2
                                                       : 0;
    run.asOf = asOf;
    run.reminder = reminder;
    if (reminder) run.letter = reminderText();
    return run;
}

std::vector<Account> dueReminders(std::vector<Account> accounts, int days)
{
    std::erase_if(accounts, [days](const Account &a) { return !a.oldestDue.isValid() || a.daysPastDue < days; });
    return accounts;
}

pages::StatementInput statementInput(const Database &db, const Account &a, const RunValues &run)
{
    pages::StatementInput in;
    in.reminder = run.reminder;
    in.templateNumber = run.templateNumber;
    in.company = run.company;
    in.cid = a.cid;
    in.customer[0] = a.name;
    const QString key = numberKey(QStringView(a.cid));
    if (db.customers().contains(key)) {
        if (const auto c = CustomerRow::parse(db.customers().textOf(key))) {
            for (int i = 0; i < CustomerRow::EntryCount; ++i) in.customer[size_t(i + 1)] = c->entry(i);
        }
    }
    const QString dateForm = regional::dateFormatString();
    in.date = regional::formatDate(run.asOf, dateForm);
    in.lines.reserve(qsizetype(a.records.size()));
    for (const OpenRecord &r : a.records) in.lines.append({r.period, r.dueText, r.billed, r.balance});
    in.aging = a.aging;
    in.credits = a.credits;
    in.total = a.total;
    if (run.reminder) {
        ReminderFields f;
        f.customer = (in.customer[1] + u' ' + in.customer[2]).trimmed();
        if (f.customer.isEmpty()) f.customer = a.name;
        f.amount = a.total.toCurrencyText();
        f.oldestDue = regional::formatDate(a.oldestDue, dateForm);
        f.daysOverdue = QString::number(a.daysPastDue);
        f.company = run.company[0];
        in.letter = fillReminder(run.letter, f);
    }
    return in;
}

QList<pages::Page> statementPages(const Database &db, const Account &account, const RunValues &run)
{
    return pages::composeStatement(statementInput(db, account, run));
}

std::function<QList<pages::Page>()> pageSource(const Database &db, const std::vector<Account> &accounts,
                                               const RunValues &run)
{
    return [&db, &accounts, run, next = size_t(0)]() mutable {
        if (next >= accounts.size()) return QList<pages::Page>();
        return statementPages(db, accounts[next++], run);
    };
}

bool writeOneFile(const Database &db, const std::vector<Account> &accounts, const RunValues &run,
                  const QString &path, QString *error, const QPageSize &paper)
{
    QString why;
    if (pages::writePdf(pageSource(db, accounts, run), path, paper, &why)) return true;
    if (error) *error = QStringLiteral("\"%1\" could not be written: %2").arg(QDir::toNativeSeparators(path), why);
    return false;
}

int writeEachFile(const Database &db, const std::vector<Account> &accounts, const RunValues &run,
                  const QString &folder, QString *error, const QPageSize &paper)
{
    if (const QString why = files::makePrivateFolder(folder); !why.isEmpty()) {
        if (error)
            *error = QStringLiteral("The folder \"%1\" could not be made: %2.").arg(QDir::toNativeSeparators(folder), why);
        return 0;
    }
    int written = 0;
    for (const Account &a : accounts) {
        const QString path = QDir(folder).filePath(files::eachFileName(a.name, a.cid, documentWhat(run.reminder, run.asOf)));
        if (!writeOneFile(db, {a}, run, path, error, paper)) return written;
        ++written;
    }
    return written;
}

}  // namespace qor::statements
