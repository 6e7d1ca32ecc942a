// SPDX-License-Identifier: GPL-3.0-or-later
#include "maintenance/frmupdate.h"

#include "uiservices/fonts.h"
#include "uiservices/formposition.h"
#include "uiservices/twips.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QDir>
#include <QLabel>
#include <QPointer>
#include <QProcess>
#include <QPushButton>

namespace qor::maintenance {

namespace {

QPointer<FrmUpdate> s_form;

QFont tahomaBold(double points)
{
    QFont f(QStringLiteral("Tahoma"));
    f.setPointSizeF(points);
    f.setBold(true);
    return f;
}

void place(QWidget *w, int left, int top, int width, int height)
{
    w->setGeometry(twipsToPx(left), twipsToPx(top), twipsToPx(width), twipsToPx(height));
}

QLabel *label(QWidget *parent, const char *name, const char *caption, int left, int top, int width,
              int height)
{
    auto *l = new QLabel(QString::fromLatin1(caption), parent);
    l->setObjectName(QString::fromLatin1(name));
    l->setFont(tahomaBold(9));
    l->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
    l->setWordWrap(true);
    place(l, left, top, width, height);
    return l;
}

}  // namespace

QString updaterPath(const QString &programFolder)
{
    return QDir(QDir(programFolder).absolutePath()).filePath(QString::fromLatin1(UpdaterName));
}

bool startUpdater(const QString &programFolder)
{
    // An absolute path: QProcess runs it as it is, never looking along PATH,
    // and no shell reads it.
    const QString folder = QDir(programFolder).absolutePath();
    return QProcess::startDetached(updaterPath(folder), {}, folder);
}

FrmUpdate::FrmUpdate(QWidget *owner)
    : QWidget(owner, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint |
                         Qt::MSWindowsFixedSizeDialogHint)
{
    ensureDesignFonts();
    setObjectName(QStringLiteral("frmUpdate"));
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(QStringLiteral("   Click DOWNLOAD to begin Auto-Update."));
    setFixedSize(twipsToPx(4215), twipsToPx(2385));

    // Created in tab order: the button first, the labels after it.
    m_cmdDownload = new QPushButton(QStringLiteral("DOWNLOAD"), this);
    m_cmdDownload->setObjectName(QStringLiteral("cmdDownload"));
    m_cmdDownload->setFont(tahomaBold(11.25));
    m_cmdDownload->setDefault(true);
    place(m_cmdDownload, 1080, 1680, 2055, 495);
    connect(m_cmdDownload, &QPushButton::clicked, this, &FrmUpdate::cmdDownloadClick);

    label(this, "lblStatus", "PLEASE SAVE YOUR WORK.", 615, 660, 2985, 210);
    label(this, "Label1", "Clicking Download will close this program and begin the Qorvane Auto-Update.", 135,
          1080, 3945, 450);
    label(this, "Label2", "New Version Found.", 615, 240, 2985, 210);

    restoreFormPosition(this);
}

FrmUpdate *FrmUpdate::showFor(QWidget *owner)
{
    if (!s_form)
        s_form = new FrmUpdate(owner);
    s_form->show();
    s_form->raise();
    s_form->m_cmdDownload->setFocus();
    return s_form;
}

FrmUpdate *FrmUpdate::existing() { return s_form; }

bool FrmUpdate::isShowing() { return s_form && s_form->isVisible(); }

void FrmUpdate::cmdDownloadClick()
{
    saveFormPosition(this);
    startUpdater(QCoreApplication::applicationDirPath());
    m_downloadStarted = true;
    close();
}

void FrmUpdate::closeEvent(QCloseEvent *event)
{
    QWidget::closeEvent(event);
    if (!m_downloadStarted)
        return;
    // Hidden first: the main window refuses to close while this form shows.
    // It still asks about unsaved changes, and may stay open.
    hide();
    if (QWidget *owner = parentWidget())
        owner->close();
}

}  // namespace qor::maintenance
