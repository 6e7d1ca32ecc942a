// SPDX-License-Identifier: GPL-3.0-or-later
// The developer view: opened from the logo only when the settings say so; the
// rows of the four tables as text; a snapshot that doesn't follow changes; the
// database file handed to the desktop; its size rule and stored place.
#include "../customers/panelharness.h"
#include "database/database.h"
#include "maintenance/frmlistlvws.h"
#include "maintenance/tablesnapshot.h"
#include "uiservices/formposition.h"
#include "uiservices/twips.h"

#include "shell/panel.h"
#include "tablesedit.h"

#include <QDesktopServices>
#include <QRadioButton>
#include <QTreeView>

using namespace qor;
using namespace qor::maintenance;
using namespace qor::testing;
using namespace Qt::StringLiterals;

// Receives what the view hands to the desktop.
class Opener : public QObject {
    Q_OBJECT
public:
    QList<QUrl> opened;
public slots:
    void open(const QUrl &url) { opened << url; }
};

class TstDevView : public QObject {
    Q_OBJECT
    Sandbox sb;

    static QLabel *logo(FrmQOR &w) { return w.findChild<QLabel *>(u"picLogo"_s); }
    static QStringList lines(const QString &text)
    {
        QStringList l = text.split(u"\r\n"_s);
        if (!l.isEmpty() && l.last().isEmpty()) l.removeLast();
        return l;
    }
    static void closeView()
    {
        if (QPointer<FrmListLVWs> v = FrmListLVWs::existing()) {
            v->close();
            QTRY_VERIFY(!v);
        }
    }

private slots:
    void init()
    {
        writeDatabase(sb.db, {{1, u"Ann"_s, u"Lee"_s}, {2, u"Bob"_s, u"Moss"_s}},
                      {{5, u"Midget Widget"_s, u"5"_s}}, {{2, {u"5"_s}}});
    }
    void cleanup() { closeView(); }

