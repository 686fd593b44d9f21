/// Where writing failed, put together while the exception passes up through the objects.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace KvXmlLib16::internal {

struct CFailedPath {
    /// What an element or attribute was written from.
    struct Source {
        const void* object = nullptr;  // the object, or the one whose property or item it is
        std::int64_t part = -1;        // index of the property or item
        bool operator==(const Source&) const = default;
    };
    struct Step {
        std::string name;  // of an element, or of an attribute with '@' in front
        Source source;
        std::size_t position = 0;  // among siblings of that name, from 1; 0 where there are no others
    };
    /// Finds the position of a step among its siblings, which are passed to Visit in their order.
    struct Place {
        const Step& step;
        std::size_t count = 0;
        std::size_t position = 0;

        void Visit(std::string_view name, Source source) {
            if (name != step.name) return;
            ++count;
            if (position == 0 && source == step.source) position = count;
        }
        std::size_t Result() const noexcept { return count > 1 ? position : 0; }
    };

    std::vector<Step> steps;  // innermost first

    /// The path from the document element, "/library/book[2]/price", which is then forgotten. Names are
    /// local.
    std::string Take() {
        std::string path;
        for (auto step = steps.rbegin(); step != steps.rend(); ++step) {
            path.append(1, '/') += step->name;
            if (step->position != 0) path.append(1, '[').append(std::to_string(step->position)) += ']';
        }
        steps.clear();
        return path;
    }
};

}  // namespace KvXmlLib16::internal
