/// `kvxml validate`: judges documents by a schema, or a schema by itself.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "kvxml/base/exceptions.h"
#include "kvxml/base/internal/namespace_uris.h"
#include "kvxml/schema/schema.h"
#include "kvxml/xml/xml_attribute.h"
#include "kvxml/xml/xml_document.h"
#include "kvxml/xml/xml_element.h"
#include "kvxml/xml/xml_reader.h"
#include "tools/kvxml/command.h"
#include "tools/kvxml/formats.h"
#include "tools/kvxml/input.h"
#include "tools/kvxml/limits.h"
#include "tools/kvxml/messages.h"
#include "tools/kvxml/progress.h"
#include "tools/kvxml/schema_options.h"
#include "tools/kvxml/usage.h"

namespace tool {

using namespace KvXmlLib16;

namespace {

struct Options {
    std::vector<std::string> schemas;
    CSchemaLoadOptions load;
    std::vector<std::string> documents;
    std::string from;
    std::size_t maxErrors = CFaultList::kDefaultLimit;
    bool quiet = false;
    unsigned jobs = 1;
    CSerializationContext context;
};

void AddOptions(CLI::App& parser, Options& options) {
    parser.add_option("--schema", options.schemas, "Schema document; may be given several times")
        ->allow_extra_args(false);
    AddSchemaOptions(parser, options.load);
    parser.add_option("--from", options.from, "Format of the documents (default: by their names, else xml)")
        ->check([](const std::string& name) {
            return FindFormat(name) == nullptr ? "no format: " + name : std::string();
        });
    parser.add_option("--max-errors", options.maxErrors, "Faults told of each document; 0 for all")
        ->capture_default_str();
    parser.add_flag("--quiet,-q", options.quiet, "Tell verdicts only, no faults");
    parser.add_option("--jobs,-j", options.jobs, "Documents judged at a time")
        ->check(CLI::Range(1, 256))
        ->capture_default_str();
    AddLimitOptions(parser, options.context);
    parser.add_option(
        "DOCUMENT", options.documents,
        "Documents, plain or compressed, and folders of .xml files; - for standard input. None: the "
        "schema itself is judged");
}

/// What is told about one fault, in two lines where the path in the document is known.
void Tell(std::string& text, const CFault& fault) {
    text += Printable(ToText(fault)) + "\n";
    if (!fault.path.empty()) text += "    " + Printable(fault.path) + "\n";
}

void TellAll(std::string& text, const CFaultList& faults) {
    for (const CFault& fault : faults.GetFaults())
        Tell(text, fault);
    if (faults.GetCount() > faults.GetFaults().size()) text += "(no further faults are told)\n";
}

/// A document with what is found of it.
struct Result {
    bool isValid = false;
    bool isFailure = false;  // it could not be read
    std::string faults;
};

/// Judges documents in one thread.
class CJudge {
public:
    CJudge(const Options& options, std::shared_ptr<const CSchemaSet> schema)
        : m_options(options), m_schema(std::move(schema)) {
        m_validation.maxFaults = options.maxErrors;
        m_validation.context = &options.context;
        if (m_schema != nullptr) m_validator = std::make_unique<CSchemaValidator>(m_schema, m_validation);
    }

