// SPDX-License-Identifier: GPL-3.0-or-later
#include "codec.h"

#include <array>

namespace qor::codec {

namespace {

// 0x80..0x9F of Windows-1252; the five undefined bytes map to the C1 control
// of the same value so that every byte survives a read and a save.
constexpr char16_t HighTable[32] = {
    0x20AC,
    0x0081,
    0x201A,
    0x0192,
    0x201E,
    0x2026,
    0x2020,
    0x2021,
    0x02C6,
    0x2030,
    0x0160,
    0x2039,
    0x0152,
    0x008D,
    0x017D,
    0x008F,
    0x0090,
    0x2018,
    0x2019,
    0x201C,
    0x201D,
    0x2022,
    0x2013,
    0x2014,
    0x02DC,
    0x2122,
    0x0161,
    0x203A,
    0x0153,
    0x009D,
    0x017E,
    0x0178,
};

// The byte for a character of U+0080..U+FFFF, or 0 when the code page lacks it.
unsigned char highByte(char16_t c)
{
    if (c >= 0xA0 && c <= 0xFF) return static_cast<unsigned char>(c);
    for (int i = 0; i < 32; ++i)
        if (HighTable[i] == c) return static_cast<unsigned char>(0x80 + i);
    return 0;
}

void appendReference(QByteArray &out, char32_t cp)
{
    char tmp[16];
    int n = 0;
    do {
        tmp[n++] = char('0' + cp % 10);
        cp /= 10;
    } while (cp);
    out.append("&#", 2);
    while (n) out.append(tmp[--n]);
    out.append(';');
}

}  // namespace

char16_t toUnicode(unsigned char byte)
{
    if (byte >= 0x80 && byte < 0xA0) return HighTable[byte - 0x80];
    return byte;
}

void appendEncoded(QByteArray &out, QStringView text)
{
    const qsizetype n = text.size();
    const char16_t *s = text.utf16();
    qsizetype i = 0;
    while (i < n) {
        // Plain ASCII runs are the common case: copy them in one go.
        qsizetype j = i;
        while (j < n && s[j] < 0x80) ++j;
        if (j > i) {
            const qsizetype at = out.size();
            out.resize(at + (j - i));
            char *d = out.data() + at;
            for (qsizetype k = i; k < j; ++k) *d++ = char(s[k]);
            i = j;
            if (i >= n) break;
        }
        const char16_t c = s[i];
        if (QChar::isHighSurrogate(c) && i + 1 < n && QChar::isLowSurrogate(s[i + 1])) {
            appendReference(out, QChar::surrogateToUcs4(c, s[i + 1]));
            i += 2;
            continue;
        }
        const unsigned char b = highByte(c);
        if (b) out.append(char(b));
        else appendReference(out, c);
        ++i;
    }
}

QByteArray encode(QStringView text)
{
    QByteArray out;
    out.reserve(text.size());
    appendEncoded(out, text);
    return out;
}

QString decode(const char *data, qsizetype size)
{
    QString out(size, Qt::Uninitialized);
    char16_t *d = reinterpret_cast<char16_t *>(out.data());
    for (qsizetype i = 0; i < size; ++i) d[i] = toUnicode(static_cast<unsigned char>(data[i]));
    return out;
}

}  // namespace qor::codec
