// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// frmChecking: the small window that shows the scan of the invoice records
// before a delete and ends by saying whether the entry was deleted or archived.
// It stays beside the main window without blocking it.
#include <QPointer>
#include <QWidget>

class QLabel;
class QProgressBar;
class QPushButton;

namespace qor {

class FrmChecking : public QWidget {
    Q_OBJECT
public:
    explicit FrmChecking(QWidget *owner);

    void setProgress(float percent);          // staChecking, 0..100
    float progress() const;                   // the last value given to setProgress
    void setResultWord(const QString &word);  // lblStatus = "Entry " + word + "d."
    void enableOK();
    // The end of a delete: the bar at 100 and the word ("delete" or
    // "archive") in lblStatus; nothing for an empty word.
    void showOutcome(const QString &word);

    QLabel *lblStatus() const;
    QProgressBar *staChecking() const;
    QPushButton *cmdOK() const;

    ~FrmChecking() override;

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    struct Ui;
    Ui *ui;
};

// The one checking window of a main window: made on first use, unloaded by
// its OK button (it keeps its place for the next time), made again by the
// next delete.
class CheckingWindowSlot {
public:
    explicit CheckingWindowSlot(QWidget *owner) : m_owner(owner) {}
    // Shows the window, creating it when it is not loaded, and gives it back.
    FrmChecking *show();
    FrmChecking *window() const { return m_window; }  // nullptr when not loaded

private:
    QWidget *m_owner;
    QPointer<FrmChecking> m_window;
};

}  // namespace qor
