// SPDX-License-Identifier: GPL-3.0-or-later
#include "filelock.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QSysInfo>

namespace qor {

FileLock::FileLock(const QString &database) : m_database(database), m_lock(new QLockFile(lockPathOf(database)))
{
    // Age never makes a lock stale: the program may keep a file open for
    // days. A lock of a process that has died on this computer is stale all
    // the same, and tryLock takes it over by itself.
    m_lock->setStaleLockTime(0);
}

FileLock::~FileLock() = default;

QString FileLock::lockPathOf(const QString &database)
{
    const QFileInfo info(database);
    return QDir(info.absolutePath()).filePath(u'.' + info.fileName() + QStringLiteral(".lock"));
}

FileLock::Result FileLock::tryLock()
{
    if (m_lock->isLocked()) return Result::Locked;
    if (m_lock->tryLock(0)) return Result::Locked;
    switch (m_lock->error()) {
    case QLockFile::LockFailedError: {
        // This very process holds it (one copy runs per user, so only a
        // second set of books of the same program, as tests make): no other
        // writer to keep out.
        qint64 pid = 0;
        QString host, application;
        if (m_lock->getLockInfo(&pid, &host, &application) && pid == QCoreApplication::applicationPid() &&
            host == QSysInfo::machineHostName()) {
            QFile::remove(lockPathOf(m_database));
            if (m_lock->tryLock(0)) return Result::Locked;
        }
        return Result::Held;
    }
    case QLockFile::PermissionError:
        m_error = QStringLiteral("the folder cannot be written");
        return Result::Unlockable;
    default:
        m_error = QStringLiteral("the lock file \"%1\" cannot be made")
                      .arg(QDir::toNativeSeparators(lockPathOf(m_database)));
        return Result::Unlockable;
    }
}

FileLock::Result FileLock::takeOver()
{
    if (m_lock->isLocked()) return Result::Locked;
    // The user was warned; a lock the system still guards for its holder
    // (a share that keeps locks) is removed all the same.
    if (!m_lock->removeStaleLockFile()) QFile::remove(lockPathOf(m_database));
    return tryLock();
}

void FileLock::unlock()
{
    if (m_lock->isLocked()) m_lock->unlock();
}

bool FileLock::isLocked() const { return m_lock->isLocked(); }

FileLock::Holder FileLock::holder() const
{
    Holder h;
    m_lock->getLockInfo(&h.pid, &h.host, &h.application);
    const QFileInfo file(lockPathOf(m_database));
    h.user = file.owner();
    h.since = file.lastModified();
    return h;
}

QString FileLock::holderText() const
{
    const Holder h = holder();
    const QString user = h.user.isEmpty() ? QStringLiteral("an unknown user") : h.user;
    const QString host = h.host.isEmpty() ? QStringLiteral("an unknown computer") : h.host;
    return QStringLiteral("%1 on %2 (%3, process %4) since %5")
        .arg(user, host, h.application.isEmpty() ? QStringLiteral("a program") : h.application, QString::number(h.pid),
             h.since.isValid() ? h.since.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")) : QStringLiteral("an unknown time"));
}

}  // namespace qor
