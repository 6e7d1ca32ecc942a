// SPDX-License-Identifier: GPL-3.0-or-later
#include <QList>
// Draws the program's images. Run once after a change of design:
//   qor-make-assets <assets folder>
// The PNG files it writes are kept in the repository and compiled in through
// assets.qrc, so a normal build does not need this program.
#include <QDir>
#include <QFont>
#include <QFontMetricsF>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <QTextStream>
#include <cmath>
#include <functional>

namespace {

const QColor TabBlue(0, 0, 102);
const QColor TabGreen(50, 185, 70);

using Pictogram = std::function<void(QPainter &, const QColor &)>;

// Every pictogram is drawn in a 32 by 28 box; the tab places the box above
// the word.
constexpr qreal BoxW = 32, BoxH = 28;

QPen linePen(const QColor &c, qreal w = 1.6)
{
    QPen pen(c, w);
    pen.setCapStyle(Qt::RoundCap);
    pen.setJoinStyle(Qt::RoundJoin);
    return pen;
}

void drawPeople(QPainter &p, const QColor &c)
{
    // Two people, the one in front a little larger.
    QColor back = c;
    back.setAlpha(150);
    p.setPen(Qt::NoPen);
    p.setBrush(back);
    p.drawEllipse(QPointF(21.5, 7.5), 4.3, 4.3);
    QPainterPath shouldersBack;
    shouldersBack.moveTo(13.5, 24);
    shouldersBack.cubicTo(13.5, 16.5, 17, 13.5, 21.5, 13.5);
    shouldersBack.cubicTo(26, 13.5, 29.5, 16.5, 29.5, 24);
    shouldersBack.closeSubpath();
    p.drawPath(shouldersBack);

    // The front figure with a white outline so it stands clear of the other.
    p.setBrush(c);
    p.setPen(QPen(Qt::white, 1.4));
    p.drawEllipse(QPointF(11.5, 9.5), 5.0, 5.0);
    QPainterPath shoulders;
    shoulders.moveTo(2, 27);
    shoulders.cubicTo(2, 19, 6, 15.8, 11.5, 15.8);
    shoulders.cubicTo(17, 15.8, 21, 19, 21, 27);
    shoulders.closeSubpath();
    p.drawPath(shoulders);
}

void drawBox(QPainter &p, const QColor &c)
{
    // A parcel seen from above and to the side, with its tape.
    const QPointF top[] = {{16, 2}, {29, 8}, {16, 14}, {3, 8}};
    const QPointF left[] = {{3, 8}, {16, 14}, {16, 27}, {3, 21}};
    const QPointF right[] = {{16, 14}, {29, 8}, {29, 21}, {16, 27}};
    QColor light = c;
    light.setAlpha(70);
    QColor mid = c;
    mid.setAlpha(150);
    p.setPen(linePen(c, 1.5));
    p.setBrush(light);
    p.drawPolygon(top, 4);
    p.setBrush(mid);
    p.drawPolygon(right, 4);
    p.setBrush(c);
    p.drawPolygon(left, 4);
    // Tape across the lid and down the front.
    p.setPen(linePen(Qt::white, 1.6));
    p.drawLine(QPointF(9.5, 11), QPointF(9.5, 24));
    p.setPen(linePen(c, 1.6));
    p.drawLine(QPointF(9.5, 5), QPointF(22.5, 11));
}

void drawCalendar(QPainter &p, const QColor &c)
{
    const QRectF page(3, 4.5, 26, 22.5);
    p.setPen(linePen(c, 1.5));
    p.setBrush(Qt::white);
    p.drawRoundedRect(page, 2, 2);
    // Header band.
    p.setPen(Qt::NoPen);
    p.setBrush(c);
    QPainterPath band;
    band.addRoundedRect(QRectF(3, 4.5, 26, 6.5), 2, 2);
    band.addRect(QRectF(3, 8, 26, 3));
    p.drawPath(band.simplified());
    // Binding rings.
    p.setPen(linePen(c, 2.2));
    p.drawLine(QPointF(9.5, 2), QPointF(9.5, 6.5));
    p.drawLine(QPointF(22.5, 2), QPointF(22.5, 6.5));
    // Days: a 4 by 3 grid, one marked.
    p.setPen(Qt::NoPen);
    for (int row = 0; row < 3; ++row)
        for (int col = 0; col < 4; ++col) {
            const QRectF day(6 + col * 5.5, 13.5 + row * 4.3, 3.3, 2.8);
            p.setBrush(row == 1 && col == 2 ? c : QColor(c.red(), c.green(), c.blue(), 110));
            p.drawRect(day);
        }
}

void drawPrinter(QPainter &p, const QColor &c)
{
    p.setPen(linePen(c, 1.5));
    // Paper going in at the back.
    p.setBrush(Qt::white);
    p.drawRect(QRectF(9, 2, 14, 8));
    // Body.
    p.setBrush(c);
    p.drawRoundedRect(QRectF(2.5, 9.5, 27, 11.5), 2.2, 2.2);
    // Light on the body.
    p.setPen(Qt::NoPen);
    p.setBrush(Qt::white);
    p.drawEllipse(QPointF(25, 13), 1.3, 1.3);
    // The printed sheet coming out, with lines of text.
    p.setPen(linePen(c, 1.5));
    p.setBrush(Qt::white);
    p.drawRect(QRectF(8, 16.5, 16, 10.5));
    p.setPen(linePen(c, 1.2));
    p.drawLine(QPointF(11, 20), QPointF(21, 20));
    p.drawLine(QPointF(11, 23.5), QPointF(18, 23.5));
}

void gearPath(QPainterPath &path, QPointF centre, qreal outer, qreal inner, int teeth)
{
    const int steps = teeth * 4;
    for (int i = 0; i < steps; ++i) {
        const qreal angle = 2 * M_PI * i / steps;
        const qreal r = (i % 4 == 0 || i % 4 == 1) ? outer : inner;
        const QPointF pt(centre.x() + r * std::cos(angle), centre.y() + r * std::sin(angle));
        if (i == 0)
            path.moveTo(pt);
        else
            path.lineTo(pt);
    }
    path.closeSubpath();
}

void drawGear(QPainter &p, const QColor &c, QPointF centre, qreal outer, int teeth)
{
    QPainterPath g;
    gearPath(g, centre, outer, outer * 0.74, teeth);
    QPainterPath hole;
    hole.addEllipse(centre, outer * 0.32, outer * 0.32);
    p.drawPath(g.subtracted(hole));
}

void drawPageWithGear(QPainter &p, const QColor &c)
{
    // A page with a folded corner and lines, and a gear on its lower right.
    QPainterPath page;
    page.moveTo(4, 2);
    page.lineTo(17, 2);
    page.lineTo(23, 8);
    page.lineTo(23, 27);
    page.lineTo(4, 27);
    page.closeSubpath();
    p.setPen(linePen(c, 1.5));
    p.setBrush(Qt::white);
    p.drawPath(page);
    p.drawPolyline(QPolygonF({{17, 2}, {17, 8}, {23, 8}}));
    p.setPen(linePen(c, 1.3));
    for (qreal y : {11.0, 15.0, 19.0}) p.drawLine(QPointF(7.5, y), QPointF(y < 14 ? 19.5 : 15, y));
    p.setPen(QPen(Qt::white, 1.6));
    p.setBrush(c);
    drawGear(p, c, QPointF(22.5, 20.5), 7.6, 8);
}

void drawSliders(QPainter &p, const QColor &c)
{
    // Three tracks with their knobs at different places.
    const qreal ys[] = {6, 15, 24};
    const qreal knobs[] = {20, 10, 23};
    for (int i = 0; i < 3; ++i) {
        p.setPen(linePen(c, 2.0));
        p.drawLine(QPointF(3, ys[i]), QPointF(29, ys[i]));
        p.setPen(QPen(c, 1.6));
        p.setBrush(Qt::white);
        p.drawRoundedRect(QRectF(knobs[i] - 3, ys[i] - 3.8, 6, 7.6), 1.6, 1.6);
    }
}

void drawBuilding(QPainter &p, const QColor &c)
{
    // An office block with a lower wing, windows and a door.
    p.setPen(Qt::NoPen);
    p.setBrush(c);
    p.drawRect(QRectF(5, 2, 15, 25));
    QColor wing = c;
    wing.setAlpha(150);
    p.setBrush(wing);
    p.drawRect(QRectF(20, 10, 9, 17));
    p.setBrush(Qt::white);
    for (int row = 0; row < 4; ++row)
        for (int col = 0; col < 3; ++col) p.drawRect(QRectF(7.5 + col * 4, 4.5 + row * 4.4, 2.2, 2.6));
    for (int row = 0; row < 3; ++row) p.drawRect(QRectF(23.2, 12.5 + row * 4.4, 2.6, 2.6));
    p.drawRect(QRectF(10.5, 22, 4, 5));
    // Ground line.
    p.setPen(linePen(c, 1.5));
    p.drawLine(QPointF(2, 27.2), QPointF(30, 27.2));
}

struct Tab {
    const char *word;
    int hotIndex;  // the letter that is underlined
    Pictogram draw;
};

QFont tabFont()
{
    QFont f(QStringLiteral("Liberation Sans"));
    f.setPixelSize(12);
    f.setBold(true);
    f.setHintingPreference(QFont::PreferFullHinting);
    return f;
}

QImage tabFace(const Tab &tab, const QColor &colour)
{
    QImage img(95, 51, QImage::Format_RGB32);
    img.fill(Qt::white);
    QPainter p(&img);
    p.setRenderHint(QPainter::Antialiasing);
    p.save();
    p.translate((95 - BoxW) / 2, 2);
    tab.draw(p, colour);
    p.restore();

    const QFont f = tabFont();
    const QFontMetricsF fm(f);
    const QString word = QString::fromUtf8(tab.word);
    const qreal width = fm.horizontalAdvance(word);
    const qreal x = std::round((95 - width) / 2);
    const qreal baseline = 45;
    p.setFont(f);
    p.setPen(colour);
    p.drawText(QPointF(x, baseline), word);
    // Underline of the hot-key letter, crisp on whole pixels.
    const qreal lx = x + fm.horizontalAdvance(word.left(tab.hotIndex));
    const qreal lw = fm.horizontalAdvance(word.at(tab.hotIndex));
    p.setRenderHint(QPainter::Antialiasing, false);
    p.fillRect(QRectF(std::round(lx), baseline + 2, std::round(lw), 1), colour);
    p.end();
    // The top left pixel is the key colour of the button: keep it pure white.
    img.setPixel(0, 0, qRgb(255, 255, 255));
    return img;
}

QImage markOnGround(const QColor &ground, bool check)
{
    QImage img(24, 24, QImage::Format_RGB32);
    img.fill(ground);
    QPainter p(&img);
    // No smoothing: the ground is the key colour, and edge pixels blended
    // with it would show as a fringe when the hover colour shows through.
    QPen pen(Qt::black, 3);
    pen.setCapStyle(Qt::SquareCap);
    pen.setJoinStyle(Qt::MiterJoin);
    p.setPen(pen);
    if (check) {
        p.drawPolyline(QPolygon({{5, 12}, {9, 16}, {18, 7}}));
    } else {
        p.drawLine(QPoint(6, 6), QPoint(17, 17));
        p.drawLine(QPoint(17, 6), QPoint(6, 17));
    }
    p.end();
    img.setPixel(0, 0, ground.rgb());
    return img;
}

QImage questionMark(const QColor &blue)
{
    // The ground is white, the key colour taken from the top left pixel, so it
    // is transparent on the button; the glyph inside the disc is a white that
    // differs from the key by one step so it stays opaque.
    QImage img(48, 48, QImage::Format_RGB32);
    img.fill(Qt::white);
    QPainter p(&img);
    p.setRenderHint(QPainter::Antialiasing);
    p.setPen(Qt::NoPen);
    p.setBrush(blue);
    p.drawEllipse(QRectF(2, 2, 44, 44));
    QFont f(QStringLiteral("DejaVu Sans"));
    f.setPixelSize(34);
    f.setBold(true);
    p.setFont(f);
    p.setPen(QColor(255, 255, 254));
    p.drawText(QRectF(2, 1, 44, 46), Qt::AlignCenter, QStringLiteral("?"));
    p.end();
    img.setPixel(0, 0, qRgb(255, 255, 255));
    return img;
}

QImage printerSmall()
{
    QImage img(18, 18, QImage::Format_ARGB32);
    img.fill(Qt::transparent);
    QPainter p(&img);
    p.setRenderHint(QPainter::Antialiasing);
    const QColor body(60, 64, 72);
    p.setPen(QPen(body, 1));
    p.setBrush(Qt::white);
    p.drawRect(QRectF(4.5, 1.5, 9, 5));  // paper in
    p.setBrush(body);
    p.drawRoundedRect(QRectF(1.5, 6.5, 15, 7), 1.5, 1.5);
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(0, 170, 60));
    p.drawEllipse(QPointF(14, 8.8), 0.9, 0.9);
    p.setPen(QPen(body, 1));
    p.setBrush(Qt::white);
    p.drawRect(QRectF(4.5, 10.5, 9, 6));  // sheet out
    p.setPen(QPen(QColor(0, 0, 102), 1));
    p.drawLine(QPointF(6, 12.5), QPointF(12, 12.5));
    p.drawLine(QPointF(6, 14.5), QPointF(10, 14.5));
    return img;
}

