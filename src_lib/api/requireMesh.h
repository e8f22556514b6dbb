#ifndef ZEF_REQUIREMESH_H
#define ZEF_REQUIREMESH_H

#include "Mesh.h"
#include "core/refuse.h"

#include <memory>

namespace TARN_ZEF
{
// Refuses an empty pointer.
inline void requireMesh(const std::shared_ptr<Mesh>& pMesh,
                        const SourceLocation& where = SourceLocation::current())
{
    if (pMesh == nullptr)
        refuse<ZefBadArgument>(
            "pMesh!=0",
            "the mesh pointer is empty; a reconstruction that finds nothing returns such a "
            "pointer: test it before you pass it on",
            where);
}

} // namespace TARN_ZEF

#endif
