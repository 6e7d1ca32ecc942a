// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// fraMain(4), Print Options: the invoice title and its size, the date,
// duplicate and twelve-line options, and the preview of the invoice layout.
// Every option is stored the moment it changes.
#include "pages/invoice.h"
#include "shell/panel.h"

#include <array>

class QAbstractButton;
class QCheckBox;
class QLabel;
class QLineEdit;
class QRadioButton;

namespace qor {

class PrintOptionsPanel : public Panel {
    Q_OBJECT
public:
    explicit PrintOptionsPanel(AppContext &ctx, QWidget *parent = nullptr);

    // The part of ApplySettings on this panel: title option, title text,
    // title size, the four boxes (the twelve-line pair under
    // IsApplyingSettings), chkMoveAccordingly enabled only without twelve
    // lines, the bottom sample, then the preview's layout.
    void applySettings();
    bool isApplyingSettings() const { return m_isApplyingSettings; }

    // The layout the preview shows (0, 1 or 2), as read from the settings.
    float printPreviewSelected() const { return m_printPreviewSelected; }

    // The sample of the page's lower part: twelve lines; a short list; or a
    // short list with the text moved up.
    void showPreviewBottom();
    // The top sample of the selected layout, and which arrows may be pressed.
    void showPreviewTemplate();

    // The options the invoice run reads: title, title text, size and moving
    // from the controls; date line and twelve lines from the settings; the
    // layout as selected here.
    pages::InvoiceOptions invoiceOptions() const;

private:
    void keepTwelveLinesClicked();
    void moveAccordinglyClicked();
    // cmdPrintPreviewBack (-1) and cmdPrintPreviewForward (+1).
    void stepPreview(int step);

    bool m_isApplyingSettings = false;
    float m_printPreviewSelected = 0;

    std::array<QRadioButton *, 3> m_optTitle{};      // optInvoiceTitle(0..2)
    std::array<QRadioButton *, 3> m_optTitleSize{};  // optInvoiceTitleSize(0..2)
    QLineEdit *m_txtTitle = nullptr;                 // txtInvoiceTitle
    QCheckBox *m_chkAddDate = nullptr;               // chkAddInvoiceDateToInvoice
    QCheckBox *m_chkDuplicates = nullptr;            // chkPrintDuplicateInvoices
    QCheckBox *m_chkKeepTwelve = nullptr;            // chkKeepTwelveLines
    QCheckBox *m_chkMove = nullptr;                  // chkMoveAccordingly
    std::array<QLabel *, 3> m_previewBottom{};       // picPrintPreviewBottom(0..2)
    std::array<QLabel *, 3> m_previewTop{};          // picPrintPreviewTop(0..2)
    QAbstractButton *m_previewBack = nullptr;        // cmdPrintPreviewBack
    QAbstractButton *m_previewForward = nullptr;     // cmdPrintPreviewForward
};

}  // namespace qor
