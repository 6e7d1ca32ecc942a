// The main window in a known state for a screen reader to read: a new entry
// started (cmdUndo reads "Cancel New") and the search box on (lblCustomers
// reads "Search:"). Prints "ready" and runs until it is ended.
#include "panelharness.h"

#include "customers/customerpanel.h"

#include <QApplication>
#include <cstdio>

using namespace qor;
using namespace qor::testing;

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    Sandbox box;
    writeDatabase(box.db, {{1, "Ann", "Lee"}, {2, "Bob", "Moss"}});
    ScriptedDialogs dialogs;
    auto w = openWindow(0);
    CustomerPanel *cp = w->customerPanel();
    cp->control<QAbstractButton>("cmdAddNew")->click();
    cp->control<QAbstractButton>("cmdSearch")->click();
    std::printf("ready\n");
    std::fflush(stdout);
    return app.exec();
}
