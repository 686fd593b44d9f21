/// What all collections share: element name, bounds, listeners.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "kvxml/base/shared_name.h"
#include "kvxml/export.h"
#include "kvxml/objects/xml_object_base.h"

namespace KvXmlLib16 {

/// Base of the collections that hold the items of a repeated member. Written and read as the run of its
/// items' elements; it has no element of its own. What is read is appended to the items that are there.
///
/// A listener that throws from the add or remove notification stops the operation before the collection has
/// changed.
class KVXML_EXPORT CXmlCollectionBase : public CXmlObjectBase {
public:
    using size_type = std::size_t;
    using difference_type = std::ptrdiff_t;

    ~CXmlCollectionBase() override;

    CXmlObjectBase* GetBase() override { return this; }
    /// A collection belongs to no namespace of its own: throws CKvException.
    std::string GetTargetNamespace() const override;
    /// Always empty.
    std::string GetNamespace() const override;

    virtual std::int32_t GetCount() const = 0;
    std::size_t size() const { return static_cast<std::size_t>(GetCount()); }
    bool empty() const { return GetCount() == 0; }
    /// Removes every item.
    virtual void Clear() = 0;
    /// Removes one item; CKvInvalidParamException "Index %d is out of range, use 0 - %d" for a bad index.
    virtual void Remove(int index) = 0;
    /// CKvValidationException when there are more or fewer items than allowed, unless the context ignores
    /// that.
    virtual void ValidateCount(const CSerializationContext& context) const;
    virtual bool IsValidCount(const CSerializationContext& context) const;

    int GetMinOccurs() const noexcept { return m_minOccurs; }
    /// -1: unbounded.
    int GetMaxOccurs() const noexcept { return m_maxOccurs; }

    /// The listener is not owned and is called in the order of registration. Registered twice, it is called
    /// twice. Registered while an event is told, it is told that event as well.
    void AddEventListener(IEventSink* listener);
    /// Removes the first registration of the listener; no error when there is none. It is not called again,
    /// not even for an event that is being told.
    void RemoveEventListener(IEventSink* listener);

protected:
    CXmlCollectionBase();
    CXmlCollectionBase(const char* elementName, const char* ns, int minOccurs, int maxOccurs);
    CXmlCollectionBase(const CXmlCollectionBase&);
    CXmlCollectionBase& operator=(const CXmlCollectionBase&);
    /// Takes the listeners; name, namespace and bounds are in both then.
    CXmlCollectionBase(CXmlCollectionBase&& other) noexcept;
    CXmlCollectionBase& operator=(CXmlCollectionBase&& other) noexcept;

    void FireOnCollectionChange();
    void FireOnCollectionAdd(void* item);
    void FireOnCollectionAddComplete(void* item);
    void FireOnCollectionRemove(std::int32_t index);
    void FireOnCollectionRemoveComplete(std::int32_t index);
    bool HasListeners() const noexcept { return !m_listeners.empty(); }

    std::string_view GetItemNamespace() const noexcept { return m_namespace.View(); }
    /// The same zero-terminated; never null.
    const char* GetItemNamespaceText() const noexcept { return m_namespace.CStr(); }

    /// CKvInvalidParamException unless 0 <= index < count.
    void CheckItemIndex(int index) const;
    /// The same index as an int, for operations that check it: what no int can be is out of range for all.
    static int ToItemIndex(std::size_t index) noexcept {
        constexpr auto kMax = static_cast<std::size_t>(std::numeric_limits<int>::max());
        return static_cast<int>(index < kMax ? index : kMax);
    }

private:
    friend class internal::CObjectGraph;
    class CListening;

    template <class Fire>
    void ForEachListener(Fire fire);
    void DropRemovedListeners();

    internal::CSharedName m_namespace;
    std::vector<IEventSink*> m_listeners;  // null in the place of one removed while an event is told
    int m_eventsBeingTold = 0;
    int m_minOccurs = 0;
    int m_maxOccurs = -1;
};

}  // namespace KvXmlLib16
