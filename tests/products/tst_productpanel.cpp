// The Products and Services panel driven through its controls inside the
// main window.
#include "panelharness.h"

#include "database/database.h"
#include "database/rows.h"
#include "products/productpanel.h"

using namespace qor;
using namespace qor::testing;

class TstProductPanel : public QObject {
    Q_OBJECT
    Sandbox m_box;
    std::unique_ptr<Answerer> m_answers;
    std::unique_ptr<FrmQOR> m_w;

    QAbstractButton *btn(const char *name) { return m_w->productPanel()->control<QAbstractButton>(name); }
    QLineEdit *price() { return m_w->productPanel()->control<QLineEdit>("txtPrice"); }
    QLineEdit *name() { return m_w->productPanel()->control<QLineEdit>("txtProductOrServiceName"); }
    QTreeWidget *list() { return m_w->productPanel()->list(); }
    KeyedList &table() { return m_w->db().lvwPAndS; }
    QString buttons()  // "-" marks a hidden button
    {
        auto show = [](QAbstractButton *b) { return (b->isHidden() ? "-" : "") + b->text(); };
        return show(btn("cmdAddNewItem")) + " / " + show(btn("cmdCancelNewItem"));
    }
    void open(const QList<DbItem> &items, const QList<DbRecord> &records = {})
    {
        discard(m_w);
        writeDatabase(m_box.db, {{1, "Ann", "Lee"}}, items, records);
        m_w = openWindow(1);
    }
    void addItem(const QString &p, const QString &n)
    {
        click(btn("cmdAddNewItem"));
        QTest::keyClicks(price(), p);
        QTest::keyClicks(name(), n);
        click(btn("cmdAddNewItem"));
    }
    void select(const QString &text) { clickRow(list(), rowTexts(list()).indexOf(text) + 1); }

private slots:
    void init()
    {
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
        m_answers = std::make_unique<Answerer>();
        settings::putStoredSetting("CheckToConfirmEdits", "True");
    }
    void cleanup() { discard(m_w); }

    // Browsing, entry, the colours and the rule that shows "&Add New".
    void entryAndBrowsing()
    {
        open({});
        QCOMPARE(buttons(), "&New Product or Service / -&Delete Existing");
        QVERIFY(price()->isHidden() && name()->isHidden());
        click(btn("cmdAddNewItem"));
        QCOMPARE(buttons(), "-&Add New / &Cancel New");
        QVERIFY(price()->isVisible() && m_w->productPanel()->controlWidget("lblProductOrServiceName")->isVisible());
        QVERIFY(hasInfoColour(price()) && hasInfoColour(name()));
        QVERIFY(QTest::qWaitForWindowActive(m_w.get()));
        QTRY_COMPARE(QApplication::focusWidget(), price());

        QTest::keyClicks(price(), "abc");
        QTest::keyClicks(name(), "Soap");
        QCOMPARE(buttons(), "-&Add New / &Cancel New");
        QVERIFY(hasInfoColour(price()) && !hasInfoColour(name()));
        retype(price(), "12.50");
        QCOMPARE(buttons(), "&Add New / &Cancel New");
        QVERIFY(!hasInfoColour(price()));
        retype(name(), "");
        QCOMPARE(buttons(), "-&Add New / &Cancel New");
        QVERIFY(hasInfoColour(name()));

        // Cancel leaves the typing in the hidden fields; the next entry empties them.
        click(btn("cmdCancelNewItem"));
        QCOMPARE(buttons(), "&New Product or Service / -&Delete Existing");
        QVERIFY(price()->isHidden());
        QCOMPARE(price()->text(), "12.50");
        click(btn("cmdAddNewItem"));
        QVERIFY(price()->text().isEmpty() && hasInfoColour(price()));
        QCOMPARE(table().count(), 0);
    }

