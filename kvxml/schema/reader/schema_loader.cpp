#include "kvxml/schema/reader/schema_loader.h"

#include <utility>

#include "kvxml/schema/constraints/internal/schema_constraints.h"
#include "kvxml/schema/reader/internal/component_builder.h"
#include "kvxml/schema/reader/internal/location_resolver.h"
#include "kvxml/schema/reader/internal/schema_sources.h"

namespace KvXmlLib16 {

namespace {

std::string FirstText(const CFaultList& faults) {
    return faults.GetFaults().empty() ? std::string("The schema is invalid.")
                                      : ToText(faults.GetFaults().front());
}

}  // namespace

CKvSchemaException::CKvSchemaException(CFaultList faults)
    : CKvException(FirstText(faults)), m_faults(std::move(faults)) {}

CKvSchemaException::~CKvSchemaException() = default;

struct CSchemaLoader::Impl {
    CSchemaLoadOptions options;
    std::vector<internal::CSchemaRoot> roots;
};

CSchemaLoader::CSchemaLoader(CSchemaLoadOptions options) : m_impl(std::make_unique<Impl>()) {
    m_impl->options = std::move(options);
}

CSchemaLoader::~CSchemaLoader() = default;

void CSchemaLoader::AddFile(std::string fileName) {
    m_impl->roots.emplace_back().file = std::move(fileName);
}

void CSchemaLoader::AddText(std::string xml, std::string baseName) {
    internal::CSchemaRoot& root = m_impl->roots.emplace_back();
    root.file = std::move(baseName);
    root.text = std::move(xml);
    root.isText = true;
}

void CSchemaLoader::AddHint(std::string namespaceUri, std::string location, std::string baseFile) {
    internal::CSchemaRoot& root = m_impl->roots.emplace_back();
    root.file = std::move(location);
    root.hintNamespace = std::move(namespaceUri);
    root.baseFile = std::move(baseFile);
    root.isHint = true;
}

std::shared_ptr<const CSchemaSet> CSchemaLoader::Load() {
    CFaultList faults(m_impl->options.maxFaults);
    auto set = Load(faults);
    if (set == nullptr) throw CKvSchemaException(std::move(faults));
    return set;
}

std::shared_ptr<const CSchemaSet> CSchemaLoader::Load(CFaultList& faults, CFaultList* remarks) {
    const std::vector<internal::CSchemaRoot> roots = std::exchange(m_impl->roots, {});
    const std::size_t faultsBefore = faults.GetCount();
    auto store = std::make_unique<internal::CSchemaStore>();
    const internal::CLocationResolver resolver(m_impl->options);
    internal::CSchemaSources sources(*store, resolver, faults, remarks);
    for (const internal::CSchemaRoot& root : roots)
        sources.Add(root);
    // What is badly structured is not looked at further: most of its faults would be told twice.
    if (faults.GetCount() != faultsBefore) return nullptr;
    internal::CComponentBuilder(*store, faults).Build(sources.GetSources());
    if (faults.GetCount() == faultsBefore && m_impl->options.fullChecking)
        internal::CheckSchemaConstraints(*store, faults);
    if (faults.GetCount() != faultsBefore) return nullptr;
    return internal::CSchemaStore::Finish(std::move(store));
}

}  // namespace KvXmlLib16
