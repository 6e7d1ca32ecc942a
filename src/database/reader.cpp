// SPDX-License-Identifier: GPL-3.0-or-later
// ReadDatabase: the line reader of the database file.
//
// The file is taken in large blocks and worked on as bytes. Each physical line
// is cleaned once (outer blanks and tabs dropped, entities resolved) straight
// into the line or record buffer; element values are decoded from
// Windows-1252 only when they go into a row text. The structure follows the
// line-based scheme the writer lays out: sections found by whole lines,
// records collected line by line and their elements found in the joined text.
// Invoice records, which are nearly all of a big file, skip the cleaning and
// the search when every line is a plain element (see PlainRecord).
//
// Rows are appended in file order and sorted once at the end; the invoice
// records get their customer names here when the customer is already known,
// so most record texts are built once, in their final form.
#include "codec.h"
#include "database.h"
#include "regional.h"
#include "rowtypes.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>

#include <algorithm>
#include <array>
#include <cstring>
#include <new>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif
#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace qor {

namespace {

constexpr qsizetype BlockSize = qsizetype(256) << 10;

// The only byte that never stands in a text database: NUL. Other control
// bytes are text (a vertical tab or ESC pasted from another program), except
// the two separators of the row texts, which a value can't hold: they are
// taken for tabs, which are never content, so they fall away.
inline bool isSeparatorByte(unsigned char c) { return c == 0x01 || c == 0x02; }

// Looks at newly read bytes: the first NUL, and whether a CR stands without
// an LF behind it (then lines are split the slow way). Separator bytes are
// turned into tabs on the way.
struct BlockScan {
    qsizetype bad = -1;
    bool loneCr = false;
    bool crAtEnd = false;
};

BlockScan scanBlock(char *p, qsizetype n)
{
    BlockScan r;
    qsizetype i = 0;
#if defined(__SSE2__)
    const __m128i two = _mm_set1_epi8(0x02);
    const __m128i lf = _mm_set1_epi8(0x0A), cr = _mm_set1_epi8(0x0D);
    for (; i + 17 <= n; i += 16) {
        const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i *>(p + i));
        const __m128i y = _mm_loadu_si128(reinterpret_cast<const __m128i *>(p + i + 1));
        const __m128i low = _mm_cmpeq_epi8(_mm_max_epu8(x, two), two);  // x <= 0x02
        if (_mm_movemask_epi8(low)) break;
        const __m128i isCr = _mm_cmpeq_epi8(x, cr);
        if (!r.loneCr && _mm_movemask_epi8(_mm_andnot_si128(_mm_cmpeq_epi8(y, lf), isCr))) r.loneCr = true;
    }
#endif
    for (; i < n; ++i) {
        const unsigned char c = static_cast<unsigned char>(p[i]);
        if (c == 0) {
            r.bad = i;
            return r;
        }
        if (isSeparatorByte(c)) p[i] = '\t';
        if (c == '\r') {
            if (i + 1 < n) {
                if (p[i + 1] != '\n') r.loneCr = true;
            } else {
                r.crAtEnd = true;
            }
        }
    }
    return r;
}

// The first CR or LF, or null.
const char *findLineEnd(const char *s, qsizetype n)
{
    qsizetype i = 0;
#if defined(__SSE2__)
    const __m128i cr = _mm_set1_epi8('\r'), lf = _mm_set1_epi8('\n');
    for (; i + 16 <= n; i += 16) {
        const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i *>(s + i));
        const unsigned m = unsigned(_mm_movemask_epi8(_mm_or_si128(_mm_cmpeq_epi8(x, cr), _mm_cmpeq_epi8(x, lf))));
        if (m) return s + i + __builtin_ctz(m);
    }
#endif
    for (; i < n; ++i)
        if (s[i] == '\r' || s[i] == '\n') return s + i;
    return nullptr;
}

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
constexpr LowerTable Lower;

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
constexpr char Marker = '\0';

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

// Windows-1252 byte to character, as a table the decoder can inline.
struct DecodeTable {
    char16_t t[256];
    DecodeTable()
    {
        for (int b = 0; b < 256; ++b) t[b] = codec::toUnicode(static_cast<unsigned char>(b));
    }
};
const DecodeTable Decode;

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

// A view of bytes inside a buffer; positions survive the buffer growing.
struct Span {
    qsizetype at = 0;
    qsizetype len = 0;
};

// The first LF in s[0, n), or null. Lines are short, so an inline scan beats
// a library call; reading up to 15 bytes past n must be allowed (the line
// source keeps slack behind its data).
inline const char *findNewline(const char *s, qsizetype n)
{
#if defined(__SSE2__)
    const __m128i lf = _mm_set1_epi8('\n');
    for (qsizetype i = 0; i < n; i += 16) {
        const unsigned m = unsigned(_mm_movemask_epi8(_mm_cmpeq_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i *>(s + i)), lf)));
        if (m) {
            const qsizetype at = i + __builtin_ctz(m);
            return at < n ? s + at : nullptr;
        }
    }
    return nullptr;
#else
    return n > 0 ? static_cast<const char *>(std::memchr(s, '\n', size_t(n))) : nullptr;
#endif
}

// The first c in the few bytes of a value, or null.
inline const char *findByte(const char *p, qsizetype n, char c)
{
    for (qsizetype i = 0; i < n; ++i)
        if (p[i] == c) return p + i;
    return nullptr;
}

// Physical lines of the file, read in large blocks. A line ends at CR LF, at
// LF alone or at CR alone.
class LineSource {
public:
    // Every line handed out is followed by at least this many readable bytes.
    static constexpr qsizetype Slack = 16;
    explicit LineSource(QFile &file) : m_file(file) { m_buf.resize(BlockSize + Slack); }

    bool next(const char *&b, qsizetype &n)
    {
        // A long line handed out before is done with: give its room back
        // before the record it belongs to is turned into a row.
        if (m_buf.size() > 4 * BlockSize + Slack && m_end - m_pos < BlockSize) {
            QByteArray small(BlockSize + Slack, Qt::Uninitialized);
            std::memcpy(small.data(), m_buf.constData() + m_pos, size_t(m_end - m_pos));
            m_bufOffset += m_pos;
            m_end -= m_pos;
            m_pos = 0;
            m_buf.swap(small);
        }
        for (;;) {
            if (m_failed) return false;
            const char *s = m_buf.constData() + m_pos;
            const qsizetype avail = m_end - m_pos;
            const char *lineEnd = nullptr;
            qsizetype after = 0;  // bytes consumed, line end included
            if (!m_loneCr) {
                const char *nl = findNewline(s, avail);
                // Lines end in LF or CR LF: one search per line.
                if (nl) {
                    lineEnd = (nl > s && nl[-1] == '\r') ? nl - 1 : nl;
                    after = nl + 1 - s;
                } else if (m_exhausted) {
                    if (!avail) return false;
                    lineEnd = s + avail;
                    if (lineEnd[-1] == '\r') --lineEnd;
                    after = avail;
                } else {
                    refill();
                    continue;
                }
            } else {
                // Some line ends are CR alone: the nearest CR or LF ends the line.
                const char *p = findLineEnd(s, avail);
                if (p && *p == '\n') {
                    lineEnd = p;
                    after = p + 1 - s;
                } else if (p && p + 1 < s + avail) {
                    lineEnd = p;
                    after = p + (p[1] == '\n' ? 2 : 1) - s;
                } else if (m_exhausted) {
                    if (!avail) return false;
                    lineEnd = p ? p : s + avail;
                    after = avail;
                } else {
                    refill();
                    continue;
                }
            }
            b = s;
            n = lineEnd - s;
            m_pos += after;
            ++m_line;
            return true;
        }
    }

    bool atEnd()
    {
        while (!m_failed && m_pos >= m_end && !m_exhausted) refill();
        return m_failed || m_pos >= m_end;
    }

    qint64 lineNumber() const { return m_line; }
    // Bytes of the file not yet handed out as lines.
    qint64 bytesLeft() const { return std::max<qint64>(0, m_file.size() - (m_bufOffset + m_pos)); }
    // After a failed read: the line that holds a byte a text file never has.
    qint64 badLine() const { return m_badLine; }
    unsigned char badByte() const { return m_badValue; }
    bool failed() const { return m_failed; }
    QString ioError() const { return m_ioError; }

private:
    void refill()
    {
        const qsizetype rest = m_end - m_pos;
        if (m_pos > 0) {
            if (rest > 0) std::memmove(m_buf.data(), m_buf.constData() + m_pos, size_t(rest));
            m_bufOffset += m_pos;
            m_pos = 0;
            m_end = rest;
        }
        if (m_end == m_buf.size() - Slack) {
            // One very long line: grow, but never past what the file still
            // holds, so a line of the whole file costs its size and no more.
            const qint64 fileLeft = std::max<qint64>(0, m_file.size() - (m_bufOffset + m_end));
            const qint64 want = std::min<qint64>(qint64(m_buf.size()) * 2, qint64(m_buf.size()) + fileLeft + BlockSize);
            m_buf.resize(qsizetype(want));
        }
        const qint64 got = m_file.read(m_buf.data() + m_end, m_buf.size() - Slack - m_end);
        if (got < 0) {
            m_ioError = m_file.errorString();
            m_failed = true;
            m_exhausted = true;
            return;
        }
        if (got == 0) {
            m_exhausted = true;
            return;
        }
        if (m_crAtEnd && m_buf.at(m_end) != '\n') m_loneCr = true;
        const BlockScan scan = scanBlock(m_buf.data() + m_end, got);
        if (scan.bad >= 0) {
            // A binary file: refused at once, however much of it is left.
            m_failed = true;
            m_exhausted = true;
            m_badValue = static_cast<unsigned char>(m_buf.at(m_end + scan.bad));
            m_badLine = m_line + 1;
            const char *p = m_buf.constData();
            for (qsizetype i = m_pos; i < m_end + scan.bad; ++i)
                if (p[i] == '\n' || (p[i] == '\r' && p[i + 1] != '\n')) ++m_badLine;
            return;
        }
        if (scan.loneCr) m_loneCr = true;
        m_crAtEnd = scan.crAtEnd;
        m_end += got;
    }

