// SPDX-License-Identifier: GPL-3.0-or-later
// frmUpdate beside the main window: the main window refuses to close while it
// shows; DOWNLOAD starts the updater from the program's folder and closes the
// main window, which still asks about unsaved changes.
#include "../customers/panelharness.h"
#include "maintenance/frmupdate.h"
#include "maintenance/versioncheck.h"
#include "shell/panel.h"
#include "uiservices/twips.h"

#include <QFileInfo>
#include <QTcpServer>

using namespace qor;
using namespace qor::maintenance;
using namespace qor::testing;
using namespace Qt::StringLiterals;

class TstFrmUpdate : public QObject {
    Q_OBJECT
    Sandbox sb;
    QString updater;  // the stand-in in this program's folder
    QString marker;   // what the stand-in writes

    void writeStandIn(const QString &path)
    {
        QFile f(path);
        QVERIFY(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
        // Tells where it ran and with how many arguments.
        f.write(
            "#!/bin/sh\n{ pwd; echo \"$#\"; } > \"$QOR_TEST_UPDATER_MARK.tmp\"\n"
            "mv \"$QOR_TEST_UPDATER_MARK.tmp\" \"$QOR_TEST_UPDATER_MARK\"\n");
        f.close();
        QVERIFY(f.setPermissions(f.permissions() | QFileDevice::ExeOwner | QFileDevice::ExeUser));
    }

private slots:
    void initTestCase()
    {
        updater = QCoreApplication::applicationDirPath() + u"/q-autoup"_s;
        marker = sb.dir.filePath(u"updater-ran"_s);
        qputenv("QOR_TEST_UPDATER_MARK", marker.toLocal8Bit());
        qputenv("XDG_CACHE_HOME", (sb.dir.path() + u"/cache"_s).toLocal8Bit());
    }
    void init()
    {
        writeDatabase(sb.db, {{1, u"Ann"_s, u"Lee"_s}});
        QFile::remove(marker);
        QFile::remove(updater);
    }
    void cleanupTestCase() { QFile::remove(updater); }

    // A fixed form; the main window refuses to close while it shows.
    void refusedWhileShownThenDownload()
    {
        auto w = openWindow(2);
        writeStandIn(updater);
        settings::LastClicked.set(0);
        FrmUpdate *shown = FrmUpdate::showFor(w.get());
        QVERIFY(shown->minimumSize() == shown->maximumSize() &&
                !(shown->windowFlags() & (Qt::WindowMinimizeButtonHint | Qt::WindowMaximizeButtonHint)));
        QCOMPARE(FrmUpdate::showFor(w.get()), shown);  // one form
        w->showDatabaseChanged(true);
        Answerer a;
        QVERIFY(!w->close() && w->isVisible() && FrmUpdate::isShowing());
        QVERIFY(a.seen().isEmpty());  // refused before the question about changes
        QCOMPARE(settings::LastClicked.stored(), u"2"_s);

        // Closed by the user: no updater, no stored place, and the window closes as usual.
        QPointer<FrmUpdate> f = FrmUpdate::existing();
        QVERIFY(f->close());
        QTRY_VERIFY(!f);
        QVERIFY(w->isVisible() && settings::FormLeft.stored(u"frmUpdate"_s).isEmpty());
        QTest::qWait(200);
        QVERIFY(!QFile::exists(marker));
        a.answer = QMessageBox::No;
        QVERIFY(w->close() && a.seen().size() == 1);

        // DOWNLOAD without an updater: the rest happens all the same.
        QFile::remove(updater);
        w = openWindow(0);
        f = FrmUpdate::showFor(w.get());
        click(f->cmdDownload());
        QVERIFY(!w->isVisible());
        QTRY_VERIFY(!f);

        writeStandIn(updater);
        w = openWindow(0);
        FrmUpdate::showFor(w.get())->move(300, 200);
        f = FrmUpdate::existing();
        click(f->cmdDownload());
        QVERIFY(!w->isVisible() && a.seen().size() == 1);  // closed; nothing changed: no question
        QTRY_VERIFY(!f);
        QTRY_VERIFY(QFile::exists(marker));
        QFile m(marker);
        QVERIFY(m.open(QIODevice::ReadOnly));
        const QStringList lines = QString::fromLocal8Bit(m.readAll()).split(u'\n', Qt::SkipEmptyParts);
        QCOMPARE(lines, (QStringList{QFileInfo(QCoreApplication::applicationDirPath()).canonicalFilePath(), u"0"_s}));
        QCOMPARE(settings::FormWindowState.stored(u"frmUpdate"_s) + u' ' + settings::FormLeft.stored(u"frmUpdate"_s),
                 u"0 "_s + QString::number(qRound(pxToTwips(300))));

        // Unsaved changes, and Cancel: the main window stays, the updater runs all the same.
        QFile::remove(marker);
        w = openWindow(0);
        w->showDatabaseChanged(true);
        f = FrmUpdate::showFor(w.get());
        a.answer = QMessageBox::Cancel;
        click(f->cmdDownload());
        QVERIFY(a.seen().size() == 2 && a.last().text.startsWith(u"Your database has changed."_s) && w->isVisible());
        QTRY_VERIFY(!f);
        QTRY_VERIFY(QFile::exists(marker));

        // The link on the Options panel runs the check again: a port nobody listens on any more.
        QTcpServer gone;
        QVERIFY(gone.listen(QHostAddress::LocalHost));
        qputenv(VersionUrlVariable, "https://127.0.0.1:" + QByteArray::number(gone.serverPort()) + "/qorver.txt");
        gone.close();
        w->cmdTabClick(5);
        a.answer = QMessageBox::Ok;
        QTest::mouseClick(w->panel(5)->controlWidget(u"lblCheckForNewVersion"_s), Qt::LeftButton);
        QTRY_COMPARE(a.seen().size(), 3);
        QCOMPARE(a.last().text, unableToConnectText());
        qunsetenv(VersionUrlVariable);
        discard(w);
    }

    void noSearchOfPath()
    {
        // An updater found only along PATH is never run.
        QTemporaryDir onPath, empty;
        writeStandIn(onPath.filePath(u"q-autoup"_s));
        const QByteArray oldPath = qgetenv("PATH");
        qputenv("PATH", onPath.path().toLocal8Bit() + ':' + oldPath);
        QVERIFY(updaterPath(empty.path()) == empty.path() + u"/q-autoup"_s && !startUpdater(empty.path()));
        qputenv("PATH", oldPath);
        QTest::qWait(200);
        QVERIFY(!QFile::exists(marker));
        QVERIFY(startUpdater(onPath.path()));
        QTRY_VERIFY(QFile::exists(marker));
    }
};

QTEST_MAIN(TstFrmUpdate)
#include "tst_frmupdate.moc"
