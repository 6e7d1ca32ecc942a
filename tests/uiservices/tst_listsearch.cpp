// findListItem: prefix search over the rows of a list, in the order shown.
#include "uiservices/listsearch.h"

#include <QTest>
#include <QTreeWidget>

using namespace qor;

class TestListSearch : public QObject {
    Q_OBJECT
private slots:
    void prefixSearch();
};

void TestListSearch::prefixSearch() {
    QTreeWidget list;
    list.setColumnCount(2);
    QVERIFY(findListItem(&list, QStringLiteral("a")) == 0);
    QVERIFY(findListItem(&list, QString()) == 0);  // empty list: nothing, even for empty text
    QVERIFY(findListItem(nullptr, QStringLiteral("a")) == 0);

    const QStringList names{"Adams, John", "baker, Ann", "Baxter, Bo", "Bäcker, Eva", "Zed"};
    for (const QString &n : names) new QTreeWidgetItem(&list, {n, QStringLiteral("other column")});

    QCOMPARE(findListItem(&list, QString()), 1);            // empty text: the first row
    QCOMPARE(findListItem(&list, QStringLiteral("Adams, John")), 1);
    QCOMPARE(findListItem(&list, QStringLiteral("BA")), 2);  // first of several
    QCOMPARE(findListItem(&list, QStringLiteral("bax")), 3);
    QCOMPARE(findListItem(&list, QStringLiteral("BÄ")), 4);  // case folds beyond ASCII
    QCOMPARE(findListItem(&list, QStringLiteral("zED")), 5);  // the last row
    QCOMPARE(findListItem(&list, QStringLiteral("axter")), 0);  // not a prefix
    QCOMPARE(findListItem(&list, QStringLiteral("Adams, John Q")), 0);  // longer than the row
    QCOMPARE(findListItem(&list, QStringLiteral("other")), 0);  // only the first column counts

    // Positions follow the order the list shows, not the order of insertion.
    QTreeWidgetItem *zed = list.topLevelItem(4);
    QTreeWidgetItem *adams = list.topLevelItem(0);
    list.sortItems(0, Qt::DescendingOrder);
    QVERIFY(list.indexOfTopLevelItem(zed) != 4);
    QCOMPARE(findListItem(&list, QStringLiteral("z")), list.indexOfTopLevelItem(zed) + 1);
    QCOMPARE(findListItem(&list, QStringLiteral("adams")), list.indexOfTopLevelItem(adams) + 1);
    QCOMPARE(findListItem(&list, QString()), 1);
}

QTEST_MAIN(TestListSearch)
#include "tst_listsearch.moc"
