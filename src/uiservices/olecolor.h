// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// Colours as the program stores them: a 32-bit value that is either a plain
// RGB colour (0x00BBGGRR, red in the low byte) or, with the high bit set, the
// index of a system colour (0x80000000 | index) that is looked up only when the
// colour is used, so a change of the desktop's colours is followed.
#include <QColor>
#include <QPalette>
#include <QtGlobal>

namespace qor {

using OleColor = quint32;

namespace syscolor {
inline constexpr OleColor Window = 0x80000005;          // window background
inline constexpr OleColor WindowText = 0x80000008;      // window text
inline constexpr OleColor MenuText = 0x80000007;        // menu text
inline constexpr OleColor Highlight = 0x8000000D;       // selection background
inline constexpr OleColor ButtonFace = 0x8000000F;      // button face
inline constexpr OleColor GrayText = 0x80000011;        // disabled text
inline constexpr OleColor InfoBackground = 0x80000018;  // tooltip background
}  // namespace syscolor

inline constexpr bool isSystemColor(OleColor c) { return (c & 0x80000000u) != 0; }

// Plain RGB value of a QColor (alpha dropped).
inline constexpr OleColor oleFromRgb(int r, int g, int b)
{
    return OleColor((r & 0xFF) | ((g & 0xFF) << 8) | ((b & 0xFF) << 16));
}
inline OleColor oleFromColor(const QColor &c) { return oleFromRgb(c.red(), c.green(), c.blue()); }

// Resolves a stored colour to a QColor with the given palette. Unknown system
// indexes fall back to the window colour of the palette.
QColor resolveOleColor(OleColor value, const QPalette &palette);

// Contrast of two colours as the accessibility guidelines measure it, from
// 1 (the same) to 21 (black on white).
double contrastRatio(const QColor &a, const QColor &b);
// Text that reads on background: want itself when it reaches ratio, else
// want moved toward black or white (whichever reads better there) just far
// enough. Keeps the hue where it can, so red stays reddish.
QColor readableOn(const QColor &want, const QColor &background, double ratio);
// The least contrast of text: 4.5, and 3 for hints and greyed entries.
inline constexpr double TextContrast = 4.5;
inline constexpr double HintContrast = 3.0;

}  // namespace qor
