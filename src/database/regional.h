// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// Regional forms in one place. Everything here follows the default QLocale
// (QLocale() — the user's locale unless a caller or test sets another), so the
// whole program formats and reads numbers, money and dates the same way.
#include "database/money.h"

#include <QDate>
#include <QString>
#include <QStringView>

namespace qor::regional {

// Format(date, picture) for "yyyy/mm/dd", "mm/dd/yyyy", "dd/mm/yyyy", any other
// order or separator of those parts, and "MMMM" (the month's name in the locale).
// d/dd day, m/mm month (either case), mmm/mmmm month name, yy/yyyy year;
// every other character, "/" included, stands as written.
QString formatDate(const QDate &date, QStringView picture);

// The sort price of an item, "00000000#.00" with the locale's decimal mark:
// always exactly twelve characters. Prices of a billion or more give
// "999999999.99", negative ones "-" and the complement of their size to
// 99999999.99 ("-5" gives "-99999994.99", down to "-00000000.00"), so the
// texts sort as the amounts do. A price text is read by Money's one rule;
// one that holds no amount sorts as 0.
QString sortPrice(Money price);
QString sortPrice(QStringView priceText);

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

}  // namespace qor::regional
