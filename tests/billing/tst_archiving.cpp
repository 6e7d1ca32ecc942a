// The delete of a customer or product: the scan of the invoice records with
// frmChecking showing progress, then the row removed or archived.
#include "billing/archiving.h"
#include "billing/frmchecking.h"
#include "database/database.h"
#include "database/rows.h"

#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace qor;

namespace {

QString customerText(const QString &last) { return joinFields({last + ", Pat", "Pat", last, "1 Road", "", "", "", "", ""}); }

// Customers 1..12, of whom 2, 5 and 12 have records (12 only paid ones); items
// 1, 3, 7 and 12, of which 7 and 12 are billed. Records sort Baker (2), Egan (5), Lane (12), P2 Lane.
void fill(Database &db) {
    const char *lasts[] = {"Adams", "Baker", "Cole", "Dunn", "Egan", "Ford", "Gray", "Hale", "Irwin", "Jones", "King", "Lane"};
    for (int i = 1; i <= 12; ++i)
        db.lvwCustomers.add(QStringLiteral("%1k").arg(i), customerText(QString::fromLatin1(lasts[i - 1])));
    for (auto [psid, price] : {std::pair{1, 1}, std::pair{3, 3}, std::pair{7, 5}, std::pair{12, 9}})
        db.lvwPAndS.add(QStringLiteral("%1k").arg(psid), QStringLiteral("00000000%1.00$%1.00 - Item%2").arg(price).arg(psid));
    const std::tuple<const char *, const char *, int, QString> records[] = {
        {"P1", "Baker, Pat", 2, "7" + QString(ItemSep) + "12x3"}, {"P1", "Egan, Pat", 5, "7x2"},
        {"P1", "Lane, Pat", 12, "7"}, {"P2", "Lane, Pat", 12, "7"}};
    for (const auto &[period, name, cid, items] : records)
        db.lvwInvoiceRecords.add(QStringLiteral("%1\u0001%2\u0001").arg(period).arg(cid),
                                 joinFields({period, name, QString::number(cid), cid == 2 ? "4.5" : "0", items, ""}));
}

}  // namespace

class TestArchiving : public QObject {
    Q_OBJECT
    QTemporaryDir m_config;
    QWidget m_main;
private slots:
    void initTestCase() { qputenv("XDG_CONFIG_HOME", m_config.path().toLocal8Bit()); }
    void cleanup() {
        if (FrmChecking *w = FrmChecking::existing()) w->close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(!FrmChecking::existing());
    }

    void scansMatchWholeNumbers() {
        Database db;
        fill(db);
        // Customer: the CID field exactly, paid records too; every "k" of the key goes.
        const std::tuple<const char *, const char *, bool> customers[] = {
            {"12k", "12", true}, {"1k", "1", false}, {"k1k2k", "12", true}, {"7k", "7", false}};
        for (auto [given, number, found] : customers) {
            QString key = QString::fromLatin1(given);
            QCOMPARE(customerIsBilled(db, key, &m_main), found);
            QCOMPARE(key, QString::fromLatin1(number));
        }
        // Product: the number before any "x" (1 is no prefix of 12, 3 in 12x3 a quantity, 2 a customer).
        const std::pair<const char *, bool> items[] = {{"12k", true}, {"7k", true}, {"1k", false}, {"3k", false}, {"2k", false}};
        for (auto [given, found] : items) {
            QString key = QString::fromLatin1(given);
            QCOMPARE(productIsBilled(db, key, &m_main), found);
        }
        // A record without an item list is passed over.
        Database shortRecord;
        shortRecord.lvwInvoiceRecords.add("P1\u00011\u0001", QStringList({"P1", "A", "1", "0"}).join(FieldSep));
        QString key = QStringLiteral("1k");
        QVERIFY(!productIsBilled(shortRecord, key, &m_main));
    }

