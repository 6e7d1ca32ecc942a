#include "printing/printoptionspanel.h"

#include "database/regional.h"
#include "shell/settingsstore.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>

#include <cmath>

namespace qor {

namespace {

const QString Printing = QStringLiteral("Printing");

QString onOff(bool on) { return on ? QStringLiteral("True") : QStringLiteral("False"); }
QString indexed(const char *name, int i) { return QStringLiteral("%1(%2)").arg(QLatin1String(name)).arg(i); }

}  // namespace

PrintOptionsPanel::PrintOptionsPanel(AppContext &ctx, QWidget *parent) : Panel(4, ctx, parent)
{
    // Option buttons report on being turned on, from a click or from code,
    // as the settings are applied; the one turned off says nothing.
    for (int i = 0; i < 3; ++i) {
        if (auto *o = control<QRadioButton>(indexed("optInvoiceTitle", i)))
            connect(o, &QRadioButton::toggled, this, [i](bool on) {
                if (on)
                    settings::putStoredSetting(QStringLiteral("InvoiceTitleOption"), QString::number(i));
            });
        if (auto *o = control<QRadioButton>(indexed("optInvoiceTitleSize", i)))
            connect(o, &QRadioButton::toggled, this, [i](bool on) {
                if (on)
                    settings::putStoredSetting(QStringLiteral("InvoiceTitleSize"), QString::number(i));
            });
    }
    if (auto *t = control<QLineEdit>(QStringLiteral("txtInvoiceTitle")))
        connect(t, &QLineEdit::textChanged, this, [](const QString &text) {
            settings::putStoredSetting(QStringLiteral("InvoiceTitleText"), text);
        });
    if (auto *c = control<QCheckBox>(QStringLiteral("chkAddInvoiceDateToInvoice")))
        connect(c, &QCheckBox::toggled, this, [](bool on) {
            settings::write(Printing, QStringLiteral("AddInvoiceDateToInvoice"), onOff(on));
        });
    if (auto *c = control<QCheckBox>(QStringLiteral("chkPrintDuplicateInvoices")))
        connect(c, &QCheckBox::toggled, this, [](bool on) {
            settings::write(Printing, QStringLiteral("PrintDuplicateInvoices"), onOff(on));
        });
    if (auto *c = control<QCheckBox>(QStringLiteral("chkKeepTwelveLines")))
        connect(c, &QCheckBox::toggled, this, &PrintOptionsPanel::keepTwelveLinesClicked);
    if (auto *c = control<QCheckBox>(QStringLiteral("chkMoveAccordingly")))
        connect(c, &QCheckBox::toggled, this, &PrintOptionsPanel::moveAccordinglyClicked);
    // cmdPrintPreviewBack and cmdPrintPreviewForward get their handlers with
    // the preview.
}

void PrintOptionsPanel::keepTwelveLinesClicked()
{
    if (m_isApplyingSettings)
        return;
    auto *keep = control<QCheckBox>(QStringLiteral("chkKeepTwelveLines"));
    const bool on = keep && keep->isChecked();
    settings::write(Printing, QStringLiteral("KeepTwelveLines"), onOff(on));
    if (auto *move = control<QCheckBox>(QStringLiteral("chkMoveAccordingly")))
        move->setEnabled(!on);
    showPreviewBottom();
}

void PrintOptionsPanel::moveAccordinglyClicked()
{
    if (m_isApplyingSettings)
        return;
    auto *move = control<QCheckBox>(QStringLiteral("chkMoveAccordingly"));
    settings::write(Printing, QStringLiteral("MoveBottomTextAccordingly"), onOff(move && move->isChecked()));
    showPreviewBottom();
}

void PrintOptionsPanel::applySettings()
{
    auto turnOn = [this](const char *name, int index) {
        // An index the program never writes has no option to turn on.
        if (auto *o = control<QRadioButton>(indexed(name, index)))
            o->setChecked(true);
    };
    auto storedIndex = [](const char *key, const char *defaultValue) {
        const QString text = settings::getStoredSetting(QString::fromLatin1(key), QString::fromLatin1(defaultValue));
        return int(std::nearbyint(regional::val(text)));
    };
    auto setBox = [this](const char *name, const char *key) {
        if (auto *c = control<QCheckBox>(QString::fromLatin1(name)))
            c->setChecked(settings::isOn(Printing, QString::fromLatin1(key)));
    };

    turnOn("optInvoiceTitle", storedIndex("InvoiceTitleOption", "0"));
    if (auto *t = control<QLineEdit>(QStringLiteral("txtInvoiceTitle")))
        t->setText(settings::getStoredSetting(QStringLiteral("InvoiceTitleText"), QString(),
                                              QStringLiteral("KeepCaps")));
    turnOn("optInvoiceTitleSize", storedIndex("InvoiceTitleSize", "2"));
    setBox("chkAddInvoiceDateToInvoice", "AddInvoiceDateToInvoice");
    setBox("chkPrintDuplicateInvoices", "PrintDuplicateInvoices");

    m_isApplyingSettings = true;
    setBox("chkKeepTwelveLines", "KeepTwelveLines");
    setBox("chkMoveAccordingly", "MoveBottomTextAccordingly");
    auto *keep = control<QCheckBox>(QStringLiteral("chkKeepTwelveLines"));
    if (auto *move = control<QCheckBox>(QStringLiteral("chkMoveAccordingly")))
        move->setEnabled(!(keep && keep->isChecked()));
    showPreviewBottom();
    m_isApplyingSettings = false;

    m_printPreviewSelected =
        float(regional::val(settings::read(Printing, QStringLiteral("PrintPreviewSelected"), QStringLiteral("0"))));
    showPreviewTemplate();
}

void PrintOptionsPanel::showPreviewBottom()
{
    const auto *keep = control<QCheckBox>(QStringLiteral("chkKeepTwelveLines"));
    const auto *move = control<QCheckBox>(QStringLiteral("chkMoveAccordingly"));
    int shown = 2;
    if (keep && keep->isChecked())
        shown = 0;
    else if (!move || !move->isChecked() || !move->isEnabled())
        shown = 1;
    for (int i = 0; i < 3; ++i)
        if (QWidget *p = controlWidget(indexed("picPrintPreviewBottom", i)))
            p->setVisible(i == shown);
}

void PrintOptionsPanel::showPreviewTemplate()
{
    for (int i = 0; i < 3; ++i)
        if (QWidget *p = controlWidget(indexed("picPrintPreviewTop", i)))
            p->setVisible(float(i) == m_printPreviewSelected);
    if (QWidget *back = controlWidget(QStringLiteral("cmdPrintPreviewBack")))
        back->setEnabled(m_printPreviewSelected > 0);
    if (QWidget *forward = controlWidget(QStringLiteral("cmdPrintPreviewForward")))
        forward->setEnabled(m_printPreviewSelected < 2);
}

}  // namespace qor
