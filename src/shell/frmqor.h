// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// frmQOR: the one main window — the column of seven tab buttons, the seven
// panels, the save and abandon buttons. The books it shows belong to a
// session (see session.h).
#include "appcontext.h"
#include "billing/invoicetrees.h"
#include "database/database.h"
#include "shell/session.h"
#include "shell/singleinstance.h"
#include "shell/windowquestions.h"
#include "uiservices/frmchecking.h"

#include <QString>
#include <QTimer>
#include <QWidget>
#include <array>
#include <chrono>
#include <memory>

class QCloseEvent;
class QResizeEvent;

namespace qor {

class Panel;
class CustomerPanel;
class ProductPanel;
class BillPeriodPanel;
class PrintingPanel;
class PrintOptionsPanel;
class OptionsPanel;
class CompanyInfoPanel;
class HoverCommand;

// The outer window in twips is its client area plus this frame allowance, so
// the designed sizes give the panel sizes the layout is drawn for.
inline constexpr double FrameAllowanceWidth = 105;
inline constexpr double FrameAllowanceHeight = 510;
inline constexpr double DesignedWidth = 10110;
inline constexpr double DesignedHeight = 6765;
inline constexpr double MinimumWidth = 10065;
inline constexpr double MinimumHeight = 6750;
inline constexpr double PanelLeft = 1560;
// Unsaved changes are copied for recovery at most this long after a change.
inline constexpr std::chrono::milliseconds RecoveryDelay{20000};

class FrmQOR : public QWidget, public AppContext {
    Q_OBJECT
public:
    // A window with a session of its own.
    explicit FrmQOR(QWidget *parent = nullptr);
    // A window showing the books of session, which outlives it.
    explicit FrmQOR(Session &session, QWidget *parent = nullptr);
    ~FrmQOR() override;

    // Form_Load: places the panels, works out the regional values, loads the
    // database, restores the window's place, opens the last panel and shows
    // the window.
    void formLoad();

    // AppContext
    Database &db() override { return m_session->db(); }
    QWidget *mainWindow() override { return this; }
    FrmChecking &showCheckingWindow() override { return *m_checking.show(); }

    Session &session() { return *m_session; }
    InvoiceTrees &invoiceTrees() { return m_trees; }
    FrmChecking *checkingWindow() const { return m_checking.window(); }  // nullptr when not loaded

    // The changed state is the database's; cmdSave and cmdCancel show it.
    void showDatabaseChanged(bool changed) { db().setChanged(changed); }
    bool databaseChanged() const { return m_session->db().isChanged(); }

    void arrangePanels(int index);
    int currentPanel() const { return m_currentPanel; }
    void cmdTabClick(int index);
    void showCompanyInfoPanel() { cmdTabClick(6); }
    void loadDatabaseAndRefresh();
    // After the books were read again or replaced: the customer shown, the
    // options and the list of earlier versions.
    void refreshAfterLoad();
    // The timer that writes the recovery copy (tests look, never wait).
    const QTimer &recoveryTimer() const { return m_recoveryTimer; }
    bool saveDatabase();  // false when the save failed (the user was told)
    void applySettings();
    void applyExpertMode();

    // The buttons at the top of the window.
    void cmdSaveClick();
    void cmdCancelClick();
    // The file buttons of the Options panel.
    void cmdChangePathClick(int index);
    void cmdCloseBooksClick();
    // A later start of the program (or the command line) asks for path:
    // the window comes forward (as far as the desktop lets it) and opens
    // the file after the usual questions. Empty: only come forward. False
    // when the books did not change to it.
    bool openRequested(const QString &path);
    // Opens the user guide in the system's viewer; false when no viewer took
    // it (the user is told where the guide is).
    bool cmdOpenHelpClick();

    Panel *panel(int index) const { return m_panels.at(size_t(index)); }
    CustomerPanel *customerPanel() const;
    ProductPanel *productPanel() const;
    BillPeriodPanel *billPeriodPanel() const;
    PrintingPanel *printingPanel() const;
    PrintOptionsPanel *printOptionsPanel() const;
    OptionsPanel *optionsPanel() const;
    CompanyInfoPanel *companyInfoPanel() const;
    HoverCommand *cmdTab(int index) const { return m_cmdTab.at(size_t(index)); }
    HoverCommand *cmdSave() const { return m_cmdSave; }
    HoverCommand *cmdCancel() const { return m_cmdCancel; }
    bool isLoadingForm() const { return m_loadingForm; }
    // How often a panel was laid out (a resize must arrange one, not seven).
    int arrangeCount() const { return m_arrangeCount; }

    // Window-level values worked out at load.
    QString dateFormatString() const { return m_dateFormatString; }
    QString dateSeparator() const { return m_dateSeparator; }
    QString currencySymbol() const { return m_currencySymbol; }

protected:
    void closeEvent(QCloseEvent *event) override;    // Form_Unload
    void resizeEvent(QResizeEvent *event) override;  // Form_Resize
    void changeEvent(QEvent *event) override;

private:
    void buildFormControls();
    void chainTabOrder();
    void formResize();
    void placeholderCreated();
    void showReadOnly(bool readOnly);
    void showFileInTitle();
    void startRecoveryTimer();
    // The entry a Restore brought back, on the Bill Periods panel.
    void reopenRecoveredEntry();

    std::unique_ptr<Session> m_ownSession;
    Session *m_session = nullptr;
    // The invoice records trees of the books, shown by Bill Periods and
    // Printing, kept in step by the deletes of Customers and Products.
    InvoiceTrees m_trees;
    // The session's questions go to the user over this window.
    WindowQuestions m_questions{this, m_trees};
    CheckingWindowSlot m_checking{this};
    std::array<Panel *, 7> m_panels{};
    std::array<HoverCommand *, 7> m_cmdTab{};
    HoverCommand *m_cmdSave = nullptr;
    HoverCommand *m_cmdCancel = nullptr;
    int m_currentPanel = 0;
    bool m_loadingForm = false;
    bool m_wasMinimized = false;
    bool m_placeholderPending = false;  // the placeholder message waits for the window
    QTimer m_recoveryTimer;
    QByteArray m_recoveredEntry;
    int m_arrangeCount = 0;
    QString m_dateFormatString, m_dateSeparator, m_currencySymbol;
    struct Private;
    Private *p = nullptr;
};

}  // namespace qor
