// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// What typed text can't be stored as it stands. A row keeps its fields in one
// text, divided by two characters, and marks archived rows with "zzzz»" at a
// fixed place; an item's row divides price and name at the first " - ". Text
// that would be taken for one of those marks is refused when it is entered,
// so it can never flip a row to archived or move text between fields.
#include "money.h"

#include <QString>
#include <QStringList>
#include <QStringView>

namespace qor::entry {

// The customer fields as typed, in the panel's order: first name, last name,
// three address lines, e-mail, phone, notes. Empty when they can be stored,
// else the message that tells the user why not.
QString customerProblem(const QStringList &typed);

// A company field as typed: empty when it can be stored, else why not.
QString companyProblem(QStringView typed);

// The price text as it will be stored (in the currency form) and the name.
QString productProblem(QStringView priceText, QStringView name);

// An amount typed as a price (balance false) or as a new balance that
// Money::readTypedAmount refused: the message that tells the user why.
QString amountProblem(Money::EntryProblem problem, const QString &typed, bool balance);

}  // namespace qor::entry
