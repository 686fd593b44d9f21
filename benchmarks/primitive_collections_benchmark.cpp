/// A collection of a million i4, beside a plain loop over the same tree or vector.
///
/// Every figure is CPU time of the thread. "x_floor" is the ratio to the loop measured in turns with it,
/// "target" what it should not exceed. The tree is built before; glibc is told to keep freed memory.
/// KVXML_BENCHMARK_ITEMS sets the number of items (default 1000000).
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "benchmarks/support/paired_timing.h"
#include "kvxml/kvxml.h"

namespace {

using benchmarks::RunPaired;
using benchmarks::TimeOf;
using namespace KvXmlLib16;

constexpr double kTarget = 1.5;
constexpr const char* kNamespace = "urn:numbers";

/// Opens the writing of one collection without an object around it.
template <class Collection>
class Opened final : public Collection {
public:
    Opened() : Collection("n", kNamespace, 0, -1) {}
    void Write(CXmlWriter& writer) const {
        this->ToXml_Int(&writer, false, kNamespace, CSerializationContext::GetDefaultContext(), false);
    }
};

/// The values of all magnitudes, the same on every run.
const std::vector<std::int32_t>& Numbers() {
    static const std::vector<std::int32_t> numbers = [] {
        const char* items = std::getenv("KVXML_BENCHMARK_ITEMS");
        std::vector<std::int32_t> values(items == nullptr ? 1000000 : std::strtoul(items, nullptr, 10));
        std::uint32_t state = 1;
        for (std::int32_t& value : values) {
            state = state * 1664525u + 1013904223u;
            value = static_cast<std::int32_t>(state) >> (state >> 8 & 31u);
        }
        return values;
    }();
    return numbers;
}

const std::string& Document() {
    static const std::string document = [] {
        std::string text = std::string("<a xmlns='") + kNamespace + "'>\n";
        for (const std::int32_t number : Numbers())
            text += "\t<n>" + std::to_string(number) + "</n>\n";
        return text + "</a>";
    }();
    return document;
}

const CXmlElement* Tree() {
    static CXmlDocument document;
    if (document.GetDocumentElement() == nullptr) document.LoadXml(Document().c_str());
    return document.GetDocumentElement();
}

double ReadLoop() {
    std::vector<std::int32_t> values;
    const double seconds = TimeOf([&] {
        for (const CXmlElement* item = Tree()->GetFirstElement(); item != nullptr;
             item = item->GetNextSiblingElement()) {
            const std::string_view text = item->GetTextView();
            std::int32_t value = 0;
            std::from_chars(text.data(), text.data() + text.size(), value);
            values.push_back(value);
        }
    });
    if (values != Numbers()) std::abort();
    return seconds;
}

double ReadCollection() {
    Opened<Ci4Col> values;
    const double seconds = TimeOf([&] { values.FromXmlElement(Tree()); });
    if (!std::equal(values.begin(), values.end(), Numbers().begin(), Numbers().end())) std::abort();
    return seconds;
}

/// Times `write` on a writer inside a document element.
template <class Write>
double TimeOfWriting(Write write) {
    return TimeOf([&] {
        CTextStream stream(XmlEncoding_UTF8);
        CXmlTextWriter writer(&stream);
        writer.WriteStartElement("a", kNamespace);
        write(writer);
        writer.WriteEndElement();
        writer.EndDocument();
        const std::string text = stream.TakeText();
        benchmark::DoNotOptimize(text.data());
    });
}

double WriteLoop() {
    const std::string name = "n";
    const std::string ns = kNamespace;
    return TimeOfWriting([&](CXmlWriter& writer) {
        for (const std::int32_t number : Numbers()) {
            char text[16];
            const char* const end = std::to_chars(text, text + sizeof text, number).ptr;
            writer.WriteStartElement(name, ns);
            writer.WriteText({text, static_cast<std::size_t>(end - text)}, ItemType_i4, false);
            writer.WriteEndElement();
        }
    });
}

double WriteCollection() {
    static Opened<Ci4Col>& values = *[] {
        auto* collection = new Opened<Ci4Col>();
        for (const std::int32_t number : Numbers())
            collection->Add(number);
        return collection;
    }();
    return TimeOfWriting([](CXmlWriter& writer) { values.Write(writer); });
}

void Register(const char* name, double (*floor)(), double (*subject)()) {
    benchmark::RegisterBenchmark(name,
                                 [=](benchmark::State& state) {
                                     RunPaired(state, Document().size(), floor, subject);
                                     state.counters["target"] = kTarget;
                                 })
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

}  // namespace

int main(int argc, char** argv) {
    mallopt(M_MMAP_THRESHOLD, 1 << 30);
    mallopt(M_TRIM_THRESHOLD, 2147483647);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    Register("Read/Ci4Col", ReadLoop, ReadCollection);
    Register("Write/Ci4Col", WriteLoop, WriteCollection);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
