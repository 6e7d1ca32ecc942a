#pragma once
// The open books: the database, the file it belongs to and the operations on
// that file as a whole. The windows show the database; the session reads and
// saves it and, through the database's signals, tells them when everything
// was read again. The operations on the file as a whole (new, open, save as,
// closing the books) ask their questions here, through the dialog service.
#include "database/database.h"

#include <QObject>
#include <QString>

class QWidget;

namespace qor {

class Session : public QObject {
    Q_OBJECT
public:
    explicit Session(QObject *parent = nullptr);

    Database &db() { return m_db; }
    const Database &db() const { return m_db; }
    // The file of the books: the one the settings name, taken afresh at each
    // read and save.
    QString path() const { return m_path; }

    // The window that owns the messages of a failed read or save.
    void setDialogOwner(QWidget *owner) { m_owner = owner; }

    // Reads the file again: the views empty themselves (aboutToReload), the
    // file is read, a file that could not be accepted is told, the names of
    // the records are filled in, and the views rebuild (reloaded). A file
    // that was read as it is ends the changed state, then the views hear fileRead.
    ReadResult load();
    // Saves to the file; a failure is told and leaves the changed state.
    bool save();

    // The file buttons cmdChangePath(0..3).
    enum class FileButton { New = 0, Open = 1, Save = 2, SaveAs = 3 };
    // The filter of the database dialogs, in the bar form.
    static const QString DatabaseFilter;
    // A name whose last four letters are not ".xml" in any case gets ".xml".
    static QString withXmlExtension(const QString &path);

    // New, Open and Save As up to the reload: asks for the file, refuses a
    // New on a name that is taken, keeps unsaved changes in a recovery copy
    // before New or Open drops them, makes the file the one the settings
    // name, and for Save As writes the current data there. Gives the new
    // path, or an empty text when nothing changed (the caller then reads
    // the books from that path). Save is not handled here.
    QString changePath(FileButton button);

    // Close the books: after the one-time explanation and the save dialog,
    // the pending changes go to the old file, and a new file under the
    // chosen name starts with the customers, the products and the company
    // fields, without bill periods or records. False when the user declined,
    // the name was refused or a save failed.
    bool closeBooks();
    // The explanation of closing the books; true if the user declined.
    bool confirmCloseBooks();

    // Writes the tables as they stand (unsaved changes included) beside the
    // file, as "<file name>.unsaved-<yyyyMMdd>-<HHmmss>", and gives its path
    // (empty when it could not be written).
    QString keepUnsavedChanges();

signals:
    // Unsaved changes were written to a recovery copy at path before they
    // were dropped.
    void unsavedChangesKept(const QString &path);

private:
    Database m_db;
    QString m_path;
    QWidget *m_owner = nullptr;
};

}  // namespace qor
