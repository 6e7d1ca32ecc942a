// SPDX-License-Identifier: GPL-3.0-or-later
// The common dialog object: what a new one starts with, what it remembers
// between runs, the file dialogs' bookkeeping (folders, files, filters,
// multiple selection), the font rules, colours, page setup, and the real Qt
// dialogs behind it, driven as a user would.
#include "uiservices/clsdialogs.h"

#include <QApplication>
#include <QColorDialog>
#include <QComboBox>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QLineEdit>
#include <QPointer>
#include <QSettings>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>

using namespace qor;
using namespace Qt::StringLiterals;

namespace {
// Drives a real modal dialog: once a D is the active modal window, act()
// fills it in and closes it. Whatever is modal after five seconds, or left
// open by act() for three, is rejected, so a failing test ends instead of
// waiting for a user.
template <class D>
void whenModal(std::function<void(D *)> act, bool *seen)
{
    auto *poll = new QTimer;
    QObject::connect(poll, &QTimer::timeout, [poll, act, seen, clock = QElapsedTimer()]() mutable {
        if (!clock.isValid()) clock.start();
        auto *d = qobject_cast<D *>(QApplication::activeModalWidget());
        if (!d && clock.elapsed() < 5000) return;
        poll->stop();
        poll->deleteLater();
        if (d) *seen = true, act(d);
        if (QPointer<QDialog> left = qobject_cast<QDialog *>(QApplication::activeModalWidget()))
            QTimer::singleShot(d ? 3000 : 0, [left] { if (left && left->isVisible()) left->reject(); });
    });
    poll->start(10);
}
}  // namespace

class TstClsDialogs : public QObject {
    Q_OBJECT
    QTemporaryDir dir;
    const QString NUL = QString(QChar(u'\0'));

    static QString readIni(const char *key)
    {
        QSettings ini(ClsDIALOGS::iniPath(), QSettings::IniFormat);
        return ini.value(u"DIALOGS/"_s + QLatin1String(key)).toString();
    }

private slots:
    void initTestCase() { qputenv("XDG_CONFIG_HOME", (dir.path() + u"/config"_s).toLocal8Bit()); }
    void init() { QFile::remove(ClsDIALOGS::iniPath()); }

    // Where a file dialog starts: never in the program's folder ("~": Documents).
    void startPath_data()
    {
        QTest::addColumn<QString>("suggested");
        QTest::addColumn<QString>("database");
        QTest::addColumn<QString>("expected");
        const QString books = dir.path() + u"/books"_s, db = books + u"/QOR.xml"_s, other = dir.path() + u"/config/"_s;
        const QString program = QCoreApplication::applicationDirPath();
        QTest::newRow("a name") << u"Jan invoices.pdf"_s << db << books + u"/Jan invoices.pdf"_s;
        QTest::newRow("a folder used before") << other << db << other;
        QTest::newRow("the program's") << program + u"/Out.txt"_s << db << books + u"/Out.txt"_s;
        QTest::newRow("a folder gone") << dir.path() + u"/gone/"_s << db << books;
        QTest::newRow("no database") << u"a.pdf"_s << dir.path() + u"/gone/QOR.xml"_s << u"~/a.pdf"_s;
    }
    void startPath()
    {
        QFETCH(QString, suggested);
        QFETCH(QString, database);
        QFETCH(QString, expected);
        QVERIFY(QDir().mkpath(dir.path() + u"/books"_s) && QDir().mkpath(dir.path() + u"/config"_s));
        QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
        if (!QFileInfo(documents).isDir()) documents = QDir::homePath();
        DialogService::setDatabaseFile(database);
        QCOMPARE(DialogService::startPath(suggested), expected.replace(u"~"_s, documents));
    }

