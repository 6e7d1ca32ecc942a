// SPDX-License-Identifier: GPL-3.0-or-later
// The Bill Periods and Printing panels in the real window, driven by their
// controls' names: entering and finalising a period, the menus and clicks of
// the tree, payments, the invoice note, and the file read again.
#include "../customers/panelharness.h"
#include "billing/billing.h"
#include "billing/entrycopy.h"
#include "billing/invoicetree.h"
#include "billingfixture.h"
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

    void nothingToBillYet()
    {
        writeDatabase(sb.db, Customers);
        Window w(2);
        Answerer a;
        QCOMPARE(state(w), u"&New Bill Period | -&Cancel New | -&Log Full Payment | -Log &Payment && Optional Note"_s);
        click(w.button("cmdAddNewBP"));
        QCOMPARE(a.last().text, u"Please add your Customers and your Products first."_s);
        QCOMPARE(a.last().title, u"QOR"_s);
        QVERIFY(w.get<QLabel>("lblDoubleClickToAdd")->isHidden());
        QCOMPARE(w.get<QLabel>("lblBillPeriodName")->text(), u"Bill Period:"_s);
    }

    // A period entered with marks and double-clicks, refused while wrong, and
    // finalised into the tables; both choosers then show it.
    void enteringAPeriod()
    {
        writeDatabase(sb.db, Customers, Items);
        Window w(2);
        Answerer a;
        click(w.button("cmdAddNewBP"));
        QCOMPARE(state(w), u"-&Add New | &Cancel New | -&Reset Customer Accounts | -Log &Payment && Optional Note"_s);
        QCOMPARE(w.get<QLabel>("lblBillPeriodName")->text(), u"Bill Period Name:"_s);
        QCOMPARE(w.get<QLabel>("lblExample")->text(), billing::exampleText(QDate::currentDate()));
        QVERIFY(!w.get<QLabel>("lblExample")->isHidden() && w.get<QComboBox>("cmbBillPeriod(1)")->isHidden());
        auto *products = w.get<QTreeWidget>("lvwProducts(1)");
        QCOMPARE(rowTexts(products), (QStringList{"$1.50 - Bolt", "$5.00 - Widget"}));
        auto *view = w.get<QTreeView>("tvwInvoiceRecords(0)");
        QVERIFY(view->width() < w.bp->width() / 2);  // it shares the width with the products
        QCOMPARE(billtest::dump(w.tree0()), (QStringList{"root_node = New Bill Period", "  3k = *Cole, Cy",
                                                         "  1k = *Lee, Ann", "  2k = *Moss, Bob"}));

        onNode(view, w.tree0(), "1k");  // Lee alone
        QCOMPARE(state(w), u"-&Add New | &Cancel New | &Reset Customer Accounts | -Log &Payment && Optional Note"_s);
        onNode(view, w.tree0(), "2k", Qt::LeftButton, Qt::ControlModifier);  // and Moss
        billRow(products, 2);
        billRow(products, 2);
        onNode(view, w.tree0(), "1k");
        billRow(products, 1);
        QCOMPARE(billtest::dump(w.tree0()),
                 (QStringList{"root_node = New Bill Period", "  3k = Cole, Cy", "  1k = *Lee, Ann", "  2k = Moss, Bob",
                              "    0000000100000007b = $5.00 - Widget (x2)", "    0000000200000007b = $5.00 - Widget (x2)",
                              "    0000000100000009b = $1.50 - Bolt"}));

        // The name and a due date of at least six characters bring "&Add New".
        retype(w.get("txtPField(3)"), u"1/1/4"_s);
        retype(w.get("txtBillPeriod"), u"May 2024"_s);
        QVERIFY(w.button("cmdAddNewBP")->isHidden());
        QVERIFY(w.get<QLabel>("lblExample")->isHidden() && !w.get<QLabel>("lblCustomerAccountsForThisPeriod")->isHidden());
        retype(w.get("txtPField(3)"), u"March 31, 2004"_s);
        QVERIFY(!w.button("cmdAddNewBP")->isHidden());
        QVERIFY(hasInfoColour(w.get("txtPField(3)")));  // a date, but not with two separators
        retype(w.get("txtPField(3)"), u"6/15/2024"_s);
        QVERIFY(!hasInfoColour(w.get("txtPField(3)")));
        retype(w.get("txtPField(1)"), u"5/1/2024"_s);
        QCOMPARE(w.button("cmdAddNewBP")->text(), u"&Add New"_s);

        // Cancelled at the question: still entering.
        a.answer = QMessageBox::Cancel;
        click(w.button("cmdAddNewBP"));
        QCOMPARE(a.last().text, billing::text::Finalise.text);
        QCOMPARE(w.w->db().periods().count(), 0);
        a.answer = QMessageBox::Ok;
        click(w.button("cmdAddNewBP"));
        QCOMPARE(w.w->db().periods().textOf(u"May 2024"), u"2024/05/01\u0001May 2024\u0001\u00012024/06/15"_s);
        QCOMPARE(w.w->db().invoiceRecords().count(), 2);
        QVERIFY(w.w->databaseChanged() && w.w->cmdSave()->isVisible());
        QCOMPARE(state(w), u"&New Bill Period | -&Cancel New | -&Log Full Payment | -Log &Payment && Optional Note"_s);
        QCOMPARE(w.get<QComboBox>("cmbBillPeriod(1)")->currentText(), u"May 2024"_s);
        QCOMPARE(w.pp->chooser()->currentText(), u"May 2024"_s);
        QCOMPARE(w.get<QLineEdit>("txtPField(3)")->text(), u"06/15/2024"_s);
        QVERIFY(w.get<QLineEdit>("txtPField(3)")->isReadOnly());
        QCOMPARE(billtest::dump(w.tree0()),
                 (QStringList{"root_node = May 2024", "  1k = Lee, Ann - owes $11.50 red", "    1bi = $5.00 - Widget (x2)",
                              "    2bi = $1.50 - Bolt", "  2k = Moss, Bob - owes $10.00 red",
                              "    3bi = $5.00 - Widget (x2)"}));
        QCOMPARE(billtest::dump(w.tree1()).first(), u"root_node = May 2024 [x]"_s);
        QVERIFY(view->width() > w.bp->width() / 2);  // the products are gone: the tree has it all

        // Again under the same name: refused; with nothing billed: refused.
        click(w.button("cmdAddNewBP"));
        retype(w.get("txtBillPeriod"), u"June 2024"_s);
        retype(w.get("txtPField(3)"), u"7/15/2024"_s);
        click(w.button("cmdAddNewBP"));
        QCOMPARE(a.last().title, u"No Customers Billed for this Period"_s);
        billRow(products, 1);
        retype(w.get("txtBillPeriod"), u"May 2024"_s);
        click(w.button("cmdAddNewBP"));
        QCOMPARE(a.last().title, u"Duplicate Name Found"_s);
        QCOMPARE(a.last().icon, QMessageBox::Warning);
        QCOMPARE(w.w->db().periods().count(), 1);

        // "&Cancel New" drops what was billed: the chosen period shows again.
        click(w.button("cmdCancelNewBP"));
        QCOMPARE(w.tree0().text(w.tree0().root()), u"May 2024"_s);
        QCOMPARE(w.w->db().invoiceRecords().count(), 2);
    }

    void menusAndDoubleClicks()
    {
        writeDatabase(sb.db, Customers, Items);
        Window w(2);
        Answerer a;
        click(w.button("cmdAddNewBP"));
        auto *view = w.get<QTreeView>("tvwInvoiceRecords(0)");
        auto *products = w.get<QTreeWidget>("lvwProducts(1)");
        onNode(view, w.tree0(), "3k");
        billRow(products, 1);
        billRow(products, 2);
        billRow(products, 2);
        // Billing changes the tree as a whole; the selected customer stays selected.
        QCOMPARE(w.tree0().key(w.bp->treeBinding()->selectedNode()), u"3k"_s);
        QVERIFY(view->isExpanded(w.tree0().indexOf(w.tree0().find("3k"))));

        onNode(view, w.tree0(), "1k", Qt::RightButton);
        QMenu *menuC = w.bp->popupC();
        QVERIFY(menuC->isVisible());
        QCOMPARE(menuC->actions().size(), 2);
        w.bp->findChild<QAction *>(u"mnuSelectAll"_s)->trigger();
        menuC->hide();
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
        onNode(view, w.tree0(), "2k");
        for (int i = 0; i < 99; ++i) billRow(products, 2);
        QVERIFY(a.seen().isEmpty());
        billRow(products, 2);
        QCOMPARE(a.last().title, billing::text::QuantityFullTitle);
        QVERIFY(a.last().text.contains(u"Moss, Bob: $5.00 - Widget (x99)"_s));

        // "&Reset Customer Accounts" starts over.
        click(w.button("cmdResetCustomerAccounts"));
        QCOMPARE(w.tree0().nodeCount(), 4);
        QVERIFY(!billing::treeHasBilledItem(w.tree0()));
    }

    // An open entry is neither replaced by the Printing panel's chooser nor
    // dropped unasked; an entry alone is no change of the database.
    void theEntryIsKept()
    {
        writeDatabase(sb.db, Customers, Items, {{1, {"7x3", "9"}}, {2, {"7"}}});
        Window w(2);
        Answerer a;
        click(w.button("cmdAddNewBP"));
        retype(w.get("txtPField(3)"), u"6/15/2024"_s);
        onNode(w.get<QTreeView>("tvwInvoiceRecords(0)"), w.tree0(), "3k");
        billRow(w.get<QTreeWidget>("lvwProducts(1)"), 1);
        const QStringList entry = billtest::dump(w.tree0());
        QVERIFY(!w.w->databaseChanged());
        w.pp->chooser()->setCurrentIndex(-1);
        w.pp->chooser()->setCurrentIndex(0);
        QCOMPARE(billtest::dump(w.tree0()), entry);
        QCOMPARE(w.get<QLineEdit>("txtPField(3)")->text(), u"6/15/2024"_s);
        QCOMPARE(w.tree1().text(w.tree1().root()), u"Jan"_s);

        // Abandoning the changes, then quitting: "&Keep Entering" keeps it.
        a.dialogs.nextAnswers = {QMessageBox::Ok, QMessageBox::Cancel};
        w.w->cmdCancelClick();
        const auto question = a.dialogs.messages().last().message;
        QCOMPARE(question.captions, (QList<std::pair<QMessageBox::StandardButton, QString>>{
                                        {QMessageBox::Cancel, u"&Keep Entering"_s},
                                        {QMessageBox::Discard, u"&Drop the Entry"_s}}));
        a.answer = QMessageBox::Cancel;
        QVERIFY(!w.w->close());
        QCOMPARE(a.seen().size(), 3);
        QCOMPARE(billtest::dump(w.tree0()), entry);
        QCOMPARE(w.get<QLabel>("lblBillPeriodName")->text(), u"Bill Period Name:"_s);

        // "&Drop the Entry": the books read again, the panel in view mode.
        a.dialogs.nextAnswers = {QMessageBox::Ok, QMessageBox::Discard};
        w.w->cmdCancelClick();
        QCOMPARE(w.get<QLabel>("lblBillPeriodName")->text(), u"Bill Period:"_s);
        QCOMPARE(w.tree0().text(w.tree0().root()), u"Jan"_s);
        QCOMPARE(state(w), u"&New Bill Period | -&Cancel New | -&Log Full Payment | -Log &Payment && Optional Note"_s);
    }

    // A crash with an entry open and the books unchanged: the recovery copy
    // keeps the entry, and Restore in the next window reopens it as it was.
    void theEntryOutlivesACrash()
    {
        writeDatabase(sb.db, Customers, Items, {{1, {"7x3", "9"}}});
        std::optional<billing::BillEntry> entry;
        QByteArray kept[3];
        {
            Window w(2);
            click(w.button("cmdAddNewBP"));
            onNode(w.get<QTreeView>("tvwInvoiceRecords(0)"), w.tree0(), "3k");
            billRow(w.get<QTreeWidget>("lvwProducts(1)"), 2);
            billRow(w.get<QTreeWidget>("lvwProducts(1)"), 2);
            retype(w.get("txtPField(3)"), u"6/15/2024"_s);
            retype(w.get("txtBillPeriod"), u"Feb 50%"_s);
            QVERIFY(w.w->recoveryTimer().isActive() && !w.w->databaseChanged());
            entry = w.bp->openEntry();
            QVERIFY(entry && entry->items == (QList<billing::BillEntry::Item>{{"3", "7", 2}}));
            QVERIFY(w.w->session().writeRecovery());
            const Recovery r = w.w->session().recovery();  // a copy: the session goes with the window
            int i = 0;
            for (const QString &f : {r.databaseCopy(), r.entryFile(), r.infoFile()}) {
                QFile file(f);
                QVERIFY(file.open(QIODevice::ReadOnly));
                kept[i++] = file.readAll();
            }
            QVERIFY(!billing::decodeEntry(kept[1].chopped(2)));  // cut short: not read at all
            discard(w.w);                                        // an orderly end removes the copy; a crash would have left it
            i = 0;
            for (const QString &f : {r.databaseCopy(), r.entryFile(), r.infoFile()}) {
                QFile file(f);
                QVERIFY(file.open(QIODevice::WriteOnly) && file.write(kept[i++]) > 0);
            }
        }
        Answerer a;
        a.answer = QMessageBox::Yes;
        Window w(0);
        QCOMPARE(a.last().title, u"Recover unsaved changes"_s);
        QCOMPARE(w.bp->openEntry(), entry);
        QVERIFY(w.bp->isVisible() && !w.button("cmdAddNewBP")->isHidden());
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

    // Payments on a period read from the file, the invoice note, saved and read again.
    void paymentsAndTheFile()
    {
        writeDatabase(sb.db, Customers, Items, {{1, {"7x3", "9"}}, {2, {"7"}}});
        QStringList tree0, tree1;
        {
            Window w(2);
            Answerer a;
            auto *view = w.get<QTreeView>("tvwInvoiceRecords(0)");
            QCOMPARE(w.tree0().text(w.tree0().find("1k")), u"Lee, Ann - owes $10.00"_s);
            onNode(view, w.tree0(), "1k");
            QCOMPARE(state(w), u"&New Bill Period | -&Cancel New | &Log Full Payment | Log &Payment && Optional Note"_s);

            // The box tells the balance now and starts from it and the note:
            // OK on both is no change.
            a.dialogs.nextTexts = {u"$10.00"_s, QString()};
            click(w.button("cmdAdjustBalance"));
            const auto balanceBox = a.dialogs.seen[a.dialogs.seen.size() - 2];
            QVERIFY2(balanceBox.label.endsWith(u"\r\n\r\nBalance now: $10.00"_s), qPrintable(balanceBox.label));
            QCOMPARE(balanceBox.initial, u"$10.00"_s);
            QVERIFY(!w.w->databaseChanged());

            // Not an amount, or beyond the cent: refused with a message,
            // nothing logged, the note neither.
            for (const QString &typed : {u"twelve"_s, u"0.001"_s}) {
                a.dialogs.nextTexts = {typed, u"note"_s};
                click(w.button("cmdAdjustBalance"));
                QCOMPARE(a.last().title, u"Enter New Balance"_s);
                QVERIFY2(a.last().text.startsWith(u'"' + typed + u'"'), qPrintable(a.last().text));
            }
            QCOMPARE(a.dialogs.messages()[0].message.text.contains(u"can't be read"_s), true);
            QVERIFY(a.last().text.contains(u"more than two decimals"_s));
            QVERIFY(!w.w->databaseChanged() && !w.tree0().find("1knote"));
            // A group mark reads as a person reads it.
            a.dialogs.nextTexts = {u"1,200"_s, QString()};
            click(w.button("cmdAdjustBalance"));
            QCOMPARE(w.tree0().text(w.tree0().find("1k")), u"Lee, Ann - owes $1,200.00"_s);
            onNode(view, w.tree0(), "1k");

            a.dialogs.nextTexts = {u"$25.00"_s, u"check 12"_s};
            click(w.button("cmdAdjustBalance"));
            QCOMPARE(w.tree0().text(w.tree0().find("1k")), u"Lee, Ann - owes $25.00"_s);
            QCOMPARE(w.tree0().text(w.tree0().find("1knote")), u"NOTE: check 12"_s);
            QVERIFY(w.w->databaseChanged());
            QVERIFY(w.button("cmdAdjustBalance")->isHidden());
            QCOMPARE(w.tree0().key(w.bp->treeBinding()->selectedNode()), u"1k"_s);  // the place stays
            onNode(view, w.tree0(), "1k");
            click(w.button("cmdAdjustBalance"));  // both cancelled: the note stays
            QCOMPARE(a.dialogs.seen.last().initial, u"check 12"_s);

            // In full by double-click; the Printing tree follows.
            onNode(view, w.tree0(), "2k", Qt::LeftButton, {}, true);
            QCOMPARE(w.tree0().text(w.tree0().find("2k")), u"Moss, Bob - paid"_s);
            QCOMPARE(w.tree1().colour(w.tree1().find("2k")), NodeColour::GreyText);
            QVERIFY(!w.tree1().checked(w.tree1().find("2k")));

            // The invoice note, on the Printing panel, by right click.
            w.w->cmdTabClick(3);
            a.dialogs.nextTexts = {u"Thank you!"_s};
            onNode(w.pp->tree(), w.tree1(), "1k", Qt::RightButton);
            QCOMPARE(a.dialogs.last().title, u"Add a Note to Customer Bill"_s);
            QCOMPARE(w.tree1().text(w.tree1().nodes().back()), u"INVOICE NOTE: Thank you!"_s);
            QVERIFY(w.tree1().checked(w.tree1().nodes().back()));
            // Unticking the root's box unticks everything, the note too.
            QTreeView *v1 = w.pp->tree();
            const QModelIndex root = w.tree1().indexOf(w.tree1().root());
            QStyleOptionViewItem opt;
            opt.initFrom(v1);
            opt.rect = v1->visualRect(root);
            opt.features |= QStyleOptionViewItem::HasCheckIndicator | QStyleOptionViewItem::HasDisplay;
            opt.text = w.tree1().text(w.tree1().root());
            const QPoint box = v1->style()->subElementRect(QStyle::SE_ItemViewItemCheckIndicator, &opt, v1).center();
            QTest::mouseClick(v1->viewport(), Qt::LeftButton, {}, box);
            w.tree1().forEachNode([&](int n) { QVERIFY(!w.tree1().checked(n)); });

            QVERIFY(w.w->saveDatabase());
            // The note node was added last; a rebuild puts it after the items.
            billing::rebuildInvoiceTree(w.tree0(), w.w->db(), u"Jan"_s);
            tree0 = billtest::dump(w.tree0());
            QVERIFY(tree0.contains(u"    1knote = NOTE: check 12"_s));
            tree1 = billtest::dump(w.tree1());
        }
        // Read again from the file: the same balances, notes and items.
        Window again(3);
        QCOMPARE(billtest::dump(again.tree0()), tree0);
        QCOMPARE(billtest::dump(again.tree1()).size(), tree1.size() - 1);  // the invoice note is gone
        QVERIFY(again.tree1().checked(again.tree1().root()));
    }
};

QTEST_MAIN(TstBillPeriodPanel)
#include "tst_billperiodpanel.moc"
