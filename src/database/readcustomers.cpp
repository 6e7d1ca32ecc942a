// SPDX-License-Identifier: GPL-3.0-or-later
// Customers: a header with the number, then the elements of the row. Each
// customer's name is kept for the invoice records that name the number.
#include "sectionreader.h"

#include <algorithm>

namespace qor::dbread {

void readCustomers(SectionReader &in)
{
    QString number;
    while (!in.current("</customers>") && !in.src.atEnd()) {
        if (in.xmlNextRecord("</customers>", "customer", "cid", number, true) != SectionReader::Next::Value) return;
        const qint64 headerLine = in.headerLine;
        in.freshRecord();
        while (!in.src.atEnd()) {
            in.recordLine();
            if (in.current("</customer>") || in.current("</customers>")) break;
        }
        if (!leadingNumberPositive(number)) continue;
        in.tags.build(in.rec);
        const Span first = in.tags.element("fname");
        const Span last = in.tags.element("lname");
        const Span cur = in.tags.element("current");
        const char *const s = in.rec.constData();
        // Current is "no" in any case; a character reference in it needs the decoded text.
        const bool archived = cur.len == 2 ? equalsLower(s + cur.at, 2, "no", 2)
                              : findByte(s + cur.at, cur.len, Marker)
                                  ? in.text(cur).toLower() == u"no"
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
        const Span rest[6] = {in.tags.element("add1"), in.tags.element("add2"), in.tags.element("add3"),
                              in.tags.element("email"), in.tags.element("phone"), in.tags.element("notes")};
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
        in.nameAt.push_back({in.namePool.size(), nameLen});
        in.namePool += QStringView(row).mid(nameAt, nameLen);
        if (!in.addRow(in.db.customers, numberKey(number), std::move(row), headerLine,
                       [&] { return QStringLiteral("a second customer with the number %1").arg(number); })) {
            in.nameAt.pop_back();
            return;
        }
        in.customers.insert(number, int(in.nameAt.size() - 1));
    }
}

}  // namespace qor::dbread
