#include "kvxml/objects/element.h"

#include <utility>
#include <vector>

#include "kvxml/base/exceptions.h"
#include "kvxml/base/internal/c_text.h"
#include "kvxml/base/internal/namespace_uris.h"
#include "kvxml/objects/internal/attribute_names.h"
#include "kvxml/types/format_string.h"
#include "kvxml/xml/internal/failed_path.h"
#include "kvxml/xml/internal/prefix_list.h"
#include "kvxml/xml/internal/tree_output.h"
#include "kvxml/xml/internal/xml_name_check.h"
#include "kvxml/xml/xml_element.h"

namespace KvXmlLib16 {

using internal::CSharedName;
using internal::CTreeOutput;
using internal::OrEmpty;

namespace {

const std::string kEmpty;

void RequireName(const char* name, bool allowColon) {
    if (!internal::IsXmlName(OrEmpty(name), allowColon))
        throw CKvInvalidParamException(FormatString("[%s] is not a valid XML name.", OrEmpty(name)));
}

[[noreturn]] void ThrowInvalidNamespace(std::string_view ns) {
    throw CKvInvalidNamespaceException(FormatString("Invalid Namespace [%s].", std::string(ns).c_str()),
                                       std::string());
}

}  // namespace

// --- CElement ----------------------------------------------------------------------------------------------

CElement::CElement() = default;

CElement::CElement(const char* name, const char* ns, const char* value)
    : m_namespace(OrEmpty(ns)), m_hasNamespace(ns != nullptr), m_value(OrEmpty(value)) {
    SetName(name);
}

CElement::CElement(CElement&&) noexcept = default;
CElement& CElement::operator=(CElement&&) noexcept = default;
CElement::~CElement() = default;

void CElement::SetName(const char* name) {
    if (*OrEmpty(name) == '\0')
        throw CKvInvalidNamespaceException("Element Name must have a value", std::string());
    RequireName(name, true);
    SetElementName(name);
}

void CElement::SetNamespace(const char* ns) {
    m_namespace = CSharedName(OrEmpty(ns));
    m_hasNamespace = ns != nullptr;
}

void CElement::SetPrefix(const char* prefix) {
    if (*OrEmpty(prefix) != '\0') RequireName(prefix, false);
    m_prefix = CSharedName(OrEmpty(prefix));
}

CSmartPtr<CAttributeCol> CElement::GetAttributes() {
    if (m_attributes == nullptr) m_attributes = new CAttributeCol();
    return m_attributes;
}

bool CElement::HasAttribute(std::string_view name, std::string_view ns) const noexcept {
    return m_attributes != nullptr && m_attributes->Find(name, ns) != nullptr;
}

const std::string& CElement::GetAttribute(std::string_view name, std::string_view ns) const noexcept {
    const CSmartPtr<CAttribute> found = m_attributes == nullptr ? nullptr : m_attributes->Find(name, ns);
    return found == nullptr ? kEmpty : found->GetValue();
}

void CElement::SetAttribute(const char* name, const char* ns, const char* value) {
    GetAttributes()->Set(name, ns, value);
}

bool CElement::RemoveAttribute(std::string_view name, std::string_view ns) {
    return m_attributes != nullptr && m_attributes->Remove(name, ns);
}

CSmartPtr<CElementCol> CElement::GetElements() {
    if (m_elements == nullptr) m_elements = new CElementCol("", "", 0, -1);
    return m_elements;
}

CSmartPtr<CElement> CElement::FindElement(std::string_view name, std::string_view ns) const {
    return m_elements == nullptr ? nullptr : m_elements->Find(name, ns);
}

CSmartPtr<CElement> CElement::AddElement(const char* name, const char* ns, const char* value) {
    return GetElements()->Add(name, ns, value);
}

void CElement::FromObject(const CXmlObjectBase& object, const CSerializationContext& context) {
    FromXmlStream(object.ToXmlStream(true, false, XmlEncoding_UTF8, EOLType_LF, context), context);
}

// --- reading -----------------------------------------------------------------------------------------------

void CElement::Clear() {
    m_documentPrefixes.reset();
    m_value.clear();
    if (m_attributes != nullptr) m_attributes->Clear();
    if (m_elements != nullptr) m_elements->Clear();
}

bool CElement::ReadStart(const CXmlElement& element, bool keepBlanks) {
    const internal::CXmlName& name = *element.GetName();
    internal::ResolveName(name);
    SetElementName(name.shared);
    m_namespace = name.sharedUri;
    m_prefix = name.sharedPrefix;
    m_hasNamespace = true;
    if (!element.GetAttributes().empty()) {
        if (m_attributes == nullptr) m_attributes = new CAttributeCol();
        for (const CXmlAttribute* attribute : element.GetAttributes()) {
            m_attributes->AddFrom(*attribute);
            if (attribute->GetName()->isSpaceAttribute) keepBlanks = internal::IsSpacePreserved(*attribute);
        }
    }
    if (element.GetFirstElement() == nullptr || keepBlanks || !element.IsTextBlank())
        m_value = element.GetTextView();
    return keepBlanks;
}

void CElement::ReadTree(const CXmlElement& element, bool keepBlanks) {
    // A child enters its parent's collection when it is complete, so listeners see it whole.
    struct Open {
        CSmartPtr<CElement> element;  // null for this one
        bool keepsBlanks;
    };
    std::vector<Open> open;
    open.push_back({nullptr, ReadStart(element, keepBlanks)});
    const CXmlElement* at = element.GetFirstElement();
    const auto close = [&] {
        CSmartPtr<CElement> done = std::move(open.back().element);
        open.pop_back();
        CElement& parent = open.back().element == nullptr ? *this : *open.back().element;
        if (parent.m_elements == nullptr) parent.m_elements = new CElementCol("", "", 0, -1);
        parent.m_elements->Append(std::move(done));
    };
    while (at != nullptr) {
        CSmartPtr<CElement> child(new CElement());
        const bool keepsBlanks = child->ReadStart(*at, open.back().keepsBlanks);
        open.push_back({std::move(child), keepsBlanks});
        if (at->GetFirstElement() != nullptr) {
            at = at->GetFirstElement();
            continue;
        }
        close();
        while (at != &element && at->GetNextSiblingElement() == nullptr) {
            at = at->GetParentElm();
            if (at != &element) close();
        }
        at = at == &element ? nullptr : at->GetNextSiblingElement();
    }
}

CXmlElement* CElement::FromXml_Int(CXmlElement* element, CXmlElement*, const CSerializationContext&, bool) {
    Clear();
    ReadTree(*element, false);
    if (element->GetParentElm() == nullptr)
        m_documentPrefixes = std::make_unique<internal::CPrefixList>(*element);
    return nullptr;
}

// --- writing -----------------------------------------------------------------------------------------------

void CElement::WriteStart(CTreeOutput& output, std::string_view ns,
                          const CSerializationContext* rootContext) const {
    if (m_attributes != nullptr && m_attributes->HasBareType()) output.ExpectBareType();
    output.StartElement({GetElementNameText(), GetElementNameView(), ns, m_prefix.View()});
    const CAttributeCol* const additional =
        rootContext == nullptr ? nullptr : rootContext->FindAdditionalRootAttributes();
    if (additional != nullptr) {
        internal::CAttributeNames own;
        if (m_attributes != nullptr) {
            for (const CAttribute* attribute : *m_attributes)
                own.Add(attribute->GetNameView(), attribute->GetNamespaceView());
        }
        additional->Write(output, &own);
    }
    if (m_attributes != nullptr) m_attributes->Write(output, nullptr);
    output.EndAttributes();
    const bool hasChildren = m_elements != nullptr && m_elements->GetCount() > 0;
    const bool keepBlanks = hasChildren && GetAttribute("space", internal::kXmlNamespace) == "preserve";
    if (rootContext != nullptr) output.WriteInLineSchema(!m_value.empty() || keepBlanks);
    output.Text(m_value, hasChildren, keepBlanks);
}

void CElement::WriteTree(CTreeOutput& output, std::string_view ns,
                         const CSerializationContext* rootContext) const {
    struct Open {
        const CElement* element;
        CElementCol::iterator next;
        CElementCol::iterator end;
        std::string_view ns;
        bool inArray = false;

        /// Whether the next child has the name of this one.
        bool IsLikeNext(const CElement& child) const {
            if (next == end) return false;
            const CElement& other = **next;
            return child.GetNameView() == other.GetNameView() &&
                   child.NamespaceIn(ns) == other.NamespaceIn(ns);
        }
    };
    std::vector<Open> open;
    const auto end = [&](const CElement& element) {
        output.EndElement();
        if (output.HasArrays() && !open.empty())
            output.AfterChild(open.back().IsLikeNext(element), open.back().inArray);
    };
    const auto enter = [&](const CElement& element, std::string_view outer,
                           const CSerializationContext* root) {
        const std::string_view own = element.NamespaceIn(outer);
        element.WriteStart(output, own, root);
        if (element.m_elements != nullptr && element.m_elements->GetCount() > 0)
            open.push_back({&element, element.m_elements->begin(), element.m_elements->end(), own});
        else
            end(element);
    };
    const CElement* at = this;
    try {
        enter(*this, ns, rootContext);
        while (!open.empty()) {
            Open& top = open.back();
            if (top.next == top.end) {
                at = top.element;
                open.pop_back();
                end(*at);
                continue;
            }
            at = *top.next;
            ++top.next;
            if (output.HasArrays()) output.BeforeChild(top.IsLikeNext(*at), top.inArray);
            enter(*at, top.ns, nullptr);
        }
    } catch (const CKvException&) {
        auto& steps = output.Writer().FailedPath().steps;
        const auto note = [&steps](const CElement& element, const CElement* parent) {
            const CXmlObjectBase* const base = &element;
            steps.push_back({element.GetName(), {base}});
            if (parent == nullptr) return;
            internal::CFailedPath::Place place{steps.back()};
            for (const CElement* sibling : *parent->m_elements)
                place.Visit(sibling->GetNameView(), {static_cast<const CXmlObjectBase*>(sibling)});
            steps.back().position = place.Result();
        };
        for (auto parent = open.rbegin(); parent != open.rend(); ++parent) {
            if (parent->element != at) note(*at, parent->element);
            at = parent->element;
        }
        note(*at, nullptr);
        throw;
    }
}

void CElement::ToXml_Int(CXmlWriter* writer, bool isRoot, const char* namespaceUri,
                         const CSerializationContext& context, bool) const {
    CTreeOutput output(*writer, context);
    std::string_view outer = OrEmpty(namespaceUri);
    if (isRoot) {
        if (outer.empty()) outer = context.GetDefaultNamespaceURIRef();
        output.BeginDocument(NamespaceIn(outer), m_prefix.View(), m_documentPrefixes.get());
    }
    WriteTree(output, outer, isRoot ? &context : nullptr);
}

// --- CElementCol -------------------------------------------------------------------------------------------

CElementCol::CElementCol(const char* elementName, const char* ns, int minOccurs, int maxOccurs,
                         const char* restriction, const char* targetNamespace)
    : CXmlTypedCollection<CElement>(elementName, ns, minOccurs, maxOccurs),
      m_restriction(OrEmpty(restriction)),
      m_targetNamespace(OrEmpty(targetNamespace)) {
    internal::RequireTargetNamespace(m_restriction.View(), targetNamespace);
}

CElementCol::CElementCol(const CElementCol&) = default;
CElementCol& CElementCol::operator=(const CElementCol&) = default;
CElementCol::CElementCol(CElementCol&&) noexcept = default;
CElementCol& CElementCol::operator=(CElementCol&&) noexcept = default;
CElementCol::~CElementCol() = default;

bool CElementCol::AcceptsNamespace(std::string_view ns) const noexcept {
    const std::string_view restriction = m_restriction.View();
    if (restriction.empty()) return ns == GetItemNamespace();
    return restriction == "##any" || internal::IsNamespaceValid(ns, restriction, m_targetNamespace.View());
}

bool CElementCol::Accepts(const CSerializationContext& context, const CXmlElement& element) const {
    const internal::CXmlName& name = *element.GetName();
    if (!GetElementNameView().empty() && GetElementNameView() != name.local) return false;
    if (m_restriction.IsEmpty()) return context.GetIgnoreNamespaces() || name.uri == GetItemNamespace();
    return AcceptsNamespace(name.uri);
}

void CElementCol::Check(const CElement& element) const {
    if (AcceptsNamespace(element.NamespaceIn(GetItemNamespace()))) return;
    if (element.HasNamespace()) ThrowInvalidNamespace(element.GetNamespaceView());
    throw CKvInvalidStateException("A Namespace has not been set for this Collection");
}

const CSmartPtr<CElement>& CElementCol::Checked(const CSmartPtr<CElement>& element) const {
    if (element != nullptr) Check(*element);
    return element;
}

void CElementCol::Add(const CSmartPtr<CElement>& element) {
    CXmlTypedCollection::Add(Checked(element));
}

CSmartPtr<CElement> CElementCol::Add(const char* name, const char* ns, const char* value) {
    CSmartPtr<CElement> element(new CElement(name, ns, value));
    Add(element);
    return element;
}

void CElementCol::AddAt(int index, const CSmartPtr<CElement>& element) {
    CXmlTypedCollection::AddAt(index, Checked(element));
}

void CElementCol::Prepend(const CSmartPtr<CElement>& element) {
    CXmlTypedCollection::Prepend(Checked(element));
}

void CElementCol::AddAfter(const CElement* existing, const CSmartPtr<CElement>& element) {
    CXmlTypedCollection::AddAfter(existing, Checked(element));
}

void CElementCol::AddBefore(const CElement* existing, const CSmartPtr<CElement>& element) {
    CXmlTypedCollection::AddBefore(existing, Checked(element));
}

CSmartPtr<CElement> CElementCol::Find(std::string_view name, std::string_view ns) const {
    for (CElement* element : *this) {
        if (element->GetNameView() == name && element->GetNamespaceView() == ns) return element;
    }
    return nullptr;
}

void CElementCol::ToXml_Int(CXmlWriter* writer, bool, const char*, const CSerializationContext& context,
                            bool) const {
    CTreeOutput output(*writer, context);
    // What was read with namespaces ignored is written so.
    const bool anyNamespace = m_restriction.IsEmpty() && context.GetIgnoreNamespaces();
    for (const CElement* element : *this) {
        if (!anyNamespace && !AcceptsNamespace(element->NamespaceIn(GetItemNamespace()))) {
            writer->FailedPath().steps.push_back(
                {element->GetName(), {static_cast<const CXmlObjectBase*>(element)}});
            Check(*element);
        }
        element->WriteTree(output, GetItemNamespace(), nullptr);
    }
}

CXmlElement* CElementCol::FromXml_Int(CXmlElement*, CXmlElement* cursor, const CSerializationContext& context,
                                      bool) {
    const internal::CXmlName* accepted = nullptr;
    for (; cursor != nullptr; cursor = cursor->GetNextSiblingElement()) {
        if (cursor->GetName() != accepted) {
            if (!Accepts(context, *cursor)) break;
            accepted = cursor->GetName();
        }
        CSmartPtr<CElement> element(new CElement());
        element->ReadTree(*cursor, false);
        AppendItem(element.Get());
    }
    return cursor;
}

}  // namespace KvXmlLib16