    Result Judge(const std::string& name) {
        const Format& format = m_options.from.empty() ? FormatOf(name) : *FindFormat(m_options.from);
        if (std::string_view(format.option) != "xml") return JudgeTree(name, format);
        Result result;
        try {
            JudgeReadable(name, result);
        } catch (const std::exception& e) {
            const auto* const own = dynamic_cast<const CKvException*>(&e);
            Fail(result, name, own != nullptr ? own->GetMessage() : e.what());
        }
        return result;
    }

private:
    /// A document of a format that is not read as a stream of events. What is no such document has one fault.
    Result JudgeTree(const std::string& name, const Format& format) {
        Result result;
        try {
            CSerializationContext context(m_options.context);
            if (format.prepare != nullptr) format.prepare(context);
            CXmlDocument document(context);
            try {
                format.read(name, document);
            } catch (const CKvException& e) {
                result.faults = Printable(InputName(name) + ": " + e.GetMessage()) + "\n";
                return result;
            }
            const auto schema = SchemaOf(name, HintsOf(*document.GetDocumentElement()), result);
            if (schema == nullptr) return result;
            CValidationOptions options = m_validation;
            // JSON is mostly written without namespaces.
            options.ignoreNamespaces = std::string_view(format.option) == "json" &&
                                       document.GetDocumentElement()->GetNamespaceURI().empty();
            const CValidationReport report =
                CSchemaValidator(schema, options).Validate(document, InputName(name));
            result.isValid = report.IsValid();
            TellAll(result.faults, report);
        } catch (const std::exception& e) {
            Fail(result, name, e.what());
        }
        return result;
    }

    static void Fail(Result& result, const std::string& name, const std::string& message) {
        result.isFailure = true;
        result.faults = "kvxml: " + Printable(InputName(name) + ": " + message) + "\n";
    }

    void JudgeReadable(const std::string& name, Result& result) {
        std::vector<unsigned char> data;
        const bool isInput = IsStandardInput(name);
        if (!isInput) CheckFile(name);
        // Without a schema, documents are read twice, and what is no file can be read but once.
        const bool isHeld = isInput || (m_schema == nullptr && !IsRegularFile(name));
        if (isHeld) data = isInput ? ReadStandardInput() : ReadAll(name);
        CXmlReader reader(m_options.context);
        const auto open = [&] {
            if (isHeld) {
                reader.OpenBuffer(data.data(), data.size(), InputName(name));
            } else {
                reader.OpenFile(name.c_str());
            }
        };
        open();
        CSchemaValidator* const validator = Choose(reader, result);
        if (validator == nullptr) return;
        // A document that begins anew goes the quick way; a pipe goes on from its document element.
        if (isHeld || IsRegularFile(name)) open();
        const CValidationReport report = validator->Validate(reader);
        result.isValid = report.IsValid();
        TellAll(result.faults, report);
    }

    using Hint = std::pair<std::string, std::string>;  // namespace and location
    using Hints = std::vector<Hint>;

    /// The validator of the schemas that were given, and of those that the document itself names: of all its
    /// elements when none was given, else of its document element, for namespaces that are not known yet.
    /// With schemas the reader is left at the document element; null when there is none, which has been told.
    CSchemaValidator* Choose(CXmlReader& reader, Result& result) {
        Hints hints;
        try {
            while (reader.Read()) {
                if (reader.GetEvent() != XmlEvent::StartElement) continue;
                AddHints(reader, hints);
                if (m_schema != nullptr) break;
            }
        } catch (const CKvException& e) {
            CFault fault;
            fault.file = reader.GetFileName();
            fault.line = reader.GetLine();
            fault.column = reader.GetColumn();
            fault.message = e.GetMessage();
            Tell(result.faults, fault);
            return nullptr;
        }
        const std::string& fileName = reader.GetFileName();
        const std::shared_ptr<const CSchemaSet> schema = SchemaOf(fileName, std::move(hints), result);
        if (schema == nullptr || schema == m_schema) return m_validator.get();
        m_hinted = std::make_unique<CSchemaValidator>(schema, m_validation);
        return m_hinted.get();
    }

