// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// The fixed page forms: the three invoice layouts frmPrint0, frmPrint1,
// frmPrint2 and the customer list page frmPrintC. They are built once from one
// table of element rows and never change; a composer fills a copy.
#include "pages/page.h"

namespace qor::pages {

// Page sizes of the forms, in twips.
constexpr int InvoiceWidth = 11520;
constexpr int InvoiceHeight = 14535;
constexpr int ListWidth = 11520;
constexpr int ListHeight = 14655;

// "frmPrint0", "frmPrint1", "frmPrint2" or "frmPrintC"; nullptr for any other
// name.
const Page *pageTemplate(const QString &formName);
// The invoice layout a template number selects: 0, 1 or 2; nullptr otherwise,
// so a stored number out of range prints nothing.
const Page *invoiceTemplate(int number);

}  // namespace qor::pages
