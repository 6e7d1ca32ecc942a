// The delete of a customer or product: the scan of the invoice records with
// frmChecking showing progress, then the row removed or archived.
#include "billing/archiving.h"
#include "billing/frmchecking.h"
#include "database/database.h"
#include "database/rows.h"
#include "shell/settingsstore.h"
#include "uiservices/twips.h"

#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace qor;

namespace {

QString customerText(const QString &last, const QString &first) {
    const QString display = last.isEmpty() ? first : last + QStringLiteral(", ") + first;
    return joinFields({display, first, last, "1 Road", "", "", "", "", ""});
}

void addCustomer(Database &db, int cid, const QString &last, const QString &first) {
    db.lvwCustomers.add(QString::number(cid) + QLatin1Char('k'), customerText(last, first));
}

void addProduct(Database &db, int psid, const QString &sortPrice, const QString &rest) {
    db.lvwPAndS.add(QString::number(psid) + QLatin1Char('k'), sortPrice + rest);
}

void addRecord(Database &db, const QString &period, const QString &name, int cid,
               const QString &balance, const QString &items) {
    const QString c = QString::number(cid);
    db.lvwInvoiceRecords.add(period + FieldSep + c + FieldSep,
                             joinFields({period, name, c, balance, items, ""}));
}

// Customers 1..12, of whom 2, 5 and 12 have records; items 1, 3, 7 and 12.
void fill(Database &db) {
    const char *lasts[] = {"Adams", "Baker", "Cole", "Dunn", "Egan", "Ford",
                           "Gray", "Hale", "Irwin", "Jones", "King", "Lane"};
    for (int i = 1; i <= 12; ++i) addCustomer(db, i, QString::fromLatin1(lasts[i - 1]), QStringLiteral("Pat"));
    addProduct(db, 1, QStringLiteral("000000001.00"), QStringLiteral("$1.00 - Pen"));
    addProduct(db, 3, QStringLiteral("000000003.00"), QStringLiteral("$3.00 - Pad"));
    addProduct(db, 7, QStringLiteral("000000005.00"), QStringLiteral("$5.00 - Ink"));
    addProduct(db, 12, QStringLiteral("000000009.00"), QStringLiteral("$9.00 - Desk"));
    // Sorted by period then name: Baker (2), Egan (5), Lane (12), then P2 Lane.
    addRecord(db, "P1", "Baker, Pat", 2, "4.5", "7" + QString(ItemSep) + "12x3");
    addRecord(db, "P1", "Egan, Pat", 5, "0", "7x2");  // paid
    addRecord(db, "P1", "Lane, Pat", 12, "0", "1");
    addRecord(db, "P2", "Lane, Pat", 12, "0", "7");
}

QList<int> values(const QSignalSpy &spy) {
    QList<int> out;
    for (const auto &args : spy) out << args.at(0).toInt();
    return out;
}

}  // namespace

class TestArchiving : public QObject {
    Q_OBJECT
    QTemporaryDir m_config;
    QWidget m_main;
private slots:
    void initTestCase();
    void cleanup();
    void customerScanIsExactAndCountsPaidRecords();
    void productScanReadsTheItemNumber();
    void progressEndsAt100InBothOutcomes();
    void archivedCustomerMovesBehindAllOthers();
    void archivedProductKeepsItsPricePlace();
    void checkingWindowIsReusedAndUnloadedByOK();
};

void TestArchiving::initTestCase() {
    QVERIFY(m_config.isValid());
    qputenv("XDG_CONFIG_HOME", m_config.path().toLocal8Bit());
    m_main.setObjectName(QStringLiteral("frmQOR"));
}

