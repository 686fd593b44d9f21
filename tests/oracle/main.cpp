/// Compares the verdicts of kvxml with those of Xerces-C and libxml2 on random schemas and documents.
///
///     schema_oracle [--first SEED] [--schemas COUNT] [--documents COUNT-PER-SCHEMA] [--keep FOLDER]
///
/// Ends with 1 when another judge differs from kvxml and no known weakness of it explains that. With --keep, each such
/// case is left in the folder: the schema, and the document if it is about one.
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <string>
#include <string_view>

#include "tests/oracle/judges.h"
#include "tests/oracle/known_differences.h"
#include "tests/oracle/random_document.h"
#include "tests/oracle/random_schema.h"

namespace oracle {
namespace {

struct Options {
    std::uint64_t first = 1;
    std::uint64_t schemas = 200;
    std::uint64_t documents = 40;
    std::string keep;
};

class CComparison {
public:
    explicit CComparison(Options options)
        : m_options(std::move(options)), m_xerces(MakeXercesJudge()), m_libxml(MakeLibxmlJudge()) {}

    bool Run() {
        for (std::uint64_t seed = m_options.first; seed < m_options.first + m_options.schemas; ++seed)
            CompareSeed(seed);
        std::printf("schemas: %zu, %zu valid; documents: %zu, %zu valid; verdicts of others that differ: %zu, "
                    "of those unexplained: %zu\n",
                    m_schemas.count, m_schemas.valid, m_documents.count, m_documents.valid, m_known + m_unknown,
                    m_unknown);
        for (const auto& [rule, count] : m_byRule)
            std::printf("%7zu %s\n", count, rule.c_str());
        return m_unknown == 0;
    }

private:
    struct Count {
        std::size_t count = 0;
        std::size_t valid = 0;
        void Add(bool isValid) { ++count, valid += isValid ? 1 : 0; }
    };

    void CompareSeed(std::uint64_t seed) {
        CRandom random(seed);
        const std::string schema = RandomSchema(random);
        const CVerdict own = m_own.Load(schema);
        m_schemas.Add(own.isValid);
        bool takePart[2] = {};
        IJudge* const others[] = {m_xerces.get(), m_libxml.get()};
        for (std::size_t i = 0; i < 2; ++i) {
            const CVerdict other = others[i]->Load(schema);
            takePart[i] = own.isValid && other.isValid;
            Compare({others[i]->Name(), seed, 0, schema, {}, own, other});
        }
        if (!own.isValid) return;
        for (std::uint64_t number = 1; number <= m_options.documents; ++number) {
            const std::string document = RandomDocument(*m_own.GetSchema(), random, number % 4);
            const CVerdict verdict = m_own.Judge(document);
            m_documents.Add(verdict.isValid);
            for (std::size_t i = 0; i < 2; ++i) {
                if (takePart[i])
                    Compare({others[i]->Name(), seed, number, schema, document, verdict, others[i]->Judge(document)});
            }
        }
    }

    void Compare(const CDifference& difference) {
        if (difference.own.isValid == difference.other.isValid) return;
        if (const char* const rule = FindKnown(difference)) {
            ++m_known;
            ++m_byRule[std::string(difference.judge) + ": " + rule];
            return;
        }
        ++m_unknown;
        const auto text = [](const CVerdict& verdict) {
            return verdict.isValid ? std::string("valid") : "invalid: " + verdict.reason;
        };
        const std::string name = std::to_string(difference.seed) + "-" + std::to_string(difference.document);
        std::printf("%s\n    kvxml: %s\n    %s: %s\n", name.c_str(), text(difference.own).c_str(), difference.judge,
                    text(difference.other).c_str());
        if (m_options.keep.empty()) return;
        std::ofstream(m_options.keep + "/" + name + ".xsd") << difference.schemaText;
        if (difference.document != 0)
            std::ofstream(m_options.keep + "/" + name + ".xml") << difference.documentText;
    }

    Options m_options;
    COwnJudge m_own;
    std::unique_ptr<IJudge> m_xerces;
    std::unique_ptr<IJudge> m_libxml;
    Count m_schemas;
    Count m_documents;
    std::size_t m_known = 0;
    std::size_t m_unknown = 0;
    std::map<std::string, std::size_t> m_byRule;
};

}  // namespace
}  // namespace oracle

int main(int argc, char** argv) {
    oracle::Options options;
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string_view name = argv[i];
        const char* const value = argv[i + 1];
        if (name == "--first") {
            options.first = std::strtoull(value, nullptr, 10);
        } else if (name == "--schemas") {
            options.schemas = std::strtoull(value, nullptr, 10);
        } else if (name == "--documents") {
            options.documents = std::strtoull(value, nullptr, 10);
        } else if (name == "--keep") {
            options.keep = value;
        } else {
            std::fprintf(stderr, "unknown option %s\n", argv[i]);
            return 2;
        }
    }
    return oracle::CComparison(options).Run() ? 0 : 1;
}
