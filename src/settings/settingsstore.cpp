// SPDX-License-Identifier: GPL-3.0-or-later
#include "settings/settingsstore.h"

#include "database/filesafety.h"
#include "database/regional.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QSettings>
#include <QStandardPaths>
#include <QStringList>
#include <QTemporaryFile>
#include <QVariant>

#include <unistd.h>
#include <cerrno>
#include <cstring>

#include <cmath>
#include <iterator>
#include <limits>

namespace qor::settings {

namespace {

QString fullKey(const QString &section, const QString &key)
{
    return section + u'/' + key;
}

// The raw text under a key, or a null QString when the key is absent. A value
// edited by hand with a comma comes back from the INI reader as a list; it is
// put back together so no text is lost.
QString rawText(const QString &section, const QString &key)
{
    QSettings store(storePath(), QSettings::IniFormat);
    const QVariant v = store.value(fullKey(section, key));
    if (!v.isValid())
        return {};
    if (v.typeId() == QMetaType::QStringList)
        return v.toStringList().join(QStringLiteral(", "));
    QString t = v.toString();
    if (t.isNull())
        t = QLatin1String("");  // present but empty stays distinguishable from absent
    return t;
}

// Round half to even, as the program has always turned texts into whole
// numbers, kept inside the range of int.
int toWhole(double v)
{
    if (!std::isfinite(v))
        return 0;
    const double r = std::nearbyint(v);
    if (r >= double(std::numeric_limits<int>::max()))
        return std::numeric_limits<int>::max();
    if (r <= double(std::numeric_limits<int>::min()))
        return std::numeric_limits<int>::min();
    return int(r);
}

}  // namespace

namespace {

std::function<void(const QString &)> s_reporter;
bool s_reported = false;

// Why the store at path can't be written, in the system's words.
QString reasonStoreFails(const QString &path)
{
    const QFileInfo info(path);
    if (const QString why = files::makePrivateFolder(info.absolutePath()); !why.isEmpty()) return why;
    // The store is written beside itself and renamed: try the same.
    QTemporaryFile probe(info.absolutePath() + QStringLiteral("/.QOR-probe-XXXXXX"));
    if (!probe.open()) return probe.errorString();
    const QByteArray block(4096, ' ');
    if (probe.write(block) != block.size() || !probe.flush()) return probe.errorString();
    if (::fsync(probe.handle()) != 0) return QString::fromLocal8Bit(std::strerror(errno));
    if (info.exists() && !info.isWritable()) return QStringLiteral("Permission denied");
    return QStringLiteral("the file could not be written");
}

// Every write of the store goes through here.
void write(const QString &section, const QString &key, const QString &value)
{
    QSettings store(storePath(), QSettings::IniFormat);
    store.setValue(fullKey(section, key), value);
    store.sync();
    if (store.status() == QSettings::NoError || s_reported || !s_reporter) return;
    s_reported = true;
    s_reporter(QStringLiteral("The settings cannot be stored in \"%1\": %2.\r\n\r\nThe program goes on, but the "
                              "options changed now and the name of the open database are forgotten when it ends.")
                   .arg(QDir::toNativeSeparators(storePath()), reasonStoreFails(storePath())));
}

}  // namespace

void setProblemReporter(std::function<void(const QString &)> report)
{
    s_reporter = std::move(report);
    s_reported = false;
}

namespace {

// A key read by the table: a stored empty text counts as absent.
QString value(const KeyInfo &info, const QString &key, const QString &fallback)
{
    const QString stored = rawText(QString::fromLatin1(info.section), key);
    if (!stored.isEmpty())
        return stored;
    if (!info.defaultValue)
        return fallback;
    const QString def = QString::fromUtf8(info.defaultValue);
    if (info.writtenBack)
        write(QString::fromLatin1(info.section), key, def);
    return def;
}

int readNumber(const KeyInfo &info, const QString &key, int fallback)
{
    const QString stored = rawText(QString::fromLatin1(info.section), key);
    if (stored.isEmpty() && !info.defaultValue)
        return fallback;
    const int n = toWhole(regional::val(value(info, key, {})));
    if (info.low <= info.high && (n < info.low || n > info.high) && info.outOfRange)
        return toWhole(regional::val(QString::fromUtf8(info.outOfRange)));
    return n;
}

QString onOff(bool on) { return on ? QStringLiteral("True") : QStringLiteral("False"); }

}  // namespace

QString Key::stored() const { return rawText(section(), name()); }

void Key::store(const QString &text) const { write(section(), name(), text); }

QString Key::text(const QString &fallback) const { return value(info(), name(), fallback); }

QString Key::storedSetting() const
{
    QString v = stored();
    if (!info().keepCaps)
        v = v.toLower();
    if (v.isEmpty()) {
        const QString def = defaultText();
        store(def);
        v = info().keepCaps ? def : def.toLower();
    }
    return v;
}

bool Flag::isOn() const
{
    const QString t = stored().toLower();
    if (info().rule == ReadRule::FalseCheck)
        return t != QLatin1String("false");
    return t == QLatin1String("true");
}

void Flag::set(bool on) const { store(onOff(on)); }

int Number::get(int fallback) const { return readNumber(info(), name(), fallback); }

void Number::set(int n) const { store(QString::number(n)); }

QString FormKey::stored(const QString &form) const
{
    return rawText(QString::fromLatin1(info().section), name(form));
}

int FormKey::get(const QString &form, int fallback) const { return readNumber(info(), name(form), fallback); }

void FormKey::set(const QString &form, const QString &text) const
{
    write(QString::fromLatin1(info().section), name(form), text);
}

QString confirmEditsText()
{
    const QString t = CheckToConfirmEdits.stored();
    return t.isNull() ? QStringLiteral("True") : t;
}

namespace {
const QString MessagesSection = QStringLiteral("Messages");
}  // namespace

bool isMessageMarked(const QString &key)
{
    return rawText(MessagesSection, key).toLower() == QLatin1String("true");
}

void markMessage(const QString &key) { write(MessagesSection, key, QStringLiteral("True")); }

int customerListColumns() { return Columns.get(); }

int customerListBlankLines() { return BlankLinesBetween.get(); }

namespace {
void ensureEnvelopeMargins()
{
    if (XMargin.stored().isEmpty()) {
        XMargin.store(XMargin.defaultText());
        YMargin.store(YMargin.defaultText());
    }
}
}  // namespace

double envelopeMarginX()
{
    ensureEnvelopeMargins();
    return regional::val(XMargin.stored());
}

double envelopeMarginY()
{
    ensureEnvelopeMargins();
    // Read as it stands: an empty Y-Margin beside a stored X-Margin is 0 and
    // stays empty; only an empty X-Margin brings the defaults back.
    return regional::val(YMargin.stored());
}

QString defaultDatabasePath()
{
    return defaultDatabasePath(QCoreApplication::applicationDirPath());
}

QString defaultDatabasePath(const QString &appDir)
{
    const QFileInfo dirInfo(appDir);
    // A program installed with the system's programs (/usr/bin and the like)
    // keeps each user's books in that user's data folder, even for root, who
    // could write there: the system's folders belong to the package manager.
    const QString canonical = dirInfo.canonicalFilePath();
    const bool systemFolder = canonical.startsWith(QLatin1String("/usr/")) || canonical == QLatin1String("/bin") ||
                              canonical == QLatin1String("/sbin");
    if (!appDir.isEmpty() && dirInfo.isDir() && dirInfo.isWritable() && !systemFolder)
        return QDir(appDir).filePath(QStringLiteral("QOR.xml"));
    const QString base = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    const QString dir = base + QStringLiteral("/QOR");
    QDir().mkpath(dir);
    return dir + QStringLiteral("/QOR.xml");
}

QString databasePath()
{
    const QString stored = DatabasePath.stored();
    return stored.isEmpty() ? defaultDatabasePath() : stored;
}

QString storePath()
{
    // Looked up at every use so the store follows XDG_CONFIG_HOME as set now.
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + QStringLiteral("/QOR/QOR.conf");
}

void sync()
{
    QSettings store(storePath(), QSettings::IniFormat);
    store.sync();
}

bool reportedProblem() { return s_reported; }

versions::Policy versionPolicy()
{
    versions::Policy p;
    p.newest = VersionsKept.get();
    p.days = VersionsDays.get();
    p.maxBytes = qint64(VersionsMaxMB.get()) << 20;
    return p;
}

}  // namespace qor::settings
