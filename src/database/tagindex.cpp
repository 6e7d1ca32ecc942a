// SPDX-License-Identifier: GPL-3.0-or-later
#include "tagindex.h"

#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace qor::dbread {

void TagIndex::build(const QByteArray &buf)
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


void TagIndex::classify(const QByteArray &buf, RecordTags &r)
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


void TagIndex::collectBrackets(const QByteArray &buf)
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


void TagIndex::classifyTag(RecordTags &r, qsizetype lt, qsizetype gt) const
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


void NumberSet::insert(const QString &number, int value)
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

int NumberSet::find(const QString &number) const
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


}  // namespace qor::dbread
