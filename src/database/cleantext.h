// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// The text of a database file as the reader works on it: bytes of the
// Windows-1252 code page, each line cleaned once (outer blanks and tabs off,
// entities resolved) and decoded to characters only when a value goes into a
// row text.
#include <QByteArray>
#include <QString>
#include <QStringView>

#include <cstring>

namespace qor::dbread {

// Lower case of a Windows-1252 byte, as the program lower-cases whole lines.
struct LowerTable {
    unsigned char t[256];
    constexpr LowerTable() : t()
    {
        for (int c = 0; c < 256; ++c) t[c] = static_cast<unsigned char>(c);
        for (int c = 'A'; c <= 'Z'; ++c) t[c] = static_cast<unsigned char>(c + 32);
        for (int c = 0xC0; c <= 0xDE; ++c)
            if (c != 0xD7) t[c] = static_cast<unsigned char>(c + 32);
        t[0x8A] = 0x9A;
        t[0x8C] = 0x9C;
        t[0x8E] = 0x9E;
        t[0x9F] = 0xFF;
    }
};
inline constexpr LowerTable Lower;

inline unsigned char lowerByte(char c) { return Lower.t[static_cast<unsigned char>(c)]; }

// Case-blind comparison of bytes with a lower-case ASCII literal. Every
// character of the literals (letters, digits, "<", "/", ">", "=", a blank, a
// double quote) has the 0x20 bit set, and the only bytes that setting the bit
// could turn into one of them are control bytes a read file never holds here,
// so setting the bit is lower-casing for this purpose, eight bytes at a time.
inline bool equalsLower(const char *s, qsizetype n, const char *lit, qsizetype litLen)
{
    if (n != litLen) return false;
    qsizetype i = 0;
    for (; i + 8 <= n; i += 8) {
        quint64 a, b;
        std::memcpy(&a, s + i, 8);
        std::memcpy(&b, lit + i, 8);
        if ((a | 0x2020202020202020ull) != b) return false;
        // A control byte would pass the test above (0x1C for "<"): none may.
        if ((a - 0x2020202020202020ull) & ~a & 0x8080808080808080ull) return false;
    }
    for (; i < n; ++i) {
        const unsigned char c = static_cast<unsigned char>(s[i]);
        if ((c | 0x20) != static_cast<unsigned char>(lit[i]) || c < 0x20) return false;
    }
    return true;
}

// A numeric character reference is kept in the cleaned text as a NUL byte and
// three bytes of the code point (seven bits each, high bit set). NUL never
// stands in an accepted file, and the three bytes are never ASCII, so the
// marker can't be mistaken for markup.
inline constexpr char Marker = '\0';

// A view of bytes inside a buffer; positions survive the buffer growing.
struct Span {
    qsizetype at = 0;
    qsizetype len = 0;
};

// The first c in the few bytes of a value, or null.
inline const char *findByte(const char *p, qsizetype n, char c)
{
    for (qsizetype i = 0; i < n; ++i)
        if (p[i] == c) return p + i;
    return nullptr;
}

// Windows-1252 byte to character, as a table the decoder can inline.
struct DecodeTable {
    char16_t t[256];
    DecodeTable();
};
extern const DecodeTable Decode;

// Writes bytes of a cleaned value, decoded, at d (at most n characters) and
// returns the end of what it wrote.
inline char16_t *putDecoded(char16_t *d, const char *p, qsizetype n)
{
    const char *e = p + n;
    while (p < e) {
        const unsigned char c = static_cast<unsigned char>(*p);
        if (c == 0 && e - p >= 4) {
            const char32_t cp = (char32_t(p[1] & 0x7F) << 14) | (char32_t(p[2] & 0x7F) << 7) | char32_t(p[3] & 0x7F);
            if (cp > 0xFFFF) {
                *d++ = QChar::highSurrogate(cp);
                *d++ = QChar::lowSurrogate(cp);
            } else {
                *d++ = char16_t(cp);
            }
            p += 4;
            continue;
        }
        *d++ = Decode.t[c];
        ++p;
    }
    return d;
}

// The number of characters that bytes of a cleaned value decode to.
qsizetype decodedLength(const char *p, qsizetype n);

// Decodes a very long value at d piece by piece and hands the pages of the
// bytes already decoded back to the system, so the bytes and the characters
// of one huge value don't both stand in memory whole. The bytes must not be
// read again.
char16_t *putDecodedReleasing(char16_t *d, const char *p, qsizetype n);

// Appends bytes of a cleaned value, decoded, to s.
void appendDecoded(QString &s, const char *p, qsizetype n);
QString decoded(const char *p, qsizetype n);

// Val: does the leading number of the text exceed 0?
bool leadingNumberPositive(QStringView s);

// Cleans one physical line into out: outer blanks off, entities resolved,
// tabs removed. Never longer than the line. Tells whether a "!" was seen,
// the only way the line can hold the start of a comment.
bool cleanLine(const char *b, qsizetype n, QByteArray &out);

// Does a cleaned line hold the start of a comment, "<!--"?
bool hasComment(const char *s, qsizetype n);

}  // namespace qor::dbread
