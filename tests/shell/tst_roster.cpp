// The panels as built from the roster: kinds, names, places, captions, fonts,
// start states, tab order and accessible names.
#include "database/database.h"
#include "shell/appcontext.h"
#include "shell/panel.h"
#include "shell/roster.h"
#include "uiservices/olecolor.h"
#include "uiservices/twips.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFontInfo>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSet>
#include <QTreeWidget>
#include <QtTest>

#include <array>
#include <memory>

using namespace qor;

namespace {

class FakeContext : public AppContext {
public:
    Database &db() override { return database; }
    void showDatabaseChanged(bool c) override { changed = c; }
    bool databaseChanged() const override { return changed; }
    void arrangePanels(int) override {}
    void refreshProductList() override {}
    int currentPanel() const override { return 0; }
    QWidget *mainWindow() override { return nullptr; }
    Database database;
    bool changed = false;
};

}  // namespace

class TestRoster : public QObject {
    Q_OBJECT

    FakeContext ctx;
    std::unique_ptr<QWidget> window;
    std::array<Panel *, 7> panels{};

    QWidget *find(const QString &name) const {
        for (Panel *p : panels)
            if (QWidget *w = p->controlWidget(name))
                return w;
        return nullptr;
    }

private slots:
    void initTestCase();
    void everyRowBuiltOnce();
    void kindsAndPlaces_data();
    void kindsAndPlaces();
    void labelsShowTheirWholeCaption();
    void listsAndChoosers();
    void captions();
    void fonts_data();
    void fonts();
    void startStates();
    void colours();
    void alignment();
    void tabOrder();
    void accessibleNames();
};

void TestRoster::initTestCase()
{
    // The expected pixels below are twips at 15 a pixel.
    QCOMPARE(twipsPerPixel(), 15.0);
    window = std::make_unique<QWidget>();
    for (int i = 0; i < 7; ++i)
        panels[size_t(i)] = new Panel(i, ctx, window.get());
}

void TestRoster::everyRowBuiltOnce()
{
    const std::array<int, 7> expected = {22, 9, 19, 9, 23, 18, 19};
    QSet<QString> names;
    for (int i = 0; i < 7; ++i) {
        Panel *p = panels[size_t(i)];
        QCOMPARE(p->objectName(), QStringLiteral("fraMain(%1)").arg(i));
        QVERIFY(p->isHidden());
        QCOMPARE(p->frameShape(), QFrame::NoFrame);
        QCOMPARE(p->palette().color(QPalette::Window), QColor(Qt::white));
        QCOMPARE(p->size(), QSize(560, 416));
        // Every widget the panel made is a roster row of this panel.
        int built = 0;
        for (QWidget *w : p->findChildren<QWidget *>()) {
            if (roster::tabIndexOf(w) < 0)
                continue;  // a part of a compound widget
            ++built;
            const roster::Entry *e = roster::find(w->objectName());
            QVERIFY2(e, qPrintable(w->objectName()));
            QCOMPARE(e->panel, i);
            QCOMPARE(p->controlWidget(w->objectName()), w);
            QVERIFY2(!names.contains(w->objectName()), qPrintable(w->objectName()));
            names.insert(w->objectName());
        }
        QCOMPARE(built, expected[size_t(i)]);
        QCOMPARE(roster::entriesOf(i).size(), qsizetype(expected[size_t(i)]));
    }
    QCOMPARE(qsizetype(roster::entries().size()), qsizetype(names.size()));
    QVERIFY(roster::entriesOf(7).isEmpty());
    QVERIFY(roster::entriesOf(-1).isEmpty());
}

