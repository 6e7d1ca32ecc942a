// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// The commands "statements" and "aging" of qorvane-cli: what customers owe,
// worked out by the same code as the Statements window.
#include <QString>
#include <QStringList>

#include <functional>

namespace qor {
class Database;
}

namespace qor::cli {

// Reads FILE as the program does at start; false (the reason told) when refused.
using LoadFile = std::function<bool(Database &, const QString &)>;

// args: the whole command line after the program, the command first.
// Both give the exit status.
int statementsCommand(const QStringList &args, const LoadFile &load);
int agingCommand(const QStringList &args, const LoadFile &load);

}  // namespace qor::cli
