// SPDX-License-Identifier: GPL-3.0-or-later
#include "customers/customerpanel.h"

#include "customers/frmprintcustomers.h"

#include "billing/billing.h"
#include "billing/invoicetrees.h"
#include "database/collation.h"
#include "database/database.h"
#include "database/entryrules.h"
#include "database/rowtypes.h"
#include "settings/settingsstore.h"
#include "shell/appcontext.h"
#include "shell/roster.h"
#include "uiservices/dialogservice.h"
#include "uiservices/frmchecking.h"
#include "uiservices/listsearch.h"
#include "uiservices/twips.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCoreApplication>
#include <QEvent>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QScopedValueRollback>
#include <QTextEdit>
#include <QTreeWidget>
#include <algorithm>

namespace qor {

namespace {
using Mode = CustomerEditor::Mode;

QString fieldName(int i) { return QStringLiteral("txtField(%1)").arg(i); }
}  // namespace

CustomerPanel::CustomerPanel(AppContext &ctx, InvoiceTrees &trees, QWidget *parent)
    : Panel(0, ctx, parent), m_trees(trees)
{
    for (int i = 0; i < FieldCount; ++i) {
        QWidget *w = require(fieldName(i));
        m_fields[size_t(i)] = w;
        w->setProperty("Tag", QString());
        if (auto *le = qobject_cast<QLineEdit *>(w)) {
            if (fieldLimit(i) > 0) le->setMaxLength(fieldLimit(i));
            connect(le, &QLineEdit::textChanged, this, [this, i] { txtFieldChange(i); });
            le->installEventFilter(this);
        } else if (auto *pe = qobject_cast<QPlainTextEdit *>(w)) {
            connect(pe, &QPlainTextEdit::textChanged, this, [this, i] { txtFieldChange(i); });
            pe->viewport()->installEventFilter(this);
        } else if (auto *te = qobject_cast<QTextEdit *>(w)) {
            te->setAcceptRichText(false);
            connect(te, &QTextEdit::textChanged, this, [this, i] { txtFieldChange(i); });
            te->viewport()->installEventFilter(this);
        }
    }
    m_cmdAddNew = require<QAbstractButton>("cmdAddNew");
    m_cmdUndo = require<QAbstractButton>("cmdUndo");
    m_cmdPrint = require<QAbstractButton>("cmdPrint");
    m_cmdSearch = require<QAbstractButton>("cmdSearch");
    m_txtSearch = require<QLineEdit>("txtSearch");
    m_lblCustomers = require<QLabel>("lblCustomers");
    m_list = require<QTreeWidget>("lvwCustomersVis");

    connect(m_cmdAddNew, &QAbstractButton::clicked, this, &CustomerPanel::cmdAddNewClick);
    connect(m_cmdUndo, &QAbstractButton::clicked, this, &CustomerPanel::cmdUndoClick);
    connect(m_cmdSearch, &QAbstractButton::clicked, this, &CustomerPanel::cmdSearchClick);
    // The list print's options window, modal over the main window.
    connect(m_cmdPrint, &QAbstractButton::clicked, this, [this] {
        FrmPrintCustomers options(this->ctx.db().customers(), this->ctx.mainWindow());
        options.exec();
    });
    connect(m_txtSearch, &QLineEdit::textChanged, this, &CustomerPanel::txtSearchChange);
    if (m_cmdSearch && m_txtSearch) QWidget::setTabOrder(m_cmdSearch, m_txtSearch);
    if (m_list) {
        // The list keeps the table's order itself; a sorting view would fight it.
        m_list->setSortingEnabled(false);
        m_list->setUniformRowHeights(true);
        m_list->setSelectionMode(QAbstractItemView::SingleSelection);
        connect(m_list, &QTreeWidget::itemClicked, this, [this] { showCustomerDetails(); });
        // However the highlight moves (Home, End, Page keys, a typed letter,
        // the wheel, a click), the fields show the row it lands on.
        connect(m_list, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem *current) {
            if (current && !m_holdFields) followSelection();
        });
        m_list->installEventFilter(this);
    }

    // A read of the file: empty, then (when the file was read as it is) the
    // start state, then the list of what was read.
    const Database &db = ctx.db();
    connect(&db, &Database::aboutToReload, this, [this] {
        m_list->clear();
        m_rows.clear();
        clearEntryFields();
    });
    connect(&db, &Database::fileRead, this, [this] {
        resetCustomerPanel();
        focusList();
    });
    connect(&db, &Database::reloaded, this, &CustomerPanel::refreshCustomerList);
}

