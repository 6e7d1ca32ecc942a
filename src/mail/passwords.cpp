// SPDX-License-Identifier: GPL-3.0-or-later
#include "mail/passwords.h"

#include <QEventLoop>
#include <QTimer>

#include <qt6keychain/keychain.h>

#include <memory>
#include <optional>

namespace qor::mail {

namespace {

PasswordStore *g_current = nullptr;

const QString Service = QStringLiteral("Qorvane");

// QtKeychain tells a missing keyring apart only on some desktops; without a
// session bus, or with nothing answering on it, the error is "other" and
// only its text says the service isn't there.
bool meansNoKeyring(QKeychain::Error e, const QString &text)
{
    if (e == QKeychain::NoBackendAvailable)
        return true;
    if (e != QKeychain::OtherError)
        return false;
    for (const char *sign : {"D-Bus", "DBus", "dbus", "org.freedesktop", "not provided by any", "kwallet",
                             "No keychain", "not available", "ServiceUnknown"})
        if (text.contains(QLatin1String(sign), Qt::CaseInsensitive))
            return true;
    return false;
}

PasswordStore::Reply replyOf(QKeychain::Job *job, const QString &password = {})
{
    using S = PasswordStore::Status;
    switch (job->error()) {
    case QKeychain::NoError:
        return {S::Found, password, {}};
    case QKeychain::EntryNotFound:
        return {S::NotFound, {}, {}};
    default:
        if (meansNoKeyring(job->error(), job->errorString()))
            return {S::NoKeyring, {}, job->errorString()};
        return {S::Failed, {}, job->errorString()};
    }
}

template <class Job>
Job *startJob(const QString &key, std::function<void(Job *)> done)
{
    auto *job = new Job(Service);
    job->setAutoDelete(true);
    job->setInsecureFallback(false);
    job->setKey(key);
    QObject::connect(job, &QKeychain::Job::finished, job, [done](QKeychain::Job *j) { done(static_cast<Job *>(j)); });
    job->start();
    return job;
}

}  // namespace

PasswordStore::PasswordStore() = default;

PasswordStore::~PasswordStore()
{
    if (m_installed)
        g_current = m_previous;
}

void PasswordStore::install()
{
    m_previous = g_current;
    g_current = this;
    m_installed = true;
}

PasswordStore &PasswordStore::current()
{
    if (g_current)
        return *g_current;
    static KeychainPasswordStore keyring;
    return keyring;
}

void PasswordStore::noted(const Reply &r)
{
    if (r.status == Status::NoKeyring)
        m_keyringProblem = r.message.isEmpty() ? QStringLiteral("no keyring service is running") : r.message;
    else if (r.status == Status::Found || r.status == Status::NotFound)
        m_keyringProblem.clear();
}

void PasswordStore::fetch(const QString &key, Done done)
{
    if (m_thisRun.contains(key)) {
        const Reply r{Status::Found, m_thisRun.value(key), {}};
        QTimer::singleShot(0, this, [done, r] { done(r); });
        return;
    }
    read(key, [this, done](const Reply &r) {
        noted(r);
        done(r);
    });
}

void PasswordStore::store(const QString &key, const QString &password, Done done)
{
    // What the user typed serves the rest of this run at once, whatever
    // the keyring makes of it.
    if (password.isEmpty())
        m_thisRun.remove(key);
    else
        m_thisRun.insert(key, password);
    auto finish = [this, done](const Reply &r) {
        noted(r);
        if (done)
            done(r);
    };
    if (password.isEmpty())
        remove(key, finish);
    else
        write(key, password, finish);
}

PasswordStore::Reply PasswordStore::fetchAndWait(const QString &key, int timeoutMs)
{
    // The reply may come after the wait has given up (a keyring that shows
    // an unlock prompt nobody answers): it then lands in this shared state,
    // not on a finished stack frame.
    struct State {
        QEventLoop loop;
        std::optional<Reply> reply;
    };
    auto state = std::make_shared<State>();
    fetch(key, [state](const Reply &r) {
        state->reply = r;
        state->loop.quit();
    });
    if (!state->reply) {
        QTimer::singleShot(timeoutMs, &state->loop, &QEventLoop::quit);
        state->loop.exec();
    }
    if (!state->reply)
        return {Status::NoKeyring, {}, QStringLiteral("the keyring did not answer")};
    return *state->reply;
}

void KeychainPasswordStore::read(const QString &key, Done done)
{
    startJob<QKeychain::ReadPasswordJob>(key, [done](QKeychain::ReadPasswordJob *j) { done(replyOf(j, j->textData())); });
}

void KeychainPasswordStore::write(const QString &key, const QString &password, Done done)
{
    auto *job = new QKeychain::WritePasswordJob(Service);
    job->setAutoDelete(true);
    job->setInsecureFallback(false);
    job->setKey(key);
    job->setTextData(password);
    QObject::connect(job, &QKeychain::Job::finished, job, [done](QKeychain::Job *j) { done(replyOf(j)); });
    job->start();
}

void KeychainPasswordStore::remove(const QString &key, Done done)
{
    startJob<QKeychain::DeletePasswordJob>(key, [done](QKeychain::DeletePasswordJob *j) {
        Reply r = replyOf(j);
        if (r.status == Status::NotFound)
            r.status = Status::Found;  // nothing to remove is removed
        done(r);
    });
}

MemoryPasswordStore::MemoryPasswordStore()
{
    install();
}

void MemoryPasswordStore::read(const QString &key, Done done)
{
    ++reads;
    Reply r;
    if (!keyringRunning)
        r = {Status::NoKeyring, {}, QStringLiteral("no keyring service is running")};
    else if (entries.contains(key))
        r = {Status::Found, entries.value(key), {}};
    else
        r = {Status::NotFound, {}, {}};
    QTimer::singleShot(0, this, [done, r] { done(r); });
}

void MemoryPasswordStore::write(const QString &key, const QString &password, Done done)
{
    ++writes;
    Reply r{Status::NoKeyring, {}, QStringLiteral("no keyring service is running")};
    if (keyringRunning) {
        entries.insert(key, password);
        r = {Status::Found, {}, {}};
    }
    QTimer::singleShot(0, this, [done, r] { done(r); });
}

void MemoryPasswordStore::remove(const QString &key, Done done)
{
    Reply r{Status::NoKeyring, {}, QStringLiteral("no keyring service is running")};
    if (keyringRunning) {
        entries.remove(key);
        r = {Status::Found, {}, {}};
    }
    QTimer::singleShot(0, this, [done, r] { done(r); });
}

}  // namespace qor::mail
