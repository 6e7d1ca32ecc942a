// SPDX-License-Identifier: GPL-3.0-or-later
// SaveDatabase: the writer of the database file. One element per line, tabs
// for indentation, CR LF line ends, Windows-1252 text. The whole file is
// encoded into one large buffer that goes to the device in big blocks, so a
// save costs little more than copying the bytes.
#include "codec.h"
#include "database.h"
#include "rowtypes.h"

#include <QIODevice>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include <algorithm>
#include <cstring>

namespace qor {

namespace {

// Characters below 0x80 that can't go into a value as they are: the five
// markup characters, and every control character, tabs and lone CRs
// included (the reader takes tabs and blanks at a line's ends for
// indentation), which are written as references. A line break (LF) is the
// file's own CR LF.
struct SpecialTable {
    bool special[128] = {};
    constexpr SpecialTable()
    {
        for (int c = 0; c < 0x20; ++c) special[c] = true;
        special[0x7F] = true;
        special[int('&')] = special[int('<')] = special[int('>')] = true;
        special[int('\'')] = special[int('"')] = true;
    }
};
constexpr SpecialTable Special;

class Out {
public:
    explicit Out(QIODevice *device) : m_device(device)
    {
        m_buf.resize(device ? FlushAt + Slack : qsizetype(1) << 20);
        m_p = m_buf.data();
        m_end = m_p + m_buf.size();
    }

    void raw(const char *s, qsizetype n)
    {
        ensure(n);
        std::memcpy(m_p, s, size_t(n));
        m_p += n;
    }
    template <qsizetype N>
    void lit(const char (&s)[N]) { raw(s, N - 1); }
    void ch(char c)
    {
        ensure(1);
        *m_p++ = c;
    }

    void number(qint64 v)
    {
        char tmp[24];
        int n = 0;
        const bool neg = v < 0;
        quint64 u = neg ? quint64(-(v + 1)) + 1 : quint64(v);
        do {
            tmp[n++] = char('0' + u % 10);
            u /= 10;
        } while (u);
        ensure(n + 1);
        if (neg) *m_p++ = '-';
        while (n) *m_p++ = tmp[--n];
    }

    // XmlEscape of a value: the markup characters become entities, line breaks
    // CR LF, and what the code page lacks a numeric reference. A blank next
    // to a line break is a reference too, since the reader takes blanks at
    // the ends of a line for indentation.
    void value(QStringView v)
    {
        qsizetype start = 0;
        for (;;) {
            const qsizetype nl = v.indexOf(u'\n', start);
            if (nl < 0 && start == 0) {
                line(v);
                return;
            }
            QStringView part = nl < 0 ? v.mid(start) : v.mid(start, nl - start);
            if (start > 0 && part.startsWith(u' ')) {
                lit("&#32;");
                part = part.mid(1);
            }
            const bool blankAtEnd = nl >= 0 && part.endsWith(u' ');
            line(blankAtEnd ? part.chopped(1) : part);
            if (blankAtEnd) lit("&#32;");
            if (nl < 0) return;
            lit("\r\n");
            start = nl + 1;
        }
    }

    // An attribute value stays on its line: a line break is a reference.
    void attribute(QStringView v)
    {
        qsizetype start = 0;
        for (qsizetype nl; (nl = v.indexOf(u'\n', start)) >= 0; start = nl + 1) {
            line(v.mid(start, nl - start));
            lit("&#10;");
        }
        line(v.mid(start));
    }

