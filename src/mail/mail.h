// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// E-mailing invoices, statements and reminders: one run over the chosen
// customers, one message each with that customer's pages as one PDF.
//
// How a command wires it (the "E-mail Selected" buttons, `qorvane-cli email`):
//   1. Make the list of MailCustomer (number, display name, the e-mail field
//      as typed) of the ticked customers, in the order they are shown.
//   2. Write a Compose callback: for one customer it makes the PDF of that
//      customer's pages (pages::writePdf into a QBuffer) and the texts with
//      composeTexts(loadTexts(), kind, fields, date). It is called once per
//      customer with an address, just before that customer's message goes
//      out, so a run of a thousand never holds a thousand PDFs.
//   3. In a window: mailgui/emailrun.h, runEmail(owner, customers, compose)
//      asks for the password when needed, shows the progress with Cancel and
//      the results, and returns the results. Untick each customer whose
//      outcome is Sent. On the command line: loadAccount(), the password from
//      QORVANE_SMTP_PASSWORD or PasswordStore::current().fetchAndWait(), an
//      SmtpSession (or an EmlFolder for --dry-run DIR), then
//      SendRun(account, transport, &log).run(customers, compose).
// Nothing here touches a widget; the run may go on a worker thread while
// Compose is called where the data lives (see mailgui/emailrun.cpp).
#include "mail/mailsettings.h"
#include "mail/sentlog.h"
#include "mail/transport.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <atomic>
#include <functional>

namespace qor::mail {

struct MailCustomer {
    QString number;     // CID
    QString name;       // as the lists show it
    QString addresses;  // the customer's e-mail field, one or more addresses
};

// One customer's message before it is built. A non-empty error means it
// couldn't be made (the PDF failed); that customer is reported, the run
// goes on.
struct OutgoingMessage {
    QString subject, body, attachmentName;
    QByteArray pdf;
    QString error;
};
using Compose = std::function<OutgoingMessage(const MailCustomer &)>;

struct CustomerResult {
    enum class Outcome {
        Sent,        // the server took it for at least one of the customer's addresses
        Written,     // a trial run wrote it to a file
        NoAddress,   // the customer has no e-mail address
        BadAddress,  // what the field holds is no address; nothing was sent
        Refused,     // the server refused it; words says why
        Failed,      // it could not be sent; words says why
        NotSent,     // cancelled, or the run stopped before this customer
    };
    MailCustomer customer;
    Outcome outcome = Outcome::NotSent;
    QStringList sentTo;   // the addresses the server took
    QStringList refused;  // addresses not taken, each with the reason
    QString words;        // the server's own words, or the reason
    QString subject;
};
// "sent", "no address", "refused", ... as the result list and the log say it.
QString outcomeText(CustomerResult::Outcome o);

class SendRun {
public:
    // log may be null (a trial run keeps no log).
    SendRun(MailAccount account, Transport &transport, SentMailLog *log = nullptr);

    // Called before each customer (index from 0) and after each, from the
    // thread that runs run().
    std::function<void(int index, int total, const MailCustomer &)> onProgress;
    std::function<void(int index, const CustomerResult &)> onResult;

    // Stops the run: the message under way is abandoned (and reported as not
    // sent unless the server already took it), the rest are not sent. Any
    // thread may call it.
    void cancel();
    bool cancelled() const { return m_cancel; }

    QList<CustomerResult> run(const QList<MailCustomer> &customers, const Compose &compose);
    // Set when the log could not be written.
    QString logError() const { return m_logError; }

private:
    CustomerResult sendOne(const MailCustomer &c, const Compose &compose);

    MailAccount m_account;
    Transport &m_transport;
    SentMailLog *m_log;
    std::atomic<bool> m_cancel{false};
    QString m_stopReason;
    QString m_logError;
};

}  // namespace qor::mail
