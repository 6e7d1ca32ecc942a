// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/instancechannel.h"

#include "shell/singleinstance.h"

#include <QFileInfo>
#include <QLocalServer>
#include <QLocalSocket>

namespace qor {

namespace {
// One request is one line of UTF-8: the file's absolute path, or nothing.
constexpr qint64 MaxRequest = 64 * 1024;
}  // namespace

InstanceChannel::InstanceChannel(QObject *parent) : QObject(parent) {}

InstanceChannel::~InstanceChannel() = default;

QString InstanceChannel::defaultName()
{
    const QString lock = SingleInstanceGuard::lockPath();
    return lock.left(lock.lastIndexOf(QLatin1String(".lock"))) + QStringLiteral(".socket");
}

bool InstanceChannel::listen(const QString &name)
{
    delete m_server;
    m_server = new QLocalServer(this);
    // The user alone may hand files to the program.
    m_server->setSocketOptions(QLocalServer::UserAccessOption);
    QLocalServer::removeServer(name);
    connect(m_server, &QLocalServer::newConnection, this, &InstanceChannel::accept);
    return m_server->listen(name);
}

void InstanceChannel::accept()
{
    while (QLocalSocket *socket = m_server->nextPendingConnection()) {
        connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        auto take = [this, socket] {
            if (!socket->canReadLine()) {
                // A sender that never ends its line is dropped, not waited for.
                if (socket->bytesAvailable() > MaxRequest) socket->abort();
                return;
            }
            const QString path = QString::fromUtf8(socket->readLine(MaxRequest)).trimmed();
            socket->disconnectFromServer();
            emit requested(path);
        };
        connect(socket, &QLocalSocket::readyRead, this, take);
        take();
    }
}

bool InstanceChannel::handOver(const QString &file, const QString &name, int timeoutMs)
{
    QLocalSocket socket;
    socket.connectToServer(name);
    if (!socket.waitForConnected(timeoutMs)) return false;
    const QString path = file.isEmpty() ? QString() : QFileInfo(file).absoluteFilePath();
    socket.write(path.toUtf8() + '\n');
    if (!socket.waitForBytesWritten(timeoutMs)) return false;
    socket.disconnectFromServer();
    return true;
}

}  // namespace qor
