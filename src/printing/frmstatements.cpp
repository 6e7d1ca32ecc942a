// SPDX-License-Identifier: GPL-3.0-or-later
#include "printing/frmstatements.h"

#include "database/database.h"
#include "database/filesafety.h"
#include "database/regional.h"
#include "mailgui/emailrun.h"
#include "pages/painter.h"
#include "pages/pdfoutput.h"
#include "statements/statementsmodel.h"
#include "uiservices/dialogservice.h"
#include "uiservices/formposition.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QDateEdit>
#include <QFileInfo>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPlainTextEdit>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <QPushButton>
#include <QSpinBox>
#include <QTableView>
#include <QVBoxLayout>

#include <QHash>
#include <QSet>

namespace qor::statements {

namespace {

const QString PrinterError = QStringLiteral("Printer Error");

QString plural(qsizetype n, const char *one, const char *many)
{
    return QString::number(n) + u' ' + QLatin1String(n == 1 ? one : many);
}

}  // namespace

PrintPages &statementPrinter()
{
    static PrintPages print = [](const pages::PageSource &pages) {
        return pages::printToDefaultPrinter(pages, QStringLiteral("Statements"));
    };
    return print;
}

bool printStatements(QWidget *owner, const Database &db, const std::vector<Account> &accounts, const RunValues &run)
{
    if (accounts.empty()) return false;
    // Composed customer by customer as the printer takes them: ten thousand
    // statements never stand in memory at once.
    const pages::PrintOutcome out = statementPrinter()(pageSource(db, accounts, run));
    DialogService &dialogs = DialogService::current();
    const QString what = run.reminder ? QStringLiteral("reminders") : QStringLiteral("statements");
    if (out.status == pages::PrintStatus::NoPrinter) {
        const QMessageBox::StandardButton answer = dialogs.message(
            owner, {QMessageBox::Question, QStringLiteral("No Printer"),
                    QStringLiteral("There is no printer on this system.\r\n\r\nWould you like to save the %1 as a PDF "
                                   "file instead?")
                        .arg(what),
                    QMessageBox::Yes | QMessageBox::No, QMessageBox::Yes});
        return answer == QMessageBox::Yes && saveStatements(owner, db, accounts, run, false);
    }
    if (out.status == pages::PrintStatus::Failed) {
        dialogs.critical(owner, PrinterError,
                         QStringLiteral("An error has occoured: \n") + out.reason +
                             QStringLiteral("\nThe printing job has been canceled, please try again."));
        return false;
    }
    return true;
}

bool saveStatements(QWidget *owner, const Database &db, const std::vector<Account> &accounts, const RunValues &run,
                    bool eachFile)
{
    if (accounts.empty()) return false;
    DialogService &dialogs = DialogService::current();
    const QString what = run.reminder ? QStringLiteral("Reminders") : QStringLiteral("Statements");
    QString error;
    if (eachFile) {
        const QString folder = dialogs.folder(owner, QStringLiteral("Save %1 as PDF, One File per Customer").arg(what));
        if (folder.isEmpty()) return false;
        if (writeEachFile(db, accounts, run, folder, &error) == int(accounts.size())) return true;
    } else {
        QString file = dialogs.saveFileName(owner, {QStringLiteral("Save %1 as PDF").arg(what), QString(),
                                                    QStringLiteral("PDF (*.pdf)")});
        if (file.isEmpty()) return false;
        if (QFileInfo(file).suffix().isEmpty()) file += QStringLiteral(".pdf");
        if (writeOneFile(db, accounts, run, file, &error)) return true;
    }
    dialogs.critical(owner, PrinterError, error);
    return false;
}

bool offerStatementsBeforeClosingBooks(QWidget *owner, const Database &db, const QString &oldFile)
{
    const QDate today = QDate::currentDate();
    Report owed = report(db, today, Detail::Records);
    if (owed.accounts.empty()) return true;
    DialogService &dialogs = DialogService::current();
    const QString text =
        (owed.accounts.size() == 1 ? QStringLiteral("1 customer still owes %2.")
                                   : QStringLiteral("%1 customers still owe %2 in all."))
            .arg(owed.accounts.size())
            .arg(owed.total.toCurrencyText()) +
        QStringLiteral(
            "\r\n\r\nThose balances stay in the old file, \"%1\"; the new file starts without them.\r\n\r\n"
            "Would you like to print or save their statements first?")
            .arg(QFileInfo(oldFile).fileName());
    DialogService::Message m{QMessageBox::Question, QStringLiteral("Money Still Owed"), text,
                             QMessageBox::Yes | QMessageBox::Save | QMessageBox::No | QMessageBox::Cancel,
                             QMessageBox::Yes};
    m.captions = {{QMessageBox::Yes, QStringLiteral("&Print Them")},
                  {QMessageBox::Save, QStringLiteral("&Save as PDF")},
                  {QMessageBox::No, QStringLiteral("&Go On Without")}};
    const RunValues run = storedRunValues(db, today, false);
    switch (dialogs.message(owner, m)) {
    case QMessageBox::Yes: return printStatements(owner, db, owed.accounts, run);
    case QMessageBox::Save: return saveStatements(owner, db, owed.accounts, run, oneFilePerCustomer());
    case QMessageBox::No: return true;
    default: return false;
    }
}

// ---------------------------------------------------------------- the window

FrmStatements::FrmStatements(const Database &db, QWidget *owner) : QDialog(owner), m_db(db)
{
    setObjectName(QStringLiteral("frmStatements"));
    setWindowTitle(QStringLiteral("Statements"));
    setModal(false);
    resize(1000, 640);

    m_asOf = new QDateEdit(QDate::currentDate(), this);
    m_asOf->setObjectName(QStringLiteral("dtpAsOf"));
    m_asOf->setCalendarPopup(true);
    m_asOf->setDisplayFormat(regional::dateFormatString().replace(QLatin1String("mm"), QLatin1String("MM")));
    m_find = new QLineEdit(this);
    m_find->setObjectName(QStringLiteral("txtFind"));
    m_find->setPlaceholderText(QStringLiteral("Type the start of a name"));
    m_find->setClearButtonEnabled(true);
    m_summary = new QLabel(this);
    m_summary->setObjectName(QStringLiteral("lblSummary"));

    m_model = new StatementsModel(this);
    m_view = new QTableView(this);
    m_view->setObjectName(QStringLiteral("tblStatements"));
    m_view->setAccessibleName(QStringLiteral("Customers who owe"));
    m_view->setModel(m_model);
    m_view->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_view->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_view->setWordWrap(false);
    m_view->setAlternatingRowColors(true);
    m_view->verticalHeader()->hide();
    // Rows of one height, columns of set widths: nothing is measured row by
    // row, so ten thousand customers show at once.
    m_view->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    m_view->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 6);
    m_view->horizontalHeader()->setSectionResizeMode(QHeaderView::Interactive);
    m_view->horizontalHeader()->setStretchLastSection(true);
    m_view->setColumnWidth(StatementsModel::Name, 220);
    for (int c = StatementsModel::Total; c < StatementsModel::OldestDue; ++c) m_view->setColumnWidth(c, 88);
    m_view->horizontalHeader()->setSortIndicator(StatementsModel::Name, Qt::AscendingOrder);
    m_view->setSortingEnabled(true);

