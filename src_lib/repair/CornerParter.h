#ifndef ZEF_CORNERPARTER_H
#define ZEF_CORNERPARTER_H

#include "Point3.h"
#include "core/definitions.h"

#include <cstddef>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
class Calc;
class CEdge;
class CMesh;
class CTriangle;

// Gives sheets of a surface that touch in a corner, or along edges, corners of their own.
//
// The triangles at a corner fall into fans: one goes on into the next across an edge of two triangles. Across
// an edge of four or more, neighbours in rotation are paired, which must run against each other: of the two
// ways to do so the one that leaves the flatter sheets, or, where that parts nothing at either end, the other
// one. A fan that closes around the corner is a whole neighbourhood of a surface, so it can have a corner of
// its own, whatever else meets there: no triangle goes or comes, no border opens, and orientation stays as it
// is. Fans with a border stay where they are, and so do those at edges where no pairing is known.
//
// A new corner stands beside the old one: both move a bit into their own fans. It has the code of a free cell
// near by, none above if there is one below. A bubble of a few triangles that hangs on nothing else dies.
//
// Ownership:  none; the new bundles are extra ones of the mesh.
// Validity:   the triangles of a fan that gets a new corner are replaced.
// Cost:       that of a walk over all edges to collect corners; then what these corners' triangles do.
class CornerParter
{
public:
    CornerParter(CMesh* pCMesh_, const Calc* pCalc_);
    CornerParter(const CornerParter&) = delete;
    CornerParter& operator=(const CornerParter&) = delete;

    // Notes the ends of all edges that have not two triangles. What is closed or killed there later may leave
    // sheets that touch.
    void addCandidates();
    // Parts the fans at all corners noted. Triangles should agree in orientation. Returns the number of new
    // corners.
    std::size_t run();

private:
    using TrianglePair = std::pair<CTriangle*, CTriangle*>;

    // Triangles around one corner.
    struct Fan
    {
        std::vector<CTriangle*> vT;
        bool bClosed = true;
    };

    // Whether all triangles at a corner follow each other around it across edges of two triangles.
    [[nodiscard]] static bool isOneFan(const std::vector<CTriangle*>& vIncT, u64 ccd);
    std::size_t partAt(u64 ccd, bool bFlattest);
    [[nodiscard]] std::vector<Fan> findFans(const std::vector<CTriangle*>& vIncT, u64 ccd,
                                            bool bFlattest) const;
    // The triangles of an edge of more than two by pairs; empty if no way to pair them is known.
    [[nodiscard]] std::vector<TrianglePair> pairSheets(const CEdge& edge, bool bFlattest) const;
    // False if there is no free cell.
    [[nodiscard]] bool giveOwnCorner(const Fan& fan, u64 ccd);
    [[nodiscard]] bool findFreeCell(u64 ccd, u64& freeCCD) const;
    // What hangs together at the corner, if it is closed and has very few triangles.
    void killBubbleAt(u64 ccd);
    void moveIntoFan(u64 ccd);
    [[nodiscard]] bool canMove(u64 ccd, const Point3& pos) const;

    CMesh* pCMesh;
    const Calc* pCalc;
    std::vector<u64> vCandidates;
};

} // namespace TARN_ZEF

#endif
