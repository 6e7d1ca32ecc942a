// SPDX-License-Identifier: GPL-3.0-or-later
// The Customers panel driven through its controls inside the main window.
#include "panelharness.h"

#include "customers/customerpanel.h"
#include "database/database.h"
#include "database/rowtypes.h"
#include "tablesedit.h"

using namespace qor;
using namespace qor::testing;

class TstCustomerPanel : public QObject {
    Q_OBJECT
    Sandbox m_box;
    std::unique_ptr<Answerer> m_answers;
    std::unique_ptr<FrmQOR> m_w;

    CustomerPanel *cp() { return m_w->customerPanel(); }
    QAbstractButton *btn(const char *name) { return cp()->control<QAbstractButton>(name); }
    QWidget *field(int i) { return cp()->controlWidget(QStringLiteral("txtField(%1)").arg(i)); }
    QTreeWidget *list() { return cp()->list(); }
    const KeyedList &table() { return m_w->db().customers(); }
    QString buttons() { return buttonPair(btn("cmdAddNew"), btn("cmdUndo")); }
    // The list shows exactly the table's current rows, in order, under their keys.
    void checkListMatchesTable()
    {
        QStringList names, keys, shownKeys;
        table().forEach([&](QStringView k, QStringView t) {
            if (customer::isArchived(t) || !CustomerView::parse(t)) return true;
            names << customer::displayNameOf(t).toString();
            keys << k.toString();
            return true;
        });
        for (int i = 0; i < cp()->rowCount(); ++i) shownKeys << list()->topLevelItem(i)->data(0, Qt::UserRole).toString();
        QCOMPARE(rowTexts(list()), names);
        QCOMPARE(shownKeys, keys);
    }
    void open(const QList<DbCustomer> &customers, const QList<DbRecord> &records = {}, const char *recall = "1")
    {
        discard(m_w);
        writeDatabase(m_box.db, customers, {}, records);
        settings::LastViewedCustomer.store(recall);
        m_w = openWindow(0);
    }
    void newCustomer(const QString &first, const QString &last = {})
    {
        click(btn("cmdAddNew"));
        QTest::keyClicks(field(1), last);
        QTest::keyClicks(field(0), first);
        click(btn("cmdAddNew"));
    }
    void select(const QString &name) { clickRow(list(), rowTexts(list()).indexOf(name) + 1); }
    // The buttons and colours the user sees are the editor's.
    void showsEditor()
    {
        const CustomerEditor &e = cp()->editor();
        QCOMPARE(btn("cmdAddNew")->text(), CustomerEditor::addNewCaption(e.addNew().mode));
        QCOMPARE(btn("cmdUndo")->text(), CustomerEditor::undoCaption(e.undo().mode));
        QCOMPARE(btn("cmdAddNew")->isHidden(), !e.addNew().shown);
        QCOMPARE(btn("cmdUndo")->isHidden(), !e.undo().shown);
        QCOMPARE(btn("cmdPrint")->isHidden(), !e.printShown());
        for (int i = 0; i < CustomerEditor::FieldCount; ++i) {
            QCOMPARE(hasInfoColour(field(i)), e.asksForInput(i));
            QCOMPARE(cp()->fieldText(i), e.typed(i));
        }
    }

private slots:
    void init()
    {
        m_answers = std::make_unique<Answerer>();
        settings::CheckToConfirmEdits.set(true);
    }
    void cleanup() { discard(m_w); }

