// SPDX-License-Identifier: GPL-3.0-or-later
// The Bill Periods panel's modes without a window; then the Bill Periods and
// Printing panels in the real window, driven by their controls' names: the
// billing of a month through the buttons, the menus and clicks of the tree,
// payments, the invoice note, and what becomes of an open entry.
#include "../customers/panelharness.h"
#include "billing/billing.h"
#include "billing/entrycopy.h"
#include "billing/invoicetree.h"
#include "billingfixture.h"
#include "billperiods/billperiodeditor.h"
#include "billperiods/billperiodpanel.h"
#include "billperiods/invoicetreeview.h"
#include "printing/printingpanel.h"
#include "uiservices/hovercommand.h"

#include <QComboBox>
#include <QMenu>
#include <QTreeView>

using namespace qor;
using namespace qor::testing;
using namespace Qt::StringLiterals;

namespace {

// The buttons ("-" hidden), the name's caption, the parts shown, the dates'
// lock and the fields still wanted.
QString describe(const BillPeriodEditor::Look &l)
{
    const auto shown = [](bool on, const QString &what) { return on ? what : u'-' + what; };
    QStringList s{shown(l.addShown, l.addCaption), shown(l.cancelShown, u"cancel"_s), shown(l.resetShown, l.resetCaption), shown(l.adjustShown, u"adjust"_s), u"|"_s, l.nameCaption, u"|"_s};
    for (const auto &[on, part] : {std::pair{l.entryShown, "entry"}, {l.chooserShown, "chooser"}, {l.exampleShown, "example"}, {l.accountsShown, "accounts"}})
        if (on) s << QString::fromLatin1(part);
    s << (l.datesLocked ? u"| locked"_s : u"| open"_s);
    if (l.nameWanted) s << u"name?"_s;
    if (l.dueWanted) s << u"due?"_s;
    return s.join(u' ');
}

struct Window {
    std::unique_ptr<FrmQOR> w;
    BillPeriodPanel *bp = nullptr;
    PrintingPanel *pp = nullptr;
    explicit Window(int panel) : w(openWindow(panel)), bp(w->billPeriodPanel()), pp(w->printingPanel()) {}
    ~Window() { discard(w); }
    template <class T = QWidget>
    T *get(const char *name) const
    {
        return bp->findChild<T *>(QString::fromLatin1(name));
    }
    QAbstractButton *button(const char *name) const { return get<QAbstractButton>(name); }
    InvoiceTree &tree0() const { return bp->treeModel(); }
    InvoiceTree &tree1() const { return pp->treeModel(); }
};

// A mouse action on the node with key in a tree view.
void onNode(QTreeView *view, const InvoiceTree &t, const QString &key, Qt::MouseButton button = Qt::LeftButton,
            Qt::KeyboardModifiers mods = {}, bool twice = false)
{
    const QModelIndex i = t.indexOf(t.find(key));
    QVERIFY2(i.isValid(), qPrintable(key));
    view->scrollTo(i);
    const QPoint at = view->visualRect(i).center();
    // A double-click is a click, the second press and its release.
    QTest::mouseClick(view->viewport(), button, mods, at);
    if (twice) QTest::mouseDClick(view->viewport(), button, mods, at), QTest::mouseRelease(view->viewport(), button, mods, at);
}

void billRow(QTreeWidget *products, int position)
{
    QTreeWidgetItem *it = products->topLevelItem(position - 1);
    QVERIFY(it);
    const QPoint at = products->visualItemRect(it).center();
    QTest::mouseClick(products->viewport(), Qt::LeftButton, {}, at);
    QTest::mouseDClick(products->viewport(), Qt::LeftButton, {}, at);
}

const QString ViewState = u"&New Bill Period | -&Cancel New | -&Log Full Payment | -Log &Payment && Optional Note"_s;

QString state(const Window &w)
{
    QStringList s;
    for (const char *b : {"cmdAddNewBP", "cmdCancelNewBP", "cmdResetCustomerAccounts", "cmdAdjustBalance"})
        s << (w.button(b)->isHidden() ? "-" : "") + w.button(b)->text();
    return s.join(" | ");
}

bool marked(const Window &w, const char *key) { return w.tree0().values(w.tree0().find(QString::fromLatin1(key))).marked; }

const QList<DbCustomer> Customers = {{1, "Ann", "Lee"}, {2, "Bob", "Moss"}, {3, "Cy", "Cole"}, {4, "Di", "Old", false}};
const QList<DbItem> Items = {{7, "Widget", "$5.00"}, {9, "Bolt", "$1.50"}, {10, "Gone", "$2.00", false}};

}  // namespace

