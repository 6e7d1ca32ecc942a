// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// Small pieces every writer of a file shares: the name of a save's temporary
// file, the clean-up of temporaries an interrupted save left behind, and a
// write that counts only once the file reads back the same.
#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>

class QIODevice;

namespace qor::files {

// When the running process started (read from the system; the time of the
// first call if the system does not tell).
QDateTime processStartTime();

// The temporary name pattern of a save of target: ".<file name>.new-XXXXXX"
// in the same folder (mkostemp fills in the six characters).
QByteArray temporaryPattern(const QString &target);

// Removes the temporaries of interrupted saves of target: only names of the
// exact pattern above, only regular files, only those last written before
// olderThan (so another program's save under way is left alone). Gives the
// paths removed.
QStringList removeStaleTemporaries(const QString &target, const QDateTime &olderThan);

// Wraps the device a file is written through (tests make it fail at any byte).
using DeviceWrapper = std::function<std::unique_ptr<QIODevice>(QIODevice &file)>;

struct ReplaceOptions {
    DeviceWrapper wrap;
    // Runs once the new content is complete and synced, just before it takes
    // the name; the old file (if any) is still at target. What it returns is
    // told to the user (empty: nothing to tell).
    std::function<QString(const QString &target)> beforeRename;
    // Runs when the rename failed after beforeRename ran: undo what it did.
    std::function<void()> undoBeforeRename;
};
struct ReplaceResult {
    bool ok = true;
    QString reason;           // why not, for a failure
    QStringList notes;        // things the user is told once (beforeRename's note)
    bool otherNames = false;  // the replaced file had more names (hard links), which keep the old content
};

// Replaces the file at target (a link is followed) with what write puts on
// the device, in one step: written beside it, synced, renamed over it, the
// folder synced. The old file stays as it was unless all of it was written.
// A replaced file's mode, owner and group (where allowed) and its access
// ACL are kept; a new file is readable by the user alone.
ReplaceResult replaceFile(const QString &target, const std::function<bool(QIODevice &)> &write,
                          const ReplaceOptions &options = {});

// Writes bytes to path as replaceFile does, then reads the file back and
// compares. Empty when the file is there and reads back the same, else the
// reason.
QString writeVerified(const QString &path, const QByteArray &bytes, const DeviceWrapper &wrap = {});

// Copies the file at from to a new file to (as replaceFile writes it, so a
// copy is readable by the user alone) with from's modification time. Empty
// on success, else the reason.
QString copyFile(const QString &from, const QString &to);

// Makes folder (and its parents) readable by the user alone when new. Empty
// on success, else the system's reason.
QString makePrivateFolder(const QString &folder);

// The system's reason for errno value error.
QString systemReason(int error);

// text made fit to stand in a file name: "/" and control characters become "_".
QString nameSafe(QString text);
// The file of one customer when a run writes one file each (invoices,
// envelopes, statements, their e-mail attachments): "<display name>
// (<number>) - <what>.pdf", made nameSafe, so two customers of one name get
// two files and no name reaches outside its folder.
QString eachFileName(const QString &displayName, const QString &number, const QString &what);

}  // namespace qor::files
