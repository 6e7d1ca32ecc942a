// SPDX-License-Identifier: GPL-3.0-or-later
// The Customers and the Products and Services panels' editors without a
// window: each step a user takes, and what the buttons, the print button and
// the fields then show; and the rows of the Customers list.
#include "customers/customereditor.h"
#include "customers/customerlist.h"
#include "database/keyedlist.h"
#include "products/producteditor.h"

#include <QtTest>

using namespace qor;

class TstCustomerEditor : public QObject {
    Q_OBJECT

    // The two buttons ("-" marks a hidden one), the print button, the fields
    // that ask for input, the customer loaded.
    static QString view(const CustomerEditor &e)
    {
        auto button = [](CustomerEditor::Button b, const QString &caption) { return (b.shown ? "" : "-") + caption; };
        QString asks;
        for (int i = 0; i < CustomerEditor::FieldCount; ++i) asks += e.asksForInput(i) ? 'A' : '.';
        return QStringLiteral("%1 / %2 | %3print | %4 | %5")
            .arg(button(e.addNew(), CustomerEditor::addNewCaption(e.addNew().mode)),
                 button(e.undo(), CustomerEditor::undoCaption(e.undo().mode)), e.printShown() ? "" : "-", asks,
                 e.loadedKey());
    }
    // Steps as the panel tells them: "show" fills Jo Smith (key 1k), "t6=55"
    // is typing into field 6, "back1"/"del0" say whether rows are left.
    static void run(CustomerEditor &e, const QString &steps)
    {
        CustomerRow jo{"Smith, Jo", "Jo", "Smith", "1 Main St", "", "", "", "", "gate\r\ndog"};
        for (const QString &step : steps.split(' ', Qt::SkipEmptyParts)) {
            if (step == "show") e.show("1k", jo);
            else if (step == "showLf") e.show("1k", jo, {"Jo", "Smith", "1 Main St", "", "", "", "", "gate\ndog"});
            else if (step.startsWith('t')) e.typedText(step.mid(1, 1).toInt(), step.mid(3));
            else if (step == "clear") e.clear();
            else if (step == "new") e.startNew();
            else if (step == "stored") e.stored();
            else if (step == "undoEdit") e.undoEdit();
            else if (step.startsWith("back")) e.backToViewing(step.endsWith('1'));
            else if (step.startsWith("del")) e.deleted(step.endsWith('1'));
            else if (step == "follow") e.followed();
            else QFAIL(qPrintable("no such step: " + step));
        }
    }

    // The two buttons ("-" marks a hidden one), the entry fields, which of
    // them ask for input, whether Enter adds, and what the fields hold.
    static QString productView(const ProductEditor &e)
    {
        auto button = [](ProductEditor::Button b, const QString &caption) { return (b.shown ? "" : "-") + caption; };
        return QStringLiteral("%1 / %2 | %3fields %4%5 | %6 | %7;%8")
            .arg(button(e.addNew(), ProductEditor::addNewCaption(e.addNew().mode)),
                 button(e.cancel(), ProductEditor::cancelCaption(e.cancel().mode)), e.fieldsShown() ? "" : "-",
                 e.priceAsks() ? "P" : ".", e.nameAsks() ? "N" : ".", e.addIsDefault() ? "Enter" : "-", e.price(),
                 e.name());
    }

    // "1k=Lee 2k=Moss" as list rows.
    static std::vector<CustomerList::Row> listRows(const QString &text)
    {
        std::vector<CustomerList::Row> out;
        for (const QString &r : text.split(' ', Qt::SkipEmptyParts))
            out.push_back({r.section('=', 0, 0), r.section('=', 1)});
        return out;
    }

