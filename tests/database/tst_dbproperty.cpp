// SPDX-License-Identifier: GPL-3.0-or-later
// Property: a database whose every field holds random text (all of Unicode,
// control characters, tags, comments, entities, the archive mark, " - ", line
// breaks, blanks at line ends) reads back field for field and saves again byte
// for byte; text the entry rules refuse never reaches a table.
#include "dbfiletest.h"

#include "database/entryrules.h"
#include "database/regional.h"

#include <QRandomGenerator>

using namespace qor;
using namespace dbtest;

namespace {

const char *const Pieces[] = {
    "<QOR-DB>", "</QOR-DB>", "<CompanyInfo>", "</CompanyInfo>", "<Customers>", "</Customers>",
    "<Customer CID=\"1\">", "</Customer>", "<FName>", "</FName>", "<Notes>", "</Notes>", "<Current>No</Current>",
    "<BillPeriods>", "</BillPeriod>", "<ProductsAndServices>", "<PS PSID=\"2\">", "</PS>", "<InvoiceRecords>",
    "<InvoiceRecord>", "</InvoiceRecord>", "<PSID Number=\"1\">", "</PSID>", "<Note>", "<!--", "-->", "<!-- x -->",
    "&", "&amp;", "&lt;", "&gt;", "&quot;", "&apos;", "&#10;", "&#13;", "&#x41;", "&#0;", "&#1;", "&#", ";", "<",
    ">", "\"", "'", " - ", "-", " ", "  ", "\t", "\n", "\r\n", "\r", "\n\n", " \n ", "\f", "\v", "\x1b", "\x7f", "k",
    "K", "x", "0", "5", "$", ",", "."};

class Texts {
public:
    explicit Texts(quint32 seed) : m_rng(seed) {}

    QString text(int maxParts = 8)
    {
        QString s;
        const int parts = int(m_rng.bounded(maxParts + 1));
        for (int p = 0; p < parts; ++p) {
            switch (m_rng.bounded(6)) {
            case 0: s += QString::fromUtf8(Pieces[m_rng.bounded(int(std::size(Pieces)))]); break;
            case 1: s += ArchiveMark; break;
            case 2: s += anyCharacter(); break;
            case 3: s += QChar(char16_t(m_rng.bounded(0x20))); break;  // control characters, separators too
            default: s += QStringLiteral("Ab c\u00E9\u20AC"); break;
            }
        }
        return s;
    }
    // A text a packed row can hold: without the separators.
    QString field(int maxParts = 8) { return text(maxParts).remove(FieldSep).remove(ItemSep); }
    quint32 bounded(quint32 n) { return m_rng.bounded(n); }

private:
    QString anyCharacter()
    {
        const char32_t cp = m_rng.bounded(5) == 0 ? char32_t(m_rng.bounded(0x110000)) : char32_t(m_rng.bounded(0x3000));
        if (cp > 0xFFFF) {
            const char16_t pair[2] = {QChar::highSurrogate(cp), QChar::lowSurrogate(cp)};
            return QString(reinterpret_cast<const QChar *>(pair), 2);
        }
        return QString(QChar(char16_t(cp)));  // lone surrogates included: a QString can hold them
    }
    QRandomGenerator m_rng;
};

bool separated(const QString &s) { return s.contains(FieldSep) || s.contains(ItemSep); }
QString withoutMark(const QString &s) { return s.startsWith(ArchiveMark) ? s.mid(ArchiveMark.size()) : s; }

}  // namespace

