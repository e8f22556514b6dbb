#ifndef ZEF_FLATTRIANGLES_H
#define ZEF_FLATTRIANGLES_H

#include "core/definitions.h"

#include <vector>

namespace TARN_ZEF
{
class CMesh;
class CTriangle;

// Splits away or moves all geometrically degenerate triangles. One that this makes stays for the next run.
//
// Errors:    a flat triangle that can neither be split away nor moved throws ZefBugException.
// Cost:      a look at all triangles, on the workers of the pool.
class FlatTriangles
{
public:
    explicit FlatTriangles(CMesh* pCMesh_);

    void run();
    // Splits the triangle away over its edge opposite corner ici, or moves one of its corners, that one
    // first. False if neither can be done.
    [[nodiscard]] bool splitOrMove(CTriangle* pCT, int ici);

private:
    void killFlat(CTriangle* pCT);
    [[nodiscard]] bool moveOneCorner(const CTriangle& ct, int ici);

    CMesh* pCMesh;
    std::vector<u64> vMovedCCD; // in the present run
};

} // namespace TARN_ZEF

#endif
