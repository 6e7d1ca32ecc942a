// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// frmEmailSettings, "E-mail Settings": the SMTP account, the sender, and the
// subject and body of invoices, statements and reminders. Every change is
// stored the moment it is made, as all options are; the password goes to
// the keyring (or, with none running, is kept for this run and the window
// says why). "Send Test Message" sends one message to the sender and shows
// what the server answered.
#include "mail/mailsettings.h"
#include "mail/transport.h"

#include <QDialog>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QSpinBox;

namespace qor {

class FrmEmailSettings : public QDialog {
    Q_OBJECT
public:
    explicit FrmEmailSettings(QWidget *owner = nullptr);

    // The account as the controls hold it now.
    mail::MailAccount account() const;
    QLineEdit *passwordField() const { return m_password; }
    QLabel *keyringLine() const { return m_keyring; }

    // Sends the test message and shows the outcome; also returns it.
    mail::Delivery cmdSendTestClick();

signals:
    // The keyring has answered the window's read of the password.
    void passwordRead();

private:
    void loadAll();
    void showKeyring(const QString &problem);
    void storePassword();
    void showTexts();

    QLineEdit *m_server = nullptr;
    QSpinBox *m_port = nullptr;
    QComboBox *m_security = nullptr;
    QLineEdit *m_user = nullptr;
    QLineEdit *m_password = nullptr;
    QLabel *m_keyring = nullptr;
    QLineEdit *m_senderName = nullptr;
    QLineEdit *m_senderAddress = nullptr;
    QLineEdit *m_replyTo = nullptr;
    QCheckBox *m_copy = nullptr;
    QComboBox *m_kind = nullptr;
    QLineEdit *m_subject = nullptr;
    QPlainTextEdit *m_body = nullptr;
    QPushButton *m_sendTest = nullptr;
    bool m_loading = true;
    // What the keyring holds under which key, so only a change is stored.
    QString m_storedPassword, m_storedKey;
};

}  // namespace qor