    // A row of a table of steps and what the editor then shows.
    static void row(const char *name, const QString &steps, const QString &shown)
    {
        QTest::newRow(name) << steps << shown;
    }

private slots:
    void transitions_data()
    {
        QTest::addColumn<QString>("steps");
        QTest::addColumn<QString>("shown");
        const QString viewing = "&New Customer / &Delete Existing | print | ........ | 1k";
        row("start", "", "&New Customer / -&Delete Existing | print | ........ | ");
        row("a customer shown", "show", viewing);
        row("typing is an edit", "show t6=55", "Apply &Edit / &Undo Edit | print | ........ | 1k");
        row("typed back, no edit", "show t6=55 t6=", "&New Customer / -&Undo Edit | print | ........ | 1k");
        row("undo refills", "show t6=55 show undoEdit", viewing);
        row("edit applied", "show t1=Adams show stored", viewing);
        QTest::newRow("a box that shows line ends its way")
            << "showLf"
            << "Apply &Edit / &Delete Existing | print | ........ | 1k";
        row("new entry", "show new", "-&Add New / &Cancel New | -print | AAAAAAAA | ");
        row("a last name alone", "new t1=Lee", "-&Add New / &Cancel New | -print | A.AAAAAA | ");
        row("a first name", "new t1=Lee t0=Al", "&Add New / &Cancel New | -print | ..AAAAAA | ");
        row("first name taken back", "new t0=Al t0=", "-&Add New / &Cancel New | -print | AAAAAAAA | ");
        row("added", "new t0=Al show stored", viewing);
        row("cancelled, rows", "show new show back1", viewing);
        row("cancelled, no rows", "new t0=Al back0", "&New Customer / -&Cancel New | -print | ........ | ");
        // An arrow key during an entry shows that row: its delete is offered,
        // while the entry's fields are added as typed.
        row("arrow key in an entry", "new t0=Al show", "&Add New / &Delete Existing | -print | ...AAAA. | 1k");
        row("highlight moved", "new t0=Al show follow", viewing);
        row("deleted, rows left", "show t0=X show del1", viewing);
        row("deleted the last", "show del0", "&New Customer / -&Cancel New | -print | ........ | ");
        row("emptied while viewing", "show clear", "&New Customer / -&Delete Existing | print | ........ | ");
    }
    void transitions()
    {
        QFETCH(QString, steps);
        QFETCH(QString, shown);
        CustomerEditor e;
        run(e, steps);
        QCOMPARE(view(e), shown);
    }

    // The Products and Services panel's editor.
    void productTransitions_data()
    {
        QTest::addColumn<QString>("steps");
        QTest::addColumn<QString>("shown");
        row("start", "", "&New Product or Service / -&Cancel New | fields PN | - | ;");
        row("empty list", "list0", "&New Product or Service / -&Delete Existing | -fields PN | - | ;");
        row("list", "list1", "&New Product or Service / &Delete Existing | -fields PN | - | ;");
        row("typing in the list", "list1 p=5", "&New Product or Service / &Delete Existing | -fields PN | - | 5;");
        row("entry", "list1 new", "-&Add New / &Cancel New | fields PN | Enter | ;");
        row("not a price", "new p=abc n=Soap", "-&Add New / &Cancel New | fields P. | Enter | abc;Soap");
        row("price and name", "new p=12.50 n=Soap", "&Add New / &Cancel New | fields .. | Enter | 12.50;Soap");
        row("name taken back", "new p=12.50 n=Soap n=", "-&Add New / &Cancel New | fields .N | Enter | 12.50;");
        row("price taken back", "new n=Soap p=1 p=", "-&Add New / &Cancel New | fields P. | Enter | ;Soap");
        // Cancel keeps the typing in the hidden fields; the next entry empties them.
        row("cancelled", "new p=7 list1", "&New Product or Service / &Delete Existing | -fields .N | Enter | 7;");
        row("again", "new p=7 list1 new", "-&Add New / &Cancel New | fields PN | Enter | ;");
    }
    void productTransitions()
    {
        QFETCH(QString, steps);
        QFETCH(QString, shown);
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
        ProductEditor e;
        for (const QString &step : steps.split(' ', Qt::SkipEmptyParts)) {
            if (step == "new") e.startEntry();
            else if (step.startsWith("list")) e.showList(step.endsWith('1'));
            else if (step.startsWith("p=")) e.typedPrice(step.mid(2));
            else if (step.startsWith("n=")) e.typedName(step.mid(2));
            else QFAIL(qPrintable("no such step: " + step));
        }
        QCOMPARE(productView(e), shown);
    }

    // What "&Add New" makes of "price|name": the stored row, the first line
    // of the refusal, or a duplicate of the "$5.00 - Soap" the list shows.
    void productAdded_data()
    {
        QTest::addColumn<QString>("steps");
        QTest::addColumn<QString>("shown");
        row("grouping, dashes", "1,200|Roof - full", "000001200.00$1,200.00 - Roof - full");
        row("negative", "-3|Refund", "-99999996.99($3.00) - Refund");
        row("same shown form", "5.00|Soap", "duplicate");
        row("below the cent", "0.005|Nut", "\"0.005\" has more than two decimals.");
        row("field mark", "5|a\u0001",
            "The text holds a control character (U+0001 or U+0002) that the database uses "
            "to divide its fields.");
        row("not a number", "abc|Soap", "nothing");
        const QString euros = QLocale(QLocale::German).toCurrencyString(1200.5);
        row("German forms", "de 1.200,5|Seife", "000001200,50" + euros + " - Seife");
    }
    void productAdded()
    {
        QFETCH(QString, steps);
        QFETCH(QString, shown);
        const bool german = steps.startsWith("de ");
        QLocale::setDefault(QLocale(german ? QLocale::German : QLocale::English));
        ProductEditor e;
        e.startEntry();
        e.typedPrice(steps.section('|', 0, 0).mid(german ? 3 : 0));
        e.typedName(steps.section('|', 1));
        const auto item = e.newItem([](const QString &listText) { return listText == "$5.00 - Soap"; });
        QString problem = item.duplicate ? QString("duplicate") : item.problem.section('\r', 0, 0);
        if (problem.isEmpty()) problem = "nothing";
        QCOMPARE(item.row ? item.row->text() : problem, shown);
    }

