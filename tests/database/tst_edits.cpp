// SPDX-License-Identifier: GPL-3.0-or-later
// The edits of customers and items without any window: the scan before a
// delete, the row removed or archived, keys, and what the views are told.
#include "database/database.h"
#include "database/rowtypes.h"
#include "tablesedit.h"

#include <QSignalSpy>
#include <QTest>

using namespace qor;
using Table = Database::Table;

namespace {

CustomerRow customerNamed(const QString &last)
{
    return {customer::displayNameFor(QStringLiteral("Pat"), last), QStringLiteral("Pat"), last,
            QStringLiteral("1 Road")};
}

// Customers 1..12, of whom 2, 5 and 12 have records (12 only paid ones); items
// 1, 3, 7 and 12, of which 7 and 12 are billed. Records sort Baker (2), Egan (5), Lane (12), P2 Lane, P3 Baker.
void fill(Database &db)
{
    const char *lasts[] = {"Adams", "Baker", "Cole", "Dunn", "Egan", "Ford", "Gray", "Hale", "Irwin", "Jones", "King", "Lane"};
    for (int i = 1; i <= 12; ++i) db.addCustomer(customerNamed(QString::fromLatin1(lasts[i - 1])), numberKey(i));
    test::TablesEdit tables(db);
    for (auto [psid, price] : {std::pair{1, 1}, std::pair{3, 3}, std::pair{7, 5}, std::pair{12, 9}})
        tables.items.add(numberKey(psid), item::make(QStringLiteral("00000000%1.00").arg(price), QStringLiteral("$%1.00").arg(price),
                                                     QStringLiteral("Item%1").arg(psid))
                                              .text());
    const std::tuple<const char *, const char *, int, QString> records[] = {
        {"P1", "Baker, Pat", 2, ItemEntry::join({"7", ItemEntry::make("12", 3)})}, {"P1", "Egan, Pat", 5, "7x2"}, {"P1", "Lane, Pat", 12, "7"}, {"P2", "Lane, Pat", 12, "7"}};
    for (const auto &[period, name, cid, items] : records) {
        const InvoiceRecordRow r{period, name, QString::number(cid),
                                 cid == 2 ? QStringLiteral("4.5") : QStringLiteral("0"), items};
        tables.invoiceRecords.add(record::keyFor(r.period, r.cid), r.text());
    }
    // Last, a record without an item list: every scan passes over it.
    tables.invoiceRecords.add(record::keyFor("P3", "2"), QStringList({"P3", "Baker, Pat", "2", "0"}).join(FieldSep));
}

}  // namespace

class TestEdits : public QObject {
    Q_OBJECT
private slots:
    void removalsMatchWholeNumbers()
    {
        // Customer: the CID field exactly, paid records too. Item: the number
        // before any "x" (1 is no prefix of 12, 3 in 12x3 is a quantity, 2 a
        // customer). The scan's progress stops at the first record found.
        using R = Removal;
        const std::tuple<bool, const char *, Removal> cases[] = {
            {false, "12k", R::Archived}, {false, "1k", R::Deleted}, {false, "7k", R::Deleted}, {false, "99k", R::NotThere}, {true, "12k", R::Archived}, {true, "7k", R::Archived}, {true, "1k", R::Deleted}, {true, "3k", R::Deleted}, {true, "2k", R::NotThere}};
        const int scanned[] = {3, 5, 5, 0, 1, 1, 5, 5, 0};  // records read until the first that names it
        for (int i = 0; i < int(std::size(cases)); ++i) {
            const auto [item, key, outcome] = cases[i];
            Database db;
            fill(db);
            QList<int> steps, want;
            auto record = [&steps](float p) { steps << qRound(p); };
            QCOMPARE((item ? db.removeItem(key, record) : db.removeCustomer(key, record)).removal, outcome);
            QCOMPARE((item ? db.items() : db.customers()).count(), (item ? 4 : 12) - (outcome == R::Deleted ? 1 : 0));
            for (int s = 1; s <= scanned[i]; ++s) want << 20 * s;
            QCOMPARE(steps, want);
        }
    }

