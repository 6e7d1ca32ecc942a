// SPDX-License-Identifier: GPL-3.0-or-later
#include "mailgui/emailrun.h"

#include "mail/passwords.h"
#include "mail/smtp.h"
#include "uiservices/dialogservice.h"

#include <QCoreApplication>
#include <QHeaderView>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QThread>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace qor {

namespace {
const QString RunTitle = QStringLiteral("Sending E-mail");
}

std::optional<QString> passwordForRun(QWidget *owner, const mail::MailAccount &account)
{
    if (account.user.isEmpty())
        return QString();
    mail::PasswordStore &store = mail::PasswordStore::current();
    const auto r = store.fetchAndWait(account.passwordKey());
    if (r.status == mail::PasswordStore::Status::Found)
        return r.password;
    QString label = QStringLiteral("Password for %1 on %2:").arg(account.user, account.server);
    if (r.status == mail::PasswordStore::Status::NoKeyring)
        label.prepend(QStringLiteral("No keyring service is running (%1), so Qorvane asks for the password once "
                                     "each time it runs.\n\n")
                          .arg(r.message));
    else if (r.status == mail::PasswordStore::Status::Failed)
        label.prepend(QStringLiteral("The keyring could not be read (%1).\n\n").arg(r.message));
    const auto typed = DialogService::current().secret(owner, QStringLiteral("E-mail Password"), label);
    if (!typed)
        return std::nullopt;
    store.store(account.passwordKey(), *typed);  // the keyring, or this run's memory
    return typed;
}

QList<mail::CustomerResult> runEmail(QWidget *owner, const QList<mail::MailCustomer> &customers,
                                     const mail::Compose &compose)
{
    const mail::MailAccount account = mail::loadAccount();
    if (const QString problem = account.problem(); !problem.isEmpty()) {
        DialogService::current().warning(owner, RunTitle, problem);
        return {};
    }
    const auto password = passwordForRun(owner, account);
    if (!password)
        return {};
    mail::SmtpSession session(mail::SmtpOptions::forAccount(account, *password));
    mail::SentMailLog log;
    mail::SendRun run(account, session, &log);
    FrmEmailRun window(run, customers, compose, owner);
    window.exec();
    if (!run.logError().isEmpty())
        DialogService::current().warning(owner, RunTitle,
                                         QStringLiteral("The list of sent mail could not be written: %1")
                                             .arg(run.logError()));
    return window.results();
}

FrmEmailRun::FrmEmailRun(mail::SendRun &run, QList<mail::MailCustomer> customers, mail::Compose compose,
                         QWidget *owner)
    : QDialog(owner), m_run(run), m_customers(std::move(customers)), m_compose(std::move(compose))
{
    setObjectName(QStringLiteral("frmEmailRun"));
    setWindowTitle(RunTitle);
    auto *top = new QVBoxLayout(this);
    m_status = new QLabel(this);
    m_status->setObjectName(QStringLiteral("lblStatus"));
    m_status->setWordWrap(true);
    m_bar = new QProgressBar(this);
    m_bar->setObjectName(QStringLiteral("staProgress"));
    m_bar->setRange(0, int(m_customers.size()));
    m_list = new QTreeWidget(this);
    m_list->setObjectName(QStringLiteral("lvwResults"));
    m_list->setHeaderLabels({QStringLiteral("Customer"), QStringLiteral("Result"), QStringLiteral("Details")});
    m_list->setRootIsDecorated(false);
    m_list->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    m_list->hide();
    m_cancel = new QPushButton(QStringLiteral("Cancel"), this);
    m_cancel->setObjectName(QStringLiteral("cmdCancel"));
    top->addWidget(m_status);
    top->addWidget(m_bar);
    top->addWidget(m_list, 1);
    top->addWidget(m_cancel, 0, Qt::AlignRight);
    connect(m_cancel, &QPushButton::clicked, this, &FrmEmailRun::reject);
    setMinimumWidth(420);
    showProgress(0, int(m_customers.size()), m_customers.isEmpty() ? QString() : m_customers.first().name);
}

FrmEmailRun::~FrmEmailRun()
{
    if (m_worker) {
        m_run.cancel();
        // The run may be waiting for a message from this thread: serve it.
        while (!m_worker->wait(20))
            QCoreApplication::processEvents();
        delete m_worker;
    }
}

void FrmEmailRun::showEvent(QShowEvent *e)
{
    QDialog::showEvent(e);
    start();
}

void FrmEmailRun::start()
{
    if (m_started)
        return;
    m_started = true;
    m_run.onProgress = [this](int i, int n, const mail::MailCustomer &c) {
        QMetaObject::invokeMethod(
            this, [this, i, n, name = c.name] { showProgress(i, n, name); }, Qt::QueuedConnection);
    };
    // The pages are made where the data lives, one customer at a time.
    const mail::Compose onThisThread = [this](const mail::MailCustomer &c) {
        mail::OutgoingMessage m;
        QMetaObject::invokeMethod(
            this, [&] { m = m_compose(c); }, Qt::BlockingQueuedConnection);
        return m;
    };
    m_worker = QThread::create([this, onThisThread] { m_results = m_run.run(m_customers, onThisThread); });
    connect(m_worker, &QThread::finished, this, &FrmEmailRun::showResults);
    m_worker->start();
}

void FrmEmailRun::showProgress(int index, int total, const QString &name)
{
    if (!m_worker && m_started)
        return;  // a late report after the end
    m_bar->setValue(index);
    m_status->setText(total ? QStringLiteral("Sending %1 of %2: %3").arg(index + 1).arg(total).arg(name)
                            : QStringLiteral("Nothing to send."));
}

void FrmEmailRun::showResults()
{
    m_worker->wait();
    delete m_worker;
    m_worker = nullptr;
    m_bar->setValue(m_bar->maximum());
    using O = mail::CustomerResult::Outcome;
    QMap<O, int> counts;
    for (const mail::CustomerResult &r : std::as_const(m_results)) {
        ++counts[r.outcome];
        QString details = r.words;
        if (r.outcome == O::Sent)
            details = r.sentTo.join(QStringLiteral(", ")) +
                      (r.refused.isEmpty() ? QString() : QStringLiteral("; not taken: ") + r.refused.join(QStringLiteral("; ")));
        auto *item = new QTreeWidgetItem(m_list, {r.customer.name, mail::outcomeText(r.outcome), details});
        item->setToolTip(2, details);
    }
    QStringList parts;
    for (O o : {O::Sent, O::Written, O::NoAddress, O::BadAddress, O::Refused, O::Failed, O::NotSent})
        if (counts.value(o))
            parts << QStringLiteral("%1 %2").arg(counts.value(o)).arg(mail::outcomeText(o));
    m_status->setText(parts.isEmpty() ? QStringLiteral("Nothing to send.") : parts.join(QStringLiteral(", ")) + u'.');
    m_bar->hide();
    m_list->show();
    m_cancel->setText(QStringLiteral("Close"));
    resize(std::max(width(), 640), std::max(height(), 360));
    emit runFinished();
}

void FrmEmailRun::reject()
{
    if (m_worker) {
        m_cancel->setEnabled(false);
        m_status->setText(QStringLiteral("Cancelling..."));
        m_run.cancel();
        QObject::connect(this, &FrmEmailRun::runFinished, this, [this] { m_cancel->setEnabled(true); });
        return;
    }
    QDialog::reject();
}

}  // namespace qor
