// The Customers panel driven through its controls inside the main window: a
// customer's life from new entry to archive, duplicate names, the search box,
// the confirmation setting, the recall of the last viewed row, and what
// reaches the file.
#include "panelharness.h"

#include "customers/customerpanel.h"
#include "database/database.h"
#include "database/rows.h"

using namespace qor;
using namespace qor::testing;

namespace {

CustomerPanel *cp(FrmQOR &w) { return w.customerPanel(); }
QAbstractButton *btn(FrmQOR &w, const char *name) { return cp(w)->control<QAbstractButton>(QString::fromLatin1(name)); }
QWidget *field(FrmQOR &w, int i) { return cp(w)->controlWidget(QStringLiteral("txtField(%1)").arg(i)); }
QLineEdit *line(FrmQOR &w, int i) { return qobject_cast<QLineEdit *>(field(w, i)); }
QTreeWidget *visList(FrmQOR &w) { return cp(w)->control<QTreeWidget>(QStringLiteral("lvwCustomersVis")); }

QString selectedText(FrmQOR &w)
{
    QTreeWidgetItem *it = visList(w)->currentItem();
    return it ? it->text(0) : QString();
}
QString selectedKey(FrmQOR &w)
{
    QTreeWidgetItem *it = visList(w)->currentItem();
    return it ? it->data(0, Qt::UserRole).toString() : QString();
}

// Display names of the table's current rows, in table order.
QStringList tableNames(FrmQOR &w)
{
    QStringList out;
    w.db().lvwCustomers.forEach([&out](QStringView, QStringView text) {
        if (!isArchivedCustomerText(text)) out << text.left(text.indexOf(FieldSep)).toString();
        return true;
    });
    return out;
}

void typeNewCustomer(FrmQOR &w, const QString &first, const QString &last = {})
{
    click(btn(w, "cmdAddNew"));
    QCOMPARE(btn(w, "cmdAddNew")->text(), QStringLiteral("&Add New"));
    if (!last.isEmpty()) QTest::keyClicks(field(w, 1), last);
    if (!first.isEmpty()) QTest::keyClicks(field(w, 0), first);
}

void setConfirm(const QString &value)
{
    settings::putStoredSetting(QStringLiteral("CheckToConfirmEdits"), value);
}

}  // namespace

class TstCustomerPanel : public QObject {
    Q_OBJECT
    std::unique_ptr<Sandbox> m_box;
    std::unique_ptr<ModalWatchdog> m_watchdog;
    std::unique_ptr<FrmQOR> m_w;

    void startWith(const QList<DbCustomer> &customers, const QList<DbRecord> &records = {})
    {
        discard(m_w);
        writeDatabase(m_box->dbPath(), customers, {DbItem{1, QStringLiteral("Soap"), QStringLiteral("$1.00")}}, records);
        settings::write(QStringLiteral("BrowseRecall"), QStringLiteral("LastViewedCustomer"), QStringLiteral("1"));
        m_w = openWindow(0);
    }

private slots:
    void initTestCase()
    {
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
        m_box = std::make_unique<Sandbox>();
        QVERIFY(m_box->isValid());
        m_watchdog = std::make_unique<ModalWatchdog>();
    }
    void init() { setConfirm(QStringLiteral("True")); }
    void cleanup()
    {
        discard(m_w);
        QCOMPARE(m_watchdog->takeClosed(), 0);
    }

