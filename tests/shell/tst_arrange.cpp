// How the panels follow the window's size, the hints of expert mode, and what
// the panels built on the base do with their controls: the option handlers,
// the company fields and the period and product views.
#include "billing/billperiodpanel.h"
#include "database/database.h"
#include "database/rows.h"
#include "printing/printingpanel.h"
#include "printing/printoptionspanel.h"
#include "shell/appcontext.h"
#include "shell/companyinfopanel.h"
#include "shell/optionspanel.h"
#include "shell/panel.h"
#include "shell/roster.h"
#include "shell/settingsstore.h"
#include "uiservices/hovercommand.h"
#include "uiservices/twips.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTreeWidget>
#include <QtTest>

#include <memory>

using namespace qor;

namespace {

class FakeContext : public AppContext {
public:
    Database &db() override { return database; }
    void showDatabaseChanged(bool c) override
    {
        changed = c;
        ++changeCalls;
    }
    bool databaseChanged() const override { return changed; }
    void arrangePanels(int) override {}
    void refreshProductList() override {}
    int currentPanel() const override { return 0; }
    QWidget *mainWindow() override { return nullptr; }
    Database database;
    bool changed = false;
    int changeCalls = 0;
};

QString fields(std::initializer_list<const char *> parts)
{
    QStringList out;
    for (const char *p : parts)
        out << QString::fromUtf8(p);
    return out.join(FieldSep);
}

}  // namespace

class TestArrange : public QObject {
    Q_OBJECT

    QTemporaryDir configHome;
    FakeContext ctx;

    static QRect place(const Panel &p, const char *name)
    {
        const QWidget *w = p.controlWidget(QString::fromLatin1(name));
        return w ? w->geometry() : QRect(-1, -1, -1, -1);
    }
    static QString stored(const char *section, const char *key)
    {
        return settings::read(QString::fromLatin1(section), QString::fromLatin1(key), QStringLiteral("<absent>"));
    }

private slots:
    void initTestCase();
    void init();
    void middleRoundsHalfToEven();
    void followsTheWindow_data();
    void followsTheWindow();
    void billPeriodTreeSharesWidthWithProducts();
    void optionsFollowChangedStateAndExpertMode();
    void expertModeHints();
    void optionsPanelStoresBoxes();
    void companyFieldsAreData();
    void billPeriodChoosers();
    void billPeriodEntryFields();
    void billPeriodProductList();
    void printOptionsApplySettings();
    void printOptionHandlers();
};

void TestArrange::initTestCase()
{
    QVERIFY(configHome.isValid());
    qputenv("XDG_CONFIG_HOME", configHome.path().toLocal8Bit());
    QVERIFY(settings::storePath().startsWith(configHome.path()));
    QCOMPARE(twipsPerPixel(), 15.0);
}

void TestArrange::init()
{
    QSettings store(settings::storePath(), QSettings::IniFormat);
    store.clear();
    store.sync();
    ctx.changed = false;
    ctx.changeCalls = 0;
    ctx.database.clear();
}

void TestArrange::middleRoundsHalfToEven()
{
    QCOMPARE(Panel::middleOf(8400), 4200);
    QCOMPARE(Panel::middleOf(8401), 4200);  // 4200.5
    QCOMPARE(Panel::middleOf(8403), 4202);  // 4201.5
    QCOMPARE(Panel::middleOf(8399), 4200);  // 4199.5
    QCOMPARE(Panel::middleOf(8402), 4201);
    QCOMPARE(Panel::middleOf(8400.8), 4200);
    QCOMPARE(Panel::middleOf(8401.2), 4201);
    QCOMPARE(Panel::middleOf(200000), 32767);

    // The layout uses that M: at W = 9015 the middle is 4508 (not 4507), at
    // W = 9045 it is 4522 (not 4523); cmdPrint stands at M - 600.
    Panel p(0, ctx);
    p.arrange(9015, 6240, Panel::middleOf(9015));
    QCOMPARE(place(p, "cmdPrint").x(), 261);  // 3908 twips
    p.arrange(9045, 6240, Panel::middleOf(9045));
    QCOMPARE(place(p, "cmdPrint").x(), 261);  // 3922 twips
    // A height where a few twips show: 7310 - 4305 = 3005 twips, 200.3 pixels.
    p.arrange(9045, 7310, Panel::middleOf(9045));
    QCOMPARE(place(p, "txtField(7)").height(), 200);
}

