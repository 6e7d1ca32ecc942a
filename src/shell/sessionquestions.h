// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// What the session needs from the user, said without a window: the session
// decides which question a step needs and what each answer does; whoever owns
// the session (the main window through the dialog service, a test with
// answers given in advance, the command-line tool that asks nothing) puts it
// to the user and hands the answer back.
#include <QList>
#include <QString>
#include <utility>

namespace qor {

class Database;

// The title of a message that names no title of its own.
inline const QString SessionTitle = QStringLiteral("QOR");

class SessionQuestions {
public:
    enum class Tone { Plain,
                      Information,
                      Question,
                      Warning,
                      Critical };
    // The answers a session question can have; Cancel also stands for a
    // question closed unanswered.
    enum class Answer { Ok,
                        Cancel,
                        Yes,
                        No,
                        Save,
                        Discard,
                        Open,
                        Ignore };
    struct Question {
        Tone tone = Tone::Plain;
        QString title, text;
        QList<Answer> answers = {Answer::Ok};
        Answer byDefault = Answer::Ok;
        // Captions in place of the usual ones ("Open &Read-Only" on Open).
        QList<std::pair<Answer, QString>> captions = {};
    };

    virtual ~SessionQuestions() = default;

    // A message or a question; a message has the one answer Ok.
    virtual Answer ask(const Question &q) = 0;
    // The name of a database file to create (save) or to open; empty when
    // the user cancelled.
    virtual QString databaseFile(bool save, const QString &title) = 0;
    // The explanation of closing the books (the user may switch it off);
    // true when the user goes on.
    virtual bool goOnClosingBooks() = 0;
    // Before the books are closed: the statements of what is still owed,
    // which stays behind in the old file. False cancels closing the books.
    virtual bool statementsBeforeClosingBooks(const Database &db, const QString &oldFile) = 0;
    // An open bill-period entry would be dropped by the step: true when it
    // may go (then it is gone), false when the user keeps entering.
    virtual bool mayDropOpenEntry(Database &db) = 0;

    // Nobody to ask: every question is cancelled, messages go unheard. The
    // session's questions until an owner gives its own.
    static SessionQuestions &nobody();
};

}  // namespace qor
