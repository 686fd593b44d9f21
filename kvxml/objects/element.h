/// Untyped elements, for documents without classes and for the wildcards of classes.
///
///     CElement order;
///     order.FromXmlFile("order.xml");
///     for (const CElement* item : *order.GetElements())
///         std::cout << item->GetName() << ": " << item->GetValue() << '\n';
///     order.AddElement("note", nullptr, "checked");
///     order.ToXmlFile("checked.xml");
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "kvxml/base/shared_name.h"
#include "kvxml/export.h"
#include "kvxml/objects/attribute_col.h"
#include "kvxml/objects/xml_collection.h"

namespace KvXmlLib16 {

class CElementCol;

namespace internal {
class CPrefixList;
class CTreeOutput;
}  // namespace internal

/// Name, namespace, attributes, text and child elements of any XML element. As document root it takes every
/// document.
///
/// All text directly inside the element is one value, which is written before the children; blanks between
/// children are dropped unless xml:space="preserve" applies. Comments and processing instructions are not
/// kept. Every attribute is, those for XML Schema instances too. Prefixes are kept where they are free: an
/// element and its attributes remember theirs, and the root of a document read remembers all of the document,
/// which keeps texts that contain prefixes meaningful.
///
/// Reading, writing and destroying take no stack per level. Reading clears the collections and keeps them,
/// with their listeners.
class KVXML_EXPORT CElement : public CXmlObjectBase {
public:
    CElement();
    /// A null `ns`: in the namespace of wherever the element is written; see HasNamespace. Errors of the name
    /// as SetName.
    explicit CElement(const char* name, const char* ns = nullptr, const char* value = nullptr);
    CElement(const CElement&) = delete;
    CElement& operator=(const CElement&) = delete;
    /// Leaves `other` without content. For copies see Clone.
    CElement(CElement&& other) noexcept;
    CElement& operator=(CElement&& other) noexcept;
    ~CElement() override;

    CXmlObjectBase* GetBase() override { return this; }
    std::string GetTargetNamespace() const override { return GetNamespace(); }

    // --- name -----------------------------------------------------------------------------------------
    std::string GetName() const { return GetElementName(); }
    /// The name without a copy; valid until it is changed.
    std::string_view GetNameView() const noexcept { return GetElementNameView(); }
    /// CKvInvalidNamespaceException "Element Name must have a value" for an empty name,
    /// CKvInvalidParamException for one that is no XML name.
    void SetName(const char* name);
    /// Empty for no namespace, and when none was set.
    std::string GetNamespace() const override { return std::string(m_namespace.View()); }
    /// The namespace without a copy; valid until it is changed.
    std::string_view GetNamespaceView() const noexcept { return m_namespace.View(); }
    /// Whether a namespace, or none, was set or read. Otherwise the element is written in the namespace that
    /// its parent has, or that its wildcard gives it.
    bool HasNamespace() const noexcept { return m_hasNamespace; }
    /// Empty: no namespace. Null: as if none had been set.
    void SetNamespace(const char* ns);
    /// The prefix that output uses for the namespace when it has none yet and this one is free; empty: the
    /// namespace becomes the default one.
    std::string GetPrefix() const { return std::string(m_prefix.View()); }
    /// CKvInvalidParamException for a prefix that is not empty and no XML name.
    void SetPrefix(const char* prefix);

    // --- text -----------------------------------------------------------------------------------------
    const std::string& GetValue() const noexcept { return m_value; }
    void SetValue(std::string value) { m_value = std::move(value); }

    // --- attributes -----------------------------------------------------------------------------------
    /// Never null; made on the first call.
    CSmartPtr<CAttributeCol> GetAttributes();
    /// Null when the element has had no attributes and was not asked for them.
    const CAttributeCol* FindAttributes() const noexcept { return m_attributes.Get(); }
    bool HasAttribute(std::string_view name, std::string_view ns = {}) const noexcept;
    /// Value of the attribute; empty when there is none. Valid until the attribute changes.
    const std::string& GetAttribute(std::string_view name, std::string_view ns = {}) const noexcept;
    /// Sets or adds an attribute. CKvInvalidParamException for a name that is no XML name.
    void SetAttribute(const char* name, const char* ns, const char* value);
    /// Returns whether there was one.
    bool RemoveAttribute(std::string_view name, std::string_view ns = {});

    // --- child elements -------------------------------------------------------------------------------
    /// Never null; made on the first call, without restrictions.
    CSmartPtr<CElementCol> GetElements();
    /// Null when the element has had no children and was not asked for them.
    const CElementCol* FindElements() const noexcept { return m_elements.Get(); }
    /// The first child of that name and namespace, or null.
    CSmartPtr<CElement> FindElement(std::string_view name, std::string_view ns) const;
    /// Appends a child and returns it. A null `ns`: the namespace of its parent.
    CSmartPtr<CElement> AddElement(const char* name, const char* ns = nullptr, const char* value = nullptr);

