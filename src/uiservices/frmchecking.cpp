// SPDX-License-Identifier: GPL-3.0-or-later
#include "uiservices/frmchecking.h"

#include "uiservices/formposition.h"
#include "uiservices/twips.h"

#include <QCloseEvent>
#include <QLabel>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <cmath>

namespace qor {

namespace {
QFont tahomaBold(double points)
{
    QFont f(QStringLiteral("Tahoma"));
    f.setPointSizeF(points);
    f.setBold(true);
    return f;
}
}  // namespace

struct FrmChecking::Ui {
    QLabel *lblStatus = nullptr;
    QProgressBar *staChecking = nullptr;
    QPushButton *cmdOK = nullptr;
    float progress = 0;
};

FrmChecking::FrmChecking(QWidget *owner)
    : QWidget(owner, Qt::Window | Qt::WindowTitleHint | Qt::WindowCloseButtonHint |
                         Qt::MSWindowsFixedSizeDialogHint | Qt::CustomizeWindowHint),
      ui(new Ui)
{
    setObjectName(QStringLiteral("frmChecking"));
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(QString());
    setFixedSize(twipsToPx(3855), twipsToPx(2385));

    auto place = [](QWidget *w, int l, int t, int wd, int h) {
        w->setGeometry(twipsToPx(l), twipsToPx(t), twipsToPx(wd), twipsToPx(h));
    };
    ui->lblStatus = new QLabel(
        QStringLiteral("Checking bill periods to see if deleted entry needs archiving . . ."), this);
    ui->lblStatus->setObjectName(QStringLiteral("lblStatus"));
    ui->lblStatus->setFont(tahomaBold(9));
    ui->lblStatus->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
    ui->lblStatus->setWordWrap(true);
    place(ui->lblStatus, 135, 360, 3585, 450);

    ui->staChecking = new QProgressBar(this);
    ui->staChecking->setObjectName(QStringLiteral("staChecking"));
    ui->staChecking->setRange(0, 100);
    ui->staChecking->setValue(0);
    ui->staChecking->setTextVisible(false);
    place(ui->staChecking, 120, 960, 3615, 255);

    ui->cmdOK = new QPushButton(QStringLiteral("OK"), this);
    ui->cmdOK->setObjectName(QStringLiteral("cmdOK"));
    ui->cmdOK->setFont(tahomaBold(9.75));
    ui->cmdOK->setEnabled(false);
    place(ui->cmdOK, 1320, 1680, 1215, 495);
    connect(ui->cmdOK, &QPushButton::clicked, this, &QWidget::close);

    restoreFormPosition(this);
}

FrmChecking::~FrmChecking() { delete ui; }

FrmChecking *CheckingWindowSlot::show()
{
    if (!m_window) {
        m_window = new FrmChecking(m_owner);
        m_window->show();
    } else {
        // Reused by a second delete: bring it forward again.
        m_window->show();
        m_window->raise();
    }
    return m_window;
}

void FrmChecking::setProgress(float percent)
{
    ui->progress = percent;
    const int value = std::isfinite(percent) ? int(std::lround(percent)) : 0;
    ui->staChecking->setValue(qBound(0, value, 100));
}

float FrmChecking::progress() const { return ui->progress; }

void FrmChecking::setResultWord(const QString &word)
{
    ui->lblStatus->setText(QStringLiteral("Entry ") + word + QStringLiteral("d."));
}

void FrmChecking::enableOK() { ui->cmdOK->setEnabled(true); }

void FrmChecking::showOutcome(const QString &word)
{
    if (word.isEmpty()) return;
    setProgress(100);
    setResultWord(word);
}

QLabel *FrmChecking::lblStatus() const { return ui->lblStatus; }
QProgressBar *FrmChecking::staChecking() const { return ui->staChecking; }
QPushButton *FrmChecking::cmdOK() const { return ui->cmdOK; }

void FrmChecking::closeEvent(QCloseEvent *event)
{
    // Unloading keeps the place for the next delete.
    saveFormPosition(this);
    QWidget::closeEvent(event);
}

}  // namespace qor
