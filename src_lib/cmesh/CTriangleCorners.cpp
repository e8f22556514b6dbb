#include "cmesh/CTriangleCorners.h"

namespace TARN_ZEF
{
int CTriangleCorners::getICI(u64 ccd) const
{
    for (int i = 0; i < 3; ++i)
        if (aVertex[i]->ccd == ccd)
            return i;
    ASSEX_TEXT(false, "false");
}

void CTriangleCorners::getOtherCCDs(u64 ccd, u64& a, u64& b) const
{
    static constexpr int OTHERS[3][2] = {{1, 2}, {0, 2}, {1, 0}};
    const int ici = getICI(ccd);
    a = aVertex[OTHERS[ici][0]]->ccd;
    b = aVertex[OTHERS[ici][1]]->ccd;
}

void CTriangleCorners::getEdgeCCDs(int ici, u64& a, u64& b) const
{
    ASSEX(ici >= 0 && ici < 3);
    a = aVertex[getNext(ici)]->ccd;
    b = aVertex[getPrev(ici)]->ccd;
}

HalfEdgeDirection CTriangleCorners::getHEDirection2(u64 a, u64 b) const noexcept
{
    for (int i = 0; i < 3; ++i)
    {
        const u64 from = aVertex[i]->ccd;
        const u64 to = aVertex[getNext(i)]->ccd;
        if (from == a && to == b)
            return HE_SAME;
        if (from == b && to == a)
            return HE_OPPOSITE;
    }
    return HE_NONE;
}

bool CTriangleCorners::needFlip(const CTriangleCorners* pOther) const
{
    for (int i = 0; i < 3; ++i)
    {
        const HalfEdgeDirection hed = pOther->getHEDirection2(aVertex[i]->ccd, aVertex[getNext(i)]->ccd);
        if (hed != HE_NONE)
            return hed == HE_SAME;
    }
    ASSEX_TEXT(false, "false");
}

} // namespace TARN_ZEF
