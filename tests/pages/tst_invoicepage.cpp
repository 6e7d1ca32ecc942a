// SPDX-License-Identifier: GPL-3.0-or-later
// The composed invoice page, element by element: lines and the cut-off at
// twelve, the note, compaction, the stamp, the company block per form, the
// date placement, money forms and the title.
#include "pages/invoice.h"
#include "pages/painter.h"
#include "pages/preview.h"
#include "pages/templates.h"
#include "pages/textlayout.h"

#include <QLocale>
#include <QTest>

using namespace qor::pages;

class TstInvoicePage : public QObject {
    Q_OBJECT

    static InvoiceInput input(int form, int items)
    {
        InvoiceInput in;
        in.company = {"Acme & Sons", "Acme & Sons", "1 Main St", "Springfield", "555-0100", "We fix it",
                      "Monthly service", "Acme Ltd", "THANK YOU FOR YOUR BUSINESS!"};
        in.customer = {"Doe, Jane", "Jane", "Doe", "2 Elm St", "Suite 4", "Shelbyville", "j@x", "555", "n"};
        for (int i = 0; i < items; ++i)
            in.lines << InvoiceLine::item(QStringLiteral("Item %1").arg(i + 1), 1, qor::Money::fromCents(100 * (i + 1)));
        in.balance = in.billed();
        in.billDue = QStringLiteral("07/31/2026");
        in.invoiceDate = QDate(2026, 7, 1);
        in.dateFormat = QStringLiteral("mm/dd/yyyy");
        in.options.templateNumber = form;
        return in;
    }
    // The last page of the invoice (its only one, mostly).
    static Page compose(const InvoiceInput &in)
    {
        const QList<Page> pages = composeInvoice(in);
        return pages.isEmpty() ? Page() : pages.last();
    }
    static QString text(const Page &p, const QString &name) { return p.at(name).text; }
    static QString text(const Page &p, const QString &set, int i) { return p.at(set, i).text; }

private slots:
    void initTestCase() { QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates)); }

    // Lines that don't fit go on to further pages; a part payment takes the
    // last two lines of the box for what was billed and what was paid.
    void pages_data()
    {
        QTest::addColumn<int>("items");
        QTest::addColumn<qint64>("balance");      // cents; -1: all of it owed
        QTest::addColumn<bool>("keep");           // KeepTwelveLines
        QTest::addColumn<QList<int>>("perPage");  // lines of each page, the summary lines included
        QTest::newRow("twelve") << 12 << qint64(-1) << true << QList<int>{12};
        QTest::newRow("thirteen") << 13 << qint64(-1) << true << QList<int>{12, 1};
        QTest::newRow("part paid, ten") << 10 << qint64(100) << true << QList<int>{12};
        QTest::newRow("part paid, eleven") << 11 << qint64(100) << true << QList<int>{10, 3};
        QTest::newRow("part paid, compacted") << 4 << qint64(100) << false << QList<int>{6};
        QTest::newRow("thirty, part paid") << 30 << qint64(100) << false << QList<int>{12, 12, 8};
        QTest::newRow("over billed") << 3 << qint64(100000) << false << QList<int>{3};
        QTest::newRow("paid") << 25 << qint64(0) << true << QList<int>{12, 12, 1};
    }
    void pages()
    {
        QFETCH(int, items);
        QFETCH(qint64, balance);
        QFETCH(bool, keep);
        QFETCH(QList<int>, perPage);
        InvoiceInput in = input(1, items);
        if (balance >= 0)
            in.balance = qor::Money::fromCents(balance);
        in.options.keepTwelveLines = keep;
        const QList<Page> pages = composeInvoice(in);
        QCOMPARE(pages.size(), perPage.size());
        const bool summary = in.balance.isPositive() && in.balance < in.billed();
        const int box = keep ? MaxLines : perPage.last();
        qor::Money printed;
        int item = 0;
        for (qsizetype n = 0; n < pages.size(); ++n) {
            const Page &p = pages[n];
            const bool last = n + 1 == pages.size();
            const int used = perPage[n] - (last && summary ? 2 : 0);
            for (int i = 0; i < MaxLines; ++i) {
                QString want = i < used ? QStringLiteral("Item %1").arg(++item) : QString();
                if (last && summary && (i == box - 2 || i == box - 1))
                    want = i == box - 2 ? QStringLiteral("Billed:") : QStringLiteral("Paid:");
                QCOMPARE(text(p, "lblPS", i), want);
                if (i < used)
                    printed += *qor::Money::fromPriceText(text(p, "lblAm", i));
            }
            QCOMPARE(p.at("lblPageNumber").visible, pages.size() > 1);
            QVERIFY(pages.size() == 1 ||
                    text(p, "lblPageNumber") == QStringLiteral("Page %1 of %2").arg(n + 1).arg(pages.size()));
            // Only the last page totals, stamps and closes.
            QVERIFY(p.at("lblTotalAm").visible == last && text(p, "lblInvoiceClosing").isEmpty() == !last);
            QVERIFY(p.at("imgPaid").visible == (last && in.balance.isZero()) &&
                    p.at("lblPageNumber").top == p.at("lblTotalDue").top);
        }
        // Every item once, adding up to what was billed; the total is the balance.
        QVERIFY(item == items && printed == in.billed());
        const Page &p = pages.last();
        QCOMPARE(text(p, "lblTotalAm"), in.balance.toCurrencyText());
        QVERIFY(!summary || (p.at("lblPS", box - 2).align == Align::Right && qor::Money::fromPriceText(text(p, "lblAm", box - 2)) == in.billed() && qor::Money::fromPriceText(text(p, "lblAm", box - 1)) == in.billed() - in.balance));
    }

    // A note takes a line of the box and prints under it; after twelve
    // lines it goes to the next page.
    void notes()
    {
        InvoiceInput in = input(0, 12);
        in.lines << InvoiceLine::invoiceNote("Late note");
        QList<Page> pages = composeInvoice(in);
        QCOMPARE(pages.size(), qsizetype(2));
        QCOMPARE(text(pages[0], "lblNote") + u'|' + text(pages[1], "lblNote") + u'|' + text(pages[1], "lblTotalAm"),
                 QStringLiteral("|NOTE: Late note|$78.00"));

        in = input(0, 11);
        in.lines << InvoiceLine::invoiceNote("Pay by Friday & thanks");
        in.options.keepTwelveLines = false;
        pages = composeInvoice(in);
        QVERIFY(pages.size() == 1 && (text(pages[0], "lblPS", 11) + text(pages[0], "lblAm", 11)).isEmpty());
        QCOMPARE(text(pages[0], "lblNote"), QStringLiteral("NOTE: Pay by Friday & thanks"));
        QVERIFY(pages[0].at("lneAboveTotal").y1 == 11640 && pages[0].at("lnePS", 11).visible);

        in = input(2, 0);
        in.lines << InvoiceLine::item("First", 1, qor::Money::fromCents(100)) << InvoiceLine::invoiceNote("Hi")
                 << InvoiceLine::item("Third", 2, qor::Money::fromCents(200));
        in.balance = in.billed();
        const Page p = compose(in);
        QCOMPARE((QStringList{text(p, "lblPS", 0), text(p, "lblPS", 1), text(p, "lblPS", 2)}),
                 (QStringList{"First", "", "Third (x2)"}));
        QCOMPARE(text(p, "lblTotalAm"), QStringLiteral("$3.00"));
        // No line, or a form that isn't one: no page.
        QVERIFY(composeInvoice(input(0, 0)).isEmpty());
        QVERIFY(composeInvoice(input(3, 2)).isEmpty());
    }

    void compaction_data()
    {
        QTest::addColumn<int>("lines");
        QTest::addColumn<bool>("keep");  // KeepTwelveLines: nothing moves
        QTest::addColumn<bool>("move");
        QTest::addColumn<int>("delta");
        QTest::newRow("12 lines") << 12 << false << true << 0;
        QTest::newRow("11 lines") << 11 << false << false << 360;
        QTest::newRow("6 lines") << 6 << false << false << 2160;
        QTest::newRow("3 lines") << 3 << false << false << 3240;
        QTest::newRow("3 lines moved") << 3 << false << true << 3240;
        QTest::newRow("1 line moved") << 1 << false << true << 3960;
        QTest::newRow("1 line kept") << 1 << true << true << 0;
    }
    void compaction()
    {
        QFETCH(int, lines);
        QFETCH(bool, keep);
        QFETCH(bool, move);
        QFETCH(int, delta);
        InvoiceInput in = input(0, lines);
        in.options.keepTwelveLines = keep;
        in.options.moveBottomText = move;
        const Page p = compose(in);
        for (int i = 0; i < 12; ++i)
            QCOMPARE(p.at("lnePS", i).visible, i < lines || delta == 0);
        const int moved = move ? delta : 0;
        // The box and the total move up by the lines left out, the text under
        // it when asked; the used lines and the stamp stay where they are.
        const QList<int> at{p.at("lneAboveTotal").y1, p.at("lneAboveTotal").y2, p.at("lblTotalDue").top,
                            p.at("lblTotalAm").top, p.at("shpPSBox").height, p.at("lnePSAmDivider").y2,
                            p.at("lnePSAmDivider").y1, p.at("lblNote").top, p.at("lblChecksPayableTo").top,
                            p.at("lblCompanyPhone").top, p.at("lblInvoiceClosing").top, p.at("lblPS", 0).top,
                            p.at("imgPaid").top};
        QCOMPARE(at,
                 (QList<int>{11640 - delta, 11640 - delta, 11760 - delta, 11760 - delta, 5415 - delta, 12120 - delta,
                             6720, 12600 - moved, 13320 - moved, 13680 - moved, 14160 - moved, 7320, 7680}));
    }

    // The stamp is drawn, over the lines, in grey; without it the spot is paper.
    void paidStamp()
    {
        InvoiceInput in = input(0, 2);
        in.balance = qor::Money();
        const QImage stamped = renderPage(compose(in), 768);
        in.balance = in.billed();
        const QImage plain = renderPage(compose(in), 768);
        int grey = 0, differing = 0;
        const double s = 768.0 / 11520;
        for (int y = int(7680 * s); y < int(11340 * s); ++y) {
            for (int x = int(1680 * s); x < int(7485 * s); ++x) {
                const QRgb a = stamped.pixel(x, y);
                if (a != plain.pixel(x, y))
                    ++differing;
                if (qRed(a) < 200 && qRed(a) == qGreen(a) && qGreen(a) == qBlue(a))
                    ++grey;
            }
        }
        QVERIFY2(grey > 2000 && differing > 2000, qPrintable(QString::number(grey)));
        const QImage stamp = pictureImage("paid");
        QVERIFY(stamp.size() == QSize(387, 244) && qAlpha(stamp.pixel(0, 0)) == 0);
    }

    // The company's and the customer's blocks; the company's lines vanish
    // with their fields.
    void companyAndBillTo()
    {
        const Page p = compose(input(2, 1));
        const std::tuple<const char *, int, const char *> shown[] = {
            {"lblCompanyName", -1, "Acme & Sons"}, {"lblCompanySlogan", -1, "We fix it"}, {"lblCompanyAddress", 0, "Acme & Sons"}, {"lblCompanyAddress", 3, "Springfield"}, {"lblBillTo", 1, "Jane Doe"}, {"lblBillTo", 2, "2 Elm St"}, {"lblBillTo", 4, "Shelbyville"}, {"lblGeneralInvoiceDescription", -1, "Monthly service"}, {"lblBillDue", -1, "BILL DUE: 07/31/2026"}, {"lblChecksPayableTo", -1, "Please make all checks payable to: Acme Ltd"}, {"lblCompanyPhone", -1, "If you have any questions about your bill, please call: 555-0100"}, {"lblInvoiceClosing", -1, "THANK YOU FOR YOUR BUSINESS!"}, {"lblNote", -1, ""}};
        for (auto [name, i, want] : shown)
            QCOMPARE(i < 0 ? text(p, name) : text(p, name, i), QString::fromUtf8(want));
        InvoiceInput in = input(0, 1);
        for (int field : {4, 6, 7, 8}) in.company[field].clear();
        const Page bare = compose(in);
        for (const char *name : {"lblChecksPayableTo", "lblCompanyPhone", "lblInvoiceClosing", "lblGeneralInvoiceDescription"})
            QVERIFY2(text(bare, name).isEmpty(), name);
        QCOMPARE(text(bare, "lblFor"), QStringLiteral("For:"));
    }

    void addressShift_data()
    {
        QTest::addColumn<int>("form");
        QTest::addColumn<QList<int>>("full");
        QTest::addColumn<QList<int>>("shifted");
        QTest::newRow("frmPrint0") << 0 << QList<int>{2520, 2760, 3000} << QList<int>{2640, 2880, 3120};
        QTest::newRow("frmPrint1") << 1 << QList<int>{2400, 2640, 2880} << QList<int>{2640, 2880, 3120};
        QTest::newRow("frmPrint2") << 2 << QList<int>{2400, 2640, 2880} << QList<int>{2400, 2640, 2880};
    }
    void addressShift()
    {
        QFETCH(int, form);
        QFETCH(QList<int>, full);
        QFETCH(QList<int>, shifted);
        // The tops of the first three lines, with the line cleared.
        auto tops = [form](int cleared) {
            InvoiceInput in = input(form, 1);
            if (cleared) in.company[size_t(cleared)].clear();
            const Page p = compose(in);
            if (!text(p, "lblCompanyAddress", 3).isEmpty() && cleared == 3) return QList<int>{};  // nothing moves down
            return QList<int>{p.at("lblCompanyAddress", 0).top, p.at("lblCompanyAddress", 1).top,
                              p.at("lblCompanyAddress", 2).top};
        };
        QCOMPARE(tops(0), full);
        QCOMPARE(tops(3), shifted);
        QCOMPARE(tops(2), full);  // an empty line among the others closes nothing up
    }

    void datePlacement_data()
    {
        QTest::addColumn<int>("form");
        QTest::addColumn<bool>("withDate");
        QTest::addColumn<int>("dueTop");
        QTest::newRow("0 date") << 0 << true << 3030;
        QTest::newRow("0 none") << 0 << false << 2835;
        QTest::newRow("1 date") << 1 << true << 4200;
        QTest::newRow("1 none") << 1 << false << 3840;
        QTest::newRow("2 date") << 2 << true << 2760;
        QTest::newRow("2 none") << 2 << false << 2400;
    }
    void datePlacement()
    {
        QFETCH(int, form);
        QFETCH(bool, withDate);
        QFETCH(int, dueTop);
        InvoiceInput in = input(form, 1);
        in.options.addInvoiceDate = withDate;
        const Page p = compose(in);
        QCOMPARE(p.at("lblBillDue").top, dueTop);
        QVERIFY(p.at("lblInvoiceDate").visible == withDate &&
                (!withDate || text(p, "lblInvoiceDate") == u"INVOICE DATE: 07/01/2026"));
    }

    // Amounts in the present currency form, exact to the cent at any size.
    void amounts_data()
    {
        QTest::addColumn<QString>("locale");
        QTest::addColumn<QList<qint64>>("cents");
        QTest::addColumn<QStringList>("shown");  // the lines, then the total
        const QString euro = QStringLiteral("\u00A0\u20AC");
        QTest::newRow("grouping") << "en_US" << QList<qint64>{123450} << QStringList{"$1,234.50", "$1,234.50"};
        QTest::newRow("beyond floats") << "en_US" << QList<qint64>{20000000, 1}
                                       << QStringList{"$200,000.00", "$0.01", "$200,000.01"};
        QTest::newRow("dimes") << "en_US" << QList<qint64>(10, 10) << (QStringList(10, "$0.10") << "$1.00");
        QTest::newRow("German") << "de_DE" << QList<qint64>{1500, 123450}
                                << QStringList{"15,00" + euro, "1.234,50" + euro, "1.249,50" + euro};
        QTest::newRow("credit") << "en_US" << QList<qint64>{-500} << QStringList{"($5.00)", "($5.00)"};
        QTest::newRow("widest") << "en_US" << QList<qint64>{4611686018427387903, 4611686018427387903}
                                << QStringList{"$46,116,860,184,273,879.03", "$46,116,860,184,273,879.03",
                                               "$92,233,720,368,547,758.06"};
    }
    void amounts()
    {
        QFETCH(QString, locale);
        QFETCH(QList<qint64>, cents);
        QFETCH(QStringList, shown);
        InvoiceInput in = input(0, 0);
        in.locale = QLocale(locale);
        for (qint64 c : cents)
            in.lines << InvoiceLine::item("Job", 1, qor::Money::fromCents(c));
        in.balance = in.billed();
        const Page p = compose(in);
        for (int i = 0; i <= cents.size(); ++i) {
            // Whole on one line inside its box: a broken amount loses its cents below the box.
            const Element &e = i < cents.size() ? p.at("lblAm", i) : p.at("lblTotalAm");
            const QList<TextLine> lines = layoutText(e);
            QCOMPARE(e.text, shown[i]);
            QVERIFY(lines.size() == 1 && lines[0].text == e.text && lines[0].width <= e.width);
        }
    }

    void title_data()
    {
        QTest::addColumn<int>("option");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<int>("size");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<double>("points");
        QTest::newRow("invoice L") << 0 << "Bill" << 2 << "INVOICE" << 36.0;
        QTest::newRow("estimate M") << 1 << "" << 1 << "ESTIMATE" << 24.0;
        QTest::newRow("other S") << 2 << "Receipt & Co" << 0 << "Receipt & Co" << 16.0;
        QTest::newRow("other empty") << 2 << "" << 2 << "" << 36.0;
    }
    void title()
    {
        QFETCH(int, option);
        QFETCH(QString, typed);
        QFETCH(int, size);
        QFETCH(QString, shown);
        QFETCH(double, points);
        for (int form = 0; form < 3; ++form) {
            InvoiceInput in = input(form, 1);
            in.options.title = TitleOption(option);
            in.options.titleText = typed;
            in.options.titleSize = TitleSize(size);
            const Page p = compose(in);
            const Element &t = p.at("lblInvoiceTitle");
            QVERIFY(t.text == shown && t.fontSize == points);
            if (form == 0) {
                // The box follows the text; the right edge stays put.
                QVERIFY(t.left + t.width == 10815 && t.top == 1335);
                QVERIFY(shown.isEmpty() || std::abs(t.width - naturalTextSize(t).width()) <= 1.0);
            } else {
                // The box keeps its aligned edge and widens only as far as the
                // title's widest word needs: the large "INVOICE" reads whole.
                const Element &design = invoiceTemplate(form)->at("lblInvoiceTitle");
                const bool right = design.align == Align::Right;
                QVERIFY((right ? t.left + t.width : t.left) == (right ? design.left + design.width : design.left) &&
                        t.width >= 2955);
                for (const QString &word : shown.split(u' ', Qt::SkipEmptyParts))
                    QVERIFY2(pageFont(t).advance(word) <= t.width, qPrintable(word));
                QCOMPARE(layoutText(t).size(), shown.isEmpty() ? 0 : 1);
            }
        }
    }

    void wrappingAndCutting()
    {
        Element e{.left = 1000,
                  .top = 2000,
                  .width = 2000,
                  .height = 255,
                  .text = QStringLiteral("one two three four five six seven eight nine ten")};
        QList<TextLine> lines = layoutText(e);
        // Only the first line fits in the height; it broke at a blank.
        QVERIFY(lines.size() == 1 && lines[0].width <= 2000 && e.text.startsWith(lines[0].text + u' '));
        e.height = 2000;
        lines = layoutText(e);
        QVERIFY(lines.size() >= 3);
        QStringList joined;
        for (const TextLine &l : lines) {
            QVERIFY(l.width <= 2000 && l.x == 1000.0);
            joined << l.text;
        }
        QCOMPARE(joined.join(u' '), e.text);
        // Line breaks in the text start new lines; a self-sizing element doesn't wrap.
        e.autoSize = AutoSize::KeepLeft;
        e.text = QStringLiteral("a\nb");
        QCOMPARE(layoutText(e).size(), 2);
        e.text = QStringLiteral("a\r\nb\nc");
        QCOMPARE(layoutText(e).size(), 3);
        fitAutoSize(e);
        QVERIFY(e.height > 2 * 195 && e.height < 4 * 260);
    }

    void listColumnsHideWhatRunsUnderThem()
    {
        // A line too wide for its column is cut where the next column begins:
        // each column is opaque and lies over the one to its left.
        Page list = *pageTemplate("frmPrintC");
        const QString wide = QStringLiteral("MMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMM");
        Element &first = list.at("lblList", 0);
        first.text = wide + QStringLiteral("\r\n") + wide;
        fitAutoSize(first);
        QVERIFY(first.left + first.width > 6000);
        Element &second = list.at("lblList", 1);
        second.text = QStringLiteral("A customer's long name\r\n.");
        fitAutoSize(second);
        const double line = pageFont(second).metrics.lineSpacing();
        const int secondRight = 3240 + second.width;
        // Dark pixels of the second row between two x (twips), 10 twips a pixel:
        // right of 3500 the second column holds only a dot at its left.
        auto ink = [&](const QImage &img, int from, int to) {
            int n = 0;
            for (int y = int((1560 + line) / 10) + 2; y < int((1560 + 2 * line) / 10) - 2; ++y)
                for (int x = from / 10; x < to / 10 - 1; ++x)
                    n += qRed(img.pixel(x, y)) < 128;
            return n;
        };
        const QImage covered = renderPage(list, 1152);
        QVERIFY(ink(covered, 2000, 3210) > 20);  // the first column's own part shows
        QCOMPARE(ink(covered, 3500, secondRight), 0);
        // Without the second column, the line runs on.
        list.at("lblList", 1).text.clear();
        fitAutoSize(list.at("lblList", 1));
        QVERIFY(ink(renderPage(list, 1152), 3500, secondRight) > 20);
    }

    void previewPictures()
    {
        const PreviewPictures pics = makePreviewPictures();
        // Each form's top differs, and so does each bottom.
        QVERIFY(pics.top[0] != pics.top[1] && pics.top[1] != pics.top[2] && pics.top[0] != pics.top[2]);
        QVERIFY(pics.bottom[0] != pics.bottom[1] && pics.bottom[1] != pics.bottom[2]);
        // With the text moved up, the foot of the picture is empty paper.
        auto inkRows = [](const QImage &img, int from) {
            int ink = 0;
            for (int y = from; y < img.height(); ++y)
                for (int x = 0; x < img.width(); ++x) ink += qRed(img.pixel(x, y)) < 200;
            return ink;
        };
        QCOMPARE(inkRows(pics.bottom[2], 110), 0);
        QVERIFY(inkRows(pics.bottom[1], 110) > 0);
    }
};

QTEST_MAIN(TstInvoicePage)
#include "tst_invoicepage.moc"
