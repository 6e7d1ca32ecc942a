// SPDX-License-Identifier: GPL-3.0-or-later
#include "rowtypes.h"


namespace qor {

bool rowdetail::fieldAt(QStringView text, int i, QStringView &out)
{
    qsizetype start = 0;
    for (int f = 0; f < i; ++f) {
        const qsizetype at = text.indexOf(FieldSep, start);
        if (at < 0) return false;
        start = at + 1;
    }
    const qsizetype end = text.indexOf(FieldSep, start);
    out = end < 0 ? text.mid(start) : text.mid(start, end - start);
    return true;
}

QString numberKey(qint64 number) { return QString::number(number) + QLatin1Char('k'); }
QString numberKey(QStringView number) { return number.toString() + QLatin1Char('k'); }

QString plainNumber(QStringView key)
{
    QString s;
    s.reserve(key.size());
    for (QChar c : key)
        if (c != u'k') s += c;
    return s;
}

// ---------------------------------------------------------------- customers

QString customer::displayNameFor(const QString &firstName, const QString &lastName)
{
    if (lastName.isEmpty()) return firstName;
    return lastName + QStringLiteral(", ") + firstName;
}

QStringView customer::displayNameOf(QStringView text)
{
    const qsizetype sep = text.indexOf(FieldSep);
    return sep < 0 ? text : text.left(sep);
}

bool customer::isArchived(QStringView text) { return text.startsWith(ArchiveMark); }

QString customer::archivedText(QStringView text)
{
    if (text.startsWith(ArchiveMark)) return text.toString();
    QString t;
    t.reserve(ArchiveMark.size() + text.size());
    t += ArchiveMark;
    t += text;
    return t;
}

CustomerRow customer::placeholder()
{
    CustomerRow r;
    r.firstName = QStringLiteral("Deleted");
    r.lastName = QStringLiteral("Customer");
    r.displayName = displayNameFor(r.firstName, r.lastName);
    return r;
}

// ---------------------------------------------------------------- items

QString item::listTextFor(const QString &priceText, const QString &name)
{
    return priceText + ItemRow::Divider + name;
}

ItemRow item::make(const QString &sortPrice, const QString &priceText, const QString &name)
{
    ItemRow r;
    r.sortPrice = sortPrice;
    r.listText = listTextFor(priceText, name);
    return r;
}

bool item::isArchived(QStringView text) { return ItemView::parse(text).archived; }

QString item::archivedText(QStringView text)
{
    ItemView v = ItemView::parse(text);
    // A text too short to hold a sort price gets the mark at its end, where
    // the list text would begin.
    v.archived = true;
    return v.text();
}

// ---------------------------------------------------------------- periods

QString period::keyFor(QStringView name)
{
    QString k;
    k.reserve(name.size() + 1);
    k += name;
    k += FieldSep;
    return k;
}

// ---------------------------------------------------------------- records

ItemEntry ItemEntry::parse(QStringView entry)
{
    const qsizetype x = entry.indexOf(u'x');
    if (x < 0) return {entry, {}};
    return {entry.left(x), entry.mid(x + 1)};
}

qint64 ItemEntry::count() const
{
    if (quantity.isEmpty() || quantity.size() > 15) return 1;
    qint64 n = 0;
    for (QChar c : quantity) {
        if (c < u'0' || c > u'9') return 1;
        n = n * 10 + (c.unicode() - u'0');
    }
    return n;
}

QString ItemEntry::make(const QString &number, int quantity)
{
    if (quantity > 1) return number + QLatin1Char('x') + QString::number(quantity);
    return number;
}

QString record::keyFor(const QString &period, const QString &cid) { return period + FieldSep + cid + FieldSep; }

void record::nameInPlace(QString &text, QStringView customerName)
{
    const qsizetype at = text.indexOf(FieldSep) + 1;
    QString field;
    field.reserve(customerName.size() + 1);
    field += customerName;
    field += FieldSep;
    text.reserve(text.size() + field.size());
    text.insert(at, field);
    text.squeeze();
}

bool record::isUnnamed(QStringView text) { return text.count(FieldSep) == InvoiceRecordRow::UnnamedFieldCount - 1; }

}  // namespace qor
