// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// frmMessage: a message the user can switch off for good ("Don't Show this
// Message Again."), with a mark per key in the settings section "Messages".
#include <QDialog>
#include <QString>

class QCheckBox;
class QLabel;
class QPushButton;

namespace qor {

// The window itself; showMessageForm shows it modally and gives its answer.
class FrmMessage : public QDialog {
    Q_OBJECT
public:
    FrmMessage(QWidget *owner, const QString &text, const QString &key, const QString &buttons,
               const QString &presetAnswer);
    ~FrmMessage() override;

    // "Yes", "No", "OK", or the preset answer while none was given.
    QString result() const { return m_answer; }
    void done(int r) override;

private:
    void answer(const QString &a);
    void storeMark();

    QString m_key;
    QString m_answer;
    bool m_stored = false;
    QLabel *m_label = nullptr;
    QPushButton *m_yes = nullptr, *m_no = nullptr, *m_okay = nullptr;
    QCheckBox *m_dontShow = nullptr;
};

// True when the message of key has been switched off ("true" in any case).
bool isMessageMarked(const QString &key);

// Shows frmMessage modally. buttons "OK" gives one button, anything else Yes
// and No. presetAnswer is the answer when the window is closed with its close
// box. Returns "Yes", "No", "OK" or presetAnswer. Stores the mark when the box
// is ticked, however the window closes.
QString showMessageForm(QWidget *owner, const QString &text, const QString &key,
                        const QString &buttons, const QString &presetAnswer);

}  // namespace qor
