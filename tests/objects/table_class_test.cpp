#include "kvxml/objects/table_class.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kvxml/kvxml.h"
#include "kvxml/objects/table_members.h"
#include "tests/support/error_of.h"

namespace KvXmlLib16 {
namespace {

constexpr const char* kNs = "urn:t";

// --- simple types ------------------------------------------------------------------------------------------

constexpr CValueType kText{ItemType_string, CValueType::Whitespace::Preserve};
constexpr CValueType kToken{ItemType_string};
constexpr CValueType kNumber{ItemType_i4};
constexpr CValueType kUnsigned{ItemType_ui4};
constexpr CValueType kReal{ItemType_r8};
constexpr CValueType kDecimal{ItemType_decimal};
constexpr CValueType kDay{ItemType_date};
constexpr CValueType kFlag{ItemType_boolean};

constexpr const char* kPatterns[] = {"[A-Z]+-[0-9]+", ".{4,6}"};
constexpr CFacetTable kCodeFacets{kPatterns, 2, -1, -1, 6};
constexpr CValueType kCode{ItemType_string, CValueType::Whitespace::Collapse, &kCodeFacets};

enum class EColor : std::int32_t { red, green };
constexpr const char* kColorTexts[] = {"red", "green"};
constexpr CEnumTable kColors{"Color", kColorTexts, 2};
constexpr CValueType kColor{ItemType_string, CValueType::Whitespace::Collapse, nullptr, &kColors};

constexpr CFacetTable kFewFacets{nullptr, 0, -1, 0, 3};
constexpr CValueType kFew{ItemType_string, CValueType::Whitespace::Collapse, &kFewFacets, nullptr, &kNumber};

constexpr const CValueType* kSizes[] = {&kNumber, &kColor};
constexpr CValueType kSize{
    ItemType_string, CValueType::Whitespace::Collapse, nullptr, nullptr, nullptr, kSizes, 2};

template <class T>
CTableClass* New() {
    return new T();
}

// --- a base class, two classes derived from it, a global element -------------------------------------------

class CShape : public CTableClass {
public:
    static const CClassTable kTable;
    explicit CShape(const char* name = nullptr) : CTableClass(name) {}
    const CClassTable& GetClassTable() const noexcept override { return kTable; }

    const std::string& GetName() const { return m_name; }
    void SetName(std::string value) {
        m_name = std::move(value);
        MarkSet(0);
    }

    std::string m_name;
    std::string m_label;
};

class CCircle : public CShape {
public:
    static const CClassTable kTable;
    using CShape::CShape;
    const CClassTable& GetClassTable() const noexcept override { return kTable; }
    void SetRadius(double value) {
        m_radius = value;
        MarkSet(2);
    }

    double m_radius = 0;
};

class CRing : public CCircle {  // the global element "ring" of the type Circle
public:
    static const CClassTable kTable;
    CRing() : CCircle("ring") {}
    const CClassTable& GetClassTable() const noexcept override { return kTable; }
};

/// A choice: width and perhaps height, or side.
class CBox : public CShape {
public:
    static const CClassTable kTable;
    using CShape::CShape;
    const CClassTable& GetClassTable() const noexcept override { return kTable; }
    void Set(std::int32_t CBox::*place, std::uint16_t bit, std::int32_t value) {
        Choose(&(this->*place));
        this->*place = value;
        MarkSet(bit);
    }
    bool Has(std::uint16_t bit) const { return IsSet(bit); }

