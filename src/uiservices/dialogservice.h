// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// Every question the program puts to the user goes through one service:
// message boxes, frmMessage, typed text, file names. The program uses the one
// that shows real windows; a test installs a ScriptedDialogs and gives the
// answers in advance. The real dialogs are Qt's own, never the desktop's,
// so they work without a desktop portal and a test can drive them.
#include <QColor>
#include <QFont>
#include <QList>
#include <QMargins>
#include <QMessageBox>
#include <QString>
#include <QStringList>
#include <array>
#include <deque>
#include <optional>

class QWidget;

namespace qor {

// The title of a message box that names no title of its own.
inline const QString AppTitle = QStringLiteral("QOR");

class DialogService {
public:
    struct Message {
        QMessageBox::Icon icon = QMessageBox::NoIcon;
        QString title, text;
        QMessageBox::StandardButtons buttons = QMessageBox::Ok;
        QMessageBox::StandardButton defaultButton = QMessageBox::NoButton;
        // Captions in place of the standard ones ("&Keep Entering" on Cancel).
        QList<std::pair<QMessageBox::StandardButton, QString>> captions = {};
    };
    // frmMessage: the message the user can switch off for good.
    struct MessageForm {
        QString text, key, buttons, presetAnswer;
    };
    struct FileQuestion {
        QString caption, folder, filter;
    };
    // A file dialog with all it can be told (clsDIALOGS asks this way).
    struct FileRequest {
        bool save = false;
        QString title, folder;
        QStringList filters;        // "Description (*.ext)", as Qt lists them
        int filterIndex = 1;        // 1-based: the filter selected at the start
        bool mustExist = false;     // open: only an existing file is accepted
        bool multiple = false;      // open: several files may be chosen
        bool createPrompt = false;  // save: ask before a new file is named
    };
    struct FileReply {
        QStringList files;    // empty: cancelled
        int filterIndex = 1;  // 1-based: the filter selected at the end
    };
    // Page setup: paper and margins in thousandths of an inch.
    struct PageSetup {
        int paperWidth = 8500, paperHeight = 11000;
        QMargins margins{500, 500, 500, 500};
        QMargins minMargins{250, 250, 250, 250};
    };
    using CustomColors = std::array<QColor, 16>;

    virtual ~DialogService() = default;

    virtual QMessageBox::StandardButton message(QWidget *owner, const Message &m) = 0;
    // "Yes", "No", "OK" or the preset answer (see showMessageForm).
    virtual QString messageForm(QWidget *owner, const MessageForm &m) = 0;
    // No value when the user cancelled.
    virtual std::optional<QString> text(QWidget *owner, const QString &title, const QString &label,
                                        const QString &initial) = 0;
    // Typed text that is not shown, such as a password; no value when the
    // user cancelled. Scripted answers come from the typed-text queue.
    virtual std::optional<QString> secret(QWidget *owner, const QString &title, const QString &label)
    {
        return text(owner, title, label, {});
    }
    // An empty name when the user cancelled.
    virtual QString openFileName(QWidget *owner, const FileQuestion &q) = 0;
    virtual QString saveFileName(QWidget *owner, const FileQuestion &q) = 0;
    // The font dialog: no value when the user cancelled.
    // A size below one point is taken as 10 points.
    virtual std::optional<QFont> font(QWidget *owner, const QString &title, const QFont &initial) = 0;
    virtual FileReply fileDialog(QWidget *owner, const FileRequest &r) = 0;
    // No value when cancelled; custom holds the sixteen custom colours, in
    // and out.
    virtual std::optional<QColor> color(QWidget *owner, const QColor &initial, CustomColors &custom) = 0;
    virtual std::optional<PageSetup> pageSetup(QWidget *owner, const PageSetup &start) = 0;
    // True when the print dialog was confirmed.
    virtual bool printDialog(QWidget *owner) = 0;
    // A folder, or an empty text when cancelled.
    virtual QString folder(QWidget *owner, const QString &title) = 0;

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

    // Where every file dialog opens. A suggestion naming a folder that
    // exists outside the program's own stands; anything else starts in the
    // open database's folder, else the user's Documents folder (home when
    // there is none), keeping a suggested file name. Never the program's
    // folder: once installed, that is /usr/bin.
    static QString startPath(const QString &suggested);
    static void setDatabaseFile(const QString &path);
};

// Real windows.
class WidgetDialogs : public DialogService {
public:
    QMessageBox::StandardButton message(QWidget *owner, const Message &m) override;
    QString messageForm(QWidget *owner, const MessageForm &m) override;
    std::optional<QString> text(QWidget *owner, const QString &title, const QString &label,
                                const QString &initial) override;
    std::optional<QString> secret(QWidget *owner, const QString &title, const QString &label) override;
    QString openFileName(QWidget *owner, const FileQuestion &q) override;
    QString saveFileName(QWidget *owner, const FileQuestion &q) override;
    std::optional<QFont> font(QWidget *owner, const QString &title, const QFont &initial) override;
    FileReply fileDialog(QWidget *owner, const FileRequest &r) override;
    std::optional<QColor> color(QWidget *owner, const QColor &initial, CustomColors &custom) override;
    std::optional<PageSetup> pageSetup(QWidget *owner, const PageSetup &start) override;
    bool printDialog(QWidget *owner) override;
    QString folder(QWidget *owner, const QString &title) override;
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
        // "message", "messageForm", "text", "open", "save", "font", "color",
        // "pageSetup", "print", "folder"
        QString kind;
        Message message;
        MessageForm form;
        QString title, label;  // for a file dialog the label is its filter list
        QString folder;        // the start folder of a file dialog
        FileRequest file;      // a file dialog's whole request
        QString initial;       // the text a typed-text box starts with
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
    // File dialogs (fileDialog) take nextFileSelections first (several
    // names at once), else nextFileNames; the filter index is the next of
    // nextFilterIndexes, else the one the dialog started with.
    std::deque<QStringList> nextFileSelections;
    std::deque<int> nextFilterIndexes;
    // Colours, page setups (no value: Cancel), print dialogs, folders ("":
    // Cancel); an empty queue cancels.
    std::deque<std::optional<QColor>> nextColors;
    std::deque<std::optional<PageSetup>> nextPageSetups;
    std::deque<bool> nextPrintAnswers;
    std::deque<QString> nextFolders;

    const Seen &last() const;
    QList<Seen> messages() const;  // the message boxes only

    QMessageBox::StandardButton message(QWidget *owner, const Message &m) override;
    QString messageForm(QWidget *owner, const MessageForm &m) override;
    std::optional<QString> text(QWidget *owner, const QString &title, const QString &label,
                                const QString &initial) override;
    QString openFileName(QWidget *owner, const FileQuestion &q) override;
    QString saveFileName(QWidget *owner, const FileQuestion &q) override;
    std::optional<QFont> font(QWidget *owner, const QString &title, const QFont &initial) override;
    FileReply fileDialog(QWidget *owner, const FileRequest &r) override;
    std::optional<QColor> color(QWidget *owner, const QColor &initial, CustomColors &custom) override;
    std::optional<PageSetup> pageSetup(QWidget *owner, const PageSetup &start) override;
    bool printDialog(QWidget *owner) override;
    QString folder(QWidget *owner, const QString &title) override;

private:
    DialogService *m_previous = nullptr;
};

}  // namespace qor
