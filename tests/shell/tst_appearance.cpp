// SPDX-License-Identifier: GPL-3.0-or-later
// Every panel in every mode as the user sees it: each caption fits its control
// by the font's own metrics (CTest runs this again scaled and with larger
// text), and each text reads on its ground under a light scheme, Fusion with a
// dark palette and qt6ct's "darker". Contrast is taken from the palette roles
// each control draws its text and its ground with.
#include "../customers/panelharness.h"
#include "billperiods/invoicetreeview.h"
#include "shell/panel.h"
#include "shell/roster.h"
#include "uiservices/hovercommand.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QRadioButton>
#include <QSettings>
#include <QStyleOptionButton>
#include <functional>
using namespace qor;
using namespace qor::testing;
using namespace Qt::StringLiterals;
using Check = std::function<void(QWidget *, const QString &, QStringList &)>;
class TstAppearance : public QObject {
    Q_OBJECT
    Sandbox sb;

    // Each panel as it opens with the hints on, then the three entry modes.
    QStringList overAllModes(const Check &check)
    {
        writeDatabase(sb.db, {{1, "Ann", "Lee"}}, {{1, "Lawn care", "90.50"}}, {{1, {"1"}}});
        settings::ExpertMode.set(false);
        ScriptedDialogs dialogs;
        auto w = openWindow(0);
        QStringList problems;
        const std::pair<int, const char *> modes[] = {{0, nullptr}, {1, nullptr}, {2, nullptr}, {3, nullptr}, {4, nullptr}, {5, nullptr}, {6, nullptr}, {0, "cmdAddNew"}, {1, "cmdAddNewItem"}, {2, "cmdAddNewBP"}};
        for (const auto &[panel, entry] : modes) {
            w->cmdTabClick(panel);
            if (entry) w->panel(panel)->control<QAbstractButton>(QString::fromLatin1(entry))->click();
            const QString mode = u"panel %1%2: "_s.arg(panel).arg(entry ? " in entry" : "");
            for (QWidget *c : w->panel(panel)->findChildren<QWidget *>())
                if (c->isVisible() && roster::find(c->objectName())) check(c, mode, problems);
        }
        discard(w);
        return problems;
    }
private slots:
    void captionsFit()
    {
        const QStringList problems = overAllModes([](QWidget *c, const QString &mode, QStringList &out) {
            QString text;
            QRect area = c->contentsRect();
            int flags = Qt::TextShowMnemonic | Qt::TextWordWrap;
            QStyleOptionButton o;
            o.initFrom(c);
            if (auto *l = qobject_cast<QLabel *>(c); l && l->pixmap().isNull()) {
                text = l->text();
                flags = l->wordWrap() ? Qt::TextWordWrap : 0;
            } else if (auto *b = qobject_cast<QPushButton *>(c)) {
                text = o.text = b->text();
                area = c->style()->subElementRect(QStyle::SE_PushButtonContents, &o, c);
            } else if (auto *x = qobject_cast<QCheckBox *>(c)) {
                text = o.text = x->text();
                area = c->style()->subElementRect(QStyle::SE_CheckBoxContents, &o, c);
            } else if (qobject_cast<QRadioButton *>(c) && c->sizeHint().width() > c->width()) {
                out << mode + c->objectName();
            } else if (auto *g = qobject_cast<QGroupBox *>(c)) {
                text = g->title();
                area.adjust(8, 0, -8, 0);
            }
            if (text.isEmpty()) return;
            const QRect need = c->fontMetrics().boundingRect(QRect(area.topLeft(), QSize(area.width(), 1 << 16)), flags, text);
            if (need.width() > area.width() || need.height() > area.height() + 1)
                out << mode + u"%1 \"%2\" needs %3x%4, has %5x%6"_s.arg(c->objectName(), text).arg(need.width()).arg(need.height()).arg(area.width()).arg(area.height());
        });
        QVERIFY2(problems.isEmpty(), qPrintable(problems.join(u'\n')));
    }
    void textReads_data()
    {  // the schemes
        QTest::addColumn<QPalette>("palette");
        QTest::newRow("light") << QApplication::style()->standardPalette();
        QPalette dark(QColor(53, 53, 53), QColor(35, 35, 35));  // button, window; the rest derived
        for (auto [role, colour] : {std::pair{QPalette::Base, QColor(35, 35, 35)}, {QPalette::Text, QColor(Qt::white)}, {QPalette::WindowText, QColor(Qt::white)}, {QPalette::ButtonText, QColor(Qt::white)}, {QPalette::Highlight, QColor(42, 130, 218)}, {QPalette::ToolTipBase, QColor(25, 25, 25)}, {QPalette::ToolTipText, QColor(Qt::white)}})
            dark.setColor(role, colour);
        QTest::newRow("Fusion dark") << dark;
        // qt6ct keeps a scheme as the palette's roles in their order, per group.
        QSettings scheme(u"/usr/share/qt6ct/colors/darker.conf"_s, QSettings::IniFormat);
        QPalette darker;
        const std::pair<QPalette::ColorGroup, QString> groups[] = {
            {QPalette::Active, u"active"_s}, {QPalette::Disabled, u"disabled"_s}, {QPalette::Inactive, u"inactive"_s}};
        for (const auto &[group, key] : groups) {
            const QStringList colours = scheme.value(u"ColorScheme/%1_colors"_s.arg(key)).toStringList();
            for (int role = 0; role < colours.size() && role < QPalette::NColorRoles; ++role)
                darker.setColor(group, QPalette::ColorRole(role), QColor(colours[role].trimmed()));
        }
        QVERIFY2(scheme.value(u"ColorScheme/active_colors"_s).toStringList().size() >= 20, "qt6ct is not installed");
        QTest::newRow("qt6ct darker") << darker;
    }
    void textReads()
    {
        QFETCH(QPalette, palette);
        QApplication::setPalette(palette);
        const QStringList problems = overAllModes([](QWidget *c, const QString &mode, QStringList &out) {
            auto *l = qobject_cast<QLabel *>(c);
            if ((l && l->text().isEmpty()) || qobject_cast<HoverCommand *>(c) || !(l || qobject_cast<QAbstractButton *>(c) || qobject_cast<QLineEdit *>(c) || qobject_cast<QGroupBox *>(c)))
                return;
            const bool hint = roster::find(c->objectName())->fore == syscolor::GrayText;
            const QColor text = c->palette().color(QPalette::Active, c->foregroundRole()), ground = roster::groundOf(c);
            if (contrastRatio(text, ground) < (hint ? HintContrast : TextContrast))
                out << mode + u"%1 %2 on %3: %4"_s.arg(c->objectName(), text.name(), ground.name())
                                  .arg(contrastRatio(text, ground), 0, 'f', 2);
        });
        // The tree's node colours (owing rows red where that reads), on the list and selected.
        for (NodeColour n : {NodeColour::Owes, NodeColour::WindowText, NodeColour::GreyText})
            for (bool selected : {false, true}) {
                const QColor ground = palette.color(selected ? QPalette::Highlight : QPalette::Base);
                const double ratio = contrastRatio(nodeTextColour(n, palette, selected), ground);
                QVERIFY2(ratio >= (n == NodeColour::GreyText ? HintContrast : TextContrast), qPrintable(QString::number(ratio)));
            }
        QApplication::setPalette(QApplication::style()->standardPalette());
        QVERIFY2(problems.isEmpty(), qPrintable(problems.join(u'\n')));
    }
};

QTEST_MAIN(TstAppearance)
#include "tst_appearance.moc"
