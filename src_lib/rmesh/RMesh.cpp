#include "rmesh/RMesh.h"

#include "cmesh/CMesh.h"
#include "core/cancel.h"
#include "lattice/Bundle.h"
#include "lattice/BundleMap.h"
#include "lattice/CellIndex.h"
#include "parallel/parallelFor.h"
#include "rmesh/RPatch.h"

#include <algorithm>
#include <cmath>

namespace TARN_ZEF
{
namespace
{
const std::size_t MIN_TRIANGLES_PER_JOB = 10000;

// Takes one fan out of vAvail; false if it is not closed.
bool growUmbrella(const Point3* pCenter, std::vector<RTriangle*>& vAvail, std::vector<RTriangle*>& vUmbrella)
{
    std::vector<RTriangle*> vWorkspace{vAvail.back()};
    vAvail.pop_back();
    std::vector<REdge*> vTestRE;
    while (!vWorkspace.empty())
    {
        RTriangle* pRT = vWorkspace.back();
        vWorkspace.pop_back();
        vUmbrella.push_back(pRT);
        for (REdge* pRE : {pRT->getRE(0), pRT->getRE(1), pRT->getRE(2)})
        {
            if (!pRE->has(pCenter))
                continue;
            vTestRE.push_back(pRE);
            RTriangle* pNeigT = pRE->isInner() ? pRE->getNeigT(pRT) : nullptr;
            const auto it = std::find(vAvail.begin(), vAvail.end(), pNeigT);
            if (pNeigT == nullptr || it == vAvail.end())
                continue;
            std::swap(*it, vAvail.back());
            vAvail.pop_back();
            vWorkspace.push_back(pNeigT);
        }
    }
    std::sort(vTestRE.begin(), vTestRE.end(), ByCreationRE());
    const std::size_t numAll = vTestRE.size();
    vTestRE.erase(std::unique(vTestRE.begin(), vTestRE.end()), vTestRE.end());
    return 2 * vTestRE.size() == numAll;
}
} // namespace

// --- Construction ------------------------------------------------------------------------------------------

RMeshSource::RMeshSource(const CMesh& mesh)
    : cellSize(mesh.getAvgSpacing())
{
    std::vector<u64> vCCD;
    const BundleMap* pMap = mesh.getBundleMap();
    vCCD.reserve(pMap->size());
    vPoints.reserve(pMap->size());
    pMap->forEach(
        [&](u64 ccd, const Bundle* pBundle)
        {
            vCCD.push_back(ccd);
            vPoints.push_back(*pBundle->pPoint);
        });
    const CellIndex index(vCCD);
    std::vector<CTriangle*> vAliveT;
    mesh.getAliveT(vAliveT);
    vCorners.resize(3 * vAliveT.size());
    parallelFor(vAliveT.size(), MIN_TRIANGLES_PER_JOB,
                [&](std::size_t from, std::size_t to)
                {
                    for (std::size_t i = from; i < to; ++i)
                        for (int k = 0; k < 3; ++k)
                        {
                            const std::uint32_t rank = index.rank(vAliveT[i]->getCorner(k));
                            ASSEX_TEXT(rank != CellIndex::ABSENT,
                                       "it0!=vCCDVertex.end() && it1!=vCCDVertex.end() && "
                                       "it2!=vCCDVertex.end()");
                            vCorners[3 * i + static_cast<std::size_t>(k)] = rank;
                        }
                });
}

RMesh::RMesh(const CMesh* pCMesh)
    : RMesh(RMeshSource(*pCMesh))
{
}

RMesh::RMesh(const RMeshSource& source, std::vector<StorageBlock> vStorage)
    : RMeshRecords(source.cellSize)
{
    const std::size_t numPoints = source.vPoints.size();
    const std::size_t numTriangles = source.vCorners.size() / 3;
    initPools(numPoints, numTriangles, vStorage);
    std::vector<Point3*> vVertices;
    vVertices.reserve(numPoints);
    CancelStride cancel;
    for (const Point3& point : source.vPoints)
    {
        cancel.step();
        vVertices.push_back(makeVertex(point));
    }
    for (std::size_t i = 0; i < source.vCorners.size(); i += 3)
    {
        cancel.step();
        createT(vVertices[source.vCorners[i]], vVertices[source.vCorners[i + 1]],
                vVertices[source.vCorners[i + 2]]);
    }
}

RMesh::~RMesh()
{
    deletePatches();
}

// --- Around a vertex ---------------------------------------------------------------------------------------

bool RMesh::hasDisjointRings(const Point3* pA, const Point3* pB) const
{
    std::vector<REdge*> vRingA;
    std::vector<REdge*> vRingB;
    getRingRE(pA, vRingA);
    getRingRE(pB, vRingB);
    std::sort(vRingA.begin(), vRingA.end(), ByCreationRE());
    return std::none_of(vRingB.begin(), vRingB.end(),
                        [&](REdge* pRE)
                        { return std::binary_search(vRingA.begin(), vRingA.end(), pRE, ByCreationRE()); });
}

void RMesh::getUmbrellas(const Point3* pCenter, std::vector<std::vector<RTriangle*>>& vUmbrellas) const
{
    std::vector<RTriangle*> vAvail;
    getIncidentT(pCenter, vAvail);
    const std::vector<RTriangle*> vAll = vAvail;
    while (!vAvail.empty())
    {
        std::vector<RTriangle*> vUmbrella;
        if (growUmbrella(pCenter, vAvail, vUmbrella))
        {
            vUmbrellas.push_back(std::move(vUmbrella));
            continue;
        }
        warningMessage(ZEF_HERE, "Bad umbrella");
        vUmbrellas.assign(1, vAll);
        return;
    }
}

// --- The edge collapse -------------------------------------------------------------------------------------

void RMesh::exchangeCorner(Point3* pSrc, Point3* pTrg)
{
    if (REdge* pKillEdge = getRE(pSrc, pTrg))
    {
        ASSEX_TEXT(pKillEdge->isAlive(), "pKillEdge==0 || pKillEdge->isAlive()");
        while (pKillEdge->isAlive())
            pKillEdge->getTriangles()[0]->kill(this);
    }
    replaceVertex(pSrc, pTrg);
}

// --- The whole mesh ----------------------------------------------------------------------------------------

double RMesh::getArea() const
{
    double area = 0.0;
    for (const RTriangle* pRT : getAllT())
        if (pRT->isAlive())
            area += pRT->getArea();
    return area;
}

double RMesh::getAverageEdgeLength() const
{
    double sum = 0.0;
    std::size_t num = 0;
    for (const REdge* pRE : getAllRE())
    {
        if (!pRE->isAlive())
            continue;
        sum += std::sqrt(pRE->getSqLength());
        ++num;
    }
    return num > 0 ? sum / static_cast<double>(num) : -1.0;
}

void RMesh::fillNormals()
{
    parallelFor(getAllT().size(), MIN_TRIANGLES_PER_JOB,
                [this](std::size_t from, std::size_t to)
                {
                    bool bOK = false;
                    for (std::size_t i = from; i < to; ++i)
                        if (getAllT()[i]->isAlive())
                            getAllT()[i]->getNNV(bOK);
                });
}

} // namespace TARN_ZEF
