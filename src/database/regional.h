#pragma once
// Regional forms in one place. Everything here follows the default QLocale
// (QLocale() — the user's locale unless a caller or test sets another), so the
// whole program formats and reads numbers, money and dates the same way.
#include <QDate>
#include <QString>
#include <QStringView>

namespace qor::regional {

// Amount in the locale's currency form, with its digits, grouping, symbol and
// negative form: 1234.5 -> "$1,234.50" (en_US), "1.234,50 €" (de_DE).
QString formatCurrency(double value);

// Format(value, picture) for the pictures the program uses:
//   "00000000#.00"  twelve characters, the decimal separator of the locale
//   "0000000#"      eight digits
// The ones place always shows a digit, so 0 keeps the full width. A value too
// large for the picture shows all its digits. Negative numbers keep the width
// of the picture: "-" and the nines' complement of the size in the remaining
// places, so -5 gives "-99999994.99" and texts order as their numbers do.
QString formatNumber(double value, QStringView picture);
// Format(date, picture) for "yyyy/mm/dd", "mm/dd/yyyy", "dd/mm/yyyy", any other
// order or separator of those parts, and "MMMM" (the month's name in the locale).
// d/dd day, m/mm month (either case), mmm/mmmm month name, yy/yyyy year;
// every other character, "/" included, stands as written.
QString formatDate(const QDate &date, QStringView picture);

// The sort price of an item: the price text read as a number (see priceValue)
// formatted with "00000000#.00". Always exactly twelve characters: prices of
// a billion or more give "999999999.99", negative ones the complement form
// above (down to "-00000000.00"), so they sort before zero and among
// themselves by value.
QString sortPrice(QStringView priceText);
// The number a price text holds: first by the locale's rules (currency symbol,
// grouping and decimal separator allowed); if the locale cannot read it, by the
// digits it holds, taking the last '.' or ',' followed by one or two digits as
// the decimal point. Text without digits is 0.
double priceValue(QStringView priceText);

// An amount text as the lists show it ("$1,234.50", "1.234,50 €") made ready
// for Val: the currency symbol and this locale's group mark taken out, its
// decimal mark turned into '.'. Where the marks are "," and "." this is just
// the text without the symbol and the commas.
QString plainAmountText(QStringView text, QStringView currencySymbol);

// Val: the leading number of a text, '.' as decimal point, blanks skipped,
// anything else ends it; no number gives 0. An exponent counts only with
// digits after it; "&H" and "&O" read hexadecimal and octal.
double val(QStringView text);
// Str: '.' decimal point, a leading blank for numbers that are not negative,
// up to 15 significant digits, "E+20" form for very large or small values.
QString str(double value);

// The numeric test of the locale: can the text be read as a number, allowing
// the locale's grouping and currency symbol (or ISO code) before or after, a
// leading or trailing sign or brackets, and blanks around? No exponents.
bool isNumeric(QStringView text);
// The date test: can the text be read as a date? Three numbers in the order
// of dateFormatString() with any of "/", "-", "." between (a four-digit first
// number is a year; two-digit years are 1930-2029), or the locale's own short
// and long forms, or a month written by name ("March 31, 2004").
bool isDate(QStringView text);
// Reads a date typed in dateFormatString(); invalid QDate when it can't.
QDate parseDate(QStringView text);

// Start-up values worked out from the locale.
QString dateFormatString();  // "mm/dd/yyyy", "dd.mm.yyyy", "yyyy-mm-dd", ...
QString dateSeparator();     // one character
QString currencySymbol();    // what stands before the digits, or empty

// The plain decimal text of a 32-bit float, as balances are stored: shortest
// text that reads back as the same float, '.' as decimal point, no grouping.
QString singleText(float value);

}  // namespace qor::regional
