/// Base of every schema-generated class: reads and writes an object by its metadata tables.
///
/// docs/generated-code.md tells step by step what a class derived from this one must provide. Records,
/// variant and lock are only named here, so that this header costs little: sources that use them include
/// their headers or kvxml/kvxml.h.
#pragma once

#include <cstdint>

#include "kvxml/export.h"
#include "kvxml/objects/xml_object_base.h"

namespace KvXmlLib16Data {
class CParentElementInfo;
enum XmlElementGroupType : std::int32_t;
enum XmlElementType : std::int32_t;
}  // namespace KvXmlLib16Data

namespace KvXmlLib16 {

class CAttributeCol;
class CKVCriticalSection;
class CXmlAttribute;
struct KvVariant;

namespace internal {
class CEntryPoints;
class CMemberAccess;
}  // namespace internal

using KvXmlLib16Data::CAttributeInfo;
using KvXmlLib16Data::CElementInfo;
using KvXmlLib16Data::CParentElementInfo;
using KvXmlLib16Data::XmlElementGroupType;
using KvXmlLib16Data::XmlElementType;

/// Drives reading and writing of generated classes. Adds no state of its own: what it needs to know about
/// the concrete class it asks through the five operations at the end of this class.
///
/// Errors met while reading carry the path of the innermost element or attribute at fault.
class KVXML_EXPORT CXmlGeneratedClass : public CXmlObjectBase {
public:
    CXmlGeneratedClass() noexcept;
    CXmlGeneratedClass(const CXmlGeneratedClass& other) noexcept;
    CXmlGeneratedClass& operator=(const CXmlGeneratedClass& other) noexcept;
    CXmlGeneratedClass(CXmlGeneratedClass&& other) noexcept;
    CXmlGeneratedClass& operator=(CXmlGeneratedClass&& other) noexcept;
    ~CXmlGeneratedClass() override;

protected:
    void AttributesToXml_Int(CXmlWriter* writer, const CSerializationContext& context) const override;
    void ToXml_Int(CXmlWriter* writer, bool isRoot, const char* namespaceUri,
                   const CSerializationContext& context, bool suppressChoiceError) const override;
    CXmlElement* FromXml_Int(CXmlElement* element, CXmlElement* cursor, const CSerializationContext& context,
                             bool suppressChoiceError) override;

    // --- what the generator implements --------------------------------------------------------------------

    /// Reads (`read`) or assigns the property with the given index through `value`. Reading leaves `value`
    /// as it is (invalid) for a property that is not set, and changes nothing that can be seen. Assigning an
    /// invalid value to a collection property creates the collection when the class made none yet.
    virtual void AccessProperty(int propertyIndex, bool read, KvVariant& value) = 0;
    /// The class record; the same for all instances.
    virtual CParentElementInfo* GetClassInfo() const = 0;
    /// Null-terminated array of the child element records, in schema order.
    virtual CElementInfo** GetClassElementInfo() const = 0;
    /// Null-terminated array of the attribute records.
    virtual CAttributeInfo** GetClassAttributeInfo() const = 0;
    /// Puts the object back into its freshly constructed state; called at the start of every read. Left out
    /// only for objects that the library has just had made, if the class record declares that they are in
    /// that state (`CParentElementInfo::DeclareNewIsAsInit`).
    virtual void Init() = 0;
    /// Optional, for speed: a bit for every property index below 64; a clear one promises that reading the
    /// property now would leave the value invalid. Objects of which most members are not set are written
    /// faster with it. Here every bit is set.
    virtual std::uint64_t GetUsedProperties() const;

    // --- for generated code -------------------------------------------------------------------------------

    using CXmlObjectBase::AttributesToXml_Int;
    using CXmlObjectBase::FromXml_Int;
    using CXmlObjectBase::ToXml_Int;

    void ReadProperty(int propertyIndex, KvVariant& value) const {
        const_cast<CXmlGeneratedClass*>(this)->AccessProperty(propertyIndex, true, value);
    }
    /// Number of element records.
    int GetClassElementInfoCount() const;
    /// True when any element record of the class claims the element.
    bool IsElementInList(const CSerializationContext& context, const CXmlElement* element) const;
    /// Destroys the three tables of a class and sets the pointers to null; the array storage itself belongs
    /// to the generated code. Does nothing for null pointers. Call while holding `m_csInit` and while no
    /// object of the class is being read or written.
    static void CleanMetaData(CParentElementInfo*& classInfo, CElementInfo**& elementInfo,
                              CAttributeInfo**& attributeInfo);