    void rememberedBetweenRuns()
    {
        QVERIFY(ClsDIALOGS::iniPath().startsWith(dir.path() + u"/config/QOR/"_s));
        {
            ClsDIALOGS first;
            QCOMPARE(&ClsDIALOGS::current(), &first);
            // No folder yet: the dialog service decides when a dialog opens; the first filter.
            QCOMPARE(first.strInitialDir() + first.strLastOpenFolder() + first.strLastSaveFolder(), QString());
            QCOMPARE(first.lngLastOpenFilter() + first.lngLastSaveFilter(), 2);
            ScriptedDialogs answers;
            answers.nextFileNames = {u"/srv/books/Out.txt"_s, u"/home/u/In.bat"_s};
            answers.nextFilterIndexes = {6, 2};
            QCOMPARE(first.strGetSaveFileName(), u"/srv/books/Out.txt"_s);
            QCOMPARE(answers.last().file.filterIndex, 1);
            QCOMPARE(first.strGetOpenFileName(), u"/home/u/In.bat"_s);
            QVERIFY(!QFile::exists(ClsDIALOGS::iniPath()));  // written only at the end
        }
        QCOMPARE(QStringList({readIni("LastSaveDir"), readIni("LastSaveFilter"), readIni("InitialDir")}),
                 QStringList({u"/srv/books/"_s, u"6"_s, u"/home/u/"_s}));

        ClsDIALOGS second;
        QCOMPARE(QStringList({second.strLastSaveFolder(), second.strLastSaveFile(), second.strLastOpenFolder(),
                              second.strLastOpenFile()}),
                 QStringList({u"/srv/books/"_s, u"/srv/books/Out.txt"_s, u"/home/u/"_s, u"/home/u/In.bat"_s}));
        QCOMPARE(QPair(second.lngLastSaveFilter(), second.lngLastOpenFilter()), QPair(6, 2));
        ScriptedDialogs answers;
        second.setStrInitialDir(QString());  // the folder of the last use
        second.strGetSaveFileName();
        QVERIFY(answers.last().file.folder == u"/srv/books/" && answers.last().file.filterIndex == 6);

        // Switched off after creation: nothing is written at the end.
        const QByteArray before = [] { QFile f(ClsDIALOGS::iniPath()); f.open(QIODevice::ReadOnly); return f.readAll(); }();
        {
            ClsDIALOGS third;
            third.setBlnUsePersistence(false);
            answers.nextFileNames = {u"/tmp/elsewhere/x"_s};
            third.strGetOpenFileName();
        }
        QFile f(ClsDIALOGS::iniPath());
        QVERIFY(f.open(QIODevice::ReadOnly) && f.readAll() == before);
    }

    void cancelFiltersAndSeveralFiles()
    {
        ClsDIALOGS d(false);
        ScriptedDialogs answers;
        answers.nextFileNames = {u"/data/a.xml"_s};
        d.strGetSaveFileName();
        d.setStrInitialDir(u"/elsewhere"_s);
        QCOMPARE(d.strGetSaveFileName(), QString());  // cancelled
        QCOMPARE(d.strInitialDir() + d.strLastSaveFile(), u"/data//data/a.xml"_s);
        QVERIFY(d.lngDialogError() == 0 && answers.messages().isEmpty());  // a plain cancel is not told

        d.setStrFilter(u"Text (*.txt)|*.txt|"_s);  // the bar's NUL, then two more
        QCOMPARE(d.filterList(), u"Text (*.txt)"_s + NUL + u"*.txt"_s + NUL + NUL + NUL);
        d.setStrFilter(u"Pictures|*.png;*.jpg"_s + NUL + NUL);
        QCOMPARE(d.filterList(), u"Pictures"_s + NUL + u"*.png;*.jpg"_s + NUL + NUL);
        QCOMPARE(d.dialogFilters(), QStringList{u"Pictures (*.png *.jpg)"_s});

        // Alone: the full name; allowing several, the name in its folder and a count.
        for (bool several : {false, true}) {
            d.setBlnAllowMultipleFileSelect(several);
            answers.nextFileNames = {u"/d/one.txt"_s};
            QCOMPARE(d.strGetOpenFileName(), u"/d/one.txt"_s);
            QCOMPARE(d.strLastOpenFile(), several ? u"one.txt"_s : u"/d/one.txt"_s);
            QCOMPARE(d.lngNumFilesSelected(), several ? 1 : 0);
        }
        QVERIFY(answers.last().file.multiple && answers.last().file.mustExist);

        answers.nextFileSelections = {{u"/d/a.txt"_s, u"/d/b.txt"_s}, {u"/a"_s, u"/b"_s, u"/c"_s}};
        QCOMPARE(d.strGetOpenFileName(), u"a.txt"_s + NUL + u"b.txt"_s + NUL + NUL);
        QVERIFY(d.lngNumFilesSelected() == 2 && d.strLastOpenFolder() == u"/d/" &&
                d.fstrReturnSingleFileName(1) == u"/d/b.txt");
        // The root keeps its one separator; the names of the earlier choice go.
        d.strGetOpenFileName();
        QVERIFY(d.lngNumFilesSelected() == 3 && d.strLastOpenFolder() == u"/");
        QCOMPARE(QStringList({d.fstrReturnSingleFileName(0), d.fstrReturnSingleFileName(2),
                              d.fstrReturnSingleFileName(3), d.fstrReturnSingleFileName(256)}),
                 QStringList({u"/a"_s, u"/c"_s, QString(), QString()}));
    }

