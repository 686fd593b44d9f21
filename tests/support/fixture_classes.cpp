#include "tests/support/fixture_classes.h"

#include <gtest/gtest.h>

namespace fixture {

namespace {

constexpr auto kCollapse = CWhitespaceUtils::WhitespaceRule_Collapse;
constexpr auto kNoRule = CWhitespaceUtils::WhitespaceRule_None;

enum ClassId { ClassId_Measure = 1, ClassId_Note, ClassId_Part, ClassId_Node };

CSmartPtr<CXmlObjectBase> Create(int classId, const char*) {
    switch (classId) {
        case ClassId_Measure:
            return new Measure();
        case ClassId_Note:
            return new Note();
        case ClassId_Part:
            return new Part();
        case ClassId_Node:
            return new Node();
        default:
            return nullptr;
    }
}

CPrimitiveRestrictions Pattern(const char* pattern) {
    return {pattern, -1, -1, nullptr, nullptr, nullptr, nullptr, -1, -1, -1, kNoRule, nullptr};
}
CPrimitiveRestrictions Length(int shortest, int longest) {
    return {nullptr, shortest, longest, nullptr, nullptr, nullptr, nullptr, -1, -1, -1, kNoRule, nullptr};
}
CPrimitiveRestrictions Range(const char* lowest, const char* highest) {
    return {nullptr, -1, -1, lowest, highest, nullptr, nullptr, -1, -1, -1, kNoRule, nullptr};
}

CParentElementInfo* Info(const char* name, bool failIfAttributeUnknown = false, int textProperty = -1,
                         ItemType textType = ItemType_Unknown, const char* format = "", bool asText = false) {
    return new CParentElementInfo(XmlElementGroupType_Sequence, XmlElementType_Element, name, kNamespace,
                                  failIfAttributeUnknown, false, textProperty, textType, format, asText);
}
CAttributeInfo* Attribute(const char* name, int property, bool optional, ItemType type,
                          const char* format = "", const CPrimitiveRestrictions& facets = {},
                          const char* initial = nullptr, const char* ns = "") {
    const auto rule = type == ItemType_string ? CWhitespaceUtils::WhitespaceRule_Preserve : kCollapse;
    return new CAttributeInfoPrimitive(name, ns, property, optional, type, format, rule, facets, initial);
}
template <class Record>
CElementInfo* Prim(const char* name, int property, ItemType type, bool nillable = false,
                   const char* format = "", const CPrimitiveRestrictions& facets = {},
                   const char* initial = nullptr) {
    const auto rule = type == ItemType_string ? CWhitespaceUtils::WhitespaceRule_Preserve : kCollapse;
    return new Record(name, kNamespace, property, nillable, type, format, rule, facets, initial);
}
template <class Record>
CElementInfo* Cls(const char* name, int property, ClassId id,
                  XmlElementType memberType = XmlElementType_Element) {
    return new Record(name, kNamespace, property, memberType, Create, id);
}

}  // namespace

const std::vector<ScalarText> kScalars = {
    {ItemType_hexBinary, "HexBinary", "00FF7A"},
    {ItemType_base64Binary, "Base64Binary", "SGVsbG8="},
    {ItemType_i1, "I1", "-128"},
    {ItemType_i2, "I2", "-32768"},
    {ItemType_i4, "I4", "-2147483648"},
    {ItemType_i8, "I8", "-9223372036854775808"},
    {ItemType_ui1, "UI1", "255"},
    {ItemType_ui2, "UI2", "65535"},
    {ItemType_ui4, "UI4", "4294967295"},
    {ItemType_ui8, "UI8", "18446744073709551615"},
    {ItemType_r4, "R4", "-1.5"},
    {ItemType_r8, "R8", "0.1"},
    {ItemType_duration, "Duration", "P1Y2M3DT4H5M6S"},
    {ItemType_yearMonth, "YearMonth", "2024-02"},
    {ItemType_monthDay, "MonthDay", "--12-31"},
    {ItemType_year, "Year", "1999"},
    {ItemType_month, "Month", "--07"},
    {ItemType_day, "Day", "---09"},
    {ItemType_date, "Date", "2024-02-29"},
    {ItemType_datetime, "DateTime", "2024-02-29T23:59:58Z"},
    {ItemType_time, "Time", "01:02:03"},
    {ItemType_char, "Char", "x"},
    {ItemType_string, "String", "a <b> & \"c\""},
    {ItemType_boolean, "Boolean", "true"},
    {ItemType_decimal, "Decimal", "123456789012345678901234567890.125"},
    {ItemType_integer, "Integer", "-123456789012345678901234567890"},
};

// --- properties --------------------------------------------------------------------------------------------

Property::Property(Class& owner) {
    owner.m_properties.push_back(this);
}

void Value::Access(bool read, KvVariant& value) {
    if (!read) {
        variant = value;
    } else if (variant.GetTypeAsEnum() == ItemType_string && !variant.IsNil()) {
        value.SetStringReference(variant.StringValue());
    } else if (variant.IsValid()) {
        value = variant;
    }
}

void Value::Reset() {
    variant.Clear();
    if (m_initial != nullptr) Parse(m_initial, m_type);
}

std::string Value::Text() const {
    if (variant.IsNil()) return "(nil)";
    return variant.IsValid() ? variant.ToString("") : "(none)";
}

// --- tables ------------------------------------------------------------------------------------------------

const char* ColorToString(int value) {
    constexpr const char* kNames[] = {"red", "green", "blue"};
    return value >= 0 && value < 3 ? kNames[value] : nullptr;
}

int ColorFromString(const char* text) {
    for (int i = Color_red; i <= Color_blue; ++i) {
        if (std::string_view(text) == ColorToString(i)) return i;
    }
    throw CKvInvalidValueException(FormatString("No such color [%s]", text));
}

Measure::Measure() {
    SetElementName("Measure");
    Init();
}
void Measure::MakeTables(Tables& t) {
    t.info = Info("Measure", true, 0, ItemType_r8, "%.3f");
    t.attributes = {Attribute("unit", 1, true, ItemType_string)};
}

RawText::RawText() {
    SetElementName("RawText");
    Init();
}
void RawText::MakeTables(Tables& t) {
    t.info = Info("RawText", true, 0, ItemType_i4, "", true);
}

Note::Note() {
    SetElementName("Note");
    Init();
}
void Note::MakeTables(Tables& t) {
    t.info = Info("Note", true);
    t.attributes = {Attribute("id", 0, true, ItemType_string)};
    t.elements = {Prim<CElementInfoSeqPrimMnd>("Text", 1, ItemType_string)};
}
void Note::Init() {
    Bound::Init();
    m_nil = false;
}

Part::Part() {
    Init();
}
void Part::MakeTables(Tables& t) {
    t.info = new CParentElementInfo(XmlElementGroupType_Sequence, XmlElementType_PseudoElement, "Part",
                                    kNamespace, false, false, -1, ItemType_Unknown, "", false);
    t.attributes = {Attribute("mark", 0, true, ItemType_string)};
    t.elements = {Prim<CElementInfoSeqPrimMnd>("First", 1, ItemType_string),
                  Prim<CElementInfoSeqPrimOpt>("Second", 2, ItemType_i4)};
}

Node::Node() {
    SetElementName("Node");
    Init();
}
void Node::MakeTables(Tables& t) {
    t.info = Info("Node");
    t.attributes = {Attribute("name", 0, true, ItemType_string)};
    t.elements = {Cls<CElementInfoSeqClsOpt>("Next", 1, ClassId_Node),
                  new CElementInfoSeqClsCol("Node", kNamespace, 2, XmlElementType_Element)};
}

Extended::Extended() {
    SetElementName("Extended");
    Init();
}
void Extended::MakeTables(Tables& t) {
    t.info = new CParentElementInfo(XmlElementGroupType_Sequence, XmlElementType_Element, "Extended",
                                    kNamespace, true, true, -1, ItemType_Unknown, "", false);
    t.elements = {Prim<CElementInfoSeqPrimOpt>("Text", 0, ItemType_string)};
}

Empty::Empty() {
    SetElementName("Empty");
    Init();
}
void Empty::MakeTables(Tables& t) {
    t.info = Info("Empty", true);
}

Kinds::Kinds() {
    SetElementName("Kinds");
    Init();
}
void Kinds::MakeTables(Tables& t) {
    t.info = Info("Kinds");
    int index = 0;
    t.attributes.push_back(Attribute("id", index++, false, ItemType_i4));
    t.attributes.push_back(
        new CAttributeInfoEnum("level", "", index++, false, ColorToString, ColorFromString, nullptr));
    t.attributes.push_back(Attribute("code", index++, true, ItemType_string, "", Pattern("[A-Z]{2}")));
    t.attributes.push_back(Attribute("ratio", index++, true, ItemType_r8, "%.2f", Range("0", "10")));
    t.attributes.push_back(Attribute("size", index++, true, ItemType_i4, "", {}, "10"));
    t.attributes.push_back(
        new CAttributeInfoEnum("paint", "", index++, true, ColorToString, ColorFromString, "green"));
    t.attributes.push_back(
        Attribute("lang", index++, true, ItemType_string, "", {}, nullptr, kAttributeNamespace));
    t.elements.push_back(
        Prim<CElementInfoSeqPrimMnd>("Title", index++, ItemType_string, false, "", Length(1, 20)));
    t.elements.push_back(
        Prim<CElementInfoSeqPrimOpt>("Count", index++, ItemType_i4, true, "", Range("0", "100")));
    t.elements.push_back(
        Prim<CElementInfoSeqPrimMnd>("Price", index++, ItemType_decimal, false, "2", {}, "1.50"));
    t.elements.push_back(Prim<CElementInfoSeqPrimOpt>("Weight", index++, ItemType_r8, false, "%.3f"));
    t.elements.push_back(new CElementInfoSeqEnumMnd("Color", kNamespace, index++, false, ColorToString,
                                                    ColorFromString, "green"));
    t.elements.push_back(new CElementInfoSeqEnumOpt("Shade", kNamespace, index++, true, ColorToString,
                                                    ColorFromString, nullptr));
    t.elements.push_back(Cls<CElementInfoSeqClsMnd>("Length", index++, ClassId_Measure));
    t.elements.push_back(Cls<CElementInfoSeqClsOpt>("Note", index++, ClassId_Note));
    t.elements.push_back(
        Cls<CElementInfoSeqClsOpt>("Part", index++, ClassId_Part, XmlElementType_PseudoElement));
    t.elements.push_back(new CElementInfoSeqClsCol("Point", kNamespace, index++, XmlElementType_Element));
    t.elements.push_back(new CElementInfoSeqClsCol("Node", kNamespace, index++, XmlElementType_Element));
}

// --- content -----------------------------------------------------------------------------------------------

void Fill(Kinds& kinds) {
    kinds.id.variant.SetI4(-7);
    kinds.level.variant.SetI4(Color_blue);
    kinds.code.variant.SetString("DE");
    kinds.ratio.variant.SetR8(1.25);
    kinds.size.variant.SetI4(12);
    kinds.paint.variant.SetI4(Color_red);
    kinds.lang.variant.SetString("a<\"b\"\n&c");
    kinds.title.variant.SetString("Fish & <Chips>\n");
    kinds.count.variant.SetI4(42);
    kinds.price.Parse("12.3", ItemType_decimal);
    kinds.weight.variant.SetR8(0.5);
    kinds.color.variant.SetI4(Color_blue);
    kinds.shade.variant.SetI4(Color_red);
    kinds.length.object->value.variant.SetR8(2.5);
    kinds.length.object->unit.variant.SetString("m");
    Note& note = kinds.note.Create();
    note.id.variant.SetString("n1");
    note.text.variant.SetString("\xC3\xA4\xE2\x82\xAC\xF0\x9F\x8D\x9F");
    Part& part = kinds.part.Create();
    part.mark.variant.SetString("P");
    part.first.variant.SetString("one");
    part.second.variant.SetI4(2);
    kinds.points.Get().CreateNew()->value.variant.SetR8(1);
    kinds.points.Get().CreateNew()->value.variant.SetR8(-2);
    const auto a = kinds.nodes.Get().CreateNew();
    a->name.variant.SetString("a");
    a->next.Create().name.variant.SetString("b");
    const auto c = a->nodes.Get().CreateNew();
    c->name.variant.SetString("c");
    c->nodes.Get().CreateNew();
    kinds.nodes.Get().CreateNew()->name.variant.SetString("d");
}

void Check(Kinds& kinds) {
    EXPECT_EQ(kinds.Name(), "Kinds");
    EXPECT_EQ(kinds.id.Text(), "-7");
    EXPECT_EQ(kinds.level.Text(), "2");
    EXPECT_EQ(kinds.code.Text(), "DE");
    EXPECT_EQ(kinds.ratio.Text(), "1.25");
    EXPECT_EQ(kinds.size.Text(), "12");
    EXPECT_EQ(kinds.paint.Text(), "0");
    EXPECT_EQ(kinds.lang.Text(), "a<\"b\"\n&c");
    EXPECT_EQ(kinds.title.Text(), "Fish & <Chips>\n");
    EXPECT_EQ(kinds.count.Text(), "42");
    EXPECT_EQ(kinds.price.Text(), "12.3");
    EXPECT_EQ(kinds.weight.Text(), "0.5");
    EXPECT_EQ(kinds.color.Text(), "2");
    EXPECT_EQ(kinds.shade.Text(), "0");
    EXPECT_EQ(kinds.length.object->value.Text(), "2.5");
    EXPECT_EQ(kinds.length.object->unit.Text(), "m");
    EXPECT_EQ(kinds.length.object->Name(), "Length");
    ASSERT_NE(kinds.note.object, nullptr);
    EXPECT_FALSE(kinds.note.object->IsNil());
    EXPECT_EQ(kinds.note.object->id.Text(), "n1");
    EXPECT_EQ(kinds.note.object->text.Text(), "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x8D\x9F");
    ASSERT_NE(kinds.part.object, nullptr);
    EXPECT_EQ(kinds.part.object->mark.Text(), "P");
    EXPECT_EQ(kinds.part.object->first.Text(), "one");
    EXPECT_EQ(kinds.part.object->second.Text(), "2");
    ASSERT_EQ(kinds.points.Count(), 2);
    EXPECT_EQ(kinds.points.Get().Item(0)->value.Text(), "1");
    EXPECT_EQ(kinds.points.Get().Item(1)->value.Text(), "-2");
    EXPECT_EQ(kinds.points.Get().Item(1)->unit.Text(), "(none)");
    ASSERT_EQ(kinds.nodes.Count(), 2);
    const auto a = kinds.nodes.Get().Item(0);
    EXPECT_EQ(a->name.Text(), "a");
    ASSERT_NE(a->next.object, nullptr);
    EXPECT_EQ(a->next.object->name.Text(), "b");
    ASSERT_EQ(a->nodes.Count(), 1);
    EXPECT_EQ(a->nodes.Get().Item(0)->name.Text(), "c");
    ASSERT_EQ(a->nodes.Get().Item(0)->nodes.Count(), 1);
    EXPECT_EQ(a->nodes.Get().Item(0)->nodes.Get().Item(0)->name.Text(), "(none)");
    EXPECT_EQ(kinds.nodes.Get().Item(1)->name.Text(), "d");
}

const char* const kKindsXml =
    "<AA:Kinds xmlns:AA=\"urn:fixture\" id=\"-7\" level=\"blue\" code=\"DE\" ratio=\"1.25\" size=\"12\""
    " paint=\"red\" xmlns:AB=\"urn:fixture:attributes\" AB:lang=\"a&lt;&quot;b&quot;&#xA;&amp;c\""
    " mark=\"P\">\n"
    "\t<AA:Title>Fish &amp; &lt;Chips&gt;\n</AA:Title>\n"
    "\t<AA:Count>42</AA:Count>\n"
    "\t<AA:Price>12.30</AA:Price>\n"
    "\t<AA:Weight>0.500</AA:Weight>\n"
    "\t<AA:Color>blue</AA:Color>\n"
    "\t<AA:Shade>red</AA:Shade>\n"
    "\t<AA:Length unit=\"m\">2.500</AA:Length>\n"
    "\t<AA:Note id=\"n1\">\n"
    "\t\t<AA:Text>\xC3\xA4\xE2\x82\xAC\xF0\x9F\x8D\x9F</AA:Text>\n"
    "\t</AA:Note>\n"
    "\t<AA:First>one</AA:First>\n"
    "\t<AA:Second>2</AA:Second>\n"
    "\t<AA:Point>1.000</AA:Point>\n"
    "\t<AA:Point>-2.000</AA:Point>\n"
    "\t<AA:Node name=\"a\">\n"
    "\t\t<AA:Next name=\"b\"/>\n"
    "\t\t<AA:Node name=\"c\">\n"
    "\t\t\t<AA:Node/>\n"
    "\t\t</AA:Node>\n"
    "\t</AA:Node>\n"
    "\t<AA:Node name=\"d\"/>\n"
    "</AA:Kinds>\n";

const char* const kSmallKindsXml =
    "<Kinds xmlns=\"urn:fixture\" id=\"1\" level=\"red\"><Title>t</Title><Price>2</Price>"
    "<Color>red</Color><Length>1</Length><Point>1</Point></Kinds>";

}  // namespace fixture
