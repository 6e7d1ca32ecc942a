// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/frmqor.h"

#include "billing/entrycopy.h"
#include "billperiods/billperiodpanel.h"
#include "billperiods/entryguard.h"
#include "customers/customerpanel.h"
#include "database/regional.h"
#include "maintenance/frmlistlvws.h"
#include "maintenance/frmupdate.h"
#include "maintenance/versioncheck.h"
#include "printing/printingpanel.h"
#include "printing/printoptionspanel.h"
#include "products/productpanel.h"
#include "settings/settingsstore.h"
#include "shell/companyinfopanel.h"
#include "shell/optionspanel.h"
#include "shell/panel.h"
#include "shell/roster.h"
#include "shell/userguide.h"
#include "uiservices/assetpaths.h"
#include "uiservices/buttonkeys.h"
#include "uiservices/dialogservice.h"
#include "uiservices/formposition.h"
#include "uiservices/frmmessage.h"
#include "uiservices/hovercommand.h"
#include "uiservices/twips.h"

#include <QAbstractButton>
#include <QAccessibleWidget>
#include <QApplication>
#include <QCloseEvent>
#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QIcon>
#include <QLabel>
#include <QPushButton>
#include <QResizeEvent>
#include <QSaveFile>
#include <QShortcut>
#include <QStandardPaths>
#include <QUrl>
#include <algorithm>
#include <cmath>
#include <utility>

static void initHelpResource() { Q_INIT_RESOURCE(help); }

