// The reader's tolerance: case of tags, comments, blank lines, indentation,
// missing elements, joined note lines, entities, section order, item entries,
// unusable numbers, line ends and cut-off files.
#include "dbfiletest.h"

using namespace qor;
using namespace dbtest;

class TestDbReader : public QObject {
    Q_OBJECT
    QTemporaryDir dir;

private slots:
    void initTestCase()
    {
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
        QVERIFY(dir.isValid());
    }

    void tagsInAnyCase()
    {
        Database db;
        const Loaded l = load(db, dir, crlf({
            "<qor-db>", "<CUSTOMERS>", "<CUSTOMER  cid = \"7K\">", "<fname>Ann</fname>", "<LNAME>Lee</LNAME>",
            "<ADD1>1 Main</add1>", "<current>yes</current>", "</CUSTOMER>", "</Customers>",
            "<billPeriods>", "<billperiod>", "<bpstart>2024/05/01</bpstart><BPNAME>May</BPNAME>",
            "<BPEnd>2024/05/31</BPEnd>", "<billdue>2024/06/15</billdue>", "</BillPeriod>", "</BILLPERIODS>",
            "<productsandservices>", "<ps psid=\"5\">", "<ITEM>Widget</ITEM>", "<itemprice>$5.00</itemprice>", "</ps>",
            "</productsandservices>", "<invoiceRecords>", "<invoicerecord>",
            "<bp>May</bp><cid>7</cid><accountbalance>5</accountbalance>", "<PSID Number=\"1\">5</PSID>",
            "</InvoiceRecord>", "</INVOICERECORDS>", "<CompanyINFO>", "<companyname>Acme</companyname>",
            "<COMPANYSLOGAN>Fast</COMPANYSLOGAN>", "</companyinfo>", "</qor-db>"}));
        QCOMPARE(l.result.status, ReadResult::Status::Read);
        QCOMPARE(rows(db.lvwCustomers), QStringList{"7k = Lee, Ann|Ann|Lee|1 Main|||||"});
        QCOMPARE(rows(db.lvwPeriods), QStringList{"May| = 2024/05/01|May|2024/05/31|2024/06/15"});
        QCOMPARE(rows(db.lvwPAndS), QStringList{"5k = 000000005.00$5.00 - Widget"});
        QCOMPARE(rows(db.lvwInvoiceRecords), QStringList{"May|7| = May|Lee, Ann|7|5|5|"});
        QCOMPARE(db.company[0], QStringLiteral("Acme"));
        QCOMPARE(db.company[5], QStringLiteral("Fast"));
        QVERIFY(l.problems.isEmpty());
    }

    void commentsBlankLinesIndentationAndNotes()
    {
        Database db;
        load(db, dir,
             "<QOR-DB>\r\n<!-- a comment -->\r\n\r\n      <Customers>\r\n\t<!-- old customers -->\r\n"
             "   <Customer CID=\"1\">  \r\n<FName>Bo</FName> <!-- beside -->\r\n   \t <LName>  Diaz  </LName>\r\n"
             "\t\t\t\t<Phone>\t555\t</Phone>\r\n\r\n    \r\n</Customer>\r\n"
             "  <Customer CID=\"2\">\r\n    <FName>Cy</FName>\r\n\t<Notes>first line\r\n   second line  \r\n"
             "third</Notes>\r\n  </Customer>\r\n</Customers>\r\n");
        // The commented line is gone with its FName; blanks inside an element
        // stay, tabs anywhere go; the lines of a note are joined directly.
        QCOMPARE(rows(db.lvwCustomers),
                 (QStringList{"1k =   Diaz  , ||  Diaz  |||||555|", "2k = Cy|Cy|||||||first linesecond linethird"}));
    }

