#include "shell/session.h"

#include "billing/entryguard.h"
#include "shell/settingsstore.h"
#include "uiservices/clsdialogs.h"
#include "uiservices/dialogservice.h"
#include "uiservices/frmmessage.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <algorithm>
#include <exception>

namespace qor {

Session::Session(QObject *parent) : QObject(parent) {}

ReadResult Session::load()
{
    m_path = settings::databasePath();
    m_db.beginReload();

    ReadResult result;
    try {
        result = m_db.read(m_path);
    } catch (const std::exception &e) {
        m_db.clear();
        result.status = ReadResult::Status::Rejected;
        result.message = QStringLiteral("The database file %1 could not be read: %2")
                             .arg(QDir::toNativeSeparators(m_path), QString::fromLocal8Bit(e.what()));
    }
    if (result.status == ReadResult::Status::Rejected) {
        DialogService::current().warning(m_owner, AppTitle, result.message);
    } else if (result.status == ReadResult::Status::Read) {
        m_db.setChanged(false);
        m_db.announceFileRead();
    }
    m_db.fillInvoiceRecordNames();
    m_db.endReload();
    return result;
}

bool Session::save()
{
    m_path = settings::databasePath();
    SaveResult result;
    try {
        result = m_db.save(m_path);
    } catch (const std::exception &e) {
        result.ok = false;
        result.message = QStringLiteral("The database could not be saved to %1: %2")
                             .arg(QDir::toNativeSeparators(m_path), QString::fromLocal8Bit(e.what()));
    }
    if (!result.ok) {
        DialogService::current().critical(m_owner, AppTitle, result.message);
        return false;
    }
    m_db.setChanged(false);
    return true;
}

const QString Session::DatabaseFilter = QStringLiteral("Harnwick QOR Database (*.xml)|*.xml");

namespace {

const QString CRLF = QStringLiteral("\r\n");

// The titles of the file dialogs by button; Save has none.
const char *const FileDialogTitles[4] = {"Create a New Database", "Open an Exisiting Database", nullptr,
                                         "Save Current Database under a New Name"};

// Asks the dialog service for a database file with the given title, starting
// in the folder of its last use.
QString askDatabaseFile(bool save, const QString &title)
{
    ClsDIALOGS &dialogs = ClsDIALOGS::current();
    dialogs.setStrTitle(title);
    dialogs.setStrFilter(Session::DatabaseFilter);
    dialogs.setStrInitialDir(QString());
    return save ? dialogs.strGetSaveFileName() : dialogs.strGetOpenFileName();
}

}  // namespace

QString Session::withXmlExtension(const QString &path)
{
    return path.right(4).toLower() == QLatin1String(".xml") ? path : path + QStringLiteral(".xml");
}

QString Session::keepUnsavedChanges()
{
    const QString stamp = QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-HHmmss"));
    const QString file = m_path.isEmpty() ? settings::databasePath() : m_path;
    const QString base = file + QStringLiteral(".unsaved-") + stamp;
    QString target = base;
    // Two drops within one second keep both copies.
    for (int n = 2; QFileInfo::exists(target); ++n)
        target = base + QStringLiteral("-%1").arg(n);
    QSaveFile out(target);
    if (!out.open(QIODevice::WriteOnly)) return {};
    out.write(m_db.serialize());
    if (!out.commit()) return {};
    emit unsavedChangesKept(target);
    return target;
}

QString Session::changePath(FileButton button)
{
    const int index = int(button);
    if (button == FileButton::Save || index < 0 || index > 3) return {};
    QString path = askDatabaseFile(button != FileButton::Open, QString::fromLatin1(FileDialogTitles[index]));
    if (path.isEmpty()) return {};
    // A name that is taken, also once ".xml" is added, would not be new.
    if (button == FileButton::New && (QFileInfo::exists(path) || QFileInfo::exists(withXmlExtension(path)))) {
        DialogService::current().message(
            m_owner, {QMessageBox::NoIcon, AppTitle,
                      QStringLiteral("If you want to create a new database,") + CRLF +
                          QStringLiteral("you'll need to type in a new (unique) file name."),
                      QMessageBox::Ok, QMessageBox::NoButton});
        return {};
    }
    path = withXmlExtension(path);
    if (!entryguard::mayDropEntry(m_db, m_owner)) return {};

    // New and Open drop unsaved changes without a question; a copy keeps
    // them recoverable. An empty database (a first start) has nothing to lose.
    const bool empty = m_db.lvwCustomers.count() == 0 && m_db.lvwPAndS.count() == 0 &&
                       m_db.lvwPeriods.count() == 0 && m_db.lvwInvoiceRecords.count() == 0 &&
                       std::all_of(m_db.company.begin(), m_db.company.end(), [](const QString &c) { return c.isEmpty(); });
    if (button != FileButton::SaveAs && m_db.isChanged() && !empty) keepUnsavedChanges();

    const QString previous = settings::databasePath();
    settings::write(QStringLiteral("FileHandling"), QStringLiteral("DatabasePath"), path);
    if (button == FileButton::SaveAs && !save()) {
        // The data are still only in memory: stay with the file they came from.
        settings::write(QStringLiteral("FileHandling"), QStringLiteral("DatabasePath"), previous);
        m_path = previous;
        return {};
    }
    return path;
}

bool Session::confirmCloseBooks()
{
    const QString key = QStringLiteral("DontShowExplanationOfClosingBooks");
    if (isMessageMarked(key)) return false;
    const QString text =
        QStringList{QStringLiteral("By \"closing the books,\" the current database will be saved"),
                    QStringLiteral("and you will then start fresh under a new file name with"),
                    QStringLiteral("your existing customers && products.  This allows you to"),
                    QStringLiteral("archive previous bill periods and invoices, keeping your"),
                    QStringLiteral("files smaller and more managable.  (Even after closing the"),
                    QStringLiteral("books on a file, you can always re-open and edit it later.)"),
                    QString(),
                    QStringLiteral("Would you like to close the books on this file and begin a"),
                    QStringLiteral("new file using your current customers && products?")}
            .join(CRLF);
    const QString answer =
        DialogService::current().messageForm(m_owner, {text, key, QStringLiteral("YesNo"), QStringLiteral("No")});
    return answer == QLatin1String("No");
}

bool Session::closeBooks()
{
    if (confirmCloseBooks()) return false;
    QString path = askDatabaseFile(true, QStringLiteral("Create a New Database"));
    // Cancel ends here too; a name that is taken once ".xml" is added would
    // be overwritten.
    if (path.isEmpty() || QFileInfo::exists(path) || QFileInfo::exists(withXmlExtension(path))) {
        DialogService::current().message(
            m_owner,
            {QMessageBox::NoIcon, AppTitle,
             QStringLiteral("If you want to close the books and continue with a new database,") + CRLF +
                 QStringLiteral("you'll need to type in a new (unique) file name for the new database."),
             QMessageBox::Ok, QMessageBox::NoButton});
        return false;
    }
    path = withXmlExtension(path);
    if (!entryguard::mayDropEntry(m_db, m_owner)) return false;

    // The pending changes belong to the old file.
    if (m_db.isChanged() && !save()) return false;
    settings::write(QStringLiteral("FileHandling"), QStringLiteral("DatabasePath"), path);

    // The views start over as after a read, from tables that are what the
    // new file will hold. Emptying the views must not take the company
    // fields with it.
    const auto company = m_db.company;
    m_db.beginReload();
    m_db.lvwPeriods.clear();
    m_db.lvwInvoiceRecords.clear();
    m_db.company = company;
    m_db.announceFileRead();
    m_db.endReload();
    return save();
}

}  // namespace qor
