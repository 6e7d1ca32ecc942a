// SPDX-License-Identifier: GPL-3.0-or-later
#include "uiservices/dialogservice.h"

#include "uiservices/frmmessage.h"

#include <QAbstractButton>
#include <QColorDialog>
#include <QCoreApplication>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QFontDialog>
#include <QInputDialog>
#include <QPageLayout>
#include <QPageSetupDialog>
#include <QPrintDialog>
#include <QPrinter>
#include <QStandardPaths>
#include <cmath>

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
    for (const auto &[button, caption] : m.captions)
        if (QAbstractButton *b = box.button(button)) b->setText(caption);
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

std::optional<QString> WidgetDialogs::secret(QWidget *owner, const QString &title, const QString &label)
{
    bool ok = false;
    const QString t = QInputDialog::getText(owner, title, label, QLineEdit::Password, {}, &ok);
    if (!ok) return std::nullopt;
    return t;
}

namespace {
QString &databaseFile()
{
    static QString file;
    return file;
}
}  // namespace

void DialogService::setDatabaseFile(const QString &path) { databaseFile() = path; }

QString DialogService::startPath(const QString &suggested)
{
    const QFileInfo asked(suggested);
    const QString askedFolder = suggested.endsWith(u'/') || asked.isDir() ? suggested : asked.path();
    const QString program = QDir(QCoreApplication::applicationDirPath()).canonicalPath();
    const QString canonical = QDir(askedFolder).canonicalPath();
    const bool inProgram = !canonical.isEmpty() && (canonical == program || canonical.startsWith(program + u'/'));
    if (asked.isAbsolute() && !canonical.isEmpty() && !inProgram) return suggested;

    QString folder = databaseFile().isEmpty() ? QString() : QFileInfo(databaseFile()).absolutePath();
    if (folder.isEmpty() || !QFileInfo(folder).isDir())
        folder = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    if (folder.isEmpty() || !QFileInfo(folder).isDir()) folder = QDir::homePath();
    const QString name = suggested.endsWith(u'/') || asked.isDir() ? QString() : asked.fileName();
    return name.isEmpty() ? folder : QDir(folder).filePath(name);
}

QString WidgetDialogs::openFileName(QWidget *owner, const FileQuestion &q)
{
    return QFileDialog::getOpenFileName(owner, q.caption, startPath(q.folder), q.filter, nullptr,
                                        QFileDialog::DontUseNativeDialog);
}

std::optional<QFont> WidgetDialogs::font(QWidget *owner, const QString &title, const QFont &initial)
{
    bool ok = false;
    QFont chosen = QFontDialog::getFont(&ok, initial, owner, title, QFontDialog::DontUseNativeDialog);
    if (!ok) return std::nullopt;
    // A size the printer cannot show: the usual ten points instead.
    if (chosen.pointSizeF() < 1.0) chosen.setPointSize(10);
    return chosen;
}

QString WidgetDialogs::saveFileName(QWidget *owner, const FileQuestion &q)
{
    return QFileDialog::getSaveFileName(owner, q.caption, startPath(q.folder), q.filter, nullptr,
                                        QFileDialog::DontUseNativeDialog);
}

