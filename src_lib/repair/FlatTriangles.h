#ifndef ZEF_FLATTRIANGLES_H
#define ZEF_FLATTRIANGLES_H

#include <vector>

namespace TARN_ZEF
{
class CMesh;
class CTriangle;
struct RepairState;

// Splits away or moves all geometrically degenerate triangles. One that this makes stays for the next run.
//
// After a renewed extraction a run looks only at what is new or was moved: between the two, nobody but the
// passes of the same state and the averaging of extra bundles may move a corner.
//
// Errors:    a flat triangle that can neither be split away nor moved throws ZefBugException.
// Cost:      a look at all triangles, on the workers of the pool, if there is nothing to go on from.
class FlatTriangles
{
public:
    explicit FlatTriangles(RepairState& state_);

    void run();
    // Splits the triangle away over its edge opposite corner ici, or moves one of its corners, that one
    // first. False if neither can be done.
    [[nodiscard]] bool splitOrMove(CTriangle* pCT, int ici);

private:
    [[nodiscard]] std::vector<CTriangle*> findFlat() const;
    void killFlat(CTriangle* pCT);
    [[nodiscard]] bool moveOneCorner(const CTriangle& ct, int ici);

    RepairState& state;
    CMesh* pCMesh;
};

} // namespace TARN_ZEF

#endif
