// SPDX-License-Identifier: GPL-3.0-or-later
// frmMessage: one or two buttons, the answers, and the mark that is stored
// however the window closes.
#include "settings/settingsstore.h"
#include "uiservices/frmmessage.h"
#include "uiservices/twips.h"

#include <QCheckBox>
#include <QDialog>
#include <QLabel>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <functional>

using namespace qor;

namespace {

// Shows the message, runs act on it, and returns the answer (as the modal
// showing would give it once the window has closed).
QString showAndDo(const QString &key, const QString &buttons, const QString &preset,
                  const std::function<void(QDialog *)> &act, const QString &text = QStringLiteral("t"))
{
    FrmMessage form(nullptr, text, key, buttons, preset);
    form.show();
    act(&form);
    if (form.isVisible()) form.close();  // a failing act still ends the showing
    return form.result();
}

QPushButton *button(QDialog *d, const char *name) { return d->findChild<QPushButton *>(QString::fromLatin1(name)); }
QCheckBox *tick(QDialog *d) { return d->findChild<QCheckBox *>(QStringLiteral("chkDontShow")); }

}  // namespace

class TestFrmMessage : public QObject {
    Q_OBJECT
    QTemporaryDir m_config;
private slots:
    void initTestCase() { qputenv("XDG_CONFIG_HOME", m_config.path().toLocal8Bit()); }
    void answersAndMarks()
    {
        // press: a button name, "close" (the close box keeps the preset) or "esc"; a ticked box is stored however it
        // closes. Only exactly "OK" gives the single button.
        // clang-format off
        struct Case {
            const char *key, *buttons, *preset, *press;
            bool ticked;
            const char *answer;
        } const cases[] = {
            {"Plain", "", "No", "cmdYes", false, "Yes"}, {"Plain", "ok", "Yes", "cmdNo", false, "No"},
            {"Plain", "OK", "Yes", "cmdOkay", false, "OK"}, {"Plain", "", "Maybe", "close", false, "Maybe"},
            {"DeletedCustomer", "", "Yes", "close", true, "Yes"}, {"AnsweredNo", "YesNo", "Yes", "cmdNo", true, "No"},
            {"Escaped", "OK", "Yes", "esc", true, "Yes"}};
        // clang-format on
        for (const Case &c : cases) {
            const QString answer = showAndDo(QString::fromLatin1(c.key), QString::fromLatin1(c.buttons),
                                             QString::fromLatin1(c.preset), [&c](QDialog *d) {
                                                 const bool one = qstrcmp(c.buttons, "OK") == 0;
                                                 QCOMPARE(button(d, "cmdOkay")->isVisible(), one);
                                                 QVERIFY(button(d, "cmdYes")->isVisible() != one);
                                                 QVERIFY(button(d, "cmdNo")->isVisible() != one);
                                                 QCOMPARE(d->minimumSize(), d->maximumSize());
                                                 QVERIFY(!tick(d)->isChecked());  // each showing starts unticked
                                                 tick(d)->setChecked(c.ticked);
                                                 if (qstrcmp(c.press, "close") == 0) d->close();
                                                 else if (qstrcmp(c.press, "esc") == 0) QTest::keyClick(d, Qt::Key_Escape);
                                                 else button(d, c.press)->click();
                                             });
            QCOMPARE(answer, QString::fromLatin1(c.answer));
            QCOMPARE(isMessageMarked(QString::fromLatin1(c.key)), c.ticked);
        }
        QCOMPARE(settings::DeletedCustomer.stored(), QStringLiteral("True"));

        // The mark is read without regard to case, and nothing else counts.
        settings::DontShowExplanationOfClosingBooks.store(QStringLiteral("TRUE"));
        settings::DontShowNeedToFillCompanyInfo.store(QStringLiteral("yes"));
        settings::DeletedCustomer.store(QStringLiteral("true "));
        QVERIFY(isMessageMarked(settings::DontShowExplanationOfClosingBooks.name()) &&
                !isMessageMarked(settings::DontShowNeedToFillCompanyInfo.name()) &&
                !isMessageMarked(settings::DeletedCustomer.name()));
    }

    void textIsCentredAboveTheButtons()
    {
        // "&&" shows one ampersand; CR LF breaks lines; the block is centred both ways above the buttons.
        QRect one;
        for (auto [text, shown] : {std::pair{"One line && more", "One line & more"},
                                   std::pair{"First\r\nSecond, longer line\r\n\r\nFourth",
                                             "First\nSecond, longer line\n\nFourth"}}) {
            showAndDo(
                QStringLiteral("LabelKey"), QString(), QString(), [&](QDialog *d) {
                    auto *lbl = d->findChild<QLabel *>(QStringLiteral("lblMessage"));
                    const QRect g = lbl->geometry();
                    QCOMPARE(lbl->text(), QString::fromLatin1(shown));
                    QVERIFY(qAbs(g.top() - (twipsToPx(2280) - g.height()) / 2) <= 1);
                    QVERIFY(qAbs(g.center().x() - d->width() / 2) <= 1);
                    if (one.isNull()) one = g;
                    else QVERIFY(g.height() > 3 * one.height() && g.width() > one.width());
                },
                QString::fromLatin1(text));
        }
    }
};

QTEST_MAIN(TestFrmMessage)
#include "tst_frmmessage.moc"