    // --- other objects --------------------------------------------------------------------------------
    /// Becomes what the object writes, as document root.
    void FromObject(const CXmlObjectBase& object, const CSerializationContext& context = DefaultContext());

protected:
    /// Writes the element in its own namespace; in `namespaceUri` when none was set.
    void ToXml_Int(CXmlWriter* writer, bool isRoot, const char* namespaceUri,
                   const CSerializationContext& context, bool suppressChoiceError) const override;
    /// Takes over `element` with all that is in it; returns null, for no child is left.
    CXmlElement* FromXml_Int(CXmlElement* element, CXmlElement* cursor, const CSerializationContext& context,
                             bool suppressChoiceError) override;

private:
    friend class CElementCol;
    friend class internal::CObjectGraph;

    void Clear();
    /// Takes over name, attributes and text. Returns whether blanks in the element, and in what it contains,
    /// count.
    bool ReadStart(const CXmlElement& element, bool keepBlanks);
    void ReadTree(const CXmlElement& element, bool keepBlanks);
    void WriteStart(internal::CTreeOutput& output, std::string_view ns,
                    const CSerializationContext* rootContext) const;
    void WriteTree(internal::CTreeOutput& output, std::string_view ns,
                   const CSerializationContext* rootContext) const;
    /// The namespace in which the element is written where `outer` is that of its surroundings.
    std::string_view NamespaceIn(std::string_view outer) const noexcept {
        return m_hasNamespace ? m_namespace.View() : outer;
    }

    internal::CSharedName m_namespace;
    internal::CSharedName m_prefix;
    bool m_hasNamespace = false;
    std::string m_value;
    CSmartPtr<CAttributeCol> m_attributes;
    CSmartPtr<CElementCol> m_elements;
    std::unique_ptr<internal::CPrefixList> m_documentPrefixes;  // of the document that this was the root of
};

/// Untyped elements in document order, restricted to a name, a namespace, or the namespaces of a wildcard.
/// Adding an element in a namespace that is not admitted throws CKvInvalidNamespaceException "Invalid
/// Namespace [%s].", and so does writing. CKvInvalidStateException "A Namespace has not been set for this
/// Collection" for one that was given no namespace, where the collection's own is not admitted.
class KVXML_EXPORT CElementCol : public CXmlTypedCollection<CElement> {
public:
    /// Empty `elementName`: any name. Empty `restriction`: the elements are in `ns`; otherwise it is a
    /// wildcard's namespace list, in which "##targetNamespace" and "##other" are judged against
    /// `targetNamespace`, and `ns` is where elements without a namespace of their own are written.
    /// `maxOccurs` -1: unbounded. CKvInvalidNamespaceException "Target Namespace must have a value" when the
    /// list needs that namespace and it is null.
    CElementCol(const char* elementName, const char* ns, int minOccurs, int maxOccurs,
                const char* restriction = "##any", const char* targetNamespace = "");
    CElementCol(const CElementCol&);
    CElementCol& operator=(const CElementCol&);
    CElementCol(CElementCol&&) noexcept;
    CElementCol& operator=(CElementCol&&) noexcept;
    ~CElementCol() override;

    /// Whether the element is one that the collection takes when it reads. With a restriction, namespaces
    /// count even if the context ignores them.
    bool Accepts(const CSerializationContext& context, const CXmlElement& element) const;
    /// Whether an element in this namespace can be added.
    bool AcceptsNamespace(std::string_view ns) const noexcept;

    void Add(const CSmartPtr<CElement>& element);
    void push_back(const CSmartPtr<CElement>& element) { Add(element); }
    /// Appends a new element and returns it. A null `ns`: the namespace of the collection.
    CSmartPtr<CElement> Add(const char* name, const char* ns, const char* value);
    void AddAt(int index, const CSmartPtr<CElement>& element);
    void Prepend(const CSmartPtr<CElement>& element);
    void AddAfter(const CElement* existing, const CSmartPtr<CElement>& element);
    void AddBefore(const CElement* existing, const CSmartPtr<CElement>& element);
    /// The first element of that name and namespace, or null.
    CSmartPtr<CElement> Find(std::string_view name, std::string_view ns) const;

    /// For the library: appends an element that was accepted, without asking the restriction.
    void Append(CElement* element) { AppendItem(element); }

protected:
    void ToXml_Int(CXmlWriter* writer, bool isRoot, const char* namespaceUri,
                   const CSerializationContext& context, bool suppressChoiceError) const override;
    /// Reads the run of accepted elements at `cursor`; returns the first other one.
    CXmlElement* FromXml_Int(CXmlElement* element, CXmlElement* cursor, const CSerializationContext& context,
                             bool suppressChoiceError) override;

private:
    friend class CElement;

    void Check(const CElement& element) const;
    const CSmartPtr<CElement>& Checked(const CSmartPtr<CElement>& element) const;

    internal::CSharedName m_restriction;
    internal::CSharedName m_targetNamespace;
};

}  // namespace KvXmlLib16