DialogService::FileReply WidgetDialogs::fileDialog(QWidget *owner, const FileRequest &r)
{
    QFileDialog dialog(owner, r.title, startPath(r.folder));
    dialog.setObjectName(QStringLiteral("fileDialog"));
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    // Asking before a file is overwritten is the caller's business.
    dialog.setOption(QFileDialog::DontConfirmOverwrite);
    dialog.setAcceptMode(r.save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    dialog.setFileMode(r.save || !r.mustExist ? QFileDialog::AnyFile
                       : r.multiple           ? QFileDialog::ExistingFiles
                                              : QFileDialog::ExistingFile);
    if (!r.filters.isEmpty()) {
        dialog.setNameFilters(r.filters);
        dialog.selectNameFilter(r.filters.value(qBound(1, r.filterIndex, int(r.filters.size())) - 1));
    }
    FileReply reply;
    reply.filterIndex = r.filterIndex;
    if (dialog.exec() != QDialog::Accepted) return reply;
    QStringList files = dialog.selectedFiles();
    if (r.save && r.createPrompt && !files.isEmpty() && !QFileInfo::exists(files.first())) {
        const auto a = current().message(
            owner, {QMessageBox::Warning, r.title,
                    QStringLiteral("%1 does not exist.\r\nDo you want to create it?").arg(files.first()),
                    QMessageBox::Yes | QMessageBox::No, QMessageBox::Yes});
        if (a != QMessageBox::Yes) return reply;
    }
    reply.files = files;
    const int chosen = int(r.filters.indexOf(dialog.selectedNameFilter()));
    if (chosen >= 0) reply.filterIndex = chosen + 1;
    return reply;
}

std::optional<QColor> WidgetDialogs::color(QWidget *owner, const QColor &initial, CustomColors &custom)
{
    // The custom colours of Qt's dialog are shared by the whole program:
    // they are lent the caller's for the time of the dialog.
    for (int i = 0; i < 16; ++i) QColorDialog::setCustomColor(i, custom[size_t(i)]);
    QColorDialog dialog(initial, owner);
    dialog.setObjectName(QStringLiteral("colorDialog"));
    dialog.setOption(QColorDialog::DontUseNativeDialog);
    const bool ok = dialog.exec() == QDialog::Accepted;
    for (int i = 0; i < 16; ++i) custom[size_t(i)] = QColorDialog::customColor(i);
    if (!ok) return std::nullopt;
    return dialog.selectedColor();
}

std::optional<DialogService::PageSetup> WidgetDialogs::pageSetup(QWidget *owner, const PageSetup &start)
{
    auto inches = [](int thousandths) { return thousandths / 1000.0; };
    auto marginsF = [&](const QMargins &m) {
        return QMarginsF(inches(m.left()), inches(m.top()), inches(m.right()), inches(m.bottom()));
    };
    QPrinter printer;
    const QPageSize paper(QSizeF(inches(start.paperWidth), inches(start.paperHeight)), QPageSize::Inch);
    printer.setPageLayout(QPageLayout(paper, QPageLayout::Portrait, marginsF(start.margins), QPageLayout::Inch,
                                      marginsF(start.minMargins)));
    QPageSetupDialog dialog(&printer, owner);
    dialog.setObjectName(QStringLiteral("pageSetupDialog"));
    if (dialog.exec() != QDialog::Accepted) return std::nullopt;
    const QPageLayout layout = printer.pageLayout();
    auto thousandths = [](qreal in) { return int(std::lround(in * 1000.0)); };
    PageSetup out;
    const QSizeF size = layout.pageSize().size(QPageSize::Inch);
    out.paperWidth = thousandths(size.width());
    out.paperHeight = thousandths(size.height());
    const QMarginsF m = layout.margins(QPageLayout::Inch);
    out.margins = QMargins(thousandths(m.left()), thousandths(m.top()), thousandths(m.right()), thousandths(m.bottom()));
    // The minimum margins stand in the layout's own unit, which is inches here.
    const QMarginsF mm = layout.minimumMargins();
    out.minMargins = layout.units() == QPageLayout::Inch
                         ? QMargins(thousandths(mm.left()), thousandths(mm.top()), thousandths(mm.right()),
                                    thousandths(mm.bottom()))
                         : start.minMargins;
    return out;
}

bool WidgetDialogs::printDialog(QWidget *owner)
{
    QPrinter printer;
    QPrintDialog dialog(&printer, owner);
    dialog.setObjectName(QStringLiteral("printDialog"));
    return dialog.exec() == QDialog::Accepted;
}

QString WidgetDialogs::folder(QWidget *owner, const QString &title)
{
    return QFileDialog::getExistingDirectory(owner, title, startPath(QString()),
                                             QFileDialog::ShowDirsOnly | QFileDialog::DontUseNativeDialog);
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

std::optional<QString> ScriptedDialogs::text(QWidget *, const QString &title, const QString &label,
                                             const QString &initial)
{
    seen.append({QStringLiteral("text"), {}, {}, title, label, {}, {}, initial});
    if (nextTexts.empty()) return std::nullopt;
    const std::optional<QString> t = nextTexts.front();
    nextTexts.pop_front();
    return t;
}

QString ScriptedDialogs::openFileName(QWidget *, const FileQuestion &q)
{
    seen.append({QStringLiteral("open"), {}, {}, q.caption, q.filter, startPath(q.folder)});
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

DialogService::FileReply ScriptedDialogs::fileDialog(QWidget *, const FileRequest &r)
{
    Seen s{r.save ? QStringLiteral("save") : QStringLiteral("open"), {}, {}, r.title, r.filters.join(u'|')};
    s.folder = startPath(r.folder);
    s.file = r;
    seen.append(s);
    FileReply reply;
    reply.filterIndex = r.filterIndex;
    if (!nextFileSelections.empty()) {
        reply.files = nextFileSelections.front();
        nextFileSelections.pop_front();
    } else if (!nextFileNames.empty()) {
        if (!nextFileNames.front().isEmpty()) reply.files = QStringList{nextFileNames.front()};
        nextFileNames.pop_front();
    }
    if (!nextFilterIndexes.empty()) {
        if (!reply.files.isEmpty()) reply.filterIndex = nextFilterIndexes.front();
        nextFilterIndexes.pop_front();
    }
    return reply;
}

std::optional<QColor> ScriptedDialogs::color(QWidget *, const QColor &, CustomColors &)
{
    seen.append({QStringLiteral("color"), {}, {}, {}, {}});
    if (nextColors.empty()) return std::nullopt;
    const auto c = nextColors.front();
    nextColors.pop_front();
    return c;
}

std::optional<DialogService::PageSetup> ScriptedDialogs::pageSetup(QWidget *, const PageSetup &)
{
    seen.append({QStringLiteral("pageSetup"), {}, {}, {}, {}});
    if (nextPageSetups.empty()) return std::nullopt;
    const auto p = nextPageSetups.front();
    nextPageSetups.pop_front();
    return p;
}

bool ScriptedDialogs::printDialog(QWidget *)
{
    seen.append({QStringLiteral("print"), {}, {}, {}, {}});
    if (nextPrintAnswers.empty()) return false;
    const bool a = nextPrintAnswers.front();
    nextPrintAnswers.pop_front();
    return a;
}

QString ScriptedDialogs::folder(QWidget *, const QString &title)
{
    seen.append({QStringLiteral("folder"), {}, {}, title, {}, startPath(QString())});
    if (nextFolders.empty()) return {};
    const QString f = nextFolders.front();
    nextFolders.pop_front();
    return f;
}

QString ScriptedDialogs::saveFileName(QWidget *, const FileQuestion &q)
{
    seen.append({QStringLiteral("save"), {}, {}, q.caption, q.filter, startPath(q.folder)});
    if (nextFileNames.empty()) return {};
    const QString n = nextFileNames.front();
    nextFileNames.pop_front();
    return n;
}

}  // namespace qor
