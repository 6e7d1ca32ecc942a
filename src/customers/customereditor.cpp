// SPDX-License-Identifier: GPL-3.0-or-later
#include "customers/customereditor.h"

#include "uiservices/captions.h"

namespace qor {

QString CustomerEditor::addNewCaption(Mode mode)
{
    static const char *const text[] = {captions::NewCustomer, captions::AddNew, captions::ApplyEdit};
    return QString::fromUtf8(text[int(mode)]);
}

QString CustomerEditor::undoCaption(Mode mode)
{
    static const char *const text[] = {captions::DeleteExisting, captions::CancelNew, captions::UndoEdit};
    return QString::fromUtf8(text[int(mode)]);
}

QString CustomerEditor::listCaption(bool searching)
{
    return QString::fromUtf8(searching ? captions::Search : captions::ListOfCustomers);
}

QString CustomerEditor::displayName() const { return customer::displayNameFor(m_typed[0], m_typed[1]); }

CustomerRow CustomerEditor::entryRow() const
{
    CustomerRow row;
    row.displayName = displayName();
    for (int i = 0; i < FieldCount; ++i) row.entry(i) = m_typed[size_t(i)];
    return row;
}

// During an entry the first name decides whether the entry can be added, and
// a field that is filled stops asking. Otherwise any difference from the
// stored copy is an edit, and typing back to the stored text ends it
// (without the delete button, until a customer is shown again).
void CustomerEditor::fieldChanged(int field)
{
    if (isNewEntry()) {
        m_addNew.shown = !m_typed[0].isEmpty();
        m_asks[size_t(field)] = m_typed[size_t(field)].isEmpty();
        return;
    }
    if (m_typed != m_stored) {
        m_undo = {Mode::Editing, true};
        m_addNew = {Mode::Editing, true};
    } else {
        m_undo.shown = false;
        m_addNew.mode = Mode::Viewing;
    }
}

void CustomerEditor::typedText(int field, const QString &text)
{
    if (m_typed[size_t(field)] == text) return;
    m_typed[size_t(field)] = text;
    fieldChanged(field);
}

// Field by field, the stored copy first and then the text, as the boxes are
// filled one after the other and each change is followed on its own: the
// buttons end as those steps leave them.
void CustomerEditor::show(const QString &key, const CustomerRow &row, const QStringList &shownAs)
{
    for (int i = 0; i < FieldCount; ++i) {
        m_stored[size_t(i)] = row.entry(i);
        typedText(i, shownAs.isEmpty() ? row.entry(i) : shownAs.value(i));
    }
    m_loadedKey = key;
    m_undo = {Mode::Viewing, true};
}

void CustomerEditor::clear()
{
    m_loadedKey.clear();
    for (int i = 0; i < FieldCount; ++i) {
        m_stored[size_t(i)].clear();
        typedText(i, QString());
    }
}

void CustomerEditor::startNew()
{
    clear();
    m_addNew = {Mode::Entering, false};
    m_undo = {Mode::Entering, true};
    m_printShown = false;
    askForAll(true);
}

void CustomerEditor::stored()
{
    askForAll(false);
    m_addNew.mode = Mode::Viewing;
    m_undo.mode = Mode::Viewing;
    m_printShown = true;
}

void CustomerEditor::undoEdit() { m_addNew = {Mode::Viewing, true}; }

void CustomerEditor::backToViewing(bool hasRows)
{
    if (hasRows) {
        m_printShown = true;
    } else {
        clear();
        m_undo.shown = false;
    }
    askForAll(false);
    m_addNew = {Mode::Viewing, true};
}

void CustomerEditor::deleted(bool hasRows)
{
    if (hasRows) {
        m_printShown = true;
    } else {
        clear();
        m_undo = {Mode::Entering, false};
        m_printShown = false;
    }
    askForAll(false);
    m_addNew.mode = Mode::Viewing;
}

void CustomerEditor::followed()
{
    askForAll(false);
    m_addNew = {Mode::Viewing, true};
    m_printShown = true;
}

}  // namespace qor
