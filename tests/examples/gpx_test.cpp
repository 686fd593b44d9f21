// The GPX classes on whole documents: what is read, what is written, what is refused.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
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

/// A file of the test's own, gone when the test is over.
class TempFile {
public:
    TempFile()
        : m_name(testing::TempDir() + "kvxml_gpx_" +
                 testing::UnitTest::GetInstance()->current_test_info()->name()) {}
    ~TempFile() { std::filesystem::remove(m_name); }
    const char* Name() const { return m_name.c_str(); }

private:
    std::string m_name;
};

TEST(Gpx, SampleHasEveryValueInItsMember) {
    const CSmartPtr<CGpxType> gpx(new CGpxType());
    gpx->FromXmlFile(SampleName().c_str());
    const auto metadata = gpx->GetMetadata();
    const auto author = metadata->GetAuthor();
    const auto bounds = metadata->GetBounds();
    ASSERT_EQ(gpx->GetWpt()->GetCount(), 2);
    ASSERT_EQ(gpx->GetRte()->GetCount(), 1);
    ASSERT_EQ(gpx->GetTrk()->GetCount(), 1);
    const auto wpt = gpx->GetWpt()->Item(0);
    const auto rte = gpx->GetRte()->Item(0);
    const auto trk = gpx->GetTrk()->Item(0);
    ASSERT_EQ(rte->GetRtept()->GetCount(), 2);
    ASSERT_EQ(trk->GetTrkseg()->GetCount(), 2);
    const auto segment = trk->GetTrkseg()->Item(0);
    ASSERT_EQ(segment->GetTrkpt()->GetCount(), 3);
    const auto point = segment->GetTrkpt()->Item(1);

    struct Row {
        const char* member;
        std::string value;
        const char* expected;
    };
    const std::vector<Row> rows = {
        {"gpx/@version", gpx->GetVersion(), "1.1"},
        {"gpx/@creator", gpx->GetCreator(), "kvxml examples"},
        {"metadata/name", metadata->GetName(), "Buoy round"},
        {"metadata/desc", metadata->GetDesc(), "An invented walk & sail around a buoy in the open sea"},
        {"author/name", author->GetName(), "Nobody in Particular"},
        {"email/@id", author->GetEmail()->GetId(), "nobody"},
        {"email/@domain", author->GetEmail()->GetDomain(), "example.org"},
        {"author/link/@href", author->GetLink()->GetHref(), "https://example.org/nobody"},
        {"author/link/text", author->GetLink()->GetText(), "Nobody's page"},
        {"author/link/type", author->GetLink()->GetType(), "text/html"},
        {"copyright/@author", metadata->GetCopyright()->GetAuthor(), "Nobody in Particular"},
        {"copyright/year", std::to_string(metadata->GetCopyright()->GetYear()), "2024"},
        {"copyright/license", metadata->GetCopyright()->GetLicense(), "https://example.org/licence"},
        {"metadata/link[2]/type", metadata->GetLink()->Item(1)->GetType(), "image/png"},
        {"metadata/time", metadata->GetTime().ToString(), "2024-02-29T12:00:00Z"},
        {"metadata/keywords", metadata->GetKeywords(), "invented, buoy"},
        {"bounds/@minlat", bounds->GetMinlat().ToString(), "-0.02"},
        {"bounds/@minlon", bounds->GetMinlon().ToString(), "-0.015"},
        {"bounds/@maxlat", bounds->GetMaxlat().ToString(), "0.0125"},
        {"bounds/@maxlon", bounds->GetMaxlon().ToString(), "0.01"},
        {"wpt/@lat", wpt->GetLat().ToString(), "0"},
        {"wpt[2]/@lon", gpx->GetWpt()->Item(1)->GetLon().ToString(), "-0.015"},
        {"wpt/ele", wpt->GetEle().ToString(), "-1.5"},
        {"wpt/time", wpt->GetTime().ToString(), "2024-02-29T06:00:00Z"},
        {"wpt/magvar", wpt->GetMagvar().ToString(), "356.75"},
        {"wpt/geoidheight", wpt->GetGeoidheight().ToString(), "17.2"},
        {"wpt/name", wpt->GetName(), "Buoy"},
        {"wpt/cmt", wpt->GetCmt(), "Anchored"},
        {"wpt/desc", wpt->GetDesc(), "A buoy where two circles meet"},
        {"wpt/src", wpt->GetSrc(), "Imagination"},
        {"wpt/link/@href", wpt->GetLink()->Item(0)->GetHref(), "https://example.org/buoy"},
        {"wpt/sym", wpt->GetSym(), "Buoy, White"},
        {"wpt/type", wpt->GetType(), "mark"},
        {"wpt/fix", Gpx::EFixTypeToString(wpt->GetFix()), "dgps"},
        {"wpt/sat", wpt->GetSat().ToString(), "11"},
        {"wpt/hdop", wpt->GetHdop().ToString(), "0.9"},
        {"wpt/vdop", wpt->GetVdop().ToString(), "1.4"},
        {"wpt/pdop", wpt->GetPdop().ToString(), "1.7"},
        {"wpt/ageofdgpsdata", wpt->GetAgeofdgpsdata().ToString(), "3.25"},
        {"wpt/dgpsid", wpt->GetDgpsid().ToString(), "1023"},
        {"rte/name", rte->GetName(), "Plan"},
        {"rte/cmt", rte->GetCmt(), "There"},
        {"rte/desc", rte->GetDesc(), "Straight to the buoy"},
        {"rte/src", rte->GetSrc(), "Pencil and ruler"},
        {"rte/number", rte->GetNumber().ToString(), "1"},
        {"rte/type", rte->GetType(), "sail"},
        {"rtept[2]/name", rte->GetRtept()->Item(1)->GetName(), "Buoy"},
        {"trk/name", trk->GetName(), "Round"},
        {"trk/cmt", trk->GetCmt(), "And back"},
        {"trk/desc", trk->GetDesc(), "What was sailed"},
        {"trk/src", trk->GetSrc(), "Imagination"},
        {"trk/link/@href", trk->GetLink()->Item(0)->GetHref(), "https://example.org/track"},
        {"trk/number", trk->GetNumber().ToString(), "2"},
        {"trk/type", trk->GetType(), "sail"},
        {"trkpt[2]/ele", point->GetEle().ToString(), "0.75"},
        {"trkpt[2]/time", point->GetTime().ToString(), "2024-02-29T08:10:00.500Z"},
        {"trkpt[3]/time", segment->GetTrkpt()->Item(2)->GetTime().ToString(), "2024-02-29T10:20:00+02:00"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(row.value, row.expected) << row.member;

    EXPECT_FALSE(gpx->GetWpt()->Item(1)->IsValidEle());
    EXPECT_FALSE(point->IsValidFix());
    EXPECT_TRUE(point->GetExtensions()->IsValidAny());
    for (const auto& extensions : {gpx->GetExtensions(), metadata->GetExtensions(), wpt->GetExtensions(),
                                   rte->GetExtensions(), trk->GetExtensions(), segment->GetExtensions()}) {
        ASSERT_NE(extensions, nullptr);
        EXPECT_FALSE(extensions->IsValidAny());
    }
}

TEST(Gpx, EveryWayInAndOutKeepsTheSample) {
    const std::string expected = ReadAll(SampleName());
    const std::string text = ReadAll(SampleName());
    const CSerializationContext context = GpxContext();
    const CSmartPtr<CGpxType> source(new CGpxType());
    source->FromXml(text.c_str());
    ASSERT_EQ(Written(*source), expected);

    const TempFile file;
    const auto stream = [&](CGpxType& gpx, XmlEncoding encoding, CompressionType compression) {
        gpx.FromXmlStream(source->ToXmlStream(true, false, encoding, EOLType_CRLF, context, compression));
    };
    const auto throughFile = [&](CGpxType& gpx, XmlEncoding encoding, CompressionType compression) {
        source->ToXmlFile(file.Name(), true, true, encoding, EOLType_LF, context, compression);
        gpx.FromXmlFile(file.Name());
    };
    struct Row {
        const char* trace;
        std::function<void(CGpxType&)> read;
    };
    const std::vector<Row> rows = {
        {"wide text", [&](CGpxType& gpx) { gpx.FromXml(std::wstring(text.begin(), text.end()).c_str()); }},
        {"bytes",
         [&](CGpxType& gpx) {
             gpx.FromXmlStream(reinterpret_cast<const unsigned char*>(text.data()), text.size());
         }},
        {"compact, CR LF", [&](CGpxType& gpx) { stream(gpx, XmlEncoding_UTF8, CompressionType_None); }},
        {"gzip", [&](CGpxType& gpx) { stream(gpx, XmlEncoding_UTF8, CompressionType_GZip); }},
        {"zlib", [&](CGpxType& gpx) { stream(gpx, XmlEncoding_UTF8, CompressionType_ZLib); }},
        {"UTF-16", [&](CGpxType& gpx) { stream(gpx, XmlEncoding_UTF16, CompressionType_None); }},
        {"UTF-16 undeclared, gzip",
         [&](CGpxType& gpx) { stream(gpx, XmlEncoding_UTF16NoDeclaration, CompressionType_GZip); }},
        {"file", [&](CGpxType& gpx) { throughFile(gpx, XmlEncoding_UTF8, CompressionType_None); }},
        {"UTF-16 file", [&](CGpxType& gpx) { throughFile(gpx, XmlEncoding_UTF16, CompressionType_None); }},
        {"gzip file", [&](CGpxType& gpx) { throughFile(gpx, XmlEncoding_UTF8, CompressionType_GZip); }},
        {"UTF-16 gzip file",
         [&](CGpxType& gpx) { throughFile(gpx, XmlEncoding_UTF16, CompressionType_GZip); }},
        {"written and read in pieces",
         [&](CGpxType& gpx) {
             AsyncToXmlFile(true);
             AsyncFromXmlFile(true);
             throughFile(gpx, XmlEncoding_UTF8, CompressionType_None);
         }},
    };
    const CSmartPtr<CGpxType> gpx(new CGpxType());
    for (const Row& row : rows) {
        const std::string message = ErrorOf([&] { row.read(*gpx); });
        AsyncToXmlFile(false);
        AsyncFromXmlFile(false);
        EXPECT_EQ(message, "(no error)") << row.trace;
        EXPECT_EQ(Written(*gpx), expected) << row.trace;
    }
}

TEST(Gpx, BuiltByHandAndReadInManyChunks) {
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
    const TempFile file;
    gpx->ToXmlFile(file.Name(), true, true, XmlEncoding_UTF8, EOLType_LF, GpxContext());
    ASSERT_GT(std::filesystem::file_size(file.Name()), 3U * 131072U);
    const CSmartPtr<CGpxType> again(new CGpxType());
    AsyncFromXmlFile(true);
    const std::string message = ErrorOf([&] { again->FromXmlFile(file.Name()); });
    AsyncFromXmlFile(false);
    EXPECT_EQ(message, "(no error)");
    EXPECT_EQ(Written(*again), Written(*gpx));
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
        {Gpx11("<wpt lat='0' lon='0'><ele xsi:nil='false' "
               "xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance'>1</ele></wpt>"),
         strict, "><wpt lat=\"0\" lon=\"0\"><ele>1</ele></wpt></gpx>"},
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

std::string Attribute(const std::string& name, const std::string& path) {
    return At(path, "Failed to process the element.") + "\nFailed to find the required Attribute [" + name +
           "].";
}

std::string Remains(const std::string& parent, const std::string& element, const std::string& path) {
    return At(path, "Failed read all the elements held within the element [" + parent +
                        "]. The unexpected element [" + element + "] remains un processed");
}

const char* const kXsi = " xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' ";

std::vector<Invalid> InvalidDocuments() {
    const std::string nil = "Invalid use of 'nil' attribute in non-nillable element.";
    const std::string xsi = kXsi;
    return {
        // the document element
        {"<trk xmlns='http://www.topografix.com/GPX/1/1'/>", At("/trk", "Invalid Element [trk] found.")},
        {"<gpx xmlns='http://www.topografix.com/GPX/1/0' version='1.1' creator='a'/>",
         At("/gpx", "Invalid Element [gpx] found.")},
        {"<gpx version='1.1' creator='a'/>", At("/gpx", "Invalid Element [gpx] found.")},
        {"<g:gpx xmlns:g='urn:g' version='1.1' creator='a'/>", At("/g:gpx", "Invalid Element [gpx] found.")},
        // attributes
        {"<gpx xmlns='http://www.topografix.com/GPX/1/1' creator='a'/>", Attribute("version", "/gpx")},
        {"<gpx xmlns='http://www.topografix.com/GPX/1/1' version='1.1'/>", Attribute("creator", "/gpx")},
        {Gpx11("<wpt lat='0' lon='0'/><wpt lon='0'/>"), Attribute("lat", "/gpx/wpt[2]")},
        {Gpx11("<rte><rtept lat='0'/></rte>"), Attribute("lon", "/gpx/rte/rtept")},
        {Gpx11("<metadata><bounds minlat='0' minlon='0' maxlat='0'/></metadata>"),
         Attribute("maxlon", "/gpx/metadata/bounds")},
        {Gpx11("<metadata><author><email id='a'/></author></metadata>"),
         Attribute("domain", "/gpx/metadata/author/email")},
        {Gpx11("<metadata><copyright/></metadata>"), Attribute("author", "/gpx/metadata/copyright")},
        {Point("<link/>"), Attribute("href", "/gpx/wpt/link")},
        {Gpx11("<trk a='1'/>"), At("/gpx/trk/@a", "Unexpected Attribute found.")},
        {Gpx11("<wpt lat='0' lon='0' xmlns:x='urn:x' x:lat='0'/>"),
         At("/gpx/wpt/x:@lat", "Unexpected Attribute found.")},
        {Gpx11("<wpt xmlns:x='urn:x' x:lat='0' lon='0'/>"),
         At("/gpx/wpt/x:@lat", "Unexpected Attribute found.")},
        {Point("<name lang='en'>a</name>"), At("/gpx/wpt/name/@lang", "Unexpected Attribute found.")},
        // elements
        {Gpx11("<foo/>"), Remains("gpx", "foo", "/gpx")},
        {Gpx11("<trk><trkseg><trkpt lat='0' lon='0'/><trkpt lat='0' lon='0'><speed/></trkpt></trkseg></trk>"),
         Remains("trkpt", "speed", "/gpx/trk/trkseg/trkpt[2]")},
        {Point("<x:ele xmlns:x='urn:x'>1</x:ele>"), Remains("wpt", "ele", "/gpx/wpt")},
        {Point("<time>2024-01-01T00:00:00Z</time><ele>1</ele>"), Remains("wpt", "ele", "/gpx/wpt")},
        {Point("<ele>1</ele><ele>1</ele>"), Remains("wpt", "ele", "/gpx/wpt")},
        {Gpx11("<trk/><rte/>"), Remains("gpx", "rte", "/gpx")},
        {Gpx11("<metadata/><metadata/>"), Remains("gpx", "metadata", "/gpx")},
        {Point("<name>a<b>c</b></name>"), Remains("name", "b", "/gpx/wpt/name")},
        {Gpx11("<metadata><bounds minlat='0' minlon='0' maxlat='0' maxlon='0'><a/></bounds></metadata>"),
         Remains("bounds", "a", "/gpx/metadata/bounds")},
        // nil
        {Point("<ele" + xsi + "xsi:nil='true'/>"), At("/gpx/wpt/ele", nil)},
        {Gpx11("<wpt lat='0' lon='0'" + xsi + "xsi:nil='false'/>"), At("/gpx/wpt", nil)},
        // values
        {Point("<ele>12,5</ele>"),
         Value("ele", "/gpx/wpt/ele",
               "The string representing a Decimal, contained an invalid char at position 2 [12,5].")},
        {Point("<ele/>"), Value("ele", "/gpx/wpt/ele",
                                "The string representing a Decimal, contained an invalid char at position 0 "
                                "[].")},
        {Gpx11("<wpt lat='0' lon='1.2.3'/>"),
         Value("lon", "/gpx/wpt/@lon",
               "The string representing a Decimal, contained an invalid char at position 3 [1.2.3].")},
        {Point("<time>2024-01-01</time>"),
         Value("time", "/gpx/wpt/time", "Invalid XSD DateTime [2024-01-01].")},
        {Point("<time>2024-13-01T00:00:00Z</time>"),
         Value("time", "/gpx/wpt/time", "Invalid Month [13] (1 <= month <= 12)")},
        {Point("<fix>4d</fix>"), Value("fix", "/gpx/wpt/fix", "Invalid Value for fixType [4d].")},
        {Point("<fix> 3d</fix>"), Value("fix", "/gpx/wpt/fix", "Invalid Value for fixType [ 3d].")},
        // facets
        {"<gpx xmlns='http://www.topografix.com/GPX/1/1' version='1.0' creator='a'/>",
         Value("version", "/gpx/@version",
               "Invalid Value for version [1.0]. It violates the facet enumeration [1.1].")},
        {Gpx11("<wpt lat='90.0000000001' lon='0'/>"),
         Value("lat", "/gpx/wpt/@lat",
               "Invalid Value for lat [90.0000000001]. It violates the facet maxInclusive [90.0].")},
        {Gpx11("<wpt lat='-91' lon='0'/>"),
         Value("lat", "/gpx/wpt/@lat",
               "Invalid Value for lat [-91]. It violates the facet minInclusive [-90.0].")},
        {Gpx11("<wpt lat='0' lon='180'/>"),
         Value("lon", "/gpx/wpt/@lon",
               "Invalid Value for lon [180]. It violates the facet maxExclusive [180.0].")},
        {Gpx11("<wpt lat='0' lon='-180.5'/>"),
         Value("lon", "/gpx/wpt/@lon",
               "Invalid Value for lon [-180.5]. It violates the facet minInclusive [-180.0].")},
        {Point("<magvar>360</magvar>"),
         Value("magvar", "/gpx/wpt/magvar",
               "Invalid Value for magvar [360]. It violates the facet maxExclusive [360.0].")},
        {Point("<sat>-1</sat>"),
         Value("sat", "/gpx/wpt/sat", "Invalid Value for sat [-1]. It violates the facet minInclusive [0].")},
        {Point("<dgpsid>1024</dgpsid>"),
         Value("dgpsid", "/gpx/wpt/dgpsid",
               "Invalid Value for dgpsid [1024]. It violates the facet maxInclusive [1023].")},
        // not XML
        {"", "XML String is empty!"},
        {Gpx11("\n<trk>"), "mismatched tag at line 2"},
        {Gpx11("<x:trk/>"), "unbound prefix at line 1"},
    };
}

TEST(Gpx, InvalidDocumentsAreRefusedWithTheirPathAndTheObjectStaysUsable) {
    const std::string sample = ReadAll(SampleName());
    const std::string expected = ReadAll(SampleName());
    const CSmartPtr<CGpxType> gpx(new CGpxType());
    for (const Invalid& row : InvalidDocuments()) {
        SCOPED_TRACE(row.document);
        EXPECT_EQ(ErrorOf([&] { gpx->FromXml(row.document.c_str()); }), row.message);
        EXPECT_EQ(ErrorOf([&] { gpx->FromXml(sample.c_str()); }), "(no error)");
        EXPECT_EQ(Written(*gpx), expected);
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
