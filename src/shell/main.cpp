// SPDX-License-Identifier: GPL-3.0-or-later
// The program: one copy per user, then the main window. The process ends when
// the last window has closed.
#include "database/filesafety.h"
#include "settings/settingsstore.h"
#include "shell/frmqor.h"
#include "shell/instancechannel.h"
#include "shell/session.h"
#include "shell/singleinstance.h"
#include "uiservices/clsdialogs.h"
#include "uiservices/dialogservice.h"

#include <QApplication>
#include <QCommandLineParser>

#include <sys/stat.h>

int main(int argc, char *argv[])
{
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

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Bill a regular list of customers: invoices, envelopes and payments."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addPositionalArgument(QStringLiteral("FILE"), QStringLiteral("The database to open (a Qorvane .xml file)."),
                                 QStringLiteral("[FILE]"));
    parser.process(app);  // --help and --version answer and end here
    const QString file = parser.positionalArguments().value(0);

    qor::SingleInstanceGuard guard;
    if (!guard.isFirstInstance()) {
        // The running copy comes forward and opens the file itself.
        if (qor::InstanceChannel::handOver(file))
            return 0;
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
    // Listening before the load: a second start while this one still reads
    // its file is answered once the window is free.
    qor::InstanceChannel channel;
    QObject::connect(&channel, &qor::InstanceChannel::requested, window, &qor::FrmQOR::openRequested);
    channel.listen();
    window->formLoad();
    if (!file.isEmpty() && !session.declinedAtStart())
        window->openRequested(file);
    const int code = app.exec();
    dialogService.setOwner(nullptr);
    return code;
}
