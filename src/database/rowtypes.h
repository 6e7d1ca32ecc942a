// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// One small type per row kind. Rows stay text rows in the tables; these types
// are the only place that knows which field holds what, so nobody else splits
// a row or spells a field number.
//
// Each type comes in two forms over the same fields: the owning form
// (CustomerRow, ItemRow, PeriodRow, InvoiceRecordRow) for building and
// editing rows, and the view form (CustomerView, ...) that reads a row text
// in place without allocating, for the walks over a million records.
// parse() followed by text() gives back the same characters.
#include "rows.h"

#include <QString>
#include <QStringList>
#include <QStringView>
#include <algorithm>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif
#include <array>
#include <optional>
#include <type_traits>
#include <utility>

namespace qor {

namespace rowdetail {
// Calls found(at) for each FieldSep of text in order until it returns false.
// Fields are short: separators are picked straight from the characters, as a
// library search per field costs more than the field.
template <class Found>
Q_ALWAYS_INLINE void eachSeparator(QStringView text, Found &&found)
{
    const char16_t *p = text.utf16();
    const qsizetype n = text.size();
    const char16_t sep = FieldSep.unicode();
    qsizetype i = 0;
#if defined(__SSE2__)
    const __m128i want = _mm_set1_epi16(qint16(sep));
    for (; i + 8 <= n; i += 8) {
        unsigned m = unsigned(
            _mm_movemask_epi8(_mm_cmpeq_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i *>(p + i)), want)));
        while (m) {
            if (!found(i + (__builtin_ctz(m) >> 1))) return;
            m &= m - 1;
            m &= m - 1;  // two mask bits per character
        }
    }
#endif
    for (; i < n; ++i)
        if (p[i] == sep && !found(i)) return;
}

// Cuts text at FieldSep into at most max views; gives the number of fields
// the text has, or max + 1 when it has more (those are not stored).
Q_ALWAYS_INLINE int splitFields(QStringView text, QStringView *out, int max)
{
    int n = 0;  // separators seen
    qsizetype start = 0;
    bool more = false;
    eachSeparator(text, [&](qsizetype at) {
        out[n++] = QStringView(text.utf16() + start, at - start);
        start = at + 1;
        more = n == max;
        return !more;
    });
    if (more) return max + 1;
    out[n] = QStringView(text.utf16() + start, text.size() - start);
    return n + 1;
}

// The first max fields of text, missing ones empty and further ones left
// out: what the writer saves of a row that lacks fields or has extra ones.
Q_ALWAYS_INLINE void looseFields(QStringView text, QStringView *out, int max)
{
    int n = 0;
    qsizetype start = 0;
    eachSeparator(text, [&](qsizetype at) {
        out[n++] = QStringView(text.utf16() + start, at - start);
        start = at + 1;
        return n < max;
    });
    if (n < max) out[n++] = QStringView(text.utf16() + start, text.size() - start);
    for (; n < max; ++n) out[n] = QStringView();
}

// Field i of text without reading past it; false when the text has fewer fields.
bool fieldAt(QStringView text, int i, QStringView &out);

template <class S>
S take(QStringView v)
{
    if constexpr (std::is_same_v<S, QString>) return v.toString();
    else return v;
}

// The fields of a row kind in row order, one call fn(field, place) each with
// the field's index as a constant. The field `skip` (an index, or -1) is left
// out, and the fields after it stand one place earlier.
template <class Row, class Fn>
Q_ALWAYS_INLINE void eachField(Fn &&fn, int skip = -1)
{
    [&]<int... I>(std::integer_sequence<int, I...>)
    {
        int at = 0;
        ((I == skip ? void() : (fn(std::integral_constant<int, I>{}, at), void(++at))), ...);
    }
    (std::make_integer_sequence<int, Row::FieldCount>{});
}