// Places in pixels (15 twips each) at the smallest size (W 8400, H 6240,
// M 4200) and at W 12000, H 9000, M 6000.
void TestArrange::followsTheWindow_data()
{
    QTest::addColumn<int>("panel");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QRect>("small");
    QTest::addColumn<QRect>("large");
    auto row = [](int panel, const char *name, QRect small, QRect large) {
        QTest::newRow(name) << panel << QString::fromLatin1(name) << small << large;
    };
    row(0, "cmdPrint", {240, 39, 25, 24}, {360, 39, 25, 24});
    row(0, "txtSearch", {56, 43, 145, 21}, {56, 43, 265, 21});
    row(0, "cmdSearch", {208, 39, 25, 24}, {328, 39, 25, 24});
    row(0, "lvwCustomersVis", {8, 64, 256, 344}, {8, 64, 376, 528});
    row(0, "lblFirstName", {264, 41, 85, 17}, {384, 41, 85, 17});
    row(0, "lblPhone", {264, 201, 85, 17}, {384, 201, 85, 17});
    row(0, "txtField(0)", {360, 40, 192, 21}, {480, 40, 312, 21});
    row(0, "txtField(4)", {360, 144, 192, 21}, {480, 144, 312, 21});
    row(0, "txtField(7)", {336, 232, 216, 129}, {456, 232, 336, 313});
    row(0, "cmdUndo", {279, 368, 129, 41}, {519, 552, 129, 41});
    row(0, "cmdAddNew", {423, 368, 129, 41}, {663, 552, 129, 41});
    row(0, "lblCustomers", {8, 46, 182, 14}, {8, 46, 182, 14});
    row(0, "lblTop(0)", {0, 0, 560, 25}, {0, 0, 800, 25});
    row(1, "txtProductOrServiceName", {144, 56, 407, 21}, {144, 56, 647, 21});
    row(1, "txtPrice", {8, 56, 121, 21}, {8, 56, 121, 21});
    row(1, "lvwProducts(0)", {8, 104, 545, 257}, {8, 104, 785, 441});
    row(1, "cmdCancelNewItem", {279, 368, 129, 41}, {519, 552, 129, 41});
    row(1, "cmdAddNewItem", {423, 368, 129, 41}, {663, 552, 129, 41});
    row(2, "tvwInvoiceRecords(0)", {8, 104, 544, 256}, {8, 104, 784, 440});
    row(2, "lblDoubleClickToAdd", {568, 88, 257, 14}, {808, 88, 257, 14});
    row(2, "lvwProducts(1)", {568, 104, 544, 256}, {808, 104, 784, 440});
    row(2, "cmdResetCustomerAccounts", {8, 368, 129, 41}, {8, 552, 129, 41});
    row(2, "cmdAdjustBalance", {152, 368, 129, 41}, {152, 552, 129, 41});
    row(2, "cmdCancelNewBP", {279, 368, 129, 41}, {519, 552, 129, 41});
    row(2, "cmdAddNewBP", {423, 368, 129, 41}, {663, 552, 129, 41});
    row(2, "lblTop(2)", {0, 0, 560, 25}, {0, 0, 800, 25});
    row(3, "staPrinting", {360, 64, 193, 17}, {600, 64, 193, 17});
    row(3, "tvwInvoiceRecords(1)", {8, 88, 545, 273}, {8, 88, 785, 457});
    row(3, "cmdPrintSelectedInvoices", {279, 368, 129, 41}, {519, 552, 129, 41});
    row(3, "cmdPrintSelectedEnvelopes", {423, 368, 129, 41}, {663, 552, 129, 41});
    row(3, "lblRightClickForNote", {8, 376, 147, 30}, {8, 560, 147, 30});
    row(4, "fraPrintPreview", {296, 40, 241, 361}, {416, 40, 241, 361});
    row(4, "fraInvoiceTitle", {16, 40, 249, 105}, {16, 40, 249, 105});
    row(5, "lblVersionNumber", {327, 32, 217, 17}, {567, 32, 217, 17});
    row(5, "lblCheckForNewVersion", {327, 44, 217, 17}, {567, 44, 217, 17});
    row(5, "fraDocumentation", {327, 344, 217, 63}, {567, 528, 217, 63});
    row(5, "txtChangePath", {16, 56, 217, 19}, {16, 56, 217, 19});
    row(6, "txtCompanyDetails(0)", {8, 56, 264, 21}, {8, 56, 384, 21});
    row(6, "txtCompanyDetails(4)", {8, 224, 264, 21}, {8, 224, 384, 21});
    row(6, "txtCompanyDetails(5)", {288, 56, 264, 21}, {408, 56, 384, 21});
    row(6, "txtCompanyDetails(8)", {288, 224, 264, 21}, {408, 224, 384, 21});
    row(6, "lblCompanySlogan", {288, 40, 159, 14}, {408, 40, 159, 14});
    row(6, "lblMakePayableTo", {288, 152, 185, 14}, {408, 152, 185, 14});
    row(6, "lblCompanyName", {8, 40, 159, 14}, {8, 40, 159, 14});
    row(6, "lblLeaveOptionalEntriesBlank", {0, 384, 560, 14}, {0, 568, 800, 14});
    row(6, "lblSaveDatabaseToUpdate", {0, 396, 560, 14}, {0, 580, 800, 14});
}

