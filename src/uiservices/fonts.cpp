#include "fonts.h"

#include <QFile>
#include <QFontDatabase>

namespace qor {

void ensureDesignFonts() {
    static bool done = false;
    if (done) return;
    done = true;
    if (QFontDatabase::families().contains(QStringLiteral("Tahoma"))) return;
    for (const char *path : {"/usr/share/wine/fonts/tahoma.ttf", "/usr/share/wine/fonts/tahomabd.ttf"}) {
        if (QFile::exists(QString::fromLatin1(path)))
            QFontDatabase::addApplicationFont(QString::fromLatin1(path));
    }
}

}  // namespace qor
