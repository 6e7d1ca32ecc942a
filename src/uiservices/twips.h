// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// Window measures are kept in twips (1440 to the inch). On screen a twip
// becomes pixels at 15 twips a pixel on a 96 DPI screen, following the
// screen's logical DPI so a scaled desktop scales the whole layout alike.
#include <QGuiApplication>
#include <QScreen>
#include <cmath>

namespace qor {

inline double twipsPerPixel()
{
    const QScreen *s = QGuiApplication::primaryScreen();
    const double dpi = s ? s->logicalDotsPerInch() : 96.0;
    return 1440.0 / (dpi > 0 ? dpi : 96.0);
}
inline int twipsToPx(double twips) { return int(std::lround(twips / twipsPerPixel())); }
inline double pxToTwips(int px) { return px * twipsPerPixel(); }

}  // namespace qor
