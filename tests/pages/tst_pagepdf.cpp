// SPDX-License-Identifier: GPL-3.0-or-later
// Pages on paper: each form and the envelope written to PDF and read back with
// poppler's pdftotext -bbox, so the positions are those a reader of the file sees;
// and a system without any printer.
#include "pdfwords.h"

#include "pages/envelope.h"
#include "pages/invoice.h"
#include "pages/pdfoutput.h"
#include "pages/preview.h"
#include "pages/printout.h"

#include <QGuiApplication>
#include <QLocale>
#include <QStandardPaths>
#include <QTest>

using namespace qor::pages;
using namespace Qt::StringLiterals;

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
    static EnvelopeInput envelopeSample()
    {
        EnvelopeInput in;
        in.company = {u"Acme"_s, u"Pobox"_s, u"Zipline"_s, u"Countryx"_s};
        in.firstName = u"Jane"_s;
        in.lastName = u"Roe"_s;
        in.address = {u"Elmstreet"_s, u"Suitez"_s, u"Metro"_s};
        return in;
    }
    static bool near(double actual, double expected, double tolerance = 20)
    {
        return std::abs(actual - expected) <= tolerance;
    }
    enum Edge { Left,
                Right,
                Top,
                Centre };
    // The words from `from` to `to` (one word when empty) have that edge within
    // the tolerance of `at`; the first word is the one nearest `nearTop` when given.
    static void expectAt(const QList<PdfWord> &w, const QString &from, Edge edge, double at, double tolerance = 20,
                         const QString &to = {}, double nearTop = -1)
    {
        const PdfWord *a = nearTop < 0 ? findWord(w, from) : findWordNear(w, from, nearTop);
        const PdfWord *b = to.isEmpty() ? a : findWord(w, to);
        QVERIFY2(a && b, qPrintable(from + u' ' + to));
        const double v = edge == Left ? a->left : edge == Right ? b->right
                                              : edge == Top     ? a->top
                                                                : (a->left + b->right) / 2;
        QVERIFY2(near(v, at, tolerance), qPrintable(u"%1: %2, wanted %3"_s.arg(from).arg(v).arg(at)));
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
    // total's caption and the text under the box, where the painter sets them.
    void itemBoxOnEveryForm()
    {
        for (int form = 0; form < 3; ++form) {
            const QList<PdfWord> w = pdfOf({composeInvoice(sample(form)).first()}, u"box%1.pdf"_s.arg(form));
            // The first line's text at left 840, top 7320.
            expectAt(w, u"Lawn"_s, Left, 840);
            expectAt(w, u"Lawn"_s, Top, 7320, 40);
            expectAt(w, u"$45.00"_s, Centre, 9727.5);                     // centred in its column, 8640 + 2175 / 2
            expectAt(w, u"DUE:"_s, Right, 8295, 20, {}, 11760);           // "TOTAL DUE:" right-aligned
            expectAt(w, u"THANK"_s, Centre, 5707.5, 20, u"BUSINESS!"_s);  // the page's box, 600 + 10215 / 2
            QVERIFY(findWord(w, u"&"_s));                                 // ampersands print as ampersands
        }
    }

    void manyPagesShareFontsAndStamp()
    {
        InvoiceInput in = sample(0);
        in.balance = qor::Money();
        const Page page = composeInvoice(in).first();
        const QString file = m_dir.filePath("many.pdf");
        QVERIFY(writePdf(QList<Page>(20, page), file, QPageSize(QPageSize::Letter)));
        QCOMPARE(readPdfWords(file).last().page, 19);

        // The stamp's image (and its transparency mask) are stored once
        // however many pages show it.
        auto images = [](const QString &name) {
            QFile f(name);
            return f.open(QIODevice::ReadOnly) ? f.readAll().count("/Subtype /Image") : -1;
        };
        const QString one = m_dir.filePath("one.pdf");
        QVERIFY(writePdf({page}, one, QPageSize(QPageSize::Letter)));
        QVERIFY(images(one) >= 1 && images(one) <= 2 && images(file) == images(one));

        QProcess fonts;
        fonts.start("pdffonts", {file});
        QVERIFY(fonts.waitForFinished(60000));
        const QStringList rows = QString::fromLocal8Bit(fonts.readAllStandardOutput()).split('\n', Qt::SkipEmptyParts);
        QVERIFY(rows.size() > 2);
        QStringList names;
        for (const QString &row : rows.mid(2)) {
            const QStringList cols = row.simplified().split(' ');
            // name, type..., encoding, emb, sub, uni, object, generation
            QVERIFY2(cols.size() >= 7 && cols.at(cols.size() - 5) == u"yes", qPrintable(row));
            names << cols.first();
        }
        // Each face once: regular, bold and italic.
        names.removeDuplicates();
        QCOMPARE(names.size(), rows.size() - 2);
    }

    // A system without any printer (main() hides the print server): the print
    // layer says so, distinctly from a failed job, so that the caller can offer a PDF.
    void noPrinterIsToldApart()
    {
        QCOMPARE(defaultPrinterName(), QString());
        const PrintOutcome out = printToDefaultPrinter({composeInvoice(sample(0)).first()}, u"none"_s);
        QVERIFY(out.status == PrintStatus::NoPrinter && out.printer.isEmpty());
    }

    void badFile()
    {
        QString why;
        const QString nowhere = m_dir.filePath("no/such/dir/x.pdf");
        QVERIFY(!writePdf({Page(u"envelope"_s, 13680, 6264, {})}, nowhere, defaultPaper(), &why) && !why.isEmpty());
    }

    void envelopeMargins()
    {
        // Half to even; what holds no number is 0.
        for (const auto &[text, cm] :
             {std::pair{u"2.5"_s, 2}, {u"3.5"_s, 4}, {u"2.51"_s, 3}, {u" 7cm"_s, 7}, {u""_s, 0}, {u"abc"_s, 0}})
            QCOMPARE(marginCentimetres(text), cm);
    }

    // The envelope's eight lines: the return address at X and Y, the
    // customer's block 7 cm further right.
    void envelopeOnPaper_data()
    {
        QTest::addColumn<int>("x");
        QTest::addColumn<int>("y");
        QTest::addColumn<int>("paper");
        QTest::newRow("US No. 10") << 2 << 1 << int(QPageSize::Envelope10);
        QTest::newRow("defaults, C4") << 2 << 12 << int(QPageSize::EnvelopeC4);
        QTest::newRow("3 and 5, DL") << 3 << 5 << int(QPageSize::EnvelopeDL);
    }
    void envelopeOnPaper()
    {
        QFETCH(int, x);
        QFETCH(int, y);
        QFETCH(int, paper);
        EnvelopeInput in = envelopeSample();
        in.x = x;
        in.y = y;
        const QPageSize size{QPageSize::PageSizeId(paper)};
        const Page page = composeEnvelope(in, size);
        const QString file = m_dir.filePath(u"envelope.pdf"_s);
        QVERIFY(writePdf({page}, file, size));
        const QList<PdfWord> w = readPdfWords(file);
        const double cm = TwipsPerCm;
        const char *order[] = {"Acme", "Pobox", "Zipline", "Countryx", "Jane", "Elmstreet", "Suitez", "Metro"};
        QList<const PdfWord *> lines;
        for (const char *t : order) {
            lines << findWord(w, QString::fromLatin1(t));
            QVERIFY2(lines.last(), t);
            QVERIFY2(std::abs(lines.last()->left - (lines.size() <= 4 ? x : x + 7) * cm) < 40, t);
        }
        // The first line's top at Y (its box starts a little below the line's top).
        QVERIFY(lines[0]->top >= y * cm - 20 && lines[0]->top < y * cm + 100);
        // Lines at one pitch each; the name 2 cm lower than the next line
        // would have stood, in 12 points.
        const double pitch10 = lines[1]->top - lines[0]->top;
        QVERIFY(pitch10 > 200 && pitch10 < 280);
        for (int i : {1, 2, 3, 6, 7})
            QVERIFY(std::abs(lines[i]->top - lines[i - 1]->top - pitch10) < 5);
        QVERIFY(std::abs(lines[4]->top - lines[3]->top - pitch10 - 2 * cm) < 60);
        QVERIFY(lines[4]->bottom - lines[4]->top > lines[0]->bottom - lines[0]->top);  // 12 points
        QVERIFY(lines[7]->bottom < page.height());                                     // the block lies on the paper

        // Empty lines keep their place: the block keeps its height.
        in.company[0].clear();
        in.address[2].clear();
        const Page gaps = composeEnvelope(in, size);
        QCOMPARE(gaps.elements().size(), 8);
        for (int i = 0; i < 8; ++i)
            QCOMPARE(QPoint(gaps.elements()[i].left, gaps.elements()[i].top),
                     QPoint(page.elements()[i].left, page.elements()[i].top));
        QVERIFY(gaps.elements()[0].text.isEmpty() && gaps.elements()[4].text == u"Jane Roe");
        QVERIFY(gaps.elements()[4].fontSize == 12.0 && gaps.elements()[5].fontSize == 10.0);
    }
};

int main(int argc, char **argv)
{
    // No print server to reach: CUPS sees no printer at all.
    qputenv("CUPS_SERVER", "/nonexistent/qorvane-no-cups.sock");
    QGuiApplication app(argc, argv);
    TstPagePdf t;
    return QTest::qExec(&t, argc, argv);
}
#include "tst_pagepdf.moc"
