// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// clsDIALOGS: the file, font, colour, page setup, print and folder dialogs
// behind one object of plain properties. It remembers the folders, files and
// filters of the last use between runs (QOR.ini beside the settings store,
// section DIALOGS): read when the object is made, written when it ends.
// The dialogs themselves are asked through DialogService, so a test answers
// them in advance; the program holds one object from start to end.
#include "uiservices/dialogservice.h"

#include <QColor>
#include <QString>
#include <QStringList>
#include <array>

class QWidget;

namespace qor {

class ClsDIALOGS {
public:
    // Made with persistence on, the remembered keys are read at once.
    // Without it (a window made in a test without the program's object)
    // nothing is read or written.
    explicit ClsDIALOGS(bool usePersistence = true);
    ~ClsDIALOGS();
    ClsDIALOGS(const ClsDIALOGS &) = delete;
    ClsDIALOGS &operator=(const ClsDIALOGS &) = delete;

    // The object the program holds: the one made last and still alive, else
    // one without persistence.
    static ClsDIALOGS &current();

    // Where the remembered keys are kept.
    static QString iniPath();
    // Text of a dialog error code.
    static QString dialogErrorText(qint32 code);

    bool blnShowErrorMessages() const { return m_showErrorMessages; }
    void setBlnShowErrorMessages(bool on) { m_showErrorMessages = on; }
    bool blnUsePersistence() const { return m_usePersistence; }
    void setBlnUsePersistence(bool on) { m_usePersistence = on; }

    // Page setup, thousandths of an inch.
    qint32 lngPaperHeight() const { return m_page.paperHeight; }
    qint32 lngPaperWidth() const { return m_page.paperWidth; }
    qint16 intBottomMargin() const { return qint16(m_page.margins.bottom()); }
    qint16 intTopMargin() const { return qint16(m_page.margins.top()); }
    qint16 intRightMargin() const { return qint16(m_page.margins.right()); }
    qint16 intLeftMargin() const { return qint16(m_page.margins.left()); }
    void setIntBottomMargin(qint16 v) { m_page.margins.setBottom(v); }
    void setIntTopMargin(qint16 v) { m_page.margins.setTop(v); }
    void setIntRightMargin(qint16 v) { m_page.margins.setRight(v); }
    void setIntLeftMargin(qint16 v) { m_page.margins.setLeft(v); }
    qint16 intMinMarginBottom() const { return qint16(m_page.minMargins.bottom()); }
    qint16 intMinMarginTop() const { return qint16(m_page.minMargins.top()); }
    qint16 intMinMarginRight() const { return qint16(m_page.minMargins.right()); }
    qint16 intMinMarginLeft() const { return qint16(m_page.minMargins.left()); }
    void setIntMinMarginBottom(qint16 v) { m_page.minMargins.setBottom(v); }
    void setIntMinMarginTop(qint16 v) { m_page.minMargins.setTop(v); }
    void setIntMinMarginRight(qint16 v) { m_page.minMargins.setRight(v); }
    void setIntMinMarginLeft(qint16 v) { m_page.minMargins.setLeft(v); }
    bool blnPageSetup();

    // The last font chosen. Font type bits: 256 bold, 512 italic, 1024 regular.
    static constexpr qint32 BoldFontType = 256, ItalicFontType = 512, RegularFontType = 1024;
    qint32 lngFontType() const { return m_fontType; }
    QString strFontStyle() const { return m_fontStyle; }
    qint32 lngFontColor() const { return m_fontColor; }
    QString strFontFaceName() const { return m_fontFaceName; }
    qint32 lngFontSize() const { return m_fontSize; }
    bool blnIsFontBold() const { return m_fontBold; }
    bool blnIsFontItalic() const { return m_fontItalic; }
    bool blnChooseFont();

    // Colours are 0x00BBGGRR, red in the low byte.
    qint32 lngColor() const { return m_color; }
    void setLngColor(qint32 c) { m_color = c; }
    // The colour chosen, -1 when none.
    qint32 lngChooseColor(qint32 colour);
    const DialogService::CustomColors &customColors() const { return m_customColors; }

    // File dialogs.
    bool blnCreatePrompt() const { return m_createPrompt; }
    void setBlnCreatePrompt(bool on) { m_createPrompt = on; }
    // The window that owns the dialogs; none stands for the desktop.
    QWidget *owner() const { return m_owner; }
    void setOwner(QWidget *owner) { m_owner = owner; }
    QString strTitle() const { return m_title; }
    void setStrTitle(const QString &t) { m_title = t; }
    bool blnAllowMultipleFileSelect() const { return m_multiple; }
    void setBlnAllowMultipleFileSelect(bool on) { m_multiple = on; }
    // The bar form: description|pattern|description|pattern...
    void setStrFilter(const QString &barForm);
    // The list as kept: every bar a NUL, ending in two NULs.
    QString filterList() const { return m_filter; }
    // The list as the dialog shows it, "Description (pattern)" per pair.
    QStringList dialogFilters() const;
    QString strInitialDir() const { return m_initialDir; }
    void setStrInitialDir(const QString &dir) { m_initialDir = dir; }
    qint32 lngLastSaveFilter() const { return m_lastSaveFilter; }
    qint32 lngLastOpenFilter() const { return m_lastOpenFilter; }
    QString strLastSaveFile() const { return m_lastSaveFile; }
    QString strLastOpenFile() const { return m_lastOpenFile; }
    QString strLastSaveFolder() const { return m_lastSaveFolder; }
    QString strLastOpenFolder() const { return m_lastOpenFolder; }
    qint32 lngNumFilesSelected() const { return m_numFilesSelected; }
    QString strGetOpenFileName();
    QString strGetSaveFileName();
    // One name of a multiple selection, 0 to 255, with its folder.
    QString fstrReturnSingleFileName(int index) const;

    QString strDialogError() const { return m_dialogErrorText; }
    qint32 lngDialogError() const { return m_dialogError; }

    // A folder chosen by the user, "" if none.
    QString fstrBrowseForFolder(QWidget *owner);
    bool blnPrintDialog();

private:
    void readRemembered();
    void writeRemembered() const;
    void dialogError(qint32 code = 0);

    bool m_usePersistence = true;
    bool m_showErrorMessages = true;
    qint32 m_dialogError = 0;
    QString m_dialogErrorText = QStringLiteral("N/A");
    QWidget *m_owner = nullptr;

    DialogService::PageSetup m_page;

    qint32 m_fontType = RegularFontType;
    QString m_fontStyle;
    qint32 m_fontColor = 0;
    QString m_fontFaceName;
    qint32 m_fontSize = 10;
    bool m_fontBold = false, m_fontItalic = false;

    qint32 m_color = 0xC0C0C0;
    DialogService::CustomColors m_customColors;

    bool m_createPrompt = false;
    bool m_multiple = false;
    QString m_title;
    QString m_filter;
    QString m_initialDir, m_lastOpenFolder, m_lastSaveFolder;
    QString m_lastOpenFile, m_lastSaveFile;
    qint32 m_lastOpenFilter = 1, m_lastSaveFilter = 1;
    qint32 m_numFilesSelected = 0;
    std::array<QString, 256> m_names;

    ClsDIALOGS *m_previous = nullptr;
};

}  // namespace qor
