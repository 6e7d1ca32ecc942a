// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// One envelope: the company's return address at the margins and the
// customer's address block to the right of it and lower, written line by
// line with a pen as a printer writes. A plain function of plain values; the
// run that prints one job per envelope lives with the Printing panel.
#include "pages/page.h"

#include <QPageSize>
#include <QString>
#include <QStringView>

#include <array>

namespace qor::pages {

struct EnvelopeInput {
    // txtCompanyDetails(0) to (3): the name and three address lines.
    std::array<QString, 4> company;
    QString firstName, lastName;
    std::array<QString, 3> address;
    // The return address's place in whole centimetres from the left and top
    // edges of the landscape page.
    int x = 2;
    int y = 12;
    // The printer's current face; the lines set only the size.
    QString fontName = QStringLiteral("Arial");
};

// A stored margin as the run reads it: Val of the text, rounded to whole
// centimetres, an exact half to the even neighbour ("2.5" gives 2).
int marginCentimetres(QStringView text);
// The same for a margin already read with Val.
int wholeCentimetres(double value);

// The envelope a user of this locale feeds: the 9 by 12 inch catalogue
// envelope where the locale measures in US units, C4 elsewhere. Both are
// 22.9 cm high when turned to landscape, so the address block at the stored
// default margins (12 cm down, reaching about 17.5 cm) lands on them; on the
// small business sizes (No. 10, DL: about 11 cm high) it would not.
QPageSize defaultEnvelopePaper();

// Twips in a centimetre.
constexpr double TwipsPerCm = 1440.0 / 2.54;

// The envelope as a landscape page of the paper's size. Its eight text
// elements "line1" to "line8" are the return address (10 points, at X), the
// customer's name (12 points, X + 7 cm, 2 cm lower than the pen stood after
// line 4) and the customer's three address lines (10 points, X + 7 cm). An
// empty text keeps its line.
Page composeEnvelope(const EnvelopeInput &input, const QPageSize &paper = defaultEnvelopePaper());

}  // namespace qor::pages
