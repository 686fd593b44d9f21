/// Failures as text, for comparison.
#pragma once

#include <string>

#include "kvxml/base/exceptions.h"

namespace KvXmlLib16 {

/// The full message of what `action` throws; "(no error)" when it throws nothing. What is not an `Exception`
/// passes on.
template <class Exception = CKvException, class Action>
std::string ErrorOf(Action action) {
    try {
        action();
    } catch (const Exception& e) {
        return e.GetFullMessage();
    }
    return "(no error)";
}

}  // namespace KvXmlLib16
