#pragma once
// Helpers shared by the database file tests: files made from text, and the
// tables shown as plain lists so that comparisons print readable failures.
#include "database/database.h"
#include "database/rows.h"

#include <QFile>
#include <QLocale>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <QTest>

namespace dbtest {

// Row texts with the separators made visible.
inline QString visible(QString text)
{
    text.replace(qor::FieldSep, QStringLiteral("|"));
    text.replace(qor::ItemSep, QStringLiteral("+"));
    return text;
}

inline QStringList rows(const qor::KeyedList &t)
{
    QStringList out;
    t.forEach([&out](QStringView key, QStringView text) {
        out << visible(key.toString()) + QStringLiteral(" = ") + visible(text.toString());
        return true;
    });
    return out;
}

inline bool writeFile(const QString &path, const QByteArray &bytes)
{
    QFile f(path);
    if (!f.open(QIODevice::WriteOnly)) return false;
    return f.write(bytes) == bytes.size();
}

inline QByteArray readFile(const QString &path)
{
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly)) return QByteArray("<cannot open>");
    return f.readAll();
}

// Lines joined by CR LF, the file's own line end; a final CR LF included.
inline QByteArray crlf(const QList<QByteArray> &lines)
{
    QByteArray out;
    for (const QByteArray &l : lines) out += l + "\r\n";
    return out;
}

inline bool tablesEmpty(const qor::Database &db)
{
    for (const QString &c : db.company)
        if (!c.isEmpty()) return false;
    return db.lvwCustomers.count() == 0 && db.lvwPeriods.count() == 0 && db.lvwPAndS.count() == 0 &&
           db.lvwInvoiceRecords.count() == 0;
}

// Reads bytes as the program does at start: the file, then the record names.
struct Loaded {
    qor::ReadResult result;
    QStringList problems;
};
inline Loaded load(qor::Database &db, const QTemporaryDir &dir, const QByteArray &bytes,
                   const QString &name = QStringLiteral("QOR.xml"))
{
    const QString path = dir.filePath(name);
    writeFile(path, bytes);
    Loaded l;
    l.result = db.read(path);
    if (l.result.ok()) l.problems = db.fillInvoiceRecordNames();
    return l;
}

inline QString fields(std::initializer_list<const char *> parts)
{
    QStringList l;
    for (const char *p : parts) l << QString::fromUtf8(p);
    return l.join(qor::FieldSep);
}

}  // namespace dbtest
