// SPDX-License-Identifier: GPL-3.0-or-later
#include "customers/frmprintcustomers.h"

#include "database/keyedlist.h"
#include "pages/pdfoutput.h"
#include "settings/settingsstore.h"
#include "uiservices/dialogservice.h"
#include "uiservices/fonts.h"
#include "uiservices/twips.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFrame>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPrinter>
#include <QPrinterInfo>
#include <QPushButton>
#include <QTimer>

#include <cmath>

namespace qor {

namespace {

void place(QWidget *w, int left, int top, int width, int height)
{
    w->setGeometry(twipsToPx(left), twipsToPx(top), twipsToPx(width), twipsToPx(height));
}

QFont designFont(const char *family, double points, bool bold)
{
    QFont f(QString::fromLatin1(family));
    f.setPointSizeF(points);
    f.setBold(bold);
    return f;
}

// One sunken rule: a line in the shadow colour and one in the highlight
// colour 15 twips below it.
void addRule(QWidget *parent, int y)
{
    for (int i = 0; i < 2; ++i) {
        auto *line = new QFrame(parent);
        line->setFrameShape(QFrame::NoFrame);
        line->setAutoFillBackground(true);
        QPalette pal = line->palette();
        pal.setColor(QPalette::Window, parent->palette().color(i == 0 ? QPalette::Dark : QPalette::Light));
        line->setPalette(pal);
        line->setGeometry(twipsToPx(120), twipsToPx(y + 15 * i), twipsToPx(4560 - 120), std::max(1, twipsToPx(15)));
    }
}

}  // namespace

FrmPrintCustomers::FrmPrintCustomers(const KeyedList &customers, QWidget *owner)
    : QDialog(owner, Qt::Dialog | Qt::WindowTitleHint | Qt::WindowCloseButtonHint | Qt::MSWindowsFixedSizeDialogHint |
                         Qt::CustomizeWindowHint),
      m_customers(customers)
{
    ensureDesignFonts();
    setObjectName(QStringLiteral("frmPrintCustomers"));
    setWindowTitle(QStringLiteral("Customer List Print Options"));
    setModal(true);
    setFixedSize(twipsToPx(4695), twipsToPx(6255));

    const QFont labelFont = designFont("Tahoma", 9.75, true);
    const QFont checkFont = designFont("MS Sans Serif", 9.75, true);

    auto label = [&](const char *name, const QString &text, Qt::Alignment align, int l, int t, int w, int h) {
        auto *lbl = new QLabel(text, this);
        lbl->setObjectName(QString::fromLatin1(name));
        lbl->setFont(labelFont);
        lbl->setAlignment(align | Qt::AlignTop);
        lbl->setWordWrap(true);
        place(lbl, l, t, w, h);
        return lbl;
    };
    label("Label3", QStringLiteral("Page Title:"), Qt::AlignHCenter, 1500, 120, 1695, 255);
    m_txtPageTitle = new QLineEdit(this);
    m_txtPageTitle->setObjectName(QStringLiteral("txtPageTitle"));
    m_txtPageTitle->setFont(designFont("Tahoma", 9, true));
    place(m_txtPageTitle, 480, 600, 3735, 285);
    label("lblPrintFields", QStringLiteral("Print Fields:"), Qt::AlignHCenter, 1500, 1320, 1695, 255);

    struct CheckRow {
        const char *text;
        int l, t, w, h;
    };
    static constexpr CheckRow Checks[5] = {
        {"Address", 600, 1800, 1815, 255},
        {"Email", 600, 2160, 1815, 255},
        {"Phone #'s", 2745, 1800, 1710, 255},
        {"Notes", 2760, 2160, 1815, 255},
        {"Print Page Numbers", 1140, 2640, 2415, 255},
    };
    for (int i = 0; i < 5; ++i) {
        auto *c = new QCheckBox(QString::fromLatin1(Checks[i].text), this);
        c->setObjectName(QStringLiteral("chkPCL(%1)").arg(i));
        c->setFont(checkFont);
        place(c, Checks[i].l, Checks[i].t, Checks[i].w, Checks[i].h);
        m_chkPCL[size_t(i)] = c;
    }

    label("Label4", QStringLiteral("Print Font:"), Qt::AlignHCenter, 1800, 3360, 1095, 255);
    for (int i = 0; i < 2; ++i) {
        auto *l = new QLabel(this);
        l->setObjectName(QStringLiteral("lblFontName(%1)").arg(i));
        l->setFont(labelFont);
        l->setTextFormat(Qt::PlainText);
        place(l, 480, i == 0 ? 3720 : 3960, 2520, 240);
        m_lblFontName[size_t(i)] = l;
    }
    m_cmdChangeFont = new QPushButton(QStringLiteral("C&hange"), this);
    m_cmdChangeFont->setObjectName(QStringLiteral("cmdChangeFont"));
    place(m_cmdChangeFont, 3000, 3720, 1215, 495);

    label("Label1", QStringLiteral("Columns:"), Qt::AlignLeft, 480, 4920, 975, 255);
    m_cmbColumns = new QComboBox(this);
    m_cmbColumns->setObjectName(QStringLiteral("cmbColumns"));
    place(m_cmbColumns, 1440, 4890, 615, 360);
    label("Label2", QStringLiteral("Blank Lines Between:"), Qt::AlignRight, 2400, 4800, 1095, 495);
    m_cmbBlankLines = new QComboBox(this);
    m_cmbBlankLines->setObjectName(QStringLiteral("cmbBlankLines"));
    place(m_cmbBlankLines, 3600, 4890, 615, 360);
    for (QComboBox *c : {m_cmbColumns, m_cmbBlankLines})
        c->setFont(labelFont);

    m_cmdPrint = new QPushButton(QStringLiteral("&Print"), this);
    m_cmdPrint->setObjectName(QStringLiteral("cmdPrint"));
    m_cmdPrint->setDefault(true);
    place(m_cmdPrint, 240, 5640, 1935, 495);
    m_cmdCancel = new QPushButton(QStringLiteral("&Cancel"), this);
    m_cmdCancel->setObjectName(QStringLiteral("cmdCancel"));
    place(m_cmdCancel, 2520, 5640, 1935, 495);
    for (QPushButton *b : {m_cmdChangeFont, m_cmdPrint, m_cmdCancel})
        b->setFont(labelFont);

    for (int y : {1080, 3120, 4560})
        addRule(this, y);

    // Opening: everything from the settings, nothing stored while loading.
    m_txtPageTitle->setText(settings::PageTitle.get());
    for (int i = 1; i <= 4; ++i)
        m_cmbColumns->addItem(QString::number(i));
    for (int i = 0; i <= 4; ++i)
        m_cmbBlankLines->addItem(QString::number(i));
    m_cmbColumns->setCurrentIndex(settings::customerListColumns() - 1);
    m_cmbBlankLines->setCurrentIndex(settings::customerListBlankLines());
    for (int i = 0; i < 5; ++i)
        m_chkPCL[size_t(i)]->setChecked(settings::CustomerListParts[size_t(i)].isOn());
    m_lblFontName[0]->setText(settings::PrintFontName.get());
    m_lblFontName[1]->setText(settings::PrintFontStyleSize.get());
    m_loading = false;

    for (int i = 0; i < 5; ++i) {
        connect(m_chkPCL[size_t(i)], &QCheckBox::clicked, this, [this, i] {
            settings::CustomerListParts[size_t(i)].set(m_chkPCL[size_t(i)]->isChecked());
        });
    }
    connect(m_cmbColumns, &QComboBox::activated, this, [this](int index) {
        if (m_loading)
            return;
        settings::Columns.set(index + 1);
        sendRightKey();
    });
    connect(m_cmbBlankLines, &QComboBox::activated, this, [this](int index) {
        if (m_loading)
            return;
        settings::BlankLinesBetween.set(index);
        sendRightKey();
    });
    // The typed title is kept for the next list as well: every option here is
    // stored as it changes, and a title typed once is the one wanted again.
    connect(m_txtPageTitle, &QLineEdit::textEdited, this,
            [](const QString &text) { settings::PageTitle.set(text); });
    connect(m_cmdChangeFont, &QPushButton::clicked, this, &FrmPrintCustomers::cmdChangeFontClick);
    connect(m_cmdCancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(m_cmdPrint, &QPushButton::clicked, this, &FrmPrintCustomers::cmdPrintClick);

    m_timer = new QTimer(this);
    m_timer->setSingleShot(true);
    m_timer->setInterval(1000);
    connect(m_timer, &QTimer::timeout, this, &FrmPrintCustomers::finishPrint);

    print = [this](const pages::CustomerListOptions &o) { return printOnDefaultPrinter(o); };

    if (owner) {
        const QPoint c = owner->frameGeometry().center();
        move(c.x() - width() / 2, c.y() - height() / 2);
    }
}

pages::CustomerListOptions FrmPrintCustomers::options() const
{
    pages::CustomerListOptions o;
    o.pageTitle = m_txtPageTitle->text();
    o.columns = m_cmbColumns->currentIndex() + 1;
    o.blankLines = m_cmbBlankLines->currentIndex();
    o.printAddress = m_chkPCL[0]->isChecked();
    o.printEmail = m_chkPCL[1]->isChecked();
    o.printPhone = m_chkPCL[2]->isChecked();
    o.printNotes = m_chkPCL[3]->isChecked();
    o.printPageNumbers = m_chkPCL[4]->isChecked();
    o.fontName = m_lblFontName[0]->text();
    o.fontStyleSize = m_lblFontName[1]->text();
    return o;
}

void FrmPrintCustomers::sendRightKey()
{
    QWidget *target = focusWidget() ? focusWidget() : this;
    QCoreApplication::postEvent(target, new QKeyEvent(QEvent::KeyPress, Qt::Key_Right, Qt::NoModifier));
    QCoreApplication::postEvent(target, new QKeyEvent(QEvent::KeyRelease, Qt::Key_Right, Qt::NoModifier));
}

void FrmPrintCustomers::cmdChangeFontClick()
{
    const pages::ListFont now = pages::parseListFont(m_lblFontName[0]->text(), m_lblFontName[1]->text(), 8);
    QFont initial(now.name);
    initial.setPointSizeF(now.size);
    initial.setBold(now.bold);
    initial.setItalic(now.italic);
    const std::optional<QFont> chosen = DialogService::current().font(this, QStringLiteral("Font"), initial);
    if (!chosen)
        return;
    QString face = chosen->family();
    const qsizetype nul = face.indexOf(QChar(0));
    if (nul >= 0)
        face.truncate(nul);
    // Whole points; a size under one point counts as 10, as the dialog's
    // answer in tenths below 10 does.
    double points = chosen->pointSizeF();
    if (points <= 0 && chosen->pixelSize() > 0)
        points = chosen->pixelSize() * 72.0 / 96.0;
    const long size = points * 10 < 10 ? 10 : std::lround(points);
    const bool bold = chosen->weight() >= QFont::DemiBold;
    m_lblFontName[0]->setText(face);
    m_lblFontName[1]->setText(pages::fontStyleText(bold, chosen->italic(), size));
    settings::PrintFontName.set(m_lblFontName[0]->text());
    settings::PrintFontStyleSize.set(m_lblFontName[1]->text());
}

void FrmPrintCustomers::cmdPrintClick()
{
    if (m_timer->isActive())
        return;  // the pages are out; the window is about to go
    if (m_customers.count() == 0) {
        DialogService::current().information(this, QStringLiteral("Qorvane"),
                                             QStringLiteral("There are no customers to print!"));
        accept();
        return;
    }
    const pages::PrintOutcome out = print(options());
    if (out.status == pages::PrintStatus::Failed)
        DialogService::current().critical(this, QStringLiteral("Printer Error"), out.reason);
    m_timer->start();
}

void FrmPrintCustomers::finishPrint() { accept(); }

pages::PrintOutcome FrmPrintCustomers::printOnDefaultPrinter(const pages::CustomerListOptions &o)
{
    const QString job = QStringLiteral("Customer List");
    const QString name = pages::defaultPrinterName();
    if (name.isEmpty()) {
        pages::PrintOutcome none;
        none.status = pages::PrintStatus::NoPrinter;
        const auto answer = DialogService::current().message(
            this, {QMessageBox::Question, QStringLiteral("Qorvane"),
                   QStringLiteral("There is no printer on this system.\nSave the customer list as a PDF file instead?"),
                   QMessageBox::Yes | QMessageBox::No, QMessageBox::Yes});
        if (answer != QMessageBox::Yes)
            return none;
        QString file = DialogService::current().saveFileName(
            this, {QStringLiteral("Save the Customer List"), QStringLiteral("Customer list.pdf"),
                   QStringLiteral("PDF Files (*.pdf)|*.pdf")});
        if (file.isEmpty())
            return none;
        if (!file.endsWith(QLatin1String(".pdf"), Qt::CaseInsensitive))
            file += QStringLiteral(".pdf");
        QString why;
        if (!pages::writePdf(pages::composeCustomerList(m_customers, o), file, pages::defaultPaper(), &why)) {
            none.status = pages::PrintStatus::Failed;
            none.reason = why;
        }
        return none;
    }
    QPrinter printer(QPrinterInfo::printerInfo(name), QPrinter::HighResolution);
    // Measured with the printer's own font metrics, so what fits is what fits
    // on its paper.
    const QList<pages::Page> list = pages::composeCustomerList(m_customers, o, &printer);
    return pages::printPages(list, printer, job);
}

}  // namespace qor
