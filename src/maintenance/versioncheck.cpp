// SPDX-License-Identifier: GPL-3.0-or-later
#include "maintenance/versioncheck.h"

#include "maintenance/frmupdate.h"
#include "uiservices/dialogservice.h"

#include <QMessageBox>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTimer>
#include <QWidget>
#include <utility>

namespace qor::maintenance {

namespace {
}

qint32 currentVersion()
{
    return QOR_VERSION_MAJOR * 1000000 + QOR_VERSION_MINOR * 1000 + QOR_VERSION_PATCH;
}

QUrl versionFileUrl()
{
    const QString fromEnv = qEnvironmentVariable(VersionUrlVariable);
    return QUrl(fromEnv.isEmpty() ? QString::fromLatin1(VersionFileUrl) : fromEnv);
}

std::optional<double> versionInBody(const QByteArray &body)
{
    // A NUL byte means this is no text file, whatever else it holds.
    if (body.contains('\0'))
        return std::nullopt;
    const QString text = QString::fromLatin1(body);
    qsizetype i = 0;
    while (i < text.size() && text.at(i).isSpace())
        ++i;
    if (i == text.size())
        return std::nullopt;
    QString field;
    if (text.at(i) == u'"') {
        const qsizetype close = text.indexOf(u'"', i + 1);
        field = text.mid(i + 1, close < 0 ? -1 : close - i - 1);
    } else {
        qsizetype end = i;
        while (end < text.size() && text.at(end) != u',' && text.at(end) != u'\r' && text.at(end) != u'\n')
            ++end;
        field = text.mid(i, end - i);
    }
    // Only a plain decimal number of at most ten digits is a version: no
    // sign, fraction, exponent or other text ("1e300" is not a huge version).
    field = field.trimmed();
    if (field.isEmpty() || field.size() > MaxVersionDigits)
        return std::nullopt;
    for (QChar c : field)
        if (c < u'0' || c > u'9')
            return std::nullopt;
    return double(field.toLongLong());
}

QString unableToConnectText()
{
    return QStringLiteral("Unable to connect to server.  Please try again later\r\nor contact ") +
           QString::fromLatin1(SupportAddress) + QStringLiteral(" if the problem persists.");
}

QString latestVersionText()
{
    return QStringLiteral("You are currently running the latest version of the software.");
}

VersionCheck::VersionCheck(QWidget *mainWindow)
    : QObject(mainWindow), m_window(mainWindow), m_network(new QNetworkAccessManager(this)),
      m_deadline(new QTimer(this))
{
    setObjectName(QStringLiteral("versionCheck"));
    m_deadline->setSingleShot(true);
    connect(m_deadline, &QTimer::timeout, this, [this] {
        if (m_reply)
            m_reply->abort();  // finishes the reply with an error
    });
}

VersionCheck::~VersionCheck()
{
    if (m_reply) {
        m_reply->disconnect(this);
        m_reply->abort();
    }
}

VersionCheck *VersionCheck::of(QWidget *mainWindow)
{
    auto *check = mainWindow->findChild<VersionCheck *>(QStringLiteral("versionCheck"), Qt::FindDirectChildrenOnly);
    return check ? check : new VersionCheck(mainWindow);
}

bool VersionCheck::start()
{
    if (m_busy)
        return false;
    m_busy = true;
    const QUrl url = versionFileUrl();
    // Only an answer over a checked TLS connection counts; a plain address is
    // not even asked.
    if (url.scheme().compare(QLatin1String("https"), Qt::CaseInsensitive) != 0 || url.host().isEmpty()) {
        // Told after the click has returned, as every other answer is.
        QTimer::singleShot(0, this, [this] { fail(); });
        return true;
    }
    QNetworkRequest request(url);
    // Never follow a redirect to plain HTTP.
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::NoLessSafeRedirectPolicy);
    request.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    request.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
    m_reply = m_network->get(request);
    m_body.clear();
    // Reading stops at the limit: no more is taken from the connection than
    // one byte past it, which is enough to know the file is too large.
    m_reply->setReadBufferSize(MaxVersionFileSize + 1);
    connect(m_reply, &QNetworkReply::readyRead, this, [this] {
        if (!m_reply)
            return;
        m_body += m_reply->read(MaxVersionFileSize + 1 - m_body.size());
        if (m_body.size() > MaxVersionFileSize)
            m_reply->abort();
    });
    connect(m_reply, &QNetworkReply::finished, this, &VersionCheck::replyFinished);
    m_deadline->start(m_timeout);
    return true;
}

void VersionCheck::replyFinished()
{
    m_deadline->stop();
    QNetworkReply *reply = m_reply;
    m_reply = nullptr;
    if (!reply)
        return;
    reply->deleteLater();

    const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    const bool tls = reply->url().scheme().compare(QLatin1String("https"), Qt::CaseInsensitive) == 0;
    if (reply->error() != QNetworkReply::NoError || !tls || status < 200 || status > 299) {
        fail();
        return;
    }
    if (m_body.size() <= MaxVersionFileSize)
        m_body += reply->read(MaxVersionFileSize + 1 - m_body.size());
    const QByteArray body = std::exchange(m_body, QByteArray());
    const std::optional<double> found = body.size() > MaxVersionFileSize ? std::nullopt : versionInBody(body);
    if (!found) {
        fail();
        return;
    }
    // Only a strictly larger number is a new version.
    if (*found > double(currentVersion())) {
        FrmUpdate::showFor(m_window);
        report(Outcome::NewVersion);
        return;
    }
    DialogService::current().message(m_window, {QMessageBox::NoIcon, AppTitle, latestVersionText()});
    report(Outcome::UpToDate);
}

void VersionCheck::fail()
{
    DialogService::current().message(m_window, {QMessageBox::NoIcon, AppTitle, unableToConnectText()});
    report(Outcome::Failed);
}

void VersionCheck::report(Outcome outcome)
{
    m_busy = false;
    emit finished(outcome);
}

void checkForNewVersion(QWidget *mainWindow) { VersionCheck::of(mainWindow)->start(); }

}  // namespace qor::maintenance
