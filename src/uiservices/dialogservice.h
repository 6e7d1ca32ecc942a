#pragma once
// Every question the program puts to the user goes through one service:
// message boxes, frmMessage, typed text, file names. The program uses the one
// that shows real windows; a test installs a ScriptedDialogs and gives the
// answers in advance. New kinds of dialog (fonts, colours, pages, folders)
// are added here as one more virtual with its real and scripted form.
#include <QFont>
#include <QList>
#include <QMessageBox>
#include <QString>
#include <deque>
#include <optional>

class QWidget;

namespace qor {

class DialogService {
public:
    struct Message {
        QMessageBox::Icon icon = QMessageBox::NoIcon;
        QString title, text;
        QMessageBox::StandardButtons buttons = QMessageBox::Ok;
        QMessageBox::StandardButton defaultButton = QMessageBox::NoButton;
    };
    // frmMessage: the message the user can switch off for good.
    struct MessageForm {
        QString text, key, buttons, presetAnswer;
    };
    struct FileQuestion {
        QString caption, folder, filter;
    };

    virtual ~DialogService() = default;

    virtual QMessageBox::StandardButton message(QWidget *owner, const Message &m) = 0;
    // "Yes", "No", "OK" or the preset answer (see showMessageForm).
    virtual QString messageForm(QWidget *owner, const MessageForm &m) = 0;
    // No value when the user cancelled.
    virtual std::optional<QString> text(QWidget *owner, const QString &title, const QString &label,
                                        const QString &initial) = 0;
    // An empty name when the user cancelled.
    virtual QString openFileName(QWidget *owner, const FileQuestion &q) = 0;
    virtual QString saveFileName(QWidget *owner, const FileQuestion &q) = 0;
    // The font dialog: no value when the user cancelled.
    virtual std::optional<QFont> font(QWidget *owner, const QString &title, const QFont &initial) = 0;

    // The usual boxes.
    QMessageBox::StandardButton warning(QWidget *owner, const QString &title, const QString &text,
                                        QMessageBox::StandardButtons buttons = QMessageBox::Ok,
                                        QMessageBox::StandardButton defaultButton = QMessageBox::NoButton)
    {
        return message(owner, {QMessageBox::Warning, title, text, buttons, defaultButton});
    }
    QMessageBox::StandardButton critical(QWidget *owner, const QString &title, const QString &text)
    {
        return message(owner, {QMessageBox::Critical, title, text, QMessageBox::Ok, QMessageBox::NoButton});
    }
    QMessageBox::StandardButton information(QWidget *owner, const QString &title, const QString &text)
    {
        return message(owner, {QMessageBox::Information, title, text, QMessageBox::Ok, QMessageBox::NoButton});
    }

    // The service in use: the one installed last, else the real windows.
    static DialogService &current();
};

// Real windows.
class WidgetDialogs : public DialogService {
public:
    QMessageBox::StandardButton message(QWidget *owner, const Message &m) override;
    QString messageForm(QWidget *owner, const MessageForm &m) override;
    std::optional<QString> text(QWidget *owner, const QString &title, const QString &label,
                                const QString &initial) override;
    QString openFileName(QWidget *owner, const FileQuestion &q) override;
    QString saveFileName(QWidget *owner, const FileQuestion &q) override;
    std::optional<QFont> font(QWidget *owner, const QString &title, const QFont &initial) override;
};

// Answers given in advance, for tests: installs itself for as long as it
// lives. Each question takes the next queued answer of its kind, or the
// default when the queue is empty, and is recorded.
class ScriptedDialogs : public DialogService {
public:
    ScriptedDialogs();
    ~ScriptedDialogs() override;
    ScriptedDialogs(const ScriptedDialogs &) = delete;
    ScriptedDialogs &operator=(const ScriptedDialogs &) = delete;

    struct Seen {
        QString kind;  // "message", "messageForm", "text", "open", "save", "font"
        Message message;
        MessageForm form;
        QString title, label;
    };
    QList<Seen> seen;

    // Message boxes: a queued answer first, else this one. An answer that is
    // not among the box's buttons counts as the box being closed (Escape).
    QMessageBox::StandardButton answer = QMessageBox::Cancel;
    std::deque<QMessageBox::StandardButton> nextAnswers;
    // frmMessage: queued answers first, else the preset answer (the close box).
    std::deque<QString> nextFormAnswers;
    // Typed text: queued texts first (no value: Cancel), else Cancel.
    std::deque<std::optional<QString>> nextTexts;
    // File names: queued names first, else an empty name (Cancel).
    std::deque<QString> nextFileNames;
    // Fonts: queued choices first (no value: Cancel), else Cancel.
    std::deque<std::optional<QFont>> nextFonts;

    const Seen &last() const;
    QList<Seen> messages() const;  // the message boxes only

    QMessageBox::StandardButton message(QWidget *owner, const Message &m) override;
    QString messageForm(QWidget *owner, const MessageForm &m) override;
    std::optional<QString> text(QWidget *owner, const QString &title, const QString &label,
                                const QString &initial) override;
    QString openFileName(QWidget *owner, const FileQuestion &q) override;
    QString saveFileName(QWidget *owner, const FileQuestion &q) override;
    std::optional<QFont> font(QWidget *owner, const QString &title, const QFont &initial) override;

private:
    DialogService *m_previous = nullptr;
};

}  // namespace qor
