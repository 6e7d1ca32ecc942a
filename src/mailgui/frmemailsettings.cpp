// SPDX-License-Identifier: GPL-3.0-or-later
#include "mailgui/frmemailsettings.h"

#include "mail/passwords.h"
#include "mail/smtp.h"
#include "settings/settingsstore.h"
#include "uiservices/dialogservice.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QEventLoop>
#include <QFormLayout>
#include <QGroupBox>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QSpinBox>
#include <QThread>
#include <QVBoxLayout>

#include <algorithm>

namespace qor {

namespace {

const QString Title = QStringLiteral("E-mail Settings");

QLineEdit *lineEdit(const char *name, QWidget *parent)
{
    auto *e = new QLineEdit(parent);
    e->setObjectName(QString::fromLatin1(name));
    return e;
}

}  // namespace

FrmEmailSettings::FrmEmailSettings(QWidget *owner) : QDialog(owner)
{
    setObjectName(QStringLiteral("frmEmailSettings"));
    setWindowTitle(Title);
    auto *top = new QVBoxLayout(this);

    auto *accountBox = new QGroupBox(QStringLiteral("Account"), this);
    auto *account = new QFormLayout(accountBox);
    m_server = lineEdit("txtServer", this);
    m_server->setPlaceholderText(QStringLiteral("smtp.example.com"));
    m_port = new QSpinBox(this);
    m_port->setObjectName(QStringLiteral("txtPort"));
    m_port->setRange(1, 65535);
    m_security = new QComboBox(this);
    m_security->setObjectName(QStringLiteral("cmbSecurity"));
    m_security->addItems({mail::securityText(mail::Security::SslTls), mail::securityText(mail::Security::StartTls)});
    m_user = lineEdit("txtUser", this);
    m_password = lineEdit("txtPassword", this);
    m_password->setEchoMode(QLineEdit::Password);
    m_keyring = new QLabel(this);
    m_keyring->setObjectName(QStringLiteral("lblKeyring"));
    m_keyring->setWordWrap(true);
    account->addRow(QStringLiteral("SMTP &server:"), m_server);
    account->addRow(QStringLiteral("&Port:"), m_port);
    account->addRow(QStringLiteral("S&ecurity:"), m_security);
    account->addRow(QStringLiteral("&User name:"), m_user);
    account->addRow(QStringLiteral("Pass&word:"), m_password);
    account->addRow(m_keyring);
    top->addWidget(accountBox);

    auto *senderBox = new QGroupBox(QStringLiteral("Sender"), this);
    auto *sender = new QFormLayout(senderBox);
    m_senderName = lineEdit("txtSenderName", this);
    m_senderAddress = lineEdit("txtSenderAddress", this);
    m_replyTo = lineEdit("txtReplyTo", this);
    m_replyTo->setPlaceholderText(QStringLiteral("optional"));
    m_copy = new QCheckBox(QStringLiteral("Send me a &copy"), this);
    m_copy->setObjectName(QStringLiteral("chkSendMeACopy"));
    sender->addRow(QStringLiteral("Sender &name:"), m_senderName);
    sender->addRow(QStringLiteral("Sender &address:"), m_senderAddress);
    sender->addRow(QStringLiteral("&Reply-to:"), m_replyTo);
    sender->addRow(m_copy);
    top->addWidget(senderBox);

    auto *textBox = new QGroupBox(QStringLiteral("Messages"), this);
    auto *texts = new QFormLayout(textBox);
    m_kind = new QComboBox(this);
    m_kind->setObjectName(QStringLiteral("cmbKind"));
    m_kind->addItems({QStringLiteral("Invoices"), QStringLiteral("Statements"), QStringLiteral("Reminders")});
    m_subject = lineEdit("txtSubject", this);
    m_body = new QPlainTextEdit(this);
    m_body->setObjectName(QStringLiteral("txtBody"));
    m_body->setTabChangesFocus(true);
    auto *fields = new QLabel(QStringLiteral("Fields: {company} {customer} {period} {amount} {due date}"), this);
    fields->setTextInteractionFlags(Qt::TextSelectableByMouse);
    texts->addRow(QStringLiteral("&Texts for:"), m_kind);
    texts->addRow(QStringLiteral("Su&bject:"), m_subject);
    texts->addRow(QStringLiteral("B&ody:"), m_body);
    texts->addRow(fields);
    top->addWidget(textBox, 1);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    m_sendTest = buttons->addButton(QStringLiteral("Send &Test Message"), QDialogButtonBox::ActionRole);
    m_sendTest->setObjectName(QStringLiteral("cmdSendTest"));
    top->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_sendTest, &QPushButton::clicked, this, [this] { cmdSendTestClick(); });