void CustomerPanel::showAddNew()
{
    m_editor.showAddNew();
    showEditor();
}

// The buttons, the print button and the fields' colours as the editor holds
// them. Only what differs is set: a colour set again costs a new palette.
void CustomerPanel::showEditor()
{
    const CustomerEditor::Button add = m_editor.addNew(), undo = m_editor.undo();
    setButton(m_cmdAddNew, CustomerEditor::addNewCaption(add.mode), add.shown);
    setButton(m_cmdUndo, CustomerEditor::undoCaption(undo.mode), undo.shown);
    setPrintShown(m_editor.printShown());
    for (int i = 0; i < FieldCount; ++i) {
        const bool asks = m_editor.asksForInput(i);
        if (m_coloured && m_asksShown[size_t(i)] == asks) continue;
        m_asksShown[size_t(i)] = asks;
        setFieldInfoColour(i, asks);
    }
    m_coloured = true;
}

void CustomerPanel::arrange(double W, double H, int M) { Panel::arrange(W, H, M); }

// ---------------------------------------------------------------- helpers

QTreeWidget *CustomerPanel::list() const { return m_list; }
int CustomerPanel::rowCount() const { return m_list ? m_list->topLevelItemCount() : 0; }

int CustomerPanel::selectedPosition() const
{
    QTreeWidgetItem *it = selectedRow();
    return it ? m_list->indexOfTopLevelItem(it) + 1 : 0;
}

// The selected row is the list's current row: a new entry takes the
// highlight away but keeps the row, so that a cancel can select it again.
QTreeWidgetItem *CustomerPanel::selectedRow() const
{
    return m_list ? m_list->currentItem() : nullptr;
}

void CustomerPanel::selectRow(QTreeWidgetItem *item)
{
    if (!item) return;
    m_list->setCurrentItem(item);
    item->setSelected(true);
    m_list->scrollToItem(item);
}

void CustomerPanel::selectPosition(int position)
{
    if (position < 1 || position > rowCount()) return;
    selectRow(m_list->topLevelItem(position - 1));
}

void CustomerPanel::focusList()
{
    if (m_list && rowCount() > 0 && m_list->isVisible()) m_list->setFocus(Qt::OtherFocusReason);
}

void CustomerPanel::setButton(QAbstractButton *b, const QString &text, bool visible)
{
    if (!b) return;
    b->setText(text);
    if (b->isHidden() == visible) b->setVisible(visible);
}

void CustomerPanel::setPrintShown(bool shown)
{
    if (m_cmdPrint->isHidden() == shown) m_cmdPrint->setVisible(shown);
}

QString CustomerPanel::fieldText(int index) const
{
    QWidget *w = field(index);
    if (auto *le = qobject_cast<QLineEdit *>(w)) return le->text();
    if (auto *pe = qobject_cast<QPlainTextEdit *>(w)) return pe->toPlainText();
    if (auto *te = qobject_cast<QTextEdit *>(w)) return te->toPlainText();
    return {};
}

void CustomerPanel::setFieldText(int index, const QString &text)
{
    QWidget *w = field(index);
    if (auto *le = qobject_cast<QLineEdit *>(w)) {
        // A stored field may be longer than typing allows (a file edited
        // elsewhere); show it whole rather than cut it and call that an edit.
        const int limit = fieldLimit(index);
        if (limit > 0) le->setMaxLength(std::max<int>(limit, int(text.size())));
        le->setText(text);
        le->setCursorPosition(0);  // a value longer than the field shows its start
    } else if (auto *pe = qobject_cast<QPlainTextEdit *>(w)) {
        if (pe->toPlainText() != text) pe->setPlainText(text);
    } else if (auto *te = qobject_cast<QTextEdit *>(w)) {
        if (te->toPlainText() != text) te->setPlainText(text);
    }
}

void CustomerPanel::setTag(int index, const QString &tag)
{
    if (QWidget *w = field(index)) w->setProperty("Tag", tag);
}

void CustomerPanel::setFieldInfoColour(int index, bool info)
{
    roster::setBackColour(field(index), info ? syscolor::InfoBackground : syscolor::Window);
}

QString CustomerPanel::displayName() const { return m_editor.displayName(); }

CustomerRow CustomerPanel::entryRow() const { return m_editor.entryRow(); }

