// SPDX-License-Identifier: GPL-3.0-or-later
#include "billing/invoicetree.h"

#include <limits>
#include <utility>

namespace qor {

namespace {
const std::vector<int> NoChildren;
const NodeValues NoValues;
}  // namespace

QString textOf(const NodeValues &v)
{
    switch (v.kind) {
    case NodeKind::Customer:
        if (!v.balance) return v.marked ? u'*' + v.label : v.label;
        if (v.balance->isZero()) return v.label + QStringLiteral(" - paid");
        return v.label + QStringLiteral(" - owes ") + v.balance->toCurrencyText();
    case NodeKind::EnteredItem:
    case NodeKind::FinalItem:
        return v.quantity == 1 ? v.label : v.label + QStringLiteral(" (x%1)").arg(v.quantity);
    case NodeKind::RecordNote: return QStringLiteral("NOTE: ") + v.label;
    case NodeKind::InvoiceNote: return QStringLiteral("INVOICE NOTE: ") + v.label;
    case NodeKind::Root:
    case NodeKind::Other: break;
    }
    return v.label;
}

InvoiceTree::InvoiceTree(int index, QObject *parent) : QAbstractItemModel(parent), m_index(index)
{
    m_nodes.resize(1);
    m_nodes[0].alive = true;  // the invisible top, parent of the root
}

InvoiceTree::~InvoiceTree() = default;

void InvoiceTree::clear()
{
    m_clearedInBulk = true;
    if (m_bulk == 0) beginResetModel();
    else structuralChangeInBulk();
    m_nodes.clear();
    m_nodes.resize(1);
    m_nodes[0].alive = true;
    m_byKey.clear();
    m_indexStale = false;
    m_live = 0;
    if (m_bulk == 0) endResetModel();
}

void InvoiceTree::beginBulkChange()
{
    if (m_bulk++ == 0) {
        m_clearedInBulk = false;
        m_resetBegun = false;
        m_touchedNodes.clear();
        m_openedInBulk.clear();
    }
}

void InvoiceTree::structuralChangeInBulk()
{
    // Nodes come or go: views are reset once, at the end. The reset has to
    // be announced before the first change.
    if (!m_resetBegun) {
        m_resetBegun = true;
        beginResetModel();
    }
}

void InvoiceTree::endBulkChange()
{
    if (m_bulk == 0 || --m_bulk > 0) return;
    if (m_resetBegun) {
        m_resetBegun = false;
        endResetModel();
        return;
    }
    // Texts, colours, ticks only: the views keep their places and draw the
    // changed rows again, told once per run of siblings.
    if (!m_touchedNodes.empty()) {
        std::vector<std::pair<int, int>> rows(m_nodes.size(), {std::numeric_limits<int>::max(), -1});
        std::vector<int> parents;
        for (int node : std::exchange(m_touchedNodes, {})) {
            if (!exists(node)) continue;
            const Node &n = m_nodes[size_t(node)];
            auto &[first, last] = rows[size_t(n.parent)];
            if (last < 0) parents.push_back(n.parent);
            first = std::min(first, n.row);
            last = std::max(last, n.row);
        }
        for (int p : parents) {
            const QModelIndex parent = p == 0 ? QModelIndex() : indexOf(p);
            emit dataChanged(index(rows[size_t(p)].first, 0, parent), index(rows[size_t(p)].second, 0, parent));
        }
    }
    for (int node : std::exchange(m_openedInBulk, {}))
        if (exists(node)) emit expansionChanged(node, expanded(node));
}

int InvoiceTree::add(int parent, const QString &key, const NodeValues &values)
{
    if (parent != 0 && !exists(parent)) return 0;
    ensureIndex();
    if (m_byKey.contains(key)) return 0;
    return insert(parent, key, values, true);
}

int InvoiceTree::addNew(int parent, const QString &key, const NodeValues &values)
{
    if (parent != 0 && !exists(parent)) return 0;
    m_indexStale = true;
    return insert(parent, key, values, false);
}

void InvoiceTree::reserve(int n)
{
    m_nodes.reserve(size_t(n) + 1);
}

void InvoiceTree::ensureIndex() const
{
    if (!m_indexStale) return;
    m_byKey.clear();
    m_byKey.reserve(m_live);
    forEachNode([this](int n) { m_byKey.insert(m_nodes[size_t(n)].key, n); });
    m_indexStale = false;
}

int InvoiceTree::insert(int parent, const QString &key, const NodeValues &values, bool index)
{
    const int node = int(m_nodes.size());
    const int row = int(m_nodes[size_t(parent)].children.size());
    if (m_bulk == 0) beginInsertRows(parent == 0 ? QModelIndex() : indexOf(parent), row, row);
    else structuralChangeInBulk();
    Node n;
    n.key = key;
    n.values = values;
    n.parent = parent;
    n.row = row;
    n.alive = true;
    m_nodes.push_back(std::move(n));
    m_nodes[size_t(parent)].children.push_back(node);
    if (index) m_byKey.insert(key, node);
    ++m_live;
    if (m_bulk == 0) endInsertRows();
    return node;
}

void InvoiceTree::removeLinks(int node)
{
    Node &n = m_nodes[size_t(node)];
    for (int c : n.children) removeLinks(c);
    if (!m_indexStale) m_byKey.remove(n.key);
    n.alive = false;
    n.children.clear();
    n.key.clear();
    n.values = NodeValues();
    --m_live;
}

void InvoiceTree::remove(int node)
{
    if (!exists(node)) return;
    const int parent = m_nodes[size_t(node)].parent;
    const int row = m_nodes[size_t(node)].row;
    if (m_bulk == 0) beginRemoveRows(parent == 0 ? QModelIndex() : indexOf(parent), row, row);
    else structuralChangeInBulk();
    std::vector<int> &siblings = m_nodes[size_t(parent)].children;
    siblings.erase(siblings.begin() + row);
    for (size_t i = size_t(row); i < siblings.size(); ++i) m_nodes[size_t(siblings[i])].row = int(i);
    removeLinks(node);
    if (m_bulk == 0) endRemoveRows();
}

int InvoiceTree::find(const QString &key) const
{
    ensureIndex();
    return m_byKey.value(key, 0);
}

int InvoiceTree::root() const
{
    const auto &top = m_nodes[0].children;
    return top.empty() ? 0 : top.front();
}

QString InvoiceTree::key(int node) const { return exists(node) ? m_nodes[size_t(node)].key : QString(); }
QString InvoiceTree::text(int node) const { return exists(node) ? textOf(m_nodes[size_t(node)].values) : QString(); }

void InvoiceTree::changed(int node, const QList<int> &roles)
{
    if (m_bulk != 0) {
        if (!m_resetBegun) m_touchedNodes.push_back(node);
        return;
    }
    const QModelIndex i = indexOf(node);
    emit dataChanged(i, i, roles);
}

const NodeValues &InvoiceTree::values(int node) const { return exists(node) ? m_nodes[size_t(node)].values : NoValues; }

void InvoiceTree::setValues(int node, const NodeValues &values)
{
    if (!exists(node) || m_nodes[size_t(node)].values == values) return;
    m_nodes[size_t(node)].values = values;
    changed(node, {Qt::DisplayRole});
}

bool InvoiceTree::hasCheckBox(int node) const
{
    if (!hasCheckBoxes() || !exists(node)) return false;
    const NodeKind k = m_nodes[size_t(node)].values.kind;
    return k != NodeKind::EnteredItem && k != NodeKind::FinalItem;
}

NodeColour InvoiceTree::colour(int node) const
{
    return exists(node) ? m_nodes[size_t(node)].colour : NodeColour::Default;
}

void InvoiceTree::setColour(int node, NodeColour colour)
{
    if (!exists(node) || m_nodes[size_t(node)].colour == colour) return;
    m_nodes[size_t(node)].colour = colour;
    changed(node, {Qt::ForegroundRole, ColourRole});
}

bool InvoiceTree::checked(int node) const { return exists(node) && m_nodes[size_t(node)].checked; }

void InvoiceTree::setChecked(int node, bool checked)
{
    if (!exists(node) || m_nodes[size_t(node)].checked == checked) return;
    m_nodes[size_t(node)].checked = checked;
    changed(node, {Qt::CheckStateRole});
}

bool InvoiceTree::expanded(int node) const { return exists(node) && m_nodes[size_t(node)].expanded; }

void InvoiceTree::setExpanded(int node, bool expanded)
{
    if (!exists(node) || m_nodes[size_t(node)].expanded == expanded) return;
    m_nodes[size_t(node)].expanded = expanded;
    if (m_bulk == 0) emit expansionChanged(node, expanded);
    else if (!m_resetBegun) m_openedInBulk.push_back(node);
}

void InvoiceTree::ensureVisible(int node)
{
    if (!exists(node)) return;
    for (int p = m_nodes[size_t(node)].parent; p != 0; p = m_nodes[size_t(p)].parent) {
        if (m_nodes[size_t(p)].expanded) break;  // everything above is open already
        setExpanded(p, true);
    }
}

int InvoiceTree::parentOf(int node) const { return exists(node) ? m_nodes[size_t(node)].parent : 0; }

const std::vector<int> &InvoiceTree::childrenOf(int node) const
{
    if (node != 0 && !exists(node)) return NoChildren;
    return m_nodes[size_t(node)].children;
}

std::vector<int> InvoiceTree::nodes() const
{
    std::vector<int> out;
    out.reserve(size_t(m_live));
    forEachNode([&out](int n) { out.push_back(n); });
    return out;
}

void InvoiceTree::nodeCheck(int node)
{
    if (!exists(node)) return;
    // A grey node (a paid customer, or the root when nobody owes) keeps the
    // box as the user left it and moves nothing else.
    if (colour(node) == NodeColour::GreyText) return;
    if (kind(node) != NodeKind::Root) return;
    const bool state = checked(node);
    const Bulk bulk(*this);
    forEachNode([&](int n) { setChecked(n, state); });
}

// ------------------------------------------------------------------ model

namespace {
// The internal id of an index is the node number spread over all bits: views
// keep indexes in hashes that add the row to the id, and plain node numbers
// next to rows crowd a few buckets.
constexpr quint64 Spread = 0x9E3779B97F4A7C15ull;
constexpr quint64 Unspread = 0xF1DE83E19937733Dull;  // Spread * Unspread == 1 (mod 2^64)
quintptr idOf(int node) { return quintptr(quint64(node) * Spread); }
int nodeOfId(quintptr id) { return int(quint64(id) * Unspread); }
}  // namespace

QModelIndex InvoiceTree::indexOf(int node) const
{
    if (!exists(node)) return {};
    return createIndex(m_nodes[size_t(node)].row, 0, idOf(node));
}

int InvoiceTree::nodeOf(const QModelIndex &index) const
{
    if (!index.isValid() || index.model() != this) return 0;
    const int node = nodeOfId(index.internalId());
    return exists(node) ? node : 0;
}

QModelIndex InvoiceTree::index(int row, int column, const QModelIndex &parent) const
{
    if (column != 0 || row < 0) return {};
    const int p = parent.isValid() ? nodeOf(parent) : 0;
    if (parent.isValid() && p == 0) return {};
    const auto &children = m_nodes[size_t(p)].children;
    if (row >= int(children.size())) return {};
    return createIndex(row, 0, idOf(children[size_t(row)]));
}

QModelIndex InvoiceTree::parent(const QModelIndex &child) const
{
    const int node = nodeOf(child);
    if (node == 0) return {};
    return indexOf(m_nodes[size_t(node)].parent);
}

int InvoiceTree::rowCount(const QModelIndex &parent) const
{
    if (parent.column() > 0) return 0;
    const int p = parent.isValid() ? nodeOf(parent) : 0;
    if (parent.isValid() && p == 0) return 0;
    return int(m_nodes[size_t(p)].children.size());
}

int InvoiceTree::columnCount(const QModelIndex &) const { return 1; }

QVariant InvoiceTree::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (section == 0 && orientation == Qt::Horizontal && role == Qt::DisplayRole && !m_headerName.isEmpty())
        return m_headerName;
    return QAbstractItemModel::headerData(section, orientation, role);
}

