// SPDX-License-Identifier: GPL-3.0-or-later
// The seven panels: what the roster builds (every row once at its place, start
// states, captions, fonts, tab order, accessible names), how the panels follow
// the window's size and expert mode, and what the panels built on the base do.
#include "billing/invoicetree.h"
#include "billing/invoicetrees.h"
#include "billperiods/billperiodpanel.h"
#include "database/database.h"
#include "database/rowtypes.h"
#include "pages/preview.h"
#include "printing/printingpanel.h"
#include "printing/printoptionspanel.h"
#include "settings/settingsstore.h"
#include "shell/appcontext.h"
#include "shell/companyinfopanel.h"
#include "shell/optionspanel.h"
#include "shell/roster.h"
#include "tablesedit.h"
#include "uiservices/frmchecking.h"
#include "uiservices/twips.h"

#include <QAccessible>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFontInfo>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProcess>
#include <QPushButton>
#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTreeWidget>
#include <QtTest>

using namespace qor;
using namespace Qt::StringLiterals;

namespace {
struct FakeContext : AppContext {
    FakeContext()
    {
        QObject::connect(&database, &Database::changedStateChanged, [this] { ++changeCalls; });
    }
    Database &db() override { return database; }
    QWidget *mainWindow() override { return nullptr; }
    FrmChecking &showCheckingWindow() override { return *checking.show(); }
    Database database;
    InvoiceTrees trees{database};
    CheckingWindowSlot checking{nullptr};
    int changeCalls = 0;  // changes of the changed state
};
// A panel whose code asks for a control the roster does not give it.
struct NeedsMissingControl : Panel {
    NeedsMissingControl(AppContext &c, const char *name, bool asLabel) : Panel(0, c)
    {
        if (asLabel) require<QLabel>(name);
        else require(name);
    }
};
QString stored(const settings::Key &key) { return key.stored().isNull() ? u"<absent>"_s : key.stored(); }
QRect place(const Panel &p, const QString &name) { return p.controlWidget(name)->geometry(); }
QList<int> shownOf(const Panel &p, const QString &set)  // which of set(0)..set(2) show
{
    QList<int> shown;
    for (int i = 0; i < 3; ++i)
        if (!p.controlWidget(u"%1(%2)"_s.arg(set).arg(i))->isHidden())
            shown << i;
    return shown;
}
}  // namespace

class TestPanels : public QObject {
    Q_OBJECT
    QTemporaryDir configHome;
    FakeContext ctx;
    const QPalette app = QApplication::palette();
    QWidget window;  // the seven base panels as built, never arranged
    QList<Panel *> panels;

    QWidget *find(const QString &name) const { return window.findChild<QWidget *>(name); }
    template <class T>
    T *get(const QString &name) const { return window.findChild<T *>(name); }

private slots:
    void initTestCase()
    {
        qputenv("XDG_CONFIG_HOME", configHome.path().toLocal8Bit());
        QVERIFY(configHome.isValid() && settings::storePath().startsWith(configHome.path()));
        QCOMPARE(twipsPerPixel(), 15.0);  // the pixels below are twips at 15 a pixel
        for (int i = 0; i < 7; ++i)
            panels << new Panel(i, ctx, &window);
    }
    void init()
    {
        QSettings(settings::storePath(), QSettings::IniFormat).clear();
        ctx.database.setChanged(false);
        ctx.changeCalls = 0;
        ctx.database.clear();
    }

    // A control name the roster lacks, or a control of another type, stops
    // the program as the panel is made (here in a child process).
    void missingControlStopsTheProgram()
    {
        if (const QByteArray which = qgetenv("QOR_NEEDS_CONTROL"); !which.isEmpty()) {
            NeedsMissingControl p(ctx, which.constData(), qEnvironmentVariableIsSet("QOR_AS_LABEL"));
            return;  // reached only when nothing stopped it
        }
        // clang-format off: (name, asked for as a label, stops)
        const std::tuple<const char *, bool, bool> cases[] = {
            {"lblNoSuchControl", false, true}, {"txtField(0)", true, true}, {"lblCustomers", true, false}};
        // clang-format on
        for (auto [name, asLabel, stops] : cases) {
            QProcess child;
            QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
            env.insert(u"QOR_NEEDS_CONTROL"_s, QString::fromLatin1(name));
            if (asLabel) env.insert(u"QOR_AS_LABEL"_s, u"1"_s);
            child.setProcessEnvironment(env);
            child.start(QCoreApplication::applicationFilePath(), {u"missingControlStopsTheProgram"_s});
            QVERIFY(child.waitForFinished(60000));
            const QString out = QString::fromLocal8Bit(child.readAllStandardError() + child.readAllStandardOutput());
            const bool stopped = child.exitStatus() == QProcess::CrashExit || child.exitCode() != 0;
            QVERIFY2(stopped == stops && (!stops || out.contains(QString::fromLatin1(name))),
                     qPrintable(QString::fromLatin1(name) + u": "_s + out));
        }
    }

