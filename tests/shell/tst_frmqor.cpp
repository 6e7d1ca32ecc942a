// SPDX-License-Identifier: GPL-3.0-or-later
// The main window's life: first start, closing with changes, failed saves,
// panel switching, the size rules, expert mode, files that need the user
// told, and one running copy per user.
#include "../customers/panelharness.h"
#include "../database/dbfiletest.h"
#include "customers/customerpanel.h"
#include "shell/panel.h"
#include "shell/userguide.h"
#include "uiservices/formposition.h"
#include "uiservices/hovercommand.h"
#include "uiservices/twips.h"

#include <QCheckBox>
#include <QDesktopServices>
#include <QProcess>
#include <QSysInfo>
#include <QWindow>

using namespace qor;
using namespace qor::testing;
using namespace Qt::StringLiterals;

class TstFrmQOR : public QObject {
    Q_OBJECT
    Sandbox sb;

    static QLineEdit *company(FrmQOR &w, int i)
    {
        return w.panel(6)->control<QLineEdit>(u"txtCompanyDetails(%1)"_s.arg(i));
    }
    static int shownPanel(FrmQOR &w)
    {  // -2 when more than one shows
        int shown = -1;
        for (int i = 0; i < 7; ++i)
            shown = w.panel(i)->isHidden() ? shown : shown == -1 ? i
                                                                 : -2;
        return shown;
    }
    static QString snapshot(const QString &path)
    {  // bytes and time of change: did anyone write it?
        QFile f(path);
        return QFileInfo(f).lastModified().toString(Qt::ISODateWithMs) + u' ' +
               QString::fromLatin1(f.open(QIODevice::ReadOnly) ? f.readAll().toBase64() : QByteArray());
    }

public slots:
    void openUrl(const QUrl &url) { m_opened = url.toLocalFile(); }

private:
    QString m_opened;

private slots:
    void initTestCase() { qputenv("XDG_CACHE_HOME", (sb.dir.path() + u"/cache"_s).toLocal8Bit()); }
    void init()
    {
        if (qstrcmp(QTest::currentTestFunction(), "firstStart") != 0)
            writeDatabase(sb.db, {{1, u"Ann"_s, u"Lee"_s}, {2, u"Bob"_s, u"Moss"_s}});
    }

    void firstStart()
    {
        QVERIFY(!QFile::exists(sb.db));
        auto w = std::make_unique<FrmQOR>();
        w->formLoad();
        QCOMPARE(QFileInfo(sb.db).size(), 0);  // created empty
        // The designed closing line was emptied by the read: that is a change.
        QVERIFY(w->cmdSave()->isVisible() && w->cmdCancel()->isVisible());
        QVERIFY(settings::LastClicked.stored() == u"0" && shownPanel(*w) == 0);
        QCOMPARE(QSize(qRound(formWidthTwips(w.get())), qRound(formHeightTwips(w.get()))), QSize(10110, 6765));
        QVERIFY(qAbs(w->x() - (w->screen()->geometry().width() - w->width()) / 2) <= 8);  // centred

        Answerer a;
        a.answer = QMessageBox::No;
        QVERIFY(w->close() && a.seen().size() == 1);
        QCOMPARE(QFileInfo(sb.db).size(), 0);

        // Only the program writes the panel last clicked: anything else opens the first panel.
        w = openWindow(9);
        QVERIFY(shownPanel(*w) == 0 && !w->databaseChanged());
        discard(w);
    }

