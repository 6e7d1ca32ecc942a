// SPDX-License-Identifier: GPL-3.0-or-later
#include "uiservices/listsearch.h"

#include <QTreeWidget>

namespace qor {

int findListItem(const QTreeWidget *list, const QString &text)
{
    if (!list) return 0;
    const int rows = list->topLevelItemCount();
    // Rows in the order the list shows them, from the first.
    for (int i = 0; i < rows; ++i) {
        const QTreeWidgetItem *item = list->topLevelItem(i);
        if (item && item->text(0).startsWith(text, Qt::CaseInsensitive)) return i + 1;
    }
    return 0;
}

}  // namespace qor