void TestRoster::kindsAndPlaces_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("parent");
    QTest::addColumn<QRect>("place");

    auto row = [](const char *name, const char *kind, const char *parent, int x, int y, int w, int h) {
        QTest::newRow(name) << QString::fromLatin1(name) << QString::fromLatin1(kind)
                            << QString::fromLatin1(parent) << QRect(x, y, w, h);
    };
    row("txtSearch", "QLineEdit", "fraMain(0)", 56, 43, 145, 21);
    row("cmdSearch", "QPushButton", "fraMain(0)", 208, 39, 25, 24);
    row("txtField(0)", "QLineEdit", "fraMain(0)", 360, 40, 193, 21);
    row("txtField(7)", "QPlainTextEdit", "fraMain(0)", 336, 232, 217, 129);
    row("cmdUndo", "QPushButton", "fraMain(0)", 280, 368, 129, 41);
    row("lvwCustomersVis", "QTreeWidget", "fraMain(0)", 8, 64, 257, 345);
    row("lblFirstName", "QLabel", "fraMain(0)", 272, 41, 85, 17);
    row("lblTop(0)", "QLabel", "fraMain(0)", 0, 0, 561, 25);
    row("txtProductOrServiceName", "QLineEdit", "fraMain(1)", 144, 56, 407, 21);
    row("lvwProducts(0)", "QTreeWidget", "fraMain(1)", 8, 104, 545, 257);
    row("lblPrice", "QLabel", "fraMain(1)", 8, 40, 37, 16);
    row("tvwInvoiceRecords(0)", "QTreeWidget", "fraMain(2)", 8, 104, 265, 257);
    row("cmbBillPeriod(1)", "QComboBox", "fraMain(2)", 8, 56, 209, 22);
    row("txtBillPeriod", "QLineEdit", "fraMain(2)", 8, 56, 189, 22);
    row("tvwInvoiceRecords(1)", "QTreeWidget", "fraMain(3)", 8, 88, 545, 273);
    row("staPrinting", "QProgressBar", "fraMain(3)", 360, 64, 193, 17);
    row("lblRightClickForNote", "QLabel", "fraMain(3)", 8, 376, 147, 30);
    row("fraPrintPreview", "QGroupBox", "fraMain(4)", 296, 40, 241, 361);
    row("cmdPrintPreviewBack", "QPushButton", "fraPrintPreview", 64, 296, 49, 41);
    row("picPrintPreviewTop(1)", "QLabel", "fraPrintPreview", 25, 33, 192, 105);
    row("picPrintPreviewBottom(2)", "QLabel", "fraPrintPreview", 25, 138, 192, 144);
    row("fraInvoiceTitle", "QGroupBox", "fraMain(4)", 16, 40, 249, 105);
    row("fraSize", "QGroupBox", "fraInvoiceTitle", 104, 16, 129, 41);
    row("optInvoiceTitleSize(2)", "QRadioButton", "fraSize", 88, 15, 33, 17);
    row("txtInvoiceTitle", "QLineEdit", "fraInvoiceTitle", 80, 70, 153, 19);
    row("optInvoiceTitle(0)", "QRadioButton", "fraInvoiceTitle", 16, 24, 73, 17);
    row("chkMoveAccordingly", "QCheckBox", "fraMain(4)", 32, 248, 233, 25);
    row("fraDocumentation", "QGroupBox", "fraMain(5)", 336, 344, 217, 63);
    row("cmdOpenHelp", "qor::HoverCommand", "fraDocumentation", 154, 10, 46, 49);
    row("chkExpertMode", "QCheckBox", "fraMain(5)", 16, 232, 17, 25);
    row("lblCheckForNewVersion", "QLabel", "fraMain(5)", 336, 44, 217, 17);
    row("txtCompanyDetails(8)", "QLineEdit", "fraMain(6)", 288, 224, 265, 21);
    row("lblSaveDatabaseToUpdate", "QLabel", "fraMain(6)", 0, 396, 560, 14);
}

void TestRoster::kindsAndPlaces()
{
    QFETCH(QString, name);
    QFETCH(QString, kind);
    QFETCH(QString, parent);
    QFETCH(QRect, place);
    QWidget *w = find(name);
    QVERIFY2(w, qPrintable(name));
    QCOMPARE(w->objectName(), name);
    QCOMPARE(QString::fromLatin1(w->metaObject()->className()), kind);
    QVERIFY(w->parentWidget());
    QCOMPARE(w->parentWidget()->objectName(), parent);
    QCOMPARE(w->geometry(), place);
}

