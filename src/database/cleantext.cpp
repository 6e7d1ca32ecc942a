// SPDX-License-Identifier: GPL-3.0-or-later
#include "cleantext.h"

#include "codec.h"

#include <algorithm>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif
#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace qor::dbread {

DecodeTable::DecodeTable()
{
    for (int b = 0; b < 256; ++b) t[b] = codec::toUnicode(static_cast<unsigned char>(b));
}
const DecodeTable Decode;

namespace {

// At an "&": writes what the entity stands for and gives the bytes used.
qsizetype entity(const char *b, const char *e, char *&d)
{
    const qsizetype left = e - b;
    auto is = [&](const char *lit, qsizetype len) { return left >= len && std::memcmp(b, lit, size_t(len)) == 0; };
    // The markup characters a value holds come as references, never as
    // the bare characters: structure is only what the line holds bare.
    auto reference = [&](char32_t cp) {
        *d++ = Marker;
        *d++ = char(0x80 | ((cp >> 14) & 0x7F));
        *d++ = char(0x80 | ((cp >> 7) & 0x7F));
        *d++ = char(0x80 | (cp & 0x7F));
    };
    if (is("&lt;", 4)) {
        reference(U'<');
        return 4;
    }
    if (is("&gt;", 4)) {
        reference(U'>');
        return 4;
    }
    if (is("&amp;", 5)) {
        *d++ = '&';
        return 5;
    }
    if (is("&apos;", 6)) {
        *d++ = '\'';
        return 6;
    }
    if (is("&quot;", 6)) {
        reference(U'"');
        return 6;
    }
    if (left >= 4 && b[1] == '#') {
        const bool hex = b[2] == 'x';
        qsizetype i = hex ? 3 : 2;
        char32_t cp = 0;
        int digits = 0;
        for (; i < left && digits <= 8; ++i, ++digits) {
            const char c = b[i];
            int v;
            if (c >= '0' && c <= '9') v = c - '0';
            else if (hex && c >= 'a' && c <= 'f') v = c - 'a' + 10;
            else if (hex && c >= 'A' && c <= 'F') v = c - 'A' + 10;
            else break;
            cp = cp * (hex ? 16 : 10) + char32_t(v);
        }
        // The two separators of the row texts never come from a file.
        const bool usable = cp != 1 && cp != 2 && cp <= 0x10FFFF;
        if (digits > 0 && digits <= 8 && i < left && b[i] == ';' && usable) {
            reference(cp);
            return i + 1;
        }
    }
    *d++ = '&';
    return 1;
}

}  // namespace

// The number of characters that bytes of a cleaned value decode to.
qsizetype decodedLength(const char *p, qsizetype n)
{
    qsizetype len = n;
    const char *e = p + n;
    while (const char *m = static_cast<const char *>(n > 0 ? std::memchr(p, Marker, size_t(e - p)) : nullptr)) {
        if (e - m < 4) break;
        const char32_t cp = (char32_t(m[1] & 0x7F) << 14) | (char32_t(m[2] & 0x7F) << 7) | char32_t(m[3] & 0x7F);
        len -= cp > 0xFFFF ? 2 : 3;
        p = m + 4;
    }
    return len;
}

// Decodes a very long value at d piece by piece and hands the pages of the
// bytes already decoded back to the system, so the bytes and the characters
// of one huge value don't both stand in memory whole. The bytes must not be
// read again.
char16_t *putDecodedReleasing(char16_t *d, const char *p, qsizetype n)
{
    constexpr qsizetype Piece = qsizetype(16) << 20;
    constexpr uintptr_t Page = 4096;
    const char *e = p + n;
    const char *released = p;
    while (p < e) {
        const char *stop = e - p > Piece ? p + Piece : e;
        // A reference is four bytes: never cut one.
        for (const char *k = std::max(p, stop - 3); k < stop; ++k)
            if (*k == Marker) {
                stop = std::min(e, k + 4);
                break;
            }
        d = putDecoded(d, p, stop - p);
        p = stop;
#if defined(__linux__)
        const uintptr_t from = (reinterpret_cast<uintptr_t>(released) + Page - 1) & ~(Page - 1);
        const uintptr_t to = reinterpret_cast<uintptr_t>(p) & ~(Page - 1);
        if (to > from) {
            madvise(reinterpret_cast<void *>(from), to - from, MADV_DONTNEED);
            released = reinterpret_cast<const char *>(to);
        }
#endif
    }
    return d;
}

