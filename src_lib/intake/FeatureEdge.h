#ifndef ZEF_FEATUREEDGE_H
#define ZEF_FEATUREEDGE_H

#include "Point3.h"

#include <cstddef>
#include <utility>

namespace TARN_ZEF
{
class FeatureChain;

// A sharp or open edge of the input surface, with its place in the chain that it was strung on.
//
// Ownership:  refers to the caller's points; the edges stand in FeatureChainMgr.
struct FeatureEdge
{
    Point3* pSrc = nullptr;
    Point3* pTrg = nullptr;
    FeatureChain* pChain = nullptr; // null while free
    double maxDih = 0.0;            // largest dihedral angle in degrees, or BORDER_DIH
    Vector3 dir;                    // from pSrc to pTrg, length 1
    FeatureEdge* pPrev = nullptr;   // neighbours in the chain
    FeatureEdge* pNext = nullptr;
    std::size_t srcStar = 0; // where the edges at pSrc and at pTrg begin in the manager's stars
    std::size_t trgStar = 0;

    // maxDih of an edge with one triangle.
    static constexpr double BORDER_DIH = 9999.0;

    void turnAround() noexcept;
};

inline void FeatureEdge::turnAround() noexcept
{
    std::swap(pSrc, pTrg);
    std::swap(srcStar, trgStar);
    dir.mul(-1.0);
}

} // namespace TARN_ZEF

#endif
