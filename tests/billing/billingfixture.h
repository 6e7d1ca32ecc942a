// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// A small business for the billing tests: customers, items and helpers that
// show a tree as lines.
#include "../common/tablesedit.h"
#include "billing/billing.h"
#include "billing/invoicetree.h"
#include "database/database.h"
#include "database/regional.h"
#include "database/rowtypes.h"

#include <QStringList>

namespace billtest {

inline QString customerRow(const QString &last, const QString &first, bool archived = false)
{
    qor::CustomerRow r;
    r.displayName = (archived ? qor::ArchiveMark : QString()) + qor::customer::displayNameFor(first, last);
    r.firstName = first;
    r.lastName = last;
    return r.text();
}

inline QString itemRow(const QString &priceText, const QString &name, bool archived = false)
{
    qor::ItemRow r = qor::item::make(qor::regional::sortPrice(priceText), priceText, name);
    r.archived = archived;
    return r.text();
}

// Customers 1 Ames, 2 Bell, 3 Cole, 4 Dunn, 5 Egan, 6 Fox (archived); items
// 7 $5.00 Midget Widget, 9 $1.50 Bolt, 10 $0.10 Washer, 11 $1,200.50 Setup,
// 12 $7.00 Gear (archived).
inline void fill(qor::Database &db)
{
    const char *names[][2] = {{"Ames", "Al"}, {"Bell", "Bo"}, {"Cole", "Cy"}, {"Dunn", "Di"}, {"Egan", "Ed"}, {"Fox", "Fay"}};
    qor::test::TablesEdit tables(db);
    for (int i = 0; i < 6; ++i)
        tables.customers.add(qor::numberKey(i + 1),
                             customerRow(QString::fromLatin1(names[i][0]), QString::fromLatin1(names[i][1]), i == 5));
    tables.items.add("7k", itemRow("$5.00", "Midget Widget"));
    tables.items.add("9k", itemRow("$1.50", "Bolt"));
    tables.items.add("10k", itemRow("$0.10", "Washer"));
    tables.items.add("11k", itemRow("$1,200.50", "Setup"));
    tables.items.add("12k", itemRow("$7.00", "Gear", true));
    tables.done();
}

// The list text of item key k as lvwProducts(1) shows it.
inline QString listText(const qor::Database &db, const QString &key)
{
    return qor::ItemView::parse(db.items().textOf(key)).listText.toString();
}

// One line per node in insertion order: indent by depth, key, text, colour,
// "[x]" / "[ ]" for nodes with a check box.
inline QStringList dump(const qor::InvoiceTree &t)
{
    QStringList out;
    t.forEachNode([&](int n) {
        int depth = 0;
        for (int p = t.parentOf(n); p != 0; p = t.parentOf(p)) ++depth;
        static const char *const colours[] = {"", " red", " text", " grey"};  // as NodeColour counts them
        QString line = QString(depth * 2, u' ') + t.key(n) + QStringLiteral(" = ") + t.text(n) +
                       QLatin1String(colours[int(t.colour(n))]);
        if (t.hasCheckBox(n)) line += t.checked(n) ? QStringLiteral(" [x]") : QStringLiteral(" [ ]");
        out << line;
    });
    return out;
}

inline int customerNode(const qor::InvoiceTree &t, int cid) { return t.find(qor::numberKey(cid)); }

}  // namespace billtest
