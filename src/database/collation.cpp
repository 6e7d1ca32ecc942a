// SPDX-License-Identifier: GPL-3.0-or-later
// Row-text collation. Comparison runs in levels, each a sequence derived from
// the text one UTF-16 unit at a time:
//   0. archived: a text starting with the archive mark goes after all others;
//   1. primary: case folded, accents stripped (canonical decomposition to the
//      base letter); combining marks are ignored; every other character,
//      control characters included, keeps its place by code point;
//   2. accents: the base letters with the marks that were stripped from them;
//   3. case: lower case before upper case;
//   4. plain code-point order, so only identical texts compare equal.
// Because each level is a concatenation of per-unit pieces, a common prefix of
// identical units can be skipped at every level at once; that makes the usual
// comparison a prefix scan plus a few table look-ups.
#include "collation.h"
#include "rows.h"

#include <QChar>
#include <QString>
#include <QVarLengthArray>
#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <vector>

namespace qor {
namespace {

constexpr char16_t SecondaryBase = 1;  // a base letter at the accent level

struct Tables {
    // Primary rank per UTF-16 unit, 0 for a unit ignored at that level.
    std::array<quint16, 65536> primary{};
    // Non-zero for upper- and title-case letters (case level).
    std::array<quint8, 65536> upper{};
    // Offset into marks of the accents stripped from this unit; 0 for none.
    std::array<quint16, 65536> markAt{};
    // Pool of accent lists: a count, then that many mark code points.
    std::vector<char16_t> marks;
};

bool isIgnorableMark(char32_t c)
{
    const auto cat = QChar::category(c);
    return cat == QChar::Mark_NonSpacing || cat == QChar::Mark_Enclosing;
}

std::unique_ptr<Tables> buildTables()
{
    auto t = std::make_unique<Tables>();
    t->marks.push_back(0);  // offset 0 means "no accents"
    std::vector<quint32> weight(65536);

    for (char32_t u = 0; u < 0x10000; ++u) {
        if (u >= 0xD800 && u <= 0xDFFF) {
            // Surrogate halves rank above the whole BMP, high before low, so
            // characters beyond the BMP keep code-point order among themselves.
            weight[u] = 0x10001 + (u - 0xD800);
            continue;
        }
        // CJK ideographs and Hangul syllables have no case, are no marks and
        // have no decomposition into a letter and marks: they stand for
        // themselves, and the Unicode look-ups below can be spared for them.
        if ((u >= 0x4E00 && u <= 0x9FFF) || (u >= 0xAC00 && u <= 0xD7A3)) {
            weight[u] = u + 1;
            continue;
        }
        const auto category = QChar::category(u);
        if (category == QChar::Mark_NonSpacing || category == QChar::Mark_Enclosing) {
            weight[u] = 0;
            continue;
        }
        // Most units neither fold nor decompose: they stand for themselves.
        if (category == QChar::Other_NotAssigned || category == QChar::Other_PrivateUse) {
            weight[u] = u + 1;
            continue;
        }
        const char32_t folded = QChar::toCaseFolded(u);
        t->upper[u] = folded != u ? 1 : 0;
        if (folded == u && QChar::decompositionTag(u) != QChar::Canonical) {
            weight[u] = u + 1;
            continue;
        }
        char32_t base = u;
        QVarLengthArray<char16_t, 8> stripped;
        // Decompose and fold until nothing changes; a few rounds cover every
        // chain (e.g. the Angstrom sign -> A with ring -> A -> a).
        for (int round = 0; round < 6; ++round) {
            char32_t next = base;
            if (QChar::decompositionTag(base) == QChar::Canonical) {
                const QString d = QChar::decomposition(base);
                bool onlyMarks = !d.isEmpty() && !d.at(0).isSurrogate();
                for (qsizetype i = 1; onlyMarks && i < d.size(); ++i)
                    onlyMarks = isIgnorableMark(d.at(i).unicode());
                if (onlyMarks) {
                    next = d.at(0).unicode();
                    for (qsizetype i = 1; i < d.size(); ++i) stripped.append(d.at(i).unicode());
                }
            }
            next = QChar::toCaseFolded(next);
            if (next == base) break;
            base = next;
        }
        weight[u] = base + 1;  // +1 keeps U+0000 apart from "ignored"
        if (!stripped.isEmpty()) {
            t->markAt[u] = quint16(t->marks.size());
            t->marks.push_back(char16_t(stripped.size()));
            t->marks.insert(t->marks.end(), stripped.begin(), stripped.end());
        }
    }

    // Rank-compress to 16 bits so the hot table stays small. The weights are
    // bounded, so the ranks come from a presence table and a running count.
    constexpr quint32 WeightLimit = 0x10001 + 0x800;
    std::vector<quint32> rank(WeightLimit, 0);
    for (char32_t u = 0; u < 0x10000; ++u) rank[weight[u]] = 1;
    quint32 below = 0;
    for (quint32 w = 0; w < WeightLimit; ++w) {
        const quint32 present = rank[w];
        rank[w] = below;
        below += present;
    }
    for (char32_t u = 0; u < 0x10000; ++u) {
        if (weight[u] == 0) continue;
        // The 0 of the ignored units is the lowest weight, so ranks start at 1.
        t->primary[u] = quint16(std::min<quint32>(rank[weight[u]], 0xFFFF));
    }
    return t;
}

const Tables &tables()
{
    static const std::unique_ptr<Tables> t = buildTables();
    return *t;
}

bool startsWithArchiveMark(const char16_t *p, qsizetype n)
{
    // "zzzz»", spelled out so the hot path needs no QString.
    return n >= 5 && p[0] == u'z' && p[1] == u'z' && p[2] == u'z' && p[3] == u'z' && p[4] == u'\u00BB';
}

// Length of the common prefix of identical units, four at a time.
qsizetype commonPrefix(const char16_t *a, const char16_t *b, qsizetype n)
{
    qsizetype i = 0;
    while (i + 4 <= n) {
        quint64 x, y;
        std::memcpy(&x, a + i, 8);
        std::memcpy(&y, b + i, 8);
        if (x != y) break;
        i += 4;
    }
    while (i < n && a[i] == b[i]) ++i;
    return i;
}

// Code-point order of two UTF-16 units at a first difference.
int codePointOrder(char16_t a, char16_t b)
{
    auto fix = [](char16_t c) -> quint32 {
        if (c >= 0xD800) return c < 0xE000 ? quint32(c) + 0x2000 : quint32(c) - 0x800;
        return c;
    };
    const quint32 x = fix(a), y = fix(b);
    return x < y ? -1 : (x > y ? 1 : 0);
}

using Seq = QVarLengthArray<quint32, 128>;

void accentSequence(const Tables &t, const char16_t *p, qsizetype n, Seq &out)
{
    for (qsizetype i = 0; i < n; ++i) {
        const char16_t c = p[i];
        if (t.primary[c] == 0) {
            out.append(quint32(c) + 1);
            continue;
        }
        out.append(SecondaryBase);
        if (const quint16 at = t.markAt[c]) {
            const char16_t count = t.marks[at];
            for (char16_t k = 1; k <= count; ++k) out.append(quint32(t.marks[at + k]) + 1);
        }
    }
}

void caseSequence(const Tables &t, const char16_t *p, qsizetype n, Seq &out)
{
    for (qsizetype i = 0; i < n; ++i)
        if (t.primary[p[i]] != 0) out.append(t.upper[p[i]]);
}

int compareSeq(const Seq &a, const Seq &b)
{
    const qsizetype n = std::min(a.size(), b.size());
    for (qsizetype i = 0; i < n; ++i)
        if (a[i] != b[i]) return a[i] < b[i] ? -1 : 1;
    return a.size() < b.size() ? -1 : (a.size() > b.size() ? 1 : 0);
}

}  // namespace

int compareRowText(QStringView a, QStringView b)
{
    const char16_t *pa = a.utf16();
    const char16_t *pb = b.utf16();
    qsizetype na = a.size(), nb = b.size();

    const bool archivedA = startsWithArchiveMark(pa, na);
    if (archivedA != startsWithArchiveMark(pb, nb)) return archivedA ? 1 : -1;

    const qsizetype skip = commonPrefix(pa, pb, std::min(na, nb));
    if (skip == na && skip == nb) return 0;
    pa += skip;
    pb += skip;
    na -= skip;
    nb -= skip;

    // Plain ASCII, the usual case, needs no tables: its primary weights follow
    // the case-folded code points, and it has no accents and no ignored units.
    {
        const qsizetype n = std::min(na, nb);
        bool ascii = true;
        for (qsizetype i = 0; i < n; ++i) {
            const char16_t x = pa[i], y = pb[i];
            if ((x | y) >= 0x80) {
                ascii = false;
                break;
            }
            const char16_t fx = (x >= u'A' && x <= u'Z') ? char16_t(x + 32) : x;
            const char16_t fy = (y >= u'A' && y <= u'Z') ? char16_t(y + 32) : y;
            if (fx != fy) return fx < fy ? -1 : 1;
        }
        // A longer text whose next unit is ASCII has a weight where the
        // shorter has ended; a non-ASCII one might be an ignored mark.
        if (ascii && na != nb && (na > nb ? pa[n] : pb[n]) < 0x80) return na < nb ? -1 : 1;
        if (ascii && na == nb) {
            for (qsizetype i = 0; i < n; ++i) {
                const bool ua = pa[i] >= u'A' && pa[i] <= u'Z', ub = pb[i] >= u'A' && pb[i] <= u'Z';
                if (ua != ub) return ua ? 1 : -1;
            }
            return codePointOrder(pa[0], pb[0]);
        }
    }

    const Tables &t = tables();
    qsizetype ia = 0, ib = 0;
    for (;;) {
        quint16 wa = 0, wb = 0;
        while (ia < na && (wa = t.primary[pa[ia]]) == 0) ++ia;
        while (ib < nb && (wb = t.primary[pb[ib]]) == 0) ++ib;
        if (wa != wb) return wa < wb ? -1 : 1;  // the end of a text ranks 0
        if (ia >= na) break;                    // both ended
        ++ia;
        ++ib;
    }

    Seq sa, sb;
    accentSequence(t, pa, na, sa);
    accentSequence(t, pb, nb, sb);
    if (int c = compareSeq(sa, sb)) return c;
    sa.clear();
    sb.clear();
    caseSequence(t, pa, na, sa);
    caseSequence(t, pb, nb, sb);
    if (int c = compareSeq(sa, sb)) return c;

    if (na == 0 || nb == 0) return na < nb ? -1 : (na > nb ? 1 : 0);
    return codePointOrder(pa[0], pb[0]);
}

quint64 rowTextSortChunk(QStringView text, qsizetype &pos)
{
    const Tables &t = tables();
    const char16_t *p = text.utf16();
    const qsizetype n = text.size();
    quint64 key = 0;
    for (int shift = 48; shift >= 0 && pos < n; ++pos) {
        if (const quint16 w = t.primary[p[pos]]) {
            key |= quint64(w) << shift;
            shift -= 16;
        }
    }
    return key;
}

}  // namespace qor
