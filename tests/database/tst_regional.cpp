// Regional forms under several locales. Each test sets the default locale
// for its data row, the way the user's locale reaches the program.
#include "database/collation.h"
#include "database/regional.h"

#include <QLocale>
#include <QRandomGenerator>
#include <QTest>

#include <algorithm>
#include <numeric>
#include <cmath>
#include <cstdlib>

using namespace qor;

namespace {
const char *const kLocales[] = {"en_US", "en_GB", "de_DE", "fr_FR", "ja_JP"};
const QString nbsp = QStringLiteral("\u00A0");
const QString nnbsp = QStringLiteral("\u202F");
}  // namespace

class TestRegional : public QObject {
    Q_OBJECT
    void useLocale(const QString &name) { QLocale::setDefault(QLocale(name)); }

private slots:
    void cleanup() { QLocale::setDefault(QLocale::c()); }

    void startupValues_data();
    void startupValues();
    void currency_data();
    void currency();
    void pictures_data();
    void pictures();
    void sortPriceForm_data();
    void sortPriceForm();
    void sortPricesOrderLikeNumbers_data();
    void sortPricesOrderLikeNumbers();
    void dates_data();
    void dates();
    void valAndStr();
    void numericTest_data();
    void numericTest();
    void dateTest_data();
    void dateTest();
    void singleText();
};

void TestRegional::startupValues_data()
{
    QTest::addColumn<QString>("locale");
    QTest::addColumn<QString>("dateForm");
    QTest::addColumn<QString>("separator");
    QTest::addColumn<QString>("symbol");
    QTest::newRow("en_US") << "en_US" << "mm/dd/yyyy" << "/" << "$";
    QTest::newRow("en_GB") << "en_GB" << "dd/mm/yyyy" << "/" << "£";
    QTest::newRow("de_DE") << "de_DE" << "dd.mm.yyyy" << "." << "";
    QTest::newRow("fr_FR") << "fr_FR" << "dd/mm/yyyy" << "/" << "";
    QTest::newRow("ja_JP") << "ja_JP" << "yyyy/mm/dd" << "/" << "\uFFE5";
    // Year first with a dash; day first with a dash and the symbol in front.
    QTest::newRow("sv_SE") << "sv_SE" << "yyyy-mm-dd" << "-" << "";
    QTest::newRow("nl_NL") << "nl_NL" << "dd-mm-yyyy" << "-" << QString("\u20AC" + nbsp);
    // "92. 12. 31." matches no row: the fallback form.
    QTest::newRow("ko_KR") << "ko_KR" << "mm/dd/yyyy" << "/" << "\u20A9";
}

void TestRegional::startupValues()
{
    QFETCH(QString, locale);
    QFETCH(QString, dateForm);
    QFETCH(QString, separator);
    QFETCH(QString, symbol);
    useLocale(locale);
    QCOMPARE(regional::dateFormatString(), dateForm);
    QCOMPARE(regional::dateSeparator(), separator);
    QCOMPARE(regional::currencySymbol(), symbol);
    // The separator is the one inside the form, in both places it stands.
    QCOMPARE(regional::dateFormatString().count(separator), 2);
}

void TestRegional::currency_data()
{
    QTest::addColumn<QString>("locale");
    QTest::addColumn<double>("value");
    QTest::addColumn<QString>("expected");
    QTest::newRow("en_US") << "en_US" << 1234.5 << "$1,234.50";
    QTest::newRow("en_US neg") << "en_US" << -1234.5 << "($1,234.50)";
    QTest::newRow("en_US zero") << "en_US" << 0.0 << "$0.00";
    QTest::newRow("en_GB") << "en_GB" << 5.0 << "£5.00";
    QTest::newRow("de_DE") << "de_DE" << 1234.5 << QString("1.234,50" + nbsp + "\u20AC");
    QTest::newRow("de_DE neg") << "de_DE" << -3.0 << QString("-3,00" + nbsp + "\u20AC");
    QTest::newRow("fr_FR") << "fr_FR" << 1234.5 << QString("1" + nnbsp + "234,50" + nbsp + "\u20AC");
    QTest::newRow("ja_JP no decimals") << "ja_JP" << 1234.0 << "\uFFE51,234";
    QTest::newRow("ja_JP neg") << "ja_JP" << -80.0 << "(\uFFE580)";
}