// Appends bytes of a cleaned value, decoded, to s.
void appendDecoded(QString &s, const char *p, qsizetype n)
{
    if (n <= 0) return;
    const qsizetype at = s.size();
    s.resize(at + n);
    char16_t *base = reinterpret_cast<char16_t *>(s.data());
    s.truncate(putDecoded(base + at, p, n) - base);
}

QString decoded(const char *p, qsizetype n)
{
    QString s;
    s.reserve(n);
    appendDecoded(s, p, n);
    return s;
}

// Val: does the leading number of the text exceed 0?
bool leadingNumberPositive(QStringView s)
{
    qsizetype i = 0;
    while (i < s.size() && s[i] == u' ') ++i;
    bool negative = false;
    if (i < s.size() && (s[i] == u'-' || s[i] == u'+')) negative = s[i++] == u'-';
    bool nonZero = false;
    bool point = false;
    for (; i < s.size(); ++i) {
        const char16_t c = s[i].unicode();
        if (c >= u'0' && c <= u'9') {
            if (c != u'0') nonZero = true;
        } else if (c == u'.' && !point) {
            point = true;
        } else {
            break;
        }
    }
    return nonZero && !negative;
}

bool cleanLine(const char *b, qsizetype n, QByteArray &out)
{
    // Any mix of blanks and tabs at either end is indentation.
    while (n && (*b == ' ' || *b == '\t')) {
        ++b;
        --n;
    }
    while (n && (b[n - 1] == ' ' || b[n - 1] == '\t')) --n;
    const qsizetype at = out.size();
    out.resize(at + n + 16);  // room for whole 16-byte stores
    char *const d0 = out.data();
    char *d = d0 + at;
    const char *e = b + n;
    bool bang = false;
    auto special = [&]() {
        const char c = *b;
        if (c == '\t') {
            ++b;
        } else if (c == '&') {
            b += entity(b, e, d);
        } else {
            *d++ = c;
            ++b;
            bang |= c == '!';
        }
    };
#if defined(__SSE2__)
    // Sixteen bytes at a time. The line source leaves readable slack behind
    // every line, so the last load may reach past the line; only the bytes
    // of the line count.
    const __m128i tab = _mm_set1_epi8('\t'), amp = _mm_set1_epi8('&'), excl = _mm_set1_epi8('!');
    while (b < e) {
        const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i *>(b));
        unsigned m = unsigned(_mm_movemask_epi8(
            _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(x, tab), _mm_cmpeq_epi8(x, amp)), _mm_cmpeq_epi8(x, excl))));
        const qsizetype left = e - b;
        if (left < 16) m &= (1u << left) - 1;
        _mm_storeu_si128(reinterpret_cast<__m128i *>(d), x);
        if (!m) {
            const qsizetype step = left < 16 ? left : 16;
            d += step;
            b += step;
            continue;
        }
        const int k = __builtin_ctz(m);
        d += k;
        b += k;
        special();
    }
#else
    while (b < e) {
        const char c = *b;
        if (c != '\t' && c != '&' && c != '!') {
            *d++ = c;
            ++b;
        } else special();
    }
#endif
    out.truncate(d - d0);
    return bang;
}

bool hasComment(const char *s, qsizetype n)
{
    const char *e = s + n;
    while (s < e) {
        const char *lt = static_cast<const char *>(std::memchr(s, '<', size_t(e - s)));
        if (!lt) return false;
        if (e - lt >= 4 && lt[1] == '!' && lt[2] == '-' && lt[3] == '-') return true;
        s = lt + 1;
    }
    return false;
}

// XmlUnescape: appends the next significant line, cleaned, to out and
// makes it CurrentLine. At the end of the file the last line read is

}  // namespace qor::dbread