    void ProcessAttributesFromXml(const CSerializationContext& context, CXmlElement* element,
                                  bool failIfAttributeUnknown);
    CXmlElement* ProcessElementSeqFromXml(const CSerializationContext& context, CXmlElement* parent,
                                          CXmlElement* cursor, XmlElementType type);
    CXmlElement* ProcessElementChoiceFromXml(const CSerializationContext& context, CXmlElement* parent,
                                             CXmlElement* cursor, XmlElementType type,
                                             bool suppressChoiceError);
    CXmlElement* ProcessElementAllFromXml(const CSerializationContext& context, CXmlElement* parent,
                                          CXmlElement* cursor, XmlElementType type);
    /// A choice of this class may have no member at all: one of its members is optional, or a collection
    /// that may be empty.
    bool DoesElementContainOptionalElements() const;
    void ProcessAttributesToXml(const CSerializationContext& context, CElementInfo** elementInfo,
                                CAttributeInfo** attributeInfo, CXmlWriter* writer) const;
    void ProcessElementSeqToXml(const CSerializationContext& context, CElementInfo** elementInfo,
                                CXmlWriter* writer) const;
    /// Writes the first member that is there.
    void ProcessElementChoiceToXml(const CSerializationContext& context, CElementInfo** elementInfo,
                                   CXmlWriter* writer, bool suppressChoiceError) const;
    /// An all-group is written in schema order, like a sequence.
    void ProcessElementAllToXml(const CSerializationContext& context, CElementInfo** elementInfo,
                                CXmlWriter* writer) const {
        ProcessElementSeqToXml(context, elementInfo, writer);
    }

    /// Held by generated code while it builds the metadata tables of a class.
    static CKVCriticalSection m_csInit;

private:
    friend class KvXmlLib16Data::CAttributeInfo;
    friend class KvXmlLib16Data::CElementInfo;
    friend class internal::CEntryPoints;
    friend class internal::CObjectGraph;
    friend class internal::CMemberAccess;
    friend class internal::CSubstitution;
    friend class internal::CTableAccess;
    friend class internal::CWriteFailure;

    class RecordOfferer;
    class SequenceReader;

    bool IsNillableClass(const CParentElementInfo& record) const;
    /// Whether members of the class may have no tag of their own.
    bool HasTaglessMembers() const;
    /// The object's element name, or while it has none, that of its class.
    std::string_view EffectiveElementName() const;
    void ReadContent(CXmlElement* element, CXmlElement*& cursor, const CSerializationContext& context,
                     bool suppressChoiceError);
    /// Reads the members; returns the first child that none of them took.
    CXmlElement* ReadGroup(CXmlElement* element, CXmlElement* cursor, const CSerializationContext& context,
                           bool suppressChoiceError);
    void ReadSimpleContent(const CXmlElement& element);
    /// Content without a tag of its own that is incomplete; `at` is where it could not go on.
    void SetIncompleteAt(const CXmlElement* parent, const CXmlElement* at) noexcept;
    void WriteContent(CXmlWriter* writer, bool isRoot, const char* namespaceUri,
                      const CSerializationContext& context, bool suppressChoiceError) const;
    /// The start tag, and before the document element and in it what the context adds.
    void WriteStart(CXmlWriter* writer, bool isRoot, std::string_view name, std::string_view namespaceUri,
                    const CSerializationContext& context) const;
    /// In the document element, after its attributes. Returns what is to be written as content; empty: none.
    static std::string_view WriteInLineSchema(CXmlWriter* writer, const CSerializationContext& context);
    void CheckNoneRemains(const CSerializationContext& context, const CXmlElement& parent,
                          CXmlElement*& cursor) const;
    void WriteAdditionalAttributes(const CAttributeCol& attributes, CXmlWriter* writer,
                                   const CSerializationContext& context) const;
    bool IsWrittenNil() const;
    void ReadNilAttribute(const CXmlElement& element, const CXmlAttribute& attribute);
    /// False when the record has nothing to write: `used` as GetUsedProperties returns it.
    static bool IsUsed(std::uint64_t used, const CElementInfo& record) noexcept;
    /// Index, from `from` on, of the first record that claims the element; `count` when none does.
    static int FindElementRecord(const CSerializationContext& context, const CXmlElement& element, int from,
                                 CElementInfo** records, int count, std::uint64_t key);
};

}  // namespace KvXmlLib16
