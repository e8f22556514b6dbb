#ifndef ZEF_CTRIANGLECORNERS_H
#define ZEF_CTRIANGLECORNERS_H

#include "cmesh/CVertex.h"
#include "cmesh/CornerCycle.h"
#include "core/definitions.h"

namespace TARN_ZEF
{
// Result of getHEDirection2: how a triangle runs along a pair of corners.
enum HalfEdgeDirection
{
    HE_NONE = 0,
    HE_SAME = 1,
    HE_OPPOSITE = 2
};

// The three corners of a CTriangle. Their cyclic order is its orientation.
//
// ICI is the index 0, 1 or 2 of a corner in its triangle; edge i lies opposite corner i.
class CTriangleCorners : public CornerCycle
{
public:
    [[nodiscard]] u64 getC0() const noexcept { return aVertex[0]->ccd; }
    [[nodiscard]] u64 getC1() const noexcept { return aVertex[1]->ccd; }
    [[nodiscard]] u64 getC2() const noexcept { return aVertex[2]->ccd; }
    [[nodiscard]] u64 getCorner(int ici) const // outside 0 to 2 is fatal
    {
        ASSEX(ici >= 0 && ici < 3);
        return aVertex[ici]->ccd;
    }
    [[nodiscard]] bool hasCorner(u64 ccd) const noexcept
    {
        return getC0() == ccd || getC1() == ccd || getC2() == ccd;
    }
    [[nodiscard]] int getICI(u64 ccd) const;     // not a corner is fatal
    [[nodiscard]] int getICI(u64 a, u64 b) const // the corner that is neither; none is fatal
    {
        for (int i = 0; i < 3; ++i)
            if (aVertex[i]->ccd != a && aVertex[i]->ccd != b)
                return i;
        ASSEX_TEXT(false, "false");
    }
    [[nodiscard]] u64 getThirdCCD(u64 a, u64 b) const { return aVertex[getICI(a, b)]->ccd; }
    // The other two corners; at the middle corner against the cycle, on purpose: c0: (c1,c2), c1: (c0,c2),
    // c2: (c1,c0). No corner is fatal.
    void getOtherCCDs(u64 ccd, u64& a, u64& b) const;

    void getEdgeCCDs(int ici, u64& a, u64& b) const; // ends of edge ici in the direction of the triangle
    [[nodiscard]] HalfEdgeDirection getHEDirection2(u64 a, u64 b) const noexcept;
    // Whether other, which shares an edge, runs along it in the same direction. No common edge is fatal.
    [[nodiscard]] bool needFlip(const CTriangleCorners* pOther) const;

protected:
    CTriangleCorners(CVertex* pV0, CVertex* pV1, CVertex* pV2) noexcept
        : aVertex{pV0, pV1, pV2}
    {
    }
    ~CTriangleCorners() = default;

    [[nodiscard]] int indexOf(const CVertex* pVertex) const noexcept
    {
        return aVertex[0] == pVertex ? 0 : aVertex[1] == pVertex ? 1 : 2;
    }

    CVertex* aVertex[3];
};

} // namespace TARN_ZEF

#endif