    // From an empty panel to three customers, the states of the buttons and
    // fields along the way, and an edit that moves a row.
    void customerLife()
    {
        startWith({});
        FrmQOR &w = *m_w;
        QCOMPARE(cp(w)->rowCount(), 0);
        QCOMPARE(btn(w, "cmdAddNew")->text(), QStringLiteral("&New Customer"));
        QVERIFY(btn(w, "cmdUndo")->isHidden());

        // A click into a field of the empty panel starts a new entry.
        QTest::mouseClick(field(w, 2), Qt::LeftButton);
        QVERIFY(btn(w, "cmdAddNew")->isHidden());
        QCOMPARE(btn(w, "cmdAddNew")->text(), QStringLiteral("&Add New"));
        QCOMPARE(btn(w, "cmdUndo")->text(), QStringLiteral("&Cancel New"));
        QVERIFY(!btn(w, "cmdUndo")->isHidden());
        QVERIFY(btn(w, "cmdPrint")->isHidden());
        for (int i = 0; i < 8; ++i) QCOMPARE(baseColour(field(w, i)), infoColour());

        // A last name alone is not enough.
        QTest::keyClicks(field(w, 1), QStringLiteral("Smith"));
        QVERIFY(btn(w, "cmdAddNew")->isHidden());
        QCOMPARE(baseColour(field(w, 1)), windowColour());
        QCOMPARE(baseColour(field(w, 0)), infoColour());
        QTest::keyClicks(field(w, 0), QStringLiteral("Jo"));
        QVERIFY(!btn(w, "cmdAddNew")->isHidden());
        QTest::keyClick(field(w, 0), Qt::Key_Backspace);
        QTest::keyClick(field(w, 0), Qt::Key_Backspace);
        QVERIFY(btn(w, "cmdAddNew")->isHidden());
        QCOMPARE(baseColour(field(w, 0)), infoColour());
        QTest::keyClicks(field(w, 0), QStringLiteral("Jo"));

        // Typing stops at the field's length; notes keep their line breaks.
        QTest::keyClicks(field(w, 2), QString(40, u'a'));
        QCOMPARE(line(w, 2)->text().size(), 32);
        QTest::keyClicks(field(w, 5), QString(130, u'e'));
        QCOMPARE(line(w, 5)->text().size(), 128);
        QTest::keyClicks(field(w, 7), QStringLiteral("gate code"));
        QTest::keyClick(field(w, 7), Qt::Key_Return);
        QTest::keyClicks(field(w, 7), QStringLiteral("dog"));

        {
            ModalAnswerer answers(QMessageBox::Cancel);
            click(btn(w, "cmdAddNew"));
            QCOMPARE(answers.count(), 0);
        }
        QCOMPARE(w.db().lvwCustomers.count(), 1);
        QCOMPARE(w.db().lvwCustomers.key(1), QStringLiteral("1k"));
        const QStringList f = splitFields(w.db().lvwCustomers.text(1));
        QCOMPARE(f.size(), 9);
        QCOMPARE(f.at(0), QStringLiteral("Smith, Jo"));
        QCOMPARE(f.at(1), QStringLiteral("Jo"));
        QCOMPARE(f.at(3), QString(32, u'a'));
        QCOMPARE(f.at(8), QStringLiteral("gate code\ndog"));
        QCOMPARE(selectedText(w), QStringLiteral("Smith, Jo"));
        QCOMPARE(btn(w, "cmdAddNew")->text(), QStringLiteral("&New Customer"));
        QCOMPARE(btn(w, "cmdUndo")->text(), QStringLiteral("&Delete Existing"));
        QVERIFY(!btn(w, "cmdPrint")->isHidden());
        QVERIFY(w.databaseChanged());
        for (int i = 0; i < 8; ++i) QCOMPARE(baseColour(field(w, i)), windowColour());

        // A first name alone is the display name, without a comma; each new
        // row lands at its sorted place.
        typeNewCustomer(w, QStringLiteral("Sam"));
        click(btn(w, "cmdAddNew"));
        typeNewCustomer(w, QStringLiteral("Al"), QStringLiteral("Zane"));
        click(btn(w, "cmdAddNew"));
        typeNewCustomer(w, QStringLiteral("Al"), QStringLiteral("Brown"));
        click(btn(w, "cmdAddNew"));
        const QStringList expected{QStringLiteral("Brown, Al"), QStringLiteral("Sam"), QStringLiteral("Smith, Jo"),
                                   QStringLiteral("Zane, Al")};
        QCOMPARE(rowTexts(visList(w)), expected);
        QCOMPARE(tableNames(w), expected);
        QCOMPARE(selectedText(w), QStringLiteral("Brown, Al"));
        QCOMPARE(selectedKey(w), QStringLiteral("4k"));

        // Cancelling a new entry goes back to the row that was selected.
        clickRow(visList(w), 3);
        click(btn(w, "cmdAddNew"));
        QCOMPARE(line(w, 0)->text(), QString());
        QVERIFY(visList(w)->selectedItems().isEmpty());
        click(btn(w, "cmdUndo"));
        QCOMPARE(selectedText(w), QStringLiteral("Smith, Jo"));
        QCOMPARE(line(w, 0)->text(), QStringLiteral("Jo"));
        QCOMPARE(btn(w, "cmdAddNew")->text(), QStringLiteral("&New Customer"));
        QCOMPARE(btn(w, "cmdUndo")->text(), QStringLiteral("&Delete Existing"));

        // Typing into a shown customer is an edit; typing it back is not.
        QTest::keyClicks(field(w, 6), QStringLiteral("55"));
        QCOMPARE(btn(w, "cmdAddNew")->text(), QStringLiteral("Apply &Edit"));
        QCOMPARE(btn(w, "cmdUndo")->text(), QStringLiteral("&Undo Edit"));
        QTest::keyClick(field(w, 6), Qt::Key_Backspace);
        QCOMPARE(btn(w, "cmdAddNew")->text(), QStringLiteral("Apply &Edit"));
        QTest::keyClick(field(w, 6), Qt::Key_Backspace);
        QCOMPARE(btn(w, "cmdAddNew")->text(), QStringLiteral("&New Customer"));
        QVERIFY(btn(w, "cmdUndo")->isHidden());

        // Undo refills the fields from the table.
        QTest::keyClicks(field(w, 6), QStringLiteral("999"));
        click(btn(w, "cmdUndo"));
        QCOMPARE(line(w, 6)->text(), QString());
        QCOMPARE(btn(w, "cmdUndo")->text(), QStringLiteral("&Delete Existing"));
        QVERIFY(!btn(w, "cmdUndo")->isHidden());

        // Cancelling the confirmation throws the edit away.
        {
            ModalAnswerer answers(QMessageBox::Cancel);
            retype(field(w, 1), QStringLiteral("Adams"));
            click(btn(w, "cmdAddNew"));
            QCOMPARE(answers.count(), 1);
            QCOMPARE(answers.last().title, QStringLiteral("Save Changes to Existing Customer???"));
            QCOMPARE(answers.last().text,
                     QStringLiteral("Are you sure you want to change the details on this existing customer?"));
            QCOMPARE(answers.last().icon, QMessageBox::Warning);
            QCOMPARE(answers.last().buttons, QMessageBox::Ok | QMessageBox::Cancel);
        }
        QCOMPARE(line(w, 1)->text(), QStringLiteral("Smith"));
        QCOMPARE(tableNames(w), expected);

        // Applying keeps the number and moves the row to its new place.
        {
            ModalAnswerer answers(QMessageBox::Ok);
            retype(field(w, 1), QStringLiteral("Adams"));
            click(btn(w, "cmdAddNew"));
            QCOMPARE(answers.count(), 1);
        }
        const QStringList moved{QStringLiteral("Adams, Jo"), QStringLiteral("Brown, Al"), QStringLiteral("Sam"),
                                QStringLiteral("Zane, Al")};
        QCOMPARE(rowTexts(visList(w)), moved);
        QCOMPARE(tableNames(w), moved);
        QCOMPARE(selectedText(w), QStringLiteral("Adams, Jo"));
        QCOMPARE(selectedKey(w), QStringLiteral("1k"));
        QCOMPARE(splitFields(w.db().lvwCustomers.textOf(u"1k")).at(8), QStringLiteral("gate code\ndog"));
        QCOMPARE(btn(w, "cmdAddNew")->text(), QStringLiteral("&New Customer"));
        QCOMPARE(btn(w, "cmdUndo")->text(), QStringLiteral("&Delete Existing"));

        // Up and down in the list show the row they land on.
        visList(w)->setFocus();
        QTest::keyClick(visList(w), Qt::Key_Down);
        QCOMPARE(selectedText(w), QStringLiteral("Brown, Al"));
        QCOMPARE(line(w, 1)->text(), QStringLiteral("Brown"));
        QCOMPARE(cp(w)->fieldTag(1), QStringLiteral("Brown"));
        QCOMPARE(field(w, 1)->property("Tag").toString(), QStringLiteral("Brown"));
    }

