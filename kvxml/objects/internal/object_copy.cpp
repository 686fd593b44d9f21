#include <memory>
#include <typeinfo>
#include <unordered_set>
#include <vector>

#include "kvxml/base/exceptions.h"
#include "kvxml/objects/clone.h"
#include "kvxml/objects/internal/object_graph.h"
#include "kvxml/objects/nillable.h"
#include "kvxml/objects/table_class.h"
#include "kvxml/types/format_string.h"
#include "kvxml/xml/internal/prefix_list.h"

namespace KvXmlLib16 {

namespace internal {

/// Copies object by object. An object that is made for a place in another one is put there when it is
/// complete, as in reading.
class CObjectGraph::CCopier {
public:
    void Run(const CXmlObjectBase& source, CXmlObjectBase& target) {
        Push(source, target);
        while (!m_tasks.empty()) {
            Task& top = m_tasks.back();
            if (!top.isOpen) {
                top.isOpen = true;
                if (!m_open.insert(top.source).second)
                    throw CKvInvalidStateException("An object that contains itself can not be copied.");
                Fill(*top.source, *top.target);  // may add tasks
                continue;
            }
            Task done = std::move(top);
            m_tasks.pop_back();
            m_open.erase(done.source);
            Place(done);
        }
    }

private:
    struct Task {
        const CXmlObjectBase* source;
        CXmlObjectBase* target;
        bool isOpen = false;
        // Of a target that is to be put somewhere: itself, and where. An object's property, or a list.
        CSmartPtr<CXmlObjectBase> made = nullptr;
        CXmlGeneratedClass* owner = nullptr;
        int propertyIndex = 0;
        CXmlCollection* list = nullptr;
        std::unique_ptr<KvVariant> holder = nullptr;  // what the source was read into
    };

    Task& Push(const CXmlObjectBase& source, CXmlObjectBase& target) {
        m_tasks.push_back({&source, &target});
        return m_tasks.back();
    }

    static void Place(Task& task) {
        if (task.list != nullptr) {
            task.list->Insert(nullptr, std::move(task.made));
        } else if (task.owner != nullptr) {
            KvVariant value;
            value.SetXmlObject(task.made.Get());
            task.owner->AccessProperty(task.propertyIndex, false, value);
        }
    }

    void Fill(const CXmlObjectBase& source, CXmlObjectBase& target) {
        if (typeid(source) != typeid(target))
            throw CKvInvalidParamException("Only objects of the same class can be copied into one another.");
        if (const auto* object = dynamic_cast<const CXmlGeneratedClass*>(&source)) {
            FillObject(*object, static_cast<CXmlGeneratedClass&>(target));
        } else if (const auto* list = dynamic_cast<const CXmlCollection*>(&source)) {
            FillList(*list, static_cast<CXmlCollection&>(target));
        } else if (const auto* values = dynamic_cast<const CXmlTypeCollection*>(&source)) {
            FillValues(*values, static_cast<CXmlTypeCollection&>(target));
        } else if (const auto* element = dynamic_cast<const CElement*>(&source)) {
            FillElement(*element, static_cast<CElement&>(target));
        } else if (const auto* attribute = dynamic_cast<const CAttribute*>(&source)) {
            FillAttribute(*attribute, static_cast<CAttribute&>(target));
        } else {
            ThrowUnknownClass();
        }
    }

    // --- generated classes --------------------------------------------------------------------------------

    void FillObject(const CXmlGeneratedClass& source, CXmlGeneratedClass& target) {
        target.Init();
        if (source.IsNillableClass(*source.GetClassInfo()))
            dynamic_cast<INillable&>(target).SetNil(dynamic_cast<const INillable&>(source).IsNil());
        const std::uint64_t used = source.GetUsedProperties();
        ForEachProperty(source, [&](int index, const CElementInfo* record) {
            KvVariant value;
            if (IsUsed(used, index)) source.ReadProperty(index, value);
            KvVariant own;
            target.ReadProperty(index, own);
            if (value.PeekXmlCollection() != nullptr) {
                FillMemberList(std::move(value), target, index, own);
            } else if (value.PeekXmlObject() != nullptr) {
                FillMember(std::move(value), target, index, record, own);
            } else if (own.PeekXmlObject() != nullptr) {
                KvVariant none;
                none.SetXmlObject(nullptr);
                target.AccessProperty(index, false, none);
            } else if (value.IsValid() && value.GetTypeAsEnum() != ItemType_XmlObject &&
                       value.GetTypeAsEnum() != ItemType_XmlCollection && !IsSameValue(value, own)) {
                target.AccessProperty(index, false, value);
            }
        });
    }

    void FillMember(KvVariant value, CXmlGeneratedClass& target, int index, const CElementInfo* record,
                    const KvVariant& own) {
        const CXmlObjectBase& source = *value.PeekXmlObject();
        CXmlObjectBase* const present = own.PeekXmlObject();
        if (present != nullptr && typeid(*present) == typeid(source)) {
            CopyName(source, *present);
            Push(source, *present).holder = std::make_unique<KvVariant>(std::move(value));
            return;
        }
        CSmartPtr<CXmlObjectBase> made = record == nullptr ? nullptr : record->NewMemberLike(source);
        RequireLike(made.Get(), source, record == nullptr ? "" : record->GetElementName().c_str());
        CopyName(source, *made);
        Task& task = Push(source, *made);
        task.made = std::move(made);
        task.owner = &target;
        task.propertyIndex = index;
        task.holder = std::make_unique<KvVariant>(std::move(value));
    }

