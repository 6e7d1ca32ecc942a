// SPDX-License-Identifier: GPL-3.0-or-later
// The file format: the writer's exact bytes, the code page and references,
// and what the reader makes of files as people and older versions leave them.
#include "dbfiletest.h"

#include "database/codec.h"

using namespace qor;
using namespace dbtest;

namespace {

const QByteArray Expected = crlf({"<QOR-DB>", "", "\t<CompanyInfo>",
                                  "\t\t<CompanyName>A&amp;B</CompanyName>", "\t\t<CompanyAdd1>1 Main St</CompanyAdd1>",
                                  "\t\t<CompanyPhone>555-1234</CompanyPhone>", "\t\t<GeneralInvoiceDescription>General</GeneralInvoiceDescription>",
                                  "\t\t<ChecksPayableTo>Pay Me</ChecksPayableTo>", "\t\t<CompanySlogan>Slogan \x80</CompanySlogan>",
                                  "\t\t<InvoiceClosing>THANKS</InvoiceClosing>", "\t</CompanyInfo>", "", "\t<Customers>",
                                  "\t\t<Customer CID=\"4\">", "\t\t\t<FName>Bo</FName>",
                                  "\t\t\t<Notes>1&lt;2 &#9786;", "second&#13;", "third&#13;fourth&#7;&#9;end</Notes>",
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

class TestDbFormat : public Fixture {
    Q_OBJECT

private slots:
    void exactBytesAndReadBack()
    {
        Database original;
        fillEveryKind(original);
        // Compared line by line, so that a failure names the first wrong line.
        QCOMPARE(original.serialize().split('\n'), Expected.split('\n'));
        QVERIFY(Database().serialize() == Empty);

        Database db;
        const Loaded l = load(db, dir, Expected);
        QCOMPARE(l.result.status, ReadResult::Status::Read);
        QVERIFY(l.problems.size() == 1 && l.problems[0].contains(QLatin1String("item number 12,")));
        // Rows come back as written (the property test reads back every field of random files).
        QCOMPARE(rows(db.invoiceRecords()), rows(original.invoiceRecords()));

        Database empty;
        QVERIFY(load(empty, dir, Empty).result.status == ReadResult::Status::Read && tablesEmpty(empty));
    }

    void codePageAndReferences()
    {
        // Every byte from 0x80 to 0xFF stands for one character and comes back as that byte.
        QByteArray high;
        for (int b = 0x80; b <= 0xFF; ++b) high += char(b);
        const QString decoded = codec::decode(high);
        QVERIFY(decoded.size() == high.size() && codec::encode(decoded) == high);
        QVERIFY(decoded.at(0) == QChar(0x20AC) && decoded.at(0x9F - 0x80) == QChar(0x178));
        // What the code page lacks becomes a reference, also a pair of surrogates.
        QCOMPARE(codec::encode(u"\u0100\u263A\U0001F600\u0080 x"), QByteArray("&#256;&#9786;&#128512;&#128; x"));

        Database db;
        // Entities and references as the reader meets them.
        load(db, dir, crlf({"<CompanyInfo>", "<CompanyName>A &amp; B &lt;x&gt; &apos;q&apos; &quot;d&quot;</CompanyName>", "<CompanyAdd1>&amp;lt; and &amp;amp;</CompanyAdd1>", "<CompanyAdd2>&amp;#8364; is not &#8364;</CompanyAdd2>", "<CompanyAdd3>&#x1F600;=&#128512; &#xE9;&#233;</CompanyAdd3>", "<CompanyPhone>&nbsp; &#; &#xZZ; &#1; &#2; &#99999999; &amp</CompanyPhone>", "<InvoiceClosing>\x80\x8a\xe9\x81</InvoiceClosing>", "</CompanyInfo>"}));
        // What isn't a reference to a usable character stays as it stands.
        QCOMPARE(QStringList(db.company().begin(), db.company().end()),
                 (QStringList{"A & B <x> 'q' \"d\"", "&lt; and &amp;", "&#8364; is not \u20AC",
                              "\U0001F600=\U0001F600 \u00E9\u00E9", "&nbsp; &#; &#xZZ; &#1; &#2; &#99999999; &amp", "",
                              "", "", "\u20AC\u0160\u00E9\u0081"}));
        // A second CompanyInfo, in any case, replaces every company field.
        load(db, dir,
             crlf({"<CompanyInfo>", "<CompanyAdd1>Street</CompanyAdd1>", "</CompanyInfo>", "<companyINFO>",
                   "<COMPANYNAME>Acme</COMPANYNAME>", "<companyslogan>Fast</companyslogan>", "</companyinfo>"}));
        QVERIFY(db.company() == (std::array<QString, 9>{"Acme", "", "", "", "", "Fast"}));
        // A vertical tab, ESC and DEL are text, kept and saved as references;
        // the row separators can't be held by a value and fall away.
        const QByteArray odd =
            "<CompanyName>a\013b\033c\177\001\002d</CompanyName>\r\n"
            "<CompanyAdd1>&#9;&#13;&#10;&#0;&#1;</CompanyAdd1>\r\n";
        QVERIFY(load(db, dir, "<CompanyInfo>\r\n" + odd + "</CompanyInfo>\r\n").result.ok());
        QCOMPARE(db.company()[0], QStringLiteral("a\vb\033c\177d"));
        QCOMPARE(db.company()[1], QString(QStringLiteral("\t\r\n") + QChar(0) + QStringLiteral("&#1;")));
        QVERIFY(db.serialize().contains(
            "<CompanyName>a&#11;b&#27;c&#127;d</CompanyName>\r\n"
            "\t\t<CompanyAdd1>&#9;&#13;\r\n&#0;&amp;#1;</CompanyAdd1>"));
    }

    void oddRowsDoNotBreakTheWriter()
    {
        // Rows the program never makes still give a well-formed file that reads back.
        Database db;
        qor::test::TablesEdit tables(db);
        tables.customers.add("9k", QStringLiteral("Short"));
        tables.items.add("2k", QStringLiteral("tiny"));
        tables.items.add("3k", QStringLiteral("000000001.00$1.00"));
        tables.invoiceRecords.add("x", QStringLiteral("NoFields"));
        tables.periods.add("p", QString());
        tables.done();
        const QByteArray bytes = db.serialize();
        QVERIFY(bytes.startsWith("<QOR-DB>\r\n") && bytes.endsWith("</QOR-DB>\r\n"));
        for (const char *part : {"\t\t<Customer CID=\"9\">\r\n\t\t\t<Current>Yes</Current>\r\n",
                                 "\t\t<PS PSID=\"3\">\r\n\t\t\t<ItemPrice>$1.00</ItemPrice>\r\n",
                                 "\t\t\t<BP>NoFields</BP>\r\n\t\t</InvoiceRecord>\r\n"})
            QVERIFY2(bytes.contains(part), part);
        Database back;
        QVERIFY(load(back, dir, bytes).result.ok());
        // The record without a CID gets no placeholder: one without a number
        // would be dropped by every load and made again.
        QCOMPARE(rows(back.customers()), QStringList{"9k = ||||||||"});
    }

    // Files as people and older versions leave them, each read to its rows.
    void readsAs_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QStringList>("customers");
        QTest::addColumn<QStringList>("periods");
        QTest::addColumn<QStringList>("items");
        QTest::addColumn<QStringList>("records");
        const QStringList none;
        // A second section adds to the first; the record's customer and item
        // come later in the file and are still found.
        QTest::newRow("tags in any case, sections in any order")
            << crlf({"<qor-db>", "<invoiceRecords>", "<invoicerecord>",
                     "<bp>May</bp><cid>7</cid><accountbalance>5</accountbalance>", "<PSID Number=\"1\">5</PSID>",
                     "</InvoiceRecord>", "</INVOICERECORDS>", "<CompanyINFO>", "<companyname>First</companyname>",
                     "<CompanyAdd1>Street</CompanyAdd1>", "</companyinfo>", "<CUSTOMERS>", "<CUSTOMER  cid = \"7K\">",
                     "<fname>Ann</fname>", "<LNAME>Lee</LNAME>", "<ADD1>1 Main</add1>", "<current>yes</current>",
                     "</CUSTOMER>", "</Customers>", "<billPeriods>", "<billperiod>",
                     "<bpstart>2024/05/01</bpstart><BPNAME>May</BPNAME>", "<BPEnd>2024/05/31</BPEnd>",
                     "<billdue>2024/06/15</billdue>", "</BillPeriod>", "</BILLPERIODS>", "<productsandservices>",
                     "<ps psid=\"5\">", "<ITEM>Widget</ITEM>", "<itemprice>$5.00</itemprice>", "</ps>",
                     "</productsandservices>", "<Customers>", "<Customer CID=\"2\">", "<LName>Bo</LName>",
                     "</Customer>", "</Customers>", "<CompanyInfo>", "<COMPANYNAME>Acme</COMPANYNAME>",
                     "<companyslogan>Fast</companyslogan>", "</CompanyInfo>", "</qor-db>"})
            << QStringList{"2k = Bo, ||Bo||||||", "7k = Lee, Ann|Ann|Lee|1 Main|||||"}
            << QStringList{"May| = 2024/05/01|May|2024/05/31|2024/06/15"}
            << QStringList{"5k = 000000005.00$5.00 - Widget"} << QStringList{"May|7| = May|Lee, Ann|7|5|5|"};
        // A commented line is gone with its FName; blanks inside an element
        // stay, tabs anywhere go; the lines of a note keep their breaks, and
        // lose the indentation at their ends.
        QTest::newRow("comments, blank lines, indentation")
            << QByteArray(
                   "<QOR-DB>\r\n<!-- a comment -->\r\n\r\n      <Customers>\r\n\t<!-- old customers -->\r\n"
                   "   <Customer CID=\"1\">  \r\n<FName>Bo</FName> <!-- beside -->\r\n   \t <LName>  Diaz  </LName>\r\n"
                   "\t\t\t\t<Phone>\t555\t</Phone>\r\n\r\n    \r\n</Customer>\r\n"
                   "  <Customer CID=\"2\">\r\n    <FName>Cy</FName>\r\n\t<Notes>first line\r\n   second line  \r\n"
                   "third</Notes>\r\n  </Customer>\r\n</Customers>\r\n</QOR-DB>\r\n")
            << QStringList{"1k =   Diaz  , ||  Diaz  |||||555|", "2k = Cy|Cy|||||||first line\nsecond line\nthird"} << none << none << none;
        // An escaped tag is text, a bare one structure.
        QTest::newRow("escaped tags") << crlf({"<Customers>", "<Customer CID=\"1\">", "<FName>A</FName>", "<Notes>x", "&lt;/Customers&gt;", "</Notes>", "</Customer>", "<Customer CID=\"2\">", "<FName>B &lt;!-- c</FName>", "<Current>No</Current>", "</Customer>", "</Customers>"}) << QStringList{"1k = A|A|||||||x\n</Customers>\n", "2k = zzzz\u00BBB <!-- c|B <!-- c|||||||"} << none << none << none;
        // Customers by display name, archived last; items by sort price;
        // periods by start date; records by period, then name. The archive
        // mark never reaches a record's name; a missing note or balance is an
        // empty field; a missing Current is current.
        QTest::newRow("missing elements, order") << crlf({"<Customers>", "<Customer CID=\"1\">", "<FName>A</FName>", "<LName>One</LName>", "</Customer>", "<Customer CID=\"2\">", "<FName>B</FName>", "<LName>Two</LName>", "<Current>NO</Current>", "</Customer>", "<Customer CID=\"3\">", "<FName>C</FName>", "<LName>Three</LName>", "<Current>No </Current>", "</Customer>", "<Customer CID=\"4\">", "<FName>Dee</FName>", "</Customer>", "</Customers>", "<ProductsAndServices>", "<PS PSID=\"1\">", "<Item>Old</Item>", "<ItemPrice>$2.50</ItemPrice>", "<Current>no</Current>", "</PS>", "<PS PSID=\"2\">", "<ItemPrice>$1.00</ItemPrice>", "</PS>", "<PS PSID=\"3\">", "<Item>Huge</Item>", "<ItemPrice>$1,234.00</ItemPrice>", "</PS>", "<PS PSID=\"4\">", "<ItemPrice>$40.00</ItemPrice>", "</PS>", "</ProductsAndServices>", "<BillPeriods>", "<BillPeriod>", "<BPName>Later</BPName>", "<BPStart>2024/02/01</BPStart>", "</BillPeriod>", "<BillPeriod>", "<BPName>Earlier</BPName>", "<BPStart>2023/12/01</BPStart>", "</BillPeriod>", "</BillPeriods>", "<InvoiceRecords>", "<InvoiceRecord>", "<BP>May</BP>", "<CID>2</CID>", "<AccountBalance>3</AccountBalance>", "<PSID Number=\"1\">2</PSID>", "<Note>Thanks</Note>", "</InvoiceRecord>", "<InvoiceRecord>", "<BP>May</BP>", "<CID>1</CID>", "<PSID Number=\"1\">1</PSID>", "</InvoiceRecord>", "<InvoiceRecord>", "<BP>Apr</BP>", "<CID>2</CID>", "<PSID Number=\"1\">1</PSID>", "</InvoiceRecord>", "</InvoiceRecords>"})
                                                 << QStringList{"4k = Dee|Dee|||||||", "1k = One, A|A|One||||||",
                                                                "3k = Three, C|C|Three||||||", "2k = zzzz\u00BBTwo, B|B|Two||||||"}
                                                 << QStringList{"Earlier| = 2023/12/01|Earlier||", "Later| = 2024/02/01|Later||"}
                                                 << QStringList{"2k = 000000001.00$1.00 - ", "1k = 000000002.50zzzz\u00BB$2.50 - Old",
                                                                "4k = 000000040.00$40.00 - ", "3k = 000001234.00$1,234.00 - Huge"}
                                                 << QStringList{"Apr|2| = Apr|Two, B|2||1|", "May|1| = May|One, A|1||1|",
                                                                "May|2| = May|Two, B|2|3|2|Thanks"};
        QTest::newRow("unusable numbers") << crlf({"<Customers>", "<Customer CID=\"0\">", "<FName>Zero</FName>", "</Customer>", "<Customer CID=\"abc\">", "<FName>Letters</FName>", "</Customer>", "<Customer CID=\"-3\">", "<FName>Minus</FName>", "</Customer>", "<Customer CID=\"12\">", "<FName>Twelve</FName>", "</Customer>", "<Customer>", "<FName>NoNumber</FName>", "</Customer>", "</Customers>", "<ProductsAndServices>", "<PS PSID=\"x\">", "<Item>Bad</Item>", "</PS>", "<PS PSID=\"3\">", "<Item>Good</Item>", "<ItemPrice>$1.00</ItemPrice>", "</PS>", "</ProductsAndServices>"})
                                          << QStringList{"12k = Twelve|Twelve|||||||"} << none << QStringList{"3k = 000000001.00$1.00 - Good"} << none;
        // No root at all; a record header with no number (the record is
        // dropped); a value over several lines whose tags stand alone.
        QTest::newRow("allowed structure") << crlf({"<Customers>", "<Customer>", "<FName>Gone</FName>", "</Customer>", "<Customer CID=\"3\">", "<Notes>", "two", "</Notes>", "</Customer>", "</Customers>", "<!-- after -->"}) << QStringList{"3k = ||||||||\ntwo\n"} << none << none << none;
        // A control byte is never markup, even where setting a bit would make it "<" or "/".
        QTest::newRow("control bytes") << QByteArray(
                                              "<Customers>\r\n<Customer CID=\"1\">\r\n<FName>A\x1c/FName>\x0f</FName>\r\n"
                                              "\x1c/Customer>\r\n<LName>L</LName>\r\n</Customer>\r\n</Customers>\r\n")
                                       << QStringList{"1k = L, A\x1c/FName>\x0f|A\x1c/FName>\x0f|L||||||"} << none << none << none;
        // A CR alone among the last 16 bytes of a file (80 bytes) ends a line as well.
        QTest::newRow("lone CR at the end") << crlf({"<Customers>", "\t\t<Customer CID=\"1\">", "\t\t\t<FName>A</FName>"}) + "</Customer>\r</Customers>"
                                            << QStringList{"1k = A|A|||||||"} << none << none << none;
        // Any mix of tabs and blanks before or after a tag is indentation.
        QTest::newRow("blanks and comments") << crlf({"", "  ", "<!-- nothing -->"}) << none << none << none << none;
        QTest::newRow("tabs and blanks") << QByteArray(
                                                "<QOR-DB>\r\n\t <BillPeriods>\r\n \t<BillPeriod>\t \r\n\t \t<BPName>May</BPName> \t\r\n"
                                                " </BillPeriod>\t\r\n\t </BillPeriods> \r\n</QOR-DB>")
                                         << none << QStringList{"May| = |May||"} << none << none;
    }
    void readsAs()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QStringList, customers);
        QFETCH(QStringList, periods);
        QFETCH(QStringList, items);
        QFETCH(QStringList, records);
        Database db;
        const Loaded l = load(db, dir, bytes);
        QVERIFY2(l.result.ok() && l.problems.isEmpty(), qPrintable(l.result.message + l.problems.join('\n')));
        QCOMPARE(rows(db.customers()), customers);
        QCOMPARE(rows(db.periods()), periods);
        QCOMPARE(rows(db.items()), items);
        QCOMPARE(rows(db.invoiceRecords()), records);
    }