    // Delete removes a customer nobody billed, archives one with a record,
    // and the selection and buttons follow.
    void deleteAndArchive()
    {
        startWith({{1, QStringLiteral("Ann"), QStringLiteral("Lee")},
                   {2, QStringLiteral("Bob"), QStringLiteral("Moss")},
                   {3, QStringLiteral("Cy"), QStringLiteral("Pike")},
                   {4, QStringLiteral("Di"), QStringLiteral("Ross")}},
                  {{QStringLiteral("Jan"), 4, {QStringLiteral("1")}}});
        FrmQOR &w = *m_w;
        ModalAnswerer answers(QMessageBox::Cancel);

        // Cancel at the question leaves everything, edit included, as stored.
        clickRow(visList(w), 4);
        QTest::keyClicks(field(w, 2), QStringLiteral("typed"));
        click(btn(w, "cmdUndo"));  // "&Undo Edit"
        QCOMPARE(answers.count(), 0);
        click(btn(w, "cmdUndo"));  // "&Delete Existing"
        QCOMPARE(answers.count(), 1);
        QCOMPARE(answers.last().title, QStringLiteral("Delete Existing Customer???"));
        QCOMPARE(answers.last().text, QStringLiteral("Are you sure you want to delete this customer from the database?"));
        QCOMPARE(answers.last().buttons, QMessageBox::Ok | QMessageBox::Cancel);
        QCOMPARE(cp(w)->rowCount(), 4);
        QCOMPARE(btn(w, "cmdUndo")->text(), QStringLiteral("&Delete Existing"));
        answers.setAnswer(QMessageBox::Ok);

        // Di has a record: her row stays, marked, behind all others; the row
        // now last is selected.
        click(btn(w, "cmdUndo"));
        FrmChecking *checking = FrmChecking::existing();
        QVERIFY(checking);
        QCOMPARE(checking->lblStatus()->text(), QStringLiteral("Entry archived."));
        QVERIFY(checking->cmdOK()->isEnabled());
        QCOMPARE(checking->staChecking()->value(), 100);
        const KeyedList &t = w.db().lvwCustomers;
        QCOMPARE(t.count(), 4);
        QCOMPARE(t.key(t.count()), QStringLiteral("4k"));
        QVERIFY(t.text(t.count()).startsWith(ArchiveMark + QStringLiteral("Ross, Di")));
        QCOMPARE(cp(w)->rowCount(), 3);
        QCOMPARE(selectedText(w), QStringLiteral("Pike, Cy"));
        QCOMPARE(line(w, 0)->text(), QStringLiteral("Cy"));
        QVERIFY(w.databaseChanged());

        // Bob has none: his row goes.
        clickRow(visList(w), 2);
        QCOMPARE(selectedText(w), QStringLiteral("Moss, Bob"));
        click(btn(w, "cmdUndo"));
        QCOMPARE(FrmChecking::existing()->lblStatus()->text(), QStringLiteral("Entry deleted."));
        QCOMPARE(w.db().lvwCustomers.contains(u"2k"), false);
        QCOMPARE(rowTexts(visList(w)), (QStringList{QStringLiteral("Lee, Ann"), QStringLiteral("Pike, Cy")}));
        QCOMPARE(selectedText(w), QStringLiteral("Pike, Cy"));

        // An archived name is in no list, so no duplicate question; the
        // archived customer's number is not given out again.
        answers.reset();
        typeNewCustomer(w, QStringLiteral("Di"), QStringLiteral("Ross"));
        click(btn(w, "cmdAddNew"));
        QCOMPARE(answers.count(), 0);
        QCOMPARE(selectedKey(w), QStringLiteral("5k"));

        // Deleting every row leaves the empty panel.
        while (cp(w)->rowCount() > 0) click(btn(w, "cmdUndo"));
        for (int i = 0; i < 8; ++i) {
            QCOMPARE(cp(w)->fieldText(i), QString());
            QCOMPARE(cp(w)->fieldTag(i), QString());
        }
        QVERIFY(btn(w, "cmdUndo")->isHidden());
        QCOMPARE(btn(w, "cmdUndo")->text(), QStringLiteral("&Cancel New"));
        QVERIFY(btn(w, "cmdPrint")->isHidden());
        QCOMPARE(btn(w, "cmdAddNew")->text(), QStringLiteral("&New Customer"));
        QCOMPARE(w.db().lvwCustomers.count(), 1);  // Di's archived row
    }

