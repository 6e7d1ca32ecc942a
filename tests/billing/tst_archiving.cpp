// SPDX-License-Identifier: GPL-3.0-or-later
// frmChecking: the checking window of the deletes, owned by its main window:
// made on first use, reused while open, unloaded by OK, made again where it was.
#include "uiservices/frmchecking.h"

#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

using namespace qor;

class TestArchiving : public QObject {
    Q_OBJECT
    QTemporaryDir m_config;
    QWidget m_main;
private slots:
    void initTestCase() { qputenv("XDG_CONFIG_HOME", m_config.path().toLocal8Bit()); }

    void checkingWindow()
    {
        CheckingWindowSlot slot(&m_main);
        QVERIFY(!slot.window());
        FrmChecking *w = slot.show();
        QVERIFY(w->isVisible() && w->isWindow() && !w->cmdOK()->isEnabled());
        QCOMPARE(w->parentWidget(), &m_main);  // beside the main window, not blocking it
        QCOMPARE(w->windowModality(), Qt::NonModal);
        // The bar follows the check; an outcome ends it at 100, none tells nothing.
        w->setProgress(37.6f);
        w->showOutcome(QString());
        QCOMPARE(w->staChecking()->value(), 38);
        QCOMPARE(w->lblStatus()->text(), "Checking bill periods to see if deleted entry needs archiving . . .");
        w->showOutcome("archive");
        QCOMPARE(w->staChecking()->value(), 100);
        // A second delete while it is open uses the same window; OK stays enabled.
        w->enableOK();
        w->move(200, 150);
        QCOMPARE(slot.show(), w);
        QCOMPARE(slot.window(), w);
        QVERIFY(w->cmdOK()->isEnabled());
        // OK unloads it; the next one opens where it was, disabled again.
        QTest::mouseClick(w->cmdOK(), Qt::LeftButton);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(!slot.window());
        FrmChecking *again = slot.show();
        QVERIFY(!again->cmdOK()->isEnabled());
        QCOMPARE(again->pos(), QPoint(200, 150));
        again->close();
    }
};

QTEST_MAIN(TestArchiving)
#include "tst_archiving.moc"
