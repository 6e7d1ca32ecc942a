// The writer's exact bytes, the code page and references, and round trips
// through the reader.
#include "dbfiletest.h"

#include "database/codec.h"

using namespace qor;
using namespace dbtest;

namespace {

// Every kind of row: current and archived customers and items, a first name
// alone, a note over several lines, a price of $0.00, an item name holding
// " - ", entries with quantities, characters the code page lacks, markup.
void fill(Database &db)
{
    db.company = {"A&B", "1 Main St", "", "", "555-1234", "Slogan \u20AC", "General", "Pay Me", "THANKS"};
    db.lvwCustomers.add("3k", fields({"Lee & Co, Ann", "Ann", "Lee & Co", "1 Main St", "", "", "", "", ""}));
    db.lvwCustomers.add("4k", fields({"Bo", "Bo", "", "", "", "", "", "", "1<2 \u263A\nsecond\r\nthird\rfourth\a\tend"}));
    db.lvwCustomers.add("5k", fields({"zzzz\u00BBOld, Al", "Al", "Old", "", "", "", "a@b.c", "555", ""}));
    db.lvwPeriods.add(QStringLiteral("May") + FieldSep, fields({"2024/05/01", "May", "2024/05/31", "2024/06/15"}));
    db.lvwPAndS.add("5k", QStringLiteral("000000005.00$5.00 - Midget - Widget"));
    db.lvwPAndS.add("7k", QStringLiteral("000000000.00$0.00 - Free"));
    db.lvwPAndS.add("8k", QStringLiteral("000000040.00zzzz\u00BB$40.00 - Gone \U0001F600"));
    db.lvwInvoiceRecords.add(fields({"May", "3", ""}), fields({"May", "Lee & Co, Ann", "3", "12.5", "5\u00027x2", ""}));
    db.lvwInvoiceRecords.add(fields({"May", "4", ""}), fields({"May", "Bo", "4", "0", "12x3", "Thanks 'so' \"much\" >"}));
}

const QByteArray Expected = crlf({
    "<QOR-DB>", "", "\t<CompanyInfo>",
    "\t\t<CompanyName>A&amp;B</CompanyName>", "\t\t<CompanyAdd1>1 Main St</CompanyAdd1>",
    "\t\t<CompanyPhone>555-1234</CompanyPhone>", "\t\t<GeneralInvoiceDescription>General</GeneralInvoiceDescription>",
    "\t\t<ChecksPayableTo>Pay Me</ChecksPayableTo>", "\t\t<CompanySlogan>Slogan \x80</CompanySlogan>",
    "\t\t<InvoiceClosing>THANKS</InvoiceClosing>", "\t</CompanyInfo>", "", "\t<Customers>",
    "\t\t<Customer CID=\"4\">", "\t\t\t<FName>Bo</FName>",
    "\t\t\t<Notes>1&lt;2 &#9786;", "second", "third", "fourth&#7;\tend</Notes>",
    "\t\t\t<Current>Yes</Current>", "\t\t</Customer>",
    "\t\t<Customer CID=\"3\">", "\t\t\t<FName>Ann</FName>", "\t\t\t<LName>Lee &amp; Co</LName>",
    "\t\t\t<Add1>1 Main St</Add1>", "\t\t\t<Current>Yes</Current>", "\t\t</Customer>",
    "\t\t<Customer CID=\"5\">", "\t\t\t<FName>Al</FName>", "\t\t\t<LName>Old</LName>", "\t\t\t<Email>a@b.c</Email>",
    "\t\t\t<Phone>555</Phone>", "\t\t\t<Current>No</Current>", "\t\t</Customer>", "\t</Customers>", "",
    "\t<BillPeriods>", "\t\t<BillPeriod>", "\t\t\t<BPName>May</BPName>", "\t\t\t<BPStart>2024/05/01</BPStart>",
    "\t\t\t<BPEnd>2024/05/31</BPEnd>", "\t\t\t<BillDue>2024/06/15</BillDue>", "\t\t</BillPeriod>", "\t</BillPeriods>",
    "", "\t<ProductsAndServices>",
    "\t\t<PS PSID=\"7\">", "\t\t\t<Item>Free</Item>", "\t\t\t<ItemPrice>$0.00</ItemPrice>",
    "\t\t\t<Current>Yes</Current>", "\t\t</PS>",
    "\t\t<PS PSID=\"5\">", "\t\t\t<Item>Midget - Widget</Item>", "\t\t\t<ItemPrice>$5.00</ItemPrice>",
    "\t\t\t<Current>Yes</Current>", "\t\t</PS>",
    "\t\t<PS PSID=\"8\">", "\t\t\t<Item>Gone &#128512;</Item>", "\t\t\t<ItemPrice>$40.00</ItemPrice>",
    "\t\t\t<Current>No</Current>", "\t\t</PS>", "\t</ProductsAndServices>", "",
    "\t<InvoiceRecords>", "\t\t<InvoiceRecord>", "\t\t\t<BP>May</BP>", "\t\t\t<CID>4</CID>",
    "\t\t\t<AccountBalance>0</AccountBalance>", "\t\t\t<PSID Number=\"1\">12x3</PSID>",
    "\t\t\t<Note>Thanks &apos;so&apos; &quot;much&quot; &gt;</Note>", "\t\t</InvoiceRecord>",
    "\t\t<InvoiceRecord>", "\t\t\t<BP>May</BP>", "\t\t\t<CID>3</CID>", "\t\t\t<AccountBalance>12.5</AccountBalance>",
    "\t\t\t<PSID Number=\"1\">5</PSID>", "\t\t\t<PSID Number=\"2\">7x2</PSID>", "\t\t</InvoiceRecord>",
    "\t</InvoiceRecords>", "", "</QOR-DB>"});

const QByteArray Empty = crlf({"<QOR-DB>", "", "\t<CompanyInfo>", "\t</CompanyInfo>", "", "\t<Customers>",
                               "\t</Customers>", "", "\t<BillPeriods>", "\t</BillPeriods>", "",
                               "\t<ProductsAndServices>", "\t</ProductsAndServices>", "", "\t<InvoiceRecords>",
                               "\t</InvoiceRecords>", "", "</QOR-DB>"});

}  // namespace

