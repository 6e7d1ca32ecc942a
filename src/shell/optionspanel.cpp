// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/optionspanel.h"

#include "mailgui/frmemailsettings.h"
#include "settings/settingsstore.h"
#include "uiservices/assetpaths.h"
#include "uiservices/hovercommand.h"
#include "uiservices/twips.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QDir>
#include <QEvent>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMouseEvent>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSpinBox>

#include <algorithm>

namespace qor {

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
        settings::CheckToConfirmEdits.set(on);
    });
    connect(m_expertMode, &QCheckBox::toggled, this, [this](bool on) {
        settings::ExpertMode.set(on);
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
    buildVersionControls();
}

namespace {
// The version limits: settings key (and its range), caption before, caption after.
struct Limit {
    settings::Number key;
    const char *before, *after;
};
const Limit Limits[3] = {{settings::VersionsKept, "Keep the newest", "versions,"},
                         {settings::VersionsDays, "and one a day for", "days,"},
                         {settings::VersionsMaxMB, "all within", "MB."}};
}  // namespace

void OptionsPanel::buildVersionControls()
{
    // Beside the file buttons: every earlier version of the open file and the
    // safety copies of dropped changes, and what each save keeps.
    auto *frame = new QGroupBox(QStringLiteral("Earlier Versions"), this);
    frame->setObjectName(QStringLiteral("fraVersions"));
    frame->setGeometry(twipsToPx(3840), twipsToPx(1080), twipsToPx(4455), twipsToPx(3960));
    // The look of the panel's other frame and boxes.
    frame->setFont(require("fraDocumentation")->font());
    const QFont labelFont = m_confirmEdits->font();
    m_versions = new QListWidget(frame);
    m_versions->setObjectName(QStringLiteral("lstVersions"));
    m_versions->setAccessibleName(QStringLiteral("Earlier versions"));
    m_versions->setGeometry(twipsToPx(120), twipsToPx(240), twipsToPx(4215), twipsToPx(2280));
    m_restoreVersion = new QPushButton(QStringLiteral("Restore &Version"), frame);
    m_restoreVersion->setFont(require("cmdCloseBooks")->font());
    m_restoreVersion->setObjectName(QStringLiteral("cmdRestoreVersion"));
    m_restoreVersion->setGeometry(twipsToPx(120), twipsToPx(2580), twipsToPx(1800), twipsToPx(375));
    m_restoreVersion->setEnabled(false);
    connect(m_versions, &QListWidget::currentRowChanged, this,
            [this](int row) { m_restoreVersion->setEnabled(row >= 0); });
    connect(m_restoreVersion, &QPushButton::clicked, this, [this] {
        if (QListWidgetItem *item = m_versions->currentItem())
            emit restoreCopyRequested(item->data(Qt::UserRole).toString());
    });
    for (int i = 0; i < 3; ++i) {
        const int top = 3060 + 300 * i;
        auto *before = new QLabel(QString::fromLatin1(Limits[i].before), frame);
        before->setFont(labelFont);
        before->setGeometry(twipsToPx(120), twipsToPx(top), twipsToPx(1700), twipsToPx(255));
        auto *spin = new QSpinBox(frame);
        spin->setObjectName(QStringLiteral("spn%1").arg(Limits[i].key.name()));
        spin->setRange(Limits[i].key.info().low, Limits[i].key.info().high);
        spin->setAccessibleName(QString::fromLatin1(Limits[i].before) + u' ' + QString::fromLatin1(Limits[i].after));
        spin->setGeometry(twipsToPx(1860), twipsToPx(top - 30), twipsToPx(1080), twipsToPx(285));
        before->setBuddy(spin);
        auto *after = new QLabel(QString::fromLatin1(Limits[i].after), frame);
        after->setFont(labelFont);
        after->setGeometry(twipsToPx(3000), twipsToPx(top), twipsToPx(1300), twipsToPx(255));
        // Stored the moment it changes, as every option is.
        connect(spin, &QSpinBox::valueChanged, this, [i](int value) {
            Limits[i].key.set(value);
        });
        m_limits[size_t(i)] = spin;
    }
}

void OptionsPanel::showEarlierCopies(const QList<Session::EarlierCopy> &copies)
{
    m_versions->clear();
    for (const Session::EarlierCopy &c : copies) {
        const QString text = c.time.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")) +
                             (c.unsaved ? QStringLiteral("   unsaved changes") : QStringLiteral("   version")) +
                             QStringLiteral("   %1 KB").arg((c.size + 1023) / 1024);
        auto *item = new QListWidgetItem(text, m_versions);
        item->setData(Qt::UserRole, c.path);
        item->setToolTip(QDir::toNativeSeparators(c.path));
    }
    m_restoreVersion->setEnabled(false);
}

void OptionsPanel::showReadOnly(bool readOnly)
{
    require<QAbstractButton>("cmdCloseBooks")->setEnabled(!readOnly);
    require<QAbstractButton>("cmdChangePath(2)")->setEnabled(!readOnly);
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
    m_confirmEdits->setChecked(settings::CheckToConfirmEdits.isOn());
    m_expertMode->setChecked(settings::ExpertMode.isOn());
    for (int i = 0; i < 3; ++i) {
        const QSignalBlocker quiet(m_limits[size_t(i)]);
        m_limits[size_t(i)]->setValue(Limits[i].key.get());
    }
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
    if (event->type() == QEvent::MouseButtonRelease && watched == m_checkForNewVersion) {
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