void TestArrange::followsTheWindow()
{
    QFETCH(int, panel);
    QFETCH(QString, name);
    QFETCH(QRect, small);
    QFETCH(QRect, large);
    Panel p(panel, ctx);
    p.arrange(8400, 6240, 4200);
    QCOMPARE(p.controlWidget(name)->geometry(), small);
    QCOMPARE(p.size(), QSize(560, 416));
    QVERIFY(p.isHidden());  // laid out while hidden
    p.arrange(12000, 9000, 6000);
    QCOMPARE(p.controlWidget(name)->geometry(), large);
    QCOMPARE(p.size(), QSize(800, 600));
    if (name == QLatin1String("staPrinting"))  // the label may be wider than designed
        QCOMPARE(p.controlWidget(QStringLiteral("lblPrinting"))->pos(), QPoint(600, 48));
    // Back at the smallest size nothing has drifted.
    p.arrange(8400, 6240, 4200);
    QCOMPARE(p.controlWidget(name)->geometry(), small);
}

void TestArrange::billPeriodTreeSharesWidthWithProducts()
{
    Panel p(2, ctx);
    auto *products = p.control<QTreeWidget>(QStringLiteral("lvwProducts(1)"));
    QVERIFY(products->isHidden());

    p.arrange(12000, 9000, 6000);
    QCOMPARE(place(p, "tvwInvoiceRecords(0)"), QRect(8, 104, 784, 440));
    QCOMPARE(products->columnWidth(0), 772);  // 11760 - 180 twips

    // Shown (the panel itself still hidden): the two split at the middle.
    products->setVisible(true);
    p.arrange(12000, 9000, 6000);
    QCOMPARE(place(p, "tvwInvoiceRecords(0)"), QRect(8, 104, 384, 440));
    QCOMPARE(place(p, "lblDoubleClickToAdd"), QRect(408, 88, 257, 14));
    QCOMPARE(place(p, "lvwProducts(1)"), QRect(408, 104, 384, 440));
    QCOMPARE(products->columnWidth(0), 372);  // 5760 - 180

    Panel p1(1, ctx);
    p1.arrange(12000, 9000, 6000);
    QCOMPARE(p1.control<QTreeWidget>(QStringLiteral("lvwProducts(0)"))->columnWidth(0), 780);  // W - 300
}

void TestArrange::optionsFollowChangedStateAndExpertMode()
{
    Panel p(5, ctx);
    QWidget *save = p.controlWidget(QStringLiteral("cmdChangePath(2)"));
    QWidget *quickest = p.controlWidget(QStringLiteral("lblQuickestWay"));
    auto *expert = p.control<QCheckBox>(QStringLiteral("chkExpertMode"));
    expert->setChecked(false);

    ctx.changed = false;
    p.arrange(8400, 6240, 4200);
    QVERIFY(save->isHidden());
    QVERIFY(quickest->isHidden());

    // A change alone does nothing until the panel is arranged again.
    ctx.changed = true;
    QVERIFY(save->isHidden());
    p.arrange(8400, 6240, 4200);
    QVERIFY(!save->isHidden());
    QVERIFY(!quickest->isHidden());

    expert->setChecked(true);
    p.arrange(8400, 6240, 4200);
    QVERIFY(!save->isHidden());
    QVERIFY(quickest->isHidden());

    ctx.changed = false;
    expert->setChecked(false);
    p.arrange(8400, 6240, 4200);
    QVERIFY(save->isHidden());
    QVERIFY(quickest->isHidden());
}

