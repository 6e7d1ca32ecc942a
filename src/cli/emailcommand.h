// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// The command "email" of qorvane-cli: invoices, statements or reminders sent
// as PDF attachments with the stored account, by the same code as the
// window's "E-mail Selected", or written as .eml files for a trial.
#include "cli/statementcommands.h"

namespace qor::cli {

// args: the whole command line after the program, the command first. The
// exit status.
int emailCommand(const QStringList &args, const LoadFile &load);

}  // namespace qor::cli
