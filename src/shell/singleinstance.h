// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// The lock that keeps a second copy of the program from starting.
#include <QString>
#include <memory>

class QLockFile;

namespace qor {

// One running copy per user: holds a lock file in the per-user runtime folder
// (the temporary folder when there is none) for as long as it lives. A lock
// left behind by a process that has died does not count.
class SingleInstanceGuard {
public:
    SingleInstanceGuard();  // tries to take the lock at once
    ~SingleInstanceGuard();
    SingleInstanceGuard(const SingleInstanceGuard &) = delete;
    SingleInstanceGuard &operator=(const SingleInstanceGuard &) = delete;

    bool isFirstInstance() const { return m_locked; }
    static QString lockPath();
    // The one check: true only when another live copy holds the lock.
    static bool isAnotherCopyRunning(QLockFile &lock);

private:
    std::unique_ptr<QLockFile> m_lock;
    bool m_locked = false;
};

}  // namespace qor