    std::int32_t m_width = 0;
    std::int32_t m_height = 0;
    std::int32_t m_side = 0;
};

const CMember kShapeMembers[] = {
    CMember::Attribute("name", "", At(&CShape::m_name), kToken).Bit(0).Required(),
    CMember::Value("label", kNs, At(&CShape::m_label), kText).Bit(1),
};
const CMember kCircleMembers[] = {
    CMember::Value("radius", kNs, At(&CCircle::m_radius), kReal).Bit(2).Required(),
};
const CMember kBoxMembers[] = {
    CMember::Value("width", kNs, At(&CBox::m_width), kNumber).Bit(2).Required(),
    CMember::Value("height", kNs, At(&CBox::m_height), kNumber).Bit(3),
    CMember::Value("side", kNs, At(&CBox::m_side), kNumber).Bit(70).Required(),
};
const CContentNode kBoxContent[] = {
    CContentNode::Choice(5), CContentNode::Sequence(3), CContentNode::Member(0),
    CContentNode::Member(1), CContentNode::Member(2),
};
const CClassTable* const kShapes[] = {&CCircle::kTable, &CBox::kTable};
const CClassTable CShape::kTable{"Shape", kNs, nullptr, nullptr, kShapeMembers, nullptr, kShapes, 2, 0, 2, 0};
const CClassTable CCircle::kTable{
    "Circle", kNs, &New<CCircle>, &CShape::kTable, kCircleMembers, nullptr, nullptr, 1, 0, 0, 0};
const CClassTable CRing::kTable{"ring", kNs, &New<CRing>, &CCircle::kTable,  nullptr, nullptr, nullptr,
                                0,      0,   0,           CClassTable::kRoot};
const CClassTable CBox::kTable{"Box", kNs, &New<CBox>, &CShape::kTable, kBoxMembers, kBoxContent, nullptr, 3,
                               5,     0,   0};

// --- simple content, mixed content, groups, an all-group ---------------------------------------------------

class CPrice : public CTableClass {
public:
    static const CClassTable kTable;
    const CClassTable& GetClassTable() const noexcept override { return kTable; }
    CDecimal m_value;
    std::string m_currency = "EUR";
};
const CMember kPriceMembers[] = {
    CMember::Attribute("currency", "", At(&CPrice::m_currency), kToken).Bit(0).Default("EUR"),
    CMember::Text(At(&CPrice::m_value), kDecimal).Bit(1).Required(),
};
const CClassTable CPrice::kTable{"Price", kNs, &New<CPrice>, nullptr, kPriceMembers, nullptr, nullptr, 2, 0,
                                 0,       0};

class CPara : public CTableClass {
public:
    static const CClassTable kTable;
    const CClassTable& GetClassTable() const noexcept override { return kTable; }
    std::string m_text;
    CSmartPtr<CXmlCollectionBase> m_em;
};
const CMember kParaMembers[] = {
    CMember::Text(At(&CPara::m_text), kText).Bit(0),
    CMember::Values("em", kNs, At(&CPara::m_em), kText, 0, CMember::kUnbounded),
};
const CClassTable CPara::kTable{"Para",  kNs, &New<CPara>, nullptr, kParaMembers,       nullptr,
                                nullptr, 2,   0,           0,       CClassTable::kMixed};

class CPair : public CTableClass {
public:
    static const CClassTable kTable;
    const CClassTable& GetClassTable() const noexcept override { return kTable; }
    std::string m_key;
    CSmartPtr<CXmlCollectionBase> m_val;
};
const CMember kPairMembers[] = {
    CMember::Value("key", kNs, At(&CPair::m_key), kToken).Bit(0).Required(),
    CMember::Values("val", kNs, At(&CPair::m_val), kNumber, 0, 2),
};
const CClassTable CPair::kTable{"pair",  kNs, &New<CPair>, nullptr, kPairMembers,       nullptr,
                                nullptr, 2,   0,           0,       CClassTable::kGroup};

class CPick : public CTableClass {  // a repeated choice
public:
    static const CClassTable kTable;
    const CClassTable& GetClassTable() const noexcept override { return kTable; }
    std::int32_t m_one = 0;
    std::string m_two;
};
const CMember kPickMembers[] = {
    CMember::Value("one", kNs, At(&CPick::m_one), kNumber).Bit(0).Required(),
    CMember::Value("two", kNs, At(&CPick::m_two), kText).Bit(1).Required(),
};
const CContentNode kPickContent[] = {CContentNode::Choice(3), CContentNode::Member(0),
                                     CContentNode::Member(1)};
const CClassTable CPick::kTable{"pick",  kNs, &New<CPick>, nullptr, kPickMembers,       kPickContent,
                                nullptr, 2,   3,           0,       CClassTable::kGroup};

class CAll : public CTableClass {
public:
    static const CClassTable kTable;
    const CClassTable& GetClassTable() const noexcept override { return kTable; }
    bool m_p = false;
    CDateTime m_q;
    CSmartPtr<CXmlObjectBase> m_next;
};
const CMember kAllMembers[] = {
    CMember::Value("p", kNs, At(&CAll::m_p), kFlag).Bit(0).Required(),
    CMember::Value("q", kNs, At(&CAll::m_q), kDay).Bit(1),
    CMember::Object("next", kNs, At(&CAll::m_next), CAll::kTable),
};
const CContentNode kAllContent[] = {CContentNode::All(4), CContentNode::Member(0), CContentNode::Member(1),
                                    CContentNode::Member(2)};
const CClassTable CAll::kTable{"all", kNs, &New<CAll>, nullptr, kAllMembers, kAllContent, nullptr,
                               3,     4,   0,          0};

/// A name at two places, and a wildcard that may take the same name.
class CTwice : public CTableClass {
public:
    static const CClassTable kTable;
    const CClassTable& GetClassTable() const noexcept override { return kTable; }
    std::int32_t m_first = 0;
    std::string m_between;
    std::int32_t m_last = 0;
    CSmartPtr<CXmlCollectionBase> m_rest;
};
const CMember kTwiceMembers[] = {
    CMember::Value("a", kNs, At(&CTwice::m_first), kNumber).Bit(0).Required(),
    CMember::Value("b", kNs, At(&CTwice::m_between), kText).Bit(1).Required(),
    CMember::Value("a", kNs, At(&CTwice::m_last), kNumber).Bit(2).Required(),
    CMember::Anys("", "", At(&CTwice::m_rest), "##targetNamespace", kNs, 0, CMember::kUnbounded),
};
const CContentNode kTwiceContent[] = {CContentNode::Sequence(6),       CContentNode::Member(0),
                                      CContentNode::Sequence(3, true), CContentNode::Member(1),
                                      CContentNode::Member(2),         CContentNode::Member(3)};
const CClassTable CTwice::kTable{
    "twice", kNs, &New<CTwice>, nullptr, kTwiceMembers, kTwiceContent, nullptr, 4, 6, 0, 0};

/// A restriction of the circle without its label.
class CDot : public CCircle {
public:
    static const CClassTable kTable;
    using CCircle::CCircle;
    const CClassTable& GetClassTable() const noexcept override { return kTable; }
};
const CMember kDotMembers[] = {
    CMember::Attribute("name", "", At(&CDot::m_name), kToken).Bit(0),
    CMember::Value("radius", kNs, At(&CDot::m_radius), kReal).Bit(2),
};
const CClassTable CDot::kTable{
    "Dot", kNs, &New<CDot>, &CCircle::kTable,         kDotMembers, nullptr, nullptr,
    2,     0,   0,          CClassTable::kRestriction};

// --- all kinds of members ----------------------------------------------------------------------------------

class CDoc : public CTableClass {
public:
    static const CClassTable kTable;
    const CClassTable& GetClassTable() const noexcept override { return kTable; }

