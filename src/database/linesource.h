// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// The physical lines of a database file, read in large blocks: line ends
// (CR LF, LF or CR alone), line numbers for messages, and the refusal of a
// file that holds a byte no text database has.
#include <QByteArray>
#include <QFile>
#include <QString>

#include <algorithm>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace qor::dbread {

inline constexpr qsizetype BlockSize = qsizetype(256) << 10;

// The first CR or LF, or null.
inline const char *findLineEnd(const char *s, qsizetype n)
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
    void refill();

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

}  // namespace qor::dbread
