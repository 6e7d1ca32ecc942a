// Interim collation: replaced by the tuned version.
#include "collation.h"
#include "rows.h"

namespace qor {
int compareRowText(QStringView a, QStringView b) {
    const bool aa = a.startsWith(ArchiveMark), ba = b.startsWith(ArchiveMark);
    if (aa != ba) return aa ? 1 : -1;
    int c = a.compare(b, Qt::CaseInsensitive);
    if (c) return c;
    return a.compare(b, Qt::CaseSensitive);
}
}  // namespace qor
