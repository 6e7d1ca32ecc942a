// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// What every command of qorvane-cli does the same way: its exit statuses,
// its messages, the refusal of an output that is one of its inputs, the
// verified writing of an output, and what a customer number may be.
#include <QByteArray>
#include <QString>
#include <QStringList>

namespace qor {
class Database;
class InvoiceTree;
namespace invoicerun {
struct RunValues;
}
}  // namespace qor

namespace qor::cli {

// Each exit status means one thing (told in --help and the manual page).
enum ExitCode {
    Ok = 0,             // done: read, and every output written and checked
    Usage = 1,          // the command line is wrong (an output that is one of the inputs, a bad value)
    Rejected = 2,       // an input file was refused: missing, not a regular file, damaged, unreadable
    NotWritten = 3,     // an output could not be written (or a message not sent); nothing of it is left behind
    NotFound = 4,       // the bill period or customer asked for is not in the file
    NothingToPrint = 5  // the file holds nothing the command would print or send
};

void err(const QString &text);
QString shown(const QString &path);

// An output must never replace an input: true (and told) when out is one of
// inputs by any name (a link, a hard link, another spelling).
bool outputIsInput(const QString &out, const QStringList &inputs);
// Writes a whole PDF to out through pages::savePdf; the exit status.
int writeOutput(const QByteArray &pdf, const QString &out);
// A customer number as the command line gives it: digits only, above zero.
bool isCustomerNumber(const QString &text);

// The print tree of a bill period of file, ticked as asked: the customers
// who owe (as the program ticks it), every customer of the period (all), or
// the one numbered cid. The exit status; NotFound is told.
int periodTree(const Database &db, const QString &file, const QString &period, const QString &cid, bool all,
               InvoiceTree &tree);
// The invoice run's values as stored, with the layout number given (below
// 0: the stored one). Usage (told) when the stored layout is unusable.
int invoiceRunValues(const Database &db, const QString &period, int templateNumber, invoicerun::RunValues &run);

}  // namespace qor::cli
