// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// The open books: the database, the file it belongs to and the operations on
// that file as a whole. The windows show the database; the session reads and
// saves it and, through the database's signals, tells them when everything
// was read again. The operations on the file as a whole (new, open, save as,
// closing the books, restoring an earlier version) decide here which
// questions they need; whoever owns the session puts them to the user
// (SessionQuestions), so the session itself needs no window.
//
// Every step that replaces the open file either completes or leaves
// everything as it was: a file is read aside and becomes the open books only
// once it was accepted, a new file is written before the settings name it,
// and unsaved changes are never dropped without a safety copy that reads
// back the same or the user's word. The open file is locked against a second
// writer, and a save notices a file that changed on disk since it was read.
#include "database/database.h"
#include "database/filelock.h"
#include "database/recovery.h"
#include "database/versions.h"
#include "shell/sessionquestions.h"

#include <QDateTime>
#include <QObject>
#include <QSet>
#include <QString>
#include <QThread>
#include <functional>
#include <memory>

namespace qor {

class Session : public QObject {
    Q_OBJECT
public:
    explicit Session(QObject *parent = nullptr);
    ~Session() override;

    Database &db() { return m_db; }
    const Database &db() const { return m_db; }
    // The file of the books.
    QString path() const { return m_path; }

    // Who the session's questions and messages go to (none: nobody is
    // asked, every question is cancelled). Not owned.
    void setQuestions(SessionQuestions *questions);

    // At start: reads the file the settings name. A file another program
    // holds is asked about first (read-only, take over, or cancel: then
    // declinedAtStart() is true and the books stay empty). A file that could
    // not be accepted is told, with the newest earlier version offered, and
    // leaves the tables empty. The views hear aboutToReload, fileRead (for a
    // file read as it is, after the changed state ended) and reloaded.
    ReadResult load();
    bool declinedAtStart() const { return m_declined; }
    // Reads path to look at it only, as the command-line tool does: nothing
    // is asked or locked, a missing file is refused, the settings keep their
    // file, and a save refuses. Accepted: problems holds what the invoice
    // records' names could not be made of.
    ReadResult openToRead(const QString &path, QStringList *problems = nullptr);
    // Abandoning the changes: reads the open file again. A file that can't
    // be read now is told and the books stay as they are.
    bool reload();
    // Saves to the file; a failure is told and leaves the changed state. A
    // file that changed on disk since it was read is asked about first.
    bool save();

    // Read-only: another program holds the file (or no lock could be made).
    // Save and closing the books refuse; Save As to another file works.
    bool isReadOnly() const { return m_readOnly; }

    // The file buttons cmdChangePath(0..3).
    enum class FileButton { New = 0,
                            Open = 1,
                            Save = 2,
                            SaveAs = 3 };
    // The filter of the database dialogs, in the bar form.
    static const QString DatabaseFilter;
    // A name whose last four letters are not ".xml" in any case gets ".xml".
    static QString withXmlExtension(const QString &path);

    // New, Open and Save As, whole: unsaved changes are asked about (New,
    // Open), the file is asked for, the new file becomes the open one. True
    // when the books changed to another file; false when nothing changed
    // (cancelled, refused, failed: told).
    bool changePath(FileButton button);
    // Opens the database file path as the Open button does once a name was
    // chosen: unsaved changes and an open entry are asked about, the file is
    // locked. True when the books changed to it; a missing file is told.
    bool openFile(const QString &path);

    // Close the books: after the one-time explanation and the save dialog,
    // the pending changes go to the old file, and a new file under the
    // chosen name starts with the customers, the products and the company
    // fields, without bill periods or records. False when the user declined,
    // the name was refused or a write failed (then nothing changed).
    bool closeBooks();

    // Writes the tables as they stand (unsaved changes included) as a safety
    // copy, read back and compared: beside the file as
    // "<file name>.unsaved-<yyyyMMdd>-<HHmmss>", else in the user's data
    // folder. Gives its path, or an empty text (lastCopyProblem() says why).
    QString keepUnsavedChanges();
    QString lastCopyProblem() const { return m_copyProblem; }

