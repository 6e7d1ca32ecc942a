// The Customers panel driven through its controls inside the main window.
#include "panelharness.h"

#include "customers/customerpanel.h"
#include "database/database.h"
#include "database/rows.h"

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
    KeyedList &table() { return m_w->db().lvwCustomers; }
    // The two buttons as the user sees them; "-" marks a hidden one.
    QString buttons()
    {
        auto show = [](QAbstractButton *b) { return (b->isHidden() ? "-" : "") + b->text(); };
        return show(btn("cmdAddNew")) + " / " + show(btn("cmdUndo"));
    }
    QStringList tableNames()  // current rows' display names, in table order
    {
        QStringList out;
        table().forEach([&out](QStringView, QStringView t) {
            if (!isArchivedCustomerText(t) && fieldSepCount(t) == 8) out << t.left(t.indexOf(FieldSep)).toString();
            return true;
        });
        return out;
    }
    // The list shows exactly the table's current rows, in order, under their keys.
    void checkListMatchesTable()
    {
        QStringList keys, shownKeys;
        table().forEach([&](QStringView k, QStringView t) {
            if (!isArchivedCustomerText(t) && fieldSepCount(t) == 8) keys << k.toString();
            return true;
        });
        for (int i = 0; i < cp()->rowCount(); ++i) shownKeys << list()->topLevelItem(i)->data(0, Qt::UserRole).toString();
        QCOMPARE(rowTexts(list()), tableNames());
        QCOMPARE(shownKeys, keys);
    }
    void open(const QList<DbCustomer> &customers, const QList<DbRecord> &records = {}, const char *recall = "1")
    {
        discard(m_w);
        writeDatabase(m_box.db, customers, {}, records);
        settings::write("BrowseRecall", "LastViewedCustomer", recall);
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

private slots:
    void init()
    {
        m_answers = std::make_unique<Answerer>();
        settings::putStoredSetting("CheckToConfirmEdits", "True");
    }
    void cleanup() { discard(m_w); }

    // From an empty panel to four customers; edits, undo, apply.
    void customerLife()
    {
        open({});
        QCOMPARE(buttons(), "&New Customer / -&Delete Existing");
        QTest::mouseClick(field(2), Qt::LeftButton);  // a click into the empty panel starts an entry
        QCOMPARE(buttons(), "-&Add New / &Cancel New");
        QVERIFY(btn("cmdPrint")->isHidden());
        for (int i = 0; i < 8; ++i) QVERIFY(hasInfoColour(field(i)));

        QTest::keyClicks(field(1), "Smith");  // a last name alone is not enough
        QCOMPARE(buttons(), "-&Add New / &Cancel New");
        QVERIFY(!hasInfoColour(field(1)) && hasInfoColour(field(0)));
        QTest::keyClicks(field(0), "Jo");
        QCOMPARE(buttons(), "&Add New / &Cancel New");
        QTest::keyClicks(field(2), QString(40, 'a'));  // typing stops at the field's length
        QTest::keyClicks(field(5), QString(130, 'e'));
        QTest::keyClicks(field(7), "gate\rdog");
        click(btn("cmdAddNew"));
        QCOMPARE(m_answers->seen.size(), 0);
        QCOMPARE(table().key(1), "1k");
        QCOMPARE(splitFields(table().text(1)),
                 QStringList({"Smith, Jo", "Jo", "Smith", QString(32, 'a'), "", "", QString(128, 'e'), "", "gate\ndog"}));
        QCOMPARE(currentText(list()), "Smith, Jo");
        QCOMPARE(buttons(), "&New Customer / &Delete Existing");
        QVERIFY(btn("cmdPrint")->isVisible() && m_w->databaseChanged() && !hasInfoColour(field(0)));

        // A first name alone is the display name; new rows land at their place.
        newCustomer("Sam");
        newCustomer("Al", "Zane");
        newCustomer("Al", "Brown");
        const QStringList names{"Brown, Al", "Sam", "Smith, Jo", "Zane, Al"};
        QCOMPARE(rowTexts(list()), names);
        checkListMatchesTable();
        QCOMPARE(currentKey(list()), "4k");

        // Cancelling an entry selects the row selected before it.
        select("Smith, Jo");
        click(btn("cmdAddNew"));
        QVERIFY(list()->selectedItems().isEmpty() && cp()->fieldText(0).isEmpty());
        click(btn("cmdUndo"));
        QCOMPARE(currentText(list()), "Smith, Jo");
        QCOMPARE(cp()->fieldText(0), "Jo");
        QCOMPARE(buttons(), "&New Customer / &Delete Existing");

        // Typing is an edit; typed back to the stored text it is none.
        QTest::keyClicks(field(6), "55");
        QCOMPARE(buttons(), "Apply &Edit / &Undo Edit");
        QTest::keyClick(field(6), Qt::Key_Backspace);
        QTest::keyClick(field(6), Qt::Key_Backspace);
        QCOMPARE(buttons(), "&New Customer / -&Undo Edit");
        QTest::keyClicks(field(6), "9");
        click(btn("cmdUndo"));
        QCOMPARE(cp()->fieldText(6), "");
        QCOMPARE(buttons(), "&New Customer / &Delete Existing");

        // Apply asks; Cancel refills the fields, OK moves the row, keeps the CID.
        retype(field(1), "Adams");
        click(btn("cmdAddNew"));
        QCOMPARE(m_answers->last().title, "Save Changes to Existing Customer???");
        QCOMPARE(m_answers->last().text, "Are you sure you want to change the details on this existing customer?");
        QCOMPARE(m_answers->last().buttons, QMessageBox::Ok | QMessageBox::Cancel);
        QCOMPARE(m_answers->last().icon, QMessageBox::Warning);
        QCOMPARE(cp()->fieldText(1), "Smith");
        QCOMPARE(tableNames(), names);
        m_answers->answer = QMessageBox::Ok;
        retype(field(1), "Adams");
        click(btn("cmdAddNew"));
        const QStringList moved{"Adams, Jo", "Brown, Al", "Sam", "Zane, Al"};
        QCOMPARE(rowTexts(list()), moved);
        QCOMPARE(tableNames(), moved);
        QCOMPARE(currentKey(list()), "1k");
        QCOMPARE(splitFields(table().textOf(u"1k")).at(8), "gate\ndog");
        QCOMPARE(buttons(), "&New Customer / &Delete Existing");

        // The down key shows the row it lands on, Tag first.
        QTest::keyClick(list(), Qt::Key_Down);
        QCOMPARE(cp()->fieldText(1), "Brown");
        QCOMPARE(field(1)->property("Tag").toString(), "Brown");
    }

    // Delete removes an unbilled customer, archives a billed one.
    void deleteAndArchive()
    {
        open({{1, "Ann", "Lee"}, {2, "Bob", "Moss"}, {3, "Cy", "Pike"}, {4, "Di", "Ross"}}, {{4, {"1"}}});
        clickRow(list(), 4);
        click(btn("cmdUndo"));  // Cancel at the question
        QCOMPARE(m_answers->last().title, "Delete Existing Customer???");
        QCOMPARE(m_answers->last().text, "Are you sure you want to delete this customer from the database?");
        QCOMPARE(cp()->rowCount(), 4);

        m_answers->answer = QMessageBox::Ok;
        click(btn("cmdUndo"));  // Di is billed: archived, behind all others
        QCOMPARE(statusText(), "Entry archived.");
        QVERIFY(FrmChecking::existing()->cmdOK()->isEnabled());
        QCOMPARE(FrmChecking::existing()->staChecking()->value(), 100);
        QCOMPARE(table().key(4), "4k");
        QVERIFY(table().text(4).startsWith(ArchiveMark + "Ross, Di"));
        QCOMPARE(currentText(list()), "Pike, Cy");  // the row now last
        QCOMPARE(cp()->fieldText(0), "Cy");

        select("Moss, Bob");
        click(btn("cmdUndo"));
        QCOMPARE(statusText(), "Entry deleted.");
        QVERIFY(!table().contains(u"2k"));
        QCOMPARE(rowTexts(list()), QStringList({"Lee, Ann", "Pike, Cy"}));
        QCOMPARE(currentText(list()), "Pike, Cy");

        // An archived name raises no question; its number isn't given again.
        const int questions = m_answers->seen.size();
        newCustomer("Di", "Ross");
        QCOMPARE(m_answers->seen.size(), questions);
        QCOMPARE(currentKey(list()), "5k");

        while (cp()->rowCount() > 0) click(btn("cmdUndo"));
        for (int i = 0; i < 8; ++i) QVERIFY(cp()->fieldText(i).isEmpty() && cp()->fieldTag(i).isEmpty());
        QCOMPARE(buttons(), "&New Customer / -&Cancel New");
        QVERIFY(btn("cmdPrint")->isHidden());
        QCOMPARE(table().count(), 1);
    }

    // The duplicate question compares display names exactly.
    void duplicateNames()
    {
        open({{1, "Jo", "Smith"}, {2, "Kim", "Yu"}});
        click(btn("cmdAddNew"));
        QTest::keyClicks(field(1), "Smith");
        QTest::keyClicks(field(0), "Jo");
        click(btn("cmdAddNew"));
        QCOMPARE(m_answers->last().title, "Duplicate Name Found");
        QCOMPARE(m_answers->last().text,
                 "A customer with the exact same first name and last name was found.\n\n"
                 "Press OK if this is a different customer who happens to share the exact same name,\n"
                 "otherwise press Cancel and edit the original entry for this customer.");
        QCOMPARE(m_answers->last().buttons, QMessageBox::Ok | QMessageBox::Cancel);
        QCOMPARE(table().count(), 2);  // Cancel: still in the entry
        QCOMPARE(buttons(), "&Add New / &Cancel New");

        retype(field(1), "smith");  // other case, or a blank more: no duplicate
        click(btn("cmdAddNew"));
        newCustomer("Jo ", "Smith");
        QCOMPARE(m_answers->seen.size(), 1);
        // OK: a second Jo Smith, who sorts before the first (no address), and
        // stands before it in the list too.
        settings::putStoredSetting("CheckToConfirmEdits", "False");
        select("Smith, Jo");
        QTest::keyClicks(field(2), "Z St");
        click(btn("cmdAddNew"));
        m_answers->answer = QMessageBox::Ok;
        newCustomer("Jo", "Smith");
        QCOMPARE(m_answers->seen.size(), 2);
        QCOMPARE(currentKey(list()), "5k");
        QCOMPARE(rowTexts(list()).count("Smith, Jo"), 2);
        checkListMatchesTable();

        // An edit into a taken name asks too; Cancel keeps the stored row.
        m_answers->answer = QMessageBox::Cancel;
        select("Yu, Kim");
        retype(field(0), "Jo");
        retype(field(1), "Smith");
        click(btn("cmdAddNew"));
        QCOMPARE(m_answers->last().title, "Duplicate Name Found");
        QCOMPARE(splitFields(table().textOf(u"2k")).at(0), "Yu, Kim");
        QCOMPARE(buttons(), "Apply &Edit / &Undo Edit");
        retype(field(0), "Kim");  // its own name is no duplicate
        retype(field(1), "Yu");
        QTest::keyClicks(field(6), "0123");
        click(btn("cmdAddNew"));
        QCOMPARE(m_answers->seen.size(), 3);
        QCOMPARE(splitFields(table().textOf(u"2k")).at(7), "0123");
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
        QVERIFY(box->isVisible() && box->text().isEmpty());
        QTRY_COMPARE(QApplication::focusWidget(), box);
        QCOMPARE(currentText(list()), "Ross, Di");  // an empty box finds nothing
        QCOMPARE(cp()->fieldText(6), "");  // but refills the fields

        QTest::keyClicks(box, "mo");
        QCOMPARE(currentText(list()), "Moore, Cy");
        QCOMPARE(cp()->fieldText(0), "Cy");
        QTest::keyClicks(box, "ssx");  // "moss" finds Bob, "mossx" nothing
        QCOMPARE(currentText(list()), "Moss, Bob");
        QCOMPARE(cp()->fieldText(0), "Bob");
        retype(box, "LEE");
        QCOMPARE(currentText(list()), "Lee, Ann");

        click(btn("cmdSearch"));
        QCOMPARE(label->text(), "List of Customers:");
        QVERIFY(box->isHidden());
        QCOMPARE(currentText(list()), "Lee, Ann");
        QCOMPARE(QApplication::focusWidget(), list());
    }

    // CheckToConfirmEdits: exactly "False" for an edit, "false" in any case
    // for a delete.
    void confirmationSetting()
    {
        open({{1, "Ann", "Lee"}, {2, "Bob", "Moss"}, {3, "Cy", "Pike"}});
        m_answers->answer = QMessageBox::Ok;
        settings::putStoredSetting("CheckToConfirmEdits", "False");
        QTest::keyClicks(field(2), "1 Main St");
        click(btn("cmdAddNew"));
        click(btn("cmdUndo"));
        QCOMPARE(m_answers->seen.size(), 0);
        QVERIFY(!table().contains(u"1k"));

        settings::putStoredSetting("CheckToConfirmEdits", "false");
        QTest::keyClicks(field(2), "2 High St");
        click(btn("cmdAddNew"));
        QCOMPARE(m_answers->seen.size(), 1);
        click(btn("cmdUndo"));
        QCOMPARE(m_answers->seen.size(), 1);
        QVERIFY(!table().contains(u"2k"));
    }

    // The row selected at start comes from LastViewedCustomer.
    void listRecall()
    {
        QList<DbCustomer> seven;
        for (int i = 1; i <= 7; ++i) seven.append({i, QStringLiteral("N%1").arg(i), QStringLiteral("L%1").arg(i)});
        const QString longFirst = "N4" + QString(38, 'x');  // longer than typing allows
        seven[3].first = longFirst;
        open(seven, {}, "3");
        QCOMPARE(cp()->selectedPosition(), 3);
        QCOMPARE(cp()->fieldText(0), "N3");
        settings::write("BrowseRecall", "LastViewedCustomer", "9");
        cp()->refreshCustomerList();
        QCOMPARE(cp()->selectedPosition(), 1);

        // A long stored name shows whole and is no edit; the next is limited again.
        clickRow(list(), 4);
        QCOMPARE(cp()->fieldText(0), longFirst);
        QCOMPARE(buttons(), "&New Customer / &Delete Existing");
        clickRow(list(), 5);
        QCOMPARE(qobject_cast<QLineEdit *>(field(0))->maxLength(), 32);

        // Only archived customers: an empty list, nothing selected.
        open({{1, "Old", "Gone", false}, {2, "Older", "Gone", false}});
        QCOMPARE(cp()->rowCount(), 0);
        QCOMPARE(cp()->selectedPosition(), 0);

        // Typing into it without a click is an edit of nobody: applying keeps
        // the typing as a new customer, once it has a first name.
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

    // A refresh shows exactly the table's current rows, in order and under
    // their keys, whatever changed behind the list: a few rows or many.
    void refreshFollowsTable()
    {
        QList<DbCustomer> start;
        for (int i = 1; i <= 40; ++i) start.append({i, "F", QStringLiteral("L%1").arg(i, 3, 10, QLatin1Char('0'))});
        open(start);
        auto row = [](const QString &last) { return joinFields({last + ", F", "F", last, "", "", "", "", "", ""}); };
        table().remove(u"1k");
        table().remove(u"40k");
        table().add("41k", row("L020a"));
        table().add("42k", row("A"));
        table().add("43k", "Broken" + QString(FieldSep));
        const QString archived = ArchiveMark + table().textOf(u"7k");
        table().remove(u"7k");
        table().add("7k", archived);
        table().setTextOf(u"9k", row("L009b"));  // renamed in place
        const QString a = table().textOf(u"2k"), b = table().textOf(u"3k");
        table().remove(u"2k");  // two rows trade places
        table().remove(u"3k");
        table().add("2k", b);
        table().add("3k", a);
        cp()->refreshCustomerList();
        checkListMatchesTable();
        QCOMPARE(cp()->rowCount(), 39);

        for (int i = 100; i < 500; ++i) table().add(QStringLiteral("%1k").arg(i), row(QStringLiteral("K%1").arg(i)));
        for (int i = 10; i < 30; ++i) table().remove(QStringLiteral("%1k").arg(i));
        cp()->refreshCustomerList();
        checkListMatchesTable();
        table().clear();
        cp()->refreshCustomerList();
        checkListMatchesTable();
    }

    // What the panel did is in the file after a save and back after a restart.
    void saveAndReload()
    {
        open({{1, "Ann", "Lee"}, {2, "Bob", "Moss"}, {3, "Cy", "Pike"}}, {{3, {"1"}}});
        settings::putStoredSetting("CheckToConfirmEdits", "False");
        click(btn("cmdAddNew"));
        QTest::keyClicks(field(1), "Adams");
        QTest::keyClicks(field(0), "Eve");
        QTest::keyClicks(field(7), "back\rdoor");
        click(btn("cmdAddNew"));
        select("Lee, Ann");
        retype(field(1), "Zeller");
        click(btn("cmdAddNew"));
        select("Moss, Bob");
        click(btn("cmdUndo"));  // removed
        select("Pike, Cy");
        click(btn("cmdUndo"));  // archived
        QVERIFY(m_w->saveDatabase());

        const QByteArray bytes = fileBytes(m_box.db);
        QVERIFY(bytes.contains("<Customer CID=\"4\">\r\n\t\t\t<FName>Eve</FName>\r\n\t\t\t<LName>Adams</LName>\r\n"
                               "\t\t\t<Notes>back\r\ndoor</Notes>"));
        QVERIFY(bytes.contains("<Customer CID=\"1\">\r\n\t\t\t<FName>Ann</FName>\r\n\t\t\t<LName>Zeller</LName>"));
        QVERIFY(!bytes.contains("CID=\"2\""));
        QVERIFY(bytes.contains("<FName>Cy</FName>\r\n\t\t\t<LName>Pike</LName>\r\n\t\t\t<Current>No</Current>"));

        discard(m_w);
        settings::write("BrowseRecall", "LastViewedCustomer", "2");
        m_w = openWindow(0);
        QCOMPARE(rowTexts(list()), QStringList({"Adams, Eve", "Zeller, Ann"}));
        QCOMPARE(currentText(list()), "Zeller, Ann");
        QVERIFY(isArchivedCustomerText(table().textOf(u"3k")));
        clickRow(list(), 1);
        QCOMPARE(cp()->fieldText(7), "backdoor");  // the reader joins a value's lines
        QCOMPARE(buttons(), "&New Customer / &Delete Existing");
    }
};

QTEST_MAIN(TstCustomerPanel)
#include "tst_customerpanel.moc"