    // Each button once, from an empty panel to four customers: the panel
    // shows what its editor holds, and the table gets what was typed.
    void customerLife()
    {
        open({});
        QTest::mouseClick(field(2), Qt::LeftButton);  // a click into the empty panel starts an entry
        QCOMPARE(buttons(), "-&Add New / &Cancel New");
        QTest::keyClicks(field(1), "Smith");
        QTest::keyClicks(field(0), "Jo");
        QTest::keyClicks(field(5), QString(130, 'e'));  // typing stops at the field's length
        QTest::keyClicks(field(7), "gate\rdog");
        showsEditor();
        click(btn("cmdAddNew"));
        QCOMPARE(table().textOf(u"1k").split(FieldSep),
                 QStringList({"Smith, Jo", "Jo", "Smith", "", "", "", QString(128, 'e'), "", "gate\ndog"}));
        QCOMPARE(buttons(), "&New Customer / &Delete Existing");
        showsEditor();
        QVERIFY(m_w->databaseChanged());

        // A first name alone is the display name; new rows land at their place.
        newCustomer("Sam");
        newCustomer("Al", "Zane");
        newCustomer("Al", "Brown");
        QCOMPARE(rowTexts(list()), QStringList({"Brown, Al", "Sam", "Smith, Jo", "Zane, Al"}));
        QCOMPARE(currentKey(list()), "4k");

        // Cancelling an entry selects the row selected before it.
        select("Smith, Jo");
        click(btn("cmdAddNew"));
        QVERIFY(list()->selectedItems().isEmpty());
        showsEditor();
        click(btn("cmdUndo"));
        QVERIFY(currentText(list()) == "Smith, Jo" && cp()->fieldText(0) == "Jo");
        showsEditor();

        // Undo refills the fields.
        QTest::keyClicks(field(6), "9");
        QTest::keyClick(field(6), Qt::Key_Down);  // keys that move no row keep the edit
        QTest::keyClick(list(), Qt::Key_Shift);
        QCOMPARE(buttons(), "Apply &Edit / &Undo Edit");
        showsEditor();
        click(btn("cmdUndo"));
        QCOMPARE(cp()->fieldText(6), "");
        showsEditor();

        // Apply asks; Cancel refills the fields, OK moves the row and keeps the CID.
        retype(field(1), "Adams");
        click(btn("cmdAddNew"));
        QCOMPARE(m_answers->last().title, "Save Changes to Existing Customer???");
        QCOMPARE(cp()->fieldText(1), "Smith");
        m_answers->answer = QMessageBox::Ok;
        retype(field(1), "Adams");
        click(btn("cmdAddNew"));
        QCOMPARE(rowTexts(list()), QStringList({"Adams, Jo", "Brown, Al", "Sam", "Zane, Al"}));
        checkListMatchesTable();
        QCOMPARE(currentKey(list()), "1k");
        showsEditor();

        // The down key shows the row it lands on, Tag first.
        QTest::keyClick(list(), Qt::Key_Down);
        QVERIFY(cp()->fieldText(1) == "Brown" && field(1)->property("Tag").toString() == "Brown");
    }

    // What can't be stored is refused with a warning and the entry stays: a
    // name with the archive mark, an edit without a first name, a duplicate
    // name (compared exactly; a customer's own name is none) unless the user
    // says it is another customer.
    void refusals()
    {
        open({{1, "Jo", "Smith"}, {2, "Kim", "Yu"}});
        newCustomer(QStringLiteral("Ann"), ArchiveMark + QStringLiteral("Lee"));
        QVERIFY(m_answers->last().text.contains(ArchiveMark));
        retype(field(1), "Smith");
        retype(field(0), "Jo");
        click(btn("cmdAddNew"));
        QCOMPARE(m_answers->last().title, "Duplicate Name Found");
        QCOMPARE(table().count(), 2);
        QCOMPARE(buttons(), "&Add New / &Cancel New");
        retype(field(1), "smith");  // other case: no duplicate
        click(btn("cmdAddNew"));
        QCOMPARE(table().count(), 3);
        QCOMPARE(m_answers->seen().size(), 2);

        settings::CheckToConfirmEdits.set(false);
        select("Yu, Kim");
        retype(field(0), ArchiveMark);
        click(btn("cmdAddNew"));
        retype(field(0), "");
        click(btn("cmdAddNew"));
        QCOMPARE(m_answers->last().text, "A customer needs at least a first name.");
        retype(field(0), "Jo");
        retype(field(1), "Smith");
        click(btn("cmdAddNew"));
        QCOMPARE(m_answers->seen().size(), 5);
        QCOMPARE(CustomerRow::parse(table().textOf(u"2k"))->displayName, "Yu, Kim");
        retype(field(0), "Kim");
        retype(field(1), "Yu");
        QTest::keyClicks(field(6), "0123");
        click(btn("cmdAddNew"));
        QCOMPARE(m_answers->seen().size(), 5);
        QCOMPARE(CustomerRow::parse(table().textOf(u"2k"))->phone, "0123");

        m_answers->answer = QMessageBox::Ok;
        newCustomer("Jo", "Smith");
        QCOMPARE(m_answers->seen().size(), 6);
        QCOMPARE(currentKey(list()), "4k");
        checkListMatchesTable();
    }