void TestArrange::expertModeHints()
{
    Panel p2(2, ctx), p3(3, ctx), p5(5, ctx), p6(6, ctx);
    auto all = [&](bool expert) {
        for (Panel *p : {&p2, &p3, &p5, &p6})
            p->applyExpertMode(expert);
    };
    QWidget *hints[] = {p3.controlWidget(QStringLiteral("lblRightClickForNote")),
                        p5.controlWidget(QStringLiteral("lblExpertMode2")),
                        p6.controlWidget(QStringLiteral("lblLeaveOptionalEntriesBlank")),
                        p6.controlWidget(QStringLiteral("lblSaveDatabaseToUpdate"))};
    QWidget *quickest = p5.controlWidget(QStringLiteral("lblQuickestWay"));
    QWidget *mode1 = p5.controlWidget(QStringLiteral("lblExpertMode1"));
    auto *dbl = p2.control<QLabel>(QStringLiteral("lblDoubleClickToAdd"));
    const QPalette app = QApplication::palette();

    ctx.changed = false;
    all(true);
    for (QWidget *h : hints)
        QVERIFY2(h->isHidden(), qPrintable(h->objectName()));
    QVERIFY(quickest->isHidden());
    QCOMPARE(mode1->y(), 237);  // 3555 twips
    QCOMPARE(dbl->text(), QStringLiteral("List of Products and Services:"));
    QCOMPARE(roster::backColour(dbl), app.color(QPalette::Active, QPalette::Button));
    QVERIFY(dbl->isHidden());  // its visibility belongs to the bill period logic

    // Hints back; with nothing changed the quickest-way hint stays as it was.
    all(false);
    for (QWidget *h : hints)
        QVERIFY2(!h->isHidden(), qPrintable(h->objectName()));
    QVERIFY(quickest->isHidden());
    QCOMPARE(mode1->y(), 230);  // 3450 twips
    QCOMPARE(dbl->text(), QStringLiteral("  Double-click to Bill *Marked Customers:  "));
    QCOMPARE(roster::backColour(dbl), app.color(QPalette::Active, QPalette::ToolTipBase));

    ctx.changed = true;
    all(false);
    QVERIFY(!quickest->isHidden());
    all(true);
    QVERIFY(quickest->isHidden());
}

void TestArrange::optionsPanelStoresBoxes()
{
    OptionsPanel p(ctx);
    QCOMPARE(p.control<QLabel>(QStringLiteral("lblVersionNumber"))->text(), QStringLiteral("3.19"));
    auto *expert = p.control<QCheckBox>(QStringLiteral("chkExpertMode"));
    auto *confirm = p.control<QCheckBox>(QStringLiteral("chkCheckToConfirmEdits"));
    QSignalSpy expertSpy(&p, &OptionsPanel::expertModeClicked);

    // A store where the program never ran: confirm on, expert off. Only the
    // box that changed writes back.
    p.applySettings();
    QVERIFY(confirm->isChecked());
    QVERIFY(!expert->isChecked());
    QCOMPARE(stored("Settings", "ExpertMode"), QStringLiteral("False"));
    QCOMPARE(stored("Settings", "CheckToConfirmEdits"), QStringLiteral("<absent>"));
    QCOMPARE(expertSpy.count(), 1);
    QCOMPARE(expertSpy.last().at(0).toBool(), false);
    QCOMPARE(p.control<QLineEdit>(QStringLiteral("txtChangePath"))->text(), settings::databasePath());
    QVERIFY(!p.expertMode());

    expert->click();
    QCOMPARE(stored("Settings", "ExpertMode"), QStringLiteral("True"));
    QCOMPARE(expertSpy.count(), 2);
    QCOMPARE(expertSpy.last().at(0).toBool(), true);
    confirm->click();
    QCOMPARE(stored("Settings", "CheckToConfirmEdits"), QStringLiteral("False"));
    QVERIFY(!p.checkToConfirmEdits());
    QVERIFY(!ctx.changed);  // options are no change to the database

    // "true" in any case switches expert mode on; "false" turns confirm off.
    expert->setChecked(false);  // (this stores "False" at once)
    settings::write(QStringLiteral("Settings"), QStringLiteral("ExpertMode"), QStringLiteral("tRUe"));
    settings::write(QStringLiteral("Settings"), QStringLiteral("CheckToConfirmEdits"), QStringLiteral("true"));
    settings::write(QStringLiteral("FileHandling"), QStringLiteral("DatabasePath"), QStringLiteral("/tmp/x/Books.xml"));
    p.applySettings();
    QVERIFY(expert->isChecked());
    QVERIFY(confirm->isChecked());
    QCOMPARE(stored("Settings", "ExpertMode"), QStringLiteral("True"));  // written back by the box
    QCOMPARE(p.control<QLineEdit>(QStringLiteral("txtChangePath"))->text(), QStringLiteral("/tmp/x/Books.xml"));

    auto *helpButton = p.control<HoverCommand>(QStringLiteral("cmdOpenHelp"));
    QVERIFY(helpButton);
    QCOMPARE(helpButton->styleBits(), 16);
    QCOMPARE(helpButton->borderOffset(), 0);
    QCOMPARE(helpButton->caption(), QString());
    QCOMPARE(helpButton->picture().size(), QSize(48, 48));
    QCOMPARE(helpButton->hovPicture().size(), QSize(48, 48));
    QVERIFY(helpButton->picture() != helpButton->hovPicture());
    QSignalSpy help(&p, &OptionsPanel::helpRequested);
    p.control<QAbstractButton>(QStringLiteral("cmdOpenHelp"))->click();
    QCOMPARE(help.count(), 1);
    QSignalSpy version(&p, &OptionsPanel::checkForNewVersionRequested);
    QTest::mouseClick(p.controlWidget(QStringLiteral("lblCheckForNewVersion")), Qt::LeftButton);
    QCOMPARE(version.count(), 1);
    QTest::mouseClick(p.controlWidget(QStringLiteral("lblVersionNumber")), Qt::LeftButton);
    QCOMPARE(version.count(), 1);
}

