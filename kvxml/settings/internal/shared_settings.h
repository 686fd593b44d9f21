/// What copies of a serialization context share.
#pragma once

#include <memory>
#include <mutex>
#include <utility>

#include "kvxml/settings/serialization_context.h"

namespace KvXmlLib16 {

// Created on demand. The lock guards the pointers, not what they point to.
struct CSerializationContext::Shared {
    struct Pointers {
        std::shared_ptr<CFastInfosetContext> fastInfoset;
        std::shared_ptr<CJsonContext> json;
        std::shared_ptr<CAttributeCol> rootAttributes;  // a counted reference; only its maker knows the class
    };

    Pointers Get() const {
        const std::lock_guard<std::mutex> lock(mutex);
        return pointers;
    }

    // What was held before is released outside of the lock.
    void Set(Pointers newPointers) {
        const std::lock_guard<std::mutex> lock(mutex);
        std::swap(pointers, newPointers);
    }

    mutable std::mutex mutex;
    Pointers pointers;
};

}  // namespace KvXmlLib16