    void missingElementsCurrentAndTableOrder()
    {
        Database db;
        const Loaded l = load(db, dir, crlf({
            "<Customers>", "<Customer CID=\"1\">", "<FName>A</FName>", "<LName>One</LName>", "</Customer>",
            "<Customer CID=\"2\">", "<FName>B</FName>", "<LName>Two</LName>", "<Current>NO</Current>", "</Customer>",
            "<Customer CID=\"3\">", "<FName>C</FName>", "<LName>Three</LName>", "<Current>No </Current>", "</Customer>",
            "<Customer CID=\"4\">", "<FName>Dee</FName>", "</Customer>", "</Customers>", "<ProductsAndServices>",
            "<PS PSID=\"1\">", "<Item>Old</Item>", "<ItemPrice>$2.50</ItemPrice>", "<Current>no</Current>", "</PS>",
            "<PS PSID=\"2\">", "<ItemPrice>$1.00</ItemPrice>", "</PS>", "<PS PSID=\"3\">", "<Item>Huge</Item>",
            "<ItemPrice>$1,234.00</ItemPrice>", "</PS>", "<PS PSID=\"4\">", "<ItemPrice>$40.00</ItemPrice>", "</PS>",
            "</ProductsAndServices>", "<BillPeriods>", "<BillPeriod>", "<BPName>Later</BPName>",
            "<BPStart>2024/02/01</BPStart>", "</BillPeriod>", "<BillPeriod>", "<BPName>Earlier</BPName>",
            "<BPStart>2023/12/01</BPStart>", "</BillPeriod>", "</BillPeriods>", "<InvoiceRecords>",
            "<InvoiceRecord>", "<BP>May</BP>", "<CID>2</CID>", "<AccountBalance>3</AccountBalance>",
            "<PSID Number=\"1\">2</PSID>", "<Note>Thanks</Note>", "</InvoiceRecord>", "<InvoiceRecord>", "<BP>May</BP>",
            "<CID>1</CID>", "<PSID Number=\"1\">1</PSID>", "</InvoiceRecord>", "<InvoiceRecord>", "<BP>Apr</BP>",
            "<CID>2</CID>", "<PSID Number=\"1\">1</PSID>", "</InvoiceRecord>", "</InvoiceRecords>"}));
        QVERIFY(l.result.ok());
        // Customers by display name, archived last; items by sort price; periods
        // by start date; records by period, then name.
        QCOMPARE(rows(db.lvwCustomers), (QStringList{"4k = Dee|Dee|||||||", "1k = One, A|A|One||||||",
                                                     "3k = Three, C|C|Three||||||", "2k = zzzz\u00BBTwo, B|B|Two||||||"}));
        QCOMPARE(rows(db.lvwPAndS), (QStringList{"2k = 000000001.00$1.00 - ", "1k = 000000002.50zzzz\u00BB$2.50 - Old",
                                                 "4k = 000000040.00$40.00 - ", "3k = 000001234.00$1,234.00 - Huge"}));
        QCOMPARE(rows(db.lvwPeriods), (QStringList{"Earlier| = 2023/12/01|Earlier||", "Later| = 2024/02/01|Later||"}));
        // The archive mark never reaches a record's name; a missing note or balance is an empty field.
        QCOMPARE(rows(db.lvwInvoiceRecords), (QStringList{"Apr|2| = Apr|Two, B|2||1|", "May|1| = May|One, A|1||1|",
                                                          "May|2| = May|Two, B|2|3|2|Thanks"}));
    }

    void entitiesAndReferences()
    {
        Database db;
        load(db, dir, crlf({
            "<CompanyInfo>", "<CompanyName>A &amp; B &lt;x&gt; &apos;q&apos; &quot;d&quot;</CompanyName>",
            "<CompanyAdd1>&amp;lt; and &amp;amp;</CompanyAdd1>", "<CompanyAdd2>&amp;#8364; is not &#8364;</CompanyAdd2>",
            "<CompanyAdd3>&#x1F600;=&#128512; &#xE9;&#233;</CompanyAdd3>",
            "<CompanyPhone>&nbsp; &#; &#xZZ; &#1; &#2; &#99999999; &amp</CompanyPhone>",
            "<InvoiceClosing>\x80\x8a\xe9\x81</InvoiceClosing>", "</CompanyInfo>"}));
        QCOMPARE(db.company[0], QStringLiteral("A & B <x> 'q' \"d\""));
        QCOMPARE(db.company[1], QStringLiteral("&lt; and &amp;"));
        QCOMPARE(db.company[2], QStringLiteral("&#8364; is not \u20AC"));
        QCOMPARE(db.company[3], QStringLiteral("\U0001F600=\U0001F600 \u00E9\u00E9"));
        // What isn't a reference to a usable character stays as it stands.
        QCOMPARE(db.company[4], QStringLiteral("&nbsp; &#; &#xZZ; &#1; &#2; &#99999999; &amp"));
        QCOMPARE(db.company[8], QStringLiteral("\u20AC\u0160\u00E9\u0081"));
    }