QImage magnifier()
{
    QImage img(19, 18, QImage::Format_ARGB32);
    img.fill(Qt::transparent);
    QPainter p(&img);
    p.setRenderHint(QPainter::Antialiasing);
    p.setPen(QPen(QColor(60, 64, 72), 2));
    p.setBrush(QColor(200, 230, 255));
    p.drawEllipse(QPointF(7.5, 7.5), 5.2, 5.2);
    QPen handle(QColor(0, 0, 102), 3.2);
    handle.setCapStyle(Qt::RoundCap);
    p.setPen(handle);
    p.drawLine(QPointF(11.8, 11.8), QPointF(16.3, 16.0));
    // A glint on the glass.
    p.setPen(QPen(Qt::white, 1.2, Qt::SolidLine, Qt::RoundCap));
    p.drawArc(QRectF(4.5, 4.5, 6, 6), 100 * 16, 70 * 16);
    return img;
}

QImage logo(int w, int h)
{
    // A "Q" in a dark blue tile with a green tail: the program's mark.
    QImage img(w, h, QImage::Format_ARGB32);
    img.fill(Qt::transparent);
    QPainter p(&img);
    p.setRenderHint(QPainter::Antialiasing);
    const qreal s = h / 16.0;
    p.scale(s, s);
    p.setPen(Qt::NoPen);
    p.setBrush(TabBlue);
    p.drawRoundedRect(QRectF(0, 0, 32, 16), 3, 3);
    p.setPen(QPen(Qt::white, 2.2));
    p.setBrush(Qt::NoBrush);
    p.drawEllipse(QPointF(9, 8), 4.6, 4.6);
    QPen tail(TabGreen, 2.4);
    tail.setCapStyle(Qt::RoundCap);
    p.setPen(tail);
    p.drawLine(QPointF(11.5, 10.5), QPointF(14.6, 13.6));
    QFont f(QStringLiteral("Liberation Sans"));
    f.setPixelSize(9);
    f.setBold(true);
    p.setFont(f);
    p.setPen(Qt::white);
    p.drawText(QRectF(16, 0, 15, 16), Qt::AlignCenter, QStringLiteral("OR"));
    return img;
}