    // A value without line breaks.
    void line(QStringView v)
    {
        const char16_t *s = v.utf16();
        const qsizetype n = v.size();
        qsizetype i = 0;
        while (i < n) {
            // Plain characters are copied straight; at most one byte each.
            ensure(n - i + 16);
            char *d = m_p;
#if defined(__SSE2__)
            // Eight at a time while none of them needs a second look.
            const __m128i high = _mm_set1_epi16(qint16(0xFF80)), space = _mm_set1_epi16(0x20);
            const __m128i amp = _mm_set1_epi16('&'), lt = _mm_set1_epi16('<'), gt = _mm_set1_epi16('>');
            const __m128i apos = _mm_set1_epi16('\''), quot = _mm_set1_epi16('"'), del = _mm_set1_epi16(0x7F);
            const __m128i zero = _mm_setzero_si128();
            while (i + 8 <= n) {
                const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i *>(s + i));
                __m128i bad = _mm_cmpeq_epi16(_mm_cmpeq_epi16(_mm_and_si128(x, high), zero), zero);
                bad = _mm_or_si128(bad, _mm_cmplt_epi16(x, space));
                bad = _mm_or_si128(bad, _mm_or_si128(_mm_cmpeq_epi16(x, amp), _mm_cmpeq_epi16(x, lt)));
                bad = _mm_or_si128(bad, _mm_or_si128(_mm_cmpeq_epi16(x, gt), _mm_cmpeq_epi16(x, apos)));
                bad = _mm_or_si128(bad, _mm_or_si128(_mm_cmpeq_epi16(x, quot), _mm_cmpeq_epi16(x, del)));
                if (_mm_movemask_epi8(bad)) break;
                _mm_storel_epi64(reinterpret_cast<__m128i *>(d), _mm_packus_epi16(x, x));
                d += 8;
                i += 8;
            }
#endif
            while (i < n && s[i] < 0x80 && !Special.special[s[i]]) *d++ = char(s[i++]);
            m_p = d;
            if (i >= n) break;
            const char16_t c = s[i];
            if (c >= 0x80) {
                qsizetype k = i;
                while (k < n && s[k] >= 0x80) ++k;
                encoded(v.mid(i, k - i));
                i = k;
                continue;
            }
            switch (c) {
            case '&': lit("&amp;"); break;
            case '<': lit("&lt;"); break;
            case '>': lit("&gt;"); break;
            case '\'': lit("&apos;"); break;
            case '"': lit("&quot;"); break;
            default:
                lit("&#");
                number(c);
                ch(';');
            }
            ++i;
        }
    }

    // One element line; an empty value drops the element.
    template <qsizetype N>
    void element(int tabs, const char (&name)[N], QStringView v)
    {
        if (v.isEmpty()) return;
        ensure(2 * N + tabs + 8);
        char *d = m_p;
        for (int t = 0; t < tabs; ++t) *d++ = '\t';
        *d++ = '<';
        std::memcpy(d, name, N - 1);
        d += N - 1;
        *d++ = '>';
        m_p = d;
        value(v);
        ensure(N + 5);
        d = m_p;
        *d++ = '<';
        *d++ = '/';
        std::memcpy(d, name, N - 1);
        d += N - 1;
        *d++ = '>';
        *d++ = '\r';
        *d++ = '\n';
        m_p = d;
    }

    bool flush()
    {
        const qsizetype used = m_p - m_buf.data();
        if (!m_device) {
            m_buf.truncate(used);
            m_p = m_end = nullptr;
            return true;
        }
        if (used && m_ok && m_device->write(m_buf.constData(), used) != used) m_ok = false;
        m_p = m_buf.data();
        return m_ok;
    }
    bool ok() const { return m_ok; }
    QByteArray take()
    {
        flush();
        return std::move(m_buf);
    }

private:
    void ensure(qsizetype n)
    {
        if (m_end - m_p < n) [[unlikely]]
            makeRoom(n);
    }
    Q_NEVER_INLINE void makeRoom(qsizetype n)
    {
        if (m_device && m_p - m_buf.data() >= FlushAt) {
            flush();
            if (m_end - m_p >= n) return;
        }
        const qsizetype used = m_p - m_buf.data();
        m_buf.resize(std::max(m_buf.size() * 2, used + n + Slack));
        m_p = m_buf.data() + used;
        m_end = m_buf.data() + m_buf.size();
    }

    // Characters outside ASCII, through the code page.
    void encoded(QStringView run)
    {
        m_tmp.clear();
        codec::appendEncoded(m_tmp, run);
        raw(m_tmp.constData(), m_tmp.size());
    }

