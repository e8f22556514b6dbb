#ifndef ZEF_CMESH_COUNTTRIANGLES_H
#define ZEF_CMESH_COUNTTRIANGLES_H

#include "cmesh/CMesh.h"
#include "core/CallRecorder.h"

namespace TARN_ZEF
{
// For passes of a report.
[[nodiscard]] inline auto countsOf(const CMesh* pCMesh)
{
    return [pCMesh] {
        return TriangleCount{pCMesh->getNumAliveT(), pCMesh->getAllT().size(), pCMesh->getNumExtractions()};
    };
}

} // namespace TARN_ZEF

#endif
