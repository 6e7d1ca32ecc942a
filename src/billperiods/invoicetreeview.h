// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// Shows an InvoiceTree in a QTreeView: the node colours in the window's
// palette, the expansion state of the data, the current node kept across a
// bulk change, and the mouse actions the billing reacts to (mouse-up with its
// button and Ctrl, double-click).
#include <QColor>
#include <QObject>
#include <QPalette>
#include <QPointer>
#include <QString>

#include "billing/invoicetree.h"

class QTreeView;

namespace qor {

// The colour a node of the given colour is drawn in on palette's list
// (selected: on its selection): the node's own as far as it reads there.
// Nothing for the tree's own colour.
QColor nodeTextColour(NodeColour colour, const QPalette &palette, bool selected);

class InvoiceTreeView : public QObject {
    Q_OBJECT
public:
    // Puts tree into view; the binding lives as long as the view.
    InvoiceTreeView(QTreeView *view, InvoiceTree *tree);

    QTreeView *view() const { return m_view; }
    InvoiceTree *tree() const { return m_tree; }

    // The selected node, 0 when none.
    int selectedNode() const;
    void selectNode(int node);
    // The next release of a button is not told as a mouse-up (the next press
    // forgets this): a double-click that removed the node under the mouse
    // ends with a release over some other node.
    void ignoreNextMouseUp() { m_ignoreUp = true; }

signals:
    // A mouse button was let go over the tree, after the selection followed it.
    void mouseUp(Qt::MouseButton button, bool ctrl);
    void doubleClicked();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void applyExpansion();
    QTreeView *m_view;
    QPointer<InvoiceTree> m_tree;  // the books may close before the window goes
    QString m_currentKey;          // the current node over a bulk change
    bool m_syncing = false;
    bool m_filtering = false;
    bool m_expansionPending = false;
    bool m_ignoreUp = false;
};

}  // namespace qor
