// SPDX-License-Identifier: GPL-3.0-or-later
#include "versions.h"

#include "filesafety.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>
#include <cerrno>
#include <set>

#include <sys/stat.h>
#include <unistd.h>

namespace qor::versions {

namespace {

const QString StampFormat = QStringLiteral("yyyyMMdd-HHmmss");

// "shop" and ".xml" of "shop.xml"; a name without a dot has no suffix.
struct NameParts {
    QString base, suffix;
};
NameParts partsOf(const QString &database)
{
    const QFileInfo info(database);
    const QString suffix = info.suffix();
    return {info.completeBaseName(), suffix.isEmpty() ? QString() : u'.' + suffix};
}

struct Named {
    Version version;
    int counter;
};

}  // namespace

QString folderOf(const QString &database) { return QFileInfo(database).absoluteFilePath() + QStringLiteral(".versions"); }

QList<Version> list(const QString &database)
{
    const NameParts parts = partsOf(database);
    const QRegularExpression pattern(u'^' + QRegularExpression::escape(parts.base) +
                                     QStringLiteral("-(\\d{8}-\\d{6})(?:-(\\d{1,6}))?") +
                                     QRegularExpression::escape(parts.suffix) + u'$');
    const QDir dir(folderOf(database));
    std::vector<Named> found;
    const QFileInfoList entries = dir.entryInfoList(QDir::Files | QDir::Hidden, QDir::Name);
    for (const QFileInfo &entry : entries) {
        const QRegularExpressionMatch m = pattern.match(entry.fileName());
        if (!m.hasMatch()) continue;
        const QDateTime time = QDateTime::fromString(m.captured(1), StampFormat);
        if (!time.isValid()) continue;
        found.push_back({{entry.absoluteFilePath(), time, entry.size()}, m.captured(2).isEmpty() ? 1 : m.captured(2).toInt()});
    }
    std::sort(found.begin(), found.end(), [](const Named &a, const Named &b) {
        return a.version.time != b.version.time ? a.version.time < b.version.time : a.counter < b.counter;
    });
    QList<Version> out;
    for (const Named &n : found) out << n.version;
    return out;
}

Kept keep(const QString &database)
{
    const QFileInfo info(database);
    if (!info.isFile()) return {};
    const QString folder = folderOf(database);
    const QString shown = QDir::toNativeSeparators(database);
    if (const QString why = files::makePrivateFolder(folder); !why.isEmpty())
        return {QString(), QStringLiteral("Earlier versions of \"%1\" cannot be kept: the folder \"%2\" cannot be made "
                                          "(%3).")
                               .arg(shown, QDir::toNativeSeparators(folder), why)};
    // The file itself, not a link to it: a hard link to a link would keep nothing.
    const QByteArray real = QFile::encodeName(info.canonicalFilePath());
    struct stat old {};
    if (::stat(real.constData(), &old) != 0) return {};
    const NameParts parts = partsOf(database);
    const QString stamp = info.lastModified().toString(StampFormat);
    for (int n = 1; n < 1000; ++n) {
        const QString name = parts.base + u'-' + stamp + (n > 1 ? u'-' + QString::number(n) : QString()) + parts.suffix;
        const QString path = QDir(folder).filePath(name);
        if (QFileInfo::exists(path)) continue;
        const QByteArray native = QFile::encodeName(path);
        if (::link(real.constData(), native.constData()) == 0) return {path, QString()};
        if (errno == EEXIST) continue;
        // No hard links here (another file system, a share that has none): a copy.
        if (const QString why = files::copyFile(info.canonicalFilePath(), path); !why.isEmpty())
            return {QString(), QStringLiteral("An earlier version of \"%1\" could not be kept in \"%2\": %3.")
                                   .arg(shown, QDir::toNativeSeparators(folder), why)};
        return {path, QString()};
    }
    return {QString(), QStringLiteral("An earlier version of \"%1\" could not be kept: too many in one second.").arg(shown)};
}

QList<int> toDrop(const QList<Version> &versions, const Policy &policy, const QDateTime &now)
{
    const int n = int(versions.size());
    std::set<int> kept;
    for (int i = std::max(0, n - policy.newest); i < n; ++i) kept.insert(i);
    // The newest of each of the last days, today included.
    const QDate today = now.date();
    for (int i = n - 1; i >= 0; --i) {
        const qint64 age = versions[i].time.date().daysTo(today);
        if (age < 0 || age >= policy.days) continue;
        if (i == n - 1 || versions[i + 1].time.date() != versions[i].time.date()) kept.insert(i);
    }
    qint64 total = 0;
    for (int i : kept) total += versions[i].size;
    // Within the size, the oldest go first; the newest always stays.
    for (auto it = kept.begin(); total > policy.maxBytes && it != kept.end() && *it != n - 1;) {
        total -= versions[*it].size;
        it = kept.erase(it);
    }
    QList<int> drop;
    for (int i = 0; i < n; ++i)
        if (!kept.count(i)) drop << i;
    return drop;
}

QStringList prune(const QString &database, const Policy &policy, const QDateTime &now)
{
    const QList<Version> all = list(database);
    QStringList removed;
    for (int i : toDrop(all, policy, now))
        if (QFile::remove(all[i].path)) removed << all[i].path;
    return removed;
}

}  // namespace qor::versions
