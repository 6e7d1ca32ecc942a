// SPDX-License-Identifier: GPL-3.0-or-later
#include "uiservices/olecolor.h"

#include <algorithm>
#include <cmath>

namespace qor {

QColor resolveOleColor(OleColor value, const QPalette &palette)
{
    if (!isSystemColor(value))
        return QColor(int(value & 0xFF), int((value >> 8) & 0xFF), int((value >> 16) & 0xFF));
    // The platform's system colour indexes, mapped onto the nearest roles of
    // the toolkit's palette.
    switch (value & 0xFF) {
    case 5: return palette.color(QPalette::Active, QPalette::Base);             // window
    case 7:                                                                     // menu text
    case 8: return palette.color(QPalette::Active, QPalette::WindowText);       // window text
    case 9: return palette.color(QPalette::Active, QPalette::HighlightedText);  // caption text
    case 13: return palette.color(QPalette::Active, QPalette::Highlight);
    case 14: return palette.color(QPalette::Active, QPalette::HighlightedText);
    case 15: return palette.color(QPalette::Active, QPalette::Button);  // button face
    case 16: return palette.color(QPalette::Active, QPalette::Dark);    // button shadow
    case 17:                                                            // grey text, still legible on the window colour
        return readableOn(palette.color(QPalette::Disabled, QPalette::Text), palette.color(QPalette::Active, QPalette::Base),
                          HintContrast);
    case 18: return palette.color(QPalette::Active, QPalette::ButtonText);
    case 20: return palette.color(QPalette::Active, QPalette::Light);     // button highlight
    case 21: return palette.color(QPalette::Active, QPalette::Shadow);    // dark shadow
    case 22: return palette.color(QPalette::Active, QPalette::Midlight);  // 3D light
    case 23: return palette.color(QPalette::Active, QPalette::ToolTipText);
    case 24: return palette.color(QPalette::Active, QPalette::ToolTipBase);  // info background
    default: return palette.color(QPalette::Active, QPalette::Window);
    }
}

namespace {
double luminance(const QColor &c)
{
    auto channel = [](double v) { return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4); };
    const QColor rgb = c.toRgb();
    return 0.2126 * channel(rgb.redF()) + 0.7152 * channel(rgb.greenF()) + 0.0722 * channel(rgb.blueF());
}
QColor mix(const QColor &a, const QColor &b, double t)
{
    const QColor x = a.toRgb(), y = b.toRgb();
    return QColor::fromRgbF(float(x.redF() + (y.redF() - x.redF()) * t), float(x.greenF() + (y.greenF() - x.greenF()) * t),
                            float(x.blueF() + (y.blueF() - x.blueF()) * t));
}
}  // namespace

double contrastRatio(const QColor &a, const QColor &b)
{
    const double la = luminance(a), lb = luminance(b);
    return (std::max(la, lb) + 0.05) / (std::min(la, lb) + 0.05);
}

QColor readableOn(const QColor &want, const QColor &background, double ratio)
{
    if (!want.isValid() || !background.isValid() || contrastRatio(want, background) >= ratio)
        return want;
    const QColor towards = contrastRatio(Qt::black, background) >= contrastRatio(Qt::white, background)
                               ? QColor(Qt::black)
                               : QColor(Qt::white);
    // The least step that reaches the ratio, to a 64th; the far end always
    // reaches the most this background allows.
    int low = 0, high = 64;
    while (low < high) {
        const int mid = (low + high) / 2;
        if (contrastRatio(mix(want, towards, mid / 64.0), background) >= ratio)
            high = mid;
        else
            low = mid + 1;
    }
    return mix(want, towards, high / 64.0).toRgb();
}

}  // namespace qor
