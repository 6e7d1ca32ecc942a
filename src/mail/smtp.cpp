// SPDX-License-Identifier: GPL-3.0-or-later
#include "mail/smtp.h"

#include "mail/mime.h"

#include <QSysInfo>
#include <QUrl>

#include <curl/curl.h>

#include <mutex>

namespace qor::mail {

namespace {

CURL *handle(void *p) { return static_cast<CURL *>(p); }

bool positive(int code) { return code >= 200 && code < 400; }

struct Upload {
    const QByteArray *data;
    qsizetype pos = 0;
};

size_t readUpload(char *buffer, size_t size, size_t count, void *user)
{
    auto *u = static_cast<Upload *>(user);
    const size_t n = std::min<size_t>(size * count, size_t(u->data->size() - u->pos));
    memcpy(buffer, u->data->constData() + u->pos, n);
    u->pos += qsizetype(n);
    return n;
}

// What was said on the connection during one message: our commands (their
// verbs and addresses only: a login's lines are never kept) and the server's
// replies, which carry its own words for whatever it refused.
struct Transcript {
    struct Exchange {
        QByteArray command;  // "" greeting, "EHLO", "AUTH", "MAIL", "RCPT", "DATA", "." end of data
        QString address;     // of MAIL and RCPT
        QStringList reply;
        int code = 0;  // set when the reply is complete
    };
    QList<Exchange> exchanges;
    QByteArray partial;

    void sent(const QByteArray &line)
    {
        static const QByteArrayList verbs = {"EHLO", "HELO", "STARTTLS", "AUTH", "MAIL", "RCPT",
                                             "DATA", "QUIT", "RSET", "NOOP"};
        const QByteArray trimmed = line.trimmed();
        const qsizetype blank = trimmed.indexOf(' ');
        const QByteArray verb = (blank < 0 ? trimmed : trimmed.left(blank)).toUpper();
        Exchange e;
        if (verb == ".")
            e.command = ".";  // the end of the message's data
        else
            e.command = verbs.contains(verb) ? verb : QByteArray("AUTH");  // a login's continuation lines
        if (e.command == "MAIL" || e.command == "RCPT") {
            const qsizetype lt = line.indexOf('<'), gt = line.indexOf('>', lt);
            if (lt >= 0 && gt > lt)
                e.address = QString::fromUtf8(line.mid(lt + 1, gt - lt - 1));
        }
        exchanges << e;
    }

    void received(const QByteArray &bytes)
    {
        partial += bytes;
        qsizetype end;
        while ((end = partial.indexOf('\n')) >= 0) {
            const QByteArray line = partial.left(end).trimmed();
            partial.remove(0, end + 1);
            if (line.size() < 3)
                continue;
            // A reply that follows a complete one with nothing said between
            // is the greeting, or the answer to the message's data.
            if (exchanges.isEmpty() || exchanges.last().code != 0) {
                Exchange e;
                e.command = !exchanges.isEmpty() && exchanges.last().command == "DATA" ? "." : "";
                exchanges << e;
            }
            Exchange &e = exchanges.last();
            e.reply << QString::fromUtf8(line);
            if (line.size() == 3 || line[3] == ' ')
                e.code = line.left(3).toInt();
        }
    }

