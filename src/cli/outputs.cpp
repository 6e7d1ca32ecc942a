// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/outputs.h"

#include "billing/billing.h"
#include "billing/invoicetree.h"
#include "database/database.h"
#include "database/rowtypes.h"
#include "pages/pdfoutput.h"
#include "printing/invoicerun.h"

#include <QDir>
#include <QFile>
#include <QTextStream>

#include <sys/stat.h>

namespace qor::cli {

void err(const QString &text)
{
    QTextStream e(stderr);
    e << text << Qt::endl;
}

QString shown(const QString &path) { return QDir::toNativeSeparators(path); }

namespace {

bool sameFile(const QString &a, const QString &b)
{
    struct stat x {
    }, y{};
    if (::stat(QFile::encodeName(a).constData(), &x) != 0 || ::stat(QFile::encodeName(b).constData(), &y) != 0)
        return false;
    return x.st_dev == y.st_dev && x.st_ino == y.st_ino;
}

}  // namespace

bool outputIsInput(const QString &out, const QStringList &inputs)
{
    for (const QString &in : inputs)
        if (sameFile(out, in)) {
            err(QStringLiteral("The output \"%1\" is the input \"%2\"; choose another output name.")
                    .arg(shown(out), shown(in)));
            return true;
        }
    return false;
}

int writeOutput(const QByteArray &pdf, const QString &out)
{
    const QString why = pages::savePdf(pdf, out);
    if (why.isEmpty()) return Ok;
    err(QStringLiteral("The output \"%1\" could not be written: %2. Nothing was left in its place.")
            .arg(shown(out), why));
    return NotWritten;
}

bool isCustomerNumber(const QString &text)
{
    if (text.isEmpty() || text.size() > 18) return false;
    for (QChar c : text)
        if (c < u'0' || c > u'9') return false;
    return text.toLongLong() > 0;
}

int periodTree(const Database &db, const QString &file, const QString &period, const QString &cid, bool all,
               InvoiceTree &tree)
{
    bool periodFound = false;
    db.periods().forEach([&](QStringView, QStringView text) {
        const auto p = PeriodView::parse(text);
        if (p && p->name == period) periodFound = true;
        return !periodFound;
    });
    if (!periodFound) {
        err(QStringLiteral("There is no bill period \"%1\" in \"%2\".").arg(period, shown(file)));
        return NotFound;
    }
    billing::rebuildInvoiceTree(tree, db, period);
    const QString key = cid.isEmpty() ? QString() : numberKey(QStringView(cid));
    bool found = false;
    for (int node : tree.nodes()) {
        if (tree.kind(node) != NodeKind::Customer) continue;
        if (!key.isEmpty()) {
            tree.setChecked(node, tree.key(node) == key);
            found = found || tree.key(node) == key;
        } else if (all) {
            tree.setChecked(node, true);
        }
    }
    if (!key.isEmpty() && !found) {
        err(QStringLiteral("Customer %1 has no invoice in the bill period \"%2\" of \"%3\".")
                .arg(cid, period, shown(file)));
        return NotFound;
    }
    return Ok;
}

int invoiceRunValues(const Database &db, const QString &period, int templateNumber, invoicerun::RunValues &run)
{
    run.company = db.company();
    run.billDue = invoicerun::billDueOf(db, period);
    run.options = invoicerun::storedInvoiceOptions();
    if (templateNumber >= 0) run.options.templateNumber = templateNumber;
    if (run.options.templateNumber < 0) {
        err(QStringLiteral(
            "The stored invoice layout (Printing/PrintPreviewSelected) is not 0, 1 or 2; "
            "give --template 0, 1 or 2."));
        return Usage;
    }
    return Ok;
}

}  // namespace qor::cli
