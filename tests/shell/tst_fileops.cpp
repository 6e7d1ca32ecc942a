// SPDX-License-Identifier: GPL-3.0-or-later
// The database file as a whole, through the window: New, Open, Save As,
// abandoning changes and closing the books, with the file dialogs answered
// in advance.
#include "../customers/panelharness.h"
#include "billperiods/billperiodpanel.h"
#include "customers/customerpanel.h"
#include "database/filelock.h"
#include "database/money.h"
#include "printing/printingpanel.h"
#include "shell/instancechannel.h"
#include "shell/optionspanel.h"
#include "shell/panel.h"
#include "uiservices/clsdialogs.h"
#include "uiservices/hovercommand.h"

#include <QListWidget>

#include <QComboBox>
#include <QDirIterator>
#include <QProcess>
#include <QRegularExpression>

using namespace qor;
using namespace qor::testing;
using namespace Qt::StringLiterals;

class TstFileOps : public QObject {
    Q_OBJECT
    Sandbox sb;
    std::unique_ptr<FrmQOR> w;
    std::unique_ptr<ScriptedDialogs> answers;
    std::unique_ptr<ClsDIALOGS> dialogs;

    QString at(const QString &name) const { return sb.dir.path() + u'/' + name; }
    QAbstractButton *button(const QString &name) { return w->panel(5)->control<QAbstractButton>(name); }
    void pathButton(int i) { click(button(u"cmdChangePath(%1)"_s.arg(i))); }
    // The file in the settings, when the Options panel shows the same one.
    QString where()
    {
        const QString shown = w->panel(5)->control<QLineEdit>(u"txtChangePath"_s)->text();
        return settings::databasePath() == shown ? shown : settings::databasePath() + u" but shown "_s + shown;
    }
    QLineEdit *company(int i) { return w->panel(6)->control<QLineEdit>(u"txtCompanyDetails(%1)"_s.arg(i)); }
    static QByteArray bytes(const QString &path)
    {
        QFile f(path);
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray("(missing)");
    }
    static std::unique_ptr<Database> readBack(const QString &path)
    {
        auto db = std::make_unique<Database>();
        db->read(path, Database::MissingFile::Reject);
        db->fillInvoiceRecordNames();
        return db;
    }
    QStringList recoveryCopies() const
    {
        return QDir(sb.dir.path()).entryList({u"*.unsaved-*"_s}, QDir::Files, QDir::Name);
    }
    void addCustomer(const QString &first)
    {
        w->cmdTabClick(0);
        auto *add = w->customerPanel()->control<QAbstractButton>(u"cmdAddNew"_s);
        click(add);
        QTest::keyClicks(w->customerPanel()->controlWidget(u"txtField(0)"_s), first);
        click(add);
        w->cmdTabClick(5);
    }

private slots:
    void init()
    {
        writeDatabase(sb.db, {{1, u"Ann"_s, u"Lee"_s}, {2, u"Bob"_s, u"Moss"_s}, {3, u"Old"_s, u"Gone"_s, false}},
                      {{1, u"Mowing"_s, u"10"_s}, {2, u"Raking"_s, u"5"_s, false}},
                      {{1, {u"1"_s}}, {2, {u"1"_s, u"1"_s}}});
        settings::DatabasePath.set(sb.db);
        settings::DontShowExplanationOfClosingBooks.set(false);
        dialogs = std::make_unique<ClsDIALOGS>(false);
        answers = std::make_unique<ScriptedDialogs>();
        w = openWindow(5);
    }
    void cleanup()
    {
        discard(w);
        answers.reset();
        dialogs.reset();
        for (const QString &f : QDir(sb.dir.path()).entryList(QDir::Files)) QFile::remove(at(f));
    }

    // A second start hands its file over the local socket; the running window
    // opens it after the usual question about unsaved changes.
    void secondStartHandsOverItsFile()
    {
        InstanceChannel channel;
        const QString name = sb.dir.path() + u"/runtime/qorvane-test.socket"_s;
        QVERIFY(channel.listen(name));
        connect(&channel, &InstanceChannel::requested, w.get(), &FrmQOR::openRequested);
        writeDatabase(at(u"Other.xml"_s), {{1, u"Zed"_s, u"Other"_s}});
        QDir::setCurrent(sb.dir.path());  // a relative name is the sender's
        company(0)->setText(u"Unsaved Co"_s);
        answers->nextAnswers = {QMessageBox::Cancel, QMessageBox::Discard};
        for (int attempt = 0; attempt < 2; ++attempt) {
            QVERIFY(InstanceChannel::handOver(u"Other.xml"_s, name));
            QTRY_COMPARE(answers->messages().size(), attempt + 1);
            const DialogService::Message asked = answers->messages().last().message;
            QVERIFY(asked.text.contains(u"not saved"_s) &&
                    asked.buttons == (QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel));
        }
        QTRY_COMPARE(w->session().path(), at(u"Other.xml"_s));
        QVERIFY(w->windowTitle() == u"[*]Other.xml \u2014 Qorvane" && w->customerPanel()->rowCount() == 1);
        QVERIFY(!InstanceChannel::handOver({}, name + u"-none"_s, 200));  // nobody listening
    }