class TestDbProperty : public Fixture {
    Q_OBJECT

private slots:
    void randomTextInEveryField()
    {
        const quint32 seed = QRandomGenerator::global()->generate();
        qInfo("seed %u", seed);
        Texts t(seed);
        int refusedCustomers = 0, refusedItems = 0, stored = 0;
        for (int round = 0; round < 150; ++round) {
            Database db;
            qor::test::TablesEdit tables(db);
            // Company fields aren't packed into rows: only the separators can't be held.
            for (QString &c : tables.company) c = t.field();

            QStringList names;  // by customer number - 1
            for (int c = 1; c <= 6; ++c) {
                QStringList typed;
                for (int f = 0; f < 8; ++f) typed << t.text();
                // Refused: a separator anywhere, or the mark leading the first or the last name.
                const bool marked = typed[0].startsWith(ArchiveMark) || typed[1].startsWith(ArchiveMark);
                if (entry::customerProblem(typed).isEmpty() == (marked || separated(typed.join(u' '))))
                    QFAIL(qPrintable(u"customer rule: "_qs + typed.join(u'|')));
                if (!entry::customerProblem(typed).isEmpty()) {
                    ++refusedCustomers;
                    // What the rules let through: the same fields without what they refuse.
                    for (QString &f : typed) f.remove(FieldSep).remove(ItemSep);
                    while (typed[0].startsWith(ArchiveMark)) typed[0].remove(0, 1);
                    while (typed[1].startsWith(ArchiveMark)) typed[1].remove(0, 1);
                }
                QString name = typed[1].isEmpty() ? typed[0] : typed[1] + QStringLiteral(", ") + typed[0];
                if (t.bounded(3) == 0) name.prepend(ArchiveMark);
                names << withoutMark(name);
                tables.customers.add(QString::number(c) + u'k', joined(QStringList{name} + typed));
            }
            for (int p = 0; p < 3; ++p) {
                QStringList f{t.field(), t.field(), t.field(), t.field()};
                f[1] += QString::number(p);  // names are keys: unique
                tables.periods.add(f[1] + FieldSep, joined(f));
            }
            for (int i = 1; i <= 5; ++i) {
                QString price = t.text(3), name = t.text();
                // Refused: a separator, or a price that leads with the mark or holds " - ".
                const bool priceRefused = price.startsWith(ArchiveMark) || price.contains(u" - ");
                if (entry::productProblem(price, name).isEmpty() == (priceRefused || separated(price + name)))
                    QFAIL(qPrintable(u"product rule: "_qs + price + u'|' + name));
                if (!entry::productProblem(price, name).isEmpty()) {
                    ++refusedItems;
                    price.remove(FieldSep).remove(ItemSep).replace(QStringLiteral(" - "), QStringLiteral(" "));
                    while (price.startsWith(ArchiveMark)) price.remove(0, 1);
                    // Taking " - " out can make a new one ("  - -"): keep only what the rule accepts.
                    if (price.contains(QStringLiteral(" - "))) price.clear();
                    name.remove(FieldSep).remove(ItemSep);
                }
                const QString mark = t.bounded(3) == 0 ? ArchiveMark : QString();
                tables.items.add(QString::number(i) + u'k',
                                 regional::sortPrice(price) + mark + price + QStringLiteral(" - ") + name);
            }
            for (int r = 0; r < 6; ++r) {
                const int cid = int(t.bounded(6)) + 1;
                const QString bp = t.field() + QString::number(r);
                QStringList entries;
                for (int e = int(t.bounded(4)); e >= 0; --e) entries << t.field(3);
                QStringList f{bp, names[cid - 1], QString::number(cid), t.field(), entries.join(ItemSep), t.field()};
                if (f[4].isEmpty()) f[4] = QStringLiteral("1");  // a record has items
                tables.invoiceRecords.add(bp + FieldSep + f[2] + FieldSep, joined(f));
            }
            tables.done();

            const QByteArray saved = db.serialize();
            Database back;
            const Loaded l = load(back, dir, saved);
            QVERIFY2(l.result.ok(), qPrintable(l.result.message));
            QCOMPARE(rows(back.customers()), rows(db.customers()));
            QCOMPARE(rows(back.periods()), rows(db.periods()));
            QCOMPARE(rows(back.items()), rows(db.items()));
            QCOMPARE(rows(back.invoiceRecords()), rows(db.invoiceRecords()));
            for (int c = 0; c < CompanyFieldCount; ++c) QCOMPARE(back.company()[size_t(c)], db.company()[size_t(c)]);
            QVERIFY(back.serialize() == saved);
            ++stored;
        }
        // The rules were met both ways, or the test proved little.
        QVERIFY(refusedCustomers > 0 && refusedItems > 0 && stored == 150);
    }
};

QTEST_GUILESS_MAIN(TestDbProperty)
#include "tst_dbproperty.moc"
