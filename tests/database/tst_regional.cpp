// SPDX-License-Identifier: GPL-3.0-or-later
// Regional forms under several locales, set as the default locale the way the
// user's locale reaches the program.
#include "database/regional.h"

#include <QLocale>
#include <QTest>


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
        const Case startup[] = {{"en_US", "mm/dd/yyyy", "$"}, {"de_DE", "dd.mm.yyyy", ""}, {"ja_JP", "yyyy/mm/dd", "\uFFE5"}, {"sv_SE", "yyyy-mm-dd", ""}, {"nl_NL", "dd-mm-yyyy", "\u20AC\u00A0"}, {"ko_KR", "mm/dd/yyyy", "\u20A9"}};
        for (const Case &c : startup) {
            useLocale(c.locale);
            QCOMPARE(regional::dateFormatString(), txt(c.text));
            QCOMPARE(regional::dateSeparator(), txt(c.text).mid(txt(c.text).startsWith(u'y') ? 4 : 2, 1));
            QCOMPARE(regional::currencySymbol(), txt(c.want));
        }
    }

    void sortPrices()
    {
        const Case prices[] = {
            {"", "$1,200.00", "000001200.00"}, {"", "1.234,50\u00A0\u20AC", "000001234.50"}, {"", "abc5,7xyz", "000000005.70"}, {"", "ca. 1,234 pcs", "000001234.00"}, {"", "free", "000000000.00"}, {"", "1000000000", "999999999.99"}, {"", "-5", "-99999994.99"}, {"", "-123456789012", "-00000000.00"}, {"en_US", "1,200", "000001200.00"}, {"de_DE", "1.200", "000001200.00"}, {"de_DE", "12,5", "000000012.50"}, {"fr_FR", "1 200,5", "000001200.50"}};
        for (const char *loc : {"en_US", "de_DE", "fr_FR"}) {
            useLocale(loc);
            const QChar point = QLocale().decimalPoint().at(0);
            for (const Case &c : prices) {
                if (*c.locale && qstrcmp(c.locale, loc) != 0) continue;
                QCOMPARE(regional::sortPrice(txt(c.text)), txt(c.want).replace(u'.', point));
            }
            const QString own = QLocale().toCurrencyString(1200.0);  // the locale's own currency form
            QCOMPARE(regional::sortPrice(own), QStringLiteral("000001200.00").replace(u'.', point));
        }
    }

    void datesAndDateTest()
    {
        const Case formats[] = {{"en_US", "yyyy/mm/dd", "2004/03/07"}, {"de_DE", "yyyy/mm/dd", "2004/03/07"}, {"de_DE", "mm/dd/yyyy", "03/07/2004"}, {"en_US", "dd.mm.yyyy", "07.03.2004"}, {"en_US", "m/d/yy", "3/7/04"}, {"de_DE", "MMMM", "M\u00E4rz"}, {"ja_JP", "MMMM", "3\u6708"}};
        for (const Case &c : formats) {
            useLocale(c.locale);
            QCOMPARE(regional::formatDate(QDate(2004, 3, 7), txt(c.text)), txt(c.want));
            // What the date form shows, the date test reads back.
            QCOMPARE(regional::parseDate(regional::formatDate(QDate(1999, 11, 30), regional::dateFormatString())),
                     QDate(1999, 11, 30));
        }
        // Typed dates: want is yyyy-mm-dd, or empty for no date.
        const Case typed[] = {{"en_US", "3/31/04", "2004-03-31"}, {"en_US", "March 31, 2004", "2004-03-31"}, {"en_US", "31/3/2004", ""}, {"en_US", "2/30/2004", ""}, {"en_US", "2/29/2004", "2004-02-29"}, {"en_US", "12/31/92", "1992-12-31"}, {"en_US", "3/31", ""}, {"en_US", "tomorrow", ""}, {"en_US", "2004-03-31", "2004-03-31"}, {"en_US", "2004/3/31", "2004-03-31"}, {"en_GB", "03/31/2004", ""}, {"de_DE", "31.03.04", "2004-03-31"}, {"de_DE", "31. M\u00E4rz 2004", "2004-03-31"}, {"ja_JP", "2004/03/31", "2004-03-31"}, {"ja_JP", "03/31/2004", ""}};
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
            {"en_US", "1,200", "y"}, {"en_US", "3-", "y"}, {"en_US", " 7 ", "y"}, {"en_US", "$-5", "y"}, {"en_US", "USD 5", "y"}, {"en_US", "+5", "y"}, {"en_US", "5$", "y"}, {"en_US", "+-5", ""}, {"en_US", "(-5)", ""}, {"en_US", "12,50", ""}, {"en_US", "1e5", ""}, {"en_US", "nan", ""}, {"en_US", "$$5", ""}, {"en_US", "1,2,3", ""}, {"en_US", "-", ""}, {"en_US", "", ""}, {"en_GB", "$5", ""}, {"de_DE", "12,50", "y"}, {"de_DE", "\u20AC5", "y"}, {"de_DE", "12.50", ""}, {"fr_FR", "1 200,50", "y"}, {"fr_FR", "12,5 $", ""}, {"ja_JP", "\u00A5500", "y"}, {"ja_JP", "12,50", ""}};
        for (const Case &c : cases) {
            useLocale(c.locale);
            QVERIFY2(regional::isNumeric(txt(c.text)) == (*c.want == 'y'), qPrintable(txt(c.locale) + " " + txt(c.text)));
        }
    }

    void valAndStr()
    {
        const std::pair<const char *, double> vals[] = {
            {"  12.5abc", 12.5}, {"1 2 3", 123}, {"1.2.3", 1.2}, {"1,200.50", 1}, {"abc", 0}, {".5", 0.5}, {"-", 0}, {"2.5E-1x", 0.25}, {"7e", 7}, {"&HFF", 255}, {"&O17", 15}, {"$5", 0}};
        const std::pair<double, const char *> strs[] = {
            {0, " 0"}, {-3, "-3"}, {-0.25, "-0.25"}, {1.0 / 3, " 0.333333333333333"}, {1e20, " 1E+20"}, {0.1 + 0.2, " 0.3"}};
        // Neither reads or writes by the locale.
        for (const char *loc : {"en_US", "de_DE"}) {
            useLocale(loc);
            for (auto [text, value] : vals) QVERIFY2(regional::val(txt(text)) == value, text);
            for (auto [value, text] : strs) QCOMPARE(regional::str(value), txt(text));
        }
    }
};

QTEST_GUILESS_MAIN(TestRegional)
#include "tst_regional.moc"
