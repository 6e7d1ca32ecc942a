// SPDX-License-Identifier: GPL-3.0-or-later
// The row types: every row text comes back character for character through
// parse and text, both forms (owning and view) read the same fields, the
// field counts that are not a row of the kind are refused, and the rows the
// program builds have the layout the file and the sort order rely on.
#include "database/rowtypes.h"

#include <QTest>

using namespace qor;
using namespace Qt::StringLiterals;

namespace {
QString sep(std::initializer_list<const char *> parts)
{
    QStringList l;
    for (const char *p : parts) l << QString::fromUtf8(p);
    return l.join(FieldSep);
}
}  // namespace

class TstRowTypes : public QObject {
    Q_OBJECT
private slots:
    void customerRows()
    {
        const QString text = sep({"Yu, Kim", "Kim", "Yu", "1 Road", "", "Town", "k@y.example", "0123", "two\r\nlines"});
        const auto row = CustomerRow::parse(text);
        QVERIFY(row);
        QCOMPARE(row->text(), text);
        QCOMPARE(row->firstName, u"Kim");
        QCOMPARE(row->lastName, u"Yu");
        QCOMPARE(row->address3, u"Town");
        QCOMPARE(row->phone, u"0123");
        QCOMPARE(row->notes, u"two\r\nlines");
        QCOMPARE(row->entry(0), row->firstName);
        QCOMPARE(row->entry(7), row->notes);
        QVERIFY(!row->archived());

        const auto view = CustomerView::parse(text);
        QVERIFY(view);
        for (int i = 0; i < CustomerRow::EntryCount; ++i) QCOMPARE(view->entry(i), row->entry(i));
        QCOMPARE(view->text(), text);

        // Eight or ten fields are no customer row; nine empty fields are.
        QVERIFY(!CustomerRow::parse(sep({"a", "b", "c", "d", "e", "f", "g", "h"})));
        QVERIFY(!CustomerView::parse(text + FieldSep));
        QVERIFY(CustomerRow::parse(QString(8, FieldSep)));
        QVERIFY(!CustomerRow::parse(QString()));

        const QString archived = customer::archivedText(text);
        QCOMPARE(archived, ArchiveMark + text);
        QCOMPARE(customer::archivedText(archived), archived);
        QVERIFY(CustomerRow::parse(archived)->archived());
        QCOMPARE(CustomerRow::parse(archived)->name(), u"Yu, Kim");
        QCOMPARE(customer::displayNameOf(archived), ArchiveMark + u"Yu, Kim"_s);
        QCOMPARE(customer::displayNameOf(u"no separator"), u"no separator");

        QCOMPARE(customer::displayNameFor(u"Kim"_s, u"Yu"_s), u"Yu, Kim");
        QCOMPARE(customer::displayNameFor(u"Kim"_s, QString()), u"Kim");
        QCOMPARE(customer::placeholder().text(), sep({"Customer, Deleted", "Deleted", "Customer", "", "", "", "", "", ""}));
    }

    void itemRows()
    {
        // Only the first " - " divides price from name.
        const QString text = u"000000012.50$12.50 - Hedge - front and back"_s;
        const ItemRow row = ItemRow::parse(text);
        QCOMPARE(row.sortPrice, u"000000012.50");
        QVERIFY(!row.archived);
        QCOMPARE(row.listText, u"$12.50 - Hedge - front and back");
        QCOMPARE(row.priceText(), u"$12.50");
        QCOMPARE(row.name(), u"Hedge - front and back");
        QCOMPARE(row.text(), text);
        QCOMPARE(item::make(u"000000012.50"_s, u"$12.50"_s, u"Hedge - front and back"_s).text(), text);

        // The mark stands after the twelve characters of the sort price.
        const QString archived = item::archivedText(text);
        QCOMPARE(archived, u"000000012.50"_s + ArchiveMark + u"$12.50 - Hedge - front and back"_s);
        QCOMPARE(item::archivedText(archived), archived);
        const ItemView view = ItemView::parse(archived);
        QVERIFY(view.archived);
        QCOMPARE(view.listText, row.listText);
        QCOMPARE(view.text(), archived);
        QVERIFY(item::isArchived(archived));
        QVERIFY(!item::isArchived(text));

        // Odd texts still come back whole: short, no divider, a name that
        // looks like the mark at the front.
        for (const QString &odd : {QString(), u"123"_s, u"000000001.00"_s, u"000000001.00$1.00"_s,
                                   u"000000001.00"_s + ArchiveMark, u"zzzz\u00BB000000001.00 - x"_s}) {
            QCOMPARE(ItemRow::parse(odd).text(), odd);
            QCOMPARE(ItemView::parse(odd).text(), odd);
        }
        QCOMPARE(item::archivedText(u"123"_s), u"123"_s + ArchiveMark);
        QCOMPARE(ItemRow::parse(u"000000001.00$1.00"_s).name(), QString());
    }