// Fills a row from the texts of its fields, f[place].
template <class Row>
Q_ALWAYS_INLINE void assignFields(Row &r, const QStringView *f, int skip = -1)
{
    eachField<Row>([&](auto i, int at) { r.*Row::members()[i] = take<typename Row::String>(f[at]); }, skip);
}

// The row text: the fields joined by FieldSep.
template <class Row>
QString joinFields(const Row &r, int skip = -1)
{
    qsizetype size = Row::SeparatorCount - (skip >= 0);
    eachField<Row>([&](auto i, int) { size += QStringView(r.*Row::members()[i]).size(); }, skip);
    QString t;
    t.reserve(size);
    eachField<Row>(
        [&](auto i, int at) {
            if (at) t += FieldSep;
            t += r.*Row::members()[i];
        },
        skip);
    return t;
}

// Writes a row in place from d on: put(Field, d) writes the characters of
// one field and gives their end. For the reader, which decodes straight into
// a row sized beforehand.
template <class Row, class Put>
Q_ALWAYS_INLINE char16_t *composeFields(char16_t *d, Put &&put, int skip = -1)
{
    eachField<Row>(
        [&](auto i, int at) {
            if (at) *d++ = FieldSep.unicode();
            d = put(typename Row::Field(int(i)), d);
        },
        skip);
    return d;
}
}  // namespace rowdetail

// A row kind is generated from its field list, FIELDS(X) with one
// X(member, Enumerator) per field in row order. QOR_ROW_FIELDS gives a member
// of type S per field, the enum Field in row order, FieldCount,
// SeparatorCount, members() (the member of each field by its index) and
// loose() (the fields of any text by their places, missing ones empty,
// further ones left out: the writer saves whatever a table holds).
// QOR_ROW_KIND adds parse() (a text of exactly FieldCount fields, else
// nothing), text() and compose() over all the fields.
#define QOR_ROW_MEMBER(name, Name) S name;
#define QOR_ROW_ENUMERATOR(name, Name) Name,
#define QOR_ROW_POINTER(name, Name) &Row::name,
#define QOR_ROW_ONE(name, Name) +1
#define QOR_ROW_FIELDS(RowName, FIELDS)                                                                   \
    using String = S;                                                                                     \
    using Row = RowName;                                                                                  \
    FIELDS(QOR_ROW_MEMBER)                                                                                \
    enum class Field { FIELDS(QOR_ROW_ENUMERATOR) };                                                      \
    static constexpr int FieldCount = 0 FIELDS(QOR_ROW_ONE);                                              \
    static constexpr int SeparatorCount = FieldCount - 1;                                                 \
    static constexpr std::array<S RowName::*, FieldCount> members() { return {FIELDS(QOR_ROW_POINTER)}; } \
    static RowName loose(QStringView text)                                                                \
    {                                                                                                     \
        QStringView f[FieldCount];                                                                        \
        rowdetail::looseFields(text, f, FieldCount);                                                      \
        RowName r;                                                                                        \
        rowdetail::assignFields(r, f);                                                                    \
        return r;                                                                                         \
    }
#define QOR_ROW_KIND(RowName, FIELDS)                                                       \
    QOR_ROW_FIELDS(RowName, FIELDS)                                                         \
    static std::optional<RowName> parse(QStringView text)                                   \
    {                                                                                       \
        QStringView f[FieldCount];                                                          \
        if (rowdetail::splitFields(text, f, FieldCount) != FieldCount) return std::nullopt; \
        RowName r;                                                                          \
        rowdetail::assignFields(r, f);                                                      \
        return r;                                                                           \
    }                                                                                       \
    QString text() const { return rowdetail::joinFields(*this); }                           \
    template <class Put>                                                                    \
    static char16_t *compose(char16_t *d, Put &&put)                                        \
    {                                                                                       \
        return rowdetail::composeFields<RowName>(d, put);                                   \
    }


// Keys of customers and items: the number in plain decimal and a lower-case "k".
QString numberKey(qint64 number);
QString numberKey(QStringView number);
// The number of a key: every "k" taken out.
QString plainNumber(QStringView key);

