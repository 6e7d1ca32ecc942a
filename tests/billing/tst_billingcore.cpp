// SPDX-License-Identifier: GPL-3.0-or-later
// Billing without a window: the entry of a period, its finalising, the trees
// rebuilt from the records, payments and invoice notes.
#include "billingfixture.h"

#include "billing/invoicetrees.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QTest>

using namespace qor;
using namespace qor::billing;
using namespace billtest;

namespace {

// Bills item key to the marked customers of the entry tree.
BillOutcome bill(InvoiceTree &t, const Database &db, const QString &key)
{
    return billProductToMarked(t, key, listText(db, key));
}

QString recordText(const Database &db, const QString &period, int cid)
{
    return QString(db.invoiceRecords().textOf(record::keyFor(period, QString::number(cid))))
        .replace(FieldSep, u'|')
        .replace(ItemSep, u'+');
}

// The entry of a new period over the fixture's business, nobody marked yet.
struct Entry {
    Database &db;
    InvoiceTree t{0};
    explicit Entry(Database &d) : db(d) { fill(db), resetNewPeriodTree(t, db); }
    void only(int cid) { markOnlyCustomer(t, customerNode(t, cid)); }
    BillOutcome bill(const QString &key, int times = 1)
    {
        BillOutcome o;
        while (times-- > 0) o = ::bill(t, db, key);
        return o;
    }
};

// A database with period "May" finalised: Ames 7x3 + 9 (16.5), Bell 7 (5),
// Cole 10x3 (0.3).
void mayFinalised(Database &db)
{
    Entry e(db);
    e.only(1);
    toggleMark(e.t, customerNode(e.t, 2));
    e.bill("7k");
    e.only(1);
    e.bill("7k", 2);
    e.bill("9k");
    e.only(3);
    e.bill("10k", 3);
    QCOMPARE(finaliseBillPeriod(db, e.t, "May", "5/1/2024", "5/31/2024", "6/15/2024"), 3);
}
}  // namespace

