// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/session.h"

#include "database/filesafety.h"
#include "settings/settingsstore.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <algorithm>
#include <exception>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <cerrno>

namespace qor {

namespace {

const QString CRLF = QStringLiteral("\r\n");

QString shown(const QString &path) { return QDir::toNativeSeparators(path); }

// The titles of the file dialogs by button; Save has none.
const char *const FileDialogTitles[4] = {"Create a New Database", "Open an Exisiting Database", nullptr,
                                         "Save Current Database under a New Name"};

using Tone = SessionQuestions::Tone;
using Answer = SessionQuestions::Answer;

QString absolute(const QString &path) { return path.isEmpty() ? path : QFileInfo(path).absoluteFilePath(); }

bool samePath(const QString &a, const QString &b)
{
    if (a.isEmpty() || b.isEmpty()) return false;
    const QFileInfo x(a), y(b);
    const QString cx = x.canonicalFilePath(), cy = y.canonicalFilePath();
    return !cx.isEmpty() && !cy.isEmpty() ? cx == cy : x.absoluteFilePath() == y.absoluteFilePath();
}

// Makes path as a new, empty file readable by the user alone; empty on
// success, else the system's reason.
QString createEmpty(const QString &path)
{
    const int fd = ::open(QFile::encodeName(path).constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (fd < 0) return files::systemReason(errno);
    ::fchmod(fd, 0600);
    ::fsync(fd);
    ::close(fd);
    return QString();
}

// The stamp of a safety copy's name: "<name>.unsaved-yyyyMMdd-HHmmss[-n]".
QDateTime unsavedStamp(const QString &name)
{
    const qsizetype at = name.lastIndexOf(QLatin1String(".unsaved-"));
    if (at < 0) return {};
    return QDateTime::fromString(name.mid(at + 9, 15), QStringLiteral("yyyyMMdd-HHmmss"));
}

// The name a safety copy of path has in the data folder: the file's name and
// a short mark of its folder, so two books of one name stay apart.
QString unsavedBaseInDataFolder(const QString &path)
{
    const QFileInfo info(path);
    const QByteArray mark =
        QCryptographicHash::hash(QFile::encodeName(info.absolutePath()), QCryptographicHash::Sha1).toHex().left(8);
    return info.fileName() + u'-' + QString::fromLatin1(mark);
}

}  // namespace

const QString Session::DatabaseFilter = QStringLiteral("Harnwick QOR Database (*.xml)|*.xml");

Session::Session(QObject *parent) : QObject(parent), m_ask(&SessionQuestions::nobody()) {}

void Session::setQuestions(SessionQuestions *questions)
{
    m_ask = questions ? questions : &SessionQuestions::nobody();
}

namespace {
// Nobody to ask: the command-line tool, a session before its window. With no
// window there is no open entry to lose.
class Nobody final : public SessionQuestions {
public:
    Answer ask(const Question &) override { return Answer::Cancel; }
    QString databaseFile(bool, const QString &) override { return QString(); }
    bool goOnClosingBooks() override { return false; }
    bool statementsBeforeClosingBooks(const Database &, const QString &) override { return false; }
    bool mayDropOpenEntry(Database &) override { return true; }
};
}  // namespace

SessionQuestions &SessionQuestions::nobody()
{
    static Nobody none;
    return none;
}

Session::~Session() { finishRecoveryWrite(); }

QString Session::withXmlExtension(const QString &path)
{
    return path.right(4).toLower() == QLatin1String(".xml") ? path : path + QStringLiteral(".xml");
}

QString Session::unsavedFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + QStringLiteral("/QOR/unsaved");
}

files::DeviceWrapper Session::faultFor(const QString &path) const
{
    return writeFault ? writeFault(path) : files::DeviceWrapper();
}

Session::Stamp Session::stampOf(const QString &path)
{
    Stamp s;
    struct stat st {};
    if (path.isEmpty() || ::stat(QFile::encodeName(path).constData(), &st) != 0 || !S_ISREG(st.st_mode)) return s;
    s.exists = true;
    s.size = st.st_size;
    s.mtimeNs = qint64(st.st_mtim.tv_sec) * 1000000000 + st.st_mtim.tv_nsec;
    s.inode = st.st_ino;
    s.device = st.st_dev;
    return s;
}

void Session::tell(SessionQuestions::Tone tone, const QString &text)
{
    m_ask->ask({tone, SessionTitle, text});
}

void Session::tellOnce(const QStringList &notes)
{
    for (const QString &note : notes) {
        if (note.isEmpty() || m_told.contains(note)) continue;
        m_told.insert(note);
        tell(Tone::Information, note);
    }
}

// ---------------------------------------------------------------------------
// The lock

std::unique_ptr<FileLock> Session::lockFor(const QString &path, bool &readOnly)
{
    auto lock = std::make_unique<FileLock>(path);
    readOnly = false;
    switch (lock->tryLock()) {
    case FileLock::Result::Locked: return lock;
    case FileLock::Result::Unlockable:
        // A folder that can't take the lock can't take a save either.
        tellOnce({QStringLiteral("The database \"%1\" cannot be locked for writing (%2), so it is opened read-only. "
                                 "Save As keeps changes under another name.")
                      .arg(shown(path), lock->error())});
        readOnly = true;
        return lock;
    case FileLock::Result::Held: break;
    }
    for (;;) {
        const QString text =
            QStringLiteral("The database \"%1\" is in use by %2.").arg(shown(path), lock->holderText()) + CRLF + CRLF +
            QStringLiteral(
                "Open it read-only, take it over (only when that program no longer runs, for instance "
                "after its computer crashed), or cancel?");
        const auto answer =
            m_ask->ask(
                {Tone::Warning, SessionTitle, text, {Answer::Open, Answer::Ignore, Answer::Cancel}, Answer::Open, {{Answer::Open, QStringLiteral("Open &Read-Only")}, {Answer::Ignore, QStringLiteral("&Take Over")}}});
        if (answer == Answer::Open) {
            readOnly = true;
            return lock;
        }
        if (answer != Answer::Ignore) return nullptr;
        const auto sure = m_ask->ask(
            {Tone::Warning, SessionTitle, QStringLiteral("Take over \"%1\" only if %2 no longer uses it. If that program still has it "
                                                         "open, whichever saves last overwrites the other's changes.")
                                              .arg(shown(path), lock->holderText()),
             {Answer::Ok, Answer::Cancel},
             Answer::Cancel,
             {{Answer::Ok, QStringLiteral("&Take Over")}}});
        if (sure != Answer::Ok) continue;
        if (lock->takeOver() == FileLock::Result::Locked) return lock;
    }
}

void Session::becomeFile(const QString &path, std::unique_ptr<FileLock> lock, bool readOnly)
{
    if (lock) {
        if (m_lock) m_lock->unlock();
        m_lock = std::move(lock);
    }
    if (!samePath(path, settings::databasePath()))
        settings::DatabasePath.set(path);
    const bool moved = m_path != path;
    m_path = path;
    setReadOnly(readOnly);
    if (moved) emit pathChanged(path);
}

void Session::setReadOnly(bool readOnly)
{
    if (m_readOnly == readOnly) return;
    m_readOnly = readOnly;
    emit readOnlyChanged(readOnly);
}

// ---------------------------------------------------------------------------
// Reading

void Session::tellRejected(const ReadResult &result, const QString &path, bool drop)
{
    const QList<versions::Version> kept = versions::list(path);
    if (kept.isEmpty()) {
        tell(Tone::Warning, result.message);
        return;
    }
    const versions::Version &newest = kept.last();
    const QString text = result.message + CRLF + CRLF +
                         QStringLiteral("The newest earlier version, saved on %1, can be opened instead.")
                             .arg(newest.time.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")));
    const auto answer = m_ask->ask(
        {Tone::Warning, SessionTitle, text, {Answer::Open, Answer::Ok}, Answer::Ok, {{Answer::Open, QStringLiteral("Open the Newest &Version")}}});
    if (answer == Answer::Open) adopt(newest.path, path, true, drop);
}

bool Session::adopt(const QString &source, const QString &path, bool changed, bool drop, ReadResult *out)
{
    // The lock first: a file another program holds is not even read unasked.
    std::unique_ptr<FileLock> lock;
    bool readOnly = m_readOnly;
    const bool newFile = !samePath(path, m_path) || !m_lock;
    if (newFile) {
        lock = lockFor(path, readOnly);
        if (!lock) return false;
    }
    files::removeStaleTemporaries(path, files::processStartTime());

    Database fresh;
    ReadResult result;
    try {
        result = fresh.read(source);
    } catch (const std::exception &e) {
        result.status = ReadResult::Status::Rejected;
        result.message = QStringLiteral("The database file \"%1\" could not be read: %2")
                             .arg(shown(source), QString::fromLocal8Bit(e.what()));
    }
    if (out) *out = result;
    if (result.status == ReadResult::Status::Rejected) {
        // The newest version may be taken instead: it needs the lock.
        lock.reset();
        tellRejected(result, path, drop);
        return false;
    }
    if (drop && !keepBeforeDropping()) {
        if (result.status == ReadResult::Status::Created) QFile::remove(source);
        return false;
    }
    // Every way other books come into the window passes here, so an open
    // bill period entry is asked for once, right before it would go.
    if (!m_ask->mayDropOpenEntry(m_db)) {
        if (result.status == ReadResult::Status::Created) QFile::remove(source);
        return false;
    }

    m_db.beginReload();
    m_db.takeContentOf(fresh);
    becomeFile(path, std::move(lock), readOnly);
    m_stamp = stampOf(path);
    if (result.status == ReadResult::Status::Read) {
        m_db.setChanged(false);
        m_db.announceFileRead();
    }
    m_db.fillInvoiceRecordNames();
    m_db.endReload();
    if (changed) m_db.setChanged(true);
    emit earlierCopiesChanged();
    return true;
}

ReadResult Session::load()
{
    const QString path = settings::databasePath();
    m_declined = false;
    files::removeStaleTemporaries(m_recovery.databaseCopy(), files::processStartTime());
    ReadResult result;
    if (adopt(path, path, false, false, &result)) return result;
    if (result.status != ReadResult::Status::Rejected && !m_lock) {
        // Cancelled: another program holds the file.
        m_declined = true;
        result.status = ReadResult::Status::Rejected;
        result.message = QStringLiteral("The database \"%1\" is in use by another program.").arg(shown(path));
    }
    if (!samePath(path, m_path)) {
        // Nothing read (refused, or the newest version not asked for): the
        // books are empty and belong to the file the settings name.
        m_path = path;
        if (!m_lock && !m_declined) {
            bool readOnly = false;
            m_lock = lockFor(path, readOnly);
            setReadOnly(readOnly);
        }
        m_stamp = stampOf(path);
        m_db.beginReload();
        m_db.clear();
        m_db.fillInvoiceRecordNames();
        m_db.endReload();
    }
    return result;
}

ReadResult Session::openToRead(const QString &path, QStringList *problems)
{
    Database fresh;
    ReadResult result;
    try {
        result = fresh.read(path, Database::MissingFile::Reject);
    } catch (const std::exception &e) {
        result.status = ReadResult::Status::Rejected;
        result.message = QStringLiteral("The database file \"%1\" could not be read: %2")
                             .arg(shown(path), QString::fromLocal8Bit(e.what()));
    }
    if (!result.ok()) return result;
    m_db.beginReload();
    m_db.takeContentOf(fresh);
    m_path = path;
    m_lock.reset();
    m_stamp = stampOf(path);
    setReadOnly(true);
    m_db.setChanged(false);
    const QStringList unnamed = m_db.fillInvoiceRecordNames();
    m_db.endReload();
    if (problems) *problems = unnamed;
    return result;
}

bool Session::reload()
{
    if (!adopt(m_path, m_path, false, false)) return false;
    dropRecovery();
    return true;
}

// ---------------------------------------------------------------------------
// Saving

bool Session::saveTo(const QString &path, bool asNewName)
{
    Database::SaveOptions options;
    options.wrap = faultFor(path);
    options.versions = settings::versionPolicy();
    SaveResult result;
    try {
        result = m_db.save(path, options);
    } catch (const std::exception &e) {
        result.ok = false;
        result.message = QStringLiteral("The database could not be saved to %1: %2")
                             .arg(shown(path), QString::fromLocal8Bit(e.what()));
    }
    if (!result.ok) {
        tell(Tone::Critical, result.message);
        return false;
    }
    tellOnce(result.notes);
    if (!asNewName) m_stamp = stampOf(path);
    emit earlierCopiesChanged();
    return true;
}

bool Session::save()
{
    if (m_path.isEmpty()) m_path = settings::databasePath();
    if (m_readOnly) {
        tell(Tone::Warning,
             QStringLiteral("The database \"%1\" is open read-only, so it is not saved. Save As keeps your changes "
                            "under another name.")
                 .arg(shown(m_path)));
        return false;
    }
    // Another program wrote the file since it was read here.
    const Stamp now = stampOf(m_path);
    if (m_stamp.exists && now.exists && !(now == m_stamp)) {
        const auto answer = m_ask->ask(
            {Tone::Warning, SessionTitle, QStringLiteral("The database \"%1\" was changed on disk by another program after it was opened here.").arg(shown(m_path)) + CRLF + CRLF + QStringLiteral("Overwrite it with the books as they stand here, save them elsewhere, or cancel?"), {Answer::Yes, Answer::Save, Answer::Cancel}, Answer::Cancel, {{Answer::Yes, QStringLiteral("&Overwrite")}, {Answer::Save, QStringLiteral("Save &Elsewhere...")}}});
        if (answer == Answer::Save) return saveAs();
        if (answer != Answer::Yes) return false;
    }
    if (!saveTo(m_path, false)) return false;
    m_db.setChanged(false);
    dropRecovery();
    return true;
}

bool Session::saveAs()
{
    QString path = m_ask->databaseFile(true, QString::fromLatin1(FileDialogTitles[int(FileButton::SaveAs)]));
    if (path.isEmpty()) return false;
    path = absolute(withXmlExtension(path));
    if (samePath(path, m_path) && !m_readOnly) {
        m_stamp = stampOf(m_path);  // the user chose this very file: overwrite
        return save();
    }
    if (QFileInfo::exists(path)) {
        const auto answer = m_ask->ask(
            {Tone::Warning, SessionTitle, QStringLiteral("The file \"%1\" already exists.").arg(shown(path)) + CRLF + QStringLiteral("Do you want to replace it?"), {Answer::Yes, Answer::No}, Answer::No});
        if (answer != Answer::Yes) return false;
    }
    auto lock = std::make_unique<FileLock>(path);
    if (lock->tryLock() == FileLock::Result::Held) {
        tell(Tone::Warning,
             QStringLiteral("The file \"%1\" is in use by %2. Choose another name.")
                 .arg(shown(path), lock->holderText()));
        return false;
    }
    // No lock can be made there: the save says why it can't be written either.
    if (!saveTo(path, true)) return false;
    becomeFile(path, std::move(lock), false);
    m_stamp = stampOf(path);
    m_db.setChanged(false);
    dropRecovery();
    return true;
}

// ---------------------------------------------------------------------------
// Unsaved changes

bool Session::hasNothingToLose() const
{
    return m_db.customers().count() == 0 && m_db.items().count() == 0 && m_db.periods().count() == 0 &&
           m_db.invoiceRecords().count() == 0 &&
           std::all_of(m_db.company().begin(), m_db.company().end(), [](const QString &c) { return c.isEmpty(); });
}

Session::Unsaved Session::settleUnsavedChanges()
{
    // An empty database (a first start) has nothing to lose.
    if (!m_db.isChanged() || hasNothingToLose()) return Unsaved::None;
    const auto answer = m_ask->ask(
        {Tone::Warning, SessionTitle, QStringLiteral("The changes to \"%1\" are not saved.").arg(shown(m_path)) + CRLF + CRLF + QStringLiteral("Do you want to save them first?"), {Answer::Save, Answer::Discard, Answer::Cancel}, Answer::Save, {{Answer::Save, QStringLiteral("&Save")}, {Answer::Discard, QStringLiteral("&Discard")}}});
    if (answer == Answer::Save) return save() ? Unsaved::Saved : Unsaved::Cancel;
    if (answer == Answer::Discard) return Unsaved::Discard;
    return Unsaved::Cancel;
}

QString Session::keepUnsavedChanges()
{
    m_copyProblem.clear();
    const QString file = m_path.isEmpty() ? settings::databasePath() : m_path;
    const QString stamp = QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-HHmmss"));
    const QByteArray bytes = m_db.serialize();
    QStringList problems;
    // Beside the file first, then in the user's data folder.
    const QString places[2] = {file, unsavedFolder() + u'/' + unsavedBaseInDataFolder(file)};
    for (int i = 0; i < 2; ++i) {
        if (i == 1) {
            if (const QString why = files::makePrivateFolder(unsavedFolder()); !why.isEmpty()) {
                problems << QStringLiteral("\"%1\": %2").arg(shown(unsavedFolder()), why);
                break;
            }
        }
        const QString base = places[i] + QStringLiteral(".unsaved-") + stamp;
        QString target = base;
        // Two drops within one second keep both copies.
        for (int n = 2; QFileInfo::exists(target); ++n) target = base + QStringLiteral("-%1").arg(n);
        const QString why = files::writeVerified(target, bytes, faultFor(target));
        if (why.isEmpty()) {
            emit unsavedChangesKept(target);
            emit earlierCopiesChanged();
            return target;
        }
        QFile::remove(target);
        problems << QStringLiteral("\"%1\": %2").arg(shown(target), why);
    }
    m_copyProblem = problems.join(CRLF);
    return QString();
}

bool Session::keepBeforeDropping()
{
    if (!m_db.isChanged() || hasNothingToLose()) return true;
    for (;;) {
        if (!keepUnsavedChanges().isEmpty()) return true;
        const auto answer = m_ask->ask(
            {Tone::Critical, SessionTitle, QStringLiteral("The unsaved changes could not be kept in a safety copy:") + CRLF + m_copyProblem + CRLF + CRLF + QStringLiteral("Save them under another name, discard them, or cancel?"), {Answer::Save, Answer::Discard, Answer::Cancel}, Answer::Save, {{Answer::Save, QStringLiteral("Save &As...")}, {Answer::Discard, QStringLiteral("&Discard")}}});
        if (answer == Answer::Discard) return true;
        if (answer != Answer::Save) return false;
        // Saved elsewhere, the changes are safe and the step goes on.
        const QString before = m_path;
        if (saveAs()) return true;
        if (!samePath(before, m_path)) return true;
    }
}

// ---------------------------------------------------------------------------
// The file buttons

bool Session::changePath(FileButton button)
{
    const int index = int(button);
    if (button == FileButton::Save || index < 0 || index > 3) return false;
    if (button == FileButton::SaveAs) return saveAs();

    const Unsaved unsaved = settleUnsavedChanges();
    if (unsaved == Unsaved::Cancel) return false;
    QString path = m_ask->databaseFile(button == FileButton::New, QString::fromLatin1(FileDialogTitles[index]));
    if (path.isEmpty()) return false;
    if (button == FileButton::Open) return openChosen(absolute(withXmlExtension(path)), unsaved);

    // A name that is taken, also once ".xml" is added, would not be new.
    if (QFileInfo::exists(path) || QFileInfo::exists(withXmlExtension(path))) {
        m_ask->ask(
            {Tone::Plain, SessionTitle, QStringLiteral("If you want to create a new database,") + CRLF + QStringLiteral("you'll need to type in a new (unique) file name."), {Answer::Ok}, Answer::Ok});
        return false;
    }
    path = absolute(withXmlExtension(path));
    // The new file is made before anything else: a folder that can't be
    // written leaves the books and the settings as they were.
    if (const QString why = createEmpty(path); !why.isEmpty()) {
        tell(Tone::Critical,
             QStringLiteral("The new database \"%1\" could not be created: %2. Nothing was changed.")
                 .arg(shown(path), why));
        return false;
    }
    if (!adopt(path, path, false, unsaved == Unsaved::Discard)) {
        QFile::remove(path);
        return false;
    }
    dropRecovery();
    return true;
}

bool Session::openChosen(const QString &path, Unsaved unsaved)
{
    if (!adopt(path, path, false, unsaved == Unsaved::Discard)) return false;
    dropRecovery();
    return true;
}

bool Session::openFile(const QString &path)
{
    const QString file = absolute(path);
    if (!QFileInfo(file).isFile()) {
        tell(SessionQuestions::Tone::Warning, QStringLiteral("The database file \"%1\" does not exist.").arg(shown(file)));
        return false;
    }
    // The open file again is nothing to do, and asks nothing.
    if (samePath(file, m_path)) return false;
    const Unsaved unsaved = settleUnsavedChanges();
    if (unsaved == Unsaved::Cancel) return false;
    return openChosen(file, unsaved);
}

bool Session::closeBooks()
{
    if (m_readOnly) {
        tell(Tone::Warning,
             QStringLiteral("The database \"%1\" is open read-only, so its books cannot be closed.")
                 .arg(shown(m_path)));
        return false;
    }
    if (!m_ask->goOnClosingBooks()) return false;
    // The balances still owed stay behind in this file: the user may want
    // the statements first.
    if (!m_ask->statementsBeforeClosingBooks(m_db, settings::databasePath())) return false;
    QString path = m_ask->databaseFile(true, QStringLiteral("Create a New Database"));
    // Cancel ends here too; a name that is taken once ".xml" is added would
    // be overwritten.
    if (path.isEmpty() || QFileInfo::exists(path) || QFileInfo::exists(withXmlExtension(path))) {
        m_ask->ask(
            {Tone::Plain, SessionTitle, QStringLiteral("If you want to close the books and continue with a new database,") + CRLF + QStringLiteral("you'll need to type in a new (unique) file name for the new database."), {Answer::Ok}, Answer::Ok});
        return false;
    }
    path = absolute(withXmlExtension(path));
    if (!m_ask->mayDropOpenEntry(m_db)) return false;

    // The pending changes belong to the old file.
    if (m_db.isChanged() && !save()) return false;

    // The new file is written whole before the books turn to it: customers,
    // products and company fields, no periods or records.
    const std::unique_ptr<Database> next = m_db.carriedOver();
    auto lock = std::make_unique<FileLock>(path);
    if (lock->tryLock() == FileLock::Result::Held) {
        tell(Tone::Critical, QStringLiteral("The new database \"%1\" is in use by %2.")
                                 .arg(shown(path), lock->holderText()));
        return false;
    }
    Database::SaveOptions options;
    options.wrap = faultFor(path);
    const SaveResult written = next->save(path, options);
    if (!written.ok) {
        tell(Tone::Critical, written.message);
        return false;
    }

    // The views start over as after a read, from tables that are what the
    // new file holds.
    m_db.closeBooks();
    becomeFile(path, std::move(lock), false);
    m_stamp = stampOf(path);
    m_db.setChanged(false);
    m_db.announceFileRead();
    m_db.endReload();
    dropRecovery();
    emit earlierCopiesChanged();
    return true;
}

// ---------------------------------------------------------------------------
// Earlier versions and safety copies

QList<Session::EarlierCopy> Session::earlierCopies() const
{
    QList<EarlierCopy> out;
    if (m_path.isEmpty()) return out;
    // Newest first; two in one second stay in the order of their names.
    const QList<versions::Version> kept = versions::list(m_path);
    for (auto v = kept.rbegin(); v != kept.rend(); ++v) out << EarlierCopy{v->path, v->time, false, v->size};
    const QFileInfo file(m_path);
    const QString places[2] = {file.absolutePath(), unsavedFolder()};
    const QString names[2] = {file.fileName(), unsavedBaseInDataFolder(m_path)};
    for (int i = 0; i < 2; ++i) {
        const QDir dir(places[i]);
        for (const QFileInfo &copy : dir.entryInfoList({names[i] + QStringLiteral(".unsaved-*")}, QDir::Files)) {
            const QDateTime time = unsavedStamp(copy.fileName());
            out << EarlierCopy{copy.absoluteFilePath(), time.isValid() ? time : copy.lastModified(), true, copy.size()};
        }
    }
    std::stable_sort(out.begin(), out.end(), [](const EarlierCopy &a, const EarlierCopy &b) { return a.time > b.time; });
    return out;
}

bool Session::restoreCopy(const QString &copy)
{
    const Unsaved unsaved = settleUnsavedChanges();
    if (unsaved == Unsaved::Cancel) return false;
    if (!adopt(copy, m_path, true, unsaved == Unsaved::Discard)) return false;
    dropRecovery();  // the next write of the timer keeps the restored books
    return true;
}

// ---------------------------------------------------------------------------
// The recovery copy

bool Session::writeRecovery()
{
    finishRecoveryWrite();
    const QByteArray entry = openEntry ? openEntry() : QByteArray();
    if (!m_db.isChanged() && entry.isEmpty()) return false;
    // Only what changed is written again: an entry billed on large books
    // doesn't rewrite the books' copy each time.
    const bool booksKept = m_recoveryRevision == m_db.revision() && m_recovery.pending();
    if (booksKept && entry == m_recoveredEntry) return true;
    const QByteArray books = booksKept ? QByteArray() : m_db.serialize();
    const QString why = m_recovery.write(booksKept ? nullptr : &books, m_path, entry, faultFor(m_recovery.databaseCopy()));
    return recoveryWritten(why, m_db.revision(), entry);
}

bool Session::recoveryWritten(const QString &why, quint64 revision, const QByteArray &entry)
{
    if (!why.isEmpty()) {
        tellOnce({QStringLiteral("Unsaved changes cannot be kept for recovery after a crash in \"%1\": %2. Save "
                                 "often until this is put right.")
                      .arg(shown(m_recovery.folder()), why)});
        return false;
    }
    m_recoveryRevision = revision;
    m_recoveredEntry = entry;
    return true;
}

void Session::writeRecoveryInBackground()
{
    finishRecoveryWrite();
    auto job = std::make_shared<RecoveryJob>();
    job->entry = openEntry ? openEntry() : QByteArray();
    if (!m_db.isChanged() && job->entry.isEmpty()) return;
    job->keepBooks = m_recoveryRevision == m_db.revision() && m_recovery.pending();
    if (job->keepBooks && job->entry == m_recoveredEntry) return;
    if (!job->keepBooks) job->books = m_db.serialize();
    job->revision = m_db.revision();
    m_recoveryThread = QThread::create([job, recovery = m_recovery, path = m_path,
                                        wrap = faultFor(m_recovery.databaseCopy())]() mutable {
        job->why = recovery.write(job->keepBooks ? nullptr : &job->books, path, job->entry, wrap);
        job->books.clear();
    });
    m_recoveryJob = job;
    QThread *thread = m_recoveryThread;
    // Only the pointer is compared: a stale notice of an earlier thread does nothing.
    connect(thread, &QThread::finished, this, [this, thread] {
        if (m_recoveryThread == thread) finishRecoveryWrite();
    });
    thread->start();
}

void Session::finishRecoveryWrite()
{
    if (!m_recoveryThread) return;
    QThread *thread = std::exchange(m_recoveryThread, nullptr);
    thread->wait();
    delete thread;
    const std::shared_ptr<RecoveryJob> job = std::exchange(m_recoveryJob, nullptr);
    recoveryWritten(job->why, job->revision, job->entry);
}

void Session::dropRecovery()
{
    finishRecoveryWrite();
    m_recovery.clear();
    m_recoveryRevision = 0;
    m_recoveredEntry.clear();
}

bool Session::offerRecovery()
{
    const std::optional<Recovery::Pending> pending = m_recovery.pending();
    if (!pending || !pending->hasDatabase) return false;
    const QString when = pending->written.isValid() ? pending->written.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"))
                                                    : QStringLiteral("an unknown time");
    const auto answer = m_ask->ask(
        {Tone::Question, QStringLiteral("Recover unsaved changes"), QStringLiteral("Qorvane ended without saving the changes to \"%1\". A copy of them was kept at %2.").arg(shown(pending->original), when) + CRLF + CRLF + QStringLiteral("Restore them? (Discard keeps the copy among the safety copies on the Options "
                                                                                                                                                                                                                                            "panel.)"),
         {Answer::Yes, Answer::Discard},
         Answer::Yes,
         {{Answer::Yes, QStringLiteral("&Restore")}, {Answer::Discard, QStringLiteral("&Discard")}}});
    if (answer == Answer::Yes) {
        // Restored changes count as unsaved: the copy stays until they are
        // saved or abandoned.
        if (!adopt(m_recovery.databaseCopy(), pending->original, true, false)) return false;
        if (pending->hasEntry) {
            QFile entry(m_recovery.entryFile());
            if (entry.open(QIODevice::ReadOnly)) emit entryRecovered(entry.readAll());
        }
        return true;
    }
    if (answer != Answer::Discard) return false;  // closed unanswered: asked again next time
    // Discarded, but not lost: it joins the safety copies of its file.
    if (files::makePrivateFolder(unsavedFolder()).isEmpty()) {
        const QString target = unsavedFolder() + u'/' + unsavedBaseInDataFolder(pending->original) +
                               QStringLiteral(".unsaved-") +
                               (pending->written.isValid() ? pending->written : QDateTime::currentDateTime())
                                   .toString(QStringLiteral("yyyyMMdd-HHmmss"));
        if (QFileInfo::exists(target) || !QFile::rename(m_recovery.databaseCopy(), target))
            files::copyFile(m_recovery.databaseCopy(), target);
    }
    m_recovery.clear();
    emit earlierCopiesChanged();
    return false;
}

}  // namespace qor
