// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// Filling the invoice forms for one customer. The composer reads plain values
// (the company's details, the customer's fields, what was billed and what is
// still owed, the print options), never a window.
#include "database/money.h"
#include "database/regional.h"
#include "pages/page.h"

#include <QDate>
#include <QList>
#include <QLocale>
#include <QString>

#include <array>

namespace qor::pages {

enum class TitleOption { Invoice = 0,
                         Estimate = 1,
                         Other = 2 };
enum class TitleSize { Small = 0,
                       Medium = 1,
                       Large = 2 };

// The user's print options as they stand when the run starts.
struct InvoiceOptions {
    int templateNumber = 0;  // 0 frmPrint0, 1 frmPrint1, 2 frmPrint2; others print nothing
    TitleOption title = TitleOption::Invoice;
    QString titleText;  // taken only with TitleOption::Other, also when empty
    TitleSize titleSize = TitleSize::Large;
    bool addInvoiceDate = false;
    bool keepTwelveLines = true;
    bool moveBottomText = false;   // only when lines are taken out
    bool printDuplicates = false;  // for the run: each invoice twice
};

// One line of the item box: a billed item, or the invoice note, which keeps
// its line empty and prints under the box.
struct InvoiceLine {
    QString text;  // item: what the line says; note: the note
    Money amount;  // item: what the line bills
    bool note = false;

    // A billed item: its name as the lists show it, " (x", the quantity and
    // ")" when it isn't one, and the quantity times the price.
    static InvoiceLine item(const QString &name, qint64 quantity, Money amount);
    static InvoiceLine invoiceNote(const QString &note);
};

struct InvoiceInput {
    // txtCompanyDetails(0..8): name, three address lines, phone, slogan,
    // general description, payee for checks, closing.
    std::array<QString, 9> company;
    // The customer's fields: 0 display name, 1 first name, 2 last name, 3 to 5
    // address lines, 6 e-mail, 7 phone, 8 notes.
    std::array<QString, 9> customer;
    // Every item billed on the record, in order, and the invoice note.
    QList<InvoiceLine> lines;
    // What the customer still owes: the "TOTAL DUE:". Zero stamps the
    // invoice paid.
    Money balance;
    QString billDue;                                         // the bill due date as shown for the period
    QDate invoiceDate = QDate::currentDate();                // for the optional date line
    QString dateFormat = qor::regional::dateFormatString();  // "mm/dd/yyyy" and the like
    QLocale locale;                                          // the currency form of the amounts
    InvoiceOptions options;

    // What the items bill together.
    Money billed() const;
};

// The item pitch: one line of the item box.
constexpr int LinePitch = 360;
constexpr int MaxLines = 12;

// The pages of one invoice, in order: one, or more when its lines (and the
// "Billed:" and "Paid:" lines of a part payment) don't fit in one box. Every
// page repeats the header and the customer; the pages of a longer invoice
// say "Page n of m", and only the last one has the total, the stamp and the
// text under the box. Nothing when the template number is not 0, 1 or 2 or
// there is no line.
QList<Page> composeInvoice(const InvoiceInput &input);

// Takes the lines that stay empty out of the page when fewer than eleven are
// used (lineIndex is the last used); moves the text under the box too when asked.
void CompactInvoiceLines(Page &page, int lineIndex, bool moveBottomText);

}  // namespace qor::pages
