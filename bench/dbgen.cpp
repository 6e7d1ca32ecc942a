// SPDX-License-Identifier: GPL-3.0-or-later
#include "dbgen.h"

#include "database/database.h"
#include "database/regional.h"
#include "database/rowtypes.h"

#include <QDate>
#include <QFile>
#include <QFileInfo>
#include <QStringList>
#include <algorithm>
#include <vector>

namespace qor::bench {

// Raise when the generator changes what it makes, so old files are not reused.
constexpr int GeneratorVersion = 3;

QString DbParams::stamp() const
{
    return QStringLiteral("generator=%1 records=%2 customers=%3 products=%4 periods=%5 seed=%6 locale=%7")
        .arg(GeneratorVersion)
        .arg(records)
        .arg(customers)
        .arg(products)
        .arg(periods)
        .arg(seed)
        .arg(locale);
}

DbParams smallParams(const QString &locale)
{
    return {QStringLiteral("small"), 10000, 1000, 60, 12, 20170101, locale};
}

DbParams largeParams(const QString &locale, int records)
{
    return {QStringLiteral("large"), records, 10000, 200, 120, 20170102, locale};
}

namespace {

const std::array<const char *, 48> FirstNames = {
    "James", "Mary", "John", "Patricia", "Robert", "Jennifer", "Michael", "Linda", "William", "Elizabeth",
    "David", "Barbara", "Richard", "Susan", "Joseph", "Jessica", "Thomas", "Sarah", "Charles", "Karen",
    "Christopher", "Nancy", "Daniel", "Lisa", "Matthew", "Betty", "Anthony", "Margaret", "Mark", "Sandra",
    "Donald", "Ashley", "Steven", "Kimberly", "Paul", "Emily", "Andrew", "Donna", "Joshua", "Michelle",
    "Kenneth", "Dorothy", "Kevin", "Carol", "Brian", "Amanda", "George", "Ren\u00e9e"};
const std::array<const char *, 50> LastNames = {
    "Smith", "Johnson", "Williams", "Brown", "Jones", "Garcia", "Miller", "Davis", "Rodriguez", "Martinez",
    "Hernandez", "Lopez", "Gonzalez", "Wilson", "Anderson", "Thomas", "Taylor", "Moore", "Jackson", "Martin",
    "Lee", "Perez", "Thompson", "White", "Harris", "Sanchez", "Clark", "Ramirez", "Lewis", "Robinson",
    "Walker", "Young", "Allen", "King", "Wright", "Scott", "Torres", "Nguyen", "Hill", "Flores",
    "Green", "Adams", "Nelson", "Baker", "Hall", "Rivera", "Campbell", "Mitchell", "O'Brien", "de Souza"};
const std::array<const char *, 12> Businesses = {
    "Acme Hardware", "Blue Door Caf\u00e9", "Riverside Dental", "Oak & Pine Realty", "Sunrise Bakery",
    "Hillside Church", "Main Street Books", "Corner Deli", "Lakeview Motel", "Green Thumb Nursery",
    "Bright Smile Kids", "Valley Auto Repair"};
const std::array<const char *, 24> Streets = {
    "Main St", "Oak Ave", "Pine Rd", "Maple Dr", "Cedar Ln", "Elm St", "Washington Blvd", "Lake Rd",
    "Hill St", "Park Ave", "River Rd", "Church St", "Mill Rd", "Spring St", "Ridge Rd", "Forest Dr",
    "Sunset Blvd", "Highland Ave", "Meadow Ln", "Cherry St", "Walnut St", "Chestnut St", "Willow Way", "Bay Rd"};
const std::array<const char *, 16> Cities = {
    "Springfield, IL 62701", "Franklin, TN 37064", "Greenville, SC 29601", "Bristol, CT 06010",
    "Clinton, IA 52732", "Fairview, OR 97024", "Salem, MA 01970", "Madison, WI 53703",
    "Georgetown, TX 78626", "Arlington, VA 22201", "Ashland, OR 97520", "Dover, DE 19901",
    "Oxford, MS 38655", "Milton, MA 02186", "Newport, RI 02840", "Riverside, CA 92501"};
const std::array<const char *, 10> CustomerNotes = {
    "Gate code 4471", "Prefers invoices by e-mail", "Pays by check & cash", "Dog in back yard - ring bell",
    "Call before 5 pm", "Billing contact: accounts payable", "Second home; mail to Add2",
    "Discount agreed <10%> for 2019", "Ask for \"Bob\" at the front desk", "Account moved from old ledger"};
const std::array<const char *, 20> ServiceNouns = {
    "Lawn mowing", "Hedge trimming", "Gutter cleaning", "Snow removal", "Window washing", "Leaf pickup",
    "Pool service", "Pest control", "Carpet cleaning", "Tree pruning", "Mulch delivery", "Fertilizer",
    "Irrigation check", "Pressure washing", "Fence repair", "Trash hauling", "Driveway sealing",
    "Weed control", "Aeration", "Seasonal cleanup"};
const std::array<const char *, 10> ServiceKinds = {
    "small yard", "large yard", "front & back", "per hour", "weekly", "monthly", "one-time",
    "commercial", "premium", "- basic"};
const std::array<const char *, 8> RecordNotes = {
    "Thank you for your business!", "Late fee waived", "Paid in part by check #1043",
    "Includes storm cleanup", "Balance carried from last period", "Credit applied: $10.00",
    "Paid online", "Please pay by the 15th"};
const std::array<const char *, 12> MonthNames = {
    "January", "February", "March", "April", "May", "June", "July", "August", "September", "October",
    "November", "December"};

QString chrono(const QDate &d) { return d.toString(QStringLiteral("yyyy/MM/dd")); }

// Fills db with the rows of p. Tables are bulk-appended and sorted once by
// the database's bulk load, which is also how the reader builds them.
}  // namespace

void generate(Database &db, const DbParams &p)
{
    Rng rng(p.seed);
    Tables t;

    t.company = {QStringLiteral("Smith & Sons Lawn Care"), QStringLiteral("1200 Industrial Pkwy"),
                 QStringLiteral("Suite 4"), QStringLiteral("Springfield, IL 62701"),
                 QStringLiteral("Phone (217) 555-0142  Fax (217) 555-0143  office@smithlawn.example"),
                 QStringLiteral("Green lawns since 1987"),
                 QStringLiteral("Services rendered for the period shown. Thank you!"),
                 QStringLiteral("Smith & Sons LLC"), QStringLiteral("Payment due within 30 days.")};

    // Customers. The display name of each is kept for the invoice records.
    std::vector<QString> displayName(size_t(p.customers) + 1);
    for (int cid = 1; cid <= p.customers; ++cid) {
        QString fname, lname;
        if (rng.chance(6)) {
            fname = QString::fromUtf8(rng.pick(Businesses));
        } else {
            fname = QString::fromUtf8(rng.pick(FirstNames));
            lname = QString::fromUtf8(rng.pick(LastNames));
        }
        const QString name = lname.isEmpty() ? fname : lname + QStringLiteral(", ") + fname;
        const bool archived = rng.chance(3);
        displayName[size_t(cid)] = name;
        const QString add1 = QString::number(100 + rng.below(9900)) + QLatin1Char(' ') + QString::fromUtf8(rng.pick(Streets));
        const QString add2 = rng.chance(20) ? QStringLiteral("Apt %1").arg(1 + rng.below(40)) : QString();
        const QString add3 = QString::fromUtf8(rng.pick(Cities));
        const QString email = rng.chance(60)
                                  ? QStringLiteral("%1.%2@mail.example").arg(fname.toLower().remove(QLatin1Char(' ')), QString::number(cid))
                                  : QString();
        const QString phone = rng.chance(85)
                                  ? QStringLiteral("(%1) 555-%2").arg(200 + rng.below(700)).arg(rng.below(10000), 4, 10, QLatin1Char('0'))
                                  : QString();
        const QString notes = rng.chance(12) ? QString::fromUtf8(rng.pick(CustomerNotes)) : QString();
        const CustomerRow row{archived ? ArchiveMark + name : name, fname, lname, add1, add2, add3,
                              email, phone, notes};
        t.customers.append(numberKey(qint64(cid)), row.text());
    }

    // Products and services, with prices in the locale's currency form.
    std::vector<Money> price(size_t(p.products) + 1);
    for (int psid = 1; psid <= p.products; ++psid) {
        const Money value = Money::fromCents(500 + rng.below(rng.chance(10) ? 250000 : 15000));
        price[size_t(psid)] = value;
        const QString priceText = value.toCurrencyText();
        QString name = QString::fromUtf8(rng.pick(ServiceNouns)) + QStringLiteral(" - ") + QString::fromUtf8(rng.pick(ServiceKinds));
        if (rng.chance(30)) name += QStringLiteral(" #%1").arg(psid);
        const bool archived = rng.chance(5);
        t.items.append(QString::number(psid) + QLatin1Char('k'),
                       ItemRow{regional::sortPrice(value), archived, item::listTextFor(priceText, name)}.text());
    }

    // Bill periods, one per month from January 2017. The key is the name and
    // one FieldSep, as for a period read from the file.
    std::vector<QString> periodName(size_t(p.periods));
    for (int i = 0; i < p.periods; ++i) {
        const QDate start(2017 + i / 12, 1 + i % 12, 1);
        const QString name = QStringLiteral("%1 %2").arg(QString::fromUtf8(MonthNames[size_t(i % 12)])).arg(start.year());
        periodName[size_t(i)] = name;
        const PeriodRow row{chrono(start), name, chrono(start.addMonths(1).addDays(-1)),
                            chrono(start.addMonths(1).addDays(14))};
        t.periods.append(period::keyFor(name), row.text());
    }

    // Invoice records: each period bills a different random set of customers,
    // spread so that the total is exactly p.records.
    std::vector<int> order(size_t(p.customers));
    for (int i = 0; i < p.customers; ++i) order[size_t(i)] = i + 1;
    const int perPeriod = p.records / p.periods, extra = p.records % p.periods;
    for (int i = 0; i < p.periods; ++i) {
        const int billed = std::min(p.customers, perPeriod + (i < extra ? 1 : 0));
        for (int j = 0; j < billed; ++j) std::swap(order[size_t(j)], order[size_t(j + rng.below(p.customers - j))]);
        const bool recent = i >= p.periods - 2;
        for (int j = 0; j < billed; ++j) {
            const int cid = order[size_t(j)];
            const int entries = 1 + rng.below(4);
            QStringList items;
            Money total;
            for (int e = 0; e < entries; ++e) {
                const int psid = 1 + rng.below(p.products);
                const int qty = rng.chance(25) ? 2 + rng.below(6) : 1;
                items << (qty > 1 ? QStringLiteral("%1x%2").arg(psid).arg(qty) : QString::number(psid));
                total += price[size_t(psid)].times(qty);
            }
            Money balance;
            if (recent ? !rng.chance(20) : rng.chance(4))
                balance = rng.chance(70) ? total : Money::fromCents(total.cents() / 200 * 100);
            const QString note = rng.chance(22) ? QString::fromUtf8(rng.pick(RecordNotes)) : QString();
            const QString cidText = QString::number(cid);
            const QString &bp = periodName[size_t(i)];
            const InvoiceRecordRow row{bp, displayName[size_t(cid)], cidText, balance.toStoredText(),
                                       ItemEntry::join(items), note};
            t.invoiceRecords.append(record::keyFor(bp, cidText), row.text());
        }
    }
    db.load(std::move(t));
}

QString randomPersonName(Rng &rng)
{
    return QString::fromUtf8(rng.pick(LastNames)) + QStringLiteral(", ") + QString::fromUtf8(rng.pick(FirstNames));
}

bool stampMatches(const QString &path, const DbParams &p)
{
    QFile f(path + QStringLiteral(".stamp"));
    if (!QFileInfo::exists(path) || !f.open(QIODevice::ReadOnly)) return false;
    const QStringList lines = QString::fromUtf8(f.readAll()).split(QLatin1Char('\n'));
    return lines.value(0) == p.stamp() && lines.value(1).toLongLong() == QFileInfo(path).size();
}

void writeStamp(const QString &path, const DbParams &p)
{
    QFile f(path + QStringLiteral(".stamp"));
    if (f.open(QIODevice::WriteOnly | QIODevice::Truncate))
        f.write((p.stamp() + QLatin1Char('\n') + QString::number(QFileInfo(path).size()) + QLatin1Char('\n')).toUtf8());
}

}  // namespace qor::bench