QImage appIcon(int size = 32)
{
    // The "Q" alone on a square tile, for window captions and the task bar;
    // drawn on a 32-pixel grid and scaled for the desktop's larger sizes.
    QImage img(size, size, QImage::Format_ARGB32);
    img.fill(Qt::transparent);
    QPainter p(&img);
    p.setRenderHint(QPainter::Antialiasing);
    p.scale(size / 32.0, size / 32.0);
    p.setPen(Qt::NoPen);
    p.setBrush(TabBlue);
    p.drawRoundedRect(QRectF(1, 1, 30, 30), 6, 6);
    p.setPen(QPen(Qt::white, 3.6));
    p.setBrush(Qt::NoBrush);
    p.drawEllipse(QPointF(15.5, 15), 8.2, 8.2);
    QPen tail(TabGreen, 4.0);
    tail.setCapStyle(Qt::RoundCap);
    p.setPen(tail);
    p.drawLine(QPointF(20, 19.5), QPointF(25.5, 25));
    return img;
}

bool save(const QImage &img, const QString &dir, const QString &name, QTextStream &err)
{
    const QString path = QDir(dir).filePath(name);
    if (!img.save(path, "PNG")) {
        err << "cannot write " << path << "\n";
        return false;
    }
    return true;
}

// The PAID stamp laid over a paid customer's invoice: grey ink at a slant,
// the word between two rules, worn like a rubber stamp, transparent around
// it so the lines under it stay readable. A palette image, 387 by 244.
QImage paidStamp()
{
    const int W = 387, H = 244;
    QImage img(W, H, QImage::Format_ARGB32_Premultiplied);
    img.fill(Qt::transparent);
    {
        QPainter p(&img);
        p.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
        p.translate(W / 2.0, H / 2.0);
        p.rotate(-15);
        const QColor ink(96, 96, 96);
        QFont f(QStringLiteral("Liberation Sans"));
        f.setPixelSize(104);
        f.setBold(true);
        f.setLetterSpacing(QFont::AbsoluteSpacing, 6);
        const QFontMetricsF fm(f);
        const QString word = QStringLiteral("PAID");
        const qreal tw = fm.horizontalAdvance(word) - 6;
        const qreal half = tw / 2 + 14;
        // Rules above and below, a thick one and a thin one each.
        p.setPen(Qt::NoPen);
        p.setBrush(ink);
        p.drawRect(QRectF(-half, -76, 2 * half, 9));
        p.drawRect(QRectF(-half, -62, 2 * half, 3));
        p.drawRect(QRectF(-half, 59, 2 * half, 3));
        p.drawRect(QRectF(-half, 67, 2 * half, 9));
        p.setFont(f);
        p.setPen(ink);
        p.drawText(QPointF(-tw / 2, fm.ascent() / 2 - fm.descent() / 2 + 4), word);
    }
    // Wear: specks where the ink didn't take, from a fixed seed so the file
    // comes out the same on every run.
    quint32 seed = 20240611u;
    auto next = [&seed] {
        seed = seed * 1664525u + 1013904223u;
        return seed >> 8;
    };
    for (int n = 0; n < 2600; ++n) {
        const int x = int(next() % W), y = int(next() % H);
        const int r = int(next() % 3);
        for (int dy = -r; dy <= r; ++dy) {
            for (int dx = -r; dx <= r; ++dx) {
                const int px = x + dx, py = y + dy;
                if (px < 0 || py < 0 || px >= W || py >= H || dx * dx + dy * dy > r * r)
                    continue;
                img.setPixel(px, py, 0);
            }
        }
    }
    // Ink a little uneven, in a palette of greys: six shades, each at eight
    // strengths of cover (the outline's smoothing), and index 0 clear.
    QImage out(W, H, QImage::Format_Indexed8);
    QList<QRgb> palette{qRgba(0, 0, 0, 0)};
    for (int s = 0; s < 6; ++s)
        for (int a = 1; a <= 8; ++a)
            palette << qRgba(80 + 9 * s, 80 + 9 * s, 80 + 9 * s, a * 210 / 8);
    out.setColorTable(palette);
    for (int y = 0; y < H; ++y) {
        const QRgb *line = reinterpret_cast<const QRgb *>(img.constScanLine(y));
        uchar *dst = out.scanLine(y);
        for (int x = 0; x < W; ++x) {
            const int a = (qAlpha(line[x]) * 8 + 127) / 255;
            dst[x] = a == 0 ? 0 : uchar(1 + int(next() % 6) * 8 + (a - 1));
        }
    }
    return out;
}

}  // namespace

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    QTextStream err(stderr);
    if (argc < 2) {
        err << "usage: qor-make-assets <folder>\n";
        return 2;
    }
    const QString dir = QString::fromLocal8Bit(argv[1]);
    QDir().mkpath(dir + QStringLiteral("/images"));
    const QString out = dir + QStringLiteral("/images");

    const Tab tabs[] = {
        {"Customers", 0, drawPeople},
        {"Products", 0, drawBox},
        {"Bill Periods", 0, drawCalendar},
        {"Printing", 3, drawPrinter},
        {"Print Options", 8, drawPageWithGear},
        {"Options", 0, drawSliders},
        {"Company Info", 8, drawBuilding},
    };
    bool ok = true;
    for (int i = 0; i < 7; ++i) {
        ok &= save(tabFace(tabs[i], TabBlue), out, QStringLiteral("tab%1.png").arg(i), err);
        ok &= save(tabFace(tabs[i], TabGreen), out, QStringLiteral("tab%1_hover.png").arg(i), err);
    }
    ok &= save(markOnGround(QColor(0, 192, 0), true), out, QStringLiteral("check.png"), err);
    ok &= save(markOnGround(QColor(255, 0, 0), false), out, QStringLiteral("cross.png"), err);
    ok &= save(questionMark(QColor(30, 90, 210)), out, QStringLiteral("help.png"), err);
    ok &= save(questionMark(QColor(10, 45, 140)), out, QStringLiteral("help_hover.png"), err);
    ok &= save(printerSmall(), out, QStringLiteral("printer.png"), err);
    ok &= save(magnifier(), out, QStringLiteral("search.png"), err);
    ok &= save(logo(32, 16), out, QStringLiteral("logo.png"), err);
    ok &= save(appIcon(), out, QStringLiteral("appicon.png"), err);
    // The installed icon in the desktop's hicolor theme, one file per size.
    for (int size : {16, 24, 32, 48, 64, 128, 256}) {
        const QString folder = dir + QStringLiteral("/icons/%1x%1").arg(size);
        QDir().mkpath(folder);
        ok &= save(appIcon(size), folder, QStringLiteral("org.qorvane.Qorvane.png"), err);
    }
    ok &= save(paidStamp(), out, QStringLiteral("paid.png"), err);
    return ok ? 0 : 1;
}
