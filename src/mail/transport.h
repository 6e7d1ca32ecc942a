// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// Where a built message goes: an SMTP server (smtp.h) or a folder of .eml
// files for a trial run. A run hands each message to one transport.
#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

namespace qor::mail {

struct Envelope {
    QString from;            // MAIL FROM
    QStringList recipients;  // RCPT TO, customers' addresses and any blind copy
    QByteArray message;      // the whole message, CRLF line ends
    QString label;           // the customer number, for a file name
};

struct RecipientReply {
    QString address;
    bool accepted = false;
    QString words;  // the server's reply, "550 5.1.1 <x@y>: no such user"
};

struct Delivery {
    enum class Status {
        Delivered,  // the server took the message for at least one recipient
        Refused,    // the server refused it, in words; the run goes on
        Failed,     // no answer to rely on (connection, certificate, password, time-out)
    };
    Status status = Status::Failed;
    QList<RecipientReply> recipients;  // as the server answered each RCPT
    QString words;                     // the server's own reply that decided it, when there is one
    QString reason;                    // what went wrong, in plain words, for Failed
    // A failure that will meet every following message the same way (a lost
    // connection, a refused password): the run stops and sends no more.
    bool stopsRun = false;
};

class Transport {
public:
    virtual ~Transport() = default;
    virtual Delivery deliver(const Envelope &e) = 0;
    // Asks a delivery under way to stop soon; may be called from any thread.
    virtual void cancel() {}
    // False for a trial run: nothing leaves the machine, nothing is logged.
    virtual bool sends() const { return true; }
};

// Writes each message as "<label>.eml" in a folder, replacing one of the
// same name: what would have been sent, byte for byte.
class EmlFolder : public Transport {
public:
    explicit EmlFolder(QString folder);
    Delivery deliver(const Envelope &e) override;
    bool sends() const override { return false; }
    QStringList written() const { return m_written; }

private:
    QString m_folder;
    QStringList m_written;
};

}  // namespace qor::mail