// ---------------------------------------------------------------------------
// lvwCustomers: nine fields.
#define QOR_CUSTOMER_FIELDS(X)  \
    X(displayName, DisplayName) \
    X(firstName, FirstName)     \
    X(lastName, LastName)       \
    X(address1, Address1)       \
    X(address2, Address2)       \
    X(address3, Address3)       \
    X(email, Email)             \
    X(phone, Phone)             \
    X(notes, Notes)

// displayName: ArchiveMark first when archived, then "Last, First" or the
// first name alone.
template <class S>
struct BasicCustomerRow {
    QOR_ROW_KIND(BasicCustomerRow, QOR_CUSTOMER_FIELDS)

    static constexpr int EntryCount = FieldCount - 1;  // the entry fields, first name to notes

    // Entry field i (0..7) in the order of the customer panel's fields.
    S &entry(int i) { return this->*members()[i >= 0 && i < EntryCount ? i + 1 : FieldCount - 1]; }
    const S &entry(int i) const { return const_cast<BasicCustomerRow *>(this)->entry(i); }

    bool archived() const { return QStringView(displayName).startsWith(ArchiveMark); }
    // The display name without the archive mark.
    QStringView name() const
    {
        const QStringView n(displayName);
        return n.startsWith(ArchiveMark) ? n.mid(ArchiveMark.size()) : n;
    }
};
using CustomerRow = BasicCustomerRow<QString>;
using CustomerView = BasicCustomerRow<QStringView>;

namespace customer {
// "Last, First", or the first name alone when there is no last name.
QString displayNameFor(const QString &firstName, const QString &lastName);
// The display name of any customer row text (what stands before the first
// separator), archive mark included.
QStringView displayNameOf(QStringView text);
bool isArchived(QStringView text);
// The row text with the archive mark in front (unchanged when it has one).
QString archivedText(QStringView text);
// The stand-in for a customer whom the records name but the table lacks.
CustomerRow placeholder();
}  // namespace customer

// ---------------------------------------------------------------------------
// lvwPAndS: sort price (twelve characters), ArchiveMark when archived, then
// the list text: price text, " - ", name. No field separators.
template <class S>
struct BasicItemRow {
    S sortPrice;
    bool archived = false;
    S listText;  // what the lists show: price text, " - ", name

    // The price as the user sees it, and the name: split at the first " - ".
    QStringView priceText() const { return priceTextOf(listText); }
    static QStringView priceTextOf(QStringView listText)
    {
        const qsizetype at = listText.indexOf(Divider);
        return at < 0 ? listText : listText.left(at);
    }
    QStringView name() const { return nameOf(listText); }
    static QStringView nameOf(QStringView listText)
    {
        const qsizetype at = listText.indexOf(Divider);
        return at < 0 ? QStringView() : listText.mid(at + Divider.size());
    }

    // Every text is an item row.
    static BasicItemRow parse(QStringView text)
    {
        BasicItemRow r;
        if (text.size() <= SortPriceLength) {
            r.sortPrice = rowdetail::take<S>(text);
            return r;
        }
        r.sortPrice = rowdetail::take<S>(text.left(SortPriceLength));
        QStringView rest = text.mid(SortPriceLength);
        r.archived = rest.startsWith(ArchiveMark);
        if (r.archived) rest = rest.mid(ArchiveMark.size());
        r.listText = rowdetail::take<S>(rest);
        return r;
    }
    QString text() const
    {
        QString t;
        t.reserve(QStringView(sortPrice).size() + ArchiveMark.size() + QStringView(listText).size());
        t += sortPrice;
        if (archived) t += ArchiveMark;
        t += listText;
        return t;
    }

