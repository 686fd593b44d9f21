// What namespaces mean from one format to the next, and what long ones cost.
#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <ctime>
#include <functional>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "kvxml/kvxml.h"
#include "tests/support/error_of.h"
#include "tests/support/fixture_all_kinds.h"
#include "tests/support/xml_tree_dump.h"

namespace KvXmlLib16 {
namespace {

using testsupport::Dump;

// --- ways through the formats ------------------------------------------------------------------------------

void LoadFastInfoset(CXmlDocument& document, const CBinaryData& data) {
    document.LoadXmlStream(data.GetData(), data.GetLength());
}

/// Writes what `write` writes and reads it again.
using Write = std::function<void(CXmlWriter&)>;

void ByXml(const Write& write, CXmlDocument& read) {
    CTextStream stream(XmlEncoding_UTF8);
    CXmlTextWriter writer(&stream);
    writer.BeginOutput();
    write(writer);
    writer.EndDocument();
    read.LoadXml(stream.TakeText().c_str());
}

void ByFastInfoset(const Write& write, CXmlDocument& read) {
    CFastInfosetWriter writer{CFastInfosetContext()};
    writer.BeginOutput();
    write(writer);
    writer.EndDocument();
    LoadFastInfoset(read, writer.TakeDocument());
}

void ByJson(const Write& write, CXmlDocument& read) {
    CTextStream stream(XmlEncoding_UTF8);
    CJsonTextWriter writer(&stream);
    writer.BeginOutput();
    write(writer);
    writer.EndDocument();
    read.BuildFromJson(stream.TakeText().c_str());
}

// --- types -------------------------------------------------------------------------------------------------

class Factory : public CClassfactoryBase {
public:
    using CClassfactoryBase::GetElementType;
    using CClassfactoryBase::GetElementTypeNamespaceUri;
};

/// The elements with an xsi:type, and what it names.
std::string TypesIn(const CXmlElement* element) {
    std::string types;
    for (; element != nullptr; element = element->GetNextSiblingElement()) {
        const std::string type = Factory::GetElementType(element);
        if (!type.empty()) {
            types += '{' + element->GetNamespaceURI() + '}' + element->GetLocalName() + "={" +
                     Factory::GetElementTypeNamespaceUri(element) + '}' + type + ' ';
        }
        types += TypesIn(element->GetFirstElement());
    }
    return types;
}

TEST(NamespacesTest, TypesMeanWhatTheirPlaceSays) {
    struct Row {
        const char* what;
        const char* xml;  // without the declaration of xsi
        const char* types;
    };
    const Row rows[] = {
        {"a prefix for two namespaces",
         "<r ><a xmlns:p='urn:1' xsi:type='p:T'><b xsi:type='p:T'/></a><c xmlns:p='urn:2' "
         "xsi:type='p:T'/></r>",
         "{}a={urn:1}T {}b={urn:1}T {}c={urn:2}T "},
        {"a prefix declared anew inside",
         "<p:r xmlns:p='urn:1' xsi:type='p:T'><p:a xmlns:p='urn:2'><b xsi:type=' p:T '/></p:a>"
         "<c xsi:type='p:T'/></p:r>",
         "{urn:1}r={urn:1}T {}b={urn:2}T {}c={urn:1}T "},
        {"default namespaces",
         "<p:r xmlns:p='urn:1' xsi:type='T'><a xmlns='urn:2' xsi:type=' T'><b xmlns='' xsi:type='T'/>"
         "<p:c xmlns='' xsi:type='T'/><d xsi:type='T'/></a><p:e xsi:type='T'/></p:r>",
         "{urn:1}r={}T {urn:2}a={urn:2}T {}b={}T {urn:1}c={}T {urn:2}d={urn:2}T {urn:1}e={}T "},
        {"no default namespace in an element of what was one",
         "<r xmlns='urn:1' xsi:type='T'><p:a xmlns='' xmlns:p='urn:1' xsi:type='T'><b xsi:type='T'/></p:a>"
         "<c xsi:type='T'/></r>",
         "{urn:1}r={urn:1}T {urn:1}a={}T {}b={}T {urn:1}c={urn:1}T "},
        {"a default namespace that only the types are in",
         "<p:r xmlns:p='urn:1' xmlns='urn:2' xsi:type='T'><p:a xsi:type='p:T'/></p:r>",
         "{urn:1}r={urn:2}T {urn:1}a={urn:1}T "},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        std::string xml = row.xml;
        xml.insert(xml.find(' '), " xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance'");
        CXmlDocument document;
        document.LoadXml(xml.c_str());
        const CXmlElement& root = *document.GetDocumentElement();
        EXPECT_EQ(TypesIn(&root), row.types);
        CElement object;
        object.FromXml(xml.c_str());
        for (const auto& [format, way] :
             {std::pair("XML", &ByXml), {"Fast Infoset", &ByFastInfoset}, {"JSON", &ByJson}}) {
            SCOPED_TRACE(format);
            CXmlDocument read;
            way([&](CXmlWriter& writer) { WriteXmlTree(root, writer); }, read);
            EXPECT_EQ(TypesIn(read.GetDocumentElement()), row.types);
        }
        const std::string written = object.ToXml();
        document.LoadXml(written.c_str());
        EXPECT_EQ(TypesIn(document.GetDocumentElement()), row.types) << written;
        LoadFastInfoset(document, object.ToFastInfosetStream());
        EXPECT_EQ(TypesIn(document.GetDocumentElement()), row.types);
    }
    // A prefix that is declared, but not where it is used.
    CXmlDocument document;
    document.LoadXml(
        "<r xmlns:x='http://www.w3.org/2001/XMLSchema-instance'><a xmlns:p='u'/><b x:type='p:T'/></r>");
    EXPECT_EQ(TypesIn(document.GetDocumentElement()), "{}b={}T ");
    EXPECT_EQ(document.LookupNamespaceFromAlias("p"), "u");
}

TEST(NamespacesTest, TypesAreKeptWhenAFilterDropsElements) {
    CXmlDocument document([](CXmlElement* element) { return element->GetLocalName() == "drop"; });
    std::string xml = "<r xmlns:x='http://www.w3.org/2001/XMLSchema-instance' xmlns:p='urn:0'>";
    std::string types;
    for (int i = 0; i < 500; ++i) {
        const std::string number = std::to_string(i);
        xml += "<drop xmlns:p='urn:d" + number + "'><a x:type='p:T'/></drop><b xmlns:p='urn:" + number +
               "'><c x:type='p:T'/></b>";
        types += "{}c={urn:" + number + "}T ";
    }
    document.LoadXml((xml + "<d x:type='p:T'/></r>").c_str());
    EXPECT_EQ(TypesIn(document.GetDocumentElement()), types + "{}d={urn:0}T ");
}

// --- settings of the document element
// ------------------------------------------------------------------------

TEST(NamespacesTest, InLineSchemaIsTheFirstContent) {
    const fixture::Model& text = fixture::Model::New("Text").Text(ItemType_string);
    const CSmartPtr<fixture::Object> simple(new fixture::Object(text));
    simple->Set("text", "t");
    CElement element("e", "urn:e");
    element.AddElement("f");
    CElement mixed("e", "urn:e", "t");
    mixed.AddElement("f");
    CSerializationContext context;
    context.SetInLineSchema("<s x='1'><p:y xmlns:p='urn:p'/></s>");
    const struct {
        const CXmlObjectBase* object;
        const char* defaultNamespace;
        const char* formatted;
    } rows[] = {
        {simple.Get(), "urn:fixture",
         "<Text xmlns=\"urn:fixture\"><s x='1'><p:y xmlns:p='urn:p'/></s>t</Text>\n"},
        {simple.Get(), "",
         "<AA:Text xmlns:AA=\"urn:fixture\"><s x='1'><p:y xmlns:p='urn:p'/></s>t</AA:Text>\n"},
        {&element, "", "<e xmlns=\"urn:e\">\n<s x='1'><p:y xmlns:p='urn:p'/></s>\n\t<f/>\n</e>\n"},
        {&mixed, "", "<e xmlns=\"urn:e\"><s x='1'><p:y xmlns:p='urn:p'/></s>t<f/></e>\n"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.formatted);
        context.SetDefaultNamespaceURI(row.defaultNamespace);
        EXPECT_EQ(row.object->ToXml(false, true, EOLType_LF, context), row.formatted);
        CXmlDocument xml;
        xml.LoadXml(row.object->ToXml(false, false, EOLType_LF, context).c_str());
        CXmlDocument binary;
        LoadFastInfoset(binary, row.object->ToFastInfosetStream(FInfoDecl_None, context));
        EXPECT_EQ(Dump(binary), Dump(xml));
    }
}

TEST(NamespacesTest, DefaultNamespaceAroundADocumentElementWithoutOne) {
    CXmlDocument read;
    ByFastInfoset(
        [](CXmlWriter& writer) {
            writer.SetDefaultNamespace("urn:d");
            writer.WriteStartElement("r", "");
            writer.WriteTypeAttribute("urn:d", "T", ItemType_string);
            writer.WriteStartElement("a", "urn:d");
            writer.WriteStartElement("b", "");
            for (int i = 0; i < 3; ++i)
                writer.WriteEndElement();
        },
        read);
    const CXmlElement* const root = read.GetDocumentElement();
    EXPECT_EQ(root->GetNamespaceURI(), "");
    EXPECT_EQ(TypesIn(root), "{}r={urn:d}T ");
    EXPECT_EQ(root->GetFirstElement()->GetNamespaceURI(), "urn:d");
    EXPECT_EQ(root->GetFirstElement()->GetFirstElement()->GetNamespaceURI(), "");
}

TEST(NamespacesTest, WhatDocumentsGetIsNoPartOfAnElement) {
    CSerializationContext context;
    context.SetInLineSchema("<s/>");
    context.SetDefaultNamespaceURI("urn:d");
    context.GetProcessingInstructions().push_back("no markup");
    context.GetAdditionalRootAttributes()->Add("extra", "", "1");
    CElement source("a", nullptr, "t");
    source.AddElement("b");
    CElement read;
    read.FromXmlElement(&source, context);
    EXPECT_EQ(read.ToXml(false, false), source.ToXml(false, false));
}

// --- cost --------------------------------------------------------------------------------------------------

/// A document of about `count` * 26 bytes, most of which one namespace takes.
std::string LongNamespace(int count) {
    std::string xml = "<p:r xmlns:p='" + std::string(static_cast<std::size_t>(count) * 16, 'u') + "'>";
    for (int i = 0; i < count; ++i)
        xml += "<p:a" + std::to_string(i) + "/>";
    return xml + "</p:r>";
}

std::size_t MemoryInUse() {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

/// The least of three runs, in seconds of this process.
template <class Action>
double SecondsOf(Action action) {
    double least = 1e9;
    for (int run = 0; run < 3; ++run) {
        const std::clock_t start = std::clock();
        action();
        least = std::min(least, static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC);
    }
    return least;
}

TEST(NamespacesTest, LongNamespacesCostWhatTheyAreLong) {
    constexpr int kFew = 8000;
    constexpr double kMargin = 8;  // four times the input
    const std::string few = LongNamespace(kFew);
    const std::string many = LongNamespace(4 * kFew);
    CXmlDocument document;
    const std::size_t before = MemoryInUse();
    document.LoadXml(LongNamespace(kFew / 8).c_str());
    const std::size_t little = MemoryInUse() - before;
    ASSERT_LT(little, std::size_t{4} << 20);  // else the next one may be too much for the host
    document.LoadXml(few.c_str());
    const std::size_t some = MemoryInUse() - before;
    document.LoadXml(many.c_str());
    EXPECT_LT(MemoryInUse() - before, some * 6 + (std::size_t{1} << 20));

    CXmlDocument read;
    const std::string* xml = &few;
    const auto tree = [&](CXmlWriter& writer) { WriteXmlTree(*document.GetDocumentElement(), writer); };
    const std::pair<const char*, std::function<void()>> ways[] = {
        {"reading", [&] { document.LoadXml(xml->c_str()); }},
        {"XML", [&] { ByXml(tree, read); }},
        {"Fast Infoset", [&] { ByFastInfoset(tree, read); }},
        {"object",
         [&] {
             CElement object;
             object.FromXmlElement(document.GetDocumentElement());
             object.ToFastInfosetStream();
             object.ToXml();
         }},
    };
    std::vector<double> first;
    for (const auto& [what, run] : ways)
        first.push_back(SecondsOf(run));
    xml = &many;
    for (std::size_t i = 0; i < std::size(ways); ++i)
        EXPECT_LT(SecondsOf(ways[i].second), first[i] * kMargin + 0.05) << ways[i].first;
}

TEST(NamespacesTest, LongNamespacesOfManyAttributesAreRefused) {
    const std::string uri(100000, 'u');
    std::string inOne = "<r xmlns:p='" + uri + "' ";
    std::string inMany = "<r xmlns:p='" + uri + "'>";
    for (int i = 0; i < 5000; ++i) {
        inOne += "p:a" + std::to_string(i) + "='' ";
        inMany += "<b p:a=''/>";
    }
    for (const std::string& xml : {inOne + "/>", inMany + "</r>"}) {
        CXmlDocument document;
        EXPECT_EQ(
            ErrorOf([&] { document.LoadXml(xml.c_str()); }),
            "namespaces of attributes add more to the document than the limit of 8388608 bytes at line 1");
    }
    CSerializationContext unlimited;
    unlimited.SetMaxExpansion(0);
    CXmlDocument document(unlimited);
    document.LoadXml((inMany + "</r>").c_str());
    EXPECT_EQ(document.GetDocumentElement()->GetFirstElement()->GetAttributes()[0]->GetNamespaceURI(), uri);
}

}  // namespace
}  // namespace KvXmlLib16
