#pragma once
// What the panel tests share: a throw-away settings store and database file,
// a main window opened the way the program opens it, an answerer for message
// boxes, and a writer of small database files.
#include "billing/frmchecking.h"
#include "shell/frmqor.h"
#include "shell/panel.h"
#include "shell/settingsstore.h"

#include <QAbstractButton>
#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTimer>
#include <QTreeWidget>
#include <QtTest>

#include <memory>
#include <utility>

namespace qor::testing {

// Answers message boxes while it lives: each one seen is recorded and answered
// with the given button. Polls, because QMessageBox::exec blocks the caller.
class ModalAnswerer {
public:
    struct Seen {
        QString title, text;
        QMessageBox::Icon icon = QMessageBox::NoIcon;
        QMessageBox::StandardButtons buttons;
    };
    explicit ModalAnswerer(QMessageBox::StandardButton answer) : m_answer(answer)
    {
        m_timer = new QTimer(qApp);
        m_timer->setInterval(10);
        QObject::connect(m_timer, &QTimer::timeout, m_timer, [this] {
            auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
            if (!box) return;
            m_seen.append({box->windowTitle(), box->text(), box->icon(), box->standardButtons()});
            if (QAbstractButton *b = box->button(m_answer)) b->click();
            else box->reject();
        });
        m_timer->start();
    }
    ~ModalAnswerer() { delete m_timer; }
    void setAnswer(QMessageBox::StandardButton answer) { m_answer = answer; }
    int count() const { return int(m_seen.size()); }
    const Seen &last() const { return m_seen.last(); }
    void reset() { m_seen.clear(); }

private:
    QTimer *m_timer;
    QMessageBox::StandardButton m_answer;
    QList<Seen> m_seen;
};

// A message box that nobody answers would stall the test until its time
// limit: this closes any that stays open for two seconds, and says so.
class ModalWatchdog {
public:
    ModalWatchdog()
    {
        m_timer = new QTimer(qApp);
        m_timer->setInterval(100);
        QObject::connect(m_timer, &QTimer::timeout, m_timer, [this] {
            QWidget *modal = QApplication::activeModalWidget();
            if (modal != m_modal) {
                m_modal = modal;
                m_since.start();
                return;
            }
            if (modal && m_since.elapsed() > 2000) {
                qWarning("unanswered modal window closed: %s", qPrintable(modal->windowTitle()));
                ++m_closed;
                if (auto *d = qobject_cast<QDialog *>(modal)) d->reject();
                else modal->close();
            }
        });
        m_timer->start();
    }
    ~ModalWatchdog() { delete m_timer; }
    int takeClosed() { return std::exchange(m_closed, 0); }

private:
    QTimer *m_timer;
    QPointer<QWidget> m_modal;
    QElapsedTimer m_since;
    int m_closed = 0;
};

struct DbCustomer {
    int cid;
    QString first, last;
    bool current = true;
    QString notes = {};
};
struct DbItem {
    int psid;
    QString name, price;  // price as the file holds it, in the currency form
    bool current = true;
};
struct DbRecord {
    QString period;
    int cid;
    QStringList items;  // "5", "7x2"
};

inline QString esc(QString v)
{
    return v.replace(u'&', QStringLiteral("&amp;")).replace(u'<', QStringLiteral("&lt;")).replace(u'>', QStringLiteral("&gt;"));
}

// A database file in the program's format; records name their period, which
// is written with fixed dates.
inline void writeDatabase(const QString &path, const QList<DbCustomer> &customers,
                          const QList<DbItem> &items = {}, const QList<DbRecord> &records = {})
{
    QStringList l{QStringLiteral("<QOR-DB>"), QString(), QStringLiteral("\t<CompanyInfo>"),
                  QStringLiteral("\t\t<CompanyName>Test Co</CompanyName>"), QStringLiteral("\t</CompanyInfo>"),
                  QString(), QStringLiteral("\t<Customers>")};
    for (const DbCustomer &c : customers) {
        l << QStringLiteral("\t\t<Customer CID=\"%1\">").arg(c.cid);
        if (!c.first.isEmpty()) l << QStringLiteral("\t\t\t<FName>%1</FName>").arg(esc(c.first));
        if (!c.last.isEmpty()) l << QStringLiteral("\t\t\t<LName>%1</LName>").arg(esc(c.last));
        if (!c.notes.isEmpty()) l << QStringLiteral("\t\t\t<Notes>%1</Notes>").arg(esc(c.notes));
        l << QStringLiteral("\t\t\t<Current>%1</Current>").arg(c.current ? "Yes" : "No")
          << QStringLiteral("\t\t</Customer>");
    }
    l << QStringLiteral("\t</Customers>") << QString() << QStringLiteral("\t<BillPeriods>");
    QStringList periods;
    for (const DbRecord &r : records)
        if (!periods.contains(r.period)) periods << r.period;
    for (const QString &p : periods)
        l << QStringLiteral("\t\t<BillPeriod>") << QStringLiteral("\t\t\t<BPName>%1</BPName>").arg(esc(p))
          << QStringLiteral("\t\t\t<BPStart>2024/01/01</BPStart>") << QStringLiteral("\t\t\t<BPEnd>2024/01/31</BPEnd>")
          << QStringLiteral("\t\t\t<BillDue>2024/02/15</BillDue>") << QStringLiteral("\t\t</BillPeriod>");
    l << QStringLiteral("\t</BillPeriods>") << QString() << QStringLiteral("\t<ProductsAndServices>");
    for (const DbItem &i : items)
        l << QStringLiteral("\t\t<PS PSID=\"%1\">").arg(i.psid) << QStringLiteral("\t\t\t<Item>%1</Item>").arg(esc(i.name))
          << QStringLiteral("\t\t\t<ItemPrice>%1</ItemPrice>").arg(esc(i.price))
          << QStringLiteral("\t\t\t<Current>%1</Current>").arg(i.current ? "Yes" : "No") << QStringLiteral("\t\t</PS>");
    l << QStringLiteral("\t</ProductsAndServices>") << QString() << QStringLiteral("\t<InvoiceRecords>");
    for (const DbRecord &r : records) {
        l << QStringLiteral("\t\t<InvoiceRecord>") << QStringLiteral("\t\t\t<BP>%1</BP>").arg(esc(r.period))
          << QStringLiteral("\t\t\t<CID>%1</CID>").arg(r.cid) << QStringLiteral("\t\t\t<AccountBalance>10</AccountBalance>");
        for (int n = 0; n < r.items.size(); ++n)
            l << QStringLiteral("\t\t\t<PSID Number=\"%1\">%2</PSID>").arg(n + 1).arg(r.items.at(n));
        l << QStringLiteral("\t\t</InvoiceRecord>");
    }
    l << QStringLiteral("\t</InvoiceRecords>") << QString() << QStringLiteral("</QOR-DB>");
    QFile f(path);
    if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate)) qFatal("cannot write %s", qPrintable(path));
    f.write((l.join(QStringLiteral("\r\n")) + QStringLiteral("\r\n")).toLatin1());
}