    void FillMemberList(KvVariant value, CXmlGeneratedClass& target, int index, const KvVariant& own) {
        const CXmlCollectionBase& source = *value.PeekXmlCollection();
        CXmlCollectionBase* list = own.PeekXmlCollection();
        KvVariant made;
        // An empty list may be a value.
        if (list == nullptr && (!source.empty() || dynamic_cast<const CTableClass*>(&target) != nullptr)) {
            target.AccessProperty(index, false, made);
            made.Clear();
            target.ReadProperty(index, made);
            list = made.PeekXmlCollection();
            if (list == nullptr) ThrowUnknownClass();
        }
        if (list != nullptr) Push(source, *list).holder = std::make_unique<KvVariant>(std::move(value));
    }

    // --- collections --------------------------------------------------------------------------------------

    void FillList(const CXmlCollection& source, CXmlCollection& target) {
        target.Clear();
        if (dynamic_cast<const CAttributeCol*>(&source) != nullptr) {
            for (const CCollectionNode* node = source.m_head; node != nullptr; node = node->next) {
                CSmartPtr<CAttribute> copy(new CAttribute());
                FillAttribute(static_cast<const CAttribute&>(*node->item), *copy);
                target.Insert(nullptr, std::move(copy));
            }
            return;
        }
        // From the last one, for what is added last is done first.
        for (const CCollectionNode* node = source.m_tail; node != nullptr; node = node->previous) {
            const CXmlObjectBase& item = *node->item;
            CSmartPtr<CXmlObjectBase> made = target.NewItemLike(item);
            RequireLike(made.Get(), item, source.GetElementNameText());
            CopyName(item, *made);
            Task& task = Push(item, *made);
            task.made = std::move(made);
            task.list = &target;
        }
    }

    static void FillValues(const CXmlTypeCollection& source, CXmlTypeCollection& target) {
        target.Clear();
        const bool isKnown = VisitValues(source, target, [](const auto& from, auto& to) {
            // Not by Add: the values have passed the facets, some of them by the text that they were read
            // from.
            for (const auto& value : from) {
                void* const data = const_cast<void*>(static_cast<const void*>(&value));
                to.FireOnCollectionAdd(data);
                to.m_items.Insert(to.m_items.Size(), value);
                to.FireOnCollectionAddComplete(data);
                to.FireOnCollectionChange();
            }
        });
        if (!isKnown) ThrowUnknownClass();
    }

    // --- untyped content ----------------------------------------------------------------------------------

    void FillElement(const CElement& source, CElement& target) {
        target.Clear();
        CopyName(source, target);
        target.m_namespace = source.m_namespace;
        target.m_prefix = source.m_prefix;
        target.m_hasNamespace = source.m_hasNamespace;
        target.m_value = source.m_value;
        if (source.m_documentPrefixes != nullptr)
            target.m_documentPrefixes = std::make_unique<CPrefixList>(*source.m_documentPrefixes);
        if (source.m_attributes != nullptr && !source.m_attributes->empty())
            Push(*source.m_attributes, *target.GetAttributes());
        if (source.m_elements != nullptr && !source.m_elements->empty())
            Push(*source.m_elements, *target.GetElements());
    }

    static void FillAttribute(const CAttribute& source, CAttribute& target) {
        CopyName(source, target);
        target.m_namespace = source.m_namespace;
        target.m_prefix = source.m_prefix;
        target.m_valueNamespace = source.m_valueNamespace;
        target.m_isTypeValue = source.m_isTypeValue;
        target.m_value = source.m_value;
    }

    static void RequireLike(const CXmlObjectBase* made, const CXmlObjectBase& source, const char* name) {
        if (made != nullptr && typeid(*made) == typeid(source)) return;
        throw CKvInvalidStateException(
            FormatString("The member [%s] holds an object of a class that it does not make.", name));
    }
    [[noreturn]] static void ThrowUnknownClass() {
        throw CKvInvalidParamException("Objects of this class can not be copied.");
    }

    std::vector<Task> m_tasks;
    std::unordered_set<const CXmlObjectBase*> m_open;
};

void CObjectGraph::Copy(const CXmlObjectBase& source, CXmlObjectBase& target) {
    if (&source == &target) return;
    // It may be a part of the target, which lets go of its parts.
    const bool isShared = source.m_references.load(std::memory_order_relaxed) > 0;
    const CSmartPtr<CXmlObjectBase> keep(isShared ? const_cast<CXmlObjectBase*>(&source) : nullptr);
    CCopier().Run(source, target);
}

void CObjectGraph::BeginClone(CXmlObjectBase& copy) noexcept {
    copy.m_references.store(1, std::memory_order_relaxed);
    if (auto* collection = dynamic_cast<CXmlCollectionBase*>(&copy)) collection->m_listeners.clear();
}

void BeginClone(CXmlObjectBase& copy) noexcept {
    CObjectGraph::BeginClone(copy);
}

void FillClone(CXmlObjectBase& copy, const CXmlObjectBase& source) {
    CObjectGraph::CopyName(source, copy);
    CObjectGraph::Copy(source, copy);
}

}  // namespace internal

void CXmlObjectBase::CopyFrom(const CXmlObjectBase& source) {
    internal::CObjectGraph::Copy(source, *this);
}

}  // namespace KvXmlLib16
