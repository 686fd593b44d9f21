/// Switches of file access as the entry points read them.
#pragma once

namespace KvXmlLib16::internal {

/// What `AsyncFromXmlFile` and `AsyncToXmlFile` were set to last. The switches of text conversion are in
/// kvxml/platform/internal/code_page.h.
bool IsAsyncFromXmlFile() noexcept;
bool IsAsyncToXmlFile() noexcept;

}  // namespace KvXmlLib16::internal
