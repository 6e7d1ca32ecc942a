// SPDX-License-Identifier: GPL-3.0-or-later
// What customers owe: the aging by bill due date at its boundaries, part
// payments, credits, archived and unknown customers; the statement and the
// reminder on paper, read back from the PDF; and the Statements window with
// its printer and dialogs answered in advance.
#include "../pages/pdfwords.h"

#include "database/database.h"
#include "database/filesafety.h"
#include "database/rowtypes.h"
#include "printing/frmstatements.h"
#include "settings/settingsstore.h"
#include "statements/statementsmodel.h"
#include "tablesedit.h"
#include "uiservices/dialogservice.h"

#include <QApplication>
#include <QCheckBox>
#include <QDateEdit>
#include <QHeaderView>
#include <QLineEdit>
#include <QSpinBox>
#include <QTableView>
#include <QTest>

#include <numeric>

using namespace qor;
using namespace qor::statements;
using namespace Qt::StringLiterals;

namespace {

const QDate AsOf(2024, 6, 30);
QString chrono(const QDate &d) { return d.toString(u"yyyy/MM/dd"_s); }

// Books built row by row; item 1 costs $10.00, customer 1 is Al Ames. Each row goes in through an
// edit of its own, handed back at the end of its statement.
struct Books {
    Database db;
    Books()
    {
        qor::test::TablesEdit tables(db);
        tables.company[0] = u"Acme & Co"_s;
        tables.company[8] = u"THANK YOU!"_s;
        tables.items.add(u"1k"_s, item::make(u"000000010.00"_s, u"$10.00"_s, u"Ten"_s).text());
        tables.done();
        customer(1, u"Al"_s, u"Ames"_s);
    }
    void customer(int cid, const QString &first, const QString &last, bool archived = false)
    {
        const QString name = customer::displayNameFor(first, last);
        const CustomerRow row{archived ? ArchiveMark + name : name, first, last, u"1 Elm St"_s, {}, {}, {}, {}, {}};
        qor::test::TablesEdit(db).customers.add(numberKey(qint64(cid)), row.text());
    }
    void period(const QString &name, const QString &due, const QString &end = {})
    {
        qor::test::TablesEdit(db).periods.add(period::keyFor(name), PeriodRow{{}, name, end, due}.text());
    }
    void record(const QString &period, int cid, const QString &balance, const QString &items = u"1x3"_s)
    {
        const QString c = QString::number(cid);
        const InvoiceRecordRow row{period, {}, c, balance, items, {}};
        qor::test::TablesEdit(db).invoiceRecords.add(record::keyFor(period, c), row.text());
    }
};

qint64 sum(const Aging &a)
{
    return std::accumulate(a.begin(), a.end(), qint64(0), [](qint64 s, const Money &m) { return s + m.cents(); });
}

}  // namespace

class TstStatements : public QObject {
    Q_OBJECT
    QTemporaryDir dir;

private slots:
    void initTestCase()
    {
        qputenv("XDG_CONFIG_HOME", dir.filePath(u"config"_s).toUtf8());
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    }

    // One balance of $10.00 aged by its due date, or the period's end where
    // the due date is missing or unreadable.
    void aging_data()
    {
        QTest::addColumn<QString>("due");
        QTest::addColumn<QString>("end");
        QTest::addColumn<int>("bucket");
        QTest::addColumn<int>("days");
        auto ago = [](int days) { return chrono(AsOf.addDays(-days)); };
        QTest::newRow("due today") << ago(0) << QString() << int(NotYetDue) << 0;
        QTest::newRow("due in 5 days") << ago(-5) << QString() << int(NotYetDue) << 0;
        for (const auto &[d, b] : {std::pair{1, Days1To30}, {30, Days1To30}, {31, Days31To60}, {60, Days31To60}, {61, Days61To90}, {90, Days61To90}, {91, Over90Days}})
            QTest::newRow(qPrintable(u"%1 days past due"_s.arg(d))) << ago(d) << QString() << int(b) << d;
        QTest::newRow("no due date: the end") << QString() << ago(45) << int(Days31To60) << 45;
        QTest::newRow("unreadable due: the end") << u"15th May"_s << ago(100) << int(Over90Days) << 100;
        QTest::newRow("neither: not yet due") << u"soon"_s << QString() << int(NotYetDue) << 0;
    }
    void aging()
    {
        QFETCH(QString, due);
        QFETCH(QString, end);
        QFETCH(int, bucket);
        QFETCH(int, days);
        Books b;
        b.period(u"May"_s, due, end);
        b.record(u"May"_s, 1, u"10"_s);
        const Report r = report(b.db, AsOf);
        QCOMPARE(r.accounts.size(), size_t(1));
        const Account &a = r.accounts[0];
        QVERIFY(a.aging[size_t(bucket)].cents() == 1000 && sum(a.aging) == 1000);
        QCOMPARE(a.daysPastDue, days);
        QVERIFY(a.isOverdue() == (bucket != NotYetDue) && r.aging == a.aging);
    }

