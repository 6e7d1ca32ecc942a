// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// Earlier versions of a database: each save keeps the file it replaces in a
// folder beside it. For "shop.xml" the folder is "shop.xml.versions" and a
// version "shop-20240131-093000.xml", stamped with the replaced file's
// modification time ("-2", "-3" added when two fall in one second). A version
// is a hard link to the replaced file where the file system allows, else a
// copy, so keeping one costs no copy of a large file.
#include <QDateTime>
#include <QList>
#include <QString>

namespace qor::versions {

// What is kept: the newest `newest` versions, plus the newest of each of the
// last `days` days, and of those no more than `maxBytes` in all (the oldest
// go first; the newest version always stays).
struct Policy {
    int newest = 20;
    int days = 60;
    qint64 maxBytes = qint64(2) << 30;
};

struct Version {
    QString path;
    QDateTime time;  // the stamp: when the replaced file was last written
    qint64 size = 0;
};

// "<database path>.versions".
QString folderOf(const QString &database);

// The versions kept of database, oldest first.
QList<Version> list(const QString &database);

struct Kept {
    QString path;     // the version made; empty when none was
    QString problem;  // why none could be kept (told to the user once)
};
// Keeps the file now at database as a version (nothing when there is none).
Kept keep(const QString &database);

// The positions in versions (oldest first) that policy drops at now.
QList<int> toDrop(const QList<Version> &versions, const Policy &policy, const QDateTime &now);

// Removes the versions of database that policy drops; gives their paths.
QStringList prune(const QString &database, const Policy &policy, const QDateTime &now = QDateTime::currentDateTime());

}  // namespace qor::versions
