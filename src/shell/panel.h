// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// Base of the seven panels fraMain(0)..fraMain(6). A panel builds its controls
// from the roster (see roster.h), resolves the ones it uses by their control
// names ("txtField(3)", "cmdAddNew", ...) once into typed members, and lays
// them out for the window's size.
#include <QFrame>
#include <QHash>
#include <QString>
#include <vector>

class QLabel;

namespace qor {

class AppContext;

class Panel : public QFrame {
    Q_OBJECT
public:
    Panel(int index, AppContext &ctx, QWidget *parent = nullptr);
    ~Panel() override;
    int index() const { return m_index; }

    // Look-ups by name, for tests and tools; a panel's own code holds its
    // controls as typed members, resolved once with require().
    QWidget *controlWidget(const QString &name) const { return m_controls.value(name); }
    template <class T>
    T *control(const QString &name) const
    {
        return qobject_cast<T *>(m_controls.value(name));
    }

    // ArrangePanels for this panel: W and H are the panel's new width and
    // height in twips, M is W / 2 rounded half to even.
    virtual void arrange(double W, double H, int M);
    // Expert mode hides the hints; checked means expert. The base handles
    // every hint of the window that stands on this panel.
    virtual void applyExpertMode(bool expert);

    // M of the layout: W / 2 rounded to the nearest whole number, an exact
    // half to the even neighbour, kept within 16 bits.
    static int middleOf(double W);

protected:
    // The control the roster gives this panel under name, as a T. A name the
    // roster does not have, or a control of another type, is a fault in the
    // program: it stops here, at the start, rather than leave a control that
    // silently does nothing.
    template <class T = QWidget>
    T *require(const QString &name) const
    {
        T *w = qobject_cast<T *>(m_controls.value(name));
        if (!w)
            missingControl(name, T::staticMetaObject.className());
        return w;
    }
    template <class T = QWidget>
    T *require(const char *name) const { return require<T>(QString::fromLatin1(name)); }

    AppContext &ctx;
    QHash<QString, QWidget *> m_controls;

private:
    [[noreturn]] void missingControl(const QString &name, const char *type) const;
    struct Placed;  // a layout rule with its controls resolved
    std::vector<Placed> m_placed;
    std::vector<QWidget *> m_hints;  // hidden in expert mode
    QWidget *m_top = nullptr;        // lblTop(i)
    QWidget *m_expertMode1 = nullptr, *m_quickestWay = nullptr;
    QLabel *m_doubleClickToAdd = nullptr;
    int m_index;
};

}  // namespace qor
