/// Main of a fuzz target that was built without a fuzzing engine: replays the inputs it is given.
///
///     gpx_roundtrip_fuzz [-option...] FILE-OR-FOLDER...
///
/// Options (they start with "-") are those of fuzzing engines and are passed over. A failing input ends the
/// process; its name is the last one on standard error. Ends with 2 when an input cannot be read.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

namespace fs = std::filesystem;

bool Replay(const fs::path& path) {
    std::fprintf(stderr, "%s\n", path.c_str());
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
    if (!file.is_open() || file.bad()) {
        std::fprintf(stderr, "cannot be read\n");
        return false;
    }
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    std::size_t replayed = 0;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument.rfind('-', 0) == 0) continue;
        std::vector<fs::path> inputs;
        if (fs::is_directory(argument)) {
            for (const fs::directory_entry& entry : fs::recursive_directory_iterator(argument)) {
                if (entry.is_regular_file()) inputs.push_back(entry.path());
            }
        } else {
            inputs.emplace_back(argument);
        }
        for (const fs::path& input : inputs) {
            if (!Replay(input)) return 2;
            ++replayed;
        }
    }
    std::fprintf(stderr, "%zu inputs replayed\n", replayed);
    return 0;
}