    void fontColourPageSetupAndFolder()
    {
        ClsDIALOGS d(false);
        ScriptedDialogs answers;
        QFont tiny(u"DejaVu Sans"_s);
        tiny.setPointSizeF(0.5);
        QFont bigBoldItalic(u"DejaVu Serif"_s, -1, QFont::Bold, true);
        bigBoldItalic.setPointSizeF(11.6);
        QFont styled(u"DejaVu Sans"_s, 9);
        styled.setStyleName(u"Condensed"_s);
        answers.nextFonts = {tiny, bigBoldItalic, styled, std::nullopt};

        // Size (under one point: 10), face, style text, bold, italic; both: the
        // italic wins the text; a style text from the dialog reads "Regular" and
        // leaves the two flags; a cancel leaves everything.
        auto chosen = [&d] {
            return u"%1 %2 %3 %4%5"_s.arg(d.lngFontSize())
                .arg(d.strFontFaceName(), d.strFontStyle())
                .arg(d.blnIsFontBold())
                .arg(d.blnIsFontItalic());
        };
        for (const char *expected : {"10 DejaVu Sans  00", "12 DejaVu Serif Italic 11", "9 DejaVu Sans Regular 11"}) {
            QVERIFY(d.blnChooseFont());
            QCOMPARE(chosen(), QString::fromLatin1(expected));
            if (d.lngFontSize() == 12) QCOMPARE(d.lngFontType(), 256 | 512);
        }
        QVERIFY(!d.blnChooseFont());
        QCOMPARE(d.lngFontSize(), 9);

        answers.nextColors = {QColor(255, 0, 0), std::nullopt};
        QCOMPARE(d.lngChooseColor(0x00FF00), 0x0000FF);
        QVERIFY(d.lngChooseColor(0x00FF00) == -1 && d.lngColor() == 0x0000FF);  // a cancel leaves it

        answers.nextPageSetups = {DialogService::PageSetup{8268, 11693, QMargins(400, 300, 600, 700)}, std::nullopt};
        QVERIFY(d.blnPageSetup());
        QCOMPARE(QList<int>({d.lngPaperWidth(), d.lngPaperHeight(), d.intLeftMargin(), d.intTopMargin(),
                             d.intRightMargin(), d.intBottomMargin(), d.intMinMarginLeft()}),
                 QList<int>({8268, 11693, 400, 300, 600, 700, 250}));
        QVERIFY(!d.blnPageSetup() && d.lngPaperWidth() == 8268);

        answers.nextPrintAnswers = {true, false};
        QVERIFY(d.blnPrintDialog() && !d.blnPrintDialog());
        answers.nextFolders = {u"/srv"_s};
        QVERIFY(d.fstrBrowseForFolder(nullptr) == u"/srv" && answers.last().title == u"Select Folder");
        QCOMPARE(d.fstrBrowseForFolder(nullptr), QString());
    }

    // The real dialogs, as a user fills them in.
    void realDialogs()
    {
        ClsDIALOGS d(false);
        const QString folder = dir.path() + u"/real"_s;
        QVERIFY(QDir().mkpath(folder));
        d.setStrInitialDir(folder);
        d.setStrFilter(u"Harnwick QOR Database (*.xml)|*.xml|Text Files (*.TXT)|*.TXT"_s);
        d.setStrTitle(u"Keep it"_s);
        bool seen = false;
        whenModal<QFileDialog>([&](QFileDialog *f) {
            QCOMPARE(f->windowTitle(), u"Keep it"_s);
            QVERIFY(f->testOption(QFileDialog::DontUseNativeDialog));
            QCOMPARE(QDir(f->directory()).canonicalPath(), QDir(folder).canonicalPath());
            QCOMPARE(f->selectedNameFilter(), u"Harnwick QOR Database (*.xml)"_s);
            f->findChild<QComboBox *>(u"fileTypeCombo"_s)->setCurrentIndex(1);
            auto *name = f->findChild<QLineEdit *>(u"fileNameEdit"_s);
            QVERIFY(name);
            QTest::keyClicks(name, u"typed.txt"_s);
            QTest::keyClick(name, Qt::Key_Return);
        },
                               &seen);
        QCOMPARE(d.strGetSaveFileName(), folder + u"/typed.txt"_s);
        QVERIFY(seen && d.lngLastSaveFilter() == 2 && d.strInitialDir() == folder + u"/"_s);

        // The colour dialog starts from the given colour with the object's custom colours.
        seen = false;
        whenModal<QColorDialog>([&](QColorDialog *c) {
            QCOMPARE(c->currentColor(), QColor(0, 0, 255));
            QCOMPARE(QColorDialog::customColor(4), QColor(255, 255, 0));
            c->setCurrentColor(QColor(10, 20, 30));
            c->accept();
        },
                                &seen);
        QVERIFY(d.lngChooseColor(0xFF0000) == (10 | (20 << 8) | (30 << 16)) && seen);
    }
};

QTEST_MAIN(TstClsDialogs)
#include "tst_clsdialogs.moc"
