// The program: one copy per user, then the main window. The process ends when
// the last window has closed.
#include "shell/frmqor.h"

#include <QApplication>
#include <QMessageBox>

int main(int argc, char *argv[]) {
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("QOR"));
    QApplication::setApplicationDisplayName(QStringLiteral("Qorvane"));
    QApplication::setApplicationVersion(QStringLiteral(QOR_VERSION_TEXT));
    // Ties the window to its installed desktop entry (name and icon).
    QGuiApplication::setDesktopFileName(QStringLiteral("org.qorvane.Qorvane"));

    qor::SingleInstanceGuard guard;
    if (!guard.isFirstInstance()) {
        // Nothing has been touched yet: no settings, no database.
        QMessageBox box(QMessageBox::NoIcon, QStringLiteral("QOR"), QStringLiteral("QOR is already running."),
                        QMessageBox::Ok);
        box.exec();
        return 0;
    }

    auto *window = new qor::FrmQOR;
    window->setAttribute(Qt::WA_DeleteOnClose);
    window->formLoad();
    return app.exec();
}
