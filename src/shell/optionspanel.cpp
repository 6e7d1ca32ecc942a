#include "shell/optionspanel.h"

#include "shell/settingsstore.h"
#include "uiservices/assetpaths.h"
#include "uiservices/hovercommand.h"

#include <QCheckBox>
#include <QEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>

namespace qor {

namespace {
const char *onOff(bool on) { return on ? "True" : "False"; }
}  // namespace

OptionsPanel::OptionsPanel(AppContext &ctx, QWidget *parent) : Panel(5, ctx, parent)
{
    if (auto *version = control<QLabel>(QStringLiteral("lblVersionNumber")))
        version->setText(versionText());

    if (auto *help = control<HoverCommand>(QStringLiteral("cmdOpenHelp"))) {
        help->setStyleBits(hover::NoBorder);
        help->setBorderOffset(0);
        // The picture's ground is transparent; the panel's white shows there.
        help->setBackColor(Qt::white);
        help->setPicture(QImage(QString::fromLatin1(assets::Help)));
        help->setHovPicture(QImage(QString::fromLatin1(assets::HelpHover)));
        connect(help, &QAbstractButton::clicked, this, &OptionsPanel::helpRequested);
    }

    if (auto *link = controlWidget(QStringLiteral("lblCheckForNewVersion")))
        link->installEventFilter(this);

    // A box set from code runs its handler as a click does, so ApplySettings
    // writes back what it has just read.
    if (auto *confirm = control<QCheckBox>(QStringLiteral("chkCheckToConfirmEdits")))
        connect(confirm, &QCheckBox::toggled, this, [](bool on) {
            settings::putStoredSetting(QStringLiteral("CheckToConfirmEdits"), QString::fromLatin1(onOff(on)));
        });
    if (auto *expert = control<QCheckBox>(QStringLiteral("chkExpertMode")))
        connect(expert, &QCheckBox::toggled, this, [this](bool on) {
            settings::putStoredSetting(QStringLiteral("ExpertMode"), QString::fromLatin1(onOff(on)));
            emit expertModeClicked(on);
        });
    // cmdChangePath(0..3) and cmdCloseBooks get their handlers with the file
    // operations.
}

QString OptionsPanel::versionText()
{
    return QStringLiteral("%1.%2").arg(QOR_VERSION_MAJOR).arg(QOR_VERSION_MINOR);
}

void OptionsPanel::applySettings()
{
    if (auto *path = control<QLineEdit>(QStringLiteral("txtChangePath")))
        path->setText(settings::databasePath());
    if (auto *confirm = control<QCheckBox>(QStringLiteral("chkCheckToConfirmEdits")))
        confirm->setChecked(settings::isOn(QStringLiteral("Settings"), QStringLiteral("CheckToConfirmEdits")));
    if (auto *expert = control<QCheckBox>(QStringLiteral("chkExpertMode")))
        expert->setChecked(settings::isOn(QStringLiteral("Settings"), QStringLiteral("ExpertMode")));
}

bool OptionsPanel::expertMode() const
{
    const auto *box = control<QCheckBox>(QStringLiteral("chkExpertMode"));
    return box && box->isChecked();
}

bool OptionsPanel::checkToConfirmEdits() const
{
    const auto *box = control<QCheckBox>(QStringLiteral("chkCheckToConfirmEdits"));
    return box && box->isChecked();
}

bool OptionsPanel::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::MouseButtonRelease
        && watched == controlWidget(QStringLiteral("lblCheckForNewVersion"))) {
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
