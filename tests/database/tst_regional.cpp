// Regional forms under several locales, set as the default locale the way the
// user's locale reaches the program.
#include "database/collation.h"
#include "database/regional.h"

#include <QLocale>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QTest>

#include <algorithm>
#include <cmath>
#include <cstdlib>

using namespace qor;

namespace {
const QString nbsp = QStringLiteral("\u00A0");
struct Case {
    const char *locale, *text, *want;
};
QString txt(const char *s) { return QString::fromUtf8(s); }
}  // namespace

class TestRegional : public QObject {
    Q_OBJECT
    static void useLocale(const char *name) { QLocale::setDefault(QLocale(QString::fromLatin1(name))); }

private slots:
    void cleanup() { QLocale::setDefault(QLocale::c()); }

    void startupValuesAndCurrency()
    {
        // Date form, its separator, and the symbol that stands before the digits.
        const Case startup[] = {{"en_US", "mm/dd/yyyy", "$"},    {"de_DE", "dd.mm.yyyy", ""},
                                {"ja_JP", "yyyy/mm/dd", "\uFFE5"}, {"sv_SE", "yyyy-mm-dd", ""},
                                {"nl_NL", "dd-mm-yyyy", "\u20AC\u00A0"}, {"ko_KR", "mm/dd/yyyy", "\u20A9"}};
        for (const Case &c : startup) {
            useLocale(c.locale);
            QCOMPARE(regional::dateFormatString(), txt(c.text));
            QCOMPARE(regional::dateSeparator(), txt(c.text).mid(txt(c.text).startsWith(u'y') ? 4 : 2, 1));
            QCOMPARE(regional::currencySymbol(), txt(c.want));
        }
        // What the program shows as money it must read back: the numeric test
        // accepts it and the price reading gives the amount again, sign included.
        const struct { const char *locale; double value; QString shown; } money[] = {
            {"en_US", 1234.5, "$1,234.50"}, {"en_US", -1234.5, "($1,234.50)"}, {"en_US", 0, "$0.00"},
            {"de_DE", -1234.5, "-1.234,50" + nbsp + "\u20AC"}, {"fr_FR", 1234.5, "1\u202F234,50" + nbsp + "\u20AC"},
            {"ja_JP", 1234, "\uFFE51,234"}, {"ja_JP", -80, "(\uFFE580)"}};
        for (const auto &c : money) {
            useLocale(c.locale);
            QCOMPARE(regional::formatCurrency(c.value), c.shown);
            QVERIFY2(regional::isNumeric(c.shown), qPrintable(c.shown));
            QCOMPARE(regional::priceValue(c.shown), c.value);
        }
    }

    void picturesAndSortPrices()
    {
        // The locale gives only the decimal point; written here as '.'.
        const struct { double value; const char *picture, *want; } pictures[] = {
            {5, "00000000#.00", "000000005.00"},          {0, "00000000#.00", "000000000.00"},
            {1234.567, "00000000#.00", "000001234.57"},   {999999999.99, "00000000#.00", "999999999.99"},
            {-5, "00000000#.00", "-99999994.99"},         {-0.01, "00000000#.00", "-99999999.98"},
            {-0.001, "00000000#.00", "000000000.00"},     {42, "0000000#", "00000042"},
            {123456789, "0000000#", "123456789"}};
        const Case prices[] = {
            {"", "$1,200.00", "000001200.00"},      {"", "1.234,50\u00A0\u20AC", "000001234.50"},
            {"", "abc5,7xyz", "000000005.70"},      {"", "ca. 1,234 pcs", "000001234.00"},
            {"", "free", "000000000.00"},           {"", "1000000000", "999999999.99"},
            {"", "-5", "-99999994.99"},             {"", "-123456789012", "-00000000.00"},
            {"en_US", "1,200", "000001200.00"},     {"de_DE", "1.200", "000001200.00"},
            {"de_DE", "12,5", "000000012.50"},      {"fr_FR", "1 200,5", "000001200.50"}};
        for (const char *loc : {"en_US", "de_DE", "fr_FR"}) {
            useLocale(loc);
            const QChar point = QLocale().decimalPoint().at(0);
            for (const auto &c : pictures)
                QCOMPARE(regional::formatNumber(c.value, txt(c.picture)), txt(c.want).replace(u'.', point));
            for (const Case &c : prices) {
                if (*c.locale && qstrcmp(c.locale, loc) != 0) continue;
                QCOMPARE(regional::sortPrice(txt(c.text)), txt(c.want).replace(u'.', point));
            }
            const QString own = QLocale().toCurrencyString(1200.0);  // the locale's own currency form
            QCOMPARE(regional::sortPrice(own), QStringLiteral("000001200.00").replace(u'.', point));
        }
    }

