// SPDX-License-Identifier: GPL-3.0-or-later
#include "uiservices/clsdialogs.h"

#include "settings/settingsstore.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QFont>
#include <QSettings>
#include <cmath>

namespace qor {

namespace {

ClsDIALOGS *s_current = nullptr;

const QChar NUL(u'\0');

struct DialogErrorName {
    qint32 code;
    const char *text;
};
const DialogErrorName DialogErrors[] = {
    {0, "General Codes Failure"},
    {1, "Structure Size Error"},
    {2, "Initialization Failure"},
    {3, "No Template"},
    {4, "No Instance Handle"},
    {5, "Load String Failure"},
    {6, "Find Resource Failure"},
    {7, "Load Resource Failure"},
    {8, "Lock Resource Failure"},
    {9, "Memory Allocation Failure"},
    {10, "Memory Lock Failure"},
    {11, "No Hook"},
    {12, "Register Message Failure"},
    {12288, "File Name Codes Error"},
    {12289, "Subclassing Failure"},
    {12290, "Invalid File Name"},
    {12291, "File Name/Title Buffer Too Small"},
    {65535, "Dialog Failure"},
};

// The filter list of a new object, in the bar form.
const char *const DefaultFilter =
    "All Files (*.*)|*.*|Batch Files (*.BAT)|*.BAT|INF Files (*.INF)|*.INF|"
    "SYS Files (*.SYS)|*.SYS|HTM Files (*.HTM)|*.HTM|Text Files (*.TXT)|*.TXT";

// The sixteen custom colours of a new object.
const QRgb StartColors[8] = {qRgb(0, 0, 0), qRgb(255, 255, 255), qRgb(255, 0, 0), qRgb(0, 255, 0),
                             qRgb(255, 255, 0), qRgb(0, 0, 255), qRgb(255, 0, 255), qRgb(0, 255, 255)};

// The remembered keys, in the order they are written.
const char *const Section = "DIALOGS";

// No folder remembered yet: the dialog service picks the start folder when
// the dialog opens (the open database's), never the program's own.
QString noFolderYet() { return QString(); }

// The folder of a full name: through its last separator, that one included.
QString folderOf(const QString &path)
{
    return path.left(path.lastIndexOf(u'/') + 1);
}

QColor colorOf(qint32 ole) { return QColor(ole & 0xFF, (ole >> 8) & 0xFF, (ole >> 16) & 0xFF); }
qint32 oleOf(const QColor &c) { return c.red() | (c.green() << 8) | (c.blue() << 16); }

}  // namespace

ClsDIALOGS::ClsDIALOGS(bool usePersistence) : m_usePersistence(usePersistence), m_previous(s_current)
{
    s_current = this;
    if (m_usePersistence) {
        readRemembered();
    } else {
        m_initialDir = m_lastOpenFolder = m_lastSaveFolder = noFolderYet();
    }
    setStrFilter(QString::fromLatin1(DefaultFilter));
    for (size_t i = 0; i < m_customColors.size(); ++i)
        m_customColors[i] = QColor(i < 8 ? StartColors[i] : qRgb(255, 255, 255));
}

ClsDIALOGS::~ClsDIALOGS()
{
    if (m_usePersistence) writeRemembered();
    if (s_current == this) s_current = m_previous;
}

ClsDIALOGS &ClsDIALOGS::current()
{
    if (s_current) return *s_current;
    static ClsDIALOGS fallback(false);
    return fallback;
}

QString ClsDIALOGS::iniPath()
{
    // Beside the settings store, so both follow the same per-user folder.
    return QFileInfo(settings::storePath()).absolutePath() + QStringLiteral("/QOR.ini");
}

QString ClsDIALOGS::dialogErrorText(qint32 code)
{
    for (const DialogErrorName &e : DialogErrors)
        if (e.code == code) return QString::fromLatin1(e.text);
    return QStringLiteral("Unknown Error");
}

void ClsDIALOGS::readRemembered()
{
    QSettings ini(iniPath(), QSettings::IniFormat);
    ini.beginGroup(QString::fromLatin1(Section));
    auto text = [&](const char *key, const QString &fallback) {
        const QVariant v = ini.value(QString::fromLatin1(key));
        return v.isValid() ? v.toString() : fallback;
    };
    auto number = [&](const char *key) {
        bool ok = false;
        const int n = text(key, QString()).toInt(&ok);
        return ok ? n : 1;
    };
    m_initialDir = text("InitialDir", noFolderYet());
    m_lastOpenFolder = text("LastOpenDir", noFolderYet());
    m_lastOpenFilter = number("LastOpenFilter");
    m_lastOpenFile = text("LastOpenFile", QString());
    m_lastSaveFolder = text("LastSaveDir", noFolderYet());
    m_lastSaveFilter = number("LastSaveFilter");
    m_lastSaveFile = text("LastSaveFile", QString());
}

void ClsDIALOGS::writeRemembered() const
{
    QSettings ini(iniPath(), QSettings::IniFormat);
    ini.beginGroup(QString::fromLatin1(Section));
    ini.setValue(QStringLiteral("InitialDir"), m_initialDir);
    ini.setValue(QStringLiteral("LastOpenDir"), m_lastOpenFolder);
    ini.setValue(QStringLiteral("LastOpenFilter"), QString::number(m_lastOpenFilter));
    ini.setValue(QStringLiteral("LastOpenFile"), m_lastOpenFile);
    ini.setValue(QStringLiteral("LastSaveDir"), m_lastSaveFolder);
    ini.setValue(QStringLiteral("LastSaveFilter"), QString::number(m_lastSaveFilter));
    ini.setValue(QStringLiteral("LastSaveFile"), m_lastSaveFile);
    ini.endGroup();
    ini.sync();
}

void ClsDIALOGS::dialogError(qint32 code)
{
    // Qt's dialogs end only by being confirmed or cancelled, so the code is
    // that of a plain cancel, which is not shown.
    m_dialogError = code;
    m_dialogErrorText = dialogErrorText(code);
    if (m_showErrorMessages && m_dialogError != 0)
        DialogService::current().message(m_owner, {QMessageBox::Critical, QStringLiteral("DIALOG ERROR"),
                                                   m_dialogErrorText, QMessageBox::Ok, QMessageBox::NoButton});
}

// ---------------------------------------------------------------- files

void ClsDIALOGS::setStrFilter(const QString &barForm)
{
    QString list = barForm;
    list.replace(u'|', NUL);
    if (!list.endsWith(QString(2, NUL))) list += QString(2, NUL);
    m_filter = list;
}

QStringList ClsDIALOGS::dialogFilters() const
{
    QString list = m_filter;
    while (list.endsWith(NUL))
        list.chop(1);
    const QStringList parts = list.split(NUL);
    QStringList out;
    for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
        const QString &description = parts.at(i);
        QString pattern = parts.at(i + 1);
        pattern.replace(u';', u' ');
        // Qt reads the patterns from the brackets of the text it shows.
        out << (description.contains(u'(' + pattern + u')') ? description : description + QStringLiteral(" (") + pattern + u')');
    }
    return out;
}

