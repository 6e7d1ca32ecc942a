// SPDX-License-Identifier: GPL-3.0-or-later
#include "filestructure.h"

#include "cleantext.h"

#include <algorithm>
#include <string_view>

namespace qor::dbread {

namespace {

struct Tags {
    std::string_view open, close, recordClose;
    const char *shownOpen, *shownClose, *shownRecord, *shownRecordClose;
    // A record's elements; nullptr ends the list.
    const char *const *elements;
};
constexpr const char *CompanyElements[] = {
    "companyname", "companyadd1", "companyadd2", "companyadd3", "companyphone", "generalinvoicedescription",
    "checkspayableto", "companyslogan", "invoiceclosing", nullptr};
constexpr const char *CustomerElements[] = {"fname", "lname", "add1", "add2", "add3", "email",
                                            "phone", "notes", "current", nullptr};
constexpr const char *PeriodElements[] = {"bpname", "bpstart", "bpend", "billdue", nullptr};
constexpr const char *ItemElements[] = {"item", "itemprice", "current", nullptr};
constexpr const char *RecordElements[] = {"bp", "cid", "accountbalance", "note", "psid", nullptr};
constexpr Tags Sections[Structure::KindCount] = {
    {"<companyinfo>", "</companyinfo>", "", "<CompanyInfo>", "</CompanyInfo>", "", "", CompanyElements},
    {"<customers>", "</customers>", "</customer>", "<Customers>", "</Customers>", "<Customer CID=\"n\">",
     "</Customer>", CustomerElements},
    {"<billperiods>", "</billperiods>", "</billperiod>", "<BillPeriods>", "</BillPeriods>", "<BillPeriod>",
     "</BillPeriod>", PeriodElements},
    {"<productsandservices>", "</productsandservices>", "</ps>", "<ProductsAndServices>",
     "</ProductsAndServices>", "<PS PSID=\"n\">", "</PS>", ItemElements},
    {"<invoicerecords>", "</invoicerecords>", "</invoicerecord>", "<InvoiceRecords>", "</InvoiceRecords>",
     "<InvoiceRecord>", "</InvoiceRecord>", RecordElements},
};

QString closeOf(Structure::Kind k, bool record)
{
    return QString::fromLatin1(record ? Sections[k].shownRecordClose : Sections[k].shownClose);
}

// One tag and nothing else: "<" first, ">" last, neither inside.
bool loneTag(const char *s, qsizetype n)
{
    if (n < 2 || s[0] != '<' || s[n - 1] != '>') return false;
    for (qsizetype i = 1; i + 1 < n; ++i)
        if (s[i] == '<' || s[i] == '>') return false;
    return true;
}

bool is(const char *s, qsizetype n, std::string_view lowerLit)
{
    return n == qsizetype(lowerLit.size()) && equalsLower(s, n, lowerLit.data(), n);
}

// "<tag attr="value">" with blanks anywhere, or "<tag>" alone (a header
// without its number: a record the reader drops).
bool header(const char *s, qsizetype n, const char *tag, const char *attr)
{
    qsizetype i = 0;
    auto take = [&](const char *lit) {
        for (; *lit; ++lit) {
            while (i < n && s[i] == ' ') ++i;
            if (i == n || char(lowerByte(s[i])) != *lit) return false;
            ++i;
        }
        return true;
    };
    if (!take(tag)) return false;
    const qsizetype afterTag = i;
    if (take(">") && i == n) return true;
    i = afterTag;
    return take(attr) && n - i >= 2 && s[n - 2] == '"' && s[n - 1] == '>';
}

}  // namespace

void Structure::line(const char *s, qsizetype n, qint64 line)
{
    m_any = true;
    if (!loneTag(s, n)) {
        // Text: a value or a part of one, which only a record holds.
        if (m_at != At::Record) fail(s, n, line);
        return;
    }
    switch (m_at) {
    case At::Outside:
        for (int k = 0; k < KindCount; ++k)
            if (is(s, n, Sections[k].open)) {
                m_sectionSeen = true;
                m_kind = Kind(k);
                m_sectionAt = line;
                // The company details are one record without a header.
                m_at = k == Company ? At::Record : At::Section;
                m_recordAt = line;
                return;
            }
        if (m_root == Root::None && !m_sectionSeen && is(s, n, "<qor-db>")) {
            m_root = Root::Open;
            m_rootAt = line;
            return;
        }
        if (m_root == Root::Open && is(s, n, "</qor-db>")) {
            m_root = Root::Closed;
            m_at = At::After;
            m_rootAt = line;
            return;
        }
        break;
    case At::Section:
        if (is(s, n, Sections[m_kind].close)) {
            m_at = At::Outside;
            return;
        }
        if (recordOpen(s, n)) {
            m_at = At::Record;
            m_recordAt = line;
            return;
        }
        break;
    case At::Record:
        if (m_kind == Company ? is(s, n, Sections[Company].close) : is(s, n, Sections[m_kind].recordClose)) {
            m_at = m_kind == Company ? At::Outside : At::Section;
            return;
        }
        // The tag of a value written over several lines.
        if (elementTag(s, n)) return;
        break;
    case At::After:
        break;
    }
    fail(s, n, line);
}

void Structure::finish(qint64 lastLine) const
{
    if (m_at == At::Record && m_kind != Company)
        throw StructureError{lastLine, QString(),
                             QStringLiteral("\"%1\" closing the record that opens at line %2")
                                 .arg(closeOf(m_kind, true), QString::number(m_recordAt)),
                             true};
    if (m_at == At::Record || m_at == At::Section)
        throw StructureError{lastLine, QString(),
                             QStringLiteral("\"%1\" closing the section that opens at line %2")
                                 .arg(closeOf(m_kind, false), QString::number(m_sectionAt)),
                             true};
    if (m_root == Root::Open)
        throw StructureError{lastLine, QString(),
                             QStringLiteral("\"</QOR-DB>\" closing the database that opens at line %1")
                                 .arg(m_rootAt),
                             true};
    if (m_any && !m_sectionSeen)
        throw StructureError{0, QString(),
                             QStringLiteral("at least one of the sections \"<CompanyInfo>\", \"<Customers>\", "
                                            "\"<BillPeriods>\", \"<ProductsAndServices>\", \"<InvoiceRecords>\"")};
}

// A record header as the reader takes it: blanks don't count, any case.
bool Structure::recordOpen(const char *s, qsizetype n) const
{
    switch (m_kind) {
    case Periods: return is(s, n, "<billperiod>");
    case Records: return is(s, n, "<invoicerecord>");
    case Customers: return header(s, n, "<customer", "cid=\"");
    case Items: return header(s, n, "<ps", "psid=\"");
    default: return false;
    }
}

// The opening or closing tag of an element of the current record kind.
bool Structure::elementTag(const char *s, qsizetype n) const
{
    const char *name = s + 1;
    qsizetype len = n - 2;
    if (len > 0 && *name == '/') {
        ++name;
        --len;
    } else if (m_kind == Records && len > 5 && equalsLower(name, 5, "psid ", 5)) {
        len = 4;  // <PSID Number="n">
    }
    for (const char *const *e = Sections[m_kind].elements; *e; ++e)
        if (is(name, len, *e)) return true;
    return false;
}

QString Structure::expectation() const
{
    const Tags &t = Sections[m_kind];
    switch (m_at) {
    case At::Outside:
        return m_root == Root::Open
                   ? QStringLiteral("a section such as \"<Customers>\", or \"</QOR-DB>\"")
                   : QStringLiteral("a section such as \"<Customers>\"");
    case At::Section:
        return QStringLiteral("\"%1\" or \"%2\" (the section opens at line %3)")
            .arg(QString::fromLatin1(t.shownRecord), QString::fromLatin1(t.shownClose), QString::number(m_sectionAt));
    case At::Record:
        return m_kind == Company
                   ? QStringLiteral("a company detail or \"</CompanyInfo>\" (the section opens at line %1)")
                         .arg(m_sectionAt)
                   : QStringLiteral("an element of the record or \"%1\" (the record opens at line %2)")
                         .arg(QString::fromLatin1(t.shownRecordClose), QString::number(m_recordAt));
    case At::After:
        return QStringLiteral("nothing after \"</QOR-DB>\" at line %1").arg(m_rootAt);
    }
    return QString();
}

void Structure::fail(const char *s, qsizetype n, qint64 line) const
{
    constexpr qsizetype Shown = 80;
    qsizetype cut = std::min(n, Shown);
    // Never half a character reference.
    for (qsizetype i = std::max<qsizetype>(0, cut - 3); i < cut; ++i)
        if (s[i] == Marker) {
            cut = i;
            break;
        }
    QString found = decoded(s, cut);
    if (n > Shown) found += QStringLiteral("...");
    throw StructureError{line, found, expectation()};
}

}  // namespace qor::dbread
