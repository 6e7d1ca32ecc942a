#pragma once
// frmChecking: the small window that shows the scan of the invoice records
// before a delete and ends by saying whether the entry was deleted or archived.
// It stays beside the main window without blocking it.
#include <QWidget>

class QLabel;
class QProgressBar;
class QPushButton;

namespace qor {

class FrmChecking : public QWidget {
    Q_OBJECT
public:
    // Shows the one window (creating it on first use) and gives it back.
    static FrmChecking *showChecking(QWidget *owner);
    static FrmChecking *existing();  // the window if loaded, else nullptr

    void setProgress(float percent);         // staChecking, 0..100
    float progress() const;                  // the last value given to setProgress
    void setResultWord(const QString &word); // lblStatus = "Entry " + word + "d."
    void enableOK();

    QLabel *lblStatus() const;
    QProgressBar *staChecking() const;
    QPushButton *cmdOK() const;

    ~FrmChecking() override;

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    explicit FrmChecking(QWidget *owner);
    struct Ui;
    Ui *ui;
};

}  // namespace qor
