// The table type: sorted insertion, positions, keys, re-sorting and failures,
// checked against a plain vector model over long random runs.
#include "database/collation.h"
#include "database/keyedlist.h"
#include "database/rows.h"

#include <QRandomGenerator>
#include <QStringList>
#include <QTest>
#include <algorithm>
#include <functional>
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

size_t modelUpperBound(const Model &m, const QString &text)
{
    return size_t(std::upper_bound(m.begin(), m.end(), ModelRow{{}, text}, modelLess) - m.begin());
}

// Few distinct texts, so equal texts are common and their order is tested.
QString randomRowText(QRandomGenerator &rng)
{
    static const QStringList names = {"Smith, Ann", "smith, ann", "de Souza, Al", "De Souza, Al", "\u00c9mile",
                                      "Emile",      "O'Brien",    "Zed",          QString()};
    QString s = (rng.bounded(8) == 0 ? ArchiveMark : QString()) + names.at(int(rng.bounded(names.size())));
    return rng.bounded(3) == 0 ? s + FieldSep + QString::number(rng.bounded(20)) : s;
}

bool fails(const std::function<void()> &fn)
{
    try {
        fn();
    } catch (const KeyedListError &) {
        return true;
    }
    return false;
}

}  // namespace

class TestKeyedList : public QObject {
    Q_OBJECT
private slots:
    void emptyTableAndFailures()
    {
        KeyedList t;
        QVERIFY(t.count() == 0 && t.indexOf(u"1k") == 0 && !t.contains(u"1k"));
        QVERIFY(fails([&] { t.key(1); }) && fails([&] { t.remove(u"1k"); }) && fails([&] { t.textOf(u"1k"); }));
        t.add("1k", "Brown");
        t.add("2k", "Adams");
        // Failures leave the table as it was, and their message names what was wrong.
        QVERIFY(fails([&] { t.add(QString(), "Empty"); }));
        QVERIFY(fails([&] { t.append("2k", "Clark"); }));
        QVERIFY(fails([&] { t.textOf(u"1K"); }));  // keys are exact
        QVERIFY(fails([&] { t.setTextOf(u"3k", "X"); }));
        QVERIFY(fails([&] { t.setText(0, "X"); }) && fails([&] { t.setText(3, "X"); }));
        QVERIFY(fails([&] { t.keyView(-1); }));
        try {
            t.add("1k", "Clark");
            QFAIL("no failure");
        } catch (const KeyedListError &e) {
            QVERIFY(QString::fromUtf8(e.what()).contains("1k"));
        }
        expectSame(t, {{"2k", "Adams"}, {"1k", "Brown"}}, "after failures");
        // Emptied by remove, by clear, or by a move: the table works as new.
        t.remove(u"1k");
        KeyedList moved(std::move(t));
        QCOMPARE(moved.count(), 1);
        QCOMPARE(t.add("9k", "nine"), 1);  // NOLINT: a moved-from table is empty and usable
        moved.clear();
        QVERIFY(!moved.contains(u"2k"));
        QCOMPARE(moved.add("2k", "again"), 1);
    }

    void equalTextsAndSetText()
    {
        KeyedList t;
        QCOMPARE(t.add("1k", "Smith, Ann"), 1);
        QCOMPARE(t.add("2k", "Smith, Ann"), 2);
        QCOMPARE(t.add("3k", "Adams"), 1);
        QCOMPARE(t.add("4k", "Zed"), 4);
        QCOMPARE(t.add("5k", "Smith, Ann"), 4);  // after the equal ones
        // A changed text leaves the row in place until the re-sort, which is stable.
        t.setText(1, "Zimmer");
        t.setTextOf(u"4k", "Able");
        QVERIFY(!t.isSorted());
        expectSame(t, {{"3k", "Zimmer"}, {"1k", "Smith, Ann"}, {"2k", "Smith, Ann"}, {"5k", "Smith, Ann"}, {"4k", "Able"}},
                   "changed");
        t.resort();
        QVERIFY(t.isSorted());
        expectSame(t, {{"4k", "Able"}, {"1k", "Smith, Ann"}, {"2k", "Smith, Ann"}, {"5k", "Smith, Ann"}, {"3k", "Zimmer"}},
                   "resorted");
    }

    void randomOperationsMatchModel_data()
    {
        QTest::addColumn<quint32>("seed");
        QTest::addColumn<int>("target");  // size the run drifts towards
        QTest::newRow("small") << 1u << 40;
        QTest::newRow("deep, from a bulk load") << 2u << 6000;
    }

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
                const size_t want = modelUpperBound(m, x);
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
                QVERIFY(!t.contains(row.key) && fails([&] { t.textOf(row.key); }));
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
            } else if (!m.empty()) {
                const auto it = randomRow();
                QCOMPARE(t.key(int(it - m.begin()) + 1), it->key);
                QCOMPARE(t.indexOf(it->key), int(it - m.begin()) + 1);
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
    }

    void bulkLoadThenResort()
    {
        QRandomGenerator rng(99);
        KeyedList t;
        Model m;
        for (int i = 0; i < 20000; ++i) {
            m.push_back({QString::number(i) + "k", QString::number(rng.bounded(5000)).rightJustified(5, '0')});
            t.append(m.back().key, m.back().text);
        }
        t.resort();
        std::stable_sort(m.begin(), m.end(), modelLess);
        expectSame(t, m, "after bulk resort");
        // Appended behind a built table, the rows are out of order, but all of
        // them sort after "00050", so its place is still well defined.
        for (int i = 0; i < 30000; ++i) {
            m.push_back({"x" + QString::number(i), "00100x" + QString::number(i)});
            t.append(m.back().key, m.back().text);
        }
        const size_t want = modelUpperBound(m, "00050");
        QCOMPARE(size_t(t.add("n", "00050")), want + 1);
        m.insert(m.begin() + long(want), {"n", "00050"});
        expectSame(t, m, "after append behind tree");
    }
};

QTEST_APPLESS_MAIN(TestKeyedList)
#include "tst_keyedlist.moc"
