// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// The Products and Services panel without its widgets: what its two buttons
// do now and whether they show, whether the entry fields show and which of
// them still ask to be filled, and what was typed into them.
#include "database/rowtypes.h"

#include <QString>
#include <functional>
#include <optional>

namespace qor {

class ProductEditor {
public:
    // The list of products, or a new entry. Each button keeps its own mode:
    // at start the fields show and the hidden second button is the entry's
    // cancel, while the first offers a new entry.
    enum class Mode : quint8 { Viewing,
                               Entering };
    struct Button {
        Mode mode = Mode::Viewing;
        bool shown = true;
        bool operator==(const Button &) const = default;
    };

    // "&New Product or Service" / "&Add New", "&Delete Existing" / "&Cancel New".
    static QString addNewCaption(Mode mode);
    static QString cancelCaption(Mode mode);

    Button addNew() const { return m_addNew; }  // cmdAddNewItem
    Button cancel() const { return m_cancel; }  // cmdCancelNewItem
    bool fieldsShown() const { return m_fieldsShown; }
    bool priceAsks() const { return m_priceAsks; }
    bool nameAsks() const { return m_nameAsks; }
    // Enter presses the first button, once an entry has made it the default.
    bool addIsDefault() const { return m_addIsDefault; }
    bool inEntry() const { return m_cancel.mode == Mode::Entering && m_fieldsShown; }
    QString price() const { return m_price; }
    QString name() const { return m_name; }

    // What "&Add New" makes of the price and the name typed: the row to
    // store, or why it is refused. The price is kept as the amount it reads
    // as, in the currency form of the moment; what can't be read to the cent
    // is refused. A row whose list text `listed` says the list shows already
    // is a duplicate. No row and no problem: the price isn't a number at all
    // (the button only shows for one; Enter could still ask).
    struct NewItem {
        std::optional<ItemRow> row;
        QString problem;
        bool duplicate = false;
    };
    NewItem newItem(const std::function<bool(const QString &listText)> &listed) const;

    void startEntry();            // the fields emptied and shown
    void showList(bool hasRows);  // the fields hidden, keeping what was typed
    void typedPrice(const QString &text);
    void typedName(const QString &text);

private:
    void updateAddShown();

    Button m_addNew;
    Button m_cancel{Mode::Entering, false};
    bool m_fieldsShown = true;
    bool m_priceAsks = true, m_nameAsks = true;
    bool m_addIsDefault = false;
    QString m_price, m_name;
};

}  // namespace qor