    void recordLinesReadEitherWay()
    {
        // Records of single-element lines are read straight from their lines; a
        // line of any other kind sends a record the general way. Both must
        // give the same rows, whatever the record holds.
        const QList<QList<QByteArray>> bodies = {
            {"<BP>May</BP>", "<CID>1</CID>", "<AccountBalance>2.5</AccountBalance>", "<PSID Number=\"1\">5</PSID>"},
            {"<bp>May</BP>", "<cid>2</Cid>", "<BP>June</BP>", "<PSID Number=\"2\">7</PSID>",
             "<PSID Number=\"1\">5x2</PSID>", "<PSID Number=\"1\">9</PSID>", "<Note>a \"b\" c</Note>"},
            {"<BP></BP>", "<CID>3</CID>", "<Note></Note>", "<PSID Number=\"1\"></PSID>", "<PSID Number=\"3\">4</PSID>"},
            {"<BP>May</BP>", "<CID>4</CID>", "<PSID Number=\"01\">5</PSID>", "<PSID Number=\"1\">6</PSID>"},
            {"<BP>May</BP>", "<CID>5</CID>", "<PSID Number=\"1\">5</psid>", "<PSID Number=\"2\">6</PSID>"},
            {"<BP>May</BP>", "<CID>6</CID>", "<Note>x</BP>", "<AccountBalance>1</AccountBalance>"},
            {"<BP>A</BP>", "<CID>7</CID>", "<PSID Number=\"2\">4</PSID>", "<PSID Number=\"1\">12x3</PSID>",
             "<PSID Number=\"4\">9</PSID>"},
            {"<BP>B</BP>", "<CID>8</CID>", "<psid number=\"1\">5</psid>", "<PSID Number = \"1\">5</PSID>"},
            {"<BP>C</BP>", "<CID>9</CID>", "<PSID Number=\"1\"></PSID>", "<PSID Number=\"2\">7</PSID>"},
        };
        QStringList got;
        for (const QList<QByteArray> &body : bodies) {
            QList<QByteArray> plain{"<InvoiceRecords>", "\t\t<InvoiceRecord>"};
            for (const QByteArray &l : body) plain << "\t\t\t" + l;
            plain << "\t\t</InvoiceRecord>"
                  << "</InvoiceRecords>";
            QList<QByteArray> general = plain;
            general.insert(2, "<x>y</x> ");  // a blank after the tag: not a line to take as it stands
            Database a, b;
            QVERIFY(load(a, dir, crlf(plain)).result.ok());
            QVERIFY(load(b, dir, crlf(general)).result.ok());
            QCOMPARE(rows(a.invoiceRecords()), rows(b.invoiceRecords()));
            got << rows(a.invoiceRecords());
        }
        // The first tag counts. Entries are taken by number from 1, in the
        // writer's exact spelling; a gap ends the list, an empty entry keeps its
        // place, and "</PSID>" ends an entry only in that exact case (so one
        // entry may run over a line break, which it keeps).
        got.replaceInStrings(QStringLiteral("|Customer, Deleted|"), QStringLiteral("||"));
        QCOMPARE(got, (QStringList{"May|1| = May||1|2.5|5|", "May|2| = May||2||5x2+7|a \"b\" c", "|3| = ||3|||",
                                   "May|4| = May||4||6|", "May|5| = May||5||5</psid>\n<PSID Number=\"2\">6+6|",
                                   "May|6| = May||6|1||", "A|7| = A||7||12x3+4|", "B|8| = B||8|||", "C|9| = C||9||+7|"}));
    }