    /// The schema that was given, with what the hints name beyond it; null, with its faults, when there is
    /// none.
    std::shared_ptr<const CSchemaSet> SchemaOf(const std::string& fileName, Hints hints, Result& result) {
        if (m_schema != nullptr) {
            const auto isKnown = [this](const Hint& hint) { return m_schema->HasNamespace(hint.first); };
            hints.erase(std::remove_if(hints.begin(), hints.end(), isKnown), hints.end());
            if (hints.empty()) return m_schema;
        }
        std::shared_ptr<const CSchemaSet>& known = m_byHints[{fileName, hints}];
        if (known == nullptr) {
            CSchemaLoader loader(m_options.load);
            for (const std::string& file : m_options.schemas)
                loader.AddFile(file);
            for (const auto& [uri, location] : hints)
                loader.AddHint(uri, location, fileName);
            CFaultList faults(m_options.maxErrors);
            CFaultList remarks(m_options.maxErrors);
            known = loader.Load(faults, &remarks);
            TellAll(result.faults, remarks);
            if (known == nullptr) {
                if (m_schema == nullptr) TellAll(result.faults, faults);
                return m_schema;
            }
        }
        return known;
    }

    static void AddHints(const CXmlReader& reader, Hints& hints) {
        constexpr std::string_view kInstance = internal::kInstanceNamespace;
        if (const auto* attribute = reader.FindAttribute(kInstance, "noNamespaceSchemaLocation"))
            AddLocations(attribute->value, hints);
        if (const auto* attribute = reader.FindAttribute(kInstance, "schemaLocation"))
            AddPairs(attribute->value, hints);
    }

    /// Of the document element alone.
    static Hints HintsOf(const CXmlElement& element) {
        Hints hints;
        for (const CXmlAttribute* attribute : element.GetAttributes()) {
            if (attribute->GetNamespaceURI() != internal::kInstanceNamespace) continue;
            if (attribute->GetLocalName() == "noNamespaceSchemaLocation")
                AddLocations(attribute->GetValueView(), hints);
            if (attribute->GetLocalName() == "schemaLocation") AddPairs(attribute->GetValueView(), hints);
        }
        return hints;
    }

    static void AddLocations(std::string_view value, Hints& hints) {
        for (const std::string& location : Words(value))
            Add(hints, {}, location);
    }

    static void AddPairs(std::string_view value, Hints& hints) {
        const std::vector<std::string> words = Words(value);
        for (std::size_t i = 0; i + 1 < words.size(); i += 2)
            Add(hints, words[i], words[i + 1]);
    }

    static void Add(Hints& hints, std::string uri, std::string location) {
        Hint hint(std::move(uri), std::move(location));
        if (std::find(hints.begin(), hints.end(), hint) == hints.end()) hints.push_back(std::move(hint));
    }

    static std::vector<std::string> Words(std::string_view text) {
        std::vector<std::string> words;
        while (!text.empty()) {
            const std::size_t start = std::min(text.find_first_not_of(" \t\r\n"), text.size());
            text.remove_prefix(start);
            const std::size_t end = std::min(text.find_first_of(" \t\r\n"), text.size());
            if (end != 0) words.emplace_back(text.substr(0, end));
            text.remove_prefix(end);
        }
        return words;
    }

    const Options& m_options;
    std::shared_ptr<const CSchemaSet> m_schema;
    CValidationOptions m_validation;
    std::unique_ptr<CSchemaValidator> m_validator;
    std::unique_ptr<CSchemaValidator> m_hinted;
    std::map<std::pair<std::string, Hints>, std::shared_ptr<const CSchemaSet>> m_byHints;
};

/// Folders are replaced by the documents in them, in the order of their names. False when a folder has none,
/// or cannot be read, which is told.
bool Expand(const std::vector<std::string>& names, std::vector<std::string>& files) {
    namespace fs = std::filesystem;
    bool isComplete = true;
    for (const std::string& name : names) {
        std::error_code error;
        if (IsStandardInput(name) || !fs::is_directory(name, error)) {
            files.push_back(name);
            continue;
        }
        std::vector<std::string> found;
        fs::recursive_directory_iterator at(name, error);
        for (; !error && at != fs::recursive_directory_iterator(); at.increment(error)) {
            std::error_code unknown;
            if (at->is_regular_file(unknown) && at->path().extension() == ".xml")
                found.push_back(at->path().string());
        }
        if (error || found.empty()) {
            Say(name,
                error ? "the folder cannot be read: " + error.message() : "no .xml file is in the folder");
            isComplete = false;
        }
        std::sort(found.begin(), found.end());
        files.insert(files.end(), found.begin(), found.end());
    }
    return isComplete;
}

/// Tells the results in the order of the documents.
class CTeller {
public:
    CTeller(const Options& options, int status) : m_options(options), m_status(status) {}