    // The duplicate question compares display names exactly, on add and on
    // apply, and Cancel changes nothing.
    void duplicateNames()
    {
        startWith({{1, QStringLiteral("Jo"), QStringLiteral("Smith")}, {2, QStringLiteral("Kim"), QStringLiteral("Yu")}});
        FrmQOR &w = *m_w;
        ModalAnswerer answers(QMessageBox::Cancel);

        typeNewCustomer(w, QStringLiteral("Jo"), QStringLiteral("Smith"));
        click(btn(w, "cmdAddNew"));
        QCOMPARE(answers.count(), 1);
        QCOMPARE(answers.last().title, QStringLiteral("Duplicate Name Found"));
        QCOMPARE(answers.last().text,
                 QStringLiteral("A customer with the exact same first name and last name was found.\n\n"
                                "Press OK if this is a different customer who happens to share the exact same name,\n"
                                "otherwise press Cancel and edit the original entry for this customer."));
        QCOMPARE(answers.last().buttons, QMessageBox::Ok | QMessageBox::Cancel);
        QCOMPARE(answers.last().icon, QMessageBox::Warning);
        QCOMPARE(w.db().lvwCustomers.count(), 2);
        QCOMPARE(btn(w, "cmdAddNew")->text(), QStringLiteral("&Add New"));
        QCOMPARE(btn(w, "cmdUndo")->text(), QStringLiteral("&Cancel New"));
        QCOMPARE(line(w, 1)->text(), QStringLiteral("Smith"));

        // Other case, or a blank more, is another name.
        answers.reset();
        retype(field(w, 1), QStringLiteral("smith"));
        retype(field(w, 0), QStringLiteral("jo"));
        click(btn(w, "cmdAddNew"));
        typeNewCustomer(w, QStringLiteral("Jo "), QStringLiteral("Smith"));
        click(btn(w, "cmdAddNew"));
        QCOMPARE(answers.count(), 0);
        QCOMPARE(w.db().lvwCustomers.count(), 4);

        // OK makes a second customer of the same name under a new number.
        answers.setAnswer(QMessageBox::Ok);
        typeNewCustomer(w, QStringLiteral("Jo"), QStringLiteral("Smith"));
        click(btn(w, "cmdAddNew"));
        QCOMPARE(answers.count(), 1);
        QCOMPARE(selectedKey(w), QStringLiteral("5k"));
        QCOMPARE(rowTexts(visList(w)).count(QStringLiteral("Smith, Jo")), 2);
        QCOMPARE(tableNames(w), rowTexts(visList(w)));

        // Editing Kim Yu into Jo Smith asks; Cancel keeps the stored row and
        // leaves the edit in the fields.
        answers.reset();
        answers.setAnswer(QMessageBox::Cancel);
        setConfirm(QStringLiteral("False"));
        const int kim = rowTexts(visList(w)).indexOf(QStringLiteral("Yu, Kim")) + 1;
        clickRow(visList(w), kim);
        retype(field(w, 0), QStringLiteral("Jo"));
        retype(field(w, 1), QStringLiteral("Smith"));
        click(btn(w, "cmdAddNew"));
        QCOMPARE(answers.count(), 1);
        QCOMPARE(answers.last().title, QStringLiteral("Duplicate Name Found"));
        QCOMPARE(splitFields(w.db().lvwCustomers.textOf(u"2k")).at(0), QStringLiteral("Yu, Kim"));
        QCOMPARE(line(w, 1)->text(), QStringLiteral("Smith"));
        QCOMPARE(btn(w, "cmdAddNew")->text(), QStringLiteral("Apply &Edit"));

        // Re-applying an unchanged name is no duplicate of itself.
        answers.reset();
        retype(field(w, 0), QStringLiteral("Kim"));
        retype(field(w, 1), QStringLiteral("Yu"));
        QTest::keyClicks(field(w, 6), QStringLiteral("0123"));
        click(btn(w, "cmdAddNew"));
        QCOMPARE(answers.count(), 0);
        QCOMPARE(splitFields(w.db().lvwCustomers.textOf(u"2k")).at(7), QStringLiteral("0123"));
    }

