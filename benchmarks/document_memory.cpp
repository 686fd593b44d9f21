/// Peak memory and CPU time of one read, each in a fresh process, as a multiple of the input; and cost per
/// byte over a range of sizes. DOCUMENT is gpx or orders.
///
///     document_memory DOCUMENT [MEGABYTES]          peak memory at one size (default 20)
///     document_memory DOCUMENT --scaling [LARGEST]  milliseconds per MB of input, from 1 MB up to LARGEST
///                                                   (default 500); reading includes releasing the objects
///     document_memory orders --validation           peak memory of validating files of 20, 100 and 500 MB
#include <expat.h>
#include <malloc.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>

#include "benchmarks/support/gpx_document.h"
#include "benchmarks/support/orders_document.h"
#include "benchmarks/support/paired_timing.h"
#include "examples/gpx/gpx_type.h"
#include "examples/orders/orders_type.h"
#include "kvxml/kvxml.h"
#include "kvxml/schema/schema.h"

namespace {

using namespace KvXmlLib16;

/// A document that can be measured: its text in pieces, an object to read it into, its records.
struct Document {
    const char* name;
    void (*write)(std::size_t bytes, std::uint32_t seed, const std::function<void(std::string_view)>& sink);
    CSmartPtr<CXmlObjectBase> (*newObject)();
    bool (*discardRecord)(CXmlElement* element);
};

constexpr std::uint32_t kSeed = 1;

const Document kDocuments[] = {
    {"gpx", benchmarks::WriteGpxDocument, [] { return CSmartPtr<CXmlObjectBase>(new Gpx::CGpxType()); },
     [](CXmlElement* element) {
         const std::string& name = element->GetLocalName();
         return name == "trkpt" || name == "trkseg" || name == "trk" || name == "wpt";
     }},
    {"orders", benchmarks::WriteOrdersDocument,
     [] { return CSmartPtr<CXmlObjectBase>(new Orders::COrdersType()); },
     [](CXmlElement* element) { return element->GetLocalName() == "order"; }},
};

struct Result {
    double peakMegabytes = 0;
    double seconds = 0;
};

/// Runs `action` in a child process and returns its peak memory and CPU time. `inKeptHeap`: runs it once
/// before, with glibc told to keep freed memory, so that the time is free of what the host takes to supply
/// fresh pages.
Result InChild(const std::function<void()>& action, bool inKeptHeap = false) {
    int pipeEnds[2];
    if (pipe(pipeEnds) != 0) std::abort();
    const pid_t child = fork();
    if (child == 0) {
        if (inKeptHeap) {
            mallopt(M_MMAP_MAX, 0);
            mallopt(M_TRIM_THRESHOLD, -1);
            action();
        }
        double seconds = benchmarks::TimeOf(action);
        if (write(pipeEnds[1], &seconds, sizeof seconds) != sizeof seconds) _exit(2);
        _exit(0);
    }
    Result result;
    int status = 0;
    rusage usage{};
    wait4(child, &status, 0, &usage);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0 ||
        read(pipeEnds[0], &result.seconds, sizeof result.seconds) != sizeof result.seconds) {
        std::fprintf(stderr, "a child process failed\n");
        std::exit(1);
    }
    close(pipeEnds[0]);
    close(pipeEnds[1]);
    result.peakMegabytes = static_cast<double>(usage.ru_maxrss) * 1024 / 1e6;
    return result;
}

void ParseWithExpat(const std::string& text) {
    XML_Parser parser = XML_ParserCreateNS(nullptr, '|');
    XML_SetElementHandler(
        parser, [](void*, const XML_Char*, const XML_Char**) {}, [](void*, const XML_Char*) {});
    XML_SetCharacterDataHandler(parser, [](void*, const XML_Char*, int) {});
    XML_Parse(parser, text.data(), static_cast<int>(text.size()), 1);
    XML_ParserFree(parser);
}

std::string WriteDocumentFile(const Document& document, std::size_t bytes) {
    const char* folder = std::getenv("TMPDIR");
    std::string name = std::string(folder == nullptr ? "/tmp" : folder) + "/kvxml_benchmark_XXXXXX";
    const int handle = mkstemp(name.data());
    if (handle < 0) std::abort();
    document.write(bytes, kSeed, [&](std::string_view piece) {
        if (write(handle, piece.data(), piece.size()) != static_cast<ssize_t>(piece.size())) std::abort();
    });
    close(handle);
    return name;
}

std::string ReadFile(const std::string& name) {
    std::FILE* file = std::fopen(name.c_str(), "rb");
    if (file == nullptr) std::abort();
    std::fseek(file, 0, SEEK_END);
    std::string text(static_cast<std::size_t>(std::ftell(file)), '\0');
    std::rewind(file);
    if (std::fread(text.data(), 1, text.size(), file) != text.size()) std::abort();
    std::fclose(file);
    return text;
}

