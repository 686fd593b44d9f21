// The GPX classes on whole documents: what is read, what is written, what is refused.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include "examples/gpx/class_factory.h"
#include "examples/gpx/gpx_type.h"
#include "kvxml/kvxml.h"
#include "kvxml/xml/xml_reader.h"
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

/// What is wrong with one record keeps nobody from the next.
TEST(Gpx, RecordsAreReadOneAfterAnother) {
    const std::string xml =
        "<?xml version='1.0'?>\n<g:gpx xmlns:g='http://www.topografix.com/GPX/1/1' version='1.1' creator='c'>"
        "<g:wpt lat='1' lon='2'><g:name>a</g:name></g:wpt>\n<g:wpt lat='91' lon='2'/>\n"
        "<g:rte><g:rtept lat='3' lon='4'><g:name>b</g:name></g:rtept></g:rte></g:gpx>";
    CXmlReader reader;
    reader.OpenText(xml);
    std::vector<std::string> found;
    while (reader.Read()) {
        if (!reader.IsStart("wpt") && !reader.IsStart("rtept")) continue;
        const CSmartPtr<Gpx::CWptType> point(new Gpx::CWptType());
        const std::string error = ErrorOf([&] { point->FromXml(reader); });
        found.push_back(error == "(no error)" ? point->GetName() : error);
        EXPECT_EQ(reader.GetEvent(), XmlEvent::EndElement);
    }
    ASSERT_EQ(found.size(), 3U);
    EXPECT_EQ(found[0], "a");
    EXPECT_EQ(found[1].compare(0, 33, "Invalid element [wpt] at line 3\nP"), 0) << found[1];
    EXPECT_NE(found[1].find("Path: /g:gpx/g:wpt[2]"), std::string::npos) << found[1];
    EXPECT_NE(found[1].find("@lat"), std::string::npos) << found[1];
    EXPECT_EQ(found[2], "b");
    EXPECT_EQ(ErrorOf([&] { CSmartPtr<Gpx::CWptType>(new Gpx::CWptType())->FromXml(reader); }),
              "The reader does not stand at the start of an element");
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

TEST(Gpx, TablesAreBuiltByWhoComesFirstAndAgainAfterTheyWereFreed) {
    const std::string sample = ReadAll(SampleName());
    for (int round = 0; round < 5; ++round) {
        std::vector<std::thread> threads;
        for (int i = 0; i < 4; ++i) {
            threads.emplace_back([&] {
                const CSmartPtr<CGpxType> gpx(new CGpxType());
                gpx->FromXmlFile(SampleName().c_str());
                EXPECT_EQ(Written(*gpx), sample);
            });
        }
        for (std::thread& thread : threads)
            thread.join();
        Gpx::CClassFactory::FreeMetaData();
    }
}

}  // namespace