QString ClsDIALOGS::strGetOpenFileName()
{
    m_numFilesSelected = 0;
    DialogService::FileRequest r;
    r.title = m_title.isEmpty() ? QStringLiteral("Select File(s) To Open") : m_title;
    r.folder = m_initialDir.isEmpty() ? m_lastOpenFolder : m_initialDir;
    r.filters = dialogFilters();
    r.filterIndex = m_lastOpenFilter;
    r.mustExist = true;
    r.multiple = m_multiple;
    const DialogService::FileReply reply = DialogService::current().fileDialog(m_owner, r);

    QString result;
    if (reply.files.isEmpty()) {
        dialogError();
    } else if (!m_multiple) {
        result = reply.files.first();
        m_lastOpenFolder = folderOf(result);
        m_lastOpenFile = result;
        m_lastOpenFilter = reply.filterIndex;
    } else if (reply.files.size() == 1) {
        m_numFilesSelected = 1;
        result = reply.files.first();
        m_lastOpenFile = QFileInfo(result).fileName();
        m_lastOpenFolder = folderOf(result);
        m_lastOpenFilter = reply.filterIndex;
    } else {
        // The names without their folder, one NUL between, two at the end.
        QString folder = QFileInfo(reply.files.first()).absolutePath();
        if (!folder.endsWith(u'/')) folder += u'/';
        QStringList names;
        for (const QString &f : reply.files)
            names << QFileInfo(f).fileName();
        m_numFilesSelected = qint32(names.size());
        result = names.join(NUL) + QString(2, NUL);
        m_lastOpenFolder = folder;
        m_lastOpenFile = result;  // what follows the folder's last separator
        m_names.fill(QString());
        for (qsizetype i = 0; i < names.size() && i < qsizetype(m_names.size()); ++i)
            m_names[size_t(i)] = folder + names.at(i);
        m_lastOpenFilter = reply.filterIndex;
    }
    m_initialDir = m_lastOpenFolder;
    return result;
}

