// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// The per-user settings store: application "QOR", sections and keys, every
// value a text. Kept as an INI file at $XDG_CONFIG_HOME/QOR/QOR.conf (normally
// ~/.config/QOR/QOR.conf), one group per section.
#include "database/versions.h"

#include <QString>
#include <QStringView>
#include <functional>

namespace qor::settings {

// How a stored Boolean is read when the key is absent.
enum class ReadRule {
    Plain,       // free text or number, no Boolean reading
    TrueCheck,   // on only when the value in lower case is "true": absent means off
    FalseCheck,  // on unless the value in lower case is "false": absent means on
};

struct KeyInfo {
    const char *section;
    const char *key;
    const char *defaultValue;  // nullptr when the default is worked out elsewhere
    ReadRule rule;
    bool writtenBack;  // the default is written back when the key is read absent
    // Numbers with a valid range: a value outside [low, high] counts as
    // outOfRange (not written back). low > high means no range.
    int low = 1;
    int high = 0;
    const char *outOfRange = nullptr;
    // GetStoredSetting keeps the case of this key's text ("KeepCaps").
    bool keepCaps = false;
    // The key is a suffix under a form's name (FormPositions).
    bool perForm = false;
};

// Every key the program keeps (FormPositions keys are made per form: findKey
// of "frmQOR_Left" gives the entry of "_Left").
const KeyInfo *findKey(QStringView section, QStringView key);
const KeyInfo *allKeys(int *count);

// Raw access: read gives defaultValue when the key is absent.
QString read(const QString &section, const QString &key, const QString &defaultValue = {});
void write(const QString &section, const QString &key, const QString &value);
// A Boolean key read by its rule from the table.
bool isOn(const QString &section, const QString &key);
// Stores a Boolean as "True" or "False", as a check box writes it.
void setOn(const QString &section, const QString &key, bool on);

// A key read by the table: a stored empty text counts as absent; an absent
// key gives the table's default (or defaultValue when the table has none),
// written back where the table says so. The case of the text is kept.
QString value(const QString &section, const QString &key, const QString &defaultValue = {});
// The leading number of value() (regional::val), rounded half to even, with
// the table's range rule applied. defaultValue serves keys whose default the
// table leaves open (form sizes) and keys outside the table.
int readNumber(const QString &section, const QString &key, int defaultValue = 0);
double readDouble(const QString &section, const QString &key, double defaultValue = 0.0);

// The customer list print options, by the table's rules.
int customerListColumns();     // 1 to 4
int customerListBlankLines();  // 0 to 4
// The envelope margins in centimetres; when X-Margin is empty both margins
// are set to their defaults first ("2" and "12"), as the envelope run does.
double envelopeMarginX();
double envelopeMarginY();

// GetStoredSetting / PutStoredSetting on the section "Settings".
QString getStoredSetting(const QString &key, const QString &defaultValue, const QString &option = {});
void putStoredSetting(const QString &key, const QString &value);

// CheckToConfirmEdits as stored (default "True"), not lower-cased: the
// customer edit and the item delete compare it exactly with "False", the
// customer delete in lower case with "false".
inline QString confirmEditsText()
{
    return read(QStringLiteral("Settings"), QStringLiteral("CheckToConfirmEdits"), QStringLiteral("True"));
}

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
