// frmMessage: the layout for one or two buttons, the answers, and the mark
// that is stored however the window closes.
#include "shell/settingsstore.h"
#include "uiservices/frmmessage.h"
#include "uiservices/twips.h"

#include <QApplication>
#include <QCheckBox>
#include <QDialog>
#include <QLabel>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <functional>

using namespace qor;

namespace {

// Runs act on the message window once it is up, then returns the answer.
QString showAndDo(const QString &text, const QString &key, const QString &buttons,
                  const QString &preset, const std::function<void(QDialog *)> &act) {
    bool done = false;
    auto *poll = new QTimer;
    poll->setInterval(5);
    QObject::connect(poll, &QTimer::timeout, poll, [&done, &act, poll] {
        auto *dlg = qobject_cast<QDialog *>(QApplication::activeModalWidget());
        if (!dlg || done) return;
        done = true;
        poll->stop();
        act(dlg);
    });
    poll->start();
    // A failing act must not leave the test waiting for ever.
    QTimer::singleShot(5000, poll, [] {
        if (auto *dlg = QApplication::activeModalWidget()) dlg->close();
    });
    const QString answer = showMessageForm(nullptr, text, key, buttons, preset);
    delete poll;
    return answer;
}

QPushButton *button(QDialog *d, const char *name) {
    return d->findChild<QPushButton *>(QString::fromLatin1(name));
}

}  // namespace

class TestFrmMessage : public QObject {
    Q_OBJECT
    QTemporaryDir m_config;
private slots:
    void initTestCase();
    void layoutForOneOrTwoButtons();
    void answersAndMarks();
    void markIsReadWithoutRegardToCase();
    void textIsCentredAboveTheButtons();
};

void TestFrmMessage::initTestCase() {
    QVERIFY(m_config.isValid());
    qputenv("XDG_CONFIG_HOME", m_config.path().toLocal8Bit());
}

void TestFrmMessage::layoutForOneOrTwoButtons() {
    struct Seen {
        bool yes = false, no = false, okay = false;
    };
    auto layoutOf = [](const QString &buttons) {
        Seen s;
        showAndDo(QStringLiteral("Hello"), QStringLiteral("LayoutKey"), buttons, QStringLiteral("No"),
                  [&s](QDialog *d) {
                      s.yes = button(d, "cmdYes")->isVisible();
                      s.no = button(d, "cmdNo")->isVisible();
                      s.okay = button(d, "cmdOkay")->isVisible();
                      d->close();
                  });
        return s;
    };
    Seen ok = layoutOf(QStringLiteral("OK"));
    QVERIFY(ok.okay && !ok.yes && !ok.no);
    for (const QString &other : {QString(), QStringLiteral("ok"), QStringLiteral("YesNo")}) {
        Seen s = layoutOf(other);
        QVERIFY2(s.yes && s.no && !s.okay, qPrintable(other));
    }

    // The window itself.
    showAndDo(QStringLiteral("x"), QStringLiteral("LayoutKey"), QString(), QString(), [](QDialog *d) {
        QCOMPARE(d->windowTitle(), QStringLiteral("Qorvane Message"));
        QCOMPARE(d->size(), QSize(twipsToPx(6015), twipsToPx(3375)));
        QCOMPARE(d->minimumSize(), d->maximumSize());
        QVERIFY(!(d->windowFlags() & (Qt::WindowMinimizeButtonHint | Qt::WindowMaximizeButtonHint)));
        QCOMPARE(button(d, "cmdYes")->text(), QStringLiteral("&Yes"));
        QCOMPARE(button(d, "cmdNo")->text(), QStringLiteral("&No"));
        QCOMPARE(button(d, "cmdOkay")->text(), QStringLiteral("&Okay"));
        auto *chk = d->findChild<QCheckBox *>(QStringLiteral("chkDontShow"));
        QVERIFY(chk);
        QCOMPARE(chk->text(), QStringLiteral("Don't Show this Message Again."));
        d->close();
    });
}

