#pragma once
// Row-text conventions shared by every table: fields are packed into one text
// and separated by characters a user cannot type.
#include <QString>
#include <QStringList>
#include <QStringView>

namespace qor {

inline constexpr QChar FieldSep{char16_t(0x0001)};
inline constexpr QChar ItemSep{char16_t(0x0002)};
// "zzzz»": marks an archived customer (front of field 0) or item (after the
// twelve characters of the sort price).
inline const QString ArchiveMark = QStringLiteral("zzzz\u00BB");
inline constexpr int SortPriceLength = 12;

inline QStringList splitFields(QStringView text) {
    QStringList out;
    for (auto part : text.split(FieldSep)) out.append(part.toString());
    return out;
}
inline QString joinFields(const QStringList &fields) { return fields.join(FieldSep); }
inline qsizetype fieldSepCount(QStringView text) { return text.count(FieldSep); }

// Text of an item row from character 13 on (1-based): the part after the sort price.
inline QStringView afterSortPrice(QStringView text) {
    return text.size() > SortPriceLength ? text.mid(SortPriceLength) : QStringView();
}
inline bool isArchivedCustomerText(QStringView text) { return text.startsWith(ArchiveMark); }
inline bool isArchivedItemText(QStringView text) { return afterSortPrice(text).startsWith(ArchiveMark); }

}  // namespace qor
