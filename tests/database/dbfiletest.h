// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// Helpers of the database file tests: files made from bytes, tables as lists.
#include "database/database.h"
#include "database/rows.h"
#include "tablesedit.h"

#include <QDateTime>
#include <QFile>
#include <QLocale>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>

namespace dbtest {

// The common ground of the file tests: prices in US English, and a folder of their own.
class Fixture : public QObject {
public:
    Fixture() { QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates)); }

protected:
    QTemporaryDir dir;
};

// "key = text" per row, with FieldSep shown as "|" and ItemSep as "+".
inline QStringList rows(const qor::KeyedList &t)
{
    QStringList out;
    t.forEach([&out](QStringView key, QStringView text) {
        out << QString(key.toString() + QStringLiteral(" = ") + text.toString())
                   .replace(qor::FieldSep, u'|')
                   .replace(qor::ItemSep, u'+');
        return true;
    });
    return out;
}

// A device that takes failAt bytes and then fails, part-way through a write,
// as a full disk does.
class Failing : public QIODevice {
public:
    Failing(QIODevice &inner, qint64 failAt) : m_inner(inner), m_left(failAt) { open(WriteOnly | Unbuffered); }

protected:
    qint64 readData(char *, qint64) override { return -1; }
    qint64 writeData(const char *data, qint64 size) override
    {
        const qint64 take = std::min(size, m_left);
        if (take > 0 && m_inner.write(data, take) != take) return -1;
        m_left -= take;
        if (take == size) return size;
        setErrorString(QStringLiteral("No space left on device"));
        return -1;
    }

private:
    QIODevice &m_inner;
    qint64 m_left;
};

inline bool writeFile(const QString &path, const QByteArray &bytes)
{
    QFile f(path);
    return f.open(QIODevice::WriteOnly) && f.write(bytes) == bytes.size();
}

// A file last written seconds ago (a leftover of an earlier run).
inline bool writeOld(const QString &path, int seconds)
{
    QFile f(path);
    return f.open(QIODevice::WriteOnly) && f.write("x") == 1 && f.flush() &&
           f.setFileTime(QDateTime::currentDateTime().addSecs(-seconds), QFileDevice::FileModificationTime);
}

inline QByteArray readFile(const QString &path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray("<cannot open>");
}

// Lines each ended by CR LF, the file's own line end.
inline QByteArray crlf(const QList<QByteArray> &lines)
{
    QByteArray out;
    for (const QByteArray &l : lines) out += l + "\r\n";
    return out;
}

// A row text of these fields as a table holds it. The tests pack rows raw,
// so that they can also hold rows no row type would build.
inline QString joined(const QStringList &l) { return l.join(qor::FieldSep); }
inline QString fields(const QStringList &l) { return joined(l); }

// Every kind of row: current and archived customers and items, a first name
// alone, a note over several lines, a price of $0.00, an item name holding
// " - ", entries with quantities, characters the code page lacks, markup.
inline void fillEveryKind(qor::Database &db)
{
    qor::test::TablesEdit tables(db);
    tables.company = {"A&B", "1 Main St", "", "", "555-1234", "Slogan \u20AC", "General", "Pay Me", "THANKS"};
    tables.customers.add("3k", fields({"Lee & Co, Ann", "Ann", "Lee & Co", "1 Main St", "", "", "", "", ""}));
    tables.customers.add("4k",
                         fields({"Bo", "Bo", "", "", "", "", "", "", "1<2 \u263A\nsecond\r\nthird\rfourth\a\tend"}));
    tables.customers.add("5k", fields({"zzzz\u00BBOld, Al", "Al", "Old", "", "", "", "a@b.c", "555", ""}));
    tables.periods.add(QStringLiteral("May") + qor::FieldSep,
                       fields({"2024/05/01", "May", "2024/05/31", "2024/06/15"}));
    tables.items.add("5k", QStringLiteral("000000005.00$5.00 - Midget - Widget"));
    tables.items.add("7k", QStringLiteral("000000000.00$0.00 - Free"));
    tables.items.add("8k", QStringLiteral("000000040.00zzzz\u00BB$40.00 - Gone \U0001F600"));
    tables.invoiceRecords.add(fields({"May", "3", ""}),
                              fields({"May", "Lee & Co, Ann", "3", "12.5", "5\u00027x2", ""}));
    tables.invoiceRecords.add(fields({"May", "4", ""}),
                              fields({"May", "Bo", "4", "0", "12x3", "Thanks 'so' \"much\" >"}));
    tables.done();
}

inline bool tablesEmpty(const qor::Database &db)
{
    for (const QString &c : db.company())
        if (!c.isEmpty()) return false;
    return db.customers().count() + db.periods().count() + db.items().count() + db.invoiceRecords().count() == 0;
}

// Reads bytes as the program does at start: the file, then the record names.
struct Loaded {
    qor::ReadResult result;
    QStringList problems;
};
inline Loaded load(qor::Database &db, const QTemporaryDir &dir, const QByteArray &bytes)
{
    const QString path = dir.filePath(QStringLiteral("QOR.xml"));
    writeFile(path, bytes);
    Loaded l{db.read(path), {}};
    if (l.result.ok()) l.problems = db.fillInvoiceRecordNames();
    return l;
}

}  // namespace dbtest
