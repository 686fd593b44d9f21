/// Base of the records that describe the child elements of generated classes.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <string_view>

#include "kvxml/export.h"
#include "kvxml/objects/parent_element_info.h"
#include "kvxml/types/item_type.h"
#include "kvxml/types/primitive_restrictions.h"
#include "kvxml/types/whitespace_utils.h"
#include "kvxml/xml/xml_writer.h"

namespace KvXmlLib16 {
class CSerializationContext;
class CXmlCollectionBase;
class CXmlElement;
class CXmlGeneratedClass;
class CXmlObjectBase;
template <class T>
class CSmartPtr;
struct KvVariant;

namespace internal {
class CObjectGraph;
}
}  // namespace KvXmlLib16

namespace KvXmlLib16Data {

using KvXmlLib16::CPrimitiveRestrictions;
using KvXmlLib16::CSerializationContext;
using KvXmlLib16::CWhitespaceUtils;
using KvXmlLib16::CXmlCollectionBase;
using KvXmlLib16::CXmlElement;
using KvXmlLib16::CXmlGeneratedClass;
using KvXmlLib16::CXmlObjectBase;
using KvXmlLib16::CXmlWriter;
using KvXmlLib16::ItemType;
using KvXmlLib16::KvVariant;

/// One member of a generated class: how its element is called, which property holds it, and how its value
/// is read, checked and written. The concrete records combine the helpers of this class by group, content
/// and cardinality.
///
/// Records are created once per generated class, never change in what they do, and are shared by all
/// instances and threads.
class KVXML_EXPORT CElementInfo {
public:
    virtual ~CElementInfo();
    /// Writes the owner's member; returns whether anything was written.
    virtual bool ElementToXml(const CSerializationContext& context, const CXmlGeneratedClass* owner,
                              CXmlWriter* writer) = 0;
    /// Reads the member from the elements at `*cursor` and moves the cursor past what it read. True when the
    /// record is satisfied (its element was read, or may be absent), false when it cannot place the element
    /// under the cursor. `type` is the owning class's.
    virtual bool ElementFromXml(const CSerializationContext& context, CXmlGeneratedClass* owner,
                                CXmlElement* parent, CXmlElement** cursor, const char* ns,
                                XmlElementType type) = 0;
    /// Members of an all-group only: complains when the member is missing.
    virtual bool Validate(const CSerializationContext& context, const CXmlGeneratedClass* owner, bool found,
                          bool isElement);
    /// Writes the attributes of a member that has no tag of its own into the owner's start tag.
    virtual void PseudoChildAttributeToXml(const CSerializationContext& context,
                                           const CXmlGeneratedClass* owner, CXmlWriter* writer);

    const std::string& GetElementName() const noexcept { return m_name; }
    const std::string& GetElementNamespace() const noexcept { return m_namespace; }
    int GetPropertyIndex() const noexcept { return m_propertyIndex; }

    /// The element has this record's name and, unless the context ignores namespaces, its namespace.
    bool IsThisElement(const CSerializationContext& context, const CXmlElement* element) const;

    /// Namespace in which an untyped element without one of its own is written.
    static std::string GetAnyDefaultNamespace(const char* restriction, const char* ns,
                                              const char* targetNamespace);

protected:
    /// For collections, classes and untyped content.
    CElementInfo(const char* name, const char* ns, int propertyIndex);
    /// For enumerations.
    CElementInfo(const char* name, const char* ns, int propertyIndex, bool nillable,
                 const char* (*enumToString)(int), int (*enumFromString)(const char*),
                 const char* defaultValue);
    /// For primitive values.
    CElementInfo(const char* name, const char* ns, int propertyIndex, bool nillable, ItemType itemType,
                 const char* formatOverride, CWhitespaceUtils::WhitespaceRule rule,
                 const CPrimitiveRestrictions& restrictions, const char* defaultValue);
    CElementInfo(const CElementInfo& other);
    CElementInfo& operator=(const CElementInfo& other);

    // What the family's records do with a property that has been read, and with an element that is known to
    // be theirs; the driver of sequences calls these where it knows that much.

