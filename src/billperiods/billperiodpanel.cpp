// SPDX-License-Identifier: GPL-3.0-or-later
#include "billperiods/billperiodpanel.h"

#include "billing/billing.h"
#include "billing/invoicetrees.h"
#include "billperiods/invoicetreeview.h"
#include "database/database.h"
#include "database/entryrules.h"
#include "database/money.h"
#include "database/regional.h"
#include "database/rowtypes.h"
#include "shell/appcontext.h"
#include "shell/roster.h"
#include "uiservices/captions.h"
#include "uiservices/dialogservice.h"
#include "uiservices/twips.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QCursor>
#include <QDate>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QSignalBlocker>
#include <QTreeView>
#include <QTreeWidget>

namespace qor {

namespace {
QString titleOf(const billing::Prompt &p) { return p.title.isEmpty() ? AppTitle : p.title; }

// A customer the list of the Customers panel shows: nine fields, not archived.
bool hasCurrentCustomer(const Database &db)
{
    bool found = false;
    db.customers().forEach([&](QStringView, QStringView text) {
        found = CustomerView::parse(text) && !customer::isArchived(text);
        return !found;
    });
    return found;
}
}  // namespace

BillPeriodPanel::BillPeriodPanel(AppContext &ctx, InvoiceTrees &trees, QWidget *parent)
    : Panel(2, ctx, parent), m_trees(trees)
{
    m_chooser = require<QComboBox>("cmbBillPeriod(1)");
    m_treeView = require<QTreeView>("tvwInvoiceRecords(0)");
    m_products = require<QTreeWidget>("lvwProducts(1)");
    m_txtBillPeriod = require<QLineEdit>("txtBillPeriod");
    for (int i = 1; i <= 3; ++i)
        m_periodFields[size_t(i - 1)] = require<QLineEdit>(QStringLiteral("txtPField(%1)").arg(i));
    m_cmdAddNewBP = require<QAbstractButton>("cmdAddNewBP");
    m_cmdCancelNewBP = require<QAbstractButton>("cmdCancelNewBP");
    m_cmdResetCustomerAccounts = require<QAbstractButton>("cmdResetCustomerAccounts");
    m_cmdAdjustBalance = require<QAbstractButton>("cmdAdjustBalance");
    m_lblBillPeriodName = require<QLabel>("lblBillPeriodName");
    m_lblExample = require<QLabel>("lblExample");
    m_lblDoubleClickToAdd = require<QLabel>("lblDoubleClickToAdd");
    m_lblCustomerAccounts = require<QLabel>("lblCustomerAccountsForThisPeriod");
    m_binding = new InvoiceTreeView(m_treeView, &m_trees.tree(0));

    // The popup menus of the tree during an entry.
    m_mnuPopupC = new QMenu(QStringLiteral("Menu Popup C"), this);
    m_mnuPopupC->setObjectName(QStringLiteral("mnuPopupC"));
    m_mnuSelectThisOnly = m_mnuPopupC->addAction(QStringLiteral("Select This Customer Only"));
    m_mnuSelectThisOnly->setObjectName(QStringLiteral("mnuSelectThisOnly"));  // the left click does this already
    m_mnuSelectAll = m_mnuPopupC->addAction(QStringLiteral("Select All Customers"));
    m_mnuSelectAll->setObjectName(QStringLiteral("mnuSelectAll"));
    m_mnuPopupB = new QMenu(QStringLiteral("Menu Popup B"), this);
    m_mnuPopupB->setObjectName(QStringLiteral("mnuPopupB"));
    m_mnuDeleteItem = m_mnuPopupB->addAction(QStringLiteral("Delete This Item from Customer Bill"));
    m_mnuDeleteItem->setObjectName(QStringLiteral("mnuDeleteItem"));
    connect(m_mnuSelectAll, &QAction::triggered, this, [this] { billing::markAllCustomers(treeModel()); });
    connect(m_mnuDeleteItem, &QAction::triggered, this, [this] {
        billing::deleteBilledItem(treeModel(), m_binding->selectedNode());
        entryTouched();
    });

    connect(m_cmdAddNewBP, &QAbstractButton::clicked, this, &BillPeriodPanel::cmdAddNewBPClick);
    connect(m_cmdCancelNewBP, &QAbstractButton::clicked, this, &BillPeriodPanel::cmdCancelNewBPClick);
    connect(m_cmdResetCustomerAccounts, &QAbstractButton::clicked, this,
            &BillPeriodPanel::cmdResetCustomerAccountsClick);
    connect(m_cmdAdjustBalance, &QAbstractButton::clicked, this, &BillPeriodPanel::cmdAdjustBalanceClick);
    // The editor follows every change of the fields; only an entry reads the
    // name and the due date, so only an entry shows what they decide.
    connect(m_txtBillPeriod, &QLineEdit::textChanged, this, [this](const QString &text) {
        m_editor.setName(text);
        if (m_editor.entering()) showLook();
    });
    connect(m_periodFields[0], &QLineEdit::textChanged, this, [this](const QString &text) { m_editor.setStart(text); });
    connect(m_periodFields[1], &QLineEdit::textChanged, this, [this](const QString &text) { m_editor.setEnd(text); });
    connect(m_periodFields[2], &QLineEdit::textChanged, this, [this](const QString &text) {
        m_editor.setDue(text);
        if (m_editor.entering()) showLook();
    });
    connect(m_products, &QTreeWidget::itemDoubleClicked, this, &BillPeriodPanel::lvwProductsDblClick);
    connect(m_chooser, &QComboBox::currentIndexChanged, this,
            [this](int index) { m_trees.showPeriod(index, m_chooser->itemText(index)); });
    connect(&m_trees, &InvoiceTrees::periodShown, this, &BillPeriodPanel::periodShown);
    connect(&m_trees, &InvoiceTrees::entryDropped, this, [this] {
        if (m_editor.entering()) showViewControls();
    });
    // An entry lives in tree 0 and the fields only; each change of it is
    // told, so the recovery copy can follow.
    const auto entryChanged = [this] {
        if (m_trees.entryOpen()) emit entryEdited();
    };
    InvoiceTree &entryTree = treeModel();
    connect(&entryTree, &QAbstractItemModel::dataChanged, this, entryChanged);
    connect(&entryTree, &QAbstractItemModel::rowsInserted, this, entryChanged);
    connect(&entryTree, &QAbstractItemModel::rowsRemoved, this, entryChanged);
    connect(&entryTree, &QAbstractItemModel::modelReset, this, entryChanged);
    connect(m_txtBillPeriod, &QLineEdit::textEdited, this, entryChanged);
    for (QLineEdit *field : m_periodFields)
        connect(field, &QLineEdit::textEdited, this, entryChanged);
    connect(m_binding, &InvoiceTreeView::mouseUp, this, &BillPeriodPanel::tvwInvoiceRecordsMouseUp);
    connect(m_binding, &InvoiceTreeView::doubleClicked, this, &BillPeriodPanel::tvwInvoiceRecordsDblClick);

    Database &db = ctx.db();
    connect(&db, &Database::aboutToReload, this, [this] {
        m_trees.forgetPeriod();
        m_trees.tree(0).clear();
        m_trees.tree(1).clear();
        m_products->clear();
    });
    connect(&db, &Database::reloaded, this, [this] {
        refreshBillPeriodList();
        refreshProductList();
    });
    connect(&db, &Database::tableChanged, this, [this](Database::Table table) {
        if (table == Database::Table::Periods) refreshBillPeriodList();
        else if (table == Database::Table::Items) refreshProductList();
    });
}

InvoiceTree &BillPeriodPanel::treeModel() const { return m_trees.tree(0); }

QStringList BillPeriodPanel::periodNames(const KeyedList &periods)
{
    QStringList names;
    periods.forEach([&names](QStringView, QStringView text) {
        if (const auto period = PeriodView::parse(text)) names.append(period->name.toString());
        return true;
    });
    return names;
}

void BillPeriodPanel::fillChooser(QComboBox *box, const KeyedList &periods)
{
    // Filling an empty box would select its first entry on the way.
    const QSignalBlocker quiet(box);
    box->clear();
    box->addItems(periodNames(periods));
    box->setCurrentIndex(-1);
}

void BillPeriodPanel::refreshBillPeriodList()
{
    {
        const QSignalBlocker quiet(m_chooser);
        m_chooser->clear();
    }
    m_trees.forgetPeriod();
    m_txtBillPeriod->clear();
    treeModel().clear();
    clearEntryFields(2);

    const KeyedList &periods = ctx.db().periods();
    if (periods.count() == 0) return;
    fillChooser(m_chooser, periods);
    // The latest period is what the user sees: the chooser's change shows it.
    if (m_chooser->count() > 0) m_chooser->setCurrentIndex(m_chooser->count() - 1);
}

void BillPeriodPanel::clearEntryFields(int kind)
{
    if (kind == 1) {
        m_txtBillPeriod->clear();
        treeModel().clear();
        for (int i = 1; i <= 3; ++i) {
            QLineEdit *f = m_periodFields[size_t(i - 1)];
            f->clear();
            f->setReadOnly(false);
            // The bill due date still has to be typed: info colour.
            roster::setBackColour(f, i == 3 ? syscolor::InfoBackground : syscolor::Window);
        }
    } else if (kind == 2) {
        for (QLineEdit *f : m_periodFields) {
            f->setReadOnly(true);
            roster::setBackColour(f, syscolor::Window);
        }
    }
}

void BillPeriodPanel::refreshProductList()
{
    QTreeWidget *list = m_products;
    list->clear();
    QList<QTreeWidgetItem *> rows;
    ctx.db().items().forEach([&rows](QStringView key, QStringView text) {
        const ItemView row = ItemView::parse(text);
        if (!row.archived) {
            auto *item = new QTreeWidgetItem(QStringList{row.listText.toString()});
            item->setData(0, Qt::UserRole, key.toString());
            rows.append(item);
        }
        return true;
    });
    list->addTopLevelItems(rows);
    if (!rows.isEmpty()) list->setCurrentItem(rows.first());
}

// ---------------------------------------------------------------- modes

void BillPeriodPanel::rearrange()
{
    const double W = pxToTwips(width()), H = pxToTwips(height());
    arrange(W, H, middleOf(W));
}

void BillPeriodPanel::cmdAddNewBPClick()
{
    if (m_editor.entering()) addBillPeriod();
    else showBillPeriodEntry(true);
}

void BillPeriodPanel::cmdCancelNewBPClick() { showBillPeriodEntry(false); }

void BillPeriodPanel::showBillPeriodEntry(bool isNew)
{
    if (isNew) {
        if (!hasCurrentCustomer(ctx.db()) || m_products->topLevelItemCount() == 0) {
            DialogService::current().message(ctx.mainWindow(), {QMessageBox::NoIcon, titleOf(billing::text::AddCustomersFirst),
                                                                billing::text::AddCustomersFirst.text});
            return;
        }
        m_editor.beginEntry();
        m_lblExample->setText(billing::exampleText(QDate::currentDate()));
        clearEntryFields(1);
        m_trees.beginEntry();
        showMode();
    } else {
        m_trees.endEntry();
        m_editor.endEntry();
        // cmbBillPeriod_Click(1): the period the chooser holds, if any. After
        // finalising, the refresh of the lists has just shown it; it is built
        // again only when the tree holds something else (an entry).
        if (treeModel().isEmpty() || treeModel().chosenPeriod() != m_chooser->currentText() || m_chooser->currentIndex() != m_trees.chosenIndex())
            m_trees.showPeriod(m_chooser->currentIndex(), m_chooser->currentText());
        showViewControls();
    }
}

std::optional<billing::BillEntry> BillPeriodPanel::openEntry() const
{
    if (!m_trees.entryOpen()) return std::nullopt;
    billing::BillEntry e = billing::entryOf(treeModel());
    e.name = m_editor.name();
    e.start = m_editor.start();
    e.end = m_editor.end();
    e.due = m_editor.due();
    return e;
}

void BillPeriodPanel::reopenEntry(const billing::BillEntry &entry)
{
    if (!m_trees.entryOpen()) showBillPeriodEntry(true);
    if (!m_trees.entryOpen()) return;  // nobody to bill any more
    billing::restoreEntry(treeModel(), ctx.db(), entry);
    m_periodFields[0]->setText(entry.start);
    m_periodFields[1]->setText(entry.end);
    // The due date before the name: the name's change decides on "&Add New".
    m_periodFields[2]->setText(entry.due);
    m_txtBillPeriod->setText(entry.name);
}

void BillPeriodPanel::showViewControls()
{
    m_editor.endEntry();
    clearEntryFields(2);
    showMode();
}

void BillPeriodPanel::showLook()
{
    const BillPeriodEditor::Look look = m_editor.look();
    m_cmdAddNewBP->setText(look.addCaption);
    m_cmdAddNewBP->setVisible(look.addShown);
    m_cmdCancelNewBP->setText(captions::CancelNew);
    m_cmdCancelNewBP->setVisible(look.cancelShown);
    m_cmdResetCustomerAccounts->setText(look.resetCaption);
    m_cmdResetCustomerAccounts->setVisible(look.resetShown);
    m_cmdAdjustBalance->setVisible(look.adjustShown);
    m_lblBillPeriodName->setText(look.nameCaption);
    for (QWidget *w : std::initializer_list<QWidget *>{m_products, m_lblDoubleClickToAdd, m_txtBillPeriod})
        w->setVisible(look.entryShown);
    m_chooser->setVisible(look.chooserShown);
    m_lblExample->setVisible(look.exampleShown);
    m_lblCustomerAccounts->setVisible(look.accountsShown);
    for (QLineEdit *f : m_periodFields)
        f->setReadOnly(look.datesLocked);
    const auto fill = [](bool wanted) { return wanted ? syscolor::InfoBackground : syscolor::Window; };
    roster::setBackColour(m_txtBillPeriod, fill(look.nameWanted));
    roster::setBackColour(m_periodFields[2], fill(look.dueWanted));
}

void BillPeriodPanel::showMode()
{
    showLook();
    if (m_editor.entering() && !m_txtBillPeriod->isHidden()) m_txtBillPeriod->setFocus();
    rearrange();
}

void BillPeriodPanel::addBillPeriod()
{
    DialogService &dialogs = DialogService::current();
    QWidget *owner = ctx.mainWindow();
    const QString name = m_editor.name();
    switch (billing::checkNewBillPeriod(ctx.db(), treeModel(), name)) {
    case billing::AddCheck::DuplicateName:
        dialogs.warning(owner, billing::text::DuplicateName.title, billing::text::DuplicateName.text);
        return;
    case billing::AddCheck::NothingBilled:
        dialogs.warning(owner, billing::text::NothingBilled.title, billing::text::NothingBilled.text);
        return;
    case billing::AddCheck::Ok:
        break;
    }
    // Finalising is always asked, whatever the setting for confirmations.
    if (dialogs.warning(owner, titleOf(billing::text::Finalise), billing::text::Finalise.text,
                        QMessageBox::Ok | QMessageBox::Cancel) != QMessageBox::Ok)
        return;
    // The entry ends first: the database tells of the new period as it adds
    // it, and the lists that follow show it as a period, not as an entry.
    m_trees.endEntry();
    billing::finaliseBillPeriod(ctx.db(), treeModel(), name, m_editor.start(), m_editor.end(), m_editor.due());
    showBillPeriodEntry(false);
}

void BillPeriodPanel::periodShown(int listIndex, const QString &row)
{
    if (m_chooser->currentIndex() != listIndex) {
        const QSignalBlocker quiet(m_chooser);
        m_chooser->setCurrentIndex(listIndex);
    }
    // During an entry the Printing panel shows periods in its own tree; the
    // fields hold the entry's dates.
    if (m_trees.entryOpen()) return;
    if (const auto period = PeriodRow::parse(row)) {
        m_periodFields[0]->setText(billing::screenDate(period->start));
        m_periodFields[1]->setText(billing::screenDate(period->end));
        m_periodFields[2]->setText(billing::screenDate(period->billDue));
    }
    m_editor.paymentDone();
    showLook();
}

// ---------------------------------------------------------------- billing items

void BillPeriodPanel::entryTouched()
{
    m_editor.entryTouched();
    showLook();
}

void BillPeriodPanel::lvwProductsDblClick()
{
    if (!m_editor.entering()) return;
    QTreeWidgetItem *row = m_products->currentItem();
    if (!row) return;
    const billing::BillOutcome outcome =
        billing::billProductToMarked(treeModel(), row->data(0, Qt::UserRole).toString(), row->text(0));
    if (!outcome.refused.isEmpty())
        DialogService::current().warning(ctx.mainWindow(), billing::text::QuantityFullTitle, outcome.refusalText());
    entryTouched();
}

bool BillPeriodPanel::selectedHasRecord() const
{
    const NodeValues &v = treeModel().values(m_binding->selectedNode());
    if (v.kind != NodeKind::Customer || !v.balance || m_trees.chosenIndex() < 0) return false;
    return ctx.db().invoiceRecords().contains(record::keyFor(m_trees.chosenName(), v.customer));
}

std::optional<NodeKind> BillPeriodPanel::selectedKind() const
{
    const int node = treeModel().isEmpty() ? 0 : m_binding->selectedNode();
    if (node == 0) return std::nullopt;
    return treeModel().kind(node);
}

void BillPeriodPanel::tvwInvoiceRecordsMouseUp(Qt::MouseButton button, bool ctrl)
{
    const std::optional<NodeKind> selected = selectedKind();
    if (!selected) return;
    const NodeKind kind = *selected;
    InvoiceTree &t = treeModel();
    const int node = m_binding->selectedNode();
    if (m_editor.entering()) {
        if (button != Qt::LeftButton) {
            if (kind == NodeKind::Customer) m_mnuPopupC->popup(QCursor::pos());
            else if (kind == NodeKind::EnteredItem) m_mnuPopupB->popup(QCursor::pos());
        } else if (kind == NodeKind::Customer) {
            if (ctrl) {
                billing::toggleMark(t, node);
            } else {
                billing::markOnlyCustomer(t, node);
                entryTouched();
            }
        }
        return;
    }
    // A finalised period: the payment buttons for a customer of its records.
    m_editor.customerChosen(selectedHasRecord());
    showLook();
}

void BillPeriodPanel::tvwInvoiceRecordsDblClick()
{
    const std::optional<NodeKind> selected = selectedKind();
    if (!selected) return;
    const NodeKind kind = *selected;
    InvoiceTree &t = treeModel();
    const int node = m_binding->selectedNode();
    if (m_editor.entering()) {
        if (kind == NodeKind::EnteredItem) {
            billing::deleteBilledItem(t, node);
            // The button's release that ends the double-click lands on
            // whatever moved under the mouse: it must not mark anybody.
            m_binding->ignoreNextMouseUp();
            entryTouched();
        } else if (kind == NodeKind::Customer) {
            t.setExpanded(node, true);
        } else if (kind == NodeKind::Root) {
            billing::markAllCustomers(t);
            t.setExpanded(node, true);
        }
        return;
    }
    if (kind == NodeKind::Customer) {
        t.setExpanded(node, true);
        logPayment(Money(), QString());
    }
}

// ---------------------------------------------------------------- payments

void BillPeriodPanel::logPayment(Money balance, const QString &note)
{
    if (m_treeView->isHidden()) return;
    m_treeView->setFocus();
    if (!selectedHasRecord()) return;
    if (!billing::logPayment(treeModel(), m_trees.tree(1), ctx.db(), m_binding->selectedNode(), balance, note,
                             m_trees.chosenName()))
        return;
    m_editor.paymentDone();
    showLook();
}

void BillPeriodPanel::cmdResetCustomerAccountsClick()
{
    if (m_editor.entering()) {
        m_trees.beginEntry();
        return;
    }
    logPayment(Money(), QString());
    // Pressed, the button marks the database changed even when nothing moved.
    ctx.db().setChanged(true);
}

void BillPeriodPanel::cmdAdjustBalanceClick()
{
    if (m_treeView->isHidden()) return;
    m_treeView->setFocus();
    if (!selectedHasRecord()) return;
    const NodeValues &v = treeModel().values(m_binding->selectedNode());
    // The box takes the new balance, not the amount paid: it shows the
    // present one and starts from it, and from the present note.
    const Money present = v.balance.value_or(Money());
    const auto row = InvoiceRecordRow::parse(
        ctx.db().invoiceRecords().textOf(record::keyFor(m_trees.chosenName(), v.customer)));
    const QString presentNote = row ? row->note : QString();
    const QString presentText = present.toCurrencyText();
    DialogService &dialogs = DialogService::current();
    const QString balance = dialogs.text(ctx.mainWindow(), billing::text::NewBalance.title,
                                         billing::balancePrompt(v.label) + QStringLiteral("\r\n\r\nBalance now: ") +
                                             presentText,
                                         presentText)
                                .value_or(QString());
    const QString note = dialogs.text(ctx.mainWindow(), billing::text::OptionalNote.title, billing::notePrompt(v.label),
                                      presentNote)
                             .value_or(presentNote);  // Cancel keeps the note
    // No balance logs nothing, the note neither. A balance is read as a
    // price is: "1,200" is twelve hundred, whatever the language setting.
    if (balance.trimmed().isEmpty()) return;
    const Money::EntryReading value = Money::readTypedAmount(balance);
    if (!value.amount) {
        dialogs.warning(ctx.mainWindow(), billing::text::NewBalance.title, entry::amountProblem(value.problem, balance, true));
        return;
    }
    // The same balance and note again is no payment.
    if (*value.amount == present && note == presentNote) return;
    logPayment(*value.amount, note);
}

}  // namespace qor