class TstBillPeriodPanel : public QObject {
    Q_OBJECT
    Sandbox sb;

private slots:
    void initTestCase()
    {
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
        qputenv("XDG_CACHE_HOME", (sb.dir.path() + u"/cache"_s).toLocal8Bit());
    }

    void editor_data()
    {
        QTest::addColumn<QString>("events");
        QTest::addColumn<QString>("look");
        const QString viewing = u"&New Bill Period -cancel -&Log Full Payment -adjust | Bill Period: | chooser accounts | locked"_s;
        const QString entering = u"-&Add New cancel -&Reset Customer Accounts -adjust | Bill Period Name: | entry example | open name? due?"_s;
        const QString billing = u"-&Add New cancel &Reset Customer Accounts -adjust | Bill Period Name: | entry example | open name? due?"_s;
        QTest::newRow("at start") << QString() << viewing;
        QTest::newRow("customer of the records") << u"record"_s << u"&New Bill Period -cancel &Log Full Payment adjust | Bill Period: | chooser accounts | locked"_s;
        QTest::newRow("node without a record") << u"record;other"_s << viewing;
        QTest::newRow("paid") << u"record;paid"_s << viewing;
        QTest::newRow("nothing to bill outside an entry") << u"touch"_s << viewing;
        QTest::newRow("new period while paying") << u"record;begin"_s << entering;
        QTest::newRow("first billing or click") << u"begin;touch"_s << billing;
        QTest::newRow("no payment in an entry") << u"begin;touch;record;paid"_s << billing;
        QTest::newRow("due date of five characters") << u"begin;name=May;due=1/1/4"_s << u"-&Add New cancel -&Reset Customer Accounts -adjust | Bill Period Name: | entry accounts | open due?"_s;
        QTest::newRow("not a date")
            << u"begin;name=May;due=31/31/2004"_s
            << u"-&Add New cancel -&Reset Customer Accounts -adjust | Bill Period Name: | entry accounts | open due?"_s;
        QTest::newRow("a date without two separators") << u"begin;name=May;due=March 31, 2004"_s << u"&Add New cancel -&Reset Customer Accounts -adjust | Bill Period Name: | entry accounts | open due?"_s;
        QTest::newRow("billed and ready") << u"begin;touch;due=6/15/2024;name=May"_s << u"&Add New cancel &Reset Customer Accounts -adjust | Bill Period Name: | entry accounts | open"_s;
        QTest::newRow("name emptied") << u"begin;touch;due=6/15/2024;name=May;name="_s << u"-&Add New cancel &Reset Customer Accounts -adjust | Bill Period Name: | entry example | open name?"_s;
        QTest::newRow("finalised") << u"begin;touch;due=6/15/2024;name=May;end"_s << viewing;
    }

    // The panel's events move its mode; the mode, the name and the due date
    // decide what it shows. No window.
    void editor()
    {
        QFETCH(QString, events);
        QFETCH(QString, look);
        BillPeriodEditor e;
        for (const QString &event : events.split(u';', Qt::SkipEmptyParts)) {
            if (event == u"begin") e.beginEntry();
            else if (event == u"end") e.endEntry();
            else if (event == u"touch") e.entryTouched();
            else if (event == u"paid") e.paymentDone();
            else if (event.startsWith(u"name=")) e.setName(event.mid(5));
            else if (event.startsWith(u"due=")) e.setDue(event.mid(4));
            else e.customerChosen(event == u"record");
        }
        QCOMPARE(describe(e.look()), look);
    }

