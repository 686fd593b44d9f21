#include "kvxml/objects/element_info.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <string>
#include <type_traits>
#include <vector>

#include "kvxml/kvxml.h"
#include "kvxml/objects/element_info_family.h"
#include "tests/support/error_of.h"
#include "tests/support/fixture_all_kinds.h"

namespace fixture {
namespace {

static_assert(!std::is_constructible_v<CElementInfoAllEnumCol, const char*, const char*, int>);

constexpr auto kChoice = XmlElementGroupType_Choice;
constexpr auto kAll = XmlElementGroupType_All;
constexpr auto kTagless = XmlElementType_PseudoElement;

TEST(ElementInfoTest, AnyDefaultNamespace) {
    struct Case {
        const char* restriction;
        const char* ns;
        const char* result;
    };
    const Case cases[] = {
        {"##any", "urn:n", "urn:n"},
        {"##other", "urn:n", ""},
        {"##other", "", "DefaultNamespace"},
        {"##other", nullptr, "DefaultNamespace"},
        {"##targetNamespace", "urn:n", "urn:t"},
        {"##targetNamespace ##local", "urn:n", "urn:t"},
        {"##any urn:x", "urn:n", "urn:n"},
        {"## urn:x", "urn:n", ""},
        {"##other urn:x", "", "DefaultNamespace"},
        {"##local ##targetNamespace", "urn:n", ""},
        {"urn:x ##targetNamespace", "urn:n", ""},
        {"#any urn:x", "urn:n", ""},
        {"##Any", "urn:n", ""},
        {nullptr, "urn:n", ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.restriction == nullptr ? "null" : c.restriction);
        EXPECT_EQ(CElementInfo::GetAnyDefaultNamespace(c.restriction, c.ns, "urn:t"), c.result);
    }
}

// --- simple elements ---------------------------------------------------------------------------------------

TEST(ElementInfoTest, DefaultsOfElements) {
    const Model& model = Model::New("Box")
                             .Prim("Price", kMnd, ItemType_decimal, "2", "1.50")
                             .Enum("Color", kMnd, "green")
                             .Prim("Count", kOpt, ItemType_i4);
    const CSmartPtr<Object> box(new Object(model));
    box->FromXml("<Box xmlns='urn:fixture'><Price/><Color></Color></Box>");
    EXPECT_EQ(box->Dump(), "Box{Price=decimal:1.5 Color=i4:1}");
    CSerializationContext context = Ignoring("");
    const auto written = [&] { return box->ToXml(false, false, EOLType_LF, context).substr(25); };
    EXPECT_EQ(written(), "<Price/><Color/></Box>");
    context.SetWriteDefaultElementValues(true);
    EXPECT_EQ(written(), "<Price>1.50</Price><Color>green</Color></Box>");
    context.SetWriteDefaultElementValues(false);
    box->Set("Price", "1.501");  // reads as the default does
    EXPECT_EQ(written(), "<Price/><Color/></Box>");
    box->Set("Price", "2").Set("Color", "0");
    EXPECT_EQ(written(), "<Price>2.00</Price><Color>red</Color></Box>");
    // An empty element without a default is an empty value.
    EXPECT_EQ(Outcome(model, "", "<Price/><Color/><Count/>"),
              "Failed to set the property value [Count].\nPath: /Box/Count\n"
              "The value [] can not be converted to a i4");
}

TEST(ElementInfoTest, NilChildrenAndAttributesOfSimpleElements) {
    const Model& model = Model::New("Box")
                             .Prim("Title", kMnd, ItemType_string)
                             .Prim("Count", kOpt, ItemType_i4)
                             .Enum("E", kOpt);
    const std::string title = "<Title>t</Title>";
    const std::string nil = "<Count xmlns:AA=\"http://www.w3.org/2001/XMLSchema-instance\" AA:nil=\"true\"/>";
    const std::string notNillable =
        "Invalid use of 'nil' attribute in non-nillable element.\nPath: /Box/Title";
    const std::string unexpected = "Unexpected Attribute found.\nPath: /Box/";
    const auto remains = [](const std::string& name) {
        return "Failed read all the elements held within the element [" + name +
               "]. The unexpected element [X] remains un processed\nPath: /Box/" + name;
    };
    ExpectOutcomes(model,
                   {
                       {"", title + "<Count xsi:nil='True'>x</Count>", "", ">" + title + nil},
                       {"", title + "<Count xsi:nil='FALSE'>5</Count>", "", ">" + title + "<Count>5</Count>"},
                       {"", title + "<Count xsi:nil='1'/>", "",
                        "Unexpected Value [1] for 'nil' Attribute found.\nPath: /Box/Count/xsi:@nil"},
                       {"", title + "<Count xsi:nil='yes'/>", "",
                        "Unexpected Value [yes] for 'nil' Attribute found.\nPath: /Box/Count/xsi:@nil"},
                       {"", "<Title xsi:nil='false'>t</Title>", "", ">" + title},
                       {"", "<Title xsi:nil='0'>t</Title>", "", notNillable},
                       {"", "<Title xsi:nil='1'>t</Title>", "", notNillable},
                       {"", "<Title xsi:nil=''>t</Title>", "", notNillable},
                       {"", "<Title xsi:schemaLocation='urn:fixture a.xsd'>t</Title>", "",
                        unexpected + "Title/xsi:@schemaLocation"},
                       {"", "<Title>t<X/></Title>", "", remains("Title")},
                       {"", "<Title>t<X/></Title>", "e", ">" + title},
                       {"", title + "<E>red<X/></E>", "", remains("E")},
                       {"", "<Title xsi:type='string' x='1'>t</Title>", "", unexpected + "Title/xsi:@type"},
                       {"", "<Title xsi:type='string' x='1'>t</Title>", "a", ">" + title},
                       {"", title + "<E x='1'>red</E>", "", unexpected + "E/@x"},
                       {"", title + "<Count>\n 100\t</Count>", "", ">" + title + "<Count>100</Count>"},
                   });
}

TEST(ElementInfoTest, ValuesAreCheckedBothWays) {
    const auto facets = [](const char* pattern, int maxLength, const char* lowest, const char* highest) {
        return CPrimitiveRestrictions(pattern, -1, maxLength, lowest, highest, nullptr, nullptr, -1, -1, -1,
                                      CWhitespaceUtils::WhitespaceRule_None, nullptr);
    };
    const Model& model =
        Model::New("Box")
            .Attribute("code", ItemType_string, true, nullptr, facets("[A-Z]{2}", -1, nullptr, nullptr))
            .Attribute("ratio", ItemType_r8, true, nullptr, facets(nullptr, -1, "0", "10"))
            .Prim("Title", kOpt, ItemType_string, "", nullptr, facets(nullptr, 4, nullptr, nullptr))
            .Prim("Count", kOpt, ItemType_i4, "", nullptr, facets(nullptr, -1, "0", "100"));
    struct Case {
        bool isAttribute;
        const char* name;
        const char* text;
        const char* facet;
    };
    const Case cases[] = {
        {true, "code", "de", "pattern [[A-Z]{2}]"}, {true, "ratio", "10.5", "maxInclusive [10]"},
        {true, "ratio", "-1", "minInclusive [0]"},  {false, "Title", "abcde", "maxLength [4]"},
        {false, "Count", "-1", "minInclusive [0]"}, {false, "Count", "101", "maxInclusive [100]"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        const std::string name = c.name;
        const std::string violation =
            "Invalid Value for " + name + " [" + c.text + "]. It violates the facet " + c.facet + ".";
        const std::string attribute = " " + name + "='" + c.text + "'";
        const std::string element = "<" + name + ">" + c.text + "</" + name + ">";
        EXPECT_EQ(Outcome(model, c.isAttribute ? attribute : "", c.isAttribute ? "" : element),
                  "Failed to set the property value [" + name + "].\nPath: /Box/" +
                      (c.isAttribute ? "@" : "") + name + "\n" + violation);
        const CSmartPtr<Object> object(new Object(model));
        object->Set(name, c.text);
        EXPECT_EQ(ErrorOf([&] { object->ToXml(); }),
                  "Failed to convert the element [Box] to XML\nPath: /Box/" +
                      (c.isAttribute ? "@" + name + "\nFailed to convert attributes to XML" : name) + "\n" +
                      violation);
    }
    // Lengths count characters, not bytes, and bounds are values.
    ExpectOutcomes(model, {{" code='AB' ratio=' 1e1 '", "<Title>\u00E4\u00E4\u00E4\u00E4</Title>", "",
                            " code=\"AB\" ratio=\"10\"><Title>\u00E4\u00E4\u00E4\u00E4</Title>"}});
}

/// Opens what only records use.
class Record final : public CElementInfo {
public:
    Record() : CElementInfo(nullptr, nullptr, 0) {}
    bool ElementToXml(const CSerializationContext&, const CXmlGeneratedClass*, CXmlWriter*) override {
        return false;
    }
    bool ElementFromXml(const CSerializationContext&, CXmlGeneratedClass*, CXmlElement*, CXmlElement**,
                        const char*, XmlElementType) override {
        return false;
    }
    using CElementInfo::CheckRestriction;
};

TEST(ElementInfoTest, Misuse) {
    Record record;
    KvVariant value;
    value.SetI4(1);
    EXPECT_EQ(ErrorOf([&] { record.CheckRestriction(value); }), "Cannot CheckRestriction for type: i4");
    EXPECT_EQ(ErrorOf([&] { record.Validate({}, nullptr, true, true); }),
              "Not implemented, should never be called");
    EXPECT_EQ(record.GetElementName() + record.GetElementNamespace(), "");
}

TEST(ElementInfoTest, RecordsAreCopiedWhole) {
    const CElementInfoSeqEnumOpt original("E", kNamespace, 1, true, ColorToString, ColorFromString, "blue");
    CElementInfoSeqEnumOpt record("", "", 0, false, nullptr, nullptr, "");
    record = CElementInfoSeqEnumOpt(original);
    const CSmartPtr<Object> object(
        new Object(Model::New("Box").Prim("P", kOpt, ItemType_string).Enum("E", kOpt)));
    CXmlDocument document;
    document.LoadXml("<E xmlns='urn:fixture'/>");
    CXmlElement* cursor = document.GetDocumentElement();
    EXPECT_TRUE(record.ElementFromXml({}, object.Get(), nullptr, &cursor, "", XmlElementType_Element));
    EXPECT_EQ(object->Dump(), "Box{E=i4:2}");

    const CParentElementInfo info(kAll, kTagless, nullptr, nullptr, true, true, 4, ItemType_date, "f", true);
    CParentElementInfo assigned(kChoice, XmlElementType_Element, "x", "y", false, false, -1, ItemType_Unknown,
                                "z", false);
    assigned = info;
    for (const CParentElementInfo& copy : {CParentElementInfo(info), assigned}) {
        EXPECT_EQ(copy.GetElementGroupType(), kAll);
        EXPECT_EQ(copy.GetElementType(), kTagless);
        EXPECT_EQ(copy.GetElementName() + copy.GetElementNamespace() + copy.GetPrimitiveFormatOverride(),
                  "f");
        EXPECT_TRUE(copy.GetFromXmlFailIfAttributeUnknown() && copy.GetHasBaseClasses() &&
                    copy.GetOutputPrimitiveClassAsTextProperty());
        EXPECT_EQ(copy.GetPrimitiveValuePropertyIndex(), 4);
        EXPECT_EQ(copy.GetPrimitiveDataType(), ItemType_date);
    }
}

// --- substitution ------------------------------------------------------------------------------------------

#define KVXML_NOTHING_FOR_SHAPE(path) \
    "Failed to find a suitable substitution element for [Shape].\nPath: /Shapes/" path

TEST(ElementInfoTest, Substitution) {
    const std::vector<OutcomeRow> ofOne = {
        {"", "<Circle><Radius>1</Radius></Circle>", "", "><Circle><Radius>1</Radius></Circle>"},
        {"", "<Shape xsi:type='f:Square'><Side>2</Side></Shape>", "",
         "><Shape xmlns:AA=\"http://www.w3.org/2001/XMLSchema-instance\" "
         "AA:type=\"Square\"><Side>2</Side></Shape>"},
        {"", "<Circle xsi:type='f:Circle'><Radius>1</Radius></Circle>", "",
         "><Circle><Radius>1</Radius></Circle>"},
        {"", "<Shape/>", "", KVXML_NOTHING_FOR_SHAPE("Shape")},                         // abstract
        {"", "<Shape xsi:type='f:Hexagon'/>", "", KVXML_NOTHING_FOR_SHAPE("Shape")},    // unknown
        {"", "<Shape xsi:type='f:AllKinds'/>", "e", KVXML_NOTHING_FOR_SHAPE("Shape")},  // unrelated
        {"", "<Shape xsi:type='xsi:Circle'/>", "", KVXML_NOTHING_FOR_SHAPE("Shape")},   // namespace
        {"", "<Circle/>", "", "Failed to find the required child element [Radius].\nPath: /Shapes/Circle"},
    };
    const Model& one = Model::New("Shapes").AbsCls("Shape", kMnd, MakeShape);
    ExpectOutcomes(one, ofOne);
    // A type does not make an element of another name the member's.
    for (const char* other : {"<Other xsi:type='f:Circle'/>", "<Circle xsi:type='f:Square'/>", "<Other/>"}) {
        EXPECT_EQ(Outcome(one, "", other),
                  "Failed to find the required child element [Shape].\nPath: /Shapes");
    }
    const Model& many = Model::New("Shapes").AbsClsCol<Object>("Shape", 1, 2, MakeShape);
    ExpectOutcomes(many, ofOne);
    ExpectOutcomes(Model::New("Shapes", kChoice).AbsCls("Shape", kOpt, MakeShape), ofOne);
    ExpectOutcomes(Model::New("Shapes", kAll).AbsCls("Shape", kMnd, MakeShape), ofOne);
    const std::string circle = "<Circle><Radius>1</Radius></Circle>";
    EXPECT_EQ(Outcome(many, "", circle + "<Shape/>", ""), KVXML_NOTHING_FOR_SHAPE("Shape"));
    EXPECT_EQ(Outcome(many, "", "<Circle xsi:type='f:Square'/>", ""),
              "Failed to process the element.\nPath: /Shapes\n"
              "The Minimum number of [Shape] elements allowed in this collection is 1");
}

// --- members without a tag ---------------------------------------------------------------------------------

const Model& PairModel() {
    static const Model& model = Model::New("Pair", XmlElementGroupType_Sequence, kTagless)
                                    .Attribute("mark", ItemType_string)
                                    .Prim("First", kMnd, ItemType_string)
                                    .Prim("Second", kOpt, ItemType_i4);
    return model;
}
using Pair = Typed<PairModel>;

const Model& MaybeModel() {
    static const Model& model = Model::New("Maybe", XmlElementGroupType_Sequence, kTagless)
                                    .Attribute("mark", ItemType_string)
                                    .Prim("P", kOpt, ItemType_string);
    return model;
}
using Maybe = Typed<MaybeModel>;

const Model& EitherModel() {
    static const Model& model = Model::New("Either", kChoice, kTagless)
                                    .Prim("Left", kOpt, ItemType_i4)
                                    .PrimCol<CstringCol>("Right", 1, 2);
    return model;
}
using Either = Typed<EitherModel>;

TEST(ElementInfoTest, MembersWithoutTag) {
    ExpectOutcomes(Model::New("Pairs").ClsCol<Pair>("Pair", 1, 2),
                   {
                       {"", "<First>a</First><Second>1</Second><First>b</First>", "",
                        "><First>a</First><Second>1</Second><First>b</First>"},
                       // All items see the attributes of the one start tag, on which each can be but once.
                       {" mark='m'", "<First>a</First><First>b</First>", "",
                        " mark=\"m\"><First>a</First><First>b</First>"},
                       {"", "<First/><First/><First/>", "",
                        "Failed to process the element.\nPath: /Pairs\n"
                        "The Maximum number of [Pair] elements allowed in this collection is 2"},
                       {"", "<First>a</First><X/><First>b</First>", "e", "><First>a</First><First>b</First>"},
                   });
    ExpectOutcomes(
        Model::New("Two", kChoice).Cls<Pair>("Pair", kOpt).Cls<Either>("Either", kOpt),
        {
            {"", "<First>a</First>", "", "><First>a</First>"},
            {"", "<Left>1</Left>", "", "><Left>1</Left>"},
            {"", "<Right>a</Right><Right>b</Right>", "", "><Right>a</Right><Right>b</Right>"},
            {"", "<Right/><Right/><Right/>", "",
             "Failed read all the elements held within the element [Two]. The unexpected element [Right] "
             "remains un processed\nPath: /Two"},
            {"", "<X/><Left>1</Left>", "e", "><Left>1</Left>"},
        });
    ExpectOutcomes(
        Model::New("Any", kAll)
            .Cls<Pair>("Pair", kMnd)
            .Cls<Either>("Either", kOpt)
            .Prim("Z", kMnd, ItemType_i1),
        {
            {"", "<Z>1</Z><Left>2</Left><First>a</First>", "", "><First>a</First><Left>2</Left><Z>1</Z>"},
            {" mark='m'", "<First>a</First><Second>3</Second><Z>1</Z>", "",
             " mark=\"m\"><First>a</First><Second>3</Second><Z>1</Z>"},
            {"", "<Z>1</Z>", "",
             "Failed to process the element.\nPath: /Any\nFailed to find the mandatory element [Pair]."},
            {"", "<First>a</First><Z>1</Z><First>b</First>", "",
             "Failed read all the elements held within the element [Any]. The unexpected element [First] "
             "remains un processed\nPath: /Any"},
        });
    // Attributes alone make an optional member be there; and it is not lost when more is looked for.
    for (const RecordCardinality cardinality : {kMnd, kOpt}) {
        ExpectOutcomes(Model::New("Last").Cls<Maybe>("Maybe", cardinality),
                       {
                           {" mark='m'", "", "", " mark=\"m\"/>"},
                           {"", "", "", "/>"},
                           {" mark='m'", "<P>p</P><X/><Y/>", "e", " mark=\"m\"><P>p</P>"},
                           {"", "<X/><P>p</P>", "e", "><P>p</P>"},
                           {"", "<P>p</P><X/><P>q</P>", "e", "><P>q</P>"},
                       });
    }
}

/// Members without a tag, five within one another, none of which is complete.
template <const Model& (*inner)(), XmlElementGroupType group>
const Model& NestModel() {
    static const Model& model = Model::New("Nest", group, kTagless)
                                    .template Cls<Typed<inner>>("Inner", group == kChoice ? kOpt : kMnd)
                                    .Prim("End", group == kChoice ? kOpt : kMnd, ItemType_string);
    return model;
}
const Model& InmostModel() {
    static const Model& model = Model::New("Inmost", XmlElementGroupType_Sequence, kTagless)
                                    .PrimCol<CstringCol>("A", 0, -1)
                                    .Prim("B", kMnd, ItemType_string)
                                    .Prim("C", kMnd, ItemType_string);
    return model;
}
template <XmlElementGroupType g1, XmlElementGroupType g2>
const Model& NestsModel() {
    constexpr auto& first = NestModel<InmostModel, g1>;
    constexpr auto& second = NestModel<first, g2>;
    constexpr auto& third = NestModel<second, g1>;
    return NestModel<third, g2>();
}

TEST(ElementInfoTest, MembersWithoutTagThatAreNotFoundCostLinearTime) {
    constexpr auto kSequence = XmlElementGroupType_Sequence;
    // What stands before what is missing: unknown elements, known ones, and both, with as many attributes.
    const auto secondsFor = [](const Model& model, const char* run, int count) {
        std::string attributes;
        std::string content;
        for (int i = 0; i < count; ++i) {
            attributes += " a" + std::to_string(i) + "=''";
            content += run;
        }
        const auto start = std::chrono::steady_clock::now();
        Outcome(model, attributes, content, "ea");
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    };
    const auto check = [&](const Model& model) {
        for (const char* run : {"<X/>", "<A/>", "<A/><X/>", "<B/>", "<End/><X/>"}) {
            const double few = secondsFor(model, run, 500);
            EXPECT_LT(secondsFor(model, run, 2000), 8 * few + 0.25) << run;
        }
    };
    check(Model::New("Deep").Cls<Typed<NestsModel<kSequence, kSequence>>>("Nests", kMnd));
    check(Model::New("Deep").Cls<Typed<NestsModel<kChoice, kSequence>>>("Nests", kOpt));
    check(Model::New("Deep").Cls<Typed<NestsModel<kAll, kSequence>>>("Nests", kMnd));
    check(Model::New("Deep", kChoice).Cls<Typed<NestsModel<kAll, kChoice>>>("Nests", kOpt));
    check(Model::New("Deep").ClsCol<Typed<NestsModel<kSequence, kAll>>>("Nests", 0, -1));
    // Nothing is lost by it.
    ExpectOutcomes(Model::New("Deep").Cls<Typed<NestsModel<kSequence, kSequence>>>("Nests", kMnd),
                   {{"", "<X/><A/><X/><B/><C/><X/><End/><End/><X/><End/><End/>", "e",
                     "><B/><C/><End/><End/><End/><End/>"}});
    ExpectOutcomes(Model::New("Deep")
                       .ClsCol<Typed<NestsModel<kChoice, kChoice>>>("Nests", 0, -1)
                       .Prim("Z", kOpt, ItemType_string),
                   {{"", "<End>1</End><X/><B>2</B><X/><C>3</C><X/><End>4</End>", "e", "><B>2</B><C>3</C>"}});
}

TEST(ElementInfoTest, MembersOfAnAllGroupThatNeedNotBeThere) {
    for (const bool isRequired : {false, true}) {
        const Model& model = Model::New("Some", kAll).Cls<Circle>("C", kMnd, isRequired);
        const CSmartPtr<Object> object(new Object(model));
        EXPECT_EQ(ErrorOf([&] { object->FromXml("<Some xmlns='urn:fixture'/>"); }),
                  isRequired ? "Failed to process the element.\nPath: /Some\n"
                               "Failed to find the mandatory element [C]."
                             : "(no error)");
    }
}

// --- wildcards beside other members ------------------------------------------------------------------------

TEST(ElementInfoTest, Wildcards) {
    // The plain record takes a wildcard's collection as well, again and again.
    const auto makeAny = []() -> CSmartPtr<CXmlCollectionBase> {
        return new CElementCol("", kNamespace, 0, -1, "##any", kNamespace);
    };
    const Model& plain = Model::New("Wild").AnyCol("rest", makeAny);
    const Model& one = Model::New("Wild").Untpd("any", kOpt, "##any").Prim("Z", kOpt, ItemType_i4);
    for (int i = 0; i < 2; ++i) {
        ExpectOutcomes(plain, {{"", "<A>1</A><B>2</B>", "", "><A>1</A><B>2</B>"}});
        ExpectOutcomes(one,
                       {
                           {"", "<A>1</A><Z>2</Z>", "", "><A>1</A><Z>2</Z>"},
                           {"", "<Z>2</Z>", "", "><Z>2</Z>"},
                           {"", "<A/><B/>", "",
                            "Failed read all the elements held within the element [Wild]. The unexpected "
                            "element [B] remains un processed\nPath: /Wild"},
                       });
    }
    ExpectOutcomes(Model::New("Wild").Prim("A", kMnd, ItemType_i4).Untpd("any", kMnd, "##other"),
                   {
                       {"", "<A>1</A><o:B xmlns:o='urn:o'/>", "", "><A>1</A><o:B xmlns:o=\"urn:o\"/>"},
                       {"", "<A>1</A><B/>", "",
                        "Failed to find the required element from namespace [##other].\nPath: /Wild"},
                   });
    EXPECT_EQ(Outcome(Model::New("Wild", kAll).Untpd("any", kMnd, "##other"), "", ""),
              "Failed to process the element.\nPath: /Wild\n"
              "Failed to find the required element from namespace [##other].");
}

// --- listeners that change what is read --------------------------------------------------------------------

class Listener final : public IEventSink {
public:
    void OnEvent(CXmlObjectBase*, MsgType type, void*) override {
        if (action) action(type);
    }
    CXmlObjectBase* GetBase() override { return nullptr; }
    std::function<void(MsgType)> action;
};

TEST(ElementInfoTest, ListenersThatChangeTheObjectBeingRead) {
    Listener listener;
    const auto makeShapes = [&]() -> CSmartPtr<CXmlCollectionBase> {
        const CSmartPtr<CXmlCollectionBase> shapes(
            new TypedList<Object>("Shape", kNamespace, 1, -1, MakeShape));
        shapes->AddEventListener(&listener);
        return shapes;
    };
    const Model& model = Model::New("Shapes").AnyCol("Shape", makeShapes).Prim("Z", kOpt, ItemType_i4);
    const std::string xml =
        "<Shapes xmlns='urn:fixture'><Circle><Radius>1</Radius></Circle><Circle><Radius>2</Radius></Circle>"
        "<Z>3</Z></Shapes>";
    const CSmartPtr<Object> object(new Object(model));
    // The collection is taken from the object while it is filled: it lives until it is read.
    listener.action = [&](IEventSink::MsgType type) {
        if (type == IEventSink::MsgType_AddComplete) (*object)["Shape"].Clear();
    };
    object->FromXml(xml.c_str());
    EXPECT_EQ(object->Dump(), "Shapes{Z=i4:3}");
    // Emptied while it is filled, it has too few items.
    listener.action = [&](IEventSink::MsgType type) {
        if (type == IEventSink::MsgType_AddComplete) object->Collection("Shape").Clear();
    };
    EXPECT_EQ(ErrorOf([&] { object->FromXml(xml.c_str()); }),
              "Failed to process the element.\nPath: /Shapes\n"
              "The Minimum number of [Shape] elements allowed in this collection is 1");
    // A listener that refuses ends the read.
    listener.action = [](IEventSink::MsgType) { throw CKvInvalidStateException("refused"); };
    EXPECT_EQ(ErrorOf([&] { object->FromXml(xml.c_str()); }),
              "Failed to process the element.\nPath: /Shapes\nrefused");
    listener.action = nullptr;
    (*object)["Shape"].Clear();
}

}  // namespace
}  // namespace fixture