    m_cmdSelectOverdue = new QPushButton(QStringLiteral("Select all &overdue"), this);
    m_cmdSelectOverdue->setObjectName(QStringLiteral("cmdSelectOverdue"));
    m_cmdPrint = new QPushButton(QStringLiteral("&Print Selected"), this);
    m_cmdPrint->setObjectName(QStringLiteral("cmdPrintStatements"));
    m_cmdSave = new QPushButton(QStringLiteral("Save Selected as P&DF"), this);
    m_cmdSave->setObjectName(QStringLiteral("cmdSaveStatements"));
    m_cmdEmail = new QPushButton(QStringLiteral("E-&mail Selected"), this);
    m_cmdEmail->setObjectName(QStringLiteral("cmdEmailStatements"));
    m_eachFile = new QCheckBox(QStringLiteral("one PDF file per &customer"), this);
    m_eachFile->setObjectName(QStringLiteral("chkOneFilePerCustomer"));
    m_eachFile->setChecked(oneFilePerCustomer());

    auto *reminderBox = new QGroupBox(QStringLiteral("Reminders"), this);
    m_days = new QSpinBox(reminderBox);
    m_days->setObjectName(QStringLiteral("txtReminderDays"));
    m_days->setRange(1, 9999);
    m_days->setValue(reminderDays());
    m_days->setSuffix(QStringLiteral(" days"));
    m_letter = new QPlainTextEdit(reminderBox);
    m_letter->setObjectName(QStringLiteral("txtReminderText"));
    m_letter->setAccessibleName(QStringLiteral("Reminder letter"));
    m_letter->setPlainText(reminderText());
    m_letter->setTabChangesFocus(true);
    // Eight lines show; a larger window gives the room to the list.
    m_letter->setFixedHeight(m_letter->fontMetrics().lineSpacing() * 8 + 12);
    m_cmdReminders = new QPushButton(QStringLiteral("&Reminders"), reminderBox);
    m_cmdReminders->setObjectName(QStringLiteral("cmdReminders"));
    auto *fields = new QLabel(QStringLiteral("The letter above each reminder's statement. Fields: {customer}, "
                                             "{amount}, {oldest due date}, {days overdue}, {company}."),
                              reminderBox);
    fields->setWordWrap(true);
    auto *close = new QPushButton(QStringLiteral("Close"), this);
    close->setObjectName(QStringLiteral("cmdClose"));