    // What one customer's records make of the total, the credits and the rows.
    void balances_data()
    {
        QTest::addColumn<QStringList>("balances");  // one record each, three of item 1 billed ($30.00)
        QTest::addColumn<qint64>("total");          // 0: no statement
        QTest::addColumn<qint64>("credits");
        QTest::addColumn<qint64>("firstPaid");
        QTest::newRow("part payment") << QStringList{u"12.5"_s} << 1250LL << 0LL << 1750LL;
        QTest::newRow("credit in its own row") << QStringList{u"-5"_s, u"20"_s} << 1500LL << 500LL << 1000LL;
        QTest::newRow("credit beyond the debt") << QStringList{u"5"_s, u"-8"_s} << 0LL << 0LL << 0LL;
        QTest::newRow("stored float noise") << QStringList{u"100.189995"_s} << 10019LL << 0LL << -7019LL;
        QTest::newRow("unreadable is nothing") << QStringList{u"abc"_s, u"7"_s} << 700LL << 0LL << 2300LL;
        QTest::newRow("all paid") << QStringList{u"0"_s, u"0"_s} << 0LL << 0LL << 0LL;
    }
    void balances()
    {
        QFETCH(QStringList, balances);
        QFETCH(qint64, total);
        QFETCH(qint64, credits);
        QFETCH(qint64, firstPaid);
        Books b;
        for (int i = 0; i < balances.size(); ++i) {
            const QString name = u"P%1"_s.arg(i);
            b.period(name, chrono(AsOf.addDays(-10 * i)));
            b.record(name, 1, balances[i]);
        }
        const Report r = report(b.db, AsOf, Detail::Records);
        QCOMPARE(r.accounts.empty(), total == 0);
        if (total == 0) return;
        const Account &a = r.accounts[0];
        QCOMPARE(a.total.cents(), total);
        QVERIFY(a.credits.cents() == credits && sum(a.aging) - a.credits.cents() == total);
        QCOMPARE(a.records.front().paid().cents(), firstPaid);
        QVERIFY(a.records.front().billed.cents() == 3000 && !a.records.front().isCredit());
        QCOMPARE(a.records.back().isCredit(), credits != 0);
    }

    // Oldest due first whatever the table order; archived customers marked,
    // customers the table lacks last; the model sorts and finds.
    void orderArchivedAndTheModel()
    {
        Books b;
        b.customer(2, u"Bo"_s, u"Bell"_s, true);
        b.customer(3, u"Cy"_s, u"Cole"_s);
        b.period(u"A late"_s, chrono(AsOf.addDays(-5)));
        b.period(u"B early"_s, chrono(AsOf.addDays(-70)));
        b.period(u"C undated"_s, {});
        b.period(u"D undated"_s, {});
        for (const QString &p : {u"A late"_s, u"B early"_s, u"C undated"_s, u"D undated"_s}) b.record(p, 1, u"1"_s);
        b.record(u"A late"_s, 2, u"30"_s);
        b.record(u"A late"_s, 9, u"2"_s);
        b.record(u"B early"_s, 3, u"0.5"_s);
        qor::test::TablesEdit(b.db).periods.add(u"damaged"_s, QString());  // first in the table, passed over
        const Report r = report(b.db, AsOf, Detail::Records);
        QStringList order;
        for (const Account &a : r.accounts) order << a.cid + (a.archived ? u"*"_s : QString());
        QCOMPARE(order, (QStringList{u"1"_s, u"3"_s, u"2*"_s, u"9"_s}));
        QStringList periods;
        for (const OpenRecord &o : r.accounts[0].records) periods << o.period;
        // Two undated: the table's order.
        QCOMPARE(periods, (QStringList{u"B early"_s, u"A late"_s, u"C undated"_s, u"D undated"_s}));
        QVERIFY(r.accounts[0].oldestDue == AsOf.addDays(-70) && r.total.cents() == 400 + 3000 + 200 + 50);
        QCOMPARE(report(b.db, AsOf, Detail::Totals, {u"3k"_s}).accounts.size(), size_t(1));

        StatementsModel m;
        m.setReport(report(b.db, AsOf));
        QPersistentModelIndex bell = m.index(m.rowOf(u"2"_s), 0);
        m.sort(StatementsModel::Total, Qt::DescendingOrder);
        QVERIFY(m.account(0).cid == u"2" && bell.row() == 0);
        QCOMPARE(m.data(bell).toString(), u"Bell, Bo (archived)"_s);
        m.sort(StatementsModel::OldestDue, Qt::AscendingOrder);
        QCOMPARE(m.account(0).cid, u"1"_s);
        QVERIFY(m.findName(u"cOL") == m.rowOf(u"3"_s) && m.findName(u"Zed") == -1);
    }