    // Search on, prefix finds without regard to case, a miss keeps the
    // selection, search off keeps what was found.
    void searchSession()
    {
        startWith({{1, QStringLiteral("Ann"), QStringLiteral("Lee")},
                   {2, QStringLiteral("Bob"), QStringLiteral("Moss")},
                   {3, QStringLiteral("Cy"), QStringLiteral("Moore")},
                   {4, QStringLiteral("Di"), QStringLiteral("Ross")}});
        FrmQOR &w = *m_w;
        QVERIFY(QTest::qWaitForWindowActive(&w));
        auto *label = cp(w)->control<QLabel>(QStringLiteral("lblCustomers"));
        auto *box = cp(w)->control<QLineEdit>(QStringLiteral("txtSearch"));
        QVERIFY(box->isHidden());

        clickRow(visList(w), 4);
        QTest::keyClicks(field(w, 6), QStringLiteral("typed"));  // unapplied
        click(btn(w, "cmdSearch"));
        QCOMPARE(label->text(), QStringLiteral("Search:"));
        QVERIFY(box->isVisible());
        QCOMPARE(box->text(), QString());
        QTRY_COMPARE(QApplication::focusWidget(), static_cast<QWidget *>(box));
        // The emptied box refilled the fields from the selected row.
        QCOMPARE(selectedText(w), QStringLiteral("Ross, Di"));
        QCOMPARE(line(w, 6)->text(), QString());

        QTest::keyClicks(box, QStringLiteral("mo"));
        QCOMPARE(selectedText(w), QStringLiteral("Moore, Cy"));
        QCOMPARE(line(w, 0)->text(), QStringLiteral("Cy"));
        QTest::keyClicks(box, QStringLiteral("ss"));  // "moss"
        QCOMPARE(selectedText(w), QStringLiteral("Moss, Bob"));
        QTest::keyClicks(box, QStringLiteral("x"));  // nothing begins with "mossx"
        QCOMPARE(selectedText(w), QStringLiteral("Moss, Bob"));
        QCOMPARE(line(w, 0)->text(), QStringLiteral("Bob"));
        retype(box, QStringLiteral("LEE"));
        QCOMPARE(selectedText(w), QStringLiteral("Lee, Ann"));
        QCOMPARE(line(w, 1)->text(), QStringLiteral("Lee"));

        click(btn(w, "cmdSearch"));
        QCOMPARE(label->text(), QStringLiteral("List of Customers:"));
        QVERIFY(box->isHidden());
        QCOMPARE(selectedText(w), QStringLiteral("Lee, Ann"));
        QCOMPARE(QApplication::focusWidget(), static_cast<QWidget *>(visList(w)));
    }

