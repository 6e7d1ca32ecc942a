// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// The roster of the seven panels: every control of fraMain(0)..fraMain(6) as
// one row of data (name, kind, caption, place in twips, tab index, start
// state, font, colours, accessible name), and the builder that turns the rows
// of one panel into widgets. Measures are twips at the panel's smallest size,
// 8400 by 6240, in the coordinates of the panel or of the group frame that
// holds the control.
#include "uiservices/olecolor.h"

#include <QColor>
#include <QFont>
#include <QHash>
#include <QList>
#include <QPalette>
#include <QString>
#include <QStringView>
#include <span>

class QLabel;
class QWidget;

namespace qor::roster {

enum class Kind : quint8 {
    TextBox,       // QLineEdit, or QPlainTextEdit when MultiLine
    ListView,      // QTreeWidget, one column, no header, no root decoration
    TreeView,      // QTreeView
    DropDown,      // QComboBox, not editable
    Label,         // QLabel
    Button,        // QPushButton
    HoverCommand,  // qor::HoverCommand
    CheckBox,      // QCheckBox
    Option,        // QRadioButton
    GroupFrame,    // QGroupBox
    Picture,       // QLabel showing a pixmap
    ProgressBar,   // QProgressBar
};

// Start state flags.
enum Flag : quint16 {
    NoFlags = 0,
    Hidden = 1,
    ReadOnly = 2,
    Checked = 4,
    MultiLine = 8,  // multi-line with a vertical scroll bar
};

// Fonts that differ from the rule of the kind and panel.
enum class FontStyle : quint8 {
    ByRule,      // buttons Tahoma 9.75 bold; text boxes, drop-downs Tahoma 9 bold;
                 // labels on panels 0-3 Tahoma 9 bold; labels, check boxes,
                 // options and frames on panels 4-6 Arial 8.25 bold
    FieldLabel,  // Tahoma 9.75 bold (the entry labels of the customer panel)
    Title,       // Arial 14.25 bold (lblTop)
    Italic,      // Tahoma 9 italic, not bold
    Arial12,     // Arial 12 bold
    Link,        // Tahoma 9 bold underlined
    Arrow,       // Arial 18 bold
};

enum class Align : quint8 { ByRule,
                            Left,
                            Centre,
                            Right };

// Colours are stored values as in uiservices/olecolor.h (plain RGB or a
// system colour resolved when used); NoColour keeps the widget's own.
inline constexpr OleColor NoColour = 0xFFFFFFFFu;
constexpr OleColor rgb(int r, int g, int b) { return oleFromRgb(r, g, b); }

struct Entry {
    int panel;           // 0..6
    const char *parent;  // group frame holding the control, nullptr: the panel
    const char *name;    // control name, the widget's objectName
    Kind kind;
    const char *caption;           // caption or start text, "&" hot keys as written
    int left, top, width, height;  // twips
    int tab;                       // position in the window's tab order
    quint16 flags = NoFlags;
    int maxLength = 0;                 // text boxes: 0 means no limit
    const char *accessible = nullptr;  // nullptr: the caption without hot-key marks
    FontStyle font = FontStyle::ByRule;
    Align align = Align::ByRule;
    OleColor fore = NoColour;
    OleColor back = NoColour;
};

// All rows, panel by panel; a group frame comes before the controls it holds.
std::span<const Entry> entries();
// The rows of one panel (empty for an index outside 0..6).
QList<const Entry *> entriesOf(int panelIndex);
const Entry *find(QStringView name);

// Creates the controls of one panel as children of panel (or of their group
// frame), places them, sets their start state, and records them by name.
void build(int panelIndex, QWidget *panel, QHash<QString, QWidget *> &controls);

// What a row resolves to.
QFont fontOf(const Entry &e);
Qt::Alignment alignmentOf(const Entry &e);
QString accessibleNameOf(const Entry &e);
// A caption as a label shows it: "&&" becomes "&", a single "&" goes.
QString shownCaption(QStringView caption);

// Colours, resolved with the application's palette.
QColor colour(OleColor value);
// Sets the background of a text box, list, drop-down, label or picture, and
// makes its text read on it. A text colour set here is kept only as far as it
// reads on the ground below (4.5:1, hints 3:1).
void setBackColour(QWidget *w, OleColor value);
// The ground of the panels and the main window: the window colour (the
// palette's base, white by default) with the palette's text on it, so every
// label follows the desktop's scheme.
QPalette panelPalette(const QPalette &from);
// The colour the text of w is drawn on.
QColor groundOf(const QWidget *w);
// A one-line label grows to show its whole caption, from the edge it is
// aligned to; the panels call it again when a caption changes.
void fitCaption(QLabel *label);
QColor backColour(const QWidget *w);
void setForeColour(QWidget *w, OleColor value);
QColor foreColour(const QWidget *w);

// Every control built here, and every control the main window tags the same
// way, carries its tab index in this property.
inline constexpr const char *TabIndexProperty = "qorTabIndex";
int tabIndexOf(const QWidget *w);  // -1 when untagged
// Chains all tagged descendants of root (root included) with
// QWidget::setTabOrder in ascending tab index. Returns them in that order.
QList<QWidget *> chainTabOrder(QWidget *root);

// Makes "Tahoma" available to the program (registers the installed font
// files once) so that the rows' fonts resolve.
void ensureFonts();

}  // namespace qor::roster