    QFile &m_file;
    QByteArray m_buf;
    qsizetype m_pos = 0;
    qsizetype m_end = 0;
    qint64 m_bufOffset = 0;
    qint64 m_line = 0;
    qint64 m_badLine = 0;
    unsigned char m_badValue = 0;
    bool m_exhausted = false;
    bool m_failed = false;
    bool m_loneCr = false;   // some line ends in CR alone
    bool m_crAtEnd = false;  // the last byte read is a CR
    QString m_ioError;
};

// The elements of one record buffer: every "<" with the first ">" after it.
class TagIndex {
public:
    void build(const QByteArray &buf)
    {
        m_s = buf.constData();
        m_tags.clear();
        collectBrackets(buf);
        size_t g = 0;
        for (qsizetype p : m_lt) {
            while (g < m_gt.size() && m_gt[g] <= p) ++g;
            if (g == m_gt.size()) break;
            m_tags.push_back({p, m_gt[g]});
        }
    }

    // First tag whose name equals lowerName without regard to case; -1 if none.
    int findLower(const char *lowerName, qsizetype len, qsizetype from = 0) const
    {
        for (size_t t = 0; t < m_tags.size(); ++t) {
            const Tag &g = m_tags[t];
            if (g.lt < from || g.gt - g.lt - 1 != len) continue;
            if (equalsLower(m_s + g.lt + 1, len, lowerName, len)) return int(t);
        }
        return -1;
    }
    int findExact(const char *name, qsizetype len, qsizetype from = 0) const
    {
        for (size_t t = 0; t < m_tags.size(); ++t) {
            const Tag &g = m_tags[t];
            if (g.lt < from || g.gt - g.lt - 1 != len) continue;
            if (std::memcmp(m_s + g.lt + 1, name, size_t(len)) == 0) return int(t);
        }
        return -1;
    }

    // XmlElementText in modes 0 and 1: the text between the first opening tag
    // and the first closing tag, both found from the start without regard to case.
    Span element(const char *lowerName) const
    {
        const qsizetype len = qsizetype(std::strlen(lowerName));
        const int open = findLower(lowerName, len);
        if (open < 0) return {};
        char closing[64];
        closing[0] = '/';
        std::memcpy(closing + 1, lowerName, size_t(len));
        const int close = findLower(closing, len + 1);
        if (close < 0) return {};
        const qsizetype pos = m_tags[size_t(open)].gt + 1;
        const qsizetype end = m_tags[size_t(close)].lt;
        if (end - pos < 1) return {};
        return {pos, end - pos};
    }

    // The tags of an invoice record, sorted out in one pass: the first opening
    // and closing tag of each field (any case), and per entry number the first
    // tag of that name in any case and whether the exact spelling stands.
    struct RecordTags {
        enum Field { BP,
                     CID,
                     Balance,
                     Note,
                     FieldCount };
        qsizetype open[FieldCount], close[FieldCount];  // ">" of the opening, "<" of the closing tag
        std::vector<qsizetype> entryFirst;              // by number: ">" of the first tag of that name; -1 none
        std::vector<char> entryExact;                   // by number
        std::vector<qsizetype> closeExact;              // "</PSID>" positions
        bool tooMany = false;                           // entry numbers beyond the table: look them up one by one
    };
    static constexpr qint64 MaxQuickEntry = 4096;

    // Finds every "<" and the first ">" after it, and sorts the record's tags
    // out on the way; the tag list itself is only built when needed.
    void classify(const QByteArray &buf, RecordTags &r)
    {
        m_s = buf.constData();
        m_tags.clear();
        collectBrackets(buf);
        for (int f = 0; f < RecordTags::FieldCount; ++f) r.open[f] = r.close[f] = -1;
        r.entryFirst.clear();
        r.entryExact.clear();
        r.closeExact.clear();
        r.tooMany = false;
        size_t g = 0;
        for (qsizetype lt : m_lt) {
            while (g < m_gt.size() && m_gt[g] <= lt) ++g;
            if (g == m_gt.size()) break;
            classifyTag(r, lt, m_gt[g]);
        }
    }

    Span field(const RecordTags &r, int f) const
    {
        if (r.open[f] < 0 || r.close[f] < 0) return {};
        const qsizetype pos = r.open[f] + 1;
        const qsizetype end = r.close[f];
        return end - pos < 1 ? Span{} : Span{pos, end - pos};
    }

    // Entry n from the sorted-out tags; false when it isn't there (the list ends).
    bool entry(const RecordTags &r, qint64 n, Span &out) const
    {
        if (size_t(n) >= r.entryExact.size() || !r.entryExact[size_t(n)]) return false;
        const qsizetype pos = r.entryFirst[size_t(n)] + 1;
        const auto close = std::lower_bound(r.closeExact.begin(), r.closeExact.end(), pos);
        out = {};
        if (close != r.closeExact.end() && *close - pos >= 1) out = {pos, *close - pos};
        return true;
    }

    // An item entry: present only if the tag stands with exact case; its text
    // runs from the first tag of that name in any case to the next "</PSID>".
    bool entry(const char *name, qsizetype len, Span &out) const
    {
        if (findExact(name, len) < 0) return false;
        char lowerName[48];
        for (qsizetype i = 0; i < len; ++i) lowerName[i] = char(lowerByte(name[i]));
        const int open = findLower(lowerName, len);
        const qsizetype pos = m_tags[size_t(open)].gt + 1;
        const int close = findExact("/PSID", 5, pos);
        out = {};
        if (close >= 0 && m_tags[size_t(close)].lt - pos >= 1) out = {pos, m_tags[size_t(close)].lt - pos};
        return true;
    }

private:
    void collectBrackets(const QByteArray &buf)
    {
        m_lt.clear();
        m_gt.clear();
        const qsizetype n = buf.size();
        qsizetype i = 0;
#if defined(__SSE2__)
        const __m128i lt = _mm_set1_epi8('<'), gt = _mm_set1_epi8('>');
        for (; i + 16 <= n; i += 16) {
            const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i *>(m_s + i));
            unsigned a = unsigned(_mm_movemask_epi8(_mm_cmpeq_epi8(x, lt)));
            unsigned b = unsigned(_mm_movemask_epi8(_mm_cmpeq_epi8(x, gt)));
            while (a) {
                m_lt.push_back(i + __builtin_ctz(a));
                a &= a - 1;
            }
            while (b) {
                m_gt.push_back(i + __builtin_ctz(b));
                b &= b - 1;
            }
        }
#endif
        for (; i < n; ++i) {
            if (m_s[i] == '<') m_lt.push_back(i);
            else if (m_s[i] == '>') m_gt.push_back(i);
        }
    }

    void classifyTag(RecordTags &r, qsizetype lt, qsizetype gt) const
    {
        const char *p = m_s + lt + 1;
        const qsizetype len = gt - lt - 1;
        if (len <= 0) return;
        const bool closing = p[0] == '/';
        const char *name = closing ? p + 1 : p;
        const qsizetype nameLen = closing ? len - 1 : len;
        int f = -1;
        switch (nameLen) {
        case 2: f = equalsLower(name, 2, "bp", 2) ? RecordTags::BP : -1; break;
        case 3: f = equalsLower(name, 3, "cid", 3) ? RecordTags::CID : -1; break;
        case 4: f = equalsLower(name, 4, "note", 4) ? RecordTags::Note : -1; break;
        case 14: f = equalsLower(name, 14, "accountbalance", 14) ? RecordTags::Balance : -1; break;
        default: break;
        }
        if (f >= 0) {
            qsizetype &slot = closing ? r.close[f] : r.open[f];
            if (slot < 0) slot = closing ? lt : gt;
            return;
        }
        if (closing) {
            if (len == 5 && std::memcmp(p, "/PSID", 5) == 0) r.closeExact.push_back(lt);
            return;
        }
        // psid number="N"
        if (len < 15 || p[len - 1] != '"' || !equalsLower(p, 13, "psid number=\"", 13)) return;
        const qsizetype digits = len - 14;
        if (p[13] < '1' || p[13] > '9') return;  // never the text of a running number
        qint64 n = 0;
        for (qsizetype i = 0; i < digits; ++i) {
            const char c = p[13 + i];
            if (c < '0' || c > '9') return;
            if (n <= MaxQuickEntry) n = n * 10 + (c - '0');
        }
        if (n > MaxQuickEntry) {
            r.tooMany = true;
            return;
        }
        if (size_t(n) >= r.entryFirst.size()) {
            r.entryFirst.resize(size_t(n) + 1, -1);
            r.entryExact.resize(size_t(n) + 1, 0);
        }
        if (r.entryFirst[size_t(n)] < 0) r.entryFirst[size_t(n)] = gt;
        if (std::memcmp(p, "PSID Number=\"", 13) == 0) r.entryExact[size_t(n)] = 1;
    }

    struct Tag {
        qsizetype lt, gt;
    };
    const char *m_s = nullptr;
    std::vector<Tag> m_tags;
    std::vector<qsizetype> m_lt, m_gt;
};

