#include "kvxml/metadata/element_info.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "kvxml/kvxml.h"
#include "tests/support/error_of.h"
#include "tests/support/fixture_all_kinds.h"

namespace fixture {
namespace {

constexpr const char* kXsi = " xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance'";

/// The smallest Kinds with the element `from` replaced.
std::string With(const std::string& from, const std::string& to) {
    std::string xml = kSmallKindsXml;
    xml.replace(xml.find(from), from.size(), to);
    xml.insert(xml.find(" id="), kXsi);
    return xml;
}

std::string ReadError(const std::string& xml, const CSerializationContext& context = {}) {
    return ErrorOf([&] { Make<Kinds>()->FromXml(xml.c_str(), context); });
}

TEST(ElementInfoTest, AnyDefaultNamespace) {
    struct Case {
        const char* restriction;
        const char* ns;
        const char* result;
    };
    const Case cases[] = {
        {"##any", "urn:n", "urn:n"},
        {"##any", "", ""},
        {"##other", "urn:n", ""},
        {"##other", "", "DefaultNamespace"},
        {"##other", nullptr, "DefaultNamespace"},
        {"##local", "urn:n", ""},
        {"##targetNamespace", "urn:n", "urn:t"},
        {"##targetNamespace ##local", "urn:n", "urn:t"},
        {"##any urn:x", "urn:n", "urn:n"},
        {"##other urn:x", "", "DefaultNamespace"},
        {"##local ##targetNamespace", "urn:n", ""},
        {"urn:x ##targetNamespace", "urn:n", ""},
        {"## urn:x", "urn:n", ""},
        {"#any urn:x", "urn:n", ""},
        {"urn:x", "urn:n", ""},
        {"##Any", "urn:n", ""},
        {"", "urn:n", ""},
        {nullptr, "urn:n", ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.restriction == nullptr ? "null" : c.restriction);
        EXPECT_EQ(CElementInfo::GetAnyDefaultNamespace(c.restriction, c.ns, "urn:t"), c.result);
    }
}

TEST(ElementInfoTest, DefaultsOfElements) {
    const auto kinds = Make<Kinds>();
    kinds->FromXml(With("<Price>2</Price><Color>red</Color>", "<Price/><Color></Color>").c_str());
    EXPECT_EQ(kinds->price.Text(), "1.5");
    EXPECT_EQ(kinds->color.Text(), "1");

    CSerializationContext context;
    context.SetDefaultNamespaceURI(kNamespace);
    const auto written = [&] { return kinds->ToXml(false, false, EOLType_LF, context); };
    EXPECT_NE(written().find("<Price/><Color/>"), std::string::npos) << written();
    context.SetWriteDefaultElementValues(true);
    EXPECT_NE(written().find("<Price>1.50</Price><Color>green</Color>"), std::string::npos) << written();
    kinds->price.Parse("1.501", ItemType_decimal);  // reads as the default does
    context.SetWriteDefaultElementValues(false);
    EXPECT_NE(written().find("<Price/>"), std::string::npos) << written();

    // An empty element without a default is an empty value.
    EXPECT_EQ(ReadError(With("<Price>", "<Count/><Price>")),
              "Failed to set the property value [Count].\nPath: /Kinds/Count\n"
              "The value [] can not be converted to a i4");
}

TEST(ElementInfoTest, NilOfSimpleElements) {
    const std::string notNillable =
        "Invalid use of 'nil' attribute in non-nillable element.\nPath: /Kinds/Title";
    struct Case {
        const char* what;
        std::string xml;
        std::string outcome;  // the values of Title, Count and Shade, or the failure
    };
    const auto count = [](const std::string& element) { return With("<Price>", element + "<Price>"); };
    const auto title = [](const std::string& element) { return With("<Title>t</Title>", element); };
    const Case cases[] = {
        {"true", count("<Count xsi:nil='true'/>"), "t (nil) (none)"},
        {"capitals", count("<Count xsi:nil='True'/>"), "t (nil) (none)"},
        {"content of nil", count("<Count xsi:nil='true'>x</Count>"), "t (nil) (none)"},
        {"false", count("<Count xsi:nil='FALSE'>5</Count>"), "t 5 (none)"},
        {"1", count("<Count xsi:nil='1'/>"),
         "Unexpected Value [1] for 'nil' Attribute found.\nPath: /Kinds/Count/xsi:@nil"},
        {"0", count("<Count xsi:nil='0'>5</Count>"),
         "Unexpected Value [0] for 'nil' Attribute found.\nPath: /Kinds/Count/xsi:@nil"},
        {"enumeration", With("<Length>", "<Shade xsi:nil='true'/><Length>"), "t (none) (nil)"},
        {"not nillable, false", title("<Title xsi:nil='false'>u</Title>"), "u (none) (none)"},
        {"not nillable, true", title("<Title xsi:nil='true'/>"), notNillable},
        {"not nillable, 0", title("<Title xsi:nil='0'>u</Title>"), notNillable},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const auto kinds = Make<Kinds>();
        const std::string error = ErrorOf([&] { kinds->FromXml(c.xml.c_str()); });
        EXPECT_EQ(error == "(no error)"
                      ? kinds->title.Text() + " " + kinds->count.Text() + " " + kinds->shade.Text()
                      : error,
                  c.outcome);
    }
    // Nil of every kind there and back.
    const auto values = Make<Values>();
    for (const ScalarText& scalar : kScalars)
        (*values)[scalar.name].SetNil();
    const std::string xml = values->ToXml(false, false);
    EXPECT_NE(xml.find("<AA:I4 xmlns:AB=\"http://www.w3.org/2001/XMLSchema-instance\" AB:nil=\"true\"/>"),
              std::string::npos);
    const auto read = Make<Values>();
    read->FromXml(xml.c_str());
    EXPECT_EQ(read->Dump(), values->Dump());
}

TEST(ElementInfoTest, NilIsWritten) {
    const auto kinds = Make<Kinds>();
    kinds->FromXml(kSmallKindsXml);
    kinds->count.variant.SetNil();
    kinds->shade.variant.SetI4(Color_blue);
    kinds->shade.variant.SetNil();
    const std::string xml = kinds->ToXml(false, false);
    const std::string nil = " xmlns:AB=\"http://www.w3.org/2001/XMLSchema-instance\" AB:nil=\"true\"/>";
    EXPECT_NE(xml.find("<AA:Count" + nil), std::string::npos) << xml;
    EXPECT_NE(xml.find("<AA:Shade" + nil), std::string::npos) << xml;
}

TEST(ElementInfoTest, SimpleElementsHaveNoChildren) {
    CSerializationContext ignoring;
    ignoring.SetIgnoreUnknownElements(true);
    for (const char* name : {"Title", "Color"}) {
        const std::string tag = std::string("</") + name + ">";
        EXPECT_EQ(ReadError(With(tag, "<X/>" + tag)),
                  std::string("Failed read all the elements held within the element [") + name +
                      "]. The unexpected element [X] remains un processed\nPath: /Kinds/" + name);
        EXPECT_EQ(ReadError(With(tag, "<X/>" + tag), ignoring), "(no error)");
    }
}

TEST(ElementInfoTest, SimpleElementsHaveNoOtherAttributes) {
    CSerializationContext ignoring;
    ignoring.SetIgnoreUnknownAttributes(true);
    const std::string xml = With("<Title>", "<Title xsi:type='string' x='1'>");
    EXPECT_EQ(ReadError(xml), "Unexpected Attribute found.\nPath: /Kinds/Title/xsi:@type");
    EXPECT_EQ(ReadError(xml, ignoring), "(no error)");
    EXPECT_EQ(ReadError(With("<Color>", "<Color x='1'>")),
              "Unexpected Attribute found.\nPath: /Kinds/Color/@x");
}

TEST(ElementInfoTest, ValuesAreCheckedBothWays) {
    struct Case {
        const char* what;
        std::string xml;
        const char* name;
        std::function<void(Kinds&)> set;
        const char* violation;
    };
    const std::string longTitle(21, 'x');
    const std::string longViolation =
        "Invalid Value for Title [" + longTitle + "]. It violates the facet maxLength [20].";
    const Case cases[] = {
        {"short", With("<Title>t</Title>", "<Title/>"), "Title",
         [](Kinds& k) { k.title.variant.SetString(""); },
         "Invalid Value for Title []. It violates the facet minLength [1]."},
        {"long", With("<Title>t", "<Title>" + longTitle), "Title",
         [&](Kinds& k) { k.title.variant.SetString(longTitle); }, longViolation.c_str()},
        {"low", With("<Price>", "<Count>-1</Count><Price>"), "Count",
         [](Kinds& k) { k.count.variant.SetI4(-1); },
         "Invalid Value for Count [-1]. It violates the facet minInclusive [0]."},
        {"high", With("<Price>", "<Count>101</Count><Price>"), "Count",
         [](Kinds& k) { k.count.variant.SetI4(101); },
         "Invalid Value for Count [101]. It violates the facet maxInclusive [100]."},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(ReadError(c.xml), std::string("Failed to set the property value [") + c.name +
                                        "].\nPath: /Kinds/" + c.name + "\n" + c.violation);
        const auto kinds = Make<Kinds>();
        kinds->FromXml(kSmallKindsXml);
        c.set(*kinds);
        EXPECT_EQ(ErrorOf([&] { kinds->ToXml(); }),
                  std::string("Failed to convert the element [Kinds] to XML\n") + c.violation);
    }
    // Lengths count characters, not bytes, and whitespace is collapsed before numbers are read.
    const std::string umlauts =
        "\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4"
        "\xC3\xA4";
    EXPECT_EQ(ReadError(With("<Title>t", "<Title>" + umlauts)), "(no error)");
    EXPECT_EQ(ReadError(With("<Price>", "<Count>\n 100\t</Count><Price>")), "(no error)");
}

/// Opens what only records use.
class Record final : public CElementInfo {
public:
    Record() : CElementInfo("r", "", 0) {}
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