void TestRegional::currency()
{
    QFETCH(QString, locale);
    QFETCH(double, value);
    QFETCH(QString, expected);
    useLocale(locale);
    const QString shown = regional::formatCurrency(value);
    QCOMPARE(shown, expected);
    // What the program shows it must read back: the numeric test accepts it
    // and the price reading gives the amount again, sign included.
    QVERIFY2(regional::isNumeric(shown), qPrintable(shown));
    QCOMPARE(regional::priceValue(shown), value);
}

void TestRegional::pictures_data()
{
    QTest::addColumn<QString>("locale");
    QTest::addColumn<double>("value");
    QTest::addColumn<QString>("picture");
    QTest::addColumn<QString>("expected");
    for (const char *loc : kLocales) {
        const QString l = QString::fromLatin1(loc);
        const QString dp = QLocale(l).decimalPoint();
        const QByteArray tag = QByteArray(loc) + ' ';
        QTest::newRow(tag + "five") << l << 5.0 << "00000000#.00" << QString("000000005" + dp + "00");
        QTest::newRow(tag + "zero keeps width") << l << 0.0 << "00000000#.00" << QString("000000000" + dp + "00");
        QTest::newRow(tag + "rounds to cents") << l << 1234.567 << "00000000#.00" << QString("000001234" + dp + "57");
        QTest::newRow(tag + "top") << l << 999999999.99 << "00000000#.00" << QString("999999999" + dp + "99");
        QTest::newRow(tag + "minus five") << l << -5.0 << "00000000#.00" << QString("-99999994" + dp + "99");
        QTest::newRow(tag + "minus cent") << l << -0.01 << "00000000#.00" << QString("-99999999" + dp + "98");
        QTest::newRow(tag + "tiny negative is zero") << l << -0.001 << "00000000#.00" << QString("000000000" + dp + "00");
        QTest::newRow(tag + "key number") << l << 42.0 << "0000000#" << "00000042";
        QTest::newRow(tag + "key zero") << l << 0.0 << "0000000#" << "00000000";
        QTest::newRow(tag + "key wider") << l << 123456789.0 << "0000000#" << "123456789";
    }
}

void TestRegional::pictures()
{
    QFETCH(QString, locale);
    QFETCH(double, value);
    QFETCH(QString, picture);
    QFETCH(QString, expected);
    useLocale(locale);
    QCOMPARE(regional::formatNumber(value, picture), expected);
}

void TestRegional::sortPriceForm_data()
{
    QTest::addColumn<QString>("locale");
    QTest::addColumn<QString>("price");
    QTest::addColumn<QString>("expected");  // with '.' for the locale's point
    for (const char *loc : kLocales) {
        const QString l = QString::fromLatin1(loc);
        const QByteArray tag = QByteArray(loc) + ' ';
        // Texts of another locale or typed loosely still give their number.
        QTest::newRow(tag + "dollar text") << l << "$1,200.00" << "000001200.00";
        QTest::newRow(tag + "euro text") << l << QString("1.234,50" + nbsp + "\u20AC") << "000001234.50";
        QTest::newRow(tag + "garbage with digits") << l << "abc5,7xyz" << "000000005.70";
        QTest::newRow(tag + "garbage with grouping") << l << "ca. 1,234 pcs" << "000001234.00";
        QTest::newRow(tag + "no digits") << l << "free" << "000000000.00";
        QTest::newRow(tag + "empty") << l << "" << "000000000.00";
        QTest::newRow(tag + "billion clamps") << l << "1000000000" << "999999999.99";
        QTest::newRow(tag + "huge clamps") << l << "5000000000000" << "999999999.99";
        QTest::newRow(tag + "negative") << l << "-5" << "-99999994.99";
        QTest::newRow(tag + "very negative clamps") << l << "-123456789012" << "-00000000.00";
        QTest::newRow(tag + "own currency form")
            << l << QLocale(l).toCurrencyString(1200.0) << "000001200.00";
    }
    // A number in the locale's own grouping: the group separator is no point.
    QTest::newRow("en_US grouping") << "en_US" << "1,200" << "000001200.00";
    QTest::newRow("de_DE grouping") << "de_DE" << "1.200" << "000001200.00";
    QTest::newRow("de_DE comma") << "de_DE" << "12,5" << "000000012.50";
    QTest::newRow("fr_FR blank group") << "fr_FR" << "1 200,5" << "000001200.50";
}

