// SPDX-License-Identifier: GPL-3.0-or-later
#include "uiservices/frmmessage.h"

#include "settings/settingsstore.h"
#include "uiservices/assetpaths.h"
#include "uiservices/twips.h"

#include <QCheckBox>
#include <QDialog>
#include <QFont>
#include <QIcon>
#include <QLabel>
#include <QPushButton>

namespace qor {

namespace {

QFont tahomaBold9()
{
    QFont f(QStringLiteral("Tahoma"));
    f.setPointSizeF(9);
    f.setBold(true);
    return f;
}

// The text as a label shows it: CR LF as line breaks, "&&" as one "&", a
// single "&" (a hot-key mark, which a label here has no use for) dropped.
QString labelText(const QString &text)
{
    QString t = text;
    t.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    QString out;
    out.reserve(t.size());
    for (qsizetype i = 0; i < t.size(); ++i) {
        if (t[i] == u'&') {
            if (i + 1 < t.size() && t[i + 1] == u'&') {
                out += u'&';
                ++i;
            }
            continue;
        }
        out += t[i];
    }
    return out;
}

}  // namespace

FrmMessage::FrmMessage(QWidget *owner, const QString &text, const QString &key, const QString &buttons,
                       const QString &presetAnswer)
    : QDialog(owner, Qt::Dialog | Qt::WindowTitleHint | Qt::WindowCloseButtonHint |
                         Qt::MSWindowsFixedSizeDialogHint | Qt::CustomizeWindowHint),
      m_key(key), m_answer(presetAnswer)
{
    setObjectName(QStringLiteral("frmMessage"));
    setWindowTitle(QStringLiteral("Qorvane Message"));
    setWindowIcon(QIcon(QString::fromLatin1(assets::AppIcon)));
    setFixedSize(twipsToPx(6015), twipsToPx(3375));

    const QFont font = tahomaBold9();
    auto place = [](QWidget *w, int l, int t, int wd, int h) {
        w->setGeometry(twipsToPx(l), twipsToPx(t), twipsToPx(wd), twipsToPx(h));
    };
    m_yes = new QPushButton(QStringLiteral("&Yes"), this);
    m_yes->setObjectName(QStringLiteral("cmdYes"));
    place(m_yes, 1680, 2280, 1215, 495);
    m_no = new QPushButton(QStringLiteral("&No"), this);
    m_no->setObjectName(QStringLiteral("cmdNo"));
    place(m_no, 3120, 2280, 1215, 495);
    m_okay = new QPushButton(QStringLiteral("&Okay"), this);
    m_okay->setObjectName(QStringLiteral("cmdOkay"));
    place(m_okay, 2400, 2280, 1215, 495);
    for (QPushButton *b : {m_yes, m_no, m_okay}) {
        b->setFont(font);
        b->hide();
    }
    m_dontShow = new QCheckBox(QStringLiteral("Don't Show this Message Again."), this);
    m_dontShow->setObjectName(QStringLiteral("chkDontShow"));
    place(m_dontShow, 120, 3000, 3375, 255);
    // The same face as the text and the buttons, in the regular weight.
    QFont boxFont = font;
    boxFont.setBold(false);
    m_dontShow->setFont(boxFont);
    m_label = new QLabel(this);
    m_label->setObjectName(QStringLiteral("lblMessage"));
    m_label->setFont(font);
    m_label->setTextFormat(Qt::PlainText);
    m_label->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
    place(m_label, 2970, 120, 75, 210);

    setTabOrder(m_yes, m_no);
    setTabOrder(m_no, m_dontShow);
    setTabOrder(m_dontShow, m_okay);

    // One button for "OK" exactly, else Yes and No.
    if (buttons == QLatin1String("OK")) {
        m_okay->show();
        m_okay->setFocus();
    } else {
        m_yes->show();
        m_no->show();
        m_yes->setFocus();
    }
    // The label takes the height of its text and stays centred across
    // the window; the text is centred in the space above the buttons.
    m_label->hide();
    m_label->setText(labelText(text));
    m_label->adjustSize();
    const int top = (twipsToPx(2280) - m_label->height()) / 2;
    m_label->move((width() - m_label->width()) / 2, top);
    m_label->show();

    connect(m_yes, &QPushButton::clicked, this, [this] { answer(QStringLiteral("Yes")); });
    connect(m_no, &QPushButton::clicked, this, [this] { answer(QStringLiteral("No")); });
    connect(m_okay, &QPushButton::clicked, this, [this] { answer(QStringLiteral("OK")); });
}

FrmMessage::~FrmMessage() { storeMark(); }

void FrmMessage::done(int r)
{
    // However the window closes, a ticked box ends the message for good.
    storeMark();
    QDialog::done(r);
}

void FrmMessage::answer(const QString &a)
{
    m_answer = a;
    accept();
}

void FrmMessage::storeMark()
{
    if (m_stored || !m_dontShow->isChecked()) return;
    m_stored = true;
    settings::markMessage(m_key);
}

bool isMessageMarked(const QString &key)
{
    return settings::isMessageMarked(key);
}

QString showMessageForm(QWidget *owner, const QString &text, const QString &key,
                        const QString &buttons, const QString &presetAnswer)
{
    // A fresh form for every showing, so the box always starts unticked.
    FrmMessage form(owner, text, key, buttons, presetAnswer);
    form.exec();
    return form.result();
}

}  // namespace qor
