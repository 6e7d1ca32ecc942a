// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// frmListLVWs, the developer view: the raw rows of the four tables as text,
// one table at a time, and the database file opened with the desktop's program
// for it. It changes nothing, and what it shows is a snapshot of the moment an
// option was chosen.
#include <QString>
#include <QWidget>
#include <array>
#include <functional>

class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QTreeView;

namespace qor {
class Database;
class KeyedList;
}  // namespace qor

namespace qor::maintenance {

class TableSnapshot;

// The four options: caption, and the line telling how that table's rows are built.
struct TableChoice {
    const char *caption;
    const char *rowForm;
};
extern const std::array<TableChoice, 4> TableChoices;

// The table of an option: 0 customers, 1 bill periods, 2 products and
// services, 3 invoice records.
const KeyedList &tableOfChoice(const Database &db, int index);

class FrmListLVWs : public QWidget {
    Q_OBJECT
public:
    // Gives the path of the open database file (txtChangePath).
    using PathSource = std::function<QString()>;

    // Loads the form beside owner, without blocking it. A form already loaded
    // stays as it is: nothing is read again.
    static FrmListLVWs *open(QWidget *owner, const Database &db, PathSource xmlPath);
    static FrmListLVWs *existing();  // the form if loaded, else nullptr

    void optLVWChoiceClick(int index);
    // Opens the file named by the path with the desktop's program for it;
    // false when there is no such file (then nothing happens).
    bool cmdShowXMLClick();

    QString text1() const;  // every row shown, each line ended by CR LF
    QString text2() const;
    TableSnapshot *rows() const { return m_rows; }
    QRadioButton *optLVWChoice(int index) const { return m_options.at(size_t(index)); }
    QPushButton *cmdShowXML() const { return m_cmdShowXML; }
    QLineEdit *textBox2() const { return m_text2; }
    QTreeView *textBox1() const { return m_text1; }

protected:
    void resizeEvent(QResizeEvent *event) override;  // Form_Resize
    void closeEvent(QCloseEvent *event) override;    // Form_Unload

private:
    FrmListLVWs(QWidget *owner, const Database &db, PathSource xmlPath);
    void fitRowWidth();
    void copySelection();

    const Database &m_db;
    PathSource m_xmlPath;
    QGroupBox *m_frame1 = nullptr;
    std::array<QRadioButton *, 4> m_options{};
    QPushButton *m_cmdShowXML = nullptr;
    QLineEdit *m_text2 = nullptr;
    QTreeView *m_text1 = nullptr;
    TableSnapshot *m_rows = nullptr;
};

// picLogo_Click: opens the developer view only when the settings say
// BrowseRecall/view is exactly "lvwpeek".
void picLogoClick(QWidget *owner, const Database &db, FrmListLVWs::PathSource xmlPath);
// Makes a left click on the logo run picLogoClick.
void attachDeveloperView(QWidget *picLogo, QWidget *owner, const Database &db, FrmListLVWs::PathSource xmlPath);

// The forms of this folder that the main window unloads when it closes, in
// its order: frmListLVWs, then frmUpdate.
void closeMaintenanceForms();

}  // namespace qor::maintenance