bool CustomerPanel::confirm(const QString &title, const QString &text)
{
    return DialogService::current().warning(ctx.mainWindow(), title, text, QMessageBox::Ok | QMessageBox::Cancel,
                                            QMessageBox::Ok) == QMessageBox::Ok;
}

// ---------------------------------------------------------------- main-window routines

void CustomerPanel::clearEntryFields()
{
    {
        const QScopedValueRollback filling(m_filling, true);
        for (int i = 0; i < FieldCount; ++i) {
            setTag(i, QString());
            setFieldText(i, QString());
            if (auto *le = qobject_cast<QLineEdit *>(field(i)); le && fieldLimit(i) > 0)
                le->setMaxLength(fieldLimit(i));
        }
    }
    m_editor.clear();
    showEditor();
}

// ---------------------------------------------------------------- list

void CustomerPanel::refreshCustomerList()
{
    m_list->setUpdatesEnabled(false);
    const int columnPx = twipsToPx(pxToTwips(m_list->width()) - 330);
    if (columnPx > 0) m_list->setColumnWidth(0, columnPx);

    const bool held = m_holdFields;
    m_holdFields = true;
    showUpdate(m_rows.update(CustomerList::rowsOf(ctx.db().customers())));
    selectPosition(CustomerList::recalledPosition(settings::LastViewedCustomer.text(), rowCount()));
    m_list->setUpdatesEnabled(true);
    m_holdFields = held;
    // A rebuilt list (a reread file, abandoned changes) has a row highlighted:
    // the fields show that row, never blanks or the details of another.
    QTreeWidgetItem *row = selectedRow();
    if (!held && row && row->data(0, Qt::UserRole).toString() != m_editor.loadedKey() && !isNewEntry()) followSelection();
}

bool CustomerPanel::isNewEntry() const { return m_editor.isNewEntry(); }

// The highlight moved to another row: its details fill the fields and the
// panel is back to viewing; an edit not applied is given up, as with Up and Down.
void CustomerPanel::followSelection()
{
    QTreeWidgetItem *row = selectedRow();
    if (!row) return;
    if (!row->isSelected()) row->setSelected(true);
    showCustomerDetails();
    m_editor.followed();
    showEditor();
}

QTreeWidgetItem *CustomerPanel::makeRow(const QString &key, const QString &name)
{
    auto *item = new QTreeWidgetItem;
    item->setText(0, name);
    item->setData(0, Qt::UserRole, key);
    return item;
}

// The list takes the rows' update: the few steps, or all rows anew.
void CustomerPanel::showUpdate(const CustomerList::Update &update)
{
    if (update.rebuild) {
        m_list->clear();
        QList<QTreeWidgetItem *> items;
        items.reserve(qsizetype(m_rows.count()));
        for (const CustomerList::Row &r : m_rows.rows()) items.append(makeRow(r.key, r.name));
        m_list->addTopLevelItems(items);
        return;
    }
    for (const CustomerList::Step &step : update.steps) {
        switch (step.kind) {
        case CustomerList::Step::Remove: delete m_list->takeTopLevelItem(step.position); break;
        case CustomerList::Step::Insert:
            m_list->insertTopLevelItem(step.position, makeRow(step.row.key, step.row.name));
            break;
        case CustomerList::Step::Rename: m_list->topLevelItem(step.position)->setText(0, step.row.name); break;
        }
    }
}

int CustomerPanel::findCustomerRow(const QString &name, const QString &excludeKey) const
{
    return m_rows.find(name, excludeKey);
}

// Puts a row at its sorted place without rebuilding the list.
QTreeWidgetItem *CustomerPanel::insertVisibleRow(const QString &key, const QString &name)
{
    QTreeWidgetItem *item = makeRow(key, name);
    m_list->insertTopLevelItem(m_rows.insert(key, name, ctx.db().customers()), item);
    return item;
}

// ---------------------------------------------------------------- buttons

void CustomerPanel::cmdAddNewClick()
{
    switch (m_editor.addNew().mode) {
    case Mode::Viewing: startNewCustomer(); break;
    case Mode::Entering: {
        QString key;
        addCustomer(key);
        break;
    }
    case Mode::Editing: applyCustomerEdit(); break;
    }
}

void CustomerPanel::cmdUndoClick()
{
    switch (m_editor.undo().mode) {
    case Mode::Entering: resetCustomerPanel(); break;
    case Mode::Editing: undoCustomerEdit(); break;
    case Mode::Viewing: deleteCustomer(); break;
    }
}

