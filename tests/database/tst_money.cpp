// SPDX-License-Identifier: GPL-3.0-or-later
// The money type: one reading of price texts under every language setting,
// the stored form of balances, the currency form, saturation.
#include "database/money.h"
#include "database/regional.h"

#include <QTest>

using namespace qor;

namespace {
const char *const Locales[] = {"en_US", "de_DE", "fr_FR", "de_CH", "C", "ja_JP"};
const QString nbsp = QStringLiteral("\u00A0");
constexpr qint64 None = std::numeric_limits<qint64>::min();
}  // namespace

class TestMoney : public QObject {
    Q_OBJECT

private slots:
    void cleanup() { QLocale::setDefault(QLocale::c()); }

    void priceTexts_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<qint64>("cents");  // none: not a price
        auto row = [](const char *name, const QString &text, qint64 cents = None) {
            QTest::newRow(name) << text << cents;
        };
        row("dollars", "$1,234.50", 123450);
        row("euros", "1.234,50 \u20AC", 123450);
        row("pounds", "\u00A312.50", 1250);
        row("comma cents", "25,00 \u20AC", 2500);
        row("one comma decimal", "12,5", 1250);
        row("one dot decimal", "12.5", 1250);
        row("whole", "7", 700);
        row("swiss", "CHF 1'234.50", 123450);
        row("minus euros", "-5,00 \u20AC", -500);
        row("parentheses", "($5.00)", -500);
        row("trailing minus", "5.00-", -500);
        row("french blanks", "1\u202F234,50" + nbsp + "\u20AC", 123450);
        row("comma groups", "1,200", 120000);
        row("dot groups", "1.200", 120000);
        row("millions", "1.234.567,89", 123456789);
        row("leading point", ".5", 50);
        row("trailing point", "5.", 500);
        row("code after", "12.50 EUR", 1250);
        row("abbreviation", "Fr. 12.50", 1250);
        row("minus sign", "\u22125", -500);
        row("no digits", "free");
        row("empty", "");
        row("letters inside", "12abc3");
        row("double mark", "1..2");
        row("two signs", "--5");
        row("sign and brackets", "(-5)");
        row("open bracket", "(5");
        row("digits after code", "12 kr 5");
        row("too large", "99999999999999999");
    }
    void priceTexts()
    {
        // The same text gives the same amount under every language setting.
        QFETCH(QString, text);
        QFETCH(qint64, cents);
        for (const char *name : Locales) {
            QLocale::setDefault(QLocale(QString::fromLatin1(name)));
            const auto m = Money::fromPriceText(text);
            QCOMPARE(m.value_or(Money::fromCents(None)).cents(), cents);
        }
    }

    void typedAmounts_data()
    {
        QTest::addColumn<QString>("locale");
        QTest::addColumn<QString>("text");
        QTest::addColumn<qint64>("cents");
        QTest::addColumn<int>("problem");
        const int ok = int(Money::EntryProblem::None), nan = int(Money::EntryProblem::NotAPrice),
                  decimals = int(Money::EntryProblem::TooManyDecimals);
        auto row = [](const char *name, const char *locale, const char *text, qint64 cents, int problem) {
            QTest::newRow(name) << QString::fromUtf8(locale) << QString::fromUtf8(text) << cents << problem;
        };
        row("grouped balance", "en_US", "1,200", 120000, ok);
        row("english thousandth", "en_US", "1.234", 0, decimals);
        row("german thousands", "de_DE", "1.234", 123400, ok);
        row("german thousandth", "de_DE", "1,234", 0, decimals);
        row("tenth of a cent", "en_US", "0.001", 0, decimals);
        row("four decimals", "de_DE", "1.2345", 0, decimals);
        row("mixed marks, three after", "en_US", "1.234,567", 0, decimals);
        row("short group", "en_US", "1,23.00", 0, nan);
        row("long first group", "en_US", "1234,567.00", 0, nan);
        row("indian groups", "en_IN", "1,23,456.00", 12345600, ok);
        row("same mark twice", "en_US", "1.234.50", 0, nan);
        row("zero grouped", "de_DE", "0.001", 0, nan);
        row("plain cents", "de_DE", "12,5", 1250, ok);
        row("currency form", "en_US", "($1,234.50)", -123450, ok);
        row("words", "en_US", "ten", 0, nan);
    }
    void typedAmounts()
    {
        QFETCH(QString, locale);
        QFETCH(QString, text);
        QFETCH(qint64, cents);
        QFETCH(int, problem);
        const auto r = Money::readTypedAmount(text, QLocale(locale));
        QCOMPARE(int(r.problem), problem);
        QCOMPARE(r.amount.has_value(), problem == int(Money::EntryProblem::None));
        if (r.amount) QCOMPARE(r.amount->cents(), cents);
    }

    void storedTexts_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<qint64>("cents");
        QTest::addColumn<QString>("written");  // what the amount is written back as; empty: unreadable
        QTest::newRow("half") << "16.5" << qint64(1650) << "16.5";
        QTest::newRow("dimes") << "0.3" << qint64(30) << "0.3";
        QTest::newRow("zero") << "0" << qint64(0) << "0";
        QTest::newRow("large") << "200000.01" << qint64(20000001) << "200000.01";
        QTest::newRow("float noise") << "100.189995" << qint64(10019) << "100.19";
        QTest::newRow("half cent up") << "0.005" << qint64(1) << "0.01";
        QTest::newRow("negative half cent") << "-0.005" << qint64(-1) << "-0.01";
        QTest::newRow("exponent") << "1.5E+07" << qint64(1500000000) << "15000000";
        QTest::newRow("small exponent") << "2.5e-1" << qint64(25) << "0.25";
        QTest::newRow("blank before") << " 12" << qint64(1200) << "12";
        QTest::newRow("negative") << "-5" << qint64(-500) << "-5";
        QTest::newRow("trailing zeros") << "7.10" << qint64(710) << "7.1";
        QTest::newRow("tiny") << "0.0000000000000000000000000000000000000000000001" << qint64(0) << "0";
        QTest::newRow("huge exponent") << "1e300" << qint64(0) << "";
        QTest::newRow("comma") << "1,5" << qint64(0) << "";
        QTest::newRow("empty exponent") << "1e" << qint64(0) << "";
        QTest::newRow("text") << "abc" << qint64(0) << "";
    }
    void storedTexts()
    {
        QFETCH(QString, text);
        QFETCH(qint64, cents);
        QFETCH(QString, written);
        const auto m = Money::fromStoredText(text);
        QCOMPARE(m.has_value(), !written.isEmpty());
        if (!m) return;
        QCOMPARE(m->cents(), cents);
        QCOMPARE(m->toStoredText(), written);
        QCOMPARE(Money::fromStoredText(written), m);
    }

    void currencyForms_data()
    {
        QTest::addColumn<QString>("locale");
        QTest::addColumn<qint64>("cents");
        QTest::addColumn<QString>("shown");
        QTest::newRow("en") << "en_US" << qint64(123450) << "$1,234.50";
        QTest::newRow("en negative") << "en_US" << qint64(-123450) << "($1,234.50)";
        QTest::newRow("en under a dollar") << "en_US" << qint64(-5) << "($0.05)";
        QTest::newRow("en zero") << "en_US" << qint64(0) << "$0.00";
        QTest::newRow("de") << "de_DE" << qint64(-123450) << "-1.234,50" + nbsp + "\u20AC";
        QTest::newRow("fr") << "fr_FR" << qint64(-123450) << "(1\u202F234,50" + nbsp + "\u20AC)";
        QTest::newRow("ja whole") << "ja_JP" << qint64(123400) << "\uFFE51,234";
        QTest::newRow("ja cents") << "ja_JP" << qint64(123456) << "\uFFE51,234.56";
        // Beyond what a double holds to the cent.
        QTest::newRow("en huge") << "en_US" << qint64(900719925474099311) << "$9,007,199,254,740,993.11";
        // No locale: the plain form of the command line.
        QTest::newRow("plain") << "" << qint64(1234) << "12.34";
        QTest::newRow("plain under a unit") << "" << qint64(-5) << "-0.05";
    }
    void currencyForms()
    {
        QFETCH(QString, locale);
        QFETCH(qint64, cents);
        QFETCH(QString, shown);
        const Money m = Money::fromCents(cents);
        QCOMPARE(locale.isEmpty() ? m.toPlainText() : m.toCurrencyText(QLocale(locale)), shown);
        if (locale.isEmpty() || qAbs(cents) > Money::MaxCents) return;
        // What the program shows it reads back, under any setting, and the
        // price field's numeric test takes it, sign included.
        QCOMPARE(Money::fromPriceText(shown), m);
        QLocale::setDefault(QLocale(locale));
        QVERIFY(regional::isNumeric(shown));
    }

    // Sums, differences and products, exact to the cent; saturation keeps the sign.
    void arithmetic_data()
    {
        QTest::addColumn<qint64>("a");
        QTest::addColumn<char>("op");
        QTest::addColumn<qint64>("b");
        QTest::addColumn<qint64>("result");
        constexpr qint64 max = std::numeric_limits<qint64>::max(), min = std::numeric_limits<qint64>::min();
        QTest::newRow("dimes") << qint64(20) << '+' << qint64(10) << qint64(30);
        QTest::newRow("times") << qint64(1650) << '*' << qint64(3) << qint64(4950);
        QTest::newRow("max + 1 cent") << max << '+' << qint64(1) << max;
        QTest::newRow("min + -1 cent") << min << '+' << qint64(-1) << min;
        QTest::newRow("max - -1 cent") << max << '-' << qint64(-1) << max;
        QTest::newRow("min - 1 cent") << min << '-' << qint64(1) << min;
        QTest::newRow("negative times") << max - 1 << '*' << qint64(-3) << min;
        QTest::newRow("negated min") << min << 'n' << qint64(0) << max;
    }
    void arithmetic()
    {
        QFETCH(qint64, a);
        QFETCH(char, op);
        QFETCH(qint64, b);
        QFETCH(qint64, result);
        const Money x = Money::fromCents(a), y = Money::fromCents(b);
        const Money r = op == '+' ? x + y : op == '-' ? x - y
                                        : op == '*'   ? x.times(b)
                                                      : -x;
        QCOMPARE(r.cents(), result);
    }
};

QTEST_GUILESS_MAIN(TestMoney)
#include "tst_money.moc"
