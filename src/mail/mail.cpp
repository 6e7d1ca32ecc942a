// SPDX-License-Identifier: GPL-3.0-or-later
#include "mail/mail.h"

#include "mail/mime.h"

#include <QDir>
#include <QSaveFile>

namespace qor::mail {

QString outcomeText(CustomerResult::Outcome o)
{
    using O = CustomerResult::Outcome;
    switch (o) {
    case O::Sent: return QStringLiteral("sent");
    case O::Written: return QStringLiteral("written");
    case O::NoAddress: return QStringLiteral("no address");
    case O::BadAddress: return QStringLiteral("no valid address");
    case O::Refused: return QStringLiteral("refused");
    case O::Failed: return QStringLiteral("failed");
    case O::NotSent: return QStringLiteral("not sent");
    }
    return {};
}

EmlFolder::EmlFolder(QString folder) : m_folder(std::move(folder)) {}

Delivery EmlFolder::deliver(const Envelope &e)
{
    Delivery d;
    QString base = e.label;
    base.replace(u'/', u'-');
    if (base.isEmpty() || base.startsWith(u'.'))
        base.prepend(QStringLiteral("message"));
    const QString path = QDir(m_folder).filePath(base + QStringLiteral(".eml"));
    QDir().mkpath(m_folder);
    QSaveFile f(path);
    if (!f.open(QIODevice::WriteOnly) || f.write(e.message) != e.message.size() || !f.commit()) {
        d.reason = QStringLiteral("%1 could not be written: %2").arg(QDir::toNativeSeparators(path), f.errorString());
        d.stopsRun = true;  // the next file would meet the same full disk or missing right
        return d;
    }
    m_written << path;
    d.status = Delivery::Status::Delivered;
    for (const QString &r : e.recipients)
        d.recipients << RecipientReply{r, true, {}};
    d.words = QDir::toNativeSeparators(path);
    return d;
}

SendRun::SendRun(MailAccount account, Transport &transport, SentMailLog *log)
    : m_account(std::move(account)), m_transport(transport), m_log(log)
{
}

void SendRun::cancel()
{
    m_cancel = true;
    m_transport.cancel();
}

QList<CustomerResult> SendRun::run(const QList<MailCustomer> &customers, const Compose &compose)
{
    m_stopReason = m_account.problem();
    if (m_log && m_transport.sends() && !m_log->prune())
        m_logError = m_log->error();
    QList<CustomerResult> results;
    results.reserve(customers.size());
    for (int i = 0; i < customers.size(); ++i) {
        if (onProgress)
            onProgress(i, int(customers.size()), customers[i]);
        results << sendOne(customers[i], compose);
        if (onResult)
            onResult(i, results.last());
    }
    return results;
}

CustomerResult SendRun::sendOne(const MailCustomer &c, const Compose &compose)
{
    using O = CustomerResult::Outcome;
    CustomerResult r;
    r.customer = c;
    const AddressList addresses = splitAddresses(c.addresses);
    if (addresses.valid.isEmpty()) {
        // Said before a stop or a cancel: these customers need the user's
        // attention whatever happens to the run.
        r.outcome = addresses.invalid.isEmpty() ? O::NoAddress : O::BadAddress;
        for (const QString &a : addresses.invalid)
            r.refused << QStringLiteral("%1: not an e-mail address").arg(a);
        r.words = r.refused.join(QStringLiteral("; "));
        return r;
    }
    if (m_cancel || !m_stopReason.isEmpty()) {
        r.words = m_cancel ? QStringLiteral("Cancelled.") : m_stopReason;
        return r;
    }
    const OutgoingMessage m = compose(c);
    if (!m.error.isEmpty()) {
        r.outcome = O::Failed;
        r.words = m.error;
        return r;
    }
    r.subject = m.subject;

    MimeMessage mime;
    mime.fromName = m_account.senderName;
    mime.fromAddress = normalisedAddress(m_account.senderAddress);
    mime.to = addresses.valid;
    mime.replyTo = normalisedAddress(m_account.replyTo);
    mime.subject = m.subject;
    mime.body = m.body;
    mime.attachmentName = m.attachmentName;
    mime.attachment = m.pdf;
    Envelope e{mime.fromAddress, addresses.valid, buildMessage(mime), c.number};
    if (m_account.sendMeACopy && !e.recipients.contains(mime.fromAddress, Qt::CaseInsensitive))
        e.recipients << mime.fromAddress;

    const Delivery d = m_transport.deliver(e);
    for (const QString &a : addresses.invalid)
        r.refused << QStringLiteral("%1: not an e-mail address").arg(a);
    switch (d.status) {
    case Delivery::Status::Delivered:
        for (const RecipientReply &rr : d.recipients) {
            if (!addresses.valid.contains(rr.address))
                continue;  // the sender's own copy
            if (rr.accepted)
                r.sentTo << rr.address;
            else
                r.refused << QStringLiteral("%1: %2").arg(rr.address, rr.words);
        }
        r.outcome = r.sentTo.isEmpty() ? O::Refused : m_transport.sends() ? O::Sent
                                                                          : O::Written;
        r.words = r.refused.isEmpty() ? d.words : r.refused.join(QStringLiteral("; "));
        break;
    case Delivery::Status::Refused:
        r.outcome = O::Refused;
        r.words = d.words;
        break;
    case Delivery::Status::Failed:
        r.outcome = m_cancel ? O::NotSent : O::Failed;
        r.words = d.words.isEmpty() ? d.reason : QStringLiteral("%1 (%2)").arg(d.reason, d.words);
        if (d.stopsRun && !m_cancel)
            m_stopReason = QStringLiteral("Not sent, as the run stopped: %1").arg(d.reason);
        break;
    }

    if (m_log && m_transport.sends()) {
        QList<SentMailLog::Entry> lines;
        const QDateTime now = QDateTime::currentDateTime();
        for (const QString &a : addresses.valid) {
            QString result;
            if (r.sentTo.contains(a))
                result = QStringLiteral("sent");
            else if (r.outcome == O::NotSent)
                result = QStringLiteral("not sent: cancelled");
            else {
                QString why = r.words;
                for (const RecipientReply &rr : d.recipients)
                    if (rr.address == a && !rr.accepted)
                        why = rr.words;
                result = outcomeText(r.outcome == O::Sent ? O::Refused : r.outcome) + QStringLiteral(": ") + why;
            }
            lines << SentMailLog::Entry{now, c.number, a, m.subject, result};
        }
        if (!m_log->append(lines))
            m_logError = m_log->error();
    }
    return r;
}

}  // namespace qor::mail
