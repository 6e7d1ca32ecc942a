// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// Shared by the panel tests: a throw-away settings store and database file,
// the main window opened as at start, and an answerer for message boxes.
#include "../billing/billingfixture.h"
#include "billing/invoicetrees.h"
#include "settings/settingsstore.h"
#include "shell/frmqor.h"
#include "uiservices/dialogservice.h"
#include "uiservices/frmchecking.h"

#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTreeWidget>
#include <QtTest>
#include <memory>

namespace qor::testing {

// Answers every message box with `answer` (or the next of nextAnswers) and
// records what it saw; installed for as long as it lives.
class Answerer {
public:
    ScriptedDialogs dialogs;
    QMessageBox::StandardButton &answer = dialogs.answer;
    QList<DialogService::Message> seen() const
    {
        QList<DialogService::Message> out;
        for (const auto &m : dialogs.messages()) out.append(m.message);
        return out;
    }
    DialogService::Message last() const { return seen().value(seen().size() - 1); }
};

struct DbCustomer {
    int cid;
    QString first, last;
    bool current = true;
};
struct DbItem {
    int psid;
    QString name, price;
    bool current = true;
};
struct DbRecord {
    int cid;
    QStringList items;
};  // all in one period, "Jan"

// The database's own tables, saved as the program saves them.
inline void writeDatabase(const QString &path, const QList<DbCustomer> &customers,
                          const QList<DbItem> &items = {}, const QList<DbRecord> &records = {})
{
    Database db;
    test::TablesEdit tables(db);
    tables.company[0] = QStringLiteral("Test Co");
    for (const DbCustomer &c : customers)
        tables.customers.add(numberKey(c.cid), billtest::customerRow(c.last, c.first, !c.current));
    for (const DbItem &i : items)
        tables.items.add(numberKey(i.psid), billtest::itemRow(i.price, i.name, !i.current));
    tables.done();
    std::vector<InvoiceRecordRow> rows;
    for (const DbRecord &r : records)
        rows.push_back({"Jan", {}, QString::number(r.cid), "10", r.items.join(ItemSep), {}});
    if (!records.isEmpty()) db.addPeriod({"2024/01/01", "Jan", "2024/01/31", "2024/02/15"}, rows);
    QFile f(path);
    QVERIFY(f.open(QIODevice::WriteOnly | QIODevice::Truncate) && f.write(db.serialize()) > 0);
}

// Settings and database file in a temporary folder, set before any window.
struct Sandbox {
    QTemporaryDir dir;
    QString db = dir.path() + "/QOR.xml";
    Sandbox()
    {
        qputenv("XDG_CONFIG_HOME", (dir.path() + "/config").toLocal8Bit());
        qputenv("XDG_DATA_HOME", (dir.path() + "/data").toLocal8Bit());
        // The runtime folder must be the user's alone, or Qt won't take it.
        QDir().mkpath(dir.path() + "/runtime");
        QFile::setPermissions(dir.path() + "/runtime", QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        qputenv("XDG_RUNTIME_DIR", (dir.path() + "/runtime").toLocal8Bit());
        settings::DatabasePath.set(db);
        settings::DeletedCustomer.set(true);
    }
    QByteArray fileBytes() const
    {
        QFile f(db);
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
    }
};

inline std::unique_ptr<FrmQOR> openWindow(int panel)
{
    settings::LastClicked.set(panel);
    auto w = std::make_unique<FrmQOR>();
    w->formLoad();
    return w;
}

// Ends a window without its closing questions (an open entry ends unasked).
inline void discard(std::unique_ptr<FrmQOR> &w)
{
    if (w) w->invoiceTrees().endEntry(), w->showDatabaseChanged(false), w->close(), w.reset();
}

inline void click(QAbstractButton *b)
{
    QVERIFY2(b && b->isVisible(), "button to press is not visible");
    QTest::mouseClick(b, Qt::LeftButton);
}

inline void retype(QWidget *w, const QString &text)
{
    if (auto *le = qobject_cast<QLineEdit *>(w)) le->selectAll();
    if (auto *pe = qobject_cast<QPlainTextEdit *>(w)) pe->selectAll();
    if (text.isEmpty()) QTest::keyClick(w, Qt::Key_Delete);
    else QTest::keyClicks(w, text);
}

inline void clickRow(QTreeWidget *list, int position)
{
    QTreeWidgetItem *it = list->topLevelItem(position - 1);
    QVERIFY(it);
    list->scrollToItem(it);
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(it).center());
}

inline QStringList rowTexts(const QTreeWidget *list)
{
    QStringList out;
    for (int i = 0; i < list->topLevelItemCount(); ++i) out << list->topLevelItem(i)->text(0);
    return out;
}

inline QString currentText(const QTreeWidget *l) { return l->currentItem() ? l->currentItem()->text(0) : QString(); }
inline QString currentKey(const QTreeWidget *l)
{
    return l->currentItem() ? l->currentItem()->data(0, Qt::UserRole).toString() : QString();
}
inline bool hasInfoColour(const QWidget *w)
{
    return w->palette().color(QPalette::Base) == QApplication::palette().color(QPalette::ToolTipBase);
}
inline QString statusText(const FrmQOR &w) { return w.checkingWindow() ? w.checkingWindow()->lblStatus()->text() : QString(); }

// The two buttons as the user sees them; "-" marks a hidden one.
inline QString buttonPair(const QAbstractButton *a, const QAbstractButton *b)
{
    auto show = [](const QAbstractButton *x) { return (x->isHidden() ? "-" : "") + x->text(); };
    return show(a) + " / " + show(b);
}

}  // namespace qor::testing