    // CheckToConfirmEdits is read exactly for an edit and in lower case for a
    // delete.
    void confirmationSetting()
    {
        startWith({{1, QStringLiteral("Ann"), QStringLiteral("Lee")},
                   {2, QStringLiteral("Bob"), QStringLiteral("Moss")},
                   {3, QStringLiteral("Cy"), QStringLiteral("Pike")}});
        FrmQOR &w = *m_w;
        ModalAnswerer answers(QMessageBox::Ok);

        setConfirm(QStringLiteral("False"));
        QTest::keyClicks(field(w, 2), QStringLiteral("1 Main St"));
        click(btn(w, "cmdAddNew"));
        QCOMPARE(answers.count(), 0);
        QCOMPARE(splitFields(w.db().lvwCustomers.textOf(u"1k")).at(3), QStringLiteral("1 Main St"));
        click(btn(w, "cmdUndo"));
        QCOMPARE(answers.count(), 0);
        QCOMPARE(w.db().lvwCustomers.contains(u"1k"), false);

        setConfirm(QStringLiteral("false"));
        QCOMPARE(selectedText(w), QStringLiteral("Moss, Bob"));
        QTest::keyClicks(field(w, 2), QStringLiteral("2 High St"));
        click(btn(w, "cmdAddNew"));
        QCOMPARE(answers.count(), 1);  // the edit asks: not exactly "False"
        click(btn(w, "cmdUndo"));
        QCOMPARE(answers.count(), 1);  // the delete doesn't: "false" in lower case
        QCOMPARE(w.db().lvwCustomers.contains(u"2k"), false);
    }