    // A month billed through the buttons: a period entered with marks and
    // double-clicks, finalised into the tables, paid, and refused while wrong.
    void billingAMonth()
    {
        writeDatabase(sb.db, Customers, Items);
        Window w(2);
        Answerer a;
        click(w.button("cmdAddNewBP"));
        QCOMPARE(w.w->focusWidget(), w.get("txtBillPeriod"));
        auto *products = w.get<QTreeWidget>("lvwProducts(1)");
        auto *view = w.get<QTreeView>("tvwInvoiceRecords(0)");
        QVERIFY(view->width() < w.bp->width() / 2);  // it shares the width with the products

        // Cole alone; billing changes the tree as a whole, Cole stays selected.
        onNode(view, w.tree0(), "3k");
        QCOMPARE(state(w), u"-&Add New | &Cancel New | &Reset Customer Accounts | -Log &Payment && Optional Note"_s);
        billRow(products, 1);
        billRow(products, 2);
        QCOMPARE(w.tree0().key(w.bp->treeBinding()->selectedNode()), u"3k"_s);
        QVERIFY(view->isExpanded(w.tree0().indexOf(w.tree0().find("3k"))));
        // The menus: everybody marked, an item deleted.
        onNode(view, w.tree0(), "1k", Qt::RightButton);
        QVERIFY(w.bp->popupC()->isVisible());
        w.bp->findChild<QAction *>(u"mnuSelectAll"_s)->trigger();
        w.bp->popupC()->hide();
        QVERIFY(marked(w, "1k") && marked(w, "2k"));
        onNode(view, w.tree0(), "0000000300000009b", Qt::RightButton);
        QVERIFY(w.bp->popupB()->isVisible());
        w.bp->findChild<QAction *>(u"mnuDeleteItem"_s)->trigger();
        w.bp->popupB()->hide();
        QVERIFY(!w.tree0().find("0000000300000009b"));
        // A double-click on an item deletes it and changes no mark, though
        // its release lands on the next customer; on the root it marks everybody.
        onNode(view, w.tree0(), "0000000300000007b", Qt::LeftButton, {}, true);
        QVERIFY(!w.tree0().find("0000000300000007b"));
        QVERIFY(marked(w, "1k") && marked(w, "2k") && marked(w, "3k"));
        onNode(view, w.tree0(), "1k");
        onNode(view, w.tree0(), "root_node", Qt::LeftButton, {}, true);
        QVERIFY(marked(w, "2k"));
        // The 100th of one item to one customer is refused by name.
        billing::BillEntry full = *w.bp->openEntry();
        full.customers = {{u"2"_s, true}};
        full.items = {{u"2"_s, u"7"_s, 99}};
        w.bp->reopenEntry(full);
        billRow(products, 2);
        QVERIFY(a.last().text.contains(u"Moss, Bob: $5.00 - Widget (x99)"_s));
        // "&Reset Customer Accounts" starts over.
        click(w.button("cmdResetCustomerAccounts"));

        onNode(view, w.tree0(), "1k");                                       // Lee alone
        onNode(view, w.tree0(), "2k", Qt::LeftButton, Qt::ControlModifier);  // and Moss
        billRow(products, 2);
        billRow(products, 2);
        onNode(view, w.tree0(), "1k");
        billRow(products, 1);
        QCOMPARE(billtest::dump(w.tree0()),
                 (QStringList{"root_node = New Bill Period", "  3k = Cole, Cy", "  1k = *Lee, Ann", "  2k = Moss, Bob",
                              "    0000000100000007b = $5.00 - Widget (x2)", "    0000000200000007b = $5.00 - Widget (x2)",
                              "    0000000100000009b = $1.50 - Bolt"}));

        // The name and a good due date bring "&Add New"; the example gives way.
        retype(w.get("txtPField(3)"), u"6/15/2024"_s);
        QVERIFY(hasInfoColour(w.get("txtBillPeriod")) && !hasInfoColour(w.get("txtPField(3)")));
        retype(w.get("txtBillPeriod"), u"May 2024"_s);
        retype(w.get("txtPField(1)"), u"5/1/2024"_s);
        QVERIFY(w.get<QLabel>("lblExample")->isHidden() && !w.get<QLabel>("lblCustomerAccountsForThisPeriod")->isHidden());

        // Cancelled at the question: still entering.
        a.answer = QMessageBox::Cancel;
        click(w.button("cmdAddNewBP"));
        QCOMPARE(w.w->db().periods().count(), 0);
        a.answer = QMessageBox::Ok;
        click(w.button("cmdAddNewBP"));
        QCOMPARE(w.w->db().periods().textOf(u"May 2024"), u"2024/05/01\u0001May 2024\u0001\u00012024/06/15"_s);
        QVERIFY(w.w->databaseChanged() && w.w->cmdSave()->isVisible());
        QCOMPARE(state(w), ViewState);
        QVERIFY(!w.bp->treeBinding()->selectedNode());  // a tree built anew selects nothing
        QCOMPARE(w.pp->chooser()->currentText(), u"May 2024"_s);
        QCOMPARE(w.get<QLineEdit>("txtPField(3)")->text(), u"06/15/2024"_s);
        QCOMPARE(billtest::dump(w.tree1()).first(), u"root_node = May 2024 [x]"_s);
        QVERIFY(view->width() > w.bp->width() / 2);  // the products are gone: the tree has it all

        // Payments. The box tells the balance now and starts from it and the
        // note: OK on both is no change.
        w.w->showDatabaseChanged(false);
        onNode(view, w.tree0(), "1k");
        QCOMPARE(state(w), u"&New Bill Period | -&Cancel New | &Log Full Payment | Log &Payment && Optional Note"_s);
        a.dialogs.nextTexts = {u"$11.50"_s, QString()};
        click(w.button("cmdAdjustBalance"));
        const auto balanceBox = a.dialogs.seen[a.dialogs.seen.size() - 2];
        QVERIFY2(balanceBox.label.endsWith(u"\r\n\r\nBalance now: $11.50"_s), qPrintable(balanceBox.label));
        QCOMPARE(balanceBox.initial, u"$11.50"_s);
        QVERIFY(!w.w->databaseChanged());
        // Not an amount: refused with a message, nothing logged, the note neither.
        a.dialogs.nextTexts = {u"twelve"_s, u"note"_s};
        click(w.button("cmdAdjustBalance"));
        QVERIFY2(a.last().text.startsWith(u"\"twelve\""_s), qPrintable(a.last().text));
        QVERIFY(!w.w->databaseChanged() && !w.tree0().find("1knote"));
        // A group mark reads as a person reads it.
        a.dialogs.nextTexts = {u"1,200"_s, u"check 12"_s};
        click(w.button("cmdAdjustBalance"));
        QCOMPARE(w.tree0().text(w.tree0().find("1k")), u"Lee, Ann - owes $1,200.00"_s);
        QVERIFY(w.w->databaseChanged() && w.button("cmdAdjustBalance")->isHidden());
        QCOMPARE(w.tree0().key(w.bp->treeBinding()->selectedNode()), u"1k"_s);  // the place stays
        onNode(view, w.tree0(), "1k");
        click(w.button("cmdAdjustBalance"));  // both cancelled: the note stays
        QCOMPARE(a.dialogs.seen.last().initial, u"check 12"_s);
        // In full by double-click.
        onNode(view, w.tree0(), "2k", Qt::LeftButton, {}, true);
        QCOMPARE(w.tree0().text(w.tree0().find("2k")), u"Moss, Bob - paid"_s);
        // The invoice note, on the Printing panel, by right click.
        w.w->cmdTabClick(3);
        a.dialogs.nextTexts = {u"Thank you!"_s};
        onNode(w.pp->tree(), w.tree1(), "1k", Qt::RightButton);
        QCOMPARE(w.tree1().text(w.tree1().nodes().back()), u"INVOICE NOTE: Thank you!"_s);
        w.w->cmdTabClick(2);

        // Again under the same name: refused; with nothing billed: refused.
        click(w.button("cmdAddNewBP"));
        QVERIFY(w.get<QLineEdit>("txtPField(3)")->text().isEmpty());  // a new entry starts with no due date
        retype(w.get("txtBillPeriod"), u"June 2024"_s);
        retype(w.get("txtPField(3)"), u"7/15/2024"_s);
        click(w.button("cmdAddNewBP"));
        QCOMPARE(a.last().title, u"No Customers Billed for this Period"_s);
        billRow(products, 1);
        retype(w.get("txtBillPeriod"), u"May 2024"_s);
        click(w.button("cmdAddNewBP"));
        QCOMPARE(a.last().title, u"Duplicate Name Found"_s);
        QCOMPARE(w.w->db().periods().count(), 1);
        // "&Cancel New" drops what was billed: the chosen period shows again.
        click(w.button("cmdCancelNewBP"));
        QCOMPARE(w.tree0().text(w.tree0().find("2k")), u"Moss, Bob - paid"_s);
        QCOMPARE(w.w->db().invoiceRecords().count(), 2);
    }

