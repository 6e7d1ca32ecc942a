// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// One writer per database file: a lock file beside it, held for as long as
// the file is open. A lock left by a process that has died on this computer
// is taken over silently; one held by a live program, or left by another
// computer, is reported with who holds it.
#include <QDateTime>
#include <QString>
#include <memory>

class QLockFile;

namespace qor {

class FileLock {
public:
    explicit FileLock(const QString &database);
    ~FileLock();
    FileLock(const FileLock &) = delete;
    FileLock &operator=(const FileLock &) = delete;

    // ".<file name>.lock" in the database's folder.
    static QString lockPathOf(const QString &database);

    enum class Result {
        Locked,      // this program holds the file now
        Held,        // another program holds it (see holder())
        Unlockable,  // no lock can be made there (see error())
    };
    Result tryLock();
    // Takes a lock held elsewhere (after the user was warned): the old lock
    // file is removed and a new one made.
    Result takeOver();
    void unlock();
    bool isLocked() const;

    struct Holder {
        QString user, host, application;
        qint64 pid = 0;
        QDateTime since;
    };
    Holder holder() const;
    // The holder in words: "user on host (program, process n) since time".
    QString holderText() const;
    QString error() const { return m_error; }
    QString database() const { return m_database; }

private:
    QString m_database;
    std::unique_ptr<QLockFile> m_lock;
    QString m_error;
};

}  // namespace qor
