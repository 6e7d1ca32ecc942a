// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/windowquestions.h"

#include "billperiods/entryguard.h"
#include "printing/frmstatements.h"
#include "shell/session.h"
#include "uiservices/clsdialogs.h"
#include "uiservices/dialogservice.h"
#include "uiservices/frmmessage.h"

#include <QStringList>

namespace qor {

namespace {

const QString CRLF = QStringLiteral("\r\n");

QMessageBox::StandardButton buttonOf(SessionQuestions::Answer a)
{
    using A = SessionQuestions::Answer;
    switch (a) {
    case A::Ok: return QMessageBox::Ok;
    case A::Cancel: return QMessageBox::Cancel;
    case A::Yes: return QMessageBox::Yes;
    case A::No: return QMessageBox::No;
    case A::Save: return QMessageBox::Save;
    case A::Discard: return QMessageBox::Discard;
    case A::Open: return QMessageBox::Open;
    case A::Ignore: return QMessageBox::Ignore;
    }
    return QMessageBox::Cancel;
}

QMessageBox::Icon iconOf(SessionQuestions::Tone t)
{
    using T = SessionQuestions::Tone;
    switch (t) {
    case T::Plain: return QMessageBox::NoIcon;
    case T::Information: return QMessageBox::Information;
    case T::Question: return QMessageBox::Question;
    case T::Warning: return QMessageBox::Warning;
    case T::Critical: return QMessageBox::Critical;
    }
    return QMessageBox::NoIcon;
}

}  // namespace

SessionQuestions::Answer WindowQuestions::ask(const Question &q)
{
    DialogService::Message m{iconOf(q.tone), q.title, q.text, {}, QMessageBox::NoButton};
    for (Answer a : q.answers) m.buttons |= buttonOf(a);
    // A message with the one button names no default, as the usual boxes.
    if (q.answers.size() > 1) m.defaultButton = buttonOf(q.byDefault);
    for (const auto &[a, caption] : q.captions) m.captions.append({buttonOf(a), caption});
    const QMessageBox::StandardButton got = DialogService::current().message(m_owner, m);
    for (Answer a : q.answers)
        if (buttonOf(a) == got) return a;
    return Answer::Cancel;
}

// Starts in the folder of the dialog's last use.
QString WindowQuestions::databaseFile(bool save, const QString &title)
{
    ClsDIALOGS &dialogs = ClsDIALOGS::current();
    dialogs.setStrTitle(title);
    dialogs.setStrFilter(Session::DatabaseFilter);
    dialogs.setStrInitialDir(QString());
    return save ? dialogs.strGetSaveFileName() : dialogs.strGetOpenFileName();
}

bool WindowQuestions::goOnClosingBooks()
{
    const QString key = QStringLiteral("DontShowExplanationOfClosingBooks");
    if (isMessageMarked(key)) return true;
    const QString text =
        QStringList{QStringLiteral("By \"closing the books,\" the current database will be saved"),
                    QStringLiteral("and you will then start fresh under a new file name with"),
                    QStringLiteral("your existing customers && products.  This allows you to"),
                    QStringLiteral("archive previous bill periods and invoices, keeping your"),
                    QStringLiteral("files smaller and more managable.  (Even after closing the"),
                    QStringLiteral("books on a file, you can always re-open and edit it later.)"),
                    QString(),
                    QStringLiteral("Would you like to close the books on this file and begin a"),
                    QStringLiteral("new file using your current customers && products?")}
            .join(CRLF);
    const QString answer =
        DialogService::current().messageForm(m_owner, {text, key, QStringLiteral("YesNo"), QStringLiteral("No")});
    return answer != QLatin1String("No");
}

bool WindowQuestions::statementsBeforeClosingBooks(const Database &db, const QString &oldFile)
{
    return statements::offerStatementsBeforeClosingBooks(m_owner, db, oldFile);
}

bool WindowQuestions::mayDropOpenEntry(Database &) { return entryguard::mayDropEntry(m_trees, m_owner); }

}  // namespace qor
