#include "examples/gpx/class_factory.h"

#include "examples/gpx/bounds_type.h"
#include "examples/gpx/copyright_type.h"
#include "examples/gpx/email_type.h"
#include "examples/gpx/extensions_type.h"
#include "examples/gpx/gpx_type.h"
#include "examples/gpx/link_type.h"
#include "examples/gpx/metadata_type.h"
#include "examples/gpx/person_type.h"
#include "examples/gpx/pt_type.h"
#include "examples/gpx/ptseg_type.h"
#include "examples/gpx/rte_type.h"
#include "examples/gpx/trk_type.h"
#include "examples/gpx/trkseg_type.h"
#include "examples/gpx/wpt_type.h"

namespace Gpx {

KvXmlLib16::CSmartPtr<KvXmlLib16::CXmlObjectBase> CClassFactory::Create(int classId,
                                                                        const char* elementName) {
    switch (classId) {
        case ClassId_GpxType:
            return new CGpxType(elementName);
        case ClassId_MetadataType:
            return new CMetadataType(elementName);
        case ClassId_WptType:
            return new CWptType(elementName);
        case ClassId_RteType:
            return new CRteType(elementName);
        case ClassId_TrkType:
            return new CTrkType(elementName);
        case ClassId_TrksegType:
            return new CTrksegType(elementName);
        case ClassId_CopyrightType:
            return new CCopyrightType(elementName);
        case ClassId_LinkType:
            return new CLinkType(elementName);
        case ClassId_EmailType:
            return new CEmailType(elementName);
        case ClassId_PersonType:
            return new CPersonType(elementName);
        case ClassId_PtType:
            return new CPtType(elementName);
        case ClassId_PtsegType:
            return new CPtsegType(elementName);
        case ClassId_BoundsType:
            return new CBoundsType(elementName);
        case ClassId_ExtensionsType:
            return new CExtensionsType(elementName);
        default:
            return nullptr;
    }
}

void CClassFactory::FreeMetaData() {
    CGpxType::FreeMetaData();
    CMetadataType::FreeMetaData();
    CWptType::FreeMetaData();
    CRteType::FreeMetaData();
    CTrkType::FreeMetaData();
    CTrksegType::FreeMetaData();
    CCopyrightType::FreeMetaData();
    CLinkType::FreeMetaData();
    CEmailType::FreeMetaData();
    CPersonType::FreeMetaData();
    CPtType::FreeMetaData();
    CPtsegType::FreeMetaData();
    CBoundsType::FreeMetaData();
    CExtensionsType::FreeMetaData();
}

}  // namespace Gpx
