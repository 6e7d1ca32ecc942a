// The Products and Services panel driven through its controls inside the main
// window: entry and browsing, prices under two locales, duplicates, Enter as
// the default button, delete or archive, and what reaches the file.
#include "panelharness.h"

#include "database/database.h"
#include "database/regional.h"
#include "database/rows.h"
#include "products/productpanel.h"

using namespace qor;
using namespace qor::testing;

namespace {

ProductPanel *pp(FrmQOR &w) { return w.productPanel(); }
QAbstractButton *btn(FrmQOR &w, const char *name) { return pp(w)->control<QAbstractButton>(QString::fromLatin1(name)); }
QLineEdit *edit(FrmQOR &w, const char *name) { return pp(w)->control<QLineEdit>(QString::fromLatin1(name)); }
QLineEdit *price(FrmQOR &w) { return edit(w, "txtPrice"); }
QLineEdit *name(FrmQOR &w) { return edit(w, "txtProductOrServiceName"); }
QTreeWidget *items(FrmQOR &w) { return pp(w)->control<QTreeWidget>(QStringLiteral("lvwProducts(0)")); }
QString selectedText(FrmQOR &w)
{
    QTreeWidgetItem *it = items(w)->currentItem();
    return it ? it->text(0) : QString();
}
QStringList tableTexts(FrmQOR &w)
{
    QStringList out;
    w.db().lvwPAndS.forEach([&out](QStringView, QStringView text) { out << text.toString(); return true; });
    return out;
}

// Presses "&New Product or Service", types both fields and presses "&Add New".
void addItem(FrmQOR &w, const QString &p, const QString &n)
{
    click(btn(w, "cmdAddNewItem"));
    QCOMPARE(btn(w, "cmdAddNewItem")->text(), QStringLiteral("&Add New"));
    QTest::keyClicks(price(w), p);
    QTest::keyClicks(name(w), n);
    click(btn(w, "cmdAddNewItem"));
}

const QLocale kUS(QLocale::English, QLocale::UnitedStates);
const QLocale kDE(QLocale::German, QLocale::Germany);

}  // namespace

class TstProductPanel : public QObject {
    Q_OBJECT
    std::unique_ptr<Sandbox> m_box;
    std::unique_ptr<ModalWatchdog> m_watchdog;
    std::unique_ptr<FrmQOR> m_w;

    void startWith(const QList<DbItem> &list, const QList<DbRecord> &records = {})
    {
        discard(m_w);
        QList<DbCustomer> customers{{1, QStringLiteral("Ann"), QStringLiteral("Lee")}};
        writeDatabase(m_box->dbPath(), customers, list, records);
        m_w = openWindow(1);
    }

private slots:
    void initTestCase()
    {
        m_box = std::make_unique<Sandbox>();
        QVERIFY(m_box->isValid());
        m_watchdog = std::make_unique<ModalWatchdog>();
    }
    void init()
    {
        QLocale::setDefault(kUS);
        settings::putStoredSetting(QStringLiteral("CheckToConfirmEdits"), QStringLiteral("True"));
    }
    void cleanup()
    {
        discard(m_w);
        QCOMPARE(m_watchdog->takeClosed(), 0);
    }