void CustomerPanel::startNewCustomer()
{
    clearEntryFields();
    if (m_list && rowCount() > 0) m_list->clearSelection();
    m_editor.startNew();
    showEditor();
    if (field(0)) field(0)->setFocus(Qt::OtherFocusReason);
}

bool CustomerPanel::duplicateCheck(const QString &name, const QString &excludeKey)
{
    if (findCustomerRow(name, excludeKey) == 0) return true;
    return confirm(QStringLiteral("Duplicate Name Found"),
                   QStringLiteral("A customer with the exact same first name and last name was found.\r\n\r\n"
                                  "Press OK if this is a different customer who happens to share the exact same name,\r\n"
                                  "otherwise press Cancel and edit the original entry for this customer."));
}

bool CustomerPanel::addCustomer(QString &key)
{
    const QString name = displayName();
    if (!entryStorable()) return false;
    if (!duplicateCheck(name, QString())) return false;
    key = ctx.db().addCustomer(entryRow(), key).key;
    if (m_list) {
        QTreeWidgetItem *item = insertVisibleRow(key, name);
        selectRow(item);
        m_list->setFocus(Qt::OtherFocusReason);
    }
    m_editor.stored();
    showEditor();
    return true;
}

// Typed text that the database would take for its own marks is refused here.
bool CustomerPanel::entryStorable()
{
    const QString why = entry::customerProblem(m_editor.typedFields());
    if (!why.isEmpty()) DialogService::current().warning(ctx.mainWindow(), AppTitle, why);
    return why.isEmpty();
}

void CustomerPanel::applyCustomerEdit()
{
    if (!entryStorable()) return;
    if (settings::confirmEditsText() != QLatin1String("False") && !confirm(QStringLiteral("Save Changes to Existing Customer???"),
                                                                           QStringLiteral("Are you sure you want to change the details on this existing customer?"))) {
        undoCustomerEdit();
        return;
    }
    // The edit belongs to the customer the fields were filled from, not to
    // whatever row the highlight has reached since.
    const QString key = m_editor.loadedKey();
    Database &db = ctx.db();
    if (m_editor.typed(0).isEmpty()) {
        // The first name is the one required field, for an edit as for a new entry.
        DialogService::current().warning(ctx.mainWindow(), AppTitle,
                                         QStringLiteral("A customer needs at least a first name."));
        return;
    }
    if (key.isEmpty() || !db.customers().contains(key)) {
        // Nothing stands under edit (typing into an empty panel): keep what was
        // typed as a new customer instead of throwing it away.
        QString newKey;
        addCustomer(newKey);
        return;
    }
    if (!duplicateCheck(displayName(), key)) return;

    const CustomerRow entered = entryRow();
    m_holdFields = true;
    if (const int at = m_rows.remove(key); at >= 0) delete m_list->takeTopLevelItem(at);
    db.replaceCustomer(key, entered);
    selectRow(insertVisibleRow(key, entered.displayName));
    m_holdFields = false;
    m_list->setFocus(Qt::OtherFocusReason);
    showCustomerDetails();
    m_editor.stored();
    showEditor();
}

void CustomerPanel::resetCustomerPanel()
{
    const bool hasRows = rowCount() > 0;
    if (hasRows) {
        QTreeWidgetItem *row = selectedRow();
        if (!row) row = m_list->topLevelItem(0);
        selectRow(row);
        m_list->setFocus(Qt::OtherFocusReason);
        showCustomerDetails();
    } else {
        clearEntryFields();
    }
    m_editor.backToViewing(hasRows);
    showEditor();
}

void CustomerPanel::undoCustomerEdit()
{
    showCustomerDetails();
    m_editor.undoEdit();
    showEditor();
    m_list->setFocus(Qt::OtherFocusReason);
}

void CustomerPanel::showCustomerDetails()
{
    if (rowCount() == 0) return;
    QTreeWidgetItem *row = selectedRow();
    if (!row) return;
    const QString key = row->data(0, Qt::UserRole).toString();
    const KeyedList &table = ctx.db().customers();
    if (!table.contains(key)) return;
    const auto customer = CustomerRow::parse(table.textOf(key));
    if (!customer) return;
    QStringList shownAs;
    {
        const QScopedValueRollback filling(m_filling, true);
        for (int i = 0; i < FieldCount; ++i) {
            setTag(i, customer->entry(i));
            setFieldText(i, customer->entry(i));
            shownAs.append(fieldText(i));
        }
    }
    m_editor.show(key, *customer, shownAs);
    showEditor();
}