    auto *top = new QHBoxLayout;
    auto *asOfLabel = new QLabel(QStringLiteral("&As of:"), this);
    asOfLabel->setBuddy(m_asOf);
    auto *findLabel = new QLabel(QStringLiteral("&Find:"), this);
    findLabel->setBuddy(m_find);
    top->addWidget(asOfLabel);
    top->addWidget(m_asOf);
    top->addSpacing(16);
    top->addWidget(findLabel);
    top->addWidget(m_find, 1);
    top->addSpacing(16);
    top->addWidget(m_summary);
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(m_cmdSelectOverdue);
    buttons->addStretch(1);
    buttons->addWidget(m_cmdPrint);
    buttons->addWidget(m_cmdSave);
    buttons->addWidget(m_eachFile);
    buttons->addWidget(m_cmdEmail);
    auto *daysRow = new QHBoxLayout;
    auto *daysLabel = new QLabel(QStringLiteral("For customers whose oldest balance is past due by at least"),
                                 reminderBox);
    daysLabel->setBuddy(m_days);
    daysRow->addWidget(daysLabel);
    daysRow->addWidget(m_days);
    daysRow->addStretch(1);
    daysRow->addWidget(m_cmdReminders);
    auto *reminderLayout = new QVBoxLayout(reminderBox);
    reminderLayout->addLayout(daysRow);
    reminderLayout->addWidget(m_letter);
    reminderLayout->addWidget(fields);
    auto *bottom = new QHBoxLayout;
    bottom->addStretch(1);
    bottom->addWidget(close);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addWidget(m_view, 1);
    layout->addLayout(buttons);
    layout->addWidget(reminderBox);
    layout->addLayout(bottom);

    showPreviewWindow = [](QWidget *w) {
        w->setAttribute(Qt::WA_DeleteOnClose);
        static_cast<QDialog *>(w)->exec();
    };
    connect(m_asOf, &QDateEdit::dateChanged, this, [this] { refresh(); });
    connect(m_find, &QLineEdit::textEdited, this, &FrmStatements::findName);
    connect(m_view, &QTableView::doubleClicked, this, [this](const QModelIndex &i) { showPreview(i.row()); });
    connect(m_cmdSelectOverdue, &QAbstractButton::clicked, this, &FrmStatements::selectAllOverdue);
    connect(m_cmdPrint, &QAbstractButton::clicked, this, &FrmStatements::printSelected);
    connect(m_cmdSave, &QAbstractButton::clicked, this, &FrmStatements::saveSelected);
    connect(m_cmdReminders, &QAbstractButton::clicked, this, &FrmStatements::reminders);
    connect(m_cmdEmail, &QAbstractButton::clicked, this, &FrmStatements::emailSelected);
    emailRun = [this](const QList<mail::MailCustomer> &customers, const mail::Compose &compose) {
        return runEmail(this, customers, compose);
    };
    connect(m_eachFile, &QCheckBox::toggled, this, [](bool on) { setOneFilePerCustomer(on); });
    connect(m_days, &QSpinBox::valueChanged, this, [](int days) { setReminderDays(days); });
    connect(m_letter, &QPlainTextEdit::textChanged, this, [this] { setReminderText(m_letter->toPlainText()); });
    connect(close, &QAbstractButton::clicked, this, &QWidget::close);
    // The list follows the data: a payment, a new period, another file.
    connect(&db, &Database::reloaded, this, &FrmStatements::refresh);
    connect(&db, &Database::tableChanged, this, [this](Database::Table t) {
        if (t != Database::Table::Items) refresh();
    });