    // Save As: the dialog, a failure told, the question before replacing
    // another file; the Options panel and the save button follow.
    void saveAs()
    {
        const QByteArray original = sb.fileBytes();
        company(0)->setText(u"Renamed Co"_s);
        answers->nextFileNames = {at(u"Books"_s), at(u"no-such-folder/Lost"_s), sb.db};
        answers->nextAnswers = {QMessageBox::No};
        pathButton(3);
        QCOMPARE(answers->last().file.filters.value(0) + u' ' + answers->last().title,
                 u"Harnwick QOR Database (*.xml) Save Current Database under a New Name"_s);
        QVERIFY(where() == at(u"Books.xml"_s) && !w->databaseChanged() && w->cmdSave()->isHidden());
        company(1)->setText(u"Only in memory"_s);
        pathButton(3);
        QVERIFY(answers->last().message.icon == QMessageBox::Critical && w->databaseChanged());
        // Onto a file that exists: Yes or No, No the default; No keeps that file.
        pathButton(3);
        QCOMPARE(answers->seen[1].folder, sb.dir.path() + u'/');  // where the last dialog ended
        QCOMPARE(QPair(answers->last().message.buttons, answers->last().message.defaultButton),
                 QPair(QMessageBox::Yes | QMessageBox::No, QMessageBox::No));
        QVERIFY(sb.fileBytes() == original && where() == at(u"Books.xml"_s));
    }

    // New drops unsaved work only after a safety copy beside the file that
    // reads back with the change, which the Options panel then shows; the
    // panels follow the new books, and Open brings the old ones back.
    void newAndOpen()
    {
        addCustomer(u"Cara"_s);
        const QByteArray original = sb.fileBytes();
        QVERIFY(w->optionsPanel()->recoveryCopyLine()->isHidden());
        answers->nextAnswers = {QMessageBox::Discard};
        answers->nextFileNames = {at(u"Fresh"_s), sb.db};
        pathButton(0);
        const QStringList copies = recoveryCopies();
        QVERIFY2(copies.size() == 1 &&
                     QRegularExpression(u"^QOR\\.xml\\.unsaved-\\d{8}-\\d{6}$"_s).match(copies[0]).hasMatch(),
                 qPrintable(copies.join(u' ')));
        QCOMPARE(readBack(at(copies[0]))->customers().count(), 4);
        const QLabel *line = w->optionsPanel()->recoveryCopyLine();
        QVERIFY(line->isVisible() && line->toolTip().endsWith(copies[0]));
        QVERIFY(where() == at(u"Fresh.xml"_s) && sb.fileBytes() == original);
        QVERIFY(w->customerPanel()->rowCount() == 0 && company(0)->text().isEmpty() && !w->databaseChanged() &&
                w->billPeriodPanel()->chooser()->count() == 0);

        // The changed state of a first start (nothing in the books) asks nothing and keeps no copy.
        w->showDatabaseChanged(true);
        const qsizetype told = answers->messages().size();
        pathButton(1);
        QVERIFY(answers->last().file.mustExist && answers->messages().size() == told);
        QVERIFY(w->customerPanel()->rowCount() == 2 && company(0)->text() == u"Test Co");
        QVERIFY(w->billPeriodPanel()->chooser()->count() == 1 && recoveryCopies() == copies);
    }