    void rowsOfEachTableThenTheLogo()
    {
        auto w = openWindow(0);
        QString path = sb.dir.filePath(u"missing.xml"_s);
        FrmListLVWs *v = FrmListLVWs::open(w.get(), w->db(), [&path] { return path; });
        const QString sep(FieldSep);
        QVERIFY(v->optLVWChoice(0)->isChecked());
        for (int i = 0; i < 4; ++i)  // captions not cut
            QVERIFY(v->optLVWChoice(i)->sizeHint().width() <= v->optLVWChoice(i)->width());

        QCOMPARE(v->text2(), u"Last, First | First | Last | Add1 | Add2 | Add3 | Email | Phone | Notes ...key=1k"_s);
        QVERIFY(v->text1().endsWith(u"\r\n"_s));
        QStringList l = lines(v->text1());
        QCOMPARE(l.size(), 2);
        QVERIFY(l[0].startsWith(u"Lee, Ann"_s + sep + u"Ann"_s + sep + u"Lee"_s + sep) && l[0].endsWith(u" ...key=1k"_s));
        QVERIFY(l[1].startsWith(u"Moss, Bob"_s) && l[1].endsWith(u" ...key=2k"_s));
        QVERIFY(v->rows()->rowCount() == 2 && v->rows()->data(v->rows()->index(1), Qt::DisplayRole).toString() == l[1]);

        v->optLVWChoice(1)->click();
        QCOMPARE(v->text2(), u"PStart(Chrono) | BPName | PEnd(Chrono) | BillDue(Chrono) ...key=BPName | "_s);
        QCOMPARE(lines(v->text1()), QStringList{u"2024/01/01"_s + sep + u"Jan"_s + sep + u"2024/01/31"_s + sep +
                                                u"2024/02/15 ...key=Jan"_s + sep});

        v->optLVWChoice(2)->click();
        QVERIFY(lines(v->text1()).value(0).endsWith(u"Midget Widget ...key=5k"_s));
        v->optLVWChoice(3)->click();
        l = lines(v->text1());
        QVERIFY(l.size() == 1 && l[0].startsWith(u"Jan"_s + sep + u"Moss, Bob"_s + sep + u"2"_s + sep));

        // A snapshot: a change shows once its table is chosen again; a table without rows shows nothing.
        {
            qor::test::TablesEdit tables(w->db());
            tables.customers.add(u"7k"_s, u"Aardvark, Al"_s);
            tables.invoiceRecords.clear();
        }
        v->optLVWChoice(3)->click();  // already on: no click
        QCOMPARE(lines(v->text1()), l);
        v->optLVWChoice(0)->click();
        QCOMPARE(lines(v->text1()).value(0), u"Aardvark, Al ...key=7k"_s);
        v->optLVWChoice(3)->click();
        QVERIFY(v->text1().isEmpty() && v->rows()->rowCount() == 0 && v->text2().startsWith(u"BPName | "_s));

        // The size rule.
        v->resize(50, 40);
        QCOMPARE(QSize(qRound(formWidthTwips(v) / 15) * 15, qRound(formHeightTwips(v) / 15) * 15),
                 QSize(4815, 3645));  // held at the least size
        v->resize(v->width() + 100, v->height() + 60);
        QTRY_COMPARE(v->textBox1()->width(), twipsToPx(formWidthTwips(v) - 360));
        QVERIFY(v->textBox1()->height() == twipsToPx(formHeightTwips(v) - 1230) &&
                v->textBox2()->width() == v->textBox1()->width());
        QCOMPARE(v->textBox1()->geometry().topLeft(), QPoint(twipsToPx(120), twipsToPx(960)));
        // Show XML hands nothing over for a file that isn't there, nor for a folder.
        QVERIFY(!v->cmdShowXMLClick());
        path = sb.dir.path();
        QVERIFY(!v->cmdShowXMLClick());
        closeView();

        // The logo opens the view only when the settings say so.
        QCOMPARE(settings::BrowseView.stored(), u"lvwpeek"_s);  // written at every start
        for (const QString value : {u"LvwPeek"_s, u"lvwpeek "_s, u""_s}) {
            settings::BrowseView.set(value);
            QTest::mouseClick(logo(*w), Qt::LeftButton);
            QVERIFY2(!FrmListLVWs::existing(), qPrintable(value));
        }
        settings::BrowseView.store(u"lvwpeek"_s);
        QTest::mouseClick(logo(*w), Qt::RightButton);
        QVERIFY(!FrmListLVWs::existing());
        QTest::mouseClick(logo(*w), Qt::LeftButton);
        v = FrmListLVWs::existing();
        QVERIFY(v && v->isVisible() && !v->isModal() && v->parentWidget() == w.get() && w->isEnabled());

        // A second click brings nothing new: the loaded form keeps its choice and rows.
        v->optLVWChoice(2)->click();
        const QString before = v->text1();
        QTest::mouseClick(logo(*w), Qt::LeftButton);
        QVERIFY(FrmListLVWs::existing() == v && v->optLVWChoice(2)->isChecked() && v->text1() == before);
        // Show XML hands the desktop the file the Options panel shows.
        Opener opener;
        QDesktopServices::setUrlHandler(u"file"_s, &opener, "open");
        QTest::mouseClick(v->cmdShowXML(), Qt::LeftButton);
        QDesktopServices::unsetUrlHandler(u"file"_s);
        const QString shown = w->panel(5)->control<QLineEdit>(u"txtChangePath"_s)->text();
        QCOMPARE(opener.opened, QList<QUrl>{QUrl::fromLocalFile(shown)});

        // The main window unloads it when it closes, and it keeps its place.
        v->move(150, 90);
        QPointer<FrmListLVWs> gone = v;
        discard(w);
        QTRY_VERIFY(!gone);
        QCOMPARE(settings::FormLeft.stored(u"frmListLVWs"_s), QString::number(qRound(pxToTwips(150))));
        QVERIFY(!settings::FormWidth.stored(u"frmListLVWs"_s).isEmpty());
    }
};

QTEST_MAIN(TstDevView)
#include "tst_devview.moc"
