// Order of row texts: names as in a phone book, separators and prices by code,
// archived texts last, and a strict total order that sorting can rely on.
#include "database/collation.h"
#include "database/rows.h"

#include <QRandomGenerator>
#include <QStringList>
#include <QTest>
#include <algorithm>
#include <tuple>
#include <vector>

using namespace qor;

namespace {

int sign(int v) { return v < 0 ? -1 : (v > 0 ? 1 : 0); }

QStringList sortedCopy(QStringList list) {
    std::stable_sort(list.begin(), list.end(), [](const QString &a, const QString &b) { return rowTextLess(a, b); });
    return list;
}

// An independent statement of the intended order, built on Qt's normaliser
// instead of the per-character tables: (archived, base letters folded,
// accents, case, code points).
struct RefKey {
    bool archived;
    std::vector<uint> primary, accents, cases, codes;
    auto tie() const { return std::tie(archived, primary, accents, cases, codes); }
};

RefKey refKey(const QString &s) {
    RefKey k;
    k.archived = s.startsWith(QStringLiteral("zzzz\u00BB"));
    for (QChar c : s) {
        // Per character, so that a prefix shared by two texts gives the same pieces.
        const QString nfd = QString(c).normalized(QString::NormalizationForm_D);
        for (QChar d : nfd) {
            const bool mark = d.category() == QChar::Mark_NonSpacing || d.category() == QChar::Mark_Enclosing;
            if (mark) {
                k.accents.push_back(d.unicode() + 1u);
                continue;
            }
            k.primary.push_back(QChar::toCaseFolded(d.unicode()));
            k.accents.push_back(1);
            k.cases.push_back(QChar::toCaseFolded(c.unicode()) != c.unicode() ? 1 : 0);
        }
    }
    for (char32_t u : s.toUcs4()) k.codes.push_back(u);
    return k;
}

int refCompare(const QString &a, const QString &b) {
    const RefKey x = refKey(a), y = refKey(b);
    if (x.tie() < y.tie()) return -1;
    if (y.tie() < x.tie()) return 1;
    return 0;
}

QString randomText(QRandomGenerator &rng) {
    static const QStringList pieces = {
        "a", "A", "e", "E", "\u00e9", "\u00c9", "e\u0301", "\u00e8", "o", "\u00f6", "O\u0308", "n", "\u00f1",
        "s", "S", "z", "Z", " ", ",", "-", "0", "5", "9", "$", ".", QString(FieldSep), QString(ItemSep),
        "\u00bb", "\u00df", "\u0130", "i", "\u212b", "\u00c5"};
    QString s;
    if (rng.bounded(6) == 0) s = ArchiveMark;
    const int n = int(rng.bounded(7));
    for (int i = 0; i < n; ++i) s += pieces.at(int(rng.bounded(pieces.size())));
    return s;
}

}  // namespace

class TestCollation : public QObject {
    Q_OBJECT
private slots:
    void namesSortLikeAPhoneBook();
    void separatorsDigitsAndPunctuation();
    void archivedTextsGoLast();
    void pricesAndItems();
    void decomposedAndNonBmpText();
    void agreesWithIndependentOrder();
    void sortChunksNeverContradict();
};

void TestCollation::namesSortLikeAPhoneBook() {
    // Case and accents only break ties; the letters decide first.
    const QStringList expected = {"de Souza", "De Souza", "Dean", "emile", "Emile", "\u00e9mile", "\u00c9mile",
                                  "Emilf", "Erin", "O'Brien", "Oster", "\u00d6ster", "Osterberg", "\u00d6sterberg",
                                  "Smith", "Smith, Ann", "Smithson"};
    QStringList shuffled = expected;
    std::reverse(shuffled.begin(), shuffled.end());
    std::swap(shuffled[2], shuffled[9]);
    QCOMPARE(sortedCopy(shuffled), expected);

    // Case-insensitive first level: "de Souza" and "De Souza" are neighbours.
    QVERIFY(compareRowText(u"de Souza", u"De Souza") < 0);
    QVERIFY(compareRowText(u"De Souza", u"de Souzb") < 0);
    // Accent-insensitive first level: the accent loses to a later letter.
    QVERIFY(compareRowText(u"\u00c9mile", u"Emilf") < 0);
    QVERIFY(compareRowText(u"Emile", u"\u00c9mile") < 0);
    QVERIFY(compareRowText(u"\u00c9mile", u"Emile") > 0);
    // A shorter name that is a prefix comes first.
    QVERIFY(compareRowText(u"Smith", u"Smith, Ann") < 0);
    QVERIFY(compareRowText(u"", u"a") < 0);
    QCOMPARE(compareRowText(u"", u""), 0);
    QCOMPARE(compareRowText(u"Smith, Ann", u"Smith, Ann"), 0);
}

