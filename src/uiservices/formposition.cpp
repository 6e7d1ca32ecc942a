// SPDX-License-Identifier: GPL-3.0-or-later
#include "uiservices/formposition.h"

#include "settings/settingsstore.h"

#include <QGuiApplication>
#include <QRect>
#include <QScreen>
#include <QSizeF>
#include <QVariant>
#include <QWidget>

#include <algorithm>
#include <cmath>

namespace qor {

namespace {

constexpr int kNoPlace = -999;

QScreen *screenOf(const QWidget *form)
{
    QScreen *s = form ? form->screen() : nullptr;
    return s ? s : QGuiApplication::primaryScreen();
}

double twipsPerPixelX(const QWidget *form)
{
    const QScreen *s = screenOf(form);
    const double dpi = s ? s->logicalDotsPerInchX() : 96.0;
    return 1440.0 / (dpi > 0 ? dpi : 96.0);
}

double twipsPerPixelY(const QWidget *form)
{
    const QScreen *s = screenOf(form);
    const double dpi = s ? s->logicalDotsPerInchY() : 96.0;
    return 1440.0 / (dpi > 0 ? dpi : 96.0);
}

QSizeF frameTwips(const QWidget *form)
{
    // A default QSizeF is (-1, -1): no allowance must mean zero.
    const QVariant v = form->property("qorFrameTwips");
    if (!v.isValid() || !v.canConvert<QSizeF>())
        return QSizeF(0, 0);
    const QSizeF s = v.toSizeF();
    return QSizeF(std::max(0.0, s.width()), std::max(0.0, s.height()));
}

// A form that can't be sized keeps no size in the store.
bool isFixedSize(const QWidget *form)
{
    return form->minimumSize() == form->maximumSize();
}

QString number(double twips)
{
    return QString::number(std::lround(twips));
}

// The outer rectangle of the form in pixels, placed at its position.
QRect outerRect(const QWidget *form)
{
    const QSizeF frame = frameTwips(form);
    const int w = form->width() + int(std::lround(frame.width() / twipsPerPixelX(form)));
    const int h = form->height() + int(std::lround(frame.height() / twipsPerPixelY(form)));
    return QRect(form->pos(), QSize(w, h));
}

void centre(QWidget *form)
{
    const QScreen *s = QGuiApplication::primaryScreen();
    if (!s)
        return;
    const QRect screen = s->geometry();
    const QRect outer = outerRect(form);
    form->move(screen.x() + (screen.width() - outer.width()) / 2,
               screen.y() + (screen.height() - outer.height()) / 2);
}

// A place counts as visible when enough of the window lies on some screen to
// grab it with the mouse: a strip of 48 by 24 pixels, or the whole window if
// it is smaller than that.
bool liesOnAScreen(const QRect &outer)
{
    const int needW = std::min(outer.width(), 48);
    const int needH = std::min(outer.height(), 24);
    for (const QScreen *s : QGuiApplication::screens()) {
        const QRect common = outer & s->geometry();
        if (common.width() >= needW && common.height() >= needH && !common.isEmpty())
            return true;
    }
    return false;
}

int storedState(const QWidget *form)
{
    const Qt::WindowStates st = form->windowState();
    if (st & Qt::WindowMinimized)
        return 1;
    if (st & (Qt::WindowMaximized | Qt::WindowFullScreen))
        return 2;
    return 0;
}

}  // namespace

double formWidthTwips(const QWidget *form)
{
    return form->width() * twipsPerPixelX(form) + frameTwips(form).width();
}

double formHeightTwips(const QWidget *form)
{
    return form->height() * twipsPerPixelY(form) + frameTwips(form).height();
}

void setFormSizeTwips(QWidget *form, double width, double height)
{
    const QSizeF frame = frameTwips(form);
    const int w = std::max(1, int(std::lround((width - frame.width()) / twipsPerPixelX(form))));
    const int h = std::max(1, int(std::lround((height - frame.height()) / twipsPerPixelY(form))));
    form->resize(w, h);
}

void restoreFormPosition(QWidget *form)
{
    if (!form || form->objectName().isEmpty())
        return;
    const QString stem = form->objectName();
    const int state = settings::FormWindowState.get(stem, 0);

    // The normal place and size are applied even when the window opens
    // minimised or maximised, so that going back to normal lands where the
    // user last had the window rather than at the designed place.
    if (!isFixedSize(form)) {
        const int w = settings::FormWidth.get(stem, int(std::lround(formWidthTwips(form))));
        const int h = settings::FormHeight.get(stem, int(std::lround(formHeightTwips(form))));
        if (w > 0 && h > 0)
            setFormSizeTwips(form, w, h);
    }
    const int left = settings::FormLeft.get(stem, kNoPlace);
    const int top = settings::FormTop.get(stem, kNoPlace);
    if (left == kNoPlace && top == kNoPlace) {
        centre(form);
    } else {
        form->move(int(std::lround(left / twipsPerPixelX(form))),
                   int(std::lround(top / twipsPerPixelY(form))));
        // A place on a screen that has since gone would open out of sight.
        if (!liesOnAScreen(outerRect(form)))
            centre(form);
    }

    Qt::WindowStates st = form->windowState() & ~(Qt::WindowMinimized | Qt::WindowMaximized | Qt::WindowFullScreen);
    if (state == 1)
        st |= Qt::WindowMinimized;
    else if (state == 2)
        st |= Qt::WindowMaximized;
    form->setWindowState(st);
}

void saveFormPosition(QWidget *form)
{
    if (!form || form->objectName().isEmpty())
        return;
    const QString stem = form->objectName();
    const int state = storedState(form);
    settings::FormWindowState.set(stem, QString::number(state));
    // A minimised or maximised window leaves the earlier normal place in the
    // store, and a later normal window opens there.
    if (state != 0)
        return;
    settings::FormLeft.set(stem, number(form->x() * twipsPerPixelX(form)));
    settings::FormTop.set(stem, number(form->y() * twipsPerPixelY(form)));
    if (!isFixedSize(form)) {
        settings::FormWidth.set(stem, number(formWidthTwips(form)));
        settings::FormHeight.set(stem, number(formHeightTwips(form)));
    }
}

}  // namespace qor
