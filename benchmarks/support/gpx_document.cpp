#include "benchmarks/support/gpx_document.h"

#include <cstdio>
#include <random>

namespace benchmarks {

namespace {

class Generator {
public:
    Generator(std::uint32_t seed, const std::function<void(std::string_view)>& sink)
        : m_random(seed), m_sink(sink) {}

    void Run(std::size_t bytes) {
        Add("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            "<gpx xmlns=\"http://www.topografix.com/GPX/1/1\" version=\"1.1\" creator=\"kvxml benchmark\">\n"
            "\t<metadata>\n\t\t<name>Generated</name>\n\t\t<time>2024-05-01T06:00:00Z</time>\n\t</"
            "metadata>\n");
        const std::size_t waypoints = bytes / 20000;
        for (std::size_t i = 0; i < waypoints; ++i)
            Waypoint(i);
        std::size_t track = 0;
        while (m_written + m_text.size() < bytes)
            Track(++track, bytes);
        Add("</gpx>\n");
        Flush();
    }

private:
    template <class... Arguments>
    void Format(const char* format, Arguments... arguments) {
        char line[256];
        const int length = std::snprintf(line, sizeof line, format, arguments...);
        Add(std::string_view(line, static_cast<std::size_t>(length)));
    }
    void Add(std::string_view text) {
        m_text += text;
        if (m_text.size() > 1U << 20) Flush();
    }
    void Flush() {
        m_sink(m_text);
        m_written += m_text.size();
        m_text.clear();
    }
    unsigned Below(unsigned limit) { return static_cast<unsigned>(m_random() % limit); }

    void Position(const char* indent, const char* element) {
        m_latitude += static_cast<int>(Below(2001)) - 1000;
        m_longitude += static_cast<int>(Below(2001)) - 1000;
        Format("%s<%s lat=\"46.%07d\" lon=\"8.%07d\">\n", indent, element, m_latitude, m_longitude);
    }

    void Waypoint(std::size_t number) {
        Position("\t", "wpt");
        Format("\t\t<ele>%u.%u</ele>\n", 400 + Below(2000), 1 + Below(9));
        Format("\t\t<name>Waypoint %zu</name>\n", number);
        Add("\t\t<desc>A hut above the valley, open from June to October &amp; at weekends</desc>\n"
            "\t\t<link href=\"https://example.org/huts\">\n\t\t\t<text>Huts</text>\n\t\t</link>\n"
            "\t\t<sym>Lodging</sym>\n\t</wpt>\n");
    }

    void Track(std::size_t number, std::size_t bytes) {
        Format("\t<trk>\n\t\t<name>Track %zu</name>\n", number);
        for (int segment = 0; segment < 3; ++segment) {
            Add("\t\t<trkseg>\n");
            for (int point = 0; point < 400 && m_written + m_text.size() < bytes; ++point)
                Point();
            Add("\t\t</trkseg>\n");
        }
        Add("\t</trk>\n");
    }

    void Point() {
        Position("\t\t\t", "trkpt");
        m_elevation += static_cast<int>(Below(41)) - 20;
        Format("\t\t\t\t<ele>%d.%d</ele>\n", 1500 + m_elevation / 10, 1 + (m_elevation % 9 + 9) % 9);
        m_second += 1 + Below(5);
        Format("\t\t\t\t<time>2024-05-%02uT%02u:%02u:%02uZ</time>\n", 1 + m_second / 86400 % 28,
               m_second / 3600 % 24, m_second / 60 % 60, m_second % 60);
        if (Below(50) == 0) {
            Format("\t\t\t\t<fix>3d</fix>\n\t\t\t\t<sat>%u</sat>\n\t\t\t\t<hdop>%u.%u</hdop>\n", 4 + Below(9),
                   Below(5), 1 + Below(9));
        }
        Add("\t\t\t</trkpt>\n");
    }

    std::mt19937 m_random;
    const std::function<void(std::string_view)>& m_sink;
    std::string m_text;
    std::size_t m_written = 0;
    int m_latitude = 5000000;
    int m_longitude = 5000000;
    int m_elevation = 0;
    unsigned m_second = 0;
};

}  // namespace

void WriteGpxDocument(std::size_t bytes, std::uint32_t seed,
                      const std::function<void(std::string_view)>& sink) {
    Generator(seed, sink).Run(bytes);
}

std::string MakeGpxDocument(std::size_t bytes, std::uint32_t seed) {
    std::string document;
    document.reserve(bytes + 4096);
    WriteGpxDocument(bytes, seed, [&](std::string_view piece) { document += piece; });
    return document;
}

}  // namespace benchmarks