void TestRoster::labelsShowTheirWholeCaption()
{
    // A one-line label is at least as wide as designed and as its text, and
    // stands at its designed place on the side it is aligned to.
    int checked = 0;
    for (const roster::Entry &e : roster::entries()) {
        auto *l = qobject_cast<QLabel *>(find(QString::fromLatin1(e.name)));
        if (!l || e.kind != roster::Kind::Label || l->wordWrap())
            continue;
        ++checked;
        const QRect design(twipsToPx(e.left), twipsToPx(e.top), twipsToPx(e.width), twipsToPx(e.height));
        const QRect r = l->geometry();
        QVERIFY2(r.width() >= design.width(), e.name);
        QVERIFY2(l->fontMetrics().horizontalAdvance(l->text()) <= r.width(), e.name);
        QCOMPARE(r.top(), design.top());
        QCOMPARE(r.height(), design.height());
        const Qt::Alignment h = l->alignment() & Qt::AlignHorizontal_Mask;
        if (h == Qt::AlignRight)
            QCOMPARE(r.right(), design.right());
        else if (h == Qt::AlignLeft)
            QCOMPARE(r.left(), design.left());
        else
            QVERIFY2(qAbs(r.center().x() - design.center().x()) <= 1, e.name);
    }
    QVERIFY(checked > 40);
    // The title keeps its designed size.
    QCOMPARE(find(QStringLiteral("lblTop(2)"))->geometry(), QRect(0, 0, 561, 25));
}

void TestRoster::listsAndChoosers()
{
    for (const char *name : {"lvwCustomersVis", "lvwProducts(0)", "lvwProducts(1)"}) {
        auto *l = qobject_cast<QTreeWidget *>(find(QString::fromLatin1(name)));
        QVERIFY2(l, name);
        QCOMPARE(l->columnCount(), 1);
        QVERIFY(l->isHeaderHidden());
        QVERIFY(!l->rootIsDecorated());
        QCOMPARE(l->selectionMode(), QAbstractItemView::SingleSelection);
    }
    for (const char *name : {"tvwInvoiceRecords(0)", "tvwInvoiceRecords(1)"}) {
        auto *t = qobject_cast<QTreeWidget *>(find(QString::fromLatin1(name)));
        QVERIFY2(t, name);
        QCOMPARE(t->columnCount(), 1);
        QVERIFY(t->rootIsDecorated());
    }
    for (const char *name : {"cmbBillPeriod(1)", "cmbBillPeriod(2)"}) {
        auto *c = qobject_cast<QComboBox *>(find(QString::fromLatin1(name)));
        QVERIFY2(c, name);
        QVERIFY(!c->isEditable());
    }
}

