// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// The account's password lives in the desktop's keyring, never in a file of
// the program. The keyring answers asynchronously: a reply comes through the
// event loop (the command line runs one with waitFor). Where no keyring
// service runs, the password the user types is kept in memory until the
// program ends, so it is asked for once per run, and the reason is kept for
// the window to show.
#include <QHash>
#include <QObject>
#include <QString>

#include <functional>

namespace qor::mail {

class PasswordStore : public QObject {
    Q_OBJECT
public:
    enum class Status { Found,
                        NotFound,
                        NoKeyring,
                        Failed };
    struct Reply {
        Status status = Status::Failed;
        QString password;
        QString message;  // why, for NoKeyring and Failed
    };
    using Done = std::function<void(const Reply &)>;

    ~PasswordStore() override;

    // The password of the account key: what the user gave this run when
    // there is no keyring, else the keyring's entry.
    void fetch(const QString &key, Done done);
    // Stores it in the keyring (the reply says NoKeyring when there is none)
    // and keeps it for the rest of this run, in memory only. An empty
    // password removes the entry.
    void store(const QString &key, const QString &password, Done done = {});
    // Keeps a password for this run only (asked because there is no keyring).
    void keepForThisRun(const QString &key, const QString &password) { m_thisRun.insert(key, password); }

    // Why no keyring could be used, once a keyring call has found that out;
    // empty while the keyring works or hasn't been asked.
    QString keyringProblem() const { return m_keyringProblem; }

    // Runs an event loop until the reply of fetch() is in, or the time is
    // up (a prompt to unlock the keyring left unanswered): then NoKeyring.
    Reply fetchAndWait(const QString &key, int timeoutMs = 120000);

    // The store in use: the one installed last (a test's memory store), else
    // the desktop's keyring.
    static PasswordStore &current();

protected:
    PasswordStore();
    virtual void read(const QString &key, Done done) = 0;
    virtual void write(const QString &key, const QString &password, Done done) = 0;
    virtual void remove(const QString &key, Done done) = 0;
    // Makes this the current store until it is destroyed.
    void install();

private:
    void noted(const Reply &r);
    QHash<QString, QString> m_thisRun;
    QString m_keyringProblem;
    PasswordStore *m_previous = nullptr;
    bool m_installed = false;
};

// The desktop's keyring through QtKeychain, service "Qorvane". Its plain-
// text fallback stays off: a password never lands in a settings file.
class KeychainPasswordStore : public PasswordStore {
    Q_OBJECT
public:
    KeychainPasswordStore() = default;

protected:
    void read(const QString &key, Done done) override;
    void write(const QString &key, const QString &password, Done done) override;
    void remove(const QString &key, Done done) override;
};

// Passwords in memory, for tests: installs itself while it lives. Replies
// come through the event loop, as the keyring's do.
class MemoryPasswordStore : public PasswordStore {
    Q_OBJECT
public:
    MemoryPasswordStore();
    bool keyringRunning = true;  // false: behaves as a desktop without one
    QHash<QString, QString> entries;
    int reads = 0, writes = 0;

protected:
    void read(const QString &key, Done done) override;
    void write(const QString &key, const QString &password, Done done) override;
    void remove(const QString &key, Done done) override;
};

}  // namespace qor::mail
