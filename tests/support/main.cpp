// The main of the tests. With KVXML_TEST_LOCALE=NAME in the environment all of them run under that locale,
// which must not change any result.
#include <gtest/gtest.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <locale>
#include <stdexcept>

namespace {

bool SetLocale(const char* name) {
    if (std::setlocale(LC_ALL, name) == nullptr) return false;
    try {
        std::locale::global(std::locale(name));
    } catch (const std::runtime_error&) {
        return false;
    }
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    const char* const name = std::getenv("KVXML_TEST_LOCALE");
    if (name != nullptr && *name != '\0' && !SetLocale(name)) {
        std::fprintf(stderr, "The locale %s of KVXML_TEST_LOCALE is not installed.\n", name);
        return 1;
    }
    return RUN_ALL_TESTS();
}