    const CElementInfoSeqPrimMnd null(nullptr, nullptr, 3, false, ItemType_i4, nullptr,
                                      CWhitespaceUtils::WhitespaceRule_None, {}, nullptr);
    EXPECT_EQ(null.GetElementName(), "");
    EXPECT_EQ(null.GetElementNamespace(), "");
    EXPECT_EQ(null.GetPropertyIndex(), 3);
    // Records are copied whole.
    const CElementInfoSeqEnumOpt original("Paint", kNamespace, 12, true, ColorToString, ColorFromString,
                                          "blue");
    CElementInfoSeqEnumOpt enumeration("", "", 0, false, nullptr, nullptr, "");
    enumeration = CElementInfoSeqEnumOpt(original);
    const auto kinds = Make<Kinds>();
    CXmlDocument document;
    document.LoadXml("<Paint xmlns='urn:fixture'/>");
    CXmlElement* cursor = document.GetDocumentElement();
    EXPECT_TRUE(enumeration.ElementFromXml({}, kinds.Get(), nullptr, &cursor, "", XmlElementType_Element));
    EXPECT_EQ(cursor, nullptr);
    EXPECT_EQ(kinds->shade.Text(), "2");

    const CParentElementInfo info(XmlElementGroupType_All, XmlElementType_PseudoElement, nullptr, nullptr,
                                  true, true, 4, ItemType_date, nullptr, true);
    CParentElementInfo copy(XmlElementGroupType_Sequence, XmlElementType_Element, "x", "y", false, false, -1,
                            ItemType_Unknown, "z", false);
    copy = info;
    for (const CParentElementInfo* each : {&info, static_cast<const CParentElementInfo*>(&copy)}) {
        EXPECT_EQ(each->GetElementGroupType(), XmlElementGroupType_All);
        EXPECT_EQ(each->GetElementType(), XmlElementType_PseudoElement);
        EXPECT_EQ(each->GetElementName() + each->GetElementNamespace() + each->GetPrimitiveFormatOverride(),
                  "");
        EXPECT_TRUE(each->GetFromXmlFailIfAttributeUnknown() && each->GetHasBaseClasses() &&
                    each->GetOutputPrimitiveClassAsTextProperty());
        EXPECT_EQ(each->GetPrimitiveValuePropertyIndex(), 4);
        EXPECT_EQ(each->GetPrimitiveDataType(), ItemType_date);
    }
}

}  // namespace
}  // namespace fixture
