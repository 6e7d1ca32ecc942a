// SPDX-License-Identifier: GPL-3.0-or-later
#include "billing/billing.h"

#include "billing/accounts.h"
#include "billing/invoicetrees.h"
#include "database/collation.h"
#include "database/database.h"
#include "database/regional.h"
#include "database/rowtypes.h"

namespace qor::billing {

namespace {

// The eight-digit form ("0000000#") of a customer or item number in an item key.
QString eightDigits(const QString &number)
{
    return number.size() >= 8 ? number : QString(8 - number.size(), u'0') + number;
}

// The present display name of a customer without the archive mark; empty when
// the table has no such customer.
QString presentName(const Database &db, const QString &customerKey)
{
    const int at = db.customers().indexOf(customerKey);
    if (at == 0) return QString();
    const QStringView name = customer::displayNameOf(db.customers().textView(at));
    return (name.startsWith(ArchiveMark) ? name.mid(ArchiveMark.size()) : name).toString();
}

QString withoutMark(QString name)
{
    if (name.startsWith(ArchiveMark)) name.remove(0, ArchiveMark.size());
    return name;
}

// A stored balance ("16.5", "1.5E+07", float noise); what can't be read is 0.
Money balanceValue(QStringView stored) { return Money::fromStoredText(stored).value_or(Money()); }

// The price in an item's list text ("$1,234.50 - Setup"); 0 when it holds none.
Money priceOfListText(QStringView listText)
{
    return Money::fromPriceText(ItemRow::priceTextOf(listText)).value_or(Money());
}

// Whether the entry tree bills the customer or the item (numbers, no "k").
bool entryBills(const InvoiceTree &entryTree, QStringView number, QString NodeValues::*field)
{
    bool found = false;
    entryTree.forEachNode([&](int n) {
        const NodeValues &v = entryTree.values(n);
        found = found || (v.kind == NodeKind::EnteredItem && v.*field == number);
    });
    return found;
}

}  // namespace

QString balancePrompt(const QString &name) { return text::NewBalance.text + QStringLiteral("\r\n\r\n") + name; }
QString notePrompt(const QString &name) { return text::OptionalNote.text + QStringLiteral("\r\n\r\n") + name; }

// ---------------------------------------------------------------- dates

QString exampleText(const QDate &today)
{
    return QStringLiteral("(Example: ") + regional::formatDate(today, u"MMMM") + u' ' + QString::number(today.year()) + u')';
}

bool dueDateAllowsAdd(QStringView text) { return text.size() >= 6 && regional::isDate(text); }

bool dueDateLooksGood(QStringView text, QStringView dateSeparator)
{
    return dueDateAllowsAdd(text) && !dateSeparator.isEmpty() && text.count(dateSeparator) == 2;
}

QString chronoDate(const QString &typed)
{
    const QString t = rowSafe(typed);
    if (t.isEmpty()) return t;
    const QDate d = regional::parseDate(t);
    return d.isValid() ? regional::formatDate(d, u"yyyy/mm/dd") : t;
}

QString screenDate(const QString &chrono)
{
    const QDate d = QDate::fromString(chrono, QStringLiteral("yyyy/MM/dd"));
    return d.isValid() ? regional::formatDate(d, regional::dateFormatString()) : chrono;
}

QString rowSafe(QString typed)
{
    // Control characters split rows (FieldSep, ItemSep) or can't be read
    // back from the file; none of them is meant as text.
    typed.removeIf([](QChar c) { return c.unicode() < 0x20 || c.unicode() == 0x7F; });
    return typed;
}

// ---------------------------------------------------------------- periods

int findPeriodRow(const Database &db, const QString &name)
{
    int position = 0, found = 0;
    db.periods().forEach([&](QStringView, QStringView text) {
        ++position;
        QStringView field;
        if (rowdetail::fieldAt(text, 1, field) && field == name) {
            found = position;
            return false;
        }
        return true;
    });
    return found;
}

QStringList periodNames(const Database &db)
{
    QStringList names;
    db.periods().forEach([&names](QStringView, QStringView text) {
        if (const auto period = PeriodView::parse(text)) names.append(period->name.toString());
        return true;
    });
    return names;
}

bool treeHasBilledItem(const InvoiceTree &tree)
{
    bool found = false;
    tree.forEachNode([&](int n) {
        if (!found && tree.kind(n) == NodeKind::EnteredItem) found = true;
    });
    return found;
}

AddCheck checkNewBillPeriod(const Database &db, const InvoiceTree &entryTree, const QString &name)
{
    if (findPeriodRow(db, rowSafe(name)) != 0) return AddCheck::DuplicateName;
    if (!treeHasBilledItem(entryTree)) return AddCheck::NothingBilled;
    return AddCheck::Ok;
}

int finaliseBillPeriod(Database &db, const InvoiceTree &entryTree, const QString &typedName, const QString &start,
                       const QString &end, const QString &due)
{
    const QString name = rowSafe(typedName);
    if (name.isEmpty() || findPeriodRow(db, name) != 0 || db.periods().contains(name)) return 0;
    const int root = entryTree.root();
    if (root == 0) return 0;
    const PeriodRow row{chronoDate(start), name, chronoDate(end), chronoDate(due)};

    // One record per customer with items: the item list, and the total of the
    // items' amounts as the opening balance.
    std::vector<InvoiceRecordRow> records;
    for (int customer : entryTree.childrenOf(root)) {
        const NodeValues &c = entryTree.values(customer);
        if (c.kind != NodeKind::Customer) continue;
        InvoiceRecordRow r;
        Money total;
        for (int item : entryTree.childrenOf(customer)) {
            const NodeValues &v = entryTree.values(item);
            if (v.kind != NodeKind::EnteredItem) continue;
            total += v.amount;
            ItemEntry::append(r.items, v.item, int(v.quantity));
        }
        if (r.items.isEmpty()) continue;  // a customer without items is not part of the period
        r.period = name;
        r.customerName = withoutMark(db.customerNameByCid(c.customer));
        r.cid = c.customer;
        r.balance = total.toStoredText();
        records.push_back(std::move(r));
    }
    return db.addPeriod(row, records).rows;
}

// ---------------------------------------------------------------- trees

namespace {
NodeValues customerValues(const QString &cid, const QString &name, bool marked)
{
    NodeValues v;
    v.kind = NodeKind::Customer;
    v.customer = cid;
    v.label = name;
    v.marked = marked;
    return v;
}

NodeValues enteredItem(const QString &cid, const QString &psid, const QString &listText, Money price,
                       qint64 quantity)
{
    NodeValues v;
    v.kind = NodeKind::EnteredItem;
    v.customer = cid;
    v.item = psid;
    v.label = listText;
    v.quantity = quantity;
    v.amount = price.times(quantity);
    return v;
}

// The key of an item under entry: both numbers in eight digits, then "b".
QString enteredItemKey(const QString &cid, const QString &psid) { return eightDigits(cid) + eightDigits(psid) + u'b'; }

void startEntryTree(InvoiceTree &tree)
{
    tree.clear();
    tree.setChosenPeriod(QString());
    NodeValues root;
    root.kind = NodeKind::Root;
    root.label = NewPeriodRootText;
    tree.add(0, RootKey, root);
}
}  // namespace

void resetNewPeriodTree(InvoiceTree &tree, const Database &db)
{
    const InvoiceTree::Bulk bulk(tree);
    startEntryTree(tree);
    const int root = tree.root();
    db.customers().forEach([&](QStringView key, QStringView text) {
        const QStringView name = customer::displayNameOf(text);
        if (name.startsWith(ArchiveMark)) return false;  // archived customers stand last
        const int node = tree.add(root, key.toString(), customerValues(plainNumber(key), name.toString(), true));
        tree.ensureVisible(node);
        return true;
    });
}

namespace {

// What both trees show of one record, worked out once for the two.
struct ShownNode {
    QString key;
    NodeValues values;
};
struct ShownRecord {
    ShownNode customer;
    QString note;
    std::vector<ShownNode> items;  // keys "1bi", "2bi", ...
};

std::vector<ShownRecord> showRecords(const Database &db, const std::vector<QStringView> &records)
{
    std::vector<ShownRecord> out;
    out.reserve(records.size());
    // A period bills few distinct items many times: each is looked up once.
    accounts::PriceBook items(db);
    int itemNumber = 0;
    for (QStringView text : records) {
        const auto r = InvoiceRecordView::parse(text);
        if (!r) continue;
        ShownRecord s;
        const QString cid = r->cid.toString();
        s.customer.key = numberKey(cid);
        s.customer.values = customerValues(cid, presentName(db, s.customer.key), false);
        s.customer.values.balance = balanceValue(r->balance);
        s.note = r->note.toString();
        r->forEachEntry([&](const ItemEntry &e, QStringView) {
            const accounts::PriceBook::Item &known = items.item(e.number);
            NodeValues v;
            v.kind = NodeKind::FinalItem;
            v.customer = cid;
            v.item = known.number;
            v.label = known.listText;
            v.quantity = e.count();
            v.amount = known.price.times(v.quantity);
            s.items.push_back({QString::number(++itemNumber) + QStringLiteral("bi"), std::move(v)});
            return true;
        });
        out.push_back(std::move(s));
    }
    return out;
}

void rebuildFrom(InvoiceTree &tree, const QString &period, const std::vector<ShownRecord> &records)
{
    const bool printing = tree.treeIndex() == 1;
    tree.beginBulkChange();
    tree.clear();
    tree.setChosenPeriod(period);
    size_t nodes = 1;
    for (const ShownRecord &r : records) nodes += 2 + r.items.size();
    tree.reserve(int(nodes));
    // Keys are unique by construction: customers by their records' keys,
    // items by their running number, notes by their customer.
    NodeValues rootValues;
    rootValues.kind = NodeKind::Root;
    rootValues.label = period;
    const int root = tree.addNew(0, RootKey, rootValues);
    bool someoneOwes = false;
    for (const ShownRecord &r : records) {
        const int customer = tree.addNew(root, r.customer.key, r.customer.values);
        if (customer == 0) continue;
        const bool owes = !r.customer.values.balance->isZero();
        someoneOwes |= owes;
        const NodeColour colour = printing ? (owes ? NodeColour::WindowText : NodeColour::GreyText)
                                           : (owes ? NodeColour::Owes : NodeColour::WindowText);
        tree.setColour(customer, colour);
        if (printing) tree.setChecked(customer, owes);
        tree.ensureVisible(customer);
        for (const ShownNode &i : r.items) {
            const int item = tree.addNew(customer, i.key, i.values);
            if (item == 0) continue;
            if (printing) tree.setColour(item, colour);
            tree.ensureVisible(item);
        }
        if (!printing && !r.note.isEmpty()) {
            NodeValues note;
            note.kind = NodeKind::RecordNote;
            note.customer = r.customer.values.customer;
            note.label = r.note;
            tree.addNew(customer, r.customer.key + NoteKeySuffix, note);
        }
    }
    if (printing) {
        if (someoneOwes) tree.setChecked(root, true);
        else tree.setColour(root, NodeColour::GreyText);
    }
    tree.endBulkChange();
}

// The first position whose row sorts at or after probe.
int lowerBound(const KeyedList &table, const QString &probe)
{
    int lo = 1, hi = table.count() + 1;
    while (lo < hi) {
        const int mid = lo + (hi - lo) / 2;
        if (compareRowText(table.textView(mid), probe) < 0) lo = mid + 1;
        else hi = mid;
    }
    return lo;
}

// The records of a period in table order. Every record text starts with the
// period's name and FieldSep, and FieldSep sorts below every character a name
// holds, so the records of names that sort alike (the same letters, whatever
// their case and accents) stand together between the name followed by
// U+0001 and the name followed by U+0002. Names that differ only in case sort
// their records into one another there, so each row is still compared exactly.
std::vector<QStringView> recordsOf(const Database &db, const QString &period)
{
    std::vector<QStringView> out;
    const KeyedList &records = db.invoiceRecords();
    const QString after = period + QChar(u'\u0002');
    const int n = records.count();
    for (int i = lowerBound(records, record::periodStart(period)); i <= n; ++i) {
        const QStringView text = records.textView(i);
        if (compareRowText(text, after) >= 0) break;
        if (record::isOfPeriod(text, period)) out.push_back(text);
    }
    return out;
}
}  // namespace

void rebuildInvoiceTree(InvoiceTree &tree, const Database &db, const QString &period)
{
    rebuildFrom(tree, period, showRecords(db, recordsOf(db, period)));
}

void rebuildInvoiceTrees(InvoiceTree &tree0, InvoiceTree &tree1, const Database &db, const QString &period)
{
    const std::vector<ShownRecord> records = showRecords(db, recordsOf(db, period));
    rebuildFrom(tree0, period, records);
    rebuildFrom(tree1, period, records);
}

// ---------------------------------------------------------------- billing items

namespace {
void setMark(InvoiceTree &tree, int node, bool marked)
{
    NodeValues v = tree.values(node);
    if (v.kind != NodeKind::Customer || v.balance || v.marked == marked) return;
    v.marked = marked;
    tree.setValues(node, v);
}
}  // namespace

void markOnlyCustomer(InvoiceTree &tree, int selected)
{
    const InvoiceTree::Bulk bulk(tree);
    tree.forEachNode([&](int n) { setMark(tree, n, n == selected); });
}

void toggleMark(InvoiceTree &tree, int customer) { setMark(tree, customer, !tree.values(customer).marked); }

void markAllCustomers(InvoiceTree &tree)
{
    const InvoiceTree::Bulk bulk(tree);
    tree.forEachNode([&](int n) { setMark(tree, n, true); });
}

QString BillOutcome::refusalText() const
{
    if (refused.isEmpty()) return QString();
    QString t = QStringLiteral("A bill holds at most %1 of one item. These were not billed again:\r\n").arg(MaxQuantity);
    for (const auto &[customer, item] : refused) t += QStringLiteral("\r\n%1: %2").arg(customer, item);
    return t;
}

BillOutcome billProductToMarked(InvoiceTree &tree, const QString &productKey, const QString &productText)
{
    BillOutcome out;
    const QString psid = plainNumber(productKey);
    const Money price = priceOfListText(productText);
    // Only the nodes there before the billing: the new items aren't visited.
    const std::vector<int> before = tree.nodes();
    const InvoiceTree::Bulk bulk(tree);
    for (int n : before) {
        const NodeValues &c = tree.values(n);
        if (c.kind != NodeKind::Customer || c.balance || !c.marked) continue;
        const QString itemKey = enteredItemKey(c.customer, psid);
        if (const int item = tree.add(n, itemKey, enteredItem(c.customer, psid, productText, price, 1))) {
            tree.ensureVisible(item);
            ++out.added;
            continue;
        }
        const int item = tree.find(itemKey);
        const NodeValues &v = tree.values(item);
        if (v.quantity < MaxQuantity) {
            tree.setValues(item, enteredItem(v.customer, v.item, v.label, price, v.quantity + 1));
            ++out.raised;
        } else {
            out.refused.append({c.label, tree.text(item)});
        }
    }
    return out;
}

bool deleteBilledItem(InvoiceTree &tree, int node)
{
    if (tree.kind(node) != NodeKind::EnteredItem) return false;
    tree.remove(node);
    return true;
}

BillEntry entryOf(const InvoiceTree &entryTree)
{
    BillEntry e;
    const int root = entryTree.root();
    for (int customer : entryTree.childrenOf(root)) {
        const NodeValues &c = entryTree.values(customer);
        if (c.kind != NodeKind::Customer) continue;
        e.customers.append({c.customer, c.marked});
        for (int item : entryTree.childrenOf(customer)) {
            const NodeValues &v = entryTree.values(item);
            if (v.kind == NodeKind::EnteredItem) e.items.append({v.customer, v.item, v.quantity});
        }
    }
    return e;
}

void restoreEntry(InvoiceTree &entryTree, const Database &db, const BillEntry &entry)
{
    const InvoiceTree::Bulk bulk(entryTree);
    startEntryTree(entryTree);
    const int root = entryTree.root();
    accounts::PriceBook items(db);
    for (const BillEntry::Customer &c : entry.customers) {
        const QString key = numberKey(c.number);
        const int node = entryTree.add(root, key, customerValues(c.number, presentName(db, key), c.marked));
        entryTree.ensureVisible(node);
    }
    for (const BillEntry::Item &i : entry.items) {
        const int customer = entryTree.find(numberKey(i.customer));
        if (customer == 0) continue;
        const accounts::PriceBook::Item &known = items.item(i.item);
        const int node = entryTree.add(customer, enteredItemKey(i.customer, i.item),
                                       enteredItem(i.customer, i.item, known.listText, known.price, i.quantity));
        entryTree.ensureVisible(node);
    }
}

EditOutcome removeCustomer(InvoiceTrees &trees, const QString &key, const Database::Progress &progress)
{
    InvoiceTree &entry = trees.tree(0);
    const bool open = trees.entryOpen();
    const bool billed = open && entryBills(entry, plainNumber(key), &NodeValues::customer);
    EditOutcome r = trees.db().removeCustomer(key, progress, billed);
    if (open && r.removal == Removal::Deleted) entry.remove(entry.find(key));
    return r;
}

EditOutcome removeItem(InvoiceTrees &trees, const QString &key, const Database::Progress &progress)
{
    return trees.db().removeItem(key, progress,
                                 trees.entryOpen() && entryBills(trees.tree(0), plainNumber(key), &NodeValues::item));
}

// ---------------------------------------------------------------- payments

bool logPayment(InvoiceTree &tree0, InvoiceTree &tree1, Database &db, int node, Money balance, const QString &typedNote,
                const QString &period)
{
    if (!tree0.exists(node)) return false;
    const QString note = rowSafe(typedNote);
    NodeValues customer = tree0.values(node);
    if (customer.kind != NodeKind::Customer || !customer.balance) return false;
    if (note.isEmpty() && balance.isZero() && customer.balance->isZero()) return false;
    const QString cid = customer.customer;
    // A customer of an abandoned entry has no record to pay.
    if (!db.invoiceRecords().contains(record::keyFor(period, cid))) return false;

    customer.balance = balance;
    tree0.setValues(node, customer);
    tree0.setColour(node, balance.isZero() ? NodeColour::WindowText : NodeColour::Owes);
    if (!note.isEmpty()) {
        const QString noteKey = tree0.key(node) + NoteKeySuffix;
        NodeValues v;
        v.kind = NodeKind::RecordNote;
        v.customer = cid;
        v.label = note;
        if (tree0.add(node, noteKey, v) == 0) tree0.setValues(tree0.find(noteKey), v);
    }

    db.logPayment(period, cid, balance.toStoredText(), note);

    rebuildInvoiceTree(tree1, db, period);
    return true;
}

int addInvoiceNote(InvoiceTree &tree1, int customer, const QString &answer)
{
    const NodeValues &c = tree1.values(customer);
    if (answer.isEmpty() || c.kind != NodeKind::Customer) return 0;
    const QString key = tree1.key(customer) + u'n';
    NodeValues v;
    v.kind = NodeKind::InvoiceNote;
    v.customer = c.customer;
    v.label = answer;
    int note = tree1.add(customer, key, v);
    if (note != 0) {
        tree1.ensureVisible(customer);
        tree1.ensureVisible(note);
    } else {
        note = tree1.find(key);
    }
    tree1.setChecked(note, true);
    return note;
}

}  // namespace qor::billing
