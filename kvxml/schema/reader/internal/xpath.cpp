// The restricted XPath of selectors and fields (XML Schema Part 1, 3.11.6).
#include "kvxml/schema/reader/internal/component_builder.h"
#include "kvxml/xml/internal/xml_name_check.h"

namespace KvXmlLib16::internal {

namespace {

using Path = CIdentityConstraintDefinition::Path;
using Step = CIdentityConstraintDefinition::Step;

/// Takes the text apart; names are resolved by `resolve(prefix, uri)`.
template <class Resolve>
class Parser {
public:
    Parser(std::string_view text, bool isField, Resolve resolve)
        : m_rest(text), m_isField(isField), m_resolve(resolve) {}

    bool Run(std::vector<Path>& paths) {
        do {
            if (!ParsePath(paths.emplace_back())) return false;
        } while (Take("|"));
        SkipBlanks();
        return m_rest.empty();
    }

private:
    void SkipBlanks() {
        const std::size_t at = m_rest.find_first_not_of(" \t\r\n");
        m_rest.remove_prefix(at == std::string_view::npos ? m_rest.size() : at);
    }
    bool Take(std::string_view token) {
        SkipBlanks();
        if (m_rest.substr(0, token.size()) != token) return false;
        m_rest.remove_prefix(token.size());
        return true;
    }
    /// `child` and `::`, between which blanks may stand; nothing is taken when they are not both there.
    bool TakeAxis(std::string_view name) {
        const std::string_view before = m_rest;
        if (Take(name) && Take("::")) return true;
        m_rest = before;
        return false;
    }

    bool ParsePath(Path& path) {
        const std::string_view before = m_rest;
        if (Take(".") && Take("//")) {
            path.fromDescendants = true;
        } else {
            m_rest = before;
        }
        do {
            if (!path.steps.empty() && path.steps.back().axis == Step::Axis::Attribute) return false;
            if (!ParseStep(path)) return false;
        } while (TakeSlash());
        // `.` changes nothing where another step tells where to go.
        std::vector<Step> steps;
        for (const Step& step : path.steps) {
            if (step.axis != Step::Axis::Self) steps.push_back(step);
        }
        path.steps = std::move(steps);
        return true;
    }
    bool TakeSlash() {
        SkipBlanks();
        return m_rest.substr(0, 2) != "//" && Take("/");
    }
    bool ParseStep(Path& path) {
        Step& step = path.steps.emplace_back();
        SkipBlanks();
        if (m_isField && (Take("@") || TakeAxis("attribute"))) {
            step.axis = Step::Axis::Attribute;
            return ParseNameTest(step);
        }
        if (TakeAxis("child")) return ParseNameTest(step);
        if (Take(".")) {
            step.axis = Step::Axis::Self;
            return true;
        }
        return ParseNameTest(step);
    }
    bool ParseNameTest(Step& step) {
        SkipBlanks();
        if (Take("*")) {
            step.anyNamespace = step.anyName = true;
            return true;
        }
        std::string_view name = TakeName();
        if (name.empty()) return false;
        std::string_view prefix;
        if (m_rest.substr(0, 1) == ":" && m_rest.substr(0, 2) != "::") {
            prefix = name;
            m_rest.remove_prefix(1);
            if (m_rest.substr(0, 1) == "*") {
                m_rest.remove_prefix(1);
                step.anyName = true;
            } else {
                name = TakeName();
                if (name.empty()) return false;
            }
        }
        if (!step.anyName) step.name.localName = name;
        return prefix.empty() || m_resolve(prefix, step.name.namespaceUri);
    }
    /// A name without colon.
    std::string_view TakeName() {
        const std::size_t end = std::min(m_rest.find_first_of(" \t\r\n/|@*:()[]"), m_rest.size());
        const std::string_view name = m_rest.substr(0, end);
        if (!IsXmlName(name, false)) return {};
        m_rest.remove_prefix(end);
        return name;
    }

    std::string_view m_rest;
    const bool m_isField;
    Resolve m_resolve;
};

}  // namespace

bool CComponentBuilder::ReadXPath(At at, bool isField, CIdentityConstraintDefinition::XPath& path) {
    path.text = at.node->Get("xpath");
    path.place = Place(at);
    const auto resolve = [&](std::string_view prefix, std::string_view& uri) {
        for (const auto& [known, value] : *at.node->scope) {
            if (known == prefix) {
                uri = value;
                return true;
            }
        }
        return false;
    };
    Parser parser(path.text, isField, resolve);
    if (parser.Run(path.paths)) return true;
    Fault(at,
          "[" + std::string(path.text) + "] is no " + (isField ? "field" : "selector") +
              " in the XPath that identity constraints may use.",
          isField ? "c-fields-xpaths" : "c-selector-xpath");
    path.paths.clear();
    return false;
}

}  // namespace KvXmlLib16::internal