    void closingWithChangesKeysAndTitle()
    {
        const QByteArray original = sb.fileBytes();
        Answerer a;
        auto w = openWindow(0);
        company(*w, 0)->setText(u"Harbour Ltd"_s);
        // Yes, and the save fails, as on a full disk: told, and the window stays with the changes.
        w->session().writeFault = [](const QString &) -> files::DeviceWrapper {
            return [](QIODevice &f) { return std::make_unique<dbtest::Failing>(f, 10); };
        };
        a.answer = QMessageBox::Yes;
        QVERIFY(!w->close() && w->isVisible() && w->databaseChanged() && sb.fileBytes() == original);
        QCOMPARE(a.seen().value(0).buttons, QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
        QVERIFY2(a.seen().size() == 2 && a.last().text.contains(u"QOR.xml"_s), qPrintable(a.last().text));
        QTest::mouseClick(w->cmdTab(6), Qt::LeftButton);  // still usable
        QCOMPARE(shownPanel(*w), 6);
        setFormSizeTwips(w.get(), 11025, 7260);
        w->move(40, 30);
        a.answer = QMessageBox::No;
        QVERIFY(w->close());
        QCOMPARE(sb.fileBytes(), original);

        w = std::make_unique<FrmQOR>();  // back on the panel, at the place and size it was left
        w->formLoad();
        QCOMPARE(shownPanel(*w), 6);
        QCOMPARE(QRect(w->pos(), w->panel(6)->size()), QRect(40, 30, twipsToPx(11025 - 1665), twipsToPx(7260 - 510)));
        company(*w, 0)->setText(u"Harbour Ltd"_s);
        w->customerPanel()->list()->setCurrentItem(w->customerPanel()->list()->topLevelItem(1));
        a.answer = QMessageBox::Yes;
        QVERIFY(w->close() && a.seen().size() == 4 && sb.fileBytes().contains("Harbour Ltd"));
        QCOMPARE(settings::LastViewedCustomer.stored(), u"2"_s);

        // A file just read is no change. The title names the file and its
        // state; Ctrl+S, F1 and Ctrl+Q act as the save button, the help button
        // and the close button do. An empty list keeps the stored customer.
        writeDatabase(sb.db, {});
        w = openWindow(0);
        a.answer = QMessageBox::Cancel;
        w->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(w.get()));
        QCOMPARE(w->windowHandle()->title(), u"QOR.xml \u2014 Qorvane"_s);
        company(*w, 0)->setText(u"Harbour Ltd"_s);
        QCOMPARE(w->windowHandle()->title(), u"*QOR.xml \u2014 Qorvane"_s);
        QTest::keyClick(w.get(), Qt::Key_Q, Qt::ControlModifier);  // Cancel
        QVERIFY(a.last().text == u"Your database has changed.\r\n\r\nDo you want to save the changes?" &&
                w->isVisible());
        QTest::keyClick(w.get(), Qt::Key_S, Qt::ControlModifier);
        QVERIFY(sb.fileBytes().contains("Harbour Ltd") && !w->isWindowModified());
        QDesktopServices::setUrlHandler(u"file"_s, this, "openUrl");
        QTest::keyClick(w.get(), Qt::Key_F1);
        QDesktopServices::unsetUrlHandler(u"file"_s);
        QVERIFY(m_opened.endsWith(u"qorvane-guide.html"_s));
        QTest::keyClick(w.get(), Qt::Key_Q, Qt::ControlModifier);  // nothing left to ask
        QVERIFY(a.seen().size() == 5 && !w->isVisible() && settings::LastViewedCustomer.stored() == u"2");
    }

    void panelSwitchingAndExpertHints()
    {
        auto w = openWindow(6);
        QApplication::setActiveWindow(w.get());
        QVERIFY(QTest::qWaitForWindowActive(w.get()));
        // A route on which no panel has another control with the same letter.
        const QList<QPair<Qt::Key, int>> route = {{Qt::Key_C, 0}, {Qt::Key_P, 1}, {Qt::Key_B, 2}, {Qt::Key_T, 4}, {Qt::Key_I, 6}, {Qt::Key_N, 3}, {Qt::Key_I, 6}, {Qt::Key_O, 5}};
        for (const auto &[key, panel] : route) {
            QTest::keyClick(w.get(), key, Qt::AltModifier);
            QTRY_COMPARE(shownPanel(*w), panel);  // a hot key presses its button a moment later
        }
        for (int i : {6, 2, 2, 0}) {  // the tab of the panel on show shows it again
            QTest::mouseClick(w->cmdTab(i), Qt::LeftButton);
            QCOMPARE(shownPanel(*w), i);
        }
        // The box on Options reaches the hints of the other panels; Options is
        // arranged anew, following the changed state, each time it is shown.
        auto shown = [&](int panel, const char *name) {
            return !w->panel(panel)->controlWidget(QString::fromLatin1(name))->isHidden();
        };
        company(*w, 2)->setText(u"Dock Road"_s);
        QTest::mouseClick(w->cmdTab(5), Qt::LeftButton);
        QVERIFY(shown(5, "cmdChangePath(2)") && shown(3, "lblRightClickForNote") &&
                shown(6, "lblSaveDatabaseToUpdate"));
        w->panel(5)->control<QCheckBox>(u"chkExpertMode"_s)->click();
        QVERIFY(!shown(3, "lblRightClickForNote") && !shown(6, "lblSaveDatabaseToUpdate"));
        discard(w);
    }

