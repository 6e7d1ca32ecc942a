// SPDX-License-Identifier: GPL-3.0-or-later
#include "roundtrip.h"

#include "database/database.h"

#include <QFile>

namespace qor::fuzz {

namespace {

QStringList rowsOf(const KeyedList &t)
{
    QStringList out;
    t.forEach([&out](QStringView key, QStringView text) {
        out << key.toString() << text.toString();
        return true;
    });
    return out;
}

QStringList tablesOf(const Database &db)
{
    QStringList all;
    for (const QString &c : db.company()) all << c;
    all << QStringLiteral("--customers") << rowsOf(db.customers());
    all << QStringLiteral("--periods") << rowsOf(db.periods());
    all << QStringLiteral("--items") << rowsOf(db.items());
    all << QStringLiteral("--records") << rowsOf(db.invoiceRecords());
    return all;
}

// The first difference of two lists, for the report.
QString firstDifference(const QStringList &a, const QStringList &b)
{
    for (qsizetype i = 0; i < std::min(a.size(), b.size()); ++i)
        if (a[i] != b[i])
            return QStringLiteral("entry %1: \"%2\" became \"%3\"").arg(i).arg(a[i], b[i]);
    return QStringLiteral("%1 entries became %2").arg(a.size()).arg(b.size());
}

bool load(Database &db, const QString &path, const QByteArray &bytes, QString *why)
{
    QFile f(path);
    if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate) || f.write(bytes) != bytes.size()) {
        *why = QStringLiteral("cannot write %1").arg(path);
        return false;
    }
    f.close();
    const ReadResult r = db.read(path, Database::MissingFile::Reject);
    if (!r.ok()) {
        *why = r.message;
        return false;
    }
    db.fillInvoiceRecordNames();
    return true;
}

}  // namespace

QString checkRoundTrip(const QByteArray &bytes, const QString &folder)
{
    const QString path = folder + QStringLiteral("/roundtrip.xml");
    QString why;
    Database first;
    if (!load(first, path, bytes, &why)) return why.startsWith(QLatin1String("cannot write")) ? why : QString();
    const QStringList tables = tablesOf(first);
    const QByteArray saved = first.serialize();

    Database second;
    if (!load(second, path, saved, &why)) return QStringLiteral("the saved file is refused: ") + why;
    const QStringList again = tablesOf(second);
    if (again != tables) return QStringLiteral("the saved file reads back other tables: ") + firstDifference(tables, again);
    const QByteArray savedAgain = second.serialize();
    if (savedAgain != saved) {
        qsizetype at = 0;
        while (at < saved.size() && at < savedAgain.size() && saved[at] == savedAgain[at]) ++at;
        return QStringLiteral("the second save differs from the first at byte %1").arg(at);
    }
    return QString();
}

}  // namespace qor::fuzz
