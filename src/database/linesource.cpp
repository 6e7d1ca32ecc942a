// SPDX-License-Identifier: GPL-3.0-or-later
#include "linesource.h"

namespace qor::dbread {

namespace {

// The only byte that never stands in a text database: NUL. Other control
// bytes are text (a vertical tab or ESC pasted from another program), except
// the two separators of the row texts, which a value can't hold: they are
// taken for tabs, which are never content, so they fall away.
bool isSeparatorByte(unsigned char c) { return c == 0x01 || c == 0x02; }

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

}  // namespace

void LineSource::refill()
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


}  // namespace qor::dbread
