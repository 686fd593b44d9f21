// What the parser needs to know about encodings that it does not read by itself.
#include <algorithm>
#include <array>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <optional>

#include "kvxml/platform/internal/code_page.h"
#include "kvxml/platform/internal/converter.h"

namespace KvXmlLib16::internal {

namespace {

constexpr int kNoCharacter = -1;
constexpr std::size_t kMaximumSequence = 4;
constexpr std::size_t kMaximumNameLength = 64;
// Descriptions kept; documents in more encodings than this pay for asking the host again.
constexpr std::size_t kMaximumDescriptions = 16;
// Sequences tried before an encoding is given up. Those with sequences of up to three bytes need less than
// half of it; of the longer ones, converting the whole document costs less than finding out.
constexpr int kMaximumTrials = 100000;
constexpr const char* kUtf32 = "UTF-32LE";

// Characters that XML gives no meaning: an encoding may use their places for others (Shift_JIS, ISO 646).
constexpr std::string_view kFreeCharacters = "$@\\^`{}~\x7F";

// One encoding as probed: what single bytes mean, and all two-byte sequences.
struct EncodingDescription {
    std::array<int, 256> map{};
    std::array<std::unique_ptr<std::array<int, 256>>, 256> pairs;  // by first byte; null where it begins none
};

// A name as documents write it; upper case, which is how it is kept. Empty when it is not one: the host's
// converter would take options after it.
std::string NormalizeName(const char* name) {
    std::string result;
    if (name == nullptr || std::strlen(name) > kMaximumNameLength) return result;
    for (; *name != '\0'; ++name) {
        const char c = *name;
        const bool isLower = c >= 'a' && c <= 'z';
        const bool isAllowed = isLower || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
                               c == '_' || c == '.' || c == ':' || c == '+';
        if (!isAllowed) return std::string();
        result.push_back(isLower ? static_cast<char>(c - 'a' + 'A') : c);
    }
    return result;
}

// Finds out by trial how an encoding is built.
class CEncodingProbe {
public:
    explicit CEncodingProbe(const std::string& name) : m_converter(kUtf32, name.c_str()) {}

    // Null when the parser cannot read the encoding.
    std::shared_ptr<const EncodingDescription> Describe() {
        if (!m_converter.IsOpen()) return nullptr;
        auto description = std::make_shared<EncodingDescription>();
        for (std::size_t byte = 0; byte < 256; ++byte) {
            const std::optional<int> entry = DescribeFirst(byte, *description);
            if (!entry || !IsAllowed(byte, *entry)) return nullptr;
            description->map[byte] = *entry;
        }
        return description;
    }

    // The one character that `bytes` mean. Otherwise kNoCharacter, and m_outcome and m_isSequence say why.
    int Decode(std::string_view bytes) {
        ++m_trials;
        m_output.clear();
        m_converter.Reset();
        m_outcome = m_converter.Convert(bytes, m_output);
        m_isSequence = false;
        if (m_outcome != CConverter::Result::Done) return kNoCharacter;
        m_converter.Finish(m_output);
        if (m_output.size() != 4) {
            m_isSequence = !m_output.empty();
            return kNoCharacter;
        }
        const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(m_output[i]); };
        return static_cast<int>(byte(0) | (byte(1) << 8U) | (byte(2) << 16U));
    }

private:
    static bool IsAllowed(std::size_t byte, int entry) {
        if (byte < 0x20 && byte != '\t' && byte != '\n' && byte != '\r') return entry >= kNoCharacter;
        if (byte < 0x80 && kFreeCharacters.find(static_cast<char>(byte)) == std::string_view::npos)
            return entry == static_cast<int>(byte);
        return entry <= 0xFFFF && (byte < 0x80 ? entry >= kNoCharacter : entry < 0 || entry >= 0x80);
    }

