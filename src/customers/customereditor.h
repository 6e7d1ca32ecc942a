// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// The Customers panel without its widgets: what each of its two buttons does
// now, which of them show, which fields still ask to be filled, the search
// box, and the entry beside the stored customer it was filled from. The
// panel tells it what happened and shows what it holds.
#include "database/rowtypes.h"

#include <QString>
#include <QStringList>
#include <array>

namespace qor {

class CustomerEditor {
public:
    // What a button acts on: the customer viewed, a new entry, or an edit of
    // the customer viewed. Each button keeps its own mode: a row chosen with
    // the arrow keys during an entry offers that customer's delete while the
    // other button still adds the fields as a new customer.
    enum class Mode : quint8 { Viewing,
                               Entering,
                               Editing };
    struct Button {
        Mode mode = Mode::Viewing;
        bool shown = true;
        bool operator==(const Button &) const = default;
    };
    static constexpr int FieldCount = CustomerRow::EntryCount;

    // The captions a mode gives: "&New Customer" and "&Delete Existing"
    // while viewing, and so on.
    static QString addNewCaption(Mode mode);
    static QString undoCaption(Mode mode);
    static QString listCaption(bool searching);

    Button addNew() const { return m_addNew; }  // cmdAddNew
    Button undo() const { return m_undo; }      // cmdUndo, hidden at start
    bool printShown() const { return m_printShown; }
    // The field still asks to be filled: it shows the info background.
    bool asksForInput(int field) const { return m_asks[size_t(field)]; }
    bool searching() const { return m_searching; }
    bool isNewEntry() const { return m_undo.shown && m_undo.mode == Mode::Entering; }

    QString typed(int field) const { return m_typed[size_t(field)]; }
    QString stored(int field) const { return m_stored[size_t(field)]; }
    // The customer the fields were filled from: what an edit replaces.
    QString loadedKey() const { return m_loadedKey; }
    // "Last, First", or the first name alone.
    QString displayName() const;
    CustomerRow entryRow() const;
    QStringList typedFields() const { return {m_typed.begin(), m_typed.end()}; }

    // What happened, in the panel's words.
    void showAddNew() { m_addNew.shown = true; }
    void typedText(int field, const QString &text);
    // The fields filled from a stored customer. shownAs: the text each field
    // shows when that differs from what is stored (a box that changes line
    // ends); empty when they show it as stored.
    void show(const QString &key, const CustomerRow &stored, const QStringList &shownAs = {});
    void clear();
    void startNew();
    void stored();                     // added, or an edit applied: viewing the customer again
    void undoEdit();                   // after the stored customer was shown again
    void backToViewing(bool hasRows);  // after showing the selected row, if any
    void deleted(bool hasRows);        // after a delete, the row at its place shown
    void followed();                   // the highlight moved to a row that was then shown
    void setSearching(bool on) { m_searching = on; }

private:
    void fieldChanged(int field);
    void askForAll(bool ask) { m_asks.fill(ask); }

    Button m_addNew;
    Button m_undo{Mode::Viewing, false};
    bool m_printShown = true;
    bool m_searching = false;
    std::array<bool, FieldCount> m_asks{};
    std::array<QString, FieldCount> m_typed, m_stored;
    QString m_loadedKey;
};

}  // namespace qor
