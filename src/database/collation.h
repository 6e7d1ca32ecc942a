// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// The order of table rows and visible lists. Names sort the way people expect
// in a phone book: case and accents are ignored first (so "de Souza" sits with
// "De Souza" and "Émile" with "Emile"), then accents, then case decide ties.
// A text that begins with the archive mark sorts after every text that does not.
#include <QStringView>
#include <QtGlobal>

namespace qor {
// <0, 0, >0 like strcmp.
int compareRowText(QStringView a, QStringView b);
inline bool rowTextLess(QStringView a, QStringView b) { return compareRowText(a, b) < 0; }
// For fast sorting: the next four first-level weights of text from pos on,
// 16 bits each, 0 past the end; pos moves past them. For two texts that are
// both archived or both not, the first pair of chunks that differ orders the
// texts as compareRowText does; texts whose chunks never differ need
// compareRowText to decide.
quint64 rowTextSortChunk(QStringView text, qsizetype &pos);
}  // namespace qor
