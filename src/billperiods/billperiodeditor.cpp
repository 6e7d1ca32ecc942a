// SPDX-License-Identifier: GPL-3.0-or-later
#include "billperiods/billperiodeditor.h"

#include "billing/billing.h"
#include "database/regional.h"
#include "uiservices/captions.h"

namespace qor {

void BillPeriodEditor::entryTouched()
{
    if (m_mode == Mode::Entering) m_mode = Mode::Billing;
}

void BillPeriodEditor::customerChosen(bool hasRecord)
{
    if (!entering()) m_mode = hasRecord ? Mode::Paying : Mode::Viewing;
}

void BillPeriodEditor::paymentDone()
{
    if (m_mode == Mode::Paying) m_mode = Mode::Viewing;
}

BillPeriodEditor::Look BillPeriodEditor::look() const
{
    Look l;
    if (!entering()) {
        l.addCaption = captions::NewBillPeriod;
        l.resetCaption = captions::LogFullPayment;
        l.nameCaption = captions::NameInView;
        l.resetShown = l.adjustShown = m_mode == Mode::Paying;
        return l;
    }
    l.addCaption = captions::AddNew;
    l.resetCaption = captions::ResetCustomerAccounts;
    l.nameCaption = captions::NameInEntry;
    // "&Add New" waits for a name and a due date that reads as a date; the
    // date's colour also wants the date separator exactly twice.
    l.addShown = !m_name.isEmpty() && billing::dueDateAllowsAdd(m_due);
    l.cancelShown = true;
    l.resetShown = m_mode == Mode::Billing;
    l.entryShown = true;
    l.chooserShown = false;
    l.exampleShown = m_name.isEmpty();
    l.accountsShown = !m_name.isEmpty();
    l.datesLocked = false;
    l.nameWanted = m_name.isEmpty();
    l.dueWanted = !billing::dueDateLooksGood(m_due, regional::dateSeparator());
    return l;
}

}  // namespace qor