    void everyRowBuiltOnceAsDesigned()
    {
        QSet<QString> names;
        for (Panel *p : panels) {
            QCOMPARE(p->objectName(), u"fraMain(%1)"_s.arg(p->index()));
            QVERIFY(p->isHidden() && p->size() == QSize(560, 416) && p->palette().color(QPalette::Window) == Qt::white);
            qsizetype built = 0;
            for (QWidget *w : p->findChildren<QWidget *>()) {
                if (roster::tabIndexOf(w) < 0)
                    continue;  // a part of a compound widget
                ++built;
                const QString name = w->objectName();
                const roster::Entry *e = roster::find(name);
                QVERIFY2(e && e->panel == p->index() && p->controlWidget(name) == w, qPrintable(name));
                names.insert(name);  // a name used twice leaves the set short
                QCOMPARE(w->parentWidget()->objectName(), e->parent ? e->parent : p->objectName());
                const QRect r = w->geometry(), design(twipsToPx(e->left), twipsToPx(e->top), twipsToPx(e->width),
                                                      twipsToPx(e->height));
                auto *l = qobject_cast<QLabel *>(w);
                if (e->kind != roster::Kind::Label || l->wordWrap()) {
                    QCOMPARE(r, design);
                } else {  // a one-line label shows its whole caption, widening from the side it is aligned to
                    QVERIFY2(r.width() >= design.width() && l->fontMetrics().horizontalAdvance(l->text()) <= r.width(),
                             e->name);
                    QCOMPARE(QPair(r.top(), r.height()), QPair(design.top(), design.height()));
                    const Qt::Alignment h = l->alignment() & Qt::AlignHorizontal_Mask;
                    QVERIFY2(h == Qt::AlignRight  ? r.right() == design.right()
                             : h == Qt::AlignLeft ? r.left() == design.left()
                                                  : qAbs(r.center().x() - design.center().x()) <= 1,
                             e->name);
                }
                QVERIFY2(w->isHidden() == bool(e->flags & roster::Hidden), e->name);
                // The kind's widget class, start state and caption as the row gives them.
                static const char *const classes[] = {"QLineEdit", "QTreeWidget", "QTreeView", "QComboBox", "QLabel",
                                                      "QPushButton", "qor::HoverCommand", "QCheckBox", "QRadioButton",
                                                      "QGroupBox", "QLabel", "QProgressBar"};
                QVERIFY2(w->inherits(e->flags & roster::MultiLine ? "QPlainTextEdit" : classes[int(e->kind)]), e->name);
                if (auto *t = qobject_cast<QLineEdit *>(w))
                    QVERIFY2(t->isReadOnly() == bool(e->flags & roster::ReadOnly) &&
                                 t->maxLength() == (e->maxLength ? e->maxLength : 32767),
                             e->name);
                if (auto *b = qobject_cast<QAbstractButton *>(w)) {
                    QVERIFY2(b->isChecked() == bool(e->flags & roster::Checked), e->name);
                    if (e->kind != roster::Kind::HoverCommand) QCOMPARE(b->text(), QString::fromUtf8(e->caption));
                }
                if (e->kind == roster::Kind::Label) QCOMPARE(l->text(), roster::shownCaption(QString::fromUtf8(e->caption)));
                // Spoken names carry no hot-key marks; the face drawn is the design font or its metric stand-in.
                const QString spoken = QAccessible::queryAccessibleInterface(w)->text(QAccessible::Name);
                QVERIFY2(!spoken.trimmed().isEmpty() && !spoken.contains(u"&&"), e->name);
                const QString drawn = QFontInfo(w->font()).family();
                QVERIFY2(drawn == w->font().family() || drawn == u"Liberation Sans", e->name);
            }
            QCOMPARE(built, roster::entriesOf(p->index()).size());
        }
        QCOMPARE(qsizetype(roster::entries().size()), names.size());
        QVERIFY(roster::entriesOf(7).isEmpty() && roster::entriesOf(-1).isEmpty());
        auto *list = get<QTreeWidget>("lvwCustomersVis");  // lists have one column, no heading
        QVERIFY(list->columnCount() == 1 && list->isHeaderHidden() && !list->rootIsDecorated());
        QVERIFY(get<QLabel>("lblQuickestWay")->wordWrap() && !get<QLabel>("lblCustomers")->wordWrap());
    }