namespace qor {

namespace {

const char *const AcceleratorCaptions[7] = {"&C", "&P", "&B", "&N", "&T", "&O", "&I"};

const QString CRLF = QStringLiteral("\r\n");

QRect twipsRect(double left, double top, double width, double height)
{
    return QRect(twipsToPx(left), twipsToPx(top), twipsToPx(width), twipsToPx(height));
}

// Screen readers list the program's window as a frame, as they do any
// application's main window (a plain widget would read as a panel).
QAccessibleInterface *windowAccessible(const QString &className, QObject *object)
{
    auto *window = qobject_cast<QWidget *>(object);
    if (className == QLatin1String(FrmQOR::staticMetaObject.className()) && window)
        return new QAccessibleWidget(window, QAccessible::Window);
    return nullptr;
}

QImage loadImage(const QString &path)
{
    assets::ensureLoaded();
    return QImage(path);  // a missing picture leaves the button without one
}

}  // namespace

// ---------------------------------------------------------------------------

struct FrmQOR::Private {
    QLabel *picLogo = nullptr;
    std::array<QPushButton *, 7> cmdAcceleratorKey{};
};

FrmQOR::FrmQOR(QWidget *parent) : FrmQOR(*new Session, parent)
{
    m_ownSession.reset(m_session);
}

FrmQOR::FrmQOR(Session &session, QWidget *parent)
    : QWidget(parent), m_session(&session), m_trees(session.db()), p(new Private)
{
    initHelpResource();
    static const bool readable = (QAccessible::installFactory(windowAccessible), true);
    Q_UNUSED(readable);
    m_session->setQuestions(&m_questions);
    setObjectName(QStringLiteral("frmQOR"));
    showFileInTitle();
    setProperty("qorFrameTwips", QSizeF(FrameAllowanceWidth, FrameAllowanceHeight));
    setAutoFillBackground(true);
    setPalette(roster::panelPalette(palette()));
    setWindowIcon(QIcon(QPixmap::fromImage(loadImage(QString::fromLatin1(assets::AppIcon)))));
    setMinimumSize(twipsToPx(MinimumWidth - FrameAllowanceWidth),
                   twipsToPx(MinimumHeight - FrameAllowanceHeight));

    // The panels, in the order of the tab column.
    m_panels[0] = new CustomerPanel(*this, m_trees, this);
    m_panels[1] = new ProductPanel(*this, m_trees, this);
    m_panels[2] = new BillPeriodPanel(*this, m_trees, this);
    m_panels[3] = new PrintingPanel(*this, m_trees, this);
    m_panels[4] = new PrintOptionsPanel(*this, this);
    m_panels[5] = new OptionsPanel(*this, this);
    m_panels[6] = new CompanyInfoPanel(*this, this);
    for (Panel *panel : m_panels)
        panel->hide();
    // The invoice run reads the options as they stand on Print Options, and
    // sends the user to Company Info when the company's details are missing.
    printingPanel()->invoiceOptions = [this] { return printOptionsPanel()->invoiceOptions(); };
    printingPanel()->showCompanyInfoPanel = [this] { showCompanyInfoPanel(); };

    buildFormControls();
    chainTabOrder();
    EnterPressesButtons::install(this);

    // The one place the changed state becomes visible.
    connect(&db(), &Database::changedStateChanged, this, [this](bool changed) {
        // Hidden rather than "not visible": the state must read right before
        // the window is first shown. A read-only file offers no save.
        m_cmdSave->setVisible(changed && !m_session->isReadOnly());
        m_cmdCancel->setVisible(changed);
        setWindowModified(changed);
        // An open entry still wants its recovery copy after a save.
        if (changed || (billPeriodPanel() && billPeriodPanel()->openEntry())) startRecoveryTimer();
        else m_recoveryTimer.stop();
    });
    connect(m_session, &Session::readOnlyChanged, this, &FrmQOR::showReadOnly);
    connect(m_session, &Session::pathChanged, this, &FrmQOR::showFileInTitle);

    // The keys of every desktop program. Ctrl+S saves only what the Save
    // button would, Ctrl+Q closes as the close button does, with its questions.
    connect(new QShortcut(QKeySequence::Save, this), &QShortcut::activated, this, [this] {
        if (!m_cmdSave->isHidden()) cmdSaveClick();
    });
    connect(new QShortcut(QKeySequence::HelpContents, this), &QShortcut::activated, this,
            [this] { cmdOpenHelpClick(); });
    // Not QKeySequence::Quit: some desktops' key themes leave it empty.
    connect(new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q), this), &QShortcut::activated, this, &QWidget::close);
    connect(&db(), &Database::placeholderCreated, this, [this] { placeholderCreated(); });

    // Unsaved changes reach the recovery copy within RecoveryDelay of the
    // first change after the last copy: the timer is not restarted by
    // further changes, so steady typing can't put the copy off.
    m_recoveryTimer.setSingleShot(true);
    m_recoveryTimer.setInterval(RecoveryDelay);
    connect(&db(), &Database::edited, this, &FrmQOR::startRecoveryTimer);
    connect(billPeriodPanel(), &BillPeriodPanel::entryEdited, this, &FrmQOR::startRecoveryTimer);
    connect(&m_recoveryTimer, &QTimer::timeout, m_session, &Session::writeRecoveryInBackground);
    m_session->openEntry = [this] {
        // The panels go before the window; the session may outlive both.
        const auto entry = billPeriodPanel() ? billPeriodPanel()->openEntry() : std::nullopt;
        return entry ? billing::encodeEntry(*entry) : QByteArray();
    };
    // Restore brings the entry back once the books it bills are shown.
    connect(m_session, &Session::entryRecovered, this, [this](const QByteArray &text) { m_recoveredEntry = text; });
}

void FrmQOR::showFileInTitle()
{
    // "[*]" is where Qt shows the "*" of unsaved changes.
    const QString path = m_session->path();
    QString title = QStringLiteral("[*]Qorvane");
    if (!path.isEmpty())
        title = QStringLiteral("[*]") + QFileInfo(path).fileName() +
                (m_session->isReadOnly() ? QStringLiteral(" (read-only)") : QString()) +
                QStringLiteral(" \u2014 Qorvane");
    setWindowTitle(title);
    setWindowModified(databaseChanged());
    DialogService::setDatabaseFile(path);
}

void FrmQOR::showReadOnly(bool readOnly)
{
    showFileInTitle();
    m_cmdSave->setVisible(databaseChanged() && !readOnly);
    optionsPanel()->showReadOnly(readOnly);
}

FrmQOR::~FrmQOR()
{
    // The panels go first: they follow the books, which may go with this window.
    for (Panel *&panel : m_panels) {
        delete panel;
        panel = nullptr;
    }
    m_session->openEntry = nullptr;
    m_session->setQuestions(nullptr);
    delete p;
}

