#pragma once
// fraMain(5), Options: the database path and its file buttons, closing the
// books, the confirm-edits and expert-mode boxes, the version and help.
#include "shell/panel.h"

class QCheckBox;
class QLabel;
class QLineEdit;

namespace qor {

class OptionsPanel : public Panel {
    Q_OBJECT
public:
    explicit OptionsPanel(AppContext &ctx, QWidget *parent = nullptr);

    // The part of ApplySettings on this panel: the path shown, then the two
    // boxes set by their keys (which stores them back through their handlers).
    void applySettings();

    bool expertMode() const;
    bool checkToConfirmEdits() const;

    // "3.19": the program's major and minor version.
    static QString versionText();
    // lblVersionNumber shows versionText().
    void showVersion();

signals:
    // chkExpertMode was clicked (or set by code) and its setting stored: the
    // main window brings the hints in line (ApplyExpertMode).
    void expertModeClicked(bool expert);
    // cmdOpenHelp was pressed.
    void helpRequested();
    // lblCheckForNewVersion was clicked.
    void checkForNewVersionRequested();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QLabel *m_version = nullptr;            // lblVersionNumber
    QWidget *m_checkForNewVersion = nullptr;  // lblCheckForNewVersion
    QCheckBox *m_confirmEdits = nullptr;    // chkCheckToConfirmEdits
    QCheckBox *m_expertMode = nullptr;      // chkExpertMode
    QLineEdit *m_path = nullptr;            // txtChangePath
};

}  // namespace qor