    void captionsAndFonts()
    {
        // Labels show "&&" as "&" and drop hot-key marks; buttons keep them for the toolkit.
        for (auto [raw, shown] : {std::pair{"Sv&As", "SvAs"}, {"a && b", "a & b"}, {"&&&x", "&x"}, {"end&", "end"}})
            QCOMPARE(roster::shownCaption(QString::fromLatin1(raw)), QString::fromLatin1(shown));

        // One control for each rule and exception of the fonts.
        auto describe = [](const QFont &f) {
            return u"%1 %2%3%4%5"_s.arg(f.family()).arg(f.pointSizeF()).arg(f.bold() ? " b" : "", f.italic() ? " i" : "", f.underline() ? " u" : "");
        };
        const char *const fonts[][2] = {
            {"cmdAddNew", "Tahoma 9.75 b"}, {"cmbBillPeriod(2)", "Tahoma 9 b"}, {"lblCustomers", "Tahoma 9 b"}, {"lblFirstName", "Tahoma 9.75 b"}, {"lblExample", "Tahoma 9 i"}, {"lblTop(0)", "Arial 14.25 b"}, {"chkAddInvoiceDateToInvoice", "Arial 8.25 b"}, {"lblCompanyName", "Arial 8.25 b"}, {"Label11", "Arial 12 b"}, {"lblCheckForNewVersion", "Tahoma 9 b u"}, {"cmdPrintPreviewBack", "Arial 18 b"}};
        for (const auto &f : fonts)
            QCOMPARE(describe(find(f[0])->font()), QString::fromLatin1(f[1]));
    }

    void startStatesAndColours()
    {
        auto *notes = get<QPlainTextEdit>("txtField(7)");
        QVERIFY(notes->verticalScrollBarPolicy() == Qt::ScrollBarAlwaysOn && notes->tabChangesFocus() &&
                find("lblCheckForNewVersion")->cursor().shape() == Qt::PointingHandCursor);
        // System colours resolve through the palette; a label on a colour fills its ground.
        const QColor info = app.color(QPalette::Active, QPalette::ToolTipBase);
        QVERIFY(info != app.color(QPalette::Active, QPalette::Base));  // else the checks prove nothing
        QVERIFY(roster::backColour(find("lblDoubleClickToAdd")) == info &&
                find("lblDoubleClickToAdd")->autoFillBackground());
        QCOMPARE(roster::backColour(find("txtField(0)")), app.color(QPalette::Active, QPalette::Base));
        QCOMPARE(roster::foreColour(find("lblRightClickForNote")), roster::colour(syscolor::GrayText));
        QCOMPARE(roster::foreColour(find("lblTop(6)")), QColor(0, 128, 0));
        const auto h = [this](const char *name) {
            return int(get<QLabel>(name)->alignment() & Qt::AlignHorizontal_Mask);
        };
        QCOMPARE(QList<int>({h("lblFirstName"), h("lblRightClickForNote"), h("lblExpertMode2")}),
                 QList<int>({Qt::AlignRight, Qt::AlignHCenter, Qt::AlignLeft}));
    }

    void tabOrderAndAccessibleNames()
    {
        // The chain follows the tab column across all panels, no two sharing a place, and skips what takes no focus.
        const QList<QWidget *> order = roster::chainTabOrder(&window);
        QCOMPARE(order.size(), qsizetype(roster::entries().size()));
        for (qsizetype i = 1; i < order.size(); ++i)
            QVERIFY(roster::tabIndexOf(order[i - 1]) < roster::tabIndexOf(order[i]));
        auto walk = [](QWidget *w, int count) {
            QStringList walked;
            for (int guard = 0; guard < 2000 && walked.size() < count; ++guard) {
                w = w->nextInFocusChain();
                if (roster::tabIndexOf(w) >= 0 && (w->focusPolicy() & Qt::TabFocus))
                    walked << w->objectName();
            }
            return walked;
        };
        // Tab walks through every panel, passing over frames, labels and bars (as 127 and 128 after txtInvoiceTitle).
        QStringList focusable;
        for (QWidget *w : order) {
            const bool still = w->inherits("QLabel") || w->inherits("QGroupBox") || w->inherits("QProgressBar");
            QVERIFY2(bool(w->focusPolicy() & Qt::TabFocus) != still, qPrintable(w->objectName()));
            if (!still) focusable << w->objectName();
        }
        QCOMPARE(walk(find(focusable[0]), int(focusable.size()) - 1), focusable.mid(1));

        for (auto [name, spoken] : {std::pair{"cmdPrint", "Print customer list"}, {"chkExpertMode", "Expert Mode"}, {"cmdAdjustBalance", "Log Payment & Optional Note"}, {"lblDoubleClickToAdd", "Double-click to Bill *Marked Customers:"}})
            QCOMPARE(QAccessible::queryAccessibleInterface(find(name))->text(QAccessible::Name), QString::fromLatin1(spoken));
        QCOMPARE(panels[1]->accessibleName(), u"Products & Services"_s);
    }

