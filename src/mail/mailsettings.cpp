// SPDX-License-Identifier: GPL-3.0-or-later
#include "mail/mailsettings.h"

#include "mail/mime.h"
#include "settings/settingsstore.h"

namespace qor::mail {

namespace {

QString get(const char *key)
{
    return settings::value(QString::fromLatin1(Section), QString::fromLatin1(key));
}

void put(const char *key, const QString &v)
{
    settings::write(QString::fromLatin1(Section), QString::fromLatin1(key), v);
}

QString tableDefault(const char *key)
{
    const settings::KeyInfo *k = settings::findKey(QString::fromLatin1(Section), QString::fromLatin1(key));
    return k && k->defaultValue ? QString::fromUtf8(k->defaultValue) : QString();
}

}  // namespace

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
    a.server = get(keys::Server).trimmed();
    a.security = get(keys::Security).trimmed().compare(QLatin1String("STARTTLS"), Qt::CaseInsensitive) == 0
                     ? Security::StartTls
                     : Security::SslTls;
    const int port = settings::readNumber(QString::fromLatin1(Section), QString::fromLatin1(keys::Port), 0);
    a.port = port >= 1 && port <= 65535 ? port : defaultPort(a.security);
    a.user = get(keys::User);
    a.senderName = get(keys::SenderName);
    a.senderAddress = get(keys::SenderAddress).trimmed();
    a.replyTo = get(keys::ReplyTo).trimmed();
    a.sendMeACopy = settings::isOn(QString::fromLatin1(Section), QString::fromLatin1(keys::SendMeACopy));
    a.caFile = get(keys::CaFile);
    return a;
}

void saveAccount(const MailAccount &a)
{
    put(keys::Server, a.server);
    put(keys::Port, QString::number(a.port));
    put(keys::Security, securityText(a.security));
    put(keys::User, a.user);
    put(keys::SenderName, a.senderName);
    put(keys::SenderAddress, a.senderAddress);
    put(keys::ReplyTo, a.replyTo);
    settings::setOn(QString::fromLatin1(Section), QString::fromLatin1(keys::SendMeACopy), a.sendMeACopy);
}

QString defaultSubject(MailKind k)
{
    return tableDefault(keys::Subject[size_t(k)]);
}

QString defaultBody(MailKind k)
{
    return tableDefault(keys::Body[size_t(k)]);
}

MailTexts loadTexts()
{
    MailTexts t;
    for (size_t i = 0; i < 3; ++i) {
        t.subject[i] = get(keys::Subject[i]);
        t.body[i] = get(keys::Body[i]);
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
