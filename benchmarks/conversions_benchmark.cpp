/// Conversions between values and text, each beside a floor that does the same work on the same texts.
///
/// "x_floor" is the ratio to the floor measured in turns with it, "target" what it should not exceed and "ns"
/// the time of one conversion. Values are taken in turns from a table that is made from a seed. Reading:
/// results are summed up; writing: everything is appended to one string that is used again, by the floor from
/// a buffer on the stack. On a busy machine the smallest of several ratios counts:
///
///     conversions_benchmark --benchmark_repetitions=5 | grep _min
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <functional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "benchmarks/support/paired_timing.h"
#include "kvxml/kvxml.h"

namespace {

using benchmarks::TimeOf;
using namespace KvXmlLib16;
using C = CConversions;

constexpr auto kCollapse = CWhitespaceUtils::WhitespaceRule_Collapse;
constexpr std::size_t kValues = 4096;

std::mt19937_64& Random() {
    static std::mt19937_64 random(20240601);
    return random;
}

std::int64_t RandomNumber(std::int64_t least, std::int64_t most) {
    return std::uniform_int_distribution<std::int64_t>(least, most)(Random());
}

template <class Make>
auto Table(Make make) {
    std::vector<decltype(make())> table(kValues);
    std::generate(table.begin(), table.end(), make);
    return table;
}

template <class... Arguments>
std::string Print(const char* format, Arguments... arguments) {
    char buffer[64];
    return {buffer, static_cast<std::size_t>(std::snprintf(buffer, sizeof buffer, format, arguments...))};
}

/// A pair of timed actions over `items` values; no target: 0.
struct Pair {
    std::string name;
    double target;
    std::size_t items;
    std::function<void()> floor;
    std::function<void()> subject;
};

void Register(Pair pair) {
    const std::string name = pair.name;
    benchmark::RegisterBenchmark(name.c_str(),
                                 [pair = std::move(pair)](benchmark::State& state) {
                                     double total = 0;
                                     benchmarks::RunPaired(
                                         state, 0, [&] { return TimeOf(pair.floor); },
                                         [&] {
                                             const double seconds = TimeOf(pair.subject);
                                             total += seconds;
                                             return seconds;
                                         });
                                     // One run more than iterations: the first warms up.
                                     state.counters["ns"] = total * 1e9 / static_cast<double>(pair.items) /
                                                            static_cast<double>(state.iterations() + 1);
                                     if (pair.target > 0) state.counters["target"] = pair.target;
                                 })
        ->UseManualTime()
        ->Unit(benchmark::kMicrosecond)
        ->MinTime(0.2)
        ->ComputeStatistics("min", [](const std::vector<double>& values) {
            return *std::min_element(values.begin(), values.end());
        });
}

/// Reads every text by both.
template <class Floor, class Subject>
void RegisterReading(const char* name, double target, std::vector<std::string> floorTexts,
                     std::vector<std::string> texts, Floor floor, Subject subject) {
    const auto all = [](auto table, auto read) {
        return [table = std::move(table), read] {
            decltype(read(table[0])) sum{};
            for (const std::string& text : table)
                sum += read(text);
            benchmark::DoNotOptimize(sum);
        };
    };
    Register({std::string("Read/") + name, target, texts.size(), all(std::move(floorTexts), floor),
              all(std::move(texts), subject)});
}

/// Appends every value by both.
template <class FloorValue, class Value, class Floor, class Subject>
void RegisterWriting(const char* name, double target, std::vector<FloorValue> floorValues,
                     std::vector<Value> values, Floor floor, Subject subject) {
    const auto all = [](auto table, auto append) {
        return [table = std::move(table), append, out = std::string()]() mutable {
            out.clear();
            for (const auto& value : table)
                append(out, value);
            benchmark::DoNotOptimize(out.data());
            benchmark::ClobberMemory();
        };
    };
    Register({std::string("Write/") + name, target, values.size(), all(std::move(floorValues), floor),
              all(std::move(values), subject)});
}

template <class T>
T FromChars(const std::string& text) {
    T value{};
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

template <class T, class... Format>
void AppendToChars(std::string& out, T value, Format... format) {
    char buffer[48];
    out.append(buffer, std::to_chars(buffer, buffer + sizeof buffer, value, format...).ptr);
}

template <class Value, class Read>
std::vector<Value> ReadAll(const std::vector<std::string>& texts, Read read) {
    std::vector<Value> values;
    for (const std::string& text : texts)
        values.push_back(read(text));
    return values;
}

// --- numbers ----------------------------------------------------------------------------------------------

void RegisterI4() {
    // Up to nine digits, the short ones as frequent as the long.
    const auto values = Table([] {
        std::int64_t limit = 10;
        for (std::int64_t digits = RandomNumber(1, 9); digits > 1; --digits)
            limit *= 10;
        return static_cast<std::int32_t>(RandomNumber(-limit / 4, limit - 1));
    });
    std::vector<std::string> texts;
    for (const std::int32_t value : values)
        texts.push_back(std::to_string(value));
    RegisterReading("i4", 1.5, texts, texts, FromChars<std::int32_t>,
                    [](const std::string& text) { return C::i4FromString(text, kCollapse); });
    RegisterWriting("i4", 1.5, values, values, AppendToChars<std::int32_t>,
                    [](std::string& out, std::int32_t value) { C::AppendI4(out, value); });
}

void RegisterR8(const char* name, const std::vector<std::string>& texts) {
    RegisterReading(name, 1.5, texts, texts, FromChars<double>,
                    [](const std::string& text) { return C::r8FromString(text, kCollapse); });
    const auto values = ReadAll<double>(texts, FromChars<double>);
    RegisterWriting(
        name, 1.5, values, values,
        [](std::string& out, double value) { AppendToChars(out, value, std::chars_format::general, 16); },
        [](std::string& out, double value) { C::AppendR8(out, value); });
}

void RegisterDecimal() {
    // The floor reads and writes the same digits without the point.
    std::vector<std::string> digits;
    std::vector<std::string> texts;
    for (std::size_t i = 0; i < kValues; ++i) {
        std::string text = std::to_string(RandomNumber(1, 9));
        const std::int64_t count = RandomNumber(2, 18);
        while (static_cast<std::int64_t>(text.size()) < count)
            text += static_cast<char>('0' + RandomNumber(0, 9));
        if (RandomNumber(0, 3) == 0) text.insert(0, "-");
        digits.push_back(text);
        const auto fraction = static_cast<std::size_t>(RandomNumber(0, std::min<std::int64_t>(count - 1, 6)));
        if (fraction > 0) text.insert(text.size() - fraction, ".");
        texts.push_back(text);
    }
    const auto readI8 = [](const std::string& text) { return C::i8FromString(text, kCollapse); };
    const auto readDecimal = [](const std::string& text) { return C::decimalFromString(text, kCollapse); };
    RegisterReading("decimal", 3, digits, texts, readI8, [readDecimal](const std::string& text) {
        return readDecimal(text).IsSmall() ? 1 : 0;  // a sum of decimals would measure addition
    });
    RegisterWriting(
        "decimal", 3, ReadAll<std::int64_t>(digits, readI8), ReadAll<CDecimal>(texts, readDecimal),
        [](std::string& out, std::int64_t value) { C::AppendI8(out, value); },
        [](std::string& out, const CDecimal& value) { C::AppendDecimal(out, value); });
}

// --- dates, words and text --------------------------------------------------------------------------------

void RegisterDateTime() {
    const auto texts = Table([] {
        return Print("%04d-%02d-%02dT%02d:%02d:%02dZ", static_cast<int>(RandomNumber(1950, 2050)),
                     static_cast<int>(RandomNumber(1, 12)), static_cast<int>(RandomNumber(1, 28)),
                     static_cast<int>(RandomNumber(0, 23)), static_cast<int>(RandomNumber(0, 59)),
                     static_cast<int>(RandomNumber(0, 59)));
    });
    const auto readTime = [](const std::string& text) {
        std::tm time{};
        strptime(text.c_str(), "%Y-%m-%dT%H:%M:%SZ", &time);
        return time;
    };
    const auto readDateTime = [](const std::string& text) { return C::datetimeFromString(text, kCollapse); };
    RegisterReading(
        "dateTime", 0.3, texts, texts,
        [readTime](const std::string& text) {
            const std::tm time = readTime(text);
            benchmark::DoNotOptimize(time.tm_year);
            return time.tm_sec;
        },
        [readDateTime](const std::string& text) {
            const CDateTime value = readDateTime(text);
            const CDateTime* const address = &value;
            benchmark::DoNotOptimize(address);
            return value.IsUTC() ? 1 : 0;
        });
    RegisterWriting(
        "dateTime", 0.3, ReadAll<std::tm>(texts, readTime), ReadAll<CDateTime>(texts, readDateTime),
        [](std::string& out, const std::tm& t) {
            char buffer[80];
            const int length =
                std::snprintf(buffer, sizeof buffer, "%04d-%02d-%02dT%02d:%02d:%02dZ", t.tm_year + 1900,
                              t.tm_mon + 1, t.tm_mday, t.tm_hour, t.tm_min, t.tm_sec);
            out.append(buffer, static_cast<std::size_t>(length));
        },
        [](std::string& out, const CDateTime& value) { C::AppendDateTime(out, value); });
}

void RegisterBoolean() {
    // The floor knows the words only, in lower case.
    const auto texts = Table([] { return std::string(RandomNumber(0, 1) == 0 ? "false" : "true"); });
    const auto isTrue = [](const std::string& text) {
        if (text == "true") return 1;
        if (text != "false") std::abort();
        return 0;
    };
    RegisterReading("boolean", 0, texts, texts, isTrue,
                    [](const std::string& text) { return C::booleanFromString(text, kCollapse) ? 1 : 0; });
    const auto values = ReadAll<char>(texts, isTrue);
    RegisterWriting(
        "boolean", 0, values, values,
        [](std::string& out, char value) { out.append(value != 0 ? "true" : "false"); },
        [](std::string& out, char value) { C::AppendBoolean(out, value != 0); });
}

void RegisterString(const char* name, const char* front, const char* between) {
    // One to twenty words. The floor copies the text.
    const auto texts = Table([=] {
        std::string text = front;
        for (std::int64_t words = RandomNumber(1, 20); words > 0; --words) {
            text.append(static_cast<std::size_t>(RandomNumber(2, 10)), 'w');
            if (words > 1) text += between;
        }
        return text;
    });
    RegisterReading(
        name, 0, texts, texts, [](const std::string& text) { return std::string(text).size(); },
        [](const std::string& text) { return C::stringFromString(text, kCollapse).size(); });
}

// --- base64 -----------------------------------------------------------------------------------------------

void RegisterBase64(const char* name, std::size_t length, std::size_t repeat) {
    // The floor copies the decoded bytes: reading into new memory, as the result is.
    std::string bytes(length, '\0');
    for (char& c : bytes)
        c = static_cast<char>(RandomNumber(0, 255));
    const CBinaryData data{std::string_view(bytes)};
    const std::vector<std::string> originals(repeat, bytes);
    const std::vector<std::string> texts(repeat, C::base64BinaryToString(data));
    RegisterReading(
        name, 10, originals, texts,
        [](const std::string& original) {
            unsigned char* const copy = CBinaryData::AllocateData(original.size());
            std::memcpy(copy, original.data(), original.size());
            benchmark::DoNotOptimize(copy);
            benchmark::ClobberMemory();
            CBinaryData::FreeData(copy);
            return original.size();
        },
        [](const std::string& text) {
            const CBinaryData value = C::base64BinaryFromString(text, kCollapse);
            benchmark::DoNotOptimize(value.GetData());
            return value.GetLength();
        });
    RegisterWriting(
        name, 10, originals, std::vector<CBinaryData>(repeat, data),
        [](std::string& out, const std::string& original) { out.append(original); },
        [](std::string& out, const CBinaryData& value) { C::AppendBase64Binary(out, value); });
}

}  // namespace

int main(int argc, char** argv) {
    mallopt(M_MMAP_THRESHOLD, 1 << 30);
    mallopt(M_TRIM_THRESHOLD, 2147483647);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    RegisterI4();
    RegisterR8("r8 short", Table([] {
                   const auto fraction = static_cast<int>(RandomNumber(1, 6));
                   return Print("%.*f", fraction,
                                static_cast<double>(RandomNumber(-180000000, 999999999)) / 1e6);
               }));
    RegisterR8("r8 full", Table([] {
                   const double value = static_cast<double>(Random()()) * 0x1p-64;
                   return Print(RandomNumber(0, 1) == 0 ? "%.16g" : "%.17g",
                                value * (RandomNumber(0, 1) == 0 ? 1.0 : 1e6));
               }));
    RegisterDecimal();
    RegisterDateTime();
    RegisterBoolean();
    RegisterString("string, nothing to collapse", "", " ");
    RegisterString("string, much to collapse", "\n    ", "\n  ");
    RegisterBase64("base64 1 KB", 1024, 64);
    RegisterBase64("base64 20 MB", 20 * 1000 * 1000, 1);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