    restoreFormPosition(this);
    refresh();
    m_view->setFocus();
}

FrmStatements::~FrmStatements() = default;

void FrmStatements::closeEvent(QCloseEvent *event)
{
    saveFormPosition(this);
    QDialog::closeEvent(event);
}

void FrmStatements::refresh()
{
    const QStringList selected = selectedCids();
    m_model->setReport(report(m_db, m_asOf->date()));
    selectCids(selected);
    const Report &r = m_model->report();
    m_summary->setText(r.accounts.empty() ? QStringLiteral("Nobody owes anything.")
                                          : QStringLiteral("%1 owe %2")
                                                .arg(plural(qsizetype(r.accounts.size()), "customer", "customers"),
                                                     r.total.toCurrencyText()));
    const bool any = !r.accounts.empty();
    for (QAbstractButton *b : {m_cmdSelectOverdue, m_cmdPrint, m_cmdSave, m_cmdEmail, m_cmdReminders})
        b->setEnabled(any);
}

QStringList FrmStatements::selectedCids() const
{
    QStringList out;
    if (!m_view->selectionModel()) return out;
    QModelIndexList rows = m_view->selectionModel()->selectedRows();
    std::sort(rows.begin(), rows.end(), [](const QModelIndex &a, const QModelIndex &b) { return a.row() < b.row(); });
    for (const QModelIndex &i : rows) out << m_model->account(i.row()).cid;
    return out;
}

void FrmStatements::selectCids(const QStringList &cids)
{
    const QSet<QString> wanted(cids.begin(), cids.end());
    QItemSelection selection;
    const int last = m_model->columnCount() - 1;
    // Runs of neighbouring rows as one range each: a few ranges for ten
    // thousand rows rather than ten thousand.
    int start = -1;
    const int n = m_model->rowCount();
    for (int row = 0; row <= n; ++row) {
        const bool in = row < n && wanted.contains(m_model->account(row).cid);
        if (in && start < 0) start = row;
        if (!in && start >= 0) {
            selection.select(m_model->index(start, 0), m_model->index(row - 1, last));
            start = -1;
        }
    }
    m_view->selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
}

