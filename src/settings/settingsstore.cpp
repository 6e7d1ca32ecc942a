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

using R = ReadRule;

// Every key the program keeps, with its default and how it is read. The rest
// of the program asks this table instead of repeating defaults at each read.
// Indexes of panels, title options and preview templates only ever come from
// the program itself; one edited by hand to a value with no control behind
// it reads as the default instead.
const KeyInfo kKeys[] = {
    // section, key, default, read rule, written back when absent, range...
    {"Settings", "CheckToConfirmEdits", "True", R::FalseCheck, false},
    {"Settings", "ExpertMode", "False", R::TrueCheck, false},
    {"Settings", "LastClicked", "0", R::Plain, true, 0, 6, "0"},
    {"Settings", "InvoiceTitleOption", "0", R::Plain, true, 0, 2, "0"},
    {"Settings", "InvoiceTitleText", "", R::Plain, false, 1, 0, nullptr, true},
    {"Settings", "InvoiceTitleSize", "2", R::Plain, true, 0, 2, "2"},
    {"FileHandling", "DatabasePath", nullptr, R::Plain, false},
    // Earlier versions kept by each save: the newest so many, one a day for
    // so many days, and all of them within so many megabytes.
    {"FileHandling", "VersionsKept", "20", R::Plain, false, 1, 10000, "20"},
    {"FileHandling", "VersionsDays", "60", R::Plain, false, 0, 36500, "60"},
    {"FileHandling", "VersionsMaxMB", "2048", R::Plain, false, 1, 1 << 30, "2048"},
    {"Printing", "AddInvoiceDateToInvoice", "False", R::TrueCheck, false},
    {"Printing", "PrintDuplicateInvoices", "False", R::TrueCheck, false},
    {"Printing", "KeepTwelveLines", "True", R::FalseCheck, false},
    {"Printing", "MoveBottomTextAccordingly", "False", R::TrueCheck, false},
    {"Printing", "PrintPreviewSelected", "0", R::Plain, false, 0, 2, "0"},
    {"Printing", "X-Margin", "2", R::Plain, true},
    {"Printing", "Y-Margin", "12", R::Plain, true},
    // The Statements window: reminders after so many days, the letter (its
    // default lives with the statements), one PDF per customer or one for all.
    {"Printing", "ReminderDays", "14", R::Plain, false, 1, 9999, "14"},
    {"Printing", "ReminderText", nullptr, R::Plain, false, 1, 0, nullptr, true},
    {"Printing", "StatementsOneFilePerCustomer", "False", R::TrueCheck, false},
    {"BrowseRecall", "view", "lvwpeek", R::Plain, false},
    {"BrowseRecall", "LastViewedCustomer", "1", R::Plain, false},
    {"Messages", "DontShowExplanationOfClosingBooks", "False", R::TrueCheck, false},
    {"Messages", "DontShowNeedToFillCompanyInfo", "False", R::TrueCheck, false},
    {"Messages", "DeletedCustomer", "False", R::TrueCheck, false},
    {"FormPositions", "_WindowState", "0", R::Plain, false, 1, 0, nullptr, false, true},
    {"FormPositions", "_Left", "-999", R::Plain, false, 1, 0, nullptr, false, true},
    {"FormPositions", "_Top", "-999", R::Plain, false, 1, 0, nullptr, false, true},
    {"FormPositions", "_Width", nullptr, R::Plain, false, 1, 0, nullptr, false, true},
    {"FormPositions", "_Height", nullptr, R::Plain, false, 1, 0, nullptr, false, true},
    {"CustomerListPrint", "PageTitle", "Customer List", R::Plain, false},
    {"CustomerListPrint", "Columns", "3", R::Plain, false, 1, 4, "3"},
    {"CustomerListPrint", "BlankLinesBetween", "1", R::Plain, true, 0, 4, "1"},
    {"CustomerListPrint", "PrintAddress", "True", R::FalseCheck, false},
    {"CustomerListPrint", "PrintEmail", "True", R::FalseCheck, false},
    {"CustomerListPrint", "PrintPhone", "True", R::FalseCheck, false},
    {"CustomerListPrint", "PrintNotes", "True", R::FalseCheck, false},
    {"CustomerListPrint", "PrintPageNumbers", "True", R::FalseCheck, false},
    {"CustomerListPrint", "PrintFontName", "Arial", R::Plain, false},
    {"CustomerListPrint", "PrintFontStyleSize", "Regular 8", R::Plain, false},
    // The e-mail account (the password is kept in the keyring, never here)
    // and the texts of the messages; SmtpPort's default follows Security.
    {"EMail", "SmtpServer", "", R::Plain, false},
    {"EMail", "SmtpPort", nullptr, R::Plain, false, 1, 65535},
    {"EMail", "Security", "SSL/TLS", R::Plain, false},
    {"EMail", "UserName", "", R::Plain, false},
    {"EMail", "SenderName", "", R::Plain, false},
    {"EMail", "SenderAddress", "", R::Plain, false},
    {"EMail", "ReplyTo", "", R::Plain, false},
    {"EMail", "SendMeACopy", "False", R::TrueCheck, false},
    {"EMail", "CAFile", "", R::Plain, false},
    {"EMail", "InvoiceSubject", "Invoice {period} from {company}", R::Plain, false},
    {"EMail", "InvoiceBody",
     "Dear {customer},\n\nplease find attached our invoice for {period}. The amount of {amount} is due by "
     "{due date}.\n\nThank you for your business.\n\n{company}\n",
     R::Plain, false},
    {"EMail", "StatementSubject", "Statement of account from {company}", R::Plain, false},
    {"EMail", "StatementBody",
     "Dear {customer},\n\nplease find attached your statement of account as of {period}. The balance is "
     "{amount}.\n\nKind regards,\n\n{company}\n",
     R::Plain, false},
    {"EMail", "ReminderSubject", "Payment reminder from {company}", R::Plain, false},
    {"EMail", "ReminderBody",
     "Dear {customer},\n\nour records show {amount} that was due by {due date} and is still open. The details are "
     "attached. If you have paid in the meantime, please disregard this reminder.\n\nKind regards,\n\n"
     "{company}\n",
     R::Plain, false},
};

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

