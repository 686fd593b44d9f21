/// Conversion of XML to XML without classes, as `kvxml convert` does it, beside its floor.
///
/// "x_floor" is the ratio to bare expat over the same bytes, measured in turns. KVXML_BENCHMARK_FILE names
/// the document; without it, a generated one of KVXML_BENCHMARK_MB (default 20) is taken. Output goes to
/// /dev/null.
#include <benchmark/benchmark.h>
#include <expat.h>
#include <malloc.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

#include "benchmarks/support/gpx_document.h"
#include "benchmarks/support/paired_timing.h"
#include "kvxml/kvxml.h"
#include "kvxml/objects/xml_tree_writer.h"
#include "kvxml/xml/file_text_stream.h"
#include "kvxml/xml/xml_document.h"
#include "kvxml/xml/xml_text_writer.h"

namespace {

using benchmarks::RunPaired;
using benchmarks::TimeOf;
using namespace KvXmlLib16;

std::string MakeDocument() {
    if (const char* const name = std::getenv("KVXML_BENCHMARK_FILE")) {
        std::ifstream file(name, std::ios::binary);
        if (!file) std::abort();
        return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }
    const char* const megabytes = std::getenv("KVXML_BENCHMARK_MB");
    return benchmarks::MakeGpxDocument((megabytes == nullptr ? 20 : std::strtoul(megabytes, nullptr, 10)) *
                                       1000 * 1000);
}

const std::string& Document() {
    static const std::string document = MakeDocument();
    return document;
}

double ExpatFloor() {
    const std::string& document = Document();
    return TimeOf([&] {
        XML_Parser parser = XML_ParserCreateNS(nullptr, '|');
        XML_SetElementHandler(
            parser, [](void*, const XML_Char*, const XML_Char**) {}, [](void*, const XML_Char*) {});
        XML_SetCharacterDataHandler(parser, [](void*, const XML_Char*, int) {});
        if (XML_Parse(parser, document.data(), static_cast<int>(document.size()), 1) != XML_STATUS_OK)
            std::abort();
        XML_ParserFree(parser);
    });
}

void Load(CXmlDocument& document) {
    document.LoadXmlStream(reinterpret_cast<const unsigned char*>(Document().data()), Document().size());
}

void Write(const CXmlDocument& document) {
    CFileTextStream stream("/dev/null", XmlEncoding_UTF8);
    CXmlTextWriter writer(&stream);
    writer.BeginOutput();
    writer.WriteDeclaration();
    WriteXmlTree(*document.GetDocumentElement(), writer);
    writer.EndDocument();
}

void WriteTree(benchmark::State& state) {
    CXmlDocument document;
    Load(document);
    RunPaired(state, Document().size(), ExpatFloor, [&] { return TimeOf([&] { Write(document); }); });
}

void Convert(benchmark::State& state) {
    RunPaired(state, Document().size(), ExpatFloor, [] {
        return TimeOf([] {
            CXmlDocument document;
            Load(document);
            Write(document);
        });
    });
}

}  // namespace

int main(int argc, char** argv) {
    mallopt(M_MMAP_THRESHOLD, 1 << 30);
    mallopt(M_TRIM_THRESHOLD, 2147483647);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    for (auto* const run : {benchmark::RegisterBenchmark("Write/WriteXmlTree", WriteTree),
                            benchmark::RegisterBenchmark("Convert/XML to XML", Convert)}) {
        run->UseManualTime()->Unit(benchmark::kMillisecond);
    }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
