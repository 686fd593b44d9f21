/// Reading and writing of a generated GPX document, each beside its floor and a peer.
///
/// Every figure is CPU time of the thread. "x_floor" is the ratio to the floor measured in turns with it:
/// bare expat over the same bytes (namespaces on, empty handlers, one final call). glibc is told to keep
/// freed memory, so both sides run in the same heap state. KVXML_BENCHMARK_MB sets the size (default 20).
#include <benchmark/benchmark.h>
#include <expat.h>
#include <malloc.h>

#include <cstdlib>
#include <cstring>
#include <pugixml.hpp>
#include <string>

#include "benchmarks/support/gpx_document.h"
#include "benchmarks/support/paired_timing.h"
#include "examples/gpx/gpx_type.h"
#include "kvxml/kvxml.h"

namespace {

using benchmarks::RunPaired;
using benchmarks::TimeOf;
using namespace KvXmlLib16;

std::size_t DocumentBytes() {
    const char* megabytes = std::getenv("KVXML_BENCHMARK_MB");
    return (megabytes == nullptr ? 20 : std::strtoul(megabytes, nullptr, 10)) * 1000 * 1000;
}

const std::string& Document() {
    static const std::string document = benchmarks::MakeGpxDocument(DocumentBytes());
    return document;
}

CSerializationContext GpxContext() {
    CSerializationContext context;
    context.SetDefaultNamespaceURI("http://www.topografix.com/GPX/1/1");
    return context;
}

const CSmartPtr<Gpx::CGpxType>& Object() {
    static const CSmartPtr<Gpx::CGpxType> object = [] {
        CSmartPtr<Gpx::CGpxType> gpx(new Gpx::CGpxType());
        gpx->FromXml(Document().c_str());
        return gpx;
    }();
    return object;
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

void ReadExpat(benchmark::State& state) {
    RunPaired(state, Document().size(), ExpatFloor, ExpatFloor);
}

void ReadDocument(benchmark::State& state) {
    RunPaired(state, Document().size(), ExpatFloor, [] {
        return TimeOf([] {
            CXmlDocument document;
            document.LoadXml(Document().c_str());
            benchmark::DoNotOptimize(document.GetDocumentElement());
        });
    });
}

void ReadFromXml(benchmark::State& state) {
    RunPaired(state, Document().size(), ExpatFloor, [] {
        CSmartPtr<Gpx::CGpxType> gpx(new Gpx::CGpxType());
        return TimeOf([&] { gpx->FromXml(Document().c_str()); });
    });
}

void ReleaseObjects(benchmark::State& state) {
    RunPaired(state, Document().size(), ExpatFloor, [] {
        CSmartPtr<Gpx::CGpxType> gpx(new Gpx::CGpxType());
        gpx->FromXml(Document().c_str());
        return TimeOf([&] { gpx = nullptr; });
    });
}

void ReadPugixml(benchmark::State& state) {
    RunPaired(state, Document().size(), ExpatFloor, [] {
        return TimeOf([] {
            pugi::xml_document document;
            document.load_buffer(Document().data(), Document().size());
            benchmark::DoNotOptimize(document.first_child());
        });
    });
}

void WriteMemcpy(benchmark::State& state) {
    RunPaired(state, Document().size(), ExpatFloor, [] {
        return TimeOf([] {
            std::string copy;
            copy.resize(Document().size());
            std::memcpy(copy.data(), Document().data(), copy.size());
            benchmark::DoNotOptimize(copy.data());
        });
    });
}

void WriteToXml(benchmark::State& state, bool formatted) {
    static const CSerializationContext context = GpxContext();
    RunPaired(state, Object()->ToXml(true, formatted, EOLType_LF, context).size(), ExpatFloor, [&] {
        return TimeOf([&] {
            const std::string text = Object()->ToXml(true, formatted, EOLType_LF, context);
            benchmark::DoNotOptimize(text.data());
        });
    });
}

void WritePugixml(benchmark::State& state) {
    static pugi::xml_document document;
    if (document.first_child().empty()) document.load_buffer(Document().data(), Document().size());
    struct Writer : pugi::xml_writer {
        std::string text;
        void write(const void* data, std::size_t size) override {
            text.append(static_cast<const char*>(data), size);
        }
    };
    RunPaired(state, Document().size(), ExpatFloor, [] {
        return TimeOf([] {
            Writer writer;
            document.save(writer, "\t");
            benchmark::DoNotOptimize(writer.text.data());
        });
    });
}

#define KVXML_GPX_BENCHMARK(name, ...) \
    benchmark::RegisterBenchmark(name, __VA_ARGS__)->UseManualTime()->Unit(benchmark::kMillisecond)

}  // namespace

int main(int argc, char** argv) {
    mallopt(M_MMAP_THRESHOLD, 1 << 30);
    mallopt(M_TRIM_THRESHOLD, 2147483647);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    KVXML_GPX_BENCHMARK("Read/expat (floor)", ReadExpat);
    KVXML_GPX_BENCHMARK("Read/CXmlDocument", ReadDocument);
    KVXML_GPX_BENCHMARK("Read/FromXml", ReadFromXml);
    KVXML_GPX_BENCHMARK("Read/pugixml DOM (peer)", ReadPugixml);
    KVXML_GPX_BENCHMARK("Write/memcpy (floor)", WriteMemcpy);
    KVXML_GPX_BENCHMARK("Write/ToXml formatted", [](benchmark::State& state) { WriteToXml(state, true); });
    KVXML_GPX_BENCHMARK("Write/ToXml compact", [](benchmark::State& state) { WriteToXml(state, false); });
    KVXML_GPX_BENCHMARK("Write/pugixml DOM (peer)", WritePugixml);
    KVXML_GPX_BENCHMARK("Release/objects", ReleaseObjects);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
