// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// Resource paths of the program's images (assets/assets.qrc, compiled into
// qor_gui). Tab faces are indexed like the panels: 0 Customers, 1 Products,
// 2 Bill Periods, 3 Printing, 4 Print Options, 5 Options, 6 Company Info.
#include <QString>

namespace qor::assets {

// Registers the images with the resource system. Images live in a static
// library, whose resource object the linker would otherwise drop; HoverCommand
// calls this, and so may any code that loads an image before one exists.
void ensureLoaded();

inline QString tabFace(int index) { return QStringLiteral(":/images/tab%1.png").arg(index); }
inline QString tabFaceHover(int index) { return QStringLiteral(":/images/tab%1_hover.png").arg(index); }

inline constexpr const char *CheckMark = ":/images/check.png";       // 24x24, black on RGB 0,192,0
inline constexpr const char *Cross = ":/images/cross.png";           // 24x24, black on RGB 255,0,0
inline constexpr const char *Help = ":/images/help.png";             // 48x48, key colour ground
inline constexpr const char *HelpHover = ":/images/help_hover.png";  // 48x48, darker blue
inline constexpr const char *Printer = ":/images/printer.png";       // 18x18
inline constexpr const char *Search = ":/images/search.png";         // 19x18
inline constexpr const char *Logo = ":/images/logo.png";             // 32x16
inline constexpr const char *AppIcon = ":/images/appicon.png";       // 32x32 window icon

}  // namespace qor::assets
