// SPDX-License-Identifier: GPL-3.0-or-later
#include "entryrules.h"

#include "rows.h"

namespace qor::entry {

namespace {

bool holdsSeparator(QStringView text) { return text.contains(FieldSep) || text.contains(ItemSep); }

const QString SeparatorMessage = QStringLiteral(
    "The text holds a control character (U+0001 or U+0002) that the database uses to divide its fields.\r\n"
    "Please remove it and try again.");

}  // namespace

QString customerProblem(const QStringList &typed)
{
    for (const QString &t : typed)
        if (holdsSeparator(t)) return SeparatorMessage;
    // Either name can lead the display name (the first name does when there
    // is no last name), and a display name that begins with the mark is an
    // archived customer's.
    for (qsizetype i = 0; i < 2 && i < typed.size(); ++i)
        if (typed[i].startsWith(ArchiveMark))
            return QStringLiteral(
                       "A first or last name can't begin with \"%1\": the program marks archived "
                       "customers with it.")
                .arg(ArchiveMark);
    return QString();
}

QString companyProblem(QStringView typed) { return holdsSeparator(typed) ? SeparatorMessage : QString(); }

QString productProblem(QStringView priceText, QStringView name)
{
    if (holdsSeparator(priceText) || holdsSeparator(name)) return SeparatorMessage;
    if (priceText.startsWith(ArchiveMark))
        return QStringLiteral("A price can't begin with \"%1\": the program marks archived items with it.")
            .arg(ArchiveMark);
    if (priceText.contains(u" - "))
        return QStringLiteral(
            "A price can't hold \" - \" (blank, hyphen, blank): it divides the price from the "
            "name.");
    return QString();
}

QString amountProblem(Money::EntryProblem problem, const QString &typed, bool balance)
{
    const QString what = balance ? QStringLiteral("balance") : QStringLiteral("price");
    if (problem == Money::EntryProblem::TooManyDecimals)
        return QStringLiteral(
                   "\"%1\" has more than two decimals.\r\n\r\nAmounts are kept to the cent: please type "
                   "the %2 with at most two digits after the decimal mark.")
            .arg(typed.trimmed(), what);
    return QStringLiteral("\"%1\" can't be read as an amount.\r\n\r\nPlease type the %2 as a number, such as %3.")
        .arg(typed.trimmed(), what, Money::fromCents(1250).toCurrencyText());
}

}  // namespace qor::entry