    loadAll();

    // Each control stores its value as it changes.
    connect(m_server, &QLineEdit::textEdited, this, [](const QString &t) { settings::SmtpServer.set(t.trimmed()); });
    connect(m_user, &QLineEdit::textEdited, this, [](const QString &t) { settings::UserName.set(t); });
    connect(m_senderName, &QLineEdit::textEdited, this, [](const QString &t) { settings::SenderName.set(t); });
    connect(m_senderAddress, &QLineEdit::textEdited, this,
            [](const QString &t) { settings::SenderAddress.set(t.trimmed()); });
    connect(m_replyTo, &QLineEdit::textEdited, this, [](const QString &t) { settings::ReplyTo.set(t.trimmed()); });
    connect(m_port, &QSpinBox::valueChanged, this, [this](int p) {
        if (!m_loading)
            settings::SmtpPort.set(p);
    });
    connect(m_security, &QComboBox::currentIndexChanged, this, [this](int i) {
        if (m_loading)
            return;
        const auto now = i == 1 ? mail::Security::StartTls : mail::Security::SslTls;
        const auto before = i == 1 ? mail::Security::SslTls : mail::Security::StartTls;
        settings::MailSecurity.set(mail::securityText(now));
        // The port follows the usual one of the choice unless the user set
        // another.
        if (m_port->value() == mail::defaultPort(before))
            m_port->setValue(mail::defaultPort(now));
    });
    connect(m_copy, &QCheckBox::toggled, this, [](bool on) {
        settings::SendMeACopy.set(on);
    });
    connect(m_kind, &QComboBox::currentIndexChanged, this, &FrmEmailSettings::showTexts);
    connect(m_subject, &QLineEdit::textEdited, this,
            [this](const QString &t) { settings::MailSubject[size_t(m_kind->currentIndex())].set(t); });
    connect(m_body, &QPlainTextEdit::textChanged, this, [this] {
        if (!m_loading)
            settings::MailBody[size_t(m_kind->currentIndex())].set(m_body->toPlainText());
    });
    // The password is stored when the user leaves the field, and again under
    // the new account when the server or user changes.
    connect(m_password, &QLineEdit::editingFinished, this, &FrmEmailSettings::storePassword);
    connect(m_server, &QLineEdit::editingFinished, this, &FrmEmailSettings::storePassword);
    connect(m_user, &QLineEdit::editingFinished, this, &FrmEmailSettings::storePassword);
}

void FrmEmailSettings::loadAll()
{
    m_loading = true;
    const mail::MailAccount a = mail::loadAccount();
    m_server->setText(a.server);
    m_security->setCurrentIndex(a.security == mail::Security::StartTls ? 1 : 0);
    m_port->setValue(a.port);
    m_user->setText(a.user);
    m_senderName->setText(a.senderName);
    m_senderAddress->setText(a.senderAddress);
    m_replyTo->setText(a.replyTo);
    m_copy->setChecked(a.sendMeACopy);
    showTexts();
    m_loading = false;

    m_keyring->setText(QStringLiteral("Reading the password from the keyring..."));
    m_storedKey = a.passwordKey();
    QPointer<FrmEmailSettings> self(this);
    mail::PasswordStore::current().fetch(m_storedKey, [self](const mail::PasswordStore::Reply &r) {
        if (!self)
            return;
        if (r.status == mail::PasswordStore::Status::Found && self->m_password->text().isEmpty()) {
            self->m_password->setText(r.password);
            self->m_storedPassword = r.password;
        }
        if (r.status == mail::PasswordStore::Status::Failed)
            self->m_keyring->setText(QStringLiteral("The keyring could not be read: %1").arg(r.message));
        else
            self->showKeyring(mail::PasswordStore::current().keyringProblem());
        emit self->passwordRead();
    });
}

