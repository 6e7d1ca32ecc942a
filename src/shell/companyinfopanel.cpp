// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/companyinfopanel.h"

#include "database/database.h"
#include "database/entryrules.h"
#include "shell/appcontext.h"
#include "uiservices/dialogservice.h"

#include <QLineEdit>

namespace qor {

CompanyInfoPanel::CompanyInfoPanel(AppContext &ctx, QWidget *parent) : Panel(6, ctx, parent)
{
    for (int i = 0; i < CompanyFieldCount; ++i) {
        QLineEdit *t = require<QLineEdit>(QStringLiteral("txtCompanyDetails(%1)").arg(i));
        m_fields[size_t(i)] = t;
        connect(t, &QLineEdit::textChanged, this, [this, i] { detailsChanged(i); });
    }
    // Not guarded: emptying a field that held text before a read counts as
    // a change. The fields come from the file only when it was read as it is.
    const Database &db = ctx.db();
    connect(&db, &Database::aboutToReload, this, &CompanyInfoPanel::clearCompanyInfo);
    connect(&db, &Database::fileRead, this, &CompanyInfoPanel::readCompanyInfo);
}

QString CompanyInfoPanel::field(int index) const { return m_fields.at(size_t(index))->text(); }

void CompanyInfoPanel::detailsChanged(int index)
{
    if (m_isReadingCompanyInfo)
        return;
    // Text the file could not keep as typed is refused, as in the customer
    // fields: the field goes back to what it held.
    if (const QString why = entry::companyProblem(field(index)); !why.isEmpty()) {
        m_isReadingCompanyInfo = true;
        m_fields[size_t(index)]->setText(ctx.db().company()[size_t(index)]);
        m_isReadingCompanyInfo = false;
        DialogService::current().warning(ctx.mainWindow(), AppTitle, why);
        return;
    }
    ctx.db().setCompanyField(index, field(index));
}

void CompanyInfoPanel::readCompanyInfo()
{
    static const int order[CompanyFieldCount] = {0, 1, 2, 3, 4, 6, 7, 5, 8};
    m_isReadingCompanyInfo = true;
    for (int i : order) {
        m_fields[size_t(i)]->setText(ctx.db().company()[size_t(i)]);
        m_fields[size_t(i)]->setCursorPosition(0);  // a long value shows its start
    }
    m_isReadingCompanyInfo = false;
}

void CompanyInfoPanel::clearCompanyInfo()
{
    for (QLineEdit *t : m_fields)
        t->clear();
}

}  // namespace qor
