// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// The invoice records tree, tvwInvoiceRecords(0) and (1), as data: keyed nodes
// with a text, a colour, a tick and an expansion state, parents and children
// in the order they were added. It is a QAbstractItemModel (QtCore) so that a
// view can show it as it is, but nothing here draws: colours are named, and
// the window maps them to its palette.
//
// Nodes are numbered 1, 2, 3, ... in the order they were added since the last
// clear(): node 1 is the root. A removed node's number is not used again, so
// the numbers of the living nodes stay in insertion order, which is the order
// the print run walks.
#include "database/money.h"

#include <QAbstractItemModel>
#include <QHash>
#include <QString>
#include <optional>
#include <vector>

namespace qor {

// What a node is. The key's last character says the same ("k" customer, "b"
// item under entry, "i" finalised item, "e" record note, "n" invoice note),
// but nobody needs to read it from there.
enum class NodeKind : quint8 { Other,
                               Root,
                               Customer,
                               EnteredItem,
                               FinalItem,
                               RecordNote,
                               InvoiceNote };

// What a node stands for. Its text is made from these alone (textOf), so
// whoever needs a number or a name reads it here, never out of a caption.
struct NodeValues {
    NodeKind kind = NodeKind::Other;
    // Root: its caption; customer: the display name; item: the item's list
    // text ("$5.00 - Midget Widget"); notes: the note as typed.
    QString label;
    QString customer;              // customer number: customer, item and note nodes
    QString item;                  // item number: item nodes
    qint64 quantity = 1;           // item nodes
    Money amount;                  // item nodes: the quantity times the item's price
    std::optional<Money> balance;  // customer nodes of a finalised period: what is still owed
    bool marked = false;           // customer nodes of an entry: the next billing goes to them

    friend bool operator==(const NodeValues &, const NodeValues &) = default;
};
// The text a node shows: "*Ames, Al" (marked, in an entry), "Ames, Al - owes
// $16.50", "Ames, Al - paid", "$5.00 - Midget Widget (x3)", "NOTE: ...",
// "INVOICE NOTE: ...". Amounts in the locale's currency form.
QString textOf(const NodeValues &values);

// ForeColor of a node.
enum class NodeColour : quint8 {
    Default,     // the tree's own text colour
    Owes,        // 192: dark red, RGB 192, 0, 0
    WindowText,  // &H80000008
    GreyText,    // &H80000011
};

class InvoiceTree : public QAbstractItemModel {
    Q_OBJECT
public:
    // Index 0 is the Bill Periods tree; index 1, the Printing tree, has
    // check boxes: on the root, the customers and the invoice notes. Items
    // have none: the tick chooses who is printed, and an invoice prints all
    // that was billed.
    explicit InvoiceTree(int index, QObject *parent = nullptr);
    ~InvoiceTree() override;

    // The role under which data() gives a node's NodeColour (as int), its key,
    // and its node number.
    enum Role { ColourRole = Qt::UserRole + 1,
                KeyRole,
                NodeRole };

    int treeIndex() const { return m_index; }
    bool hasCheckBoxes() const { return m_index == 1; }
    // Whether the node has a box to tick (tree 1, not an item).
    bool hasCheckBox(int node) const;

    // --- The tree as data. Node 0 means "no node".
    int nodeCount() const { return m_live; }
    bool isEmpty() const { return m_live == 0; }
    void clear();
    // Adds a node under parent (0: a top-level node, the root) as its last
    // child. Gives the new node's number, or 0 when the key is in use already
    // (the tree is then unchanged) or the parent doesn't exist.
    int add(int parent, const QString &key, const NodeValues &values);
    // add() for a builder that knows the key is new in the tree (a rebuild
    // from records, whose keys are unique by construction): the key index is
    // brought up to date only when a look-up needs it.
    int addNew(int parent, const QString &key, const NodeValues &values);
    // Room for n nodes in all.
    void reserve(int n);
    // Removes the node and everything under it.
    void remove(int node);
    int find(const QString &key) const;
    bool exists(int node) const { return node > 0 && node < int(m_nodes.size()) && m_nodes[size_t(node)].alive; }
    int root() const;  // the first top-level node, 0 when empty

