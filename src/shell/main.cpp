// The program: one copy per user, then the main window. The process ends when
// the last window has closed.
#include "database/filesafety.h"
#include "shell/frmqor.h"
#include "shell/session.h"
#include "settings/settingsstore.h"
#include "shell/singleinstance.h"
#include "uiservices/clsdialogs.h"
#include "uiservices/dialogservice.h"

#include <QApplication>

#include <sys/stat.h>

int main(int argc, char *argv[]) {
    // Every file and folder the program makes is the user's alone.
    ::umask(077);
    // Temporaries older than this are leftovers of an interrupted save.
    qor::files::processStartTime();
    // The books outlive the application object and with it the window.
    qor::Session session;
    QApplication app(argc, argv);
    // The application name is the class of the window under X11, which docks
    // match against StartupWMClass in the desktop entry; the desktop file name
    // is the window's app id under Wayland. The settings and the database keep
    // their QOR folders, named where they are made, whatever this name is.
    QApplication::setApplicationName(QStringLiteral("Qorvane"));
    QApplication::setApplicationDisplayName(QStringLiteral("Qorvane"));
    QApplication::setApplicationVersion(QStringLiteral(QOR_VERSION_TEXT));
    QGuiApplication::setDesktopFileName(QStringLiteral("org.qorvane.Qorvane"));

    qor::SingleInstanceGuard guard;
    if (!guard.isFirstInstance()) {
        // Nothing has been touched yet: no settings, no database.
        qor::DialogService::current().message(
            nullptr, {QMessageBox::NoIcon, qor::AppTitle, QStringLiteral("QOR is already running."),
                      QMessageBox::Ok, QMessageBox::NoButton});
        return 0;
    }

    // The common dialogs, from here to the end; their end writes what they
    // remember for the next run.
    qor::ClsDIALOGS dialogService;

    // Settings that can't be stored are told once, and the program goes on.
    qor::settings::setProblemReporter([](const QString &problem) {
        qor::DialogService::current().warning(nullptr, qor::AppTitle, problem);
    });

    auto *window = new qor::FrmQOR(session);
    dialogService.setOwner(window);
    window->setAttribute(Qt::WA_DeleteOnClose);
    window->formLoad();
    const int code = app.exec();
    dialogService.setOwner(nullptr);
    return code;
}
