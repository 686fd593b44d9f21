#include "kvxml/metadata/element_info_family.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <type_traits>
#include <vector>

#include "tests/support/error_of.h"
#include "tests/support/fixture_all_kinds.h"

namespace fixture {
namespace {

static_assert(!std::is_constructible_v<CElementInfoAllEnumCol, const char*, const char*, int>);

constexpr auto kChoice = XmlElementGroupType_Choice;
constexpr auto kAll = XmlElementGroupType_All;
constexpr auto kTagless = XmlElementType_PseudoElement;

/// Content of the root of `model` and what becomes of it: the content written back, or the failure without
/// the repetitions that name the root.
struct Row {
    const char* attributes;
    const char* content;
    const char* ignore;
    const char* outcome;
};

std::string Outcome(const Model& model, const std::string& attributes, const std::string& content,
                    const char* ignore) {
    const std::string start = "<" + std::string(model.Name()) + " xmlns=\"urn:fixture\"";
    const std::string end = "</" + std::string(model.Name()) + ">";
    const CSmartPtr<Object> object(new Object(model));
    const CSerializationContext context = Ignoring(ignore);
    std::string xml;
    const std::string error = ErrorOf([&] {
        const std::string xsi =
            " xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' xmlns:f='urn:fixture'";
        object->FromXml((start + xsi + attributes + ">" + content + end).c_str(), context);
        xml = object->ToXml(false, false, EOLType_LF, context);
    });
    if (error != "(no error)") return error;
    xml.erase(0, start.size());
    if (xml.size() > end.size() && xml.compare(xml.size() - end.size(), end.size(), end) == 0)
        xml.erase(xml.size() - end.size());
    return xml;
}

void ExpectOutcomes(const Model& model, const std::vector<Row>& rows) {
    for (const Row& row : rows) {
        SCOPED_TRACE(std::string(model.Name()) + row.attributes + ": " + row.content + " ignoring [" +
                     row.ignore + "]");
        EXPECT_EQ(Outcome(model, row.attributes, row.content, row.ignore), row.outcome);
    }
}

#define KVXML_NOTHING_FOR_SHAPE(path) \
    "Failed to find a suitable substitution element for [Shape].\nPath: /Shapes/" path

TEST(ElementInfoFamilyTest, Substitution) {
    const std::vector<Row> ofOne = {
        {"", "<Circle><Radius>1</Radius></Circle>", "", "><Circle><Radius>1</Radius></Circle>"},
        {"", "<Shape xsi:type='f:Square'><Side>2</Side></Shape>", "",
         "><Shape xmlns:AA=\"http://www.w3.org/2001/XMLSchema-instance\" "
         "AA:type=\"Square\"><Side>2</Side></Shape>"},
        {"", "<Circle xsi:type='f:Circle'><Radius>1</Radius></Circle>", "",
         "><Circle><Radius>1</Radius></Circle>"},
        {"", "<Shape/>", "", KVXML_NOTHING_FOR_SHAPE("Shape")},                         // abstract
        {"", "<Shape xsi:type='f:Shape'/>", "", KVXML_NOTHING_FOR_SHAPE("Shape")},      // abstract
        {"", "<Shape xsi:type='f:Hexagon'/>", "", KVXML_NOTHING_FOR_SHAPE("Shape")},    // unknown
        {"", "<Shape xsi:type='f:AllKinds'/>", "e", KVXML_NOTHING_FOR_SHAPE("Shape")},  // unrelated
        {"", "<Shape xsi:type='xsi:Circle'/>", "", KVXML_NOTHING_FOR_SHAPE("Shape")},   // namespace
        {"", "<Shape xsi:type=''/>", "", KVXML_NOTHING_FOR_SHAPE("Shape")},
        {"", "<Circle/>", "", "Failed to find the required child element [Radius].\nPath: /Shapes/Circle"},
    };
    const Model& one = Model::New("Shapes").AbsCls("Shape", kMnd, MakeShape);
    ExpectOutcomes(one, ofOne);
    // A type does not make an element of another name the member's.
    for (const char* other : {"<Other xsi:type='f:Circle'/>", "<Circle xsi:type='f:Square'/>", "<Other/>"}) {
        EXPECT_EQ(Outcome(one, "", other, ""),
                  "Failed to find the required child element [Shape].\nPath: /Shapes");
    }
    const Model& many = Model::New("Shapes").AbsClsCol<Object>("Shape", 1, 2, MakeShape);
    ExpectOutcomes(many, ofOne);
    ExpectOutcomes(Model::New("Shapes", kChoice).AbsCls("Shape", kOpt, MakeShape), ofOne);
    ExpectOutcomes(Model::New("Shapes", kAll).AbsCls("Shape", kMnd, MakeShape), ofOne);
    const std::string circle = "<Circle><Radius>1</Radius></Circle>";
    EXPECT_EQ(Outcome(many, "", circle + "<Shape/>", ""), KVXML_NOTHING_FOR_SHAPE("Shape"));
    EXPECT_EQ(Outcome(many, "", circle + circle + circle, ""),
              "Failed to process the element.\nPath: /Shapes\n"
              "The Maximum number of [Shape] elements allowed in this collection is 2");
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

TEST(ElementInfoFamilyTest, MembersWithoutTag) {
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
                       {"", "<Second>1</Second>", "",
                        "Failed to process the element.\nPath: /Pairs\n"
                        "The Minimum number of [Pair] elements allowed in this collection is 1"},
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
            {"", "<First>a</First><Left>1</Left>", "",
             "Failed read all the elements held within the element [Two]. The unexpected element [Left] "
             "remains un processed\nPath: /Two"},
            {"", "<X/><Left>1</Left>", "e", "><Left>1</Left>"},
            {"", "", "", "/>"},
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

TEST(ElementInfoFamilyTest, MembersOfAnAllGroupThatNeedNotBeThere) {
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

TEST(ElementInfoFamilyTest, Wildcards) {
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
                       {"", "<A>1</A><B/>", "", "Failed to find the required child element [].\nPath: /Wild"},
                   });
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

TEST(ElementInfoFamilyTest, ListenersThatChangeTheObjectBeingRead) {
    Listener listener;
    const auto makeShapes = [&]() -> CSmartPtr<CXmlCollectionBase> {
        const CSmartPtr<CXmlCollectionBase> shapes(
            new TypedList<Object>("Shape", kNamespace, 1, -1, MakeShape));
        shapes->AddEventListener(&listener);
        shapes->AddEventListener(&listener);  // twice
        return shapes;
    };
    const Model& model = Model::New("Shapes").AnyCol("Shape", makeShapes).Prim("Z", kOpt, ItemType_i4);
    const std::string xml =
        "<Shapes xmlns='urn:fixture'><Circle><Radius>1</Radius></Circle><Circle><Radius>2</Radius></Circle>"
        "<Z>3</Z></Shapes>";
    const CSmartPtr<Object> object(new Object(model));
    int events = 0;
    listener.action = [&](IEventSink::MsgType) { ++events; };
    object->FromXml(xml.c_str());
    EXPECT_EQ(events, 12);
    EXPECT_EQ(object->Collection("Shape").GetCount(), 2);
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