    // Browsing and entry, the fields' colours and the rule that shows
    // "&Add New".
    void entryAndBrowsing()
    {
        startWith({});
        FrmQOR &w = *m_w;
        QCOMPARE(w.currentPanel(), 1);
        QCOMPARE(btn(w, "cmdAddNewItem")->text(), QStringLiteral("&New Product or Service"));
        QVERIFY(btn(w, "cmdCancelNewItem")->isHidden());
        QVERIFY(price(w)->isHidden());
        QVERIFY(name(w)->isHidden());
        QVERIFY(pp(w)->controlWidget(QStringLiteral("lblPrice"))->isHidden());

        click(btn(w, "cmdAddNewItem"));
        QVERIFY(price(w)->isVisible());
        QVERIFY(name(w)->isVisible());
        QVERIFY(pp(w)->controlWidget(QStringLiteral("lblProductOrServiceName"))->isVisible());
        QVERIFY(btn(w, "cmdAddNewItem")->isHidden());
        QCOMPARE(btn(w, "cmdCancelNewItem")->text(), QStringLiteral("&Cancel New"));
        QVERIFY(btn(w, "cmdCancelNewItem")->isVisible());
        QCOMPARE(baseColour(price(w)), infoColour());
        QCOMPARE(baseColour(name(w)), infoColour());
        QVERIFY(QTest::qWaitForWindowActive(&w));
        QTRY_COMPARE(QApplication::focusWidget(), static_cast<QWidget *>(price(w)));

        QTest::keyClicks(price(w), QStringLiteral("abc"));
        QTest::keyClicks(name(w), QStringLiteral("Soap"));
        QVERIFY(btn(w, "cmdAddNewItem")->isHidden());
        QCOMPARE(baseColour(price(w)), infoColour());
        QCOMPARE(baseColour(name(w)), windowColour());
        retype(price(w), QStringLiteral("12.50"));
        QVERIFY(btn(w, "cmdAddNewItem")->isVisible());
        QCOMPARE(btn(w, "cmdAddNewItem")->text(), QStringLiteral("&Add New"));
        QCOMPARE(baseColour(price(w)), windowColour());
        retype(name(w), QString());
        QVERIFY(btn(w, "cmdAddNewItem")->isHidden());
        QCOMPARE(baseColour(name(w)), infoColour());
        QTest::keyClicks(name(w), QStringLiteral("Soap"));

        // Cancel leaves the typing in the hidden fields; the next entry empties them.
        click(btn(w, "cmdCancelNewItem"));
        QVERIFY(price(w)->isHidden());
        QCOMPARE(price(w)->text(), QStringLiteral("12.50"));
        QCOMPARE(btn(w, "cmdAddNewItem")->text(), QStringLiteral("&New Product or Service"));
        QVERIFY(btn(w, "cmdAddNewItem")->isVisible());
        QVERIFY(btn(w, "cmdCancelNewItem")->isHidden());  // list still empty
        QCOMPARE(w.db().lvwPAndS.count(), 0);
        click(btn(w, "cmdAddNewItem"));
        QCOMPARE(price(w)->text(), QString());
        QCOMPARE(name(w)->text(), QString());
        QCOMPARE(baseColour(price(w)), infoColour());
    }