    void archivedRowsKeepTheirPlaceAndNumber()
    {
        Database db;
        fill(db);
        // A customer moves behind all current ones, and its number stays taken.
        for (const char *key : {"2k", "12k"}) QCOMPARE(db.removeCustomer(key).removal, Removal::Archived);
        QCOMPARE(db.customers().indexOf(u"2k"), 11);
        QCOMPARE(db.customers().textOf(u"2k"), ArchiveMark + customerNamed("Baker").text());
        QVERIFY(!customer::isArchived(db.customers().text(10)));
        QCOMPARE(db.addCustomer(customerNamed("Zane")).key, "13k");
        QCOMPARE(db.removeCustomer("13k").removal, Removal::Deleted);  // a removed highest number is free again
        QCOMPARE(Database::nextKeyNumber(db.customers()), 12);
        QCOMPARE(Database().addItem(item::make("000000001.00", "$1.00", "Pen")).key, "1k");
        // An item keeps its place by price, the mark after the sort price.
        QCOMPARE(db.removeItem("7k").removal, Removal::Archived);
        QCOMPARE(db.items().textOf(u"7k"), QStringLiteral("000000005.00") + ArchiveMark + "$5.00 - Item7");
        QCOMPARE(db.items().indexOf(u"7k"), 3);
    }

    void addsAndEditsTellTheViews()
    {
        Database db;
        fill(db);
        db.setChanged(false);
        QSignalSpy tables(&db, &Database::tableChanged);
        QSignalSpy state(&db, &Database::changedStateChanged);

        QCOMPARE(db.addCustomer(customerNamed("Abbot"), "40k").key, "40k");  // a key given is kept
        QVERIFY(!db.addCustomer(customerNamed("Again"), "40k"));
        QCOMPARE(db.customers().indexOf(u"40k"), 1);
        QCOMPARE(db.addCustomer(customerNamed("Bee")).key, "41k");  // past the highest number, not the last row's
        QCOMPARE(db.addItem(item::make("000000002.00", "$2.00", "Pen")).key, "13k");
        QCOMPARE(db.items().indexOf(u"13k"), 2);
        // An edit moves the row to its sorted place under the same key.
        QVERIFY(db.replaceCustomer("40k", customerNamed("Zed")));
        QCOMPARE(db.customers().indexOf(u"40k"), 14);
        QVERIFY(!db.replaceCustomer("42k", customerNamed("Nobody")));
        QCOMPARE(db.removeItem("42k").removal, Removal::NotThere);
        // A payment tells its one record, and no table.
        QSignalSpy record(&db, &Database::recordChanged);
        QVERIFY(db.logPayment("P1", "5", "1.5", "chk"));
        QVERIFY(!db.logPayment("P2", "5", "0", {}));
        QCOMPARE(record.size(), 1);
        QCOMPARE(record.at(0), (QVariantList{"P1", "5"}));
        QCOMPARE(db.invoiceRecords().textOf(record::keyFor("P1", "5")),
                 QStringList({"P1", "Egan, Pat", "5", "1.5", "7x2", "chk"}).join(FieldSep));

        QList<Table> told;
        for (const QList<QVariant> &signal : tables) told << signal.at(0).value<Table>();
        QCOMPARE(told, (QList<Table>{Table::Customers, Table::Customers, Table::Items, Table::Customers}));
        // The changed state is told once when it turns, not at every edit.
        QCOMPARE(state.size(), 1);
        QVERIFY(db.isChanged());
        db.setChanged(false);
        QCOMPARE(state.size(), 2);
        QCOMPARE(state.at(1).at(0).toBool(), false);
    }
};

QTEST_GUILESS_MAIN(TestEdits)
#include "tst_edits.moc"
