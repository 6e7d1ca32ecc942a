// One running copy per user: the guard, a lock left by a dead process, and
// two real processes of the program sharing one user's folders.
#include "shell/frmqor.h"
#include "shell/settingsstore.h"

#include <QProcess>
#include <QSysInfo>
#include <QTemporaryDir>
#include <QtTest>

using namespace qor;

static QByteArray fileBytes(const QString &path) {
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

class TstStartup : public QObject {
    Q_OBJECT
    QTemporaryDir m_dir;

private slots:
    void initTestCase() {
        QVERIFY(m_dir.isValid());
        for (const char *var : {"XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_DATA_HOME"})
            qputenv(var, (m_dir.path() + '/' + var).toLocal8Bit());
    }

    void guard() {
        QVERIFY(SingleInstanceGuard::lockPath().startsWith(m_dir.path()));
        {
            SingleInstanceGuard first;
            QVERIFY(first.isFirstInstance());
            SingleInstanceGuard second, third;  // a refused guard takes nothing away
            QVERIFY(!second.isFirstInstance());
            QVERIFY(!third.isFirstInstance());
        }
        QVERIFY(SingleInstanceGuard().isFirstInstance());  // released at the end

        // A lock left behind by a process that has ended, as after a crash.
        QProcess gone;
        gone.start(QStringLiteral("true"), {});
        QVERIFY(gone.waitForStarted());
        const qint64 deadPid = gone.processId();
        QVERIFY(gone.waitForFinished() && deadPid > 0);
        QFile lock(SingleInstanceGuard::lockPath());
        QVERIFY(lock.open(QIODevice::WriteOnly | QIODevice::Truncate));
        lock.write(QByteArray::number(deadPid) + '\n' + QCoreApplication::applicationName().toUtf8() + '\n' +
                   QSysInfo::machineHostName().toUtf8() + '\n');
        lock.close();
        QVERIFY(SingleInstanceGuard().isFirstInstance());
    }

    void secondProcessTouchesNothing() {
        const QString binary = QStringLiteral(QORVANE_BINARY);
        const QString db = m_dir.path() + QStringLiteral("/proc-test.xml");
        settings::write(QStringLiteral("FileHandling"), QStringLiteral("DatabasePath"), db);
        settings::sync();
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));

        QProcess first, second;
        first.setProcessEnvironment(env);
        second.setProcessEnvironment(env);
        first.start(binary, {});
        QVERIFY(first.waitForStarted());
        QTRY_VERIFY_WITH_TIMEOUT(QFileInfo::exists(db), 20000);  // made by the first copy's load
        QTest::qWait(500);
        const QByteArray dbBefore = fileBytes(db), storeBefore = fileBytes(settings::storePath());
        const QDateTime dbTime = QFileInfo(db).lastModified();
        const QDateTime storeTime = QFileInfo(settings::storePath()).lastModified();

        second.start(binary, {});
        QVERIFY(second.waitForStarted());
        // Offscreen nobody answers its message, so it waits there.
        QVERIFY(!second.waitForFinished(2500));
        QCOMPARE(fileBytes(db), dbBefore);
        QCOMPARE(QFileInfo(db).lastModified(), dbTime);
        QCOMPARE(fileBytes(settings::storePath()), storeBefore);
        QCOMPARE(QFileInfo(settings::storePath()).lastModified(), storeTime);
        QCOMPARE(first.state(), QProcess::Running);
        // The lock still names the first copy.
        QCOMPARE(fileBytes(SingleInstanceGuard::lockPath()).split('\n').value(0).toLongLong(), first.processId());

        second.kill();
        first.kill();
        second.waitForFinished();
        first.waitForFinished();
    }
};

QTEST_MAIN(TstStartup)
#include "tst_startup.moc"
