#pragma once
// The open books: the database, the file it belongs to and the operations on
// that file as a whole. The windows show the database; the session reads and
// saves it and, through the database's signals, tells them when everything
// was read again. (New, open, save as, abandon and closing the books belong
// here as they come.)
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

private:
    Database m_db;
    QString m_path;
    QWidget *m_owner = nullptr;
};

}  // namespace qor
