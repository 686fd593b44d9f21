/// What the targets that load schemas and judge documents share.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "fuzz/roundtrip.h"
#include "kvxml/schema/schema.h"
#include "kvxml/xml/xml_reader.h"

namespace fuzzing {

/// A fault must say what is wrong and where.
inline void CheckFaults(const KvXmlLib16::CFaultList& faults) {
    for (const KvXmlLib16::CFault& fault : faults.GetFaults()) {
        if (fault.message.empty() || fault.line == 0 || fault.column == 0)
            Fail("a fault without a message or a place", ToText(fault), fault.path);
    }
    if (faults.IsEmpty() != faults.GetFaults().empty()) Fail("faults were lost", {}, {});
}

/// The schema, which may open no other file; null when it is not valid.
inline std::shared_ptr<const KvXmlLib16::CSchemaSet> LoadSchema(std::string_view text) {
    KvXmlLib16::CSchemaLoadOptions options;
    options.followLocations = false;
    KvXmlLib16::CSchemaLoader loader(options);
    loader.AddText(std::string(text), "fuzz.xsd");
    KvXmlLib16::CFaultList faults;
    auto schema = loader.Load(faults);
    CheckFaults(faults);
    if ((schema == nullptr) == faults.IsEmpty()) Fail("a schema with faults, or none without", {}, {});
    return schema;
}

/// Judges the document twice: the verdict depends neither on the limit of faults nor on what was judged
/// before.
inline void JudgeDocument(const std::shared_ptr<const KvXmlLib16::CSchemaSet>& schema,
                          std::string_view text) {
    using namespace KvXmlLib16;
    CSchemaValidator validator(schema);
    const CValidationReport report = validator.ValidateBuffer(text.data(), text.size(), "fuzz.xml");
    CheckFaults(report);
    const CValidationReport again = validator.ValidateBuffer(text.data(), text.size(), "fuzz.xml");
    if (report.GetCount() != again.GetCount()) Fail("another verdict the second time", {}, {});
    CValidationOptions options;
    options.maxFaults = 1;
    const CValidationReport first =
        CSchemaValidator(schema, options).ValidateBuffer(text.data(), text.size(), "fuzz.xml");
    if (first.IsValid() != report.IsValid()) Fail("another verdict with one fault at most", {}, {});
    if (!first.IsValid() && ToText(first.GetFaults()[0]) != ToText(report.GetFaults()[0]))
        Fail("another first fault", ToText(first.GetFaults()[0]), ToText(report.GetFaults()[0]));
}

}  // namespace fuzzing
