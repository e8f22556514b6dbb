#include "remesh/PartTurner.h"

#include "core/cancel.h"
#include "geometry/tools.h"
#include "remesh/SoupEdgeTable.h"
#include "remesh/triangles.h"

#include <algorithm>
#include <cmath>

namespace TARN_ZEF
{
namespace
{
constexpr double FULL_TURN = 6.283185307179586;
// Points of a part that are asked whether they lie inside another one.
constexpr std::size_t NUM_PROBES = 7;

Point3 centreOf(const FlatSoup& soup, int t)
{
    const Point3& a = soup.pointOf(3 * t);
    return a + ((soup.pointOf(3 * t + 1) - a) + (soup.pointOf(3 * t + 2) - a)) / 3.0;
}

// Solid angle of a triangle seen from the origin, over a full turn: half the winding it adds. (Van Oosterom and
// Strackee, The solid angle of a plane triangle, 1983)
double windingOf(const Vector3& a, const Vector3& b, const Vector3& c)
{
    const double la = a.length();
    const double lb = b.length();
    const double lc = c.length();
    const double above = crossProduct(b, c) * a;
    const double below = la * lb * lc + (a * b) * lc + (b * c) * la + (c * a) * lb;
    return std::atan2(above, below) / FULL_TURN;
}
} // namespace

PartTurner::PartTurner(FlatSoup& soup_, const std::vector<int>& vPart_, int numParts,
                       std::vector<bool>& vTurned_)
    : soup(soup_)
    , vPart(vPart_)
    , vTurned(vTurned_)
    , vParts(numParts)
{
}

// Decides about all parts before it turns one: the question what lies inside goes by their sizes, not their facing.
void PartTurner::run()
{
    measure();
    findOpen();
    std::vector<bool> vTurn(vParts.size(), false);
    for (std::size_t i = 0; i < vParts.size(); ++i)
    {
        const Part& part = vParts[i];
        const bool bMostTurned = part.turnedArea > 0.5 * part.area;
        if (!part.bClosed)
        {
            vTurn[i] = bMostTurned;
            continue;
        }
        ++numClosed;
        // A closed part as it came in would face inward if its volume and the vote disagree.
        const bool bCameInward = (part.volume < 0.0) != bMostTurned;
        const bool bCavity = bCameInward && countAround(part) % 2 == 1;
        numCavities += bCavity ? 1 : 0;
        vTurn[i] = (part.volume < 0.0) != bCavity;
    }
    for (std::size_t i = 0; i < vParts.size(); ++i)
        if (vTurn[i])
            turn(vParts[i]);
}

void PartTurner::measure()
{
    CancelStride cancel;
    for (int t = 0; t < soup.numTriangles(); ++t)
    {
        cancel.step();
        Part& part = vParts[vPart[t]];
        if (part.vTriangles.empty())
            part.low = part.high = soup.pointOf(3 * t);
        const Point3 base =
            part.vTriangles.empty() ? soup.pointOf(3 * t) : soup.pointOf(3 * part.vTriangles[0]);
        part.vTriangles.push_back(t);
        for (int c = 3 * t; c < 3 * t + 3; ++c)
        {
            const Point3& p = soup.pointOf(c);
            part.low.set(std::min(part.low.x(), p.x()), std::min(part.low.y(), p.y()),
                         std::min(part.low.z(), p.z()));
            part.high.set(std::max(part.high.x(), p.x()), std::max(part.high.y(), p.y()),
                          std::max(part.high.z(), p.z()));
        }
        const Vector3 a = soup.pointOf(3 * t) - base;
        const Vector3 b = soup.pointOf(3 * t + 1) - base;
        const Vector3 c = soup.pointOf(3 * t + 2) - base;
        const double area = crossProduct(b + a * -1.0, c + a * -1.0).length();
        part.volume += crossProduct(a, b) * c;
        part.area += area;
        part.turnedArea += vTurned[t] ? area : 0.0;
    }
}

void PartTurner::findOpen()
{
    SoupEdgeTable(soup.vPoints.size(), soup.vCorners)
        .forEachEdge(
            [this](const int* pCorners, int num)
            {
                if (num == 1)
                    vParts[vPart[pCorners[0] / 3]].bClosed = false;
            });
}

bool PartTurner::isSolid(int part) const
{
    return vParts[part].bClosed &&
           enclosesSpace(std::fabs(vParts[part].volume) / 6.0, 0.5 * vParts[part].area);
}

int PartTurner::countAround(const Part& inner) const
{
    int num = 0;
    for (const Part& outer : vParts)
    {
        const bool bBoxInside = outer.low.x() <= inner.low.x() && outer.low.y() <= inner.low.y() &&
                                outer.low.z() <= inner.low.z() && outer.high.x() >= inner.high.x() &&
                                outer.high.y() >= inner.high.y() && outer.high.z() >= inner.high.z();
        if (&outer == &inner || !outer.bClosed || !bBoxInside)
            continue;
        std::size_t numInside = 0;
        const std::size_t numProbes = std::min(NUM_PROBES, inner.vTriangles.size());
        for (std::size_t i = 0; i < numProbes; ++i)
            if (isInside(centreOf(soup, inner.vTriangles[i * inner.vTriangles.size() / numProbes]), outer))
                ++numInside;
        num += 2 * numInside > numProbes ? 1 : 0;
    }
    return num;
}

// Well inside: on the surface the winding is a half.
bool PartTurner::isInside(const Point3& p, const Part& outer) const
{
    checkCancelled();
    double winding = 0.0;
    for (const int t : outer.vTriangles)
        winding +=
            windingOf(soup.pointOf(3 * t) - p, soup.pointOf(3 * t + 1) - p, soup.pointOf(3 * t + 2) - p);
    return std::fabs(winding) > 0.75;
}

void PartTurner::turn(const Part& part)
{
    for (const int t : part.vTriangles)
    {
        std::swap(soup.vCorners[3 * t + 1], soup.vCorners[3 * t + 2]);
        vTurned[t] = !vTurned[t];
    }
}

} // namespace TARN_ZEF
