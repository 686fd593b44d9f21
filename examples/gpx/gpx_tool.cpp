/// Reads a GPX 1.1 document, prints what is in it and writes it back on request.
///
///     gpx-tool walk.gpx -o walk.gpx.gz --gzip
///
/// Ends with 0 on success, 1 when the document or a file is refused, 2 on wrong usage.
#include <CLI/CLI.hpp>
#include <cmath>
#include <cstdint>
#include <iostream>
#include <optional>
#include <string>

#include "examples/gpx/class_factory.h"
#include "examples/gpx/gpx_type.h"
#include "examples/support/document_tool.h"
#include "kvxml/kvxml.h"

namespace {

using namespace KvXmlLib16;

struct Options {
    std::string input;
    std::string output;
    std::string format = "xml";
    std::string encoding = "utf-8";
    bool gzip = false;
    bool compact = false;
    bool lenient = false;
};

// --- what is in a document -----------------------------------------------------------------------------

struct Summary {
    std::int64_t waypoints = 0;
    std::int64_t routes = 0;
    std::int64_t routePoints = 0;
    std::int64_t tracks = 0;
    std::int64_t segments = 0;
    std::int64_t trackPoints = 0;
    std::optional<CDecimal> minLat, minLon, maxLat, maxLon;
    std::optional<CDateTime> first, last;
    double kilometres = 0;
};

template <class T>
void KeepLeast(std::optional<T>& least, const T& value) {
    if (!least || value < *least) least = value;
}

template <class T>
void KeepGreatest(std::optional<T>& greatest, const T& value) {
    if (!greatest || value > *greatest) greatest = value;
}

/// Great-circle distance on a sphere of the mean earth radius.
double Kilometres(const Gpx::CWptType& from, const Gpx::CWptType& to) {
    constexpr double kEarthRadius = 6371.0088;
    constexpr double kRadians = 3.14159265358979323846 / 180;
    const double lat1 = from.GetLat().ToDouble() * kRadians;
    const double lat2 = to.GetLat().ToDouble() * kRadians;
    const double sinLat = std::sin((lat2 - lat1) / 2);
    const double sinLon = std::sin((to.GetLon().ToDouble() - from.GetLon().ToDouble()) * kRadians / 2);
    const double haversine = sinLat * sinLat + std::cos(lat1) * std::cos(lat2) * sinLon * sinLon;
    return 2 * kEarthRadius * std::asin(std::fmin(1, std::sqrt(haversine)));
}

void AddPoint(const Gpx::CWptType& point, Summary& summary) {
    const CDecimal lat = point.GetLat();
    const CDecimal lon = point.GetLon();
    KeepLeast(summary.minLat, lat);
    KeepLeast(summary.minLon, lon);
    KeepGreatest(summary.maxLat, lat);
    KeepGreatest(summary.maxLon, lon);
    if (point.IsValidTime()) {
        KeepLeast(summary.first, point.GetTime());
        KeepGreatest(summary.last, point.GetTime());
    }
}

void AddSegment(Gpx::CTrksegType& segment, Summary& summary) {
    const Gpx::CWptType* previous = nullptr;
    for (const Gpx::CWptType* point : *segment.GetTrkpt()) {
        AddPoint(*point, summary);
        if (previous != nullptr) summary.kilometres += Kilometres(*previous, *point);
        previous = point;
        ++summary.trackPoints;
    }
}

Summary Summarize(Gpx::CGpxType& gpx) {
    Summary summary;
    for (const Gpx::CWptType* point : *gpx.GetWpt()) {
        AddPoint(*point, summary);
        ++summary.waypoints;
    }
    for (Gpx::CRteType* route : *gpx.GetRte()) {
        for (const Gpx::CWptType* point : *route->GetRtept()) {
            AddPoint(*point, summary);
            ++summary.routePoints;
        }
        ++summary.routes;
    }
    for (Gpx::CTrkType* track : *gpx.GetTrk()) {
        for (Gpx::CTrksegType* segment : *track->GetTrkseg()) {
            AddSegment(*segment, summary);
            ++summary.segments;
        }
        ++summary.tracks;
    }
    return summary;
}

void Print(const Gpx::CGpxType& gpx, const Summary& summary) {
    std::cout << "creator:      " << gpx.GetCreator() << '\n'
              << "waypoints:    " << summary.waypoints << '\n'
              << "routes:       " << summary.routes << '\n'
              << "route points: " << summary.routePoints << '\n'
              << "tracks:       " << summary.tracks << '\n'
              << "segments:     " << summary.segments << '\n'
              << "track points: " << summary.trackPoints << '\n';
    if (summary.minLat) {
        std::cout << "latitude:     " << summary.minLat->ToString() << " to " << summary.maxLat->ToString()
                  << '\n'
                  << "longitude:    " << summary.minLon->ToString() << " to " << summary.maxLon->ToString()
                  << '\n';
    }
    if (summary.first) {
        std::cout << "first time:   " << summary.first->ToString() << '\n'
                  << "last time:    " << summary.last->ToString() << '\n';
    }
    std::cout << "length:       " << FormatString("%.3f", summary.kilometres) << " km" << std::endl;
}

// --- reading and writing ---------------------------------------------------------------------------------

CSerializationContext MakeContext(bool lenient) {
    CSerializationContext context;
    context.SetDefaultNamespaceURI(Gpx::kNamespace);
    context.GetJsonContext().SetEscapeStrings(true);
    context.SetIgnoreUnknownElements(lenient);
    context.SetIgnoreUnknownAttributes(lenient);
    context.SetIgnoreInvalidCollectionCounts(lenient);
    context.SetIgnoreMissingChoice(lenient);
    context.SetIgnoreNamespaces(lenient);
    return context;
}

void Write(const Gpx::CGpxType& gpx, const std::string& fileName, const Options& options,
           const CSerializationContext& context) {
    const XmlEncoding encoding = options.encoding == "utf-16" ? XmlEncoding_UTF16 : XmlEncoding_UTF8;
    const CompressionType compression = options.gzip ? CompressionType_GZip : CompressionType_None;
    if (options.format == "json") {
        gpx.ToJsonFile(fileName.c_str(), !options.compact, encoding, EOLType_LF, context, compression);
    } else if (options.format == "fi") {
        gpx.ToFastInfosetFile(fileName.c_str(), FInfoDecl_None, context, compression);
    } else {
        gpx.ToXmlFile(fileName.c_str(), true, !options.compact, encoding, EOLType_LF, context, compression);
    }
}

int Run(const Options& options) {
    const CSerializationContext context = MakeContext(options.lenient);
    const CSmartPtr<Gpx::CGpxType> gpx(new Gpx::CGpxType());
    Summary summary;
    examples::DocumentSteps steps;
    steps.read = [&] {
        examples::ReadDocument(*gpx, options.input, context);
        summary = Summarize(*gpx);
    };
    steps.write = [&](const std::string& fileName) { Write(*gpx, fileName, options, context); };
    steps.print = [&] { Print(*gpx, summary); };
    return examples::RunDocumentTool("gpx-tool", options.input, options.output, steps);
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    CLI::App app(
        "Reads a GPX 1.1 document, prints a summary and writes it back on request.\n"
        "With --lenient, what follows an unknown element is lost unless it repeats the last member.",
        "gpx-tool");
    app.add_option("INPUT", options.input, "GPX file, XML or JSON, plain or compressed with gzip or zlib")
        ->required();
    auto* output = app.add_option("-o,--output", options.output, "Write the document to this file");
    app.add_option("--to", options.format, "Format of the output")
        ->check(CLI::IsMember({"xml", "json", "fi"}))
        ->capture_default_str()
        ->needs(output);
    app.add_flag("--gzip", options.gzip, "Compress the output")->needs(output);
    app.add_option("--encoding", options.encoding, "Encoding of the output")
        ->check(CLI::IsMember({"utf-8", "utf-16"}))
        ->capture_default_str()
        ->needs(output);
    app.add_flag("--compact", options.compact, "Write without line breaks and indentation")->needs(output);
    app.add_flag("--lenient", options.lenient,
                 "Ignore unknown elements and attributes, invalid counts, missing choices and namespaces");
    if (const auto status = examples::ParseArguments(app, argc, argv)) return *status;
    return Run(options);
}
