// SPDX-License-Identifier: GPL-3.0-or-later
#include "billperiods/entryguard.h"

#include "billing/invoicetrees.h"
#include "uiservices/dialogservice.h"

namespace qor::entryguard {

bool mayDropEntry(InvoiceTrees &trees, QWidget *owner)
{
    if (!trees.entryOpen()) return true;
    DialogService::Message m;
    m.icon = QMessageBox::Warning;
    m.title = AppTitle;
    m.text = QStringLiteral(
        "You are entering a new bill period that has not been added yet.\r\n\r\n"
        "If you go on, everything billed in it is lost.");
    // Cancel (also Escape and the close box) keeps the entry.
    m.buttons = QMessageBox::Cancel | QMessageBox::Discard;
    m.defaultButton = QMessageBox::Cancel;
    m.captions = {{QMessageBox::Cancel, QString::fromLatin1(KeepEntering)},
                  {QMessageBox::Discard, QString::fromLatin1(DropTheEntry)}};
    if (DialogService::current().message(owner, m) != QMessageBox::Discard) return false;
    trees.dropEntry();
    return true;
}

}  // namespace qor::entryguard
