// SPDX-License-Identifier: GPL-3.0-or-later
// BillPeriods: records without a header or number.
#include "sectionreader.h"

#include <algorithm>

namespace qor::dbread {

void readBillPeriods(SectionReader &in)
{
    while (!in.src.atEnd()) {
        in.freshRecord();
        qint64 firstLine = 0;
        while (!in.src.atEnd()) {
            in.recordLine();
            if (!firstLine) firstLine = in.src.lineNumber();
            if (in.current("</billperiods>")) return;
            if (in.current("</billperiod>")) break;
        }
        if (in.rec.isEmpty()) continue;  // nothing but the end of the file
        in.tags.build(in.rec);
        const PeriodRow row{in.element("bpstart"), in.element("bpname"), in.element("bpend"), in.element("billdue")};
        if (!in.addRow(in.db.periods, period::keyFor(row.name), row.text(), firstLine,
                       [&] { return QStringLiteral("a second bill period named \"%1\"").arg(row.name); }))
            return;
    }
}

}  // namespace qor::dbread