void TestRegional::sortPriceForm()
{
    QFETCH(QString, locale);
    QFETCH(QString, price);
    QFETCH(QString, expected);
    useLocale(locale);
    const QString sp = regional::sortPrice(price);
    QCOMPARE(sp.size(), 12);
    QString want = expected;
    want.replace(u'.', QLocale().decimalPoint());
    QCOMPARE(sp, want);
}

void TestRegional::sortPricesOrderLikeNumbers_data()
{
    QTest::addColumn<QString>("locale");
    for (const char *loc : kLocales)
        QTest::newRow(loc) << QString::fromLatin1(loc);
}

void TestRegional::sortPricesOrderLikeNumbers()
{
    QFETCH(QString, locale);
    useLocale(locale);
    // Prices as the panel makes them: typed value, shown in the currency form,
    // sorted by the sort price in front of the row text.
    QList<double> values = {-1000.0, -40.0, -5.0, -4.99, -0.01, 0.0, 0.01, 5.0, 40.0, 1200.0, 99999.99};
    auto *rng = QRandomGenerator::global();
    for (int i = 0; i < 40; ++i)
        values << std::round((rng->bounded(2000000.0) - 1000000.0)) / 100.0;
    if (QLocale().currencySymbol() == QStringLiteral("\uFFE5")) {
        // The yen has no cents: its currency form keeps whole amounts.
        for (double &v : values)
            v = std::round(v);
    }
    QList<QString> rows;
    for (double v : values)
        rows << regional::sortPrice(regional::formatCurrency(v));
    for (const QString &r : rows)
        QCOMPARE(r.size(), 12);

    QList<int> order(values.size());
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(),
                     [&](int a, int b) { return compareRowText(rows[a], rows[b]) < 0; });
    for (int i = 1; i < order.size(); ++i) {
        const double before = values[order[i - 1]];
        const double after = values[order[i]];
        QVERIFY2(before <= after, qPrintable(QStringLiteral("%1 (%2) sorts before %3 (%4)")
                                                 .arg(before).arg(rows[order[i - 1]])
                                                 .arg(after).arg(rows[order[i]])));
    }
}

void TestRegional::dates_data()
{
    QTest::addColumn<QString>("locale");
    QTest::addColumn<QString>("picture");
    QTest::addColumn<QString>("expected");
    for (const char *loc : kLocales) {
        const QString l = QString::fromLatin1(loc);
        const QByteArray tag = QByteArray(loc) + ' ';
        // Stored form keeps "/" whatever the locale.
        QTest::newRow(tag + "chrono") << l << "yyyy/mm/dd" << "2004/03/07";
        QTest::newRow(tag + "month first") << l << "mm/dd/yyyy" << "03/07/2004";
        QTest::newRow(tag + "day first dots") << l << "dd.mm.yyyy" << "07.03.2004";
        QTest::newRow(tag + "dashes") << l << "yyyy-mm-dd" << "2004-03-07";
        QTest::newRow(tag + "short parts") << l << "m/d/yy" << "3/7/04";
    }
    QTest::newRow("en_US month") << "en_US" << "MMMM" << "March";
    QTest::newRow("en_GB month") << "en_GB" << "MMMM" << "March";
    QTest::newRow("de_DE month") << "de_DE" << "MMMM" << "M\u00E4rz";
    QTest::newRow("fr_FR month") << "fr_FR" << "MMMM" << "mars";
    QTest::newRow("ja_JP month") << "ja_JP" << "MMMM" << "3\u6708";
}

void TestRegional::dates()
{
    QFETCH(QString, locale);
    QFETCH(QString, picture);
    QFETCH(QString, expected);
    useLocale(locale);
    QCOMPARE(regional::formatDate(QDate(2004, 3, 7), picture), expected);
    // What the date form shows, the date test reads back.
    const QDate due(1999, 11, 30);
    const QString shown = regional::formatDate(due, regional::dateFormatString());
    QCOMPARE(regional::parseDate(shown), due);
}

