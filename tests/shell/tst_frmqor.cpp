// The main window's life: first start, closing with changes, failed saves,
// abandoning changes, panel switching, the size rules, expert mode and files
// that need the user told.
#include "customers/customerpanel.h"
#include "shell/formposition.h"
#include "shell/frmqor.h"
#include "shell/panel.h"
#include "shell/settingsstore.h"
#include "uiservices/hovercommand.h"
#include "uiservices/twips.h"

#include <QApplication>
#include <QCheckBox>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTreeWidget>
#include <QtTest>

#include <csignal>
#include <memory>
#include <sys/resource.h>

using namespace qor;

namespace {

struct Seen {
    bool seen = false;
    QString title, text;
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    QMessageBox::StandardButtons buttons;
};

QObject *answerers() {
    static QObject *owner = new QObject(qApp);
    return owner;
}

// Answers the next modal window: a message box with the standard button, any
// other window with its child button named buttonName.
std::shared_ptr<Seen> answerNext(QMessageBox::StandardButton button, const QString &buttonName = {}) {
    auto seen = std::make_shared<Seen>();
    auto *timer = new QTimer(answerers());
    QObject::connect(timer, &QTimer::timeout, timer, [=] {
        QWidget *modal = QApplication::activeModalWidget();
        if (!modal)
            return;
        timer->deleteLater();
        timer->stop();
        seen->seen = true;
        seen->title = modal->windowTitle();
        if (auto *box = qobject_cast<QMessageBox *>(modal)) {
            seen->text = box->text();
            seen->icon = box->icon();
            seen->buttons = box->standardButtons();
            box->button(button) ? box->button(button)->click() : box->reject();
        } else if (auto *b = modal->findChild<QAbstractButton *>(buttonName)) {
            b->click();
        }
    });
    timer->start(20);
    return seen;
}

QByteArray fileBytes(const QString &path) {
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

void writeFile(const QString &path, QByteArray text) {
    QFile f(path);
    QVERIFY(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
    f.write(text.replace("\n", "\r\n"));
}

const QByteArray Sample = R"(<QOR-DB>
	<CompanyInfo>
		<CompanyName>Harbour Supplies</CompanyName>
		<InvoiceClosing>See you soon</InvoiceClosing>
	</CompanyInfo>
	<Customers>
		<Customer CID="1">
			<FName>Ann</FName>
			<LName>Lee</LName>
		</Customer>
		<Customer CID="2">
			<FName>Bob</FName>
			<LName>Moss</LName>
		</Customer>
	</Customers>
</QOR-DB>
)";

}  // namespace

class TstFrmQOR : public QObject {
    Q_OBJECT
    QTemporaryDir m_dir;
    QString m_db;

    std::unique_ptr<FrmQOR> open() {
        auto w = std::make_unique<FrmQOR>();
        w->formLoad();
        return w;
    }
    static void discard(std::unique_ptr<FrmQOR> &w) {  // ends a window without its close steps
        w->showDatabaseChanged(false);
        w->close();
        w.reset();
    }
    static QLineEdit *company(FrmQOR &w, int i) {
        return w.panel(6)->control<QLineEdit>(QStringLiteral("txtCompanyDetails(%1)").arg(i));
    }
    static int shownPanel(FrmQOR &w) {  // -2 when more than one shows
        int shown = -1;
        for (int i = 0; i < 7; ++i)
            if (!w.panel(i)->isHidden())
                shown = shown == -1 ? i : -2;
        return shown;
    }
    static QString stored(const char *section, const char *key) {
        return settings::read(QString::fromLatin1(section), QString::fromLatin1(key));
    }

private slots:
    void initTestCase() {
        QVERIFY(m_dir.isValid());
        for (const char *var : {"XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_DATA_HOME"})
            qputenv(var, (m_dir.path() + '/' + var).toLocal8Bit());
        m_db = m_dir.path() + QStringLiteral("/QOR.xml");
        settings::write(QStringLiteral("FileHandling"), QStringLiteral("DatabasePath"), m_db);
    }
    void init() {
        if (qstrcmp(QTest::currentTestFunction(), "firstStart") != 0) {
            settings::putStoredSetting(QStringLiteral("LastClicked"), QStringLiteral("0"));
            writeFile(m_db, Sample);
        }
    }
    void cleanup() { qDeleteAll(answerers()->children()); }  // no answer leaks into the next test