    void periodRows()
    {
        const QString text = sep({"2024/01/01", "January 2024", "2024/01/31", "2024/02/15"});
        const auto row = PeriodRow::parse(text);
        QVERIFY(row);
        QCOMPARE(row->start, u"2024/01/01");
        QCOMPARE(row->name, u"January 2024");
        QCOMPARE(row->end, u"2024/01/31");
        QCOMPARE(row->billDue, u"2024/02/15");
        QCOMPARE(row->text(), text);
        QCOMPARE(PeriodView::parse(text)->name, u"January 2024");
        QVERIFY(!PeriodRow::parse(sep({"2024/01/01", "broken", "2024/01/31"})));
        QVERIFY(!PeriodView::parse(text + FieldSep));
    }

    void invoiceRecords()
    {
        const QString items = ItemEntry::join({u"12"_s, ItemEntry::make(u"7"_s, 3), ItemEntry::make(u"9"_s, 1)});
        QCOMPARE(items, u"12"_s + ItemSep + u"7x3"_s + ItemSep + u"9"_s);

        const QString named = QStringList{u"Jan"_s, u"Yu, Kim"_s, u"2"_s, u"4.5"_s, items, u"a note"_s}.join(FieldSep);
        const auto row = InvoiceRecordRow::parse(named);
        QVERIFY(row);
        QVERIFY(row->named);
        QCOMPARE(row->period, u"Jan");
        QCOMPARE(row->customerName, u"Yu, Kim");
        QCOMPARE(row->cid, u"2");
        QCOMPARE(row->balance, u"4.5");
        QCOMPARE(row->items, items);
        QCOMPARE(row->note, u"a note");
        QCOMPARE(row->text(), named);

        QStringList numbers, quantities;
        row->forEachEntry([&](ItemEntry e, QStringView) {
            numbers << e.number.toString();
            quantities << e.quantity.toString();
            return true;
        });
        QCOMPARE(numbers, (QStringList{"12", "7", "9"}));
        QCOMPARE(quantities, (QStringList{"", "3", ""}));

        // The five-field form of right after a read: no name, fields one place earlier.
        const QString unnamed = sep({"Jan", "2", "0", "12", ""});
        QVERIFY(record::isUnnamed(unnamed));
        QVERIFY(!record::isUnnamed(named));
        const auto view = InvoiceRecordView::parse(unnamed);
        QVERIFY(view);
        QVERIFY(!view->named);
        QCOMPARE(view->cid, u"2");
        QCOMPARE(view->items, u"12");
        QCOMPARE(view->text(), unnamed);
        InvoiceRecordRow filled = *InvoiceRecordRow::parse(unnamed);
        filled.named = true;
        filled.customerName = u"Yu, Kim"_s;
        QCOMPARE(filled.text(), sep({"Jan", "Yu, Kim", "2", "0", "12", ""}));

        QStringView one;
        QVERIFY(InvoiceRecordView::cidOf(named, one));
        QCOMPARE(one, u"2");
        QVERIFY(InvoiceRecordView::itemsOf(named, one));
        QCOMPARE(one, items);
        QVERIFY(!InvoiceRecordView::itemsOf(sep({"Jan", "A", "2", "0"}), one));

        QVERIFY(!InvoiceRecordRow::parse(sep({"Jan", "2", "0", "12"})));
        QVERIFY(!InvoiceRecordRow::parse(named + FieldSep));
        QCOMPARE(record::keyFor(u"Jan"_s, u"2"_s), u"Jan"_s + FieldSep + u"2"_s + FieldSep);

        // An empty list is one empty entry; a trailing separator gives an empty last one.
        int n = 0;
        ItemEntry::forEach(QStringView(), [&](ItemEntry e, QStringView) { n += e.number.isEmpty(); return true; });
        QCOMPARE(n, 1);
    }

