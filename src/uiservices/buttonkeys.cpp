// SPDX-License-Identifier: GPL-3.0-or-later
#include "uiservices/buttonkeys.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QKeyEvent>
#include <QPushButton>

namespace qor {

namespace {
bool isEnter(const QKeyEvent *k)
{
    return (k->key() == Qt::Key_Return || k->key() == Qt::Key_Enter) && !(k->modifiers() & (Qt::ControlModifier | Qt::AltModifier));
}

class OffWindowAccessible : public QAccessibleWidget {
public:
    explicit OffWindowAccessible(QWidget *w) : QAccessibleWidget(w, QAccessible::Button) {}
    QAccessible::State state() const override
    {
        QAccessible::State s = QAccessibleWidget::state();
        s.invisible = true;
        s.offscreen = true;
        s.focusable = false;
        return s;
    }
    QString text(QAccessible::Text t) const override
    {
        return t == QAccessible::Name ? widget()->accessibleName() : QAccessibleWidget::text(t);
    }
};

QAccessibleInterface *offWindowFactory(const QString &className, QObject *object)
{
    if (className == QLatin1String(OffWindowButton::staticMetaObject.className()))
        if (auto *w = qobject_cast<QWidget *>(object)) return new OffWindowAccessible(w);
    return nullptr;
}
}  // namespace

void EnterPressesButtons::install(QWidget *root)
{
    auto *filter = new EnterPressesButtons(root);
    const auto buttons = root->findChildren<QPushButton *>();
    for (QPushButton *b : buttons) b->installEventFilter(filter);
}

bool EnterPressesButtons::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::KeyPress && event->type() != QEvent::KeyRelease) return false;
    auto *k = static_cast<QKeyEvent *>(event);
    auto *b = qobject_cast<QPushButton *>(watched);
    if (!b || !isEnter(k)) return false;
    if (k->isAutoRepeat()) return true;
    if (event->type() == QEvent::KeyPress) {
        if (b->isEnabled()) b->setDown(true);
    } else if (b->isDown()) {
        b->setDown(false);
        b->click();
    }
    return true;
}

OffWindowButton::OffWindowButton(const QString &caption, QWidget *parent) : QPushButton(caption, parent)
{
    static const bool installed = [] {
        QAccessible::installFactory(offWindowFactory);
        return true;
    }();
    Q_UNUSED(installed);
}

}  // namespace qor
