#pragma once
// The order of table rows and visible lists. Names sort the way people expect
// in a phone book: case and accents are ignored first (so "de Souza" sits with
// "De Souza" and "Émile" with "Emile"), then accents, then case decide ties.
// A text that begins with the archive mark sorts after every text that does not.
#include <QStringView>

namespace qor {
// <0, 0, >0 like strcmp.
int compareRowText(QStringView a, QStringView b);
inline bool rowTextLess(QStringView a, QStringView b) { return compareRowText(a, b) < 0; }
}  // namespace qor