void TestRoster::captions()
{
    // Labels show "&&" as one "&" and have no hot key.
    auto label = [this](const char *name) {
        auto *l = qobject_cast<QLabel *>(find(QString::fromLatin1(name)));
        return l ? l->text() : QStringLiteral("<missing %1>").arg(QLatin1String(name));
    };
    QCOMPARE(label("lblTop(1)"), QStringLiteral("Products & Services"));
    QCOMPARE(label("lblExpertMode2"), QStringLiteral("(turn off hints & explanations)"));
    QCOMPARE(label("lblDoubleClickToAdd"), QStringLiteral("  Double-click to Bill *Marked Customers:  "));
    QCOMPARE(label("lblVersionNumber"), QString());
    for (const char *name : {"lblTop(1)", "lblPhone"})
        QCOMPARE(qobject_cast<QLabel *>(find(QString::fromLatin1(name)))->textFormat(), Qt::PlainText);

    // Buttons, boxes and options keep the hot-key marks for the toolkit.
    auto text = [this](const char *name) {
        auto *b = qobject_cast<QAbstractButton *>(find(QString::fromLatin1(name)));
        return b ? b->text() : QStringLiteral("<missing %1>").arg(QLatin1String(name));
    };
    QCOMPARE(text("cmdAdjustBalance"), QStringLiteral("Log &Payment && Optional Note"));
    QCOMPARE(text("cmdChangePath(3)"), QStringLiteral("Sv&As"));
    QCOMPARE(text("chkKeepTwelveLines"), QStringLiteral("keep &twelve lines in list of billed items"));
    QCOMPARE(text("cmdPrintPreviewBack"), QStringLiteral("<"));
    QCOMPARE(text("cmdPrint"), QString());
    QCOMPARE(text("chkExpertMode"), QString());
    QCOMPARE(qobject_cast<QGroupBox *>(find(QStringLiteral("fraInvoiceTitle")))->title(),
             QStringLiteral("Invoice Title"));
    QCOMPARE(qobject_cast<QLineEdit *>(find(QStringLiteral("txtCompanyDetails(8)")))->text(),
             QStringLiteral("THANK YOU FOR YOUR BUSINESS!"));
    QCOMPARE(qobject_cast<QLineEdit *>(find(QStringLiteral("txtSearch")))->text(), QStringLiteral("search text"));

    QCOMPARE(roster::shownCaption(u"Sv&As"), QStringLiteral("SvAs"));
    QCOMPARE(roster::shownCaption(u"a && b"), QStringLiteral("a & b"));
    QCOMPARE(roster::shownCaption(u"&&&x"), QStringLiteral("&x"));
    QCOMPARE(roster::shownCaption(u"end&"), QStringLiteral("end"));
    QCOMPARE(roster::shownCaption(u""), QString());
}

void TestRoster::fonts_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("family");
    QTest::addColumn<double>("points");
    QTest::addColumn<bool>("bold");
    QTest::addColumn<bool>("italic");
    QTest::addColumn<bool>("underline");
    auto row = [](const char *name, const char *family, double points, bool bold, bool italic = false,
                  bool underline = false) {
        QTest::newRow(name) << QString::fromLatin1(name) << QString::fromLatin1(family) << points << bold
                            << italic << underline;
    };
    row("cmdAddNew", "Tahoma", 9.75, true);
    row("txtField(0)", "Tahoma", 9, true);
    row("cmbBillPeriod(2)", "Tahoma", 9, true);
    row("lblFirstName", "Tahoma", 9.75, true);
    row("lblCustomers", "Tahoma", 9, true);
    row("lblPrinting", "Tahoma", 9, true);
    row("lblExample", "Tahoma", 9, false, true);
    row("lblTop(0)", "Arial", 14.25, true);
    row("chkAddInvoiceDateToInvoice", "Arial", 8.25, true);
    row("chkExpertMode", "Arial", 8.25, true);
    row("lblCompanyName", "Arial", 8.25, true);
    row("lblExpertMode1", "Arial", 8.25, true);
    row("Label11", "Arial", 12, true);
    row("lblCheckForNewVersion", "Tahoma", 9, true, false, true);
    row("cmdPrintPreviewBack", "Arial", 18, true);
}

void TestRoster::fonts()
{
    QFETCH(QString, name);
    QFETCH(QString, family);
    QFETCH(double, points);
    QFETCH(bool, bold);
    QFETCH(bool, italic);
    QFETCH(bool, underline);
    QWidget *w = find(name);
    QVERIFY2(w, qPrintable(name));
    const QFont f = w->font();
    QCOMPARE(f.family(), family);
    QCOMPARE(f.pointSizeF(), points);
    QCOMPARE(f.bold(), bold);
    QCOMPARE(f.italic(), italic);
    QCOMPARE(f.underline(), underline);
    // The face drawn is the design font or its metric stand-in, never the
    // system's wide default sans.
    const QString drawn = QFontInfo(f).family();
    QVERIFY2(drawn == family || drawn == QLatin1String("Liberation Sans"), qPrintable(drawn));
}