    void middleRoundsHalfToEven()
    {
        for (auto [w, m] : {std::pair{8400.0, 4200}, {8401.0, 4200}, {8403.0, 4202}, {8399.0, 4200}, {8402.0, 4201}, {8400.8, 4200}, {8401.2, 4201}, {200000.0, 32767}})
            QCOMPARE(Panel::middleOf(w), m);
        // cmdPrint stands at M - 600: 3908 twips (261 px) at W = 9015, 3922 (261 px) at W = 9045.
        Panel p(0, ctx);
        p.arrange(9015, 6240, Panel::middleOf(9015));
        const int x = place(p, "cmdPrint").x();
        p.arrange(9045, 7310, Panel::middleOf(9045));
        // The notes fill down to H - 4305 = 3005 twips.
        QCOMPARE(QList<int>({x, place(p, "cmdPrint").x(), place(p, "txtField(7)").height()}),
                 QList<int>({261, 261, 200}));
    }

    // Places in pixels at the smallest size (W 8400, H 6240, M 4200) and at W 12000, H 9000, M 6000.
    void followsTheWindow_data()
    {
        QTest::addColumn<int>("panel");
        QTest::addColumn<QRect>("small");
        QTest::addColumn<QRect>("large");
        auto row = [](int panel, const char *name, QRect small, QRect large) {
            QTest::newRow(name) << panel << small << large;
        };
        row(0, "lvwCustomersVis", {8, 64, 256, 344}, {8, 64, 376, 528});
        row(0, "lblPhone", {264, 201, 85, 17}, {384, 201, 85, 17});
        row(0, "txtField(4)", {360, 144, 192, 21}, {480, 144, 312, 21});
        row(0, "cmdAddNew", {423, 368, 129, 41}, {663, 552, 129, 41});
        row(0, "lblTop(0)", {0, 0, 560, 25}, {0, 0, 800, 25});
        row(1, "lvwProducts(0)", {8, 104, 545, 257}, {8, 104, 785, 441});
        row(2, "lblDoubleClickToAdd", {568, 88, 257, 14}, {808, 88, 257, 14});
        row(2, "cmdAdjustBalance", {152, 368, 129, 41}, {152, 552, 129, 41});
        row(3, "staPrinting", {360, 64, 193, 17}, {600, 64, 193, 17});
        row(3, "lblRightClickForNote", {8, 376, 147, 30}, {8, 560, 147, 30});
        row(4, "fraPrintPreview", {296, 40, 241, 361}, {416, 40, 241, 361});
        row(5, "fraDocumentation", {327, 344, 217, 63}, {567, 528, 217, 63});
        row(6, "txtCompanyDetails(8)", {288, 224, 264, 21}, {408, 224, 384, 21});
        row(6, "lblSaveDatabaseToUpdate", {0, 396, 560, 14}, {0, 580, 800, 14});
    }
    void followsTheWindow()
    {
        QFETCH(int, panel);
        QFETCH(QRect, small);
        QFETCH(QRect, large);
        const QString name = QString::fromLatin1(QTest::currentDataTag());
        Panel p(panel, ctx);
        p.arrange(8400, 6240, 4200);
        QCOMPARE(place(p, name), small);
        QVERIFY(p.size() == QSize(560, 416) && p.isHidden());  // laid out while hidden
        p.arrange(12000, 9000, 6000);
        QVERIFY(place(p, name) == large && p.size() == QSize(800, 600));
        if (name == u"staPrinting")  // its label moves with it, and may be wider than designed
            QCOMPARE(p.controlWidget(u"lblPrinting"_s)->pos(), QPoint(600, 48));
        p.arrange(8400, 6240, 4200);  // back at the smallest size nothing has drifted
        QCOMPARE(place(p, name), small);
    }

