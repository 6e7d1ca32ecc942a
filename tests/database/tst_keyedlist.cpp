// SPDX-License-Identifier: GPL-3.0-or-later
// The table type against a plain vector model over long random runs, and the
// order of row texts against known orders and an independent statement of it.
#include "database/collation.h"
#include "database/keyedlist.h"
#include "database/rows.h"

#include <QRandomGenerator>
#include <QStringList>
#include <QTest>
#include <algorithm>
#include <functional>
#include <tuple>
#include <vector>

using namespace qor;

namespace {

struct ModelRow {
    QString key, text;
};
using Model = std::vector<ModelRow>;

// The table must match the model by position, by forEach and by key.
void expectSame(const KeyedList &t, const Model &m, const QByteArray &where)
{
    QVERIFY2(t.count() == int(m.size()), (where + ": count differs").constData());
    size_t i = 0;
    t.forEach([&](QStringView k, QStringView x) {
        i = (i < m.size() && k == m[i].key && x == m[i].text) ? i + 1 : m.size() + 1;
        return true;
    });
    QVERIFY2(i == m.size(), (where + ": forEach differs").constData());
    for (size_t p = 0; p < m.size(); ++p)
        if (t.keyView(int(p) + 1) != m[p].key || t.textView(int(p) + 1) != m[p].text || t.indexOf(m[p].key) != int(p) + 1)
            QFAIL((where + ": row " + QByteArray::number(qulonglong(p + 1)) + " differs").constData());
}

bool modelLess(const ModelRow &a, const ModelRow &b) { return rowTextLess(a.text, b.text); }

// Few distinct texts, so equal texts are common and their order is tested.
QString randomRowText(QRandomGenerator &rng)
{
    static const QStringList names = {"Smith, Ann", "smith, ann", "de Souza, Al", "De Souza, Al", "\u00c9mile",
                                      "Emile", "O'Brien", "Zed", QString()};
    QString s = (rng.bounded(8) == 0 ? ArchiveMark : QString()) + names.at(int(rng.bounded(names.size())));
    return rng.bounded(3) == 0 ? s + FieldSep + QString::number(rng.bounded(20)) : s;
}

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
        "\u00bb", "\u00df", "\u0130", "i", "\u212b", "\u00c5", "'", "/", ":", "{"};
    QString s = rng.bounded(6) == 0 ? ArchiveMark : QString();
    for (int n = int(rng.bounded(7)); n > 0; --n) s += pieces.at(int(rng.bounded(pieces.size())));
    return s;
}

}  // namespace

class TestKeyedList : public QObject {
    Q_OBJECT
private slots:
    void randomOperationsMatchModel_data()
    {
        QTest::addColumn<quint32>("seed");
        QTest::addColumn<int>("target");  // size the run drifts towards
        QTest::newRow("small") << 1u << 40;
        QTest::newRow("deep, from a bulk load") << 2u << 6000;
    }

