// SPDX-License-Identifier: GPL-3.0-or-later
#include "products/producteditor.h"

#include "database/entryrules.h"
#include "database/money.h"
#include "database/regional.h"
#include "uiservices/captions.h"

namespace qor {

QString ProductEditor::addNewCaption(Mode mode)
{
    return QString::fromUtf8(mode == Mode::Viewing ? captions::NewProductOrService : captions::AddNew);
}

QString ProductEditor::cancelCaption(Mode mode)
{
    return QString::fromUtf8(mode == Mode::Viewing ? captions::DeleteExisting : captions::CancelNew);
}

ProductEditor::NewItem ProductEditor::newItem(const std::function<bool(const QString &listText)> &listed) const
{
    NewItem out;
    if (!regional::isNumeric(m_price)) return out;
    const Money::EntryReading reading = Money::readTypedAmount(m_price);
    if (!reading.amount) {
        out.problem = entry::amountProblem(reading.problem, m_price, false);
        return out;
    }
    const QString priceText = reading.amount->toCurrencyText();
    const ItemRow row = item::make(regional::sortPrice(*reading.amount), priceText, m_name);
    out.problem = entry::productProblem(priceText, m_name);
    out.duplicate = out.problem.isEmpty() && listed(row.listText);
    if (out.problem.isEmpty() && !out.duplicate) out.row = row;
    return out;
}

void ProductEditor::startEntry()
{
    m_price.clear();
    m_name.clear();
    m_cancel = {Mode::Entering, true};
    m_addNew = {Mode::Entering, false};
    m_priceAsks = m_nameAsks = true;
    m_fieldsShown = true;
    m_addIsDefault = true;
}

// Delete only offers itself when there is a row to delete.
void ProductEditor::showList(bool hasRows)
{
    m_cancel = {Mode::Viewing, hasRows};
    m_addNew = {Mode::Viewing, true};
    m_fieldsShown = false;
}

// An entry can be added once its price reads as a number and it has a name.
void ProductEditor::updateAddShown() { m_addNew.shown = regional::isNumeric(m_price) && !m_name.isEmpty(); }

void ProductEditor::typedPrice(const QString &text)
{
    m_price = text;
    if (!inEntry()) return;
    updateAddShown();
    m_priceAsks = !(!text.isEmpty() && regional::isNumeric(text));
}

void ProductEditor::typedName(const QString &text)
{
    m_name = text;
    if (!inEntry()) return;
    updateAddShown();
    m_nameAsks = text.isEmpty();
}

}  // namespace qor