    /// Writes the member that `value` holds. False when it holds none.
    virtual bool WriteValue(const CSerializationContext& context, const KvVariant& value,
                            CXmlWriter* writer) const;
    /// Reads the member from the element under the cursor and moves the cursor past it.
    virtual void ReadMatched(const CSerializationContext& context, CXmlGeneratedClass* owner,
                             CXmlElement** cursor) const;

    /// A choice that has this member may have none at all.
    virtual bool LetsChoiceBeEmpty(const CXmlGeneratedClass* owner) const;
    /// A null of JSON means that the member is not there: it is optional, and cannot be nil.
    virtual bool DropsNull(const CXmlGeneratedClass* owner) const;
    /// Moves the cursor past an element of the record that is such a null. False for any other element.
    bool PassNull(const CXmlGeneratedClass* owner, CXmlElement** cursor) const;
    /// A new object for the member, of the class of `object`; null when the record does not know how to make
    /// one. Here it never does.
    virtual KvXmlLib16::CSmartPtr<CXmlObjectBase> NewMemberLike(const CXmlObjectBase& object) const;

    void InvokePropertyGet(const CXmlGeneratedClass* owner, KvVariant& value) const;
    void ReadProperty(const CXmlGeneratedClass* owner, KvVariant& value) const {
        InvokePropertyGet(owner, value);
    }
    void InvokePropertySet(CXmlGeneratedClass* owner, KvVariant& value, const CXmlElement& element) const;
    /// CKvInvalidValueException when a facet is violated; CKvException when this is not a primitive record.
    /// `lexical` is the text of the value, which patterns are matched against.
    void CheckRestriction(const KvVariant& value, std::string_view lexical = {}) const;

    bool WritePrim(const KvVariant& value, CXmlWriter* writer) const;
    bool WriteEnum(const KvVariant& value, CXmlWriter* writer, const char* (*enumToString)(int)) const;
    bool WriteCls(const CSerializationContext& context, const KvVariant& value, CXmlWriter* writer,
                  bool suppressChoiceError) const;
    bool WriteCol(const CSerializationContext& context, const KvVariant& value, CXmlWriter* writer) const;
    bool ElementToXmlPrim(const CSerializationContext& context, const CXmlGeneratedClass* owner,
                          CXmlWriter* writer) const;
    bool ElementToXmlEnum(const CSerializationContext& context, const CXmlGeneratedClass* owner,
                          CXmlWriter* writer, const char* (*enumToString)(int)) const;
    bool ElementToXmlCls(const CSerializationContext& context, const CXmlGeneratedClass* owner,
                         CXmlWriter* writer, bool suppressChoiceError) const;
    bool ElementToXmlCol(const CSerializationContext& context, const CXmlGeneratedClass* owner,
                         CXmlWriter* writer) const;
    void ElementFromXmlPrim(const CSerializationContext& context, CXmlGeneratedClass* owner,
                            CXmlElement** cursor) const;
    void ElementFromXmlEnum(const CSerializationContext& context, CXmlGeneratedClass* owner,
                            CXmlElement** cursor) const;

    static CXmlElement* FromXml_Int(CXmlObjectBase* object, CXmlElement* element, CXmlElement* cursor,
                                    const CSerializationContext& context, bool suppressChoiceError);
    static void AttributesToXml_Int(const CXmlObjectBase* object, CXmlWriter* writer,
                                    const CSerializationContext& context);
    static void ToXml_Int(const CXmlObjectBase* object, CXmlWriter* writer, const char* namespaceUri,
                          const CSerializationContext& context, bool suppressChoiceError);
    /// Writes the attributes of the object or collection that the property holds.
    void WriteMemberAttributes(const CSerializationContext& context, const CXmlGeneratedClass* owner,
                               CXmlWriter* writer) const;
    /// The object was constructed a moment ago and is known to nobody else.
    static void MarkNew(CXmlObjectBase* object) noexcept;
    /// The read that follows repeats one of the same member that found nothing but came too early.
    static void MarkRetried(CXmlObjectBase* object) noexcept;
    /// The last read of an object without a tag of its own did not find what is mandatory in it.
    static bool IsIncomplete(const CXmlObjectBase* object) noexcept;
    static bool HasReadAttributes(const CXmlObjectBase* object) noexcept;
    /// A record of the owner's class claims the element by its name.
    static bool IsListed(const CSerializationContext& context, const CXmlGeneratedClass* owner,
                         const CXmlElement& element);