    // The row selected at start comes from LastViewedCustomer; archived rows
    // and rows with a wrong field count are not shown.
    void listRecall()
    {
        QList<DbCustomer> seven;
        for (int i = 1; i <= 7; ++i) seven.append({i, QStringLiteral("N%1").arg(i), QStringLiteral("Last%1").arg(i)});
        // Longer than typing allows: a file written elsewhere.
        const QString longFirst = QStringLiteral("N4") + QString(38, u'x');
        seven[3].first = longFirst;
        writeDatabase(m_box->dbPath(), seven);
        settings::write(QStringLiteral("BrowseRecall"), QStringLiteral("LastViewedCustomer"), QStringLiteral("3"));
        m_w = openWindow(0);
        QCOMPARE(cp(*m_w)->selectedPosition(), 3);
        QCOMPARE(selectedText(*m_w), QStringLiteral("Last3, N3"));
        QCOMPARE(cp(*m_w)->fieldText(0), QStringLiteral("N3"));

        // The long name shows whole and doesn't count as an edit; the next
        // customer is limited again.
        clickRow(visList(*m_w), 4);
        QCOMPARE(cp(*m_w)->fieldText(0), longFirst);
        QCOMPARE(btn(*m_w, "cmdAddNew")->text(), QStringLiteral("&New Customer"));
        QCOMPARE(btn(*m_w, "cmdUndo")->text(), QStringLiteral("&Delete Existing"));
        clickRow(visList(*m_w), 5);
        QCOMPARE(line(*m_w, 0)->maxLength(), 32);

        settings::write(QStringLiteral("BrowseRecall"), QStringLiteral("LastViewedCustomer"), QStringLiteral("9"));
        cp(*m_w)->refreshCustomerList();
        QCOMPARE(cp(*m_w)->selectedPosition(), 1);

        // A broken row stays in the table but out of the list.
        m_w->db().lvwCustomers.add(QStringLiteral("8k"), QStringLiteral("Broken") + FieldSep + QStringLiteral("x"));
        cp(*m_w)->refreshCustomerList();
        QCOMPARE(cp(*m_w)->rowCount(), 7);
        QVERIFY(!rowTexts(visList(*m_w)).contains(QStringLiteral("Broken")));
        discard(m_w);

        writeDatabase(m_box->dbPath(), {{1, QStringLiteral("Old"), QStringLiteral("Gone"), false},
                                        {2, QStringLiteral("Older"), QStringLiteral("Gone"), false}});
        settings::write(QStringLiteral("BrowseRecall"), QStringLiteral("LastViewedCustomer"), QStringLiteral("1"));
        m_w = openWindow(0);
        QCOMPARE(cp(*m_w)->rowCount(), 0);
        QCOMPARE(cp(*m_w)->selectedPosition(), 0);
        QCOMPARE(m_w->db().lvwCustomers.count(), 2);

        // Typing into the empty panel without clicking it first reads as an
        // edit of nobody: applying it keeps the typing as a new customer, or
        // says why it can't.
        ModalAnswerer answers(QMessageBox::Ok);
        QTest::keyClicks(field(*m_w, 1), QStringLiteral("Gray"));
        QCOMPARE(btn(*m_w, "cmdAddNew")->text(), QStringLiteral("Apply &Edit"));
        click(btn(*m_w, "cmdAddNew"));
        QCOMPARE(answers.count(), 2);
        QCOMPARE(answers.last().text, QStringLiteral("A customer needs at least a first name."));
        QCOMPARE(m_w->db().lvwCustomers.count(), 2);
        QCOMPARE(line(*m_w, 1)->text(), QStringLiteral("Gray"));
        QTest::keyClicks(field(*m_w, 0), QStringLiteral("Al"));
        click(btn(*m_w, "cmdAddNew"));
        QCOMPARE(m_w->db().lvwCustomers.count(), 3);
        QCOMPARE(selectedText(*m_w), QStringLiteral("Gray, Al"));
        QCOMPARE(selectedKey(*m_w), QStringLiteral("3k"));
    }

    // A refresh shows exactly the table's current rows, in table order and
    // under their keys, whatever changed behind the list: a few rows or many.
    void refreshFollowsTable()
    {
        QList<DbCustomer> start;
        for (int i = 1; i <= 40; ++i) start.append({i, QStringLiteral("F%1").arg(i), QStringLiteral("L%1").arg(i, 3, 10, QLatin1Char('0'))});
        writeDatabase(m_box->dbPath(), start);
        m_w = openWindow(0);
        FrmQOR &w = *m_w;
        KeyedList &t = w.db().lvwCustomers;
        auto row = [](const QString &first, const QString &last) {
            return joinFields({last + QStringLiteral(", ") + first, first, last, {}, {}, {}, {}, {}, {}});
        };
        auto check = [&] {
            QStringList keys, names;
            t.forEach([&](QStringView k, QStringView text) {
                if (fieldSepCount(text) == 8 && !isArchivedCustomerText(text)) {
                    keys << k.toString();
                    names << text.left(text.indexOf(FieldSep)).toString();
                }
                return true;
            });
            QStringList shownKeys;
            for (int i = 0; i < visList(w)->topLevelItemCount(); ++i)
                shownKeys << visList(w)->topLevelItem(i)->data(0, Qt::UserRole).toString();
            QCOMPARE(rowTexts(visList(w)), names);
            QCOMPARE(shownKeys, keys);
        };

        // A few changes: rows out, in, archived, one renamed in place.
        t.remove(u"1k");
        t.remove(u"40k");
        t.add(QStringLiteral("41k"), row(QStringLiteral("New"), QStringLiteral("L020a")));
        t.add(QStringLiteral("42k"), row(QStringLiteral("First"), QStringLiteral("A")));
        const QString old = t.textOf(u"7k");
        t.remove(u"7k");
        t.add(QStringLiteral("7k"), ArchiveMark + old);
        t.setTextOf(u"9k", row(QStringLiteral("F9"), QStringLiteral("L009b")));
        cp(w)->refreshCustomerList();
        check();
        QCOMPARE(cp(w)->rowCount(), 39);

        // Two rows trading places.
        const QString a = t.textOf(u"2k"), b = t.textOf(u"3k");
        t.remove(u"2k");
        t.remove(u"3k");
        t.add(QStringLiteral("2k"), b);
        t.add(QStringLiteral("3k"), a);
        cp(w)->refreshCustomerList();
        check();

        // Many changes at once.
        for (int i = 100; i < 500; ++i) t.add(QStringLiteral("%1k").arg(i), row(QStringLiteral("M"), QStringLiteral("K%1").arg(i)));
        for (int i = 10; i < 30; ++i) t.remove(QStringLiteral("%1k").arg(i));
        cp(w)->refreshCustomerList();
        check();
        t.clear();
        cp(w)->refreshCustomerList();
        check();
        QCOMPARE(cp(w)->selectedPosition(), 0);
    }

