#include "intake/Tri.h"

#include "core/definitions.h"
#include "geometry/tools.h"

namespace TARN_ZEF
{
Tri::Tri(Point3* p0_, Point3* p1_, Point3* p2_)
    : p0(p0_)
    , p1(p1_)
    , p2(p2_)
{
    ASSEX(p0 < p1 && p1 < p2);
}

void Tri::getEdgePoints(int i, Point3*& a, Point3*& b) const
{
    ASSEX_TEXT(i >= 0 && i <= 2, "false");
    a = i == 0 ? p1 : p0;
    b = i == 2 ? p1 : p2;
}

Vector3 Tri::getNNV(const Point3* a, const Point3* b)
{
    if (nnv.isDegenerate())
    {
        bool bOK = false;
        nnv = getNormalVector(p0, p1, p2, bOK);
        ASSEX(bOK);
    }
    const bool bForward = (a == p0 && b == p1) || (a == p1 && b == p2) || (a == p2 && b == p0);
    const bool bBackward = (b == p0 && a == p1) || (b == p1 && a == p2) || (b == p2 && a == p0);
    ASSEX(bForward || bBackward);
    return bForward ? nnv : nnv * -1.0;
}

} // namespace TARN_ZEF
