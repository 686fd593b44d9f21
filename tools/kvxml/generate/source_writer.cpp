// The sources: tables of the classes, texts of the enumerations.
#include <map>

#include "tools/kvxml/generate/code_writer.h"

namespace tool::generate {

namespace {

using Kind = CMemberPlan::Kind;

const char* NameOf(ItemType item) {
    switch (item) {
        case ItemType_hexBinary:
            return "ItemType_hexBinary";
        case ItemType_base64Binary:
            return "ItemType_base64Binary";
        case ItemType_i1:
            return "ItemType_i1";
        case ItemType_i2:
            return "ItemType_i2";
        case ItemType_i4:
            return "ItemType_i4";
        case ItemType_i8:
            return "ItemType_i8";
        case ItemType_ui1:
            return "ItemType_ui1";
        case ItemType_ui2:
            return "ItemType_ui2";
        case ItemType_ui4:
            return "ItemType_ui4";
        case ItemType_ui8:
            return "ItemType_ui8";
        case ItemType_r4:
            return "ItemType_r4";
        case ItemType_r8:
            return "ItemType_r8";
        case ItemType_duration:
            return "ItemType_duration";
        case ItemType_yearMonth:
            return "ItemType_yearMonth";
        case ItemType_monthDay:
            return "ItemType_monthDay";
        case ItemType_year:
            return "ItemType_year";
        case ItemType_month:
            return "ItemType_month";
        case ItemType_day:
            return "ItemType_day";
        case ItemType_date:
            return "ItemType_date";
        case ItemType_datetime:
            return "ItemType_datetime";
        case ItemType_time:
            return "ItemType_time";
        case ItemType_boolean:
            return "ItemType_boolean";
        case ItemType_decimal:
            return "ItemType_decimal";
        case ItemType_integer:
            return "ItemType_integer";
        default:
            return "ItemType_string";
    }
}

std::string LiteralOrNull(const std::string& text) {
    return text.empty() ? "nullptr" : ToLiteral(text);
}

/// Writes one source.
class CSourceWriter {
public:
    CSourceWriter(const CCodeModel& model, const CodeOptions& options)
        : m_model(model), m_options(options), m_text(options) {}

    std::string Write(unsigned part);

private:
    /// The name of a constant with this declaration, written when it is first wanted: "{type} {name}{rest}".
    std::string Constant(const char* prefix, const std::string& type, const std::string& rest);
    std::string Namespace(std::string_view uri);
    std::string Facets(const CFacetPlan& facets);
    std::string Value(const CValuePlan& value);
    std::string EnumTable(const CEnumPlan& plan);
    std::string Wildcard(const CMemberPlan& plan);
    std::string Bounds(const CMemberPlan& plan);
    std::string Substitutes(const CMemberPlan& plan);
    std::string Member(const CppMember& member);
    std::string TableOf(const CMemberPlan& plan);
    void WriteEnum(const CppEnum& one);
    void WriteClass(const CppClass& one);
    void WriteRoots();
    std::string Create(const CppClass& one);
    std::string Flags(const CppClass& one);