    void sortPricesOrderLikeNumbers()
    {
        // Prices as the panel makes them: typed value, shown in the currency
        // form, sorted by the sort price in front of the row text.
        QRandomGenerator rng(7);
        for (const char *loc : {"en_US", "de_DE", "ja_JP"}) {
            useLocale(loc);
            QList<double> values = {-1000.0, -40.0, -5.0, -4.99, -0.01, 0.0, 0.01, 5.0, 40.0, 1200.0, 99999.99};
            for (int i = 0; i < 40; ++i) values << std::round(rng.bounded(2000000.0) - 1000000.0) / 100.0;
            if (qstrcmp(loc, "ja_JP") == 0)  // the yen has no cents
                for (double &v : values) v = std::round(v);
            std::sort(values.begin(), values.end(), [](double a, double b) {
                return compareRowText(regional::sortPrice(regional::formatCurrency(a)),
                                      regional::sortPrice(regional::formatCurrency(b))) < 0;
            });
            QVERIFY2(std::is_sorted(values.begin(), values.end()), loc);
        }
    }

    void datesAndDateTest()
    {
        const Case formats[] = {{"en_US", "yyyy/mm/dd", "2004/03/07"}, {"de_DE", "yyyy/mm/dd", "2004/03/07"},
                                {"de_DE", "mm/dd/yyyy", "03/07/2004"}, {"en_US", "dd.mm.yyyy", "07.03.2004"},
                                {"en_US", "m/d/yy", "3/7/04"},         {"de_DE", "MMMM", "M\u00E4rz"},
                                {"ja_JP", "MMMM", "3\u6708"}};
        for (const Case &c : formats) {
            useLocale(c.locale);
            QCOMPARE(regional::formatDate(QDate(2004, 3, 7), txt(c.text)), txt(c.want));
            // What the date form shows, the date test reads back.
            QCOMPARE(regional::parseDate(regional::formatDate(QDate(1999, 11, 30), regional::dateFormatString())),
                     QDate(1999, 11, 30));
        }
        // Typed dates: want is yyyy-mm-dd, or empty for no date.
        const Case typed[] = {{"en_US", "3/31/04", "2004-03-31"},         {"en_US", "March 31, 2004", "2004-03-31"},
                              {"en_US", "31/3/2004", ""},                 {"en_US", "2/30/2004", ""},
                              {"en_US", "2/29/2004", "2004-02-29"},       {"en_US", "12/31/92", "1992-12-31"},
                              {"en_US", "3/31", ""},                      {"en_US", "tomorrow", ""},
                              {"en_US", "2004-03-31", "2004-03-31"},      {"en_GB", "03/31/2004", ""},
                              {"de_DE", "31.03.04", "2004-03-31"},        {"de_DE", "31. M\u00E4rz 2004", "2004-03-31"},
                              {"ja_JP", "2004/03/31", "2004-03-31"},      {"ja_JP", "03/31/2004", ""}};
        for (const Case &c : typed) {
            useLocale(c.locale);
            const QDate want = QDate::fromString(txt(c.want), Qt::ISODate);
            QVERIFY2(regional::parseDate(txt(c.text)) == want, c.text);
            QCOMPARE(regional::isDate(txt(c.text)), want.isValid());
        }
    }

