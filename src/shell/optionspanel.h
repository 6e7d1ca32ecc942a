// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// fraMain(5), Options: the database path and its file buttons, closing the
// books, the confirm-edits and expert-mode boxes, the version and help.
#include "shell/panel.h"
#include "shell/session.h"

class QCheckBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QSpinBox;

namespace qor {

class OptionsPanel : public Panel {
    Q_OBJECT
public:
    explicit OptionsPanel(AppContext &ctx, QWidget *parent = nullptr);

    // The part of ApplySettings on this panel: the path shown, then the two
    // boxes set by their keys (which stores them back through their handlers).
    void applySettings();
    // txtChangePath shows the file the settings name.
    void showDatabasePath();

    bool expertMode() const;
    bool checkToConfirmEdits() const;

    // "3.19": the program's major and minor version.
    static QString versionText();
    // lblVersionNumber shows versionText().
    void showVersion();
    // One line under the file buttons: unsaved changes were kept in path.
    void showRecoveryCopy(const QString &path);
    QLabel *recoveryCopyLine() const { return m_recoveryCopy; }
    // The list of earlier versions and safety copies, newest first.
    void showEarlierCopies(const QList<Session::EarlierCopy> &copies);
    QListWidget *versionList() const { return m_versions; }
    QPushButton *restoreVersionButton() const { return m_restoreVersion; }
    // The three limits of what is kept: newest, days, megabytes.
    QSpinBox *versionLimit(int i) const { return m_limits[size_t(i)]; }
    // A read-only file can't be saved or have its books closed.
    void showReadOnly(bool readOnly);

signals:
    // chkExpertMode was clicked (or set by code) and its setting stored: the
    // main window brings the hints in line (ApplyExpertMode).
    void expertModeClicked(bool expert);
    // cmdOpenHelp was pressed.
    void helpRequested();
    // lblCheckForNewVersion was clicked.
    void checkForNewVersionRequested();
    // cmdChangePath(index) was pressed: 0 New, 1 Open, 2 Save, 3 Save As.
    void changePathClicked(int index);
    // cmdCloseBooks was pressed.
    void closeBooksClicked();
    // cmdRestoreVersion was pressed with an earlier copy selected.
    void restoreCopyRequested(const QString &path);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QLabel *m_version = nullptr;              // lblVersionNumber
    QWidget *m_checkForNewVersion = nullptr;  // lblCheckForNewVersion
    QCheckBox *m_confirmEdits = nullptr;      // chkCheckToConfirmEdits
    QCheckBox *m_expertMode = nullptr;        // chkExpertMode
    QLineEdit *m_path = nullptr;              // txtChangePath
    QLabel *m_recoveryCopy = nullptr;         // lblRecoveryCopy
    QListWidget *m_versions = nullptr;        // lstVersions
    QPushButton *m_restoreVersion = nullptr;  // cmdRestoreVersion
    std::array<QSpinBox *, 3> m_limits{};     // spnVersionsKept, spnVersionsDays, spnVersionsMaxMB
    void buildVersionControls();
};

}  // namespace qor