    // The fields in row order, for compose().
    enum class Field { SortPrice,
                       PriceText,
                       Name };
    // The length of a row of fields this long.
    static qsizetype composedSize(bool archived, qsizetype sortPrice, qsizetype priceText, qsizetype name)
    {
        return sortPrice + (archived ? ArchiveMark.size() : 0) + priceText + Divider.size() + name;
    }
    // Writes a row in place from d on: put(Field, d) writes the characters of
    // one field and gives their end.
    template <class Put>
    static char16_t *compose(char16_t *d, bool archived, Put &&put)
    {
        d = put(Field::SortPrice, d);
        if (archived) d = std::copy(ArchiveMark.utf16(), ArchiveMark.utf16() + ArchiveMark.size(), d);
        d = put(Field::PriceText, d);
        d = std::copy(Divider.utf16(), Divider.utf16() + Divider.size(), d);
        return put(Field::Name, d);
    }

    static inline const QString Divider = QStringLiteral(" - ");
};
using ItemRow = BasicItemRow<QString>;
using ItemView = BasicItemRow<QStringView>;

namespace item {
// A new row: the sort price, then price text, " - ", name.
ItemRow make(const QString &sortPrice, const QString &priceText, const QString &name);
QString listTextFor(const QString &priceText, const QString &name);
bool isArchived(QStringView text);
QString archivedText(QStringView text);
}  // namespace item

// ---------------------------------------------------------------------------
// lvwPeriods: four fields; the dates in the chrono form "yyyy/mm/dd", the
// name unique among periods.
#define QOR_PERIOD_FIELDS(X) \
    X(start, Start)          \
    X(name, Name)            \
    X(end, End)              \
    X(billDue, BillDue)

template <class S>
struct BasicPeriodRow {
    QOR_ROW_KIND(BasicPeriodRow, QOR_PERIOD_FIELDS)
};
using PeriodRow = BasicPeriodRow<QString>;
using PeriodView = BasicPeriodRow<QStringView>;

namespace period {
// The key of a period: its name and FieldSep.
QString keyFor(QStringView name);
}  // namespace period

// ---------------------------------------------------------------------------
// One entry of an invoice record's item list: "12" (one of item 12) or "12x3".
struct ItemEntry {
    QStringView number;
    QStringView quantity;  // empty when the entry has no "x": one

    static ItemEntry parse(QStringView entry);
    // The quantity as a number: 1 when the entry has none, or when what
    // follows the "x" isn't a plain number of digits (a damaged file).
    qint64 count() const;
    // "12" for one, "12x3" for three.
    static QString make(const QString &number, int quantity);
    // Adds an entry at the end of an item list.
    static void append(QString &list, const QString &number, int quantity)
    {
        if (!list.isEmpty()) list += ItemSep;
        list += make(number, quantity);
    }
    // Calls f(QStringView entryText) for each entry of an item list, empty
    // ones included (an empty list is one empty entry); stops when f returns
    // false. Entries are short: a plain walk beats a library search each.
    template <class F>
    static void forEachText(QStringView list, F &&f)
    {
        const char16_t *p = list.utf16();
        const qsizetype n = list.size();
        qsizetype start = 0;
        for (qsizetype i = 0; i < n; ++i) {
            if (p[i] != ItemSep.unicode()) continue;
            if (!f(QStringView(p + start, i - start))) return;
            start = i + 1;
        }
        f(QStringView(p + start, n - start));
    }
    // Calls f(ItemEntry, QStringView entryText) for each entry, as forEachText.
    template <class F>
    static void forEach(QStringView list, F &&f)
    {
        forEachText(list, [&f](QStringView e) { return f(parse(e), e); });
    }
    // The separators of a list of count entries.
    static constexpr qsizetype separatorCount(qsizetype count) { return count > 1 ? count - 1 : 0; }
    // Writes a list of count entries in place from d on: put(i, d) writes
    // entry i and gives its end.
    template <class Put>
    static char16_t *compose(char16_t *d, qsizetype count, Put &&put)
    {
        for (qsizetype i = 0; i < count; ++i) {
            if (i) *d++ = ItemSep.unicode();
            d = put(i, d);
        }
        return d;
    }
    static QString join(const QStringList &entries) { return entries.join(ItemSep); }
};

