#include "remesh/EdgeCollapser.h"

#include "core/cancel.h"
#include "remesh/triangles.h"

#include <algorithm>

namespace TARN_ZEF
{
namespace
{
using Kind = HalfEdgeMesh::Kind;
// In wanted lengths.
constexpr double TOO_LONG = 4.0 / 3.0;
constexpr double TOO_SHORT = 4.0 / 5.0;
constexpr double COS_COLLAPSE = 0.6;  // between the normals of a triangle before and after
constexpr double LEAST_HEIGHT = 1e-3; // over the longest edge
} // namespace

// Along a border the half-edge runs one way only.
bool EdgeCollapser::isSurplus(int h) const
{
    return mesh.kind(mesh.from(h)) == Kind::CHAIN && mesh.feature(h) != 0;
}

void EdgeCollapser::collapseSurplus()
{
    for (int t = 0; t < mesh.endTriangles(); ++t)
        for (int h = 4 * t; h < 4 * t + 3 && mesh.isAlive(t); ++h)
            if (isSurplus(h))
                static_cast<void>(tryCollapse(h, 0.0));
}

// Shorter ones first, in two classes: the order within a class is that of the numbers.
void EdgeCollapser::collapseShort()
{
    collapseSurplus();
    for (const double limit : {0.5 * TOO_SHORT, TOO_SHORT})
        for (int t = 0; t < mesh.endTriangles(); ++t)
            for (int h = 4 * t; h < 4 * t + 3 && mesh.isAlive(t); ++h)
                if (mesh.kind(mesh.from(h)) == Kind::FREE && work.isShorter(h, limit * work.sizeOf(h)))
                    static_cast<void>(tryCollapse(h, TOO_LONG));
}

bool EdgeCollapser::tryCollapse(int h, double longest)
{
    checkCancelled();
    if (!keepsShape(h, longest) || !keepsDistance(h) || !mesh.mayCollapse(h))
        return false;
    mesh.collapse(h);
    return true;
}

// Whether the fan of from(h), drawn to to(h), stays unfolded, with no edge longer than that many sizes; 0 for any.
bool EdgeCollapser::keepsShape(int h, double longest) const
{
    const int a = mesh.from(h);
    const int b = mesh.to(h);
    const Point3& q = mesh.point(b);
    const auto isTooLong = [&](int v) {
        return longest > 0.0 &&
               sqDistance(q, mesh.point(v)) > longest * longest * work.vSize[v] * work.vSize[v];
    };
    bool bOK = true;
    mesh.forEachOutgoing(a,
                         [&](int g)
                         {
                             const int x = mesh.to(g);
                             const int y = mesh.apex(g);
                             if (!bOK || x == b || y == b)
                                 return;
                             const Vector3 before = work.normalOf(HalfEdgeMesh::triangleOf(g));
                             const Vector3 after = rawNormal(q, mesh.point(x), mesh.point(y));
                             bOK = !isTooLong(x) && !isTooLong(y) &&
                                   isHigh(q, mesh.point(x), mesh.point(y), LEAST_HEIGHT) &&
                                   before * after > COS_COLLAPSE * after.length();
                         });
    return bOK;
}

// Whether that fan stays near the source.
bool EdgeCollapser::keepsDistance(int h) const
{
    const int b = mesh.to(h);
    const Point3& q = mesh.point(b);
    bool bOK = true;
    mesh.forEachOutgoing(mesh.from(h),
                         [&](int g)
                         {
                             const int t = HalfEdgeMesh::triangleOf(g);
                             const int x = mesh.to(g);
                             const int y = mesh.apex(g);
                             if (!bOK || x == b || y == b || work.patchOf(t).bFlat)
                                 return;
                             bOK = work.isNearPatch(middle(q, mesh.point(x)), t) &&
                                   work.isNearPatch(middle(q, mesh.point(y)), t) &&
                                   work.isNearPatch(centre(q, mesh.point(x), mesh.point(y)), t);
                         });
    return bOK;
}

} // namespace TARN_ZEF
