#include "remesh/VertexRelaxer.h"

#include "core/cancel.h"
#include "remesh/triangles.h"

#include <algorithm>

namespace TARN_ZEF
{
namespace
{
constexpr double COS_MOVE = 0.5; // between the normals of a triangle before and after
constexpr double GOOD_SHAPE = 0.3;
} // namespace

void VertexRelaxer::relax(bool bOnlyBetter)
{
    for (int v = 0; v < mesh.endVertices(); ++v)
        if (mesh.isAliveVertex(v))
            relaxVertex(v, bOnlyBetter);
}

bool VertexRelaxer::relaxVertex(int v, bool bOnlyBetter)
{
    checkCancelled();
    if (mesh.kind(v) != HalfEdgeMesh::Kind::FREE)
        return false;
    const int t = HalfEdgeMesh::triangleOf(mesh.outgoing(v));
    int place = HalfEdgeMesh::NONE;
    const Point3 p = work.onPatch(middleOfFan(v), t, work.vSize[v], &place);
    if (!mayMove(v, p, bOnlyBetter))
        return false;
    mesh.setPoint(v, p);
    mesh.forEachOutgoing(v, [&](int h) { work.vHint[HalfEdgeMesh::triangleOf(h)] = place; });
    return true;
}

// The mean of the fan's centres, by area over the size squared: where small triangles are wanted they pull.
Point3 VertexRelaxer::middleOfFan(int v) const
{
    const Point3& p = mesh.point(v);
    Vector3 sum;
    double weights = 0.0;
    mesh.forEachOutgoing(v,
                         [&](int h)
                         {
                             const int x = mesh.to(h);
                             const int y = mesh.apex(h);
                             const Vector3 vx = mesh.point(x) - p;
                             const Vector3 vy = mesh.point(y) - p;
                             const double size = work.vSize[x] + work.vSize[y];
                             const double weight = crossProduct(vx, vy).length() / (size * size);
                             sum.add((vx + vy) * (weight / 3.0));
                             weights += weight;
                         });
    return weights > 0.0 ? p + sum / weights : p;
}

bool VertexRelaxer::mayMove(int v, const Point3& p, bool bOnlyBetter) const
{
    bool bOK = true;
    double worstBefore = 1.0;
    double worstAfter = 1.0;
    mesh.forEachOutgoing(v,
                         [&](int h)
                         {
                             if (!bOK)
                                 return;
                             const Point3& x = mesh.point(mesh.to(h));
                             const Point3& y = mesh.point(mesh.apex(h));
                             const Vector3 before = rawNormal(mesh.point(v), x, y);
                             const Vector3 after = rawNormal(p, x, y);
                             const double product = before.length() * after.length();
                             bOK = before * after > COS_MOVE * product;
                             worstBefore = std::min(worstBefore, shapeOf(mesh.point(v), x, y));
                             worstAfter = std::min(worstAfter, shapeOf(p, x, y));
                         });
    return bOK && (worstAfter > worstBefore || (!bOnlyBetter && worstAfter > GOOD_SHAPE));
}

} // namespace TARN_ZEF