inline QByteArray fileBytes(const QString &path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

// Settings store and database file in a temporary folder; set up before any
// window exists.
class Sandbox {
public:
    Sandbox()
    {
        qputenv("XDG_CONFIG_HOME", (m_dir.path() + "/config").toLocal8Bit());
        qputenv("XDG_CACHE_HOME", (m_dir.path() + "/cache").toLocal8Bit());
        qputenv("XDG_DATA_HOME", (m_dir.path() + "/data").toLocal8Bit());
        m_db = m_dir.path() + QStringLiteral("/QOR.xml");
        settings::write(QStringLiteral("FileHandling"), QStringLiteral("DatabasePath"), m_db);
        settings::write(QStringLiteral("Messages"), QStringLiteral("DeletedCustomer"), QStringLiteral("True"));
        settings::sync();
    }
    bool isValid() const { return m_dir.isValid(); }
    QString dbPath() const { return m_db; }

private:
    QTemporaryDir m_dir;
    QString m_db;
};

// A main window loaded as at start, on the given panel.
inline std::unique_ptr<FrmQOR> openWindow(int panel)
{
    settings::write(QStringLiteral("Settings"), QStringLiteral("LastClicked"), QString::number(panel));
    auto w = std::make_unique<FrmQOR>();
    w->formLoad();
    w->activateWindow();
    return w;
}

// Ends a window without its closing questions.
inline void discard(std::unique_ptr<FrmQOR> &w)
{
    if (!w) return;
    w->showDatabaseChanged(false);
    w->close();
    w.reset();
    if (FrmChecking *c = FrmChecking::existing()) c->close();
    QCoreApplication::processEvents();
}

inline void click(QAbstractButton *b)
{
    QVERIFY2(b && b->isVisible(), "button to press is not visible");
    QTest::mouseClick(b, Qt::LeftButton);
}

inline void retype(QWidget *w, const QString &text)
{
    if (auto *le = qobject_cast<QLineEdit *>(w)) le->selectAll();
    else if (auto *pe = qobject_cast<QPlainTextEdit *>(w)) pe->selectAll();
    if (text.isEmpty()) QTest::keyClick(w, Qt::Key_Delete);
    else QTest::keyClicks(w, text);
}

inline void clickRow(QTreeWidget *list, int position)
{
    QTreeWidgetItem *it = list->topLevelItem(position - 1);
    QVERIFY(it);
    list->scrollToItem(it);
    const QRect r = list->visualItemRect(it);
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, r.center());
}

inline QStringList rowTexts(const QTreeWidget *list)
{
    QStringList out;
    for (int i = 0; i < list->topLevelItemCount(); ++i) out << list->topLevelItem(i)->text(0);
    return out;
}

inline QColor baseColour(const QWidget *w) { return w->palette().color(QPalette::Active, QPalette::Base); }
inline QColor infoColour() { return QApplication::palette().color(QPalette::Active, QPalette::ToolTipBase); }
inline QColor windowColour() { return QApplication::palette().color(QPalette::Active, QPalette::Base); }

}  // namespace qor::testing
