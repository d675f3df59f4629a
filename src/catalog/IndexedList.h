#pragma once

#include "catalog/OwnedList.h"

#include <memory>
#include <utility>

// An owned list with an index of its elements, which always know the same elements. The index has
// Add(element), which may throw and leaves it as before then, Clear() and Swap(); what it knows an element by
// must not change while the element is in the list.
template <typename Element, typename ElementIndex> class IndexedList
{
public:
    explicit IndexedList(std::size_t sizeLimit) : m_list(sizeLimit) {}

    // As OwnedList::Append().
    void Append(std::unique_ptr<Element> element)
    {
        Element& appended = *element;
        m_list.Append(std::move(element));
        try {
            m_index.Add(appended);
        } catch (...) {
            m_list.RemoveLast();
            throw;
        }
    }

    // Deletes the elements front to back.
    void Clear() noexcept
    {
        m_index.Clear();
        m_list.Clear();
    }

    void Swap(IndexedList& other) noexcept
    {
        m_index.Swap(other.m_index);
        m_list.Swap(other.m_list);
    }

    [[nodiscard]] const ElementIndex& Index() const noexcept { return m_index; }
    [[nodiscard]] ElementIndex& Index() noexcept { return m_index; }
    auto begin() const noexcept { return m_list.begin(); }
    auto begin() noexcept { return m_list.begin(); }
    auto end() const noexcept { return m_list.end(); }
    auto end() noexcept { return m_list.end(); }

private:
    OwnedList<Element> m_list;
    ElementIndex m_index;
};