    void firstStart() {
        QVERIFY(!QFile::exists(m_db));
        auto w = open();
        QCOMPARE(QFileInfo(m_db).size(), 0);  // created empty
        QCOMPARE(w->windowTitle(), QStringLiteral(" Qorvane"));
        // The designed closing line was emptied by the read: that is a change.
        QCOMPARE(company(*w, 8)->text(), QString());
        QVERIFY(w->cmdSave()->isVisible() && w->cmdCancel()->isVisible());
        QCOMPARE(stored("Settings", "LastClicked"), QStringLiteral("0"));
        QCOMPARE(stored("BrowseRecall", "view"), QStringLiteral("lvwpeek"));
        QCOMPARE(shownPanel(*w), 0);
        QCOMPARE(qRound(formWidthTwips(w.get())), 10110);
        QCOMPARE(qRound(formHeightTwips(w.get())), 6765);
        const int centred = (w->screen()->geometry().width() - w->width()) / 2;
        QVERIFY(qAbs(w->x() - centred) <= 8);

        auto box = answerNext(QMessageBox::No);
        QVERIFY(w->close());
        QVERIFY(box->seen);
        QCOMPARE(QFileInfo(m_db).size(), 0);
    }

    void lastClickedPanel() {
        settings::putStoredSetting(QStringLiteral("LastClicked"), QStringLiteral("3"));
        auto w = open();
        QCOMPARE(shownPanel(*w), 3);
        QVERIFY(!w->databaseChanged());
        QTest::mouseClick(w->cmdTab(5), Qt::LeftButton);
        QVERIFY(w->close());
        QCOMPARE(stored("Settings", "LastClicked"), QStringLiteral("5"));
        // Only the program writes it; anything else opens the first panel.
        settings::putStoredSetting(QStringLiteral("LastClicked"), QStringLiteral("9"));
        w = open();
        QCOMPARE(shownPanel(*w), 0);
        discard(w);
    }

