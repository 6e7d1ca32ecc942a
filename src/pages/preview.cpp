// SPDX-License-Identifier: GPL-3.0-or-later
#include "pages/preview.h"

#include "pages/painter.h"
#include "pages/templates.h"

#include <QPainter>

namespace qor::pages {

InvoiceInput sampleInvoice(int templateNumber, int lines, bool keepTwelveLines, bool moveBottomText)
{
    InvoiceInput in;
    in.company = {QStringLiteral("Harbour & Hill Landscaping"),
                  QStringLiteral("Harbour & Hill Landscaping"),
                  QStringLiteral("1200 Orchard Lane"),
                  QStringLiteral("Springfield, OR 97477"),
                  QStringLiteral("(541) 555-0147"),
                  QStringLiteral("Gardens that grow with you"),
                  QStringLiteral("Monthly garden care"),
                  QStringLiteral("Harbour & Hill Landscaping"),
                  QStringLiteral("THANK YOU FOR YOUR BUSINESS!")};
    in.customer = {QStringLiteral("Meadows, Ann"), QStringLiteral("Ann"), QStringLiteral("Meadows"),
                   QStringLiteral("48 Birch Street"), QStringLiteral("Apt. 3"),
                   QStringLiteral("Eugene, OR 97401"), QString(), QString(), QString()};
    static const std::pair<int, const char *> items[] = {
        {4500, "Lawn mowing"},
        {2000, "Hedge trimming"},
        {1250, "Leaf removal"},
        {800, "Fertiliser"},
        {3000, "Weeding"},
        {1500, "Edging"},
        {6000, "Tree pruning"},
        {500, "Green waste bag"},
        {2500, "Irrigation check"},
        {1800, "Mulch"},
        {4000, "Spring planting"},
        {1000, "Travel"},
    };
    for (int i = 0; i < lines && i < 12; ++i) {
        const int quantity = i % 4 == 1 ? 2 : 1;
        in.lines << InvoiceLine::item(QString::fromLatin1(items[i].second), quantity,
                                      Money::fromCents(items[i].first).times(quantity));
    }
    in.balance = in.billed();
    in.locale = QLocale(QLocale::English, QLocale::UnitedStates);
    in.billDue = QStringLiteral("07/31/2026");
    in.invoiceDate = QDate(2026, 7, 1);
    in.dateFormat = QStringLiteral("mm/dd/yyyy");
    in.options.templateNumber = templateNumber;
    // The large title is wider than the box of the two forms that don't size
    // it to the text; the samples show the size that fits each form.
    in.options.titleSize = templateNumber == 0 ? TitleSize::Large : TitleSize::Medium;
    in.options.keepTwelveLines = keepTwelveLines;
    in.options.moveBottomText = moveBottomText;
    in.options.addInvoiceDate = true;
    return in;
}

namespace {

// The whole page drawn at 192 pixels across, cut into the top and the bottom
// picture.
QImage miniature(const Page &page, int fromTwips, int heightPixels)
{
    const double scale = double(PreviewWidth) / page.width();
    QImage img(PreviewWidth, heightPixels, QImage::Format_RGB32);
    img.fill(Qt::white);
    QPainter p(&img);
    p.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing | QPainter::SmoothPixmapTransform);
    p.scale(scale, scale);
    p.translate(0, -fromTwips);
    drawPage(p, page);
    p.end();
    return img;
}

}  // namespace

PreviewPictures makePreviewPictures()
{
    PreviewPictures out;
    // Both pictures take 60 twips a pixel; the bottom one starts where the
    // top one ends.
    const int split = PreviewTopHeight * InvoiceWidth / PreviewWidth;
    for (int t = 0; t < 3; ++t) {
        out.top[t] = miniature(composeInvoice(sampleInvoice(t, 12, true, false)).first(), 0, PreviewTopHeight);
    }
    const Page full = composeInvoice(sampleInvoice(0, 12, true, false)).first();
    const Page stay = composeInvoice(sampleInvoice(0, 4, false, false)).first();
    const Page moved = composeInvoice(sampleInvoice(0, 4, false, true)).first();
    out.bottom[0] = miniature(full, split, PreviewBottomHeight);
    out.bottom[1] = miniature(stay, split, PreviewBottomHeight);
    out.bottom[2] = miniature(moved, split, PreviewBottomHeight);
    return out;
}

}  // namespace qor::pages