struct DuplicateKey {
    qint64 line;
    QString what;
};

// Customer and item numbers seen so far. Plain decimal numbers (the form the
// program writes) are looked up by value; any other text by itself.
class NumberSet {
public:
    static qint64 plainNumber(const char *p, qsizetype n)
    {
        if (n < 1 || n > 9 || p[0] < '1' || p[0] > '9') return -1;
        qint64 v = 0;
        for (qsizetype i = 0; i < n; ++i) {
            if (p[i] < '0' || p[i] > '9') return -1;
            v = v * 10 + (p[i] - '0');
        }
        return v;
    }
    void insert(const QString &number, int value)
    {
        const QByteArray latin = number.toLatin1();
        const qint64 v = number.size() == latin.size() ? plainNumber(latin.constData(), latin.size()) : -1;
        if (v >= 0 && v < (qint64(1) << 24)) {
            if (size_t(v) >= m_small.size()) m_small.resize(size_t(v) + 1, -1);
            m_small[size_t(v)] = value;
        } else {
            m_other.insert(number, value);
        }
    }
    int find(const QString &number) const
    {
        char digits[9];
        const qsizetype n = number.size();
        bool plain = n >= 1 && n <= 9;
        for (qsizetype i = 0; plain && i < n; ++i) {
            const char16_t c = number[i].unicode();
            plain = c >= u'0' && c <= u'9';
            digits[i] = char(c);
        }
        const qint64 v = plain ? plainNumber(digits, n) : -1;
        if (v >= 0 && v < (qint64(1) << 24)) return size_t(v) < m_small.size() ? m_small[size_t(v)] : -1;
        return m_other.value(number, -1);
    }
    // The value stored for a number given as cleaned bytes; -1 when unknown.
    int find(const char *p, qsizetype n) const
    {
        if (findByte(p, n, Marker)) return find(decoded(p, n));
        const qint64 v = plainNumber(p, n);
        if (v >= 0 && v < (qint64(1) << 24)) return size_t(v) < m_small.size() ? m_small[size_t(v)] : -1;
        if (m_other.isEmpty()) return -1;
        return m_other.value(decoded(p, n), -1);
    }

private:
    std::vector<int> m_small;
    QHash<QString, int> m_other;
};

// The shape of a database file: an optional root around the sections, each
// section a run of records (the company details are one record of their own),
// each record a run of elements, a value possibly over several lines. Every
// significant line passes through here before the reader acts on it, and the
// first line that doesn't fit ends the read: a damaged file is refused whole,
// never half read. Tags are compared in any case.
struct StructureError {
    qint64 line;          // 0: the file as a whole
    QString found;        // the line as it stands, shortened
    QString expected;     // what could stand there
    bool cutOff = false;  // the file ended first
};

class Structure {
public:
    enum Kind { Company,
                Customers,
                Periods,
                Items,
                Records,
                KindCount };

    bool sectionSeen() const { return m_sectionSeen; }

    // A whole element on one line: only a record holds one.
    void element(const char *s, qsizetype n, qint64 line)
    {
        if (m_at != At::Record) fail(s, n, line);
    }

    // The tags of invoice records the reader has already told apart
    // (1 a record opens, 2 it closes, 3 the section closes): the usual step
    // is taken at once, anything else goes the general way.
    void recordTag(int which, const char *s, qsizetype n, qint64 line)
    {
        static constexpr At from[4] = {At::After, At::Section, At::Record, At::Section};
        static constexpr At to[4] = {At::After, At::Record, At::Section, At::Outside};
        if (m_kind != Records || m_at != from[which]) return this->line(s, n, line);
        m_at = to[which];
        if (which == 1) m_recordAt = line;
    }

    // Any significant line, cleaned.
    void line(const char *s, qsizetype n, qint64 line)
    {
        m_any = true;
        if (!loneTag(s, n)) {
            // Text: a value or a part of one, which only a record holds.
            if (m_at != At::Record) fail(s, n, line);
            return;
        }
        switch (m_at) {
        case At::Outside:
            for (int k = 0; k < KindCount; ++k)
                if (is(s, n, Sections[k].open)) {
                    m_sectionSeen = true;
                    m_kind = Kind(k);
                    m_sectionAt = line;
                    // The company details are one record without a header.
                    m_at = k == Company ? At::Record : At::Section;
                    m_recordAt = line;
                    return;
                }
            if (m_root == Root::None && !m_sectionSeen && is(s, n, "<qor-db>")) {
                m_root = Root::Open;
                m_rootAt = line;
                return;
            }
            if (m_root == Root::Open && is(s, n, "</qor-db>")) {
                m_root = Root::Closed;
                m_at = At::After;
                m_rootAt = line;
                return;
            }
            break;
        case At::Section:
            if (is(s, n, Sections[m_kind].close)) {
                m_at = At::Outside;
                return;
            }
            if (recordOpen(s, n)) {
                m_at = At::Record;
                m_recordAt = line;
                return;
            }
            break;
        case At::Record:
            if (m_kind == Company ? is(s, n, Sections[Company].close) : is(s, n, Sections[m_kind].recordClose)) {
                m_at = m_kind == Company ? At::Outside : At::Section;
                return;
            }
            // The tag of a value written over several lines.
            if (elementTag(s, n)) return;
            break;
        case At::After:
            break;
        }
        fail(s, n, line);
    }

    // At the end of the file.
    void finish(qint64 lastLine) const
    {
        if (m_at == At::Record && m_kind != Company)
            throw StructureError{lastLine, QString(),
                                 QStringLiteral("\"%1\" closing the record that opens at line %2")
                                     .arg(closeOf(m_kind, true), QString::number(m_recordAt)),
                                 true};
        if (m_at == At::Record || m_at == At::Section)
            throw StructureError{lastLine, QString(),
                                 QStringLiteral("\"%1\" closing the section that opens at line %2")
                                     .arg(closeOf(m_kind, false), QString::number(m_sectionAt)),
                                 true};
        if (m_root == Root::Open)
            throw StructureError{lastLine, QString(),
                                 QStringLiteral("\"</QOR-DB>\" closing the database that opens at line %1")
                                     .arg(m_rootAt),
                                 true};
        if (m_any && !m_sectionSeen)
            throw StructureError{0, QString(),
                                 QStringLiteral("at least one of the sections \"<CompanyInfo>\", \"<Customers>\", "
                                                "\"<BillPeriods>\", \"<ProductsAndServices>\", \"<InvoiceRecords>\"")};
    }

private:
    enum class At { Outside,
                    Section,
                    Record,
                    After };
    enum class Root { None,
                      Open,
                      Closed };
    struct Tags {
        std::string_view open, close, recordClose;
        const char *shownOpen, *shownClose, *shownRecord, *shownRecordClose;
        // A record's elements; nullptr ends the list.
        const char *const *elements;
    };
    static constexpr const char *CompanyElements[] = {
        "companyname", "companyadd1", "companyadd2", "companyadd3", "companyphone", "generalinvoicedescription",
        "checkspayableto", "companyslogan", "invoiceclosing", nullptr};
    static constexpr const char *CustomerElements[] = {"fname", "lname", "add1", "add2", "add3", "email",
                                                       "phone", "notes", "current", nullptr};
    static constexpr const char *PeriodElements[] = {"bpname", "bpstart", "bpend", "billdue", nullptr};
    static constexpr const char *ItemElements[] = {"item", "itemprice", "current", nullptr};
    static constexpr const char *RecordElements[] = {"bp", "cid", "accountbalance", "note", "psid", nullptr};
    static constexpr Tags Sections[KindCount] = {
        {"<companyinfo>", "</companyinfo>", "", "<CompanyInfo>", "</CompanyInfo>", "", "", CompanyElements},
        {"<customers>", "</customers>", "</customer>", "<Customers>", "</Customers>", "<Customer CID=\"n\">",
         "</Customer>", CustomerElements},
        {"<billperiods>", "</billperiods>", "</billperiod>", "<BillPeriods>", "</BillPeriods>", "<BillPeriod>",
         "</BillPeriod>", PeriodElements},
        {"<productsandservices>", "</productsandservices>", "</ps>", "<ProductsAndServices>",
         "</ProductsAndServices>", "<PS PSID=\"n\">", "</PS>", ItemElements},
        {"<invoicerecords>", "</invoicerecords>", "</invoicerecord>", "<InvoiceRecords>", "</InvoiceRecords>",
         "<InvoiceRecord>", "</InvoiceRecord>", RecordElements},
    };