void TestFrmMessage::answersAndMarks() {
    const QString key = QStringLiteral("AnswerKey");
    // Buttons give their answers; an unticked box stores nothing.
    QCOMPARE(showAndDo("t", key, QString(), "No", [](QDialog *d) { button(d, "cmdYes")->click(); }),
             QStringLiteral("Yes"));
    QCOMPARE(showAndDo("t", key, QString(), "Yes", [](QDialog *d) { button(d, "cmdNo")->click(); }),
             QStringLiteral("No"));
    QCOMPARE(showAndDo("t", key, "OK", "Yes", [](QDialog *d) { button(d, "cmdOkay")->click(); }),
             QStringLiteral("OK"));
    // The close box keeps the caller's preset answer.
    QCOMPARE(showAndDo("t", key, QString(), "Maybe", [](QDialog *d) { d->close(); }),
             QStringLiteral("Maybe"));
    QVERIFY(!isMessageMarked(key));

    // Ticked and closed with the close box: the mark is stored all the same.
    const QString closeKey = QStringLiteral("ClosedWithBox");
    QCOMPARE(showAndDo("t", closeKey, QString(), "Yes",
                       [](QDialog *d) {
                           d->findChild<QCheckBox *>(QStringLiteral("chkDontShow"))->setChecked(true);
                           d->close();
                       }),
             QStringLiteral("Yes"));
    QVERIFY(isMessageMarked(closeKey));
    QCOMPARE(settings::read(QStringLiteral("Messages"), closeKey), QStringLiteral("True"));

    // Ticked and answered No: marked, and the answer is still No.
    const QString noKey = QStringLiteral("AnsweredNo");
    QCOMPARE(showAndDo("t", noKey, QString(), "Yes",
                       [](QDialog *d) {
                           d->findChild<QCheckBox *>(QStringLiteral("chkDontShow"))->setChecked(true);
                           button(d, "cmdNo")->click();
                       }),
             QStringLiteral("No"));
    QVERIFY(isMessageMarked(noKey));
    // Escape also closes the window and also keeps a ticked mark.
    const QString escKey = QStringLiteral("Escaped");
    showAndDo("t", escKey, "OK", "Yes", [](QDialog *d) {
        d->findChild<QCheckBox *>(QStringLiteral("chkDontShow"))->setChecked(true);
        QTest::keyClick(d, Qt::Key_Escape);
    });
    QVERIFY(isMessageMarked(escKey));
    // Other keys are untouched by any of this.
    QVERIFY(!isMessageMarked(key));

    // A new showing starts with the box unticked.
    bool tickedAtStart = true;
    showAndDo("t", noKey, QString(), "Yes", [&](QDialog *d) {
        tickedAtStart = d->findChild<QCheckBox *>(QStringLiteral("chkDontShow"))->isChecked();
        d->close();
    });
    QVERIFY(!tickedAtStart);
}

void TestFrmMessage::markIsReadWithoutRegardToCase() {
    settings::write(QStringLiteral("Messages"), QStringLiteral("Upper"), QStringLiteral("TRUE"));
    settings::write(QStringLiteral("Messages"), QStringLiteral("Other"), QStringLiteral("yes"));
    settings::write(QStringLiteral("Messages"), QStringLiteral("Spaced"), QStringLiteral("true "));
    QVERIFY(isMessageMarked(QStringLiteral("Upper")));
    QVERIFY(!isMessageMarked(QStringLiteral("Other")));
    QVERIFY(!isMessageMarked(QStringLiteral("Spaced")));
    QVERIFY(!isMessageMarked(QStringLiteral("NeverSet")));
}

void TestFrmMessage::textIsCentredAboveTheButtons() {
    auto labelOf = [](const QString &text) {
        QRect geo;
        QString shown;
        int formWidth = 0;
        showAndDo(text, QStringLiteral("LabelKey"), QString(), QString(), [&](QDialog *d) {
            auto *lbl = d->findChild<QLabel *>(QStringLiteral("lblMessage"));
            geo = lbl->geometry();
            shown = lbl->text();
            formWidth = d->width();
            d->close();
        });
        return std::make_tuple(geo, shown, formWidth);
    };
    const auto [one, oneText, w1] = labelOf(QStringLiteral("One line && more"));
    QCOMPARE(oneText, QStringLiteral("One line & more"));
    const auto [four, fourText, w4] =
        labelOf(QStringLiteral("First\r\nSecond, longer line\r\n\r\nFourth"));
    QCOMPARE(fourText, QStringLiteral("First\nSecond, longer line\n\nFourth"));
    QVERIFY(four.height() > 3 * one.height());
    QVERIFY(four.width() > one.width());
    for (const QRect &g : {one, four}) {
        QVERIFY(qAbs(g.top() - (twipsToPx(2280) - g.height()) / 2) <= 1);
        QVERIFY(qAbs((g.left() + g.width() / 2) - w1 / 2) <= 1);
        QVERIFY(g.bottom() < twipsToPx(2280));
    }
    QVERIFY(four.top() < one.top());
    Q_UNUSED(w4);
}

QTEST_MAIN(TestFrmMessage)
#include "tst_frmmessage.moc"