    void reminderFieldsAndFileNames()
    {
        // A value that holds a field's name is not filled in again; other braces stay.
        const ReminderFields values{u"{company} Al"_s, u"$5"_s, u"05/01/2024"_s, u"60"_s, u"Acme"_s};
        QCOMPARE(fillReminder(u"{customer} {amount} {oldest due date} {days overdue} {company}"_s, values),
                 u"{company} Al $5 05/01/2024 60 Acme"_s);
        QCOMPARE(fillReminder(u"{x} {customer"_s, values), u"{x} {customer"_s);
        QCOMPARE(files::eachFileName(u"A/B\tC"_s, u"12"_s, documentWhat(false, AsOf)), u"A_B_C (12) - statement 2024-06-30.pdf"_s);
    }

    // Sixty open periods and a credit: the table runs over several pages, in
    // due order, captions on each, the total and the company's lines once at
    // the end; the reminder's letter comes first with its fields filled.
    void sixtyPeriodsOnPaper()
    {
        Books b;
        for (int k = 59; k >= 0; --k) {  // Period0 is the oldest; the last one a credit
            const QString name = u"Period%1"_s.arg(k);
            b.period(name, chrono(AsOf.addDays(-(60 - k) * 7 - 200)));
            b.record(name, 1, k == 59 ? u"-4.25"_s : u"12.5"_s);
        }
        const Account a = report(b.db, AsOf, Detail::Records).accounts.at(0);
        for (bool reminder : {false, true}) {
            RunValues run = storedRunValues(b.db, AsOf, reminder);
            run.letter = u"Dear {customer},\n\nplease pay {amount} to {company}."_s;
            const QString pdf = dir.filePath(reminder ? u"r.pdf"_s : u"s.pdf"_s);
            QString why;
            QVERIFY2(writeOneFile(b.db, {a}, run, pdf, &why), qPrintable(why));
            const QList<PdfWord> words = readPdfWords(pdf);
            const int pages = words.last().page + 1;
            QVERIFY(pages >= 3);
            const PdfWord *count = findWordNear(words, u"%1"_s.arg(pages), 360, pages - 1);  // "Page n of n"
            QVERIFY(count && count->top < 700);
            // Each period once, in due order down the pages, above the foot.
            QList<PdfWord> rows;
            QStringList shown, due;
            std::copy_if(words.begin(), words.end(), std::back_inserter(rows),
                         [](const PdfWord &w) { return w.text.startsWith(u"Period"); });
            std::sort(rows.begin(), rows.end(), [](const PdfWord &l, const PdfWord &r) {
                return std::pair(l.page, l.top) < std::pair(r.page, r.top);
            });
            for (int i = 0; i < 60; ++i) due << u"Period%1"_s.arg(i);
            for (const PdfWord &w : rows)
                shown << (w.bottom < pages::statementpage::ContentBottom ? w.text : u"too low"_s);
            QCOMPARE(shown, due);
            // 59 x 12.50 - 4.25
            QVERIFY(findWord(words, u"$733.25"_s, pages - 1) && findWord(words, u"(credit)"_s, pages - 1) &&
                    findWord(words, u"credits:"_s, pages - 1));
            QVERIFY(findWord(words, u"YOU!"_s, pages - 1) && !findWord(words, u"YOU!"_s, 0));
            for (int p = 0; p < pages; ++p) QVERIFY(findWord(words, u"BALANCE"_s, p) || p == pages - 1);
            QCOMPARE(bool(findWord(words, u"Dear"_s, 0)), reminder);
            if (reminder) QVERIFY(findWord(words, u"$733.25"_s, 0) && findWord(words, u"&"_s, 0) && findWord(words, u"Ames,"_s, 0));
        }
    }

