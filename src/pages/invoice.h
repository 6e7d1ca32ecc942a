#pragma once
// Filling an invoice form for one customer. The composer reads plain values
// (the company's details, the customer's fields, the ticked lines as the print
// tree shows them, the print options), never a window.
#include "database/regional.h"
#include "pages/page.h"

#include <QDate>
#include <QList>
#include <QString>

#include <array>
#include <optional>

namespace qor::pages {

enum class TitleOption { Invoice = 0, Estimate = 1, Other = 2 };
enum class TitleSize { Small = 0, Medium = 1, Large = 2 };

// The user's print options as they stand when the run starts.
struct InvoiceOptions {
    int templateNumber = 0;  // 0 frmPrint0, 1 frmPrint1, 2 frmPrint2; others print nothing
    TitleOption title = TitleOption::Invoice;
    QString titleText;  // taken only with TitleOption::Other, also when empty
    TitleSize titleSize = TitleSize::Large;
    bool addInvoiceDate = false;
    bool keepTwelveLines = true;
    bool moveBottomText = false;  // only when lines are taken out
    bool printDuplicates = false;  // for the run: each page twice
};

// One child of the customer's node in the print tree: its text, such as
// "$5.00 - Midget Widget (x3)" or "INVOICE NOTE: Thanks", and its tick.
struct InvoiceLine {
    QString text;
    bool ticked = true;

    // The text of an item line as the tree shows it: the price as displayed,
    // " - ", the name, and " (x", the quantity, ")" from 2 on.
    static InvoiceLine item(const QString &price, const QString &name, int quantity = 1, bool ticked = true);
    static InvoiceLine note(const QString &note, bool ticked = true);
};

struct InvoiceInput {
    // txtCompanyDetails(0..8): name, three address lines, phone, slogan,
    // general description, payee for checks, closing.
    std::array<QString, 9> company;
    // The customer's fields: 0 display name, 1 first name, 2 last name, 3 to 5
    // address lines, 6 e-mail, 7 phone, 8 notes.
    std::array<QString, 9> customer;
    // The customer node's text; " - paid" at its end stamps the page paid.
    QString customerNodeText;
    QList<InvoiceLine> lines;
    QString billDue;  // the bill due date as shown for the period
    QDate invoiceDate = QDate::currentDate();  // for the optional date line
    QString dateFormat = qor::regional::dateFormatString();  // "mm/dd/yyyy" and the like
    // What stands before the digits of an amount in this locale; removed with
    // the "," from prices before they are read.
    QString currencySymbol = qor::regional::currencySymbol();
    InvoiceOptions options;
};

// The item pitch: one line of the item box.
constexpr int LinePitch = 360;
constexpr int MaxLines = 12;

// Fills a fresh copy of an invoice form. Gives the index of the last line
// used (-1: no ticked line, no page; 12: the walk stopped at the thirteenth).
int ComposeInvoice(Page &page, const InvoiceInput &input);
// Takes the lines that stay empty out of the page when fewer than eleven are
// used; moves the text under the box too when asked.
void CompactInvoiceLines(Page &page, int lineIndex, bool moveBottomText);

// A filled page for the input, or nothing when the template number is not 0,
// 1 or 2 or no line is ticked.
std::optional<Page> composeInvoicePage(const InvoiceInput &input);

// The quantity an item text ends with: " (x3)" gives 3, " (x12)" 12; any
// other ending 1.
int parseBilledQuantity(const QString &text);

}  // namespace qor::pages
