// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// Keyboard and screen-reader behaviour shared by the window's buttons.
#include <QObject>
#include <QPushButton>

class QWidget;

namespace qor {

// Enter on a focused push button presses it as Space does: down on the
// press, one click on the release. A held key's repeats click nothing.
class EnterPressesButtons : public QObject {
    Q_OBJECT
public:
    // Watches the push buttons under root at the time of the call; buttons
    // made later are not watched: call once the controls are built.
    static void install(QWidget *root);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    explicit EnterPressesButtons(QObject *parent) : QObject(parent) {}
};

// A button that stands off the window's edge only for its hot key:
// assistive technology is told it is not showing.
class OffWindowButton : public QPushButton {
    Q_OBJECT
public:
    OffWindowButton(const QString &caption, QWidget *parent);
};

}  // namespace qor
