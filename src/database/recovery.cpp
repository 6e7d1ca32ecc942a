// SPDX-License-Identifier: GPL-3.0-or-later
#include "recovery.h"

#include "database.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QUrl>

namespace qor {

Recovery::Recovery(const QString &folder) : m_folder(folder) {}

QString Recovery::defaultFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + QStringLiteral("/QOR/recovery");
}

QString Recovery::databaseCopy() const { return m_folder + QStringLiteral("/database.xml"); }
QString Recovery::entryFile() const { return m_folder + QStringLiteral("/entry.txt"); }
QString Recovery::infoFile() const { return m_folder + QStringLiteral("/recovery.ini"); }

QString Recovery::write(const Database &db, const QString &original, const QByteArray &entry,
                        const files::DeviceWrapper &wrap)
{
    const QByteArray bytes = db.serialize();
    return write(&bytes, original, entry, wrap);
}

QString Recovery::write(const QByteArray *bytes, const QString &original, const QByteArray &entry,
                        const files::DeviceWrapper &wrap)
{
    if (const QString why = files::makePrivateFolder(m_folder); !why.isEmpty()) return why;
    if (!bytes && !QFileInfo(databaseCopy()).isFile()) return QStringLiteral("the copy of the books is missing");
    // Until the note is written again, what stands here is incomplete.
    QFile::remove(infoFile());
    if (bytes)
        if (const QString why = files::writeVerified(databaseCopy(), *bytes, wrap); !why.isEmpty()) return why;
    if (entry.isEmpty()) QFile::remove(entryFile());
    else if (const QString why = files::writeVerified(entryFile(), entry, wrap); !why.isEmpty())
        return why;
    // Two lines: the database's path (percent-encoded, so any name fits on
    // one line) and the time.
    const QByteArray note = "database=" + QUrl::toPercentEncoding(QFileInfo(original).absoluteFilePath()) +
                            "\nwritten=" + QDateTime::currentDateTime().toString(Qt::ISODate).toLatin1() + '\n';
    return files::writeVerified(infoFile(), note, wrap);
}

std::optional<Recovery::Pending> Recovery::pending() const
{
    if (!QFileInfo::exists(infoFile())) return std::nullopt;
    QFile info(infoFile());
    if (!info.open(QIODevice::ReadOnly)) return std::nullopt;
    Pending p;
    for (const QByteArray &line : info.read(1 << 16).split('\n')) {
        if (line.startsWith("database=")) p.original = QUrl::fromPercentEncoding(line.mid(9));
        else if (line.startsWith("written=")) p.written = QDateTime::fromString(QString::fromLatin1(line.mid(8)), Qt::ISODate);
    }
    p.hasDatabase = QFileInfo(databaseCopy()).isFile();
    p.hasEntry = QFileInfo(entryFile()).isFile();
    if (p.original.isEmpty() || (!p.hasDatabase && !p.hasEntry)) return std::nullopt;
    return p;
}

void Recovery::clear()
{
    QFile::remove(infoFile());
    QFile::remove(databaseCopy());
    QFile::remove(entryFile());
}

}  // namespace qor
