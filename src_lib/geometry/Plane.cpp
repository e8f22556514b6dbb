#include "geometry/Plane.h"

#include "core/definitions.h"
#include "geometry/tools.h"

namespace TARN_ZEF
{
Plane::Plane(const Point3& p, const Vector3& v)
    : nv(normalize(v))
    , d(dotWithNV(p))
{
}

Plane::Plane(const Point3& p0, const Point3& p1, const Point3& p2)
{
    const Vector3 vec01 = normalize(p1 - p0);
    const Vector3 vec02 = normalize(p2 - p0);
    const Vector3 cp = crossProduct(vec01, vec02);
    const double cpLen = cp.length();
    if (cpLen == 0.0)
    {
        warningMessage(ZEF_HERE, "Degenerate plane");
        ASSEX(false);
    }
    nv = cp / cpLen;
    const double vecLen = nv.length();
    ASSEX_TEXT(vecLen > .99 && vecLen < 1.01, "vecLen>.99 && vecLen<1.01");
    d = dotWithNV(p0);
}

} // namespace TARN_ZEF