    static QString closeOf(Kind k, bool record)
    {
        return QString::fromLatin1(record ? Sections[k].shownRecordClose : Sections[k].shownClose);
    }

    // One tag and nothing else: "<" first, ">" last, neither inside.
    static bool loneTag(const char *s, qsizetype n)
    {
        if (n < 2 || s[0] != '<' || s[n - 1] != '>') return false;
        for (qsizetype i = 1; i + 1 < n; ++i)
            if (s[i] == '<' || s[i] == '>') return false;
        return true;
    }

    static bool is(const char *s, qsizetype n, std::string_view lowerLit)
    {
        return n == qsizetype(lowerLit.size()) && equalsLower(s, n, lowerLit.data(), n);
    }

    // A record header as the reader takes it: blanks don't count, any case.
    bool recordOpen(const char *s, qsizetype n) const
    {
        switch (m_kind) {
        case Periods: return is(s, n, "<billperiod>");
        case Records: return is(s, n, "<invoicerecord>");
        case Customers: return header(s, n, "<customer", "cid=\"");
        case Items: return header(s, n, "<ps", "psid=\"");
        default: return false;
        }
    }
    // "<tag attr="value">" with blanks anywhere, or "<tag>" alone (a header
    // without its number: a record the reader drops).
    static bool header(const char *s, qsizetype n, const char *tag, const char *attr)
    {
        qsizetype i = 0;
        auto take = [&](const char *lit) {
            for (; *lit; ++lit) {
                while (i < n && s[i] == ' ') ++i;
                if (i == n || char(lowerByte(s[i])) != *lit) return false;
                ++i;
            }
            return true;
        };
        if (!take(tag)) return false;
        const qsizetype afterTag = i;
        if (take(">") && i == n) return true;
        i = afterTag;
        return take(attr) && n - i >= 2 && s[n - 2] == '"' && s[n - 1] == '>';
    }

    // The opening or closing tag of an element of the current record kind.
    bool elementTag(const char *s, qsizetype n) const
    {
        const char *name = s + 1;
        qsizetype len = n - 2;
        if (len > 0 && *name == '/') {
            ++name;
            --len;
        } else if (m_kind == Records && len > 5 && equalsLower(name, 5, "psid ", 5)) {
            len = 4;  // <PSID Number="n">
        }
        for (const char *const *e = Sections[m_kind].elements; *e; ++e)
            if (is(name, len, *e)) return true;
        return false;
    }

    QString expectation() const
    {
        const Tags &t = Sections[m_kind];
        switch (m_at) {
        case At::Outside:
            return m_root == Root::Open
                       ? QStringLiteral("a section such as \"<Customers>\", or \"</QOR-DB>\"")
                       : QStringLiteral("a section such as \"<Customers>\"");
        case At::Section:
            return QStringLiteral("\"%1\" or \"%2\" (the section opens at line %3)")
                .arg(QString::fromLatin1(t.shownRecord), QString::fromLatin1(t.shownClose), QString::number(m_sectionAt));
        case At::Record:
            return m_kind == Company
                       ? QStringLiteral("a company detail or \"</CompanyInfo>\" (the section opens at line %1)")
                             .arg(m_sectionAt)
                       : QStringLiteral("an element of the record or \"%1\" (the record opens at line %2)")
                             .arg(QString::fromLatin1(t.shownRecordClose), QString::number(m_recordAt));
        case At::After:
            return QStringLiteral("nothing after \"</QOR-DB>\" at line %1").arg(m_rootAt);
        }
        return QString();
    }

    [[noreturn]] void fail(const char *s, qsizetype n, qint64 line) const
    {
        constexpr qsizetype Shown = 80;
        qsizetype cut = std::min(n, Shown);
        // Never half a character reference.
        for (qsizetype i = std::max<qsizetype>(0, cut - 3); i < cut; ++i)
            if (s[i] == Marker) {
                cut = i;
                break;
            }
        QString found = decoded(s, cut);
        if (n > Shown) found += QStringLiteral("...");
        throw StructureError{line, found, expectation()};
    }

    At m_at = At::Outside;
    Root m_root = Root::None;
    Kind m_kind = Company;
    bool m_sectionSeen = false;
    bool m_any = false;  // a significant line was seen
    qint64 m_sectionAt = 0, m_recordAt = 0, m_rootAt = 0;
};

class Reader {
public:
    Reader(QFile &file, Tables &db, detail::AfterRead &after) : m_src(file), m_db(db), m_after(after)
    {
        m_line.reserve(1024);
        m_rec.reserve(4096);
    }

    bool sectionFound = false;
    std::optional<DuplicateKey> duplicate;
    std::optional<StructureError> damage;
    LineSource &source() { return m_src; }

    void run()
    {
        try {
            readSections();
            if (!duplicate && !m_src.failed()) m_shape.finish(m_src.lineNumber());
        } catch (const StructureError &e) {
            damage = e;
        }
    }

private:
    void readSections()
    {
        while (!m_src.atEnd() && !duplicate) {
            m_line.truncate(0);
            xmlUnescape(m_line);
            if (current("<companyinfo>")) {
                sectionFound = true;
                readCompanyInfo();
            } else if (current("<customers>")) {
                sectionFound = true;
                readCustomers();
            } else if (current("<billperiods>")) {
                sectionFound = true;
                readBillPeriods();
            } else if (current("<productsandservices>")) {
                sectionFound = true;
                // Items that come after records: the records must be checked again later.
                if (m_recordsSeen) m_itemsLate = true;
                readProductsAndServices();
            } else if (current("<invoicerecords>")) {
                sectionFound = true;
                m_recordsSeen = true;
                readInvoiceRecords();
            }
        }
        m_after.valid = true;
        m_after.records = m_db.invoiceRecords.count();
        m_after.itemsChecked = !m_itemsLate;
    }

    enum class Next { Value,
                      EndOfTable,
                      EndOfFile };

    template <qsizetype N>
    bool current(const char (&lowerLit)[N]) const
    {
        return equalsLower(m_cur->constData() + m_curSpan.at, m_curSpan.len, lowerLit, N - 1);
    }

    // Cleans one physical line into out: outer blanks off, entities resolved,
    // tabs removed. Never longer than the line. Tells whether a "!" was seen,
    // the only way the line can hold the start of a comment.
    static bool clean(const char *b, qsizetype n, QByteArray &out)
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

    // At an "&": writes what the entity stands for and gives the bytes used.
    static qsizetype entity(const char *b, const char *e, char *&d)
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

    static bool hasComment(const char *s, qsizetype n)
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
    // given back even if it was blank or a comment.
    void xmlUnescape(QByteArray &out)
    {
        const qsizetype mark = out.size();
        m_cur = &out;
        m_curSpan = {mark, 0};
        const char *b;
        qsizetype n;
        while (m_src.next(b, n)) {
            out.truncate(mark);
            const bool bang = clean(b, n, out);
            m_curSpan = {mark, out.size() - mark};
            const bool accepted = m_curSpan.len > 0 && !(bang && hasComment(out.constData() + mark, m_curSpan.len));
            if (accepted) m_shape.line(out.constData() + mark, m_curSpan.len, m_src.lineNumber());
            if (accepted || m_src.atEnd()) return;
        }
        out.truncate(mark);
        m_curSpan = {mark, 0};
    }

    // Empties the record buffer for the next record; the room of a huge one
    // goes back to the system.
    void freshRecord()
    {
        if (m_rec.capacity() > (qsizetype(64) << 20)) m_rec = QByteArray();
        m_rec.truncate(0);
    }

    // A line of a record, cleaned and appended to the record text. Lines are
    // joined by a line break ("\n", which no cleaned line holds), so that a
    // value written over several lines keeps its breaks; between elements the
    // break means nothing. A blank line inside a record adds just the break,
    // a comment line adds nothing.
    // One more line of the record, cleaned, after a break when the record
    // already holds something (start is its size before the line). False for
    // a comment line: it adds nothing, the record is as it was.
    bool appendCleaned(const char *b, qsizetype n, qsizetype start)
    {
        if (start) m_rec.append('\n');
        const qsizetype mark = m_rec.size();
        const bool bang = clean(b, n, m_rec);
        m_curSpan = {mark, m_rec.size() - mark};
        if (bang && hasComment(m_rec.constData() + mark, m_curSpan.len)) {
            m_rec.truncate(start);
            return false;
        }
        return true;
    }

