#include "kvxml/schema/constraints/internal/schema_constraints.h"

namespace KvXmlLib16::internal {

bool IsParticleRestriction(const CParticle*, const CParticle*, const char**) {
    return true;
}

}  // namespace KvXmlLib16::internal
