// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// Internet mail as bytes: addresses checked and split, header texts encoded,
// and one message built as multipart MIME with a UTF-8 text body and a PDF.
#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QStringList>

namespace qor::mail {

// An address as mail servers take it: local@domain, the local part plain
// (dot-atom; no quoted forms, no non-ASCII, which most servers refuse) and
// the domain a host name of two or more labels, or written in brackets as an
// address literal. A domain in another script is taken in its ASCII form.
bool isValidAddress(const QString &address);
// The address as sent: trimmed, "mailto:" and the brackets of "Name <a@b>"
// taken off, an international domain turned to its ASCII form. Empty when it
// isn't an address.
QString normalisedAddress(const QString &text);

// A customer's e-mail field may hold several addresses separated by ";" or
// ",". Each piece is an address, "Name <address>" or empty (skipped).
struct AddressList {
    QStringList valid;    // normalised, each once
    QStringList invalid;  // as typed, trimmed
};
AddressList splitAddresses(const QString &field);

// A header text for mail: as it is when it is printable ASCII and short,
// else RFC 2047 encoded words (UTF-8, base64) folded onto lines of at most
// 76 characters. Control characters and line breaks become blanks first, so
// nothing typed can add a header line.
QByteArray encodeHeaderText(const QString &text, int firstLineUsed);
// The attachment's file name as a header parameter: filename="..." for plain
// names, RFC 2231 filename*=UTF-8''... (split into continuations when long)
// for any other. attribute "name" gives the Content-Type form.
QByteArray fileNameParameters(const QString &name, const QByteArray &attribute = "filename");

struct MimeMessage {
    QString fromName, fromAddress;
    QStringList to;   // normalised addresses
    QString replyTo;  // optional
    QString subject;
    QString body;            // plain text, any line ends
    QString attachmentName;  // empty: no attachment
    QByteArray attachment;   // a PDF
    QDateTime date = QDateTime::currentDateTime();
};

// The whole message with CRLF line ends, every line under 1,000 bytes: Date,
// Message-ID (random, under the sender's domain), From, To, Reply-To,
// Subject, MIME-Version; the body quoted-printable; the PDF base64.
QByteArray buildMessage(const MimeMessage &m);

// Quoted-printable of UTF-8 text, line ends as CRLF, lines of at most 76.
QByteArray quotedPrintable(const QString &text);
// "Thu, 02 May 2024 14:05:09 +0200".
QByteArray rfc5322Date(const QDateTime &t);

}  // namespace qor::mail