QString ClsDIALOGS::strGetSaveFileName()
{
    DialogService::FileRequest r;
    r.save = true;
    r.title = m_title.isEmpty() ? QStringLiteral("Save File") : m_title;
    r.folder = m_initialDir.isEmpty() ? m_lastSaveFolder : m_initialDir;
    r.filters = dialogFilters();
    r.filterIndex = m_lastSaveFilter;
    r.createPrompt = m_createPrompt;
    const DialogService::FileReply reply = DialogService::current().fileDialog(m_owner, r);

    QString result;
    if (reply.files.isEmpty()) {
        dialogError();
    } else {
        result = reply.files.first();
        m_lastSaveFolder = folderOf(result);
        m_lastSaveFile = result;
        m_lastSaveFilter = reply.filterIndex;
    }
    m_initialDir = m_lastSaveFolder;
    return result;
}

QString ClsDIALOGS::fstrReturnSingleFileName(int index) const
{
    if (index < 0 || index >= int(m_names.size())) return {};
    return m_names[size_t(index)];
}

// ---------------------------------------------------------------- font, colour, page, print, folder

bool ClsDIALOGS::blnChooseFont()
{
    const std::optional<QFont> chosen = DialogService::current().font(m_owner, QStringLiteral("Font"), QFont());
    if (!chosen) {
        dialogError();
        return false;
    }
    // In tenths of a point; a size under one point is taken as ten points.
    long tenths = std::lround(chosen->pointSizeF() * 10.0);
    if (tenths < 10) tenths = 100;
    m_fontSize = qint32(std::lround(tenths / 10.0));
    m_fontFaceName = chosen->family();
    m_fontColor = 0;  // Qt's font dialog offers no colour
    const bool bold = chosen->weight() >= QFont::Bold;
    const bool italic = chosen->italic();
    m_fontType = (bold ? BoldFontType : RegularFontType) | (italic ? ItalicFontType : 0);

    m_fontStyle = chosen->styleName();
    if (m_fontStyle.isEmpty()) {
        m_fontBold = (m_fontType & BoldFontType) != 0;
        if (m_fontBold) m_fontStyle = QStringLiteral("Bold");
        m_fontItalic = (m_fontType & ItalicFontType) != 0;
        if (m_fontItalic) m_fontStyle = QStringLiteral("Italic");
    } else {
        m_fontStyle = QStringLiteral("Regular");
    }
    return true;
}

qint32 ClsDIALOGS::lngChooseColor(qint32 colour)
{
    const std::optional<QColor> chosen = DialogService::current().color(m_owner, colorOf(colour), m_customColors);
    if (!chosen) {
        dialogError();
        return -1;
    }
    m_color = oleOf(*chosen);
    return m_color;
}

bool ClsDIALOGS::blnPageSetup()
{
    const auto page = DialogService::current().pageSetup(m_owner, m_page);
    if (!page) {
        dialogError();
        return false;
    }
    m_page = *page;
    return true;
}

bool ClsDIALOGS::blnPrintDialog()
{
    if (DialogService::current().printDialog(m_owner)) return true;
    dialogError();
    return false;
}

QString ClsDIALOGS::fstrBrowseForFolder(QWidget *owner)
{
    return DialogService::current().folder(owner, QStringLiteral("Select Folder"));
}

}  // namespace qor
