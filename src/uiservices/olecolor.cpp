#include "uiservices/olecolor.h"

namespace qor {

QColor resolveOleColor(OleColor value, const QPalette &palette) {
    if (!isSystemColor(value))
        return QColor(int(value & 0xFF), int((value >> 8) & 0xFF), int((value >> 16) & 0xFF));
    // The platform's system colour indexes, mapped onto the nearest roles of
    // the toolkit's palette.
    switch (value & 0xFF) {
    case 5: return palette.color(QPalette::Active, QPalette::Base);               // window
    case 7:                                                                       // menu text
    case 8: return palette.color(QPalette::Active, QPalette::WindowText);        // window text
    case 9: return palette.color(QPalette::Active, QPalette::HighlightedText);   // caption text
    case 13: return palette.color(QPalette::Active, QPalette::Highlight);
    case 14: return palette.color(QPalette::Active, QPalette::HighlightedText);
    case 15: return palette.color(QPalette::Active, QPalette::Button);           // button face
    case 16: return palette.color(QPalette::Active, QPalette::Dark);             // button shadow
    case 17: return palette.color(QPalette::Disabled, QPalette::Text);           // grey text
    case 18: return palette.color(QPalette::Active, QPalette::ButtonText);
    case 20: return palette.color(QPalette::Active, QPalette::Light);            // button highlight
    case 21: return palette.color(QPalette::Active, QPalette::Shadow);           // dark shadow
    case 22: return palette.color(QPalette::Active, QPalette::Midlight);         // 3D light
    case 23: return palette.color(QPalette::Active, QPalette::ToolTipText);
    case 24: return palette.color(QPalette::Active, QPalette::ToolTipBase);      // info background
    default: return palette.color(QPalette::Active, QPalette::Window);
    }
}

}  // namespace qor
