// SPDX-License-Identifier: GPL-3.0-or-later
// The Products and Services panel driven through its controls inside the
// main window, also by a keyboard user: Enter and held keys.
#include "panelharness.h"

#include "billperiods/billperiodpanel.h"
#include "products/productpanel.h"

using namespace qor;
using namespace qor::testing;

class TstProductPanel : public QObject {
    Q_OBJECT
    Sandbox m_box;
    std::unique_ptr<Answerer> m_answers;
    std::unique_ptr<FrmQOR> m_w;

    QAbstractButton *btn(const char *n) { return m_w->productPanel()->control<QAbstractButton>(n); }
    QLineEdit *price() { return m_w->productPanel()->control<QLineEdit>("txtPrice"); }
    QLineEdit *name() { return m_w->productPanel()->control<QLineEdit>("txtProductOrServiceName"); }
    QTreeWidget *list() { return m_w->productPanel()->list(); }
    const KeyedList &table() { return m_w->db().items(); }
    QString buttons() { return buttonPair(btn("cmdAddNewItem"), btn("cmdCancelNewItem")); }
    void open(const QList<DbItem> &items, const QList<DbRecord> &records = {})
    {
        discard(m_w);
        writeDatabase(m_box.db, {{1, "Ann", "Lee"}}, items, records);
        m_w = openWindow(1);
    }
    void addItem(const QString &p, const QString &n, bool press = true)
    {
        click(btn("cmdAddNewItem"));
        QTest::keyClicks(price(), p);
        QTest::keyClicks(name(), n);
        if (press) click(btn("cmdAddNewItem"));
    }
    void select(const QString &text) { clickRow(list(), rowTexts(list()).indexOf(text) + 1); }

private slots:
    void init()
    {
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
        m_answers = std::make_unique<Answerer>();
        settings::CheckToConfirmEdits.set(true);
    }
    void cleanup() { discard(m_w); }

    // Enter adds once an entry has made "&Add New" the default, and only
    // while it shows; the panel shows its editor's buttons and colours.
    void entry()
    {
        open({});
        QTest::keyClick(list(), Qt::Key_Return);  // no default button yet
        QVERIFY(price()->isHidden());
        addItem("12.50", "", false);
        QTest::keyClick(price(), Qt::Key_Return);  // hidden: Enter adds nothing
        QCOMPARE(table().count(), 0);
        QTest::keyClicks(name(), "Brush");
        const ProductEditor &e = m_w->productPanel()->editor();
        QCOMPARE(btn("cmdAddNewItem")->isHidden(), !e.addNew().shown);
        QCOMPARE(hasInfoColour(name()), e.nameAsks());
        QTest::keyClick(name(), Qt::Key_Enter);
        QCOMPARE(currentText(list()), "$12.50 - Brush");
        QTest::keyClick(list(), Qt::Key_Return);  // the default stays after the entry
        QCOMPARE(buttons(), "-&Add New / &Cancel New");
        QVERIFY(price()->isVisible() && hasInfoColour(price()));
        click(btn("cmdCancelNewItem"));
        QCOMPARE(buttons(), "&New Product or Service / &Delete Existing");
        QVERIFY(price()->isHidden());
    }

    // Adds land in price order and are selected; a duplicate or a refusal is
    // a warning, and the entry stays.
    void prices()
    {
        open({{1, "Soap", "$5.00"}});
        addItem("1,200", "Roof");
        addItem("-3", "Refund");
        QCOMPARE(rowTexts(list()), QStringList({"($3.00) - Refund", "$5.00 - Soap", "$1,200.00 - Roof"}));
        QCOMPARE(currentText(list()), "($3.00) - Refund");
        QVERIFY(m_w->databaseChanged());
        addItem("5.00", "Soap");  // shows as the 5 already there
        retype(name(), "soap");   // other case is another name
        click(btn("cmdAddNewItem"));
        addItem("0.005", "Nut");
        QVERIFY2(m_answers->last().text.startsWith("\"0.005\" has"), qPrintable(m_answers->last().text));
        QCOMPARE(table().count(), 4);
        QCOMPARE(buttons(), "&Add New / &Cancel New");
    }

    // Delete removes only a highlighted item: an unbilled one goes, a billed
    // one is archived (also as 2x2); the question comes unless the setting is
    // exactly "False"; the last one gone, there is nothing to delete or bill.
    void deleteAndArchive()
    {
        open({{1, "Soap", "$5.00"}, {2, "Brush", "$8.00"}, {3, "Mop", "$20.00"}}, {{1, {"3", "2x2"}}});
        select("$8.00 - Brush");
        list()->clearSelection();
        m_answers->answer = QMessageBox::Ok;
        click(btn("cmdCancelNewItem"));  // OK, but nothing highlighted: nothing goes
        QCOMPARE(table().count(), 3);
        list()->currentItem()->setSelected(true);
        m_answers->answer = QMessageBox::Cancel;
        click(btn("cmdCancelNewItem"));
        QCOMPARE(table().count(), 3);
        settings::CheckToConfirmEdits.store("false");
        m_answers->answer = QMessageBox::Ok;
        click(btn("cmdCancelNewItem"));
        QCOMPARE(m_answers->seen().size(), 3);
        QCOMPARE(statusText(*m_w), "Entry archived.");
        QCOMPARE(rowTexts(list()), QStringList({"$5.00 - Soap", "$20.00 - Mop"}));
        QCOMPARE(currentText(list()), "$5.00 - Soap");
        settings::CheckToConfirmEdits.set(false);
        click(btn("cmdCancelNewItem"));
        QCOMPARE(statusText(*m_w), "Entry deleted.");
        QVERIFY(!table().contains(u"1k"));
        click(btn("cmdCancelNewItem"));
        QCOMPARE(m_answers->seen().size(), 3);
        QCOMPARE(buttons(), "&New Product or Service / -&Delete Existing");
        // With nothing left to bill, a new bill period is refused.
        m_w->cmdTabClick(2);
        click(m_w->billPeriodPanel()->findChild<QAbstractButton *>("cmdAddNewBP"));
        QCOMPARE(m_answers->last().text, "Please add your Customers and your Products first.");
    }

    // Enter presses a focused button as Space does: held down, it clicks
    // once, on release, and does what a click does.
    void enterAndKeyRepeat()
    {
        open({});
        QVERIFY(QTest::qWaitForWindowActive(m_w.get()));
        auto *add = btn("cmdAddNewItem");
        int clicks = 0;
        connect(add, &QAbstractButton::clicked, this, [&clicks] { ++clicks; });
        for (Qt::Key k : {Qt::Key_Space, Qt::Key_Return}) {
            m_w->productPanel()->showProductEntry(false);
            add->setFocus();
            clicks = 0;
            for (int i = 0; i < 12; ++i) {  // press, five repeats of release and press, release
                QKeyEvent e(i % 2 ? QEvent::KeyRelease : QEvent::KeyPress, k, Qt::NoModifier, {}, i > 0 && i < 11);
                QApplication::sendEvent(add, &e);
                QCOMPARE(clicks, i == 11 ? 1 : 0);
            }
            QVERIFY(price()->isVisible());
        }
    }
};

QTEST_MAIN(TstProductPanel)
#include "tst_productpanel.moc"