    void closeTheBooks()
    {
        auto *closeBooks = button(u"cmdCloseBooks"_s);
        // Declined ("No", also the close box): no dialog.
        answers->nextFormAnswers = {u"No"_s};
        click(closeBooks);
        click(closeBooks);
        const auto &form = answers->seen[0].form;
        QCOMPARE(
            QStringList({QString::number(answers->seen.size()), answers->seen[0].kind, form.key, form.presetAnswer}),
            QStringList({"2", "messageForm", "DontShowExplanationOfClosingBooks", "No"}));
        QVERIFY(form.buttons != u"OK"_s);

        // Money is owed: told before anything else, and Cancel keeps the books open.
        answers->nextFormAnswers = {u"Yes"_s};
        click(closeBooks);
        QCOMPARE(answers->seen.size(), 4);
        QCOMPARE(answers->last().message.text,
                 u"2 customers still owe %1 in all.\r\n\r\nThose balances stay in the old file, \"QOR.xml\"; "
                 "the new file starts without them.\r\n\r\nWould you like to print or save their statements first?"_s.arg(Money::fromCents(2000).toCurrencyText()));

        // Once the explanation is off: the statements saved first hold what is
        // owed as of today; without pending changes the old file is not
        // written; the panels show the new books.
        const QByteArray original = sb.fileBytes();
        settings::DontShowExplanationOfClosingBooks.store(u"TRUE"_s);
        const qsizetype asked = answers->seen.size();
        answers->nextAnswers = {QMessageBox::Save};
        answers->nextFileNames = {at(u"Owed"_s), at(u"Year2"_s)};
        click(closeBooks);
        QCOMPARE(answers->seen.size(), asked + 3);  // no explanation once switched off
        QProcess text;
        text.start(u"pdftotext"_s, {at(u"Owed.pdf"_s), u"-"_s});
        QVERIFY(text.waitForFinished(60000));
        const QString owed = QString::fromUtf8(text.readAllStandardOutput());
        QVERIFY2(owed.contains(u"Ann Lee"_s) && owed.contains(u"Bob Moss"_s) && owed.count(u"TOTAL DUE:"_s) == 2, qPrintable(owed));
        QVERIFY(sb.fileBytes() == original && where() == at(u"Year2.xml"_s));
        QVERIFY(!w->databaseChanged() && w->cmdSave()->isHidden());
        QCOMPARE(w->billPeriodPanel()->chooser()->count() + w->printingPanel()->tree()->model()->rowCount(), 0);
        QVERIFY(w->customerPanel()->rowCount() == 2 && company(0)->text() == u"Test Co");
    }

    // A file another program holds, opened read-only: the title says so and
    // there is no save; edits start the recovery timer; a separator typed in
    // a company field is refused.
    void readOnlyRecoveryAndCompanyFields()
    {
        discard(w);
        QFile lock(FileLock::lockPathOf(sb.db));  // another program's
        QVERIFY(lock.open(QIODevice::WriteOnly | QIODevice::Truncate) && lock.write("4242\nqorvane\nelsewhere\n") > 0);
        lock.close();
        answers->nextAnswers = {QMessageBox::Open};
        w = openWindow(5);
        QVERIFY(w->windowTitle() == u"[*]QOR.xml (read-only) \u2014 Qorvane" && !w->recoveryTimer().isActive());
        const QString before = company(1)->text();
        company(0)->setText(u"Changed"_s);
        QVERIFY(w->databaseChanged() && w->cmdSave()->isHidden() && !w->cmdCancel()->isHidden());
        QVERIFY(w->recoveryTimer().isActive() && w->recoveryTimer().interval() <= 30000 &&
                !button(u"cmdCloseBooks"_s)->isEnabled());
        company(1)->setText(u"a\u0001b"_s);
        QVERIFY(company(1)->text() == before && w->db().company()[1] == before &&
                answers->last().message.text.contains(u"U+0001"_s));
        QVERIFY(QFile::remove(FileLock::lockPathOf(sb.db)));
    }

    // Saves keep versions; the Options panel lists them and restores one as
    // changed books. Abandoning then drops the restored books and a new
    // customer, leaves the settings alone, and the Options panel's own save
    // button writes the file unchanged.
    void versionsThenAbandon()
    {
        company(0)->setText(u"Second"_s);
        w->cmdSaveClick();
        const QByteArray saved = sb.fileBytes();
        const QStringList shown = rowTexts(w->customerPanel()->list());
        auto *list = w->optionsPanel()->versionList();
        // One: the file as it was before the save.
        QVERIFY(list->count() == 1 && list->item(0)->text().contains(u"version"_s));
        QVERIFY(!w->optionsPanel()->restoreVersionButton()->isEnabled());
        list->setCurrentRow(0);
        click(w->optionsPanel()->restoreVersionButton());
        QVERIFY(w->databaseChanged() && company(0)->text() == u"Test Co");
        QCOMPARE(readBack(sb.db)->company()[0], u"Second"_s);  // saved only when the user saves
        addCustomer(u"Cara"_s);
        settings::sync();
        const QByteArray settingsBefore = bytes(settings::storePath());
        answers->nextAnswers = {QMessageBox::Cancel, QMessageBox::Ok};  // Cancel keeps the changes
        click(w->cmdCancel());
        QVERIFY(answers->last().message.buttons == (QMessageBox::Ok | QMessageBox::Cancel) && w->databaseChanged());
        click(w->cmdCancel());
        QVERIFY(rowTexts(w->customerPanel()->list()) == shown && company(0)->text() == u"Second");
        QVERIFY(!w->databaseChanged());
        settings::sync();
        QCOMPARE(bytes(settings::storePath()), settingsBefore);
        w->cmdChangePathClick(2);
        QCOMPARE(sb.fileBytes(), saved);
    }
};

QTEST_MAIN(TstFileOps)
#include "tst_fileops.moc"
