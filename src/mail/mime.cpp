// SPDX-License-Identifier: GPL-3.0-or-later
#include "mail/mime.h"

#include <QLocale>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QSet>
#include <QUrl>

namespace qor::mail {

namespace {

bool isAtext(QChar c)
{
    if (c.unicode() > 127)
        return false;
    if (c.isLetterOrNumber())
        return true;
    return QStringView(u"!#$%&'*+-/=?^_`{|}~").contains(c);
}

bool validLocalPart(QStringView local)
{
    if (local.isEmpty() || local.size() > 64 || local.startsWith(u'.') || local.endsWith(u'.') ||
        local.contains(u".."))
        return false;
    for (QChar c : local)
        if (c != u'.' && !isAtext(c))
            return false;
    return true;
}

// The domain in ASCII (lower case), or empty when it is no host name of two
// or more labels and no address literal.
QString asciiDomain(QStringView domain)
{
    if (domain.startsWith(u'[') && domain.endsWith(u']')) {
        static const QRegularExpression ipv4(QStringLiteral("^\\[(\\d{1,3})\\.(\\d{1,3})\\.(\\d{1,3})\\.(\\d{1,3})\\]$"));
        const auto m = ipv4.match(domain.toString());
        if (!m.hasMatch())
            return {};
        for (int i = 1; i <= 4; ++i)
            if (m.captured(i).toInt() > 255)
                return {};
        return domain.toString();
    }
    const QString ace = QString::fromLatin1(QUrl::toAce(domain.toString().toLower()));
    if (ace.isEmpty() || ace.size() > 253)
        return {};
    const QStringList labels = ace.split(u'.');
    if (labels.size() < 2)
        return {};
    for (const QString &l : labels) {
        if (l.isEmpty() || l.size() > 63 || l.startsWith(u'-') || l.endsWith(u'-'))
            return {};
        for (QChar c : l)
            if (c.unicode() > 127 || !(c.isLetterOrNumber() || c == u'-'))
                return {};
    }
    bool numericTop = true;
    for (QChar c : labels.last())
        numericTop = numericTop && c.isDigit();
    return numericTop ? QString() : ace;
}

// Anything that could end a header line or hide in it becomes a blank.
QString headerSafe(const QString &text)
{
    QString s = text;
    for (QChar &c : s)
        if (c.category() == QChar::Other_Control || c == QChar::LineSeparator || c == QChar::ParagraphSeparator)
            c = u' ';
    return s;
}

bool plainAscii(const QString &s)
{
    for (QChar c : s)
        if (c.unicode() < 0x20 || c.unicode() > 0x7e)
            return false;
    return true;
}

QByteArray randomHex(int bytes)
{
    QByteArray raw(bytes, Qt::Uninitialized);
    QRandomGenerator::system()->generate(raw.begin(), raw.end());
    return raw.toHex();
}

// Base64 at 76 characters a line.
QByteArray base64Lines(const QByteArray &data)
{
    const QByteArray b = data.toBase64();
    QByteArray out;
    out.reserve(b.size() + b.size() / 76 * 2 + 2);
    for (qsizetype i = 0; i < b.size(); i += 76) {
        out += b.mid(i, 76);
        out += "\r\n";
    }
    return out;
}

// A display name as a quoted string, or as encoded words when it needs them.
QByteArray phrase(const QString &name, int used)
{
    const QString n = headerSafe(name).simplified();
    if (plainAscii(n) && !n.contains(QLatin1String("=?")) && used + n.size() + 2 < 70) {
        QByteArray q = n.toLatin1();
        q.replace('\\', "\\\\").replace('"', "\\\"");
        return '"' + q + '"';
    }
    return encodeHeaderText(n, used);
}

// Appends "Name: value" with addresses, folding between them.
void addressHeader(QByteArray &out, const char *name, const QStringList &addresses)
{
    QByteArray line = QByteArray(name) + ": ";
    for (qsizetype i = 0; i < addresses.size(); ++i) {
        const QByteArray a = addresses[i].toLatin1() + (i + 1 < addresses.size() ? "," : "");
        if (i > 0 && line.size() + 1 + a.size() > 78) {
            out += line + "\r\n";
            line = " ";
        } else if (i > 0) {
            line += ' ';
        }
        line += a;
    }
    out += line + "\r\n";
}

}  // namespace

bool isValidAddress(const QString &address)
{
    if (address.size() > 254)
        return false;
    const qsizetype at = address.lastIndexOf(u'@');
    if (at <= 0)
        return false;
    return validLocalPart(QStringView(address).left(at)) && !asciiDomain(QStringView(address).mid(at + 1)).isEmpty();
}

QString normalisedAddress(const QString &text)
{
    QString s = text.trimmed();
    const qsizetype lt = s.lastIndexOf(u'<');
    if (lt >= 0 && s.endsWith(u'>'))
        s = s.mid(lt + 1, s.size() - lt - 2).trimmed();
    if (s.startsWith(QLatin1String("mailto:"), Qt::CaseInsensitive))
        s = s.mid(7);
    const qsizetype at = s.lastIndexOf(u'@');
    if (at <= 0 || s.size() > 254 || !validLocalPart(QStringView(s).left(at)))
        return {};
    const QString domain = asciiDomain(QStringView(s).mid(at + 1));
    return domain.isEmpty() ? QString() : s.left(at) + u'@' + domain;
}

AddressList splitAddresses(const QString &field)
{
    static const QRegularExpression separators(QStringLiteral("[;,]"));
    AddressList list;
    QSet<QString> seen;
    for (const QString &piece : field.split(separators)) {
        const QString typed = piece.trimmed();
        if (typed.isEmpty())
            continue;
        const QString a = normalisedAddress(typed);
        if (a.isEmpty())
            list.invalid << typed;
        else if (!seen.contains(a.toLower())) {
            seen.insert(a.toLower());
            list.valid << a;
        }
    }
    return list;
}

QByteArray encodeHeaderText(const QString &text, int firstLineUsed)
{
    const QString s = headerSafe(text);
    if (plainAscii(s) && !s.contains(QLatin1String("=?")) && firstLineUsed + s.size() <= 78)
        return s.toLatin1();
    // Encoded words of whole characters, each line at most 76 long.
    QByteArray out;
    int room = std::max(76 - firstLineUsed, 24);
    qsizetype i = 0;
    while (i < s.size() || out.isEmpty()) {
        const int maxBytes = (room - 12) / 4 * 3;
        QByteArray chunk;
        while (i < s.size()) {
            const qsizetype len = s[i].isHighSurrogate() && i + 1 < s.size() ? 2 : 1;
            const QByteArray c = s.mid(i, len).toUtf8();
            if (!chunk.isEmpty() && chunk.size() + c.size() > maxBytes)
                break;
            chunk += c;
            i += len;
        }
        if (!out.isEmpty())
            out += "\r\n ";
        out += "=?UTF-8?B?" + chunk.toBase64() + "?=";
        room = 75;
    }
    return out;
}

QByteArray fileNameParameters(const QString &name, const QByteArray &attribute)
{
    const QString n = headerSafe(name);
    if (plainAscii(n) && !n.contains(u'"') && !n.contains(u'\\') && n.size() <= 60)
        return attribute + "=\"" + n.toLatin1() + '"';
    // RFC 2231: percent-encoded UTF-8, in pieces of at most 60 characters
    // that never split an escape.
    const QByteArray encoded = n.toUtf8().toPercentEncoding("!#$&+^`|~", "'*%()<>@,;:\\\"/[]?=");
    QList<QByteArray> pieces;
    for (qsizetype i = 0; i < encoded.size();) {
        qsizetype len = std::min<qsizetype>(60, encoded.size() - i);
        if (i + len < encoded.size()) {
            if (encoded[i + len - 1] == '%')
                len -= 1;
            else if (len >= 2 && encoded[i + len - 2] == '%')
                len -= 2;
        }
        pieces << encoded.mid(i, len);
        i += len;
    }
    if (pieces.size() == 1)
        return attribute + "*=UTF-8''" + pieces.first();
    QByteArray out;
    for (qsizetype i = 0; i < pieces.size(); ++i) {
        if (i > 0)
            out += ";\r\n ";
        out += attribute + '*' + QByteArray::number(i) + "*=" + (i == 0 ? "UTF-8''" : "") + pieces[i];
    }
    return out;
}

QByteArray quotedPrintable(const QString &text)
{
    static const QRegularExpression lineEnds(QStringLiteral("\r\n|\r|\n"));
    const QStringList lines = text.split(lineEnds);
    QByteArray out;
    out.reserve(text.size() * 11 / 10 + 16);
    for (qsizetype l = 0; l < lines.size(); ++l) {
        const QByteArray bytes = lines[l].toUtf8();
        int used = 0;
        for (qsizetype i = 0; i < bytes.size(); ++i) {
            const uchar b = uchar(bytes[i]);
            const bool last = i + 1 == bytes.size();
            char token[4] = {char(b), 0, 0, 0};
            int len = 1;
            const bool literal = (b >= 33 && b <= 126 && b != '=') || ((b == ' ' || b == '\t') && !last);
            if (!literal) {
                static const char hex[] = "0123456789ABCDEF";
                token[0] = '=';
                token[1] = hex[b >> 4];
                token[2] = hex[b & 15];
                len = 3;
            }
            // A soft break ("=" at the end) keeps each line within 76.
            if (used + len > (last ? 76 : 75)) {
                out += "=\r\n";
                used = 0;
            }
            out.append(token, len);
            used += len;
        }
        if (l + 1 < lines.size())
            out += "\r\n";
    }
    return out;
}

QByteArray rfc5322Date(const QDateTime &t)
{
    const int offset = t.offsetFromUtc() / 60;
    const int a = std::abs(offset);
    return QLocale::c().toString(t, QStringLiteral("ddd, dd MMM yyyy hh:mm:ss")).toLatin1() +
           QStringLiteral(" %1%2%3")
               .arg(QLatin1Char(offset < 0 ? '-' : '+'))
               .arg(a / 60, 2, 10, QLatin1Char('0'))
               .arg(a % 60, 2, 10, QLatin1Char('0'))
               .toLatin1();
}

QByteArray buildMessage(const MimeMessage &m)
{
    QByteArray out;
    out.reserve(m.attachment.size() * 137 / 100 + m.body.size() * 2 + 2048);
    out += "Date: " + rfc5322Date(m.date) + "\r\n";
    const QByteArray from = m.fromAddress.toLatin1();
    out += "From: ";
    if (!m.fromName.trimmed().isEmpty())
        out += phrase(m.fromName, 6) + " <" + from + ">\r\n";
    else
        out += from + "\r\n";
    addressHeader(out, "To", m.to);
    if (!m.replyTo.isEmpty())
        out += "Reply-To: " + m.replyTo.toLatin1() + "\r\n";
    out += "Subject: " + encodeHeaderText(m.subject, 9) + "\r\n";
    const qsizetype at = from.lastIndexOf('@');
    const QByteArray domain = at > 0 ? from.mid(at + 1) : QByteArray("qorvane.invalid");
    out += "Message-ID: <" + m.date.toUTC().toString(QStringLiteral("yyyyMMddhhmmss")).toLatin1() + '.' +
           randomHex(12) + '@' + domain + ">\r\n";
    out += "MIME-Version: 1.0\r\n";

    const QByteArray textHeaders =
        "Content-Type: text/plain; charset=UTF-8\r\n"
        "Content-Transfer-Encoding: quoted-printable\r\n";
    if (m.attachmentName.isEmpty()) {
        out += textHeaders + "\r\n" + quotedPrintable(m.body) + "\r\n";
        return out;
    }
    // "=_" never occurs in quoted-printable or base64, so the boundary can't
    // turn up inside a part.
    const QByteArray boundary = "=_qor_" + randomHex(12);
    out += "Content-Type: multipart/mixed;\r\n boundary=\"" + boundary + "\"\r\n\r\n";
    out += "This is a message in MIME format.\r\n";
    out += "--" + boundary + "\r\n" + textHeaders + "\r\n" + quotedPrintable(m.body) + "\r\n";
    out += "--" + boundary + "\r\nContent-Type: application/pdf;\r\n " + fileNameParameters(m.attachmentName, "name") +
           "\r\n";
    out += "Content-Disposition: attachment;\r\n " + fileNameParameters(m.attachmentName) + "\r\n";
    out += "Content-Transfer-Encoding: base64\r\n\r\n";
    out += base64Lines(m.attachment);
    out += "--" + boundary + "--\r\n";
    return out;
}

}  // namespace qor::mail
