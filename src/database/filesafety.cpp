// SPDX-License-Identifier: GPL-3.0-or-later
#include "filesafety.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QIODevice>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace qor::files {

namespace {

// The file being written, as a device: every failed write keeps the
// system's own reason ("No space left on device").
class FdDevice : public QIODevice {
public:
    explicit FdDevice(int fd) : m_fd(fd) { open(QIODevice::WriteOnly | QIODevice::Unbuffered); }

protected:
    qint64 readData(char *, qint64) override { return -1; }
    qint64 writeData(const char *data, qint64 size) override
    {
        qint64 done = 0;
        while (done < size) {
            const ssize_t n = ::write(m_fd, data + done, size_t(std::min<qint64>(size - done, qint64(1) << 30)));
            if (n < 0 && errno == EINTR) continue;
            if (n <= 0) {
                setErrorString(n < 0 ? systemReason(errno) : QStringLiteral("nothing could be written"));
                return -1;
            }
            done += n;
        }
        return done;
    }

private:
    int m_fd;
};

constexpr char AclAttribute[] = "system.posix_acl_access";
constexpr char TemporaryInfix[] = ".new-";
constexpr int TemporaryRandomLength = 6;

}  // namespace

QString systemReason(int error) { return QString::fromLocal8Bit(std::strerror(error)); }

QDateTime processStartTime()
{
    // The program asks first thing in main(), so this is its start.
    static const QDateTime start = QDateTime::currentDateTime();
    return start;
}

QByteArray temporaryPattern(const QString &target)
{
    const QFileInfo info(target);
    return QFile::encodeName(info.absolutePath() + u'/' + u'.' + info.fileName()) + TemporaryInfix + "XXXXXX";
}

QStringList removeStaleTemporaries(const QString &target, const QDateTime &olderThan)
{
    const QFileInfo info(target);
    const QString prefix = u'.' + info.fileName() + QLatin1String(TemporaryInfix);
    QStringList removed;
    const QDir dir(info.absolutePath());
    const QStringList names = dir.entryList({prefix + QStringLiteral("*")}, QDir::Files | QDir::Hidden | QDir::System);
    for (const QString &name : names) {
        if (name.size() != prefix.size() + TemporaryRandomLength || !name.startsWith(prefix)) continue;
        const QStringView random = QStringView(name).mid(prefix.size());
        if (!std::all_of(random.begin(), random.end(), [](QChar c) {
                return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || (c >= u'0' && c <= u'9');
            }))
            continue;
        const QString path = dir.filePath(name);
        const QFileInfo leftover(path);
        if (leftover.isSymLink() || !leftover.isFile() || leftover.lastModified() >= olderThan) continue;
        if (QFile::remove(path)) removed << path;
    }
    return removed;
}

QString makePrivateFolder(const QString &folder)
{
    if (QFileInfo(folder).isDir()) return QString();
    const QByteArray native = QFile::encodeName(QDir::cleanPath(QDir(folder).absolutePath()));
    // Each missing level is made 0700, whatever the umask.
    for (qsizetype at = 1; at <= native.size(); ++at) {
        if (at < native.size() && native.at(at) != '/') continue;
        if (::mkdir(native.left(at).constData(), 0700) != 0 && errno != EEXIST) return systemReason(errno);
    }
    return QFileInfo(folder).isDir() ? QString() : systemReason(ENOTDIR);
}

