// SPDX-License-Identifier: GPL-3.0-or-later
#include "printing/printoptionspanel.h"

#include "database/regional.h"
#include "pages/preview.h"
#include "printing/invoicerun.h"
#include "settings/settingsstore.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>

#include <cmath>

namespace qor {

namespace {

QString indexed(const char *name, int i) { return QStringLiteral("%1(%2)").arg(QLatin1String(name)).arg(i); }

}  // namespace

PrintOptionsPanel::PrintOptionsPanel(AppContext &ctx, QWidget *parent) : Panel(4, ctx, parent)
{
    for (int i = 0; i < 3; ++i) {
        m_optTitle[size_t(i)] = require<QRadioButton>(indexed("optInvoiceTitle", i));
        m_optTitleSize[size_t(i)] = require<QRadioButton>(indexed("optInvoiceTitleSize", i));
        m_previewBottom[size_t(i)] = require<QLabel>(indexed("picPrintPreviewBottom", i));
        m_previewTop[size_t(i)] = require<QLabel>(indexed("picPrintPreviewTop", i));
    }
    m_txtTitle = require<QLineEdit>("txtInvoiceTitle");
    m_chkAddDate = require<QCheckBox>("chkAddInvoiceDateToInvoice");
    m_chkDuplicates = require<QCheckBox>("chkPrintDuplicateInvoices");
    m_chkKeepTwelve = require<QCheckBox>("chkKeepTwelveLines");
    m_chkMove = require<QCheckBox>("chkMoveAccordingly");
    m_previewBack = require<QAbstractButton>("cmdPrintPreviewBack");
    m_previewForward = require<QAbstractButton>("cmdPrintPreviewForward");

    // The pictures are drawn from the real forms, so they show what prints.
    const pages::PreviewPictures pictures = pages::makePreviewPictures();
    for (int i = 0; i < 3; ++i) {
        m_previewTop[size_t(i)]->setPixmap(QPixmap::fromImage(pictures.top[size_t(i)]));
        m_previewBottom[size_t(i)]->setPixmap(QPixmap::fromImage(pictures.bottom[size_t(i)]));
        m_previewTop[size_t(i)]->setAlignment(Qt::AlignLeft | Qt::AlignTop);
        m_previewBottom[size_t(i)]->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    }

    // Option buttons report on being turned on, from a click or from code,
    // as the settings are applied; the one turned off says nothing.
    for (int i = 0; i < 3; ++i) {
        connect(m_optTitle[size_t(i)], &QRadioButton::toggled, this, [i](bool on) {
            if (on)
                settings::InvoiceTitleOption.set(i);
        });
        connect(m_optTitleSize[size_t(i)], &QRadioButton::toggled, this, [i](bool on) {
            if (on)
                settings::InvoiceTitleSize.set(i);
        });
    }
    connect(m_txtTitle, &QLineEdit::textChanged, this, [](const QString &text) {
        settings::InvoiceTitleText.set(text);
    });
    connect(m_chkAddDate, &QCheckBox::toggled, this, [](bool on) {
        settings::AddInvoiceDateToInvoice.set(on);
    });
    connect(m_chkDuplicates, &QCheckBox::toggled, this, [](bool on) {
        settings::PrintDuplicateInvoices.set(on);
    });
    connect(m_chkKeepTwelve, &QCheckBox::toggled, this, &PrintOptionsPanel::keepTwelveLinesClicked);
    connect(m_chkMove, &QCheckBox::toggled, this, &PrintOptionsPanel::moveAccordinglyClicked);
    connect(m_previewBack, &QAbstractButton::clicked, this, [this] { stepPreview(-1); });
    connect(m_previewForward, &QAbstractButton::clicked, this, [this] { stepPreview(1); });
}

void PrintOptionsPanel::stepPreview(int step)
{
    // A disabled arrow can't be pressed; this keeps a call from code in range too.
    const float next = m_printPreviewSelected + float(step);
    if (next < 0 || next > 2)
        return;
    m_printPreviewSelected = next;
    settings::PrintPreviewSelected.set(int(next));
    showPreviewTemplate();
}

pages::InvoiceOptions PrintOptionsPanel::invoiceOptions() const
{
    pages::InvoiceOptions o = invoicerun::storedInvoiceOptions();
    const float t = m_printPreviewSelected;
    o.templateNumber = t == 0 ? 0 : t == 1 ? 1
                                : t == 2   ? 2
                                           : -1;
    o.title = m_optTitle[1]->isChecked()   ? pages::TitleOption::Estimate
              : m_optTitle[2]->isChecked() ? pages::TitleOption::Other
                                           : pages::TitleOption::Invoice;
    o.titleText = m_txtTitle->text();
    o.titleSize = m_optTitleSize[0]->isChecked()   ? pages::TitleSize::Small
                  : m_optTitleSize[1]->isChecked() ? pages::TitleSize::Medium
                                                   : pages::TitleSize::Large;
    o.moveBottomText = m_chkMove->isChecked();
    o.printDuplicates = m_chkDuplicates->isChecked();
    return o;
}

void PrintOptionsPanel::keepTwelveLinesClicked()
{
    if (m_isApplyingSettings)
        return;
    const bool on = m_chkKeepTwelve->isChecked();
    settings::KeepTwelveLines.set(on);
    m_chkMove->setEnabled(!on);
    showPreviewBottom();
}

void PrintOptionsPanel::moveAccordinglyClicked()
{
    if (m_isApplyingSettings)
        return;
    settings::MoveBottomTextAccordingly.set(m_chkMove->isChecked());
    showPreviewBottom();
}

void PrintOptionsPanel::applySettings()
{
    auto turnOn = [](const std::array<QRadioButton *, 3> &options, int index) {
        // An index the program never writes has no option to turn on.
        if (index >= 0 && index < 3)
            options[size_t(index)]->setChecked(true);
    };
    auto storedIndex = [](const settings::Number &key) {
        return int(std::nearbyint(regional::val(key.storedSetting())));
    };
    auto setBox = [](QCheckBox *c, const settings::Flag &key) { c->setChecked(key.isOn()); };

    turnOn(m_optTitle, storedIndex(settings::InvoiceTitleOption));
    m_txtTitle->setText(settings::InvoiceTitleText.storedSetting());
    turnOn(m_optTitleSize, storedIndex(settings::InvoiceTitleSize));
    setBox(m_chkAddDate, settings::AddInvoiceDateToInvoice);
    setBox(m_chkDuplicates, settings::PrintDuplicateInvoices);

    m_isApplyingSettings = true;
    setBox(m_chkKeepTwelve, settings::KeepTwelveLines);
    setBox(m_chkMove, settings::MoveBottomTextAccordingly);
    m_chkMove->setEnabled(!m_chkKeepTwelve->isChecked());
    showPreviewBottom();
    m_isApplyingSettings = false;

    m_printPreviewSelected = float(regional::val(settings::PrintPreviewSelected.stored()));
    showPreviewTemplate();
}

void PrintOptionsPanel::showPreviewBottom()
{
    int shown = 2;
    if (m_chkKeepTwelve->isChecked())
        shown = 0;
    else if (!m_chkMove->isChecked() || !m_chkMove->isEnabled())
        shown = 1;
    for (int i = 0; i < 3; ++i)
        m_previewBottom[size_t(i)]->setVisible(i == shown);
}

void PrintOptionsPanel::showPreviewTemplate()
{
    for (int i = 0; i < 3; ++i)
        m_previewTop[size_t(i)]->setVisible(float(i) == m_printPreviewSelected);
    m_previewBack->setEnabled(m_printPreviewSelected > 0);
    m_previewForward->setEnabled(m_printPreviewSelected < 2);
}

}  // namespace qor