void TestArrange::companyFieldsAreData()
{
    CompanyInfoPanel p(ctx);
    auto *name = p.control<QLineEdit>(QStringLiteral("txtCompanyDetails(0)"));
    auto *address3 = p.control<QLineEdit>(QStringLiteral("txtCompanyDetails(3)"));

    // Filling from the database is no change.
    for (int i = 0; i < CompanyFieldCount; ++i)
        ctx.database.company[size_t(i)] = QStringLiteral("value %1").arg(i);
    p.readCompanyInfo();
    QVERIFY(!ctx.changed);
    QCOMPARE(ctx.changeCalls, 0);
    QVERIFY(!p.isReadingCompanyInfo());
    for (int i = 0; i < CompanyFieldCount; ++i)
        QCOMPARE(p.field(i), QStringLiteral("value %1").arg(i));

    // An edit goes into the database and counts as a change.
    QTest::keyClicks(address3, "X");
    QCOMPARE(ctx.database.company[3], QStringLiteral("value 3X"));
    QVERIFY(ctx.changed);
    name->setText(QStringLiteral("Acme & Sons"));
    QCOMPARE(ctx.database.company[0], QStringLiteral("Acme & Sons"));

    // Clearing before a read counts as a change where a field had text
    // (the closing text of a fresh window), and not where all were empty.
    CompanyInfoPanel fresh(ctx);
    QCOMPARE(fresh.field(8), QStringLiteral("THANK YOU FOR YOUR BUSINESS!"));
    ctx.changed = false;
    ctx.database.company[8] = QStringLiteral("stale");
    fresh.clearCompanyInfo();
    QVERIFY(ctx.changed);
    QCOMPARE(ctx.database.company[8], QString());
    for (int i = 0; i < CompanyFieldCount; ++i)
        QCOMPARE(fresh.field(i), QString());
    ctx.changed = false;
    fresh.clearCompanyInfo();
    QVERIFY(!ctx.changed);
}

