// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// Row-text conventions shared by every table: fields are packed into one text
// and separated by characters a user cannot type. Which field holds what is
// known only to the row types (rowtypes.h).
#include <QString>
#include <QStringView>

namespace qor {

inline constexpr QChar FieldSep{char16_t(0x0001)};
inline constexpr QChar ItemSep{char16_t(0x0002)};
// "zzzz»": marks an archived customer (front of field 0) or item (after the
// twelve characters of the sort price).
inline const QString ArchiveMark = QStringLiteral("zzzz\u00BB");
inline constexpr int SortPriceLength = 12;

}  // namespace qor