    void progressEndsAt100InBothOutcomes() {
        struct Case { const char *key; QList<int> steps; const char *outcome, *status; };
        for (const Case &c : {Case{"5k", {25, 50}, "archive", "Entry archived."},  // found at 2 of 4: stops
                              Case{"3k", {25, 50, 75, 100}, "delete", "Entry deleted."}}) {
            Database db;
            fill(db);
            FrmChecking *w = FrmChecking::showChecking(&m_main);
            QSignalSpy spy(w->staChecking(), &QProgressBar::valueChanged);
            QString key = QString::fromLatin1(c.key);
            const bool found = customerIsBilled(db, key, &m_main);
            QList<int> seen;
            for (const auto &args : spy) seen << args.at(0).toInt();
            QCOMPARE(seen, c.steps);
            QCOMPARE(archiveCustomerStep(db, key, found), QString::fromLatin1(c.outcome));
            QCOMPARE(w->staChecking()->value(), 100);
            QCOMPARE(w->lblStatus()->text(), QString::fromLatin1(c.status));
            if (!found) QVERIFY(archiveCustomerStep(db, key, false).isEmpty());  // no row left: no change
            QCOMPARE(db.lvwCustomers.count(), found ? 12 : 11);
            cleanup();
        }
        // No records: the bar stays during the scan and still ends at 100.
        Database db;
        db.lvwPAndS.add("1k", "000000001.00$1.00 - Pen");
        FrmChecking *w = FrmChecking::showChecking(&m_main);
        QString key = QStringLiteral("1k");
        QVERIFY(!productIsBilled(db, key, &m_main));
        QCOMPARE(w->staChecking()->value(), 0);
        QCOMPARE(archiveProductStep(db, key, false), QStringLiteral("delete"));
        QCOMPARE(w->staChecking()->value(), 100);
        QCOMPARE(db.lvwPAndS.count(), 0);
    }

    void archivedRowsKeepTheirPlaceAndNumber() {
        Database db;
        fill(db);
        // A customer moves behind all current ones, and its number stays taken.
        for (QString key : {QStringLiteral("2k"), QStringLiteral("12k")}) {
            QVERIFY(customerIsBilled(db, key, &m_main));
            QCOMPARE(archiveCustomerStep(db, key, true), QStringLiteral("archive"));
        }
        QCOMPARE(db.lvwCustomers.indexOf(u"2k"), 11);
        QCOMPARE(db.lvwCustomers.textOf(u"2k"), ArchiveMark + customerText("Baker"));
        QVERIFY(!isArchivedCustomerText(db.lvwCustomers.text(10)));
        db.lvwCustomers.add("20k", customerText("Zane"));  // a removed highest number is free again
        archiveCustomerStep(db, QStringLiteral("20"), false);
        QCOMPARE(Database::nextKeyNumber(db.lvwCustomers), 12);
        // A product keeps its place by price, the mark after the sort price.
        QCOMPARE(archiveProductStep(db, QStringLiteral("7"), true), QStringLiteral("archive"));
        QCOMPARE(db.lvwPAndS.textOf(u"7k"), QStringLiteral("000000005.00") + ArchiveMark + "$5.00 - Item7");
        QCOMPARE(db.lvwPAndS.indexOf(u"7k"), 3);
    }

    void checkingWindowIsReusedAndUnloadedByOK() {
        FrmChecking *w = FrmChecking::showChecking(&m_main);
        QVERIFY(w->isVisible() && w->isWindow() && !w->cmdOK()->isEnabled());
        QCOMPARE(w->parentWidget(), &m_main);  // beside the main window, not blocking it
        QCOMPARE(w->windowModality(), Qt::NonModal);
        // A second delete while it is open uses the same window; OK stays enabled.
        Database db;
        fill(db);
        w->enableOK();
        w->move(200, 150);
        QString key = QStringLiteral("4k");
        customerIsBilled(db, key, &m_main);
        QCOMPARE(FrmChecking::existing(), w);
        QVERIFY(w->cmdOK()->isEnabled());
        // OK unloads it; the next one opens where it was, disabled again.
        QTest::mouseClick(w->cmdOK(), Qt::LeftButton);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(!FrmChecking::existing());
        FrmChecking *again = FrmChecking::showChecking(&m_main);
        QVERIFY(!again->cmdOK()->isEnabled());
        QCOMPARE(again->pos(), QPoint(200, 150));
    }
};

QTEST_MAIN(TestArchiving)
#include "tst_archiving.moc"
