#pragma once
// Keyboard and screen-reader behaviour shared by the window's buttons.
#include <QObject>

class QWidget;

namespace qor {

// Enter on a focused push button presses it as Space does: down on the
// press, one click on the release. A held key's repeats click nothing.
class EnterPressesButtons : public QObject {
    Q_OBJECT
public:
    // Watches every push button under root, now and created later is not
    // covered: call after the controls are built.
    static void install(QWidget *root);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    explicit EnterPressesButtons(QObject *parent) : QObject(parent) {}
};

// Marks a control that stands off the window's edge only for its hot key:
// assistive technology is told it is not showing.
void markOffWindow(QWidget *w);

}  // namespace qor
