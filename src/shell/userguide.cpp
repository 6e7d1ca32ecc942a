// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/userguide.h"

#include "uiservices/dialogservice.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>

static void initHelpResource() { Q_INIT_RESOURCE(help); }

namespace qor::userguide {

namespace {

const QString GuideName = QStringLiteral("qorvane-guide.html");
const QString CRLF = QStringLiteral("\r\n");

}  // namespace

QString installedCopy(const QString &programFolder)
{
    if (programFolder.isEmpty()) return {};
    // QOR_GUIDE_FROM_BINDIR: the install's documentation folder as seen from
    // its program folder, so any prefix finds its own guide.
    const QString path =
        QDir::cleanPath(QDir(programFolder).filePath(QStringLiteral(QOR_GUIDE_FROM_BINDIR "/") + GuideName));
    const QFileInfo info(path);
    return info.isFile() && info.isReadable() ? info.absoluteFilePath() : QString();
}

QString writtenCopy(QString *why)
{
    initHelpResource();
    const QString folder =
        QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) + QStringLiteral("/QOR");
    auto fail = [why](const QString &reason) {
        if (why) *why = reason;
        return QString();
    };
    if (!QDir().mkpath(folder)) return fail(QStringLiteral("the folder \"%1\" could not be made").arg(folder));
    QFile source(QStringLiteral(":/help/") + GuideName);
    if (!source.open(QIODevice::ReadOnly)) return fail(source.errorString());
    const QString target = folder + u'/' + GuideName;
    QSaveFile out(target);
    if (!out.open(QIODevice::WriteOnly) || out.write(source.readAll()) < 0 || !out.commit())
        return fail(QStringLiteral("\"%1\": %2").arg(QDir::toNativeSeparators(target), out.errorString()));
    return target;
}

bool open(QWidget *owner, const QString &programFolder, const Opener &opener)
{
    QString why;
    QString path = installedCopy(programFolder);
    if (path.isEmpty()) path = writtenCopy(&why);
    DialogService::Message m{QMessageBox::Information, AppTitle, {}};
    if (path.isEmpty()) {
        m.icon = QMessageBox::Warning;
        m.text = QStringLiteral("The user guide could not be written for viewing: %1.").arg(why);
    } else {
        if (opener(QUrl::fromLocalFile(path))) return true;
        m.text = QStringLiteral("No program to show the user guide could be started.") + CRLF + CRLF +
                 QStringLiteral("The guide is the file") + CRLF + QDir::toNativeSeparators(path) + CRLF +
                 QStringLiteral("Open it in a web browser.");
    }
    DialogService::current().message(owner, m);
    return false;
}

}  // namespace qor::userguide
