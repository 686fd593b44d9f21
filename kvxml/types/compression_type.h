/// The compressions that output can be given.
#pragma once

#include <cstdint>

namespace KvXmlLib16 {

enum CompressionType : std::int32_t {
    CompressionType_None = 0,
    CompressionType_GZip = 1,
    CompressionType_ZLib = 2,
};

}  // namespace KvXmlLib16