    void closingWithChanges() {
        const QByteArray original = fileBytes(m_db);
        auto w = open();
        QCOMPARE(company(*w, 0)->text(), QStringLiteral("Harbour Supplies"));
        company(*w, 0)->setText(QStringLiteral("Harbour Ltd"));
        QVERIFY(w->databaseChanged());

        auto box = answerNext(QMessageBox::Cancel);
        QVERIFY(!w->close());
        QCOMPARE(box->title, QStringLiteral("QOR"));
        QCOMPARE(box->text, QStringLiteral("Your database has changed.\r\n\r\nDo you want to save the changes?"));
        QCOMPARE(box->icon, QMessageBox::Warning);
        QCOMPARE(box->buttons, QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
        QVERIFY(w->isVisible() && w->databaseChanged());
        QTest::mouseClick(w->cmdTab(6), Qt::LeftButton);  // still usable
        QCOMPARE(shownPanel(*w), 6);

        box = answerNext(QMessageBox::No);
        QVERIFY(w->close());
        QCOMPARE(fileBytes(m_db), original);

        w = open();
        QCOMPARE(shownPanel(*w), 6);
        company(*w, 0)->setText(QStringLiteral("Harbour Ltd"));
        QTreeWidget *list = w->customerPanel()->list();
        list->setCurrentItem(list->topLevelItem(1));
        box = answerNext(QMessageBox::Yes);
        QVERIFY(w->close());
        QVERIFY(box->seen);
        QVERIFY(fileBytes(m_db).contains("Harbour Ltd"));
        QCOMPARE(stored("BrowseRecall", "LastViewedCustomer"), QStringLiteral("2"));

        // Saved: no question. An empty list keeps the stored customer.
        writeFile(m_db, "<QOR-DB>\n</QOR-DB>\n");
        w = open();
        box = answerNext(QMessageBox::Cancel);
        QVERIFY(w->close());
        QTest::qWait(60);
        QVERIFY(!box->seen);
        QCOMPARE(stored("BrowseRecall", "LastViewedCustomer"), QStringLiteral("2"));
    }

    void failedSave() {
        const QByteArray original = fileBytes(m_db);
        auto w = open();
        company(*w, 1)->setText(QString(4000, QLatin1Char('x')));
        // Every write past the file's present size fails, as on a full disk.
        std::signal(SIGXFSZ, SIG_IGN);
        rlimit old{};
        getrlimit(RLIMIT_FSIZE, &old);
        rlimit small = old;
        small.rlim_cur = rlim_t(original.size());

        setrlimit(RLIMIT_FSIZE, &small);
        auto box = answerNext(QMessageBox::Ok);
        w->cmdSaveClick();
        setrlimit(RLIMIT_FSIZE, &old);
        QVERIFY(box->seen);
        QVERIFY2(box->text.contains(QStringLiteral("QOR.xml")), qPrintable(box->text));
        QCOMPARE(fileBytes(m_db), original);
        QVERIFY(w->databaseChanged());

        // Yes on closing, with a save that fails: the window stays.
        setrlimit(RLIMIT_FSIZE, &small);
        auto question = answerNext(QMessageBox::Yes);
        QTimer::singleShot(200, [&] { box = answerNext(QMessageBox::Ok); });
        const bool closed = w->close();
        setrlimit(RLIMIT_FSIZE, &old);
        QVERIFY(question->seen && !closed && w->isVisible());
        QCOMPARE(fileBytes(m_db), original);

        w->cmdSaveClick();
        QVERIFY(!w->databaseChanged());
        QVERIFY(fileBytes(m_db).contains(QByteArray(4000, 'x')));
        discard(w);
    }

    void abandonChanges() {
        const QByteArray original = fileBytes(m_db);
        auto w = open();
        company(*w, 0)->setText(QStringLiteral("Someone Else"));

        auto box = answerNext(QMessageBox::Cancel);
        w->cmdCancelClick();
        QCOMPARE(box->title, QStringLiteral("ABANDON ALL CHANGES???"));
        QCOMPARE(box->icon, QMessageBox::Warning);
        QCOMPARE(box->buttons, QMessageBox::Ok | QMessageBox::Cancel);
        QCOMPARE(box->text, QStringLiteral("Are you sure you want to abandon all your changes?\r\n\r\n"
                                           "Press OK to abandon all changes and reload the database file as it "
                                           "was originally.\r\nPress Cancel to keep your changes and continue."));
        QCOMPARE(company(*w, 0)->text(), QStringLiteral("Someone Else"));
        QVERIFY(w->databaseChanged());

        box = answerNext(QMessageBox::Ok);
        QTest::mouseClick(w->cmdCancel(), Qt::LeftButton);
        QVERIFY(box->seen);
        QCOMPARE(company(*w, 0)->text(), QStringLiteral("Harbour Supplies"));
        QCOMPARE(company(*w, 8)->text(), QStringLiteral("See you soon"));
        QVERIFY(!w->databaseChanged());
        QCOMPARE(w->customerPanel()->rowCount(), 2);
        QCOMPARE(fileBytes(m_db), original);
        discard(w);
    }

    void panelSwitching() {
        settings::putStoredSetting(QStringLiteral("LastClicked"), QStringLiteral("6"));
        auto w = open();
        QApplication::setActiveWindow(w.get());
        QVERIFY(QTest::qWaitForWindowActive(w.get()));
        // A route on which no panel has another control with the same letter.
        const QList<QPair<Qt::Key, int>> route = {{Qt::Key_C, 0}, {Qt::Key_P, 1}, {Qt::Key_B, 2},
                                                  {Qt::Key_T, 4}, {Qt::Key_I, 6}, {Qt::Key_N, 3},
                                                  {Qt::Key_I, 6}, {Qt::Key_O, 5}};
        for (const auto &[key, panel] : route) {
            QTest::keyClick(w.get(), key, Qt::AltModifier);
            QTRY_COMPARE(shownPanel(*w), panel);  // a hot key presses its button a moment later
        }
        auto *hidden = w->findChild<QPushButton *>(QStringLiteral("cmdAcceleratorKey(3)"));
        QVERIFY(hidden && hidden->geometry().right() < 0);
        for (int i : {6, 2, 2, 0}) {  // the tab of the panel on show shows it again
            QTest::mouseClick(w->cmdTab(i), Qt::LeftButton);
            QCOMPARE(shownPanel(*w), i);
        }
        discard(w);
    }

    void resizeRules() {
        auto w = open();
        setFormSizeTwips(w.get(), 6000, 4000);
        QCoreApplication::processEvents();
        QCOMPARE(qRound(formWidthTwips(w.get())), 10065);
        QCOMPARE(qRound(formHeightTwips(w.get())), 6750);
        QCOMPARE(w->panel(0)->size(), QSize(twipsToPx(8400), twipsToPx(6240)));
        const QSize oldPanel1 = w->panel(1)->size();

        // Larger: the panel on show follows at once, a hidden one when shown.
        setFormSizeTwips(w.get(), 13065, 8250);
        QCoreApplication::processEvents();
        const QSize big(twipsToPx(13065 - 1665), twipsToPx(8250 - 510));
        QCOMPARE(w->panel(0)->size(), big);
        QCOMPARE(w->panel(1)->size(), oldPanel1);
        QTest::mouseClick(w->cmdTab(1), Qt::LeftButton);
        QCOMPARE(w->panel(1)->size(), big);

        int before = w->arrangeCount();
        setFormSizeTwips(w.get(), 12000, 8000);
        QCoreApplication::processEvents();
        QCOMPARE(w->arrangeCount() - before, 1);  // one panel, not seven

        // Minimised, a size change arranges nothing; the restore does.
        w->showMinimized();
        QCoreApplication::processEvents();
        before = w->arrangeCount();
        const QSize minimised = w->panel(1)->size();
        setFormSizeTwips(w.get(), 14000, 9000);
        QCoreApplication::processEvents();
        QCOMPARE(w->arrangeCount(), before);
        QCOMPARE(w->panel(1)->size(), minimised);
        w->showNormal();
        QCoreApplication::processEvents();
        QCOMPARE(w->panel(1)->size(), QSize(twipsToPx(14000 - 1665), twipsToPx(9000 - 510)));
        discard(w);
    }

    void windowComesBackAsLeft() {
        auto w = open();
        setFormSizeTwips(w.get(), 11025, 7260);
        w->move(40, 30);
        QVERIFY(w->close());
        w = open();
        QCOMPARE(w->pos(), QPoint(40, 30));
        QCOMPARE(w->panel(0)->size(), QSize(twipsToPx(11025 - 1665), twipsToPx(7260 - 510)));
        w->showMaximized();
        QVERIFY(w->close());
        w = open();
        QVERIFY(w->isMaximized());
        w->showMinimized();
        QVERIFY(w->close());
        w = open();
        QVERIFY(w->isMinimized());
        discard(w);
    }

    void expertModeHints() {
        settings::putStoredSetting(QStringLiteral("ExpertMode"), QStringLiteral("False"));
        auto w = open();
        auto shown = [&](int panel, const char *name) {
            QWidget *c = w->panel(panel)->controlWidget(QString::fromLatin1(name));
            return c && !c->isHidden();
        };
        auto hints = [&] {
            return int(shown(3, "lblRightClickForNote")) + shown(5, "lblExpertMode2") +
                   shown(6, "lblLeaveOptionalEntriesBlank") + shown(6, "lblSaveDatabaseToUpdate");
        };
        QCOMPARE(hints(), 4);
        // Options follows the changed state each time it is arranged.
        QTest::mouseClick(w->cmdTab(5), Qt::LeftButton);
        QVERIFY(!shown(5, "lblQuickestWay") && !shown(5, "cmdChangePath(2)"));
        company(*w, 2)->setText(QStringLiteral("Dock Road"));
        QTest::mouseClick(w->cmdTab(5), Qt::LeftButton);
        QVERIFY(shown(5, "lblQuickestWay") && shown(5, "cmdChangePath(2)"));

        w->panel(5)->control<QCheckBox>(QStringLiteral("chkExpertMode"))->click();
        QCOMPARE(stored("Settings", "ExpertMode"), QStringLiteral("True"));
        QCOMPARE(hints(), 0);
        QVERIFY(!shown(5, "lblQuickestWay"));
        discard(w);

        settings::putStoredSetting(QStringLiteral("ExpertMode"), QStringLiteral("tRUe"));
        w = open();
        QCOMPARE(hints(), 0);
        discard(w);
        settings::putStoredSetting(QStringLiteral("ExpertMode"), QStringLiteral("False"));
    }

    void filesThatNeedTelling() {
        // A record of a customer who is gone: placeholder, one-time message, a change.
        writeFile(m_db, "<QOR-DB>\n<BillPeriods>\n<BillPeriod>\n<BPName>May</BPName>\n"
                        "<BPStart>2024/05/01</BPStart>\n<BPEnd>2024/05/31</BPEnd>\n"
                        "<BillDue>2024/06/15</BillDue>\n</BillPeriod>\n</BillPeriods>\n<InvoiceRecords>\n"
                        "<InvoiceRecord>\n<BP>May</BP>\n<CID>7</CID>\n<AccountBalance>10</AccountBalance>\n"
                        "</InvoiceRecord>\n</InvoiceRecords>\n</QOR-DB>\n");
        const QByteArray dangling = fileBytes(m_db);
        for (const char *mark : {"False", "True"}) {
            settings::write(QStringLiteral("Messages"), QStringLiteral("DeletedCustomer"), QString::fromLatin1(mark));
            auto message = answerNext(QMessageBox::NoButton, QStringLiteral("cmdOkay"));
            auto w = open();
            QTest::qWait(60);
            QCOMPARE(message->seen, qstrcmp(mark, "False") == 0);
            QVERIFY(w->databaseChanged());
            QCOMPARE(w->customerPanel()->list()->topLevelItem(0)->text(0), QStringLiteral("Customer, Deleted"));
            discard(w);
            qDeleteAll(answerers()->children());  // the one left unused
            writeFile(m_db, dangling);
        }

        // A file that can't be accepted: the engine's message, nothing half-filled.
        writeFile(m_db, QByteArray(Sample).replace("CID=\"2\"", "CID=\"1\""));
        const QByteArray original = fileBytes(m_db);
        auto box = answerNext(QMessageBox::Ok);
        auto w = open();
        QVERIFY(box->seen);
        QVERIFY2(box->text.contains(QStringLiteral("QOR.xml")), qPrintable(box->text));
        QCOMPARE(w->customerPanel()->rowCount(), 0);
        QCOMPARE(w->db().lvwCustomers.count(), 0);
        QCOMPARE(company(*w, 0)->text(), QString());
        QCOMPARE(fileBytes(m_db), original);
        discard(w);
    }

    void userGuide() {
        const QString path = FrmQOR::writeUserGuide();
        QVERIFY(path.startsWith(m_dir.path()));
        const QByteArray html = fileBytes(path);
        QVERIFY(html.contains("<html") && html.contains("Company Info"));
    }
};

QTEST_MAIN(TstFrmQOR)
#include "tst_frmqor.moc"
