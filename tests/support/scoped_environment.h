/// An environment variable with another value for a while.
#pragma once

#include <cstdlib>
#include <optional>
#include <string>
#include <utility>

namespace KvXmlLib16 {

class ScopedEnvironment {
public:
    ScopedEnvironment(std::string name, const std::string& value) : m_name(std::move(name)) {
        if (const char* const former = std::getenv(m_name.c_str())) m_former = former;
        setenv(m_name.c_str(), value.c_str(), 1);
    }
    ~ScopedEnvironment() {
        if (m_former) {
            setenv(m_name.c_str(), m_former->c_str(), 1);
        } else {
            unsetenv(m_name.c_str());
        }
    }
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

private:
    std::string m_name;
    std::optional<std::string> m_former;
};

}  // namespace KvXmlLib16
