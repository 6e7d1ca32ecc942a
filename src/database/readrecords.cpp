// SPDX-License-Identifier: GPL-3.0-or-later
// InvoiceRecords: nearly all of a big file. A record whose lines are all
// plain elements is read straight from its lines; any other goes through the
// cleaned record text and its tag index. Each row is built once, in its final
// form when the customer is already known, and rows go into the table in
// small batches.
#include "sectionreader.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>
#include <vector>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace qor::dbread {

namespace {

class InvoiceRecordReader {
public:
    explicit InvoiceRecordReader(SectionReader &in) : m_in(in) {}

    void read()
    {
        m_batched = 0;
        readInvoiceRecordLines();
        if (!m_in.duplicate) flushRecords();
    }

private:
    // An entry names a known item? Only the part before the "x" counts.
    bool knownItem(const char *p, qsizetype n) const
    {
        if (findByte(p, n, Marker)) {
            // A character reference inside: decide on the decoded text.
            const QString entry = decoded(p, n);
            const qsizetype x = entry.indexOf(u'x');
            return m_in.items.find(x < 0 ? entry : entry.left(x)) >= 0;
        }
        const char *x = findByte(p, n, 'x');
        return m_in.items.find(p, x ? x - p : n) >= 0;
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
        m_in.cur = &m_in.rec;
        const char *b;
        qsizetype n;
        while (m_in.src.next(b, n)) {
            const qsizetype start = m_in.rec.size();
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
                    if (lone) m_in.shape.recordTag(lone, p, len, m_in.src.lineNumber());
                    else m_in.shape.element(p, len, m_in.src.lineNumber());
                    m_in.rec.resize(start + len);
                    std::memcpy(m_in.rec.data() + start, p, size_t(len));
                    m_in.curSpan = {start, len};
                    return;
                }
            }
            if (!m_in.appendCleaned(b, n, start)) continue;
            if (m_in.curSpan.len == 0 && r.plain) {
                // Between whole elements a blank line means nothing.
                m_in.rec.truncate(start);
                continue;
            }
            if (m_in.curSpan.len) {
                m_in.shape.line(m_in.rec.constData() + m_in.curSpan.at, m_in.curSpan.len, m_in.src.lineNumber());
                r.plain = false;
            }
            return;
        }
        m_in.curSpan = {m_in.rec.size(), 0};
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
                m_in.db.invoiceRecords.append(std::as_const(r.key), std::move(r.row));
            } catch (const KeyedListError &) {
                const QStringView key(r.key);
                m_in.duplicate = DuplicateKey{r.line, QStringLiteral("a second record of customer %1 in bill period \"%2\"")
                                                          .arg(key.mid(r.cidAt).chopped(1), key.left(r.cidAt - 1))};
                return false;
            }
            r.row = QString();
            if (!r.named) m_in.after.unnamedRows.push_back(m_in.db.invoiceRecords.count());
        }
        return true;
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
            const qint64 estimate = m_in.db.invoiceRecords.count() + m_in.src.bytesLeft() / RecordBytes;
            m_in.db.invoiceRecords.reserve(int(std::min<qint64>(estimate, 1 << 28)));
        }
        while (!m_in.src.atEnd()) {
            m_in.freshRecord();
            qint64 firstLine = 0;
            plain.reset();
            while (!m_in.src.atEnd()) {
                nextRecordLine(plain);
                if (!firstLine) firstLine = m_in.src.lineNumber();
                if (m_in.current("</invoicerecords>")) return;
                if (m_in.current("</invoicerecord>")) break;
            }
            if (m_in.rec.isEmpty()) continue;
            Span bp, cid, balance, note;
            if (plain.plain) {
                bp = plain.field[TagIndex::RecordTags::BP];
                cid = plain.field[TagIndex::RecordTags::CID];
                balance = plain.field[TagIndex::RecordTags::Balance];
                note = plain.field[TagIndex::RecordTags::Note];
            } else {
                m_in.tags.classify(m_in.rec, m_recordTags);
                bp = m_in.tags.field(m_recordTags, TagIndex::RecordTags::BP);
                cid = m_in.tags.field(m_recordTags, TagIndex::RecordTags::CID);
                balance = m_in.tags.field(m_recordTags, TagIndex::RecordTags::Balance);
                note = m_in.tags.field(m_recordTags, TagIndex::RecordTags::Note);
            }
            const char *s = m_in.rec.constData();

            entries.clear();
            qsizetype entryBytes = 0;
            for (qint64 i = 1;; ++i) {
                Span entry;
                if (plain.plain) {
                    if (size_t(i) >= plain.entrySet.size() || !plain.entrySet[size_t(i)]) break;
                    entry = plain.entry[size_t(i)];
                } else if (i <= TagIndex::MaxQuickEntry || !m_recordTags.tooMany) {
                    if (!m_in.tags.entry(m_recordTags, i, entry)) break;
                } else {
                    if (i == TagIndex::MaxQuickEntry + 1) m_in.tags.build(m_in.rec);  // the slow search needs the list
                    qsizetype len = prefix;
                    char digits[24];
                    int nd = 0;
                    for (qint64 v = i; v; v /= 10) digits[nd++] = char('0' + v % 10);
                    while (nd) name[len++] = digits[--nd];
                    name[len++] = '"';
                    if (!m_in.tags.entry(name, len, entry)) break;
                }
                entries.push_back(entry);
                entryBytes += entry.len;
            }

            // The customer's name when the customer is known already, so the
            // row is built once in its final six-field form.
            // A number in any other form than plain digits ("5K", " 5") names
            // the customer whose header gives it, as the header reads it.
            const int customer = NumberSet::plainNumber(s + cid.at, cid.len) >= 0
                                     ? m_in.customers.find(s + cid.at, cid.len)
                                     : m_in.customers.find(detail::recordNumber(decoded(s + cid.at, cid.len), true));
            const QStringView customerName =
                customer >= 0 ? QStringView(m_in.namePool).mid(m_in.nameAt[size_t(customer)].at, m_in.nameAt[size_t(customer)].len)
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
            m_in.db.invoiceRecords.prefetch(key);

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
                if (m_in.after.itemProblemCount++ < detail::MaxItemProblems)
                    m_in.after.itemProblems << detail::itemProblem(decoded(s + bp.at, bp.len), decoded(s + cid.at, cid.len),
                                                                   decoded(s + entry.at, entry.len));
            }
        }
    }

    SectionReader &m_in;
    TagIndex::RecordTags m_recordTags;
};

}  // namespace

void readInvoiceRecords(SectionReader &in) { InvoiceRecordReader(in).read(); }

}  // namespace qor::dbread
