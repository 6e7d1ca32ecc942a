// SPDX-License-Identifier: GPL-3.0-or-later
// What a keyboard user, a screen-reader user and a careful user do beyond the
// plain steps: every way of moving in a list, hot keys, Enter and held keys.
// Driven through the real main window.
#include "panelharness.h"

#include "customers/customerpanel.h"
#include "database/database.h"
#include "database/rows.h"
#include "database/rowtypes.h"
#include "products/productpanel.h"

#include <QCheckBox>
#include "uiservices/frmmessage.h"

using namespace qor;
using namespace qor::testing;

class TstCarefulUser : public QObject {
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
    CustomerRow stored(const char *key) { return CustomerRow::parse(table().textOf(QString::fromLatin1(key))).value_or(CustomerRow{}); }

    void open(int panel = 0)
    {
        discard(m_w);
        QList<DbCustomer> people;
        const char *names[][2] = {{"Ann", "Lee"}, {"Bob", "Moss"}, {"Cy", "Pike"}, {"Di", "Ross"}, {"Ed", "Shaw"}, {"Flo", "Todd"}, {"Gus", "Urry"}, {"Hal", "Vane"}};
        for (int i = 0; i < 8; ++i) people.append({i + 1, names[i][0], names[i][1]});
        writeDatabase(m_box.db, people, {{1, "Tea", "1.00"}, {2, "Cake", "2.00"}, {3, "Jam", "3.00"}});
        settings::LastViewedCustomer.set(1);
        m_w = openWindow(panel);
        QVERIFY(QTest::qWaitForWindowActive(m_w.get()));
    }
    // Gives the fields' first name a mark and applies it; the key of the
    // customer that changed comes back, the rest must be as they were.
    QString applyMark()
    {
        QTest::keyClick(field(0), Qt::Key_End);
        QTest::keyClicks(field(0), "X");
        click(btn("cmdAddNew"));
        QString changed;
        table().forEach([&](QStringView k, QStringView t) {
            if (t.left(t.indexOf(FieldSep)).endsWith(u'X')) changed = k.toString();
            return true;
        });
        return changed;
    }

private slots:
    void init()
    {
        m_answers = std::make_unique<Answerer>();
        m_answers->answer = QMessageBox::Ok;
        settings::CheckToConfirmEdits.set(true);
    }
    void cleanup() { discard(m_w); }

    // Abandoning changes rereads the file: the highlighted row's details are
    // in the fields, and an edit then changes that customer and no other.
    void abandonThenEdit()
    {
        open();
        clickRow(list(), 3);
        QTest::keyClicks(field(0), "Q");
        click(btn("cmdAddNew"));  // a change, so that the red cross shows
        QVERIFY(m_w->databaseChanged());
        click(m_w->findChild<QAbstractButton *>("cmdCancel"));
        QCOMPARE(m_answers->last().title, "ABANDON ALL CHANGES???");
        QVERIFY(list()->currentItem() && list()->currentItem()->isSelected());
        const QString key = currentKey(list());
        QCOMPARE(cp()->fieldText(0) + " " + cp()->fieldText(1), stored(key.toLatin1()).firstName + " " + stored(key.toLatin1()).lastName);
        QCOMPARE(buttons(), "&New Customer / &Delete Existing");
        QCOMPARE(applyMark(), key);
        QCOMPARE(table().count(), 8);
    }

    // Every key that moves the highlight refills the fields; the edit then
    // applied lands on the row the fields show.
    void everyNavigationKeyThenEdit_data()
    {
        QTest::addColumn<int>("key");
        QTest::addColumn<QString>("keys");
        QTest::newRow("Down") << int(Qt::Key_Down) << QString();
        QTest::newRow("PageUp") << int(Qt::Key_PageUp) << QString();
        QTest::newRow("letter") << 0 << QString("T");
    }
    void everyNavigationKeyThenEdit()
    {
        QFETCH(int, key);
        QFETCH(QString, keys);
        open();
        clickRow(list(), 4);
        list()->setFocus();
        const QString start = currentKey(list());
        if (key == Qt::Key_PageUp) QTest::keyClick(list(), Qt::Key_End);  // somewhere to go up from
        if (key > 0) QTest::keyClick(list(), Qt::Key(key));
        else QTest::keyClicks(list(), keys);
        const QString now = currentKey(list());
        QVERIFY2(now != start, "the highlight did not move");
        QCOMPARE(field(0)->property("Tag").toString(), stored(now.toLatin1()).firstName);
        QCOMPARE(cp()->fieldText(1), stored(now.toLatin1()).lastName);
        QCOMPARE(cp()->loadedKey(), now);
        QCOMPARE(applyMark(), now);
    }

    // An edit is applied to the customer it was loaded from, even if the
    // highlight was taken away or moved without a refill in between.
    void editFollowsLoadedCustomer()
    {
        open();
        clickRow(list(), 2);
        const QString loaded = currentKey(list());
        QTest::keyClicks(field(6), "555");
        {
            const QSignalBlocker quiet(list());  // a move nobody reports
            list()->setCurrentItem(list()->topLevelItem(6));
        }
        click(btn("cmdAddNew"));
        QCOMPARE(stored(loaded.toLatin1()).phone, "555");
        QCOMPARE(stored(loaded.toLatin1()).firstName, "Bob");
        QCOMPARE(stored("7k").phone, "");
    }