    // A refresh ("rows shown > table's rows"): its steps, taken in turn on
    // the rows shown, make them the table's; few steps, and a rebuild when
    // nothing was shown.
    void listRefresh_data()
    {
        QTest::addColumn<QString>("steps");
        QTest::addColumn<QString>("shown");  // the number of steps, "rebuilt"
        row("nothing shown", " > 1=A 2=B", "rebuilt");
        row("first gone", "1=A 2=B 3=C > 2=B 3=C", "1");
        row("last two gone", "1=A 2=B 3=C > 1=A", "2");
        row("put in", "1=A 3=C > 4=_ 1=A 2=B 3=C 5=D", "3");
        row("renamed", "1=A 2=B > 1=A 2=Bo", "1");
        row("traded places", "1=A 2=B 3=C 4=D > 1=A 3=B 2=C 4=D", "3");
    }
    void listRefresh()
    {
        QFETCH(QString, steps);
        QFETCH(QString, shown);
        CustomerList list;
        std::vector<CustomerList::Row> rows = listRows(steps.section('>', 0, 0));
        list.update(rows);
        const CustomerList::Update u = list.update(listRows(steps.section('>', 1)));
        for (const CustomerList::Step &s : u.steps) {
            const auto at = rows.begin() + s.position;
            if (s.kind == CustomerList::Step::Remove) rows.erase(at);
            else if (s.kind == CustomerList::Step::Insert) rows.insert(at, s.row);
            else at->name = s.row.name;
        }
        QCOMPARE(u.rebuild ? QString("rebuilt") : QString::number(u.steps.size()), shown);
        QVERIFY(list.rows() == listRows(steps.section('>', 1)) && (u.rebuild || rows == list.rows()));
    }

    // An edit ("rows shown > row edited") takes its row out and puts it in
    // at its sorted place (equal names in table order); an add only puts in.
    void listEdits_data()
    {
        QTest::addColumn<QString>("steps");
        QTest::addColumn<QString>("shown");  // "out@ in@ | keys"
        row("added last", "1=Ames 2=Bell > 3=Cole", "-1 2 | 1 2 3");
        row("renamed down", "1=Ames 2=Bell 3=Cole > 1=Dunn", "0 2 | 2 3 1");
        row("between equals", "1=Lee 3=Lee > 2=Lee", "-1 1 | 1 2 3");
        row("after equals", "1=Lee 2=Lee 3=Moss > 4=Lee", "-1 2 | 1 2 4 3");
        row("before equals", "3=Lee 4=Lee > 1=Lee", "-1 0 | 1 3 4");
    }
    void listEdits()
    {
        QFETCH(QString, steps);
        QFETCH(QString, shown);
        KeyedList table;  // the table orders equal names as they were added
        for (const char *key : {"1", "2", "3", "4"}) table.add(key, "Lee");
        CustomerList list;
        list.update(listRows(steps.section('>', 0, 0)));
        const CustomerList::Row r = listRows(steps.section('>', 1)).front();
        QStringList out{QString::number(list.remove(r.key)), QString::number(list.insert(r.key, r.name, table)), "|"};
        for (const CustomerList::Row &x : list.rows()) out << x.key;
        QCOMPARE(out.join(' '), shown);
    }

    // The duplicate lookup compares exactly and passes over the customer
    // edited; the list shows current customers only; the row recalled at
    // start is the stored one when there is one.
    void listLookups()
    {
        CustomerList list;
        list.update(listRows("1=Lee 2=Lee 3=Moss"));
        QCOMPARE(QList<int>({list.find("Lee"), list.find("Lee", "1"), list.find("lee"), list.find("Moss", "3")}),
                 QList<int>({1, 2, 0, 0}));
        KeyedList table;
        table.add("1", CustomerRow{"Lee"}.text());
        table.add("2", CustomerRow{ArchiveMark + "Old"}.text());
        table.add("3", "Broken" + QString(FieldSep));
        QVERIFY(CustomerList::rowsOf(table) == listRows("1=Lee"));
        const auto recall = &CustomerList::recalledPosition;
        QCOMPARE(QList<int>({recall("3", 7), recall("7", 7), recall("8", 7), recall("x", 7), recall("", 0)}),
                 QList<int>({3, 7, 1, 1, 0}));
    }
};

QTEST_GUILESS_MAIN(TstCustomerEditor)
#include "tst_customereditor.moc"