    void sectionsInAnyOrderAndTwice()
    {
        Database db;
        const Loaded l = load(db, dir, crlf({
            "<InvoiceRecords>", "<InvoiceRecord>", "<BP>Jun</BP>", "<CID>2</CID>", "<PSID Number=\"1\">9</PSID>",
            "</InvoiceRecord>", "</InvoiceRecords>", "<Customers>", "<Customer CID=\"1\">", "<LName>Ames</LName>",
            "</Customer>", "</Customers>", "<CompanyInfo>", "<CompanyName>First</CompanyName>",
            "<CompanyAdd1>Street</CompanyAdd1>", "</CompanyInfo>", "<Customers>", "<Customer CID=\"2\">",
            "<LName>Bo</LName>", "</Customer>", "</Customers>", "<ProductsAndServices>", "<PS PSID=\"9\">",
            "<Item>Nine</Item>", "<ItemPrice>$9.00</ItemPrice>", "</PS>", "</ProductsAndServices>",
            "<CompanyInfo>", "<CompanyName>Second</CompanyName>", "</CompanyInfo>"}));
        QVERIFY(l.result.ok());
        QCOMPARE(rows(db.lvwCustomers), (QStringList{"1k = Ames, ||Ames||||||", "2k = Bo, ||Bo||||||"}));
        // The record's customer and item came later in the file and are still found.
        QCOMPARE(rows(db.lvwInvoiceRecords), QStringList{"Jun|2| = Jun|Bo, |2||9|"});
        QVERIFY2(l.problems.isEmpty(), qPrintable(l.problems.join('\n')));
        // A second CompanyInfo section replaces every company field.
        QCOMPARE(db.company[0], QStringLiteral("Second"));
        QCOMPARE(db.company[1], QString());
    }

