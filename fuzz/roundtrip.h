// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// The round trip every file must make: whatever the reader accepts, saved and
// read again, gives the same tables, and saved again, the same bytes.
#include <QByteArray>
#include <QString>

namespace qor::fuzz {

// Reads bytes as a database file (from a file in folder), then checks the
// round trip. Returns an empty text when it holds or the file is refused,
// else what went wrong.
QString checkRoundTrip(const QByteArray &bytes, const QString &folder);

}  // namespace qor::fuzz