    // Earlier versions and safety copies of the open file, newest first.
    struct EarlierCopy {
        QString path;
        QDateTime time;
        bool unsaved = false;  // a safety copy of unsaved changes, not a version
        qint64 size = 0;
    };
    QList<EarlierCopy> earlierCopies() const;
    // Loads an earlier copy as the open books, marked changed, so the user
    // saves it deliberately. Unsaved changes are asked about first.
    bool restoreCopy(const QString &copy);
    // The folder of safety copies that can't stand beside their file.
    static QString unsavedFolder();

    // The recovery copy of unsaved changes (written by a timer of the
    // window; never over the database).
    Recovery &recovery() { return m_recovery; }
    // Writes it when there is something new since the last write; false when
    // there is nothing to keep or it failed (told once).
    bool writeRecovery();
    // The same for the window's timer: the books are copied to bytes here;
    // writing, reading back and comparing go on a thread of their own, so
    // large books don't stop the window while their copy is written.
    void writeRecoveryInBackground();
    // The open bill-period entry as the recovery copy keeps it beside the
    // books; empty when none is open. Not set: no entry is kept.
    std::function<QByteArray()> openEntry;
    // Removes it: after a save, an abandon, a normal exit.
    void dropRecovery();
    // At start, when a program ended without cleaning up: asks "Recover
    // unsaved changes". Restore loads the copy marked changed; Discard keeps
    // it among the safety copies. True when restored.
    bool offerRecovery();

    // Test seam: every file the session writes passes through the device
    // this gives for its path (none: written as it is).
    std::function<files::DeviceWrapper(const QString &path)> writeFault;

signals:
    // Unsaved changes were written to a safety copy at path before they
    // were dropped.
    void unsavedChangesKept(const QString &path);
    void readOnlyChanged(bool readOnly);
    // The books now belong to another file.
    void pathChanged(const QString &path);
    // A version or safety copy was made or removed.
    void earlierCopiesChanged();
    // Restore brought back an open bill-period entry, as openEntry gave it.
    void entryRecovered(const QByteArray &entry);

private:
    enum class Unsaved { None,
                         Saved,
                         Discard,
                         Cancel };
    Unsaved settleUnsavedChanges();
    bool openChosen(const QString &path, Unsaved unsaved);
    bool keepBeforeDropping();
    bool hasNothingToLose() const;
    // Locks path for the books (asking when another program holds it);
    // null when the user cancelled. readOnly tells how it may be used.
    std::unique_ptr<FileLock> lockFor(const QString &path, bool &readOnly);
    // Reads source aside; when accepted it becomes the open books under the
    // name path, locked, marked changed or not. drop: unsaved changes are
    // kept in a safety copy first.
    bool adopt(const QString &source, const QString &path, bool changed, bool drop, ReadResult *result = nullptr);
    // A refused file is told, with its newest earlier version offered in its
    // place (drop: unsaved changes are kept in a safety copy first).
    void tellRejected(const ReadResult &result, const QString &path, bool drop);
    void tell(SessionQuestions::Tone tone, const QString &text);
    void tellOnce(const QStringList &notes);
    bool saveTo(const QString &path, bool asNewName);
    bool saveAs();
    void becomeFile(const QString &path, std::unique_ptr<FileLock> lock, bool readOnly);
    void setReadOnly(bool readOnly);
    files::DeviceWrapper faultFor(const QString &path) const;

    struct Stamp {
        bool exists = false;
        qint64 size = 0, mtimeNs = 0;
        quint64 inode = 0, device = 0;
        bool operator==(const Stamp &) const = default;
    };
    static Stamp stampOf(const QString &path);

    Database m_db;
    QString m_path;
    SessionQuestions *m_ask;
    std::unique_ptr<FileLock> m_lock;
    bool m_readOnly = false;
    bool m_declined = false;
    Stamp m_stamp;
    QSet<QString> m_told;
    QString m_copyProblem;
    Recovery m_recovery;
    quint64 m_recoveryRevision = 0;
    QByteArray m_recoveredEntry;  // the entry of the last recovery copy written
    // A recovery copy being written in the background, and what it holds.
    struct RecoveryJob {
        QByteArray books, entry;
        bool keepBooks = false;
        quint64 revision = 0;
        QString why;
    };
    std::shared_ptr<RecoveryJob> m_recoveryJob;
    QThread *m_recoveryThread = nullptr;
    // Waits for the background write, if any, and takes note of its outcome.
    void finishRecoveryWrite();
    bool recoveryWritten(const QString &why, quint64 revision, const QByteArray &entry);
};

}  // namespace qor