void TestArchiving::cleanup() {
    if (FrmChecking *w = FrmChecking::existing()) {
        w->close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    QVERIFY(!FrmChecking::existing());
}

void TestArchiving::customerScanIsExactAndCountsPaidRecords() {
    Database db;
    fill(db);
    struct Case {
        QString key, number;
        bool found;
    };
    const Case cases[] = {
        {"12k", "12", true},  // only paid records: still billed
        {"5k", "5", true},
        {"2k", "2", true},
        {"1k", "1", false},   // not a prefix match of 12
        {"k1k2k", "12", true},  // every "k" goes
        {"7k", "7", false},   // an item number, not a customer
        {"99k", "99", false},
    };
    for (const Case &c : cases) {
        QString key = c.key;
        QCOMPARE(customerIsBilled(db, key, &m_main), c.found);
        QCOMPARE(key, c.number);
    }
    // No records at all: nothing found.
    Database empty;
    addCustomer(empty, 1, "Adams", "Pat");
    QString key = QStringLiteral("1k");
    QVERIFY(!customerIsBilled(empty, key, &m_main));
}

void TestArchiving::productScanReadsTheItemNumber() {
    Database db;
    fill(db);
    struct Case {
        QString key;
        bool found;
    };
    const Case cases[] = {
        {"12k", true},  // billed as 12x3
        {"7k", true},   // as 7 and as 7x2
        {"1k", true},
        {"3k", false},  // the 3 in 12x3 is a quantity
        {"2k", false},  // a customer number, not an item
    };
    for (const Case &c : cases) {
        QString key = c.key;
        QCOMPARE(productIsBilled(db, key, &m_main), c.found);
        QCOMPARE(key + QLatin1Char('k'), c.key);
    }
    // A record without an item list is passed over.
    Database short_;
    addProduct(short_, 4, QStringLiteral("000000001.00"), QStringLiteral("$1.00 - Cap"));
    short_.lvwInvoiceRecords.add(QStringLiteral("P1") + FieldSep + "1" + FieldSep,
                                 QStringList({"P1", "Adams", "1", "0"}).join(FieldSep));
    QString key = QStringLiteral("4k");
    QVERIFY(!productIsBilled(short_, key, &m_main));
}

void TestArchiving::progressEndsAt100InBothOutcomes() {
    {
        // Found at the second of four records: the scan stops there.
        Database db;
        fill(db);
        FrmChecking *w = FrmChecking::showChecking(&m_main);
        QSignalSpy spy(w->staChecking(), &QProgressBar::valueChanged);
        QString key = QStringLiteral("5k");
        QVERIFY(customerIsBilled(db, key, &m_main));
        QCOMPARE(values(spy), (QList<int>{25, 50}));
        QCOMPARE(w->progress(), 50.0f);
        QCOMPARE(archiveCustomerStep(db, key, true), QStringLiteral("archive"));
        QCOMPARE(w->staChecking()->value(), 100);
        QCOMPARE(w->lblStatus()->text(), QStringLiteral("Entry archived."));
    }
    cleanup();
    {
        // Not found: every record is visited.
        Database db;
        fill(db);
        FrmChecking *w = FrmChecking::showChecking(&m_main);
        QSignalSpy spy(w->staChecking(), &QProgressBar::valueChanged);
        QString key = QStringLiteral("3k");
        QVERIFY(!customerIsBilled(db, key, &m_main));
        QCOMPARE(values(spy), (QList<int>{25, 50, 75, 100}));
        QCOMPARE(archiveCustomerStep(db, key, false), QStringLiteral("delete"));
        QCOMPARE(w->staChecking()->value(), 100);
        QCOMPARE(w->lblStatus()->text(), QStringLiteral("Entry deleted."));
        QVERIFY(!db.lvwCustomers.contains(u"3k"));
        QCOMPARE(db.lvwCustomers.count(), 11);
        // Repeating the step finds no row: nothing changes, nothing fails.
        QVERIFY(archiveCustomerStep(db, key, false).isEmpty());
        QCOMPARE(db.lvwCustomers.count(), 11);
        QCOMPARE(w->lblStatus()->text(), QStringLiteral("Entry deleted."));
    }
    cleanup();
    {
        // No records: the bar doesn't move during the scan, and still ends at 100.
        Database db;
        addProduct(db, 1, QStringLiteral("000000001.00"), QStringLiteral("$1.00 - Pen"));
        FrmChecking *w = FrmChecking::showChecking(&m_main);
        QString key = QStringLiteral("1k");
        QVERIFY(!productIsBilled(db, key, &m_main));
        QCOMPARE(w->staChecking()->value(), 0);
        QCOMPARE(archiveProductStep(db, key, false), QStringLiteral("delete"));
        QCOMPARE(w->staChecking()->value(), 100);
        QCOMPARE(db.lvwPAndS.count(), 0);
    }
}

void TestArchiving::archivedCustomerMovesBehindAllOthers() {
    Database db;
    fill(db);
    QCOMPARE(db.lvwCustomers.indexOf(u"2k"), 2);  // Baker
    QString key = QStringLiteral("2k");
    const bool found = customerIsBilled(db, key, &m_main);
    QVERIFY(found);
    archiveCustomerStep(db, key, found);
    QCOMPARE(db.lvwCustomers.count(), 12);
    QCOMPARE(db.lvwCustomers.indexOf(u"2k"), 12);
    QCOMPARE(db.lvwCustomers.textOf(u"2k"), ArchiveMark + customerText("Baker", "Pat"));

    // Archiving the highest number keeps it taken: the next new number is higher.
    key = QStringLiteral("12k");
    QVERIFY(customerIsBilled(db, key, &m_main));
    archiveCustomerStep(db, key, true);
    QVERIFY(Database::nextKeyNumber(db.lvwCustomers) + 1 > 12);
    QCOMPARE(db.lvwCustomers.indexOf(u"12k"), 12);
    QCOMPARE(db.lvwCustomers.indexOf(u"2k"), 11);  // both behind the current ones
    QVERIFY(isArchivedCustomerText(db.lvwCustomers.text(11)));
    QVERIFY(!isArchivedCustomerText(db.lvwCustomers.text(10)));

    // Removing an unbilled highest number frees it again.
    Database db2;
    fill(db2);
    addCustomer(db2, 20, "Zane", "Al");
    key = QStringLiteral("20k");
    QVERIFY(!customerIsBilled(db2, key, &m_main));
    archiveCustomerStep(db2, key, false);
    QCOMPARE(Database::nextKeyNumber(db2.lvwCustomers), 12);
}

void TestArchiving::archivedProductKeepsItsPricePlace() {
    Database db;
    fill(db);
    QCOMPARE(db.lvwPAndS.indexOf(u"7k"), 3);
    QString key = QStringLiteral("7k");
    const bool found = productIsBilled(db, key, &m_main);
    QVERIFY(found);
    QCOMPARE(archiveProductStep(db, key, found), QStringLiteral("archive"));
    QCOMPARE(db.lvwPAndS.textOf(u"7k"), QStringLiteral("000000005.00") + ArchiveMark + "$5.00 - Ink");
    QCOMPARE(db.lvwPAndS.indexOf(u"7k"), 3);
    QVERIFY(isArchivedItemText(db.lvwPAndS.text(3)));
    QCOMPARE(db.lvwPAndS.count(), 4);
}

void TestArchiving::checkingWindowIsReusedAndUnloadedByOK() {
    QVERIFY(!FrmChecking::existing());
    FrmChecking *w = FrmChecking::showChecking(&m_main);
    QCOMPARE(FrmChecking::existing(), w);
    QVERIFY(w->isVisible());
    QCOMPARE(w->objectName(), QStringLiteral("frmChecking"));
    QVERIFY(w->windowTitle().isEmpty());
    QVERIFY(w->isWindow());
    QCOMPARE(w->parentWidget(), &m_main);  // owned by the main window
    QCOMPARE(w->windowModality(), Qt::NonModal);
    QCOMPARE(w->size(), QSize(twipsToPx(3855), twipsToPx(2385)));
    QCOMPARE(w->minimumSize(), w->maximumSize());
    QCOMPARE(w->findChild<QPushButton *>(QStringLiteral("cmdOK")), w->cmdOK());
    QCOMPARE(w->lblStatus()->text(),
             QStringLiteral("Checking bill periods to see if deleted entry needs archiving . . ."));
    QVERIFY(!w->cmdOK()->isEnabled());

    // A second delete while it is open uses the same window; OK stays enabled.
    Database db;
    fill(db);
    QString key = QStringLiteral("3k");
    QVERIFY(!customerIsBilled(db, key, &m_main));
    archiveCustomerStep(db, key, false);
    w->enableOK();
    w->move(200, 150);
    key = QStringLiteral("4k");
    customerIsBilled(db, key, &m_main);
    QCOMPARE(FrmChecking::existing(), w);
    QVERIFY(w->cmdOK()->isEnabled());

    // OK unloads it and keeps its place for the next one.
    QTest::mouseClick(w->cmdOK(), Qt::LeftButton);
    QVERIFY(!w->isVisible());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!FrmChecking::existing());
    QVERIFY(!settings::read(QStringLiteral("FormPositions"), QStringLiteral("frmChecking_Left")).isEmpty());
    FrmChecking *again = FrmChecking::showChecking(&m_main);
    QVERIFY(!again->cmdOK()->isEnabled());  // a fresh window starts disabled
    QCOMPARE(again->pos(), QPoint(200, 150));
}

QTEST_MAIN(TestArchiving)
#include "tst_archiving.moc"
