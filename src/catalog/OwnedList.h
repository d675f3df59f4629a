#pragma once

#include <cstddef>
#include <list>
#include <memory>
#include <stdexcept>

// The most elements that a list of the catalogue takes. The C++ library does not check the size of a list, so
// the lists here do.
constexpr std::size_t kListSizeLimit = 768614336404564650;

// A doubly linked list that owns its elements, in the order in which they were appended. Not synchronised:
// the catalogue's lock guards it.
template <typename Element> class OwnedList
{
public:
    explicit OwnedList(std::size_t sizeLimit = kListSizeLimit) noexcept : m_sizeLimit(sizeLimit) {}

    // Takes the element over. Throws std::length_error at the size limit and std::bad_alloc; the list is then
    // as before and the element is gone.
    void Append(std::unique_ptr<Element> element)
    {
        if (m_elements.size() >= m_sizeLimit) {
            throw std::length_error("list too long");
        }
        m_elements.push_back(std::move(element));
    }

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
    auto end() const noexcept { return m_elements.end(); }

private:
    std::size_t m_sizeLimit;
    std::list<std::unique_ptr<Element>> m_elements;
};
