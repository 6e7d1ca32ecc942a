// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// The database file's text encoding: Windows-1252, one byte per character.
// A character that code page lacks is written as a numeric character
// reference ("&#8364;" style) and read back as the character, so nothing a
// user types is lost. Bytes 0x81, 0x8D, 0x8F, 0x90 and 0x9D, which the code
// page leaves undefined, map to U+0081... and back, so any byte round-trips.
#include <QByteArray>
#include <QString>
#include <QStringView>

namespace qor::codec {

// Appends the Windows-1252 bytes of text to out; unmappable characters
// (including surrogate pairs) become "&#N;" with N the code point in decimal.
void appendEncoded(QByteArray &out, QStringView text);
QByteArray encode(QStringView text);

// Decodes Windows-1252 bytes. Numeric character references are NOT resolved
// here: the reader resolves them together with the other entities.
QString decode(const char *data, qsizetype size);
inline QString decode(const QByteArray &bytes) { return decode(bytes.constData(), bytes.size()); }

// The character a Windows-1252 byte stands for.
char16_t toUnicode(unsigned char byte);

}  // namespace qor::codec
