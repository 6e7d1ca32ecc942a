// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// FindListItem: prefix search over the rows of a visible list, without regard
// to case, from the first row. Returns the 1-based position of the first row
// whose text begins with text, or 0.
#include <QString>

class QTreeWidget;

namespace qor {
int findListItem(const QTreeWidget *list, const QString &text);
}
