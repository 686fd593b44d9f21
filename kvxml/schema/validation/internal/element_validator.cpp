#include "kvxml/schema/validation/internal/element_validator.h"

#include <algorithm>
#include <utility>

#include "kvxml/schema/constraints/internal/schema_constraints.h"

namespace KvXmlLib16::internal {

namespace {

using Content = CComplexTypeDefinition::ContentKind;

constexpr std::size_t kMostExpected = 8;

bool IsBlank(std::string_view text) noexcept {
    for (const char c : text) {
        if (c != ' ' && c != '\n' && c != '\t' && c != '\r') return false;
    }
    return true;
}

std::string Joined(const std::vector<std::string>& names) {
    std::string text;
    for (std::size_t i = 0; i < names.size() && i < kMostExpected; ++i)
        text += (i == 0 ? "" : ", ") + names[i];
    return names.size() > kMostExpected ? text + ", ..." : text;
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
    : m_schema(std::move(schema)), m_tables(CTypeTables::Of(*m_schema)), m_identity(*this) {}

void CElementValidator::Begin(const IDocumentPlace& place, CFaultList& report, bool ignoresNamespaces) {
    m_place = &place;
    m_report = &report;
    m_ignoresNamespaces = ignoresNamespaces;
    m_depth = 0;
    m_identity.Clear();
    m_ids.clear();
    m_idrefs.clear();
}

void CElementValidator::Fault(std::string message, const char* constraint, std::string_view attribute) {
    FaultAt(m_place->GetMark(), std::move(message), constraint, attribute);
}

void CElementValidator::FaultAt(std::uint64_t mark, std::string message, const char* constraint,
                                std::string_view attribute) {
    CFault fault;
    m_place->Locate(mark, fault);
    fault.path = m_place->GetPath();
    if (!attribute.empty()) fault.path.append("/@").append(attribute);
    fault.message = std::move(message);
    fault.constraint = constraint;
    m_report->Add(std::move(fault));
}

void CElementValidator::ReportIdentity(std::string message, const char* constraint,
                                       const CIdentityPlace* place) {
    if (place == nullptr) return Fault(std::move(message), constraint);
    CFault fault;
    m_place->Locate(m_place->GetMark(), fault);  // for the file
    fault.line = place->line;
    fault.column = place->column;
    fault.path = place->path;
    fault.message = std::move(message);
    fault.constraint = constraint;
    m_report->Add(std::move(fault));
}

CIdentityPlace CElementValidator::Here(bool withPath) const {
    CFault place;
    m_place->Locate(m_place->GetMark(), place);
    return {place.line, place.column, withPath ? m_place->GetPath() : std::string()};
}

const CElementDeclaration* CElementValidator::GetElementDeclaration() const noexcept {
    return m_depth == 0 ? nullptr : m_frames[m_depth - 1]->declaration;
}

const CTypeDefinition* CElementValidator::GetTypeDefinition() const noexcept {
    return m_depth == 0 ? nullptr : m_frames[m_depth - 1]->type;
}

/// Of the innermost element.
std::string CElementValidator::Name() const {
    return Bracket(m_frames[m_depth - 1]->name->localName);
}

CElementValidator::Frame& CElementValidator::Push(const CDocumentName& name) {
    if (m_frames.size() == m_depth) m_frames.push_back(std::make_unique<Frame>());
    Frame& frame = *m_frames[m_depth++];
    frame.name = &name;
    frame.declaration = nullptr;
    frame.type = nullptr;
    frame.complex = nullptr;
    frame.simple = nullptr;
    frame.table = nullptr;
    frame.textUse = TextUse::None;
    frame.isSkipped = frame.isNil = frame.lacksNil = frame.isRefused = false;
    frame.strangers = 0;
    frame.missed.clear();
    frame.hasChildren = frame.hasCharacters = frame.hasTextFault = false;
    frame.text.clear();
    return frame;
}

// --- which declaration -------------------------------------------------------------------------------------

void CElementValidator::Start(const CDocumentName& name, const CDocumentAttribute* attributes,
                              std::size_t count, std::uint64_t mark) {
    m_name = &name;
    m_attributes = attributes;
    m_attributeCount = count;
    Frame& frame = Push(name);
    frame.mark = mark;
    FindInstanceAttributes();
    if (m_depth == 1) {
        StartRoot(frame);
    } else {
        StartIn(*m_frames[m_depth - 2], frame);
    }
    if (!frame.isSkipped) Judge(frame);
    if (frame.isSkipped && m_identity.IsIdle()) return;
    const CElementDeclaration* const declaration = frame.isSkipped ? nullptr : frame.declaration;
    if (!m_identity.IsIdle() || (declaration != nullptr && !declaration->identityConstraints.empty())) {
        m_identity.Start(declaration, name.namespaceUri, name.localName, static_cast<std::uint32_t>(m_depth));
    }
    if (frame.isSkipped) return;
    SetTextUse(frame);
    if (m_attributeCount != 0 || (frame.table != nullptr && !frame.table->uses.empty()))
        CheckAttributes(frame);
}

/// The number of a name of the instance namespace; 0 for others.
std::uint32_t CElementValidator::InstanceNumber(const CDocumentName& name) const {
    std::uint32_t number = 0;
    if (!m_ignoresNamespaces) {
        number = m_tables.NumberOf(name);
    } else if (const auto& alike = m_tables.AlikeOf(name); alike.size() == 1) {
        number = alike.front();
    }
    return number <= CTypeTables::kXsiNoNamespaceSchemaLocation ? number : 0;
}

void CElementValidator::FindInstanceAttributes() {
    m_instance = {};
    for (std::size_t i = 0; i < m_attributeCount; ++i) {
        const std::uint32_t number = InstanceNumber(*m_attributes[i].name);
        if (number == CTypeTables::kXsiType) m_instance.type = &m_attributes[i];
        if (number == CTypeTables::kXsiNil) m_instance.nil = &m_attributes[i];
    }
}

/// The global declaration of the element that starts.
const CElementDeclaration* CElementValidator::FindElement() const {
    if (!m_ignoresNamespaces) return m_tables.FindElement(m_tables.NumberOf(*m_name));
    for (const std::uint32_t number : m_tables.AlikeOf(*m_name)) {
        if (const CElementDeclaration* found = m_tables.FindElement(number)) return found;
    }
    return nullptr;
}

void CElementValidator::StartRoot(Frame& frame) {
    frame.declaration = FindElement();
    if (frame.declaration != nullptr || m_instance.type != nullptr) return;
    const CExpandedName name{m_name->namespaceUri, m_name->localName};
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

/// The step of the content model that the element that starts makes.
CMatch CElementValidator::Match(const CContentModel& model, CContentModel::State& state,
                                bool recovers) const {
    if (!m_ignoresNamespaces && !recovers)
        return model.Next(state, m_tables.NumberOf(*m_name), m_name->namespaceUri);
    const auto step = [&](std::uint32_t number, std::string_view uri) {
        return recovers ? model.Recover(state, number, uri) : model.Next(state, number, uri);
    };
    if (!m_ignoresNamespaces) return step(m_tables.NumberOf(*m_name), m_name->namespaceUri);
    const std::vector<std::uint32_t>& alike = m_tables.AlikeOf(*m_name);
    for (const std::uint32_t number : alike) {
        if (const CMatch match = step(number, m_tables.NamespaceOf(number))) return match;
    }
    return alike.empty() ? step(0, m_name->namespaceUri) : CMatch();
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
    const CContentModel& model = *parent.table->content;
    const CMatch match = Match(model, parent.state, false);
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
    frame.declaration = FindElement();
    if (frame.declaration != nullptr || wildcard.processContents == Process::Lax) return;
    if (m_instance.type != nullptr) return;
    Fault("The element " + Name() + " is admitted by a strict wildcard, but has no declaration.",
          "cvc-complex-type.2.4");
}

/// A child that does not fit, judged by what it probably is. One mistake is told once: after a child that the
/// content does not have, what should have stood there is not missed; and after one that came too early, what
/// should have stood before it may follow.
void CElementValidator::Refuse(Frame& parent, Frame& frame, const CContentModel& model) {
    const CExpandedName name{m_name->namespaceUri, m_name->localName};
    const auto late = std::find(parent.missed.begin(), parent.missed.end(), Name());
    if (late != parent.missed.end()) {
        parent.missed.erase(late);
        frame.declaration = model.Find(name.namespaceUri, name.localName);
        frame.isSkipped = frame.declaration == nullptr;
        return;
    }
    std::vector<std::string> expected =
        model.Expected(parent.state, kMostExpected + 1, m_ignoresNamespaces ? nullptr : &name.namespaceUri);
    const CMatch match = Match(model, parent.state, true);
    if (match.element != nullptr && parent.strangers > 0) {
        --parent.strangers;
    } else {
        std::string message = "The element " + Described(name) + " is not allowed here";
        message += expected.empty() ? "; nothing more is." : "; expected: " + Joined(expected) + ".";
        Fault(std::move(message), "cvc-complex-type.2.4");
    }
    if (match.element != nullptr) {
        frame.declaration = match.element;
        parent.missed = std::move(expected);
        return;
    }
    ++parent.strangers;
    frame.declaration = FindElement();
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
    if (m_instance.type != nullptr) {
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
        frame.simple = frame.complex->contentKind == Content::Simple ? frame.complex->simpleContent : nullptr;
    } else {
        frame.simple = frame.type->AsSimple();
    }
    if (m_instance.nil != nullptr) ReadXsiNil(frame);
}

/// After the identity constraints know of the element.
void CElementValidator::SetTextUse(Frame& frame) {
    const bool isFixed =
        frame.declaration != nullptr && frame.declaration->valueConstraint.kind == CValueConstraint::Fixed;
    if (frame.isNil) {
        frame.textUse = TextUse::RefuseNil;
    } else if (frame.simple != nullptr) {
        const bool needsText =
            frame.simple->checker != nullptr && (!frame.simple->checker->AcceptsAnyText() || isFixed ||
                                                 m_identity.WantsValue(static_cast<std::uint32_t>(m_depth)));
        frame.textUse = needsText ? TextUse::Keep : TextUse::None;
    } else if (frame.complex->contentKind == Content::Empty) {
        frame.textUse = TextUse::RefuseEmpty;
    } else if (frame.complex->contentKind == Content::ElementOnly) {
        frame.textUse = TextUse::OnlyBlanks;
    } else {
        // Whether there are any decides on a default.
        const bool hasConstraint =
            frame.declaration != nullptr && frame.declaration->valueConstraint.kind != CValueConstraint::None;
        frame.textUse = isFixed ? TextUse::Keep : hasConstraint ? TextUse::Note : TextUse::None;
    }
}

const CTypeDefinition* CElementValidator::ReadXsiType(const CElementDeclaration* declaration,
                                                      const CTypeDefinition* declared) {
    const std::string_view text = m_instance.type->value;
    CCheckedValue value;
    std::string error;
    const CSimpleTypeDefinition& qname = m_schema->GetBuiltInType(BuiltInType::QName);
    if (!qname.checker->Check(text, m_place, &value, &error, nullptr)) {
        Fault(std::move(error), "cvc-elt.4.1", "xsi:type");
        return nullptr;
    }
    const std::string_view name = value.normalized;
    const std::size_t colon = name.find(':');
    std::string_view uri;
    m_place->Resolve(colon == std::string_view::npos ? std::string_view() : name.substr(0, colon), uri);
    const std::string_view local = colon == std::string_view::npos ? name : name.substr(colon + 1);
    const CTypeDefinition* type = m_schema->FindType(uri, local);
    if (type == nullptr && m_ignoresNamespaces) {
        const auto isAlike = [&](const CTypeDefinition* one) { return one->name.localName == local; };
        const auto found = std::find_if(m_schema->GetTypes().begin(), m_schema->GetTypes().end(), isAlike);
        if (found != m_schema->GetTypes().end()) type = *found;
    }
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
    const std::string_view raw = m_instance.nil->value;
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

// --- content -----------------------------------------------------------------------------------------------

void CElementValidator::Text(std::string_view text, bool isWhole) {
    if (m_depth == 0) return;
    Frame& frame = *m_frames[m_depth - 1];
    frame.hasCharacters = true;
    const char* why = nullptr;
    const char* constraint = nullptr;
    switch (frame.textUse) {
        case TextUse::None:
        case TextUse::Note:
            return;
        case TextUse::Keep:
            frame.text += text;
            return;
        case TextUse::OnlyBlanks:
            if (IsBlank(text)) return;
            why = " may have elements, but no text.";
            constraint = "cvc-complex-type.2.3";
            break;
        case TextUse::RefuseNil:
            why = " is nil and may not have text.";
            constraint = "cvc-elt.3.2.1";
            break;
        case TextUse::RefuseEmpty:
            why = " must be empty and may not have text.";
            constraint = "cvc-complex-type.2.1";
            break;
    }
    if (frame.hasTextFault) return;
    frame.hasTextFault = true;
    FaultAt(isWhole ? frame.mark : m_place->GetMark(),
            "The element " + Bracket(LastName(m_place->GetPath())) + why, constraint);
}

bool CElementValidator::IsAbsentNull(const CDocumentName& name) {
    if (m_depth == 0) return false;
    const Frame& parent = *m_frames[m_depth - 1];
    if (parent.isSkipped || parent.isNil || parent.table == nullptr || parent.table->content == nullptr)
        return false;
    m_name = &name;
    CContentModel::State state = parent.state;
    const CMatch match = Match(*parent.table->content, state, false);
    return match.element != nullptr && !match.element->isNillable;
}

void CElementValidator::Null() {
    Frame& frame = *m_frames[m_depth - 1];
    if (frame.declaration != nullptr && frame.declaration->isNillable) frame.isNil = true;
}

void CElementValidator::EndElement() {
    Frame& frame = *m_frames[m_depth - 1];
    const std::string* key = nullptr;
    if (!frame.isSkipped) EndContent(frame, key);
    if (!m_identity.IsIdle()) {
        m_identity.End(static_cast<std::uint32_t>(m_depth), key, frame.simple != nullptr,
                       frame.declaration != nullptr && frame.declaration->isNillable, frame.isRefused);
    }
    --m_depth;
}

void CElementValidator::EndContent(Frame& frame, const std::string*& key) {
    if (frame.isNil) return;
    if (frame.simple != nullptr) {
        if (frame.textUse == TextUse::Keep) CheckSimpleContent(frame, key);
        return;
    }
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
        FaultAt(frame.mark,
                "The element " + Name() + " must have the value " +
                    Bracket(frame.declaration->valueConstraint.text) + ".",
                "cvc-elt.5.2.2.2.1");
    }
}

void CElementValidator::CheckSimpleContent(Frame& frame, const std::string*& key) {
    const CSimpleTypeDefinition& type = *frame.simple;
    if (frame.hasChildren) return;
    const CValueConstraint* const constraint =
        frame.declaration == nullptr ? nullptr : &frame.declaration->valueConstraint;
    const bool hasConstraint = constraint != nullptr && constraint->kind != CValueConstraint::None;
    const bool isDefaulted = hasConstraint && !frame.hasCharacters;
    const bool isFixed = hasConstraint && constraint->kind == CValueConstraint::Fixed;
    const bool wantsKey = isFixed || m_identity.WantsValue(static_cast<std::uint32_t>(m_depth));
    const bool needsValue = wantsKey || type.checker->MayHaveReferences();
    const CVectorScope constraintScope(hasConstraint ? constraint->scope : nullptr);
    const IPrefixScope* const scope =
        isDefaulted ? static_cast<const IPrefixScope*>(&constraintScope) : m_place;
    const std::string_view text = isDefaulted ? constraint->text : std::string_view(frame.text);
    std::string error;
    const char* rule = nullptr;
    if (!type.checker->Check(text, scope, needsValue ? &m_value : nullptr, &error, &rule)) {
        frame.isRefused = true;
        if (!(frame.lacksNil && frame.text.empty()))
            FaultAt(frame.mark, "The element " + Name() + " is not valid: " + error, rule);
        return;
    }
    if (!needsValue) return;
    TakeReferences(m_value);
    key = &m_value.key;
    if (!isFixed || isDefaulted) return;
    const std::string* const fixed = m_tables.GetFixedKey(*frame.declaration, type);
    if (fixed == nullptr || *fixed != m_value.key) {
        FaultAt(frame.mark,
                "The element " + Name() + " must have the value " + Bracket(constraint->text) + ".",
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
        fault.file = m_file;
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