    // Delete removes an unbilled customer, archives a billed one.
    void deleteAndArchive()
    {
        open({{1, "Ann", "Lee"}, {2, "Bob", "Moss"}, {3, "Cy", "Pike"}, {4, "Di", "Ross"}}, {{4, {"1"}}});
        clickRow(list(), 4);
        click(btn("cmdUndo"));  // Cancel at the question
        QCOMPARE(m_answers->last().title, "Delete Existing Customer???");
        QCOMPARE(cp()->rowCount(), 4);
        m_answers->answer = QMessageBox::Ok;
        click(btn("cmdUndo"));  // Di is billed: archived, behind all others
        QCOMPARE(statusText(*m_w), "Entry archived.");
        QVERIFY(m_w->checkingWindow()->cmdOK()->isEnabled());
        QVERIFY(table().text(4).startsWith(ArchiveMark + "Ross, Di"));
        QCOMPARE(currentText(list()), "Pike, Cy");  // the row now last
        QCOMPARE(cp()->fieldText(0), "Cy");
        select("Moss, Bob");
        click(btn("cmdUndo"));
        QCOMPARE(statusText(*m_w), "Entry deleted.");
        QVERIFY(!table().contains(u"2k"));
        QCOMPARE(rowTexts(list()), QStringList({"Lee, Ann", "Pike, Cy"}));

        // An archived name raises no question; its number isn't given again.
        const int questions = m_answers->seen().size();
        newCustomer("Di", "Ross");
        QCOMPARE(m_answers->seen().size(), questions);
        QCOMPARE(currentKey(list()), "5k");
        while (cp()->rowCount() > 0) click(btn("cmdUndo"));
        for (int i = 0; i < 8; ++i) QVERIFY(cp()->fieldText(i).isEmpty() && cp()->fieldTag(i).isEmpty());
        showsEditor();
        QCOMPARE(table().count(), 1);
    }
    void searchSession()
    {
        open({{1, "Ann", "Lee"}, {2, "Bob", "Moss"}, {3, "Cy", "Moore"}, {4, "Di", "Ross"}});
        QVERIFY(QTest::qWaitForWindowActive(m_w.get()));
        auto *label = cp()->control<QLabel>("lblCustomers");
        auto *box = cp()->control<QLineEdit>("txtSearch");
        clickRow(list(), 4);
        QTest::keyClicks(field(6), "typed");
        click(btn("cmdSearch"));
        QCOMPARE(label->text(), "Search:");
        QTRY_COMPARE(QApplication::focusWidget(), box);
        QCOMPARE(currentText(list()), "Ross, Di");  // an empty box finds nothing
        QCOMPARE(cp()->fieldText(6), "");           // but refills the fields
        const char *steps[][3] = {{"mo", "Moore, Cy", "Cy"}, {"ssx", "Moss, Bob", "Bob"} /* "mossx" finds nothing */};
        for (auto [typed, found, first] : steps) {
            QTest::keyClicks(box, typed);
            QVERIFY(currentText(list()) == found && cp()->fieldText(0) == first);
        }
        retype(box, "LEE");
        click(btn("cmdSearch"));
        QVERIFY(box->isHidden() && label->text() == "List of Customers:");
        QCOMPARE(currentText(list()), "Lee, Ann");
        QCOMPARE(QApplication::focusWidget(), list());
    }

    // The row selected at start comes from LastViewedCustomer; a long stored
    // name shows whole; an empty list takes typing as a new customer.
    void listRecall()
    {
        QList<DbCustomer> seven;
        for (int i = 1; i <= 7; ++i) seven.append({i, QStringLiteral("N%1").arg(i), QStringLiteral("L%1").arg(i)});
        seven[3].first = "N4" + QString(38, 'x');  // longer than typing allows
        open(seven, {}, "3");
        QCOMPARE(cp()->selectedPosition(), 3);
        QCOMPARE(cp()->fieldText(0), "N3");
        settings::LastViewedCustomer.set(9);
        cp()->refreshCustomerList();
        QCOMPARE(cp()->selectedPosition(), 1);
        clickRow(list(), 4);
        QCOMPARE(cp()->fieldText(0), seven[3].first);
        QCOMPARE(buttons(), "&New Customer / &Delete Existing");
        clickRow(list(), 5);
        QCOMPARE(qobject_cast<QLineEdit *>(field(0))->maxLength(), 32);

        open({{1, "Old", "Gone", false}, {2, "Older", "Gone", false}});
        QCOMPARE(cp()->selectedPosition(), 0);
        m_answers->answer = QMessageBox::Ok;
        QTest::keyClicks(field(1), "Gray");
        click(btn("cmdAddNew"));
        QCOMPARE(m_answers->last().text, "A customer needs at least a first name.");
        QCOMPARE(table().count(), 2);
        QTest::keyClicks(field(0), "Al");
        click(btn("cmdAddNew"));
        QCOMPARE(currentText(list()), "Gray, Al");
        QCOMPARE(currentKey(list()), "3k");
    }

