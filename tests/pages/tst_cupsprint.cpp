// SPDX-License-Identifier: GPL-3.0-or-later
// Printing through a real print system: the CUPS scheduler with a cups-pdf
// queue as the default printer. The job goes out through QPrinter exactly as
// the print run sends it; cups-pdf turns it into a file, which is read back.
#include "pages/invoice.h"
#include "pages/pdfoutput.h"
#include "pages/preview.h"
#include "pages/printout.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QLocale>
#include <QPrinter>
#include <QPrinterInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

using namespace qor::pages;

namespace {

const QStringList SystemPaths = {QStringLiteral("/usr/sbin"), QStringLiteral("/sbin"), QStringLiteral("/usr/bin"),
                                 QStringLiteral("/bin")};

const QString Ppd = QStringLiteral("/usr/share/ppd/cups-pdf/CUPS-PDF_opt.ppd");

QString tool(const QString &name)
{
    QString t = QStandardPaths::findExecutable(name);
    return t.isEmpty() ? QStandardPaths::findExecutable(name, SystemPaths) : t;
}

// Runs a command; its standard output, or a null string when it failed.
QString run(const QString &program, const QStringList &args, QString *errors = nullptr)
{
    QProcess p;
    p.start(tool(program), args);
    const bool ok = p.waitForFinished(60000) && p.exitStatus() == QProcess::NormalExit && p.exitCode() == 0;
    if (!ok && errors) *errors = QString::fromLocal8Bit(p.readAllStandardError()) + p.errorString();
    const QString out = QString::fromLocal8Bit(p.readAllStandardOutput());
    return !ok ? QString() : out.isNull() ? QStringLiteral("")
                                          : out;
}

bool schedulerRunning() { return run("lpstat", {"-r"}).contains(QLatin1String("scheduler is running")); }

// The file cups-pdf made of the job named `token`: in the "Out" folder of its
// configuration, with ${HOME} the submitting user's home, or its folder for
// anonymous jobs.
QString findOutput(const QString &token)
{
    QStringList dirs{QDir::homePath() + QStringLiteral("/PDF"), QStringLiteral("/var/spool/cups-pdf/ANONYMOUS")};
    QFile conf(QStringLiteral("/etc/cups/cups-pdf.conf"));
    for (const QByteArray &raw : conf.open(QIODevice::ReadOnly) ? conf.readAll().split('\n') : QList<QByteArray>())
        if (raw.trimmed().startsWith("Out "))
            dirs << QString::fromLocal8Bit(raw.trimmed().mid(4))
                        .trimmed()
                        .replace(QLatin1String("${HOME}"), QDir::homePath());
    for (const QString &d : dirs)
        for (const QFileInfo &f : QDir(d).entryInfoList({u'*' + token + QStringLiteral("*.pdf")}, QDir::Files))
            return f.filePath();
    return {};
}

}  // namespace

class TstCupsPrint : public QObject {
    Q_OBJECT

    QString m_queue;
    QTemporaryDir m_dir;

    // One page of a PDF as a grey picture at 36 dots an inch.
    QImage raster(const QString &pdf, int page)
    {
        const QString base = m_dir.filePath(QStringLiteral("page"));
        run("pdftoppm", {"-gray", "-r", "36", "-f", QString::number(page), "-l", QString::number(page), "-singlefile",
                         pdf, base});
        QImage img(base + QStringLiteral(".pgm"));
        QFile::remove(base + QStringLiteral(".pgm"));
        return img.convertToFormat(QImage::Format_Grayscale8);
    }
    // The share of pixels whose grey differs by more than a third of the scale.
    static double differingShare(const QImage &a, const QImage &b)
    {
        if (a.size() != b.size())
            return 1.0;
        qint64 differ = 0;
        for (int y = 0; y < a.height(); ++y)
            for (int x = 0; x < a.width(); ++x)
                differ += std::abs(int(a.constScanLine(y)[x]) - int(b.constScanLine(y)[x])) > 85;
        return double(differ) / (double(a.width()) * a.height());
    }

private slots:
    void initTestCase()
    {
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
        if (tool("cupsd").isEmpty() || tool("lpadmin").isEmpty() || tool("lpstat").isEmpty() ||
            !QFileInfo::exists(QStringLiteral("/usr/lib/cups/backend/cups-pdf")))
            QSKIP("CUPS or its cups-pdf backend is not installed (Debian packages cups and printer-driver-cups-pdf)");
        if (tool("pdftoppm").isEmpty() || tool("pdfinfo").isEmpty())
            QSKIP("pdftoppm and pdfinfo (poppler-utils) are not installed");

        if (!schedulerRunning()) {
            // The scheduler puts itself in the background once it is ready.
            QString why;
            run("cupsd", {}, &why);
            if (!QTest::qWaitFor(schedulerRunning, 20000))
                QSKIP(qPrintable(QStringLiteral("the CUPS scheduler cannot run here: ") + why.trimmed()));
        }

        // A cups-pdf queue, made when there is none.
        m_queue = QRegularExpression(QStringLiteral("device for ([^:\n]+): cups-pdf:/"))
                      .match(run("lpstat", {"-v"}))
                      .captured(1);
        QString why;
        if (m_queue.isEmpty()) {
            m_queue = QStringLiteral("PDF");
            if (run("lpadmin", {"-p", m_queue, "-v", "cups-pdf:/", "-E", "-P", Ppd}, &why).isNull())
                QFAIL(qPrintable(QStringLiteral("cannot add the cups-pdf queue: ") + why));
        }
        if (run("lpadmin", {"-d", m_queue}, &why).isNull())
            QFAIL(qPrintable(QStringLiteral("cannot make the cups-pdf queue the default: ") + why));
    }

