// The table type: sorted insertion, positions, keys, re-sorting and failures,
// checked against a plain vector model over long random runs.
#include "database/collation.h"
#include "database/keyedlist.h"
#include "database/rows.h"

#include <QRandomGenerator>
#include <QStringList>
#include <QTest>
#include <algorithm>
#include <utility>
#include <vector>

using namespace qor;

namespace {

struct ModelRow {
    QString key, text;
};
using Model = std::vector<ModelRow>;

// Everything the table shows must match the model: order by position, by
// forEach, and the position of every key.
void expectSame(const KeyedList &t, const Model &m, const char *where) {
    const QByteArray w(where);
    QVERIFY2(t.count() == int(m.size()), (w + ": count " + QByteArray::number(t.count()) + " vs "
                                          + QByteArray::number(qulonglong(m.size()))).constData());
    size_t i = 0;
    bool sameWalk = true;
    t.forEach([&](QStringView k, QStringView x) {
        sameWalk = sameWalk && i < m.size() && k == m[i].key && x == m[i].text;
        ++i;
        return true;
    });
    QVERIFY2(sameWalk && i == m.size(), (w + ": forEach order differs").constData());
    for (size_t p = 0; p < m.size(); ++p) {
        const int pos = int(p) + 1;
        if (t.keyView(pos) != m[p].key || t.textView(pos) != m[p].text)
            QFAIL((w + ": row " + QByteArray::number(pos) + " differs").constData());
        if (t.indexOf(m[p].key) != pos)
            QFAIL((w + ": indexOf(" + m[p].key.toUtf8() + ") = " + QByteArray::number(t.indexOf(m[p].key))
                   + ", want " + QByteArray::number(pos)).constData());
    }
}

size_t modelUpperBound(const Model &m, const QString &text) {
    return size_t(std::upper_bound(m.begin(), m.end(), text,
                                   [](const QString &t, const ModelRow &r) { return rowTextLess(t, r.text); })
                  - m.begin());
}

void modelResort(Model &m) {
    std::stable_sort(m.begin(), m.end(), [](const ModelRow &a, const ModelRow &b) { return rowTextLess(a.text, b.text); });
}

bool modelSorted(const Model &m) {
    for (size_t i = 1; i < m.size(); ++i)
        if (rowTextLess(m[i].text, m[i - 1].text)) return false;
    return true;
}

// Few distinct texts, so equal texts are common and their order is tested.
QString randomRowText(QRandomGenerator &rng) {
    static const QStringList names = {"Smith, Ann", "smith, ann", "Smith, Ann", "de Souza, Al", "De Souza, Al",
                                      "\u00c9mile", "Emile", "O'Brien, Pat", "Zed", QString()};
    QString s = names.at(int(rng.bounded(names.size())));
    if (rng.bounded(8) == 0) s = ArchiveMark + s;
    if (rng.bounded(3) == 0) s += FieldSep + QString::number(rng.bounded(20));
    return s;
}

template <typename Fn>
bool throwsKeyedListError(Fn fn) {
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
    void emptyTable();
    void failuresLeaveTableIntact();
    void equalTextsKeepInsertionOrder();
    void setTextLeavesRowInPlace();
    void tableOrderOfCustomersAndItems();
    void bulkLoadThenResort();
    void randomOperationsMatchModel_data();
    void randomOperationsMatchModel();
    void moveSwapAndClear();
};

void TestKeyedList::emptyTable() {
    KeyedList t;
    QCOMPARE(t.count(), 0);
    QCOMPARE(t.indexOf(u"1k"), 0);
    QVERIFY(!t.contains(u"1k"));
    QVERIFY(t.isSorted());
    bool called = false;
    t.forEach([&](QStringView, QStringView) { return called = true; });
    QVERIFY(!called);
    t.resort();
    QCOMPARE(t.count(), 0);
    QVERIFY(throwsKeyedListError([&] { t.key(1); }));
    QVERIFY(throwsKeyedListError([&] { t.textView(0); }));
    QVERIFY(throwsKeyedListError([&] { t.remove(u"1k"); }));
    QVERIFY(throwsKeyedListError([&] { t.textOf(u"1k"); }));
    // The last row removed leaves an empty table that works as new.
    QCOMPARE(t.add("1k", "a"), 1);
    t.remove(u"1k");
    QCOMPARE(t.count(), 0);
    QVERIFY(throwsKeyedListError([&] { t.text(1); }));
    QCOMPARE(t.add("2k", "b"), 1);
    QCOMPARE(t.text(1), QStringLiteral("b"));
}

void TestKeyedList::failuresLeaveTableIntact() {
    KeyedList t;
    t.add("1k", "Brown");
    t.add("2k", "Adams");
    const Model m = {{"2k", "Adams"}, {"1k", "Brown"}};

    QVERIFY(throwsKeyedListError([&] { t.add(QString(), "Empty"); }));
    QVERIFY(throwsKeyedListError([&] { t.append(QString(), "Empty"); }));
    QVERIFY(throwsKeyedListError([&] { t.add("1k", "Clark"); }));
    QVERIFY(throwsKeyedListError([&] { t.append("2k", "Clark"); }));
    QVERIFY(throwsKeyedListError([&] { t.remove(u"3k"); }));
    QVERIFY(throwsKeyedListError([&] { t.textOf(u"1K"); }));  // keys are exact
    QVERIFY(throwsKeyedListError([&] { t.setTextOf(u"3k", "X"); }));
    QVERIFY(throwsKeyedListError([&] { t.setText(0, "X"); }));
    QVERIFY(throwsKeyedListError([&] { t.setText(3, "X"); }));
    QVERIFY(throwsKeyedListError([&] { t.key(3); }));
    QVERIFY(throwsKeyedListError([&] { t.keyView(-1); }));
    expectSame(t, m, "after failures");

    // The message names what was wrong.
    try {
        t.add("1k", "Clark");
        QFAIL("no failure");
    } catch (const KeyedListError &e) {
        QVERIFY(QString::fromUtf8(e.what()).contains("1k"));
    }
    try {
        t.text(7);
        QFAIL("no failure");
    } catch (const KeyedListError &e) {
        QVERIFY(QString::fromUtf8(e.what()).contains("7"));
    }

    // A failed append in the middle of a bulk load keeps what came before.
    KeyedList bulk;
    bulk.append("1k", "b");
    bulk.append("2k", "a");
    QVERIFY(throwsKeyedListError([&] { bulk.append("1k", "c"); }));
    bulk.append("3k", "c");
    bulk.resort();
    expectSame(bulk, {{"2k", "a"}, {"1k", "b"}, {"3k", "c"}}, "bulk after failure");
}

void TestKeyedList::equalTextsKeepInsertionOrder() {
    KeyedList t;
    QCOMPARE(t.add("1k", "Smith, Ann"), 1);
    QCOMPARE(t.add("2k", "Smith, Ann"), 2);
    QCOMPARE(t.add("3k", "Adams"), 1);
    QCOMPARE(t.add("4k", "Smith, Ann"), 4);
    QCOMPARE(t.add("5k", "Zed"), 5);
    QCOMPARE(t.add("6k", "Smith, Ann"), 5);
    expectSame(t, {{"3k", "Adams"}, {"1k", "Smith, Ann"}, {"2k", "Smith, Ann"}, {"4k", "Smith, Ann"},
                   {"6k", "Smith, Ann"}, {"5k", "Zed"}}, "equal adds");

    // A re-sort is stable: equal texts keep the order they stand in.
    KeyedList b;
    for (int i = 0; i < 500; ++i) b.append(QString::number(i) + "k", i % 2 ? QStringLiteral("B") : QStringLiteral("A"));
    b.resort();
    Model m;
    for (int i = 0; i < 500; i += 2) m.push_back({QString::number(i) + "k", "A"});
    for (int i = 1; i < 500; i += 2) m.push_back({QString::number(i) + "k", "B"});
    expectSame(b, m, "stable resort");
}

void TestKeyedList::setTextLeavesRowInPlace() {
    KeyedList t;
    for (const char *name : {"Adams", "Brown", "Clark", "Davis"}) t.add(QString(name).toLower() + "k", name);
    t.setText(1, "Zimmer");
    QCOMPARE(t.key(1), QStringLiteral("adamsk"));
    QCOMPARE(t.textOf(u"adamsk"), QStringLiteral("Zimmer"));
    QVERIFY(!t.isSorted());
    t.setTextOf(u"davisk", "Able");
    QCOMPARE(t.indexOf(u"davisk"), 4);
    t.resort();
    QVERIFY(t.isSorted());
    expectSame(t, {{"davisk", "Able"}, {"brownk", "Brown"}, {"clarkk", "Clark"}, {"adamsk", "Zimmer"}}, "resorted");
}

void TestKeyedList::tableOrderOfCustomersAndItems() {
    auto customer = [](const QString &name) {
        QStringList f(9);
        f[0] = name;
        return joinFields(f);
    };
    KeyedList c;
    c.add("1k", customer("Smith, John"));
    c.add("2k", customer(ArchiveMark + "Adams, Al"));
    c.add("3k", customer("de Souza, Ana"));
    c.add("4k", customer("Smith, John"));  // same name, other key
    c.add("5k", customer(QString()));       // empty name
    c.add("6k", customer("\u00c9mile"));
    c.add("7k", customer("Emile"));
    c.add("8k", customer("De Souza, Ana"));
    QStringList keys;
    c.forEach([&](QStringView k, QStringView) {
        keys << k.toString();
        return true;
    });
    QCOMPARE(keys, QStringList({"5k", "3k", "8k", "7k", "6k", "1k", "4k", "2k"}));

    auto item = [](double price, const QString &name, bool archived = false) {
        return QString::asprintf("%012.2f", price) + (archived ? ArchiveMark : QString())
               + QString::asprintf("$%.2f", price) + " - " + name;
    };
    KeyedList p;
    p.add("1k", item(40, "Big Widget"));
    p.add("2k", item(5, "Midget Widget"));
    p.add("3k", item(5, "Old Widget", true));
    p.add("4k", item(6, "Gizmo"));
    p.add("5k", item(5, "Gadget"));
    keys.clear();
    p.forEach([&](QStringView k, QStringView) {
        keys << k.toString();
        return true;
    });
    QCOMPARE(keys, QStringList({"5k", "2k", "3k", "4k", "1k"}));
    QVERIFY(p.text(1).startsWith("000000005.00$5.00"));
}

void TestKeyedList::bulkLoadThenResort() {
    QRandomGenerator rng(99);
    KeyedList t;
    Model m;
    for (int i = 0; i < 20000; ++i) {
        const QString key = QString::number(i) + "k";
        const QString text = QString::number(rng.bounded(5000)).rightJustified(5, '0') + FieldSep + "r";
        t.append(key, text);
        m.push_back({key, text});
    }
    // Before the re-sort the rows are reachable in append order.
    QCOMPARE(t.count(), 20000);
    QCOMPARE(t.key(12345), m[12344].key);
    QCOMPARE(t.indexOf(u"777k"), 778);
    QCOMPARE(t.isSorted(), modelSorted(m));
    t.setText(5, m[4].text + "x");
    m[4].text += "x";
    t.resort();
    modelResort(m);
    QVERIFY(t.isSorted());
    expectSame(t, m, "after bulk resort");

    // Appending behind a built table: a few rows, then many.
    for (int round : {10, 30000}) {
        for (int i = 0; i < round; ++i) {
            const QString key = "x" + QString::number(round) + "_" + QString::number(i);
            t.append(key, "00100" + key);
            m.push_back({key, "00100" + key});
        }
        // The appended rows are out of order among themselves and against the
        // tail of the table, but all of them sort after "00050", so its place
        // is still well defined.
        const int pos = t.add("n" + QString::number(round), "00050");
        const size_t want = modelUpperBound(m, "00050");
        QCOMPARE(size_t(pos), want + 1);
        m.insert(m.begin() + long(want), {"n" + QString::number(round), "00050"});
        expectSame(t, m, "after append behind tree");
        t.resort();
        modelResort(m);
        expectSame(t, m, "after second resort");
    }
}

void TestKeyedList::randomOperationsMatchModel_data() {
    QTest::addColumn<quint32>("seed");
    QTest::addColumn<int>("steps");
    QTest::addColumn<int>("target");  // size the run drifts towards
    QTest::newRow("small") << 1u << 6000 << 40;
    QTest::newRow("multi-level") << 2u << 12000 << 6000;
    QTest::newRow("grow-shrink") << 3u << 12000 << 1500;
}

void TestKeyedList::randomOperationsMatchModel() {
    QFETCH(quint32, seed);
    QFETCH(int, steps);
    QFETCH(int, target);
    QRandomGenerator rng(seed);
    KeyedList t;
    Model m;
    int nextKey = 0;
    bool dirty = false;  // a text changed since the last re-sort
    auto randomKey = [&]() { return m[rng.bounded(quint32(m.size()))].key; };

    // Start the bigger runs from a bulk load so the tree is deep from the start.
    for (int i = 0; i < target / 2; ++i) {
        const QString k = QString::number(nextKey++) + "k", x = randomRowText(rng);
        t.append(k, x);
        m.push_back({k, x});
    }
    t.resort();
    modelResort(m);
    expectSame(t, m, "initial");

    for (int step = 0; step < steps; ++step) {
        const int phase = (step / 2000) % 2;  // alternate growing and shrinking phases
        const bool grow = int(m.size()) < target || (phase == 0 && int(m.size()) < target * 2);
        const quint32 op = rng.bounded(100);
        const QByteArray where = "seed " + QByteArray::number(seed) + " step " + QByteArray::number(step);
        if (op < 35 && grow) {
            const QString k = QString::number(nextKey++) + "k", x = randomRowText(rng);
            if (dirty) {
                t.resort();
                modelResort(m);
                dirty = false;
            }
            const int pos = t.add(k, x);
            const size_t want = modelUpperBound(m, x);
            if (size_t(pos) != want + 1)
                QFAIL((where + ": add at " + QByteArray::number(pos) + ", want " + QByteArray::number(qulonglong(want + 1)))
                          .constData());
            m.insert(m.begin() + long(want), {k, x});
        } else if (op < 40 && grow) {
            const int n = 1 + int(rng.bounded(quint32(std::max(1, target / 10))));
            for (int i = 0; i < n; ++i) {
                const QString k = QString::number(nextKey++) + "k", x = randomRowText(rng);
                t.append(k, x);
                m.push_back({k, x});
            }
            dirty = true;
        } else if (op < 70 && !m.empty()) {
            const QString k = randomKey();
            t.remove(k);
            m.erase(std::find_if(m.begin(), m.end(), [&](const ModelRow &r) { return r.key == k; }));
        } else if (op < 80 && !m.empty()) {
            const int pos = 1 + int(rng.bounded(quint32(m.size())));
            const QString x = randomRowText(rng);
            if (rng.bounded(2)) t.setText(pos, x);
            else t.setTextOf(m[size_t(pos - 1)].key, x);
            m[size_t(pos - 1)].text = x;
            dirty = true;
        } else if (op < 83) {
            QCOMPARE(t.isSorted(), modelSorted(m));
            t.resort();
            modelResort(m);
            dirty = false;
        } else if (op < 95 && !m.empty()) {
            const int pos = 1 + int(rng.bounded(quint32(m.size())));
            QCOMPARE(t.key(pos), m[size_t(pos - 1)].key);
            QCOMPARE(t.text(pos), m[size_t(pos - 1)].text);
            const QString k = randomKey();
            const auto it = std::find_if(m.begin(), m.end(), [&](const ModelRow &r) { return r.key == k; });
            QCOMPARE(t.indexOf(k), int(it - m.begin()) + 1);
            QCOMPARE(t.textOf(k), it->text);
            QVERIFY(t.contains(k));
            QCOMPARE(t.indexOf(QString::number(nextKey) + "k"), 0);
        } else {
            // Removed keys are really gone, and may be used again.
            if (!m.empty() && rng.bounded(2)) {
                const QString k = randomKey();
                const auto it = std::find_if(m.begin(), m.end(), [&](const ModelRow &r) { return r.key == k; });
                const QString x = it->text;
                t.remove(k);
                m.erase(it);
                QVERIFY(!t.contains(k));
                QVERIFY(throwsKeyedListError([&] { t.textOf(k); }));
                t.append(k, x);
                m.push_back({k, x});
                dirty = true;
            }
        }
        if (step % 97 == 0) {
            expectSame(t, m, where.constData());
            if (QTest::currentTestFailed()) return;
        }
    }
    expectSame(t, m, "final");
    t.resort();
    modelResort(m);
    expectSame(t, m, "final resort");
    while (!m.empty()) {
        const QString k = randomKey();
        t.remove(k);
        m.erase(std::find_if(m.begin(), m.end(), [&](const ModelRow &r) { return r.key == k; }));
        if (m.size() % 211 == 0) expectSame(t, m, "draining");
    }
    QCOMPARE(t.count(), 0);
}

void TestKeyedList::moveSwapAndClear() {
    KeyedList a;
    a.add("1k", "one");
    a.add("2k", "two");
    KeyedList b(std::move(a));
    QCOMPARE(b.count(), 2);
    QCOMPARE(a.count(), 0);  // NOLINT: a moved-from table is empty and usable
    a.add("9k", "nine");
    a.swap(b);
    QCOMPARE(a.count(), 2);
    QCOMPARE(b.key(1), QStringLiteral("9k"));
    b = std::move(a);
    QCOMPARE(b.count(), 2);
    b.clear();
    QCOMPARE(b.count(), 0);
    QVERIFY(!b.contains(u"1k"));
    QCOMPARE(b.add("1k", "again"), 1);
    QCOMPARE(b.indexOf(u"1k"), 1);
}

QTEST_APPLESS_MAIN(TestKeyedList)
#include "tst_keyedlist.moc"