    void numericTest()
    {
        const Case cases[] = {
            {"en_US", "1,200", "y"}, {"en_US", "3-", "y"},  {"en_US", " 7 ", "y"},   {"en_US", "$-5", "y"},
            {"en_US", "USD 5", "y"}, {"en_US", "+5", "y"},  {"en_US", "5$", "y"},    {"en_US", "+-5", ""},
            {"en_US", "(-5)", ""},   {"en_US", "12,50", ""}, {"en_US", "1e5", ""},   {"en_US", "nan", ""},
            {"en_US", "$$5", ""},    {"en_US", "1,2,3", ""}, {"en_US", "-", ""},     {"en_US", "", ""},
            {"en_GB", "$5", ""},     {"de_DE", "12,50", "y"}, {"de_DE", "\u20AC5", "y"}, {"de_DE", "12.50", ""},
            {"fr_FR", "1 200,50", "y"}, {"fr_FR", "12,5 $", ""}, {"ja_JP", "\u00A5500", "y"}, {"ja_JP", "12,50", ""}};
        for (const Case &c : cases) {
            useLocale(c.locale);
            QVERIFY2(regional::isNumeric(txt(c.text)) == (*c.want == 'y'), qPrintable(txt(c.locale) + " " + txt(c.text)));
        }
    }

    void valStrAndSingleText()
    {
        const struct { const char *text; double value; } vals[] = {
            {"  12.5abc", 12.5}, {"1 2 3", 123}, {"1.2.3", 1.2}, {"1,200.50", 1}, {"abc", 0}, {".5", 0.5},
            {"-", 0}, {"2.5E-1x", 0.25}, {"7e", 7}, {"&HFF", 255}, {"&O17", 15}, {"$5", 0}};
        const struct { double value; const char *text; } strs[] = {
            {0, " 0"}, {-3, "-3"}, {-0.25, "-0.25"}, {1.0 / 3, " 0.333333333333333"}, {1e20, " 1E+20"}, {0.1 + 0.2, " 0.3"}};
        const struct { float value; const char *text; } singles[] = {
            {-0.0f, "0"}, {0.1f, "0.1"}, {-3.25f, "-3.25"}, {1e10f, "10000000000"}, {1.1f + 2.2f, "3.3000002"}};
        // None of them reads or writes by the locale.
        for (const char *loc : {"en_US", "de_DE"}) {
            useLocale(loc);
            for (const auto &c : vals) QVERIFY2(regional::val(txt(c.text)) == c.value, c.text);
            for (const auto &c : strs) QCOMPARE(regional::str(c.value), txt(c.text));
            for (const auto &c : singles) QCOMPARE(regional::singleText(c.value), txt(c.text));
        }
        // Amounts in a price text: the locale's own marks, and any currency
        // sign, even one that is not the locale's.
        const struct { const char *locale, *text, *symbol, *plain; } amounts[] = {
            {"en_US", "$1,234.50", "$", "1234.50"}, {"de_DE", "1.234,50 \u20AC", "\u20AC", "1234.50"},
            {"C", "$12.50", "", "12.50"}, {"sv_SE", "12,50 kr", "kr", "12.50"}};
        for (const auto &a : amounts) {
            useLocale(a.locale);
            QCOMPARE(regional::plainAmountText(QString::fromUtf8(a.text), QString::fromUtf8(a.symbol)), txt(a.plain));
        }
        // Any float reads back as the same float, in plain digits, within the
        // nine significant digits a float can hold.
        QRandomGenerator rng(11);
        for (int i = 0; i < 2000; ++i) {
            const float v = float(rng.bounded(2000000.0) - 1000000.0) / float(1 << rng.bounded(12));
            const QString t = regional::singleText(v);
            QVERIFY2(!t.contains(u',') && !t.contains(u'e') && !t.contains(u'E'), qPrintable(t));
            QCOMPARE(std::strtof(t.toLatin1().constData(), nullptr), v);
            QVERIFY2(QString(t).remove(u'-').remove(u'.').remove(QRegularExpression("^0+")).size() <= 9, qPrintable(t));
        }
    }
};

QTEST_GUILESS_MAIN(TestRegional)
#include "tst_regional.moc"