void MeasureMemory(const Document& measured, std::size_t bytes) {
    const std::string file = WriteDocumentFile(measured, bytes);
    const double nothing = InChild([] {}).peakMegabytes;
    const double input = static_cast<double>(bytes) / 1e6;
    const auto report = [&](const char* what, const std::function<void()>& action) {
        const Result result = InChild(action);
        const double peak = result.peakMegabytes - nothing;
        std::printf("%-46s %8.1f MB  %5.2f x input  %7.1f ms\n", what, peak, peak / input,
                    result.seconds * 1000);
    };
    std::printf("input: %.1f MB of %s; process without work: %.1f MB (subtracted)\n", input, measured.name,
                nothing);
    report("expat alone, input included", [&] {
        const std::string text = ReadFile(file);
        ParseWithExpat(text);
    });
    report("CXmlDocument from memory, input included", [&] {
        const std::string text = ReadFile(file);
        CXmlDocument document;
        document.LoadXmlStream(reinterpret_cast<const unsigned char*>(text.data()), text.size());
    });
    report("FromXml from memory, input included", [&] {
        const std::string text = ReadFile(file);
        const CSmartPtr<CXmlObjectBase> object = measured.newObject();
        object->FromXml(text.c_str());
    });
    report("FromXmlFile", [&] {
        const CSmartPtr<CXmlObjectBase> object = measured.newObject();
        object->FromXmlFile(file.c_str());
    });
    AsyncFromXmlFile(true);
    report("CXmlDocument, chunked, every record discarded", [&] {
        CXmlDocument document(measured.discardRecord);
        document.Load(file.c_str());
    });
    AsyncFromXmlFile(false);
    unlink(file.c_str());
}

void MeasureScaling(const Document& measured, std::size_t largest) {
    std::printf("%10s %14s %14s %14s %8s\n", "MB", "expat ms/MB", "FromXml ms/MB", "ToXml ms/MB", "x floor");
    for (std::size_t megabytes = 1; megabytes <= largest;
         megabytes *= megabytes == 1 || megabytes == 10 ? 10 : 5) {
        std::string text;
        measured.write(megabytes * 1000000, kSeed, [&](std::string_view piece) { text += piece; });
        const double size = static_cast<double>(text.size()) / 1e6;
        const auto msPerMb = [&](const std::function<void()>& action) {
            return InChild(action, true).seconds * 1000 / size;
        };
        const double floor = msPerMb([&] { ParseWithExpat(text); });
        const double reading = msPerMb([&] {
            const CSmartPtr<CXmlObjectBase> object = measured.newObject();
            object->FromXml(text.c_str());
        });
        const double both = msPerMb([&] {
            const CSmartPtr<CXmlObjectBase> object = measured.newObject();
            object->FromXml(text.c_str());
            const std::string written = object->ToXml();
            benchmark::DoNotOptimize(written.data());
        });
        std::printf("%10zu %14.3f %14.3f %14.3f %8.2f\n", megabytes, floor, reading, both - reading,
                    reading / floor);
    }
}

void MeasureValidation(const Document& measured) {
    const double nothing = InChild([] {}).peakMegabytes;
    for (const std::size_t megabytes : {20, 100, 500}) {
        const std::string file = WriteDocumentFile(measured, megabytes * 1000000);
        const Result result = InChild([&] {
            CSchemaLoader loader;
            loader.AddFile(KVXML_SOURCE_DIR "/examples/orders/orders.xsd");
            if (!CSchemaValidator(loader.Load()).ValidateFile(file.c_str()).IsValid()) _exit(1);
        });
        std::printf("%4zu MB: %6.2f MB, schema included  %8.1f ms\n", megabytes,
                    result.peakMegabytes - nothing, result.seconds * 1000);
        unlink(file.c_str());
    }
}

}  // namespace

int main(int argc, char** argv) {
    const Document* measured = nullptr;
    for (const Document& document : kDocuments) {
        if (argc > 1 && std::strcmp(argv[1], document.name) == 0) measured = &document;
    }
    if (measured == nullptr) {
        std::fprintf(stderr,
                     "usage: document_memory gpx|orders [MEGABYTES | --scaling [LARGEST] | --validation]\n");
        return 2;
    }
    if (argc > 2 && std::strcmp(argv[2], "--scaling") == 0) {
        MeasureScaling(*measured, argc > 3 ? std::strtoul(argv[3], nullptr, 10) : 500);
    } else if (argc > 2 && std::strcmp(argv[2], "--validation") == 0) {
        MeasureValidation(kDocuments[1]);  // the one that has a schema
    } else {
        MeasureMemory(*measured, (argc > 2 ? std::strtoul(argv[2], nullptr, 10) : 20) * 1000000);
    }
    return 0;
}
