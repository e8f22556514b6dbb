#include "remesh/SourceSurface.h"

#include "core/cancel.h"
#include "remesh/TurnedSets.h"
#include "remesh/triangles.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace TARN_ZEF
{
namespace
{
constexpr int NONE = HalfEdgeMesh::NONE;
// The gap of the dihedral angles is looked for between these degrees, as a window of this width, and where several
// are as good the nearest to the usual angle is taken.
constexpr int LOWEST_ANGLE = 15;
constexpr int HIGHEST_ANGLE = 50;
constexpr int USUAL_ANGLE = 20;
constexpr int HALF_WINDOW = 4;
// A ridge is long from this many lengths on: shorter ones are facets of something round.
constexpr double LONG_RIDGE = 2.5;
constexpr double SHORT_FEATURE = 5.0;  // in lengths
constexpr double COS_SHARP_TURN = 0.5; // 60 degrees
constexpr double STEEP = 0.3;          // sine of the fall of all edges at a tip
// Exactly flat: corners this near to one plane, in sizes of the coordinates. Flat: this near in tolerances, and
// normals this near to that of the plane.
constexpr double EXACT_DISTANCE = 1e-13;
constexpr double FLAT_DISTANCE = 0.05;
constexpr double FLAT_COSINE = 0.9;

// Whether cutting off a bend takes more than the tolerance away.
bool isHighBend(double shorter, double length, double cosBend, double tolerance)
{
    const double sinHalf = std::sqrt(std::max(0.0, 0.5 * (1.0 - cosBend)));
    return 0.5 * std::min(shorter, length) * sinHalf > tolerance;
}
} // namespace

bool SourceSurface::build(const FlatSoup& soup)
{
    *this = SourceSurface();
    if (!mesh.build(soup.vPoints, soup.vCorners))
        return false;
    vNormals.resize(mesh.endTriangles());
    Point3 low = mesh.point(0);
    Point3 high = low;
    for (int t = 0; t < mesh.endTriangles(); ++t)
    {
        const Vector3 raw = rawNormal(mesh.point(mesh.from(4 * t)), mesh.point(mesh.from(4 * t + 1)),
                                      mesh.point(mesh.from(4 * t + 2)));
        vNormals[t] = unitOrNull(raw);
        area += 0.5 * raw.length();
    }
    for (int v = 0; v < mesh.endVertices(); ++v)
    {
        const Point3& p = mesh.point(v);
        low.set(std::min(low.x(), p.x()), std::min(low.y(), p.y()), std::min(low.z(), p.z()));
        high.set(std::max(high.x(), p.x()), std::max(high.y(), p.y()), std::max(high.z(), p.z()));
    }
    extent = getMax(high.x() - low.x(), high.y() - low.y(), high.z() - low.z());
    return true;
}

double SourceSurface::cosOfEdge(int h) const
{
    return vNormals[HalfEdgeMesh::triangleOf(h)] * vNormals[HalfEdgeMesh::triangleOf(mesh.partner(h))];
}

double SourceSurface::lengthOf(const CreaseChain& chain) const
{
    double sum = 0.0;
    for (std::size_t i = 0; i + 1 < chain.vVertices.size(); ++i)
        sum += (mesh.point(chain.vVertices[i + 1]) - mesh.point(chain.vVertices[i])).length();
    return sum;
}

double SourceSurface::findFeatureAngle() const
{
    std::array<double, 181> aCos;
    for (int i = 0; i <= 180; ++i)
        aCos[i] = cosOfDegrees(i);
    std::array<double, 181> aWeight{};
    mesh.forEachEdge(
        [&](int h)
        {
            if (mesh.isBorder(h))
                return;
            const double cosine = cosOfEdge(h);
            const auto it = std::lower_bound(aCos.begin(), aCos.end(), cosine, std::greater<>());
            const auto degree = std::min<std::ptrdiff_t>(it - aCos.begin(), 180);
            aWeight[degree] += (mesh.point(mesh.to(h)) - mesh.point(mesh.from(h))).length();
        });
    int best = USUAL_ANGLE;
    double bestWeight = DBL_MAX;
    for (int i = 0; i <= 2 * (HIGHEST_ANGLE - USUAL_ANGLE); ++i)
    {
        const int angle = USUAL_ANGLE + (i % 2 == 0 ? i / 2 : -(i + 1) / 2);
        if (angle < LOWEST_ANGLE)
            continue;
        double weight = 0.0;
        for (int k = angle - HALF_WINDOW; k <= angle + HALF_WINDOW; ++k)
            weight += aWeight[k];
        if (weight < bestWeight)
        {
            best = angle;
            bestWeight = weight;
        }
    }
    return best;
}

// Beside edges above the angle a surface is neither smooth nor rough.
std::vector<bool> SourceSurface::findSmoothVertices(double featureAngle) const
{
    const double cosFeature = featureAngle > 180.0 ? -2.0 : cosOfDegrees(featureAngle);
    std::vector<bool> vSmooth(mesh.endVertices(), true);
    mesh.forEachEdge(
        [&](int h)
        {
            if (mesh.isBorder(h) || cosOfEdge(h) >= cosFeature)
                return;
            vSmooth[mesh.from(h)] = false;
            vSmooth[mesh.to(h)] = false;
        });
    return vSmooth;
}

Vector3 SourceSurface::bulgeAt(int v) const
{
    Vector3 sum;
    int num = 0;
    mesh.forEachNeighbour(v,
                          [&](int u)
                          {
                              sum.add(mesh.point(u) - mesh.point(v));
                              ++num;
                          });
    return sum / num;
}

Vector3 SourceSurface::normalAt(int v) const
{
    Vector3 sum;
    mesh.forEachOutgoing(v, [&](int h) { sum.add(vNormals[HalfEdgeMesh::triangleOf(h)]); });
    return unitOrNull(sum);
}

// The bulge of a vertex over the mean of its neighbours, less their own mean bulge: a curved surface has the same
// bulge all over. The median of all counts, unless most vertices stand at features, as those of designed parts.
double SourceSurface::getRoughness(double featureAngle) const
{
    const std::vector<bool> vSmooth = findSmoothVertices(featureAngle);
    std::vector<double> vOff;
    int numInner = 0;
    CancelStride cancel;
    for (int v = 0; v < mesh.endVertices(); ++v)
    {
        cancel.step();
        Vector3 around;
        int num = 0;
        bool bInner = !mesh.isBorderVertex(v);
        bool bSmooth = vSmooth[v];
        mesh.forEachNeighbour(v,
                              [&](int u)
                              {
                                  bInner = bInner && !mesh.isBorderVertex(u);
                                  bSmooth = bSmooth && vSmooth[u];
                                  around.add(bInner ? bulgeAt(u) : Vector3());
                                  ++num;
                              });
        numInner += bInner ? 1 : 0;
        if (bInner && bSmooth)
            vOff.push_back(std::fabs((bulgeAt(v) + around / -num) * normalAt(v)));
    }
    if (vOff.empty() || 2 * static_cast<int>(vOff.size()) < numInner)
        return 0.0;
    const auto median = vOff.begin() + static_cast<std::ptrdiff_t>(vOff.size() / 2);
    std::nth_element(vOff.begin(), median, vOff.end());
    return *median;
}

bool SourceSurface::isRidge(int h, double length, double tolerance) const
{
    const Point3& a = mesh.point(mesh.from(h));
    const Point3& b = mesh.point(mesh.to(h));
    const double len = (b - a).length();
    if (len < LONG_RIDGE * length)
        return false;
    const auto height = [&](int g) { return rawNormal(a, b, mesh.point(mesh.apex(g))).length() / len; };
    return isHighBend(std::min(height(h), height(mesh.partner(h))), length, cosOfEdge(h), tolerance);
}

void SourceSurface::markFeatures(double featureAngle, double length, double tolerance, bool bRough)
{
    forgetFeatures();
    const double cosFeature = featureAngle > 180.0 ? -2.0 : cosOfDegrees(featureAngle);
    mesh.forEachEdge(
        [&](int h)
        {
            if (mesh.isBorder(h) || cosOfEdge(h) < cosFeature || isRidge(h, length, tolerance))
                mesh.setFeature(h, 1);
        });
    if (bRough)
        dropShortFeatures(SHORT_FEATURE * length);
    findKinds(length, tolerance);
    if (bRough)
        joinCorners(tolerance);
    findPatches();
    findFlatPatches(tolerance);
    findChains();
}

void SourceSurface::forgetFeatures()
{
    CancelStride cancel;
    for (int h = 0; h < 4 * mesh.endTriangles(); ++h)
    {
        cancel.step();
        if (h % 4 != 3)
            mesh.setFeature(h, 0);
    }
    for (int v = 0; v < mesh.endVertices(); ++v)
        mesh.setKind(v, HalfEdgeMesh::Kind::FREE);
    vPatches.clear();
    vChains.clear();
}

// All inner features that hang together, by their whole length.
void SourceSurface::dropShortFeatures(double shortest)
{
    TurnedSets sets(mesh.endVertices());
    std::vector<double> vLength(mesh.endVertices(), 0.0);
    const auto forEachInner = [this](auto f)
    {
        mesh.forEachEdge(
            [&](int h)
            {
                if (!mesh.isBorder(h) && mesh.feature(h) != 0)
                    f(h);
            });
    };
    forEachInner([&](int h) { static_cast<void>(sets.join(mesh.from(h), mesh.to(h), false)); });
    forEachInner(
        [&](int h) {
            vLength[sets.find(mesh.from(h)).set] +=
                (mesh.point(mesh.to(h)) - mesh.point(mesh.from(h))).length();
        });
    forEachInner(
        [&](int h)
        {
            if (vLength[sets.find(mesh.from(h)).set] < shortest)
                mesh.setFeature(h, 0);
        });
}

// Of two corners within the tolerance, where no third feature ends, one is enough.
void SourceSurface::joinCorners(double tolerance)
{
    for (int v = 0; v < mesh.endVertices(); ++v)
    {
        int num = 0;
        bool bNear = false;
        forEachFeatureAt(mesh, v,
                         [&](int u, int)
                         {
                             ++num;
                             bNear =
                                 bNear || (mesh.kind(u) == HalfEdgeMesh::Kind::FIXED &&
                                           sqDistance(mesh.point(u), mesh.point(v)) < tolerance * tolerance);
                         });
        if (num == 2 && bNear)
            mesh.setKind(v, HalfEdgeMesh::Kind::CHAIN);
    }
}

// Whether all edges at a vertex fall away from it, and steeply enough that it cannot vanish.
bool SourceSurface::isTip(int v, double length, double tolerance) const
{
    Vector3 sum;
    double shortest = length;
    mesh.forEachOutgoing(v,
                         [&](int h)
                         {
                             sum.add(vNormals[HalfEdgeMesh::triangleOf(h)]);
                             shortest = std::min(shortest, (mesh.point(mesh.to(h)) - mesh.point(v)).length());
                         });
    const Vector3 axis = unitOrNull(sum);
    double lowest = 1.0;
    double highest = -1.0;
    mesh.forEachOutgoing(v,
                         [&](int h)
                         {
                             const double fall = unitOrNull(mesh.point(mesh.to(h)) - mesh.point(v)) * axis;
                             lowest = std::min(lowest, fall);
                             highest = std::max(highest, fall);
                         });
    const double steep = std::max(-highest, lowest);
    return steep > STEEP && steep * shortest > tolerance;
}

void SourceSurface::findKinds(double length, double tolerance)
{
    CancelStride cancel;
    for (int v = 0; v < mesh.endVertices(); ++v)
    {
        cancel.step();
        std::vector<Vector3> vAway;
        forEachFeatureAt(mesh, v, [&](int u, int) { vAway.push_back(mesh.point(u) - mesh.point(v)); });
        if (vAway.empty())
        {
            if (isTip(v, length, tolerance))
                mesh.setKind(v, HalfEdgeMesh::Kind::FIXED);
            continue;
        }
        HalfEdgeMesh::Kind kind = HalfEdgeMesh::Kind::FIXED;
        if (vAway.size() == 2)
        {
            const double cosBend = -(unitOrNull(vAway[0]) * unitOrNull(vAway[1]));
            const double shorter = std::min(vAway[0].length(), vAway[1].length());
            if (cosBend > COS_SHARP_TURN && !isHighBend(shorter, length, cosBend, tolerance))
                kind = HalfEdgeMesh::Kind::CHAIN;
        }
        mesh.setKind(v, kind);
    }
}

void SourceSurface::findPatches()
{
    for (int t = 0; t < mesh.endTriangles(); ++t)
        mesh.setLabel(t, NONE);
    std::vector<int> vStack;
    for (int start = 0; start < mesh.endTriangles(); ++start)
    {
        if (mesh.label(start) != NONE)
            continue;
        const int patch = static_cast<int>(vPatches.size());
        vPatches.emplace_back();
        mesh.setLabel(start, patch);
        vStack.push_back(start);
        while (!vStack.empty())
        {
            const int t = vStack.back();
            vStack.pop_back();
            for (int h = 4 * t; h < 4 * t + 3; ++h)
            {
                const int g = mesh.partner(h);
                if (mesh.feature(h) != 0 || g == NONE || mesh.label(HalfEdgeMesh::triangleOf(g)) != NONE)
                    continue;
                mesh.setLabel(HalfEdgeMesh::triangleOf(g), patch);
                vStack.push_back(HalfEdgeMesh::triangleOf(g));
            }
        }
    }
}

// The plane is that of the mean normal, through the first corner.
void SourceSurface::findFlatPatches(double tolerance)
{
    std::vector<Vector3> vSum(vPatches.size());
    for (int t = 0; t < mesh.endTriangles(); ++t)
    {
        const Point3& a = mesh.point(mesh.from(4 * t));
        if (vSum[mesh.label(t)].isDegenerate())
            vPatches[mesh.label(t)].base = a;
        vSum[mesh.label(t)].add(
            rawNormal(a, mesh.point(mesh.from(4 * t + 1)), mesh.point(mesh.from(4 * t + 2))));
    }
    for (std::size_t i = 0; i < vPatches.size(); ++i)
        vPatches[i].normal = unitOrNull(vSum[i]);
    double reach = extent;
    for (const double x : {mesh.point(0).x(), mesh.point(0).y(), mesh.point(0).z()})
        reach += std::fabs(x);
    for (int t = 0; t < mesh.endTriangles(); ++t)
    {
        Patch& patch = vPatches[mesh.label(t)];
        for (int h = 4 * t; h < 4 * t + 3; ++h)
        {
            const double off = std::fabs((mesh.point(mesh.from(h)) - patch.base) * patch.normal);
            patch.bFlat = patch.bFlat && off < std::max(FLAT_DISTANCE * tolerance, EXACT_DISTANCE * reach);
            patch.bExact = patch.bExact && off < EXACT_DISTANCE * reach;
        }
        patch.bFlat = patch.bFlat && vNormals[t] * patch.normal > FLAT_COSINE;
        patch.bExact = patch.bExact && patch.bFlat;
    }
}

void SourceSurface::findChains()
{
    std::vector<bool> vSeen(4 * static_cast<std::size_t>(mesh.endTriangles()), false);
    // From the corners first, then what is left runs round: its first vertex becomes a corner.
    for (const bool bRound : {false, true})
        for (int v = 0; v < mesh.endVertices(); ++v)
        {
            if (mesh.kind(v) != (bRound ? HalfEdgeMesh::Kind::CHAIN : HalfEdgeMesh::Kind::FIXED))
                continue;
            std::vector<std::pair<int, int>> vEdges;
            forEachFeatureAt(mesh, v, [&](int u, int h) { vEdges.emplace_back(u, h); });
            for (const auto& [u, h] : vEdges)
            {
                if (vSeen[h])
                    continue;
                mesh.setKind(v, HalfEdgeMesh::Kind::FIXED);
                vChains.push_back(followChain(v, u, vSeen));
            }
        }
}

CreaseChain SourceSurface::followChain(int first, int second, std::vector<bool>& vSeen) const
{
    CreaseChain chain;
    chain.vVertices = {first};
    int v = first;
    int u = second;
    while (true)
    {
        chain.vVertices.push_back(u);
        forEachFeatureAt(mesh, v,
                         [&](int w, int h)
                         {
                             if (w != u)
                                 return;
                             vSeen[h] = true;
                             chain.left = mesh.label(HalfEdgeMesh::triangleOf(h));
                             if (mesh.isBorder(h))
                                 return;
                             vSeen[mesh.partner(h)] = true;
                             chain.right = mesh.label(HalfEdgeMesh::triangleOf(mesh.partner(h)));
                         });
        if (mesh.kind(u) == HalfEdgeMesh::Kind::FIXED)
            return chain;
        int onward = NONE;
        forEachFeatureAt(mesh, u,
                         [&](int w, int)
                         {
                             if (w != v)
                                 onward = w;
                         });
        v = u;
        u = onward;
    }
}

} // namespace TARN_ZEF
