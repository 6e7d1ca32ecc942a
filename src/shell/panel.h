#pragma once
// Base of the seven panels fraMain(0)..fraMain(6). A panel builds its controls
// from the roster (see roster.h), reaches them by their control names
// ("txtField(3)", "cmdAddNew", ...) and lays them out for the window's size.
#include <QFrame>
#include <QHash>
#include <QString>

namespace qor {

class AppContext;

class Panel : public QFrame {
    Q_OBJECT
public:
    Panel(int index, AppContext &ctx, QWidget *parent = nullptr);
    int index() const { return m_index; }

    QWidget *controlWidget(const QString &name) const { return m_controls.value(name); }
    template <class T> T *control(const QString &name) const {
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
    AppContext &ctx;
    QHash<QString, QWidget *> m_controls;

private:
    int m_index;
};

}  // namespace qor