    // United States forms: grouping, equal amounts, negative and zero prices,
    // names holding " - ", and the order by price.
    void pricesUnitedStates()
    {
        startWith({});
        FrmQOR &w = *m_w;
        ModalAnswerer answers(QMessageBox::Ok);

        addItem(w, QStringLiteral("1,200"), QStringLiteral("Roof - full"));
        QCOMPARE(answers.count(), 0);
        QCOMPARE(w.db().lvwPAndS.count(), 1);
        QCOMPARE(w.db().lvwPAndS.key(1), QStringLiteral("1k"));
        QCOMPARE(w.db().lvwPAndS.text(1), QStringLiteral("000001200.00$1,200.00 - Roof - full"));
        QCOMPARE(selectedText(w), QStringLiteral("$1,200.00 - Roof - full"));
        QCOMPARE(btn(w, "cmdAddNewItem")->text(), QStringLiteral("&New Product or Service"));
        QCOMPARE(btn(w, "cmdCancelNewItem")->text(), QStringLiteral("&Delete Existing"));
        QVERIFY(btn(w, "cmdCancelNewItem")->isVisible());
        QVERIFY(price(w)->isHidden());
        QVERIFY(w.databaseChanged());

        addItem(w, QStringLiteral("5"), QStringLiteral("Soap"));
        addItem(w, QStringLiteral("40"), QStringLiteral("Soap"));  // same name, other price
        QCOMPARE(answers.count(), 0);
        addItem(w, QStringLiteral("0"), QStringLiteral("Advice"));
        addItem(w, QStringLiteral("-3"), QStringLiteral("Refund"));
        QCOMPARE(selectedText(w), QStringLiteral("($3.00) - Refund"));
        QCOMPARE(rowTexts(items(w)),
                 (QStringList{QStringLiteral("($3.00) - Refund"), QStringLiteral("$0.00 - Advice"),
                              QStringLiteral("$5.00 - Soap"), QStringLiteral("$40.00 - Soap"),
                              QStringLiteral("$1,200.00 - Roof - full")}));
        // Every row, the negative one too, has twelve characters of sort
        // price before what the list shows.
        for (const QString &t : tableTexts(w)) QVERIFY2(rowTexts(items(w)).contains(t.mid(SortPriceLength)), qPrintable(t));
        QCOMPARE(tableTexts(w).at(3).left(SortPriceLength), QStringLiteral("000000040.00"));
        QCOMPARE(w.db().lvwPAndS.textOf(u"5k").left(1), QStringLiteral("-"));
        QCOMPARE(w.db().lvwPAndS.textOf(u"5k").mid(SortPriceLength), QStringLiteral("($3.00) - Refund"));

        // 5.00 shows as the 5 already there: a duplicate, and entry goes on.
        click(btn(w, "cmdAddNewItem"));
        QTest::keyClicks(price(w), QStringLiteral("5.00"));
        QTest::keyClicks(name(w), QStringLiteral("Soap"));
        click(btn(w, "cmdAddNewItem"));
        QCOMPARE(answers.count(), 1);
        QCOMPARE(answers.last().title, QStringLiteral("Duplicate Product or Service Found"));
        QCOMPARE(answers.last().text,
                 QStringLiteral("A product or service was found with the exact same price and name.\n\n"
                                "(Products and Services can share the same name as long as they have unique prices.)"));
        QCOMPARE(answers.last().buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
        QCOMPARE(answers.last().icon, QMessageBox::Warning);
        QCOMPARE(w.db().lvwPAndS.count(), 5);
        QVERIFY(price(w)->isVisible());
        QCOMPARE(btn(w, "cmdCancelNewItem")->text(), QStringLiteral("&Cancel New"));

        // Other case is another name.
        retype(name(w), QStringLiteral("soap"));
        click(btn(w, "cmdAddNewItem"));
        QCOMPARE(answers.count(), 1);
        QCOMPARE(w.db().lvwPAndS.count(), 6);
        QCOMPARE(w.db().lvwPAndS.textOf(u"6k"), QStringLiteral("000000005.00$5.00 - soap"));
    }

    // German forms: comma as decimal point, the symbol behind the number; the
    // display text keeps the form of the moment it was added.
    void pricesGermany()
    {
        startWith({});
        FrmQOR &w = *m_w;
        QLocale::setDefault(kDE);
        addItem(w, QStringLiteral("1.200,5"), QStringLiteral("Dach"));
        const QString shown = kDE.toCurrencyString(1200.5);
        QVERIFY(shown.contains(QStringLiteral("1.200,50")));
        QCOMPARE(selectedText(w), shown + QStringLiteral(" - Dach"));
        QCOMPARE(w.db().lvwPAndS.textOf(u"1k").mid(SortPriceLength), shown + QStringLiteral(" - Dach"));
        QCOMPARE(w.db().lvwPAndS.textOf(u"1k").left(SortPriceLength).left(9), QStringLiteral("000001200"));

        // A point-decimal amount that the German rules cannot read keeps the
        // button hidden.
        click(btn(w, "cmdAddNewItem"));
        QTest::keyClicks(name(w), QStringLiteral("Seife"));
        QTest::keyClicks(price(w), QStringLiteral("5,25"));
        QVERIFY(btn(w, "cmdAddNewItem")->isVisible());
        retype(price(w), QStringLiteral("5x"));
        QVERIFY(btn(w, "cmdAddNewItem")->isHidden());
        click(btn(w, "cmdCancelNewItem"));

        QLocale::setDefault(kUS);
        addItem(w, QStringLiteral("7"), QStringLiteral("Soap"));
        QCOMPARE(rowTexts(items(w)), (QStringList{QStringLiteral("$7.00 - Soap"), shown + QStringLiteral(" - Dach")}));
    }

    // Enter presses cmdAddNewItem while it shows, once an entry made it the
    // default; and it stays the default after the entry.
    void enterIsDefault()
    {
        startWith({{1, QStringLiteral("Soap"), QStringLiteral("$5.00")}});
        FrmQOR &w = *m_w;
        QTest::keyClick(items(w), Qt::Key_Return);
        QVERIFY(price(w)->isHidden());  // no default yet

        click(btn(w, "cmdAddNewItem"));
        QTest::keyClicks(price(w), QStringLiteral("8"));
        QTest::keyClick(price(w), Qt::Key_Return);  // name empty: the button is hidden
        QCOMPARE(w.db().lvwPAndS.count(), 1);
        QTest::keyClicks(name(w), QStringLiteral("Brush"));
        QTest::keyClick(name(w), Qt::Key_Enter);
        QCOMPARE(w.db().lvwPAndS.count(), 2);
        QCOMPARE(selectedText(w), QStringLiteral("$8.00 - Brush"));
        QVERIFY(price(w)->isHidden());

        // Browsing: Enter presses "&New Product or Service".
        QTest::keyClick(items(w), Qt::Key_Return);
        QVERIFY(price(w)->isVisible());
        QCOMPARE(btn(w, "cmdCancelNewItem")->text(), QStringLiteral("&Cancel New"));
    }

    // Delete removes an item nobody billed and archives a billed one; the
    // confirmation reads the setting exactly.
    void deleteOrArchive()
    {
        startWith({{1, QStringLiteral("Soap"), QStringLiteral("$5.00")},
                   {2, QStringLiteral("Brush"), QStringLiteral("$8.00")},
                   {3, QStringLiteral("Mop"), QStringLiteral("$20.00")}},
                  {{QStringLiteral("Jan"), 1, {QStringLiteral("3"), QStringLiteral("2x2")}}});
        FrmQOR &w = *m_w;
        ModalAnswerer answers(QMessageBox::Cancel);
        QCOMPARE(selectedText(w), QStringLiteral("$5.00 - Soap"));

        clickRow(items(w), 2);
        click(btn(w, "cmdCancelNewItem"));
        QCOMPARE(answers.count(), 1);
        QCOMPARE(answers.last().title, QStringLiteral("Delete Existing Product or Service???"));
        QCOMPARE(answers.last().text,
                 QStringLiteral("Are you sure you want to delete this product or service from the database?"));
        QCOMPARE(answers.last().buttons, QMessageBox::Ok | QMessageBox::Cancel);
        QCOMPARE(w.db().lvwPAndS.count(), 3);
        QCOMPARE(rowTexts(items(w)).size(), 3);

        // "false" in lower case still asks: the item delete compares exactly.
        settings::putStoredSetting(QStringLiteral("CheckToConfirmEdits"), QStringLiteral("false"));
        answers.setAnswer(QMessageBox::Ok);
        click(btn(w, "cmdCancelNewItem"));
        QCOMPARE(answers.count(), 2);
        // Brush was billed as 2x2: archived, in its place among the prices.
        QCOMPARE(FrmChecking::existing()->lblStatus()->text(), QStringLiteral("Entry archived."));
        QVERIFY(FrmChecking::existing()->cmdOK()->isEnabled());
        QCOMPARE(w.db().lvwPAndS.count(), 3);
        QCOMPARE(w.db().lvwPAndS.indexOf(u"2k"), 2);
        QCOMPARE(w.db().lvwPAndS.textOf(u"2k"), QStringLiteral("000000008.00") + ArchiveMark + QStringLiteral("$8.00 - Brush"));
        QCOMPARE(rowTexts(items(w)), (QStringList{QStringLiteral("$5.00 - Soap"), QStringLiteral("$20.00 - Mop")}));
        QCOMPARE(selectedText(w), QStringLiteral("$5.00 - Soap"));
        QVERIFY(w.databaseChanged());

        // "False" goes without a question; Soap was never billed.
        settings::putStoredSetting(QStringLiteral("CheckToConfirmEdits"), QStringLiteral("False"));
        click(btn(w, "cmdCancelNewItem"));
        QCOMPARE(answers.count(), 2);
        QCOMPARE(FrmChecking::existing()->lblStatus()->text(), QStringLiteral("Entry deleted."));
        QCOMPARE(w.db().lvwPAndS.contains(u"1k"), false);
        QCOMPARE(selectedText(w), QStringLiteral("$20.00 - Mop"));

        // The last item (billed as 3) goes too: the delete button hides.
        click(btn(w, "cmdCancelNewItem"));
        QCOMPARE(FrmChecking::existing()->lblStatus()->text(), QStringLiteral("Entry archived."));
        QCOMPARE(items(w)->topLevelItemCount(), 0);
        QVERIFY(btn(w, "cmdCancelNewItem")->isHidden());

        // The next new item is numbered above the archived ones.
        addItem(w, QStringLiteral("5"), QStringLiteral("Brush"));
        QCOMPARE(w.db().lvwPAndS.indexOf(u"4k") > 0, true);
        QCOMPARE(rowTexts(items(w)), QStringList{QStringLiteral("$5.00 - Brush")});
    }

    // Added, archived and removed items are in the file after a save and
    // come back after a restart.
    void saveAndReload()
    {
        startWith({{1, QStringLiteral("Soap"), QStringLiteral("$5.00")},
                   {2, QStringLiteral("Brush"), QStringLiteral("$8.00")},
                   {3, QStringLiteral("Mop"), QStringLiteral("$20.00")}},
                  {{QStringLiteral("Jan"), 1, {QStringLiteral("2")}}});
        FrmQOR &w = *m_w;
        settings::putStoredSetting(QStringLiteral("CheckToConfirmEdits"), QStringLiteral("False"));
        addItem(w, QStringLiteral("1234.5"), QStringLiteral("Fence & gate"));
        clickRow(items(w), rowTexts(items(w)).indexOf(QStringLiteral("$8.00 - Brush")) + 1);
        click(btn(w, "cmdCancelNewItem"));
        clickRow(items(w), rowTexts(items(w)).indexOf(QStringLiteral("$20.00 - Mop")) + 1);
        click(btn(w, "cmdCancelNewItem"));
        QVERIFY(w.saveDatabase());

        const QByteArray bytes = fileBytes(m_box->dbPath());
        QVERIFY(bytes.contains("<PS PSID=\"4\">\r\n\t\t\t<Item>Fence &amp; gate</Item>\r\n\t\t\t<ItemPrice>$1,234.50</ItemPrice>\r\n\t\t\t<Current>Yes</Current>"));
        QVERIFY(bytes.contains("<PS PSID=\"2\">\r\n\t\t\t<Item>Brush</Item>\r\n\t\t\t<ItemPrice>$8.00</ItemPrice>\r\n\t\t\t<Current>No</Current>"));
        QVERIFY(!bytes.contains("PSID=\"3\""));

        discard(m_w);
        m_w = openWindow(1);
        QCOMPARE(rowTexts(items(*m_w)),
                 (QStringList{QStringLiteral("$5.00 - Soap"), QStringLiteral("$1,234.50 - Fence & gate")}));
        QCOMPARE(m_w->db().lvwPAndS.textOf(u"4k"), QStringLiteral("000001234.50$1,234.50 - Fence & gate"));
        QVERIFY(isArchivedItemText(m_w->db().lvwPAndS.textOf(u"2k")));
        QCOMPARE(selectedText(*m_w), QStringLiteral("$5.00 - Soap"));
    }
};

QTEST_MAIN(TstProductPanel)
#include "tst_productpanel.moc"
