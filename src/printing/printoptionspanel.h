#pragma once
// fraMain(4), Print Options: the invoice title and its size, the date,
// duplicate and twelve-line options, and the preview of the invoice layout.
// Every option is stored the moment it changes.
#include "shell/panel.h"

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

private:
    void keepTwelveLinesClicked();
    void moveAccordinglyClicked();

    bool m_isApplyingSettings = false;
    float m_printPreviewSelected = 0;
};

}  // namespace qor
