// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// Finding things in a record's text and among the numbers read so far: the
// tags of one record buffer (every "<" with the first ">" after it, the
// fields and item entries of an invoice record sorted out in one pass), and
// the customer and item numbers a record may name.
#include "cleantext.h"

#include <QByteArray>
#include <QHash>
#include <QString>

#include <vector>

namespace qor::dbread {

// The elements of one record buffer: every "<" with the first ">" after it.
class TagIndex {
public:
    void build(const QByteArray &buf);

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
    void classify(const QByteArray &buf, RecordTags &r);

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
    void collectBrackets(const QByteArray &buf);
    void classifyTag(RecordTags &r, qsizetype lt, qsizetype gt) const;

    struct Tag {
        qsizetype lt, gt;
    };
    const char *m_s = nullptr;
    std::vector<Tag> m_tags;
    std::vector<qsizetype> m_lt, m_gt;
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
    void insert(const QString &number, int value);
    int find(const QString &number) const;
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

}  // namespace qor::dbread
