// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/regional.h"

#include <QLocale>
#include <QStringList>

#include <cmath>
#include <limits>

namespace qor::regional {

namespace {

// Blanks a user may leave around or inside a number: ordinary space, tab and
// the no-break spaces some locales use as group separator or before the symbol.
bool isBlank(QChar c)
{
    return c == u' ' || c == u'\t' || c == QChar(0x00A0) || c == QChar(0x202F) || c == QChar(0x2009) || c == QChar(0x2007);
}

bool isAsciiDigit(QChar c) { return c >= u'0' && c <= u'9'; }

QString trimBlanks(QStringView text)
{
    qsizetype b = 0;
    qsizetype e = text.size();
    while (b < e && isBlank(text[b]))
        ++b;
    while (e > b && isBlank(text[e - 1]))
        --e;
    return text.mid(b, e - b).toString();
}

// The currency symbols a user of the current locale may type: the locale's own
// symbol and its ISO code.
QStringList localeSymbols()
{
    const QLocale loc;
    QStringList out;
    for (const QString &s : {loc.currencySymbol(QLocale::CurrencySymbol),
                             loc.currencySymbol(QLocale::CurrencyIsoCode)}) {
        if (!s.isEmpty() && !out.contains(s))
            out << s;
    }
    // The full-width yen sign and the plain one are typed interchangeably.
    if (out.contains(QStringLiteral("\uFFE5")))
        out << QStringLiteral("\u00A5");
    else if (out.contains(QStringLiteral("\u00A5")))
        out << QStringLiteral("\uFFE5");
    return out;
}

// Strips an optional currency symbol, sign and brackets around a number typed
// under the current locale. Gives the bare number text and whether it is
// negative; false when the decorations don't fit together.
bool stripDecorations(QStringView input, QString *number, bool *negative)
{
    const QLocale loc;
    QString t = trimBlanks(input);
    *negative = false;
    bool haveSign = false;
    bool haveSymbol = false;
    const QStringList symbols = localeSymbols();
    const QString minus = loc.negativeSign();

    auto takeSign = [&](bool atFront) -> bool {
        for (const QString &m : {QStringLiteral("-"), minus, QStringLiteral("\u2212"), QStringLiteral("+")}) {
            if (m.isEmpty())
                continue;
            if (atFront ? t.startsWith(m) : t.endsWith(m)) {
                if (haveSign)
                    return false;
                t = atFront ? t.mid(m.size()) : t.left(t.size() - m.size());
                t = trimBlanks(t);
                haveSign = true;
                *negative = m != QLatin1String("+");
                return true;
            }
        }
        return false;
    };
    auto takeSymbol = [&](bool atFront) -> bool {
        for (const QString &s : symbols) {
            if (atFront ? t.startsWith(s) : t.endsWith(s)) {
                if (haveSymbol)
                    return false;
                t = atFront ? t.mid(s.size()) : t.left(t.size() - s.size());
                t = trimBlanks(t);
                haveSymbol = true;
                return true;
            }
        }
        return false;
    };

    // Brackets mean a negative amount, as accountants write it.
    if (t.startsWith(u'(') && t.endsWith(u')') && t.size() >= 2) {
        t = trimBlanks(QStringView(t).mid(1, t.size() - 2));
        haveSign = true;
        *negative = true;
    }
    // Any order of sign and symbol on either side: "-$5", "$-5", "5 €-", "-5 €".
    for (int pass = 0; pass < 2; ++pass) {
        takeSign(true);
        takeSymbol(true);
        takeSymbol(false);
        takeSign(false);
    }
    if (t.isEmpty())
        return false;
    *number = t;
    return true;
}

// A bare number under the current locale's digits, grouping and decimal
// separator. Groups typed with an ordinary blank count where the locale groups
// with a no-break space.
bool readLocaleNumber(const QString &bare, double *value)
{
    QLocale loc;
    loc.setNumberOptions(QLocale::DefaultNumberOptions);
    QString t = bare;
    const QString point = loc.decimalPoint();
    const QString grouping = loc.groupSeparator();
    for (QChar c : t) {
        // Only digits, the locale's separators and blanks belong in a plain
        // amount; this keeps out a second sign, exponents, "inf" and "nan"
        // that the converter would take.
        if (!(c.isDigit() || isBlank(c) || point.contains(c) || grouping.contains(c)))
            return false;
    }
    bool anyDigit = false;
    for (QChar c : t)
        anyDigit = anyDigit || c.isDigit();
    if (!anyDigit)
        return false;
    const QString group = loc.groupSeparator();
    if (group.size() == 1 && isBlank(group.at(0))) {
        for (QChar &c : t) {
            if (isBlank(c))
                c = group.at(0);
        }
    } else {
        for (QChar c : t) {
            if (isBlank(c))
                return false;
        }
    }
    bool ok = false;
    const double v = loc.toDouble(t, &ok);
    if (!ok || !std::isfinite(v))
        return false;
    *value = v;
    return true;
}


// Year with two digits read the way people mean it: 00-29 this century,
// 30-99 the last one.
int expandYear(int year, int digits)
{
    if (digits > 2)
        return year;
    return year < 30 ? 2000 + year : 1900 + year;
}

bool readInt(QStringView s, int *out)
{
    if (s.isEmpty() || s.size() > 4)
        return false;
    for (QChar c : s) {
        if (!isAsciiDigit(c))
            return false;
    }
    *out = s.toInt();
    return true;
}

QDate parseNumericDate(QStringView text)
{
    // Split on any of the usual date separators; the locale's own one is
    // always among them.
    QString sepChars = QStringLiteral("/-.");
    const QString own = dateSeparator();
    if (!sepChars.contains(own))
        sepChars += own;
    QList<QStringView> parts;
    qsizetype start = 0;
    for (qsizetype i = 0; i <= text.size(); ++i) {
        if (i == text.size() || sepChars.contains(text[i])) {
            parts << text.mid(start, i - start).trimmed();
            start = i + 1;
        }
    }
    if (parts.size() != 3)
        return {};
    int n[3];
    for (int i = 0; i < 3; ++i) {
        if (!readInt(parts[i], &n[i]))
            return {};
    }
    const QString form = dateFormatString();
    int y = 0;
    int m = 0;
    int d = 0;
    int yearDigits = 4;
    if (parts[0].size() == 4 || form.startsWith(u'y')) {
        y = n[0];
        m = n[1];
        d = n[2];
        yearDigits = int(parts[0].size());
    } else if (form.startsWith(u'd')) {
        d = n[0];
        m = n[1];
        y = n[2];
        yearDigits = int(parts[2].size());
    } else {
        m = n[0];
        d = n[1];
        y = n[2];
        yearDigits = int(parts[2].size());
    }
    if (yearDigits == 3)
        return {};
    return QDate(expandYear(y, yearDigits), m, d);
}

}  // namespace

QString formatDate(const QDate &date, QStringView picture)
{
    if (!date.isValid())
        return {};
    const QLocale loc;
    QString out;
    qsizetype i = 0;
    while (i < picture.size()) {
        const QChar c = picture[i];
        const QChar lc = c.toLower();
        qsizetype run = 1;
        while (i + run < picture.size() && picture[i + run].toLower() == lc)
            ++run;
        if (lc == u'd') {
            if (run == 1)
                out += QString::number(date.day());
            else if (run == 2)
                out += QString::number(date.day()).rightJustified(2, u'0');
            else if (run == 3)
                out += loc.dayName(date.dayOfWeek(), QLocale::ShortFormat);
            else
                out += loc.dayName(date.dayOfWeek(), QLocale::LongFormat);
        } else if (lc == u'm') {
            if (run == 1)
                out += QString::number(date.month());
            else if (run == 2)
                out += QString::number(date.month()).rightJustified(2, u'0');
            else if (run == 3)
                out += loc.monthName(date.month(), QLocale::ShortFormat);
            else
                out += loc.standaloneMonthName(date.month(), QLocale::LongFormat);
        } else if (lc == u'y') {
            if (run <= 2)
                out += QString::number(date.year() % 100).rightJustified(2, u'0');
            else
                out += QString::number(date.year());
        } else {
            // Separators stand as written: the stored form "yyyy/mm/dd" must
            // keep its "/" whatever the locale.
            out += picture.mid(i, run);
        }
        i += run;
    }
    return out;
}

QString sortPrice(Money price)
{
    // Nine integer digits is all the form has room for; a negative price
    // keeps the width: "-" and the complement of its size to 99999999.99, so
    // texts order as their amounts do.
    constexpr qint64 Top = 99999999999, NegativeTop = 9999999999;
    const QString point = QLocale().decimalPoint();
    const bool negative = price.isNegative();
    const qint64 cents = negative ? NegativeTop - std::min(NegativeTop, -std::max(price.cents(), -NegativeTop))
                                  : std::min(price.cents(), Top);
    const QString whole = QString::number(cents / 100).rightJustified(negative ? 8 : 9, u'0');
    const QString fraction = QString::number(cents % 100).rightJustified(2, u'0');
    return (negative ? QStringLiteral("-") : QString()) + whole + (point.isEmpty() ? QStringLiteral(".") : point.left(1)) + fraction;
}

QString sortPrice(QStringView priceText) { return sortPrice(Money::fromPriceText(priceText).value_or(Money())); }

double val(QStringView text)
{
    qsizetype i = 0;
    const qsizetype n = text.size();
    auto skipBlanks = [&] {
        while (i < n && (text[i] == u' ' || text[i] == u'\t' || text[i] == u'\n' || text[i] == u'\r'))
            ++i;
    };
    skipBlanks();
    // &H and &O prefixes read hexadecimal and octal, as the old Val did.
    if (i + 1 < n && text[i] == u'&') {
        const QChar kind = text[i + 1].toUpper();
        const int base = kind == u'H' ? 16 : kind == u'O' ? 8
                                                          : 0;
        if (base != 0) {
            i += 2;
            qint64 acc = 0;
            while (i < n) {
                const QChar c = text[i].toUpper();
                int d = -1;
                if (isAsciiDigit(c))
                    d = c.unicode() - u'0';
                else if (c >= u'A' && c <= u'F')
                    d = c.unicode() - u'A' + 10;
                if (d < 0 || d >= base)
                    break;
                acc = acc * base + d;
                ++i;
                if (acc > std::numeric_limits<qint32>::max())
                    break;
            }
            return double(acc);
        }
    }
    std::string s;
    if (i < n && (text[i] == u'-' || text[i] == u'+')) {
        s += char(text[i].unicode());
        ++i;
    }
    bool seenPoint = false;
    bool anyDigit = false;
    while (i < n) {
        skipBlanks();
        if (i >= n)
            break;
        const QChar c = text[i];
        if (isAsciiDigit(c)) {
            s += char(c.unicode());
            anyDigit = true;
        } else if (c == u'.' && !seenPoint) {
            s += '.';
            seenPoint = true;
        } else {
            break;
        }
        ++i;
    }
    if (!anyDigit)
        return 0.0;
    // An exponent continues the number only when digits follow it.
    if (i < n && (text[i] == u'e' || text[i] == u'E' || text[i] == u'd' || text[i] == u'D')) {
        qsizetype j = i + 1;
        std::string e = "e";
        if (j < n && (text[j] == u'-' || text[j] == u'+'))
            e += char(text[j++].unicode());
        bool expDigits = false;
        while (j < n && isAsciiDigit(text[j])) {
            e += char(text[j++].unicode());
            expDigits = true;
        }
        if (expDigits)
            s += e;
    }
    const double v = std::strtod(s.c_str(), nullptr);
    return std::isfinite(v) ? v : 0.0;
}

QString str(double value)
{
    if (!std::isfinite(value))
        value = 0.0;
    if (value == 0.0)
        value = 0.0;  // no "-0"
    QString t = QString::number(value, 'g', 15);
    const qsizetype e = t.indexOf(u'e');
    if (e >= 0)
        t = t.left(e) + u'E' + t.mid(e + 1);
    return value < 0 ? t : QStringLiteral(" ") + t;
}

bool isNumeric(QStringView text)
{
    QString bare;
    bool negative = false;
    double v = 0.0;
    return stripDecorations(text, &bare, &negative) && readLocaleNumber(bare, &v);
}

QDate parseDate(QStringView text)
{
    const QString t = trimBlanks(text);
    if (t.isEmpty())
        return {};
    QDate d = parseNumericDate(t);
    if (d.isValid())
        return d;
    // Dates written with the month's name, as people also type them.
    const QLocale loc;
    const QStringList forms = {
        loc.dateFormat(QLocale::ShortFormat),
        loc.dateFormat(QLocale::LongFormat),
        QStringLiteral("MMMM d, yyyy"),
        QStringLiteral("MMM d, yyyy"),
        QStringLiteral("d MMMM yyyy"),
        QStringLiteral("d MMM yyyy"),
        QStringLiteral("d. MMMM yyyy"),
        QStringLiteral("d. MMM yyyy"),
        QStringLiteral("MMMM d yyyy"),
        QStringLiteral("d-MMM-yyyy"),
        QStringLiteral("yyyy-MM-dd"),
    };
    for (const QString &f : forms) {
        d = loc.toDate(t, f);
        if (d.isValid())
            return d;
    }
    return {};
}

bool isDate(QStringView text) { return parseDate(text).isValid(); }

QString dateFormatString()
{
    const QString shown = QLocale().toString(QDate(1992, 12, 31), QLocale::ShortFormat);
    const QString head = shown.left(5);
    for (const char *sep : {"/", "-", "."}) {
        const QString s = QLatin1String(sep);
        if (head == QStringLiteral("12") + s + QStringLiteral("31"))
            return QStringLiteral("mm") + s + QStringLiteral("dd") + s + QStringLiteral("yyyy");
        if (head == QStringLiteral("31") + s + QStringLiteral("12"))
            return QStringLiteral("dd") + s + QStringLiteral("mm") + s + QStringLiteral("yyyy");
        if (head == QStringLiteral("1992") + s)
            return QStringLiteral("yyyy") + s + QStringLiteral("mm") + s + QStringLiteral("dd");
    }
    return QStringLiteral("mm/dd/yyyy");
}

QString dateSeparator()
{
    // The separator is the character after "mm" or "dd", or after "yyyy".
    const QString form = dateFormatString();
    return form.startsWith(u'y') ? form.mid(4, 1) : form.mid(2, 1);
}

QString currencySymbol()
{
    const QString nine = QLocale().toCurrencyString(9.0);
    const qsizetype at = nine.indexOf(u'9');
    return at <= 0 ? QString() : nine.left(at);
}


}  // namespace qor::regional
