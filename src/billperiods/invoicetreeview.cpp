// SPDX-License-Identifier: GPL-3.0-or-later
#include "billperiods/invoicetreeview.h"

#include "uiservices/olecolor.h"

#include "billing/invoicetree.h"

#include <QApplication>
#include <QMouseEvent>
#include <QPainter>
#include <QScopedValueRollback>
#include <QStyledItemDelegate>
#include <QTreeView>

#include <utility>

namespace qor {

QColor nodeTextColour(NodeColour colour, const QPalette &palette, bool selected)
{
    QColor c;
    double least = TextContrast;
    switch (colour) {
    case NodeColour::Owes: c = QColor(192, 0, 0); break;
    case NodeColour::WindowText: c = palette.color(QPalette::Active, QPalette::WindowText); break;
    case NodeColour::GreyText:
        c = palette.color(QPalette::Disabled, QPalette::Text);
        least = HintContrast;
        break;
    default: return {};
    }
    // Dark red on white stays; on a dark ground or the selection it turns
    // lighter or darker until it reads.
    return readableOn(c, palette.color(selected ? QPalette::Highlight : QPalette::Base), least);
}

namespace {
// ForeColor of a node in the window's palette.
class ColourDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

protected:
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override
    {
        QStyledItemDelegate::initStyleOption(option, index);
        const auto colour = NodeColour(index.data(InvoiceTree::ColourRole).toInt());
        if (colour == NodeColour::Default) return;
        option->palette.setColor(QPalette::Text, nodeTextColour(colour, option->palette, false));
        option->palette.setColor(QPalette::HighlightedText, nodeTextColour(colour, option->palette, true));
    }
};
}  // namespace

InvoiceTreeView::InvoiceTreeView(QTreeView *view, InvoiceTree *tree) : QObject(view), m_view(view), m_tree(tree)
{
    tree->setHeaderName(view->accessibleName());
    view->setModel(tree);
    view->setHeaderHidden(true);
    view->setUniformRowHeights(true);
    view->setSelectionMode(QAbstractItemView::SingleSelection);
    view->setExpandsOnDoubleClick(false);  // the billing decides what a double-click opens
    view->setItemDelegate(new ColourDelegate(view));
    view->viewport()->installEventFilter(this);
    view->installEventFilter(this);

    connect(tree, &QAbstractItemModel::modelAboutToBeReset, this, [this] {
        const int n = selectedNode();
        m_currentKey = n ? m_tree->key(n) : QString();
    });
    connect(tree, &QAbstractItemModel::modelReset, this, [this] {
        // A view out of sight opens its nodes when it is shown: laying out
        // tens of thousands of rows nobody sees would only cost time.
        if (m_view->isVisible()) applyExpansion();
        else m_expansionPending = true;
        // A tree built anew selects nothing; one changed in bulk keeps its place.
        const int n = m_currentKey.isEmpty() || m_tree->wasClearedInBulk() ? 0 : m_tree->find(m_currentKey);
        if (n) selectNode(n);
        m_currentKey.clear();
    });
    connect(tree, &InvoiceTree::expansionChanged, this, [this](int node, bool open) {
        if (m_expansionPending) return;  // all of it is applied when the view shows
        const QScopedValueRollback<bool> guard(m_syncing, true);
        m_view->setExpanded(m_tree->indexOf(node), open);
    });
    connect(view, &QTreeView::expanded, this, [this](const QModelIndex &i) {
        if (!m_syncing && m_tree) m_tree->setExpanded(m_tree->nodeOf(i), true);
    });
    connect(view, &QTreeView::collapsed, this, [this](const QModelIndex &i) {
        if (!m_syncing && m_tree) m_tree->setExpanded(m_tree->nodeOf(i), false);
    });
    applyExpansion();
}

void InvoiceTreeView::applyExpansion()
{
    if (!m_tree) return;
    const QScopedValueRollback<bool> guard(m_syncing, true);
    // A rebuilt tree is open everywhere: one call opens it.
    bool all = true;
    m_tree->forEachNode([&](int n) {
        if (all && !m_tree->expanded(n) && !m_tree->childrenOf(n).empty()) all = false;
    });
    if (all) {
        m_view->expandAll();
        return;
    }
    m_tree->forEachNode([&](int n) {
        if (m_tree->expanded(n)) m_view->setExpanded(m_tree->indexOf(n), true);
    });
}

int InvoiceTreeView::selectedNode() const { return m_tree ? m_tree->nodeOf(m_view->currentIndex()) : 0; }

void InvoiceTreeView::selectNode(int node)
{
    if (!m_tree) return;
    const QModelIndex i = m_tree->indexOf(node);
    m_view->setCurrentIndex(i);
    if (i.isValid()) m_view->scrollTo(i);
}

bool InvoiceTreeView::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_view && event->type() == QEvent::Show && m_expansionPending) {
        m_expansionPending = false;
        applyExpansion();
    }
    if (!m_tree || watched != m_view->viewport() || m_filtering) return QObject::eventFilter(watched, event);
    const QEvent::Type type = event->type();
    if (type == QEvent::MouseButtonPress) m_ignoreUp = false;
    if (type != QEvent::MouseButtonRelease && type != QEvent::MouseButtonDblClick)
        return QObject::eventFilter(watched, event);
    auto *e = static_cast<QMouseEvent *>(event);
    const Qt::MouseButton button = e->button();
    const bool ctrl = e->modifiers() & Qt::ControlModifier;
    const QModelIndex at = m_view->indexAt(e->position().toPoint());
    // The view handles the event first (selection, check boxes), then the
    // billing hears of it, as the old tree told its mouse-up after the click.
    {
        const QScopedValueRollback<bool> guard(m_filtering, true);
        QCoreApplication::sendEvent(watched, event);
    }
    if (type == QEvent::MouseButtonDblClick) {
        emit doubleClicked();
    } else {
        // Any button selects the node under the mouse: the menus act on it.
        if (button != Qt::LeftButton && at.isValid()) m_view->setCurrentIndex(at);
        if (!std::exchange(m_ignoreUp, false)) emit mouseUp(button, ctrl);
    }
    return true;
}

}  // namespace qor
