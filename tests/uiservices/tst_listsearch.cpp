// SPDX-License-Identifier: GPL-3.0-or-later
// findListItem: prefix search over the first column, in the order shown.
#include "uiservices/listsearch.h"

#include <QTest>
#include <QTreeWidget>

using namespace qor;

class TestListSearch : public QObject {
    Q_OBJECT
private slots:
    void prefixSearch()
    {
        QTreeWidget list;
        list.setColumnCount(2);
        QCOMPARE(findListItem(&list, QString()), 0);  // empty list: nothing, even for empty text
        QCOMPARE(findListItem(nullptr, QStringLiteral("a")), 0);
        for (const char *n : {"Adams, John", "baker, Ann", "Baxter, Bo", "Bäcker, Eva", "Zed"})
            new QTreeWidgetItem(&list, {QString::fromUtf8(n), QStringLiteral("other column")});
        // "BA" finds the first of several; case folds beyond ASCII; "axter" is no prefix.
        // clang-format off
        const std::pair<const char *, int> cases[] = {
            {"", 1}, {"BA", 2}, {"bax", 3}, {"BÄ", 4}, {"zED", 5}, {"axter", 0}, {"Adams, John Q", 0}, {"other", 0}};
        // clang-format on
        for (auto [text, pos] : cases) QCOMPARE(findListItem(&list, QString::fromUtf8(text)), pos);
        // Positions follow the order shown, not the order of insertion.
        QTreeWidgetItem *zed = list.topLevelItem(4);
        list.sortItems(0, Qt::DescendingOrder);
        QCOMPARE(findListItem(&list, QStringLiteral("z")), list.indexOfTopLevelItem(zed) + 1);
        QVERIFY(list.indexOfTopLevelItem(zed) != 4);
    }
};

QTEST_MAIN(TestListSearch)
#include "tst_listsearch.moc"