void TestRoster::startStates()
{
    const QStringList hidden = {
        "txtSearch", "cmdUndo", "cmdCancelNewItem", "cmdCancelNewBP", "cmdResetCustomerAccounts",
        "cmdAdjustBalance", "lvwProducts(1)", "txtBillPeriod", "lblExample", "lblDoubleClickToAdd",
        "staPrinting", "lblPrinting", "cmdChangePath(2)", "picPrintPreviewTop(1)", "picPrintPreviewTop(2)",
        "picPrintPreviewBottom(1)", "picPrintPreviewBottom(2)"};
    for (const roster::Entry &e : roster::entries()) {
        QWidget *w = find(QString::fromLatin1(e.name));
        QVERIFY2(w, e.name);
        QVERIFY2(w->isHidden() == hidden.contains(QLatin1String(e.name)), e.name);
    }

    for (int i = 1; i <= 3; ++i)
        QVERIFY(qobject_cast<QLineEdit *>(find(QStringLiteral("txtPField(%1)").arg(i)))->isReadOnly());
    QVERIFY(!qobject_cast<QLineEdit *>(find(QStringLiteral("txtField(0)")))->isReadOnly());
    QVERIFY(!qobject_cast<QLineEdit *>(find(QStringLiteral("txtBillPeriod")))->isReadOnly());

    for (int i = 0; i <= 4; ++i)
        QCOMPARE(qobject_cast<QLineEdit *>(find(QStringLiteral("txtField(%1)").arg(i)))->maxLength(), 32);
    for (int i = 5; i <= 6; ++i)
        QCOMPARE(qobject_cast<QLineEdit *>(find(QStringLiteral("txtField(%1)").arg(i)))->maxLength(), 128);
    QCOMPARE(qobject_cast<QLineEdit *>(find(QStringLiteral("txtPrice")))->maxLength(), 32767);

    auto *notes = qobject_cast<QPlainTextEdit *>(find(QStringLiteral("txtField(7)")));
    QVERIFY(notes);
    QCOMPARE(notes->verticalScrollBarPolicy(), Qt::ScrollBarAlwaysOn);
    QVERIFY(notes->tabChangesFocus());

    QVERIFY(qobject_cast<QCheckBox *>(find(QStringLiteral("chkCheckToConfirmEdits")))->isChecked());
    QVERIFY(qobject_cast<QCheckBox *>(find(QStringLiteral("chkExpertMode")))->isChecked());
    QVERIFY(!qobject_cast<QCheckBox *>(find(QStringLiteral("chkKeepTwelveLines")))->isChecked());
    QVERIFY(!qobject_cast<QRadioButton *>(find(QStringLiteral("optInvoiceTitle(0)")))->isChecked());

    QCOMPARE(find(QStringLiteral("lblCheckForNewVersion"))->cursor().shape(), Qt::PointingHandCursor);
    QVERIFY(qobject_cast<QLabel *>(find(QStringLiteral("lblQuickestWay")))->wordWrap());
    QVERIFY(qobject_cast<QLabel *>(find(QStringLiteral("lblRightClickForNote")))->wordWrap());
    QVERIFY(!qobject_cast<QLabel *>(find(QStringLiteral("lblCustomers")))->wordWrap());

    auto *print = qobject_cast<QPushButton *>(find(QStringLiteral("cmdPrint")));
    QCOMPARE(print->iconSize(), QSize(18, 18));
    QVERIFY(!print->icon().isNull());
    QVERIFY(!qobject_cast<QPushButton *>(find(QStringLiteral("cmdSearch")))->icon().isNull());
    QCOMPARE(qobject_cast<QPushButton *>(find(QStringLiteral("cmdSearch")))->iconSize(), QSize(19, 18));
}