    // The window: select all overdue, sort, find, print, save, reminders.
    void theWindow()
    {
        Books b;
        b.customer(2, u"Bo"_s, u"Bell"_s);
        b.customer(3, u"Cy"_s, u"Cole"_s);
        const QDate today = QDate::currentDate();
        b.period(u"Old"_s, chrono(today.addDays(-40)));
        b.period(u"New"_s, chrono(today.addDays(10)));
        b.record(u"Old"_s, 1, u"5"_s);
        b.record(u"New"_s, 2, u"50"_s);
        b.record(u"Old"_s, 3, u"7"_s);
        ScriptedDialogs answers;
        QList<pages::Page> printed;
        pages::PrintStatus outcome = pages::PrintStatus::Printed;
        statementPrinter() = [&](const pages::PageSource &next) {
            printed.clear();
            for (QList<pages::Page> p = next(); !p.isEmpty(); p = next()) printed << p;
            return pages::PrintOutcome{outcome, {}, u"jammed"_s};
        };
        FrmStatements w(b.db);
        w.show();
        QCOMPARE(w.model()->rowCount(), 3);
        w.selectAllOverdue();
        QCOMPARE(w.selectedCids(), (QStringList{u"1"_s, u"3"_s}));
        w.view()->horizontalHeader()->setSortIndicator(StatementsModel::Total, Qt::DescendingOrder);
        QCOMPARE(w.selectedCids(), (QStringList{u"3"_s, u"1"_s}));  // the selection follows, in the new order
        w.printSelected();
        QVERIFY(printed.size() == 2 && answers.messages().isEmpty());
        outcome = pages::PrintStatus::Failed;
        w.printSelected();
        QVERIFY(answers.last().message.title == u"Printer Error"_s && answers.last().message.text.contains(u"jammed"_s));
        QTest::keyClicks(w.findEdit(), u"be"_s);
        QCOMPARE(w.selectedCids(), QStringList{u"2"_s});
        QString previewed;
        w.showPreviewWindow = [&](QWidget *d) { previewed = d->objectName(); delete d; };
        w.showPreview(w.model()->rowOf(u"2"_s));
        QCOMPARE(previewed, u"dlgStatementPreview"_s);

        // No printer: a PDF instead; one file per customer when asked.
        outcome = pages::PrintStatus::NoPrinter;
        w.selectCids({u"1"_s, u"2"_s, u"3"_s});
        answers.nextAnswers = {QMessageBox::Yes};
        answers.nextFileNames = {dir.filePath(u"all"_s)};
        w.printSelected();
        QCOMPARE(readPdfWords(dir.filePath(u"all.pdf"_s)).last().page, 2);
        w.eachFileBox()->setChecked(true);
        QVERIFY(settings::StatementsOneFilePerCustomer.isOn());
        answers.nextFolders = {dir.filePath(u"each"_s)};
        w.saveSelected();
        QCOMPARE(QDir(dir.filePath(u"each"_s)).entryList(QDir::Files).size(), 3);

        // Reminders: those at least N days past due, letters saved.
        w.daysEdit()->setValue(41);
        QCOMPARE(reminderDays(), 41);
        w.reminders();
        QVERIFY(answers.last().message.title == u"Reminders"_s && w.selectedCids().isEmpty());
        w.daysEdit()->setValue(40);
        answers.nextAnswers = {QMessageBox::Save};
        answers.nextFolders = {dir.filePath(u"letters"_s)};
        w.reminders();
        const QStringList letters = QDir(dir.filePath(u"letters"_s)).entryList(QDir::Files, QDir::Name);
        QCOMPARE(letters, (QStringList{u"Ames, Al (1) - reminder %1.pdf"_s.arg(today.toString(u"yyyy-MM-dd"_s)),
                                       u"Cole, Cy (3) - reminder %1.pdf"_s.arg(today.toString(u"yyyy-MM-dd"_s))}));
        statementPrinter() = nullptr;
    }
};

QTEST_MAIN(TstStatements)
#include "tst_statements.moc"
