// SPDX-License-Identifier: GPL-3.0-or-later
// The row types: a row text comes back character for character through parse
// and text; texts with another field count are no row of the kind; loose()
// reads any text; the item row's parts; the helpers. Rows composed in place
// are the reader's, pinned by the file tests.
#include "database/rowtypes.h"

#include <QTest>

using namespace qor;
using namespace Qt::StringLiterals;

namespace {
QString sep(const QStringList &parts) { return parts.join(FieldSep); }

template <class Row>
QStringList fieldsOf(const Row &r)
{
    QStringList l;
    for (auto m : Row::members()) l << QStringView(r.*m).toString();
    return l;
}

// fields: what the row holds by member, or empty when the text is no row.
// The owning and the view form of a kind are one template: each kind is
// checked in one of them, both forms among the kinds.
template <class Row>
void roundTrip(const QString &text, const QStringList &fields)
{
    const auto row = Row::parse(text);
    QCOMPARE(bool(row), !fields.isEmpty());
    // loose() takes the first fields by their places, missing ones empty.
    QStringList places = text.split(FieldSep).mid(0, Row::FieldCount);
    while (places.size() < Row::FieldCount) places << QString();
    QCOMPARE(fieldsOf(Row::loose(text)), places);
    if (!row) return;
    QCOMPARE(fieldsOf(*row), fields);
    QCOMPARE(row->text(), text);
}
}  // namespace

class TstRowTypes : public QObject {
    Q_OBJECT
private slots:
    void roundTrips_data()
    {
        QTest::addColumn<int>("kind");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("fields");
        enum { Customer,
               Period,
               Record };
        const QStringList nine{"Yu, Kim", "Kim", "Yu", "1 Road", "", "Town", "k@y.example", "0123", "two\r\nlines"};
        QStringList long9 = QStringList(9, QString(20, u'q'));
        long9[0] = long9[2] + u", "_s + long9[1];
        QTest::newRow("customer") << int(Customer) << sep(nine) << nine;
        QTest::newRow("customer, long fields") << int(Customer) << sep(long9) << long9;
        QTest::newRow("customer, empty fields") << int(Customer) << QString(8, FieldSep) << QStringList(9, QString());
        QTest::newRow("customer, 8 fields") << int(Customer) << sep(nine.mid(1)) << QStringList();
        QTest::newRow("customer, 10 fields") << int(Customer) << sep(long9 + nine.mid(8)) << QStringList();
        QTest::newRow("customer, none") << int(Customer) << QString() << QStringList();
        QTest::newRow("customer, one field") << int(Customer) << u"no separator"_s << QStringList();
        QTest::newRow("customer, first name alone") << int(Customer) << sep(QStringList{"Kim", "Kim"} + QStringList(7))
                                                    << QStringList{"Kim", "Kim"} + QStringList(7);
        const QStringList four{"2024/01/01", "January 2024", "2024/01/31", "2024/02/15"};
        QTest::newRow("period") << int(Period) << sep(four) << four;
        QTest::newRow("period, 3 fields") << int(Period) << sep(four.mid(1)) << QStringList();
        QTest::newRow("period, 5 fields") << int(Period) << sep(four + four.mid(3)) << QStringList();
        const QStringList six{"Jan", "Yu, Kim", "2", "4.5", u"12"_s + ItemSep + u"7x3"_s, "a note"};
        QTest::newRow("record") << int(Record) << sep(six) << six;
        // Right after a read: no name, the fields after it one place earlier.
        QTest::newRow("record, unnamed") << int(Record) << sep({"Jan", "2", "0", "12", ""})
                                         << QStringList{"Jan", "", "2", "0", "12", ""};
        QTest::newRow("record, 4 fields") << int(Record) << sep(six.mid(2)) << QStringList();
        QTest::newRow("record, 7 fields") << int(Record) << sep(six + six.mid(5)) << QStringList();
    }
    void roundTrips()
    {
        QFETCH(int, kind);
        QFETCH(QString, text);
        QFETCH(QStringList, fields);
        if (kind == 0) roundTrip<CustomerRow>(text, fields);
        else if (kind == 1) roundTrip<PeriodView>(text, fields);
        else roundTrip<InvoiceRecordView>(text, fields);
        const bool named = text.count(FieldSep) == 5;
        if (kind == 2 && !fields.isEmpty()) {
            QCOMPARE(InvoiceRecordView::parse(text)->named, named);
            QCOMPARE(record::isUnnamed(text), text.count(FieldSep) == 4);
        }
        // The helpers that read one field in place, or build and change whole rows.
        QStringView cid, items;
        if (kind == 2 && InvoiceRecordView::itemsOf(text, items) != (text.count(FieldSep) >= 4)) QFAIL("items found");
        if (kind == 2 && named) QVERIFY(InvoiceRecordView::cidOf(text, cid) && cid == fields[2] && items == fields[4]);
        if (kind == 0) QCOMPARE(customer::displayNameOf(text), text.section(FieldSep, 0, 0));
        if (kind != 0 || fields.isEmpty()) return;
        const QString archived = customer::archivedText(text);
        QVERIFY(archived == ArchiveMark + text && customer::archivedText(archived) == archived);
        QVERIFY(CustomerRow::parse(archived)->archived() && !CustomerRow::parse(text)->archived());
        QCOMPARE(CustomerView::parse(archived)->name(), fields[0]);
        QCOMPARE(customer::displayNameOf(archived), ArchiveMark + fields[0]);
        QVERIFY(CustomerRow::parse(text)->entry(0) == fields[1] && CustomerRow::parse(text)->entry(7) == fields[8]);
        QCOMPARE(customer::displayNameFor(fields[1], fields[2]), fields[0]);
    }

