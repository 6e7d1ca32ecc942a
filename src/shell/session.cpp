#include "shell/session.h"

#include "shell/settingsstore.h"
#include "uiservices/dialogservice.h"

#include <QDir>
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
        DialogService::current().warning(m_owner, QStringLiteral("QOR"), result.message);
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
        DialogService::current().critical(m_owner, QStringLiteral("QOR"), result.message);
        return false;
    }
    m_db.setChanged(false);
    return true;
}

}  // namespace qor
