#ifndef ZEF_CONEDGE_H
#define ZEF_CONEDGE_H

#include "cmesh/CEdge.h"
#include "cmesh/CTriangle.h"

#include <array>
#include <concepts>
#include <set>

namespace TARN_ZEF
{
class CMesh;

// An edge of a closed patch, rated for the flood that cuts the patch into two sides: the flatter the
// connection across the edge, the smaller its value.
//
// value is in degrees. Degree 2: the angle between the two normals. Higher degree with exactly two members of
// the patch: 180.0 less that angle, since the sheets of a thin volume lie back to back. More members: 181.0,
// after all others. 90.0 wherever a normal is missing.
//
// Ownership:  none; a value that borrows the edge and its triangles.
// Cost:       two normals at most; no allocation.
struct ConEdge
{
    // isMember  tells whether a triangle belongs to the patch; asked only at degrees above 2, where at least
    //           two triangles must belong. A degree below 2 is fatal.
    template <std::predicate<CTriangle*> IsMember>
    ConEdge(const CMesh* pCMesh, CEdge* pCE_, const IsMember& isMember)
        : pCE(pCE_)
        , deg(pCE_->getDegree())
        , bManifold(deg == 2)
    {
        for (CTriangle* pCT : pCE->vCT)
            if (bManifold || isMember(pCT))
                addMember(pCT);
        rate(pCMesh);
    }

    // By value alone, a NaN after all numbers.
    [[nodiscard]] bool operator<(const ConEdge& other) const noexcept;

    CEdge* pCE;
    int deg;
    double value = 0.0;
    bool bManifold;                       // degree 2, or more than two members
    std::array<CTriangle*, 2> vMemT = {}; // the first two members
    int numMemT = 0;                      // all members; the flood crosses only where it is 2

private:
    void addMember(CTriangle* pCT) noexcept;
    void rate(const CMesh* pCMesh);
};

} // namespace TARN_ZEF

#endif