    void recordLine()
    {
        m_cur = &m_rec;
        const char *b;
        qsizetype n;
        while (m_src.next(b, n)) {
            if (!appendCleaned(b, n, m_rec.size())) continue;
            if (m_curSpan.len) m_shape.line(m_rec.constData() + m_curSpan.at, m_curSpan.len, m_src.lineNumber());
            return;
        }
        m_curSpan = {m_rec.size(), 0};
    }

    // XmlNextRecord: the attribute value of a record header line, in lower case.
    Next xmlNextRecord(const char *closeTag, const char *recordTag, const char *attr, QString &value, bool dropK)
    {
        value.clear();
        if (m_src.atEnd()) return Next::EndOfFile;
        m_line.truncate(0);
        xmlUnescape(m_line);
        m_recordLine = m_src.lineNumber();
        char *s = m_line.data();
        qsizetype n = m_line.size();
        for (qsizetype i = 0; i < n; ++i) {
            if (s[i] == Marker) i += 3;  // a character reference stays as it is
            else s[i] = char(lowerByte(s[i]));
        }
        if (equalsLower(s, n, closeTag, qsizetype(std::strlen(closeTag)))) return Next::EndOfTable;
        qsizetype w = 0;
        for (qsizetype i = 0; i < n; ++i)
            if (s[i] != ' ') s[w++] = s[i];
        m_line.truncate(w);
        s = m_line.data();
        n = w;
        QByteArray head = "<";
        head += recordTag;
        head += attr;
        head += "=\"";
        const qsizetype h = head.size();
        if (n < h + 2 || std::memcmp(s, head.constData(), size_t(h)) != 0 || s[n - 2] != '"' || s[n - 1] != '>')
            return Next::Value;
        for (qsizetype i = h; i + 1 < n; ++i)
            if (s[i] == '"' && s[i + 1] == '>') {
                value = detail::recordNumber(decoded(s + h, i - h), dropK);
                break;
            }
        return Next::Value;
    }

    QString text(Span sp) const { return decoded(m_rec.constData() + sp.at, sp.len); }
    QString element(const char *lowerName) const { return text(m_tags.element(lowerName)); }
    void appendElement(QString &s, const char *lowerName) const
    {
        const Span sp = m_tags.element(lowerName);
        appendDecoded(s, m_rec.constData() + sp.at, sp.len);
    }

    void readCompanyInfo()
    {
        freshRecord();
        while (!m_src.atEnd()) {
            recordLine();
            if (current("</companyinfo>")) break;
        }
        m_tags.build(m_rec);
        static const char *const names[CompanyFieldCount] = {
            "companyname",
            "companyadd1",
            "companyadd2",
            "companyadd3",
            "companyphone",
            "companyslogan",
            "generalinvoicedescription",
            "checkspayableto",
            "invoiceclosing",
        };
        Span spans[CompanyFieldCount];
        for (int i = 0; i < CompanyFieldCount; ++i) spans[i] = m_tags.element(names[i]);
        for (int i = 0; i < CompanyFieldCount; ++i) {
            const Span sp = spans[i];
            // A huge value gives its bytes back as it is decoded, unless a
            // value still to come lies in them (a file edited by hand).
            bool release = sp.len >= (qsizetype(64) << 20);
            for (int j = i + 1; release && j < CompanyFieldCount; ++j)
                release = spans[j].at + spans[j].len <= sp.at || spans[j].at >= sp.at + sp.len;
            const char *p = m_rec.constData() + sp.at;
            QString value(decodedLength(p, sp.len), Qt::Uninitialized);
            char16_t *d = reinterpret_cast<char16_t *>(value.data());
            if (release) putDecodedReleasing(d, p, sp.len);
            else putDecoded(d, p, sp.len);
            m_db.company[size_t(i)] = std::move(value);
        }
    }

    // `what` tells the duplicate in the message; it is only worked out then.
    template <typename What>
    bool addRow(KeyedList &table, QString key, QString rowText, qint64 line, What &&what)
    {
        try {
            table.append(std::move(key), std::move(rowText));
            return true;
        } catch (const KeyedListError &) {
            duplicate = DuplicateKey{line, what()};
            return false;
        }
    }

    void readCustomers()
    {
        QString number;
        while (!current("</customers>") && !m_src.atEnd()) {
            if (xmlNextRecord("</customers>", "customer", "cid", number, true) != Next::Value) return;
            const qint64 headerLine = m_recordLine;
            freshRecord();
            while (!m_src.atEnd()) {
                recordLine();
                if (current("</customer>") || current("</customers>")) break;
            }
            if (!leadingNumberPositive(number)) continue;
            m_tags.build(m_rec);
            const Span first = m_tags.element("fname");
            const Span last = m_tags.element("lname");
            const Span cur = m_tags.element("current");
            const char *const s = m_rec.constData();
            // Current is "no" in any case; a character reference in it needs the decoded text.
            const bool archived = cur.len == 2 ? equalsLower(s + cur.at, 2, "no", 2)
                                  : findByte(s + cur.at, cur.len, Marker)
                                      ? text(cur).toLower() == u"no"
                                      : false;
            // The row is sized exactly and decoded straight into place: a
            // table keeps no spare room, and a row of a huge note must not
            // be built twice.
            const Span lead = last.len > 0 ? last : first;
            char16_t head[24];
            const qsizetype headLen = putDecoded(head, s + lead.at, std::min<qsizetype>(lead.len, 24)) - head;
            // A name that begins with the archive mark already reads as
            // archived everywhere (and is saved so): the mark isn't doubled,
            // or every load would add one more.
            const bool markedName = QStringView(head, headLen).startsWith(ArchiveMark);
            const bool addMark = archived && !markedName;
            const Span rest[6] = {m_tags.element("add1"), m_tags.element("add2"), m_tags.element("add3"),
                                  m_tags.element("email"), m_tags.element("phone"), m_tags.element("notes")};
            const qsizetype firstLen = decodedLength(s + first.at, first.len);
            const qsizetype lastLen = decodedLength(s + last.at, last.len);
            const qsizetype displayLen = last.len > 0 ? lastLen + 2 + firstLen : firstLen;
            qsizetype total = (addMark ? ArchiveMark.size() : 0) + displayLen + firstLen + lastLen +
                              CustomerRow::SeparatorCount;
            for (const Span &sp : rest) total += decodedLength(s + sp.at, sp.len);
            QString row(total, Qt::Uninitialized);
            char16_t *const r0 = reinterpret_cast<char16_t *>(row.data());
            const qsizetype nameAt = (addMark || markedName) ? ArchiveMark.size() : 0;
            qsizetype nameLen = 0;
            using F = CustomerRow::Field;
            char16_t *const end = CustomerRow::compose(r0, [&](F f, char16_t *d) {
                switch (f) {
                case F::DisplayName:
                    if (addMark) d = std::copy(ArchiveMark.utf16(), ArchiveMark.utf16() + ArchiveMark.size(), d);
                    if (last.len > 0) {
                        d = putDecoded(d, s + last.at, last.len);
                        *d++ = u',';
                        *d++ = u' ';
                    }
                    d = putDecoded(d, s + first.at, first.len);
                    nameLen = (d - r0) - nameAt;
                    return d;
                case F::FirstName: return putDecoded(d, s + first.at, first.len);
                case F::LastName: return putDecoded(d, s + last.at, last.len);
                case F::Address1: return putDecoded(d, s + rest[0].at, rest[0].len);
                case F::Address2: return putDecoded(d, s + rest[1].at, rest[1].len);
                case F::Address3: return putDecoded(d, s + rest[2].at, rest[2].len);
                case F::Email: return putDecoded(d, s + rest[3].at, rest[3].len);
                case F::Phone: return putDecoded(d, s + rest[4].at, rest[4].len);
                case F::Notes:
                    // The note is read last: a huge one gives its bytes back as it goes.
                    return rest[5].len >= (qsizetype(64) << 20) ? putDecodedReleasing(d, s + rest[5].at, rest[5].len)
                                                                : putDecoded(d, s + rest[5].at, rest[5].len);
                }
                return d;
            });
            Q_ASSERT(end - r0 == total);
            Q_UNUSED(end);
            m_nameAt.push_back({m_namePool.size(), nameLen});
            m_namePool += QStringView(row).mid(nameAt, nameLen);
            if (!addRow(m_db.customers, numberKey(number), std::move(row), headerLine,
                        [&] { return QStringLiteral("a second customer with the number %1").arg(number); })) {
                m_nameAt.pop_back();
                return;
            }
            m_customers.insert(number, int(m_nameAt.size() - 1));
        }
    }

    void readBillPeriods()
    {
        while (!m_src.atEnd()) {
            freshRecord();
            qint64 firstLine = 0;
            while (!m_src.atEnd()) {
                recordLine();
                if (!firstLine) firstLine = m_src.lineNumber();
                if (current("</billperiods>")) return;
                if (current("</billperiod>")) break;
            }
            if (m_rec.isEmpty()) continue;  // nothing but the end of the file
            m_tags.build(m_rec);
            const PeriodRow row{element("bpstart"), element("bpname"), element("bpend"), element("billdue")};
            if (!addRow(m_db.periods, period::keyFor(row.name), row.text(), firstLine,
                        [&] { return QStringLiteral("a second bill period named \"%1\"").arg(row.name); }))
                return;
        }
    }