    const CCodeModel& m_model;
    const CodeOptions& m_options;
    CCodeText m_text;
    std::string m_constantText;
    std::map<std::string, std::string> m_known;
};

std::string CSourceWriter::Constant(const char* prefix, const std::string& type, const std::string& rest) {
    std::string& name = m_known[type + rest];
    if (!name.empty()) return name;
    name = prefix + std::to_string(m_known.size());
    m_constantText += "constexpr " + type + " " + name + rest + ";\n";
    return name;
}

std::string CSourceWriter::Namespace(std::string_view uri) {
    return uri.empty() ? "\"\"" : Constant("kNs", "char", "[] = " + ToLiteral(uri));
}

std::string CSourceWriter::Facets(const CFacetPlan& facets) {
    if (facets.IsEmpty()) return "nullptr";
    std::string patterns = "nullptr";
    if (!facets.patterns.empty()) {
        std::string list;
        for (const std::string& pattern : facets.patterns)
            list += (list.empty() ? "" : ", ") + ToLiteral(pattern);
        patterns = Constant("kPatterns", "const char*", "[] = {" + list + "}");
    }
    std::string enumeration;
    for (const std::string& value : facets.enumeration)
        enumeration += (enumeration.empty() ? "" : "\n") + value;
    const auto number = [](std::int32_t value) { return std::to_string(value) + ", "; };
    return "&" +
           Constant("kFacets", "CFacetTable",
                    " = {" + patterns + ", " + number(static_cast<std::int32_t>(facets.patterns.size())) +
                        number(facets.length) + number(facets.minLength) + number(facets.maxLength) +
                        number(facets.totalDigits) + number(facets.fractionDigits) +
                        LiteralOrNull(facets.minInclusive) + ", " + LiteralOrNull(facets.maxInclusive) +
                        ", " + LiteralOrNull(facets.minExclusive) + ", " +
                        LiteralOrNull(facets.maxExclusive) + ", " +
                        (facets.enumeration.empty() ? "nullptr" : ToLiteral(enumeration)) + "}");
}

std::string CSourceWriter::EnumTable(const CEnumPlan& plan) {
    std::string list;
    for (const CEnumPlan::Value& value : plan.values)
        list += (list.empty() ? "" : ", ") + ToLiteral(value.text);
    const std::string texts = Constant("kTexts", "const char*", "[] = {" + list + "}");
    const std::string name =
        plan.type->IsAnonymous() ? GetNamePath(*plan.type) : std::string(plan.type->name.localName);
    return Constant(
        "kEnum", "CEnumTable",
        " = {" + ToLiteral(name) + ", " + texts + ", " + std::to_string(plan.values.size()) + "}");
}

std::string CSourceWriter::Value(const CValuePlan& value) {
    static const char* const kWhitespace[] = {"Preserve", "Replace", "Collapse"};
    std::string members = "nullptr, 0";
    if (!value.members.empty()) {
        std::string list;
        for (const CValuePlan* const member : value.members)
            list += (list.empty() ? "&" : ", &") + Value(*member);
        members = Constant("kMembers", "const CValueType*", "[] = {" + list + "}") + ", " +
                  std::to_string(value.members.size());
    }
    const std::string enumeration =
        value.enumeration == nullptr ? "nullptr" : "&" + EnumTable(*value.enumeration);
    return Constant(
        "kType", "CValueType",
        std::string(" = {") + NameOf(value.item) +
            ", CValueType::Whitespace::" + kWhitespace[static_cast<std::size_t>(value.whitespace)] + ", " +
            Facets(value.facets) + ", " + enumeration + ", " +
            (value.list == nullptr ? "nullptr" : "&" + Value(*value.list)) + ", " + members + "}");
}

std::string CSourceWriter::Bounds(const CMemberPlan& plan) {
    const std::string max =
        plan.maxOccurs == CMemberPlan::kUnbounded ? "CMember::kUnbounded" : std::to_string(plan.maxOccurs);
    return ", " + std::to_string(plan.minOccurs) + ", " + max;
}

std::string CSourceWriter::Wildcard(const CMemberPlan& plan) {
    return ", " + LiteralOrNull(plan.namespaces) + ", " + Namespace(plan.targetNamespace);
}

std::string CSourceWriter::TableOf(const CMemberPlan& plan) {
    return m_model.ClassOf(*plan.classPlan).Qualified() + "::kTable";
}

std::string CSourceWriter::Substitutes(const CMemberPlan& plan) {
    std::string list;
    for (const CSubstitutePlan& one : plan.substitutes) {
        if (!list.empty()) list += ", ";
        list += "{" + ToLiteral(one.element->name.localName) + ", " +
                Namespace(one.element->name.namespaceUri) + ", " +
                (one.classPlan == nullptr ? "nullptr"
                                          : "&" + m_model.ClassOf(*one.classPlan).Qualified() + "::kTable") +
                "}";
    }
    return Constant("kOr", "CSubstitute", "[] = {" + list + "}");
}

std::string CSourceWriter::Member(const CppMember& member) {
    static const char* const kFunctions[] = {"Attribute", "AnyAttributes", "Text",   "Value", "Values",
                                             "Object",    "Objects",       "Groups", "Any",   "Anys"};
    const CMemberPlan& plan = *member.plan;
    const std::string place = "At(&C::" + member.variable + ")";
    std::string code = std::string("CMember::") + kFunctions[static_cast<std::size_t>(plan.kind)] + "(";
    const bool hasName =
        plan.kind != Kind::Text && plan.kind != Kind::AnyAttributes && plan.kind != Kind::Groups;
    if (hasName) code += ToLiteral(plan.name.localName) + ", " + Namespace(plan.name.namespaceUri) + ", ";
    code += place;
    switch (plan.kind) {
        case Kind::Attribute:
        case Kind::Text:
        case Kind::Value:
        case Kind::Values:
            code += ", " + Value(*plan.value);
            break;
        case Kind::Object:
        case Kind::Objects:
        case Kind::Groups:
            code += ", " + TableOf(plan);
            break;
        default:
            code += Wildcard(plan);
    }
    if (plan.IsRepeated()) code += Bounds(plan);
    code += ")";
    if (member.bit != CppMember().bit) code += ".Bit(" + std::to_string(member.bit) + ")";
    if (member.nilBit != CppMember().nilBit) code += ".NilBit(" + std::to_string(member.nilBit) + ")";
    if (plan.isRequired && !plan.IsRepeated()) code += ".Required()";
    if (plan.isNillable) code += ".Nillable()";
    if (plan.isAbstract) code += ".Abstract()";
    if (plan.valueConstraint.kind == CValueConstraint::Default)
        code += ".Default(" + ToLiteral(plan.valueConstraint.text) + ")";
    if (plan.valueConstraint.kind == CValueConstraint::Fixed)
        code += ".Fixed(" + ToLiteral(plan.valueConstraint.text) + ")";
    if (!plan.substitutes.empty()) code += ".Or(" + Substitutes(plan) + ")";
    return code;
}

std::string CSourceWriter::Create(const CppClass& one) {
    return one.plan->isAbstract ? "nullptr" : "&NewTableClass<" + one.name + ">";
}

std::string CSourceWriter::Flags(const CppClass& one) {
    std::string flags;
    const auto add = [&](bool has, const char* flag) {
        if (has) flags += std::string(flags.empty() ? "" : " | ") + "CClassTable::" + flag;
    };
    add(one.plan->kind == CClassPlan::Kind::Group, "kGroup");
    add(one.plan->kind == CClassPlan::Kind::Root, "kRoot");
    add(one.plan->isRestriction, "kRestriction");
    add(one.plan->isMixed, "kMixed");
    add(one.plan->isAnonymous, "kAnonymous");
    add(one.plan->kind != CClassPlan::Kind::Group && one.plan->element != nullptr &&
            one.plan->element->isNillable,
        "kNillable");
    return flags.empty() ? "0" : flags;
}

void CSourceWriter::WriteEnum(const CppEnum& one) {
    m_text.In(one.scope);
    const std::string table = EnumTable(*one.plan);
    m_text.Line("\nconst char* ToText(" + one.name + " value) noexcept {");
    m_text.Line("    return TextAt(" + table + ", static_cast<std::int32_t>(value));\n}");
    m_text.Line("bool FromText(std::string_view text, " + one.name + "& value) noexcept {");
    m_text.Line("    const std::int32_t found = FindText(" + table + ", text);");
    m_text.Line("    if (found >= 0) value = static_cast<" + one.name + ">(found);");
    m_text.Line("    return found >= 0;\n}");
}

void CSourceWriter::WriteClass(const CppClass& one) {
    const CClassPlan& plan = *one.plan;
    m_text.In(one.scope);
    const bool hasMembers = !one.members.empty();
    std::string members = "nullptr";
    if (hasMembers) {
        m_text.Line("\nstruct " + one.name + "::Members {");
        m_text.Line("    using C = " + one.name + ";");
        m_text.Line("    static constexpr CMember kAll[] = {");
        for (const CppMember& member : one.members)
            m_text.Line("        " + Member(member) + ",");
        m_text.Line("    };\n};");
        members = "Members::kAll";
    }
    std::string content = "nullptr";
    if (!plan.content.empty()) {
        static const char* const kNodes[] = {"Sequence", "Choice", "All", "Member"};
        std::string list;
        for (const CContentPlan& node : plan.content) {
            if (!list.empty()) list += ", ";
            list += std::string("CContentNode::") + kNodes[static_cast<std::size_t>(node.kind)] + "(";
            list += node.kind == CContentPlan::Kind::Member ? std::to_string(node.member)
                                                            : std::to_string(node.size);
            list += node.isOptional ? ", true)" : ")";
        }
        content = Constant("kContent", "CContentNode", "[] = {" + list + "}");
    }
    std::string derived = "nullptr";
    if (!plan.derived.empty()) {
        std::string list;
        for (const CClassPlan* const other : plan.derived)
            list += (list.empty() ? "&" : ", &") + m_model.ClassOf(*other).Qualified() + "::kTable";
        derived = Constant("kDerived", "const CClassTable*", "[] = {" + list + "}");
    }
    const std::string base = one.base == nullptr ? "nullptr" : "&" + one.base->Qualified() + "::kTable";
    m_text.Line("const CClassTable " + one.name + "::kTable = {" + ToLiteral(plan.xmlName.localName) + ", " +
                Namespace(plan.xmlName.namespaceUri) + ", " + Create(one) + ", " + base + ", " + members +
                ", " + content + ", " + derived + ", " + std::to_string(one.members.size()) + ", " +
                std::to_string(plan.content.size()) + ", " + std::to_string(plan.derived.size()) + ", " +
                Flags(one) + "};");
    m_text.Line("const CClassTable& " + one.name +
                "::GetClassTable() const noexcept {\n    return kTable;\n}");
}

void CSourceWriter::WriteRoots() {
    std::string list;
    for (const CppClass* const one : m_model.GetRoots())
        list += (list.empty() ? "&" : ", &") + one->Qualified() + "::kTable";
    if (list.empty()) return;
    const std::string roots = Constant("kRoots", "const CClassTable*", "[] = {" + list + "}");
    m_text.In(m_model.MainScope());
    m_text.Line(
        "\nCSmartPtr<CTableClass> NewRoot(std::string_view namespaceUri, std::string_view localName) {");
    m_text.Line("    return NewRootOf(" + roots + ", std::size(" + roots + "), namespaceUri, localName);\n}");
}

std::string CSourceWriter::Write(unsigned part) {
    const auto isMine = [&](std::size_t index, std::size_t count) {
        return index * m_options.parts / (count == 0 ? 1 : count) == part;
    };
    const auto& classes = m_model.GetClasses();
    const auto& enums = m_model.GetEnumerations();
    for (std::size_t i = 0; i < enums.size(); ++i)
        if (isMine(i, enums.size())) WriteEnum(*enums[i]);
    for (std::size_t i = 0; i < classes.size(); ++i)
        if (isMine(i, classes.size())) WriteClass(*classes[i]);
    if (part == 0) WriteRoots();
    const std::string body = m_text.Take();
    std::string text =
        "// " + m_options.banner + "\n#include \"" + m_options.name + ".h\"\n\n#include <iterator>\n";
    const std::size_t first = body.find('\n') + 1;  // after the banner
    text += "\nusing namespace KvXmlLib16;\n";
    if (!m_constantText.empty()) text += "\nnamespace {\n\n" + m_constantText + "\n}  // namespace\n";
    return text + body.substr(first);
}

}  // namespace

std::string WriteSource(const CCodeModel& model, const CodeOptions& options, unsigned part) {
    return CSourceWriter(model, options).Write(part);
}

}  // namespace tool::generate
