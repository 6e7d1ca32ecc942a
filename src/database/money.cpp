// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/money.h"

#include <limits>

namespace qor {

namespace {

qint64 saturate(bool overflowed, qint64 value, bool positive)
{
    if (!overflowed) return value;
    return positive ? std::numeric_limits<qint64>::max() : std::numeric_limits<qint64>::min();
}

bool isMark(QChar c) { return c == u'.' || c == u','; }
bool isMinus(QChar c) { return c == u'-' || c == QChar(0x2212); }
bool isApostrophe(QChar c) { return c == u'\'' || c == QChar(0x2019) || c == QChar(0x02BC); }
bool isBlank(QChar c) { return c.isSpace() || c.category() == QChar::Separator_Space; }
int digitOf(QChar c) { return c.isDigit() ? c.digitValue() : -1; }

// A price text reduced to its number: digits and the marks between them, and
// the sign. The positions of the marks survive so the stricter reading of
// typed amounts can look at the groups.
struct Bare {
    QString core;  // digits (as 0-9) and '.' / ','
    bool negative = false;
};

std::optional<Bare> bareNumber(QStringView text)
{
    Bare out;
    // Parentheses around the whole number make it negative, as accounting
    // forms write it.
    qsizetype from = 0, to = text.size();
    while (from < to && isBlank(text[from])) ++from;
    while (to > from && isBlank(text[to - 1])) --to;
    if (from < to && text[from] == u'(') {
        if (text[to - 1] != u')') return std::nullopt;
        ++from;
        --to;
        out.negative = true;
    }
    bool seenDigit = false, afterNumber = false, signSeen = out.negative;
    bool lettersBefore = false;
    for (qsizetype i = from; i < to; ++i) {
        const QChar c = text[i];
        const int d = digitOf(c);
        if (d >= 0) {
            if (afterNumber) return std::nullopt;  // "12 kr 5"
            out.core += QChar(u'0' + d);
            seenDigit = true;
        } else if (isMark(c)) {
            if (afterNumber) return std::nullopt;
            // A dot right after a leading abbreviation ("Fr. 12") belongs to it.
            if (!seenDigit && out.core.isEmpty() && lettersBefore && i > from && text[i - 1].isLetter()) continue;
            if (!out.core.isEmpty() && isMark(out.core.back())) return std::nullopt;  // "1..2"
            out.core += c;
        } else if (isBlank(c) || isApostrophe(c) || c.category() == QChar::Symbol_Currency) {
            // Blanks and apostrophes group digits; currency signs stand anywhere.
            continue;
        } else if (isMinus(c) || c == u'+') {
            if (signSeen) return std::nullopt;
            signSeen = true;
            if (seenDigit) afterNumber = true;  // a trailing sign ends the number
            out.negative = isMinus(c);
        } else if (c.isLetter()) {
            // Currency codes and names stand before or after the number only.
            if (seenDigit) afterNumber = true;
            else if (!out.core.isEmpty()) return std::nullopt;
            else lettersBefore = true;
        } else {
            return std::nullopt;
        }
    }
    if (!seenDigit) return std::nullopt;
    // A mark at the end ("5.") says nothing.
    while (isMark(out.core.back())) out.core.chop(1);
    return out;
}

// Where the decimal mark is in a bare core, by the rule: the last mark with
// one or two digits after it and nothing else; -1 when there is none.
qsizetype decimalMarkOf(const QString &core)
{
    qsizetype last = -1;
    for (qsizetype i = core.size() - 1; i >= 0; --i)
        if (isMark(core[i])) {
            last = i;
            break;
        }
    if (last < 0) return -1;
    const qsizetype after = core.size() - last - 1;
    return after == 1 || after == 2 ? last : -1;
}

std::optional<Money> amountOf(const Bare &b)
{
    const qsizetype point = decimalMarkOf(b.core);
    qint64 whole = 0;
    const qsizetype wholeEnd = point < 0 ? b.core.size() : point;
    for (qsizetype i = 0; i < wholeEnd; ++i) {
        if (isMark(b.core[i])) continue;
        whole = whole * 10 + (b.core[i].unicode() - u'0');
        if (whole > Money::MaxCents / 100) return std::nullopt;
    }
    qint64 cents = whole * 100;
    if (point >= 0) {
        cents += (b.core[point + 1].unicode() - u'0') * 10;
        if (point + 2 < b.core.size()) cents += b.core[point + 2].unicode() - u'0';
    }
    if (cents > Money::MaxCents) return std::nullopt;
    return Money::fromCents(b.negative ? -cents : cents);
}

}  // namespace

Money Money::operator+(Money other) const
{
    qint64 r;
    const bool o = __builtin_add_overflow(m_cents, other.m_cents, &r);
    return Money(saturate(o, r, other.m_cents > 0));
}

Money Money::operator-(Money other) const
{
    qint64 r;
    const bool o = __builtin_sub_overflow(m_cents, other.m_cents, &r);
    return Money(saturate(o, r, other.m_cents < 0));
}

Money Money::operator-() const
{
    return Money(m_cents == std::numeric_limits<qint64>::min() ? std::numeric_limits<qint64>::max() : -m_cents);
}

Money Money::times(qint64 quantity) const
{
    qint64 r;
    const bool o = __builtin_mul_overflow(m_cents, quantity, &r);
    return Money(saturate(o, r, (m_cents < 0) == (quantity < 0)));
}

std::optional<Money> Money::fromPriceText(QStringView text)
{
    const auto bare = bareNumber(text);
    if (!bare) return std::nullopt;
    return amountOf(*bare);
}

Money::EntryReading Money::readTypedAmount(QStringView text, const QLocale &locale)
{
    const auto bare = bareNumber(text);
    if (!bare) return {std::nullopt, EntryProblem::NotAPrice};
    const QString &core = bare->core;
    const qsizetype point = decimalMarkOf(core);
    const qsizetype wholeEnd = point < 0 ? core.size() : point;

    // The marks that group the whole part, and the digit runs between them.
    QList<qsizetype> runs;
    QChar groupMark;
    qsizetype run = 0;
    for (qsizetype i = 0; i < wholeEnd; ++i) {
        if (!isMark(core[i])) {
            ++run;
            continue;
        }
        if (!groupMark.isNull() && core[i] != groupMark) return {std::nullopt, EntryProblem::TooManyDecimals};
        groupMark = core[i];
        runs.append(run);
        run = 0;
    }
    runs.append(run);
    if (point >= 0 && !groupMark.isNull() && groupMark == core[point]) return {std::nullopt, EntryProblem::NotAPrice};
    if (runs.size() > 1) {
        const qsizetype tail = runs.back();
        // One mark before three digits: decimals where that is the locale's
        // decimal mark and it isn't also its group mark.
        if (tail == 3 && runs.size() == 2 && point < 0 && QString(groupMark) == locale.decimalPoint() && locale.groupSeparator() != locale.decimalPoint())
            return {std::nullopt, EntryProblem::TooManyDecimals};
        if (tail > 3) return {std::nullopt, EntryProblem::TooManyDecimals};
        if (core.startsWith(u'0')) return {std::nullopt, EntryProblem::NotAPrice};  // "0,001" is no grouping
        if (tail < 3 || runs.front() == 0 || runs.front() > 3) return {std::nullopt, EntryProblem::NotAPrice};
        for (qsizetype k = 1; k + 1 < runs.size(); ++k)
            if (runs[k] != 2 && runs[k] != 3) return {std::nullopt, EntryProblem::NotAPrice};
    }
    const auto amount = amountOf(*bare);
    if (!amount) return {std::nullopt, EntryProblem::NotAPrice};
    return {amount, EntryProblem::None};
}

QString Money::toStoredText() const
{
    const bool negative = m_cents < 0;
    const quint64 magnitude = negative ? quint64(0) - quint64(m_cents) : quint64(m_cents);
    QString out = negative ? QStringLiteral("-") : QString();
    out += QString::number(magnitude / 100);
    const unsigned frac = unsigned(magnitude % 100);
    if (frac != 0) {
        out += u'.';
        out += QChar(u'0' + frac / 10);
        if (frac % 10) out += QChar(u'0' + frac % 10);
    }
    return out;
}

std::optional<Money> Money::fromStoredText(QStringView text)
{
    text = text.trimmed();
    qsizetype i = 0;
    const qsizetype n = text.size();
    bool negative = false;
    if (i < n && (text[i] == u'-' || text[i] == u'+')) negative = text[i++] == u'-';
    // The form this program writes ("16.5", "200000.01", "-5") is read
    // straight; anything longer or odder takes the general way below.
    {
        qint64 cents = 0;
        qsizetype k = i, point = -1;
        for (; k < n && k - i < 16; ++k) {
            const QChar c = text[k];
            if (c == u'.' && point < 0) point = k;
            else if (c >= u'0' && c <= u'9') cents = cents * 10 + (c.unicode() - u'0');
            else break;
        }
        const qsizetype decimals = point < 0 ? 0 : k - point - 1;
        if (k == n && k > i && k - i < 16 && decimals <= 2 && k - i > (point < 0 ? 0 : 1)) {
            for (qsizetype d = decimals; d < 2; ++d) cents *= 10;
            return Money(negative ? -cents : cents);
        }
    }
    QString digits;       // significant digits, leading zeros dropped
    qint64 exponent = 0;  // of the last digit in digits
    bool anyDigit = false;
    auto take = [&](bool fraction) {
        while (i < n && text[i] >= u'0' && text[i] <= u'9') {
            anyDigit = true;
            if (digits.size() >= 40) {
                // Beyond what any amount holds: further decimals can't change
                // the cents, further whole digits make it too large.
                if (!fraction) return false;
            } else {
                if (!(digits.isEmpty() && text[i] == u'0')) digits += text[i];
                if (fraction) --exponent;
            }
            ++i;
        }
        return true;
    };
    if (!take(false)) return std::nullopt;
    if (i < n && text[i] == u'.') {
        ++i;
        if (!take(true)) return std::nullopt;
    }
    if (!anyDigit) return std::nullopt;
    if (i < n && (text[i] == u'e' || text[i] == u'E')) {
        ++i;
        bool expNegative = false;
        if (i < n && (text[i] == u'-' || text[i] == u'+')) expNegative = text[i++] == u'-';
        qint64 e = 0;
        bool expDigit = false;
        while (i < n && text[i] >= u'0' && text[i] <= u'9') {
            e = std::min<qint64>(e * 10 + (text[i].unicode() - u'0'), 100000);
            expDigit = true;
            ++i;
        }
        if (!expDigit) return std::nullopt;
        exponent += expNegative ? -e : e;
    }
    if (i != n) return std::nullopt;
    if (digits.isEmpty()) return Money();

    // cents = digits x 10^(exponent + 2), rounded half away from zero.
    const qint64 shift = exponent + 2;
    qint64 cents = 0;
    const qsizetype keep = qsizetype(std::max<qint64>(0, std::min<qint64>(digits.size(), digits.size() + shift)));
    if (shift > 0 && digits.size() + shift > 17) return std::nullopt;
    for (qsizetype k = 0; k < keep; ++k) {
        cents = cents * 10 + (digits[k].unicode() - u'0');
        if (cents > MaxCents) return std::nullopt;
    }
    for (qint64 k = 0; k < shift; ++k) {
        cents *= 10;
        if (cents > MaxCents) return std::nullopt;
    }
    if (shift < 0 && keep < digits.size() && digits.size() + shift >= 0 && digits[keep] >= u'5') ++cents;
    if (cents > MaxCents) return std::nullopt;
    return Money(negative ? -cents : cents);
}

QString Money::toCurrencyText(const QLocale &locale) const
{
    const bool negative = m_cents < 0;
    const quint64 magnitude = negative ? quint64(0) - quint64(m_cents) : quint64(m_cents);
    const qint64 whole = qint64(magnitude / 100);
    const int frac = int(magnitude % 100);

    // The locale's form of the whole units, symbol, grouping and negative
    // form included; an amount under one unit borrows the form of one and
    // puts its own zero in.
    QString out = locale.toCurrencyString(negative ? -std::max<qint64>(whole, 1) : whole);
    qsizetype lastDigit = -1;
    for (qsizetype i = out.size() - 1; i >= 0; --i)
        if (out[i].isDigit()) {
            lastDigit = i;
            break;
        }
    if (lastDigit < 0) return out;  // a locale without digits: nothing sensible to add to
    // What a locale puts after the whole units, worked out once per locale:
    // whether it shows cents at all (the yen doesn't while there are none),
    // and its decimal mark with each two-digit fraction in its own digits.
    struct Form {
        QLocale locale;
        bool showsCents = true;
        QString fractions[100];
    };
    static thread_local Form form{QLocale::c(), true, {}};
    if (form.fractions[0].isEmpty() || !(form.locale == locale)) {
        form.locale = locale;
        form.showsCents = locale.toCurrencyString(1.5).contains(locale.decimalPoint());
        for (int f = 0; f < 100; ++f)
            form.fractions[f] = locale.decimalPoint() + (f < 10 ? locale.zeroDigit() : QString()) + locale.toString(f);
    }
    if (negative && whole == 0) out.replace(lastDigit, 1, locale.zeroDigit());
    if (!form.showsCents && frac == 0) return out;
    out.insert(lastDigit + 1, form.fractions[frac]);
    return out;
}

QString Money::toPlainText() const
{
    const bool negative = m_cents < 0;
    const quint64 magnitude = negative ? quint64(0) - quint64(m_cents) : quint64(m_cents);
    return (negative ? QStringLiteral("-") : QString()) + QString::number(magnitude / 100) + u'.' + QStringLiteral("%1").arg(magnitude % 100, 2, 10, QLatin1Char('0'));
}

}  // namespace qor