void TestArrange::billPeriodChoosers()
{
    BillPeriodPanel bills(ctx);
    PrintingPanel printing(ctx);
    QComboBox *one = bills.chooser();
    QComboBox *two = printing.chooser();
    QVERIFY(one && two);
    QCOMPARE(two->objectName(), QStringLiteral("cmbBillPeriod(2)"));
    QSignalSpy oneChanged(one, &QComboBox::currentIndexChanged);
    QSignalSpy twoChanged(two, &QComboBox::currentIndexChanged);

    // An empty table leaves everything empty.
    bills.tree()->addTopLevelItem(new QTreeWidgetItem(QStringList{QStringLiteral("old")}));
    bills.control<QLineEdit>(QStringLiteral("txtBillPeriod"))->setText(QStringLiteral("typed"));
    bills.refreshBillPeriodList();
    printing.refreshBillPeriodList();
    QCOMPARE(one->count(), 0);
    QCOMPARE(two->count(), 0);
    QCOMPARE(bills.tree()->topLevelItemCount(), 0);
    QCOMPARE(bills.control<QLineEdit>(QStringLiteral("txtBillPeriod"))->text(), QString());
    QCOMPARE(oneChanged.count(), 0);

    // Rows in table order; a row without exactly three separators is left out.
    KeyedList &periods = ctx.database.lvwPeriods;
    periods.add(QStringLiteral("1k"), fields({"2024/01/31", "January 2024", "2024/01/01", "2024/02/15"}));
    periods.add(QStringLiteral("2k"), fields({"2024/02/29", "February 2024", "2024/02/01", "2024/03/15"}));
    periods.add(QStringLiteral("3k"), fields({"2024/02/30", "broken", "2024/02/01"}));
    periods.add(QStringLiteral("4k"), fields({"2024/03/31", "March 2024", "2024/03/01", "2024/04/15"}));
    QCOMPARE(BillPeriodPanel::periodNames(periods),
             QStringList({"January 2024", "February 2024", "March 2024"}));

    bills.refreshBillPeriodList();
    printing.refreshBillPeriodList();
    QCOMPARE(one->count(), 3);
    QCOMPARE(one->itemText(0), QStringLiteral("January 2024"));
    QCOMPARE(one->itemText(2), QStringLiteral("March 2024"));
    // The latest is selected, and that is one change of the chooser.
    QCOMPARE(one->currentIndex(), 2);
    QCOMPARE(oneChanged.count(), 1);
    QCOMPARE(oneChanged.last().at(0).toInt(), 2);
    // The second chooser lists the same, with nothing selected.
    QCOMPARE(two->count(), 3);
    QCOMPARE(two->itemText(1), QStringLiteral("February 2024"));
    QCOMPARE(two->currentIndex(), -1);
    QCOMPARE(twoChanged.count(), 0);

    // A refresh starts from nothing: no entries pile up.
    bills.refreshBillPeriodList();
    QCOMPARE(one->count(), 3);
    QCOMPARE(one->currentIndex(), 2);
}

void TestArrange::billPeriodEntryFields()
{
    BillPeriodPanel p(ctx);
    const QPalette app = QApplication::palette();
    const QColor window = app.color(QPalette::Active, QPalette::Base);
    const QColor info = app.color(QPalette::Active, QPalette::ToolTipBase);
    QLineEdit *f[4] = {nullptr, p.control<QLineEdit>(QStringLiteral("txtPField(1)")),
                       p.control<QLineEdit>(QStringLiteral("txtPField(2)")),
                       p.control<QLineEdit>(QStringLiteral("txtPField(3)"))};
    for (int i = 1; i <= 3; ++i)
        f[i]->setText(QStringLiteral("2024/0%1/01").arg(i));
    p.tree()->addTopLevelItem(new QTreeWidgetItem(QStringList{QStringLiteral("Smith, Ann")}));
    p.control<QLineEdit>(QStringLiteral("txtBillPeriod"))->setText(QStringLiteral("old"));

    p.clearEntryFields(1);
    for (int i = 1; i <= 3; ++i) {
        QCOMPARE(f[i]->text(), QString());
        QVERIFY(!f[i]->isReadOnly());
    }
    QCOMPARE(roster::backColour(f[1]), window);
    QCOMPARE(roster::backColour(f[2]), window);
    QCOMPARE(roster::backColour(f[3]), info);
    QCOMPARE(p.tree()->topLevelItemCount(), 0);
    QCOMPARE(p.control<QLineEdit>(QStringLiteral("txtBillPeriod"))->text(), QString());

    // Kind 2 locks the fields and keeps what they show.
    f[3]->setText(QStringLiteral("2024/04/15"));
    p.clearEntryFields(2);
    for (int i = 1; i <= 3; ++i) {
        QVERIFY(f[i]->isReadOnly());
        QCOMPARE(roster::backColour(f[i]), window);
    }
    QCOMPARE(f[3]->text(), QStringLiteral("2024/04/15"));

    // Other kinds do nothing.
    p.clearEntryFields(0);
    p.clearEntryFields(3);
    QVERIFY(f[1]->isReadOnly());
    QCOMPARE(f[3]->text(), QStringLiteral("2024/04/15"));
}