void TestRoster::colours()
{
    const QPalette app = QApplication::palette();
    const QColor info = app.color(QPalette::Active, QPalette::ToolTipBase);
    const QColor grey = app.color(QPalette::Disabled, QPalette::Text);
    QVERIFY(info != app.color(QPalette::Active, QPalette::Base));  // else the checks below prove nothing

    QCOMPARE(roster::backColour(find(QStringLiteral("txtSearch"))), QColor(192, 255, 255));
    QCOMPARE(roster::backColour(find(QStringLiteral("txtPrice"))), info);
    QCOMPARE(roster::backColour(find(QStringLiteral("txtProductOrServiceName"))), info);
    QCOMPARE(roster::backColour(find(QStringLiteral("lblDoubleClickToAdd"))), info);
    QVERIFY(find(QStringLiteral("lblDoubleClickToAdd"))->autoFillBackground());
    QCOMPARE(roster::backColour(find(QStringLiteral("txtField(0)"))), app.color(QPalette::Active, QPalette::Base));

    for (int i = 0; i < 7; ++i) {
        QWidget *top = find(QStringLiteral("lblTop(%1)").arg(i));
        QCOMPARE(roster::foreColour(top), QColor(0, 128, 0));
        QCOMPARE(roster::backColour(top), QColor(Qt::white));
    }
    for (const char *hint : {"lblRightClickForNote", "lblExpertMode2", "lblQuickestWay", "lblSaveDatabaseToUpdate",
                             "lblLeaveOptionalEntriesBlank"})
        QCOMPARE(roster::foreColour(find(QString::fromLatin1(hint))), grey);
    QCOMPARE(roster::foreColour(find(QStringLiteral("Label11"))), app.color(QPalette::Active, QPalette::Highlight));
    QCOMPARE(roster::foreColour(find(QStringLiteral("lblCheckForNewVersion"))),
             app.color(QPalette::Active, QPalette::Highlight));

    // Stored colour values: RGB with red in the low byte, or a system colour.
    QCOMPARE(roster::colour(roster::rgb(0, 128, 0)), QColor(0, 128, 0));
    QCOMPARE(roster::colour(roster::rgb(192, 255, 255)), QColor(192, 255, 255));
    QCOMPARE(roster::colour(syscolor::InfoBackground), info);
    QVERIFY(!roster::colour(roster::NoColour).isValid());
}

void TestRoster::alignment()
{
    auto align = [this](const char *name) {
        return qobject_cast<QLabel *>(find(QString::fromLatin1(name)))->alignment() & Qt::AlignHorizontal_Mask;
    };
    for (const char *name : {"lblFirstName", "lblLastName", "lblAddress", "lblNotes", "lblEmail", "lblPhone",
                             "Label11", "lblCheckForNewVersion", "lblVersionNumber"})
        QVERIFY2(align(name) == Qt::AlignRight, name);
    for (const char *name : {"lblRightClickForNote", "lblQuickestWay", "lblSaveDatabaseToUpdate",
                             "lblLeaveOptionalEntriesBlank", "lblTop(0)", "lblTop(4)"})
        QVERIFY2(align(name) == Qt::AlignHCenter, name);
    for (const char *name : {"lblExpertMode2", "lblCustomers", "lblCompanyName", "lblDoubleClickToAdd"})
        QVERIFY2(align(name) == Qt::AlignLeft, name);
}