    const Exchange *last(const char *command) const
    {
        for (auto it = exchanges.crbegin(); it != exchanges.crend(); ++it)
            if (it->command == command)
                return &*it;
        return nullptr;
    }
    static QString words(const Exchange *e) { return e ? e->reply.join(u' ') : QString(); }
};

int onDebug(CURL *, curl_infotype type, char *data, size_t size, void *user)
{
    auto *t = static_cast<Transcript *>(user);
    if (type == CURLINFO_HEADER_OUT)
        t->sent(QByteArray(data, qsizetype(size)));
    else if (type == CURLINFO_HEADER_IN)
        t->received(QByteArray(data, qsizetype(size)));
    return 0;
}

int onProgress(void *user, curl_off_t, curl_off_t, curl_off_t, curl_off_t)
{
    return static_cast<std::atomic<bool> *>(user)->load() ? 1 : 0;
}

QString plainReason(CURLcode rc, const char *errorBuffer, const SmtpOptions &o)
{
    const QString detail = QString::fromUtf8(*errorBuffer ? errorBuffer : curl_easy_strerror(rc));
    switch (rc) {
    case CURLE_COULDNT_RESOLVE_HOST:
        return QStringLiteral("The server \"%1\" was not found.").arg(o.host);
    case CURLE_COULDNT_CONNECT:
        return QStringLiteral("No connection to %1 on port %2: %3").arg(o.host).arg(o.port).arg(detail);
    case CURLE_OPERATION_TIMEDOUT:
        return QStringLiteral("The server did not answer in time.");
    case CURLE_PEER_FAILED_VERIFICATION:
        return QStringLiteral("The server's certificate could not be verified, so nothing was sent: %1").arg(detail);
    case CURLE_USE_SSL_FAILED:
        return QStringLiteral("The server offers no encryption (STARTTLS), so nothing was sent and no password.");
    case CURLE_SSL_CONNECT_ERROR:
        return QStringLiteral(
                   "No encrypted connection to the server, so nothing was sent and no password "
                   "(is the security choice right for this port?): %1")
            .arg(detail);
    case CURLE_LOGIN_DENIED:
        return QStringLiteral("The server refused the user name or password.");
    case CURLE_SEND_ERROR:
    case CURLE_RECV_ERROR:
    case CURLE_GOT_NOTHING:
        return QStringLiteral("The connection to the server was lost: %1").arg(detail);
    case CURLE_ABORTED_BY_CALLBACK:
        return QStringLiteral("Cancelled.");
    default:
        return detail;
    }
}

}  // namespace

SmtpOptions SmtpOptions::forAccount(const MailAccount &a, const QString &password)
{
    SmtpOptions o;
    o.host = a.server.trimmed();
    o.port = a.port;
    o.security = a.security;
    o.user = a.user;
    o.password = password;
    o.caFile = a.caFile;
    return o;
}

SmtpSession::SmtpSession(SmtpOptions options) : m_options(std::move(options))
{
    static std::once_flag once;
    std::call_once(once, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
    m_curl = curl_easy_init();
}

SmtpSession::~SmtpSession()
{
    if (m_curl)
        curl_easy_cleanup(handle(m_curl));
}

Delivery SmtpSession::deliver(const Envelope &e)
{
    Delivery d;
    if (!m_curl) {
        d.reason = QStringLiteral("The mail library could not start.");
        d.stopsRun = true;
        return d;
    }
    CURL *c = handle(m_curl);
    const bool implicitTls = m_options.security == Security::SslTls;
    QString host = m_options.host;
    if (host.contains(u':'))
        host = u'[' + host + u']';
    // The path of the address is the name we greet the server with.
    QString helo = QSysInfo::machineHostName();
    if (helo.isEmpty())
        helo = QStringLiteral("localhost");
    const QByteArray url = (implicitTls ? QByteArray("smtps://") : QByteArray("smtp://")) + QUrl::toAce(host) + ':' +
                           QByteArray::number(m_options.port) + '/' + QUrl::toPercentEncoding(helo);
    curl_easy_setopt(c, CURLOPT_URL, url.constData());
    curl_easy_setopt(c, CURLOPT_PROTOCOLS_STR, implicitTls ? "smtps" : "smtp");
    // Without this a STARTTLS server that doesn't offer it would get the
    // login in the clear.
    curl_easy_setopt(c, CURLOPT_USE_SSL, long(CURLUSESSL_ALL));
    curl_easy_setopt(c, CURLOPT_SSL_VERIFYPEER, 1L);
    curl_easy_setopt(c, CURLOPT_SSL_VERIFYHOST, 2L);
    if (!m_options.caFile.isEmpty())
        curl_easy_setopt(c, CURLOPT_CAINFO, m_options.caFile.toLocal8Bit().constData());
    curl_easy_setopt(c, CURLOPT_CONNECTTIMEOUT_MS, long(m_options.connectTimeoutMs));
    curl_easy_setopt(c, CURLOPT_TIMEOUT_MS, long(m_options.messageTimeoutMs));
    curl_easy_setopt(c, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(c, CURLOPT_TCP_KEEPALIVE, 1L);
    if (!m_options.user.isEmpty()) {
        curl_easy_setopt(c, CURLOPT_USERNAME, m_options.user.toUtf8().constData());
        curl_easy_setopt(c, CURLOPT_PASSWORD, m_options.password.toUtf8().constData());
        curl_easy_setopt(c, CURLOPT_SASL_IR, 1L);
    }

    const QByteArray from = '<' + e.from.toUtf8() + '>';
    curl_easy_setopt(c, CURLOPT_MAIL_FROM, from.constData());
    curl_slist *rcpt = nullptr;
    for (const QString &r : e.recipients)
        rcpt = curl_slist_append(rcpt, ('<' + r.toUtf8() + '>').constData());
    curl_easy_setopt(c, CURLOPT_MAIL_RCPT, rcpt);
    // One refused address must not stop the others.
    curl_easy_setopt(c, CURLOPT_MAIL_RCPT_ALLLOWFAILS, 1L);

    Upload upload{&e.message};
    curl_easy_setopt(c, CURLOPT_UPLOAD, 1L);
    curl_easy_setopt(c, CURLOPT_READFUNCTION, readUpload);
    curl_easy_setopt(c, CURLOPT_READDATA, &upload);
    curl_easy_setopt(c, CURLOPT_INFILESIZE_LARGE, curl_off_t(e.message.size()));

    // The server's own words come through the debug channel; the error
    // buffer only has curl's summary of them.
    Transcript t;
    curl_easy_setopt(c, CURLOPT_VERBOSE, 1L);
    curl_easy_setopt(c, CURLOPT_DEBUGFUNCTION, onDebug);
    curl_easy_setopt(c, CURLOPT_DEBUGDATA, &t);
    curl_easy_setopt(c, CURLOPT_NOPROGRESS, 0L);
    curl_easy_setopt(c, CURLOPT_XFERINFOFUNCTION, onProgress);
    curl_easy_setopt(c, CURLOPT_XFERINFODATA, &m_cancel);
    char errorBuffer[CURL_ERROR_SIZE] = {};
    curl_easy_setopt(c, CURLOPT_ERRORBUFFER, errorBuffer);

    const CURLcode rc = m_cancel ? CURLE_ABORTED_BY_CALLBACK : curl_easy_perform(c);

    curl_easy_setopt(c, CURLOPT_MAIL_RCPT, nullptr);
    curl_slist_free_all(rcpt);
    curl_easy_setopt(c, CURLOPT_ERRORBUFFER, nullptr);
    long connects = 0;
    if (curl_easy_getinfo(c, CURLINFO_NUM_CONNECTS, &connects) == CURLE_OK)
        m_connections += int(connects);

    bool anyAccepted = false;
    for (const auto &x : t.exchanges) {
        if (x.command == "RCPT" && x.code) {
            d.recipients << RecipientReply{x.address, positive(x.code), x.reply.join(u' ')};
            anyAccepted = anyAccepted || positive(x.code);
        }
    }
    const auto *endOfData = t.last(".");
    const auto *mailFrom = t.last("MAIL");
    m_lastReply = Transcript::words(endOfData);

    if (rc == CURLE_OK) {
        d.status = Delivery::Status::Delivered;
        d.words = m_lastReply;
    } else if (rc == CURLE_LOGIN_DENIED) {
        d.reason = plainReason(rc, errorBuffer, m_options);
        d.words = Transcript::words(t.last("AUTH"));
        d.stopsRun = true;
    } else if (rc != CURLE_ABORTED_BY_CALLBACK && mailFrom && mailFrom->code && !positive(mailFrom->code)) {
        d.status = Delivery::Status::Refused;
        d.words = Transcript::words(mailFrom);
    } else if (rc != CURLE_ABORTED_BY_CALLBACK && !d.recipients.isEmpty() && !anyAccepted) {
        d.status = Delivery::Status::Refused;
        for (const auto &r : std::as_const(d.recipients))
            d.words += (d.words.isEmpty() ? QString() : QStringLiteral("; ")) + r.words;
    } else if (endOfData && endOfData->code && !positive(endOfData->code)) {
        d.status = Delivery::Status::Refused;
        d.words = m_lastReply;
    } else {
        d.reason = plainReason(rc, errorBuffer, m_options);
        // The last thing the server said, when it said something negative
        // ("421 shutting down").
        if (!t.exchanges.isEmpty() && t.exchanges.last().code >= 400)
            d.words = t.exchanges.last().reply.join(u' ');
        d.stopsRun = true;
    }
    return d;
}

Delivery sendTestMessage(const MailAccount &a, const QString &password)
{
    MimeMessage m;
    m.fromName = a.senderName;
    m.fromAddress = normalisedAddress(a.senderAddress);
    m.to = {m.fromAddress};
    m.replyTo = normalisedAddress(a.replyTo);
    m.subject = QStringLiteral("Qorvane test message");
    m.body = QStringLiteral(
                 "This message was sent by Qorvane to test the e-mail settings.\n\n"
                 "Server: %1, port %2, %3.\n")
                 .arg(a.server.trimmed())
                 .arg(a.port)
                 .arg(securityText(a.security));
    SmtpSession session(SmtpOptions::forAccount(a, password));
    return session.deliver({m.fromAddress, {m.fromAddress}, buildMessage(m), QString()});
}

}  // namespace qor::mail