    // What the reader and the writer use: loose views of rows with too few or
    // too many fields, rows composed in place, a name put into a five-field
    // record, item lists walked entry by entry. Fields longer than eight
    // characters take the wide separator search.
    void readerAndWriterForms()
    {
        const QString longField(20, u'q');
        const QString nine = sep({"Yu, Kim", "Kim", "Yu", "1 Road", "", "Town", "k@y.example", "0123", "n"});
        const QString extra = nine + FieldSep + longField;
        QVERIFY(!CustomerView::parse(extra));
        QStringView f[CustomerRow::FieldCount];
        QCOMPARE(rowdetail::splitFields(extra + FieldSep + u"x"_s, f, CustomerRow::FieldCount), CustomerRow::FieldCount + 1);
        QCOMPARE(f[CustomerRow::FieldCount - 1], u"n");
        QCOMPARE(CustomerView::loose(extra).notes, u"n");
        const CustomerView few = CustomerView::loose(longField + FieldSep + longField);
        QCOMPARE(few.firstName, longField);
        QVERIFY(few.lastName.isEmpty() && few.notes.isEmpty());
        QCOMPARE(PeriodView::loose(u"2024/01/01"_s).start, u"2024/01/01");
        const QString six = sep({"Jan", "Yu, Kim", "2", "4.5", "12", "note"});
        const InvoiceRecordView r = InvoiceRecordView::loose(six + FieldSep + longField);
        QCOMPARE(r.cid, u"2");
        QCOMPARE(r.note, u"note");

        // compose gives what text() gives, for both record forms.
        for (bool named : {true, false}) {
            InvoiceRecordRow row{u"Jan"_s, u"Yu, Kim"_s, u"2"_s, longField, ItemEntry::join({u"12"_s, u"7x3"_s}), u""_s};
            row.named = named;
            const QList<QString> items{u"12"_s, u"7x3"_s};
            QString built(row.text().size(), Qt::Uninitialized);
            using F = InvoiceRecordRow::Field;
            char16_t *const b = reinterpret_cast<char16_t *>(built.data());
            char16_t *end = InvoiceRecordRow::compose(b, named, [&](F f, char16_t *d) {
                auto put = [d](const QString &v) { return std::copy(v.utf16(), v.utf16() + v.size(), d); };
                switch (f) {
                case F::Period: return put(row.period);
                case F::CustomerName: return put(row.customerName);
                case F::Cid: return put(row.cid);
                case F::Balance: return put(row.balance);
                case F::Items:
                    return ItemEntry::compose(d, items.size(), [&](qsizetype i, char16_t *e) {
                        return std::copy(items[i].utf16(), items[i].utf16() + items[i].size(), e);
                    });
                case F::Note: return put(row.note);
                }
                return d;
            });
            QCOMPARE(end - b, built.size());
            QCOMPARE(built, row.text());
            QCOMPARE(built.size(), row.period.size() + (named ? row.customerName.size() : 0) + row.cid.size() +
                                       row.balance.size() + row.items.size() + row.note.size() +
                                       InvoiceRecordRow::separatorCount(named));
            if (!named) {
                QString own = built;
                record::nameInPlace(own, u"Yu, Kim"_s);
                row.named = true;
                QCOMPARE(own, row.text());
            }
        }
        const ItemRow item{u"000000001.00"_s, true, u"$1.00 - Stamp"_s};
        QString built(ItemRow::composedSize(true, 12, 5, 5), Qt::Uninitialized);
        ItemRow::compose(reinterpret_cast<char16_t *>(built.data()), true, [](ItemRow::Field f, char16_t *d) {
            const QString v = f == ItemRow::Field::SortPrice   ? u"000000001.00"_s
                              : f == ItemRow::Field::PriceText ? u"$1.00"_s
                                                               : u"Stamp"_s;
            return std::copy(v.utf16(), v.utf16() + v.size(), d);
        });
        QCOMPARE(built, item.text());
        // A price ending in " -" runs into the divider: the first " - " ends it.
        QCOMPARE(ItemRow::priceTextOf(u"$1 - - x"_s), u"$1");

        QStringList seen;
        const auto collect = [&seen](QStringView e) { seen << e.toString(); return true; };
        ItemEntry::forEachText(QString(u"12"_s + ItemSep + ItemSep + u"7x3"_s), collect);
        QCOMPARE(seen, QStringList({u"12"_s, u""_s, u"7x3"_s}));
        seen.clear();
        ItemEntry::forEachText(QStringView(), collect);
        QCOMPARE(seen, QStringList({u""_s}));
    }

    void keys()
    {
        QCOMPARE(numberKey(41), u"41k");
        QCOMPARE(plainNumber(u"4k1k"), u"41");
    }
};

QTEST_GUILESS_MAIN(TstRowTypes)
#include "tst_rowtypes.moc"