    void billPeriodTreeSharesWidthWithProducts()
    {
        Panel p(2, ctx);
        auto *products = p.control<QTreeWidget>(u"lvwProducts(1)"_s);
        p.arrange(12000, 9000, 6000);
        QCOMPARE(place(p, "tvwInvoiceRecords(0)"), QRect(8, 104, 784, 440));
        QCOMPARE(products->columnWidth(0), 772);  // 11760 - 180 twips
        products->setVisible(true);               // (the panel itself still hidden)
        p.arrange(12000, 9000, 6000);
        QCOMPARE(QList<QRect>({place(p, "tvwInvoiceRecords(0)"), place(p, "lvwProducts(1)")}),
                 QList<QRect>({QRect(8, 104, 384, 440), QRect(408, 104, 384, 440)}));
        QCOMPARE(products->columnWidth(0), 372);
        Panel p1(1, ctx);
        p1.arrange(12000, 9000, 6000);
        QCOMPARE(p1.control<QTreeWidget>(u"lvwProducts(0)"_s)->columnWidth(0), 780);  // W - 300
    }

    void hintsFollowExpertModeAndChangedState()
    {
        Panel p2(2, ctx), p3(3, ctx), p5(5, ctx), p6(6, ctx);
        auto expertMode = [&](bool on) { for (Panel *p : {&p2, &p3, &p5, &p6}) p->applyExpertMode(on); };
        const QList<QWidget *> hints = {
            p3.controlWidget(u"lblRightClickForNote"_s), p5.controlWidget(u"lblExpertMode2"_s),
            p6.controlWidget(u"lblLeaveOptionalEntriesBlank"_s), p6.controlWidget(u"lblSaveDatabaseToUpdate"_s)};
        auto hintsShown = [&] {
            return std::count_if(hints.begin(), hints.end(), [](QWidget *h) { return !h->isHidden(); });
        };
        QWidget *quickest = p5.controlWidget(u"lblQuickestWay"_s), *save = p5.controlWidget(u"cmdChangePath(2)"_s);
        auto *dbl = p2.control<QLabel>(u"lblDoubleClickToAdd"_s);

        expertMode(true);
        QVERIFY(hintsShown() == 0 && quickest->isHidden() && dbl->isHidden());  // dbl shows with the bill periods
        QCOMPARE(p5.controlWidget(u"lblExpertMode1"_s)->y(), 237);              // 3555 twips
        QCOMPARE(QPair(dbl->text(), roster::backColour(dbl)),
                 QPair(u"List of Products and Services:"_s, app.color(QPalette::Button)));
        expertMode(false);
        QVERIFY(hintsShown() == 4 && quickest->isHidden());  // nothing changed: left as it was
        QCOMPARE(p5.controlWidget(u"lblExpertMode1"_s)->y(), 230);
        QCOMPARE(QPair(dbl->text(), roster::backColour(dbl)),
                 QPair(u"  Double-click to Bill *Marked Customers:  "_s, app.color(QPalette::ToolTipBase)));
        ctx.database.setChanged(true);
        expertMode(false);
        QVERIFY(!quickest->isHidden());

        // Arranging Options follows the changed state and the box; the change alone does not.
        auto *expert = p5.control<QCheckBox>(u"chkExpertMode"_s);
        expert->setChecked(false);
        QVERIFY(save->isHidden());
        p5.arrange(8400, 6240, 4200);
        QVERIFY(!save->isHidden() && !quickest->isHidden());
        expert->setChecked(true);
        p5.arrange(8400, 6240, 4200);
        QVERIFY(!save->isHidden() && quickest->isHidden());
        ctx.database.setChanged(false);
        p5.arrange(8400, 6240, 4200);
        QVERIFY(save->isHidden());
    }

