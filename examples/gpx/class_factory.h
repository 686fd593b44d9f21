/// Class factory of the GPX 1.1 classes, and the namespace they all belong to.
///
/// Every class of this folder follows the one pattern of generated code: see docs/generated-code.md.
#pragma once

#include "kvxml/base/smart_ptr.h"
#include "kvxml/objects/class_factory_base.h"
#include "kvxml/objects/xml_object_base.h"

namespace Gpx {

constexpr const char* kNamespace = "http://www.topografix.com/GPX/1/1";

class CClassFactory : public KvXmlLib16::CClassfactoryBase {
public:
    enum ClassId {
        ClassId_GpxType,
        ClassId_MetadataType,
        ClassId_WptType,
        ClassId_RteType,
        ClassId_TrkType,
        ClassId_TrksegType,
        ClassId_CopyrightType,
        ClassId_LinkType,
        ClassId_EmailType,
        ClassId_PersonType,
        ClassId_PtType,
        ClassId_PtsegType,
        ClassId_BoundsType,
        ClassId_ExtensionsType,
    };

    /// A new object of the class with the given identifier, under the given element name; null for an unknown
    /// identifier.
    static KvXmlLib16::CSmartPtr<KvXmlLib16::CXmlObjectBase> Create(int classId, const char* elementName);
    /// Frees the metadata tables of all classes.
    static void FreeMetaData();
};

}  // namespace Gpx