void TestArrange::billPeriodProductList()
{
    BillPeriodPanel p(ctx);
    QTreeWidget *list = p.productList();
    p.refreshProductList();
    QCOMPARE(list->topLevelItemCount(), 0);
    QVERIFY(!list->currentItem());

    KeyedList &items = ctx.database.lvwPAndS;
    items.add(QStringLiteral("1k"), QStringLiteral("000000012.50") + fields({"$12.50 - Mowing", "Mowing", "12.50"}));
    items.add(QStringLiteral("2k"), QStringLiteral("000000003.00") + ArchiveMark + QStringLiteral("$3.00 - Old"));
    items.add(QStringLiteral("3k"), QStringLiteral("000000001.00") + QStringLiteral("$1.00 - Stamp"));
    p.refreshProductList();
    QCOMPARE(list->topLevelItemCount(), 2);
    QCOMPARE(list->topLevelItem(0)->text(0), QStringLiteral("$1.00 - Stamp"));
    QCOMPARE(list->topLevelItem(0)->data(0, Qt::UserRole).toString(), QStringLiteral("3k"));
    QCOMPARE(list->topLevelItem(1)->text(0), fields({"$12.50 - Mowing", "Mowing", "12.50"}));
    QCOMPARE(list->topLevelItem(1)->data(0, Qt::UserRole).toString(), QStringLiteral("1k"));
    QCOMPARE(list->currentItem(), list->topLevelItem(0));

    // Rebuilt from nothing.
    items.remove(QStringLiteral("3k"));
    p.refreshProductList();
    QCOMPARE(list->topLevelItemCount(), 1);
    QCOMPARE(list->topLevelItem(0)->data(0, Qt::UserRole).toString(), QStringLiteral("1k"));
}

void TestArrange::printOptionsApplySettings()
{
    auto visibleOf = [](const Panel &p, const char *set) {
        QList<int> shown;
        for (int i = 0; i < 3; ++i)
            if (!p.controlWidget(QStringLiteral("%1(%2)").arg(QLatin1String(set)).arg(i))->isHidden())
                shown << i;
        return shown;
    };
    {
        // Never ran: "Invoice" in the large size, twelve lines kept, the
        // rest off; the title option and size are written back.
        PrintOptionsPanel p(ctx);
        p.applySettings();
        QVERIFY(p.control<QRadioButton>(QStringLiteral("optInvoiceTitle(0)"))->isChecked());
        QVERIFY(p.control<QRadioButton>(QStringLiteral("optInvoiceTitleSize(2)"))->isChecked());
        QCOMPARE(stored("Settings", "InvoiceTitleOption"), QStringLiteral("0"));
        QCOMPARE(stored("Settings", "InvoiceTitleSize"), QStringLiteral("2"));
        QVERIFY(p.control<QCheckBox>(QStringLiteral("chkKeepTwelveLines"))->isChecked());
        QVERIFY(!p.control<QCheckBox>(QStringLiteral("chkMoveAccordingly"))->isChecked());
        QVERIFY(!p.control<QCheckBox>(QStringLiteral("chkMoveAccordingly"))->isEnabled());
        QVERIFY(!p.control<QCheckBox>(QStringLiteral("chkAddInvoiceDateToInvoice"))->isChecked());
        QVERIFY(!p.control<QCheckBox>(QStringLiteral("chkPrintDuplicateInvoices"))->isChecked());
        // Set under the guard: nothing written for the twelve-line pair.
        QCOMPARE(stored("Printing", "KeepTwelveLines"), QStringLiteral("<absent>"));
        QCOMPARE(visibleOf(p, "picPrintPreviewBottom"), QList<int>{0});
        QCOMPARE(visibleOf(p, "picPrintPreviewTop"), QList<int>{0});
        QCOMPARE(p.printPreviewSelected(), 0.0f);
        QVERIFY(!p.controlWidget(QStringLiteral("cmdPrintPreviewBack"))->isEnabled());
        QVERIFY(p.controlWidget(QStringLiteral("cmdPrintPreviewForward"))->isEnabled());
        QVERIFY(!p.isApplyingSettings());
    }
    settings::putStoredSetting(QStringLiteral("InvoiceTitleOption"), QStringLiteral("1"));
    settings::putStoredSetting(QStringLiteral("InvoiceTitleText"), QStringLiteral("Statement OF Account"));
    settings::putStoredSetting(QStringLiteral("InvoiceTitleSize"), QStringLiteral("0"));
    settings::write(QStringLiteral("Printing"), QStringLiteral("KeepTwelveLines"), QStringLiteral("false"));
    settings::write(QStringLiteral("Printing"), QStringLiteral("MoveBottomTextAccordingly"), QStringLiteral("TRUE"));
    settings::write(QStringLiteral("Printing"), QStringLiteral("PrintDuplicateInvoices"), QStringLiteral("True"));
    settings::write(QStringLiteral("Printing"), QStringLiteral("PrintPreviewSelected"), QStringLiteral("2"));
    PrintOptionsPanel p(ctx);
    p.applySettings();
    QVERIFY(p.control<QRadioButton>(QStringLiteral("optInvoiceTitle(1)"))->isChecked());
    QVERIFY(!p.control<QRadioButton>(QStringLiteral("optInvoiceTitle(0)"))->isChecked());
    QCOMPARE(p.control<QLineEdit>(QStringLiteral("txtInvoiceTitle"))->text(), QStringLiteral("Statement OF Account"));
    QVERIFY(p.control<QRadioButton>(QStringLiteral("optInvoiceTitleSize(0)"))->isChecked());
    QVERIFY(p.control<QCheckBox>(QStringLiteral("chkPrintDuplicateInvoices"))->isChecked());
    QVERIFY(!p.control<QCheckBox>(QStringLiteral("chkKeepTwelveLines"))->isChecked());
    QVERIFY(p.control<QCheckBox>(QStringLiteral("chkMoveAccordingly"))->isChecked());
    QVERIFY(p.control<QCheckBox>(QStringLiteral("chkMoveAccordingly"))->isEnabled());
    // The guard kept the handlers from rewriting what was read.
    QCOMPARE(stored("Printing", "KeepTwelveLines"), QStringLiteral("false"));
    QCOMPARE(stored("Printing", "MoveBottomTextAccordingly"), QStringLiteral("TRUE"));
    QCOMPARE(visibleOf(p, "picPrintPreviewBottom"), QList<int>{2});
    QCOMPARE(visibleOf(p, "picPrintPreviewTop"), QList<int>{2});
    QVERIFY(p.controlWidget(QStringLiteral("cmdPrintPreviewBack"))->isEnabled());
    QVERIFY(!p.controlWidget(QStringLiteral("cmdPrintPreviewForward"))->isEnabled());
    QVERIFY(!ctx.changed);
}