    void readProductsAndServices()
    {
        QString number;
        while (!m_src.atEnd()) {
            if (xmlNextRecord("</productsandservices>", "ps", "psid", number, false) != Next::Value) return;
            const qint64 headerLine = m_recordLine;
            freshRecord();
            bool sectionEnd = false;
            while (!m_src.atEnd()) {
                recordLine();
                if (current("</productsandservices>")) {
                    sectionEnd = true;
                    break;
                }
                if (current("</ps>")) break;
            }
            if (sectionEnd) return;
            if (!leadingNumberPositive(number)) continue;
            m_tags.build(m_rec);
            bool archived = element("current").toLower() == u"no";
            // The row keeps the price and the name as one text, divided at its
            // first " - ", with the archive mark in front: a price that holds
            // either of them is read the way the row will be saved, so the next
            // load gives the same row. A price that begins with the mark is an
            // archived item's, as the row could never tell it otherwise.
            QString price = element("itemprice");
            qsizetype marks = 0;
            while (QStringView(price).mid(marks).startsWith(ArchiveMark)) marks += ArchiveMark.size();
            if (marks) {
                price.remove(0, marks);
                archived = true;
            }
            // The price part is what stands before the first " - " of price,
            // " - " and name: a price ending in " -" ends earlier.
            const QString sort = regional::sortPrice(ItemRow::priceTextOf(price + ItemRow::Divider));
            // Sized exactly, the name decoded straight into place.
            const Span item = m_tags.element("item");
            const char *const nameBytes = m_rec.constData() + item.at;
            QString row(ItemRow::composedSize(archived, sort.size(), price.size(), decodedLength(nameBytes, item.len)),
                        Qt::Uninitialized);
            using F = ItemRow::Field;
            ItemRow::compose(reinterpret_cast<char16_t *>(row.data()), archived, [&](F f, char16_t *d) {
                switch (f) {
                case F::SortPrice: return std::copy(sort.utf16(), sort.utf16() + sort.size(), d);
                case F::PriceText: return std::copy(price.utf16(), price.utf16() + price.size(), d);
                case F::Name:
                    // The name is read last: a huge one gives its bytes back as it goes.
                    return item.len >= (qsizetype(64) << 20) ? putDecodedReleasing(d, nameBytes, item.len)
                                                             : putDecoded(d, nameBytes, item.len);
                }
                return d;
            });
            if (!addRow(m_db.items, numberKey(number), std::move(row), headerLine,
                        [&] { return QStringLiteral("a second item with the number %1").arg(number); }))
                return;
            m_items.insert(number, 1);
        }
    }

    // An entry names a known item? Only the part before the "x" counts.
    bool knownItem(const char *p, qsizetype n) const
    {
        if (findByte(p, n, Marker)) {
            // A character reference inside: decide on the decoded text.
            const QString entry = decoded(p, n);
            const qsizetype x = entry.indexOf(u'x');
            return m_items.find(x < 0 ? entry : entry.left(x)) >= 0;
        }
        const char *x = findByte(p, n, 'x');
        return m_items.find(p, x ? x - p : n) >= 0;
    }

    // A record whose every line is one element in the form the writer gives
    // it, "<Name>value</Name>" with nothing to clean, is read straight from
    // its lines. Its elements are then exactly what the joined record text
    // gives, since no tag can stand anywhere but at the ends of such a line.
    // Any other line sends the whole record through the general way.
    struct PlainRecord {
        bool plain = true;
        Span field[TagIndex::RecordTags::FieldCount];
        bool fieldSet[TagIndex::RecordTags::FieldCount];
        std::vector<Span> entry;     // by number
        std::vector<char> entrySet;  // by number
        void reset()
        {
            plain = true;
            for (bool &f : fieldSet) f = false;
            for (Span &f : field) f = {};
            entry.clear();
            entrySet.clear();
        }
    };

