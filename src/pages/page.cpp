// SPDX-License-Identifier: GPL-3.0-or-later
#include "pages/page.h"

#include <utility>

namespace qor::pages {

Page::Page(QString name, int width, int height, QList<Element> elements)
    : m_name(std::move(name)), m_width(width), m_height(height), m_elements(std::move(elements))
{
    reindex();
}

void Page::reindex()
{
    auto index = std::make_shared<QHash<QString, int>>();
    index->reserve(m_elements.size());
    for (int i = 0; i < m_elements.size(); ++i)
        index->insert(m_elements[i].name, i);
    m_index = std::move(index);
}

Element *Page::find(const QString &name)
{
    if (!m_index)
        return nullptr;
    const auto it = m_index->constFind(name);
    return it == m_index->constEnd() ? nullptr : &m_elements[*it];
}

const Element *Page::find(const QString &name) const
{
    if (!m_index)
        return nullptr;
    const auto it = m_index->constFind(name);
    return it == m_index->constEnd() ? nullptr : &m_elements[*it];
}

Element &Page::at(const QString &name)
{
    Element *e = find(name);
    Q_ASSERT_X(e, "Page::at", qPrintable(name));
    if (!e) {
        static thread_local Element dummy;
        dummy = Element();
        return dummy;
    }
    return *e;
}

const Element &Page::at(const QString &name) const
{
    const Element *e = find(name);
    Q_ASSERT_X(e, "Page::at", qPrintable(name));
    static const Element dummy;
    return e ? *e : dummy;
}

Element &Page::at(const QString &set, int index) { return at(indexedName(set, index)); }

const Element &Page::at(const QString &set, int index) const { return at(indexedName(set, index)); }

Element &Page::add(Element element)
{
    m_elements.append(std::move(element));
    reindex();
    return m_elements.last();
}

}  // namespace qor::pages
