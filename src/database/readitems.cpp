// SPDX-License-Identifier: GPL-3.0-or-later
// ProductsAndServices: a header with the number, then the price and name.
#include "sectionreader.h"

#include "regional.h"

#include <algorithm>

namespace qor::dbread {

void readProductsAndServices(SectionReader &in)
{
    QString number;
    while (!in.src.atEnd()) {
        if (in.xmlNextRecord("</productsandservices>", "ps", "psid", number, false) != SectionReader::Next::Value) return;
        const qint64 headerLine = in.headerLine;
        in.freshRecord();
        bool sectionEnd = false;
        while (!in.src.atEnd()) {
            in.recordLine();
            if (in.current("</productsandservices>")) {
                sectionEnd = true;
                break;
            }
            if (in.current("</ps>")) break;
        }
        if (sectionEnd) return;
        if (!leadingNumberPositive(number)) continue;
        in.tags.build(in.rec);
        bool archived = in.element("current").toLower() == u"no";
        // The row keeps the price and the name as one text, divided at its
        // first " - ", with the archive mark in front: a price that holds
        // either of them is read the way the row will be saved, so the next
        // load gives the same row. A price that begins with the mark is an
        // archived item's, as the row could never tell it otherwise.
        QString price = in.element("itemprice");
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
        const Span item = in.tags.element("item");
        const char *const nameBytes = in.rec.constData() + item.at;
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
        if (!in.addRow(in.db.items, numberKey(number), std::move(row), headerLine,
                       [&] { return QStringLiteral("a second item with the number %1").arg(number); }))
            return;
        in.items.insert(number, 1);
    }
}

}  // namespace qor::dbread
