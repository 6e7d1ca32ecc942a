#include "billing/billing.h"

#include "database/collation.h"
#include "database/database.h"
#include "database/regional.h"
#include "database/rowtypes.h"

#include <cmath>
#include <limits>

namespace qor::billing {

namespace {

// The eight-digit form ("0000000#") of a customer or item number in an item key.
QString eightDigits(const QString &number)
{
    return number.size() >= 8 ? number : QString(8 - number.size(), u'0') + number;
}

QString trimmedOfBlanks(const QString &s)
{
    qsizetype b = 0, e = s.size();
    while (b < e && s[b] == u' ') ++b;
    while (e > b && s[e - 1] == u' ') --e;
    return s.mid(b, e - b);
}

// The present display name of a customer without the archive mark; empty when
// the table has no such customer.
QString presentName(const Database &db, const QString &customerKey)
{
    const int at = db.lvwCustomers.indexOf(customerKey);
    if (at == 0) return QString();
    const QStringView name = customer::displayNameOf(db.lvwCustomers.textView(at));
    return (name.startsWith(ArchiveMark) ? name.mid(ArchiveMark.size()) : name).toString();
}

QString withoutMark(QString name)
{
    if (name.startsWith(ArchiveMark)) name.remove(0, ArchiveMark.size());
    return name;
}

// The text of an item node of a finalised period: the list text of the item's
// row without the archive mark. A record may name an item the table lacks (a
// damaged file, or an item deleted while an entry that billed it was open):
// the node then says so and bills nothing.
QString itemNodeText(const Database &db, QStringView number)
{
    const QString key = numberKey(number);
    if (db.lvwPAndS.contains(key)) return ItemView::parse(db.lvwPAndS.textOf(key)).listText.toString();
    return regional::formatCurrency(0) + QStringLiteral(" - Item number %1, not in the database").arg(number);
}

}  // namespace

QString balancePrompt(const QString &name) { return text::NewBalance.text + QStringLiteral("\r\n\r\n") + name; }
QString notePrompt(const QString &name) { return text::OptionalNote.text + QStringLiteral("\r\n\r\n") + name; }

// ---------------------------------------------------------------- node kinds

NodeKind kindOfKey(QStringView key)
{
    if (key == RootKey) return NodeKind::Root;
    if (key.isEmpty()) return NodeKind::Other;
    switch (key.back().unicode()) {
    case u'k': return NodeKind::Customer;
    case u'b': return NodeKind::EnteredItem;
    case u'i': return NodeKind::FinalItem;
    case u'e': return NodeKind::RecordNote;
    case u'n': return NodeKind::InvoiceNote;
    default: return NodeKind::Other;
    }
}

QString cidOfKey(QStringView key)
{
    QString s;
    s.reserve(key.size());
    for (QChar c : key)
        if (c != u'k' && c != u' ') s += c;
    return s;
}

QString nameOfNodeText(QStringView text)
{
    const qsizetype at = text.indexOf(QStringLiteral(" - "));
    return (at < 0 ? text : text.left(at)).toString();
}

// ---------------------------------------------------------------- numbers

qint16 parseBilledQuantity(QStringView s)
{
    const qsizetype n = s.size();
    if (n == 0 || s.back() != u')') return 1;
    if (n >= 5 && s.mid(n - 5, 3) == u" (x") return qint16(regional::val(s.mid(n - 2, 1)));
    if (n >= 6 && s.mid(n - 6, 3) == u" (x") return qint16(regional::val(s.mid(n - 3, 2)));
    return 1;
}

std::optional<QString> addOneToQuantity(QStringView s)
{
    const qsizetype n = s.size();
    int quantity = 0;
    qsizetype keep = 0;
    if (n >= 4 && s.mid(n - 4, 2) == u"(x") {
        quantity = int(regional::val(s.mid(n - 2, 1)));
        keep = n - 5;
    } else if (n >= 5 && s.mid(n - 5, 2) == u"(x") {
        quantity = int(regional::val(s.mid(n - 3, 2)));
        keep = n - 6;
    } else {
        return s.toString() + QStringLiteral(" (x2)");
    }
    // A hundred would be three digits, which no reader of the text takes.
    if (quantity + 1 > MaxQuantity) return std::nullopt;
    return s.left(std::max<qsizetype>(keep, 0)).toString() + QStringLiteral(" (x%1)").arg(quantity + 1);
}

double leadingDecimal(QStringView s)
{
    qsizetype i = 0;
    const qsizetype n = s.size();
    if (i < n && (s[i] == u'-' || s[i] == u'+')) ++i;
    const qsizetype digitsFrom = i;
    while (i < n && s[i] >= u'0' && s[i] <= u'9') ++i;
    qsizetype digits = i - digitsFrom;
    if (i < n && s[i] == u'.') {
        const qsizetype frac = ++i;
        while (i < n && s[i] >= u'0' && s[i] <= u'9') ++i;
        digits += i - frac;
    }
    if (digits == 0) return 0.0;
    // The part is plain ASCII: sign, digits and at most one point.
    const QByteArray part = s.left(i).toLatin1();
    return std::strtod(part.constData(), nullptr);
}

float billedItemAmount(QStringView text, const QString &currencySymbol)
{
    const qint16 quantity = parseBilledQuantity(text);
    QString s = text.toString();
    const qsizetype divider = s.indexOf(QStringLiteral(" - "));
    if (divider >= 0) s.truncate(divider);
    // Read by the locale's own marks: "5,00 €" is five, not five hundred.
    s = regional::plainAmountText(s, currencySymbol);
    const float price = float(leadingDecimal(s));
    const float amount = float(quantity) * price;
    return std::isfinite(amount) ? amount : 0.0f;
}

std::optional<float> readBalanceAnswer(const QString &answer, const QString &currencySymbol)
{
    QString s = trimmedOfBlanks(answer);
    if (!currencySymbol.isEmpty()) s.remove(currencySymbol);
    const double value = leadingDecimal(s);
    if (value == 0.0 && s != u"0" && s != u"0." && s != u"0.0" && s != u"0.00") return std::nullopt;
    // A number beyond what a balance holds would be stored as 0.
    if (!std::isfinite(value) || std::fabs(value) > double(std::numeric_limits<float>::max())) return std::nullopt;
    return float(value);
}

float balanceValue(QStringView stored) { return float(leadingDecimal(stored)); }

QString balanceSuffix(float balance)
{
    if (balance == 0.0f) return Paid;
    return Owes + regional::formatCurrency(double(balance));
}

// ---------------------------------------------------------------- dates

QString exampleText(const QDate &today)
{
    return QStringLiteral("(Example: ") + regional::formatDate(today, u"MMMM") + u' ' + QString::number(today.year())
         + u')';
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
    db.lvwPeriods.forEach([&](QStringView, QStringView text) {
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
    db.lvwPeriods.forEach([&names](QStringView, QStringView text) {
        if (const auto period = PeriodView::parse(text)) names.append(period->name.toString());
        return true;
    });
    return names;
}

bool treeHasBilledItem(const InvoiceTree &tree)
{
    bool found = false;
    tree.forEachNode([&](int n) {
        if (!found && kindOfKey(tree.key(n)) == NodeKind::EnteredItem) found = true;
    });
    return found;
}

AddCheck checkNewBillPeriod(const Database &db, const InvoiceTree &entryTree, const QString &name)
{
    if (findPeriodRow(db, rowSafe(name)) != 0) return AddCheck::DuplicateName;
    if (!treeHasBilledItem(entryTree)) return AddCheck::NothingBilled;
    return AddCheck::Ok;
}

namespace {
// WalkInvoiceTree and FlushInvoiceRecord with the working values of the walk.
struct PeriodWalk {
    Database &db;
    const InvoiceTree &tree;
    const QString &period;
    const QString &currencySymbol;
    QString CurrentCid;
    float CurrentTotal = 0;
    QString CurrentItems;
    int added = 0;

    void flushInvoiceRecord()
    {
        InvoiceRecordRow r;
        r.period = period;
        r.customerName = withoutMark(db.customerNameByCid(CurrentCid));
        r.cid = CurrentCid;
        r.balance = regional::singleText(CurrentTotal);
        r.items = CurrentItems;
        const QString key = record::keyFor(period, CurrentCid);
        if (db.lvwInvoiceRecords.contains(key)) return;  // the name is new, so its keys are too
        db.lvwInvoiceRecords.add(key, r.text());
        ++added;
    }

    void walkInvoiceTree(int node, int depth)
    {
        const QString key = tree.key(node);
        if (depth == 1) {
            CurrentCid.clear();
            CurrentTotal = 0;
            CurrentItems.clear();
        } else if (isCustomerKey(key)) {
            if (!CurrentItems.isEmpty()) flushInvoiceRecord();
            CurrentCid = cidOfKey(key);
            CurrentTotal = 0;
            CurrentItems.clear();
        } else {
            const QString text = tree.text(node);
            CurrentTotal += billedItemAmount(text, currencySymbol);
            ItemEntry::append(CurrentItems, QString::number(key.mid(8, 8).toLongLong()), parseBilledQuantity(text));
        }
        for (int child : tree.childrenOf(node)) walkInvoiceTree(child, depth + 1);
    }
};
}  // namespace

int finaliseBillPeriod(Database &db, const InvoiceTree &entryTree, const QString &typedName, const QString &start,
                       const QString &end, const QString &due, const QString &currencySymbol)
{
    const QString name = rowSafe(typedName);
    if (name.isEmpty() || findPeriodRow(db, name) != 0 || db.lvwPeriods.contains(name)) return 0;
    const PeriodRow row{chronoDate(start), name, chronoDate(end), chronoDate(due)};
    db.lvwPeriods.add(name, row.text());

    PeriodWalk walk{db, entryTree, name, currencySymbol};
    const int root = entryTree.find(RootKey);
    if (root == 0) return 0;
    walk.walkInvoiceTree(root, 1);
    if (!walk.CurrentItems.isEmpty()) walk.flushInvoiceRecord();
    return walk.added;
}

// ---------------------------------------------------------------- trees

void resetNewPeriodTree(InvoiceTree &tree, const Database &db)
{
    tree.beginBulkChange();
    tree.clear();
    tree.setChosenPeriod(QString());
    const int root = tree.add(0, RootKey, NewPeriodRootText);
    db.lvwCustomers.forEach([&](QStringView key, QStringView text) {
        const QStringView name = customer::displayNameOf(text);
        if (name.startsWith(ArchiveMark)) return false;  // archived customers stand last
        const int node = tree.add(root, key.toString(), Mark + name.toString());
        tree.ensureVisible(node);
        return true;
    });
    tree.endBulkChange();
}

namespace {

// What both trees show of one record, worked out once for the two.
struct ShownRecord {
    QString customerKey;
    QString text;  // present name and the balance
    bool owes = false;
    QString note;
    std::vector<std::pair<QString, QString>> items;  // key ("1bi", ...) and text
};

std::vector<ShownRecord> showRecords(const Database &db, const std::vector<QStringView> &records)
{
    std::vector<ShownRecord> out;
    out.reserve(records.size());
    // A period bills few distinct items many times: each is looked up once.
    QHash<QString, QString> itemText;
    int itemNumber = 0;
    for (QStringView text : records) {
        const auto r = InvoiceRecordView::parse(text);
        if (!r) continue;
        ShownRecord s;
        s.customerKey = numberKey(r->cid);
        const float balance = balanceValue(r->balance);
        s.owes = balance != 0.0f;
        s.text = presentName(db, s.customerKey) + balanceSuffix(balance);
        s.note = r->note.toString();
        r->forEachEntry([&](const ItemEntry &e, QStringView entryText) {
            const QString number = e.number.toString();
            auto hit = itemText.constFind(number);
            if (hit == itemText.constEnd()) hit = itemText.insert(number, itemNodeText(db, e.number));
            QString t = *hit;
            if (entryText.contains(u'x')) t += QStringLiteral(" (x") + e.quantity.toString() + u')';
            s.items.emplace_back(QString::number(++itemNumber) + QStringLiteral("bi"), std::move(t));
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
    const int root = tree.addNew(0, RootKey, period);
    bool someoneOwes = false;
    for (const ShownRecord &r : records) {
        const int customer = tree.addNew(root, r.customerKey, r.text);
        if (customer == 0) continue;
        someoneOwes |= r.owes;
        const NodeColour colour = printing ? (r.owes ? NodeColour::WindowText : NodeColour::GreyText)
                                           : (r.owes ? NodeColour::Owes : NodeColour::WindowText);
        tree.setColour(customer, colour);
        if (printing) tree.setChecked(customer, r.owes);
        tree.ensureVisible(customer);
        for (const auto &[key, text] : r.items) {
            const int item = tree.addNew(customer, key, text);
            if (item == 0) continue;
            if (printing) {
                tree.setColour(item, colour);
                tree.setChecked(item, true);
            }
            tree.ensureVisible(item);
        }
        if (!printing && !r.note.isEmpty()) tree.addNew(customer, r.customerKey + NoteKeySuffix, NotePrefix + r.note);
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
    const KeyedList &records = db.lvwInvoiceRecords;
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

void markOnlyCustomer(InvoiceTree &tree, int selected)
{
    const InvoiceTree::Bulk bulk(tree);
    tree.forEachNode([&](int n) {
        if (!isCustomerKey(tree.key(n))) return;
        const QString t = tree.text(n);
        if (n == selected && !isMarked(t)) tree.setText(n, Mark + t);
        else if (n != selected && isMarked(t)) tree.setText(n, t.mid(1));
    });
}

void toggleMark(InvoiceTree &tree, int customer)
{
    if (!isCustomerKey(tree.key(customer))) return;
    const QString t = tree.text(customer);
    tree.setText(customer, isMarked(t) ? t.mid(1) : Mark + t);
}

void markAllCustomers(InvoiceTree &tree)
{
    const InvoiceTree::Bulk bulk(tree);
    tree.forEachNode([&](int n) {
        if (!isCustomerKey(tree.key(n))) return;
        const QString t = tree.text(n);
        if (!isMarked(t)) tree.setText(n, Mark + t);
    });
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
    const QString psid = eightDigits(plainNumber(productKey));
    // Only the nodes there before the billing: the new items aren't visited.
    const std::vector<int> before = tree.nodes();
    tree.beginBulkChange();
    for (int n : before) {
        const QString key = tree.key(n);
        if (!isCustomerKey(key) || !isMarked(tree.text(n))) continue;
        const QString itemKey = eightDigits(plainNumber(key)) + psid + u'b';
        if (const int item = tree.add(n, itemKey, productText)) {
            tree.ensureVisible(item);
            ++out.added;
            continue;
        }
        const int item = tree.find(itemKey);
        const QString text = tree.text(item);
        if (const auto raised = addOneToQuantity(text)) {
            tree.setText(item, *raised);
            ++out.raised;
        } else {
            out.refused.append({tree.text(n).mid(1), text});
        }
    }
    tree.endBulkChange();
    return out;
}

bool deleteBilledItem(InvoiceTree &tree, int node)
{
    if (kindOfKey(tree.key(node)) != NodeKind::EnteredItem) return false;
    tree.remove(node);
    return true;
}

// ---------------------------------------------------------------- payments

bool logPayment(InvoiceTree &tree0, InvoiceTree &tree1, Database &db, int node, float balance, const QString &typedNote,
                const QString &period)
{
    if (!tree0.exists(node)) return false;
    const QString note = rowSafe(typedNote);
    if (note.isEmpty() && balance == 0.0f && tree0.colour(node) == NodeColour::WindowText) return false;
    const QString key = tree0.key(node);
    if (!isCustomerKey(key)) return false;
    const QString cid = cidOfKey(key);
    const QString recordKey = record::keyFor(period, cid);
    // A customer of an abandoned entry has no record to pay.
    if (!db.lvwInvoiceRecords.contains(recordKey)) return false;

    const QString name = nameOfNodeText(tree0.text(node));
    tree0.setText(node, name + balanceSuffix(balance));
    tree0.setColour(node, balance == 0.0f ? NodeColour::WindowText : NodeColour::Owes);
    if (!note.isEmpty()) {
        const QString noteKey = key + NoteKeySuffix;
        if (tree0.add(node, noteKey, NotePrefix + note) == 0) tree0.setText(tree0.find(noteKey), NotePrefix + note);
    }

    const auto old = InvoiceRecordRow::parse(db.lvwInvoiceRecords.textOf(recordKey));
    InvoiceRecordRow r;
    r.period = period;
    r.customerName = withoutMark(db.customerNameByCid(cid));
    r.cid = cid;
    r.balance = regional::singleText(balance);
    r.items = old ? old->items : QString();
    r.note = note;
    // The name is the customer's present one. When it has changed since the
    // record was written, the row moves to where its new text sorts: the
    // walks over a period's records rely on the table's order.
    if (old && old->customerName != r.customerName) {
        db.lvwInvoiceRecords.remove(recordKey);
        db.lvwInvoiceRecords.add(recordKey, r.text());
    } else {
        db.lvwInvoiceRecords.setTextOf(recordKey, r.text());
    }

    rebuildInvoiceTree(tree1, db, period);
    return true;
}

int addInvoiceNote(InvoiceTree &tree1, int customer, const QString &answer)
{
    if (answer.isEmpty() || !isCustomerKey(tree1.key(customer))) return 0;
    const QString key = tree1.key(customer) + u'n';
    int note = tree1.add(customer, key, InvoiceNotePrefix + answer);
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