// lvwInvoiceRecords: six fields, or five right after a read (no customer
// name yet: the fields after it stand one place earlier). cid is plain
// decimal without "k"; balance is what is still owed, "0" when paid; items
// are entries joined by ItemSep (see ItemEntry); customerName is the
// customer's display name without the archive mark.
#define QOR_RECORD_FIELDS(X)      \
    X(period, Period)             \
    X(customerName, CustomerName) \
    X(cid, Cid)                   \
    X(balance, Balance)           \
    X(items, Items)               \
    X(note, Note)

template <class S>
struct BasicInvoiceRecord {
    QOR_ROW_FIELDS(BasicInvoiceRecord, QOR_RECORD_FIELDS)
    bool named = true;  // false for the five-field form

    static constexpr int UnnamedFieldCount = FieldCount - 1;
    static constexpr int separatorCount(bool named) { return (named ? FieldCount : UnnamedFieldCount) - 1; }
    static constexpr int KeySeparatorCount = 2;

    // Six fields, or five (then named is false); anything else is not a record.
    static std::optional<BasicInvoiceRecord> parse(QStringView text)
    {
        QStringView f[FieldCount];
        const int n = rowdetail::splitFields(text, f, FieldCount);
        if (n != FieldCount && n != UnnamedFieldCount) return std::nullopt;
        BasicInvoiceRecord r;
        r.named = n == FieldCount;
        rowdetail::assignFields(r, f, r.named ? -1 : int(Field::CustomerName));
        return r;
    }
    // Writes a row in place from d on, the six-field form when named, else
    // the five-field one: put(Field, d) writes one field and gives its end.
    template <class Put>
    static char16_t *compose(char16_t *d, bool named, Put &&put)
    {
        return rowdetail::composeFields<BasicInvoiceRecord>(d, put, named ? -1 : int(Field::CustomerName));
    }
    // Writes a record's key in place (see record::keyFor): put is called
    // for Field::Period and Field::Cid.
    template <class Put>
    static char16_t *composeKey(char16_t *d, Put &&put)
    {
        d = put(Field::Period, d);
        *d++ = FieldSep.unicode();
        d = put(Field::Cid, d);
        *d++ = FieldSep.unicode();
        return d;
    }

    // The six-field form (the five-field form when named is false).
    QString text() const { return rowdetail::joinFields(*this, named ? -1 : int(Field::CustomerName)); }
    // Calls f(ItemEntry, QStringView) for each entry of the item list.
    template <class F>
    void forEachEntry(F &&f) const { ItemEntry::forEach(QStringView(items), f); }

    // Single fields of the six-field form, read without going past them: the
    // scans before a delete look at one field of every record.
    static bool cidOf(QStringView text, QStringView &cid) { return rowdetail::fieldAt(text, int(Field::Cid), cid); }
    static bool itemsOf(QStringView text, QStringView &items) { return rowdetail::fieldAt(text, int(Field::Items), items); }
};
using InvoiceRecordRow = BasicInvoiceRecord<QString>;
using InvoiceRecordView = BasicInvoiceRecord<QStringView>;

namespace record {
// The key of a record: period name, FieldSep, CID, FieldSep.
QString keyFor(const QString &period, const QString &cid);
// True for the five-field form of right after a read.
bool isUnnamed(QStringView text);
// Whether a record text belongs to the period: its first field is the name.
inline bool isOfPeriod(QStringView text, QStringView period)
{
    return text.size() > period.size() && text[period.size()] == FieldSep && text.startsWith(period);
}
// Every record text of a period sorts at or after this one.
inline QString periodStart(const QString &period) { return period + FieldSep; }
// Gives a five-field text its customer name in place, without building the
// row a second time beside itself (a record may hold a note of megabytes).
void nameInPlace(QString &text, QStringView customerName);
}  // namespace record

}  // namespace qor