    // United States forms: grouping, equal amounts, negative and zero prices,
    // names holding " - ", order by price, and the duplicate rule.
    void pricesUnitedStates()
    {
        open({});
        addItem("1,200", "Roof - full");
        QCOMPARE(table().key(1), "1k");
        QCOMPARE(table().text(1), "000001200.00$1,200.00 - Roof - full");
        QCOMPARE(currentText(list()), "$1,200.00 - Roof - full");
        QCOMPARE(buttons(), "&New Product or Service / &Delete Existing");
        QVERIFY(price()->isHidden() && m_w->databaseChanged());

        addItem("5", "Soap");
        addItem("40", "Soap");  // same name, other price
        addItem("0", "Advice");
        addItem("-3", "Refund");
        QCOMPARE(m_answers->seen.size(), 0);
        QCOMPARE(currentText(list()), "($3.00) - Refund");
        QCOMPARE(rowTexts(list()), QStringList({"($3.00) - Refund", "$0.00 - Advice", "$5.00 - Soap", "$40.00 - Soap",
                                                "$1,200.00 - Roof - full"}));
        // Every row, the negative one too, has twelve characters of sort price.
        for (int i = 1; i <= table().count(); ++i) QVERIFY(rowTexts(list()).contains(table().text(i).mid(SortPriceLength)));
        QVERIFY(table().textOf(u"5k").startsWith('-'));

        // 5.00 shows as the 5 already there: a duplicate, and the entry goes on.
        click(btn("cmdAddNewItem"));
        QTest::keyClicks(price(), "5.00");
        QTest::keyClicks(name(), "Soap");
        click(btn("cmdAddNewItem"));
        QCOMPARE(m_answers->last().title, "Duplicate Product or Service Found");
        QCOMPARE(m_answers->last().text,
                 "A product or service was found with the exact same price and name.\n\n"
                 "(Products and Services can share the same name as long as they have unique prices.)");
        QCOMPARE(m_answers->last().buttons, QMessageBox::Ok);
        QCOMPARE(m_answers->last().icon, QMessageBox::Warning);
        QCOMPARE(table().count(), 5);
        QCOMPARE(buttons(), "&Add New / &Cancel New");
        retype(name(), "soap");  // other case is another name
        click(btn("cmdAddNewItem"));
        QCOMPARE(table().textOf(u"6k"), "000000005.00$5.00 - soap");
    }

    // German forms; a display text keeps the form of the moment it was added.
    void pricesGermany()
    {
        open({});
        const QLocale de(QLocale::German, QLocale::Germany);
        QLocale::setDefault(de);
        addItem("1.200,5", "Dach");
        const QString shown = de.toCurrencyString(1200.5) + " - Dach";
        QVERIFY(shown.startsWith("1.200,50"));
        QCOMPARE(currentText(list()), shown);
        QCOMPARE(table().textOf(u"1k").mid(SortPriceLength), shown);
        QVERIFY(table().textOf(u"1k").startsWith("000001200"));
        click(btn("cmdAddNewItem"));
        QTest::keyClicks(name(), "Seife");
        QTest::keyClicks(price(), "5,25");
        QCOMPARE(buttons(), "&Add New / &Cancel New");
        retype(price(), "5x");
        QCOMPARE(buttons(), "-&Add New / &Cancel New");
        click(btn("cmdCancelNewItem"));

        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
        addItem("7", "Soap");
        QCOMPARE(rowTexts(list()), QStringList({"$7.00 - Soap", shown}));
    }

    // Enter presses cmdAddNewItem while it shows, once an entry has made it
    // the default, and also after that entry.
    void enterIsDefault()
    {
        open({{1, "Soap", "$5.00"}});
        QTest::keyClick(list(), Qt::Key_Return);
        QVERIFY(price()->isHidden());  // no default yet
        click(btn("cmdAddNewItem"));
        QTest::keyClicks(price(), "8");
        QTest::keyClick(price(), Qt::Key_Return);  // name empty: the button is hidden
        QCOMPARE(table().count(), 1);
        QTest::keyClicks(name(), "Brush");
        QTest::keyClick(name(), Qt::Key_Enter);
        QCOMPARE(table().count(), 2);
        QCOMPARE(currentText(list()), "$8.00 - Brush");
        QTest::keyClick(list(), Qt::Key_Return);
        QCOMPARE(buttons(), "-&Add New / &Cancel New");
    }

