// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// Drives a real modal dialog from a test: once a dialog of type D is the
// active modal window, act() gets it (fill it in, accept or reject). A
// dialog that never comes, or that act() leaves open, is closed after a few
// seconds so that a failing test ends instead of waiting for a user.
#include <QApplication>
#include <QDialog>
#include <QElapsedTimer>
#include <QPointer>
#include <QTimer>
#include <functional>

namespace qor::testing {

template <class D>
void whenModal(std::function<void(D *)> act, bool *seen = nullptr)
{
    auto *timer = new QTimer;
    auto *clock = new QElapsedTimer;
    clock->start();
    timer->setInterval(10);
    QObject::connect(timer, &QTimer::timeout, [timer, clock, act, seen] {
        QWidget *modal = QApplication::activeModalWidget();
        if (auto *d = qobject_cast<D *>(modal)) {
            timer->stop();
            if (seen) *seen = true;
            act(d);
            QPointer<QDialog> left(d);
            // Whatever act() left open goes after a moment.
            QTimer::singleShot(3000, [left] { if (left && left->isVisible()) left->reject(); });
        } else if (clock->elapsed() > 5000) {
            timer->stop();
            if (auto *other = qobject_cast<QDialog *>(modal)) other->reject();
        } else {
            return;
        }
        timer->deleteLater();
        delete clock;
    });
    timer->start();
}

}  // namespace qor::testing