    // What the panel did is in the file after a save and back after a restart.
    void saveAndReload()
    {
        startWith({{1, QStringLiteral("Ann"), QStringLiteral("Lee")},
                   {2, QStringLiteral("Bob"), QStringLiteral("Moss")},
                   {3, QStringLiteral("Cy"), QStringLiteral("Pike")}},
                  {{QStringLiteral("Jan"), 3, {QStringLiteral("1")}}});
        FrmQOR &w = *m_w;
        setConfirm(QStringLiteral("False"));
        typeNewCustomer(w, QStringLiteral("Eve"), QStringLiteral("Adams"));
        QTest::keyClicks(field(w, 7), QStringLiteral("back door"));
        QTest::keyClick(field(w, 7), Qt::Key_Return);
        QTest::keyClicks(field(w, 7), QStringLiteral("after 5"));
        click(btn(w, "cmdAddNew"));
        clickRow(visList(w), rowTexts(visList(w)).indexOf(QStringLiteral("Lee, Ann")) + 1);
        retype(field(w, 1), QStringLiteral("Zeller"));
        click(btn(w, "cmdAddNew"));
        clickRow(visList(w), rowTexts(visList(w)).indexOf(QStringLiteral("Moss, Bob")) + 1);
        click(btn(w, "cmdUndo"));  // removed
        clickRow(visList(w), rowTexts(visList(w)).indexOf(QStringLiteral("Pike, Cy")) + 1);
        click(btn(w, "cmdUndo"));  // archived
        QVERIFY(w.saveDatabase());
        QVERIFY(!w.databaseChanged());

        const QByteArray bytes = fileBytes(m_box->dbPath());
        QVERIFY(bytes.contains("<Customer CID=\"4\">\r\n\t\t\t<FName>Eve</FName>\r\n\t\t\t<LName>Adams</LName>\r\n"));
        QVERIFY(bytes.contains("<Notes>back door\r\nafter 5</Notes>"));
        QVERIFY(bytes.contains("<Customer CID=\"1\">\r\n\t\t\t<FName>Ann</FName>\r\n\t\t\t<LName>Zeller</LName>"));
        QVERIFY(!bytes.contains("CID=\"2\""));
        QVERIFY(bytes.contains("<FName>Cy</FName>\r\n\t\t\t<LName>Pike</LName>\r\n\t\t\t<Current>No</Current>"));

        discard(m_w);
        settings::write(QStringLiteral("BrowseRecall"), QStringLiteral("LastViewedCustomer"), QStringLiteral("2"));
        m_w = openWindow(0);
        QCOMPARE(rowTexts(visList(*m_w)), (QStringList{QStringLiteral("Adams, Eve"), QStringLiteral("Zeller, Ann")}));
        QCOMPARE(selectedText(*m_w), QStringLiteral("Zeller, Ann"));
        QCOMPARE(m_w->db().lvwCustomers.count(), 3);
        QVERIFY(isArchivedCustomerText(m_w->db().lvwCustomers.textOf(u"3k")));
        clickRow(visList(*m_w), 1);
        // The reader joins the lines of a value that spans several.
        QCOMPARE(cp(*m_w)->fieldText(7), QStringLiteral("back doorafter 5"));
        // Nothing was typed: the reloaded customer reads as unedited.
        QCOMPARE(btn(*m_w, "cmdAddNew")->text(), QStringLiteral("&New Customer"));
        QCOMPARE(btn(*m_w, "cmdUndo")->text(), QStringLiteral("&Delete Existing"));
    }
};

QTEST_MAIN(TstCustomerPanel)
#include "tst_customerpanel.moc"
