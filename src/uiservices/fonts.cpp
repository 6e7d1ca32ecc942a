// SPDX-License-Identifier: GPL-3.0-or-later
#include "fonts.h"

#include <QFont>
#include <QFontDatabase>
#include <QStringList>

namespace qor {

void ensureDesignFonts()
{
    static bool done = false;
    if (done) return;
    done = true;
    // Liberation Sans has Arial's metrics and a clear bold; it keeps captions
    // within the widths the window was designed for when Tahoma is missing.
    const QString stand_in = QStringLiteral("Liberation Sans");
    for (const QString family : {QStringLiteral("Tahoma"), QStringLiteral("Arial")}) {
        if (!QFontDatabase::hasFamily(family) && QFontDatabase::hasFamily(stand_in))
            QFont::insertSubstitution(family, stand_in);
    }
}

}  // namespace qor
