// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// The window side of an e-mail run: the password asked when the keyring
// can't give it, a small progress window with Cancel, and at the end the
// list of what became of each customer's message.
#include "mail/mail.h"

#include <QDialog>

#include <optional>

class QLabel;
class QProgressBar;
class QPushButton;
class QThread;
class QTreeWidget;

namespace qor {

// Sends one message per customer with the stored account and shows the
// progress, then the results, which it returns (empty when the user
// cancelled before anything was sent, or the account can't send yet; the
// user has been told why). Compose is called on this thread, between the
// messages; the network waits on a thread of its own.
QList<mail::CustomerResult> runEmail(QWidget *owner, const QList<mail::MailCustomer> &customers,
                                     const mail::Compose &compose);

// The account's password for this run: from the keyring, else asked (once
// per run where no keyring runs). No value when the user cancelled.
std::optional<QString> passwordForRun(QWidget *owner, const mail::MailAccount &account);

// frmEmailRun, "Sending E-mail": progress and Cancel while the run goes,
// then the result list and Close.
class FrmEmailRun : public QDialog {
    Q_OBJECT
public:
    FrmEmailRun(mail::SendRun &run, QList<mail::MailCustomer> customers, mail::Compose compose,
                QWidget *owner = nullptr);
    ~FrmEmailRun() override;

    // Starts the run (exec() does it when the window shows).
    void start();
    bool isRunning() const { return m_worker != nullptr; }
    QList<mail::CustomerResult> results() const { return m_results; }

    QProgressBar *progressBar() const { return m_bar; }
    QPushButton *cancelButton() const { return m_cancel; }
    QTreeWidget *resultList() const { return m_list; }
    QLabel *summaryLine() const { return m_status; }

signals:
    void runFinished();

protected:
    void showEvent(QShowEvent *e) override;
    // Escape or the close box while sending cancels; afterwards it closes.
    void reject() override;

private:
    void showProgress(int index, int total, const QString &name);
    void showResults();

    mail::SendRun &m_run;
    QList<mail::MailCustomer> m_customers;
    mail::Compose m_compose;
    QList<mail::CustomerResult> m_results;
    QThread *m_worker = nullptr;
    bool m_started = false;
    QLabel *m_status = nullptr;
    QProgressBar *m_bar = nullptr;
    QPushButton *m_cancel = nullptr;
    QTreeWidget *m_list = nullptr;
};

}  // namespace qor
