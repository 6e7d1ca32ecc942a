// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// The user guide: the copy installed with the program when there is one,
// else the copy built into the program, written out for the viewer.
#include <QCoreApplication>
#include <QDesktopServices>
#include <QString>
#include <QUrl>

#include <functional>

class QWidget;

namespace qor::userguide {

// The guide installed with a program that lives in programFolder (for
// /usr/bin, /usr/share/doc/qorvane/qorvane-guide.html); empty when there is
// none, as in a build tree or where the system leaves out documentation.
QString installedCopy(const QString &programFolder);

// Writes the guide built into the program to the user's cache folder and
// returns its path; empty, with the reason in why, when it can't.
QString writtenCopy(QString *why = nullptr);

using Opener = std::function<bool(const QUrl &)>;

// Shows the guide in the desktop's viewer. When no viewer can be started,
// or no copy can be had, the user is told where the guide is (or why there
// is none) and false is returned.
bool open(
    QWidget *owner, const QString &programFolder = QCoreApplication::applicationDirPath(),
    const Opener &opener = [](const QUrl &url) { return QDesktopServices::openUrl(url); });

}  // namespace qor::userguide