    void lineEndsAndCutOffFiles()
    {
        // LF alone, CR alone, a mix, and no line end at the end read the same
        // and are saved with CR LF.
        Database db;
        for (const QByteArray &variant :
             {QByteArray(Expected).replace("\r\n", "\n"), QByteArray(Expected).replace("\r\n", "\r"),
              QByteArray(Expected)
                  .replace("<CompanyInfo>\r\n", "<CompanyInfo>\n")
                  .replace("<Customers>\r\n", "<Customers>\r"),
              Expected.chopped(2)}) {
            QVERIFY(load(db, dir, variant).result.ok());
            QCOMPARE(db.serialize(), Expected);
        }
        // A file cut off anywhere before its end is refused whole, naming the
        // line where it ends; nothing of it is half read. Only the line end
        // after the last tag may go, and a file cut to nothing is an empty one.
        const qsizetype end = Expected.indexOf("</QOR-DB>") + 9;
        for (qsizetype cut = 1; cut < end; ++cut) {
            const ReadResult r = load(db, dir, Expected.left(cut)).result;
            QVERIFY2(r.status == ReadResult::Status::Rejected, qPrintable(QString::number(cut)));
            QCOMPARE(r.line, Expected.left(cut).count('\n') + 1 - (Expected.at(cut - 1) == '\n' ? 1 : 0));
            QVERIFY2(r.message.contains(QLatin1String("cut off")) || r.message.contains(QLatin1String("damaged")),
                     qPrintable(r.message));
            QVERIFY(tablesEmpty(db));
        }
        for (qsizetype cut : {qsizetype(0), end, end + 1}) QVERIFY(load(db, dir, Expected.left(cut)).result.ok());
    }

