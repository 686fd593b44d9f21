/// Deep copies of objects as new objects.
///
///     CSmartPtr<COrderType> copy = Clone(*order);
#pragma once

#include <type_traits>

#include "kvxml/base/smart_ptr.h"
#include "kvxml/export.h"
#include "kvxml/objects/xml_object_base.h"

namespace KvXmlLib16 {

namespace internal {

/// Takes the first reference to a copy-constructed object that nobody else knows, and drops its listeners.
KVXML_EXPORT void BeginClone(CXmlObjectBase& copy) noexcept;
/// Makes `copy` a deep copy of `source`, its element name included.
KVXML_EXPORT void FillClone(CXmlObjectBase& copy, const CXmlObjectBase& source);

}  // namespace internal

/// A new object that is a deep copy of `object`, as CXmlObjectBase::CopyFrom makes it, with its element name
/// and without its listeners. `T` is the object's own class, with a public default constructor; collections
/// are copy-constructed instead.
template <class T>
CSmartPtr<T> Clone(const T& object) {
    static_assert(std::is_base_of_v<CXmlObjectBase, T>, "only objects of the library are cloned");
    if constexpr (std::is_base_of_v<CXmlCollectionBase, T>) {
        T* const shallow = new T(object);
        internal::BeginClone(*shallow);
        auto copy = CSmartPtr<T>::Adopt(shallow);
        internal::FillClone(*copy, object);
        return copy;
    } else {
        CSmartPtr<T> copy(new T());
        internal::FillClone(*copy, object);
        return copy;
    }
}

}  // namespace KvXmlLib16