ReplaceResult replaceFile(const QString &target, const std::function<bool(QIODevice &)> &write,
                          const ReplaceOptions &options)
{
    ReplaceResult r;
    auto fail = [&r](const QString &reason) {
        r.ok = false;
        r.reason = reason;
        return r;
    };
    const QFileInfo info(target);
    if (info.exists() && !info.isFile())
        return fail(QStringLiteral("that name belongs to something that is not a file"));
    // A link is followed: the file it points to is the one replaced.
    const QString canonical = info.canonicalFilePath();
    const QString real = canonical.isEmpty() ? info.absoluteFilePath() : canonical;
    const QByteArray realName = QFile::encodeName(real);
    struct stat old {};
    const bool existed = ::stat(realName.constData(), &old) == 0;
    if (existed && ::access(realName.constData(), W_OK) != 0) return fail(systemReason(errno));

    // The new content goes to a fresh file in the same folder, so that the
    // rename below replaces the old file in one step.
    QByteArray temp = temporaryPattern(real);
    const int fd = ::mkostemp(temp.data(), O_CLOEXEC);
    if (fd < 0) return fail(systemReason(errno));
    auto abandon = [&](const QString &reason) {
        ::close(fd);
        ::unlink(temp.constData());
        return fail(reason);
    };
    if (existed) {
        // The old file's owner and group where allowed (another owner's file
        // stays ours; a group of ours is kept), its mode and its access ACL.
        if (::fchown(fd, old.st_uid, old.st_gid) != 0 && ::fchown(fd, uid_t(-1), old.st_gid) != 0) {
            // Another owner's file becomes ours, and a group we are not in can't be kept.
        }
        if (::fchmod(fd, old.st_mode & 07777) != 0) return abandon(systemReason(errno));
        char acl[4096];
        const ssize_t size = ::getxattr(realName.constData(), AclAttribute, acl, sizeof acl);
        if (size > 0 && ::fsetxattr(fd, AclAttribute, acl, size_t(size), 0) != 0 && errno != ENOTSUP)
            return abandon(systemReason(errno));
        r.otherNames = old.st_nlink > 1;
    } else if (::fchmod(fd, 0600) != 0) {
        return abandon(systemReason(errno));
    }
    {
        FdDevice file(fd);
        std::unique_ptr<QIODevice> through = options.wrap ? options.wrap(file) : nullptr;
        QIODevice &device = through ? *through : static_cast<QIODevice &>(file);
        if (!write(device)) {
            const QString reason = device.errorString();
            return abandon(reason.isEmpty() ? QStringLiteral("the data could not be written") : reason);
        }
    }
    if (::fsync(fd) != 0) return abandon(systemReason(errno));
    if (::close(fd) != 0) {
        const int error = errno;
        ::unlink(temp.constData());
        return fail(systemReason(error));
    }
    if (options.beforeRename) {
        const QString note = options.beforeRename(real);
        if (!note.isEmpty()) r.notes << note;
    }
    if (::rename(temp.constData(), realName.constData()) != 0) {
        const int error = errno;
        ::unlink(temp.constData());
        if (options.undoBeforeRename) options.undoBeforeRename();
        r.notes.clear();
        return fail(systemReason(error));
    }
    // The new name must survive a power cut too.
    const int dir = ::open(QFile::encodeName(QFileInfo(real).absolutePath()).constData(),
                           O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (dir >= 0) {
        ::fsync(dir);
        ::close(dir);
    }
    return r;
}

QString copyFile(const QString &from, const QString &to)
{
    QFile source(from);
    if (!source.open(QIODevice::ReadOnly)) return source.errorString();
    struct stat old {};
    const bool timed = ::fstat(source.handle(), &old) == 0;
    // A new file, not a replaced one: it takes none of the source's rights.
    const ReplaceResult copied = replaceFile(to, [&source](QIODevice &out) {
        char block[1 << 16];
        for (qint64 got; (got = source.read(block, sizeof block)) > 0;)
            if (out.write(block, got) != got) return false;
        return source.atEnd();
    });
    if (!copied.ok) return copied.reason;
    if (timed) {
        const struct timespec times[2] = {old.st_atim, old.st_mtim};
        ::utimensat(AT_FDCWD, QFile::encodeName(to).constData(), times, 0);
    }
    return QString();
}

QString writeVerified(const QString &path, const QByteArray &bytes, const DeviceWrapper &wrap)
{
    ReplaceOptions options;
    options.wrap = wrap;
    const ReplaceResult r = replaceFile(
        path, [&bytes](QIODevice &d) { return d.write(bytes) == bytes.size(); }, options);
    if (!r.ok) return r.reason;
    // Counted as written only once it reads back the same, block by block.
    QFile back(path);
    if (!back.open(QIODevice::ReadOnly)) return back.errorString();
    constexpr qint64 Block = qint64(1) << 20;
    for (qint64 at = 0; at < bytes.size(); at += Block) {
        const QByteArray got = back.read(std::min(Block, bytes.size() - at));
        if (got.isEmpty() || std::memcmp(got.constData(), bytes.constData() + at, size_t(got.size())) != 0 ||
            got.size() != std::min(Block, bytes.size() - at))
            return QStringLiteral("the copy does not read back as it was written");
    }
    if (!back.atEnd() || back.size() != bytes.size())
        return QStringLiteral("the copy does not read back as it was written");
    return QString();
}

QString nameSafe(QString text)
{
    for (QChar &c : text)
        if (c == u'/' || c.unicode() < 0x20 || c.unicode() == 0x7F) c = u'_';
    return text;
}

QString eachFileName(const QString &displayName, const QString &number, const QString &what)
{
    return nameSafe(displayName + QStringLiteral(" (") + number + QStringLiteral(") - ") + what) +
           QStringLiteral(".pdf");
}

}  // namespace qor::files