    void optionsPanelStoresBoxes()
    {
        OptionsPanel p(ctx);
        auto *expert = p.control<QCheckBox>(u"chkExpertMode"_s),
             *confirm = p.control<QCheckBox>(u"chkCheckToConfirmEdits"_s);
        QSignalSpy expertSpy(&p, &OptionsPanel::expertModeClicked);

        // A store where the program never ran: confirm on, expert off; only the box that changed writes.
        p.applySettings();
        QVERIFY(confirm->isChecked() && !expert->isChecked() && !p.expertMode());
        QCOMPARE(stored(settings::ExpertMode) + stored(settings::CheckToConfirmEdits), u"False<absent>"_s);
        QVERIFY(expertSpy.count() == 1 && p.control<QLineEdit>(u"txtChangePath"_s)->text() == settings::databasePath());
        expert->click();
        confirm->click();
        QCOMPARE(stored(settings::ExpertMode) + stored(settings::CheckToConfirmEdits), u"TrueFalse"_s);
        QCOMPARE(expertSpy.last().at(0).toBool(), true);
        QVERIFY(!p.checkToConfirmEdits() && !ctx.database.isChanged());  // options are no change to the database

        expert->setChecked(false);
        settings::ExpertMode.store(u"tRUe"_s);  // any case
        settings::CheckToConfirmEdits.store(u"true"_s);
        settings::DatabasePath.store(u"/tmp/x/Books.xml"_s);
        p.applySettings();
        QVERIFY(confirm->isChecked() && expert->isChecked() &&
                p.control<QLineEdit>(u"txtChangePath"_s)->text() == u"/tmp/x/Books.xml");

        QSignalSpy help(&p, &OptionsPanel::helpRequested), version(&p, &OptionsPanel::checkForNewVersionRequested);
        p.control<QAbstractButton>(u"cmdOpenHelp"_s)->click();
        QTest::mouseClick(p.controlWidget(u"lblCheckForNewVersion"_s), Qt::LeftButton);
        QTest::mouseClick(p.controlWidget(u"lblVersionNumber"_s), Qt::LeftButton);  // not a link
        QVERIFY(help.count() == 1 && version.count() == 1);
    }

    void companyFieldsAreData()
    {
        CompanyInfoPanel p(ctx);
        {
            qor::test::TablesEdit t(ctx.database);
            for (int i = 0; i < CompanyFieldCount; ++i) t.company[size_t(i)] = u"value %1"_s.arg(i);
        }
        ctx.database.setChanged(false);
        ctx.changeCalls = 0;
        p.readCompanyInfo();  // filling from the database is no change
        QVERIFY(ctx.changeCalls == 0 && !p.isReadingCompanyInfo());
        for (int i = 0; i < CompanyFieldCount; ++i) QCOMPARE(p.field(i), u"value %1"_s.arg(i));
        auto *three = p.control<QLineEdit>(u"txtCompanyDetails(3)"_s);
        QCOMPARE(three->cursorPosition(), 0);  // a value longer than the field shows its start
        QTest::keyClick(three, Qt::Key_End);
        QTest::keyClicks(three, "X");
        QVERIFY(ctx.database.company()[3] == u"value 3X" && ctx.database.isChanged());

        // Clearing counts as a change where a field had text, not where all were empty.
        for (bool hadText : {true, false}) {
            ctx.database.setChanged(false);
            p.clearCompanyInfo();
            QCOMPARE(ctx.database.isChanged(), hadText);
            for (int i = 0; i < CompanyFieldCount; ++i)
                QVERIFY(p.field(i).isEmpty() && ctx.database.company()[size_t(i)].isEmpty());
        }
    }

    void billPeriodChoosers()
    {
        BillPeriodPanel bills(ctx, ctx.trees);
        PrintingPanel printing(ctx, ctx.trees);
        QComboBox *one = bills.chooser(), *two = printing.chooser();
        QSignalSpy oneChanged(one, &QComboBox::currentIndexChanged), twoChanged(two, &QComboBox::currentIndexChanged);
        bills.treeModel().add(0, u"root_node"_s, NodeValues{NodeKind::Other, u"old"_s});
        bills.control<QLineEdit>(u"txtBillPeriod"_s)->setText(u"typed"_s);
        bills.refreshBillPeriodList();  // an empty table empties everything
        QVERIFY(one->count() == 0 && bills.treeModel().isEmpty() && oneChanged.isEmpty() &&
                bills.control<QLineEdit>(u"txtBillPeriod"_s)->text().isEmpty());

        // Table order; a row without exactly three separators is left out.
        qor::test::TablesEdit periods(ctx.database);
        int key = 0;
        for (const char *row : {"2024/01/31|January 2024|2024/01/01|2024/02/15",
                                "2024/02/29|February 2024|2024/02/01|2024/03/15", "2024/02/30|broken|2024/02/01",
                                "2024/03/31|March 2024|2024/03/01|2024/04/15"})
            periods.periods.add(u"%1k"_s.arg(++key), QString::fromLatin1(row).replace(u'|', FieldSep));
        periods.done();
        oneChanged.clear();
        twoChanged.clear();
        for (int twice = 0; twice < 2; ++twice) {  // a refresh starts from nothing
            bills.refreshBillPeriodList();
            printing.refreshBillPeriodList();
            for (QComboBox *box : {one, two})
                QCOMPARE(QStringList({box->itemText(0), box->itemText(1), box->itemText(2), box->itemText(3)}),
                         QStringList({"January 2024", "February 2024", "March 2024", ""}));
            QCOMPARE(one->currentIndex(), 2);  // the latest is selected, one change a refresh...
            QCOMPARE(oneChanged.count(), twice + 1);
            // ...on the first chooser only. The entry points at the third row
            // of the table, which isn't a period: nothing is shown, and the
            // second chooser has nothing to follow.
            QVERIFY(two->currentIndex() == -1 && twoChanged.isEmpty());
        }
    }

