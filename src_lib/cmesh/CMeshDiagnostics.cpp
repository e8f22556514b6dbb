// The self-checks of CMesh: they print and change nothing.
#include "cmesh/CMesh.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>
#include <string>

namespace TARN_ZEF
{
namespace
{
// Whether two triangles of one edge have equal keys, key(third corner).
template <typename Key>
bool hasTwins(const CEdge& edge, Key key)
{
    for (std::uint32_t i = 1; i < edge.vCT.size(); ++i)
        for (std::uint32_t k = 0; k < i; ++k)
            if (key(edge.vCT[i]->getThirdCCD(edge.v0, edge.v1)) ==
                key(edge.vCT[k]->getThirdCCD(edge.v0, edge.v1)))
                return true;
    return false;
}

template <typename Key>
bool hasTwins(const CMesh& mesh, Key key)
{
    bool bTwins = false;
    mesh.forEachEdge([&](const CEdge* pCE) { bTwins = bTwins || hasTwins(*pCE, key); });
    return bTwins;
}
} // namespace

void CMesh::statistics(const std::string& name) const
{
    std::vector<u64> vCCD;
    getUsedCCDs(vCCD);
    std::map<int, std::size_t> mDegreeCount;
    forEachEdge(
        [&](const CEdge* pCE)
        {
            if (!pCE->isOrphan())
                ++mDegreeCount[pCE->getDegree()];
        });
    std::string text = "Statistics (\"" + name + "\"):\n  Vertices: " + std::to_string(vCCD.size()) +
                       "\n  Triangles:  " + std::to_string(getNumAliveT()) + "\n";
    for (const auto& [degree, num] : mDegreeCount)
        text += "  Edges with degree " + std::to_string(degree) + ":\t" + std::to_string(num) + "\n";
    printText(text);
}

bool CMesh::checkNoDups(const std::string& name) const
{
    const bool bClean = !hasTwins(*this, [](u64 third) { return third; });
    if (!bClean)
        printText(name + ": DUPLICATE TRIANGLE\n");
    return bClean;
}

bool CMesh::checkNoAdjGeomDups(const std::string& name) const
{
    const bool bClean = !hasTwins(*this, [this](u64 third) { return getAvgPoint(third); });
    if (!bClean)
        printText(name + ": ADJACENT GEOMETRIC DUPLICATE\n");
    return bClean;
}

bool CMesh::checkNoDegenerate(const std::string& name) const
{
    const auto num =
        std::count_if(getAllT().begin(), getAllT().end(),
                      [this](const CTriangle* pCT) { return pCT->isAlive() && pCT->isDegenerate(this); });
    if (num != 0)
        printText(name + ": " + std::to_string(num) + " degenerate triangles\n");
    return num == 0;
}

bool CMesh::hasNaN() const
{
    return std::any_of(getAllT().begin(), getAllT().end(),
                       [this](const CTriangle* pCT)
                       {
                           if (!pCT->isAlive())
                               return false;
                           double x = 0.0, y = 0.0, z = 0.0;
                           for (int i = 0; i < 3; ++i)
                               pCT->getVtx(this, i)->addOwnCoords(x, y, z);
                           return std::isnan(x + y + z);
                       });
}

} // namespace TARN_ZEF