void FrmQOR::buildFormControls()
{
    p->picLogo = new QLabel(this);
    p->picLogo->setObjectName(QStringLiteral("picLogo"));
    p->picLogo->setGeometry(twipsRect(547, 45, 480, 240));
    p->picLogo->setPixmap(QPixmap::fromImage(loadImage(QString::fromLatin1(assets::Logo))));
    p->picLogo->setAccessibleName(QStringLiteral("Qorvane"));

    for (int i = 0; i < 7; ++i) {
        auto *tab = new HoverCommand(this);
        tab->setObjectName(QStringLiteral("cmdTab(%1)").arg(i));
        tab->setGeometry(twipsRect(15, 360 + 840 * i, 1545, 840));
        tab->setStyleBits(33);
        tab->setBorderOffset(4);
        tab->setImageOffset(0);
        tab->setBackColor(Qt::white);
        tab->setCaption(QString());
        tab->setPicture(loadImage(assets::tabFace(i)));
        tab->setHovPicture(loadImage(assets::tabFaceHover(i)));
        connect(tab, &QAbstractButton::clicked, this, [this, i] { cmdTabClick(i); });
        m_cmdTab[size_t(i)] = tab;
    }
    static const char *const tabNames[7] = {"Customers", "Products", "Bill Periods", "Printing",
                                            "Print Options", "Options", "Company Info"};
    for (int i = 0; i < 7; ++i)
        m_cmdTab[size_t(i)]->setAccessibleName(QString::fromLatin1(tabNames[i]));

    m_cmdSave = new HoverCommand(this);
    m_cmdSave->setObjectName(QStringLiteral("cmdSave"));
    m_cmdSave->setGeometry(twipsRect(1680, 135, 390, 480));
    m_cmdSave->setStyleBits(80);
    m_cmdSave->setBorderOffset(1);
    m_cmdSave->setImageOffset(0);
    m_cmdSave->setBackColor(QColor(0, 192, 0));
    m_cmdSave->setHighlightColor(QColor(0, 255, 0));
    m_cmdSave->setPicture(loadImage(QString::fromLatin1(assets::CheckMark)));
    m_cmdSave->setAccessibleName(QStringLiteral("Save"));
    m_cmdSave->setToolTip(QStringLiteral("Save"));
    m_cmdSave->hide();
    connect(m_cmdSave, &QAbstractButton::clicked, this, &FrmQOR::cmdSaveClick);

    m_cmdCancel = new HoverCommand(this);
    m_cmdCancel->setObjectName(QStringLiteral("cmdCancel"));
    m_cmdCancel->setGeometry(twipsRect(2160, 135, 390, 480));
    m_cmdCancel->setStyleBits(80);
    m_cmdCancel->setBorderOffset(1);
    m_cmdCancel->setImageOffset(0);
    m_cmdCancel->setBackColor(QColor(255, 0, 0));
    m_cmdCancel->setHighlightColor(QColor(255, 128, 128));
    m_cmdCancel->setPicture(loadImage(QString::fromLatin1(assets::Cross)));
    m_cmdCancel->setAccessibleName(QStringLiteral("Abandon changes"));
    m_cmdCancel->setToolTip(QStringLiteral("Abandon changes"));
    m_cmdCancel->hide();
    connect(m_cmdCancel, &QAbstractButton::clicked, this, &FrmQOR::cmdCancelClick);

    // Off the left edge: never seen, but their hot keys switch panels.
    for (int i = 0; i < 7; ++i) {
        auto *key = new OffWindowButton(QString::fromLatin1(AcceleratorCaptions[i]), this);
        key->setObjectName(QStringLiteral("cmdAcceleratorKey(%1)").arg(i));
        key->setGeometry(twipsRect(-2000, 6360 + 600 * i, 1215, 495));
        key->setFocusPolicy(Qt::NoFocus);
        key->setAccessibleName(m_cmdTab[size_t(i)]->accessibleName());
        // The hot key takes the focus to the panel's tab: its raised border
        // shows which panel is on show, and Tab goes on from there.
        connect(key, &QAbstractButton::clicked, this, [this, i] {
            cmdTabClick(i);
            m_cmdTab[size_t(i)]->setFocus(Qt::ShortcutFocusReason);
        });
        p->cmdAcceleratorKey[size_t(i)] = key;
    }

    // The save and abandon buttons stand in the title band of the panels.
    m_cmdSave->raise();
    m_cmdCancel->raise();

    connect(optionsPanel(), &OptionsPanel::helpRequested, this, [this] { cmdOpenHelpClick(); });
    connect(optionsPanel(), &OptionsPanel::expertModeClicked, this, [this] { applyExpertMode(); });
    connect(optionsPanel(), &OptionsPanel::changePathClicked, this, &FrmQOR::cmdChangePathClick);
    connect(optionsPanel(), &OptionsPanel::closeBooksClicked, this, &FrmQOR::cmdCloseBooksClick);
    connect(m_session, &Session::unsavedChangesKept, optionsPanel(), &OptionsPanel::showRecoveryCopy);
    connect(m_session, &Session::earlierCopiesChanged, this,
            [this] { optionsPanel()->showEarlierCopies(m_session->earlierCopies()); });
    connect(optionsPanel(), &OptionsPanel::restoreCopyRequested, this, [this](const QString &copy) {
        if (m_session->restoreCopy(copy)) refreshAfterLoad();
    });
    connect(optionsPanel(), &OptionsPanel::checkForNewVersionRequested, this,
            [this] { maintenance::checkForNewVersion(this); });
    maintenance::attachDeveloperView(p->picLogo, this, db(), [this] { return m_session->path(); });
}

