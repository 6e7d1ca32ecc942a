// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// The line between a second start of the program and the copy already
// running: the second start hands over the file it was given (or nothing)
// and ends; the running copy comes forward and opens that file.
#include <QObject>
#include <QString>

class QLocalServer;

namespace qor {

class InstanceChannel : public QObject {
    Q_OBJECT
public:
    explicit InstanceChannel(QObject *parent = nullptr);
    ~InstanceChannel() override;

    // Per user, beside the lock that tells a running copy.
    static QString defaultName();
    // Starts listening; only the copy that holds the lock calls this, so a
    // name left behind by a copy that died is taken over. False when the
    // system refused.
    bool listen(const QString &name = defaultName());
    // A second start: hands file (made absolute; empty for none) to the copy
    // listening on name. False when none took it within timeoutMs.
    static bool handOver(const QString &file, const QString &name = defaultName(), int timeoutMs = 3000);

signals:
    // A later start asked this copy to come forward and open path (empty:
    // only come forward).
    void requested(const QString &path);

private:
    void accept();
    QLocalServer *m_server = nullptr;
};

}  // namespace qor
