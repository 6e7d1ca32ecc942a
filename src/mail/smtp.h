// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// Sending over SMTP with libcurl. One session keeps one connection open for
// a whole run; the server's certificate and name are always verified, and
// the password only ever travels inside TLS: SSL/TLS speaks TLS from the
// first byte, STARTTLS must succeed before anything else is said.
#include "mail/mailsettings.h"
#include "mail/transport.h"

#include <atomic>
#include <memory>

namespace qor::mail {

struct SmtpOptions {
    QString host;
    int port = 465;
    Security security = Security::SslTls;
    QString user;  // empty: no login
    QString password;
    QString caFile;  // extra trusted certificates, beside the system's
    int connectTimeoutMs = 20000;
    // For one message, connecting included. A 30 KB PDF takes a fraction of
    // a second on any line that can send mail at all.
    int messageTimeoutMs = 120000;

    static SmtpOptions forAccount(const MailAccount &a, const QString &password);
};

class SmtpSession : public Transport {
public:
    explicit SmtpSession(SmtpOptions options);
    ~SmtpSession() override;  // says QUIT and closes the connection
    SmtpSession(const SmtpSession &) = delete;
    SmtpSession &operator=(const SmtpSession &) = delete;

    Delivery deliver(const Envelope &e) override;
    void cancel() override { m_cancel = true; }

    // Connections opened so far (one for a whole run unless one was lost).
    int connectionsMade() const { return m_connections; }
    // The server's greeting and the answer to the last message's data, for
    // "Send Test Message".
    QString lastReply() const { return m_lastReply; }

private:
    SmtpOptions m_options;
    void *m_curl = nullptr;
    std::atomic<bool> m_cancel{false};
    int m_connections = 0;
    QString m_lastReply;
};

// One short message from the sender to the sender: the account at work.
// The result's words hold the server's answer.
Delivery sendTestMessage(const MailAccount &a, const QString &password);

}  // namespace qor::mail