void FrmQOR::chainTabOrder()
{
    // The form-level controls join the panels' controls in one tab order.
    p->picLogo->setProperty(roster::TabIndexProperty, 112);
    for (int i = 0; i < 7; ++i) {
        m_cmdTab[size_t(i)]->setProperty(roster::TabIndexProperty, 113 + i);
        p->cmdAcceleratorKey[size_t(i)]->setProperty(roster::TabIndexProperty, 142 + i);
    }
    m_cmdSave->setProperty(roster::TabIndexProperty, 120);
    m_cmdCancel->setProperty(roster::TabIndexProperty, 121);
    roster::chainTabOrder(this);
}

CustomerPanel *FrmQOR::customerPanel() const { return static_cast<CustomerPanel *>(m_panels[0]); }
ProductPanel *FrmQOR::productPanel() const { return static_cast<ProductPanel *>(m_panels[1]); }
BillPeriodPanel *FrmQOR::billPeriodPanel() const { return static_cast<BillPeriodPanel *>(m_panels[2]); }
PrintingPanel *FrmQOR::printingPanel() const { return static_cast<PrintingPanel *>(m_panels[3]); }
PrintOptionsPanel *FrmQOR::printOptionsPanel() const { return static_cast<PrintOptionsPanel *>(m_panels[4]); }
OptionsPanel *FrmQOR::optionsPanel() const { return static_cast<OptionsPanel *>(m_panels[5]); }
CompanyInfoPanel *FrmQOR::companyInfoPanel() const { return static_cast<CompanyInfoPanel *>(m_panels[6]); }

// ---------------------------------------------------------------------------
// Form_Load

void FrmQOR::formLoad()
{
    for (Panel *panel : m_panels)
        panel->move(twipsToPx(PanelLeft), 0);
    settings::BrowseView.set(settings::BrowseView.defaultText());
    m_loadingForm = true;

    m_dateFormatString = regional::dateFormatString();
    m_dateSeparator = regional::dateSeparator();
    m_currencySymbol = regional::currencySymbol();

    loadDatabaseAndRefresh();

    setFormSizeTwips(this, DesignedWidth, DesignedHeight);
    restoreFormPosition(this);

    optionsPanel()->showVersion();

    const double stored = regional::val(settings::LastClicked.storedSetting());
    int index = int(std::nearbyint(stored));
    // Only the program writes this value; anything else opens the first panel.
    if (index < 0 || index > 6)
        index = 0;
    m_currentPanel = index;
    cmdTabClick(m_currentPanel);

    m_loadingForm = false;
    if (m_session->declinedAtStart()) {
        // Another program holds the file and the user chose not to open it.
        QMetaObject::invokeMethod(this, &QWidget::close, Qt::QueuedConnection);
        return;
    }
    show();
    m_wasMinimized = isMinimized();
    customerPanel()->focusList();
    if (std::exchange(m_placeholderPending, false))
        placeholderCreated();
    // Changes a crash left unsaved are offered once the window stands.
    if (m_session->offerRecovery()) {
        refreshAfterLoad();
        reopenRecoveredEntry();
    }
}

