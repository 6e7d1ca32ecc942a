// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// Helpers of the database file tests: files made from bytes, tables as lists.
#include "database/database.h"
#include "database/rows.h"

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

inline QString fields(std::initializer_list<const char *> parts)
{
    QStringList l;
    for (const char *p : parts) l << QString::fromUtf8(p);
    return l.join(qor::FieldSep);
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
