// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// What a panel may ask of the main window. Panels never reach into each
// other's widgets: they follow the database's signals, and what is shared at
// window level goes through here.
class QWidget;

namespace qor {

class Database;
class FrmChecking;

class AppContext {
public:
    virtual ~AppContext() = default;
    virtual Database &db() = 0;
    // The window the panels live in (owner of message boxes).
    virtual QWidget *mainWindow() = 0;
    // The checking window of the deletes, shown (made when not loaded).
    virtual FrmChecking &showCheckingWindow() = 0;
};

}  // namespace qor
