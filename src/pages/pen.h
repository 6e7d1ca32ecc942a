// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// Writing on a page line by line with a moving pen, as envelopes are written:
// each print puts one text at the pen and moves the pen to the start of the
// next line, one line of the current font lower.
#include "pages/page.h"

namespace qor::pages {

class PagePen {
public:
    explicit PagePen(Page &page) : m_page(page) {}

    // The pen's position in twips from the page's top left corner.
    double x = 0;
    double y = 0;
    QString fontName = QStringLiteral("Arial");
    double fontSize = 10;
    bool bold = false;
    bool italic = false;

    // Adds the text at the pen (an empty text still takes its line), then
    // moves the pen to the left edge, one line height lower. Gives the new
    // element, named "line1", "line2", ... in printing order.
    Element &print(const QString &text);
    // The height of one line of the current font, in twips.
    double lineHeight() const;

private:
    Page &m_page;
    int m_count = 0;
};

}  // namespace qor::pages
