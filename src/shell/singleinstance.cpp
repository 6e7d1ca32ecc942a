// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/singleinstance.h"

#include "database/filesafety.h"

#include <QDir>
#include <QLockFile>
#include <QStandardPaths>

#include <unistd.h>

namespace qor {

SingleInstanceGuard::SingleInstanceGuard()
{
    m_lock = std::make_unique<QLockFile>(lockPath());
    // Age alone never makes the lock stale: a copy may run for days. A lock
    // whose process has gone is taken over by tryLock all the same.
    m_lock->setStaleLockTime(0);
    m_locked = isAnotherCopyRunning(*m_lock) == false;
}

SingleInstanceGuard::~SingleInstanceGuard()
{
    if (m_lock->isLocked())
        m_lock->unlock();
}

bool SingleInstanceGuard::isAnotherCopyRunning(QLockFile &lock)
{
    if (lock.tryLock(0))
        return false;
    // Only a lock that another live copy holds means one is running. A
    // folder where no lock can be made (full, read-only) proves nothing, and
    // the program starts rather than refusing to.
    return lock.error() == QLockFile::LockFailedError;
}

QString SingleInstanceGuard::lockPath()
{
    // The runtime folder is per user, on a small memory file system, and has
    // nothing to do with the settings: a settings folder that can't be
    // written never reads as a running copy.
    QString folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    if (folder.isEmpty())
        folder = QDir::tempPath();
    return folder + QStringLiteral("/qorvane-%1.lock").arg(qulonglong(::getuid()));
}

}  // namespace qor
