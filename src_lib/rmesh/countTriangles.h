#ifndef ZEF_RMESH_COUNTTRIANGLES_H
#define ZEF_RMESH_COUNTTRIANGLES_H

#include "core/CallRecorder.h"
#include "rmesh/RMesh.h"

namespace TARN_ZEF
{
// For passes of a report.
[[nodiscard]] inline auto countsOf(const RMesh* pRMesh)
{
    return [pRMesh] { return TriangleCount{pRMesh->getNumT(), pRMesh->getAllT().size(), 0}; };
}

} // namespace TARN_ZEF

#endif
