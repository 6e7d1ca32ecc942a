// SPDX-License-Identifier: GPL-3.0-or-later
// The customer list's options window: read from the settings with their
// limits, every choice stored at once, the font dialog, and the print step.
#include "customers/frmprintcustomers.h"
#include "database/keyedlist.h"
#include "database/rowtypes.h"
#include "settings/settingsstore.h"
#include "uiservices/dialogservice.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

using namespace qor;
using namespace Qt::StringLiterals;

class KeySpy : public QObject {
public:
    int rights = 0;
    bool eventFilter(QObject *, QEvent *e) override
    {
        if (e->type() == QEvent::KeyPress && static_cast<QKeyEvent *>(e)->key() == Qt::Key_Right)
            ++rights;
        return false;
    }
};

class TstFrmPrintCustomers : public QObject {
    Q_OBJECT
    QTemporaryDir m_config;
    int m_round = 0;

    template <class T>
    static T *child(QWidget &w, const QString &name) { return w.findChild<T *>(name); }

private slots:
    void init()
    {
        const QString dir = m_config.filePath(u"run%1"_s.arg(++m_round));
        QVERIFY(QDir().mkpath(dir));
        qputenv("XDG_CONFIG_HOME", dir.toUtf8());
    }

    void opensFromSettingsWithLimits()
    {
        settings::Columns.store(u"9"_s);
        settings::BlankLinesBetween.store(u"7"_s);
        settings::PrintEmail.store(u"FALSE"_s);
        settings::PrintFontStyleSize.store(u"Bold 11"_s);
        KeyedList t;
        QWidget owner;
        owner.setGeometry(100, 100, 800, 600);
        FrmPrintCustomers f(t, &owner);
        QVERIFY(f.isModal());
        QCOMPARE(f.minimumSize(), f.maximumSize());
        QCOMPARE(f.geometry().center(), owner.frameGeometry().center());
        const pages::CustomerListOptions o = f.options();
        QCOMPARE(QStringList({o.pageTitle, QString::number(o.columns), QString::number(o.blankLines), o.fontName,
                              o.fontStyleSize}),
                 QStringList({"Customer List", "3", "1", "Arial", "Bold 11"}));
        QCOMPARE(QList<bool>({o.printAddress, o.printEmail, o.printPhone, o.printNotes, o.printPageNumbers}),
                 QList<bool>({true, false, true, true, true}));
        QCOMPARE(QList<int>(
                     {child<QComboBox>(f, u"cmbColumns"_s)->count(), child<QComboBox>(f, u"cmbBlankLines"_s)->count()}),
                 QList<int>({4, 5}));
        QVERIFY(child<QPushButton>(f, u"cmdPrint"_s)->isDefault());
        // A rule is sunken: its upper line in the shadow colour, the lower in the light.
        QList<QColor> rules;
        for (auto *line : f.findChildren<QFrame *>(Qt::FindDirectChildrenOnly))
            if (line->metaObject() == &QFrame::staticMetaObject) rules << line->palette().color(QPalette::Window);
        QCOMPARE(rules.mid(0, 2), (QList<QColor>{f.palette().color(QPalette::Dark), f.palette().color(QPalette::Light)}));
        QCOMPARE(settings::Columns.stored(), u"9"_s);  // opening stored nothing over it
    }

    void choicesStoredAtOnce()
    {
        KeyedList t;
        FrmPrintCustomers f(t, nullptr);
        KeySpy spy;
        f.show();
        QVERIFY(QTest::qWaitForWindowExposed(&f));
        auto *columns = child<QComboBox>(f, u"cmbColumns"_s);
        columns->setFocus();
        columns->installEventFilter(&spy);
        columns->setCurrentIndex(3);
        emit columns->activated(3);
        QCOMPARE(settings::Columns.stored(), u"4"_s);
        auto *blank = child<QComboBox>(f, u"cmbBlankLines"_s);
        blank->setCurrentIndex(0);
        emit blank->activated(0);
        QCOMPARE(settings::BlankLinesBetween.stored(), u"0"_s);
        QCoreApplication::processEvents();
        QCOMPARE(spy.rights, 2);  // {RIGHT} after each pick

        child<QCheckBox>(f, u"chkPCL(4)"_s)->click();
        QCOMPARE(settings::PrintPageNumbers.stored(), u"False"_s);
        child<QCheckBox>(f, u"chkPCL(4)"_s)->click();
        QCOMPARE(settings::PrintPageNumbers.stored(), u"True"_s);
        QTest::keyClicks(child<QLineEdit>(f, u"txtPageTitle"_s), u" & Co"_s);
        QCOMPARE(settings::PageTitle.stored(), u"Customer List & Co"_s);
        // The font dialog's choice, whole points; a cancel changes nothing.
        ScriptedDialogs dialogs;
        QFont chosen(u"DejaVu Serif"_s);
        chosen.setPointSizeF(10.4);
        chosen.setBold(true);
        chosen.setItalic(true);
        dialogs.nextFonts.push_back(chosen);
        f.cmdChangeFontClick();
        QCOMPARE(settings::PrintFontName.stored() + u'|' + settings::PrintFontStyleSize.stored(),
                 u"DejaVu Serif|Bold Italic 10"_s);
        f.cmdChangeFontClick();  // nothing more queued: cancelled
        QCOMPARE(f.options().fontName + u'|' + f.options().fontStyleSize, u"DejaVu Serif|Bold Italic 10"_s);
    }

    void printStep()
    {
        QList<pages::CustomerListOptions> asked;
        const auto print = [&](const pages::CustomerListOptions &o) {
            asked << o;
            return pages::PrintOutcome{pages::PrintStatus::Printed, {}, {}};
        };
        // No customers: the message, nothing printed, the window closes.
        KeyedList empty;
        ScriptedDialogs dialogs;
        {
            FrmPrintCustomers f(empty, nullptr);
            f.print = print;
            f.show();
            f.cmdPrintClick();
            QCOMPARE(asked.size(), 0);
            QCOMPARE(dialogs.messages().size(), 1);
            QCOMPARE(dialogs.messages().last().message.text, u"There are no customers to print!"_s);
            QVERIFY(!f.isVisible());
        }
        // Customers: the options as they stand go out once; the window stays
        // a second and then closes.
        KeyedList t;
        t.add(u"1k"_s, CustomerRow{u"Lee, Ann"_s}.text());
        FrmPrintCustomers f(t, nullptr);
        f.print = print;
        child<QLineEdit>(f, u"txtPageTitle"_s)->setText(u"Route 7"_s);
        f.show();
        child<QPushButton>(f, u"cmdPrint"_s)->click();
        child<QPushButton>(f, u"cmdPrint"_s)->click();  // while closing: no second print
        QCOMPARE(asked.size(), 1);
        QCOMPARE(asked[0].pageTitle, u"Route 7"_s);
        QVERIFY(f.isVisible() && f.closeTimer()->isActive() && f.closeTimer()->isSingleShot());
        f.finishPrint();
        QVERIFY(!f.isVisible());
        QCOMPARE(f.result(), int(QDialog::Accepted));
    }
};

QTEST_MAIN(TstFrmPrintCustomers)
#include "tst_frmprintcustomers.moc"