    void Tell(const std::string& name, const Result& result) {
        Progress().Clear();
        if ((!m_options.quiet || result.isFailure) && !result.faults.empty())
            std::fputs(result.faults.c_str(), stderr);
        if (!result.isFailure) {
            std::printf("%s: %s\n", Printable(InputName(name)).c_str(), result.isValid ? "valid" : "invalid");
            std::fflush(stdout);
        }
        if (!result.isValid) m_status = kRefused;
        Progress().Advance(1);
    }
    int Status() const noexcept { return m_status; }

private:
    const Options& m_options;
    int m_status;
};

int JudgeAll(const Options& options, const std::shared_ptr<const CSchemaSet>& schema) {
    std::vector<std::string> names;
    CTeller teller(options, Expand(options.documents, names) ? kDone : kRefused);
    Progress().Start("Validating", "documents", 1);
    const std::size_t jobs = std::min<std::size_t>(options.jobs, names.size());
    if (jobs <= 1) {
        CJudge judge(options, schema);
        for (const std::string& name : names)
            teller.Tell(name, judge.Judge(name));
        return teller.Status();
    }
    std::vector<std::optional<Result>> results(names.size());
    std::mutex mutex;
    std::condition_variable isDone;
    std::atomic<std::size_t> next{0};
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < jobs; ++i) {
        threads.emplace_back([&] {
            CJudge judge(options, schema);
            for (std::size_t at = next++; at < names.size(); at = next++) {
                Result result = judge.Judge(names[at]);
                const std::lock_guard<std::mutex> lock(mutex);
                results[at] = std::move(result);
                isDone.notify_one();
            }
        });
    }
    for (std::size_t i = 0; i < names.size(); ++i) {
        std::unique_lock<std::mutex> lock(mutex);
        isDone.wait(lock, [&] { return results[i].has_value(); });
        const Result result = std::move(*results[i]);
        results[i].emplace();
        lock.unlock();
        teller.Tell(names[i], result);
    }
    for (std::thread& thread : threads)
        thread.join();
    return teller.Status();
}

}  // namespace

int RunValidate(int argc, char** argv) {
    Options options;
    CLI::App parser("Judge documents by a schema, or a schema by itself", "kvxml validate");
    AddOptions(parser, options);
    if (const std::optional<int> status = Parse(parser, argc, argv)) return *status;
    options.load.maxFaults = options.maxErrors;
    if (options.schemas.empty() && options.documents.empty())
        return RefuseUsage("a schema or a document is required", "kvxml validate --help");

    std::shared_ptr<const CSchemaSet> schema;
    if (!options.schemas.empty()) {
        try {
            CSchemaLoader loader(options.load);
            for (const std::string& file : options.schemas)
                loader.AddFile(file);
            CFaultList faults(options.maxErrors);
            CFaultList remarks(options.maxErrors);
            schema = loader.Load(faults, &remarks);
            std::string text;
            if (schema == nullptr) {
                TellAll(text, faults);
            } else if (!options.quiet) {
                TellAll(text, remarks);
            }
            std::fputs(text.c_str(), stderr);
            if (schema == nullptr) return kRefused;
        } catch (...) {
            SayException();
            return kRefused;
        }
    }
    if (options.documents.empty()) return kDone;
    const int status = JudgeAll(options, schema);
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return status;
    Say("the verdicts cannot be written");
    return kRefused;
}

}  // namespace tool
