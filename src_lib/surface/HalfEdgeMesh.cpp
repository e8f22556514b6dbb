#include "surface/HalfEdgeMesh.h"

#include "core/largeVectors.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <tuple>
#include <utility>

namespace TARN_ZEF
{
// --- Making ---

bool HalfEdgeMesh::build(const std::vector<Point3>& vPoints, const std::vector<int>& vCorners,
                         std::vector<int>* pOrigin)
{
    clear();
    numTriangles = static_cast<int>(vCorners.size() / 3);
    vCorner.assign(4 * static_cast<std::size_t>(numTriangles), 0);
    vPartner.assign(vCorner.size(), NONE);
    vFeature.assign(vCorner.size(), 0);
    bool bOK = true;
    for (int t = 0; t < numTriangles; ++t)
    {
        std::copy_n(&vCorners[3 * static_cast<std::size_t>(t)], 3, &vCorner[4 * static_cast<std::size_t>(t)]);
        const int* pC = &vCorner[4 * static_cast<std::size_t>(t)];
        bOK = bOK && pC[0] != pC[1] && pC[1] != pC[2] && pC[2] != pC[0];
    }
    if (!bOK || !linkPartners(vCorners))
    {
        clear();
        return false;
    }
    partFans(vPoints, pOrigin);
    return true;
}

void HalfEdgeMesh::clear()
{
    *this = HalfEdgeMesh();
}

// The half-edges are dealt out by the lower of their ends; each has few.
bool HalfEdgeMesh::linkPartners(const std::vector<int>& vCorners)
{
    const int numV = vCorners.empty() ? 0 : *std::max_element(vCorners.begin(), vCorners.end()) + 1;
    std::vector<std::size_t> vEnd(static_cast<std::size_t>(numV) + 1, 0);
    for (int t = 0; t < numTriangles; ++t)
        for (int h = 4 * t; h < 4 * t + 3; ++h)
            ++vEnd[static_cast<std::size_t>(std::min(from(h), to(h))) + 1];
    for (std::size_t v = 1; v < vEnd.size(); ++v)
        vEnd[v] += vEnd[v - 1];
    std::vector<Spoke> vSpokes(vCorners.size());
    for (int t = 0; t < numTriangles; ++t)
        for (int h = 4 * t; h < 4 * t + 3; ++h)
            vSpokes[vEnd[static_cast<std::size_t>(std::min(from(h), to(h)))]++] = {std::max(from(h), to(h)),
                                                                                   h};
    std::size_t start = 0;
    for (std::size_t v = 0; v < static_cast<std::size_t>(numV); start = vEnd[v++])
        if (!linkSpokes(vSpokes.data() + start, vSpokes.data() + vEnd[v]))
            return false;
    return true;
}

bool HalfEdgeMesh::linkSpokes(Spoke* pBegin, Spoke* pEnd)
{
    std::sort(pBegin, pEnd,
              [](const Spoke& a, const Spoke& b) { return std::tie(a.end, a.h) < std::tie(b.end, b.h); });
    for (Spoke* pSpoke = pBegin; pEnd - pSpoke > 1; ++pSpoke)
    {
        if (pSpoke[0].end != pSpoke[1].end)
            continue;
        const bool bThird = pEnd - pSpoke > 2 && pSpoke[0].end == pSpoke[2].end;
        if (bThird || from(pSpoke[0].h) == from(pSpoke[1].h))
            return false;
        link(pSpoke[0].h, pSpoke[1].h);
        ++pSpoke;
    }
    return true;
}

// The fans in order of their first half-edge, each its own vertex.
void HalfEdgeMesh::partFans(const std::vector<Point3>& vPoints, std::vector<int>* pOrigin)
{
    std::vector<int> vOrigin;
    std::vector<bool> vSeen(vCorner.size(), false);
    std::vector<std::pair<int, int>> vNewCorner; // half-edge, vertex
    vNewCorner.reserve(3 * static_cast<std::size_t>(numTriangles));
    for (int start = 0; start < static_cast<int>(vCorner.size()); ++start)
    {
        if ((start & 3) == 3 || vSeen[start])
            continue;
        const int v = addVertex(vPoints[from(start)]);
        vOrigin.push_back(from(start));
        int first = start;
        for (int g = rotateRight(first); g != NONE && g != start; g = rotateRight(g))
            first = g;
        if (rotateRight(first) != NONE)
            first = start;
        vOutgoing[v] = first;
        ++numVertices;
        forEachOutgoing(v,
                        [&](int h)
                        {
                            vSeen[h] = true;
                            vNewCorner.emplace_back(h, v);
                        });
    }
    for (const auto& [h, v] : vNewCorner)
        vCorner[h] = v;
    if (pOrigin != nullptr)
        *pOrigin = std::move(vOrigin);
}

int HalfEdgeMesh::addVertex(const Point3& p)
{
    if (!vFreeVertices.empty())
    {
        const int v = vFreeVertices.back();
        vFreeVertices.pop_back();
        vPoint[v] = p;
        vKind[v] = Kind::FREE;
        return v;
    }
    vPoint.push_back(p);
    vOutgoing.push_back(NONE);
    vKind.push_back(Kind::FREE);
    return endVertices() - 1;
}

void HalfEdgeMesh::makeRoomToSplit()
{
    constexpr std::size_t numCorners = 8; // of two triangles
    makeRoomFor(vCorner, numCorners);
    makeRoomFor(vPartner, numCorners);
    makeRoomFor(vFeature, numCorners);
    makeRoomFor(vPoint);
    makeRoomFor(vOutgoing);
    makeRoomFor(vKind);
}

int HalfEdgeMesh::addTriangle(int a, int b, int c)
{
    int t = firstFree;
    if (t == NONE)
    {
        t = endTriangles();
        vCorner.resize(vCorner.size() + 4, 0);
        vPartner.resize(vCorner.size(), NONE);
        vFeature.resize(vCorner.size(), 0);
    }
    else
        firstFree = vPartner[4 * t];
    const std::array<int, 4> aCorner = {a, b, c, 0};
    for (int k = 0; k < 4; ++k)
    {
        vCorner[4 * t + k] = aCorner[k];
        vPartner[4 * t + k] = NONE;
        vFeature[4 * t + k] = 0;
    }
    ++numTriangles;
    return t;
}

void HalfEdgeMesh::freeTriangle(int t)
{
    vCorner[4 * t] = NONE;
    vPartner[4 * t] = firstFree;
    firstFree = t;
    --numTriangles;
}

void HalfEdgeMesh::link(int h, int g) noexcept
{
    vPartner[h] = g;
    vPartner[g] = h;
}

void HalfEdgeMesh::takeOver(int h, int g) noexcept
{
    vFeature[h] = vFeature[g];
    vPartner[h] = vPartner[g];
    if (vPartner[h] != NONE)
        vPartner[vPartner[h]] = h;
}

void HalfEdgeMesh::setFeature(int h, std::uint8_t value) noexcept
{
    vFeature[h] = value;
    if (vPartner[h] != NONE)
        vFeature[vPartner[h]] = value;
}

void HalfEdgeMesh::refreshVertex(int v, int anyOutgoing) noexcept
{
    if (vOutgoing[v] == NONE)
        ++numVertices;
    int h = anyOutgoing;
    for (int g = rotateRight(h); g != NONE && g != anyOutgoing; g = rotateRight(g))
        h = g;
    vOutgoing[v] = isBorder(h) ? h : anyOutgoing;
}

// --- Walking ---

int HalfEdgeMesh::findHalfEdge(int a, int b) const
{
    int found = NONE;
    forEachOutgoing(a,
                    [&](int h)
                    {
                        if (to(h) == b)
                            found = h;
                    });
    return found;
}

// Round both ends at once: where one of them has many neighbours the other one often has few.
bool HalfEdgeMesh::hasEdge(int a, int b) const
{
    int h = vOutgoing[a];
    int g = vOutgoing[b];
    while (to(h) != b && apex(h) != b && to(g) != a && apex(g) != a)
    {
        h = rotateLeft(h);
        g = rotateLeft(g);
        if (h == NONE || h == vOutgoing[a] || g == NONE || g == vOutgoing[b])
            return false;
    }
    return true;
}

int HalfEdgeMesh::valence(int v) const
{
    int num = 0;
    forEachNeighbour(v, [&num](int) { ++num; });
    return num;
}

// --- Changing ---

bool HalfEdgeMesh::mayFlip(int h) const
{
    return !isBorder(h) && vFeature[h] == 0 && apex(h) != apex(partner(h)) &&
           !hasEdge(apex(h), apex(partner(h)));
}

void HalfEdgeMesh::flip(int h)
{
    const int p = partner(h);
    const int hn = next(h);
    const int hp = prev(h);
    const int pn = next(p);
    const int pp = prev(p);
    const int a = from(h);
    const int b = from(p);
    const int c = from(hp);
    const int d = from(pp);
    // The four outer sides move on by one slot in a ring.
    const int sidePn = vPartner[pn];
    const int sideHn = vPartner[hn];
    const std::uint8_t featurePn = vFeature[pn];
    const std::uint8_t featureHn = vFeature[hn];
    takeOver(hn, hp);
    takeOver(pn, pp);
    const auto put = [this](int slot, int side, std::uint8_t feature)
    {
        vFeature[slot] = feature;
        vPartner[slot] = side;
        if (side != NONE)
            vPartner[side] = slot;
    };
    put(hp, sidePn, featurePn);
    put(pp, sideHn, featureHn);
    vCorner[h] = d;
    vCorner[hn] = c;
    vCorner[hp] = a;
    vCorner[p] = c;
    vCorner[pn] = d;
    vCorner[pp] = b;
    if (vOutgoing[a] == h || vOutgoing[a] == pn)
        vOutgoing[a] = hp;
    if (vOutgoing[b] == p || vOutgoing[b] == hn)
        vOutgoing[b] = pp;
    if (vOutgoing[c] == hp)
        vOutgoing[c] = hn;
    if (vOutgoing[d] == pp)
        vOutgoing[d] = pn;
}

int HalfEdgeMesh::split(int h, const Point3& p)
{
    const int m = addVertex(p);
    ++numVertices;
    const int b = to(h);
    const int c = apex(h);
    const int hn = next(h);
    const int g = 4 * addTriangle(m, b, c); // m-b, b-c, c-m
    setLabel(triangleOf(g), label(triangleOf(h)));
    takeOver(g + 1, hn);
    vFeature[g] = vFeature[h];
    vCorner[hn] = m;
    vFeature[hn] = 0;
    link(hn, g + 2);
    if (vOutgoing[b] == hn)
        vOutgoing[b] = g + 1;
    vOutgoing[m] = g;
    const int q = partner(h);
    if (q == NONE)
        return m;
    const int qp = prev(q);
    const int d = from(qp);
    const int f = 4 * addTriangle(b, m, d); // b-m, m-d, d-b
    setLabel(triangleOf(f), label(triangleOf(q)));
    takeOver(f + 2, qp);
    vFeature[f] = vFeature[h];
    vCorner[q] = m;
    vFeature[qp] = 0;
    link(qp, f + 1);
    link(g, f);
    if (vOutgoing[b] == q)
        vOutgoing[b] = f;
    if (vOutgoing[d] == qp)
        vOutgoing[d] = f + 2;
    return m;
}

bool HalfEdgeMesh::mayCollapse(int h) const
{
    const int a = from(h);
    const int b = to(h);
    const int q = partner(h);
    if (q != NONE && isBorderVertex(a) && isBorderVertex(b))
        return false;
    const auto mayLose = [this](int side)
    {
        const int c = apex(side);
        const bool bDangling = isBorder(next(side)) && isBorder(prev(side));
        return !bDangling && (isBorderVertex(c) || valence(c) > 3);
    };
    if (!mayLose(h) || (q != NONE && !mayLose(q)))
        return false;
    int numCommon = 0;
    forEachNeighbour(a,
                     [&](int u)
                     {
                         if (u != b && hasEdge(b, u))
                             ++numCommon;
                     });
    return numCommon == (q == NONE ? 1 : 2);
}

// The triangle of h dies; the neighbours on its other two sides become partners.
void HalfEdgeMesh::mergeSides(int h, int b)
{
    const int hn = next(h);
    const int hp = prev(h);
    const int c = from(hp);
    const int x = partner(hn);
    const int y = partner(hp);
    const std::uint8_t feature = vFeature[hn] | vFeature[hp];
    for (const int side : {x, y})
    {
        if (side == NONE)
            continue;
        vPartner[side] = side == x ? y : x;
        vFeature[side] = feature;
    }
    if (vOutgoing[c] == hp)
        vOutgoing[c] = x;
    vOutgoing[b] = y != NONE ? y : next(x);
    freeTriangle(triangleOf(h));
}

void HalfEdgeMesh::collapse(int h)
{
    const int a = from(h);
    const int b = to(h);
    const int q = partner(h);
    const int start = vOutgoing[a];
    int g = start;
    do
    {
        vCorner[g] = b;
        g = rotateLeft(g);
    } while (g != start && g != NONE);
    mergeSides(h, b);
    if (q != NONE)
        mergeSides(q, b);
    refreshVertex(b, vOutgoing[b]);
    vOutgoing[a] = NONE;
    vFreeVertices.push_back(a);
    --numVertices;
}

void HalfEdgeMesh::killTriangle(int t)
{
    for (int h = 4 * t; h < 4 * t + 3; ++h)
        if (vPartner[h] != NONE)
            vPartner[vPartner[h]] = NONE;
    for (int h = 4 * t; h < 4 * t + 3; ++h)
    {
        const int v = from(h);
        const int left = rotateLeft(h); // still known here: only the neighbours forgot
        const int right = rotateRight(h);
        if (right != NONE)
            refreshVertex(v, right);
        else if (left != NONE)
            refreshVertex(v, left);
        else
        {
            vOutgoing[v] = NONE;
            vFreeVertices.push_back(v);
            --numVertices;
        }
    }
    freeTriangle(t);
}

// --- Whole ---

void HalfEdgeMesh::getFlat(std::vector<Point3>& vPoints, std::vector<int>& vCorners) const
{
    std::vector<int> vNumber(vPoint.size(), NONE);
    vPoints.clear();
    vCorners.clear();
    for (int v = 0; v < endVertices(); ++v)
    {
        if (!isAliveVertex(v))
            continue;
        vNumber[v] = static_cast<int>(vPoints.size());
        vPoints.push_back(vPoint[v]);
    }
    vCorners.reserve(3 * static_cast<std::size_t>(numTriangles));
    for (int t = 0; t < endTriangles(); ++t)
        if (isAlive(t))
            for (int h = 4 * t; h < 4 * t + 3; ++h)
                vCorners.push_back(vNumber[from(h)]);
}

void HalfEdgeMesh::compact(std::vector<int>* pOld)
{
    HalfEdgeMesh packed;
    std::vector<int> vNewT(endTriangles(), NONE);
    std::vector<int> vNewV(vPoint.size(), NONE);
    std::vector<int> vOld;
    vOld.reserve(numVertices);
    for (int t = 0; t < endTriangles(); ++t)
    {
        if (!isAlive(t))
            continue;
        for (int h = 4 * t; h < 4 * t + 3; ++h)
            if (vNewV[from(h)] == NONE)
            {
                vNewV[from(h)] = packed.addVertex(vPoint[from(h)]);
                vOld.push_back(from(h));
            }
        vNewT[t] = packed.addTriangle(vNewV[from(4 * t)], vNewV[from(4 * t + 1)], vNewV[from(4 * t + 2)]);
        packed.setLabel(vNewT[t], label(t));
    }
    const auto renumber = [&vNewT](int h) { return 4 * vNewT[triangleOf(h)] + (h & 3); };
    for (int t = 0; t < endTriangles(); ++t)
        for (int h = 4 * t; isAlive(t) && h < 4 * t + 3; ++h)
        {
            packed.vPartner[renumber(h)] = vPartner[h] == NONE ? NONE : renumber(vPartner[h]);
            packed.vFeature[renumber(h)] = vFeature[h];
        }
    for (std::size_t v = 0; v < vOld.size(); ++v)
    {
        packed.vOutgoing[v] = renumber(vOutgoing[vOld[v]]);
        packed.vKind[v] = vKind[vOld[v]];
    }
    packed.numVertices = static_cast<int>(vOld.size());
    *this = std::move(packed);
    if (pOld != nullptr)
        *pOld = std::move(vOld);
}

std::string HalfEdgeMesh::getFaultAt(int h) const
{
    const int p = partner(h);
    if (from(h) < 0 || from(h) >= endVertices() || from(h) == to(h) || !isAliveVertex(from(h)))
        return "bad corner at half-edge " + std::to_string(h);
    if (p != NONE && (!isAlive(triangleOf(p)) || partner(p) != h || from(p) != to(h) || to(p) != from(h) ||
                      feature(p) != feature(h)))
        return "partners disagree at half-edge " + std::to_string(h);
    return {};
}

std::string HalfEdgeMesh::getVertexFault(int v, int degree) const
{
    if (!isAlive(triangleOf(outgoing(v))))
        return "vertex with a dead triangle: " + std::to_string(v);
    std::vector<int> vRing;
    int h = outgoing(v);
    do
    {
        if (from(h) != v || static_cast<int>(vRing.size()) == degree)
            return "half-edge of another vertex in the fan of " + std::to_string(v);
        vRing.push_back(to(h));
        h = rotateLeft(h);
    } while (h != outgoing(v) && h != NONE);
    if (static_cast<int>(vRing.size()) != degree)
        return "not one fan at vertex " + std::to_string(v);
    std::sort(vRing.begin(), vRing.end());
    if (std::adjacent_find(vRing.begin(), vRing.end()) != vRing.end())
        return "two edges with the same ends at vertex " + std::to_string(v);
    return {};
}

std::string HalfEdgeMesh::getFault() const
{
    std::vector<int> vDegree(vPoint.size(), 0);
    std::string fault;
    int numAlive = 0;
    for (int t = 0; t < endTriangles(); ++t)
    {
        if (!isAlive(t))
            continue;
        ++numAlive;
        for (int h = 4 * t; h < 4 * t + 3; ++h)
        {
            fault = getFaultAt(h);
            if (!fault.empty())
                return fault;
            ++vDegree[from(h)];
        }
    }
    int numAliveVertices = 0;
    for (int v = 0; v < endVertices(); ++v)
    {
        if (!isAliveVertex(v))
            continue;
        ++numAliveVertices;
        fault = getVertexFault(v, vDegree[v]);
        if (!fault.empty())
            return fault;
    }
    if (numAlive != numTriangles || numAliveVertices != numVertices)
        return "counters are wrong";
    return {};
}

} // namespace TARN_ZEF
