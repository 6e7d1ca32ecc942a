#include "shell/singleinstance.h"

#include <QDir>
#include <QLockFile>
#include <QStandardPaths>

namespace qor {

namespace {
// The folder of the per-user configuration of this program.
QString configFolder() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/QOR");
}
}  // namespace

SingleInstanceGuard::SingleInstanceGuard() {
    QDir().mkpath(configFolder());
    m_lock = std::make_unique<QLockFile>(lockPath());
    // Age alone never makes the lock stale: a copy may run for days. A lock
    // whose process has gone is taken over by tryLock all the same.
    m_lock->setStaleLockTime(0);
    m_locked = m_lock->tryLock(0);
}

SingleInstanceGuard::~SingleInstanceGuard() {
    if (m_locked)
        m_lock->unlock();
}

QString SingleInstanceGuard::lockPath() {
    return configFolder() + QStringLiteral("/qorvane.lock");
}

}  // namespace qor
