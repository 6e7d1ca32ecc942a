// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// sent-mail.log in the user's data folder: one line for each address a
// message went to (or was refused by), tab-separated: time, customer number,
// address, subject, result. Only the owner may read it (0600), and lines
// older than 13 months are dropped. Nothing else about a message is kept.
#include <QDateTime>
#include <QList>
#include <QString>

namespace qor::mail {

class SentMailLog {
public:
    struct Entry {
        QDateTime time;
        QString customerNumber, address, subject, result;
    };

    explicit SentMailLog(QString path = defaultPath());
    // ~/.local/share/QOR/sent-mail.log (XDG_DATA_HOME followed).
    static QString defaultPath();
    QString path() const { return m_path; }

    // Appends the lines at once, creating the file (0600) and its folder.
    bool append(const QList<Entry> &entries);
    // Drops the lines older than 13 months before now; a line whose time
    // can't be read is kept. Writes beside the file and replaces it.
    bool prune(const QDateTime &now = QDateTime::currentDateTime());
    // Every line read back (for tests and for looking up).
    QList<Entry> entries() const;
    QString error() const { return m_error; }

    static QString line(const Entry &e);

private:
    QString m_path;
    QString m_error;
};

}  // namespace qor::mail
