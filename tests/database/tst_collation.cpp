// Order of row texts: names as in a phone book, separators and prices by code,
// archived texts last, and a strict total order that sorting can rely on.
#include "database/collation.h"
#include "database/rows.h"

#include <QRandomGenerator>
#include <QStringList>
#include <QTest>
#include <tuple>
#include <vector>

using namespace qor;

namespace {

int sign(int v) { return v < 0 ? -1 : (v > 0 ? 1 : 0); }

// Every text of the list sorts before every later one, and equals itself.
void expectAscending(const QStringList &l)
{
    for (int i = 0; i < l.size(); ++i) {
        QCOMPARE(compareRowText(l[i], l[i]), 0);
        for (int j = i + 1; j < l.size(); ++j)
            QVERIFY2(compareRowText(l[i], l[j]) < 0 && compareRowText(l[j], l[i]) > 0,
                     qPrintable(QStringLiteral("\"%1\" before \"%2\"").arg(l[i], l[j])));
    }
}

// An independent statement of the intended order, built on Qt's normaliser
// instead of the per-character tables: (archived, base letters folded,
// accents, case, code points).
using RefKey = std::tuple<bool, std::vector<uint>, std::vector<uint>, std::vector<uint>, std::vector<uint>>;
RefKey refKey(const QString &s)
{
    RefKey k;
    auto &[archived, primary, accents, cases, codes] = k;
    archived = s.startsWith(ArchiveMark);
    for (QChar c : s) {
        // Per character, so that a prefix shared by two texts gives the same pieces.
        for (QChar d : QString(c).normalized(QString::NormalizationForm_D)) {
            if (d.category() == QChar::Mark_NonSpacing || d.category() == QChar::Mark_Enclosing) {
                accents.push_back(d.unicode() + 1u);
                continue;
            }
            primary.push_back(QChar::toCaseFolded(d.unicode()));
            accents.push_back(1);
            cases.push_back(QChar::toCaseFolded(c.unicode()) != c.unicode() ? 1 : 0);
        }
    }
    for (char32_t u : s.toUcs4()) codes.push_back(u);
    return k;
}

int refCompare(const QString &a, const QString &b)
{
    const RefKey x = refKey(a), y = refKey(b);
    return x < y ? -1 : (y < x ? 1 : 0);
}

QString randomText(QRandomGenerator &rng)
{
    static const QStringList pieces = {
        "a", "A", "e", "E", "\u00e9", "\u00c9", "e\u0301", "\u00e8", "o", "\u00f6", "O\u0308", "n", "\u00f1",
        "s", "S", "z", "Z", " ", ",", "-", "0", "5", "9", "$", ".", QString(FieldSep), QString(ItemSep),
        "\u00bb", "\u00df", "\u0130", "i", "\u212b", "\u00c5"};
    QString s = rng.bounded(6) == 0 ? ArchiveMark : QString();
    for (int n = int(rng.bounded(7)); n > 0; --n) s += pieces.at(int(rng.bounded(pieces.size())));
    return s;
}

}  // namespace

class TestCollation : public QObject {
    Q_OBJECT
private slots:
    void knownOrders()
    {
        const QString fs(FieldSep), a = ArchiveMark;
        // Case and accents only break ties; the letters decide first; a
        // separator ends a name before any continuation of it.
        expectAscending({"de Souza", "De Souza", "de Souzb", "Dean", "emile", "Emile", "\u00e9mile", "\u00c9mile",
                         "Emilf", "O'Brien", "Oster", "\u00d6ster", "Osterberg", "\u00d6sterberg", "Smith",
                         "Smith" + fs + "Z", "Smith, Ann", "Smithson"});
        // Empty first field before everything; separators before printable
        // text; then by code; dates in chrono form by time.
        expectAscending({"", fs, fs + "Zed", QString(ItemSep), " ", "$", "-", ".", "0", "2019/12/31", "2020/01/01",
                         "2020/01/09", "2020/01/10", "9", ":", "a", "B", "z", "{"});
        // Prices by the zero-padded sort price; an archived item among its price.
        expectAscending({"000000005.00$5.00 - Gadget", "000000005.00$5.00 - Midget", "000000005.00" + a + "$5.00 - Old",
                         "000000006.00$6.00 - Gizmo", "000000040.00$40.00 - Big"});
        // Precomposed and decomposed accents are neighbours, never equal;
        // beyond the BMP, code-point order.
        expectAscending({"ea", "e\u0301a", "\u00e9b"});
        expectAscending({"\u00e9a", "e\u0301b"});
        expectAscending({"a\ufffd", "a\U0001F600", "a\U0001F601"});
        expectAscending({"a\ue000", "a\U00010000"});
        QVERIFY(compareRowText(u"\u00e9a", u"e\u0301a") != 0);
        QVERIFY(compareRowText(u"\ufb01", u"fi") != 0);
        // Archived texts after every other text, the mark exact; among themselves by name.
        const QStringList plainTexts = {"Zzzzz", "zzzz", "zzzz\u00bc", "\uffff\uffff", "\U0001F600", "ZZZZ\u00bbAdams"};
        for (const QString &plain : plainTexts)
            expectAscending({plain, a, a + "Adams", a + "brown", a + "Zed"});
    }

    void agreesWithIndependentOrder()
    {
        QRandomGenerator rng(20240611);
        for (int i = 0; i < 20000; ++i) {
            const QString a = randomText(rng), b = randomText(rng);
            const int want = sign(refCompare(a, b));
            if (sign(compareRowText(a, b)) != want || sign(compareRowText(b, a)) != -want)
                QFAIL(qPrintable(QStringLiteral("order of \"%1\" and \"%2\": want %3").arg(a, b).arg(want)));
            // Long shared fronts take the fast path past the common prefix.
            const QString front = randomText(rng) + randomText(rng);
            QCOMPARE(sign(compareRowText(front + a, front + b)), sign(refCompare(front + a, front + b)));
        }
    }

    void sortChunksNeverContradict()
    {
        QRandomGenerator rng(4242);
        QStringList texts = {QString(), "abcd", "abcde\u0301", "\U0001F600\U0001F600\U0001F600\U0001F600\U0001F600"};
        for (int i = 0; i < 600; ++i) texts << randomText(rng) + randomText(rng);
        int decided = 0;
        for (const QString &a : texts) {
            for (const QString &b : texts) {
                if (a.startsWith(ArchiveMark) != b.startsWith(ArchiveMark)) continue;
                qsizetype pa = 0, pb = 0;
                quint64 ca, cb;
                do {
                    ca = rowTextSortChunk(a, pa);
                    cb = rowTextSortChunk(b, pb);
                } while (ca == cb && (ca & 0xFFFF) != 0);  // until they differ or both ran out
                if (ca == cb) continue;
                ++decided;
                if (sign(compareRowText(a, b)) != (ca < cb ? -1 : 1))
                    QFAIL(qPrintable("chunks disagree on \"" + a + "\" / \"" + b + "\""));
            }
        }
        // The chunks must separate most random texts to be of use.
        QVERIFY(decided > int(texts.size() * texts.size()) / 3);
    }
};

QTEST_APPLESS_MAIN(TestCollation)
#include "tst_collation.moc"
