// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// The Print Options panel's preview: miniature pictures of the real forms,
// drawn by the page painter from sample text so they always match the page.
#include "pages/invoice.h"

#include <QImage>

#include <array>

namespace qor::pages {

// Sample values for a page: a made-up company and customer and `lines` item
// lines (twelve at most shown), with the given form and line options.
InvoiceInput sampleInvoice(int templateNumber, int lines, bool keepTwelveLines, bool moveBottomText);

// Sizes of the preview pictures in pixels; the two stand one above the other
// and together picture a whole page.
constexpr int PreviewWidth = 192;
constexpr int PreviewTopHeight = 105;
constexpr int PreviewBottomHeight = 144;

struct PreviewPictures {
    // top[i]: the upper part of frmPrint<i>.
    std::array<QImage, 3> top;
    // bottom[0]: the full box of twelve lines; [1]: a short box with the text
    // staying at the foot of the page; [2]: a short box with the text moved up.
    std::array<QImage, 3> bottom;
};

PreviewPictures makePreviewPictures();

}  // namespace qor::pages
