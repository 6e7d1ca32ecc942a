// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// A printed page as data: positioned text, line, box and picture elements,
// measured in twips (1440 to the inch) from the page's top left corner.
// Invoices, envelopes and the customer list are all pages of this kind: a
// composer fills one from plain values and one painter draws it on any device.
#include <QColor>
#include <QHash>
#include <QList>
#include <QString>

#include <memory>

namespace qor::pages {

enum class Kind { Text,
                  Line,
                  Box,
                  Picture };
enum class Align { Left,
                   Right,
                   Centre };
// How a text element's box follows its text. Fixed keeps the box and wraps
// inside it; the other two size the box to the text (no wrapping) and keep the
// named edge where it is.
enum class AutoSize { Fixed,
                      KeepLeft,
                      KeepRight };

struct Element {
    QString name;  // as the templates name it: "lblPS(3)", "lneAboveTotal"
    Kind kind = Kind::Text;

    // Text, box and picture.
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;
    // Line.
    int x1 = 0;
    int y1 = 0;
    int x2 = 0;
    int y2 = 0;

    // Text: shown literally, an ampersand is an ampersand. Line breaks
    // (CR LF, LF or CR) start new lines; long lines wrap at word boundaries
    // inside the width unless the element sizes itself.
    QString text;
    QString fontName = QStringLiteral("Arial");
    double fontSize = 9.75;  // points
    bool bold = false;
    bool italic = false;
    Align align = Align::Left;
    AutoSize autoSize = AutoSize::Fixed;
    bool opaque = false;  // white behind the text, hiding what lies under it

    // Text colour, or the line's or the box border's colour.
    QColor colour = Qt::black;
    int penPixels = 1;     // lines and box borders, at 15 twips a pixel
    bool rounded = false;  // box: rounded rectangle

    // Picture: a key that the painter resolves to an image ("paid").
    QString picture;

    bool visible = true;
};

// A page keeps its elements in drawing order: what comes later lies on top.
class Page {
public:
    Page() = default;
    Page(QString name, int width, int height, QList<Element> elements);

    const QString &name() const { return m_name; }
    int width() const { return m_width; }
    int height() const { return m_height; }
    bool isLandscape() const { return m_width > m_height; }

    const QList<Element> &elements() const { return m_elements; }
    QList<Element> &elements() { return m_elements; }

    // The element of that name, or nullptr.
    Element *find(const QString &name);
    const Element *find(const QString &name) const;
    // The element of that name; a name the page doesn't have is a programming
    // error (asserts), and gives a detached dummy in release builds.
    Element &at(const QString &name);
    const Element &at(const QString &name) const;
    // Indexed sets: at("lblPS", 3) is "lblPS(3)".
    Element &at(const QString &set, int index);
    const Element &at(const QString &set, int index) const;

    // Adds an element on top of the others.
    Element &add(Element element);

private:
    void reindex();

    QString m_name;
    int m_width = 0;
    int m_height = 0;
    QList<Element> m_elements;
    // Name to position; shared by copies of a page until one adds an element,
    // so copying a template for each invoice stays cheap.
    std::shared_ptr<const QHash<QString, int>> m_index;
};

inline QString indexedName(const QString &set, int index)
{
    return set + u'(' + QString::number(index) + u')';
}

}  // namespace qor::pages