void TestRegional::valAndStr()
{
    struct ValCase { const char *text; double value; };
    const ValCase valCases[] = {
        {"12", 12},        {"  12.5abc", 12.5}, {"-3", -3},         {"1 2 3", 123},
        {"1.2.3", 1.2},    {"1,200.50", 1},     {"12,50", 12},      {"abc", 0},
        {"", 0},           {".5", 0.5},         {"-", 0},           {"1e3", 1000},
        {"2.5E-1x", 0.25}, {"7e", 7},           {"&HFF", 255},      {"&O17", 15},
        {"Regular 8", 0},  {"  10 ", 10},       {"+4", 4},          {"$5", 0},
    };
    const struct { double value; const char *text; } strCases[] = {
        {0, " 0"},           {12, " 12"},         {-3, "-3"},
        {1234.5, " 1234.5"}, {-0.25, "-0.25"},    {1.0 / 3, " 0.333333333333333"},
        {1e20, " 1E+20"},    {2401, " 2401"},     {0.1 + 0.2, " 0.3"},
    };
    // Neither reads nor writes by the locale.
    for (const char *loc : kLocales) {
        useLocale(QString::fromLatin1(loc));
        for (const ValCase &c : valCases)
            QVERIFY2(regional::val(QString::fromUtf8(c.text)) == c.value,
                     qPrintable(QStringLiteral("%1: Val(\"%2\")").arg(loc, c.text)));
        for (const auto &c : strCases) {
            QCOMPARE(regional::str(c.value), QString::fromLatin1(c.text));
            QCOMPARE(regional::val(regional::str(c.value)), std::stod(regional::str(c.value).toStdString()));
        }
    }
}

void TestRegional::numericTest_data()
{
    QTest::addColumn<QString>("locale");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("numeric");
    const struct { const char *loc; const char *text; bool ok; } rows[] = {
        {"en_US", "12", true},      {"en_US", "12.50", true},   {"en_US", "1,200", true},
        {"en_US", "-3", true},      {"en_US", "$5", true},      {"en_US", "5$", true},
        {"en_US", "3-", true},      {"en_US", " 7 ", true},     {"en_US", "($1,234.50)", true},
        {"en_US", "$-5", true},     {"en_US", "USD 5", true},   {"en_US", "+5", true},
        {"en_US", "+-5", false},    {"en_US", "(-5)", false},   {"en_US", "12,50", false},
        {"en_US", "5 \u20AC", false}, {"en_US", "abc", false},  {"en_US", "", false},
        {"en_US", "-", false},      {"en_US", "$", false},      {"en_US", "1e5", false},
        {"en_US", "inf", false},    {"en_US", "nan", false},    {"en_US", "--3", false},
        {"en_US", "$$5", false},    {"en_US", "1,2,3", false},  {"en_US", "12 50", false},
        {"en_GB", "\u00A31,200.00", true}, {"en_GB", "$5", false}, {"en_GB", "12.5", true},
        {"de_DE", "12,50", true},   {"de_DE", "1.200", true},   {"de_DE", "5 \u20AC", true},
        {"de_DE", "\u20AC5", true}, {"de_DE", "-1.234,50 \u20AC", true}, {"de_DE", "12.50", false},
        {"de_DE", "$5", false},     {"de_DE", "1.2.3", false},
        {"fr_FR", "1 200,50", true}, {"fr_FR", "12,5 \u20AC", true}, {"fr_FR", "12.5", false},
        {"fr_FR", "12,5 $", false},
        {"ja_JP", "\uFFE51,234", true}, {"ja_JP", "\u00A5500", true}, {"ja_JP", "1,234", true},
        {"ja_JP", "12,50", false},
    };
    for (const auto &r : rows)
        QTest::newRow(qPrintable(QStringLiteral("%1 \"%2\"").arg(r.loc, QString::fromUtf8(r.text))))
            << QString::fromLatin1(r.loc) << QString::fromUtf8(r.text) << r.ok;
}

void TestRegional::numericTest()
{
    QFETCH(QString, locale);
    QFETCH(QString, text);
    QFETCH(bool, numeric);
    useLocale(locale);
    QCOMPARE(regional::isNumeric(text), numeric);
}

