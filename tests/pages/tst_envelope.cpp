// Envelopes: the margins as stored, and the eight lines' places read back
// from a PDF.
#include "pdfwords.h"

#include "pages/envelope.h"
#include "pages/pdfoutput.h"

#include <QTest>

using namespace qor::pages;
using namespace Qt::StringLiterals;

class TstEnvelope : public QObject {
    Q_OBJECT

    static EnvelopeInput sample()
    {
        EnvelopeInput in;
        in.company = {u"Acme"_s, u"Pobox"_s, u"Zipline"_s, u"Countryx"_s};
        in.firstName = u"Jane"_s;
        in.lastName = u"Roe"_s;
        in.address = {u"Elmstreet"_s, u"Suitez"_s, u"Metro"_s};
        return in;
    }
    static const PdfWord *word(const QList<PdfWord> &w, const QString &text)
    {
        for (const PdfWord &x : w)
            if (x.text == text)
                return &x;
        return nullptr;
    }

private slots:
    void margins()
    {
        QCOMPARE(marginCentimetres(u"2.5"), 2);  // half to even
        QCOMPARE(marginCentimetres(u"3.5"), 4);
        QCOMPARE(marginCentimetres(u"2.51"), 3);
        QCOMPARE(marginCentimetres(u" 7cm"), 7);
        QCOMPARE(marginCentimetres(u""), 0);
        QCOMPARE(marginCentimetres(u"abc"), 0);
    }

    void linesOnPaper_data()
    {
        QTest::addColumn<int>("x");
        QTest::addColumn<int>("y");
        QTest::addColumn<int>("paper");
        QTest::newRow("US No. 10") << 2 << 1 << int(QPageSize::Envelope10);
        QTest::newRow("defaults, C4") << 2 << 12 << int(QPageSize::EnvelopeC4);
        QTest::newRow("3 and 5, DL") << 3 << 5 << int(QPageSize::EnvelopeDL);
    }
    void linesOnPaper()
    {
        QFETCH(int, x);
        QFETCH(int, y);
        QFETCH(int, paper);
        EnvelopeInput in = sample();
        in.x = x;
        in.y = y;
        const QPageSize size{QPageSize::PageSizeId(paper)};
        const Page page = composeEnvelope(in, size);
        QVERIFY(page.isLandscape());
        QCOMPARE(page.elements().size(), 8);

        QTemporaryDir dir;
        const QString file = dir.filePath(u"envelope.pdf"_s);
        QVERIFY(writePdf({page}, file, size));
        const QList<PdfWord> w = readPdfWords(file);
        const double cm = TwipsPerCm;
        const char *order[] = {"Acme", "Pobox", "Zipline", "Countryx", "Jane", "Elmstreet", "Suitez", "Metro"};
        QList<const PdfWord *> lines;
        for (const char *t : order) {
            const PdfWord *p = word(w, QString::fromLatin1(t));
            QVERIFY2(p, t);
            lines << p;
        }
        // The return address at X, the customer's block 7 cm further right.
        for (int i = 0; i < 8; ++i)
            QVERIFY2(std::abs(lines[i]->left - (i < 4 ? x : x + 7) * cm) < 40, order[i]);
        // The first line's top at Y (its box starts a little below the line's top).
        QVERIFY(lines[0]->top >= y * cm - 20 && lines[0]->top < y * cm + 100);
        // Lines at one pitch each; the name 2 cm lower than the next line
        // would have stood, in 12 points.
        const double pitch10 = lines[1]->top - lines[0]->top;
        QVERIFY(pitch10 > 200 && pitch10 < 280);
        for (int i = 1; i < 4; ++i)
            QVERIFY(std::abs(lines[i]->top - lines[i - 1]->top - pitch10) < 5);
        const double nameGap = lines[4]->top - lines[3]->top;
        QVERIFY(std::abs(nameGap - pitch10 - 2 * cm) < 60);
        QVERIFY(lines[4]->bottom - lines[4]->top > lines[0]->bottom - lines[0]->top);  // 12 points
        for (int i = 6; i < 8; ++i)
            QVERIFY(std::abs(lines[i]->top - lines[i - 1]->top - pitch10) < 5);
        // The block lies on the paper.
        QVERIFY(lines[7]->bottom < page.height());
        // The page is the envelope, landscape.
        const QSizeF pt = size.size(QPageSize::Point);
        QCOMPARE(page.width(), int(std::lround(std::max(pt.width(), pt.height()) * 20)));
    }

    // The locale's envelope takes the block at the default margins.
    void defaultPaperHoldsTheDefaults()
    {
        for (const char *name : {"en_US", "de_DE", "en_GB"}) {
            QLocale::setDefault(QLocale(QString::fromLatin1(name)));
            EnvelopeInput in = sample();
            const Page page = composeEnvelope(in);
            QVERIFY(page.isLandscape());
            const Element &last = page.elements().last();
            QVERIFY2(last.top + last.height < page.height(), name);
            QVERIFY2(last.left + last.width < page.width(), name);
        }
        QLocale::setDefault(QLocale::c());
    }

    // Empty lines keep their place: the block keeps its height.
    void emptyLinesKept()
    {
        EnvelopeInput in = sample();
        const Page full = composeEnvelope(in);
        in.company[0].clear();
        in.address[2].clear();
        const Page gaps = composeEnvelope(in);
        QCOMPARE(gaps.elements().size(), 8);
        for (int i = 0; i < 8; ++i) {
            QCOMPARE(gaps.elements()[i].top, full.elements()[i].top);
            QCOMPARE(gaps.elements()[i].left, full.elements()[i].left);
        }
        QCOMPARE(gaps.elements()[0].text, QString());
        QCOMPARE(gaps.elements()[4].text, u"Jane Roe"_s);
        QCOMPARE(gaps.elements()[4].fontSize, 12.0);
        QCOMPARE(gaps.elements()[5].fontSize, 10.0);
    }
};

QTEST_MAIN(TstEnvelope)
#include "tst_envelope.moc"
