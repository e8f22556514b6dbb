#ifndef ZEF_SURFACEPIECES_H
#define ZEF_SURFACEPIECES_H

#include "cmesh/CMesh.h"
#include "cmesh/TriangleUnion.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
// The pieces of a mesh that hang together over edges of degree 2.
//
// Invariant:  holds for the mesh as long as isOf() and no triangle is flipped.
struct SurfacePieces
{
    SurfacePieces(const CMesh& mesh, TriangleUnion turns_, std::vector<std::uint32_t> vTwisted_)
        : turns(std::move(turns_))
        , vTwisted(std::move(vTwisted_))
        , numT(mesh.getAllT().size())
        , numAliveT(mesh.getNumAliveT())
    {
    }
    // Whether no triangle has come or gone since.
    [[nodiscard]] bool isOf(const CMesh& mesh) const
    {
        return mesh.getAllT().size() == numT && mesh.getNumAliveT() == numAliveT;
    }

    TriangleUnion turns;
    std::vector<std::uint32_t> vTwisted; // triangles of all pieces that no orientation fits, dead ones too

private:
    std::size_t numT;
    std::size_t numAliveT;
};

} // namespace TARN_ZEF

#endif
