#include "kvxml/schema/reader/internal/component_builder.h"

#include <algorithm>

#include "kvxml/base/internal/namespace_uris.h"

namespace KvXmlLib16::internal {

namespace {

std::string Quoted(std::string_view text) {
    return "[" + std::string(text) + "]";
}

std::string PlaceText(const CSourcePlace& place) {
    if (place.document == nullptr) return "XML Schema itself";
    return std::string(place.document->file) + ":" + std::to_string(place.line);
}

const char* WordOf(SchemaTag tag) {
    switch (tag) {
        case SchemaTag::Element:
            return "element";
        case SchemaTag::Attribute:
            return "attribute";
        case SchemaTag::SimpleType:
        case SchemaTag::ComplexType:
            return "type";
        case SchemaTag::Group:
            return "model group";
        case SchemaTag::AttributeGroup:
            return "attribute group";
        case SchemaTag::Notation:
            return "notation";
        default:
            return "component";
    }
}

}  // namespace

CComponentBuilder::CComponentBuilder(CSchemaStore& store, CFaultList& faults)
    : m_store(store), m_faults(faults) {}

void CComponentBuilder::Build(const std::vector<CSchemaSource*>& sources) {
    for (const CSchemaSource* source : sources)
        Declare(*source);
    for (const CSchemaSource* source : sources) {
        for (const auto& [node, target] : source->redefinitions)
            Redefine(*source, *node, *target);
    }
    for (std::size_t i = 0; i < m_globals.size(); ++i)
        Fill(m_globals[i]);
    Complete();
}

// --- faults and names --------------------------------------------------------------------------------------

void CComponentBuilder::FaultAt(const CSourcePlace& place, std::string message, const char* constraint) {
    CFault fault;
    if (place.document != nullptr) fault.file = place.document->file;
    fault.line = place.line;
    fault.column = place.column;
    fault.message = std::move(message);
    fault.constraint = constraint;
    m_faults.Add(std::move(fault));
}

void CComponentBuilder::Fault(At at, std::string message, const char* constraint) {
    FaultAt(Place(at), std::move(message), constraint);
}

void CComponentBuilder::Begin(CComponent& component, At at) {
    component.place = Place(at);
    component.annotation = ReadAnnotation(at);
}

const CAnnotation* CComponentBuilder::ReadAnnotation(At at) {
    const CSchemaNode* const node =
        at.node->tag == SchemaTag::Annotation ? at.node : at.node->Child(SchemaTag::Annotation);
    CAnnotation* annotation = nullptr;
    const auto ensure = [&]() -> CAnnotation& {
        if (annotation == nullptr) {
            annotation = &m_store.MakeAnnotation();
            annotation->place = Place({at.source, node != nullptr ? node : at.node});
        }
        return *annotation;
    };
    const auto takeForeign = [&](const CSchemaNode& from) {
        for (const CSchemaNodeAttribute& attribute : from.attributes) {
            if (attribute.namespaceUri.empty() || attribute.namespaceUri == kXmlNamespace) continue;
            ensure().attributes.push_back({{attribute.namespaceUri, attribute.localName}, attribute.value});
        }
    };
    takeForeign(*at.node);
    if (node == nullptr) return annotation;
    if (node != at.node) takeForeign(*node);
    for (const CSchemaNode* child : node->children) {
        if (child->tag != SchemaTag::Documentation && child->tag != SchemaTag::Appinfo) continue;
        CAnnotationItem item;
        item.isDocumentation = child->tag == SchemaTag::Documentation;
        item.source = child->Get("source");
        for (const CSchemaNode* up = child; up != nullptr && item.language.empty(); up = up->parent) {
            for (const CSchemaNodeAttribute& attribute : up->attributes) {
                if (attribute.localName == "lang" && attribute.namespaceUri == kXmlNamespace)
                    item.language = attribute.value;
            }
        }
        item.text = child->text;
        item.content = child->content;
        ensure().items.push_back(item);
    }
    return annotation;
}

bool CComponentBuilder::ResolveName(At at, std::string_view text, CExpandedName& name) {
    const std::size_t colon = text.find(':');
    const std::string_view prefix =
        colon == std::string_view::npos ? std::string_view() : text.substr(0, colon);
    name.localName = m_store.Keep(colon == std::string_view::npos ? text : text.substr(colon + 1));
    name.namespaceUri = {};
    bool isFound = false;
    if (prefix == "xml") {
        name.namespaceUri = kXmlNamespace;
        isFound = true;
    } else {
        for (const auto& [known, uri] : *at.node->scope) {
            if (known == prefix) {
                name.namespaceUri = uri;
                isFound = true;
            }
        }
    }
    if (!isFound && !prefix.empty()) {
        Fault(at, "The prefix of " + Quoted(text) + " is not declared.", "src-qname");
        return false;
    }
    if (name.namespaceUri.empty() && at.source->isChameleon) name.namespaceUri = at.source->targetNamespace;
    const std::string_view uri = name.namespaceUri;
    if (uri == at.source->targetNamespace || uri == kSchemaNamespace || at.source->imports.count(uri) != 0)
        return true;
    Fault(at, "The namespace " + Quoted(uri) + " of " + Quoted(text) + " is not imported by this document.",
          "src-resolve.4");
    return false;
}

template <class T>
T* CComponentBuilder::Resolve(CSymbolSpace<T>& space, At at, std::string_view text, const char* what) {
    CExpandedName name;
    if (!ResolveName(at, text, name)) return nullptr;
    if (m_redefining != nullptr && name == m_redefiningName) {
        CComponent* const original = m_originals[m_redefining];
        if (original != nullptr && original->kind == T().kind) {
            const auto isOnce = [&](const char* count) {
                return !at.node->Has(count) || at.node->Get(count) == "1";
            };
            if (++m_usedOriginal > 1) {
                Fault(at, "A group that is redefined can refer to itself only once.",
                      original->kind == ComponentKind::ModelGroupDefinition ? "src-redefine.6.1.1"
                                                                            : "src-redefine.7.1");
            } else if (!isOnce("minOccurs") || !isOnce("maxOccurs")) {
                Fault(at, "A group that is redefined must refer to itself with minOccurs and maxOccurs 1.",
                      "src-redefine.6.1.2");
            }
            return static_cast<T*>(original);
        }
    }
    T* const found = space.Find(name);
    if (found == nullptr)
        Fault(at, std::string("There is no ") + what + " " + Quoted(text) + ".", "src-resolve");
    return found;
}

template CElementDeclaration* CComponentBuilder::Resolve(CSymbolSpace<CElementDeclaration>&, At,
                                                         std::string_view, const char*);
template CAttributeDeclaration* CComponentBuilder::Resolve(CSymbolSpace<CAttributeDeclaration>&, At,
                                                           std::string_view, const char*);
template CModelGroupDefinition* CComponentBuilder::Resolve(CSymbolSpace<CModelGroupDefinition>&, At,
                                                           std::string_view, const char*);
template CAttributeGroupDefinition* CComponentBuilder::Resolve(CSymbolSpace<CAttributeGroupDefinition>&, At,
                                                               std::string_view, const char*);
template CIdentityConstraintDefinition* CComponentBuilder::Resolve(
    CSymbolSpace<CIdentityConstraintDefinition>&, At, std::string_view, const char*);

const CTypeDefinition* CComponentBuilder::ResolveType(At at, std::string_view text) {
    CExpandedName name;
    if (!ResolveName(at, text, name)) return nullptr;
    const CTypeDefinition* const found = m_store.types.Find(name);
    if (found == nullptr) Fault(at, "There is no type " + Quoted(text) + ".", "src-resolve");
    return found;
}

const CSimpleTypeDefinition* CComponentBuilder::ResolveSimpleType(At at, std::string_view text) {
    const CTypeDefinition* const found = ResolveType(at, text);
    if (found == nullptr) return nullptr;
    if (!found->IsSimple()) Fault(at, "The type " + Quoted(text) + " is not a simple type.", "src-resolve");
    return found->AsSimple();
}

// --- globals -----------------------------------------------------------------------------------------------

void CComponentBuilder::Declare(const CSchemaSource& source) {
    for (const CSchemaNode* child : source.root->children)
        DeclareOne({&source, child});
}

template <class T>
void CComponentBuilder::DeclareIn(CSymbolSpace<T>& space, At at, T& component) {
    const std::string_view local = at.node->Get("name");
    const CExpandedName name{at.source->targetNamespace, m_store.Keep(local)};
    component.place = Place(at);
    m_globals.push_back({&component, at});
    m_sourceOf[&component] = at.source;
    if (!space.Add(name, &component)) {
        Fault(at,
              std::string("The ") + WordOf(at.node->tag) + " " + Quoted(local) + " is already defined at " +
                  PlaceText(space.Find(name)->place) + ".",
              "sch-props-correct.2");
    }
}

void CComponentBuilder::DeclareOne(At at) {
    const CExpandedName name{at.source->targetNamespace, m_store.Keep(at.node->Get("name"))};
    const bool isType = at.node->tag == SchemaTag::SimpleType || at.node->tag == SchemaTag::ComplexType;
    if (isType && name.namespaceUri == kSchemaNamespace && m_store.types.Find(name) != nullptr &&
        m_store.types.Find(name)->place.document == nullptr)
        return;  // the schema for schemas itself is read: its types are built in
    const auto declare = [&](auto& space, auto& component) {
        component.name = name;
        DeclareIn(space, at, component);
    };
    const auto declareType = [&](auto& type) {
        type.name = name;
        DeclareIn<CTypeDefinition>(m_store.types, at, type);
    };
    switch (at.node->tag) {
        case SchemaTag::SimpleType:
            declareType(m_store.Make<CSimpleTypeDefinition>());
            break;
        case SchemaTag::ComplexType:
            declareType(m_store.Make<CComplexTypeDefinition>());
            break;
        case SchemaTag::Element:
            declare(m_store.elements, m_store.Make<CElementDeclaration>());
            break;
        case SchemaTag::Attribute:
            declare(m_store.attributes, m_store.Make<CAttributeDeclaration>());
            break;
        case SchemaTag::Notation:
            declare(m_store.notations, m_store.Make<CNotationDeclaration>());
            break;
        case SchemaTag::Group: {
            auto& definition = m_store.Make<CModelGroupDefinition>();
            definition.modelGroup = &m_store.Make<CModelGroup>();
            declare(m_store.modelGroups, definition);
            break;
        }
        case SchemaTag::AttributeGroup:
            declare(m_store.attributeGroups, m_store.Make<CAttributeGroupDefinition>());
            break;
        default:
            break;
    }
}

template <class T>
void CComponentBuilder::RedefineOne(CSymbolSpace<T>& space, At at, T& replacement,
                                    const CSchemaSource& target, const char* constraint) {
    const std::string_view local = at.node->Get("name");
    const CExpandedName name{at.source->targetNamespace, m_store.Keep(local)};
    replacement.name = name;
    replacement.place = Place(at);
    T* const original = space.Find(name);
    // The original may also stand in a document that the redefined one includes.
    bool isThere = false;
    if (original != nullptr) {
        std::vector<const CSchemaSource*> reachable{&target};
        for (std::size_t i = 0; i < reachable.size() && !isThere; ++i) {
            isThere = reachable[i] == m_sourceOf[original];
            for (const CSchemaSource* inner : reachable[i]->included) {
                if (std::find(reachable.begin(), reachable.end(), inner) == reachable.end())
                    reachable.push_back(inner);
            }
        }
    }
    if (!isThere || original->kind != replacement.kind) {
        Fault(at,
              std::string("There is no ") + WordOf(at.node->tag) + " " + Quoted(local) +
                  " in the document that is redefined.",
              constraint);
        return;
    }
    space.byName[name] = &replacement;
    std::replace(space.ordered.begin(), space.ordered.end(), static_cast<const T*>(original),
                 static_cast<const T*>(&replacement));
    m_originals[at.node] = original;
    m_sourceOf[&replacement] = at.source;
    m_globals.push_back({&replacement, at});
}

void CComponentBuilder::Redefine(const CSchemaSource& source, const CSchemaNode& redefine,
                                 const CSchemaSource& target) {
    for (const CSchemaNode* child : redefine.children) {
        const At at{&source, child};
        switch (child->tag) {
            case SchemaTag::SimpleType:
                RedefineOne<CTypeDefinition>(m_store.types, at, m_store.Make<CSimpleTypeDefinition>(), target,
                                             "src-redefine.5");
                break;
            case SchemaTag::ComplexType:
                RedefineOne<CTypeDefinition>(m_store.types, at, m_store.Make<CComplexTypeDefinition>(),
                                             target, "src-redefine.5");
                break;
            case SchemaTag::Group: {
                auto& definition = m_store.Make<CModelGroupDefinition>();
                definition.modelGroup = &m_store.Make<CModelGroup>();
                RedefineOne(m_store.modelGroups, at, definition, target, "src-redefine.6.2.1");
                break;
            }
            case SchemaTag::AttributeGroup:
                RedefineOne(m_store.attributeGroups, at, m_store.Make<CAttributeGroupDefinition>(), target,
                            "src-redefine.7.2.1");
                break;
            default:
                break;
        }
    }
}

void CComponentBuilder::Fill(const Global& global) {
    const At at = global.at;
    CComponent& component = *global.component;
    const auto original = m_originals.find(at.node);
    m_redefining = original == m_originals.end() ? nullptr : at.node;
    m_redefiningName = {at.source->targetNamespace, m_store.Keep(at.node->Get("name"))};
    m_usedOriginal = 0;
    switch (component.kind) {
        case ComponentKind::SimpleTypeDefinition:
            FillSimpleType(static_cast<CSimpleTypeDefinition&>(component), at);
            break;
        case ComponentKind::ComplexTypeDefinition:
            FillComplexType(static_cast<CComplexTypeDefinition&>(component), at);
            break;
        case ComponentKind::ElementDeclaration: {
            auto& element = static_cast<CElementDeclaration&>(component);
            element.isGlobal = true;
            FillElement(element, at);
            break;
        }
        case ComponentKind::AttributeDeclaration: {
            auto& attribute = static_cast<CAttributeDeclaration&>(component);
            attribute.isGlobal = true;
            FillAttribute(attribute, at);
            break;
        }
        case ComponentKind::NotationDeclaration:
            FillNotation(static_cast<CNotationDeclaration&>(component), at);
            break;
        case ComponentKind::ModelGroupDefinition: {
            auto& definition = static_cast<CModelGroupDefinition&>(component);
            FillModelGroupDefinition(definition, at);
            if (m_redefining != nullptr && m_usedOriginal == 0)
                m_redefinedGroups.emplace_back(&definition,
                                               static_cast<CModelGroupDefinition*>(original->second));
            break;
        }
        case ComponentKind::AttributeGroupDefinition: {
            auto& group = static_cast<CAttributeGroupDefinition&>(component);
            FillAttributeGroup(group, at);
            if (m_redefining != nullptr && m_usedOriginal == 0) {
                m_redefinedAttributeGroups.emplace_back(
                    &group, static_cast<CAttributeGroupDefinition*>(original->second));
            }
            break;
        }
        default:
            break;
    }
    m_redefining = nullptr;
}

}  // namespace KvXmlLib16::internal