    // Products: Delete Existing deletes only a highlighted row.
    void productDeleteNeedsHighlight()
    {
        open(1);
        auto *pp = m_w->productPanel();
        auto *items = pp->list();
        auto *del = pp->control<QAbstractButton>("cmdCancelNewItem");
        items->setFocus();
        QTest::keyClick(items, Qt::Key_End);
        QCOMPARE(items->currentItem()->text(0).contains("Jam"), true);
        items->clearSelection();
        click(del);
        QCOMPARE(m_w->db().items().count(), 3);
        items->currentItem()->setSelected(true);
        click(del);
        QCOMPARE(m_w->db().items().count(), 2);
    }

    // Alt+letter switches panels and takes the focus to the panel's tab; Tab
    // goes on from there. Every control is reached by Tab and by Shift+Tab.
    void hotKeysAndTabOrder()
    {
        open();
        QTest::keyClick(m_w.get(), Qt::Key_P, Qt::AltModifier);
        QTRY_VERIFY(m_w->productPanel()->isVisible());
        auto *tab1 = m_w->findChild<QWidget *>("cmdTab(1)");
        QCOMPARE(QApplication::focusWidget(), tab1);

        // Tab goes on from the tab, into the panel on show.
        QTest::keyClick(tab1, Qt::Key_Tab);
        QVERIFY(QApplication::focusWidget() != tab1);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Backtab);
        QCOMPARE(QApplication::focusWidget(), tab1);
        QTest::keyClick(m_w.get(), Qt::Key_C, Qt::AltModifier);
        QTRY_VERIFY(cp()->isVisible());
        QCOMPARE(QApplication::focusWidget(), m_w->findChild<QWidget *>("cmdTab(0)"));
        // Tab reaches the chosen option of each group of options, both ways,
        // also the title size inside the title frame.
        m_w->findChild<QAbstractButton *>("cmdTab(4)")->click();
        QVERIFY(m_w->findChild<QWidget *>("optInvoiceTitleSize(0)")->isVisible());
        QSet<QString> forward, backward;
        for (int i = 0; i < 150; ++i) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            forward << QApplication::focusWidget()->objectName();
        }
        for (int i = 0; i < 150; ++i) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Backtab);
            backward << QApplication::focusWidget()->objectName();
        }
        for (const char *group : {"optInvoiceTitleSize", "optInvoiceTitle"}) {
            QAbstractButton *chosen = nullptr;
            for (int i = 0; i < 3; ++i)
                if (auto *o = m_w->findChild<QAbstractButton *>(QStringLiteral("%1(%2)").arg(group).arg(i)); o->isChecked())
                    chosen = o;
            QVERIFY2(chosen && forward.contains(chosen->objectName()) && backward.contains(chosen->objectName()), group);
        }
    }

    // Enter presses a focused button as Space does; a held key clicks once.
    void enterAndKeyRepeat()
    {
        open(1);
        auto *pp = m_w->productPanel();
        auto *add = pp->control<QAbstractButton>("cmdAddNewItem");
        int clicks = 0;
        connect(add, &QAbstractButton::clicked, this, [&clicks] { ++clicks; });
        add->setFocus();
        QTest::keyClick(add, Qt::Key_Return);
        QCOMPARE(clicks, 1);
        QVERIFY(pp->controlWidget("txtPrice")->isVisible());  // it did what a click does
        pp->cmdCancelNewItemClick();

        // Held down with Space or Enter, a plain button clicks once, on release.
        for (Qt::Key k : {Qt::Key_Space, Qt::Key_Return}) {
            pp->showProductEntry(false);
            add->setFocus();
            int n = 0;
            auto c = connect(add, &QAbstractButton::clicked, this, [&n] { ++n; });
            QKeyEvent press(QEvent::KeyPress, k, Qt::NoModifier);
            QApplication::sendEvent(add, &press);
            for (int i = 0; i < 5; ++i) {
                QKeyEvent rp(QEvent::KeyRelease, k, Qt::NoModifier, {}, true);
                QKeyEvent pp2(QEvent::KeyPress, k, Qt::NoModifier, {}, true);
                QApplication::sendEvent(add, &rp);
                QApplication::sendEvent(add, &pp2);
            }
            QCOMPARE(n, 0);  // nothing while held
            QKeyEvent release(QEvent::KeyRelease, k, Qt::NoModifier);
            QApplication::sendEvent(add, &release);
            QCOMPARE(n, 1);
            disconnect(c);
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
        discard(m_w);
        writeDatabase(m_box.db, {{1, "Ann", "Lee"}}, {}, {{7, {}}});
        m_w = openWindow(0);
        QCOMPARE(dialogs.owners.size(), 1);
        QCOMPARE(dialogs.owners.at(0).first, m_w.get());
        QVERIFY(dialogs.owners.at(0).second);
        QVERIFY(m_w->databaseChanged());

        FrmMessage form(m_w.get(), "text", "Key", "OK", "OK");
        QCOMPARE(form.findChild<QCheckBox *>("chkDontShow")->font().family(),
                 form.findChild<QLabel *>("lblMessage")->font().family());
    }

    // A stored value longer than its field shows its start.
    void longValueShowsStart()
    {
        open();
        clickRow(list(), 2);
        QTest::keyClicks(field(2), "A very long street name that runs on and on");
        click(btn("cmdAddNew"));
        clickRow(list(), 1);
        clickRow(list(), 2);
        auto *le = qobject_cast<QLineEdit *>(field(2));
        QCOMPARE(le->cursorPosition(), 0);
    }
};

QTEST_MAIN(TstCarefulUser)
#include "tst_carefuluser.moc"
