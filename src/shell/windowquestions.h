// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// The session's questions put to the user over a window, through the dialog
// service (so a test of the window answers them in advance).
#include "shell/sessionquestions.h"

class QWidget;

namespace qor {

class InvoiceTrees;

class WindowQuestions final : public SessionQuestions {
public:
    WindowQuestions(QWidget *owner, InvoiceTrees &trees) : m_owner(owner), m_trees(trees) {}

    Answer ask(const Question &q) override;
    QString databaseFile(bool save, const QString &title) override;
    bool goOnClosingBooks() override;
    bool statementsBeforeClosingBooks(const Database &db, const QString &oldFile) override;
    bool mayDropOpenEntry(Database &db) override;

private:
    QWidget *m_owner;
    InvoiceTrees &m_trees;
};

}  // namespace qor
