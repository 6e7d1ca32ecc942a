// SPDX-License-Identifier: GPL-3.0-or-later
#include "maintenance/frmlistlvws.h"

#include "database/database.h"
#include "maintenance/frmupdate.h"
#include "maintenance/tablesnapshot.h"
#include "settings/settingsstore.h"
#include "uiservices/fonts.h"
#include "uiservices/formposition.h"
#include "uiservices/twips.h"

#include <QAction>
#include <QClipboard>
#include <QCloseEvent>
#include <QDesktopServices>
#include <QFileInfo>
#include <QGroupBox>
#include <QGuiApplication>
#include <QHeaderView>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPointer>
#include <QPushButton>
#include <QRadioButton>
#include <QTreeView>
#include <QUrl>
#include <algorithm>

namespace qor::maintenance {

const std::array<TableChoice, 4> TableChoices{{
    {"Cus", "Last, First | First | Last | Add1 | Add2 | Add3 | Email | Phone | Notes ...key=1k"},
    {"Per", "PStart(Chrono) | BPName | PEnd(Chrono) | BillDue(Chrono) ...key=BPName | "},
    {"P&&S", "Price(9dot2)$5.00 - Midget Widget ...key=5k"},
    {"InRec", "BPName | Customer Name | CID | BAL | BPID ...key=BPName | CID | "},
}};

const KeyedList &tableOfChoice(const Database &db, int index)
{
    switch (index) {
    case 1: return db.periods();
    case 2: return db.items();
    case 3: return db.invoiceRecords();
    default: return db.customers();
    }
}

namespace {

QPointer<FrmListLVWs> s_form;

// The outer window is the client area plus this, in twips; with it the
// resize rule below keeps the designed margins around Text1.
constexpr double FrameWidth = 120;
constexpr double FrameHeight = 240;
constexpr double MinimumWidth = 4815;
constexpr double MinimumHeight = 3645;

void place(QWidget *w, int left, int top, int width, int height)
{
    w->setGeometry(twipsToPx(left), twipsToPx(top), twipsToPx(width), twipsToPx(height));
}

// A left click on a widget that has no click of its own.
class ClickFilter : public QObject {
public:
    ClickFilter(QWidget *target, std::function<void()> onClick) : QObject(target), m_onClick(std::move(onClick))
    {
        target->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::MouseButtonRelease) {
            auto *me = static_cast<QMouseEvent *>(event);
            auto *w = static_cast<QWidget *>(watched);
            if (me->button() == Qt::LeftButton && w->rect().contains(me->position().toPoint()))
                m_onClick();
        }
        return false;
    }

private:
    std::function<void()> m_onClick;
};

}  // namespace

FrmListLVWs::FrmListLVWs(QWidget *owner, const Database &db, PathSource xmlPath)
    : QWidget(owner, Qt::Window), m_db(db), m_xmlPath(std::move(xmlPath)), m_rows(new TableSnapshot(this))
{
    setObjectName(QStringLiteral("frmListLVWs"));
    setAttribute(Qt::WA_DeleteOnClose);
    // A small plain face, so the four options fit their designed widths.
    ensureDesignFonts();
    QFont face(QStringLiteral("Tahoma"));
    face.setPointSizeF(8.25);
    setFont(face);
    setWindowTitle(QStringLiteral("Developer View - List LVWs"));
    setProperty("qorFrameTwips", QSizeF(FrameWidth, FrameHeight));
    setMinimumSize(twipsToPx(MinimumWidth - FrameWidth), twipsToPx(MinimumHeight - FrameHeight));
    setFormSizeTwips(this, 4605 + FrameWidth, 3045 + FrameHeight);

    // Created in tab order.
    m_text1 = new QTreeView(this);
    m_text1->setObjectName(QStringLiteral("Text1"));
    m_text1->setModel(m_rows);
    m_text1->setHeaderHidden(true);
    m_text1->setRootIsDecorated(false);
    m_text1->setUniformRowHeights(true);  // a million rows are laid out without asking each
    m_text1->setItemsExpandable(false);
    m_text1->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_text1->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_text1->setTextElideMode(Qt::ElideNone);
    m_text1->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    m_text1->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    m_text1->header()->setStretchLastSection(false);
    m_text1->setAccessibleName(QStringLiteral("Rows"));
    place(m_text1, 120, 960, 4455, 2055);
    auto *copy = new QAction(m_text1);
    copy->setShortcut(QKeySequence::Copy);
    copy->setShortcutContext(Qt::WidgetShortcut);
    connect(copy, &QAction::triggered, this, &FrmListLVWs::copySelection);
    m_text1->addAction(copy);

    m_frame1 = new QGroupBox(QStringLiteral("Hidden LVWs"), this);
    m_frame1->setObjectName(QStringLiteral("Frame1"));
    place(m_frame1, 120, 0, 3255, 495);
    static const int optionLeft[4] = {120, 840, 1560, 2400};
    for (int i = 0; i < 4; ++i) {
        auto *option = new QRadioButton(QString::fromLatin1(TableChoices[size_t(i)].caption), m_frame1);
        option->setObjectName(QStringLiteral("optLVWChoice(%1)").arg(i));
        place(option, optionLeft[i], 240, 735, 195);
        // An option that is already on gives no click when pressed again.
        connect(option, &QRadioButton::toggled, this, [this, i](bool on) {
            if (on)
                optLVWChoiceClick(i);
        });
        m_options[size_t(i)] = option;
    }
    // The designed widths fit the small indicator of the system the form was
    // drawn for; here an option may take the room up to its neighbour (the
    // last, up to the frame's edge) so its caption isn't cut.
    for (int i = 0; i < 4; ++i) {
        QRadioButton *option = m_options[size_t(i)];
        const int limit = (i < 3 ? twipsToPx(optionLeft[i + 1]) : m_frame1->width() - 2) - option->x();
        const QSize hint = option->sizeHint();
        option->resize(std::clamp(hint.width(), option->width(), std::max(option->width(), limit)),
                       std::clamp(hint.height(), option->height(), std::max(option->height(), m_frame1->height() - option->y() - 1)));
    }

    m_cmdShowXML = new QPushButton(QStringLiteral("Show XML"), this);
    m_cmdShowXML->setObjectName(QStringLiteral("cmdShowXML"));
    place(m_cmdShowXML, 3480, 120, 1095, 375);
    connect(m_cmdShowXML, &QPushButton::clicked, this, [this] { cmdShowXMLClick(); });

    m_text2 = new QLineEdit(this);
    m_text2->setObjectName(QStringLiteral("Text2"));
    m_text2->setReadOnly(true);
    m_text2->setAccessibleName(QStringLiteral("Row form"));
    QPalette pal = m_text2->palette();
    pal.setColor(QPalette::Base, QGuiApplication::palette().color(QPalette::ToolTipBase));
    pal.setColor(QPalette::Text, QGuiApplication::palette().color(QPalette::ToolTipText));
    m_text2->setPalette(pal);
    place(m_text2, 120, 600, 4455, 285);

    QWidget::setTabOrder(m_text1, m_options[0]);
    for (int i = 0; i < 3; ++i)
        QWidget::setTabOrder(m_options[size_t(i)], m_options[size_t(i) + 1]);
    QWidget::setTabOrder(m_options[3], m_cmdShowXML);
    QWidget::setTabOrder(m_cmdShowXML, m_text2);

    restoreFormPosition(this);
    // On at the start, set without its click; the click is made here.
    m_options[0]->blockSignals(true);
    m_options[0]->setChecked(true);
    m_options[0]->blockSignals(false);
    optLVWChoiceClick(0);
}

