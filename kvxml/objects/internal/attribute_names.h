/// The names of attributes that an element has.
#pragma once

#include <set>
#include <string>
#include <string_view>
#include <utility>

#include "kvxml/base/internal/namespace_uris.h"
#include "kvxml/xml/xml_writer.h"

namespace KvXmlLib16::internal {

/// Names with their namespaces.
class CAttributeNames {
public:
    void Add(std::string_view name, std::string_view ns) { m_names.emplace(name, ns); }
    bool Has(std::string_view name, std::string_view ns) const {
        return m_names.count({std::string(name), std::string(ns)}) != 0;
    }

private:
    std::set<std::pair<std::string, std::string>> m_names;
};

/// Writes nothing, but notes the attributes.
class CAttributeNameWriter final : public CXmlWriter {
public:
    const CAttributeNames& Names() const noexcept { return m_names; }

    void WriteComment(std::string_view) override {}
    void WriteRaw(std::string_view) override {}
    void WriteRawAfterSpace(std::string_view) override {}
    void WriteStartElement(std::string_view, std::string_view) override {}
    void WriteText(std::string_view, ItemType, bool) override {}
    void WriteEndElement() override {}
    void WriteAttribute(std::string_view name, std::string_view ns, std::string_view, ItemType) override {
        m_names.Add(name, ns);
    }
    void WriteTypeAttribute(std::string_view, std::string_view, ItemType) override {
        m_names.Add("type", kInstanceNamespace);
    }
    void WriteNilAttribute() override { m_names.Add("nil", kInstanceNamespace); }

private:
    CAttributeNames m_names;
};

}  // namespace KvXmlLib16::internal
