/// Benchmarks of reading and writing one document through its generated classes, each beside its floor and a
/// peer; the programs differ in the document alone.
///
/// Every figure is CPU time of the thread. "x_floor" is the ratio to the floor measured in turns with it:
/// bare expat over the same bytes (namespaces on, empty handlers, one final call). glibc is told to keep
/// freed memory, so both sides run in the same heap state. KVXML_BENCHMARK_MB sets the size (default 20).
#pragma once

#include <benchmark/benchmark.h>
#include <expat.h>
#include <malloc.h>

#include <cstdlib>
#include <cstring>
#include <pugixml.hpp>
#include <string>

#include "benchmarks/support/paired_timing.h"
#include "kvxml/kvxml.h"

namespace benchmarks {

/// `Subject` has the type `Root` (the document's class), `Make(bytes)` (the document's text) and
/// `kNamespace`.
template <class Subject>
class DocumentBenchmarks {
public:
    /// The whole of `main`.
    static int Run(int argc, char** argv) {
        mallopt(M_MMAP_THRESHOLD, 1 << 30);
        mallopt(M_TRIM_THRESHOLD, 2147483647);
        benchmark::Initialize(&argc, argv);
        if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
        Register("Read/expat (floor)", ReadExpat);
        Register("Read/CXmlDocument", ReadDocument);
        Register("Read/FromXml", ReadFromXml);
        Register("Read/pugixml DOM (peer)", ReadPugixml);
        Register("Write/memcpy (floor)", WriteMemcpy);
        Register("Write/ToXml formatted", [](benchmark::State& state) { WriteToXml(state, true); });
        Register("Write/ToXml compact", [](benchmark::State& state) { WriteToXml(state, false); });
        Register("Write/pugixml DOM (peer)", WritePugixml);
        Register("Release/objects", ReleaseObjects);
        benchmark::RunSpecifiedBenchmarks();
        return 0;
    }

private:
    using Root = typename Subject::Root;
    using RootPtr = KvXmlLib16::CSmartPtr<Root>;

    template <class Function>
    static void Register(const char* name, Function function) {
        benchmark::RegisterBenchmark(name, function)->UseManualTime()->Unit(benchmark::kMillisecond);
    }

    static std::size_t DocumentBytes() {
        const char* megabytes = std::getenv("KVXML_BENCHMARK_MB");
        return (megabytes == nullptr ? 20 : std::strtoul(megabytes, nullptr, 10)) * 1000 * 1000;
    }

    static const std::string& Document() {
        static const std::string document = Subject::Make(DocumentBytes());
        return document;
    }

    static KvXmlLib16::CSerializationContext Context() {
        KvXmlLib16::CSerializationContext context;
        context.SetDefaultNamespaceURI(Subject::kNamespace);
        return context;
    }

    static const RootPtr& Object() {
        static const RootPtr object = [] {
            RootPtr root(new Root());
            root->FromXml(Document().c_str());
            return root;
        }();
        return object;
    }

    static double ExpatFloor() {
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

    static void ReadExpat(benchmark::State& state) {
        RunPaired(state, Document().size(), ExpatFloor, ExpatFloor);
    }

    static void ReadDocument(benchmark::State& state) {
        RunPaired(state, Document().size(), ExpatFloor, [] {
            return TimeOf([] {
                KvXmlLib16::CXmlDocument document;
                document.LoadXml(Document().c_str());
                benchmark::DoNotOptimize(document.GetDocumentElement());
            });
        });
    }

    static void ReadFromXml(benchmark::State& state) {
        RunPaired(state, Document().size(), ExpatFloor, [] {
            RootPtr root(new Root());
            return TimeOf([&] { root->FromXml(Document().c_str()); });
        });
    }

    static void ReleaseObjects(benchmark::State& state) {
        RunPaired(state, Document().size(), ExpatFloor, [] {
            RootPtr root(new Root());
            root->FromXml(Document().c_str());
            return TimeOf([&] { root = nullptr; });
        });
    }

    static void ReadPugixml(benchmark::State& state) {
        RunPaired(state, Document().size(), ExpatFloor, [] {
            return TimeOf([] {
                pugi::xml_document document;
                document.load_buffer(Document().data(), Document().size());
                benchmark::DoNotOptimize(document.first_child());
            });
        });
    }

    static void WriteMemcpy(benchmark::State& state) {
        RunPaired(state, Document().size(), ExpatFloor, [] {
            return TimeOf([] {
                std::string copy;
                copy.resize(Document().size());
                std::memcpy(copy.data(), Document().data(), copy.size());
                benchmark::DoNotOptimize(copy.data());
            });
        });
    }

    static void WriteToXml(benchmark::State& state, bool formatted) {
        static const KvXmlLib16::CSerializationContext context = Context();
        RunPaired(state, Object()->ToXml(true, formatted, KvXmlLib16::EOLType_LF, context).size(), ExpatFloor,
                  [&] {
                      return TimeOf([&] {
                          const std::string text =
                              Object()->ToXml(true, formatted, KvXmlLib16::EOLType_LF, context);
                          benchmark::DoNotOptimize(text.data());
                      });
                  });
    }

    static void WritePugixml(benchmark::State& state) {
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
};

}  // namespace benchmarks