    // An open entry is neither replaced by the Printing panel's chooser nor
    // dropped unasked, and outlives a crash: the recovery copy keeps it, and
    // Restore in the next window reopens it as it was. An entry alone is no
    // change of the database.
    void theEntryIsKept()
    {
        writeDatabase(sb.db, Customers, Items, {{1, {"7x3", "9"}}, {2, {"7"}}});
        std::optional<billing::BillEntry> entry;
        QByteArray kept[3];
        QStringList files;
        {
            Window w(2);
            Answerer a;
            click(w.button("cmdAddNewBP"));
            retype(w.get("txtPField(3)"), u"6/15/2024"_s);
            retype(w.get("txtBillPeriod"), u"Feb 50%"_s);
            onNode(w.get<QTreeView>("tvwInvoiceRecords(0)"), w.tree0(), "3k");
            billRow(w.get<QTreeWidget>("lvwProducts(1)"), 2);
            billRow(w.get<QTreeWidget>("lvwProducts(1)"), 2);
            const QStringList dumped = billtest::dump(w.tree0());
            QVERIFY(w.w->recoveryTimer().isActive() && !w.w->databaseChanged());
            w.pp->chooser()->setCurrentIndex(-1);
            w.pp->chooser()->setCurrentIndex(0);
            QCOMPARE(w.get<QLineEdit>("txtPField(3)")->text(), u"6/15/2024"_s);
            QCOMPARE(w.tree1().text(w.tree1().root()), u"Jan"_s);

            // Abandoning the changes, then quitting: "&Keep Entering" keeps it.
            a.dialogs.nextAnswers = {QMessageBox::Ok, QMessageBox::Cancel};
            w.w->cmdCancelClick();
            QCOMPARE(a.last().captions,
                     (QList<std::pair<QMessageBox::StandardButton, QString>>{
                         {QMessageBox::Cancel, u"&Keep Entering"_s}, {QMessageBox::Discard, u"&Drop the Entry"_s}}));
            a.answer = QMessageBox::Cancel;
            QVERIFY(!w.w->close());
            QCOMPARE(a.seen().size(), 3);
            QCOMPARE(billtest::dump(w.tree0()), dumped);
            QVERIFY(w.bp->editor().entering());

            entry = w.bp->openEntry();
            QVERIFY(entry && entry->items == (QList<billing::BillEntry::Item>{{"3", "7", 2}}));
            QVERIFY(w.w->session().writeRecovery());
            const Recovery r = w.w->session().recovery();  // a copy: the session goes with the window
            files = {r.databaseCopy(), r.entryFile(), r.infoFile()};
            for (int i = 0; i < 3; ++i) {
                QFile file(files[i]);
                QVERIFY(file.open(QIODevice::ReadOnly) && !(kept[i] = file.readAll()).isEmpty());
            }
            QVERIFY(!billing::decodeEntry(kept[1].chopped(2)));  // cut short: not read at all
            discard(w.w);                                        // an orderly end removes the copy; a crash would have left it
        }
        for (int i = 0; i < 3; ++i) {
            QFile file(files[i]);
            QVERIFY(file.open(QIODevice::WriteOnly) && file.write(kept[i]) > 0);
        }
        Answerer a;
        a.answer = QMessageBox::Yes;
        Window w(0);
        QCOMPARE(w.bp->openEntry(), entry);
        QVERIFY(w.bp->isVisible() && !w.button("cmdAddNewBP")->isHidden());

        // "&Drop the Entry": the books read again, the panel in view mode.
        QVERIFY(w.w->databaseChanged());  // restored books count as changed
        a.dialogs.nextAnswers = {QMessageBox::Ok, QMessageBox::Discard};
        w.w->cmdCancelClick();
        QVERIFY(!w.w->databaseChanged());
        QCOMPARE(w.tree0().text(w.tree0().root()), u"Jan"_s);
        QCOMPARE(state(w), ViewState);
    }