void TestArrange::printOptionHandlers()
{
    PrintOptionsPanel p(ctx);
    p.applySettings();
    auto box = [&p](const char *name) { return p.control<QCheckBox>(QString::fromLatin1(name)); };
    auto bottom = [&p] {
        QList<int> shown;
        for (int i = 0; i < 3; ++i)
            if (!p.controlWidget(QStringLiteral("picPrintPreviewBottom(%1)").arg(i))->isHidden())
                shown << i;
        return shown;
    };

    p.control<QRadioButton>(QStringLiteral("optInvoiceTitle(2)"))->click();
    QCOMPARE(stored("Settings", "InvoiceTitleOption"), QStringLiteral("2"));
    p.control<QRadioButton>(QStringLiteral("optInvoiceTitleSize(1)"))->click();
    QCOMPARE(stored("Settings", "InvoiceTitleSize"), QStringLiteral("1"));
    QTest::keyClicks(p.control<QLineEdit>(QStringLiteral("txtInvoiceTitle")), "Bill");
    QCOMPARE(stored("Settings", "InvoiceTitleText"), QStringLiteral("Bill"));
    box("chkAddInvoiceDateToInvoice")->click();
    QCOMPARE(stored("Printing", "AddInvoiceDateToInvoice"), QStringLiteral("True"));
    box("chkPrintDuplicateInvoices")->click();
    box("chkPrintDuplicateInvoices")->click();
    QCOMPARE(stored("Printing", "PrintDuplicateInvoices"), QStringLiteral("False"));

    // Twelve lines off: the move box comes free, the short sample shows.
    box("chkKeepTwelveLines")->click();
    QCOMPARE(stored("Printing", "KeepTwelveLines"), QStringLiteral("False"));
    QVERIFY(box("chkMoveAccordingly")->isEnabled());
    QCOMPARE(bottom(), QList<int>{1});
    box("chkMoveAccordingly")->click();
    QCOMPARE(stored("Printing", "MoveBottomTextAccordingly"), QStringLiteral("True"));
    QCOMPARE(bottom(), QList<int>{2});

    // Twelve lines on again: the move box keeps its tick but is disabled.
    box("chkKeepTwelveLines")->click();
    QCOMPARE(stored("Printing", "KeepTwelveLines"), QStringLiteral("True"));
    QVERIFY(box("chkMoveAccordingly")->isChecked());
    QVERIFY(!box("chkMoveAccordingly")->isEnabled());
    QCOMPARE(bottom(), QList<int>{0});
    box("chkKeepTwelveLines")->click();
    QCOMPARE(bottom(), QList<int>{2});
    box("chkMoveAccordingly")->click();
    QCOMPARE(stored("Printing", "MoveBottomTextAccordingly"), QStringLiteral("False"));
    QCOMPARE(bottom(), QList<int>{1});
    QVERIFY(!ctx.changed);
}

QTEST_MAIN(TestArrange)
#include "tst_arrange.moc"
