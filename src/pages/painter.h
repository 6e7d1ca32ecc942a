// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// The one painter of pages: draws a page's visible elements in order on any
// paint device (printer, PDF writer, image), so paper, PDF and preview come
// from the same code element for element.
#include "pages/page.h"

#include <QImage>

class QPainter;
class QPaintDevice;

namespace qor::pages {

// The image a picture element names ("paid": the PAID stamp, 387 by 244
// pixels). One shared image per key, so a PDF embeds it once however many
// pages show it. Null for an unknown key.
QImage pictureImage(const QString &key);

// Sets the painter's transform so that one unit is one twip of its device,
// with the page's top left corner at the device's origin.
void scaleToTwips(QPainter &painter);

// Draws the page; the painter's units must be twips (see scaleToTwips).
void drawPage(QPainter &painter, const Page &page);

// The page as a picture: `pixelsWidth` wide, height in proportion, white.
QImage renderPage(const Page &page, int pixelsWidth);

}  // namespace qor::pages
