// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// frmUpdate: the notice that a newer version exists. DOWNLOAD starts the
// updater q-autoup from the program's own folder and closes the program. The
// main window refuses to close while this form shows.
#include <QString>
#include <QWidget>

class QLabel;
class QPushButton;

namespace qor::maintenance {

// The updater's file name, in the program's own folder.
inline constexpr char UpdaterName[] = "q-autoup";

// The updater's absolute path for a program folder.
QString updaterPath(const QString &programFolder);
// Starts the updater of programFolder as a process of its own, in that folder,
// without arguments, a shell or a search of PATH. False when it could not be
// started (nobody looks: a missing updater changes nothing else).
bool startUpdater(const QString &programFolder);

class FrmUpdate : public QWidget {
    Q_OBJECT
public:
    // AlwaysOnTop(frmUpdate, frmQOR) and show, without blocking the owner.
    // A form already loaded is brought forward.
    static FrmUpdate *showFor(QWidget *owner);
    static FrmUpdate *existing();  // the form if loaded, else nullptr
    // Loaded and visible: the main window's close is refused.
    static bool isShowing();

    bool downloadStarted() const { return m_downloadStarted; }
    QPushButton *cmdDownload() const { return m_cmdDownload; }

protected:
    void closeEvent(QCloseEvent *event) override;  // Form_Unload

private:
    explicit FrmUpdate(QWidget *owner);
    void cmdDownloadClick();

    QPushButton *m_cmdDownload = nullptr;
    bool m_downloadStarted = false;
};

}  // namespace qor::maintenance