    // Every one-letter change (another letter, not just another case, or the
    // letter gone) of every line that opens or closes a section or the root:
    // the file is refused with the line named, never half read.
    void damagedSectionTags_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<int>("changedLine");
        Database db;
        fillEveryKind(db);
        const QList<QByteArray> lines = db.serialize().split('\n');
        int rowsMade = 0;
        for (qsizetype n = 0; n < lines.size(); ++n) {
            const QByteArray line = lines[n].trimmed();
            // The writer indents nothing but the root's and the sections' tags by less than two tabs.
            if (lines[n].startsWith("\t\t") || !line.startsWith('<')) continue;
            const qsizetype at = lines[n].indexOf('<');
            auto add = [&](const QByteArray &changed, const char *what, qsizetype i) {
                QList<QByteArray> damaged = lines;
                damaged[n] = lines[n].left(at) + changed + "\r";
                QTest::addRow("%s, %s at %d: %s", line.constData(), what, int(i), changed.constData())
                    << damaged.join('\n') << int(n + 1);
                ++rowsMade;
            };
            for (qsizetype i = 0; i < line.size(); ++i) {
                add(line.left(i) + line.mid(i + 1), "gone", i);
                for (char c = 'a'; c <= 'z'; ++c)
                    if (QChar::fromLatin1(c).toLower() != QChar::fromLatin1(line[i]).toLower())
                        add(line.left(i) + c + line.mid(i + 1), "letter", i);
            }
        }
        QVERIFY(rowsMade > 4000);
    }
    void damagedSectionTags()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(int, changedLine);
        Database db;
        fillEveryKind(db);
        const ReadResult r = load(db, dir, bytes).result;
        QCOMPARE(r.status, ReadResult::Status::Rejected);
        QVERIFY(r.keepsCopyOnSave);
        QVERIFY2(r.line >= changedLine && r.message.contains(QStringLiteral("line %1").arg(r.line)), qPrintable(r.message));
        QVERIFY(tablesEmpty(db));
    }
};

QTEST_GUILESS_MAIN(TestDbFormat)
#include "tst_dbformat.moc"