    // A refresh shows exactly the table's current rows, whatever changed behind the list.
    void refreshFollowsTable()
    {
        QList<DbCustomer> start;
        for (int i = 1; i <= 40; ++i) start.append({i, "F", QStringLiteral("L%1").arg(i, 3, 10, QLatin1Char('0'))});
        open(start);
        auto row = [](const QString &last) { return CustomerRow{last + ", F", "F", last, "", "", "", "", "", ""}.text(); };
        test::TablesEdit changed(m_w->db());
        changed.customers.remove(u"1k");  // removed, added, broken, archived, renamed, traded places
        changed.customers.add("41k", row("L020a"));
        changed.customers.add("43k", "Broken" + QString(FieldSep));
        const QString archived = ArchiveMark + changed.customers.textOf(u"7k");
        changed.customers.remove(u"7k");
        changed.customers.add("7k", archived);
        changed.customers.setTextOf(u"9k", row("L009b"));
        const QString a = changed.customers.textOf(u"2k"), b = changed.customers.textOf(u"3k");
        changed.customers.remove(u"2k");
        changed.customers.remove(u"3k");
        changed.customers.add("2k", b);
        changed.customers.add("3k", a);
        changed.done();
        cp()->refreshCustomerList();
        checkListMatchesTable();
        QCOMPARE(cp()->rowCount(), 39);
        test::TablesEdit more(m_w->db());
        for (int i = 100; i < 500; ++i) more.customers.add(QStringLiteral("%1k").arg(i), row(QStringLiteral("K%1").arg(i)));
        for (int i = 10; i < 30; ++i) more.customers.remove(QStringLiteral("%1k").arg(i));
        more.done();
        cp()->refreshCustomerList();
        checkListMatchesTable();
        test::TablesEdit emptied(m_w->db());
        emptied.customers.clear();
        emptied.done();
        cp()->refreshCustomerList();
        QCOMPARE(cp()->rowCount(), 0);
    }

    // What the panel did is in the file after a save and back after a restart.
    // CheckToConfirmEdits "false": only exactly "False" spares the edit question,
    // the delete one goes in any case.
    void saveAndReload()
    {
        open({{1, "Ann", "Lee"}, {2, "Bob", "Moss"}, {3, "Cy", "Pike"}}, {{3, {"1"}}});
        settings::CheckToConfirmEdits.store("false");
        m_answers->answer = QMessageBox::Ok;
        click(btn("cmdAddNew"));
        QTest::keyClicks(field(7), "back\rdoor");
        QTest::keyClicks(field(1), "Adams");
        QTest::keyClicks(field(0), "Eve");
        click(btn("cmdAddNew"));
        select("Lee, Ann");
        retype(field(1), "Zeller");
        click(btn("cmdAddNew"));
        for (const char *gone : {"Moss, Bob", "Pike, Cy"}) {  // removed, archived
            select(gone);
            click(btn("cmdUndo"));
        }
        QCOMPARE(m_answers->seen().size(), 1);
        QVERIFY(m_w->saveDatabase());
        const QByteArray bytes = m_box.fileBytes();
        QVERIFY(bytes.contains(
            "<Customer CID=\"4\">\r\n\t\t\t<FName>Eve</FName>\r\n\t\t\t<LName>Adams</LName>\r\n"
            "\t\t\t<Notes>back\r\ndoor</Notes>"));
        QVERIFY(bytes.contains("<FName>Ann</FName>\r\n\t\t\t<LName>Zeller</LName>"));
        QVERIFY(!bytes.contains("CID=\"2\"") && bytes.contains("<LName>Pike</LName>\r\n\t\t\t<Current>No</Current>"));

        discard(m_w);
        settings::LastViewedCustomer.set(2);
        m_w = openWindow(0);
        QCOMPARE(rowTexts(list()), QStringList({"Adams, Eve", "Zeller, Ann"}));
        QCOMPARE(currentText(list()), "Zeller, Ann");  // the recalled position
        QVERIFY(customer::isArchived(table().textOf(u"3k")));
        clickRow(list(), 1);
        QCOMPARE(cp()->fieldText(7), "back\ndoor");  // the note keeps its line break
    }
};

QTEST_MAIN(TstCustomerPanel)
#include "tst_customerpanel.moc"
