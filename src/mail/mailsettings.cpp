// SPDX-License-Identifier: GPL-3.0-or-later
#include "mail/mailsettings.h"

#include "mail/mime.h"
#include "settings/settingsstore.h"

namespace qor::mail {

QString securityText(Security s)
{
    return s == Security::StartTls ? QStringLiteral("STARTTLS") : QStringLiteral("SSL/TLS");
}

int defaultPort(Security s)
{
    return s == Security::StartTls ? 587 : 465;
}

QString MailAccount::passwordKey() const
{
    return QStringLiteral("smtp:%1@%2").arg(user, server.trimmed().toLower());
}

QString MailAccount::problem() const
{
    if (server.trimmed().isEmpty())
        return QStringLiteral("Enter the SMTP server of your e-mail account in E-mail Settings.");
    if (senderAddress.trimmed().isEmpty())
        return QStringLiteral("Enter the sender's address in E-mail Settings.");
    if (!isValidAddress(senderAddress.trimmed()))
        return QStringLiteral("The sender's address \"%1\" is not an e-mail address.").arg(senderAddress.trimmed());
    if (!replyTo.trimmed().isEmpty() && !isValidAddress(replyTo.trimmed()))
        return QStringLiteral("The reply-to address \"%1\" is not an e-mail address.").arg(replyTo.trimmed());
    return {};
}

MailAccount loadAccount()
{
    MailAccount a;
    a.server = settings::SmtpServer.get().trimmed();
    a.security = settings::MailSecurity.get().trimmed().compare(QLatin1String("STARTTLS"), Qt::CaseInsensitive) == 0
                     ? Security::StartTls
                     : Security::SslTls;
    const int port = settings::SmtpPort.get();
    a.port = port >= 1 && port <= 65535 ? port : defaultPort(a.security);
    a.user = settings::UserName.get();
    a.senderName = settings::SenderName.get();
    a.senderAddress = settings::SenderAddress.get().trimmed();
    a.replyTo = settings::ReplyTo.get().trimmed();
    a.sendMeACopy = settings::SendMeACopy.isOn();
    a.caFile = settings::CAFile.get();
    return a;
}

void saveAccount(const MailAccount &a)
{
    settings::SmtpServer.set(a.server);
    settings::SmtpPort.set(a.port);
    settings::MailSecurity.set(securityText(a.security));
    settings::UserName.set(a.user);
    settings::SenderName.set(a.senderName);
    settings::SenderAddress.set(a.senderAddress);
    settings::ReplyTo.set(a.replyTo);
    settings::SendMeACopy.set(a.sendMeACopy);
}

QString defaultSubject(MailKind k)
{
    return settings::MailSubject[size_t(k)].defaultText();
}

QString defaultBody(MailKind k)
{
    return settings::MailBody[size_t(k)].defaultText();
}

MailTexts loadTexts()
{
    MailTexts t;
    for (size_t i = 0; i < 3; ++i) {
        t.subject[i] = settings::MailSubject[i].get();
        t.body[i] = settings::MailBody[i].get();
    }
    return t;
}

QString fillTemplate(const QString &text, const TemplateFields &f, const QLocale &locale)
{
    const std::pair<QLatin1String, QString> fields[] = {
        {QLatin1String("{company}"), f.company},
        {QLatin1String("{customer}"), f.customer},
        {QLatin1String("{period}"), f.period},
        {QLatin1String("{amount}"), f.amount.toCurrencyText(locale)},
        {QLatin1String("{due date}"), f.dueDate},
    };
    QString out;
    out.reserve(text.size() + 64);
    qsizetype i = 0;
    while (i < text.size()) {
        bool matched = false;
        if (text[i] == u'{') {
            for (const auto &[name, value] : fields) {
                if (QStringView(text).mid(i).startsWith(name, Qt::CaseInsensitive)) {
                    out += value;
                    i += name.size();
                    matched = true;
                    break;
                }
            }
        }
        if (!matched)
            out += text[i++];
    }
    return out;
}

QString attachmentName(MailKind k, const QString &company, const QString &period, QDate date)
{
    static const char *const words[] = {"invoice", "statement", "reminder"};
    auto clean = [](QString s) {
        for (QChar &c : s) {
            if (c == u'/' || c == u'\\')
                c = u'-';
            else if (c.category() == QChar::Other_Control || c == QChar::LineSeparator ||
                     c == QChar::ParagraphSeparator)
                c = u' ';
        }
        return s.simplified();
    };
    const QString what = k == MailKind::Invoice ? clean(period) : date.toString(QStringLiteral("yyyy-MM-dd"));
    QString tail = QString::fromLatin1(words[int(k)]);
    if (!what.isEmpty())
        tail += u' ' + what;
    tail += QStringLiteral(".pdf");
    QString name = clean(company);
    // Most file systems take 255 bytes to a name; leave room for a reader's
    // " (2)" and cut the company, never the part that says what it is.
    constexpr qsizetype MaxBytes = 200;
    while (!name.isEmpty() && (name + QStringLiteral(" - ") + tail).toUtf8().size() > MaxBytes) {
        name.chop(1);
        if (!name.isEmpty() && name.back().isHighSurrogate())
            name.chop(1);
    }
    name = name.trimmed();
    return name.isEmpty() ? tail : name + QStringLiteral(" - ") + tail;
}

MessageTexts composeTexts(const MailTexts &texts, MailKind k, const TemplateFields &f, QDate date,
                          const QLocale &locale)
{
    return {fillTemplate(texts.subjectOf(k), f, locale), fillTemplate(texts.bodyOf(k), f, locale),
            attachmentName(k, f.company, f.period, date)};
}

}  // namespace qor::mail
