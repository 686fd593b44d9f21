/// Storage of the primitive collections.
#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <utility>

namespace KvXmlLib16::internal {

/// Contiguous values in order. As `std::vector`, except that values can be removed from the front without
/// moving the others, and that `bool` is a value like any other.
template <class T>
class CItemArray {
public:
    CItemArray() noexcept = default;
    CItemArray(const CItemArray& other) {
        if (other.Size() == 0) return;
        Reallocate(other.Size());
        std::copy(other.begin(), other.end(), m_values.get());
        m_last = other.Size();
    }
    CItemArray(CItemArray&& other) noexcept { Swap(other); }
    CItemArray& operator=(CItemArray other) noexcept {
        Swap(other);
        return *this;
    }
    ~CItemArray() = default;

    std::size_t Size() const noexcept { return m_last - m_first; }
    const T* begin() const noexcept { return m_values.get() + m_first; }
    const T* end() const noexcept { return m_values.get() + m_last; }
    const T& operator[](std::size_t index) const noexcept { return begin()[index]; }

    /// `index` is at most the size.
    void Insert(std::size_t index, T value) {
        if (m_last == m_capacity) MakeRoom();
        T* const at = m_values.get() + m_first + index;
        std::move_backward(at, m_values.get() + m_last, m_values.get() + m_last + 1);
        *at = std::move(value);
        ++m_last;
    }
    /// `index` is below the size.
    void Remove(std::size_t index) {
        T* const first = m_values.get() + m_first;
        if (index == 0) {
            *first = T();
            ++m_first;
        } else {
            std::move(first + index + 1, m_values.get() + m_last, first + index);
            m_values[--m_last] = T();
        }
        if (m_first == m_last) m_first = m_last = 0;
    }

private:
    void Swap(CItemArray& other) noexcept {
        m_values.swap(other.m_values);
        std::swap(m_first, other.m_first);
        std::swap(m_last, other.m_last);
        std::swap(m_capacity, other.m_capacity);
    }
    // Space in front is used again when it is most of the whole, so that adding stays cheap on average.
    void MakeRoom() {
        if (m_first > m_capacity / 2) {
            std::move(m_values.get() + m_first, m_values.get() + m_last, m_values.get());
            m_last -= m_first;
            m_first = 0;
        } else {
            Reallocate(std::max<std::size_t>(Size() * 2, 4));
        }
    }
    void Reallocate(std::size_t capacity) {
        std::unique_ptr<T[]> values(new T[capacity]);  // NOLINT: numbers stay uninitialised
        std::move(m_values.get() + m_first, m_values.get() + m_last, values.get());
        m_values = std::move(values);
        m_last -= m_first;
        m_first = 0;
        m_capacity = capacity;
    }

    std::unique_ptr<T[]> m_values;
    std::size_t m_first = 0;
    std::size_t m_last = 0;
    std::size_t m_capacity = 0;
};

}  // namespace KvXmlLib16::internal
