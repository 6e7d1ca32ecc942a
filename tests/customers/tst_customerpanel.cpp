// SPDX-License-Identifier: GPL-3.0-or-later
// The Customers panel driven through its controls inside the main window,
// also as a keyboard user and a careful user drive it: every way of moving in
// the list, hot keys and the tab order.
#include "panelharness.h"

#include "customers/customerpanel.h"
#include "database/database.h"
#include "database/rowtypes.h"
#include "products/productpanel.h"
#include "uiservices/frmmessage.h"

#include <QCheckBox>

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
    CustomerRow stored(const QString &key) { return CustomerRow::parse(table().textOf(key)).value_or(CustomerRow{}); }
    // Eight customers, the window shown and active, questions answered OK.
    void openEight()
    {
        QList<DbCustomer> people;
        for (const QString &n :
             QStringLiteral("Ann Lee,Bob Moss,Cy Pike,Di Ross,Ed Shaw,Flo Todd,Gus Urry,Hal Vane").split(u','))
            people.append({int(people.size()) + 1, n.section(u' ', 0, 0), n.section(u' ', 1)});
        open(people);
        m_answers->answer = QMessageBox::Ok;
        QVERIFY(QTest::qWaitForWindowActive(m_w.get()));
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
        QVERIFY(m_w->databaseChanged());

        // New rows land at their place.
        newCustomer("Al", "Brown");
        QCOMPARE(rowTexts(list()), QStringList({"Brown, Al", "Smith, Jo"}));
        QCOMPARE(currentKey(list()), "2k");

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
        click(btn("cmdUndo"));
        QCOMPARE(cp()->fieldText(6), "");

        // Apply asks; Cancel refills the fields, OK moves the row and keeps the CID.
        retype(field(1), "Adams");
        click(btn("cmdAddNew"));
        QCOMPARE(cp()->fieldText(1), "Smith");
        m_answers->answer = QMessageBox::Ok;
        retype(field(1), "Adams");
        click(btn("cmdAddNew"));
        QCOMPARE(rowTexts(list()), QStringList({"Adams, Jo", "Brown, Al"}));
        QCOMPARE(currentKey(list()), "1k");

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
        QCOMPARE(table().count(), 2);
        QCOMPARE(buttons(), "&Add New / &Cancel New");

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
        QCOMPARE(currentKey(list()), "3k");
    }

    // Delete removes an unbilled customer, archives a billed one.
    void deleteAndArchive()
    {
        open({{1, "Ann", "Lee"}, {2, "Bob", "Moss"}, {3, "Cy", "Pike"}, {4, "Di", "Ross"}}, {{4, {"1"}}});
        clickRow(list(), 4);
        click(btn("cmdUndo"));  // Cancel at the question
        QCOMPARE(cp()->rowCount(), 4);
        m_answers->answer = QMessageBox::Ok;
        click(btn("cmdUndo"));  // Di is billed: archived, behind all others
        QCOMPARE(statusText(*m_w), "Entry archived.");
        QVERIFY(m_w->checkingWindow()->cmdOK()->isEnabled());
        QCOMPARE(currentText(list()), "Pike, Cy");  // the row now last
        QCOMPARE(cp()->fieldText(0), "Cy");
        select("Moss, Bob");
        click(btn("cmdUndo"));
        QCOMPARE(statusText(*m_w), "Entry deleted.");
        QVERIFY(!table().contains(u"2k"));
        QCOMPARE(rowTexts(list()), QStringList({"Lee, Ann", "Pike, Cy"}));
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
    // name shows whole, from its start; an empty list takes typing as a new customer.
    void listRecall()
    {
        QList<DbCustomer> seven;
        for (int i = 1; i <= 7; ++i) seven.append({i, QStringLiteral("N%1").arg(i), QStringLiteral("L%1").arg(i)});
        seven[3].first = "N4" + QString(38, 'x');  // longer than typing allows
        open(seven, {}, "3");
        QCOMPARE(cp()->selectedPosition(), 3);
        QCOMPARE(cp()->fieldText(0), "N3");
        clickRow(list(), 4);
        QCOMPARE(cp()->fieldText(0), seven[3].first);
        QCOMPARE(qobject_cast<QLineEdit *>(field(0))->cursorPosition(), 0);  // a long value shows its start
        clickRow(list(), 5);
        QCOMPARE(qobject_cast<QLineEdit *>(field(0))->maxLength(), 32);

        open({{1, "Old", "Gone", false}, {2, "Older", "Gone", false}});
        m_answers->answer = QMessageBox::Ok;
        QTest::keyClicks(field(1), "Gray");
        QTest::keyClicks(field(0), "Al");
        click(btn("cmdAddNew"));
        QCOMPARE(currentText(list()), "Gray, Al");
    }

    // Every way the highlight moves refills the fields (abandoning the
    // changes rereads the file first); the edit then applied lands on the
    // row the fields show, even after a move nobody reported.
    void moveThenEdit_data()
    {
        QTest::addColumn<QString>("move");
        for (const char *m : {"PageUp", "letter", "abandon", "unreported"}) QTest::newRow(m) << QString(m);
    }
    void moveThenEdit()
    {
        QFETCH(QString, move);
        openEight();
        clickRow(list(), 4);
        list()->setFocus();
        if (move == "PageUp") QTest::keyClick(list(), Qt::Key_PageUp);
        else if (move == "letter") QTest::keyClicks(list(), "T");
        else if (move == "unreported") {
            const QSignalBlocker quiet(list());
            list()->setCurrentItem(list()->topLevelItem(6));
        } else {
            QTest::keyClicks(field(0), "Q");
            click(btn("cmdAddNew"));  // a change, so that the red cross shows
            click(m_w->findChild<QAbstractButton *>("cmdCancel"));
            QCOMPARE(m_answers->last().title, "ABANDON ALL CHANGES???");
            QVERIFY(list()->currentItem() && list()->currentItem()->isSelected());
        }
        const QString shown = move == "unreported" ? "4k" : currentKey(list());
        QVERIFY2(currentKey(list()) != "4k" || move == "abandon", "the highlight did not move");
        QCOMPARE(field(0)->property("Tag").toString() + " " + cp()->fieldText(1),
                 stored(shown).firstName + " " + stored(shown).lastName);
        QCOMPARE(cp()->loadedKey(), shown);
        QCOMPARE(buttons(), "&New Customer / &Delete Existing");
        QTest::keyClicks(field(0), "X");
        click(btn("cmdAddNew"));
        QVERIFY(stored(shown).firstName.contains(u'X') && table().count() == 8);
    }

    // Alt+letter switches panels and takes the focus to the panel's tab; Tab
    // goes on from there. Every control is reached by Tab and by Shift+Tab.
    void hotKeysAndTabOrder()
    {
        openEight();
        QTest::keyClick(m_w.get(), Qt::Key_P, Qt::AltModifier);
        auto *tab1 = m_w->findChild<QWidget *>("cmdTab(1)");
        QTRY_COMPARE(QApplication::focusWidget(), tab1);

        // Tab goes on from the tab, into the panel on show.
        QTest::keyClick(tab1, Qt::Key_Tab);
        QVERIFY(QApplication::focusWidget() != tab1);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Backtab);
        QCOMPARE(QApplication::focusWidget(), tab1);
        QTest::keyClick(m_w.get(), Qt::Key_C, Qt::AltModifier);
        QTRY_COMPARE(QApplication::focusWidget(), m_w->findChild<QWidget *>("cmdTab(0)"));
        // Tab reaches the chosen option of each group of options, both ways,
        // also the title size inside the title frame.
        m_w->findChild<QAbstractButton *>("cmdTab(4)")->click();
        QVERIFY(m_w->findChild<QWidget *>("optInvoiceTitleSize(0)")->isVisible());
        QSet<QString> forward, backward;
        for (int i = 0; i < 300; ++i) {
            QTest::keyClick(QApplication::focusWidget(), i < 150 ? Qt::Key_Tab : Qt::Key_Backtab);
            (i < 150 ? forward : backward) << QApplication::focusWidget()->objectName();
        }
        for (const char *group : {"optInvoiceTitleSize", "optInvoiceTitle"}) {
            QAbstractButton *chosen = nullptr;
            for (int i = 0; i < 3; ++i)
                if (auto *o = m_w->findChild<QAbstractButton *>(QStringLiteral("%1(%2)").arg(group).arg(i)); o->isChecked())
                    chosen = o;
            QVERIFY2(chosen && forward.contains(chosen->objectName()) && backward.contains(chosen->objectName()), group);
        }
    }

    // The placeholder customer's message comes over the shown main window,
    // which owns it (and so centres it); the form's box shares the text's face.
    void placeholderMessageOverWindow()
    {
        m_answers.reset();
        struct Watching : ScriptedDialogs {
            QList<QPair<QWidget *, bool>> owners;
            QString messageForm(QWidget *owner, const MessageForm &m) override
            {
                owners.append({owner, owner && owner->isVisible()});
                return ScriptedDialogs::messageForm(owner, m);
            }
        } dialogs;
        settings::DeletedCustomer.set(false);
        open({{1, "Ann", "Lee"}}, {{7, {}}});
        QCOMPARE(dialogs.owners, (QList<QPair<QWidget *, bool>>{{m_w.get(), true}}));

        FrmMessage form(m_w.get(), "text", "Key", "OK", "OK");
        QCOMPARE(form.findChild<QCheckBox *>("chkDontShow")->font().family(),
                 form.findChild<QLabel *>("lblMessage")->font().family());
    }
};

QTEST_MAIN(TstCustomerPanel)
#include "tst_customerpanel.moc"
