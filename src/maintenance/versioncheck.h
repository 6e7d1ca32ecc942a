// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// The check for a newer version: fetches the maker's version file over HTTPS,
// reads the number in it and compares it with this build's. The answer is
// told to the user by a message box or by frmUpdate.
#include <QObject>
#include <QPointer>
#include <QString>
#include <QUrl>
#include <chrono>
#include <optional>

class QNetworkAccessManager;
class QNetworkReply;
class QTimer;
class QWidget;

namespace qor::maintenance {

// Where the maker publishes the newest version's number. The whole address is
// this one constant; QORVANE_VERSION_URL replaces it (mirrors, tests).
inline constexpr char VersionFileUrl[] = "https://www.qorvane.example/qorver.txt";
inline constexpr char VersionUrlVariable[] = "QORVANE_VERSION_URL";
// Named in the message shown when the file can't be fetched.
inline constexpr char SupportAddress[] = "support@qorvane.example";
// A request with no complete answer after this long has failed.
inline constexpr std::chrono::milliseconds DefaultTimeout{15000};
// The version file holds one number; anything this large is not one.
inline constexpr qint64 MaxVersionFileSize = 64 * 1024;
// The version number is a plain decimal number of at most this many digits.
inline constexpr int MaxVersionDigits = 10;

// GetCurrentVersion: major * 1000000 + minor * 1000 + revision.
qint32 currentVersion();
// The address in force: QORVANE_VERSION_URL when set and not empty, else the
// constant.
QUrl versionFileUrl();
// The first field of the file (up to the first comma or line end, a quoted
// field up to its closing quote), blanks around it aside, as a number.
// Nothing: the body has no such field (empty, not text, or a first field that
// isn't a plain decimal number of at most MaxVersionDigits digits).
std::optional<double> versionInBody(const QByteArray &body);

// The two texts the check shows.
QString unableToConnectText();
QString latestVersionText();

class VersionCheck : public QObject {
    Q_OBJECT
public:
    enum class Outcome { Failed,
                         UpToDate,
                         NewVersion };
    Q_ENUM(Outcome)

    // Lives as a child of the main window: when the window goes, a request
    // under way goes with it and nothing is shown.
    explicit VersionCheck(QWidget *mainWindow);
    ~VersionCheck() override;

    // lblCheckForNewVersion_Click: starts the check. The window stays live;
    // a click while a check runs is ignored (returns false).
    bool start();
    bool isRunning() const { return m_busy; }

    // How long a request may take before it counts as failed.
    void setTimeout(std::chrono::milliseconds timeout) { m_timeout = timeout; }

    // The one check of a main window, made on first use.
    static VersionCheck *of(QWidget *mainWindow);

signals:
    // After the user was told (message box closed, or frmUpdate shown).
    void finished(qor::maintenance::VersionCheck::Outcome outcome);

private:
    void replyFinished();
    void fail();
    void report(Outcome outcome);

    QWidget *m_window;
    QNetworkAccessManager *m_network;
    QTimer *m_deadline;
    QPointer<QNetworkReply> m_reply;
    std::chrono::milliseconds m_timeout = DefaultTimeout;
    bool m_busy = false;
    QByteArray m_body;  // what was read of the answer, never more than one byte past the limit
};

// The click on the Options panel's link: VersionCheck::of(window)->start().
void checkForNewVersion(QWidget *mainWindow);

}  // namespace qor::maintenance
