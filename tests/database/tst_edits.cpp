// The edits of customers and items without any window: the scan before a
// delete (whole numbers, progress), the row removed or archived, keys, and
// what the database tells its views.
#include "database/database.h"
#include "database/edits.h"
#include "database/rowtypes.h"

#include <QSignalSpy>
#include <QTest>

using namespace qor;
using Table = Database::Table;

namespace {

CustomerRow customerNamed(const QString &last)
{
    CustomerRow r;
    r.firstName = QStringLiteral("Pat");
    r.lastName = last;
    r.address1 = QStringLiteral("1 Road");
    r.displayName = customer::displayNameFor(r.firstName, r.lastName);
    return r;
}

// Customers 1..12, of whom 2, 5 and 12 have records (12 only paid ones); items
// 1, 3, 7 and 12, of which 7 and 12 are billed. Records sort Baker (2), Egan (5), Lane (12), P2 Lane.
void fill(Database &db)
{
    const char *lasts[] = {"Adams", "Baker", "Cole", "Dunn", "Egan", "Ford", "Gray", "Hale", "Irwin", "Jones", "King", "Lane"};
    for (int i = 1; i <= 12; ++i) db.lvwCustomers.add(numberKey(i), customerNamed(QString::fromLatin1(lasts[i - 1])).text());
    for (auto [psid, price] : {std::pair{1, 1}, std::pair{3, 3}, std::pair{7, 5}, std::pair{12, 9}})
        db.lvwPAndS.add(numberKey(psid), item::make(QStringLiteral("00000000%1.00").arg(price), QStringLiteral("$%1.00").arg(price),
                                                    QStringLiteral("Item%1").arg(psid)).text());
    const std::tuple<const char *, const char *, int, QString> records[] = {
        {"P1", "Baker, Pat", 2, ItemEntry::join({"7", ItemEntry::make("12", 3)})}, {"P1", "Egan, Pat", 5, "7x2"},
        {"P1", "Lane, Pat", 12, "7"}, {"P2", "Lane, Pat", 12, "7"}};
    for (const auto &[period, name, cid, items] : records) {
        InvoiceRecordRow r;
        r.period = QString::fromLatin1(period);
        r.customerName = QString::fromLatin1(name);
        r.cid = QString::number(cid);
        r.balance = cid == 2 ? QStringLiteral("4.5") : QStringLiteral("0");
        r.items = items;
        db.lvwInvoiceRecords.add(record::keyFor(r.period, r.cid), r.text());
    }
}

}  // namespace

class TestEdits : public QObject {
    Q_OBJECT
private slots:
    void removalsMatchWholeNumbers()
    {
        // Customer: the CID field exactly, paid records too. Item: the number
        // before any "x" (1 is no prefix of 12, 3 in 12x3 is a quantity, 2 a customer).
        const std::pair<const char *, edits::Removal> customers[] = {
            {"12k", edits::Removal::Archived}, {"1k", edits::Removal::Deleted}, {"7k", edits::Removal::Deleted},
            {"99k", edits::Removal::NotThere}};
        const std::pair<const char *, edits::Removal> items[] = {
            {"12k", edits::Removal::Archived}, {"7k", edits::Removal::Archived}, {"1k", edits::Removal::Deleted},
            {"3k", edits::Removal::Deleted}, {"2k", edits::Removal::NotThere}};
        for (auto [key, outcome] : customers) {
            Database db;
            fill(db);
            QCOMPARE(edits::removeCustomer(db, QString::fromLatin1(key)), outcome);
            QCOMPARE(db.lvwCustomers.count(), outcome == edits::Removal::Deleted ? 11 : 12);
        }
        for (auto [key, outcome] : items) {
            Database db;
            fill(db);
            QCOMPARE(edits::removeItem(db, QString::fromLatin1(key)), outcome);
            QCOMPARE(db.lvwPAndS.count(), outcome == edits::Removal::Deleted ? 3 : 4);
        }
        // A record without an item list is passed over.
        Database shortRecord;
        shortRecord.lvwPAndS.add("1k", "000000001.00$1.00 - Pen");
        shortRecord.lvwInvoiceRecords.add("P1\u00011\u0001", QStringList({"P1", "A", "1", "0"}).join(FieldSep));
        QCOMPARE(edits::removeItem(shortRecord, "1k"), edits::Removal::Deleted);
        QCOMPARE(edits::wordOf(edits::Removal::Archived), "archive");
        QCOMPARE(edits::wordOf(edits::Removal::Deleted), "delete");
        QVERIFY(edits::wordOf(edits::Removal::NotThere).isEmpty());
    }