    // Delete removes an unbilled item, archives a billed one; the question
    // comes unless the setting is exactly "False".
    void deleteOrArchive()
    {
        open({{1, "Soap", "$5.00"}, {2, "Brush", "$8.00"}, {3, "Mop", "$20.00"}}, {{1, {"3", "2x2"}}});
        QCOMPARE(currentText(list()), "$5.00 - Soap");
        select("$8.00 - Brush");
        click(btn("cmdCancelNewItem"));
        QCOMPARE(m_answers->last().title, "Delete Existing Product or Service???");
        QCOMPARE(m_answers->last().text, "Are you sure you want to delete this product or service from the database?");
        QCOMPARE(m_answers->last().buttons, QMessageBox::Ok | QMessageBox::Cancel);
        QCOMPARE(rowTexts(list()).size(), 3);

        settings::putStoredSetting("CheckToConfirmEdits", "false");
        m_answers->answer = QMessageBox::Ok;
        click(btn("cmdCancelNewItem"));
        QCOMPARE(m_answers->seen.size(), 2);
        QCOMPARE(statusText(), "Entry archived.");  // billed as 2x2
        QVERIFY(FrmChecking::existing()->cmdOK()->isEnabled());
        QCOMPARE(table().indexOf(u"2k"), 2);
        QCOMPARE(table().textOf(u"2k"), "000000008.00" + ArchiveMark + "$8.00 - Brush");
        QCOMPARE(rowTexts(list()), QStringList({"$5.00 - Soap", "$20.00 - Mop"}));
        QCOMPARE(currentText(list()), "$5.00 - Soap");

        settings::putStoredSetting("CheckToConfirmEdits", "False");
        click(btn("cmdCancelNewItem"));
        QCOMPARE(m_answers->seen.size(), 2);
        QCOMPARE(statusText(), "Entry deleted.");
        QVERIFY(!table().contains(u"1k"));
        click(btn("cmdCancelNewItem"));  // Mop, the only one left
        QCOMPARE(statusText(), "Entry archived.");
        QCOMPARE(buttons(), "&New Product or Service / -&Delete Existing");
        addItem("5", "Brush");
        QVERIFY(table().contains(u"4k"));
    }

    // Added, archived and removed items reach the file and come back.
    void saveAndReload()
    {
        open({{1, "Soap", "$5.00"}, {2, "Brush", "$8.00"}, {3, "Mop", "$20.00"}}, {{1, {"2"}}});
        settings::putStoredSetting("CheckToConfirmEdits", "False");
        addItem("1234.5", "Fence & gate");
        select("$8.00 - Brush");
        click(btn("cmdCancelNewItem"));
        select("$20.00 - Mop");
        click(btn("cmdCancelNewItem"));
        QVERIFY(m_w->saveDatabase());
        const QByteArray bytes = fileBytes(m_box.db);
        QVERIFY(bytes.contains("<PS PSID=\"4\">\r\n\t\t\t<Item>Fence &amp; gate</Item>\r\n"
                               "\t\t\t<ItemPrice>$1,234.50</ItemPrice>\r\n\t\t\t<Current>Yes</Current>"));
        QVERIFY(bytes.contains("<Item>Brush</Item>\r\n\t\t\t<ItemPrice>$8.00</ItemPrice>\r\n\t\t\t<Current>No</Current>"));
        QVERIFY(!bytes.contains("PSID=\"3\""));

        discard(m_w);
        m_w = openWindow(1);
        QCOMPARE(rowTexts(list()), QStringList({"$5.00 - Soap", "$1,234.50 - Fence & gate"}));
        QCOMPARE(table().textOf(u"4k"), "000001234.50$1,234.50 - Fence & gate");
        QVERIFY(isArchivedItemText(table().textOf(u"2k")));
    }
};

QTEST_MAIN(TstProductPanel)
#include "tst_productpanel.moc"
