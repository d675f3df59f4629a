#pragma once

#include "common/Pooled.h"

#include <cstddef>
#include <list>
#include <memory>
#include <stdexcept>
#include <utility>

// The most elements that a list of the catalogue takes. The C++ library does not check the size of a list, so
// the lists here do.
constexpr std::size_t kListSizeLimit = 768614336404564650;

// Owns one element of a list, and is as constant as the list: through a constant one an element can be read
// but not changed.
template <typename Element> class OwnedElement
{
public:
    explicit OwnedElement(std::unique_ptr<Element> element) noexcept : m_element(std::move(element)) {}

    [[nodiscard]] const Element* get() const noexcept { return m_element.get(); }
    [[nodiscard]] Element* get() noexcept { return m_element.get(); }
    const Element* operator->() const noexcept { return m_element.get(); }
    Element* operator->() noexcept { return m_element.get(); }
    const Element& operator*() const noexcept { return *m_element; }
    Element& operator*() noexcept { return *m_element; }

private:
    std::unique_ptr<Element> m_element;
};

// A doubly linked list that owns its elements, in the order in which they were appended. Not synchronised:
// the catalogue's lock guards it.
template <typename Element> class OwnedList
{
public:
    explicit OwnedList(std::size_t sizeLimit = kListSizeLimit) : m_sizeLimit(sizeLimit) {}

    // Takes the element over; its place in the list is a block of the pool, when there is one. Throws
    // std::length_error at the size limit and std::bad_alloc; the list is then as before and the element is
    // gone.
    void Append(std::unique_ptr<Element> element, MemoryPool* pool = nullptr)
    {
        if (m_elements.size() >= m_sizeLimit) {
            throw std::length_error("list too long");
        }
        Elements appended(PoolAllocator<OwnedElement<Element>>{pool});
        appended.emplace_back(std::move(element));
        m_elements.splice(m_elements.end(), appended);
    }

    // Takes over what the other list holds; the size limit does not count.
    void AppendAll(OwnedList& other) noexcept { m_elements.splice(m_elements.end(), other.m_elements); }

    // The list must not be empty.
    void RemoveLast() noexcept { m_elements.pop_back(); }

    // Deletes the elements front to back.
    void Clear() noexcept
    {
        while (!m_elements.empty()) {
            m_elements.pop_front();
        }
    }

    void Swap(OwnedList& other) noexcept { m_elements.swap(other.m_elements); }

    [[nodiscard]] std::size_t Size() const noexcept { return m_elements.size(); }
    [[nodiscard]] std::size_t SizeLimit() const noexcept { return m_sizeLimit; }
    auto begin() const noexcept { return m_elements.begin(); }
    auto begin() noexcept { return m_elements.begin(); }
    auto end() const noexcept { return m_elements.end(); }
    auto end() noexcept { return m_elements.end(); }

private:
    using Elements = std::list<OwnedElement<Element>, PoolAllocator<OwnedElement<Element>>>;

    std::size_t m_sizeLimit;
    Elements m_elements;
};
