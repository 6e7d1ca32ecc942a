// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// An open bill-period entry as a few lines of text, for the recovery copy:
// what was typed and billed comes back after a crash even though no table
// holds it yet. Every field is percent-encoded, so any name fits on its line.
#include "billing/billing.h"

#include <QByteArray>
#include <optional>

namespace qor::billing {

QByteArray encodeEntry(const BillEntry &entry);
// Nothing when the text is not an entry this program wrote (damaged or cut
// short): a half-read entry would bill the wrong things.
std::optional<BillEntry> decodeEntry(const QByteArray &text);

}  // namespace qor::billing