    // "E-mail Selected": each ticked customer's invoice goes to the run with
    // its texts filled; those sent are unticked, the rest stay for printing.
    void emailSelected()
    {
        writeDatabase(sb.db, Customers, Items, {{1, {"7x3", "9"}}, {2, {"7"}}, {3, {"9"}}});
        Window w(3);
        QStringList seen;
        w.pp->emailRun = [&](const QList<mail::MailCustomer> &customers, const mail::Compose &compose) {
            QList<mail::CustomerResult> out;
            for (const mail::MailCustomer &c : customers) {
                const mail::OutgoingMessage m = compose(c);
                seen << c.number + u' ' + m.attachmentName + (m.pdf.startsWith("%PDF-") ? u" PDF "_s : u" - "_s) +
                            m.body.section(u"The amount of "_s, 1).section(u' ', 0, 0);
                out.append({c, c.number == u"2" ? mail::CustomerResult::Outcome::Refused
                                                : mail::CustomerResult::Outcome::Sent});
            }
            return out;
        };
        click(w.pp->findChild<QAbstractButton *>(u"cmdEmailSelected"_s));
        QCOMPARE(seen, QStringList({"3 Test Co - invoice Jan.pdf PDF $10.00", "1 Test Co - invoice Jan.pdf PDF $10.00",
                                    "2 Test Co - invoice Jan.pdf PDF $10.00"}));
        QCOMPARE(QList<bool>({w.tree1().checked(w.tree1().find("1k")), w.tree1().checked(w.tree1().find("2k")),
                              w.tree1().checked(w.tree1().find("3k"))}),
                 QList<bool>({false, true, false}));
    }
};

QTEST_MAIN(TstBillPeriodPanel)
#include "tst_billperiodpanel.moc"
