// The headers: forward declarations, and the classes with their accessors.
#include <set>

#include "tools/kvxml/generate/code_writer.h"

namespace tool::generate {

namespace {

using Kind = CMemberPlan::Kind;

/// What the members of all classes need.
struct Needs {
    bool views = false;
    bool untyped = false;
    bool attributes = false;
    std::set<std::string> types;  // headers of value types
};

void AddType(const std::string& type, Needs& needs) {
    if (type == "KvXmlLib16::CBinaryData") needs.types.insert("kvxml/types/binary_data.h");
    if (type == "KvXmlLib16::CDateTime") needs.types.insert("kvxml/types/date_time.h");
    if (type == "KvXmlLib16::CDateTimeSpan") needs.types.insert("kvxml/types/date_time_span.h");
    if (type == "KvXmlLib16::CDecimal") needs.types.insert("kvxml/types/decimal.h");
    if (type == "KvXmlLib16::CBigInteger") needs.types.insert("kvxml/types/big_integer.h");
}

Needs FindNeeds(const CCodeModel& model) {
    Needs needs;
    for (const CppClass* const one : model.GetClasses()) {
        for (const CppMember& member : one->members) {
            const CMemberPlan& plan = *member.plan;
            if (plan.value != nullptr) AddType(model.ValueType(*plan.value), needs);
            const bool isUntyped = plan.kind == Kind::Any || plan.kind == Kind::Anys;
            if (isUntyped) needs.untyped = true;
            if (plan.kind == Kind::AnyAttributes) needs.attributes = true;
            if (IsCollection(plan) && !isUntyped) needs.views = true;
        }
    }
    return needs;
}

/// Writes one class.
class CClassWriter {
public:
    CClassWriter(const CCodeModel& model, const CppClass& one, CCodeText& text)
        : m_model(model), m_class(one), m_text(text) {}

    void Write();
    /// Bodies that need other classes whole.
    void WriteBodies();

private:
    void Line(const std::string& line) { m_text.Line("    " + line); }
    /// The name as it is found from within the class.
    std::string Shown(const std::string& type) const;
    std::string ValueType(const CMemberPlan& plan) const { return Shown(m_model.ValueType(*plan.value)); }
    std::string ObjectType(const CMemberPlan& plan) const {
        return Shown(m_model.ClassOf(*plan.classPlan).Qualified());
    }
    void WriteConstructor();
    void WriteAccessors(const CppMember& member);
    void WriteScalar(const CppMember& member);
    void WriteValues(const CppMember& member);
    void WriteObject(const CppMember& member);
    void WriteObjects(const CppMember& member);
    void WriteUntyped(const CppMember& member);
    void WriteVariable(const CppMember& member);
    std::string BaseName() const {
        const CppClass& base = *m_class.base;
        return base.scope == m_class.scope ? base.name : base.Qualified();
    }
    std::string Initial(const CppMember& member) const;
    std::string Choose(const CppMember& member) const {
        return member.plan->isInChoice ? "Choose(&" + member.variable + "); " : "";
    }