    // The shape of a line with nothing to clean: 1 for a single tag, 2 for
    // "<...>value</...>"; 0 otherwise. gt is the first ">", lt the second "<".
    // Lines come from the line source, which leaves slack behind each line.
    static int plainShape(const char *p, qsizetype n, qsizetype &gt, qsizetype &lt)
    {
        if (n < 3 || p[0] != '<' || p[n - 1] != '>') return 0;
        qsizetype lts[3], gts[3];
        int nlt = 0, ngt = 0;
#if defined(__SSE2__)
        const __m128i tab = _mm_set1_epi8('\t'), amp = _mm_set1_epi8('&'), excl = _mm_set1_epi8('!');
        const __m128i open = _mm_set1_epi8('<'), close = _mm_set1_epi8('>');
        for (qsizetype i = 0; i < n; i += 16) {
            const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i *>(p + i));
            const unsigned valid = n - i >= 16 ? 0xFFFFu : (1u << (n - i)) - 1;
            const unsigned bad = unsigned(_mm_movemask_epi8(_mm_or_si128(
                                     _mm_or_si128(_mm_cmpeq_epi8(x, tab), _mm_cmpeq_epi8(x, amp)), _mm_cmpeq_epi8(x, excl)))) &
                                 valid;
            if (bad) return 0;
            unsigned a = unsigned(_mm_movemask_epi8(_mm_cmpeq_epi8(x, open))) & valid;
            unsigned c = unsigned(_mm_movemask_epi8(_mm_cmpeq_epi8(x, close))) & valid;
            for (; a; a &= a - 1) {
                if (nlt == 3) return 0;
                lts[nlt++] = i + __builtin_ctz(a);
            }
            for (; c; c &= c - 1) {
                if (ngt == 3) return 0;
                gts[ngt++] = i + __builtin_ctz(c);
            }
        }
#else
        for (qsizetype i = 0; i < n; ++i) {
            const char c = p[i];
            if (c == '\t' || c == '&' || c == '!') return 0;
            if (c == '<') {
                if (nlt == 3) return 0;
                lts[nlt++] = i;
            } else if (c == '>') {
                if (ngt == 3) return 0;
                gts[ngt++] = i;
            }
        }
#endif
        if (nlt == 1 && ngt == 1) return 1;
        if (nlt != 2 || ngt != 2 || gts[0] > lts[1] || p[lts[1] + 1] != '/') return 0;
        gt = gts[0];
        lt = lts[1];
        return 2;
    }

    // Notes a plain line that will stand in the record text at offset at;
    // false when the line isn't one.
    // lone tells which tag a line of one tag is: 1 the record's opening, 2
    // its closing, 3 the section's closing; 0 for an element.
    static bool plainLine(const char *p, qsizetype n, qsizetype at, PlainRecord &r, int &lone)
    {
        qsizetype gtAt = 0, ltAt = 0;
        const int shape = plainShape(p, n, gtAt, ltAt);
        if (shape == 0) return false;
        lone = 0;
        if (shape == 1) {
            // One tag alone: only the record's own opening and closing tags.
            lone = equalsLower(p, n, "<invoicerecord>", 15)     ? 1
                   : equalsLower(p, n, "</invoicerecord>", 16)  ? 2
                   : equalsLower(p, n, "</invoicerecords>", 17) ? 3
                                                                : 0;
            return lone != 0;
        }
        const char *name = p + 1;
        const qsizetype nameLen = gtAt - 1;
        const char *closeName = p + ltAt + 2;
        const qsizetype closeLen = n - 1 - (ltAt + 2);
        const Span value{at + gtAt + 1, ltAt - gtAt - 1};
        static const char *const names[TagIndex::RecordTags::FieldCount] = {"bp", "cid", "accountbalance", "note"};
        static const qsizetype lengths[TagIndex::RecordTags::FieldCount] = {2, 3, 14, 4};
        for (int f = 0; f < TagIndex::RecordTags::FieldCount; ++f) {
            if (nameLen != lengths[f] || !equalsLower(name, nameLen, names[f], lengths[f])) continue;
            if (!equalsLower(closeName, closeLen, names[f], lengths[f])) return false;
            if (!r.fieldSet[f]) {
                r.fieldSet[f] = true;
                r.field[f] = value;
            }
            return true;
        }
        // <PSID Number="N">value</PSID>, exactly as written.
        if (nameLen < 15 || std::memcmp(name, "PSID Number=\"", 13) != 0 || name[nameLen - 1] != '"') return false;
        if (closeLen != 4 || std::memcmp(closeName, "PSID", 4) != 0) return false;
        const char *digits = name + 13;
        const qsizetype nd = nameLen - 14;
        if (digits[0] < '1' || digits[0] > '9') return false;
        qint64 number = 0;
        for (qsizetype i = 0; i < nd; ++i) {
            if (digits[i] < '0' || digits[i] > '9') return false;
            number = number * 10 + (digits[i] - '0');
            if (number > TagIndex::MaxQuickEntry) return false;
        }
        if (size_t(number) >= r.entry.size()) {
            r.entry.resize(size_t(number) + 1);
            r.entrySet.resize(size_t(number) + 1, 0);
        }
        if (!r.entrySet[size_t(number)]) {
            r.entrySet[size_t(number)] = 1;
            r.entry[size_t(number)] = value;
        }
        return true;
    }

    // XmlUnescape for the lines of a record: a plain line is taken as it
    // stands, any other line is cleaned and makes the record a general one.
    void nextRecordLine(PlainRecord &r)
    {
        m_cur = &m_rec;
        const char *b;
        qsizetype n;
        while (m_src.next(b, n)) {
            const qsizetype start = m_rec.size();
            if (r.plain) {
                qsizetype t = 0;
                while (t < n && b[t] == '\t') ++t;
                const char *p = b + t;
                const qsizetype len = n - t;
                // Plain: starts with "<" and ends with ">" (so no blank at
                // either end) and has nothing to clean inside. Such lines
                // are whole elements, so they need no break between them.
                int lone = 0;
                if (plainLine(p, len, start, r, lone)) {
                    if (lone) m_shape.recordTag(lone, p, len, m_src.lineNumber());
                    else m_shape.element(p, len, m_src.lineNumber());
                    m_rec.resize(start + len);
                    std::memcpy(m_rec.data() + start, p, size_t(len));
                    m_curSpan = {start, len};
                    return;
                }
            }
            if (!appendCleaned(b, n, start)) continue;
            if (m_curSpan.len == 0 && r.plain) {
                // Between whole elements a blank line means nothing.
                m_rec.truncate(start);
                continue;
            }
            if (m_curSpan.len) {
                m_shape.line(m_rec.constData() + m_curSpan.at, m_curSpan.len, m_src.lineNumber());
                r.plain = false;
            }
            return;
        }
        m_curSpan = {m_rec.size(), 0};
    }

    // Records wait in small batches before they go into the table: each one's
    // key slot is prefetched when the record is parsed, so by the time the
    // batch is added the slots are in cache.
    struct PendingRecord {
        QString key, row;  // the key's buffer is kept from batch to batch
        qint64 line;
        qsizetype cidAt;  // where the CID starts in the key
        bool named;
    };
    static constexpr size_t BatchSize = 16;
    std::array<PendingRecord, BatchSize> m_batch;
    size_t m_batched = 0;

    bool flushRecords()
    {
        const size_t n = std::exchange(m_batched, 0);
        for (size_t i = 0; i < n; ++i) {
            PendingRecord &r = m_batch[i];
            try {
                // The table copies the key, so its buffer stays here for reuse.
                m_db.invoiceRecords.append(std::as_const(r.key), std::move(r.row));
            } catch (const KeyedListError &) {
                const QStringView key(r.key);
                duplicate = DuplicateKey{r.line, QStringLiteral("a second record of customer %1 in bill period \"%2\"")
                                                     .arg(key.mid(r.cidAt).chopped(1), key.left(r.cidAt - 1))};
                return false;
            }
            r.row = QString();
            if (!r.named) m_after.unnamedRows.push_back(m_db.invoiceRecords.count());
        }
        return true;
    }

    void readInvoiceRecords()
    {
        m_batched = 0;
        readInvoiceRecordLines();
        if (!duplicate) flushRecords();
    }

    void readInvoiceRecordLines()
    {
        char name[48] = "PSID Number=\"";
        const qsizetype prefix = 13;
        std::vector<Span> entries;
        PlainRecord plain;
        {
            // A record as the writer lays it out rarely takes fewer bytes than
            // this, so the table is sized once for the rest of the file instead
            // of growing row by row; a file of smaller records just grows.
            constexpr qint64 RecordBytes = 200;
            const qint64 estimate = m_db.invoiceRecords.count() + m_src.bytesLeft() / RecordBytes;
            m_db.invoiceRecords.reserve(int(std::min<qint64>(estimate, 1 << 28)));
        }
        while (!m_src.atEnd()) {
            freshRecord();
            qint64 firstLine = 0;
            plain.reset();
            while (!m_src.atEnd()) {
                nextRecordLine(plain);
                if (!firstLine) firstLine = m_src.lineNumber();
                if (current("</invoicerecords>")) return;
                if (current("</invoicerecord>")) break;
            }
            if (m_rec.isEmpty()) continue;
            Span bp, cid, balance, note;
            if (plain.plain) {
                bp = plain.field[TagIndex::RecordTags::BP];
                cid = plain.field[TagIndex::RecordTags::CID];
                balance = plain.field[TagIndex::RecordTags::Balance];
                note = plain.field[TagIndex::RecordTags::Note];
            } else {
                m_tags.classify(m_rec, m_recordTags);
                bp = m_tags.field(m_recordTags, TagIndex::RecordTags::BP);
                cid = m_tags.field(m_recordTags, TagIndex::RecordTags::CID);
                balance = m_tags.field(m_recordTags, TagIndex::RecordTags::Balance);
                note = m_tags.field(m_recordTags, TagIndex::RecordTags::Note);
            }
            const char *s = m_rec.constData();

            entries.clear();
            qsizetype entryBytes = 0;
            for (qint64 i = 1;; ++i) {
                Span entry;
                if (plain.plain) {
                    if (size_t(i) >= plain.entrySet.size() || !plain.entrySet[size_t(i)]) break;
                    entry = plain.entry[size_t(i)];
                } else if (i <= TagIndex::MaxQuickEntry || !m_recordTags.tooMany) {
                    if (!m_tags.entry(m_recordTags, i, entry)) break;
                } else {
                    if (i == TagIndex::MaxQuickEntry + 1) m_tags.build(m_rec);  // the slow search needs the list
                    qsizetype len = prefix;
                    char digits[24];
                    int nd = 0;
                    for (qint64 v = i; v; v /= 10) digits[nd++] = char('0' + v % 10);
                    while (nd) name[len++] = digits[--nd];
                    name[len++] = '"';
                    if (!m_tags.entry(name, len, entry)) break;
                }
                entries.push_back(entry);
                entryBytes += entry.len;
            }

            // The customer's name when the customer is known already, so the
            // row is built once in its final six-field form.
            // A number in any other form than plain digits ("5K", " 5") names
            // the customer whose header gives it, as the header reads it.
            const int customer = NumberSet::plainNumber(s + cid.at, cid.len) >= 0
                                     ? m_customers.find(s + cid.at, cid.len)
                                     : m_customers.find(detail::recordNumber(decoded(s + cid.at, cid.len), true));
            const QStringView customerName =
                customer >= 0 ? QStringView(m_namePool).mid(m_nameAt[size_t(customer)].at, m_nameAt[size_t(customer)].len)
                              : QStringView();
            const bool named = customer >= 0;

            // The key first: the table can start fetching its slot while
            // the row is put together. Both are written in place, sized for
            // the bytes (decoding never makes a value longer).
            PendingRecord &pending = m_batch[m_batched];
            QString &key = pending.key;
            using F = InvoiceRecordRow::Field;
            key.resize(bp.len + cid.len + InvoiceRecordRow::KeySeparatorCount);
            char16_t *const k = reinterpret_cast<char16_t *>(key.data());
            qsizetype periodLen = 0, cidAt = 0, cidLen = 0;
            const qsizetype keyLen = InvoiceRecordRow::composeKey(k, [&](F f, char16_t *d) {
                                         char16_t *const at = d;
                                         if (f == F::Period) {
                                             d = putDecoded(d, s + bp.at, bp.len);
                                             periodLen = d - at;
                                         } else {
                                             cidAt = at - k;
                                             d = putDecoded(d, s + cid.at, cid.len);
                                             cidLen = d - at;
                                         }
                                         return d;
                                     }) -
                                     k;
            if (keyLen < key.size()) key.truncate(keyLen);
            m_db.invoiceRecords.prefetch(key);

            const qsizetype nameLen = named ? customerName.size() : 0;
            QString row(keyLen - InvoiceRecordRow::KeySeparatorCount + nameLen + balance.len + entryBytes +
                            ItemEntry::separatorCount(qsizetype(entries.size())) + note.len +
                            InvoiceRecordRow::separatorCount(named),
                        Qt::Uninitialized);
            char16_t *const r = reinterpret_cast<char16_t *>(row.data());
            // A huge note gives its bytes back as it is decoded, unless
            // something read later lies in them (a file edited by hand).
            auto apart = [&note](Span o) { return o.at + o.len <= note.at || o.at >= note.at + note.len; };
            bool release = note.len >= (qsizetype(64) << 20) && apart(bp) && apart(cid);
            for (const Span &entry : entries) release = release && apart(entry);
            char16_t *const end = InvoiceRecordRow::compose(r, named, [&](F f, char16_t *d) {
                switch (f) {
                case F::Period: return std::copy(k, k + periodLen, d);
                case F::CustomerName: return std::copy(customerName.utf16(), customerName.utf16() + customerName.size(), d);
                case F::Cid: return std::copy(k + cidAt, k + cidAt + cidLen, d);
                case F::Balance: return putDecoded(d, s + balance.at, balance.len);
                case F::Items:
                    return ItemEntry::compose(d, qsizetype(entries.size()), [&](qsizetype e, char16_t *d) {
                        return putDecoded(d, s + entries[size_t(e)].at, entries[size_t(e)].len);
                    });
                case F::Note:
                    return release ? putDecodedReleasing(d, s + note.at, note.len) : putDecoded(d, s + note.at, note.len);
                }
                return d;
            });
            if (end - r < row.size()) row.truncate(end - r);

            pending.row = std::move(row);
            pending.line = firstLine;
            pending.cidAt = cidAt;
            pending.named = named;
            if (++m_batched == BatchSize && !flushRecords()) return;

            for (const Span &entry : entries) {
                if (!entry.len || knownItem(s + entry.at, entry.len)) continue;
                if (m_after.itemProblemCount++ < detail::MaxItemProblems)
                    m_after.itemProblems << detail::itemProblem(decoded(s + bp.at, bp.len), decoded(s + cid.at, cid.len),
                                                                decoded(s + entry.at, entry.len));
            }
        }
    }

    LineSource m_src;
    Structure m_shape;
    Tables &m_db;
    detail::AfterRead &m_after;
    QByteArray m_line;  // CurrentLine outside records
    QByteArray m_rec;   // record buffer: the record's lines joined directly
    const QByteArray *m_cur = &m_line;
    Span m_curSpan;
    qint64 m_recordLine = 0;
    TagIndex m_tags;
    TagIndex::RecordTags m_recordTags;
    NumberSet m_customers;  // customer number -> index in m_nameAt
    QString m_namePool;     // customer names without the archive mark, one after the other
    std::vector<Span> m_nameAt;
    NumberSet m_items;
    bool m_recordsSeen = false;
    bool m_itemsLate = false;
};