    // The entry of the map; nothing when there is no such entry.
    std::optional<int> DescribeFirst(std::size_t first, EncodingDescription& description) {
        const char byte = static_cast<char>(first);
        const int single = Decode(std::string_view(&byte, 1));
        if (m_isSequence) return std::nullopt;
        if (m_outcome != CConverter::Result::Incomplete) return single;
        if (first < 0x80) return std::nullopt;  // a shift sequence

        auto pairs = std::make_unique<std::array<int, 256>>();
        std::size_t length = 0;
        for (std::size_t second = 0; second < 256; ++second) {
            const char bytes[2] = {byte, static_cast<char>(second)};
            const int character = Decode(std::string_view(bytes, 2));
            (*pairs)[second] = character;
            if (m_isSequence) return std::nullopt;
            std::size_t found = 0;
            if (character != kNoCharacter) {
                found = 2;
            } else if (m_outcome == CConverter::Result::Incomplete) {
                found = LengthBehind(std::string(bytes, 2));
            }
            if (found == 0) continue;
            if (length != 0 && length != found) return std::nullopt;
            length = found;
        }
        if (length == 0) return kNoCharacter;
        if (length > kMaximumSequence) return std::nullopt;
        if (length == 2) description.pairs[first] = std::move(pairs);
        return -static_cast<int>(length);
    }

    // Length of the sequences that begin with `prefix`, of which two bytes are known: from the third byte on
    // one sequence stands for all. 0 when there is none.
    std::size_t LengthBehind(const std::string& prefix) {
        if (prefix.size() >= kMaximumSequence || m_trials > kMaximumTrials) return kMaximumSequence + 1;
        for (std::size_t next = 0; next < 256; ++next) {
            const std::string bytes = prefix + static_cast<char>(next);
            if (Decode(bytes) != kNoCharacter) return bytes.size();
            if (m_outcome != CConverter::Result::Incomplete) continue;
            if (const std::size_t length = LengthBehind(bytes)) return length;
        }
        return 0;
    }

    CConverter m_converter;
    CConverter::Result m_outcome = CConverter::Result::Done;
    bool m_isSequence = false;  // the bytes meant more than one character
    int m_trials = 0;
    std::string m_output;
};

// The description of a known encoding; null for others. Results are shared by all threads.
std::shared_ptr<const EncodingDescription> FindDescription(const std::string& name) {
    static std::mutex mutex;
    static std::map<std::string, std::shared_ptr<const EncodingDescription>> known;
    if (name.empty()) return nullptr;
    {
        const std::lock_guard<std::mutex> lock(mutex);
        const auto found = known.find(name);
        if (found != known.end()) return found->second;
    }
    std::shared_ptr<const EncodingDescription> description = CEncodingProbe(name).Describe();
    const std::lock_guard<std::mutex> lock(mutex);
    if (known.size() >= kMaximumDescriptions) known.clear();
    known.emplace(name, description);
    return description;
}

struct Decoder {
    std::shared_ptr<const EncodingDescription> description;
    CEncodingProbe probe;
};

}  // namespace

bool DescribeEncoding(const char* encodingName, int (&map)[256]) {
    const auto description = FindDescription(NormalizeName(encodingName));
    if (description == nullptr) return false;
    std::copy(description->map.begin(), description->map.end(), map);
    return true;
}

int DecodeMultiByte(const char* encodingName, const char* bytes, int length, void*& cache) {
    auto* decoder = static_cast<Decoder*>(cache);
    if (decoder == nullptr) {
        const std::string name = NormalizeName(encodingName);
        auto description = FindDescription(name);
        if (description == nullptr) return kNoCharacter;
        decoder = new Decoder{std::move(description), CEncodingProbe(name)};
        cache = decoder;
    }
    const auto first = static_cast<unsigned char>(bytes[0]);
    if (length < 1 || decoder->description->map[first] != -length) return kNoCharacter;
    if (length == 2) {
        return (*decoder->description->pairs[first])[static_cast<unsigned char>(bytes[1])];
    }
    return decoder->probe.Decode(std::string_view(bytes, static_cast<std::size_t>(length)));
}

void CloseDecoder(void* cache) noexcept {
    delete static_cast<Decoder*>(cache);
}

bool EncodingToUtf8(const char* encodingName, std::string_view text, std::string& utf8) {
    const std::string name = NormalizeName(encodingName);
    if (name.empty()) return false;
    CConverter converter("UTF-8", name.c_str());
    if (!converter.IsOpen()) return false;
    std::string result;
    if (converter.Convert(text, result) != CConverter::Result::Done) return false;
    converter.Finish(result);
    utf8 = std::move(result);
    return true;
}

}  // namespace KvXmlLib16::internal