    // Adds land after equal texts, changed texts stay in place until the
    // stable re-sort, removed keys are gone: all checked against the model.
    void randomOperationsMatchModel()
    {
        QFETCH(quint32, seed);
        QFETCH(int, target);
        QRandomGenerator rng(seed);
        KeyedList t;
        Model m;
        int nextKey = 0;
        bool dirty = true;  // rows appended or texts changed since the last re-sort
        auto appendRandom = [&] {
            m.push_back({QString::number(nextKey++) + "k", randomRowText(rng)});
            t.append(m.back().key, m.back().text);
            dirty = true;
        };
        auto resort = [&] {
            QCOMPARE(t.isSorted(), std::is_sorted(m.begin(), m.end(), modelLess));
            t.resort();
            std::stable_sort(m.begin(), m.end(), modelLess);
            dirty = false;
        };
        auto randomRow = [&] { return m.begin() + long(rng.bounded(quint32(m.size()))); };
        for (int i = 0; i < target / 2; ++i) appendRandom();
        resort();
        for (int step = 0; step < 12000; ++step) {
            const bool grow = int(m.size()) < target || ((step / 2000) % 2 == 0 && int(m.size()) < target * 2);
            const quint32 op = rng.bounded(100);
            if (op < 35 && grow) {
                if (dirty) resort();
                const QString k = QString::number(nextKey++) + "k", x = randomRowText(rng);
                const size_t want = size_t(std::upper_bound(m.begin(), m.end(), ModelRow{k, x}, modelLess) - m.begin());
                QCOMPARE(size_t(t.add(k, x)), want + 1);
                m.insert(m.begin() + long(want), {k, x});
            } else if (op < 40 && grow) {
                for (int n = 1 + int(rng.bounded(quint32(std::max(1, target / 10)))); n > 0; --n) appendRandom();
            } else if (op < 70 && !m.empty()) {
                // Removed keys are gone, and may be used again.
                const auto it = randomRow();
                const ModelRow row = *it;
                t.remove(row.key);
                m.erase(it);
                QVERIFY(!t.contains(row.key));
                QVERIFY_THROWS_EXCEPTION(KeyedListError, t.textOf(row.key));
                if (op % 4 == 0) {
                    t.append(row.key, row.text);
                    m.push_back(row);
                    dirty = true;
                }
            } else if (op < 80 && !m.empty()) {
                const auto it = randomRow();
                it->text = randomRowText(rng);
                if (op % 2) t.setText(int(it - m.begin()) + 1, it->text);
                else t.setTextOf(it->key, it->text);
                dirty = true;
            } else if (op < 83) {
                resort();
            } else if (op < 86 && !m.empty()) {
                // Refused calls leave the table as it was. Keys are exact: "1K" is not "1k".
                QString k = randomRow()->key, x = QStringLiteral("x");
                const int past = int(m.size()) + 1;
                const std::function<void()> refused[] = {[&] { t.add(QString(), x); }, [&] { t.add(k, x); },
                                                         [&] { t.textOf(k.toUpper()); }, [&] { t.setText(0, x); },
                                                         [&] { t.setText(past, x); }, [&] { t.keyView(-1); },
                                                         [&] { t.key(past); }, [&] { t.setTextOf(k.toUpper(), x); },
                                                         [&] { t.append(k, x); },
                                                         [&] { t.append(std::move(k), std::move(x)); }};
                QVERIFY_THROWS_EXCEPTION(KeyedListError, refused[rng.bounded(quint32(std::size(refused)))]());
                QVERIFY(!k.isEmpty() && x == u"x");  // a refused append by move leaves the caller its strings
            } else if (!m.empty()) {
                const auto it = randomRow();
                QCOMPARE(t.textOf(it->key), it->text);
                QCOMPARE(t.indexOf(QString::number(nextKey) + "k"), 0);
            }
            if (step % 97 == 0) expectSame(t, m, "step " + QByteArray::number(step));
            if (QTest::currentTestFailed()) return;
        }
        resort();
        expectSame(t, m, "final resort");
        while (!m.empty()) {
            const auto it = randomRow();
            t.remove(it->key);
            m.erase(it);
            if (m.size() % 211 == 0) expectSame(t, m, "draining");
        }
        // Emptied by remove or by clear, the table works as new.
        QVERIFY_THROWS_EXCEPTION(KeyedListError, t.key(1));
        QVERIFY_THROWS_EXCEPTION(KeyedListError, t.remove(u"0k"));
        QCOMPARE(t.indexOf(u"0k"), 0);
        QCOMPARE(t.add("0k", "again"), 1);
        t.clear();
        QVERIFY(t.count() == 0 && !t.contains(u"0k"));
        QCOMPARE(t.add("0k", "again"), 1);
    }

    void knownOrders()
    {
        // What the independent order below can't state: prices by the
        // zero-padded sort price with an archived item among its price, code
        // points beyond the BMP, a ligature apart from its letters.
        const QString a = ArchiveMark;
        expectAscending({"000000005.00$5.00 - Gadget", "000000005.00$5.00 - Midget", "000000005.00" + a + "$5.00 - Old",
                         "000000006.00$6.00 - Gizmo", "000000040.00$40.00 - Big"});
        expectAscending({"a\ufffd", "a\U0001F600", "a\U0001F601"});
        expectAscending({"a\ue000", "a\U00010000"});
        QVERIFY(compareRowText(u"\ufb01", u"fi") != 0);
        // Archived texts after every other text, the mark exact; among themselves by name.
        for (const QString &plain :
             QStringList{"Zzzzz", "zzzz", "zzzz\u00bc", "\uffff\uffff", "\U0001F600", "ZZZZ\u00bbAdams"})
            expectAscending({plain, a, a + "Adams", a + "brown", a + "Zed"});
    }

    // The order against an independent statement of it, and the sort chunks
    // (compared until they differ) against the order.
    void agreesWithIndependentOrder()
    {
        QRandomGenerator rng(20240611);
        int pairs = 0, decided = 0;
        for (int i = 0; i < 20000; ++i) {
            const QString a = randomText(rng), b = randomText(rng), front = randomText(rng) + randomText(rng);
            // Long shared fronts take the fast path past the common prefix.
            for (const auto &[x, y] : {std::pair{a, b}, {front + a, front + b}, {a + front, b + b}}) {
                const int want = sign(refCompare(x, y));
                if (sign(compareRowText(x, y)) != want || sign(compareRowText(y, x)) != -want)
                    QFAIL(qPrintable(QStringLiteral("order of \"%1\" and \"%2\": want %3").arg(x, y).arg(want)));
                if (x.startsWith(ArchiveMark) != y.startsWith(ArchiveMark)) continue;
                ++pairs;
                qsizetype px = 0, py = 0;
                quint64 cx, cy;
                do {
                    cx = rowTextSortChunk(x, px);
                    cy = rowTextSortChunk(y, py);
                } while (cx == cy && (cx & 0xFFFF) != 0);  // until they differ or both ran out
                if (cx == cy) continue;
                ++decided;
                if (want != (cx < cy ? -1 : 1)) QFAIL(qPrintable("chunks disagree on \"" + x + "\" / \"" + y + "\""));
            }
        }
        // The chunks must separate nearly all random texts to be of use.
        QVERIFY(decided > pairs * 9 / 10);
    }
};

QTEST_APPLESS_MAIN(TestKeyedList)
#include "tst_keyedlist.moc"
