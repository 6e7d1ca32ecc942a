// SPDX-License-Identifier: GPL-3.0-or-later
#include "pages/pen.h"

#include "pages/textlayout.h"

#include <cmath>

namespace qor::pages {

double PagePen::lineHeight() const { return pageFont(fontName, fontSize, bold, italic).metrics.lineSpacing(); }

Element &PagePen::print(const QString &text)
{
    Element e;
    e.name = QStringLiteral("line") + QString::number(++m_count);
    e.kind = Kind::Text;
    e.left = int(std::lround(x));
    e.top = int(std::lround(y));
    e.text = text;
    e.fontName = fontName;
    e.fontSize = fontSize;
    e.bold = bold;
    e.italic = italic;
    e.autoSize = AutoSize::KeepLeft;
    fitAutoSize(e);
    e.height = std::max(e.height, int(std::ceil(lineHeight())));
    Element &added = m_page.add(std::move(e));
    x = 0;
    y += lineHeight();
    return added;
}

}  // namespace qor::pages
