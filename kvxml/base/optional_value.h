/// Optional property that costs one pointer while it is not set.
#pragma once

#include <memory>
#include <optional>
#include <utility>

namespace KvXmlLib16 {

/// Holds a `T` on the heap, or nothing. Generated classes keep their rarely set members of larger types in
/// it, so that objects stay small. Copies copy the value.
template <class T>
class COptionalValue {
public:
    COptionalValue() noexcept = default;
    COptionalValue(const COptionalValue& other)
        : m_value(other.m_value ? std::make_unique<T>(*other.m_value) : nullptr) {}
    COptionalValue(COptionalValue&&) noexcept = default;
    COptionalValue(std::nullopt_t) noexcept {}
    COptionalValue(std::optional<T> value)
        : m_value(value ? std::make_unique<T>(*std::move(value)) : nullptr) {}
    COptionalValue& operator=(COptionalValue other) noexcept {
        m_value.swap(other.m_value);
        return *this;
    }
    ~COptionalValue() = default;

    bool IsSet() const noexcept { return m_value != nullptr; }
    void Reset() noexcept { m_value.reset(); }
    void Set(T value) {
        if (m_value) {
            *m_value = std::move(value);
        } else {
            m_value = std::make_unique<T>(std::move(value));
        }
    }
    /// The value; a default-constructed one when none is set.
    T Get() const { return m_value ? *m_value : T(); }
    operator std::optional<T>() const { return m_value ? std::optional<T>(*m_value) : std::nullopt; }
    /// The value, which must be set.
    const T& operator*() const noexcept { return *m_value; }

private:
    std::unique_ptr<T> m_value;
};

}  // namespace KvXmlLib16