class TestBillingCore : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates)); }

    // Finalising adds the items' amounts in cents, whatever their names hold
    // and whatever currency form their prices were typed in.
    void finalisedBalances_data()
    {
        QTest::addColumn<QStringList>("prices");  // one item each, billed in turn
        QTest::addColumn<int>("times");           // to the one marked customer
        QTest::addColumn<QString>("record");      // balance | item list
        QTest::newRow("dimes") << QStringList{"$0.10", "$0.10", "$0.10"} << 1 << "0.3|20+21+22";
        QTest::newRow("quantities") << QStringList{"$5.00", "$1.50"} << 3 << "19.5|20x3+21x3";
        QTest::newRow("other forms") << QStringList{"25,00 \u20AC", "\u00A312.50", "CHF 1'234.50"} << 1
                                     << "1272|20+21+22";
        QTest::newRow("beyond floats") << QStringList{"$200,000.00", "$0.01"} << 1 << "200000.01|20+21";
        QTest::newRow("negative") << QStringList{"($5.00)", "7"} << 2 << "4|20x2+21x2";
        QTest::newRow("unreadable") << QStringList{"free", "$1.00"} << 1 << "1|20+21";
    }
    void finalisedBalances()
    {
        QFETCH(QStringList, prices);
        QFETCH(int, times);
        QFETCH(QString, record);
        Database db;
        Entry e(db);
        e.only(1);
        const QStringList names = {"Hedge trim - large", "Filters (x2)", "Bag 12"};
        for (int i = 0; i < prices.size(); ++i) {
            const QString key = numberKey(20 + i);
            qor::test::TablesEdit tables(db);
            tables.items.add(key, itemRow(prices[i], names[i % 3]));
            tables.done();
            e.bill(key, times);
        }
        QCOMPARE(finaliseBillPeriod(db, e.t, "P", "", "", "1/1/2025"), 1);
        QCOMPARE(recordText(db, "P", 1).section(u'|', 3, 4), record);
    }

    void datesNamesAndExample()
    {
        QCOMPARE(exampleText(QDate(2004, 3, 9)), QStringLiteral("(Example: March 2004)"));
        QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
        QCOMPARE(exampleText(QDate(2004, 3, 9)), QStringLiteral("(Example: M\u00E4rz 2004)"));
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));

        QCOMPARE(QStringList({chronoDate("3/31/2004"), chronoDate(""), chronoDate("soon"), screenDate("2004/03/31")}),
                 QStringList({"2004/03/31", "", "soon", "03/31/2004"}));
        QCOMPARE(rowSafe(QStringLiteral("Ma\u0001y\u0002\r\n")), QStringLiteral("May"));
    }

    // The entry of a period: marks, billing, quantities, deleting, finalising.
    void enteringAndFinalising()
    {
        Database db;
        Entry e(db);
        InvoiceTree &t = e.t;
        QAbstractItemModelTester tester(&t, QAbstractItemModelTester::FailureReportingMode::QtTest);
        QCOMPARE(dump(t), (QStringList{"root_node = New Bill Period", "  1k = *Ames, Al", "  2k = *Bell, Bo",
                                       "  3k = *Cole, Cy", "  4k = *Dunn, Di", "  5k = *Egan, Ed"}));
        QVERIFY(t.expanded(t.root()));
        QCOMPARE(checkNewBillPeriod(db, t, "May"), AddCheck::NothingBilled);

        // A click marks one alone; Ctrl+click adds one; billing keeps the marks.
        e.only(1);
        toggleMark(t, customerNode(t, 3));
        QCOMPARE(e.bill("7k").added, 2);
        BillOutcome again = e.bill("7k");
        QCOMPARE(again.added + again.raised, 2);
        toggleMark(t, customerNode(t, 3));
        e.bill("7k");
        e.bill("9k");
        QCOMPARE(QStringList({t.text(t.find("0000000100000007b")), t.text(t.find("0000000300000007b"))}),
                 QStringList({"$5.00 - Midget Widget (x3)", "$5.00 - Midget Widget (x2)"}));
        QCOMPARE(t.text(customerNode(t, 2)), QStringLiteral("Bell, Bo"));
        // Products $5.00 and $1,200.50 to Bell: two nodes, then one deleted as a whole.
        e.only(2);
        e.bill("7k");
        e.bill("11k", 2);
        QVERIFY(!deleteBilledItem(t, customerNode(t, 2)));
        QVERIFY(deleteBilledItem(t, t.find("0000000200000011b")));
        QCOMPARE(t.childrenOf(customerNode(t, 2)).size(), size_t(1));
        // No marked customer: nothing billed.
        toggleMark(t, customerNode(t, 2));
        const BillOutcome none = e.bill("9k");
        QCOMPARE(none.added + none.raised, 0);
        markAllCustomers(t);
        QVERIFY(t.values(customerNode(t, 4)).marked);
        QCOMPARE(checkNewBillPeriod(db, t, "May"), AddCheck::Ok);

        // Dunn and Egan, marked but never billed, get no record.
        QCOMPARE(finaliseBillPeriod(db, t, "May", "5/1/2024", "", "6/15/2024"), 3);
        QCOMPARE(db.periods().textOf(u"May"), QStringLiteral("2024/05/01\u0001May\u0001\u00012024/06/15"));
        QCOMPARE(recordText(db, "May", 1), QStringLiteral("May|Ames, Al|1|16.5|7x3+9|"));
        QCOMPARE(recordText(db, "May", 2), QStringLiteral("May|Bell, Bo|2|5|7|"));
        QCOMPARE(recordText(db, "May", 3), QStringLiteral("May|Cole, Cy|3|10|7x2|"));
        QCOMPARE(db.invoiceRecords().count(), 3);

        // Names are compared exactly: "may" is another period, "May" is taken.
        QCOMPARE(checkNewBillPeriod(db, t, "May"), AddCheck::DuplicateName);
        QCOMPARE(checkNewBillPeriod(db, t, "may"), AddCheck::Ok);
        QCOMPARE(finaliseBillPeriod(db, t, "May", "", "", "6/15/2024"), 0);
        QCOMPARE(finaliseBillPeriod(db, t, "may", "", "", "6/15/2024"), 3);
        QCOMPARE(findPeriodRow(db, "may"), 1);  // no start date: first
        QCOMPARE(periodNames(db), (QStringList{"may", "May"}));
    }

    void theHundredthOfAnItemIsRefused()
    {
        Database db;
        Entry e(db);
        InvoiceTree &t = e.t;
        e.only(1);
        e.bill("9k", 98);
        toggleMark(t, customerNode(t, 2));
        BillOutcome o = e.bill("9k");  // Ames reaches 99, Bell gets one
        QVERIFY(o.refused.isEmpty());
        o = e.bill("9k");
        QVERIFY(o.raised == 1 && o.refused.size() == 1);
        QCOMPARE(t.text(t.find("0000000100000009b")), QStringLiteral("$1.50 - Bolt (x99)"));
        QCOMPARE(t.text(t.find("0000000200000009b")), QStringLiteral("$1.50 - Bolt (x2)"));
        QVERIFY2(o.refusalText().contains(QLatin1String("Ames, Al: $1.50 - Bolt (x99)")), qPrintable(o.refusalText()));
        finaliseBillPeriod(db, t, "P", "", "", "1/1/2025");
        QCOMPARE(recordText(db, "P", 1), QStringLiteral("P|Ames, Al|1|148.5|9x99|"));
    }

    // An open entry: kept as plain values and built again exactly; another
    // period shows in tree 1 only; what the entry bills is archived, never
    // deleted; dropped, it gives tree 0 back to the period on show.
    void openEntry()
    {
        Database db;
        mayFinalised(db);
        InvoiceTrees trees(db);
        trees.showPeriod(0, "May");
        trees.beginEntry();
        InvoiceTree &t = trees.tree(0);
        markOnlyCustomer(t, customerNode(t, 2));
        bill(t, db, "9k");
        bill(t, db, "9k");
        toggleMark(t, customerNode(t, 4));
        bill(t, db, "11k");
        const QStringList before = dump(t);
        const BillEntry entry = entryOf(t);
        QCOMPARE(entry.items, (QList<BillEntry::Item>{{"2", "9", 2}, {"2", "11", 1}, {"4", "11", 1}}));
        QCOMPARE(entry.customers.size(), qsizetype(5));
        QVERIFY(entry.customers[1].marked && !entry.customers[0].marked);
        restoreEntry(t, db, entry);
        QCOMPARE(dump(t), before);
        QCOMPARE(t.values(t.find("0000000200000009b")).amount, Money::fromCents(300));

        trees.showPeriod(0, "May");
        QCOMPARE(dump(t), before);
        QCOMPARE(trees.tree(1).childrenOf(trees.tree(1).root()).size(), size_t(3));

        QCOMPARE(removeCustomer(trees, "4k").removal, Removal::Archived);  // billed in the entry alone
        QCOMPARE(removeCustomer(trees, "5k").removal, Removal::Deleted);
        QVERIFY(!t.find("5k") && t.find("4k"));
        QCOMPARE(removeItem(trees, "11k").removal, Removal::Archived);
        QVERIFY(customer::isArchived(db.customers().textOf(u"4k")));

        QSignalSpy dropped(&trees, &InvoiceTrees::entryDropped);
        trees.dropEntry();
        QCOMPARE(dropped.size(), 1);
        QVERIFY(!trees.entryOpen());
        QCOMPARE(t.text(t.root()), QStringLiteral("May"));
    }

    // The trees of a finalised period: texts, colours, ticks, numbers, order.
    void rebuiltTrees()
    {
        Database db;
        mayFinalised(db);
        // Bell paid; Cole's name edited and archived since; item 9 archived;
        // a note on Ames' record; a record that names an item no longer there.
        qor::test::TablesEdit tables(db);
        tables.invoiceRecords.setTextOf(record::keyFor("May", "2"), "May\u0001Bell, Bo\u00012\u00010\u00017\u0001");
        tables.invoiceRecords.setTextOf(record::keyFor("May", "1"),
                                        "May\u0001Ames, Al\u00011\u000116.5\u00017x3\u00029\u0001chk 12");
        tables.invoiceRecords.setTextOf(record::keyFor("May", "3"),
                                        "May\u0001Cole, Cy\u00013\u0001-5\u000199\u000210x3\u0001");
        tables.customers.remove(u"3k");
        tables.customers.add("3k", customerRow("Coleman", "Cy", true));
        tables.items.remove(u"9k");
        tables.items.add("9k", itemRow("$1.50", "Bolt", true));
        tables.done();

        InvoiceTree t0(0), t1(1);
        QAbstractItemModelTester tester(&t1, QAbstractItemModelTester::FailureReportingMode::QtTest);
        rebuildInvoiceTrees(t0, t1, db, "May");
        const QString neg = Money::fromCents(-500).toCurrencyText();
        QCOMPARE(dump(t0), (QStringList{"root_node = May", "  1k = Ames, Al - owes $16.50 red",
                                        "    1bi = $5.00 - Midget Widget (x3)", "    2bi = $1.50 - Bolt",
                                        "    1knote = NOTE: chk 12", "  2k = Bell, Bo - paid text",
                                        "    3bi = $5.00 - Midget Widget",
                                        "  3k = Coleman, Cy - owes " + neg + " red",
                                        "    4bi = $0.00 - Item number 99, not in the database",
                                        "    5bi = $0.10 - Washer (x3)"}));
        // Items have no box: a ticked customer prints all that was billed.
        QCOMPARE(dump(t1), (QStringList{"root_node = May [x]", "  1k = Ames, Al - owes $16.50 text [x]",
                                        "    1bi = $5.00 - Midget Widget (x3) text", "    2bi = $1.50 - Bolt text",
                                        "  2k = Bell, Bo - paid grey [ ]", "    3bi = $5.00 - Midget Widget grey",
                                        "  3k = Coleman, Cy - owes " + neg + " text [x]",
                                        "    4bi = $0.00 - Item number 99, not in the database text",
                                        "    5bi = $0.10 - Washer (x3) text"}));
        QVERIFY(!(t1.flags(t1.indexOf(t1.find("1bi"))) & Qt::ItemIsUserCheckable));
        QVERIFY(!t1.setData(t1.indexOf(t1.find("1bi")), Qt::Unchecked, Qt::CheckStateRole));
        QCOMPARE(t1.values(t1.find("5bi")).amount, Money::fromCents(30));
        bool allOpen = true;
        t1.forEachNode([&](int n) { allOpen &= t1.childrenOf(n).empty() || t1.expanded(n); });
        QVERIFY(allOpen);

        // NodeCheck: a grey node keeps the user's tick and moves nothing; the
        // root gives its state to every node, grey ones and notes included.
        const int bell = customerNode(t1, 2);
        QVERIFY(t1.setData(t1.indexOf(bell), Qt::Checked, Qt::CheckStateRole));
        QVERIFY(t1.checked(bell));
        addInvoiceNote(t1, customerNode(t1, 1), "Thanks");
        QVERIFY(t1.setData(t1.indexOf(t1.root()), Qt::Unchecked, Qt::CheckStateRole));
        bool anyTicked = false;
        t1.forEachNode([&](int n) { anyTicked |= t1.checked(n); });
        QVERIFY(!anyTicked);

        // Everybody paid: the root is grey and unticked, and ticking it moves nothing.
        qor::test::TablesEdit paid(db);
        paid.invoiceRecords.setTextOf(record::keyFor("May", "1"),
                                      "May\u0001Ames, Al\u00011\u00010\u00017x3\u00029\u0001chk 12");
        paid.invoiceRecords.setTextOf(record::keyFor("May", "3"),
                                      "May\u0001Cole, Cy\u00013\u00010\u000199\u000210x3\u0001");
        paid.done();
        rebuildInvoiceTree(t1, db, "May");
        QCOMPARE(t1.colour(t1.root()), NodeColour::GreyText);
        QVERIFY(!t1.checked(t1.root()));
        t1.setData(t1.indexOf(t1.root()), Qt::Checked, Qt::CheckStateRole);
        QVERIFY(t1.checked(t1.root()));
        QVERIFY(!t1.checked(customerNode(t1, 1)));

        // Unknown period: an empty root; a rebuild of the entry tree's period is the same.
        rebuildInvoiceTree(t0, db, "June");
        QCOMPARE(dump(t0), QStringList{"root_node = June"});
    }

    // Invoice notes, then payments; then a period named like May.
    void notesAndPayments()
    {
        Database db;
        mayFinalised(db);
        InvoiceTree t0(0), t1(1);
        rebuildInvoiceTrees(t0, t1, db, "May");
        const int amesNode = customerNode(t1, 1);
        QCOMPARE(addInvoiceNote(t1, amesNode, QString()), 0);
        QCOMPARE(addInvoiceNote(t1, t1.find("1bi"), "x"), 0);
        const int note = addInvoiceNote(t1, amesNode, "Thank you!");
        QVERIFY(note);
        QCOMPARE(t1.nodes().back(), note);
        QCOMPARE(t1.childrenOf(amesNode).back(), note);
        QCOMPARE(t1.text(note), QStringLiteral("INVOICE NOTE: Thank you!"));
        QVERIFY(t1.checked(note));
        t1.setChecked(note, false);
        QCOMPARE(addInvoiceNote(t1, amesNode, "Another"), note);
        QCOMPARE(t1.text(note), QStringLiteral("INVOICE NOTE: Thank you!"));
        QVERIFY(t1.checked(note));
        rebuildInvoiceTree(t1, db, "May");
        QVERIFY(!t1.find("1kn"));

        const int ames = customerNode(t0, 1);
        addInvoiceNote(t1, customerNode(t1, 1), "Pay soon");

        // A part payment with a note: the node, the note node, the record, tree 1.
        QVERIFY(logPayment(t0, t1, db, ames, Money::fromCents(2500), "check 1043", "May"));
        QCOMPARE(t0.text(ames), QStringLiteral("Ames, Al - owes $25.00"));
        QCOMPARE(t0.colour(ames), NodeColour::Owes);
        QCOMPARE(t0.text(t0.find("1knote")), QStringLiteral("NOTE: check 1043"));
        QCOMPARE(recordText(db, "May", 1), QStringLiteral("May|Ames, Al|1|25|7x3+9|check 1043"));
        QVERIFY(!t1.find("1kn"));
        QVERIFY(t1.text(customerNode(t1, 1)).endsWith(QLatin1String("$25.00")));
        // A second note replaces the first in the one note node.
        QVERIFY(logPayment(t0, t1, db, ames, Money::fromCents(350), "check 1044", "May"));
        QCOMPARE(t0.text(t0.find("1knote")), QStringLiteral("NOTE: check 1044"));
        QCOMPARE(t0.childrenOf(ames).size(), size_t(3));

        // In full: paid, the note cleared in the record but still on show.
        QVERIFY(logPayment(t0, t1, db, ames, Money(), QString(), "May"));
        QCOMPARE(t0.text(ames), QStringLiteral("Ames, Al - paid"));
        QCOMPARE(t0.colour(ames), NodeColour::WindowText);
        QCOMPARE(recordText(db, "May", 1), QStringLiteral("May|Ames, Al|1|0|7x3+9|"));
        QVERIFY(t0.find("1knote"));
        QCOMPARE(t1.colour(customerNode(t1, 1)), NodeColour::GreyText);
        // Again in full without a note: nothing changes.
        const QString before = db.invoiceRecords().textOf(record::keyFor("May", "1"));
        QVERIFY(!logPayment(t0, t1, db, ames, Money(), QString(), "May"));
        QCOMPARE(db.invoiceRecords().textOf(record::keyFor("May", "1")), before);
        // Paid with a note: still paid, with its note.
        QVERIFY(logPayment(t0, t1, db, ames, Money(), "cash", "May"));
        QCOMPARE(recordText(db, "May", 1), QStringLiteral("May|Ames, Al|1|0|7x3+9|cash"));
        // A negative balance is taken as typed.
        const int bell = customerNode(t0, 2);
        QVERIFY(logPayment(t0, t1, db, bell, Money::fromCents(-400), QString(), "May"));
        QCOMPARE(t0.text(bell), "Bell, Bo - owes ($4.00)");
        QCOMPARE(recordText(db, "May", 2), QStringLiteral("May|Bell, Bo|2|-4|7|"));

        // A customer renamed since the period was finalised: the record takes
        // the new name and its place by it, and the trees still find it.
        qor::test::TablesEdit tables(db);
        tables.customers.remove(u"1k");
        tables.customers.add("1k", customerRow("Zuber", "Al"));
        tables.done();
        QVERIFY(logPayment(t0, t1, db, ames, Money::fromCents(100), QString(), "May"));
        QCOMPARE(recordText(db, "May", 1), QStringLiteral("May|Zuber, Al|1|1|7x3+9|"));
        QCOMPARE(db.invoiceRecords().indexOf(record::keyFor("May", "1")), db.invoiceRecords().count());
        QCOMPARE(t1.text(t1.childrenOf(t1.root()).back()), QStringLiteral("Zuber, Al - owes $1.00"));

        // Only customer nodes with a record of the period are paid.
        QVERIFY(!logPayment(t0, t1, db, t0.find("1bi"), Money(), "x", "May"));
        InvoiceTree entry(0);
        resetNewPeriodTree(entry, db);
        QVERIFY(!logPayment(entry, t1, db, customerNode(entry, 4), Money(), "x", "May"));

        // A period whose name differs from another only in case has its own
        // records, though the table sorts the two periods' records into one another.
        for (int cid : {2, 4}) markOnlyCustomer(entry, customerNode(entry, cid)), bill(entry, db, "9k");
        finaliseBillPeriod(db, entry, "may", "", "", "1/1/2025");
        rebuildInvoiceTrees(t0, t1, db, "May");
        QCOMPARE(t0.childrenOf(t0.root()).size(), size_t(3));
        rebuildInvoiceTrees(t0, t1, db, "may");
        QCOMPARE(dump(t0), (QStringList{"root_node = may", "  2k = Bell, Bo - owes $1.50 red", "    1bi = $1.50 - Bolt",
                                        "  4k = Dunn, Di - owes $1.50 red", "    2bi = $1.50 - Bolt"}));
    }

    // The model tells views about every change in order.
    void modelSignals()
    {
        InvoiceTree t(1);
        QAbstractItemModelTester tester(&t, QAbstractItemModelTester::FailureReportingMode::QtTest);
        const int root = t.add(0, "root_node", NodeValues{NodeKind::Other, "R"});
        const int a = t.add(root, "1k", NodeValues{NodeKind::Other, "A"});
        const int b = t.add(root, "2k", NodeValues{NodeKind::Other, "B"});
        QCOMPARE(t.add(root, "1k", NodeValues{NodeKind::Other, "again"}), 0);
        QCOMPARE(t.add(99, "9k", NodeValues{NodeKind::Other, "no parent"}), 0);
        const int a1 = t.add(a, "1bi", NodeValues{NodeKind::Other, "a1"});
        QCOMPARE(t.rowCount(t.indexOf(root)), 2);
        QCOMPARE(t.indexOf(b).row(), 1);
        QSignalSpy changed(&t, &QAbstractItemModel::dataChanged);
        t.setValues(a1, NodeValues{NodeKind::Other, "a1'"});
        QCOMPARE(changed.size(), 1);
        t.remove(a);
        QVERIFY(!t.exists(a1) && !t.find("1bi"));
        QCOMPARE(t.indexOf(b).row(), 0);
        // Numbers aren't used again, so the living ones keep insertion order.
        const int b1 = t.add(b, "1bi", NodeValues{NodeKind::Other, "again"});
        QCOMPARE(b1, a1 + 1);
        QCOMPARE(t.nodes(), (std::vector<int>{root, b, b1}));
        QCOMPARE(t.data(t.indexOf(b), InvoiceTree::KeyRole).toString(), QStringLiteral("2k"));
        QVERIFY(t.flags(t.indexOf(b)) & Qt::ItemIsUserCheckable);
    }
};

QTEST_GUILESS_MAIN(TestBillingCore)
#include "tablesedit.h"
#include "tst_billingcore.moc"