QVariant InvoiceTree::data(const QModelIndex &index, int role) const
{
    const int node = nodeOf(index);
    if (node == 0) return {};
    const Node &n = m_nodes[size_t(node)];
    switch (role) {
    case Qt::DisplayRole:
    case Qt::ToolTipRole:
        return textOf(n.values);
    case Qt::CheckStateRole:
        if (!hasCheckBox(node)) return {};
        return n.checked ? Qt::Checked : Qt::Unchecked;
    case ColourRole:
        return int(n.colour);
    case KeyRole:
        return n.key;
    case NodeRole:
        return node;
    default:
        return {};
    }
}

bool InvoiceTree::setData(const QModelIndex &index, const QVariant &value, int role)
{
    const int node = nodeOf(index);
    if (node == 0 || role != Qt::CheckStateRole || !hasCheckBox(node)) return false;
    setChecked(node, value.toInt() == Qt::Checked);
    nodeCheck(node);
    return true;
}

Qt::ItemFlags InvoiceTree::flags(const QModelIndex &index) const
{
    const int node = nodeOf(index);
    if (node == 0) return Qt::NoItemFlags;
    Qt::ItemFlags f = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    if (hasCheckBox(node)) f |= Qt::ItemIsUserCheckable;
    return f;
}

}  // namespace qor