void TestRoster::tabOrder()
{
    QCOMPARE(roster::tabIndexOf(find(QStringLiteral("cmdAddNew"))), 0);
    QCOMPARE(roster::tabIndexOf(find(QStringLiteral("txtField(7)"))), 8);
    QCOMPARE(roster::tabIndexOf(find(QStringLiteral("txtField(5)"))), 6);
    QCOMPARE(roster::tabIndexOf(find(QStringLiteral("picPrintPreviewTop(2)"))), 139);
    QCOMPARE(roster::tabIndexOf(find(QStringLiteral("picPrintPreviewBottom(0)"))), 135);
    QCOMPARE(roster::tabIndexOf(find(QStringLiteral("txtSearch"))), 141);
    QCOMPARE(roster::tabIndexOf(find(QStringLiteral("lblTop(6)"))), 69);
    QCOMPARE(roster::tabIndexOf(window.get()), -1);

    // No two controls share a place in the order.
    QSet<int> seen;
    for (const roster::Entry &e : roster::entries()) {
        QVERIFY2(!seen.contains(e.tab), e.name);
        seen.insert(e.tab);
    }

    // The chain follows the tab column across all panels; controls that take
    // no focus (labels, frames, pictures) are skipped.
    const QList<QWidget *> order = roster::chainTabOrder(window.get());
    QCOMPARE(order.size(), qsizetype(roster::entries().size()));
    for (qsizetype i = 1; i < order.size(); ++i)
        QVERIFY(roster::tabIndexOf(order[i - 1]) < roster::tabIndexOf(order[i]));

    QStringList walked;
    QWidget *w = find(QStringLiteral("cmdAddNew"));
    for (int guard = 0; guard < 2000 && walked.size() < 16; ++guard) {
        w = w->nextInFocusChain();
        if (roster::tabIndexOf(w) >= 0 && (w->focusPolicy() & Qt::TabFocus))
            walked << w->objectName();
    }
    const QStringList expected = {"txtField(0)", "txtField(1)", "txtField(2)", "txtField(3)",
                                  "txtField(4)", "txtField(5)", "txtField(6)", "txtField(7)",
                                  "cmdUndo", "lvwCustomersVis", "cmdPrint", "txtPrice",
                                  "txtProductOrServiceName", "cmdAddNewItem", "cmdCancelNewItem",
                                  "lvwProducts(0)"};
    QCOMPARE(walked, expected);

    // Across panels, and into the frames: txtInvoiceTitle (126) then
    // cmdPrintPreviewForward (129, 127 and 128 take no focus).
    w = find(QStringLiteral("txtInvoiceTitle"));
    int guard = 0;
    do {
        w = w->nextInFocusChain();
    } while (++guard < 2000 && (roster::tabIndexOf(w) < 0 || !(w->focusPolicy() & Qt::TabFocus)));
    QCOMPARE(w->objectName(), QStringLiteral("cmdPrintPreviewForward"));
}

void TestRoster::accessibleNames()
{
    for (const roster::Entry &e : roster::entries()) {
        QWidget *w = find(QString::fromLatin1(e.name));
        QVERIFY2(w && !w->accessibleName().trimmed().isEmpty(), e.name);
        // Spoken names carry no hot-key markup.
        QVERIFY2(!w->accessibleName().contains(QLatin1String("&&")), e.name);
    }
    auto name = [this](const char *control) { return find(QString::fromLatin1(control))->accessibleName(); };
    QCOMPARE(name("cmdPrint"), QStringLiteral("Print customer list"));
    QCOMPARE(name("cmdSearch"), QStringLiteral("Search"));
    QCOMPARE(name("cmdOpenHelp"), QStringLiteral("Help"));
    QCOMPARE(name("txtField(0)"), QStringLiteral("First Name"));
    QCOMPARE(name("txtField(3)"), QStringLiteral("Address line 2"));
    QCOMPARE(name("chkExpertMode"), QStringLiteral("Expert Mode"));
    QCOMPARE(name("cmdAdjustBalance"), QStringLiteral("Log Payment & Optional Note"));
    QCOMPARE(name("lblTop(1)"), QStringLiteral("Products & Services"));
    QCOMPARE(name("lblDoubleClickToAdd"), QStringLiteral("Double-click to Bill *Marked Customers:"));
    QCOMPARE(name("lvwCustomersVis"), QStringLiteral("List of Customers"));
    QCOMPARE(name("txtCompanyDetails(0)"), QStringLiteral("Company Name"));
    QCOMPARE(name("chkKeepTwelveLines"), QStringLiteral("keep twelve lines in list of billed items"));
    QCOMPARE(panels[1]->accessibleName(), QStringLiteral("Products & Services"));
}

QTEST_MAIN(TestRoster)
#include "tst_roster.moc"
