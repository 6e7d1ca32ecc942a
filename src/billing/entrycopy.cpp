// SPDX-License-Identifier: GPL-3.0-or-later
#include "billing/entrycopy.h"

#include <QUrl>

namespace qor::billing {

namespace {

const QByteArray Header = "QOR-ENTRY 1";
const QByteArray End = "end-of-entry";

QByteArray enc(const QString &s) { return QUrl::toPercentEncoding(s); }
QString dec(const QByteArray &s) { return QUrl::fromPercentEncoding(s); }

}  // namespace

QByteArray encodeEntry(const BillEntry &entry)
{
    QByteArray out = Header + '\n';
    out += "name\t" + enc(entry.name) + "\nstart\t" + enc(entry.start) + "\nend\t" + enc(entry.end) + "\ndue\t" +
           enc(entry.due) + '\n';
    for (const BillEntry::Customer &c : entry.customers)
        out += "customer\t" + enc(c.number) + '\t' + (c.marked ? '1' : '0') + '\n';
    for (const BillEntry::Item &i : entry.items)
        out += "item\t" + enc(i.customer) + '\t' + enc(i.item) + '\t' + QByteArray::number(i.quantity) + '\n';
    // The last line says the file was written to the end.
    return out + End + '\n';
}

std::optional<BillEntry> decodeEntry(const QByteArray &text)
{
    QList<QByteArray> lines = text.split('\n');
    if (lines.size() < 3 || lines.first() != Header || !lines.last().isEmpty() || lines[lines.size() - 2] != End)
        return std::nullopt;
    BillEntry e;
    for (qsizetype n = 1; n < lines.size() - 2; ++n) {
        const QList<QByteArray> f = lines[n].split('\t');
        const QByteArray &tag = f.first();
        if (f.size() == 2 && (tag == "name" || tag == "start" || tag == "end" || tag == "due")) {
            (tag == "name" ? e.name : tag == "start" ? e.start
                                  : tag == "end"     ? e.end
                                                     : e.due) = dec(f[1]);
        } else if (tag == "customer" && f.size() == 3 && (f[2] == "0" || f[2] == "1")) {
            e.customers.append({dec(f[1]), f[2] == "1"});
        } else if (tag == "item" && f.size() == 4) {
            bool ok = false;
            const qint64 quantity = f[3].toLongLong(&ok);
            if (!ok || quantity < 1) return std::nullopt;
            e.items.append({dec(f[1]), dec(f[2]), quantity});
        } else {
            return std::nullopt;
        }
    }
    return e;
}

}  // namespace qor::billing