    void billPeriodEntryFieldsAndProducts()
    {
        BillPeriodPanel p(ctx, ctx.trees);
        const QColor window = app.color(QPalette::Active, QPalette::Base);
        QList<QLineEdit *> f;
        for (int i = 1; i <= 3; ++i) f << p.control<QLineEdit>(u"txtPField(%1)"_s.arg(i));
        for (QLineEdit *e : f) e->setText(u"2024/01/01"_s);
        p.treeModel().add(0, u"root_node"_s, NodeValues{NodeKind::Other, u"Smith, Ann"_s});
        p.control<QLineEdit>(u"txtBillPeriod"_s)->setText(u"old"_s);
        p.clearEntryFields(1);  // entering a new period
        for (QLineEdit *e : f) QVERIFY(e->text().isEmpty() && !e->isReadOnly());
        QCOMPARE(roster::backColour(f[1]), window);
        QCOMPARE(roster::backColour(f[2]), app.color(QPalette::Active, QPalette::ToolTipBase));
        QVERIFY(p.treeModel().isEmpty() && p.control<QLineEdit>(u"txtBillPeriod"_s)->text().isEmpty());
        f[2]->setText(u"2024/04/15"_s);
        p.clearEntryFields(2);  // locked, showing what they hold
        for (QLineEdit *e : f) QVERIFY(e->isReadOnly() && roster::backColour(e) == window);
        p.clearEntryFields(0);  // other kinds do nothing here
        p.clearEntryFields(3);
        QVERIFY(f[0]->isReadOnly() && f[2]->text() == u"2024/04/15");

        // The product list leaves archived rows out and makes the first current.
        QTreeWidget *list = p.productList();
        qor::test::TablesEdit items(ctx.database);
        items.items.add(u"1k"_s, u"000000012.50"_s + QStringList({"$12.50 - Mowing", "Mowing", "12.50"}).join(FieldSep));
        items.items.add(u"2k"_s, u"000000003.00"_s + ArchiveMark + u"$3.00 - Old"_s);
        items.items.add(u"3k"_s, u"000000001.00$1.00 - Stamp"_s);
        items.done();
        for (int twice = 0; twice < 2; ++twice) {  // rebuilt from nothing
            p.refreshProductList();
            QVERIFY(list->topLevelItemCount() == 2 && list->currentItem() == list->topLevelItem(0));
            QCOMPARE(list->topLevelItem(0)->text(0) + u'|' + list->topLevelItem(1)->text(0) + u'|' +
                         list->topLevelItem(1)->data(0, Qt::UserRole).toString(),
                     u"$1.00 - Stamp|$12.50 - Mowing"_s + FieldSep + u"Mowing"_s + FieldSep + u"12.50|1k"_s);
        }
    }

