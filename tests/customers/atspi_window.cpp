// SPDX-License-Identifier: GPL-3.0-or-later
// The main window for a screen reader to read. Prints "ready" once shown; at
// a line on its input it turns the search box on (lblCustomers reads
// "Search:") and starts a new entry (cmdUndo reads "Cancel New"), then prints
// "changed". Runs until it is ended.
#include "panelharness.h"

#include "customers/customerpanel.h"

#include <QApplication>
#include <QSocketNotifier>
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
    QSocketNotifier input(0, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &app, [&] {
        input.setEnabled(false);
        char line[16];
        if (!std::fgets(line, sizeof line, stdin)) return;
        cp->control<QAbstractButton>("cmdSearch")->click();
        QCoreApplication::processEvents();  // the search box takes the focus
        cp->control<QAbstractButton>("cmdAddNew")->click();
        std::printf("changed\n");
        std::fflush(stdout);
    });
    std::printf("ready\n");
    std::fflush(stdout);
    return app.exec();
}
