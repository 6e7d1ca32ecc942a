// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// frmStatements: every customer who owes, with the aging of what they owe,
// opened from the Printing panel. Sort by any column, find a name by typing
// its start, select one or many; print or save their statements, or reminder
// letters for those long past due. It shows itself beside the main window
// and follows the database while it is open.
#include "pages/printout.h"
#include "printing/mailruns.h"
#include "statements/statementrun.h"

#include <QDialog>

#include <functional>
#include <vector>

class QAbstractButton;
class QCheckBox;
class QDateEdit;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QSpinBox;
class QTableView;

namespace qor {

class Database;

namespace statements {

class StatementsModel;

// Sends the pages of one run as one job, drawn as they come; the program
// prints on the default printer, a test puts its own here.
using PrintPages = std::function<pages::PrintOutcome(const pages::PageSource &)>;
PrintPages &statementPrinter();

// Prints the accounts' statements (or reminders) as one job, with the answers
// of the invoice run: no printer offers a PDF instead, a refused job is told.
// False when nothing went out.
bool printStatements(QWidget *owner, const Database &db, const std::vector<Account> &accounts, const RunValues &run);
// Asks for a file, or with eachFile for a folder, and writes the PDF there.
// False when cancelled or not written (then told).
bool saveStatements(QWidget *owner, const Database &db, const std::vector<Account> &accounts, const RunValues &run,
                    bool eachFile);

// Before the books are closed: when customers still owe, says how much by how
// many, that those balances stay in the old file, and offers to print or save
// their statements first. False when the user would rather not close now.
bool offerStatementsBeforeClosingBooks(QWidget *owner, const Database &db, const QString &oldFile);

class FrmStatements : public QDialog {
    Q_OBJECT
public:
    FrmStatements(const Database &db, QWidget *owner = nullptr);
    ~FrmStatements() override;

    QTableView *view() const { return m_view; }
    StatementsModel *model() const { return m_model; }
    QDateEdit *asOfEdit() const { return m_asOf; }
    QLineEdit *findEdit() const { return m_find; }
    QSpinBox *daysEdit() const { return m_days; }
    QPlainTextEdit *letterEdit() const { return m_letter; }
    QCheckBox *eachFileBox() const { return m_eachFile; }

    // Works the list out again from the database, for the day shown.
    void refresh();
    // The customer numbers of the selected rows, in the order shown.
    QStringList selectedCids() const;
    void selectCids(const QStringList &cids);

    // The buttons.
    void selectAllOverdue();
    void printSelected();
    void saveSelected();
    // Selects the customers due a reminder, then prints or saves their letters.
    void reminders();
    // The statement (reminder: the letter) of each account by e-mail; the
    // customers whose message was sent are unselected.
    void emailSelected();
    void email(const std::vector<Account> &accounts, const RunValues &run);
    // A print preview of the customer's statement on that row.
    void showPreview(int row);

    // How the preview is shown: modally in the program; a test looks at it
    // without blocking.
    std::function<void(QWidget *)> showPreviewWindow;
    mailruns::EmailRun emailRun;

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    void findName(const QString &prefix);
    std::vector<Account> selectedAccounts(bool reminder) const;
    const Database &m_db;
    StatementsModel *m_model = nullptr;
    QTableView *m_view = nullptr;
    QDateEdit *m_asOf = nullptr;
    QLineEdit *m_find = nullptr;
    QLabel *m_summary = nullptr;
    QAbstractButton *m_cmdSelectOverdue = nullptr;
    QAbstractButton *m_cmdPrint = nullptr;
    QAbstractButton *m_cmdSave = nullptr;
    QAbstractButton *m_cmdEmail = nullptr;
    QCheckBox *m_eachFile = nullptr;
    QSpinBox *m_days = nullptr;
    QPlainTextEdit *m_letter = nullptr;
    QAbstractButton *m_cmdReminders = nullptr;
};

}  // namespace statements
}  // namespace qor
