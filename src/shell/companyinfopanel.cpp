#include "shell/companyinfopanel.h"

#include "database/database.h"
#include "shell/appcontext.h"

#include <QLineEdit>

namespace qor {

namespace {
QString fieldName(int i) { return QStringLiteral("txtCompanyDetails(%1)").arg(i); }
}  // namespace

CompanyInfoPanel::CompanyInfoPanel(AppContext &ctx, QWidget *parent) : Panel(6, ctx, parent)
{
    for (int i = 0; i < CompanyFieldCount; ++i)
        if (auto *t = control<QLineEdit>(fieldName(i)))
            connect(t, &QLineEdit::textChanged, this, [this, i] { detailsChanged(i); });
}

QString CompanyInfoPanel::field(int index) const
{
    const auto *t = control<QLineEdit>(fieldName(index));
    return t ? t->text() : QString();
}

void CompanyInfoPanel::detailsChanged(int index)
{
    if (m_isReadingCompanyInfo)
        return;
    ctx.db().company[size_t(index)] = field(index);
    ctx.showDatabaseChanged(true);
}

void CompanyInfoPanel::readCompanyInfo()
{
    static const int order[CompanyFieldCount] = {0, 1, 2, 3, 4, 6, 7, 5, 8};
    m_isReadingCompanyInfo = true;
    for (int i : order)
        if (auto *t = control<QLineEdit>(fieldName(i)))
            t->setText(ctx.db().company[size_t(i)]);
    m_isReadingCompanyInfo = false;
}

void CompanyInfoPanel::clearCompanyInfo()
{
    for (int i = 0; i < CompanyFieldCount; ++i)
        if (auto *t = control<QLineEdit>(fieldName(i)))
            t->clear();
}

}  // namespace qor
