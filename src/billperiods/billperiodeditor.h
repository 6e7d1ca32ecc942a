// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// The Bill Periods panel without its window: the mode it is in, the new
// period's name and dates as typed, and what the panel shows because of both.
// The panel's handlers ask the mode what a press means; the captions,
// visibility and colours come from look(), never from a control's text.
#include <QString>

namespace qor {

class BillPeriodEditor {
public:
    enum class Mode {
        Viewing,   // a finalised period on show (or none)
        Paying,    // a customer of the period's records selected: payments offered
        Entering,  // a new period being named and billed, nothing billed or clicked yet
        Billing,   // the same after the first billing or customer click: it can start over
    };

    // What the panel shows. The fields of the new period are typable and the
    // products listed only while entering.
    struct Look {
        QString addCaption;    // cmdAddNewBP
        QString resetCaption;  // cmdResetCustomerAccounts
        QString nameCaption;   // lblBillPeriodName
        bool addShown = true, cancelShown = false, resetShown = false, adjustShown = false;
        bool entryShown = false;    // lvwProducts(1), lblDoubleClickToAdd, txtBillPeriod
        bool chooserShown = true;   // cmbBillPeriod(1)
        bool exampleShown = false;  // lblExample, in place of...
        bool accountsShown = true;  // ...lblCustomerAccountsForThisPeriod
        bool datesLocked = true;
        // Still to be typed: the info background instead of the window's.
        bool nameWanted = false, dueWanted = false;
    };

    Mode mode() const { return m_mode; }
    bool entering() const { return m_mode == Mode::Entering || m_mode == Mode::Billing; }

    // "&New Bill Period" with customers and products to bill.
    void beginEntry() { m_mode = Mode::Entering; }
    // Finalised, cancelled or dropped: the panel views periods again.
    void endEntry() { m_mode = Mode::Viewing; }
    // An item billed or removed, or a customer clicked: the entry may start over.
    void entryTouched();
    // A click on the tree of a finalised period: payments are offered exactly
    // for a customer node that has a record in it.
    void customerChosen(bool hasRecord);
    // A payment logged or another period shown: nobody is chosen to pay.
    void paymentDone();

    void setName(const QString &name) { m_name = name; }
    void setStart(const QString &start) { m_start = start; }
    void setEnd(const QString &end) { m_end = end; }
    void setDue(const QString &due) { m_due = due; }
    const QString &name() const { return m_name; }
    const QString &start() const { return m_start; }
    const QString &end() const { return m_end; }
    const QString &due() const { return m_due; }

    Look look() const;

private:
    Mode m_mode = Mode::Viewing;
    QString m_name, m_start, m_end, m_due;
};

}  // namespace qor