    void printOptionsStoreAndReadSettings()
    {
        auto p = std::make_unique<PrintOptionsPanel>(ctx);
        auto box = [&p](const char *name) { return p->control<QAbstractButton>(QString::fromLatin1(name)); };
        auto bottom = [&p] { return shownOf(*p, u"picPrintPreviewBottom"_s); };
        // Never ran: "Invoice" large, twelve lines kept, the rest off; title option and size written back.
        p->applySettings();
        QVERIFY(box("optInvoiceTitle(0)")->isChecked() && box("optInvoiceTitleSize(2)")->isChecked());
        QCOMPARE(stored(settings::InvoiceTitleOption) + stored(settings::InvoiceTitleSize), u"02"_s);
        QVERIFY(box("chkKeepTwelveLines")->isChecked() && !box("chkMoveAccordingly")->isEnabled() &&
                !box("chkMoveAccordingly")->isChecked() && !box("chkPrintDuplicateInvoices")->isChecked());
        QCOMPARE(stored(settings::KeepTwelveLines) + stored(settings::PrintPreviewSelected),
                 u"<absent><absent>"_s);  // set under the guard
        QCOMPARE(p->control<QLabel>(u"picPrintPreviewTop(1)"_s)->pixmap().toImage().convertToFormat(QImage::Format_RGB32),
                 pages::makePreviewPictures().top[1].convertToFormat(QImage::Format_RGB32));
        QCOMPARE(shownOf(*p, u"picPrintPreviewTop"_s) + bottom(), QList<int>({0, 0}));
        QVERIFY(!box("cmdPrintPreviewBack")->isEnabled() && box("cmdPrintPreviewForward")->isEnabled());
        QVERIFY(!p->isApplyingSettings());

        // Each handler stores its control at once; the sample follows the two twelve-line boxes.
        for (const char *name : {"optInvoiceTitle(2)", "optInvoiceTitleSize(1)", "chkAddInvoiceDateToInvoice",
                                 "chkPrintDuplicateInvoices", "chkPrintDuplicateInvoices"})
            box(name)->click();
        QTest::keyClicks(p->control<QLineEdit>(u"txtInvoiceTitle"_s), "Bill");
        QCOMPARE(stored(settings::InvoiceTitleOption) + stored(settings::InvoiceTitleSize) +
                     stored(settings::InvoiceTitleText) + stored(settings::AddInvoiceDateToInvoice) +
                     stored(settings::PrintDuplicateInvoices),
                 u"21BillTrueFalse"_s);
        box("chkKeepTwelveLines")->click();  // off: the move box comes free
        QVERIFY(box("chkMoveAccordingly")->isEnabled() && bottom() == QList<int>{1});
        box("chkMoveAccordingly")->click();
        QCOMPARE(stored(settings::KeepTwelveLines) + stored(settings::MoveBottomTextAccordingly), u"FalseTrue"_s);
        QCOMPARE(bottom(), QList<int>{2});
        box("chkKeepTwelveLines")->click();  // on again: the move box keeps its tick, disabled
        QVERIFY(box("chkMoveAccordingly")->isChecked() && !box("chkMoveAccordingly")->isEnabled());
        QVERIFY(bottom() == QList<int>{0} && stored(settings::KeepTwelveLines) == u"True");
        box("chkKeepTwelveLines")->click();
        box("chkMoveAccordingly")->click();
        QVERIFY(bottom() == QList<int>{1} && stored(settings::MoveBottomTextAccordingly) == u"False");

        // A later start reads the store; the guard keeps the handlers from rewriting what was read.
        settings::InvoiceTitleOption.set(1);
        settings::InvoiceTitleText.store(u"Statement OF Account"_s);
        settings::InvoiceTitleSize.set(0);
        settings::KeepTwelveLines.store(u"false"_s);
        settings::MoveBottomTextAccordingly.store(u"TRUE"_s);
        settings::PrintDuplicateInvoices.set(true);
        settings::PrintPreviewSelected.set(2);
        p = std::make_unique<PrintOptionsPanel>(ctx);
        p->applySettings();
        QVERIFY(box("optInvoiceTitle(1)")->isChecked() && !box("optInvoiceTitle(0)")->isChecked() &&
                box("optInvoiceTitleSize(0)")->isChecked() && !box("chkKeepTwelveLines")->isChecked() &&
                box("chkMoveAccordingly")->isChecked() && box("chkMoveAccordingly")->isEnabled() &&
                box("chkPrintDuplicateInvoices")->isChecked());
        QCOMPARE(p->control<QLineEdit>(u"txtInvoiceTitle"_s)->text(), u"Statement OF Account"_s);
        QCOMPARE(stored(settings::KeepTwelveLines) + stored(settings::MoveBottomTextAccordingly), u"falseTRUE"_s);
        QCOMPARE(shownOf(*p, u"picPrintPreviewTop"_s) + bottom(), QList<int>({2, 2}));
        QVERIFY(box("cmdPrintPreviewBack")->isEnabled() && !box("cmdPrintPreviewForward")->isEnabled());
        // The arrows step through the forms, store the one shown and feed the run.
        box("cmdPrintPreviewBack")->click();
        QCOMPARE(shownOf(*p, u"picPrintPreviewTop"_s), QList<int>{1});
        QVERIFY(box("cmdPrintPreviewForward")->isEnabled() && stored(settings::PrintPreviewSelected) == u"1");
        box("cmdPrintPreviewBack")->click();
        QVERIFY(!box("cmdPrintPreviewBack")->isEnabled() && p->invoiceOptions().templateNumber == 0);
        box("cmdPrintPreviewForward")->click();
        const pages::InvoiceOptions o = p->invoiceOptions();
        QVERIFY(o.templateNumber == 1 && !o.keepTwelveLines && o.moveBottomText && o.title == pages::TitleOption(1));
        QVERIFY(!ctx.database.isChanged());
    }
};

QTEST_MAIN(TestPanels)
#include "tst_roster.moc"
