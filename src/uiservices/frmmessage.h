#pragma once
// frmMessage: a message the user can switch off for good ("Don't Show this
// Message Again."), with a mark per key in the settings section "Messages".
#include <QString>

class QWidget;

namespace qor {

// True when the message of key has been switched off ("true" in any case).
bool isMessageMarked(const QString &key);

// Shows frmMessage modally. buttons "OK" gives one button, anything else Yes
// and No. presetAnswer is the answer when the window is closed with its close
// box. Returns "Yes", "No", "OK" or presetAnswer. Stores the mark when the box
// is ticked, however the window closes.
QString showMessageForm(QWidget *owner, const QString &text, const QString &key,
                        const QString &buttons, const QString &presetAnswer);

}  // namespace qor
