#include "kvxml/platform/text_settings.h"

#include <atomic>

#include "kvxml/platform/internal/code_page.h"
#include "kvxml/platform/internal/text_settings.h"

namespace KvXmlLib16 {

namespace {

std::atomic<bool> g_asyncFromXmlFile{false};
std::atomic<bool> g_asyncToXmlFile{false};

}  // namespace

void ASCIIOnly(bool value) {
    internal::SetAsciiOnly(value);
}

void SetLocalCharEncoding(unsigned int codePage) {
    internal::SetLocalCodePage(codePage);
}

void AsyncFromXmlFile(bool value) {
    g_asyncFromXmlFile.store(value, std::memory_order_relaxed);
}

void AsyncToXmlFile(bool value) {
    g_asyncToXmlFile.store(value, std::memory_order_relaxed);
}

namespace internal {

bool IsAsyncFromXmlFile() noexcept {
    return g_asyncFromXmlFile.load(std::memory_order_relaxed);
}

bool IsAsyncToXmlFile() noexcept {
    return g_asyncToXmlFile.load(std::memory_order_relaxed);
}

}  // namespace internal

}  // namespace KvXmlLib16