    void itemRows_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("sortPrice");
        QTest::addColumn<bool>("archived");
        QTest::addColumn<QString>("price");
        QTest::addColumn<QString>("name");
        // Only the first " - " divides price from name; the mark stands after
        // the twelve characters of the sort price.
        QTest::newRow("current") << u"000000012.50$12.50 - Hedge - front and back"_s << u"000000012.50"_s << false
                                 << u"$12.50"_s << u"Hedge - front and back"_s;
        QTest::newRow("archived") << u"000000040.00"_s + ArchiveMark + u"$40.00 - Gone"_s << u"000000040.00"_s << true
                                  << u"$40.00"_s << u"Gone"_s;
        QTest::newRow("price ending in -") << u"000000001.00$1 - - x"_s << u"000000001.00"_s << false << u"$1"_s
                                           << u"- x"_s;
        // Odd texts still come back whole.
        QTest::newRow("empty") << QString() << QString() << false << QString() << QString();
        QTest::newRow("short") << u"123"_s << u"123"_s << false << QString() << QString();
        QTest::newRow("no divider") << u"000000001.00$1.00"_s << u"000000001.00"_s << false << u"$1.00"_s << QString();
        QTest::newRow("mark alone") << u"000000001.00"_s + ArchiveMark << u"000000001.00"_s << true << QString()
                                    << QString();
        QTest::newRow("mark in front") << ArchiveMark + u"000000001.00 - x"_s << ArchiveMark + u"0000000"_s << false
                                       << u"01.00"_s << u"x"_s;
    }
    void itemRows()
    {
        QFETCH(QString, text);
        QFETCH(QString, sortPrice);
        QFETCH(bool, archived);
        QFETCH(QString, price);
        QFETCH(QString, name);
        const ItemRow row = ItemRow::parse(text);
        QCOMPARE(row.sortPrice, sortPrice);
        QCOMPARE(row.archived, archived);
        QCOMPARE(row.priceText(), price);
        QCOMPARE(row.name(), name);
        QCOMPARE(row.text(), text);
        QCOMPARE(ItemView::parse(text).text(), text);
        QCOMPARE(item::isArchived(text), archived);
        // A text too short for a sort price gets the mark at its end.
        const QString marked = item::archivedText(text);
        if (sortPrice.size() < SortPriceLength) {
            QCOMPARE(marked, text + ArchiveMark);
            return;
        }
        QCOMPARE(item::archivedText(marked), marked);
        const ItemView back = ItemView::parse(marked);
        QVERIFY(back.archived);
        QCOMPARE(back.listText, row.listText);
    }
};

QTEST_GUILESS_MAIN(TstRowTypes)
#include "tst_rowtypes.moc"