// Lower case as the reader takes it for numbers: the letters of the code page.
char16_t lowerInCodePage(char16_t c)
{
    if (c >= u'A' && c <= u'Z') return char16_t(c + 32);
    if (c >= 0xC0 && c <= 0xDE && c != 0xD7) return char16_t(c + 32);
    switch (c) {
    case 0x160: return 0x161;
    case 0x152: return 0x153;
    case 0x17D: return 0x17E;
    case 0x178: return 0xFF;
    default: return c;
    }
}

QString shownName(const QString &path) { return QDir::toNativeSeparators(path); }

// The name under which a file is remembered for keeping a copy of it: the
// same file reached by another path is the same file.
QString fileKey(const QString &path)
{
    const QFileInfo info(path);
    const QString canonical = info.canonicalFilePath();
    return canonical.isEmpty() ? info.absoluteFilePath() : canonical;
}

ReadResult rejected(const QString &message, int line = 0, bool keepCopy = false)
{
    ReadResult r;
    r.status = ReadResult::Status::Rejected;
    r.message = message;
    r.line = line;
    r.keepsCopyOnSave = keepCopy;
    return r;
}

}  // namespace

QString detail::recordNumber(QStringView text, bool dropK)
{
    QString out;
    out.reserve(text.size());
    for (QChar ch : text) {
        const char16_t c = lowerInCodePage(ch.unicode());
        if (c == u' ' || (dropK && c == u'k')) continue;
        out += QChar(c);
    }
    return out;
}

bool detail::usableNumber(QStringView number) { return leadingNumberPositive(number); }

ReadResult Database::read(const QString &path) { return read(path, MissingFile::Create); }

ReadResult Database::read(const QString &path, MissingFile missing)
{
    // Running out of memory half-way is told like any other refusal: the
    // tables are left empty and the file as it is, with a copy kept on save.
    auto readWhole = [&]() -> ReadResult {
        clear();
        const QFileInfo info(path);
        const QString absolute = fileKey(path);
        const QString name = shownName(path);

        if (!info.exists()) {
            if (missing == MissingFile::Reject)
                return rejected(QStringLiteral("The database file \"%1\" does not exist.").arg(name));
            QFile made(path);
            // Readable by the user alone, whatever the umask.
            if (!made.open(QIODevice::WriteOnly | QIODevice::NewOnly, QFileDevice::ReadOwner | QFileDevice::WriteOwner))
                return rejected(QStringLiteral("The database file \"%1\" does not exist and cannot be created: %2.")
                                    .arg(name, made.errorString()));
            made.close();
            m_keepCopyOf.remove(absolute);  // nothing left of an older, unreadable file
            ReadResult r;
            r.status = ReadResult::Status::Created;
            return r;
        }
        if (info.isDir())
            return rejected(QStringLiteral("\"%1\" is a folder, not a database file.").arg(name));
        // A pipe or a device would block the read or never end: refused before it is opened.
        if (!info.isFile())
            return rejected(QStringLiteral("\"%1\" is not a regular file (a pipe, socket or device), so it cannot be "
                                           "a database file.")
                                .arg(name));

        // From here on the path holds something this program did not read: the
        // first save over it must keep a copy unless the read succeeds.
        QFile file(path);
        // The reader keeps its own blocks; a second buffer would only copy them.
        if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
            m_keepCopyOf.insert(absolute);
            return rejected(QStringLiteral("The database file \"%1\" cannot be opened: %2.").arg(name, file.errorString()),
                            0, true);
        }
        if (file.size() > MaxFileSize) {
            m_keepCopyOf.insert(absolute);
            return rejected(QStringLiteral("The database file \"%1\" cannot be loaded: at %2 MB it is larger than the "
                                           "%3 MB this program can hold in memory.")
                                .arg(name, QString::number(file.size() >> 20), QString::number(MaxFileSize >> 20)),
                            0, true);
        }

        // Read into fresh tables; they replace the current ones only on success,
        // so a rejected file never leaves half-filled tables behind.
        Tables fresh;
        detail::AfterRead after;
        Reader reader(file, fresh, after);
        reader.run();
        LineSource &src = reader.source();

        if (src.failed() && !src.ioError().isEmpty()) {
            m_keepCopyOf.insert(absolute);
            return rejected(QStringLiteral("The database file \"%1\" could not be read: %2.").arg(name, src.ioError()),
                            0, true);
        }
        if (src.failed()) {
            m_keepCopyOf.insert(absolute);
            const int line = int(src.badLine());
            return rejected(QStringLiteral("The database file \"%1\" is not a text database: line %2 holds the byte "
                                           "0x%3, which such a file never contains.")
                                .arg(name, QString::number(line),
                                     QStringLiteral("%1").arg(int(src.badByte()), 2, 16, QLatin1Char('0'))),
                            line, true);
        }
        if (reader.duplicate) {
            m_keepCopyOf.insert(absolute);
            const int line = int(reader.duplicate->line);
            return rejected(QStringLiteral("The database file \"%1\" cannot be loaded: line %2 holds %3, and a key may "
                                           "stand only once.")
                                .arg(name, QString::number(line), reader.duplicate->what),
                            line, true);
        }

        if (reader.damage) {
            m_keepCopyOf.insert(absolute);
            const StructureError &d = *reader.damage;
            const int line = int(d.line);
            QString why;
            if (line == 0)
                why = QStringLiteral(
                          "The database file \"%1\" cannot be loaded: it holds no section of a database "
                          "(expected %2). It may be another kind of file.")
                          .arg(name, d.expected);
            else if (d.cutOff)
                why = QStringLiteral(
                          "The database file \"%1\" cannot be loaded: it ends at line %2, where %3 was "
                          "expected. It looks cut off.")
                          .arg(name, QString::number(line), d.expected);
            else
                why = QStringLiteral(
                          "The database file \"%1\" cannot be loaded: line %2 holds \"%3\" where %4 was "
                          "expected. The file looks damaged.")
                          .arg(name, QString::number(line), d.found, d.expected);
            return rejected(why, line, true);
        }

        m_t.swap(fresh);
        m_afterRead = std::move(after);
        m_t.customers.resort();
        m_t.periods.resort();
        m_t.items.resort();
        // The records are sorted once, by fillInvoiceRecordNames(), which every
        // load runs next: their final text is only known then.

        ReadResult r;
        if (!reader.sectionFound) {
            // A non-empty file without any section: read as empty, but its content
            // is not ours to throw away on the next save.
            file.seek(0);
            bool content = false;
            char chunk[65536];
            qint64 got;
            while (!content && (got = file.read(chunk, sizeof chunk)) > 0)
                for (qint64 i = 0; i < got && !content; ++i)
                    content = chunk[i] != ' ' && chunk[i] != '\t' && chunk[i] != '\r' && chunk[i] != '\n';
            if (content) {
                m_keepCopyOf.insert(absolute);
                r.keepsCopyOnSave = true;
            }
        }
        if (!r.keepsCopyOnSave) m_keepCopyOf.remove(absolute);
        return r;
    };
    try {
        return readWhole();
    } catch (const std::bad_alloc &) {
        clear();
        m_keepCopyOf.insert(fileKey(path));
        return rejected(QStringLiteral("The database file \"%1\" cannot be loaded: there is not enough memory "
                                       "to hold it. The file was left as it was.")
                            .arg(shownName(path)),
                        0, true);
    }
}

}  // namespace qor