void TestCollation::separatorsDigitsAndPunctuation() {
    const QString fs(FieldSep);
    // An empty first field puts the row before every named row.
    QVERIFY(compareRowText(fs + "Zed", u"Aaron") < 0);
    QVERIFY(compareRowText(fs + "Zed", u" ") < 0);
    QVERIFY(compareRowText(fs + "Zed", u"!") < 0);
    QVERIFY(compareRowText(u"", fs) < 0);
    // Field separator ends a name before any continuation of it.
    QVERIFY(compareRowText("Smith" + fs + "Z", u"Smith, Ann") < 0);
    QVERIFY(compareRowText("Smith" + fs + "Z", u"Smitha") < 0);
    // Item separator after field separator, both before printable text.
    QVERIFY(compareRowText(QString(FieldSep), QString(ItemSep)) < 0);
    QVERIFY(compareRowText(QString(ItemSep), u" ") < 0);

    const QStringList byCode = {" ", "$", "-", ".", "0", "9", ":", "a", "B", "z", "{"};
    for (int i = 0; i + 1 < byCode.size(); ++i)
        QVERIFY2(compareRowText(byCode[i], byCode[i + 1]) < 0, qPrintable(byCode[i] + " vs " + byCode[i + 1]));
    // Dates in chrono form sort by time.
    QVERIFY(compareRowText(u"2019/12/31", u"2020/01/01") < 0);
    QVERIFY(compareRowText(u"2020/01/09", u"2020/01/10") < 0);
}

void TestCollation::archivedTextsGoLast() {
    const QString a = ArchiveMark;
    QVERIFY(compareRowText(a + "Adams", u"Zzzzz") > 0);
    QVERIFY(compareRowText(a + "Adams", u"zzzz") > 0);
    QVERIFY(compareRowText(a + "Adams", u"zzzz\u00bc") > 0);
    QVERIFY(compareRowText(u"\uffff\uffff", a) < 0);
    QVERIFY(compareRowText(u"\U0001F600", a + "A") < 0);
    // The mark is exact: an upper-case look-alike is an ordinary name.
    QVERIFY(compareRowText(u"ZZZZ\u00bbAdams", a + "Adams") < 0);
    // Among archived texts the names decide as usual.
    QVERIFY(compareRowText(a + "Adams", a + "brown") < 0);
    QVERIFY(compareRowText(a, a + "Adams") < 0);
    QCOMPARE(compareRowText(a + "Adams", a + "Adams"), 0);

    const QStringList customers = {a + "Zed", "Zed", a + "Abe", "abe", QString(FieldSep) + "x"};
    const QStringList expected = {QString(FieldSep) + "x", "abe", "Zed", a + "Abe", a + "Zed"};
    QCOMPARE(sortedCopy(customers), expected);
}

