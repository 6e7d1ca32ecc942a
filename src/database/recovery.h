// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// The recovery copy: while there are unsaved changes, the program keeps a
// copy of them in the user's data folder (never over the database), so a
// crash loses little. One folder per user holds it:
//   database.xml   the books as a database file
//   entry.txt      an open bill-period entry, when there is one
//   recovery.ini   which database they belong to and when they were written;
//                  written last, so its presence means a complete copy.
// A normal exit, a save or an abandon removes the folder's files.
#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <optional>

#include "filesafety.h"

namespace qor {

class Database;

class Recovery {
public:
    // folder: where the files live (default: <data folder>/QOR/recovery).
    explicit Recovery(const QString &folder = defaultFolder());
    static QString defaultFolder();

    QString folder() const { return m_folder; }
    QString databaseCopy() const;
    QString entryFile() const;
    QString infoFile() const;

    // Writes the database copy (read back and compared) and then the note of
    // which file it belongs to. entry, when not empty, is written beside it;
    // an empty one removes an earlier entry file. Empty on success, else why not.
    QString write(const Database &db, const QString &original, const QByteArray &entry = {},
                  const files::DeviceWrapper &wrap = {});
    // The same for books already serialised; bytes null keeps the database
    // copy that stands (only the entry changed since it was written).
    QString write(const QByteArray *bytes, const QString &original, const QByteArray &entry,
                  const files::DeviceWrapper &wrap = {});

    struct Pending {
        QString original;  // the database the copy belongs to
        QDateTime written;
        bool hasDatabase = false;
        bool hasEntry = false;
    };
    // What a program that ended without cleaning up left behind.
    std::optional<Pending> pending() const;

    // Removes every file of the recovery copy.
    void clear();

private:
    QString m_folder;
};

}  // namespace qor