    void itemEntries()
    {
        Database db;
        const Loaded l = load(db, dir, crlf({
            "<InvoiceRecords>", "<InvoiceRecord>", "<BP>A</BP>", "<CID>1</CID>", "<PSID Number=\"2\">4</PSID>",
            "<PSID Number=\"1\">12x3</PSID>", "<PSID Number=\"4\">9</PSID>", "</InvoiceRecord>",
            "<InvoiceRecord>", "<BP>B</BP>", "<CID>1</CID>", "<psid number=\"1\">5</psid>", "</InvoiceRecord>",
            "<InvoiceRecord>", "<BP>C</BP>", "<CID>1</CID>", "<PSID Number = \"1\">5</PSID>", "</InvoiceRecord>",
            "<InvoiceRecord>", "<BP>D</BP>", "<CID>1</CID>", "<PSID Number=\"1\"></PSID>",
            "<PSID Number=\"2\">7</PSID>", "</InvoiceRecord>", "</InvoiceRecords>",
            "<Customers>", "<Customer CID=\"1\">", "<FName>Al</FName>", "</Customer>", "</Customers>"}));
        QVERIFY(l.result.ok());
        // Entries are taken by number from 1; a gap ends the list, and only the
        // exact spelling of the writer counts. An empty entry keeps its place.
        QCOMPARE(rows(db.lvwInvoiceRecords), (QStringList{"A|1| = A|Al|1||12x3+4|", "B|1| = B|Al|1|||",
                                                          "C|1| = C|Al|1|||", "D|1| = D|Al|1||+7|"}));
        // No items at all in this file: each entry names a missing one; an empty entry names nothing.
        QCOMPARE(l.problems.size(), 3);
        QVERIFY(l.problems.join('\n').contains(QLatin1String("item number 12,")));
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
        };
        QStringList got;
        for (const QList<QByteArray> &body : bodies) {
            QList<QByteArray> plain{"<InvoiceRecords>", "\t\t<InvoiceRecord>"};
            for (const QByteArray &l : body) plain << "\t\t\t" + l;
            plain << "\t\t</InvoiceRecord>" << "</InvoiceRecords>";
            QList<QByteArray> general = plain;
            general.insert(2, "<x/>");
            Database a, b;
            QVERIFY(load(a, dir, crlf(plain)).result.ok());
            QVERIFY(load(b, dir, crlf(general)).result.ok());
            QCOMPARE(rows(a.lvwInvoiceRecords), rows(b.lvwInvoiceRecords));
            got << rows(a.lvwInvoiceRecords);
        }
        // The first tag counts; "</PSID>" ends an entry only in that exact case.
        QCOMPARE(got, (QStringList{"May|1| = May||1|2.5|5|", "May|2| = May||2||5x2+7|a \"b\" c", "|3| = ||3|||",
                                   "May|4| = May||4||6|", "May|5| = May||5||5</psid><PSID Number=\"2\">6+6|",
                                   "May|6| = May||6|1||"}));
    }

    void longRecordsAndNumbersByReference()
    {
        Database db;
        db.lvwCustomers.add(QStringLiteral("42k"), fields({"A", "A", "", "", "", "", "", "", ""}));
        QStringList entries;
        for (int i = 1; i <= 5000; ++i) entries << QString::number(i % 7 + 1) + (i % 3 ? "" : "x2");
        db.lvwInvoiceRecords.add(fields({"P", "42", ""}),
                                 fields({"P", "A", "42", "1"}) + FieldSep + entries.join(ItemSep) + FieldSep + "\u0100");
        QByteArray bytes = db.serialize();
        QVERIFY(bytes.contains("<PSID Number=\"5000\">"));
        QVERIFY(bytes.replace("<Customer CID=\"42\">", "<Customer CID=\"&#52;&#x32;\">").contains("&#x32;"));
        Database back;
        const Loaded l = load(back, dir, bytes);
        QVERIFY(l.result.ok());
        QCOMPARE(rows(back.lvwInvoiceRecords), rows(db.lvwInvoiceRecords));
        QCOMPARE(rows(back.lvwCustomers), rows(db.lvwCustomers));
        // Every entry names a missing item; past a thousand the rest is summed up.
        QCOMPARE(l.problems.size(), 1000 + 1);
        QVERIFY(l.problems.last().contains(QLatin1String("4000 more")));
    }

    void recordsWithoutUsableNumber()
    {
        Database db;
        const Loaded l = load(db, dir, crlf({
            "<Customers>", "<Customer CID=\"0\">", "<FName>Zero</FName>", "</Customer>", "<Customer CID=\"abc\">",
            "<FName>Letters</FName>", "</Customer>", "<Customer CID=\"-3\">", "<FName>Minus</FName>", "</Customer>",
            "<Customer CID=\"12\">", "<FName>Twelve</FName>", "</Customer>", "<Customer>", "<FName>NoNumber</FName>",
            "</Customer>", "</Customers>", "<ProductsAndServices>", "<PS PSID=\"x\">", "<Item>Bad</Item>", "</PS>",
            "<PS PSID=\"3\">", "<Item>Good</Item>", "<ItemPrice>$1.00</ItemPrice>", "</PS>", "</ProductsAndServices>"}));
        QVERIFY(l.result.ok() && l.problems.isEmpty());
        QCOMPARE(rows(db.lvwCustomers), QStringList{"12k = Twelve|Twelve|||||||"});
        QCOMPARE(rows(db.lvwPAndS), QStringList{"3k = 000000001.00$1.00 - Good"});
    }

    void lineEndsAndCutOffFiles()
    {
        const QByteArray full = crlf({
            "<QOR-DB>", "\t<CompanyInfo>", "\t\t<CompanyName>Acme</CompanyName>", "\t</CompanyInfo>", "\t<Customers>",
            "\t\t<Customer CID=\"1\">", "\t\t\t<FName>Ann</FName>", "\t\t\t<Notes>a", "b</Notes>", "\t\t</Customer>",
            "\t</Customers>", "\t<BillPeriods>", "\t\t<BillPeriod>", "\t\t\t<BPName>May</BPName>", "\t\t</BillPeriod>",
            "\t</BillPeriods>", "\t<InvoiceRecords>", "\t\t<InvoiceRecord>", "\t\t\t<BP>May</BP>", "\t\t\t<CID>1</CID>",
            "\t\t\t<PSID Number=\"1\">5</PSID>", "\t\t</InvoiceRecord>", "\t</InvoiceRecords>", "</QOR-DB>"});
        Database reference;
        load(reference, dir, full);
        QCOMPARE(rows(reference.lvwCustomers), QStringList{"1k = Ann|Ann|||||||ab"});
        QCOMPARE(rows(reference.lvwInvoiceRecords), QStringList{"May|1| = May|Ann|1||5|"});
        // LF alone, CR alone, a mix, and no line end at the end read the same
        // and are saved with CR LF.
        QByteArray lf = full, cr = full, mixed = full;
        lf.replace("\r\n", "\n");
        cr.replace("\r\n", "\r");
        mixed.replace("<CompanyInfo>\r\n", "<CompanyInfo>\n").replace("<Customers>\r\n", "<Customers>\r");
        for (const QByteArray &variant : {lf, cr, mixed, full.chopped(2)}) {
            Database db;
            QVERIFY(load(db, dir, variant).result.ok());
            QCOMPARE(db.serialize(), reference.serialize());
        }
        // A file cut off anywhere keeps what it holds so far and never fails. A
        // cut inside a section's closing tag may leave one more empty period or record.
        for (qsizetype cut = 0; cut <= full.size(); ++cut) {
            Database db;
            QVERIFY(load(db, dir, full.left(cut)).result.ok());
            QVERIFY(db.lvwCustomers.count() <= 2 && db.lvwPeriods.count() <= 2 && db.lvwInvoiceRecords.count() <= 2);
        }
    }
};

QTEST_GUILESS_MAIN(TestDbReader)
#include "tst_dbreader.moc"
