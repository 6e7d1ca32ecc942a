#pragma once
// What a panel may ask of the main window. Panels never reach into each
// other's widgets; everything shared goes through here.
#include <QString>

class QWidget;

namespace qor {

class Database;

class AppContext {
public:
    virtual ~AppContext() = default;
    virtual Database &db() = 0;
    // The changed state is the visibility of cmdSave and cmdCancel.
    virtual void showDatabaseChanged(bool changed) = 0;
    virtual bool databaseChanged() const = 0;
    virtual void arrangePanels(int index) = 0;
    // Rebuilds both product lists (the catalogue panel's and the bill period panel's).
    virtual void refreshProductList() = 0;
    virtual int currentPanel() const = 0;
    // The window the panels live in (owner of message boxes).
    virtual QWidget *mainWindow() = 0;
};

}  // namespace qor
