// The GPX classes on whole documents: what is read, what is written, what is refused.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "examples/gpx/class_factory.h"
#include "examples/gpx/gpx_type.h"
#include "examples/gpx/ptseg_type.h"
#include "kvxml/kvxml.h"
#include "tests/support/error_of.h"

namespace {

using namespace KvXmlLib16;
using Gpx::CGpxType;

std::string ReadAll(const std::string& name) {
    std::ifstream file(name, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

std::string SampleName() {
    return KVXML_SOURCE_DIR "/examples/gpx/sample.gpx";
}

CSerializationContext GpxContext() {
    CSerializationContext context;
    context.SetDefaultNamespaceURI(Gpx::kNamespace);
    return context;
}

std::string Written(const CGpxType& gpx) {
    return gpx.ToXml(true, true, EOLType_LF, GpxContext());
}

std::string Gpx11(const std::string& content) {
    return "<gpx xmlns='http://www.topografix.com/GPX/1/1' version='1.1' creator='test'>" + content +
           "</gpx>";
}

/// The compact text that a document is written back as, from behind the attributes of its start tag on.
std::string Rewritten(const std::string& document, const CSerializationContext& context) {
    const CSmartPtr<CGpxType> gpx(new CGpxType());
    gpx->FromXml(document.c_str(), context);
    std::string text = gpx->ToXml(false, false, EOLType_LF, GpxContext());
    const std::string begin =
        "<gpx xmlns=\"http://www.topografix.com/GPX/1/1\" version=\"1.1\" creator=\"test\"";
    EXPECT_EQ(text.substr(0, begin.size()), begin);
    return text.substr(std::min(begin.size(), text.size()));
}

TEST(Gpx, SampleHasItsValuesInTheirMembers) {
    const CSmartPtr<CGpxType> gpx(new CGpxType());
    gpx->FromXmlFile(SampleName().c_str());
    const auto metadata = gpx->GetMetadata();
    ASSERT_EQ(gpx->GetWpt()->GetCount(), 2);
    ASSERT_EQ(gpx->GetTrk()->Item(0)->GetTrkseg()->GetCount(), 2);
    const auto wpt = gpx->GetWpt()->Item(0);
    const auto segment = gpx->GetTrk()->Item(0)->GetTrkseg()->Item(0);
    ASSERT_EQ(segment->GetTrkpt()->GetCount(), 3);
    const auto point = segment->GetTrkpt()->Item(1);

    struct Row {
        const char* member;
        std::string value;
        const char* expected;
    };
    const std::vector<Row> rows = {
        {"gpx/@creator", gpx->GetCreator(), "kvxml examples"},
        {"metadata/desc", metadata->GetDesc(), "An invented walk & sail around a buoy in the open sea"},
        {"email/@domain", metadata->GetAuthor()->GetEmail()->GetDomain(), "example.org"},
        {"copyright/year", std::to_string(metadata->GetCopyright()->GetYear()), "2024"},
        {"metadata/link[2]/type", metadata->GetLink()->Item(1)->GetType(), "image/png"},
        {"bounds/@maxlat", metadata->GetBounds()->GetMaxlat().ToString(), "0.0125"},
        {"wpt[2]/@lon", gpx->GetWpt()->Item(1)->GetLon().ToString(), "-0.015"},
        {"wpt/ele", wpt->GetEle().ToString(), "-1.5"},
        {"wpt/fix", Gpx::EFixTypeToString(wpt->GetFix()), "dgps"},
        {"wpt/dgpsid", wpt->GetDgpsid().ToString(), "1023"},
        {"rte/number", gpx->GetRte()->Item(0)->GetNumber().ToString(), "1"},
        {"rtept[2]/name", gpx->GetRte()->Item(0)->GetRtept()->Item(1)->GetName(), "Buoy"},
        {"trkpt[2]/time", point->GetTime().ToString(), "2024-02-29T08:10:00.500Z"},
        {"trkpt[3]/time", segment->GetTrkpt()->Item(2)->GetTime().ToString(), "2024-02-29T10:20:00+02:00"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(row.value, row.expected) << row.member;

    EXPECT_FALSE(gpx->GetWpt()->Item(1)->IsValidEle());
    EXPECT_FALSE(point->IsValidFix());
    EXPECT_TRUE(point->GetExtensions()->IsValidAny());
    EXPECT_FALSE(gpx->GetExtensions()->IsValidAny());
    EXPECT_EQ(Written(*gpx), ReadAll(SampleName()));
}

TEST(Gpx, BuiltByHandAndTakenThroughAFileInManyChunks) {
    const CSmartPtr<CGpxType> gpx(new CGpxType());
    gpx->SetCreator("test");
    const auto segment = gpx->GetTrk()->CreateNew()->GetTrkseg()->CreateNew();
    for (int i = 0; i < 5000; ++i) {
        const auto point = segment->GetTrkpt()->CreateNew();
        point->SetLat(CDecimal(i) / 1000);
        point->SetLon(CDecimal(-i) / 1000);
        point->SetTime(CDateTime(2024, 2, 29, 0, 0, 0) + CDateTimeSpan(0, 0, static_cast<std::uint64_t>(i)));
        if (i % 7 == 0) point->SetFix(Gpx::EFixType_3d);
    }
    const std::string name = testing::TempDir() + "kvxml_gpx_in_many_chunks.gpx";
    const CSmartPtr<CGpxType> again(new CGpxType());
    AsyncToXmlFile(true);
    AsyncFromXmlFile(true);
    const std::string message = ErrorOf([&] {
        gpx->ToXmlFile(name.c_str(), true, true, XmlEncoding_UTF8, EOLType_LF, GpxContext());
        again->FromXmlFile(name.c_str());
    });
    AsyncToXmlFile(false);
    AsyncFromXmlFile(false);
    EXPECT_EQ(message, "(no error)");
    EXPECT_GT(std::filesystem::file_size(name), 3U * 131072U);
    EXPECT_EQ(ReadAll(name), Written(*gpx));
    EXPECT_EQ(Written(*again), Written(*gpx));
    std::filesystem::remove(name);
}

TEST(Gpx, AcceptedFormsAreWrittenInOneForm) {
    CSerializationContext strict;
    CSerializationContext lenient;
    lenient.SetIgnoreUnknownElements(true);
    lenient.SetIgnoreUnknownAttributes(true);
    lenient.SetIgnoreNamespaces(true);
    const std::string gpx10 =
        "<gpx xmlns='http://www.topografix.com/GPX/1/0' version='1.1' creator='test' a='1'>";
    struct Row {
        std::string document;
        const CSerializationContext& context;
        const char* written;
    };
    const Row rows[] = {
        {Gpx11(""), strict, "/>"},
        {"<g:gpx xmlns:g='http://www.topografix.com/GPX/1/1' creator='test' version='1.1' "
         "xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' xsi:schemaLocation='a b'><g:trk/></g:gpx>",
         strict, "><trk/></gpx>"},
        {Gpx11("<wpt lat=' +1.50\n' lon='-180'><ele> 010.0 </ele><sat>+007</sat></wpt>"), strict,
         "><wpt lat=\"1.5\" lon=\"-180\"><ele>10</ele><sat>7</sat></wpt></gpx>"},
        {Gpx11("<wpt lat='90' lon='179.999999999999999999999'><magvar>0</magvar><dgpsid>0</dgpsid></wpt>"),
         strict,
         "><wpt lat=\"90\" "
         "lon=\"179.999999999999999999999\"><magvar>0</magvar><dgpsid>0</dgpsid></wpt></gpx>"},
        {Gpx11("<wpt lat='0' lon='0'><name> a\t<![CDATA[<b>]]>  &#233; </name><desc/></wpt>"), strict,
         "><wpt lat=\"0\" lon=\"0\"><name> a\t&lt;b&gt;  \xC3\xA9 </name><desc/></wpt></gpx>"},
        {Gpx11("<!-- a --><trk><!-- b --><trkseg/><?pi?><trkseg> </trkseg></trk>"), strict,
         "><trk><trkseg/><trkseg/></trk></gpx>"},
        {Gpx11("<extensions><x:a xmlns:x='urn:x' x:b='1'>t<y xmlns='' z='2'/></x:a><local xmlns=''/>"
               "<x:c xmlns:x='urn:x'/></extensions>"),
         strict,
         "><extensions><x:a xmlns:x=\"urn:x\" x:b=\"1\">t<y xmlns=\"\" z=\"2\"/></x:a><local xmlns=\"\"/>"
         "<x:c xmlns:x=\"urn:x\"/></extensions></gpx>"},
        {gpx10 + "<wpt lat='1' lon='2' b='2'><ele>3</ele><speed>4</speed></wpt></gpx>", lenient,
         "><wpt lat=\"1\" lon=\"2\"><ele>3</ele></wpt></gpx>"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.document);
        EXPECT_EQ(ErrorOf([&] { EXPECT_EQ(Rewritten(row.document, row.context), row.written); }),
                  "(no error)");
    }
}

struct Invalid {
    std::string document;
    std::string message;
};

std::string Point(const std::string& content) {
    return Gpx11("<wpt lat='0' lon='0'>" + content + "</wpt>");
}

std::string At(const std::string& path, const std::string& message) {
    return message + "\nPath: " + path;
}

/// Message about a value that does not fit.
std::string Value(const std::string& member, const std::string& path, const std::string& reason) {
    return At(path, "Failed to set the property value [" + member + "].") + "\n" + reason;
}

std::string Remains(const std::string& parent, const std::string& element, const std::string& path) {
    return At(path, "Failed read all the elements held within the element [" + parent +
                        "]. The unexpected element [" + element + "] remains un processed");
}

/// One of each kind of fault; the other examples have more of what is not peculiar to these classes.
std::vector<Invalid> InvalidDocuments() {
    return {
        {"<gpx xmlns='http://www.topografix.com/GPX/1/0' version='1.1' creator='a'/>",
         At("/gpx", "Invalid Element [gpx] found.")},
        {Gpx11("<wpt lat='0' lon='0'/><wpt lon='0'/>"), At("/gpx/wpt[2]", "Failed to process the element.") +
                                                            "\nFailed to find the required Attribute [lat]."},
        {Gpx11("<wpt xmlns:x='urn:x' x:lat='0' lon='0'/>"),
         At("/gpx/wpt/x:@lat", "Unexpected Attribute found.")},
        {Gpx11("<trk><trkseg><trkpt lat='0' lon='0'/><trkpt lat='0' lon='0'><speed/></trkpt></trkseg></trk>"),
         Remains("trkpt", "speed", "/gpx/trk/trkseg/trkpt[2]")},
        {Point("<x:ele xmlns:x='urn:x'>1</x:ele>"), Remains("wpt", "ele", "/gpx/wpt")},
        {Point("<time>2024-01-01T00:00:00Z</time><ele>1</ele>"), Remains("wpt", "ele", "/gpx/wpt")},
        {Point("<name>a<b>c</b></name>"), Remains("name", "b", "/gpx/wpt/name")},
        {Gpx11("<wpt lat='0' lon='0' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' "
               "xsi:nil='false'/>"),
         At("/gpx/wpt", "Invalid use of 'nil' attribute in non-nillable element.")},
        {Point("<fix> 3d</fix>"), Value("fix", "/gpx/wpt/fix", "Invalid Value for fixType [ 3d].")},
        // facets
        {"<gpx xmlns='http://www.topografix.com/GPX/1/1' version='1.0' creator='a'/>",
         Value("version", "/gpx/@version",
               "Invalid Value for version [1.0]. It violates the facet enumeration [1.1].")},
        {Gpx11("<wpt lat='90.0000000001' lon='0'/>"),
         Value("lat", "/gpx/wpt/@lat",
               "Invalid Value for lat [90.0000000001]. It violates the facet maxInclusive [90.0].")},
        {Gpx11("<wpt lat='0' lon='180'/>"),
         Value("lon", "/gpx/wpt/@lon",
               "Invalid Value for lon [180]. It violates the facet maxExclusive [180.0].")},
        {Point("<sat>-1</sat>"),
         Value("sat", "/gpx/wpt/sat", "Invalid Value for sat [-1]. It violates the facet minInclusive [0].")},
        // not XML
        {Gpx11("<x:trk/>"), "unbound prefix at line 1"},
    };
}

TEST(Gpx, InvalidDocumentsAreRefusedWithTheirPathAndTheObjectStaysUsable) {
    const std::string sample = ReadAll(SampleName());
    const CSmartPtr<CGpxType> gpx(new CGpxType());
    for (const Invalid& row : InvalidDocuments()) {
        SCOPED_TRACE(row.document);
        EXPECT_EQ(ErrorOf([&] { gpx->FromXml(row.document.c_str()); }), row.message);
        EXPECT_EQ(ErrorOf([&] { gpx->FromXml(sample.c_str()); }), "(no error)");
        EXPECT_EQ(Written(*gpx), sample);
    }
}

TEST(Gpx, ValuesSetByTheHostAreCheckedWhenTheyAreWritten) {
    const CSmartPtr<CGpxType> gpx(new CGpxType());
    gpx->SetCreator("test");
    const auto point = gpx->GetWpt()->CreateNew();
    point->SetLat(CDecimal("90.5"));
    EXPECT_NE(ErrorOf([&] { Written(*gpx); }).find("Invalid Value for lat [90.5]."), std::string::npos);
    point->SetLat(CDecimal("90"));
    point->SetFix(static_cast<Gpx::EFixType>(9));
    EXPECT_NE(ErrorOf([&] { Written(*gpx); }).find("Invalid Value for fixType [9]"), std::string::npos);
    point->UnsetFix();
    EXPECT_THROW(point->SetTime(CDateTime(2024, 2, 29)), CKvInvalidValueException);  // a date
    EXPECT_FALSE(point->IsValidTime());
    EXPECT_EQ(ErrorOf([&] { Written(*gpx); }), "(no error)");
}

TEST(Gpx, FactoryMakesEveryClassUnderTheGivenName) {
    for (int id = 0; id <= Gpx::CClassFactory::ClassId_ExtensionsType; ++id) {
        const auto object = Gpx::CClassFactory::Create(id, "some");
        ASSERT_NE(object, nullptr) << id;
        EXPECT_EQ(object->GetNamespace(), Gpx::kNamespace);
        const std::string text = object->ToXml(false, false, EOLType_LF, GpxContext());
        EXPECT_EQ(text.substr(0, 12), "<some xmlns=") << id;
    }
    EXPECT_EQ(Gpx::CClassFactory::Create(-1, "some"), nullptr);
}

TEST(Gpx, PointsForOtherSchemasReadAndWrite) {
    const std::string text =
        "<ptsegType xmlns=\"http://www.topografix.com/GPX/1/1\"><pt lat=\"1\" lon=\"2\"><ele>3</ele>"
        "<time>2024-02-29T00:00:00Z</time></pt><pt lat=\"4\" lon=\"5\"/></ptsegType>";
    const CSmartPtr<Gpx::CPtsegType> segment(new Gpx::CPtsegType());
    segment->FromXml(text.c_str());
    EXPECT_EQ(segment->ToXml(false, false, EOLType_LF, GpxContext()), text);
}

TEST(Gpx, TablesCanBeFreedAndAreBuiltAgain) {
    for (int round = 0; round < 2; ++round) {
        {
            const CSmartPtr<CGpxType> gpx(new CGpxType());
            gpx->FromXmlFile(SampleName().c_str());
            EXPECT_EQ(Written(*gpx), ReadAll(SampleName()));
        }
        Gpx::CClassFactory::FreeMetaData();
    }
}

}  // namespace