void TestCollation::pricesAndItems() {
    const QString five = "000000005.00$5.00 - Midget Widget";
    const QString fiveOther = "000000005.00$5.00 - Gadget";
    const QString fiveArchived = "000000005.00" + ArchiveMark + "$5.00 - Old Widget";
    const QString six = "000000006.00$6.00 - Gizmo";
    const QString forty = "000000040.00$40.00 - Big Widget";
    QVERIFY(compareRowText(five, forty) < 0);
    QVERIFY(compareRowText(fiveOther, five) < 0);
    // An archived item stays among its price, behind the current ones.
    QVERIFY(compareRowText(five, fiveArchived) < 0);
    QVERIFY(compareRowText(fiveArchived, six) < 0);
    // The plain currency texts on their own would sort the other way round;
    // that is why the zero-padded price comes first.
    QVERIFY(compareRowText(u"$40.00", u"$5.00") < 0);
}

void TestCollation::decomposedAndNonBmpText() {
    // Precomposed and decomposed accents are neighbours, never equal.
    const QString pre = QStringLiteral("\u00e9a"), dec = QStringLiteral("e\u0301a");
    QVERIFY(compareRowText(pre, dec) != 0);
    QVERIFY(compareRowText(u"\u00e9a", u"e\u0301b") < 0);
    QVERIFY(compareRowText(u"e\u0301a", u"\u00e9b") < 0);
    QVERIFY(compareRowText(u"e\u0301a", u"ea") > 0);
    // Characters beyond the BMP keep code-point order against the BMP.
    QVERIFY(compareRowText(u"a\U0001F600", u"a\ufffd") > 0);
    QVERIFY(compareRowText(u"a\U0001F600", u"a\U0001F601") < 0);
    QVERIFY(compareRowText(u"a\U00010000", u"a\ue000") > 0);
    // Compatibility forms are not folded away, but still order consistently.
    QVERIFY(compareRowText(u"\ufb01", u"fi") != 0);
}

void TestCollation::agreesWithIndependentOrder() {
    QRandomGenerator rng(20240611);
    for (int i = 0; i < 20000; ++i) {
        const QString a = randomText(rng), b = randomText(rng);
        const int got = sign(compareRowText(a, b));
        const int want = sign(refCompare(a, b));
        if (got != want)
            QFAIL(qPrintable(QStringLiteral("order of \"%1\" (%2) and \"%3\" (%4): got %5, want %6")
                                 .arg(a, QString::number(a.size()), b, QString::number(b.size()))
                                 .arg(got)
                                 .arg(want)));
        QCOMPARE(sign(compareRowText(b, a)), -want);
        // Long shared fronts take the fast path past the common prefix.
        const QString front = randomText(rng) + randomText(rng);
        QCOMPARE(sign(compareRowText(front + a, front + b)), sign(refCompare(front + a, front + b)));
    }
}

void TestCollation::sortChunksNeverContradict() {
    QRandomGenerator rng(4242);
    std::vector<QString> texts;
    for (int i = 0; i < 600; ++i) texts.push_back(randomText(rng) + randomText(rng));
    texts.push_back(QString());
    texts.push_back(QStringLiteral("abcd"));
    texts.push_back(QStringLiteral("abcde\u0301"));
    texts.push_back(QStringLiteral("\U0001F600\U0001F600\U0001F600\U0001F600\U0001F600"));
    int decided = 0;
    for (const QString &a : texts) {
        for (const QString &b : texts) {
            if (a.startsWith(ArchiveMark) != b.startsWith(ArchiveMark)) continue;
            qsizetype pa = 0, pb = 0;
            int bySortChunks = 0;
            for (;;) {
                const quint64 ca = rowTextSortChunk(a, pa), cb = rowTextSortChunk(b, pb);
                if (ca != cb) {
                    bySortChunks = ca < cb ? -1 : 1;
                    break;
                }
                if ((ca & 0xFFFF) == 0) break;  // both texts ran out
            }
            if (bySortChunks == 0) continue;
            ++decided;
            if (sign(compareRowText(a, b)) != bySortChunks)
                QFAIL(qPrintable("chunks disagree on \"" + a + "\" / \"" + b + "\""));
        }
    }
    // The chunks must actually separate most random texts to be of use.
    QVERIFY(decided > int(texts.size() * texts.size()) / 3);
}

QTEST_APPLESS_MAIN(TestCollation)
#include "tst_collation.moc"
