/// Intrusive smart pointer over the library's reference-counted objects.
#pragma once

#include <cstddef>
#include <type_traits>
#include <utility>

namespace KvXmlLib16 {

/// Holds one reference to a `CXmlObjectBase` descendant, or null.
///
///     CSmartPtr<CTrkType> track = new CTrkType();
///     gpx->GetTrk()->Add(track);
///
/// Different pointers to one object may be used by different threads; one pointer by one thread at a time.
template <class T>
class CSmartPtr {
public:
    CSmartPtr() noexcept = default;
    CSmartPtr(std::nullptr_t) noexcept {}
    CSmartPtr(T* object) noexcept : m_object(object) { AddRefObject(); }
    CSmartPtr(const CSmartPtr& other) noexcept : m_object(other.m_object) { AddRefObject(); }
    CSmartPtr(CSmartPtr&& other) noexcept : m_object(std::exchange(other.m_object, nullptr)) {}
    template <class U, class = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    CSmartPtr(const CSmartPtr<U>& other) noexcept : CSmartPtr(other.Get()) {}
    template <class U, class = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    CSmartPtr(CSmartPtr<U>&& other) noexcept : m_object(other.Detach()) {}
    ~CSmartPtr() {
        if (m_object != nullptr) m_object->Release();
    }

    /// The old object is released after the new one was taken, so assigning a pointer to itself, or an
    /// object that only the old one kept alive, is safe.
    CSmartPtr& operator=(CSmartPtr other) noexcept {
        std::swap(m_object, other.m_object);
        return *this;
    }

    /// Takes over a reference that the caller holds already.
    static CSmartPtr Adopt(T* object) noexcept {
        CSmartPtr pointer;
        pointer.m_object = object;
        return pointer;
    }

    T* Get() const noexcept { return m_object; }
    operator T*() const noexcept { return m_object; }
    T* operator->() const noexcept { return m_object; }
    T& operator*() const noexcept { return *m_object; }
    /// The item of the collection that this points to.
    template <class U = T>
    auto operator[](std::size_t index) const -> decltype(std::declval<U&>()[index]) {
        return (*m_object)[index];
    }

    void Reset(T* object = nullptr) noexcept { *this = CSmartPtr(object); }
    /// Gives the reference to the caller and becomes null.
    T* Detach() noexcept { return std::exchange(m_object, nullptr); }

private:
    void AddRefObject() const noexcept {
        if (m_object != nullptr) m_object->AddRef();
    }

    T* m_object = nullptr;
};

}  // namespace KvXmlLib16
