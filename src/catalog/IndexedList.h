#pragma once

#include "catalog/OwnedList.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <memory>
#include <utility>

// An owned list with an index of its elements. The index has Add(element), which may throw and leaves it as
// before then, Clear() and Swap(); what it knows an element by must not change while the element is in the
// list. It knows all elements, or all but the last ones: those of a file come into it together, when it is
// first asked.
template <typename Element, typename ElementIndex> class IndexedList
{
public:
    explicit IndexedList(std::size_t sizeLimit) : m_list(sizeLimit) {}

    // As OwnedList::Append().
    void Append(std::unique_ptr<Element> element)
    {
        Element& appended = *element;
        AppendUnindexed(std::move(element), nullptr);
        if (m_unindexed > 1) {
            return; // its turn comes behind the others
        }
        try {
            m_index.Add(appended);
        } catch (...) {
            m_list.RemoveLast();
            m_unindexed = 0;
            throw;
        }
        m_unindexed = 0;
    }

    // The same without the index, which lags behind until CompleteIndex().
    void AppendUnindexed(std::unique_ptr<Element> element, MemoryPool* pool)
    {
        m_list.Append(std::move(element), pool);
        ++m_unindexed;
    }

    // Takes over what the other list holds, whose index must be empty. The size limit does not count: the
    // caller has asked for the room before it filled the other list, and nobody adds elements meanwhile. The
    // index lags behind.
    void AppendAll(IndexedList& other) noexcept
    {
        m_unindexed += other.m_list.Size();
        m_list.AppendAll(other.m_list);
        other.m_unindexed = 0;
    }

    // How many more elements the list takes.
    [[nodiscard]] std::size_t Room() const noexcept
    {
        return m_list.SizeLimit() - std::min(m_list.Size(), m_list.SizeLimit());
    }

    [[nodiscard]] bool IsIndexComplete() const noexcept { return m_unindexed == 0; }
    // Throws std::bad_alloc; the index then still lags behind.
    void CompleteIndex()
    {
        auto element = std::prev(m_list.end(), static_cast<std::ptrdiff_t>(m_unindexed));
        for (; m_unindexed != 0; ++element, --m_unindexed) {
            m_index.Add(**element);
        }
    }

    // Deletes the elements front to back.
    void Clear() noexcept
    {
        m_index.Clear();
        m_list.Clear();
        m_unindexed = 0;
    }

    void Swap(IndexedList& other) noexcept
    {
        m_index.Swap(other.m_index);
        m_list.Swap(other.m_list);
        std::swap(m_unindexed, other.m_unindexed);
    }

    // Only while it is complete.
    [[nodiscard]] const ElementIndex& Index() const noexcept { return m_index; }
    [[nodiscard]] ElementIndex& Index() noexcept { return m_index; }
    auto begin() const noexcept { return m_list.begin(); }
    auto begin() noexcept { return m_list.begin(); }
    auto end() const noexcept { return m_list.end(); }
    auto end() noexcept { return m_list.end(); }

private:
    OwnedList<Element> m_list;
    ElementIndex m_index;
    std::size_t m_unindexed = 0; // so many of the last elements the index does not know yet
};
