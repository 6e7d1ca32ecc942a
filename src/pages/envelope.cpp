// SPDX-License-Identifier: GPL-3.0-or-later
#include "pages/envelope.h"

#include "database/regional.h"
#include "pages/pen.h"

#include <QLocale>
#include <QSizeF>

#include <cmath>
#include <limits>

namespace qor::pages {

int marginCentimetres(QStringView text) { return wholeCentimetres(regional::val(text)); }

int wholeCentimetres(double value)
{
    const double v = std::nearbyint(value);  // the default rounding: half to even
    if (!std::isfinite(v))
        return 0;
    if (v >= double(std::numeric_limits<int>::max()))
        return std::numeric_limits<int>::max();
    if (v <= double(std::numeric_limits<int>::min()))
        return std::numeric_limits<int>::min();
    return int(v);
}

QPageSize defaultEnvelopePaper()
{
    if (QLocale().measurementSystem() == QLocale::ImperialUSSystem)
        return QPageSize(QSizeF(9, 12), QPageSize::Inch, QStringLiteral("Catalog Envelope 9 x 12"));
    return QPageSize(QPageSize::EnvelopeC4);
}

Page composeEnvelope(const EnvelopeInput &in, const QPageSize &paper)
{
    // Landscape: the long side across.
    const QSizeF points = paper.size(QPageSize::Point);
    const int longSide = int(std::lround(std::max(points.width(), points.height()) * 20));
    const int shortSide = int(std::lround(std::min(points.width(), points.height()) * 20));
    Page page(QStringLiteral("Envelope"), longSide, shortSide, {});

    const double x = in.x * TwipsPerCm;
    const double step = 7 * TwipsPerCm;
    PagePen pen(page);
    pen.fontName = in.fontName;
    pen.x = x;
    pen.y = in.y * TwipsPerCm;
    pen.fontSize = 10;
    for (const QString &line : in.company) {
        pen.print(line);
        pen.x = x;
    }
    pen.fontSize = 12;
    pen.x += step;
    pen.y += 2 * TwipsPerCm;
    pen.print(in.firstName + u' ' + in.lastName);
    pen.x = x;
    pen.fontSize = 10;
    for (const QString &line : in.address) {
        pen.x += step;
        pen.print(line);
        pen.x = x;
    }
    return page;
}

}  // namespace qor::pages
