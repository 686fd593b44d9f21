#include "kvxml/schema/validation/internal/element_validator.h"

#include <algorithm>
#include <utility>

#include "kvxml/base/internal/namespace_uris.h"
#include "kvxml/schema/constraints/internal/schema_constraints.h"
#include "kvxml/xml/xml_reader.h"

namespace KvXmlLib16::internal {

namespace {

using Content = CComplexTypeDefinition::ContentKind;

constexpr std::size_t kMostExpected = 8;

bool IsBlank(std::string_view text) noexcept {
    return text.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

std::string Bracket(std::string_view text) {
    return "[" + std::string(text) + "]";
}

std::string Joined(const std::vector<std::string>& names) {
    std::string text;
    for (std::size_t i = 0; i < names.size() && i < kMostExpected; ++i)
        text += (i == 0 ? "" : ", ") + names[i];
    return names.size() > kMostExpected ? text + ", ..." : text;
}

std::string Described(const CExpandedName& name) {
    return Bracket(name.localName) +
           (name.namespaceUri.empty() ? std::string() : " of the namespace " + Bracket(name.namespaceUri));
}

/// An attribute of the local name, in whatever namespace; null when the type has none.
const CAttributeUse* FindUse(const CComplexTypeDefinition* type, std::string_view localName) {
    if (type == nullptr) return nullptr;
    for (const CAttributeUse* use : type->attributeUses) {
        if (use->attributeDeclaration->name.localName == localName) return use;
    }
    return nullptr;
}

/// The local name of the element at the end of a path.
std::string LastName(const std::string& path) {
    const std::string name = path.substr(path.rfind('/') + 1);
    return name.substr(name.find(':') + 1, name.find('[') - name.find(':') - 1);
}

std::string TypeName(const CTypeDefinition& type) {
    return type.IsAnonymous() ? "of " + Bracket(GetNamePath(type)) : Bracket(type.name.localName);
}

}  // namespace

CElementValidator::CElementValidator(std::shared_ptr<const CSchemaSet> schema)
    : m_schema(std::move(schema)), m_identity(*this) {}

void CElementValidator::Begin(const CXmlReader& reader, CValidationReport& report) {
    m_reader = &reader;
    m_report = &report;
    m_depth = 0;
    m_identity.Clear();
    m_ids.clear();
    m_idrefs.clear();
}

void CElementValidator::Fault(std::string message, const char* constraint, std::string_view attribute) {
    CFault fault;
    fault.file = m_reader->GetFileName();
    fault.line = m_reader->GetLine();
    fault.column = m_reader->GetColumn();
    fault.path = m_reader->GetPath();
    if (!attribute.empty()) fault.path.append("/@").append(attribute);
    fault.message = std::move(message);
    fault.constraint = constraint;
    m_report->Add(std::move(fault));
}

void CElementValidator::ReportIdentity(std::string message, const char* constraint,
                                       const CIdentityPlace* place) {
    if (place == nullptr) return Fault(std::move(message), constraint);
    m_report->Add(
        {m_reader->GetFileName(), place->line, place->column, place->path, std::move(message), constraint});
}

CIdentityPlace CElementValidator::Here(bool withPath) const {
    return {m_reader->GetLine(), m_reader->GetColumn(), withPath ? m_reader->GetPath() : std::string()};
}

bool CElementValidator::Resolve(std::string_view prefix, std::string_view& namespaceUri) const {
    return m_reader->LookupNamespace(prefix, namespaceUri);
}

const CElementDeclaration* CElementValidator::GetElementDeclaration() const noexcept {
    return m_depth == 0 ? nullptr : m_frames[m_depth - 1]->declaration;
}

const CTypeDefinition* CElementValidator::GetTypeDefinition() const noexcept {
    return m_depth == 0 ? nullptr : m_frames[m_depth - 1]->type;
}

std::string CElementValidator::Name() const {
    return Bracket(m_reader->GetLocalName());
}

CElementValidator::Frame& CElementValidator::Push() {
    if (m_frames.size() == m_depth) m_frames.push_back(std::make_unique<Frame>());
    Frame& frame = *m_frames[m_depth++];
    frame.declaration = nullptr;
    frame.type = nullptr;
    frame.complex = nullptr;
    frame.table = nullptr;
    frame.isSkipped = frame.isNil = frame.lacksNil = frame.isRefused = false;
    frame.strangers = 0;
    frame.missed.clear();
    frame.hasChildren = frame.hasCharacters = frame.hasTextFault = false;
    frame.text.clear();
    return frame;
}

void CElementValidator::OnEvent() {
    switch (m_reader->GetEvent()) {
        case XmlEvent::StartElement:
            Start();
            break;
        case XmlEvent::EndElement:
            EndElement();
            break;
        case XmlEvent::Text:
        case XmlEvent::CData:
            Text();
            break;
        default:
            break;
    }
}

// --- which declaration -------------------------------------------------------------------------------------

void CElementValidator::Start() {
    Frame& frame = Push();
    if (m_depth == 1) {
        StartRoot(frame);
    } else {
        StartIn(*m_frames[m_depth - 2], frame);
    }
    if (!frame.isSkipped) Judge(frame);
    if (frame.isSkipped && m_identity.IsIdle()) return;
    const CElementDeclaration* const declaration = frame.isSkipped ? nullptr : frame.declaration;
    if (m_identity.IsIdle() && (declaration == nullptr || declaration->identityConstraints.empty())) {
        if (!frame.isSkipped) CheckAttributes(frame);
        return;
    }
    m_identity.Start(declaration, m_reader->GetNamespaceUri(), m_reader->GetLocalName(),
                     static_cast<std::uint32_t>(m_depth));
    if (!frame.isSkipped) CheckAttributes(frame);
}

void CElementValidator::StartRoot(Frame& frame) {
    frame.declaration = m_schema->FindElement(m_reader->GetNamespaceUri(), m_reader->GetLocalName());
    if (frame.declaration != nullptr || m_reader->FindAttribute(kInstanceNamespace, "type") != nullptr)
        return;
    const CExpandedName name{m_reader->GetNamespaceUri(), m_reader->GetLocalName()};
    std::string message = "There is no declaration of the element " + Described(name);
    for (const CElementDeclaration* element : m_schema->GetElements()) {
        if (element->name.localName != name.localName) continue;
        message += "; there is one of " + (element->name.namespaceUri.empty()
                                               ? std::string("no namespace")
                                               : "the namespace " + Bracket(element->name.namespaceUri));
        break;
    }
    Fault(message + ".", "cvc-elt.1");
}

void CElementValidator::StartIn(Frame& parent, Frame& frame) {
    if (parent.isSkipped) {
        frame.isSkipped = true;
        return;
    }
    const bool isFirst = !parent.hasChildren;
    parent.hasChildren = true;
    const auto refuseAll = [&](const char* why, const char* constraint) {
        if (isFirst) Fault("The element " + Name() + why, constraint);
        frame.isSkipped = true;
    };
    if (parent.isNil) return refuseAll(" stands in an element that is nil.", "cvc-elt.3.2.1");
    if (parent.type != nullptr && parent.complex == nullptr)
        return refuseAll(" stands in an element of a simple type.", "cvc-type.3.1.2");
    if (parent.complex != nullptr && parent.complex->contentKind == Content::Simple)
        return refuseAll(" stands in an element of simple content.", "cvc-complex-type.2.2");
    if (parent.complex != nullptr && parent.complex->contentKind == Content::Empty)
        return refuseAll(" stands in an element that must be empty.", "cvc-complex-type.2.1");
    const std::string_view uri = m_reader->GetNamespaceUri();
    const std::string_view name = m_reader->GetLocalName();
    const CContentModel& model = *parent.table->content;
    const CMatch match = model.Next(parent.state, uri, name);
    if (!match) return Refuse(parent, frame, model);
    if (match.element != nullptr) {
        frame.declaration = match.element;
    } else {
        StartByWildcard(*match.wildcard, frame);
    }
}

void CElementValidator::StartByWildcard(const CWildcard& wildcard, Frame& frame) {
    using Process = CWildcard::ProcessContents;
    if (wildcard.processContents == Process::Skip) {
        frame.isSkipped = true;
        return;
    }
    frame.declaration = m_schema->FindElement(m_reader->GetNamespaceUri(), m_reader->GetLocalName());
    if (frame.declaration != nullptr || wildcard.processContents == Process::Lax) return;
    if (m_reader->FindAttribute(kInstanceNamespace, "type") != nullptr) return;
    Fault("The element " + Name() + " is admitted by a strict wildcard, but has no declaration.",
          "cvc-complex-type.2.4");
}

/// A child that does not fit, judged by what it probably is. One mistake is told once: after a child that the
/// content does not have, what should have stood there is not missed; and after one that came too early, what
/// should have stood before it may follow.
void CElementValidator::Refuse(Frame& parent, Frame& frame, const CContentModel& model) {
    const std::string_view uri = m_reader->GetNamespaceUri();
    const std::string_view name = m_reader->GetLocalName();
    const auto late = std::find(parent.missed.begin(), parent.missed.end(), Name());
    if (late != parent.missed.end()) {
        parent.missed.erase(late);
        frame.declaration = model.Find(uri, name);
        frame.isSkipped = frame.declaration == nullptr;
        return;
    }
    std::vector<std::string> expected = model.Expected(parent.state, kMostExpected + 1, &uri);
    const CMatch match = model.Recover(parent.state, uri, name);
    if (match.element != nullptr && parent.strangers > 0) {
        --parent.strangers;
    } else {
        std::string message = "The element " + Described({uri, name}) + " is not allowed here";
        message += expected.empty() ? "; nothing more is." : "; expected: " + Joined(expected) + ".";
        Fault(std::move(message), "cvc-complex-type.2.4");
    }
    if (match.element != nullptr) {
        frame.declaration = match.element;
        parent.missed = std::move(expected);
        return;
    }
    ++parent.strangers;
    frame.declaration = m_schema->FindElement(uri, name);
    frame.isSkipped = frame.declaration == nullptr;
}

// --- which type --------------------------------------------------------------------------------------------

void CElementValidator::Judge(Frame& frame) {
    const CElementDeclaration* const declaration = frame.declaration;
    if (declaration != nullptr) {
        frame.type = declaration->typeDefinition;
        if (declaration->isAbstract)
            Fault("The element " + Name() + " is abstract; one of its substitution group must stand here.",
                  "cvc-elt.2");
    }
    if (m_reader->FindAttribute(kInstanceNamespace, "type") != nullptr) {
        if (const CTypeDefinition* type = ReadXsiType(declaration, frame.type)) frame.type = type;
    }
    if (frame.type == nullptr) frame.type = &m_schema->GetAnyType();
    frame.complex = frame.type->AsComplex();
    if (frame.complex != nullptr) {
        if (frame.complex->isAbstract)
            Fault(
                "The type " + TypeName(*frame.type) + " is abstract; xsi:type must name one derived from it.",
                "cvc-type.2");
        frame.table = &m_tables.Get(*frame.complex);
        if (frame.table->content != nullptr) frame.table->content->Start(frame.state);
    }
    if (m_reader->FindAttribute(kInstanceNamespace, "nil") != nullptr) ReadXsiNil(frame);
}

const CTypeDefinition* CElementValidator::ReadXsiType(const CElementDeclaration* declaration,
                                                      const CTypeDefinition* declared) {
    const std::string_view text = m_reader->FindAttribute(kInstanceNamespace, "type")->value;
    CCheckedValue value;
    std::string error;
    const CSimpleTypeDefinition& qname = m_schema->GetBuiltInType(BuiltInType::QName);
    if (!qname.checker->Check(text, this, &value, &error, nullptr)) {
        Fault(std::move(error), "cvc-elt.4.1", "xsi:type");
        return nullptr;
    }
    const std::string_view name = value.normalized;
    const std::size_t colon = name.find(':');
    std::string_view uri;
    Resolve(colon == std::string_view::npos ? std::string_view() : name.substr(0, colon), uri);
    const CTypeDefinition* const type =
        m_schema->FindType(uri, colon == std::string_view::npos ? name : name.substr(colon + 1));
    if (type == nullptr) {
        Fault("There is no type " + Bracket(name) + ".", "cvc-elt.4.2", "xsi:type");
        return nullptr;
    }
    if (declared == nullptr) return type;
    DerivationSet blocked = Derivation_None;
    if (declaration != nullptr) blocked = declaration->disallowedSubstitutions;
    if (const CComplexTypeDefinition* complex = declared->AsComplex())
        blocked |= complex->prohibitedSubstitutions;
    if (IsDerivationOk(*type, *declared, blocked)) return type;
    Fault("The type " + Bracket(name) + " may not stand for the type " + TypeName(*declared) +
              " of the element.",
          "cvc-elt.4.3", "xsi:type");
    return nullptr;
}

void CElementValidator::ReadXsiNil(Frame& frame) {
    const std::string_view raw = m_reader->FindAttribute(kInstanceNamespace, "nil")->value;
    std::string error;
    if (!m_schema->GetBuiltInType(BuiltInType::Boolean)
             .checker->Check(raw, nullptr, &m_value, &error, nullptr)) {
        Fault(std::move(error), "cvc-datatype-valid.1.2.1", "xsi:nil");
        return;
    }
    if (frame.declaration == nullptr) return;
    if (!frame.declaration->isNillable) {
        Fault("The element " + Name() + " may not have xsi:nil.", "cvc-elt.3.1", "xsi:nil");
        frame.lacksNil = true;
        return;
    }
    frame.isNil = m_value.normalized == "true" || m_value.normalized == "1";
    if (frame.isNil && frame.declaration->valueConstraint.kind == CValueConstraint::Fixed)
        Fault("The element " + Name() + " has a fixed value and cannot be nil.", "cvc-elt.3.2.2", "xsi:nil");
}

// --- attributes --------------------------------------------------------------------------------------------

void CElementValidator::CheckAttributes(Frame& frame) {
    std::size_t wildIds = 0;
    if (frame.table != nullptr) m_present.assign(frame.complex->attributeUses.size(), false);
    for (std::size_t i = 0; i < m_reader->GetAttributeCount(); ++i)
        CheckAttribute(frame, m_reader->GetAttributeAt(i), wildIds);
    if (frame.table == nullptr) return;
    for (const std::size_t index : frame.table->required) {
        if (m_present[index]) continue;
        const CAttributeUse& use = *frame.complex->attributeUses[index];
        const CExpandedName& missing = use.attributeDeclaration->name;
        Fault("The element " + Name() + " lacks the attribute " + Described(missing) + ".",
              "cvc-complex-type.4");
        if (m_identity.WantsAttributes())
            m_identity.Attribute(missing.namespaceUri, missing.localName, nullptr);
    }
    if (!frame.table->defaulted.empty()) AddDefaults(frame, m_present);
}

void CElementValidator::CheckAttribute(Frame& frame, const CXmlReaderAttribute& attribute,
                                       std::size_t& wildIds) {
    const bool isInstance = attribute.namespaceUri == kInstanceNamespace;
    const auto isOne = [&](const char* name) { return isInstance && attribute.localName == name; };
    if (frame.table != nullptr) {
        const auto found = frame.table->uses.find({attribute.namespaceUri, attribute.localName});
        if (found != frame.table->uses.end()) {
            const CTypeTable::Use& entry = found->second;
            m_present[entry.index] = true;
            return CheckAttributeValue(*entry.use->attributeDeclaration, attribute,
                                       entry.hasFixedKey ? &entry.fixedKey : nullptr,
                                       entry.use->EffectiveValueConstraint(), nullptr);
        }
    }
    if (isOne("type") || isOne("nil") || isOne("schemaLocation") || isOne("noNamespaceSchemaLocation"))
        return;
    const CWildcard* const wildcard = frame.table == nullptr ? nullptr : frame.complex->attributeWildcard;
    if (wildcard == nullptr || !wildcard->Admits(attribute.namespaceUri)) {
        std::string name(attribute.localName);
        if (!attribute.prefix.empty()) name = std::string(attribute.prefix) + ":" + name;
        std::string message = "The attribute " + Bracket(name) + " is not allowed on the element " + Name();
        if (const CAttributeUse* meant = FindUse(frame.complex, attribute.localName))
            message += "; " + Described(meant->attributeDeclaration->name) +
                       (meant->attributeDeclaration->name.namespaceUri.empty() ? " of no namespace" : "") +
                       " is";
        Fault(message + ".", frame.table == nullptr ? "cvc-type.3.1.1" : "cvc-complex-type.3.2.2", name);
        return;
    }
    if (wildcard->processContents == CWildcard::ProcessContents::Skip) return;
    const CAttributeDeclaration* const declaration =
        m_schema->FindAttribute(attribute.namespaceUri, attribute.localName);
    if (declaration != nullptr) {
        CheckAttributeValue(*declaration, attribute, nullptr, declaration->valueConstraint, &wildIds);
    } else if (wildcard->processContents == CWildcard::ProcessContents::Strict) {
        Fault("The attribute " + Bracket(attribute.localName) +
                  " is admitted by a strict wildcard, but has no declaration.",
              "cvc-complex-type.3.2.2", attribute.localName);
    }
}

void CElementValidator::CheckAttributeValue(const CAttributeDeclaration& declaration,
                                            const CXmlReaderAttribute& attribute, const std::string* fixedKey,
                                            const CValueConstraint& fixed, std::size_t* wildIds) {
    const CSimpleTypeDefinition& type = *declaration.typeDefinition;
    if (type.checker == nullptr) return;
    const bool isFixed = fixed.kind == CValueConstraint::Fixed;
    const bool wantsKey = isFixed || m_identity.WantsAttributes();
    std::string error;
    const char* constraint = nullptr;
    const bool needsValue = wantsKey || type.checker->MayHaveReferences();
    if (!type.checker->Check(attribute.value, this, needsValue ? &m_value : nullptr, &error, &constraint)) {
        Fault("The attribute " + Bracket(attribute.localName) + " is not valid: " + error, constraint,
              attribute.localName);
        if (m_identity.WantsAttributes())
            m_identity.Attribute(attribute.namespaceUri, attribute.localName, nullptr);
        return;
    }
    if (!needsValue) return;
    if (isFixed) {
        std::string own;
        if (fixedKey == nullptr) {
            const CVectorScope scope(fixed.scope);
            CCheckedValue value;
            if (type.checker->Check(fixed.text, &scope, &value, nullptr, nullptr)) own = std::move(value.key);
            fixedKey = &own;
        }
        if (m_value.key != *fixedKey) {
            Fault("The attribute " + Bracket(attribute.localName) + " must have the value " +
                      Bracket(fixed.text) + ", not " + Bracket(m_value.normalized) + ".",
                  "cvc-attribute.4", attribute.localName);
        }
    }
    if (wildIds != nullptr && std::any_of(m_value.references.begin(), m_value.references.end(),
                                          [](const auto& one) { return one.first == BuiltInType::ID; })) {
        if (++*wildIds > 1)
            Fault("The element has two attributes of the type ID.", "cvc-complex-type.5.1",
                  attribute.localName);
    }
    TakeReferences(m_value);
    if (m_identity.WantsAttributes())
        m_identity.Attribute(attribute.namespaceUri, attribute.localName, &m_value.key);
}

/// Absent attributes with a default take part in identity constraints and tables of IDs.
void CElementValidator::AddDefaults(Frame& frame, const std::vector<bool>& present) {
    for (const std::size_t index : frame.table->defaulted) {
        if (present[index]) continue;
        const CAttributeUse& use = *frame.complex->attributeUses[index];
        const CSimpleTypeDefinition& type = *use.attributeDeclaration->typeDefinition;
        if (type.checker == nullptr || !(m_identity.WantsAttributes() || type.checker->MayHaveReferences()))
            continue;
        const CValueConstraint& constraint = use.EffectiveValueConstraint();
        const CVectorScope scope(constraint.scope);
        if (!type.checker->Check(constraint.text, &scope, &m_value, nullptr, nullptr)) continue;
        TakeReferences(m_value);
        const CExpandedName& name = use.attributeDeclaration->name;
        if (m_identity.WantsAttributes())
            m_identity.Attribute(name.namespaceUri, name.localName, &m_value.key);
    }
}

void CElementValidator::TakeReferences(const CCheckedValue& value) {
    for (const auto& [kind, text] : value.references) {
        if (kind == BuiltInType::ID) {
            const auto [found, isNew] = m_ids.emplace(std::string(text), true);
            if (!isNew) Fault("The ID " + Bracket(text) + " stands there twice.", "cvc-id.2");
            m_idrefs.erase(found->first);
        } else if (kind == BuiltInType::IDREF && m_ids.count(std::string(text)) == 0) {
            const auto [reference, isNew] = m_idrefs.emplace(std::string(text), Reference());
            if (isNew) reference->second = {m_reader->GetLine(), m_reader->GetColumn(), m_reader->GetPath()};
        }
    }
}

// --- content -----------------------------------------------------------------------------------------------

void CElementValidator::Text() {
    if (m_depth == 0) return;
    Frame& frame = *m_frames[m_depth - 1];
    if (frame.isSkipped) return;
    const std::string_view text = m_reader->GetText();
    if (text.empty()) return;
    frame.hasCharacters = true;
    const auto refuse = [&](const char* why, const char* constraint) {
        if (!frame.hasTextFault)
            Fault("The element " + Bracket(LastName(m_reader->GetPath())) + why, constraint);
        frame.hasTextFault = true;
    };
    if (frame.isNil) return refuse(" is nil and may not have text.", "cvc-elt.3.2.1");
    if (frame.complex == nullptr || frame.complex->contentKind == Content::Simple) {
        frame.text += text;
        return;
    }
    switch (frame.complex->contentKind) {
        case Content::Empty:
            return refuse(" must be empty and may not have text.", "cvc-complex-type.2.1");
        case Content::ElementOnly:
            if (!IsBlank(text)) refuse(" may have elements, but no text.", "cvc-complex-type.2.3");
            break;
        default:
            if (frame.declaration != nullptr &&
                frame.declaration->valueConstraint.kind == CValueConstraint::Fixed)
                frame.text += text;
    }
}

void CElementValidator::EndElement() {
    Frame& frame = *m_frames[m_depth - 1];
    const std::string* key = nullptr;
    if (!frame.isSkipped) EndContent(frame, key);
    if (!m_identity.IsIdle()) {
        const bool hasSimpleType = frame.type != nullptr && (frame.complex == nullptr ||
                                                             frame.complex->contentKind == Content::Simple);
        m_identity.End(static_cast<std::uint32_t>(m_depth), key, hasSimpleType,
                       frame.declaration != nullptr && frame.declaration->isNillable, frame.isRefused);
    }
    --m_depth;
}

void CElementValidator::EndContent(Frame& frame, const std::string*& key) {
    if (frame.isNil) return;
    if (frame.complex == nullptr) return CheckSimpleContent(frame, *frame.type->AsSimple(), key);
    if (frame.complex->contentKind == Content::Simple)
        return CheckSimpleContent(frame, *frame.complex->simpleContent, key);
    if (frame.table->content == nullptr) return;
    const bool isEmpty = !frame.hasChildren && !frame.hasCharacters;
    const bool hasConstraint =
        frame.declaration != nullptr && frame.declaration->valueConstraint.kind != CValueConstraint::None;
    if (isEmpty && frame.lacksNil) return;
    if (isEmpty && hasConstraint) return;  // the value of the constraint stands for it
    if (frame.strangers == 0 && !frame.table->content->MayEnd(frame.state)) {
        const auto expected = frame.table->content->Expected(frame.state, kMostExpected + 1);
        Fault("The element " + Name() +
                  (expected.empty()
                       ? " is not complete, and nothing can complete it: its type has a choice of nothing."
                       : " is not complete; expected: " + Joined(expected) + "."),
              "cvc-complex-type.2.4");
    }
    if (hasConstraint && frame.declaration->valueConstraint.kind == CValueConstraint::Fixed)
        CheckFixedMixed(frame);
}

void CElementValidator::CheckFixedMixed(Frame& frame) {
    if (frame.hasChildren) {
        Fault("The element " + Name() + " has a fixed value and may not have elements.", "cvc-elt.5.2.2.1");
    } else if (frame.text != frame.declaration->valueConstraint.text) {
        Fault("The element " + Name() + " must have the value " +
                  Bracket(frame.declaration->valueConstraint.text) + ".",
              "cvc-elt.5.2.2.2.1");
    }
}

void CElementValidator::CheckSimpleContent(Frame& frame, const CSimpleTypeDefinition& type,
                                           const std::string*& key) {
    if (type.checker == nullptr || frame.hasChildren) return;
    const CValueConstraint* const constraint =
        frame.declaration == nullptr ? nullptr : &frame.declaration->valueConstraint;
    const bool hasConstraint = constraint != nullptr && constraint->kind != CValueConstraint::None;
    const bool isDefaulted = hasConstraint && !frame.hasCharacters;
    const bool isFixed = hasConstraint && constraint->kind == CValueConstraint::Fixed;
    const bool wantsKey = isFixed || m_identity.WantsValue(static_cast<std::uint32_t>(m_depth));
    const bool needsValue = wantsKey || type.checker->MayHaveReferences();
    const CVectorScope constraintScope(hasConstraint ? constraint->scope : nullptr);
    const IPrefixScope* const scope = isDefaulted ? static_cast<const IPrefixScope*>(&constraintScope) : this;
    const std::string_view text = isDefaulted ? constraint->text : std::string_view(frame.text);
    std::string error;
    const char* rule = nullptr;
    if (!type.checker->Check(text, scope, needsValue ? &m_value : nullptr, &error, &rule)) {
        frame.isRefused = true;
        if (!(frame.lacksNil && frame.text.empty()))
            Fault("The element " + Name() + " is not valid: " + error, rule);
        return;
    }
    if (!needsValue) return;
    TakeReferences(m_value);
    key = &m_value.key;
    if (!isFixed || isDefaulted) return;
    const std::string* const fixed = m_tables.GetFixedKey(*frame.declaration, type);
    if (fixed == nullptr || *fixed != m_value.key) {
        Fault("The element " + Name() + " must have the value " + Bracket(constraint->text) + ".",
              "cvc-elt.5.2.2.2.2");
    }
}

void CElementValidator::End() {
    std::vector<std::pair<std::string, Reference>> open(m_idrefs.begin(), m_idrefs.end());
    std::sort(open.begin(), open.end(), [](const auto& a, const auto& b) {
        return std::pair(a.second.line, a.second.column) < std::pair(b.second.line, b.second.column);
    });
    for (const auto& [name, reference] : open) {
        CFault fault;
        fault.file = m_reader->GetFileName();
        fault.line = reference.line;
        fault.column = reference.column;
        fault.path = reference.path;
        fault.message = "There is no element with the ID " + Bracket(name) + ".";
        fault.constraint = "cvc-id.1";
        m_report->Add(std::move(fault));
    }
    m_idrefs.clear();
}

}  // namespace KvXmlLib16::internal
