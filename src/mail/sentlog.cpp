// SPDX-License-Identifier: GPL-3.0-or-later
#include "mail/sentlog.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QStringList>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <cerrno>
#include <cstring>

namespace qor::mail {

namespace {

// A field never holds a tab or a line break, so every line splits the same.
QString field(QString s)
{
    for (QChar &c : s)
        if (c == u'\t' || c == u'\n' || c == u'\r' || c == QChar::LineSeparator || c == QChar::ParagraphSeparator)
            c = u' ';
    return s;
}

// Writes all bytes to a file opened for the owner alone; the mode is set
// again in case the file was made by hand with a wider one.
bool writeOwnerOnly(const QString &path, const QByteArray &bytes, int flags, QString &error)
{
    const QByteArray name = QFile::encodeName(path);
    const int fd = ::open(name.constData(), flags | O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    if (fd < 0) {
        error = QStringLiteral("%1: %2").arg(path, QString::fromLocal8Bit(strerror(errno)));
        return false;
    }
    bool ok = ::fchmod(fd, 0600) == 0;
    for (qsizetype done = 0; ok && done < bytes.size();) {
        const ssize_t n = ::write(fd, bytes.constData() + done, size_t(bytes.size() - done));
        if (n < 0 && errno == EINTR)
            continue;
        ok = n > 0;
        done += n > 0 ? n : 0;
    }
    ok = ::fsync(fd) == 0 && ok;
    if (!ok)
        error = QStringLiteral("%1: %2").arg(path, QString::fromLocal8Bit(strerror(errno)));
    return ::close(fd) == 0 && ok;
}

}  // namespace

SentMailLog::SentMailLog(QString path) : m_path(std::move(path)) {}

QString SentMailLog::defaultPath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
           QStringLiteral("/QOR/sent-mail.log");
}

QString SentMailLog::line(const Entry &e)
{
    const QDateTime t = e.time.toOffsetFromUtc(e.time.offsetFromUtc());
    return QStringList{t.toString(Qt::ISODate), field(e.customerNumber), field(e.address), field(e.subject),
                       field(e.result)}
               .join(u'\t') +
           u'\n';
}

bool SentMailLog::append(const QList<Entry> &entries)
{
    if (entries.isEmpty())
        return true;
    QDir().mkpath(QFileInfo(m_path).absolutePath());
    QByteArray bytes;
    for (const Entry &e : entries)
        bytes += line(e).toUtf8();
    return writeOwnerOnly(m_path, bytes, O_APPEND, m_error);
}

bool SentMailLog::prune(const QDateTime &now)
{
    QFile f(m_path);
    if (!f.exists())
        return true;
    if (!f.open(QIODevice::ReadOnly)) {
        m_error = f.errorString();
        return false;
    }
    const QDateTime oldest = now.addMonths(-13);
    QByteArray kept;
    bool dropped = false;
    while (!f.atEnd()) {
        const QByteArray l = f.readLine();
        const QDateTime t = QDateTime::fromString(QString::fromUtf8(l.left(l.indexOf('\t'))), Qt::ISODate);
        if (t.isValid() && t < oldest)
            dropped = true;
        else if (!l.trimmed().isEmpty())
            kept += l.endsWith('\n') ? l : l + '\n';
    }
    f.close();
    if (!dropped)
        return true;
    const QString temp = m_path + QStringLiteral(".new");
    if (!writeOwnerOnly(temp, kept, O_TRUNC, m_error))
        return false;
    if (::rename(QFile::encodeName(temp).constData(), QFile::encodeName(m_path).constData()) != 0) {
        m_error = QStringLiteral("%1: %2").arg(m_path, QString::fromLocal8Bit(strerror(errno)));
        return false;
    }
    return true;
}

QList<SentMailLog::Entry> SentMailLog::entries() const
{
    QList<Entry> out;
    QFile f(m_path);
    if (!f.open(QIODevice::ReadOnly))
        return out;
    while (!f.atEnd()) {
        const QStringList p = QString::fromUtf8(f.readLine()).chopped(1).split(u'\t');
        if (p.size() == 5)
            out << Entry{QDateTime::fromString(p[0], Qt::ISODate), p[1], p[2], p[3], p[4]};
    }
    return out;
}

}  // namespace qor::mail
