// SPDX-License-Identifier: GPL-3.0-or-later
// CompanyInfo: one record without a header; its nine values fill the
// company fields.
#include "sectionreader.h"

#include <algorithm>

namespace qor::dbread {

void readCompanyInfo(SectionReader &in)
{
    in.freshRecord();
    while (!in.src.atEnd()) {
        in.recordLine();
        if (in.current("</companyinfo>")) break;
    }
    in.tags.build(in.rec);
    static const char *const names[CompanyFieldCount] = {
        "companyname",
        "companyadd1",
        "companyadd2",
        "companyadd3",
        "companyphone",
        "companyslogan",
        "generalinvoicedescription",
        "checkspayableto",
        "invoiceclosing",
    };
    Span spans[CompanyFieldCount];
    for (int i = 0; i < CompanyFieldCount; ++i) spans[i] = in.tags.element(names[i]);
    for (int i = 0; i < CompanyFieldCount; ++i) {
        const Span sp = spans[i];
        // A huge value gives its bytes back as it is decoded, unless a
        // value still to come lies in them (a file edited by hand).
        bool release = sp.len >= (qsizetype(64) << 20);
        for (int j = i + 1; release && j < CompanyFieldCount; ++j)
            release = spans[j].at + spans[j].len <= sp.at || spans[j].at >= sp.at + sp.len;
        const char *p = in.rec.constData() + sp.at;
        QString value(decodedLength(p, sp.len), Qt::Uninitialized);
        char16_t *d = reinterpret_cast<char16_t *>(value.data());
        if (release) putDecodedReleasing(d, p, sp.len);
        else putDecoded(d, p, sp.len);
        in.db.company[size_t(i)] = std::move(value);
    }
}

}  // namespace qor::dbread