void FrmStatements::findName(const QString &prefix)
{
    const int row = m_model->findName(prefix);
    if (row < 0) return;
    const QModelIndex i = m_model->index(row, 0);
    m_view->selectionModel()->setCurrentIndex(i, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    m_view->scrollTo(i, QAbstractItemView::PositionAtCenter);
}

void FrmStatements::selectAllOverdue()
{
    QStringList cids;
    for (int row = 0; row < m_model->rowCount(); ++row)
        if (m_model->account(row).isOverdue()) cids << m_model->account(row).cid;
    selectCids(cids);
}

std::vector<Account> FrmStatements::selectedAccounts(bool reminder) const
{
    const QStringList cids = selectedCids();
    if (cids.isEmpty()) return {};
    // The records of the selected customers, in one walk; then in the order shown.
    Report r = report(m_db, m_asOf->date(), Detail::Records, cids);
    QHash<QString, size_t> at;
    for (size_t i = 0; i < r.accounts.size(); ++i) at.insert(r.accounts[i].cid, i);
    std::vector<Account> out;
    for (const QString &cid : cids)
        if (at.contains(cid)) out.push_back(std::move(r.accounts[at.value(cid)]));
    return reminder ? dueReminders(std::move(out), m_days->value()) : out;
}

void FrmStatements::printSelected()
{
    const std::vector<Account> accounts = selectedAccounts(false);
    if (accounts.empty()) {
        DialogService::current().information(this, windowTitle(), QStringLiteral("Please select the customers first."));
        return;
    }
    printStatements(this, m_db, accounts, storedRunValues(m_db, m_asOf->date(), false));
}

void FrmStatements::saveSelected()
{
    const std::vector<Account> accounts = selectedAccounts(false);
    if (accounts.empty()) {
        DialogService::current().information(this, windowTitle(), QStringLiteral("Please select the customers first."));
        return;
    }
    saveStatements(this, m_db, accounts, storedRunValues(m_db, m_asOf->date(), false), m_eachFile->isChecked());
}

void FrmStatements::emailSelected()
{
    const std::vector<Account> accounts = selectedAccounts(false);
    if (accounts.empty()) {
        DialogService::current().information(this, windowTitle(), QStringLiteral("Please select the customers first."));
        return;
    }
    email(accounts, storedRunValues(m_db, m_asOf->date(), false));
}

void FrmStatements::email(const std::vector<Account> &accounts, const RunValues &run)
{
    const auto results = emailRun(mailruns::accountCustomers(m_db, accounts),
                                  mailruns::statementMessages(m_db, accounts, run, mail::loadTexts()));
    const QStringList sent = mailruns::sentNumbers(results);
    if (sent.isEmpty()) return;
    QStringList rest = selectedCids();
    for (const QString &cid : sent) rest.removeAll(cid);
    selectCids(rest);
}

void FrmStatements::reminders()
{
    const int days = m_days->value();
    QStringList cids;
    for (int row = 0; row < m_model->rowCount(); ++row) {
        const Account &a = m_model->account(row);
        if (a.oldestDue.isValid() && a.daysPastDue >= days) cids << a.cid;
    }
    selectCids(cids);
    DialogService &dialogs = DialogService::current();
    if (cids.isEmpty()) {
        dialogs.information(this, QStringLiteral("Reminders"),
                            QStringLiteral("No customer's balance is %1 or more past due.")
                                .arg(plural(days, "day", "days")));
        return;
    }
    DialogService::Message m{QMessageBox::Question, QStringLiteral("Reminders"),
                             QStringLiteral("%1 past due by %2 or more.\r\n\r\nPrint a reminder letter for each, "
                                            "save the letters as PDF, or e-mail them?")
                                 .arg(cids.size() == 1 ? QStringLiteral("1 customer is")
                                                       : QStringLiteral("%1 customers are").arg(cids.size()),
                                      plural(days, "day", "days")),
                             QMessageBox::Yes | QMessageBox::Save | QMessageBox::Apply | QMessageBox::Cancel,
                             QMessageBox::Yes};
    m.captions = {{QMessageBox::Yes, QStringLiteral("&Print")},
                  {QMessageBox::Save, QStringLiteral("&Save as PDF")},
                  {QMessageBox::Apply, QStringLiteral("&E-mail")}};

    const QMessageBox::StandardButton answer = dialogs.message(this, m);
    if (answer != QMessageBox::Yes && answer != QMessageBox::Save && answer != QMessageBox::Apply) return;
    const std::vector<Account> accounts = selectedAccounts(true);
    const RunValues run = storedRunValues(m_db, m_asOf->date(), true);
    if (answer == QMessageBox::Yes)
        printStatements(this, m_db, accounts, run);
    else if (answer == QMessageBox::Apply)
        email(accounts, run);
    else
        saveStatements(this, m_db, accounts, run, m_eachFile->isChecked());
}

void FrmStatements::showPreview(int row)
{
    if (row < 0 || row >= m_model->rowCount()) return;
    const QString cid = m_model->account(row).cid;
    const Report r = report(m_db, m_asOf->date(), Detail::Records, {cid});
    if (r.accounts.empty()) return;
    const QList<pages::Page> shown = statementPages(m_db, r.accounts.front(),
                                                    storedRunValues(m_db, m_asOf->date(), false));
    auto *printer = new QPrinter(QPrinter::HighResolution);
    printer->setPageSize(pages::defaultPaper());
    printer->setFullPage(true);
    printer->setDocName(files::eachFileName(r.accounts.front().name, cid, documentWhat(false, m_asOf->date())));
    auto *dialog = new QPrintPreviewDialog(printer, this);
    dialog->setObjectName(QStringLiteral("dlgStatementPreview"));
    dialog->setWindowTitle(QStringLiteral("Statement Preview"));
    connect(dialog, &QObject::destroyed, dialog, [printer] { delete printer; });
    connect(dialog, &QPrintPreviewDialog::paintRequested, dialog, [shown](QPrinter *p) {
        p->setFullPage(true);
        QPainter painter(p);
        for (qsizetype i = 0; i < shown.size(); ++i) {
            if (i > 0) p->newPage();
            pages::scaleToTwips(painter);
            pages::drawPage(painter, shown[i]);
        }
    });
    showPreviewWindow(dialog);
}

}  // namespace qor::statements