    void placeholderAndResizeRules()
    {
        // A record of a customer who is gone: a placeholder and a change; the
        // message about it, marked in the store not to show again, is not shown.
        writeDatabase(sb.db, {}, {}, {{7, {}}});
        ScriptedDialogs dialogs;
        auto w = openWindow(0);
        QVERIFY(dialogs.seen.isEmpty() && w->databaseChanged());
        QCOMPARE(w->customerPanel()->list()->topLevelItem(0)->text(0), u"Customer, Deleted"_s);
        const auto panelSize = [](int width, int height) { return QSize(twipsToPx(width), twipsToPx(height)); };
        const auto resize = [&](int width, int height) {
            setFormSizeTwips(w.get(), width, height);
            QCoreApplication::processEvents();
        };
        resize(6000, 4000);  // snaps back to the smallest size
        QCOMPARE(QSize(qRound(formWidthTwips(w.get())), qRound(formHeightTwips(w.get()))), QSize(10065, 6750));
        QCOMPARE(w->panel(0)->size(), panelSize(8400, 6240));
        const QSize oldPanel1 = w->panel(1)->size();

        // Larger: the panel on show follows at once, a hidden one when shown.
        resize(13065, 8250);
        QVERIFY(w->panel(0)->size() == panelSize(13065 - 1665, 8250 - 510) && w->panel(1)->size() == oldPanel1);
        QTest::mouseClick(w->cmdTab(1), Qt::LeftButton);
        QCOMPARE(w->panel(1)->size(), panelSize(13065 - 1665, 8250 - 510));
        int before = w->arrangeCount();
        resize(12000, 8000);
        QCOMPARE(w->arrangeCount() - before, 1);  // one panel, not seven

        // Minimised, a size change arranges nothing; the restore does.
        w->showMinimized();
        QCoreApplication::processEvents();
        before = w->arrangeCount();
        const QSize minimised = w->panel(1)->size();
        resize(14000, 9000);
        QVERIFY(w->arrangeCount() == before && w->panel(1)->size() == minimised);
        w->showNormal();
        QCoreApplication::processEvents();
        QCOMPARE(w->panel(1)->size(), panelSize(14000 - 1665, 9000 - 510));
        discard(w);
    }

    void userGuide()
    {
        // Not installed beside the program: the built-in copy is written out.
        QTemporaryDir prefix;
        const QString bin = prefix.filePath(u"bin"_s), doc = prefix.filePath(u"share/doc/qorvane"_s);
        QVERIFY(QDir().mkpath(bin) && QDir().mkpath(doc));
        QList<QUrl> opened;
        const auto viewer = [&opened](const QUrl &url) { opened << url; return true; };
        QVERIFY(userguide::open(nullptr, bin, viewer));
        QFile written(opened.value(0).toLocalFile());
        QVERIFY(written.fileName().startsWith(sb.dir.path()) && written.open(QIODevice::ReadOnly));
        QVERIFY(written.readAll().contains("qorvane-cli"));
        // Installed: that copy is shown; with no viewer the user learns where it is.
        QFile installed(doc + u"/qorvane-guide.html"_s);
        QVERIFY(installed.open(QIODevice::WriteOnly) && installed.write("<html>") > 0);
        installed.close();
        QVERIFY(userguide::open(nullptr, bin, viewer) && opened.value(1) == QUrl::fromLocalFile(installed.fileName()));
        Answerer a;
        QVERIFY(!userguide::open(nullptr, bin, [](const QUrl &) { return false; }) && a.seen().size() == 1);
        QVERIFY2(a.last().text.contains(installed.fileName()), qPrintable(a.last().text));
    }

    void oneCopyPerUser()
    {  // last: it points the store at another database
        QVERIFY(SingleInstanceGuard::lockPath().startsWith(sb.dir.path() + u"/runtime/"_s));
        {
            SingleInstanceGuard first;  // the next ones are refused, and their end takes nothing away
            QVERIFY(first.isFirstInstance() && !SingleInstanceGuard().isFirstInstance() &&
                    !SingleInstanceGuard().isFirstInstance());
        }
        QVERIFY(SingleInstanceGuard().isFirstInstance());  // released at the end
        // A lock left behind by a process that has ended, as after a crash.
        QProcess gone;
        gone.start(u"true"_s, {});
        QVERIFY(gone.waitForStarted());
        const qint64 deadPid = gone.processId();
        QVERIFY(gone.waitForFinished() && deadPid > 0);
        QFile lock(SingleInstanceGuard::lockPath());
        QVERIFY(lock.open(QIODevice::WriteOnly | QIODevice::Truncate));
        lock.write(QByteArray::number(deadPid) + '\n' + QCoreApplication::applicationName().toUtf8() + '\n' +
                   QSysInfo::machineHostName().toUtf8() + '\n');
        lock.close();
        QVERIFY(SingleInstanceGuard().isFirstInstance());

        // Two real copies (offscreen, as this test runs): the second touches nothing.
        const QString db = sb.dir.path() + u"/proc-test.xml"_s;
        settings::DatabasePath.set(db);
        settings::sync();
        QProcess first, second;
        first.start(QStringLiteral(QORVANE_BINARY), {});
        QVERIFY(first.waitForStarted());
        QTRY_VERIFY_WITH_TIMEOUT(QFileInfo::exists(db), 20000);  // made by the first copy's load
        QTest::qWait(500);
        const QString before = snapshot(db) + snapshot(settings::storePath());
        second.start(QStringLiteral(QORVANE_BINARY), {});
        QVERIFY(second.waitForStarted());
        // It hands its request to the first copy and ends.
        QVERIFY(second.waitForFinished(20000) && second.exitCode() == 0 && first.state() == QProcess::Running);
        QCOMPARE(snapshot(db) + snapshot(settings::storePath()), before);
        QVERIFY(lock.open(QIODevice::ReadOnly));  // the lock still names the first copy
        QCOMPARE(lock.readLine().trimmed().toLongLong(), first.processId());
    }
};

QTEST_MAIN(TstFrmQOR)
#include "tst_frmqor.moc"