    /// Reads the property, a collection, and has the class make it when it has not yet. Null when the class
    /// makes none.
    CXmlCollectionBase* MakeCollection(const CXmlGeneratedClass* owner, KvVariant& value) const;

    /// CKvInvalidParamException: the property is mandatory and null.
    [[noreturn]] void ThrowMandatoryIsNull() const;
    /// CKvValidationException with the path of `parent`: the mandatory element is not there.
    [[noreturn]] void ThrowRequiredChildMissing(const CXmlElement* parent) const;
    /// For wildcards: the namespaces from which an element was wanted. Null for members that have a name.
    virtual const std::string* GetWantedNamespaces() const noexcept;
    /// CKvValidationException "Failed to find the required element from namespace [%s].", for wildcards.
    [[noreturn]] static void ThrowWildcardUnfilled(const std::string& namespaces, const std::string& path);

    /// The reader does nothing but return true when the element under the cursor is not this record's, so
    /// the driver need not call it then. Collections find out when they first see their bounds.
    void SetSkippedWhenAbsent() const noexcept {
        // Written once only, so that threads that read documents at the same time keep it in their caches.
        if (!IsSkippedWhenAbsent()) m_skippedWhenAbsent.store(true, std::memory_order_relaxed);
    }
    bool IsSkippedWhenAbsent() const noexcept { return m_skippedWhenAbsent.load(std::memory_order_relaxed); }
    /// The member may write attributes through PseudoChildAttributeToXml.
    void SetHasPseudoElement() noexcept { m_hasPseudoElement = true; }
    bool HasPseudoElement() const noexcept { return m_hasPseudoElement; }
    /// ElementToXml does what WriteValue does with the property, but for a member that is missing.
    void SetWritesValue() noexcept { m_writesValue = true; }
    /// The record takes no elements but those that IsThisElement accepts.
    void SetClaimsByName() noexcept { m_claimsByName = true; }
    /// ElementFromXml does what ReadMatched does with an element that is the record's.
    void SetReadsMatched() noexcept { m_readsMatched = true; }
    /// WriteValue is WritePrim, and ReadMatched is ElementFromXmlPrim: the driver may call those at once.
    void SetIsPrim() noexcept { m_isPrim = true; }

    std::string m_name;
    std::string m_namespace;
    int m_propertyIndex;
    CPrimitiveRestrictions m_restrictions;
    ItemType m_itemType = KvXmlLib16::ItemType_Unknown;
    std::string m_formatOverride;
    CWhitespaceUtils::WhitespaceRule m_whitespaceRule = CWhitespaceUtils::WhitespaceRule_None;
    std::string m_defaultValue;
    bool m_nillable = false;
    const char* (*m_enumToString)(int) = nullptr;
    int (*m_enumFromString)(const char*) = nullptr;
    bool m_hasRestrictions = false;

private:
    friend class KvXmlLib16::CXmlGeneratedClass;
    friend class KvXmlLib16::internal::CObjectGraph;

    /// Reads the simple element under the cursor into the property; `convert` makes the value from its text.
    template <class Convert>
    void ReadSimpleElement(const CSerializationContext& context, CXmlGeneratedClass* owner,
                           CXmlElement** cursor, Convert convert) const;
    bool IsDefault(std::string_view text) const noexcept {
        return !m_defaultValue.empty() && text == m_defaultValue;
    }
    void WriteNilElement(CXmlWriter* writer) const;

    KvXmlLib16::CXmlWriter::SimpleName m_simpleName;
    bool m_isPlain = false;  // values are written with no format, default or facet to think of
    mutable std::atomic<bool> m_skippedWhenAbsent{false};
    bool m_hasPseudoElement = false;
    bool m_writesValue = false;
    bool m_claimsByName = false;
    bool m_readsMatched = false;
    bool m_isPrim = false;
};

}  // namespace KvXmlLib16Data