void CustomerPanel::deleteCustomer()
{
    const QString confirmSetting =
        settings::confirmEditsText().toLower();
    if (confirmSetting != QLatin1String("false") && !confirm(QStringLiteral("Delete Existing Customer???"),
                                                             QStringLiteral("Are you sure you want to delete this customer from the database?"))) {
        undoCustomerEdit();
        return;
    }
    if (m_list->isHidden()) return;
    m_list->setFocus(Qt::OtherFocusReason);
    QTreeWidgetItem *row = selectedRow();
    if (!row) return;
    int position = m_list->indexOfTopLevelItem(row) + 1;
    QString key = row->data(0, Qt::UserRole).toString();
    Database &db = ctx.db();
    if (!db.customers().contains(key)) return;

    const QScopedValueRollback hold(m_holdFields, true);
    FrmChecking &checking = ctx.showCheckingWindow();
    const EditOutcome removed =
        billing::removeCustomer(m_trees, key, [&checking](float percent) { checking.setProgress(percent); });
    checking.showOutcome(wordOf(removed.removal));
    refreshCustomerList();
    checking.enableOK();

    const bool hasRows = rowCount() > 0;
    if (hasRows) {
        position = std::min(position, rowCount());
        selectPosition(position);
        showCustomerDetails();
    } else {
        clearEntryFields();
    }
    m_editor.deleted(hasRows);
    showEditor();
}

// ---------------------------------------------------------------- typing

// The panel's own fills are told to the editor whole, once they are done.
void CustomerPanel::txtFieldChange(int index)
{
    if (m_filling) return;
    m_editor.typedText(index, fieldText(index));
    showEditor();
}

void CustomerPanel::txtFieldClick(int)
{
    if (rowCount() == 0 && m_editor.addNew() == CustomerEditor::Button{Mode::Viewing, true}) cmdAddNewClick();
}

// ---------------------------------------------------------------- search

void CustomerPanel::cmdSearchClick()
{
    if (m_editor.searching()) {
        m_editor.setSearching(false);
        m_lblCustomers->setText(CustomerEditor::listCaption(false));
        m_txtSearch->hide();
        if (m_list && m_list->isVisible()) m_list->setFocus(Qt::OtherFocusReason);
        return;
    }
    // The Tab is handled after this click has ended, when txtSearch is shown:
    // it moves the focus from the button to the box right behind it.
    if (m_cmdSearch) {
        m_cmdSearch->setFocus(Qt::OtherFocusReason);
        QCoreApplication::postEvent(m_cmdSearch, new QKeyEvent(QEvent::KeyPress, Qt::Key_Tab, Qt::NoModifier));
        QCoreApplication::postEvent(m_cmdSearch, new QKeyEvent(QEvent::KeyRelease, Qt::Key_Tab, Qt::NoModifier));
    }
    m_editor.setSearching(true);
    m_lblCustomers->setText(CustomerEditor::listCaption(true));
    if (m_txtSearch) {
        m_txtSearch->clear();
        m_txtSearch->show();
    }
}

void CustomerPanel::txtSearchChange()
{
    const QString text = m_txtSearch ? m_txtSearch->text() : QString();
    // An empty box finds nothing: the selection stays where it is.
    if (!text.isEmpty() && m_list) {
        const int position = findListItem(m_list, text);
        if (position > 0) selectPosition(position);
    }
    // The fields show the row found, and the buttons the customer viewed
    // (also over a new entry the search interrupted).
    followSelection();
}

// ---------------------------------------------------------------- events

bool CustomerPanel::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_list && event->type() == QEvent::KeyRelease) {
        auto *k = static_cast<QKeyEvent *>(event);
        if (!k->isAutoRepeat() && (k->key() == Qt::Key_Up || k->key() == Qt::Key_Down)) showCustomerDetails();
    } else if (event->type() == QEvent::MouseButtonPress) {
        for (int i = 0; i < FieldCount; ++i) {
            QWidget *w = field(i);
            if (!w) continue;
            QObject *target = w;
            if (auto *pe = qobject_cast<QPlainTextEdit *>(w)) target = pe->viewport();
            else if (auto *te = qobject_cast<QTextEdit *>(w)) target = te->viewport();
            if (target == watched) {
                txtFieldClick(i);
                break;
            }
        }
    }
    return Panel::eventFilter(watched, event);
}

}  // namespace qor
