#include "kvxml/metadata/attribute_info.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "kvxml/kvxml.h"
#include "tests/support/error_of.h"
#include "tests/support/fixture_classes.h"

namespace fixture {
namespace {

/// The start tag of `kinds` up to its last attribute.
std::string StartTag(const Kinds& kinds, const CSerializationContext& context) {
    const std::string xml = kinds.ToXml(false, false, EOLType_LF, context);
    return xml.substr(0, xml.find('>'));
}

CSmartPtr<Kinds> SmallKinds() {
    const auto kinds = Make<Kinds>();
    kinds->FromXml(kSmallKindsXml);
    return kinds;
}

TEST(AttributeInfoTest, OptionalDefaultsOnOutput) {
    CSerializationContext all;
    all.SetDefaultNamespaceURI(kNamespace);
    CSerializationContext without = all;
    without.SetNoOptionalAttributeDefaultOutput(true);
    const std::string start = "<Kinds xmlns=\"urn:fixture\" id=\"1\" level=\"red\"";
    struct Case {
        const char* what;
        std::function<void(Kinds&)> set;
        std::string all;
        std::string without;
    };
    const Case cases[] = {
        {"unset", [](Kinds& k) { k.size.variant.Clear(); }, "", ""},
        {"default", [](Kinds&) {}, " size=\"10\"", ""},
        {"other", [](Kinds& k) { k.size.variant.SetI4(100); }, " size=\"100\"", " size=\"100\""},
        {"default enumeration",
         [](Kinds& k) {
             k.size.variant.Clear();
             k.paint.variant.SetI4(Color_green);
         },
         " paint=\"green\"", ""},
        {"other enumeration", [](Kinds& k) { k.paint.variant.SetI4(Color_red); },
         " size=\"10\" paint=\"red\"", " paint=\"red\""},
        {"empty without default",
         [](Kinds& k) {
             k.size.variant.Clear();
             k.lang.variant.SetString("");
         },
         " xmlns:AA=\"urn:fixture:attributes\" AA:lang=\"\"",
         " xmlns:AA=\"urn:fixture:attributes\" AA:lang=\"\""},
        {"enumeration without text",
         [](Kinds& k) {
             k.size.variant.Clear();
             k.paint.variant.SetI4(99);
         },
         " paint=\"\"", " paint=\"\""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const auto kinds = SmallKinds();
        c.set(*kinds);
        EXPECT_EQ(StartTag(*kinds, all), start + c.all);
        EXPECT_EQ(StartTag(*kinds, without), start + c.without);
    }
    // An attribute that is there overrides the default, one that is not leaves it.
    EXPECT_EQ(SmallKinds()->size.Text(), "10");
    const auto kinds = Make<Kinds>();
    kinds->FromXml(kKindsXml);
    EXPECT_EQ(kinds->size.Text(), "12");
}

TEST(AttributeInfoTest, ValuesAreCheckedBothWays) {
    struct Case {
        const char* name;
        const char* text;
        ItemType type;
        const char* violation;
    };
    const Case cases[] = {
        {"code", "de", ItemType_string,
         "Invalid Value for code [de]. It violates the facet pattern [[A-Z]{2}]."},
        {"code", "DEU", ItemType_string,
         "Invalid Value for code [DEU]. It violates the facet pattern [[A-Z]{2}]."},
        {"ratio", "10.5", ItemType_r8,
         "Invalid Value for ratio [10.5]. It violates the facet maxInclusive [10]."},
        {"ratio", "-1", ItemType_r8, "Invalid Value for ratio [-1]. It violates the facet minInclusive [0]."},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        std::string xml = kSmallKindsXml;
        xml.insert(xml.find(" id="), std::string(" ") + c.name + "='" + c.text + "'");
        const auto kinds = Make<Kinds>();
        EXPECT_EQ(ErrorOf([&] { kinds->FromXml(xml.c_str()); }),
                  std::string("Failed to set the property value [") + c.name + "].\nPath: /Kinds/@" + c.name +
                      "\n" + c.violation);
        const auto written = SmallKinds();
        (std::string(c.name) == "code" ? written->code : written->ratio).Parse(c.text, c.type);
        const std::string error = ErrorOf([&] { written->ToXml(); });
        EXPECT_EQ(error.substr(0, error.rfind('\n')),
                  "Failed to convert the element [Kinds] to XML\nFailed to convert attributes to XML");
        EXPECT_NE(error.find(std::string("Invalid Value for ") + c.name), std::string::npos);
    }
    for (const char* bounds : {"0", "10", " 1e1 "}) {
        std::string xml = kSmallKindsXml;
        xml.insert(xml.find(" id="), std::string(" code='AB' ratio='") + bounds + "'");
        EXPECT_EQ(ErrorOf([&] { Make<Kinds>()->FromXml(xml.c_str()); }), "(no error)");
    }
}

/// Its properties can not be accessed.
class Refusing final : public Bound<Refusing> {
public:
    Refusing() { SetElementName("Refusing"); }
    static void MakeTables(Tables& t) {
        t.info = new CParentElementInfo(XmlElementGroupType_Sequence, XmlElementType_Element, "Refusing",
                                        kNamespace, false, false, -1, ItemType_Unknown, "", false);
        const auto rule = CWhitespaceUtils::WhitespaceRule_None;
        t.attributes = {new CAttributeInfoPrimitive("p", "", 1, true, ItemType_string, "", rule, {}, nullptr),
                        new CAttributeInfoEnum("e", "", 2, true, ColorToString, ColorFromString, nullptr)};
        t.elements = {
            new CElementInfoSeqPrimOpt("P", kNamespace, 3, true, ItemType_string, "", rule, {}, nullptr),
            new CElementInfoSeqEnumOpt("E", kNamespace, 4, true, ColorToString, ColorFromString, nullptr),
            new CElementInfoSeqClsOpt(
                "C", kNamespace, 5, XmlElementType_Element,
                [](int, const char*) -> CSmartPtr<CXmlObjectBase> { return new Empty(); }, 0),
            new CElementInfoSeqCol("L", kNamespace, 6)};
    }

    int refused = 0;

protected:
    void Init() override {}
    void AccessProperty(int index, bool read, KvVariant&) override {
        if (index == refused) throw CKvInvalidStateException(read ? "no reading" : "no setting");
    }
};

TEST(AttributeInfoTest, PropertiesThatRefuse) {
    const std::string xsi = "xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance'";
    struct Case {
        int index;
        const char* name;
        std::string xml;
        const char* path;
    };
    const Case cases[] = {
        {1, "p", "<Refusing xmlns='urn:fixture' p='1'/>", "/Refusing/@p"},
        {2, "e", "<Refusing xmlns='urn:fixture' e='red'/>", "/Refusing/@e"},
        {3, "P", "<Refusing xmlns='urn:fixture'><P>1</P></Refusing>", "/Refusing/P"},
        {3, "P", "<Refusing xmlns='urn:fixture' " + xsi + "><P xsi:nil='true'/></Refusing>", "/Refusing/P"},
        {4, "E", "<Refusing xmlns='urn:fixture'><E>red</E></Refusing>", "/Refusing/E"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.path);
        const auto object = Make<Refusing>();
        object->refused = c.index;
        EXPECT_EQ(ErrorOf([&] { object->FromXml(c.xml.c_str()); }),
                  std::string("Failed to set the property value [") + c.name + "].\nPath: " + c.path +
                      "\nno setting");
    }
    for (int index = 1; index <= 6; ++index) {
        const auto object = Make<Refusing>();
        object->refused = index;
        const std::string wanted =
            std::string("Failed to get the property value for [") + "pePECL"[index - 1] + "].\nno reading";
        EXPECT_EQ(ErrorOf([&] { object->ToXml(); }),
                  std::string("Failed to convert the element [Refusing] to XML\n") +
                      (index <= 2 ? "Failed to convert attributes to XML\n" : "") + wanted);
    }
    // A collection that the class does not make.
    const auto object = Make<Refusing>();
    EXPECT_EQ(
        ErrorOf([&] { object->FromXml("<Refusing xmlns='urn:fixture'><L/></Refusing>"); }),
        "Failed to process the element.\nPath: /Refusing\nThe Property [L] is mandatory, it may not be NULL");
}

// --- wildcards
// -----------------------------------------------------------------------------------------------

class Attributes final : public Property {
public:
    explicit Attributes(Class& owner) : Property(owner) {}
    void Access(bool read, KvVariant& value) override {
        if (!read && !value.IsValid()) collection = new CAttributeCol("##other", kNamespace);
        if (read && collection != nullptr) value.SetXmlCollection(collection.Get());
    }
    void Reset() override { collection = nullptr; }

    CSmartPtr<CAttributeCol> collection;
};

/// An attribute, and any others that are not of the class's namespace.
class Wild final : public Bound<Wild> {
public:
    Wild() { SetElementName("Wild"); }
    static void MakeTables(Tables& t) {
        t.info = new CParentElementInfo(XmlElementGroupType_Sequence, XmlElementType_Element, "Wild",
                                        kNamespace, true, false, -1, ItemType_Unknown, "", false);
        t.attributes = {new CAttributeInfoPrimitive("id", "", 0, true, ItemType_string, "",
                                                    CWhitespaceUtils::WhitespaceRule_None, {}, nullptr),
                        new CAttributeInfoAny("any", "", 1, true, "##other", kNamespace, nullptr)};
    }
    Value id{*this};
    Attributes any{*this};
};

TEST(AttributeInfoTest, Wildcards) {
    CXmlDocument document;
    document.LoadXml(
        "<r xmlns='urn:fixture' xmlns:f='urn:fixture' xmlns:p='urn:p'>"
        "<Wild p:x='1' id='2' p:id='3' y='&lt;'/><Wild id='4' p:x='5'/><Wild/><Wild f:x=''/></r>");
    CSerializationContext context;
    context.SetDefaultNamespaceURI(kNamespace);
    const auto wild = Make<Wild>();  // one object, and names that were seen before
    const char* expected[] = {
        "<Wild xmlns=\"urn:fixture\" id=\"2\" xmlns:p=\"urn:p\" p:x=\"1\" p:id=\"3\" y=\"&lt;\"/>",
        "<Wild xmlns=\"urn:fixture\" id=\"4\" xmlns:p=\"urn:p\" p:x=\"5\"/>",
        "<Wild xmlns=\"urn:fixture\"/>"};
    const CXmlElement* element = document.GetDocumentElement()->GetFirstElement();
    for (const char* xml : expected) {
        wild->FromXmlElement(element);
        EXPECT_EQ(wild->ToXml(false, false, EOLType_LF, context), xml);
        element = element->GetNextSiblingElement();
    }
    EXPECT_EQ(ErrorOf([&] { wild->FromXmlElement(element); }),
              "Unexpected Attribute found.\nPath: /r/Wild[4]/@x");
    const auto again = Make<Wild>();
    again->any.collection = new CAttributeCol();
    again->any.collection->Add("x", "", "1");
    again->any.collection->Add("x", "", "2");
    EXPECT_NE(ErrorOf([&] { again->ToXml(); }).find("The attribute [x] occurs more than once."),
              std::string::npos);
}

}  // namespace
}  // namespace fixture