FrmListLVWs *FrmListLVWs::open(QWidget *owner, const Database &db, PathSource xmlPath)
{
    if (!s_form) {
        s_form = new FrmListLVWs(owner, db, std::move(xmlPath));
        s_form->show();
    }
    return s_form;
}

FrmListLVWs *FrmListLVWs::existing() { return s_form; }

void FrmListLVWs::optLVWChoiceClick(int index)
{
    if (index < 0 || index > 3)
        return;
    m_rows->clear();
    m_text2->setText(QString::fromLatin1(TableChoices[size_t(index)].rowForm));
    m_text2->setCursorPosition(0);
    m_rows->take(tableOfChoice(m_db, index));
    fitRowWidth();
}

void FrmListLVWs::fitRowWidth()
{
    // Measuring every line would cost more than filling them; the longest by
    // characters, with room to spare for wider letters, serves the scroll bar.
    int width = 0;
    if (m_rows->longestRow() >= 0) {
        const QString longest = m_rows->line(m_rows->longestRow());
        width = m_text1->fontMetrics().horizontalAdvance(longest) * 11 / 10 + 4 * m_text1->fontMetrics().averageCharWidth();
    }
    m_text1->header()->resizeSection(0, std::max(width, m_text1->viewport()->width()));
}

bool FrmListLVWs::cmdShowXMLClick()
{
    const QString path = m_xmlPath ? m_xmlPath() : QString();
    const QFileInfo file(path);
    if (path.isEmpty() || !file.isFile())
        return false;
    // The result isn't looked at: a desktop without a program for it shows nothing.
    QDesktopServices::openUrl(QUrl::fromLocalFile(file.absoluteFilePath()));
    return true;
}

QString FrmListLVWs::text1() const { return m_rows->text(); }
QString FrmListLVWs::text2() const { return m_text2->text(); }

void FrmListLVWs::copySelection()
{
    QModelIndexList rows = m_text1->selectionModel()->selectedRows();
    if (rows.isEmpty())
        return;
    std::sort(rows.begin(), rows.end(), [](const QModelIndex &a, const QModelIndex &b) { return a.row() < b.row(); });
    QString out;
    for (const QModelIndex &index : rows)
        out += m_rows->line(index.row()) + QStringLiteral("\r\n");
    QGuiApplication::clipboard()->setText(out);
}

void FrmListLVWs::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    if (isMinimized() || !m_text1)
        return;
    // The minimum size is held by the window itself; Text1 and Text2 follow
    // the outer size.
    const double w = std::max(formWidthTwips(this), MinimumWidth);
    const double h = std::max(formHeightTwips(this), MinimumHeight);
    m_text1->resize(twipsToPx(w - 360), twipsToPx(h - 1230));
    m_text2->resize(m_text1->width(), m_text2->height());
    fitRowWidth();
}

void FrmListLVWs::closeEvent(QCloseEvent *event)
{
    saveFormPosition(this);
    QWidget::closeEvent(event);
}

void picLogoClick(QWidget *owner, const Database &db, FrmListLVWs::PathSource xmlPath)
{
    if (settings::BrowseView.stored() == QLatin1String("lvwpeek"))
        FrmListLVWs::open(owner, db, std::move(xmlPath));
}

void attachDeveloperView(QWidget *picLogo, QWidget *owner, const Database &db, FrmListLVWs::PathSource xmlPath)
{
    new ClickFilter(picLogo, [owner, &db, xmlPath] { picLogoClick(owner, db, xmlPath); });
}

void closeMaintenanceForms()
{
    if (FrmListLVWs *view = FrmListLVWs::existing())
        view->close();
    if (FrmUpdate *update = FrmUpdate::existing())
        update->close();
}

}  // namespace qor::maintenance
