// Pages on paper: each form written to PDF and read back with poppler's
// pdftotext -bbox, so the positions are those a reader of the file sees.
#include "pdfwords.h"

#include "pages/invoice.h"
#include "pages/pdfoutput.h"
#include "pages/preview.h"
#include "pages/printout.h"

#include <QLocale>
#include <QPrinter>
#include <QStandardPaths>
#include <QTest>

using namespace qor::pages;

class TstPagePdf : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;

    static InvoiceInput sample(int form)
    {
        InvoiceInput in = sampleInvoice(form, 3, true, false);
        in.options.addInvoiceDate = false;
        return in;
    }
    QList<PdfWord> pdfOf(const QList<Page> &pages, const QString &name)
    {
        const QString file = m_dir.filePath(name);
        QString why;
        if (!writePdf(pages, file, QPageSize(QPageSize::Letter), &why))
            qWarning() << why;
        return readPdfWords(file);
    }
    // A word's edge within a point of where the page model puts it.
    static bool near(double actual, double expected, double tolerance = 20)
    {
        return std::abs(actual - expected) <= tolerance;
    }

private slots:
    void initTestCase()
    {
        if (QStandardPaths::findExecutable(QStringLiteral("pdftotext")).isEmpty())
            QSKIP("pdftotext (poppler-utils) is not installed");
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
        QVERIFY(m_dir.isValid());
    }

    // Words common to the three forms: the item lines, their amounts, the
    // total and the text under the box.
    void itemBoxOnEveryForm_data()
    {
        QTest::addColumn<int>("form");
        QTest::newRow("frmPrint0") << 0;
        QTest::newRow("frmPrint1") << 1;
        QTest::newRow("frmPrint2") << 2;
    }
    void itemBoxOnEveryForm()
    {
        QFETCH(int, form);
        const QList<PdfWord> words = pdfOf({composeInvoice(sample(form)).first()}, QStringLiteral("box%1.pdf").arg(form));
        QVERIFY(!words.isEmpty());
        // The first line's text at left 840, top 7320; the next a pitch lower.
        const PdfWord *lawn = findWord(words, "Lawn");
        const PdfWord *hedge = findWord(words, "Hedge");
        QVERIFY(lawn && hedge);
        QVERIFY2(near(lawn->left, 840), qPrintable(QString::number(lawn->left)));
        QVERIFY2(near(lawn->top, 7320, 40), qPrintable(QString::number(lawn->top)));
        QVERIFY(near(hedge->top - lawn->top, 360, 2));
        // The amount centred in its column, 8640 + 2175 / 2.
        const PdfWord *amount = findWord(words, "$45.00");
        QVERIFY(amount);
        QVERIFY2(near(amount->centre(), 9727.5), qPrintable(QString::number(amount->centre())));
        // "TOTAL DUE:" right-aligned to 8295.
        const PdfWord *due = findWordNear(words, "DUE:", 11760);
        QVERIFY(due);
        QVERIFY2(near(due->right, 8295), qPrintable(QString::number(due->right)));
        QVERIFY(near(due->top, 11760, 40));
        // Three lines: 45 + 2 x 20 + 12.50.
        QVERIFY(findWord(words, "$97.50"));
        // The closing centred on the page's box, 600 + 10215 / 2.
        const PdfWord *thank = findWord(words, "THANK");
        const PdfWord *business = findWord(words, "BUSINESS!");
        QVERIFY(thank && business);
        QVERIFY(near((thank->left + business->right) / 2, 5707.5));
        // Ampersands print as ampersands.
        const PdfWord *amp = findWord(words, "&");
        QVERIFY(amp);
    }

    void headOfEachForm()
    {
        // frmPrint0: the title's right edge at 10815; the due date centred in
        // the right half of the box, 5700 + 5115 / 2.
        QList<PdfWord> w = pdfOf({composeInvoice(sample(0)).first()}, "head0.pdf");
        const PdfWord *title = findWord(w, "INVOICE");
        QVERIFY(title);
        QVERIFY2(near(title->right, 10815, 40), qPrintable(QString::number(title->right)));
        const PdfWord *bill = findWord(w, "BILL");
        const PdfWord *date = findWord(w, "07/31/2026");
        QVERIFY(bill && date);
        QVERIFY(near((bill->left + date->right) / 2, 8257.5));
        QVERIFY(near(bill->top, 2835, 40));
        const PdfWord *first = findWord(w, "Harbour");
        QVERIFY(first);
        QVERIFY(near(first->left, 600));

        // frmPrint1: the company name centred across the page; the due date,
        // without the invoice date, right-aligned at 10815 in the date's place.
        w = pdfOf({composeInvoice(sample(1)).first()}, "head1.pdf");
        const PdfWord *name1 = findWord(w, "Harbour");
        const PdfWord *name3 = findWord(w, "Landscaping");
        QVERIFY(name1 && name3);
        QVERIFY(near((name1->left + name3->right) / 2, 5707.5));
        QVERIFY(near(name1->top, 1440, 40));
        date = findWord(w, "07/31/2026");
        QVERIFY(date);
        QVERIFY(near(date->right, 10815));
        QVERIFY(near(date->top, 3840, 40));

        // frmPrint2 with the date: date right-aligned at 10635 on 2400, the
        // due date under it on 2760.
        InvoiceInput in = sample(2);
        in.options.addInvoiceDate = true;
        w = pdfOf({composeInvoice(in).first()}, "head2.pdf");
        const PdfWord *invoiceDate = findWord(w, "07/01/2026");
        date = findWord(w, "07/31/2026");
        QVERIFY(invoiceDate && date);
        QVERIFY(near(invoiceDate->right, 10635));
        QVERIFY(near(invoiceDate->top, 2400, 40));
        QVERIFY(near(date->right, 10635));
        QVERIFY(near(date->top, 2760, 40));
        const PdfWord *billTo = findWord(w, "Bill");
        QVERIFY(billTo);
        QVERIFY(near(billTo->left, 840));
        QVERIFY(near(billTo->top, 4320, 40));
    }

    void manyPagesShareFontsAndStamp()
    {
        InvoiceInput in = sample(0);
        in.balance = qor::Money();
        const Page page = composeInvoice(in).first();
        QList<Page> pages;
        for (int i = 0; i < 20; ++i)
            pages << page;
        const QString file = m_dir.filePath("many.pdf");
        QVERIFY(writePdf(pages, file, QPageSize(QPageSize::Letter)));
        const QList<PdfWord> words = readPdfWords(file);
        QCOMPARE(words.last().page, 19);

        // The stamp's image (and its transparency mask) are stored once
        // however many pages show it.
        auto images = [](const QString &name) {
            QFile f(name);
            return f.open(QIODevice::ReadOnly) ? f.readAll().count("/Subtype /Image") : -1;
        };
        const QString one = m_dir.filePath("one.pdf");
        QVERIFY(writePdf({page}, one, QPageSize(QPageSize::Letter)));
        QVERIFY(images(one) >= 1 && images(one) <= 2);
        QCOMPARE(images(file), images(one));

        QProcess fonts;
        fonts.start("pdffonts", {file});
        QVERIFY(fonts.waitForFinished(60000));
        const QStringList rows = QString::fromLocal8Bit(fonts.readAllStandardOutput()).split('\n', Qt::SkipEmptyParts);
        QVERIFY(rows.size() > 2);
        QStringList names;
        for (const QString &row : rows.mid(2)) {
            const QStringList cols = row.simplified().split(' ');
            QVERIFY2(cols.size() >= 7, qPrintable(row));
            // name, type..., encoding, emb, sub, uni, object, generation
            QCOMPARE(cols.at(cols.size() - 5), QStringLiteral("yes"));
            names << cols.first();
        }
        // Each face once: regular, bold and italic.
        names.removeDuplicates();
        QCOMPARE(names.size(), rows.size() - 2);
    }

    void printerInPdfModeDrawsTheSamePage()
    {
        const QList<Page> pages = {composeInvoice(sample(1)).first(), composeInvoice(sample(2)).first()};
        const QString viaPrinter = m_dir.filePath("printer.pdf");
        QPrinter printer(QPrinter::HighResolution);
        printer.setOutputFormat(QPrinter::PdfFormat);
        printer.setOutputFileName(viaPrinter);
        printer.setPageSize(QPageSize(QPageSize::Letter));
        const PrintOutcome out = printPages(pages, printer, "Qorvane test");
        QCOMPARE(out.status, PrintStatus::Printed);
        const QList<PdfWord> a = readPdfWords(viaPrinter);
        const QList<PdfWord> b = pdfOf(pages, "writer.pdf");
        QCOMPARE(a.size(), b.size());
        QCOMPARE(a.last().page, 1);
        for (qsizetype i = 0; i < a.size(); ++i) {
            QCOMPARE(a[i].text, b[i].text);
            QVERIFY(near(a[i].left, b[i].left, 4) && near(a[i].top, b[i].top, 4));
        }
    }

    void landscapePageAndBadFile()
    {
        Page envelope(QStringLiteral("envelope"), 13680, 6264, {});
        Element line;
        line.name = QStringLiteral("line1");
        line.left = 1134;
        line.top = 6804 - 6264;
        line.width = 6000;
        line.height = 300;
        line.text = QStringLiteral("Return & address");
        envelope.add(line);
        const QList<PdfWord> w = pdfOf({envelope}, "envelope.pdf");
        const PdfWord *ret = findWord(w, "Return");
        QVERIFY(ret);
        QVERIFY(near(ret->left, 1134));
        QString why;
        QVERIFY(!writePdf({envelope}, m_dir.filePath("no/such/dir/x.pdf"), defaultPaper(), &why));
        QVERIFY(!why.isEmpty());
    }
};

QTEST_MAIN(TstPagePdf)
#include "tst_pagepdf.moc"