class TestDbWriter : public QObject {
    Q_OBJECT
    QTemporaryDir dir;

private slots:
    void initTestCase()
    {
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
        QVERIFY(dir.isValid());
    }

    void exactBytesAndReadBack()
    {
        Database original;
        fill(original);
        // Compared line by line, so that a failure names the first wrong line.
        QCOMPARE(original.serialize().split('\n'), Expected.split('\n'));
        const QString path = dir.filePath(QStringLiteral("exact.xml"));
        const SaveResult s = original.save(path);
        QVERIFY2(s.ok && s.keptCopy.isEmpty(), qPrintable(s.message));
        QVERIFY(readFile(path) == Expected);
        QVERIFY(Database().serialize() == Empty);

        Database db;
        const Loaded l = load(db, dir, Expected);
        QCOMPARE(l.result.status, ReadResult::Status::Read);
        QVERIFY(l.problems.size() == 1 && l.problems[0].contains(QLatin1String("item number 12,")));
        // Every row comes back, the sort prices rebuilt from the price text;
        // only the line breaks and tabs of the note are lost.
        QStringList want = rows(original.lvwCustomers);
        for (const char *gone : {"\n", "\r", "\t"}) want.replaceInStrings(QString::fromLatin1(gone), QString());
        QCOMPARE(rows(db.lvwCustomers), want);
        QCOMPARE(rows(db.lvwPeriods), rows(original.lvwPeriods));
        QCOMPARE(rows(db.lvwPAndS), rows(original.lvwPAndS));
        QCOMPARE(rows(db.lvwInvoiceRecords), rows(original.lvwInvoiceRecords));
        QVERIFY(db.company == original.company);
        // From here on the file is stable: read and saved, it is byte for byte itself.
        const QByteArray once = db.serialize();
        Database again;
        load(again, dir, once);
        QVERIFY(again.serialize() == once);

        Database empty;
        QCOMPARE(load(empty, dir, Empty).result.status, ReadResult::Status::Read);
        QVERIFY(tablesEmpty(empty));
    }

    void codePageAndReferences()
    {
        // Every byte from 0x80 to 0xFF stands for one character and comes back as that byte.
        QByteArray high;
        for (int b = 0x80; b <= 0xFF; ++b) high += char(b);
        const QString decoded = codec::decode(high);
        QCOMPARE(decoded.size(), high.size());
        QVERIFY(codec::encode(decoded) == high);
        QCOMPARE(decoded.at(0), QChar(0x20AC));
        QCOMPARE(decoded.at(0x9F - 0x80), QChar(0x178));
        // What the code page lacks becomes a reference, also a pair of surrogates.
        QCOMPARE(codec::encode(u"\u0100\u263A\U0001F600\u0080 x"), QByteArray("&#256;&#9786;&#128512;&#128; x"));

        Database db;
        db.company[0] = decoded;
        db.company[1] = QStringLiteral("\u0100 &#8364; \U0001F600");
        db.lvwCustomers.add("1k", fields({"\u017D\u00E9, \u4E2D", "\u4E2D", "\u017D\u00E9", "", "", "", "", "", ""}));
        const QByteArray bytes = db.serialize();
        QVERIFY(bytes.contains("<CompanyName>" + high + "</CompanyName>"));
        QVERIFY(bytes.contains("<CompanyAdd1>&#256; &amp;#8364; &#128512;</CompanyAdd1>"));
        QVERIFY(bytes.contains("<FName>&#20013;</FName>\r\n\t\t\t<LName>\x8E\xE9</LName>"));
        Database back;
        QVERIFY(load(back, dir, bytes).result.ok());
        QVERIFY(back.company == db.company);
        QCOMPARE(rows(back.lvwCustomers), rows(db.lvwCustomers));
    }

    void oddRowsDoNotBreakTheWriter()
    {
        // Rows the program never makes still give a well-formed file.
        Database db;
        db.lvwCustomers.add("9k", QStringLiteral("Short"));
        db.lvwPAndS.add("2k", QStringLiteral("tiny"));
        db.lvwPAndS.add("3k", QStringLiteral("000000001.00$1.00"));
        db.lvwInvoiceRecords.add("x", QStringLiteral("NoFields"));
        db.lvwPeriods.add("p", QString());
        const QByteArray bytes = db.serialize();
        QVERIFY(bytes.startsWith("<QOR-DB>\r\n") && bytes.endsWith("</QOR-DB>\r\n"));
        QVERIFY(bytes.contains("\t\t<Customer CID=\"9\">\r\n\t\t\t<Current>Yes</Current>\r\n"));
        QVERIFY(bytes.contains("\t\t<PS PSID=\"3\">\r\n\t\t\t<ItemPrice>$1.00</ItemPrice>\r\n"));
        QVERIFY(bytes.contains("\t\t\t<BP>NoFields</BP>\r\n\t\t</InvoiceRecord>\r\n"));
        Database back;
        QVERIFY(load(back, dir, bytes).result.ok());
        // The record without a CID is given a placeholder under the key "k".
        QCOMPARE(back.lvwCustomers.count(), 2);
        QVERIFY(back.lvwCustomers.contains(u"9k") && back.lvwCustomers.contains(u"k"));
    }
};

QTEST_GUILESS_MAIN(TestDbWriter)
#include "tst_dbwriter.moc"
