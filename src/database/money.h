// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// Money is counted in whole cents in 64 bits, so every sum over a million
// records is exact and no amount ever passes through a binary float.
//
// A price text is read by one rule, whatever the user's language setting,
// because files travel between desktops set to different languages and a
// price typed as "$25.00" must never become 2,500 somewhere else:
//   - blanks, currency signs, letters at either end (codes such as "CHF" or
//     "EUR") and apostrophes (Swiss grouping) are dropped;
//   - a "-" before or after the number, or parentheses around it, make it
//     negative;
//   - what is left is digits with "." or "," between them; the last mark is
//     the decimal mark when one or two digits follow it at the end; every
//     other mark separates groups of digits and is dropped.
// So "$1,234.50", "1.234,50 €", "CHF 1'234.50" and "1 234,50" are 1234.50;
// "12,5" and "12.5" are 12.50; "1,200" and "1.200" are 1200.
#include <QLocale>
#include <QString>
#include <QStringView>
#include <compare>
#include <optional>

namespace qor {

class Money {
public:
    // The largest amount a text may hold: ten thousand billion, far above
    // any bill and far enough below the 64-bit limit that sums of a million
    // of them don't overflow.
    static constexpr qint64 MaxCents = 1'000'000'000'000'000LL;

    constexpr Money() = default;
    static constexpr Money fromCents(qint64 cents) { return Money(cents); }
    constexpr qint64 cents() const { return m_cents; }

    constexpr bool isZero() const { return m_cents == 0; }
    constexpr bool isNegative() const { return m_cents < 0; }
    constexpr bool isPositive() const { return m_cents > 0; }

    // Sums and products saturate rather than wrap, so an absurd file gives an
    // absurd but ordered amount, never a sign flip.
    Money operator+(Money other) const;
    Money operator-(Money other) const;
    Money operator-() const;
    Money &operator+=(Money other) { return *this = *this + other; }
    Money &operator-=(Money other) { return *this = *this - other; }
    Money times(qint64 quantity) const;

    friend constexpr bool operator==(Money, Money) = default;
    friend constexpr auto operator<=>(Money, Money) = default;

    // ------------------------------------------------------------ price texts
    // A price text read by the rule above; nothing when it holds no number or
    // anything the rule doesn't allow ("12abc3", "1..2", "--5").
    static std::optional<Money> fromPriceText(QStringView text);

    // The stricter reading of a price the user types: also refuses a group
    // that isn't three digits ("1,23.00" is not a price) and more than two
    // decimals. Three digits after a lone mark are decimals, and so refused,
    // when that mark is the locale's decimal mark ("1.234" under English
    // settings) and a group of thousands where it is not ("1.234" under German
    // settings is 1234).
    enum class EntryProblem { None,
                              NotAPrice,
                              TooManyDecimals };
    struct EntryReading;
    static EntryReading readTypedAmount(QStringView text, const QLocale &locale = QLocale());

    // ------------------------------------------------------------ stored texts
    // The plain decimal text balances are stored as: "16.5", "0.3", "0",
    // "200000.01", "-5" - no exponent, no grouping, no trailing zeros, so
    // files stay readable by older versions.
    QString toStoredText() const;
    // A stored balance: a plain decimal number with "." as the point, as
    // written above or with float noise ("100.189995"), or in exponent form
    // ("1.5E+07"); rounded half away from zero to the cent. Nothing for
    // anything else, or a magnitude beyond MaxCents.
    static std::optional<Money> fromStoredText(QStringView text);

    // ------------------------------------------------------------ display
    // The amount in the locale's currency form ("$1,234.50", "1.234,50 €",
    // "($5.00)"), built from the digits, never through a float.
    QString toCurrencyText(const QLocale &locale = QLocale()) const;
    // "-1234.50": for machine-read output.
    QString toPlainText() const;

private:
    constexpr explicit Money(qint64 cents) : m_cents(cents) {}
    qint64 m_cents = 0;
};

struct Money::EntryReading {
    std::optional<Money> amount;
    EntryProblem problem = EntryProblem::None;
};

}  // namespace qor
