// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// The captions that change with a panel's mode, in one place: the panels
// compute which one shows, and nobody compares a control's text with them.
#include <QString>

namespace qor::captions {

inline const QString AddNew = QStringLiteral("&Add New");
inline const QString CancelNew = QStringLiteral("&Cancel New");
inline const QString NewBillPeriod = QStringLiteral("&New Bill Period");
inline const QString LogFullPayment = QStringLiteral("&Log Full Payment");
inline const QString ResetCustomerAccounts = QStringLiteral("&Reset Customer Accounts");
inline const QString BillPeriodName = QStringLiteral("Bill Period Name:");
inline const QString BillPeriod = QStringLiteral("Bill Period:");

}  // namespace qor::captions