    void progressStopsAtTheFirstRecordFound()
    {
        Database db;
        fill(db);
        QList<int> steps;
        auto record = [&steps](float p) { steps << qRound(p); };
        QCOMPARE(edits::removeCustomer(db, "5k", record), edits::Removal::Archived);  // found at 2 of 4
        QCOMPARE(steps, QList<int>({25, 50}));
        steps.clear();
        QCOMPARE(edits::removeCustomer(db, "3k", record), edits::Removal::Deleted);
        QCOMPARE(steps, QList<int>({25, 50, 75, 100}));
    }

    void archivedRowsKeepTheirPlaceAndNumber()
    {
        Database db;
        fill(db);
        // A customer moves behind all current ones, and its number stays taken.
        for (const char *key : {"2k", "12k"}) QCOMPARE(edits::removeCustomer(db, key), edits::Removal::Archived);
        QCOMPARE(db.lvwCustomers.indexOf(u"2k"), 11);
        QCOMPARE(db.lvwCustomers.textOf(u"2k"), ArchiveMark + customerNamed("Baker").text());
        QVERIFY(!customer::isArchived(db.lvwCustomers.text(10)));
        QCOMPARE(edits::addCustomer(db, customerNamed("Zane")), "13k");
        QCOMPARE(edits::removeCustomer(db, "13k"), edits::Removal::Deleted);  // a removed highest number is free again
        QCOMPARE(Database::nextKeyNumber(db.lvwCustomers), 12);
        // An item keeps its place by price, the mark after the sort price.
        QCOMPARE(edits::removeItem(db, "7k"), edits::Removal::Archived);
        QCOMPARE(db.lvwPAndS.textOf(u"7k"), QStringLiteral("000000005.00") + ArchiveMark + "$5.00 - Item7");
        QCOMPARE(db.lvwPAndS.indexOf(u"7k"), 3);
    }

    void addsAndEditsTellTheViews()
    {
        Database db;
        fill(db);
        QSignalSpy tables(&db, &Database::tableChanged);
        QSignalSpy state(&db, &Database::changedStateChanged);

        QCOMPARE(edits::addCustomer(db, customerNamed("Abbot"), "40k"), "40k");  // a key given is kept
        QCOMPARE(db.lvwCustomers.indexOf(u"40k"), 1);
        QCOMPARE(edits::addItem(db, item::make("000000002.00", "$2.00", "Pen")), "13k");
        QCOMPARE(db.lvwPAndS.indexOf(u"13k"), 2);
        // An edit moves the row to its sorted place under the same key.
        QVERIFY(edits::replaceCustomer(db, "40k", customerNamed("Zed")));
        QCOMPARE(db.lvwCustomers.indexOf(u"40k"), 13);
        QVERIFY(!edits::replaceCustomer(db, "41k", customerNamed("Nobody")));
        QCOMPARE(edits::removeItem(db, "41k"), edits::Removal::NotThere);

        QCOMPARE(tables.size(), 3);
        QCOMPARE(tables.at(0).at(0).value<Table>(), Table::Customers);
        QCOMPARE(tables.at(1).at(0).value<Table>(), Table::Items);
        QCOMPARE(tables.at(2).at(0).value<Table>(), Table::Customers);
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