    const CCodeModel& m_model;
    const CppClass& m_class;
    CCodeText& m_text;
};

const CAnnotation* AnnotationOf(const CMemberPlan& plan) {
    const CComponent* const component = plan.component;
    if (component == nullptr) return nullptr;
    if (component->annotation == nullptr && component->kind == ComponentKind::AttributeUse)
        return static_cast<const CAttributeUse*>(component)->attributeDeclaration->annotation;
    return component->annotation;
}

std::string CClassWriter::Shown(const std::string& type) const {
    const std::string scope = m_class.scope + "::";
    if (type.compare(0, scope.size(), scope) != 0) return type;
    std::string name = type.substr(scope.size());
    // The name of a base class hides that of a class of the same name in this namespace.
    for (const CppClass* base = m_class.base; base != nullptr; base = base->base)
        if (base->name == name) return type;
    return name;
}

void CClassWriter::Write() {
    const CClassPlan& plan = *m_class.plan;
    const CAnnotation* annotation = plan.element != nullptr ? plan.element->annotation : nullptr;
    if (annotation == nullptr && plan.type != nullptr) annotation = plan.type->annotation;
    m_text.Line();
    m_text.Document(annotation, "");
    const std::string base = m_class.base == nullptr ? "KvXmlLib16::CTableClass" : BaseName();
    m_text.Line("class " + m_class.name + " : public " + base + " {");
    m_text.Line("public:");
    Line("static const KvXmlLib16::CClassTable kTable;");
    WriteConstructor();
    Line("const KvXmlLib16::CClassTable& GetClassTable() const noexcept override;");
    bool hasVariables = false;
    for (const CppMember& member : m_class.members) {
        if (member.plan->inherited != nullptr) continue;
        hasVariables = true;
        m_text.Line();
        m_text.Document(AnnotationOf(*member.plan), "    ");
        WriteAccessors(member);
    }
    m_text.Line();
    m_text.Line("protected:");
    Line("struct Members;");
    if (hasVariables) m_text.Line();
    for (const CppMember& member : m_class.members)
        if (member.plan->inherited == nullptr) WriteVariable(member);
    m_text.Line("};");
}

void CClassWriter::WriteConstructor() {
    const CClassPlan& plan = *m_class.plan;
    const std::string base = m_class.base == nullptr ? "CTableClass" : BaseName();
    if (plan.kind == CClassPlan::Kind::Root) {
        Line(m_class.name + "() : " + base + "(" + ToLiteral(plan.xmlName.localName) + ") {}");
        return;
    }
    Line("explicit " + m_class.name + "(const char* elementName = nullptr) : " + base + "(elementName) {}");
}

void CClassWriter::WriteAccessors(const CppMember& member) {
    const CMemberPlan& plan = *member.plan;
    if (plan.kind == Kind::Any || plan.kind == Kind::Anys || plan.kind == Kind::AnyAttributes) {
        WriteUntyped(member);
    } else if (plan.value != nullptr) {
        if (IsCollection(plan)) {
            WriteValues(member);
        } else {
            WriteScalar(member);
        }
    } else if (plan.IsRepeated()) {
        WriteObjects(member);
    } else {
        WriteObject(member);
    }
}

void CClassWriter::WriteScalar(const CppMember& member) {
    const CMemberPlan& plan = *member.plan;
    const CValuePlan& value = *plan.value;
    const std::string type = ValueType(plan);
    const std::string bit = std::to_string(member.bit);
    const std::string isSet = "MarkSet(" + bit + "); " +
                              (plan.isNillable ? "MarkUnset(" + std::to_string(member.nilBit) + "); " : "");
    const std::string& name = member.name;
    const bool isEnum = value.enumeration != nullptr;
    const std::string stored = isEnum ? "static_cast<std::int32_t>(value)" : "value";
    if (IsPassedByValue(value)) {
        const std::string read =
            isEnum ? "static_cast<" + type + ">(" + member.variable + ")" : member.variable;
        Line(type + " Get" + name + "() const noexcept { return " + read + "; }");
        Line("void Set" + name + "(" + type + " value) { " + Choose(member) + member.variable + " = " +
             stored + "; " + isSet + "}");
    } else {
        Line("const " + type + "& Get" + name + "() const noexcept { return " + member.variable + "; }");
        Line("void Set" + name + "(" + type + " value) { " + Choose(member) + member.variable +
             " = std::move(value); " + isSet + "}");
    }
    if (!plan.isRequired || plan.isInChoice) {
        Line("bool Has" + name + "() const noexcept { return IsSet(" + bit + "); }");
        Line("void Clear" + name + "() { Unset(&" + member.variable + "); }");
    }
    if (plan.isNillable) {
        const std::string nil = std::to_string(member.nilBit);
        Line("bool IsNil" + name + "() const noexcept { return IsSet(" + nil + "); }");
        Line("void SetNil" + name + "() { " + Choose(member) + "Unset(&" + member.variable + "); MarkSet(" +
             bit + "); MarkSet(" + nil + "); }");
    }
}

void CClassWriter::WriteValues(const CppMember& member) {
    const std::string type = ValueType(*member.plan);
    const std::string& name = member.name;
    Line("KvXmlLib16::CValuesOf<" + type + "> Get" + name + "() { return {*this, " + member.variable +
         "}; }");
    Line("KvXmlLib16::CValuesOf<const " + type + "> Get" + name + "() const { return {*this, " +
         member.variable + "}; }");
    if (member.plan->IsRepeated()) return;
    // A list is a value: it may be there and empty.
    Line("bool Has" + name + "() const noexcept { return " + member.variable + " != nullptr; }");
    Line("void Clear" + name + "() { Unset(&" + member.variable + "); }");
}

void CClassWriter::WriteObject(const CppMember& member) {
    const std::string type = ObjectType(*member.plan);
    const std::string& name = member.name;
    Line("bool Has" + name + "() const noexcept { return " + member.variable + " != nullptr; }");
    Line("const " + type + "& Get" + name + "() const;");
    Line(type + "& Get" + name + "();");
    if (!member.plan->classPlan->isAbstract) Line(type + "& Make" + name + "();");
    Line("void Set" + name + "(const KvXmlLib16::CSmartPtr<" + type + ">& value);");
    Line("void Clear" + name + "() { Unset(&" + member.variable + "); }");
}

void CClassWriter::WriteObjects(const CppMember& member) {
    const std::string type = ObjectType(*member.plan);
    Line("KvXmlLib16::CObjectsOf<" + type + "> Get" + member.name + "() { return {*this, " + member.variable +
         "}; }");
    Line("KvXmlLib16::CObjectsOf<const " + type + "> Get" + member.name + "() const { return {*this, " +
         member.variable + "}; }");
}

void CClassWriter::WriteUntyped(const CppMember& member) {
    const std::string& name = member.name;
    switch (member.plan->kind) {
        case Kind::AnyAttributes:
            Line("/// Null while there are none.");
            Line("const KvXmlLib16::CAttributeCol* Get" + name + "() const noexcept { return " +
                 member.variable + ".Get(); }");
            Line("KvXmlLib16::CAttributeCol& Get" + name + "() { return Made(" + member.variable + "); }");
            break;
        case Kind::Anys:
            Line("/// Null while there are none.");
            Line("const KvXmlLib16::CElementCol* Get" + name +
                 "() const noexcept { return static_cast<const KvXmlLib16::CElementCol*>(" + member.variable +
                 ".Get()); }");
            Line("KvXmlLib16::CElementCol& Get" + name +
                 "() { return static_cast<KvXmlLib16::CElementCol&>(Made(" + member.variable + ")); }");
            break;
        default:
            Line("/// Null while there is none.");
            Line("const KvXmlLib16::CElement* Get" + name + "() const noexcept { return " + member.variable +
                 ".Get(); }");
            Line("KvXmlLib16::CElement* Get" + name + "() noexcept { return " + member.variable +
                 ".Get(); }");
            Line("void Set" + name + "(const KvXmlLib16::CSmartPtr<KvXmlLib16::CElement>& value) { " +
                 Choose(member) + member.variable + " = value; }");
    }
}

/// The value of a new object, for kinds that have no state of their own like "empty".
std::string CClassWriter::Initial(const CppMember& member) const {
    const CMemberPlan& plan = *member.plan;
    const CValuePlan& value = *plan.value;
    const bool hasDefault =
        plan.valueConstraint.kind != CValueConstraint::None && (plan.kind == Kind::Attribute);
    const std::string type = value.enumeration != nullptr ? "std::int32_t" : TypeOfItem(value.item);
    std::string text(plan.valueConstraint.text);
    if (value.whitespace == WhiteSpace::Collapse) {
        const std::size_t first = text.find_first_not_of(" \t\r\n");
        text = first == std::string::npos ? ""
                                          : text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
    }
    if (value.enumeration != nullptr) {
        if (hasDefault) {
            for (std::size_t i = 0; i < value.enumeration->values.size(); ++i)
                if (value.enumeration->values[i].text == text) return " = " + std::to_string(i);
        }
        return " = 0";
    }
    if (type == "std::string") return hasDefault && !text.empty() ? " = " + ToLiteral(text) : "";
    if (type == "bool") return hasDefault && (text == "true" || text == "1") ? " = true" : " = false";
    if (type.rfind("KvXmlLib16", 0) == 0)
        return hasDefault && value.item != ItemType_hexBinary && value.item != ItemType_base64Binary
                   ? "{" + ToLiteral(text) + "}"
                   : "";
    if (type == "float" || type == "double") {
        const std::string limits = "std::numeric_limits<" + type + ">::";
        if (hasDefault && (text == "INF" || text == "-INF"))
            return std::string(" = ") + (text[0] == '-' ? "-" : "") + limits + "infinity()";
        if (hasDefault && text == "NaN") return " = " + limits + "quiet_NaN()";
        const bool isNumber = text.find_first_not_of("+-.0123456789eE") == std::string::npos && !text.empty();
        if (!hasDefault || !isNumber) return " = 0";
        return " = static_cast<" + type + ">(" + (text[0] == '+' ? text.substr(1) : text) +
               (text.find_first_of(".eE") == std::string::npos ? ".0)" : ")");
    }
    const bool isInteger = !text.empty() && text.find_first_not_of("+-0123456789") == std::string::npos;
    if (!hasDefault || !isInteger) return " = 0";
    // Without leading zeros, which mean another base.
    const bool isNegative = text[0] == '-';
    std::size_t first = text.find_first_not_of("+-0");
    if (first == std::string::npos) return " = 0";
    const std::string digits = text.substr(first);
    if (isNegative && digits == "9223372036854775808") return " = INT64_MIN";
    return std::string(" = ") + (isNegative ? "-" : "") + digits + (type == "std::uint64_t" ? "U" : "");
}

void CClassWriter::WriteVariable(const CppMember& member) {
    const CMemberPlan& plan = *member.plan;
    if (plan.kind == Kind::AnyAttributes) {
        Line("KvXmlLib16::CSmartPtr<KvXmlLib16::CAttributeCol> " + member.variable + ";");
    } else if (IsCollection(plan)) {
        Line("KvXmlLib16::CSmartPtr<KvXmlLib16::CXmlCollectionBase> " + member.variable + ";");
    } else if (plan.kind == Kind::Any) {
        Line("KvXmlLib16::CSmartPtr<KvXmlLib16::CElement> " + member.variable + ";");
    } else if (plan.value != nullptr) {
        const std::string type =
            plan.value->enumeration != nullptr ? "std::int32_t" : TypeOfItem(plan.value->item);
        Line(type + " " + member.variable + Initial(member) + ";");
    } else {
        Line("KvXmlLib16::CSmartPtr<KvXmlLib16::CXmlObjectBase> " + member.variable + ";");
    }
}

void CClassWriter::WriteBodies() {
    for (const CppMember& member : m_class.members) {
        const CMemberPlan& plan = *member.plan;
        if (plan.inherited != nullptr || plan.kind != Kind::Object) continue;
        m_text.In(m_class.scope);
        const std::string type = ObjectType(plan);
        const std::string front = m_class.name + "::";
        const std::string& name = member.name;
        const auto body = [&](const std::string& head, const std::string& code) {
            m_text.Line("inline " + head + " { " + code + " }");
        };
        m_text.Line();
        body("const " + type + "& " + front + "Get" + name + "() const",
             "return static_cast<const " + type + "&>(Held(" + member.variable + "));");
        body(type + "& " + front + "Get" + name + "()", "return const_cast<" + type +
                                                            "&>(static_cast<const " + type + "&>(Held(" +
                                                            member.variable + ")));");
        if (!plan.classPlan->isAbstract)
            body(type + "& " + front + "Make" + name + "()",
                 Choose(member) + "return static_cast<" + type + "&>(Made(" + member.variable + "));");
        body("void " + front + "Set" + name + "(const KvXmlLib16::CSmartPtr<" + type + ">& value)",
             Choose(member) + "Take(" + member.variable + ", value.Get());");
    }
}

void WriteEnum(const CppEnum& one, CCodeText& text) {
    text.Line();
    text.Document(one.plan->type->annotation, "");
    text.Line("enum class " + one.name + " : std::int32_t {");
    for (std::size_t i = 0; i < one.enumerators.size(); ++i) {
        text.Document(one.plan->values[i].annotation, "    ");
        text.Line("    " + one.enumerators[i] + ",");
    }
    text.Line("};");
    text.Line("/// Text of the value, as documents have it.");
    text.Line("const char* ToText(" + one.name + " value) noexcept;");
    text.Line("/// False when the text is none of the enumeration.");
    text.Line("bool FromText(std::string_view text, " + one.name + "& value) noexcept;");
}

}  // namespace

std::string WriteForwardHeader(const CCodeModel& model, const CodeOptions& options) {
    CCodeText text(options);
    text.Line("#pragma once\n");
    text.Include("<cstdint>");
    for (const auto& one : model.GetEnumerations()) {
        text.In(one->scope);
        text.Line("enum class " + one->name + " : std::int32_t;");
    }
    for (const CppClass* const one : model.GetClasses()) {
        text.In(one->scope);
        text.Line("class " + one->name + ";");
    }
    return text.Take();
}

std::string WriteHeader(const CCodeModel& model, const CodeOptions& options) {
    CCodeText text(options);
    const Needs needs = FindNeeds(model);
    text.Line("#pragma once\n");
    for (const char* const header : {"<cstdint>", "<limits>", "<string>", "<string_view>", "<utility>"})
        text.Include(header);
    text.Line();
    text.Include(options.name + "_fwd.h");
    if (needs.attributes) text.Include("kvxml/objects/attribute_col.h");
    if (needs.untyped) text.Include("kvxml/objects/element.h");
    text.Include("kvxml/objects/table_class.h");
    if (needs.views) text.Include("kvxml/objects/table_members.h");
    for (const std::string& header : needs.types)
        text.Include(header);
    for (const auto& one : model.GetEnumerations()) {
        text.In(one->scope);
        WriteEnum(*one, text);
    }
    for (const CppClass* const one : model.GetClasses()) {
        text.In(one->scope);
        CClassWriter(model, *one, text).Write();
    }
    if (!model.GetRoots().empty()) {
        text.In(model.MainScope());
        text.Line(
            "\n/// An object for documents whose root has the name; null when the schema has no such "
            "element.");
        text.Line("KvXmlLib16::CSmartPtr<KvXmlLib16::CTableClass> NewRoot(std::string_view namespaceUri,");
        text.Line("                                                      std::string_view localName);");
    }
    for (const CppClass* const one : model.GetClasses())
        CClassWriter(model, *one, text).WriteBodies();
    return text.Take();
}

}  // namespace tool::generate
