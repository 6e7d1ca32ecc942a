// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// frmPrintCustomers, "Customer List Print Options": what to print of each
// customer, the font, columns, blank lines and the page title. Every choice
// is stored the moment it is made; "&Print" composes the pages below the
// widgets (pages/customerlist) from the plain values these controls hold.
#include "pages/customerlist.h"
#include "pages/printout.h"

#include <QDialog>

#include <array>
#include <functional>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTimer;

namespace qor {

class KeyedList;

class FrmPrintCustomers : public QDialog {
    Q_OBJECT
public:
    // `customers` is lvwCustomers; `owner` the main window it is centred on.
    FrmPrintCustomers(const KeyedList &customers, QWidget *owner);

    // The options as the controls hold them now.
    pages::CustomerListOptions options() const;

    // Where the pages go. The program prints them on the default printer,
    // measured with its metrics; a test puts its own here.
    std::function<pages::PrintOutcome(const pages::CustomerListOptions &)> print;

    void cmdChangeFontClick();
    void cmdPrintClick();
    // What the timer does about a second after the last page.
    void finishPrint();
    QTimer *closeTimer() const { return m_timer; }

private:
    pages::PrintOutcome printOnDefaultPrinter(const pages::CustomerListOptions &o);
    void sendRightKey();

    const KeyedList &m_customers;
    bool m_loading = true;
    QLineEdit *m_txtPageTitle = nullptr;
    std::array<QCheckBox *, 5> m_chkPCL{};
    std::array<QLabel *, 2> m_lblFontName{};
    QPushButton *m_cmdChangeFont = nullptr;
    QComboBox *m_cmbColumns = nullptr;
    QComboBox *m_cmbBlankLines = nullptr;
    QPushButton *m_cmdPrint = nullptr;
    QPushButton *m_cmdCancel = nullptr;
    QTimer *m_timer = nullptr;
};

}  // namespace qor
