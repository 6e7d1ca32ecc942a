#include "shell/optionspanel.h"

#include "mailgui/frmemailsettings.h"
#include "shell/settingsstore.h"
#include "uiservices/assetpaths.h"
#include "uiservices/hovercommand.h"
#include "uiservices/twips.h"

#include <QAbstractButton>
#include <QDir>
#include <QCheckBox>
#include <QEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>

#include <algorithm>

namespace qor {

namespace {
const char *onOff(bool on) { return on ? "True" : "False"; }
}  // namespace

OptionsPanel::OptionsPanel(AppContext &ctx, QWidget *parent) : Panel(5, ctx, parent)
{
    m_version = require<QLabel>("lblVersionNumber");
    m_checkForNewVersion = require("lblCheckForNewVersion");
    m_confirmEdits = require<QCheckBox>("chkCheckToConfirmEdits");
    m_expertMode = require<QCheckBox>("chkExpertMode");
    m_path = require<QLineEdit>("txtChangePath");
    showVersion();

    auto *help = require<HoverCommand>("cmdOpenHelp");
    help->setStyleBits(hover::NoBorder);
    help->setBorderOffset(0);
    // The button shows what the frame draws behind it, so no square of
    // another colour stands on the frame's ground.
    help->setBackColor(Qt::white);
    help->setGrabBG(true);
    // The pictures are drawn larger than the button: shrink them to fit whole.
    const int side = std::min(help->width(), help->height());
    auto fitted = [side](const char *path) {
        const QImage keyed = hover::keyedPicture(QImage(QString::fromLatin1(path)));
        return keyed.width() <= side && keyed.height() <= side
                   ? keyed
                   : keyed.scaled(side, side, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    };
    help->setPicture(fitted(assets::Help));
    help->setHovPicture(fitted(assets::HelpHover));
    connect(help, &QAbstractButton::clicked, this, &OptionsPanel::helpRequested);

    m_checkForNewVersion->installEventFilter(this);

    // A box set from code runs its handler as a click does, so ApplySettings
    // writes back what it has just read.
    connect(m_confirmEdits, &QCheckBox::toggled, this, [](bool on) {
        settings::putStoredSetting(QStringLiteral("CheckToConfirmEdits"), QString::fromLatin1(onOff(on)));
    });
    connect(m_expertMode, &QCheckBox::toggled, this, [this](bool on) {
        settings::putStoredSetting(QStringLiteral("ExpertMode"), QString::fromLatin1(onOff(on)));
        emit expertModeClicked(on);
    });
    for (int i = 0; i < 4; ++i)
        connect(require<QAbstractButton>(QStringLiteral("cmdChangePath(%1)").arg(i)), &QAbstractButton::clicked,
                this, [this, i] { emit changePathClicked(i); });
    connect(require<QAbstractButton>("cmdCloseBooks"), &QAbstractButton::clicked, this,
            &OptionsPanel::closeBooksClicked);
    connect(require<QAbstractButton>("cmdEmailSettings"), &QAbstractButton::clicked, this, [this] {
        FrmEmailSettings settingsWindow(window());
        settingsWindow.exec();
    });

    // Between the close-the-books button and the check boxes; shown once
    // unsaved changes were kept in a recovery copy.
    m_recoveryCopy = new QLabel(this);
    m_recoveryCopy->setObjectName(QStringLiteral("lblRecoveryCopy"));
    m_recoveryCopy->setGeometry(twipsToPx(240), twipsToPx(2580), twipsToPx(3255), twipsToPx(255));
    m_recoveryCopy->setTextFormat(Qt::PlainText);
    m_recoveryCopy->hide();
}

void OptionsPanel::showRecoveryCopy(const QString &path)
{
    const QString line = QStringLiteral("Unsaved changes were kept in %1").arg(QDir::toNativeSeparators(path));
    m_recoveryCopy->setToolTip(line);
    m_recoveryCopy->setText(
        m_recoveryCopy->fontMetrics().elidedText(line, Qt::ElideMiddle, m_recoveryCopy->width()));
    m_recoveryCopy->setAccessibleName(line);
    m_recoveryCopy->show();
}

void OptionsPanel::showVersion() { m_version->setText(versionText()); }

QString OptionsPanel::versionText()
{
    return QStringLiteral("%1.%2").arg(QOR_VERSION_MAJOR).arg(QOR_VERSION_MINOR);
}

void OptionsPanel::showDatabasePath()
{
    m_path->setText(settings::databasePath());
    m_path->setCursorPosition(0);  // a long path shows its start
}

void OptionsPanel::applySettings()
{
    showDatabasePath();
    m_confirmEdits->setChecked(settings::isOn(QStringLiteral("Settings"), QStringLiteral("CheckToConfirmEdits")));
    m_expertMode->setChecked(settings::isOn(QStringLiteral("Settings"), QStringLiteral("ExpertMode")));
}

bool OptionsPanel::expertMode() const
{
    return m_expertMode->isChecked();
}

bool OptionsPanel::checkToConfirmEdits() const
{
    return m_confirmEdits->isChecked();
}

bool OptionsPanel::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::MouseButtonRelease
        && watched == m_checkForNewVersion) {
        auto *me = static_cast<QMouseEvent *>(event);
        auto *w = static_cast<QWidget *>(watched);
        if (me->button() == Qt::LeftButton && w->rect().contains(me->position().toPoint())) {
            emit checkForNewVersionRequested();
            return true;
        }
    }
    return Panel::eventFilter(watched, event);
}

}  // namespace qor
