// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// The per-user settings store: application "QOR", sections and keys, every
// value a text. Kept as an INI file at $XDG_CONFIG_HOME/QOR/QOR.conf (normally
// ~/.config/QOR/QOR.conf), one group per section.
#include "database/versions.h"
#include "settings/keys.h"

#include <QString>
#include <functional>

namespace qor::settings {

// The store holds the keys of settings/keys.h; each is read and written
// through its typed object there (settings::ExpertMode.isOn()).

// The customer list print options, by the table's rules.
int customerListColumns();     // 1 to 4
int customerListBlankLines();  // 0 to 4
// The envelope margins in centimetres; when X-Margin is empty both margins
// are set to their defaults first ("2" and "12"), as the envelope run does.
double envelopeMarginX();
double envelopeMarginY();

// CheckToConfirmEdits as stored (default "True"), not lower-cased: the
// customer edit and the item delete compare it exactly with "False", the
// customer delete in lower case with "false".
QString confirmEditsText();

// The marks of frmMessage under "Messages", one per message key: a message
// is switched off by "True" in any case.
bool isMessageMarked(const QString &key);
void markMessage(const QString &key);

// Where the database file lives when no path is stored: QOR.xml in the
// program's folder if that folder is writable, else in the per-user data
// folder (~/.local/share/QOR, made if needed).
QString defaultDatabasePath();
// The same rule for a given program folder.
QString defaultDatabasePath(const QString &programFolder);
// FileHandling/DatabasePath, or defaultDatabasePath() (not written back).
QString databasePath();

// A store that can't be written is told once per run through report (the
// path and the system's reason); the program goes on without it.
void setProblemReporter(std::function<void(const QString &)> report);
bool reportedProblem();

// What each save keeps of earlier versions: FileHandling/VersionsKept,
// VersionsDays and VersionsMaxMB (megabytes).
versions::Policy versionPolicy();

// Where the store lives (for messages and tests).
QString storePath();
// Writes pending changes to disk.
void sync();

}  // namespace qor::settings