    QString key(int node) const;
    QString text(int node) const;
    // A node's values (defaults for no node); setting them makes its text anew.
    const NodeValues &values(int node) const;
    NodeKind kind(int node) const { return values(node).kind; }
    void setValues(int node, const NodeValues &values);
    NodeColour colour(int node) const;
    void setColour(int node, NodeColour colour);
    bool checked(int node) const;
    void setChecked(int node, bool checked);
    bool expanded(int node) const;
    void setExpanded(int node, bool expanded);
    // EnsureVisible: every node above this one is expanded.
    void ensureVisible(int node);

    int parentOf(int node) const;
    const std::vector<int> &childrenOf(int node) const;
    // The living nodes in insertion order (node 1, the root, first).
    std::vector<int> nodes() const;
    // Calls f(node) for each living node in insertion order.
    template <class F>
    void forEachNode(F &&f) const
    {
        for (size_t i = 1; i < m_nodes.size(); ++i)
            if (m_nodes[i].alive) f(int(i));
    }

    // NodeCheck: the user changed the box of a node of tree 1. A grey node
    // keeps what the user gave it and moves nothing else; the root gives its
    // state to every node.
    void nodeCheck(int node);
    // The period the tree shows (empty for an entry); set by the rebuild.
    void setChosenPeriod(const QString &name) { m_chosenPeriod = name; }
    QString chosenPeriod() const { return m_chosenPeriod; }

    // Many changes at once: views are told once. When nodes came or went,
    // by a reset; when only texts, colours or ticks changed, by a change of
    // data per run of siblings, which keeps their selection and open nodes. Nested calls count;
    // views hear of it when the outermost one ends.
    void beginBulkChange();
    void endBulkChange();
    // A bulk change for as long as it lives.
    class Bulk {
    public:
        explicit Bulk(InvoiceTree &t) : m_t(t) { m_t.beginBulkChange(); }
        ~Bulk() { m_t.endBulkChange(); }
        Bulk(const Bulk &) = delete;
        Bulk &operator=(const Bulk &) = delete;

    private:
        InvoiceTree &m_t;
    };
    // True when the last bulk change emptied the tree (a rebuild): views
    // don't keep their current node over it.
    bool wasClearedInBulk() const { return m_clearedInBulk; }

    // --- The model, for views.
    QModelIndex indexOf(int node) const;
    int nodeOf(const QModelIndex &index) const;
    QModelIndex index(int row, int column, const QModelIndex &parent = {}) const override;
    QModelIndex parent(const QModelIndex &child) const override;
    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    // A tick set through the model is the user's: NodeCheck follows.
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    // The name of the one column, as a screen reader announces it (the
    // header itself stays hidden).
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    void setHeaderName(const QString &name) { m_headerName = name; }

signals:
    // A node's expansion state changed in the data (ensureVisible,
    // setExpanded); views follow it.
    void expansionChanged(int node, bool expanded);

private:
    QString m_headerName;
    // A node keeps its values; its text is made from them when it is asked
    // for, which a view does only for the rows it shows.
    struct Node {
        QString key;
        NodeValues values;
        int parent = 0;
        int row = 0;  // place among the parent's children
        std::vector<int> children;
        NodeColour colour = NodeColour::Default;
        bool checked = false, expanded = false, alive = false;
    };
    void changed(int node, const QList<int> &roles);
    void removeLinks(int node);
    void structuralChangeInBulk();
    int insert(int parent, const QString &key, const NodeValues &values, bool index);
    void ensureIndex() const;

    int m_index;
    std::vector<Node> m_nodes;  // [0] holds the top-level nodes as its children
    mutable QHash<QString, int> m_byKey;
    mutable bool m_indexStale = false;  // nodes were added by addNew since the index was built
    int m_live = 0;
    int m_bulk = 0;
    bool m_clearedInBulk = false;
    bool m_resetBegun = false;        // in a bulk change, nodes came or went
    std::vector<int> m_touchedNodes;  // in a bulk change, nodes whose data changed
    std::vector<int> m_openedInBulk;
    QString m_chosenPeriod;
};

}  // namespace qor
