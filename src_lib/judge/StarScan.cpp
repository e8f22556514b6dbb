#include "judge/StarScan.h"

#include <algorithm>
#include <numeric>

namespace TARN_ZEF
{
namespace
{
constexpr std::uint32_t NONE = ~std::uint32_t{0};

int triangleOf(std::uint32_t corner)
{
    return static_cast<int>(corner / 3);
}
} // namespace

void StarScan::reset(std::size_t maxPlaces)
{
    numVertices = numEdges = numNonManifoldEdges = numDisagreeingEdges = numNonManifoldVertices = 0;
    vBorder.clear();
    vJoints.clear();
    faults = FaultList(maxPlaces);
}

void StarScan::lookAt(const JudgedMesh& mesh, const std::vector<int>& vVertices,
                      const std::pair<std::uint32_t, std::uint32_t>* pCorners, std::size_t numCorners)
{
    ++numVertices;
    collectSpokes(vVertices, pCorners, numCorners);
    vParent.resize(numCorners);
    std::iota(vParent.begin(), vParent.end(), 0u);
    const int vertex = static_cast<int>(pCorners->first);
    bool bBorder = false;
    for (std::size_t from = 0; from < vSpokes.size();)
    {
        std::size_t to = from + 1;
        while (to < vSpokes.size() && vSpokes[to].end == vSpokes[from].end)
            ++to;
        uniteAcrossEdge(&vSpokes[from], to - from);
        bBorder = bBorder || to - from == 1;
        if (vertex < vSpokes[from].end)
            judgeEdge(mesh, &vSpokes[from], to - from);
        from = to;
    }
    judgeFans(mesh, pCorners, numCorners);
    if (!bBorder)
        return;
    vBorderOfFan.assign(numCorners, NONE);
    for (std::size_t i = 0; i < vSpokes.size(); ++i)
        if ((i == 0 || vSpokes[i - 1].end != vSpokes[i].end) &&
            (i + 1 == vSpokes.size() || vSpokes[i + 1].end != vSpokes[i].end))
            joinBorder(vSpokes[i]);
}

void StarScan::collectSpokes(const std::vector<int>& vVertices,
                             const std::pair<std::uint32_t, std::uint32_t>* pCorners, std::size_t numCorners)
{
    vSpokes.clear();
    for (std::uint32_t i = 0; i < numCorners; ++i)
    {
        const std::uint32_t corner = pCorners[i].second;
        const std::uint32_t next = JudgedMesh::getNext(corner);
        const std::uint32_t last = JudgedMesh::getNext(next);
        vSpokes.push_back({vVertices[next], corner, i, true});
        vSpokes.push_back({vVertices[last], last, i, false});
    }
    std::sort(vSpokes.begin(), vSpokes.end(),
              [](const Spoke& a, const Spoke& b)
              { return a.end != b.end ? a.end < b.end : a.halfEdge < b.halfEdge; });
}

void StarScan::judgeEdge(const JudgedMesh& mesh, const Spoke* pFirst, std::size_t num)
{
    ++numEdges;
    if (num == 1)
    {
        vBorder.push_back(pFirst->halfEdge);
        addEdgeFault(mesh, MeshFaultKind::BORDER, pFirst, num);
    }
    else if (num > 2)
    {
        ++numNonManifoldEdges;
        addEdgeFault(mesh, MeshFaultKind::NON_MANIFOLD_EDGE, pFirst, num);
    }
    else if (pFirst[0].bLeaves == pFirst[1].bLeaves)
    {
        ++numDisagreeingEdges;
        addEdgeFault(mesh, MeshFaultKind::ORIENTATION, pFirst, num);
    }
}

void StarScan::addEdgeFault(const JudgedMesh& mesh, MeshFaultKind kind, const Spoke* pFirst, std::size_t num)
{
    if (!faults.hasRoom(kind))
        return;
    const int other = num > 1 ? triangleOf(pFirst[1].halfEdge) : -1;
    faults.add({kind, triangleOf(pFirst->halfEdge), other, mesh.getMiddle(pFirst->halfEdge)});
}

void StarScan::uniteAcrossEdge(const Spoke* pFirst, std::size_t num)
{
    for (std::size_t i = 1; i < num; ++i)
    {
        const std::uint32_t a = findRoot(pFirst->triangle);
        const std::uint32_t b = findRoot(pFirst[i].triangle);
        vParent[std::max(a, b)] = std::min(a, b);
    }
}

void StarScan::joinBorder(const Spoke& spoke)
{
    std::uint32_t& first = vBorderOfFan[findRoot(spoke.triangle)];
    if (first == NONE)
        first = spoke.halfEdge;
    else
        vJoints.emplace_back(first, spoke.halfEdge);
}

void StarScan::judgeFans(const JudgedMesh& mesh, const std::pair<std::uint32_t, std::uint32_t>* pCorners,
                         std::size_t numCorners)
{
    // The first triangle is the root of its fan.
    std::uint32_t i = 1;
    while (i < numCorners && findRoot(i) == 0)
        ++i;
    if (i == numCorners)
        return;
    ++numNonManifoldVertices;
    const std::uint32_t corner = pCorners->second;
    faults.add({MeshFaultKind::NON_MANIFOLD_VERTEX, triangleOf(corner), triangleOf(pCorners[i].second),
                mesh.getPoint(corner)});
}

std::uint32_t StarScan::findRoot(std::uint32_t triangle)
{
    while (vParent[triangle] != triangle)
    {
        vParent[triangle] = vParent[vParent[triangle]];
        triangle = vParent[triangle];
    }
    return triangle;
}

} // namespace TARN_ZEF