const KeyInfo *allKeys(int *count)
{
    if (count)
        *count = int(std::size(kKeys));
    return kKeys;
}

const KeyInfo *findKey(QStringView section, QStringView key)
{
    for (const KeyInfo &k : kKeys) {
        if (section.compare(QLatin1String(k.section), Qt::CaseInsensitive) != 0)
            continue;
        if (k.perForm) {
            if (key.endsWith(QLatin1String(k.key), Qt::CaseInsensitive) && key.size() > qsizetype(qstrlen(k.key)))
                return &k;
        } else if (key.compare(QLatin1String(k.key), Qt::CaseInsensitive) == 0) {
            return &k;
        }
    }
    return nullptr;
}

QString read(const QString &section, const QString &key, const QString &defaultValue)
{
    const QString t = rawText(section, key);
    return t.isNull() ? defaultValue : t;
}

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

}  // namespace

void setProblemReporter(std::function<void(const QString &)> report)
{
    s_reporter = std::move(report);
    s_reported = false;
}

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

QString value(const QString &section, const QString &key, const QString &defaultValue)
{
    const QString stored = rawText(section, key);
    if (!stored.isEmpty())
        return stored;
    const KeyInfo *info = findKey(section, key);
    if (!info || !info->defaultValue)
        return defaultValue;
    const QString def = QString::fromUtf8(info->defaultValue);
    if (info->writtenBack)
        write(section, key, def);
    return def;
}

bool isOn(const QString &section, const QString &key)
{
    const QString t = rawText(section, key).toLower();
    const KeyInfo *info = findKey(section, key);
    if (info && info->rule == ReadRule::FalseCheck)
        return t != QLatin1String("false");
    return t == QLatin1String("true");
}

void setOn(const QString &section, const QString &key, bool on)
{
    write(section, key, on ? QStringLiteral("True") : QStringLiteral("False"));
}

double readDouble(const QString &section, const QString &key, double defaultValue)
{
    const KeyInfo *info = findKey(section, key);
    const QString stored = rawText(section, key);
    if (stored.isEmpty() && (!info || !info->defaultValue))
        return defaultValue;
    return regional::val(value(section, key));
}

int readNumber(const QString &section, const QString &key, int defaultValue)
{
    const KeyInfo *info = findKey(section, key);
    const QString stored = rawText(section, key);
    if (stored.isEmpty() && (!info || !info->defaultValue))
        return defaultValue;
    const int n = toWhole(regional::val(value(section, key)));
    if (info && info->low <= info->high && (n < info->low || n > info->high) && info->outOfRange)
        return toWhole(regional::val(QString::fromUtf8(info->outOfRange)));
    return n;
}

QString getStoredSetting(const QString &key, const QString &defaultValue, const QString &option)
{
    const QString section = QStringLiteral("Settings");
    const bool keepCaps = option == QLatin1String("KeepCaps");
    QString v = read(section, key);
    if (!keepCaps)
        v = v.toLower();
    if (v.isEmpty()) {
        write(section, key, defaultValue);
        v = keepCaps ? defaultValue : defaultValue.toLower();
    }
    return v;
}

void putStoredSetting(const QString &key, const QString &value)
{
    write(QStringLiteral("Settings"), key, value);
}

int customerListColumns()
{
    return readNumber(QStringLiteral("CustomerListPrint"), QStringLiteral("Columns"));
}

int customerListBlankLines()
{
    return readNumber(QStringLiteral("CustomerListPrint"), QStringLiteral("BlankLinesBetween"));
}

namespace {
void ensureEnvelopeMargins()
{
    const QString printing = QStringLiteral("Printing");
    if (rawText(printing, QStringLiteral("X-Margin")).isEmpty()) {
        const KeyInfo *x = findKey(printing, u"X-Margin");
        const KeyInfo *y = findKey(printing, u"Y-Margin");
        write(printing, QStringLiteral("X-Margin"), QString::fromUtf8(x->defaultValue));
        write(printing, QStringLiteral("Y-Margin"), QString::fromUtf8(y->defaultValue));
    }
}
}  // namespace

double envelopeMarginX()
{
    ensureEnvelopeMargins();
    return regional::val(rawText(QStringLiteral("Printing"), QStringLiteral("X-Margin")));
}

double envelopeMarginY()
{
    ensureEnvelopeMargins();
    // Read as it stands: an empty Y-Margin beside a stored X-Margin is 0 and
    // stays empty; only an empty X-Margin brings the defaults back.
    return regional::val(rawText(QStringLiteral("Printing"), QStringLiteral("Y-Margin")));
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
    const QString stored = rawText(QStringLiteral("FileHandling"), QStringLiteral("DatabasePath"));
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
    const QString s = QStringLiteral("FileHandling");
    versions::Policy p;
    p.newest = readNumber(s, QStringLiteral("VersionsKept"));
    p.days = readNumber(s, QStringLiteral("VersionsDays"));
    p.maxBytes = qint64(readNumber(s, QStringLiteral("VersionsMaxMB"))) << 20;
    return p;
}

}  // namespace qor::settings
