// SPDX-License-Identifier: GPL-3.0-or-later
// 1,000 invoices of a generated database e-mailed to a local SMTP server
// (aiosmtpd over STARTTLS or SSL/TLS, with a login), each message with its
// customer's invoice as a PDF made just before it is sent, as a real run does. Prints the whole time,
// the part spent making PDFs, the connections used and the sizes.
//   bench_mail [--count N] [--ssl] [--runs N]
#include "../tests/mail/smtpfixture.h"

#include "dbgen.h"

#include "billing/billing.h"
#include "billing/invoicetree.h"
#include "database/database.h"
#include "mail/mail.h"
#include "mail/smtp.h"
#include "printing/mailruns.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QTextStream>

using namespace qor;
using namespace qor::mail;

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    const QStringList args = app.arguments();
    const int count = args.contains(QStringLiteral("--count")) ? args.value(args.indexOf(QStringLiteral("--count")) + 1).toInt() : 1000;
    const int runs = args.contains(QStringLiteral("--runs")) ? args.value(args.indexOf(QStringLiteral("--runs")) + 1).toInt() : 1;
    const bool ssl = args.contains(QStringLiteral("--ssl"));
    QTextStream out(stdout);

    testing::SmtpFixture smtp;
    QTemporaryDir home;
    qputenv("XDG_CONFIG_HOME", home.filePath(QStringLiteral("config")).toUtf8());
    if (!smtp.makeCertificates()) {
        out << "certificates: " << smtp.error << Qt::endl;
        return 1;
    }
    const QString password = QStringLiteral("bench");
    const int port = smtp.start(ssl ? QStringLiteral("implicit") : QStringLiteral("starttls"),
                                {"--user", "bench", "--password", password, "--quiet"});
    if (!port) {
        out << smtp.error << Qt::endl;
        return 1;
    }

    MailAccount a;
    a.server = QStringLiteral("localhost");
    a.port = port;
    a.security = ssl ? Security::SslTls : Security::StartTls;
    a.user = QStringLiteral("bench");
    a.senderName = QStringLiteral("Harbour & Hill Landscaping");
    a.senderAddress = QStringLiteral("billing@example.com");
    a.caFile = smtp.caFile();
    // Real invoices: the latest period of a generated database (about 1,000
    // records in each of its 120 periods), ticked as the Printing panel ticks
    // it, composed by the code behind "E-mail Selected" and `qorvane-cli email`.
    Database db;
    bench::generate(db, bench::largeParams(QStringLiteral("en_US"), 120 * std::max(count, 1000) * 11 / 10));
    db.fillInvoiceRecordNames();
    const QString period = billing::periodNames(db).last();
    InvoiceTree tree(1);
    billing::rebuildInvoiceTree(tree, db, period);
    invoicerun::RunValues values;
    values.company = db.company();
    values.billDue = invoicerun::billDueOf(db, period);
    values.options = invoicerun::storedInvoiceOptions();
    tree.forEachNode([&](int node) {
        if (tree.kind(node) == NodeKind::Customer) tree.setChecked(node, true);
    });
    QList<MailCustomer> customers = mailruns::tickedCustomers(db, tree).mid(0, count);
    for (MailCustomer &c : customers)  // the generated fields hold no deliverable address
        c.addresses = QStringLiteral("customer%1@example.org").arg(c.number);
    if (customers.size() < count) {
        out << "only " << customers.size() << " customers in the period " << period << Qt::endl;
        return 1;
    }
    const Compose invoices = mailruns::invoiceMessages(db, tree, values, period, loadTexts());

    for (int run = 0; run < runs; ++run) {
        qint64 composeNs = 0, pdfBytes = 0;
        const Compose compose = [&](const MailCustomer &c) {
            QElapsedTimer t;
            t.start();
            OutgoingMessage m = invoices(c);
            composeNs += t.nsecsElapsed();
            pdfBytes += m.pdf.size();
            return m;
        };
        SmtpSession session(SmtpOptions::forAccount(a, password));
        SendRun send(a, session);
        QElapsedTimer total;
        total.start();
        const QList<CustomerResult> results = send.run(customers, compose);
        const double seconds = total.nsecsElapsed() / 1e9;
        const auto sent = std::count_if(results.begin(), results.end(),
                                        [](const CustomerResult &r) { return r.outcome == CustomerResult::Outcome::Sent; });
        out << QStringLiteral(
                   "%1 messages over %2 (%3 sent, %4 connection(s)): %5 s in all, %6 s making PDFs, "
                   "%7 s sending; PDF %8 KB on average (target: under 60 s)")
                   .arg(count)
                   .arg(ssl ? QStringLiteral("SSL/TLS") : QStringLiteral("STARTTLS"))
                   .arg(sent)
                   .arg(session.connectionsMade())
                   .arg(seconds, 0, 'f', 2)
                   .arg(composeNs / 1e9, 0, 'f', 2)
                   .arg(seconds - composeNs / 1e9, 0, 'f', 2)
                   .arg(pdfBytes / 1024.0 / std::max(1, count), 0, 'f', 1)
            << Qt::endl;
        if (sent != count) {
            for (const CustomerResult &r : results)
                if (r.outcome != CustomerResult::Outcome::Sent) {
                    out << "first failure: " << r.words << Qt::endl;
                    break;
                }
            return 1;
        }
    }
    return 0;
}