    void invoicesAsOneJobOnTheDefaultPrinter()
    {
        QCOMPARE(defaultPrinterName(), m_queue);

        InvoiceInput first = sampleInvoice(0, 3, true, false);
        InvoiceInput second = sampleInvoice(2, 2, false, false);
        second.customer[1] = QStringLiteral("Bob");
        second.customer[2] = QStringLiteral("Stone");
        const QList<Page> pages = {composeInvoice(first).first(), composeInvoice(second).first()};

        // cups-pdf names its file after the job's title.
        const QString token = QStringLiteral("qorvane_%1_%2")
                                  .arg(QCoreApplication::applicationPid())
                                  .arg(QDateTime::currentMSecsSinceEpoch());
        const PrintOutcome out = printToDefaultPrinter(pages, token);
        QVERIFY(out.status == PrintStatus::Printed && out.printer == m_queue);

        // The print system works on its own time: wait for the file and for
        // it to be whole.
        QString file;
        const bool arrived = QTest::qWaitFor(
            [&] {
                file = findOutput(token);
                return !file.isEmpty() && run("pdfinfo", {file}).contains(QRegularExpression("Pages:\\s+2\\n"));
            },
            90000);
        QVERIFY2(arrived, qPrintable(QStringLiteral("no output of job %1 from cups-pdf").arg(token)));

        // cups-pdf passes the job through PostScript, which keeps the drawing
        // but not the text's characters; so the printed sheets are compared
        // as pictures with the same pages written straight to PDF on the
        // queue's paper.
        const QString direct = m_dir.filePath("direct.pdf");
        QVERIFY(writePdf(pages, direct, QPrinterInfo::defaultPrinter().defaultPageSize()));
        for (int page = 1; page <= 2; ++page) {
            const QImage printed = raster(file, page);
            const QImage expected = raster(direct, page);
            QVERIFY(!printed.isNull() && !expected.isNull() && printed.size() == expected.size());
            const double differing = differingShare(printed, expected);
            // A page a tenth of an inch out of place would differ far more.
            const QImage shifted = expected.copy(QRect(4, 4, expected.width(), expected.height()));
            QVERIFY(differingShare(shifted, expected) > 3 * differing);
            QVERIFY2(differing < 0.015, qPrintable(QStringLiteral("page %1: %2 of the pixels differ").arg(page).arg(differing)));
        }
        // The measure tells pages apart: the two invoices differ.
        QVERIFY(differingShare(raster(file, 1), raster(file, 2)) > 0.015);
        QFile::remove(file);
    }

    void aQueueThatRejectsJobsIsReported()
    {
        const QString queue = QStringLiteral("QorvaneRejects");
        QString why;
        if (run("lpadmin", {"-p", queue, "-v", "cups-pdf:/", "-E", "-P", Ppd}, &why).isNull() || run("cupsreject", {queue}, &why).isNull())
            QFAIL(qPrintable(QStringLiteral("cannot set up a rejecting queue: ") + why));
        QPrinter printer(QPrinterInfo::printerInfo(queue), QPrinter::HighResolution);
        const PrintOutcome out = printPages({composeInvoice(sampleInvoice(1, 2, true, false)).first()}, printer, "rejected");
        run("lpadmin", {"-x", queue});
        QVERIFY2(out.status == PrintStatus::Failed && out.printer == queue &&
                     out.reason.contains(QLatin1String("not accepting jobs")),
                 qPrintable(out.reason));
    }
};

QTEST_MAIN(TstCupsPrint)
#include "tst_cupsprint.moc"