void FrmEmailSettings::showTexts()
{
    const bool wasLoading = m_loading;
    m_loading = true;
    const mail::MailTexts t = mail::loadTexts();
    const auto k = mail::MailKind(std::clamp(m_kind->currentIndex(), 0, 2));
    m_subject->setText(t.subjectOf(k));
    m_body->setPlainText(t.bodyOf(k));
    m_loading = wasLoading;
}

void FrmEmailSettings::showKeyring(const QString &problem)
{
    if (problem.isEmpty())
        m_keyring->setText(QStringLiteral("The password is kept in the desktop's keyring."));
    else
        m_keyring->setText(QStringLiteral("No keyring service is running on this desktop (%1), so the password is "
                                          "not stored: Qorvane keeps it in memory until it ends and asks for it "
                                          "once each time it runs.")
                               .arg(problem));
}

void FrmEmailSettings::storePassword()
{
    const QString typed = m_password->text();
    const QString key = account().passwordKey();
    if (typed == m_storedPassword && key == m_storedKey)
        return;
    if (typed.isEmpty() && key != m_storedKey) {
        m_storedKey = key;  // another account, and nothing typed to keep for it
        return;
    }
    m_storedPassword = typed;
    m_storedKey = key;
    // The keyring may first ask the user to unlock it, in its own window.
    m_keyring->setText(QStringLiteral("Storing the password in the keyring..."));
    QPointer<FrmEmailSettings> self(this);
    mail::PasswordStore::current().store(key, typed, [self](const mail::PasswordStore::Reply &r) {
        if (!self)
            return;
        if (r.status == mail::PasswordStore::Status::Failed)
            self->m_keyring->setText(QStringLiteral("The password could not be stored in the keyring: %1").arg(r.message));
        else
            self->showKeyring(mail::PasswordStore::current().keyringProblem());
    });
}

mail::MailAccount FrmEmailSettings::account() const
{
    mail::MailAccount a = mail::loadAccount();  // keeps what has no control (CAFile)
    a.server = m_server->text().trimmed();
    a.port = m_port->value();
    a.security = m_security->currentIndex() == 1 ? mail::Security::StartTls : mail::Security::SslTls;
    a.user = m_user->text();
    a.senderName = m_senderName->text();
    a.senderAddress = m_senderAddress->text().trimmed();
    a.replyTo = m_replyTo->text().trimmed();
    a.sendMeACopy = m_copy->isChecked();
    return a;
}

mail::Delivery FrmEmailSettings::cmdSendTestClick()
{
    DialogService &dialogs = DialogService::current();
    const mail::MailAccount a = account();
    if (const QString problem = a.problem(); !problem.isEmpty()) {
        dialogs.warning(this, Title, problem);
        return {};
    }
    storePassword();
    const QString password = m_password->text();

    // The network waits on its own thread; the window repaints meanwhile but
    // takes no input until the answer is in.
    mail::Delivery d;
    m_sendTest->setEnabled(false);
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    QEventLoop loop;
    QThread *worker = QThread::create([&d, a, password] { d = mail::sendTestMessage(a, password); });
    connect(worker, &QThread::finished, &loop, &QEventLoop::quit);
    worker->start();
    loop.exec(QEventLoop::ExcludeUserInputEvents);
    worker->wait();
    delete worker;
    QGuiApplication::restoreOverrideCursor();
    m_sendTest->setEnabled(true);

    switch (d.status) {
    case mail::Delivery::Status::Delivered:
        dialogs.information(this, Title,
                            QStringLiteral("The test message was sent to %1.\n\nThe server answered: %2")
                                .arg(a.senderAddress, d.words));
        break;
    case mail::Delivery::Status::Refused:
        dialogs.warning(this, Title, QStringLiteral("The server refused the test message:\n\n%1").arg(d.words));
        break;
    case mail::Delivery::Status::Failed:
        dialogs.warning(this, Title,
                        QStringLiteral("The test message could not be sent.\n\n%1%2")
                            .arg(d.reason, d.words.isEmpty() ? QString()
                                                             : QStringLiteral("\n\nThe server said: ") + d.words));
        break;
    }
    return d;
}

}  // namespace qor