    static constexpr qsizetype FlushAt = qsizetype(8) << 20;
    static constexpr qsizetype Slack = qsizetype(1) << 16;
    QIODevice *m_device;
    QByteArray m_buf;
    QByteArray m_tmp;
    char *m_p = nullptr;
    char *m_end = nullptr;
    bool m_ok = true;
};

void writeCompanyInfo(Out &o, const std::array<QString, CompanyFieldCount> &c)
{
    o.lit("<QOR-DB>\r\n\r\n\t<CompanyInfo>\r\n");
    o.element(2, "CompanyName", c[0]);
    o.element(2, "CompanyAdd1", c[1]);
    o.element(2, "CompanyAdd2", c[2]);
    o.element(2, "CompanyAdd3", c[3]);
    o.element(2, "CompanyPhone", c[4]);
    o.element(2, "GeneralInvoiceDescription", c[6]);
    o.element(2, "ChecksPayableTo", c[7]);
    o.element(2, "CompanySlogan", c[5]);
    o.element(2, "InvoiceClosing", c[8]);
    o.lit("\t</CompanyInfo>\r\n\r\n");
}

void writeCustomers(Out &o, const KeyedList &customers)
{
    o.lit("\t<Customers>\r\n");
    customers.forEach([&o](QStringView key, QStringView text) {
        if (key.isEmpty()) return true;
        o.lit("\t\t<Customer CID=\"");
        for (QChar ch : key)
            if (ch != u'k') o.attribute(QStringView(&ch, 1));
        o.lit("\">\r\n");
        const CustomerView c = CustomerView::loose(text);
        o.element(3, "FName", c.firstName);
        o.element(3, "LName", c.lastName);
        o.element(3, "Add1", c.address1);
        o.element(3, "Add2", c.address2);
        o.element(3, "Add3", c.address3);
        o.element(3, "Email", c.email);
        o.element(3, "Phone", c.phone);
        o.element(3, "Notes", c.notes);
        o.element(3, "Current", c.archived() ? u"No" : u"Yes");
        o.lit("\t\t</Customer>\r\n");
        return true;
    });
    o.lit("\t</Customers>\r\n");
}

void writeBillPeriods(Out &o, const KeyedList &periods)
{
    o.lit("\r\n\t<BillPeriods>\r\n");
    periods.forEach([&o](QStringView, QStringView text) {
        o.lit("\t\t<BillPeriod>\r\n");
        const PeriodView p = PeriodView::loose(text);
        o.element(3, "BPName", p.name);
        o.element(3, "BPStart", p.start);
        o.element(3, "BPEnd", p.end);
        o.element(3, "BillDue", p.billDue);
        o.lit("\t\t</BillPeriod>\r\n");
        return true;
    });
    o.lit("\t</BillPeriods>\r\n");
}

void writeProductsAndServices(Out &o, const KeyedList &products)
{
    o.lit("\r\n\t<ProductsAndServices>\r\n");
    products.forEach([&o](QStringView key, QStringView text) {
        const ItemView item = ItemView::parse(text);
        o.lit("\t\t<PS PSID=\"");
        o.attribute(key.chopped(key.isEmpty() ? 0 : 1));
        o.lit("\">\r\n");
        o.element(3, "Item", item.name());
        o.element(3, "ItemPrice", item.priceText());
        o.element(3, "Current", item.archived ? u"No" : u"Yes");
        o.lit("\t\t</PS>\r\n");
        return true;
    });
    o.lit("\t</ProductsAndServices>\r\n");
}

void writeInvoiceRecords(Out &o, const KeyedList &records)
{
    o.lit("\r\n\t<InvoiceRecords>\r\n");
    records.forEach([&o](QStringView, QStringView text) {
        o.lit("\t\t<InvoiceRecord>\r\n");
        const InvoiceRecordView r = InvoiceRecordView::loose(text);
        o.element(3, "BP", r.period);
        o.element(3, "CID", r.cid);
        o.element(3, "AccountBalance", r.balance);
        // Entries keep the number of their place. An empty entry is written
        // as an empty element: a gap in the numbers would end the list there
        // on the next load. An empty list has no entries.
        if (!r.items.isEmpty()) {
            qint64 number = 0;
            ItemEntry::forEachText(r.items, [&o, &number](QStringView entry) {
                o.lit("\t\t\t<PSID Number=\"");
                o.number(++number);
                o.lit("\">");
                o.value(entry);
                o.lit("</PSID>\r\n");
                return true;
            });
        }
        o.element(3, "Note", r.note);
        o.lit("\t\t</InvoiceRecord>\r\n");
        return true;
    });
    o.lit("\t</InvoiceRecords>\r\n\r\n</QOR-DB>\r\n");
}

void writeAll(Out &o, const Database &db)
{
    writeCompanyInfo(o, db.company());
    writeCustomers(o, db.customers());
    writeBillPeriods(o, db.periods());
    writeProductsAndServices(o, db.items());
    writeInvoiceRecords(o, db.invoiceRecords());
}

}  // namespace

QByteArray Database::serialize() const
{
    Out o(nullptr);
    writeAll(o, *this);
    return o.take();
}

bool Database::writeTo(QIODevice &device) const
{
    Out o(&device);
    writeAll(o, *this);
    return o.flush();
}

}  // namespace qor
