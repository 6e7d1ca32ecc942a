#pragma once
// The per-user settings store: application "QOR", sections and keys, every
// value a text. Kept as an INI file at $XDG_CONFIG_HOME/QOR/QOR.conf (normally
// ~/.config/QOR/QOR.conf), one group per section.
#include <QString>
#include <QStringView>

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
    bool writtenBack;          // the default is written back when the key is read absent
};

// Every key the program keeps (FormPositions keys are made per form).
const KeyInfo *findKey(QStringView section, QStringView key);
const KeyInfo *allKeys(int *count);

// Raw access: read gives defaultValue when the key is absent.
QString read(const QString &section, const QString &key, const QString &defaultValue = {});
void write(const QString &section, const QString &key, const QString &value);
// A Boolean key read by its rule from the table.
bool isOn(const QString &section, const QString &key);

// GetStoredSetting / PutStoredSetting on the section "Settings".
QString getStoredSetting(const QString &key, const QString &defaultValue, const QString &option = {});
void putStoredSetting(const QString &key, const QString &value);

// Where the store lives (for messages and tests).
QString storePath();
// Writes pending changes to disk.
void sync();

}  // namespace qor::settings