    EColor GetColor() const { return static_cast<EColor>(m_color); }
    bool HasColor() const { return IsSet(1); }
    void SetCode(std::string value) {
        m_code = std::move(value);
        MarkSet(2);
    }
    void SetTitle(std::string value) {
        m_title = std::move(value);
        MarkSet(4);
    }
    void ClearTitle() { Unset(&m_title); }
    CShape& GetShape() { return const_cast<CShape&>(static_cast<const CShape&>(Held(m_shape))); }
    CShape& MakeShape() { return static_cast<CShape&>(Made(m_shape)); }
    void SetShape(const CSmartPtr<CShape>& value) { Take(m_shape, value.Get()); }
    CPrice& MakePrice() { return static_cast<CPrice&>(Made(m_price)); }
    CValuesOf<std::int32_t> GetNums() { return {*this, m_nums}; }
    CValuesOf<std::string> GetTag() { return {*this, m_tag}; }
    CObjectsOf<CShape> GetItem() { return {*this, m_item}; }
    CObjectsOf<CPick> GetPick() { return {*this, m_pick}; }

    std::uint32_t m_id = 0;
    std::int32_t m_color = 1;
    std::string m_code;
    CDecimal m_version{"1.0"};
    CSmartPtr<CXmlCollectionBase> m_few;
    CSmartPtr<CAttributeCol> m_attributes;
    std::string m_title;
    std::string m_note;
    std::string m_size;
    CSmartPtr<CXmlCollectionBase> m_nums;
    CSmartPtr<CXmlCollectionBase> m_tag;
    CSmartPtr<CXmlObjectBase> m_shape;
    CSmartPtr<CXmlObjectBase> m_price;
    CSmartPtr<CXmlCollectionBase> m_item;
    CSmartPtr<CXmlCollectionBase> m_pair;
    CSmartPtr<CXmlCollectionBase> m_pick;
    CSmartPtr<CXmlObjectBase> m_para;
    CSmartPtr<CElement> m_blob;
    CSmartPtr<CXmlCollectionBase> m_any;
};
const CSubstitute kShapeSubstitutes[] = {{"ring", kNs, &CRing::kTable}};
const CMember kDocMembers[] = {
    CMember::Attribute("id", "", At(&CDoc::m_id), kUnsigned).Bit(0).Required(),
    CMember::Attribute("color", "", At(&CDoc::m_color), kColor).Bit(1).Default("green"),
    CMember::Attribute("code", "", At(&CDoc::m_code), kCode).Bit(2),
    CMember::Attribute("version", "", At(&CDoc::m_version), kDecimal).Bit(3).Fixed("1.0"),
    CMember::Attribute("few", "", At(&CDoc::m_few), kFew),
    CMember::AnyAttributes(At(&CDoc::m_attributes), "##other", kNs),
    CMember::Value("title", kNs, At(&CDoc::m_title), kText).Bit(4).NilBit(5).Required().Nillable(),
    CMember::Value("note", kNs, At(&CDoc::m_note), kText).Bit(6).Default("none"),
    CMember::Value("size", kNs, At(&CDoc::m_size), kSize).Bit(7),
    CMember::Value("nums", kNs, At(&CDoc::m_nums), kFew),
    CMember::Values("tag", kNs, At(&CDoc::m_tag), kToken, 0, 2),
    CMember::Object("shape", kNs, At(&CDoc::m_shape), CShape::kTable).Or(kShapeSubstitutes),
    CMember::Object("price", kNs, At(&CDoc::m_price), CPrice::kTable).Nillable(),
    CMember::Objects("item", kNs, At(&CDoc::m_item), CShape::kTable, 0, 3).Or(kShapeSubstitutes),
    CMember::Groups(At(&CDoc::m_pair), CPair::kTable, 0, 2),
    CMember::Groups(At(&CDoc::m_pick), CPick::kTable, 0, CMember::kUnbounded),
    CMember::Object("para", kNs, At(&CDoc::m_para), CPara::kTable),
    CMember::Any("blob", kNs, At(&CDoc::m_blob), nullptr, nullptr),
    CMember::Anys("", "", At(&CDoc::m_any), "urn:a urn:b ##local", kNs, 0, 2),
};
const CClassTable CDoc::kTable{
    "doc", kNs, &New<CDoc>, nullptr, kDocMembers, nullptr, nullptr, 19, 0, 0, CClassTable::kAnonymous};

// --- documents ---------------------------------------------------------------------------------------------

std::string Wrap(const std::string& element, const std::string& attributes, const std::string& content) {
    return "<" + element + " xmlns='urn:t' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance'" +
           attributes + ">" + content + "</" + element + ">";
}

CSerializationContext Writing() {
    CSerializationContext context;
    context.SetDefaultNamespaceURI(kNs);
    context.GetNamespaceAliases().Add("xsi", "http://www.w3.org/2001/XMLSchema-instance");
    return context;
}

/// What the object writes, without declarations.
std::string Written(const CXmlObjectBase& object) {
    std::string xml = object.ToXml(false, false, EOLType_LF, Writing());
    for (const char* const declaration :
         {" xmlns=\"urn:t\"", " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\""}) {
        const std::size_t at = xml.find(declaration);
        if (at != std::string::npos) xml.erase(at, std::string(declaration).size());
    }
    return xml;
}

/// Reads, writes, and takes the object through every other format and every copy.
template <class T>
void ExpectRoundTrip(const std::string& document, const std::string& written) {
    SCOPED_TRACE(document);
    const CSmartPtr<T> object(new T());
    ASSERT_EQ(ErrorOf([&] { object->FromXml(document); }), "(no error)");
    ASSERT_EQ(ErrorOf([&] { Written(*object); }), "(no error)");
    EXPECT_EQ(Written(*object), written);
    const CSmartPtr<T> other(new T());
    other->FromXml(object->ToXml());
    EXPECT_TRUE(*object == *other) << object->ToXml();
    const std::string json = object->ToJson(false, EOLType_LF, Writing());
    ASSERT_EQ(ErrorOf([&] { other->FromJson(json); }), "(no error)") << json;
    EXPECT_TRUE(*object == *other) << json << Written(*other);
    other->FromXmlStream(object->ToFastInfosetStream());
    EXPECT_TRUE(*object == *other);
    EXPECT_TRUE(*object == *Clone(*object));
    EXPECT_EQ(Written(*Clone(*object)), written);
}

TEST(TableClassTest, DocumentsReadAndWritten) {
    struct Row {
        std::string attributes;
        std::string content;
        std::string written;  // empty: the same
    };
    const std::string t = "<title>a</title>";
    const Row rows[] = {
        {"", t, ""},
        {"", "<title xsi:nil=\"true\"/>", ""},
        {" color=\"red\" code=\"A-12\" few=\"1 2\"", t + "<note>b</note><nums>3 4 5</nums>", ""},
        // Empty lists are values; texts are normalised; an empty element has its default.
        {" few=\"\"", t + "<nums/>", ""},
        {" version='1.00' few=' 1\n 02 '", t + "<note/><size> 07 </size>",
         " version=\"1\" few=\"1 2\">" + t + "<note/><size>07</size>"},
        {"", t + "<tag>x</tag><tag>y</tag>", ""},
        // Classes by name and by type; the type of the global element is not named.
        {"", t + "<ring name=\"r\"><radius>1</radius></ring>", ""},
        {"", t + "<shape xsi:type=\"Box\" name=\"b\"><label>l</label><width>1</width></shape>", ""},
        {"", t + "<shape xsi:type=' Circle ' name='b'><radius>1</radius></shape>",
         ">" + t + "<shape xsi:type=\"Circle\" name=\"b\"><radius>1</radius></shape>"},
        {"",
         t + "<item xsi:type=\"Box\" name=\"b\"><side>2</side></item><ring "
             "name=\"r\"><radius>1</radius></ring>"
             "<item xsi:type=\"Circle\" name=\"c\"><radius>3</radius></item>",
         ""},
        {"", t + "<price currency=\"USD\">1.50</price>", " >" /* see below */},
        {"", t + "<price xsi:nil=\"true\"/>", ""},
        // Groups end where the next thing begins.
        {"", t + "<key>k</key><val>1</val><key>l</key><one>1</one><two>b</two><one>2</one>", ""},
        {"", t + "<para>some text<em>b</em><em>c</em></para>", ""},
        {"", t + "<para>\n <em>b</em>\n</para>", ">" + t + "<para><em>b</em></para>"},
        {"", t + "<blob q=\"1\"><z xmlns=\"\"/></blob>", ""},
        {" xmlns:o=\"urn:o\" o:x=\"1\"", t + "<p:q xmlns:p=\"urn:b\">1</p:q>",
         " xmlns:o=\"urn:o\" o:x=\"1\">" + t + "<p:q xmlns:p=\"urn:b\">1</p:q>"},
    };
    for (Row row : rows) {
        if (row.written == " >") row.written = ">" + t + "<price currency=\"USD\">1.5</price>";
        const std::string written = row.written.empty() ? row.attributes + ">" + row.content : row.written;
        ExpectRoundTrip<CDoc>(Wrap("doc", " id='1'" + row.attributes, row.content),
                              "<doc id=\"1\"" + written + "</doc>");
    }
    ExpectRoundTrip<CAll>(Wrap("all", "", "<q>2020-01-02</q><next><p>1</p></next><p>true</p>"),
                          "<all><p>true</p><q>2020-01-02</q><next><p>true</p></next></all>");
    const std::string thrice = "<twice><a>1</a><b>x</b><a>2</a><a>3</a></twice>";
    ExpectRoundTrip<CTwice>(Wrap("twice", "", "<a>1</a><b>x</b><a>2</a><a>3</a>"), thrice);
    ExpectRoundTrip<CTwice>(Wrap("twice", "", "<a>1</a>"), "<twice><a>1</a></twice>");
    ExpectRoundTrip<CDot>(Wrap("Dot", "", "<radius>1</radius>"), "<Dot><radius>1</radius></Dot>");
    ExpectRoundTrip<CRing>(Wrap("ring", " name='r'", "<radius>1</radius>"),
                           "<ring name=\"r\"><radius>1</radius></ring>");
}

TEST(TableClassTest, DocumentsRefused) {
    const struct {
        std::string attributes;
        std::string content;
        const char* message;
    } rows[] = {
        {"", "", "Failed to find the required child element [title].\nPath: /doc"},
        {" x='1'", "<title/>", "Unexpected Attribute found.\nPath: /doc/@x"},
        {" color='blue'", "<title/>",
         "Failed to set the property value [color].\nPath: /doc/@color\nInvalid Value for Color [blue]."},
        {" code='a-12'", "<title/>",
         "Failed to set the property value [code].\nPath: /doc/@code\nInvalid Value for code [a-12]. It "
         "violates "
         "the facet pattern [[A-Z]+-[0-9]+]."},
        {" code='A-1'", "<title/>",
         "Failed to set the property value [code].\nPath: /doc/@code\nInvalid Value for code [A-1]. It "
         "violates "
         "the facet pattern [.{4,6}]."},
        {" version='2'", "<title/>",
         "Failed to set the property value [version].\nPath: /doc/@version\nInvalid Value for version [2]. "
         "The "
         "only value is [1.0]."},
        {" few='1 2 3 4'", "<title/>",
         "Failed to set the property value [few].\nPath: /doc/@few\nInvalid Value for few [1 2 3 4]. It "
         "violates "
         "the facet maxLength [3]."},
        {"", "<title/><size>blue</size>",
         "Failed to set the property value [size].\nPath: /doc/size\nInvalid Value for size [blue]."},
        {"", "<title xsi:nil='true'>a</title>",
         "The element [title] is nil and must be empty.\nPath: /doc/title"},
        {"", "<title/><note xsi:nil='true'/>",
         "Invalid use of 'nil' attribute in non-nillable element.\nPath: /doc/note"},
        {"", "<title/>text", "The element [doc] may not contain text.\nPath: /doc"},
        {"", "<title/><tag/><tag/><tag/>",
         "The Maximum number of [tag] elements allowed in this collection is 2\nPath: /doc"},
        {"", "<title/><shape name='a'/>",
         "The type [Shape] of the element [shape] is abstract.\nPath: /doc/shape"},
        {"", "<title/><shape xsi:type='Price' name='a'/>",
         "The type [Price] can not stand in for the type of the element [shape].\nPath: /doc/shape"},
        {"", "<title/><shape xsi:type='Box' name='a'><height>1</height></shape>",
         "Expected one of [width, side] in place of [height].\nPath: /doc/shape/height"},
        {"", "<title/><shape xsi:type='Box' name='a'/>",
         "No child elements within the element [shape] were populated. The element represents a choice, so "
         "one "
         "and only one element should be populated. The element contained no sutable child elements\nPath: "
         "/doc/shape"},
        {"", "<title/><ring name='r'/>",
         "Failed to find the required child element [radius].\nPath: /doc/ring"},
        {"", "<title/><ring><radius>1</radius></ring>",
         "Failed to find the required Attribute [name].\nPath: /doc/ring"},
        {"", "<title/><key/><note/>",
         "Failed read all the elements held within the element [doc]. The unexpected element [note] remains "
         "un "
         "processed\nPath: /doc"},
        {"", "<title/><q xmlns='urn:c'/>",
         "Failed read all the elements held within the element [doc]. The unexpected element [q] remains un "
         "processed\nPath: /doc"},
    };
    for (const auto& row : rows) {
        const std::string document = Wrap("doc", " id='1'" + row.attributes, row.content);
        EXPECT_EQ(ErrorOf([&] { CDoc().FromXml(document); }), row.message) << document;
    }
    EXPECT_EQ(ErrorOf([&] { CTwice().FromXml(Wrap("twice", "", "<a>1</a><b>x</b>")); }),
              "Failed to find the required child element [a].\nPath: /twice");
    EXPECT_EQ(ErrorOf([&] { CDot().FromXml(Wrap("Dot", "", "<label/>")); }),
              "Failed read all the elements held within the element [Dot]. The unexpected element [label] "
              "remains un "
              "processed\nPath: /Dot");
    EXPECT_EQ(ErrorOf([&] { CAll().FromXml(Wrap("all", "", "<q>2020-01-02</q>")); }),
              "Failed to find the mandatory element [p].\nPath: /all");
}

TEST(TableClassTest, ContextDecidesWhatIsTolerated) {
    using Setter = void (*)(CSerializationContext&);
    const struct {
        Setter set;
        const char* document;
        const char* written;
    } rows[] = {
        {[](CSerializationContext& c) { c.SetIgnoreUnknownElements(true); },
         "<doc xmlns='urn:t' "
         "id='1'><x/><title>a</title><title>again</title><x/><tag>1</tag><x><tag/></x><tag>2</tag><one>1</"
         "one><x/>"
         "<two>2</two><x/></doc>",
         "<doc id=\"1\"><title>a</title><tag>1</tag><tag>2</tag><one>1</one><two>2</two></doc>"},
        {[](CSerializationContext& c) { c.SetIgnoreUnknownAttributes(true); },
         "<doc xmlns='urn:t' id='1' x='2'><title y='1'>a</title></doc>",
         "<doc id=\"1\"><title>a</title></doc>"},
        {[](CSerializationContext& c) { c.SetIgnoreNamespaces(true); },
         "<doc id='1'><title>a</title><one>1</one></doc>",
         "<doc id=\"1\"><title>a</title><one>1</one></doc>"},
        {[](CSerializationContext& c) { c.SetIgnoreMissingChoice(true); },
         "<doc xmlns='urn:t' id='1'><title/><shape xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' "
         "xsi:type='Box' name='b'/></doc>",
         nullptr},
        {[](CSerializationContext& c) { c.SetIgnoreMissingMandatoryElements(true); },
         "<doc xmlns='urn:t' id='1'><note>a</note></doc>", nullptr},
        {[](CSerializationContext& c) { c.SetIgnoreInvalidCollectionCounts(true); },
         "<doc xmlns='urn:t' id='1'><title/><tag>1</tag><tag>2</tag><tag>3</tag></doc>", nullptr},
    };
    for (const auto& row : rows) {
        CSerializationContext context;
        row.set(context);
        CDoc doc;
        EXPECT_EQ(ErrorOf([&] { doc.FromXml(row.document, context); }), "(no error)") << row.document;
        if (row.written != nullptr) {
            EXPECT_EQ(Written(doc), row.written);
        } else {
            EXPECT_NE(ErrorOf([&] { Written(doc); }), "(no error)");
        }
    }
}

TEST(TableClassTest, NullsOfJson) {
    CDoc doc;
    CSerializationContext context;
    context.SetIgnoreNamespaces(true);
    doc.FromJson(R"({"doc":{"@id":1,"title":null,"note":null,"tag":null,"price":null,"two":"x"}})", context);
    EXPECT_EQ(Written(doc),
              "<doc id=\"1\"><title xsi:nil=\"true\"/><price xsi:nil=\"true\"/><two>x</two></doc>");
}

TEST(TableClassTest, AccessorsAndWritingOfWhatIsWrong) {
    CDoc doc;
    EXPECT_FALSE(doc.HasColor());
    EXPECT_EQ(doc.GetColor(), EColor::green);
    EXPECT_EQ(ErrorOf([&] { doc.GetShape(); }), "The member [shape] is not set.");
    EXPECT_EQ(ErrorOf([&] { doc.MakeShape(); }), "The class [Shape] of the member [shape] is abstract.");
    EXPECT_EQ(ErrorOf([&] { Written(doc); }),
              "Failed to convert the element [doc] to XML\nPath: /doc\nThe Property [id] is mandatory, it "
              "may not be "
              "NULL");
    doc.FromXml(Wrap("doc", " id='1'", "<title>a</title>"));

    const CSmartPtr<CBox> box(new CBox("left from elsewhere"));
    box->SetName("b");
    box->Set(&CBox::m_side, 70, 1);
    box->Set(&CBox::m_width, 2, 2);
    EXPECT_FALSE(box->Has(70));
    box->Set(&CBox::m_height, 3, 3);
    EXPECT_TRUE(box->Has(2));
    doc.SetShape(box);
    const CSmartPtr<CRing> ring(new CRing());
    ring->SetName("r");
    ring->SetRadius(1);
    doc.GetItem().Add(ring);
    doc.GetNums().Add(7);
    doc.GetPick().Add().m_one = 5;
    EXPECT_EQ(As<CCircle>(doc.GetItem()[0]), ring.Get());
    EXPECT_EQ(As<CBox>(doc.GetItem()[0]), nullptr);
    EXPECT_EQ(ErrorOf([&] { Written(doc); }),
              "Failed to convert the element [doc] to XML\nPath: /doc\nThis element is a choice, and as such "
              "must have "
              "at one (and only one) valid item, currently there are none set");
    doc.GetPick().Clear();
    EXPECT_EQ(
        Written(doc),
        "<doc id=\"1\"><title>a</title><nums>7</nums><shape xsi:type=\"Box\" name=\"b\"><width>2</width>"
        "<height>3</height></shape><ring name=\"r\"><radius>1</radius></ring></doc>");

    const CSmartPtr<CCircle> circle(new CCircle());
    doc.GetItem().Add(circle);
    EXPECT_EQ(ErrorOf([&] { Written(doc); }),
              "Failed to convert the element [doc] to XML\nPath: /doc/item\nThe Property [name] is "
              "mandatory, it may "
              "not be NULL");
    circle->SetName("c");
    circle->SetRadius(2);
    doc.SetCode("B-1");
    EXPECT_EQ(ErrorOf([&] { Written(doc); }),
              "Failed to convert the element [doc] to XML\nPath: /doc/@code\nInvalid Value for code [B-1]. "
              "It violates "
              "the facet pattern [.{4,6}].");
    doc.SetCode("B-12");
    box->SetNil(true);
    EXPECT_EQ(
        ErrorOf([&] { Written(doc); }),
        "Failed to convert the element [doc] to XML\nPath: /doc/shape\nThe element [shape] can not be nil.");
    doc.SetShape(nullptr);
    doc.ClearTitle();
    EXPECT_EQ(ErrorOf([&] { Written(doc); }),
              "Failed to convert the element [doc] to XML\nPath: /doc\nThe Property [title] is mandatory, it "
              "may not "
              "be NULL");
}

TEST(TableClassTest, LongChainsAreReleased) {
    CSmartPtr<CAll> first(new CAll());
    CAll* last = first.Get();
    for (int i = 0; i < 200000; ++i) {
        auto* const next = new CAll();
        last->m_next = next;
        last = next;
    }
    EXPECT_EQ(last->m_next, nullptr);
    first.Reset();

    constexpr int kDepth = 999;
    std::string document = "<p>true</p>";
    for (int i = 0; i < kDepth - 1; ++i)
        document = "<next>" + document + "</next><p>true</p>";
    CAll all;
    all.FromXml(Wrap("all", "", document));
    EXPECT_EQ(ErrorOf([&] { Written(all); }), "(no error)");
    const CSmartPtr<CAll> outer(new CAll());
    outer->FromXml(Wrap("all", "", "<p>true</p>"));
    outer->m_next = Clone(all);
    EXPECT_EQ(ErrorOf([&] { Written(*outer); }), "(no error)");
}

}  // namespace
}  // namespace KvXmlLib16
