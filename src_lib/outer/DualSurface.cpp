#include "outer/DualSurface.h"

#include "core/cancel.h"
#include "remesh/triangles.h"

#include <algorithm>
#include <cmath>
#include <tuple>

namespace TARN_ZEF
{
namespace
{
constexpr std::uint64_t EDGE_MASK = 15;

// The cells round an edge, counter-clockwise seen from its far end: how far each begins before the edge, along the
// next axis and the one after it.
constexpr std::array<std::array<int, 2>, 4> RING = {{{0, 0}, {1, 0}, {1, 1}, {0, 1}}};
} // namespace

void DualSurface::run(std::vector<Change> vAllChanges)
{
    vChanges = std::move(vAllChanges);
    findVertices();
    splitDoubleLinks();
    addTriangles();
}

HullLattice::Cell DualSurface::Change::getOutside() const
{
    Cell p = lower;
    p[axis] += bFirstInside ? 1 : 0;
    return p;
}

void DualSurface::findVertices()
{
    std::vector<CellEdge> vEdges;
    vEdges.reserve(4 * vChanges.size());
    for (std::uint32_t i = 0; i < vChanges.size(); ++i)
        for (std::uint32_t place = 0; place < 4; ++place)
        {
            const Change& change = vChanges[i];
            const auto [right, up] = RING[place];
            Cell cell = change.lower;
            cell[HullLattice::after(change.axis)] -= right;
            cell[HullLattice::before(change.axis)] -= up;
            const int edge = 4 * change.axis + right + 2 * up;
            vEdges.push_back({(HullLattice::keyOf(cell) << 4) | static_cast<std::uint64_t>(edge), i, place});
        }
    std::sort(vEdges.begin(), vEdges.end(),
              [](const CellEdge& a, const CellEdge& b) { return a.key < b.key; });
    for (std::size_t from = 0; from < vEdges.size();)
    {
        checkCancelledAt(from);
        std::size_t to = from + 1;
        while (to < vEdges.size() && vEdges[to].key >> 4 == vEdges[from].key >> 4)
            ++to;
        passCell(&vEdges[from], &vEdges[from] + (to - from));
        from = to;
    }
}

void DualSurface::passCell(const CellEdge* pBegin, const CellEdge* pEnd)
{
    const CellLoops::Loops& loops = cellLoops.of(getCorners(pBegin, pEnd));
    const Change& first = vChanges[pBegin->change];
    Cell cell = first.lower;
    cell[HullLattice::after(first.axis)] -= RING[pBegin->place][0];
    cell[HullLattice::before(first.axis)] -= RING[pBegin->place][1];
    std::vector<const Change*> vLoop;
    for (int loop = 0; loop < loops.num; ++loop)
    {
        vLoop.clear();
        for (const CellEdge* p = pBegin; p != pEnd; ++p)
            if (loops.loopOf[p->key & EDGE_MASK] == loop)
            {
                vChanges[p->change].ring[p->place] = static_cast<int>(vVertices.size());
                vLoop.push_back(&vChanges[p->change]);
            }
        vVertices.push_back(makeVertex(cell, vLoop));
        vAmbiguous.push_back(loops.bAmbiguous);
    }
}

// From one corner that is known, over all edges: those that change are here.
unsigned DualSurface::getCorners(const CellEdge* pBegin, const CellEdge* pEnd) const
{
    unsigned changing = 0;
    for (const CellEdge* p = pBegin; p != pEnd; ++p)
        changing |= 1U << (p->key & EDGE_MASK);
    const Change& change = vChanges[pBegin->change];
    const int start = CellLoops::lowerCorner(static_cast<int>(pBegin->key & EDGE_MASK));
    unsigned known = 1U << start;
    unsigned corners = change.bFirstInside ? known : 0U;
    while (known != 0xFF)
        for (int edge = 0; edge < CellLoops::NUM_EDGES; ++edge)
        {
            int from = CellLoops::lowerCorner(edge);
            int to = CellLoops::upperCorner(edge);
            if (((known >> from) & 1U) == 0)
                std::swap(from, to);
            if (((known >> from) & 1U) == 0 || ((known >> to) & 1U) != 0)
                continue;
            known |= 1U << to;
            corners |= (((corners >> from) ^ (changing >> edge)) & 1U) << to;
        }
    return corners;
}

void DualSurface::splitDoubleLinks()
{
    std::vector<Link> vLinks;
    for (std::uint32_t i = 0; i < vChanges.size(); ++i)
        for (int place = 0; place < 4; ++place)
        {
            const int a = vChanges[i].ring[place];
            const int b = vChanges[i].ring[(place + 1) % 4];
            if (vAmbiguous[a] && vAmbiguous[b])
                vLinks.push_back({std::minmax(a, b), HullLattice::keyOf(vChanges[i].getOutside()), i, place});
        }
    std::sort(vLinks.begin(), vLinks.end(),
              [](const Link& a, const Link& b)
              { return std::tie(a.ends, a.outside, a.change) < std::tie(b.ends, b.outside, b.change); });
    for (std::size_t from = 0; from < vLinks.size();)
    {
        std::size_t to = from + 1;
        while (to < vLinks.size() && vLinks[to].ends == vLinks[from].ends)
            ++to;
        // Two and two, each round one outside point.
        if (to - from == 4)
            splitLinks(vLinks[from + 2], vLinks[from + 3]);
        from = to;
    }
    std::sort(vMiddles.begin(), vMiddles.end());
}

void DualSurface::splitLinks(const Link& first, const Link& second)
{
    for (const Link* pLink : {&first, &second})
        vMiddles.emplace_back(4ULL * pLink->change + pLink->place, static_cast<int>(vVertices.size()));
    const Point3 between = middle(vVertices[first.ends.first].spare, vVertices[first.ends.second].spare);
    vVertices.push_back({between, between, 1});
}

void DualSurface::addTriangles()
{
    for (std::size_t i = 0; i < vChanges.size(); ++i)
    {
        checkCancelledAt(i);
        const auto first =
            std::lower_bound(vMiddles.begin(), vMiddles.end(), std::pair<std::uint64_t, int>(4 * i, 0));
        if (first == vMiddles.end() || first->first >= 4 * (i + 1))
        {
            addQuad(vChanges[i]);
            continue;
        }
        std::vector<int> vRing;
        for (int place = 0; place < 4; ++place)
        {
            vRing.push_back(vChanges[i].ring[place]);
            for (auto it = first; it != vMiddles.end() && it->first <= 4 * i + place; ++it)
                if (it->first == 4 * i + place)
                    vRing.push_back(it->second);
        }
        if (!vChanges[i].bFirstInside)
            std::reverse(vRing.begin(), vRing.end());
        addPolygon(vRing);
    }
}

void DualSurface::addQuad(const Change& change)
{
    std::array<int, 4> ring = change.ring;
    if (!change.bFirstInside)
        std::reverse(ring.begin(), ring.end());
    const int shift = isFirstDiagonalBetter(ring, change) ? 0 : 1;
    addTriangle(ring[shift], ring[shift + 1], ring[shift + 2]);
    addTriangle(ring[shift + 2], ring[(shift + 3) % 4], ring[shift]);
}

void DualSurface::addPolygon(const std::vector<int>& vRing)
{
    const Point3& base = vVertices[vRing.front()].point;
    Vector3 sum;
    for (const int v : vRing)
        sum.add(vVertices[v].point - base);
    const int hub = static_cast<int>(vVertices.size());
    const Point3 centre = base + sum / static_cast<double>(vRing.size());
    vVertices.push_back({centre, centre, 1});
    for (std::size_t i = 0; i < vRing.size(); ++i)
        addTriangle(vRing[i], vRing[(i + 1) % vRing.size()], hub);
}

void DualSurface::addTriangle(int a, int b, int c)
{
    vCorners.insert(vCorners.end(), {a, b, c});
}

} // namespace TARN_ZEF
