#include "uiservices/dialogservice.h"

#include "uiservices/frmmessage.h"

#include <QFileDialog>
#include <QFontDialog>
#include <QInputDialog>

namespace qor {

namespace {
DialogService *s_installed = nullptr;
}  // namespace

DialogService &DialogService::current()
{
    static WidgetDialogs real;
    return s_installed ? *s_installed : real;
}

// ---------------------------------------------------------------- real windows

QMessageBox::StandardButton WidgetDialogs::message(QWidget *owner, const Message &m)
{
    QMessageBox box(m.icon, m.title, m.text, m.buttons, owner);
    if (m.defaultButton != QMessageBox::NoButton) box.setDefaultButton(m.defaultButton);
    return QMessageBox::StandardButton(box.exec());
}

QString WidgetDialogs::messageForm(QWidget *owner, const MessageForm &m)
{
    return showMessageForm(owner, m.text, m.key, m.buttons, m.presetAnswer);
}

std::optional<QString> WidgetDialogs::text(QWidget *owner, const QString &title, const QString &label,
                                           const QString &initial)
{
    bool ok = false;
    const QString t = QInputDialog::getText(owner, title, label, QLineEdit::Normal, initial, &ok);
    if (!ok) return std::nullopt;
    return t;
}

QString WidgetDialogs::openFileName(QWidget *owner, const FileQuestion &q)
{
    return QFileDialog::getOpenFileName(owner, q.caption, q.folder, q.filter);
}

std::optional<QFont> WidgetDialogs::font(QWidget *owner, const QString &title, const QFont &initial)
{
    bool ok = false;
    const QFont chosen = QFontDialog::getFont(&ok, initial, owner, title);
    if (!ok) return std::nullopt;
    return chosen;
}

QString WidgetDialogs::saveFileName(QWidget *owner, const FileQuestion &q)
{
    return QFileDialog::getSaveFileName(owner, q.caption, q.folder, q.filter);
}

// ---------------------------------------------------------------- answers given in advance

ScriptedDialogs::ScriptedDialogs() : m_previous(s_installed) { s_installed = this; }

ScriptedDialogs::~ScriptedDialogs()
{
    if (s_installed == this) s_installed = m_previous;
}

const ScriptedDialogs::Seen &ScriptedDialogs::last() const
{
    static const Seen none;
    return seen.isEmpty() ? none : seen.last();
}

QList<ScriptedDialogs::Seen> ScriptedDialogs::messages() const
{
    QList<Seen> out;
    for (const Seen &s : seen)
        if (s.kind == QLatin1String("message")) out << s;
    return out;
}

QMessageBox::StandardButton ScriptedDialogs::message(QWidget *, const Message &m)
{
    seen.append({QStringLiteral("message"), m, {}, {}, {}});
    QMessageBox::StandardButton a = answer;
    if (!nextAnswers.empty()) {
        a = nextAnswers.front();
        nextAnswers.pop_front();
    }
    if (m.buttons.testFlag(a)) return a;
    // Escape: the Cancel button when there is one, else the only button
    // (QMessageBox's own rule for its escape button).
    if (m.buttons.testFlag(QMessageBox::Cancel)) return QMessageBox::Cancel;
    if (m.buttons == QMessageBox::Ok) return QMessageBox::Ok;
    return QMessageBox::NoButton;
}

QString ScriptedDialogs::messageForm(QWidget *, const MessageForm &m)
{
    seen.append({QStringLiteral("messageForm"), {}, m, {}, {}});
    if (nextFormAnswers.empty()) return m.presetAnswer;
    const QString a = nextFormAnswers.front();
    nextFormAnswers.pop_front();
    return a;
}

std::optional<QString> ScriptedDialogs::text(QWidget *, const QString &title, const QString &label, const QString &)
{
    seen.append({QStringLiteral("text"), {}, {}, title, label});
    if (nextTexts.empty()) return std::nullopt;
    const std::optional<QString> t = nextTexts.front();
    nextTexts.pop_front();
    return t;
}

QString ScriptedDialogs::openFileName(QWidget *, const FileQuestion &q)
{
    seen.append({QStringLiteral("open"), {}, {}, q.caption, q.filter});
    if (nextFileNames.empty()) return {};
    const QString n = nextFileNames.front();
    nextFileNames.pop_front();
    return n;
}

std::optional<QFont> ScriptedDialogs::font(QWidget *, const QString &title, const QFont &)
{
    seen.append({QStringLiteral("font"), {}, {}, title, {}});
    if (nextFonts.empty()) return std::nullopt;
    const std::optional<QFont> f = nextFonts.front();
    nextFonts.pop_front();
    return f;
}

QString ScriptedDialogs::saveFileName(QWidget *, const FileQuestion &q)
{
    seen.append({QStringLiteral("save"), {}, {}, q.caption, q.filter});
    if (nextFileNames.empty()) return {};
    const QString n = nextFileNames.front();
    nextFileNames.pop_front();
    return n;
}

}  // namespace qor