void TestRegional::dateTest_data()
{
    QTest::addColumn<QString>("locale");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QDate>("date");  // invalid: not a date
    const QDate endOfMarch(2004, 3, 31);
    QTest::newRow("en_US short year") << "en_US" << "3/31/04" << endOfMarch;
    QTest::newRow("en_US full") << "en_US" << "03/31/2004" << endOfMarch;
    QTest::newRow("en_US by name") << "en_US" << "March 31, 2004" << endOfMarch;
    QTest::newRow("en_US day first is no date") << "en_US" << "31/3/2004" << QDate();
    QTest::newRow("en_US no such day") << "en_US" << "2/30/2004" << QDate();
    QTest::newRow("en_US leap day") << "en_US" << "2/29/2004" << QDate(2004, 2, 29);
    QTest::newRow("en_US last century") << "en_US" << "12/31/92" << QDate(1992, 12, 31);
    QTest::newRow("en_US words") << "en_US" << "tomorrow" << QDate();
    QTest::newRow("en_US two parts") << "en_US" << "3/31" << QDate();
    QTest::newRow("en_US empty") << "en_US" << "" << QDate();
    QTest::newRow("en_GB") << "en_GB" << "31/03/2004" << endOfMarch;
    QTest::newRow("en_GB month first is no date") << "en_GB" << "03/31/2004" << QDate();
    QTest::newRow("de_DE") << "de_DE" << "31.3.2004" << endOfMarch;
    QTest::newRow("de_DE short year") << "de_DE" << "31.03.04" << endOfMarch;
    QTest::newRow("de_DE by name") << "de_DE" << "31. M\u00E4rz 2004" << endOfMarch;
    QTest::newRow("fr_FR") << "fr_FR" << "31/03/2004" << endOfMarch;
    QTest::newRow("fr_FR by name") << "fr_FR" << "31 mars 2004" << endOfMarch;
    QTest::newRow("ja_JP") << "ja_JP" << "2004/03/31" << endOfMarch;
    QTest::newRow("ja_JP month first is no date") << "ja_JP" << "03/31/2004" << QDate();
    // Year first is read as such in any locale.
    QTest::newRow("en_US year first") << "en_US" << "2004-03-31" << endOfMarch;
}

void TestRegional::dateTest()
{
    QFETCH(QString, locale);
    QFETCH(QString, text);
    QFETCH(QDate, date);
    useLocale(locale);
    QCOMPARE(regional::parseDate(text), date);
    QCOMPARE(regional::isDate(text), date.isValid());
}

void TestRegional::singleText()
{
    const struct { float value; const char *text; } fixed[] = {
        {0.0f, "0"},      {-0.0f, "0"},     {0.1f, "0.1"},      {2401.0f, "2401"},
        {-3.25f, "-3.25"}, {1234.5f, "1234.5"}, {1e10f, "10000000000"}, {16777216.0f, "16777216"},
        {0.3f, "0.3"},    {1.1f + 2.2f, "3.3000002"},
    };
    for (const char *loc : kLocales) {
        useLocale(QString::fromLatin1(loc));
        for (const auto &c : fixed)
            QCOMPARE(regional::singleText(c.value), QString::fromLatin1(c.text));
    }
    // Any float reads back as the same float, in plain digits, and never
    // needs more than the nine significant digits a float can hold.
    useLocale(QStringLiteral("de_DE"));
    auto *rng = QRandomGenerator::global();
    for (int i = 0; i < 2000; ++i) {
        const float v = float(rng->bounded(2000000.0) - 1000000.0) / float(1 << rng->bounded(12));
        const QString t = regional::singleText(v);
        QVERIFY2(!t.contains(u',') && !t.contains(u'e') && !t.contains(u'E'), qPrintable(t));
        QCOMPARE(std::strtof(t.toLatin1().constData(), nullptr), v);
        QString digits = t;
        digits.remove(u'-').remove(u'.');
        while (digits.startsWith(u'0'))
            digits.remove(0, 1);
        QVERIFY2(digits.size() <= 9, qPrintable(t));
    }
}

QTEST_GUILESS_MAIN(TestRegional)
#include "tst_regional.moc"