void FrmQOR::startRecoveryTimer()
{
    if (!m_recoveryTimer.isActive()) m_recoveryTimer.start();
}

void FrmQOR::reopenRecoveredEntry()
{
    const auto entry = billing::decodeEntry(std::exchange(m_recoveredEntry, {}));
    if (!entry) return;
    cmdTabClick(2);
    billPeriodPanel()->reopenEntry(*entry);
}

void FrmQOR::loadDatabaseAndRefresh()
{
    customerPanel()->showAddNew();
    m_session->load();
    refreshAfterLoad();
}

void FrmQOR::refreshAfterLoad()
{
    if (customerPanel()->rowCount() > 0)
        customerPanel()->showCustomerDetails();
    applySettings();
    applyExpertMode();
    optionsPanel()->showEarlierCopies(m_session->earlierCopies());
}

// ---------------------------------------------------------------------------
// Panels and size

void FrmQOR::cmdTabClick(int index)
{
    if (index < 0 || index > 6)
        return;
    m_panels[size_t(m_currentPanel)]->setVisible(false);
    m_currentPanel = index;
    arrangePanels(m_currentPanel);
    m_panels[size_t(m_currentPanel)]->setVisible(true);
}

void FrmQOR::arrangePanels(int index)
{
    const double W = formWidthTwips(this) - 1665;
    const double H = formHeightTwips(this) - 510;
    Panel *current = m_panels[size_t(m_currentPanel)];
    current->resize(twipsToPx(W), twipsToPx(H));
    if (index < 0 || index > 6)
        return;
    const int M = Panel::middleOf(W);
    ++m_arrangeCount;
    m_panels[size_t(index)]->arrange(W, H, M);
}

void FrmQOR::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    formResize();
}

void FrmQOR::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() != QEvent::WindowStateChange)
        return;
    // Coming back from the task bar gives no size change of its own, yet the
    // panel may not have followed a size change made while minimised.
    const bool minimized = isMinimized();
    if (m_wasMinimized && !minimized)
        formResize();
    m_wasMinimized = minimized;
}

void FrmQOR::formResize()
{
    if (isMinimized() || m_loadingForm)
        return;
    const double w = formWidthTwips(this);
    const double h = formHeightTwips(this);
    // Only the two lower limits exist; there is no largest size.
    if (w < MinimumWidth - 0.5 || h < MinimumHeight - 0.5)
        setFormSizeTwips(this, std::max(w, MinimumWidth), std::max(h, MinimumHeight));
    arrangePanels(m_currentPanel);
}

// ---------------------------------------------------------------------------
// Expert mode, settings, entry fields

void FrmQOR::applyExpertMode()
{
    const bool expert = optionsPanel()->expertMode();
    for (Panel *panel : m_panels)
        panel->applyExpertMode(expert);
}

void FrmQOR::applySettings()
{
    optionsPanel()->applySettings();
    printOptionsPanel()->applySettings();
}

// ---------------------------------------------------------------------------
// Reading and saving

void FrmQOR::placeholderCreated()
{
    const QString key = QStringLiteral("DeletedCustomer");
    if (!isVisible()) {
        // The first read comes before the window is on screen: the message
        // waits for the window, to stand centred over it.
        m_placeholderPending = true;
        showDatabaseChanged(true);
        return;
    }
    if (!isMessageMarked(key)) {
        const QString text = QStringList{QStringLiteral("An entry in your billing records points to a"),
                                         QStringLiteral("customer who is no longer in the database."),
                                         QString(),
                                         QStringLiteral("To hold that spot in the records, a customer"),
                                         QStringLiteral("named \"Deleted Customer\" will be created.")}
                                 .join(CRLF);
        DialogService::current().messageForm(this, {text, key, QStringLiteral("OK"), QStringLiteral("Yes")});
    }
    showDatabaseChanged(true);
}

