/// Compares the verdicts of kvxml with those of Xerces-C and libxml2 on random schemas and documents.
///
///     schema_oracle [--first SEED] [--schemas COUNT] [--documents COUNT-PER-SCHEMA] [--keep FOLDER]
///
/// Ends with 1 when another judge differs from kvxml and no known weakness of it explains that. With --keep,
/// each such case is left in the folder: the schema, and the document if it is about one. Each schema is
/// compared with each judge in a process of its own, since the others crash or do not come to an end on some.
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
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

/// Kept in memory that the processes share.
struct Counts {
    std::size_t schemas, validSchemas, documents, validDocuments, unexplained, gaveUp;
    std::size_t byRule[kMostRules];
    bool isOtherBusy;  ///< not kvxml, should the process end now
};

constexpr unsigned kMostSeconds = 5;

class CComparison {
public:
    CComparison(const Options& options, Counts& counts) : m_options(options), m_counts(counts) {}

    /// In a process of its own; the documents are counted by one of the judges only.
    void Run(std::uint64_t seed, IJudge& other, bool isCounting) {
        CRandom random(seed);
        const std::string schema = RandomSchema(random);
        COwnJudge own;
        const CVerdict verdict = own.Load(schema);
        if (isCounting) ++m_counts.schemas, m_counts.validSchemas += verdict.isValid;
        const CVerdict others = Ask([&] { return other.Load(schema); });
        Compare({other.Name(), seed, 0, schema, {}, verdict, others});
        if (!verdict.isValid || !others.isValid) return;
        for (std::uint64_t number = 1; number <= m_options.documents; ++number) {
            const std::string document = RandomDocument(*own.GetSchema(), random, number % 4);
            const CVerdict mine = own.Judge(document);
            ++m_counts.documents, m_counts.validDocuments += mine.isValid;
            const CVerdict its = Ask([&] { return other.Judge(document); });
            Compare({other.Name(), seed, number, schema, document, mine, its});
        }
    }

private:
    template <class Action>
    CVerdict Ask(Action action) {
        m_counts.isOtherBusy = true;
        CVerdict verdict = action();
        m_counts.isOtherBusy = false;
        return verdict;
    }

    void Compare(const CDifference& difference) {
        if (difference.own.isValid == difference.other.isValid) return;
        if (const int rule = FindRule(difference); rule >= 0) {
            ++m_counts.byRule[rule];
            return;
        }
        ++m_counts.unexplained;
        const auto text = [](const CVerdict& verdict) {
            return verdict.isValid ? std::string("valid") : "invalid: " + verdict.reason;
        };
        const std::string name = std::to_string(difference.seed) + "-" + std::to_string(difference.document);
        std::printf("%s\n    kvxml: %s\n    %s: %s\n", name.c_str(), text(difference.own).c_str(),
                    difference.judge, text(difference.other).c_str());
        if (m_options.keep.empty()) return;
        std::ofstream(m_options.keep + "/" + name + ".xsd") << difference.schemaText;
        if (difference.document != 0)
            std::ofstream(m_options.keep + "/" + name + ".xml") << difference.documentText;
    }

    const Options& m_options;
    Counts& m_counts;
};

void RunApart(const Options& options, Counts& counts, std::uint64_t seed, std::size_t judge) {
    std::fflush(stdout);
    counts.isOtherBusy = false;
    const pid_t child = fork();
    if (child == 0) {
        alarm(kMostSeconds);
        const auto other = judge == 0 ? MakeXercesJudge() : MakeLibxmlJudge();
        CComparison(options, counts).Run(seed, *other, judge == 0);
        std::fflush(stdout);
        _exit(0);
    }
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child) std::abort();
    if (status == 0) return;
    if (counts.isOtherBusy) {
        ++counts.gaveUp;
        return;
    }
    ++counts.unexplained;
    std::printf("%llu: kvxml ended with status %d\n", static_cast<unsigned long long>(seed), status);
}

bool RunAll(const Options& options) {
    void* const shared =
        mmap(nullptr, sizeof(Counts), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (shared == MAP_FAILED) std::abort();
    Counts& counts = *new (shared) Counts();
    for (std::uint64_t seed = options.first; seed < options.first + options.schemas; ++seed) {
        RunApart(options, counts, seed, 0);
        RunApart(options, counts, seed, 1);
    }
    std::printf(
        "schemas: %zu, %zu valid; verdicts on documents compared: %zu, %zu valid; "
        "another crashed or did not end: %zu; differences without explanation: %zu\n",
        counts.schemas, counts.validSchemas, counts.documents, counts.validDocuments, counts.gaveUp,
        counts.unexplained);
    for (std::size_t i = 0; TextOfRule(i) != nullptr; ++i)
        std::printf("%7zu %s\n", counts.byRule[i], TextOfRule(i));
    return counts.unexplained == 0 && counts.documents > 0;
}

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
    return oracle::RunAll(options) ? 0 : 1;
}
