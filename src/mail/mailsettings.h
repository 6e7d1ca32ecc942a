// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// The e-mail account and the texts of the messages, kept in the settings
// store under the section "EMail" like every other option. The password is
// never among them: it lives in the desktop's keyring (passwords.h).
#include "database/money.h"

#include <QDate>
#include <QLocale>
#include <QString>

#include <array>

namespace qor::mail {

// There is no unencrypted choice: a password never crosses the network in
// the clear.
enum class Security {
    SslTls,    // TLS from the first byte (smtps, port 465)
    StartTls,  // plain greeting, then STARTTLS before anything else (port 587)
};
QString securityText(Security s);  // "SSL/TLS", "STARTTLS"
int defaultPort(Security s);

enum class MailKind { Invoice = 0,
                      Statement = 1,
                      Reminder = 2 };

struct MailAccount {
    QString server;
    int port = 465;
    Security security = Security::SslTls;
    QString user;  // empty: the server takes mail without logging in
    QString senderName;
    QString senderAddress;
    QString replyTo;           // optional
    bool sendMeACopy = false;  // a blind copy of each message to the sender
    // A file of trusted certificates beside the system's, for a server whose
    // certificate a private authority signed. Set by hand only.
    QString caFile;

    // The keyring entry of this account's password.
    QString passwordKey() const;
    // What keeps the account from sending, as a sentence for the user, or
    // empty when it can send.
    QString problem() const;
};

// The subject and body of each kind of message, with the fields {company},
// {customer}, {period}, {amount} and {due date}.
struct MailTexts {
    std::array<QString, 3> subject, body;
    QString subjectOf(MailKind k) const { return subject[size_t(k)]; }
    QString bodyOf(MailKind k) const { return body[size_t(k)]; }
};

// The account and the texts live in the settings store's section "EMail"
// (settings::SmtpServer, settings::MailSubject and the rest).
MailAccount loadAccount();
void saveAccount(const MailAccount &a);
MailTexts loadTexts();
// The text as it stands before the user changes it.
QString defaultSubject(MailKind k);
QString defaultBody(MailKind k);

// What the fields of a message stand for. For statements and reminders
// {period} is the date the statement is made for.
struct TemplateFields {
    QString company;
    QString customer;
    QString period;
    Money amount;
    QString dueDate;  // as the program shows dates
};
// The text with every field put in, in one pass: a customer named
// "{amount}" stays so. A brace that names no field is left as typed.
QString fillTemplate(const QString &text, const TemplateFields &f, const QLocale &locale = QLocale());

// The attachment's name as the reader's mail program shows it:
// "<company> - invoice <period>.pdf", "<company> - statement yyyy-mm-dd.pdf",
// "<company> - reminder yyyy-mm-dd.pdf". The period is taken for invoices,
// the date for the others. "/" and "\" become "-", control characters a
// blank, so the name saves as one file anywhere; a very long company name
// is cut so the name stays within what file systems take.
QString attachmentName(MailKind k, const QString &company, const QString &period, QDate date);

// The subject, body and attachment name of one message.
struct MessageTexts {
    QString subject, body, attachmentName;
};
MessageTexts composeTexts(const MailTexts &texts, MailKind k, const TemplateFields &f, QDate date,
                          const QLocale &locale = QLocale());

}  // namespace qor::mail