bool FrmQOR::saveDatabase()
{
    if (!m_session->save())
        return false;
    if (m_panels[0]->isVisible())
        customerPanel()->focusList();
    return true;
}

void FrmQOR::cmdSaveClick() { saveDatabase(); }

void FrmQOR::cmdCancelClick()
{
    const QString text = QStringList{
        QStringLiteral("Are you sure you want to abandon all your changes?"), QString(),
        QStringLiteral("Press OK to abandon all changes and reload the database file as it was originally."),
        QStringLiteral("Press Cancel to keep your changes and continue.")}
                             .join(CRLF);
    const auto answer = DialogService::current().warning(this, QStringLiteral("ABANDON ALL CHANGES???"), text,
                                                         QMessageBox::Ok | QMessageBox::Cancel, QMessageBox::Ok);
    if (answer != QMessageBox::Ok || !entryguard::mayDropEntry(m_trees, this))
        return;
    m_session->reload();
}

void FrmQOR::cmdChangePathClick(int index)
{
    if (index == int(Session::FileButton::Save)) {
        saveDatabase();
        return;
    }
    if (!m_session->changePath(Session::FileButton(index)))
        return;
    customerPanel()->showAddNew();
    refreshAfterLoad();
}

bool FrmQOR::openRequested(const QString &path)
{
    // A window still loading, or a question on screen, is seen to first; the
    // file waits for it.
    if (m_loadingForm || QApplication::activeModalWidget()) {
        if (QWidget *modal = QApplication::activeModalWidget()) {
            modal->raise();
            modal->activateWindow();
        }
        if (!path.isEmpty())
            QTimer::singleShot(500, this, [this, path] { openRequested(path); });
        return false;
    }
    if (isMinimized())
        showNormal();
    raise();
    activateWindow();
    if (path.isEmpty() || !m_session->openFile(path))
        return false;
    customerPanel()->showAddNew();
    refreshAfterLoad();
    return true;
}

void FrmQOR::cmdCloseBooksClick()
{
    if (!m_session->closeBooks())
        return;
    optionsPanel()->showDatabasePath();
}

// ---------------------------------------------------------------------------
// Help

bool FrmQOR::cmdOpenHelpClick() { return userguide::open(this); }

// ---------------------------------------------------------------------------
// Form_Unload

void FrmQOR::closeEvent(QCloseEvent *event)
{
    settings::LastClicked.set(m_currentPanel);
    // The notice of a new version is answered first; DOWNLOAD hides it.
    if (maintenance::FrmUpdate::isShowing()) {
        event->ignore();
        return;
    }

    if (databaseChanged()) {
        const QString text = QStringLiteral("Your database has changed.") + CRLF + CRLF +
                             QStringLiteral("Do you want to save the changes?");
        const auto answer = DialogService::current().warning(
            this, AppTitle, text, QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel,
            QMessageBox::Yes);
        if (answer == QMessageBox::Yes) {
            if (!saveDatabase()) {
                event->ignore();
                return;
            }
        } else if (answer != QMessageBox::No) {
            event->ignore();
            return;
        }
    }
    if (!entryguard::mayDropEntry(m_trees, this)) {
        event->ignore();
        return;
    }

    // Saved or given up by the user's answer: nothing is left to recover.
    m_recoveryTimer.stop();
    m_session->dropRecovery();

    if (customerPanel()->rowCount() > 0) {
        const int position = customerPanel()->selectedPosition();
        if (position > 0)
            settings::LastViewedCustomer.set(position);
    }
    saveFormPosition(this);
    maintenance::closeMaintenanceForms();
    if (FrmChecking *checking = m_checking.window())
        checking->close();
    settings::sync();
    event->accept();
}

}  // namespace qor
