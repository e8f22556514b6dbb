#ifndef ZEF_LATTICESIMPLIFIER_H
#define ZEF_LATTICESIMPLIFIER_H

#include "Point3.h"
#include "core/definitions.h"

#include <map>

namespace TARN_ZEF
{
class CEdge;
class CMesh;

// What a collapse tries.
enum SimplifyMode
{
    SM_MID_THEN_ENDS = 0,
    SM_ENDS = 1,
    SM_MID = 2
};

// Collapses of short edges off the borders, where the surface around them is flat to 5 degrees.
class LatticeSimplifier
{
public:
    // Shortest edge first, the smallest key of equal ones by time of entry: squared length to edge.
    using EdgeQueue = std::multimap<double, CEdge*>;

    explicit LatticeSimplifier(CMesh* pCMesh_);

    // Collapses the edges shorter than maxLen, shortest first. Returns whether another pass pays. Two passes
    // over the twins that a collapse may leave kill all of these.
    bool run(int passNo, double maxLen, SimplifyMode mode);
    // Collapses the edge to its midpoint if no triangle around would leave its plane by more than 5 degrees
    // were its corner at mid. The edges at the corner that stays enter mm if they are shorter than allowed.
    [[nodiscard]] bool killMid(CEdge* pCE, const Point3& mid, double sqMaxLen, EdgeQueue& mm);
    // The same with end 0 or 1 dying in favour of the other one, which stays where it is.
    [[nodiscard]] bool killSingle(CEdge* pCE, int end, double sqMaxLen, EdgeQueue& mm);

private:
    // Whether the triangles at killCCD that do not hold trgCCD keep their planes if it moves to trgPos.
    [[nodiscard]] bool staysFlat(u64 killCCD, u64 trgCCD, const Point3& trgPos) const;
    [[nodiscard]] bool tryCollapse(CEdge* pCE, SimplifyMode mode, double sqMaxLen, EdgeQueue& mm);
    void enqueueEdgesAt(u64 ccd, double sqMaxLen, EdgeQueue& mm) const;

    CMesh* pCMesh;
};

} // namespace TARN_ZEF

#endif
