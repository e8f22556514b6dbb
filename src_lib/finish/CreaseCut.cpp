#include "finish/CreaseCut.h"

#include "finish/NormalTensor.h"

#include <algorithm>
#include <array>

namespace TARN_ZEF
{
namespace
{
// Farthest way of the middle of an edge to the crease, in cells, beside half the edge.
constexpr double FARTHEST = 0.9;
// Planes of a corner that hold less in some direction do not say where it is.
constexpr double CORNER_SHARE = 0.02;
} // namespace

CreaseCut::CreaseCut(HalfEdgeMesh& mesh_, const CreaseSides& sides_, CreaseCrossings& crossings_,
                     double cellSize_)
    : mesh(mesh_)
    , sides(sides_)
    , crossings(crossings_)
    , cellSize(cellSize_)
{
}

void CreaseCut::run()
{
    putOnSides();
    cut();
}

// What a fit over both sides has rounded off is undone.
void CreaseCut::putOnSides()
{
    for (const CreaseCrossings::Crossing& crossing : crossings.getCrossings())
    {
        for (const int v : {crossing.a, crossing.b})
        {
            const TangentPlane plane = sides.planeOf(v);
            const Point3& p = mesh.point(v);
            mesh.setPoint(v, p + plane.normal * ((plane.point - p) * plane.normal));
        }
    }
}

// A split joins the new vertex with those opposite, so the second one on a triangle is joined with the first.
void CreaseCut::cut()
{
    for (CreaseCrossings::Crossing& crossing : crossings.getCrossings())
        crossing.vertex = mesh.split(mesh.findHalfEdge(crossing.a, crossing.b), crossing.point);
    for (const CreaseCrossings::Passage& passage : crossings.getPassages())
    {
        if (passage.number == 3)
        {
            makeCorner(passage);
            continue;
        }
        int first = NONE;
        for (const int crossing : passage.crossings)
        {
            if (crossing == NONE)
                continue;
            const int v = crossings.getVertex(crossing);
            if (first != NONE)
                join(first, v);
            first = v;
        }
    }
}

void CreaseCut::join(int a, int b)
{
    const int h = mesh.findHalfEdge(a, b);
    if (h == NONE)
        return;
    mesh.setFeature(h, 1);
    ++numEdges;
}

// The vertex on the edge that was cut first is joined with the corner opposite, where all three can be joined.
void CreaseCut::makeCorner(const CreaseCrossings::Passage& passage)
{
    const std::size_t k = static_cast<std::size_t>(
        std::min_element(passage.crossings.begin(), passage.crossings.end()) - passage.crossings.begin());
    std::array<int, 3> ends = {};
    Vector3 toMiddle;
    for (std::size_t i = 0; i < 3; ++i)
    {
        ends[i] = crossings.getVertex(passage.crossings[i]);
        toMiddle.add((mesh.point(ends[i]) - Point3()) / 3.0);
    }
    const Point3 middle = Point3() + toMiddle;
    NormalTensor tensor;
    Vector3 right;
    for (const int v : passage.vertices)
    {
        const TangentPlane plane = sides.planeOf(v);
        tensor.add(plane.normal);
        right.add(plane.normal * ((plane.point - middle) * plane.normal));
    }
    const Vector3 move = tensor.solve(right, CORNER_SHARE);
    const int h = mesh.findHalfEdge(ends[k], passage.vertices[(k + 2) % 3]);
    if (h == NONE)
        return;
    const int v = mesh.split(h, move.length() < FARTHEST * cellSize ? middle + move : middle);
    for (const int end : ends)
        join(v, end);
    vCorners.push_back(v);
}

} // namespace TARN_ZEF
