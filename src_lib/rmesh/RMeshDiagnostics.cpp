// Members of RMesh that report and check; none changes the mesh.
#include "rmesh/RMesh.h"

#include "core/Histogram.h"
#include "geometry/tools.h"

#include <algorithm>
#include <iostream>
#include <map>

namespace TARN_ZEF
{
void RMesh::printStatistics(const std::string& s) const
{
    std::map<int, std::size_t> mDegreeCount;
    for (const REdge* pRE : vAllRE)
        if (pRE->isAlive())
            ++mDegreeCount[pRE->getDegree()];
    std::cout << "\nRMesh::printStatistics(" << s << ")\n NumTriangles: " << numAliveT << "\n";
    for (const auto& [degree, num] : mDegreeCount)
        std::cout << " Degree " << degree << ": " << num << "\n";
    std::cout << std::flush;
}

void RMesh::printEnergy()
{
    Histogram histogram("DIHEDRAL ANGLES");
    for (const double limit : {1.0, 5.0, 10.0, 20.0, 30.0, 45.0, 60.0, 90.0, 120.0, 150.0, 170.0})
        histogram.addBin(limit);
    double energy = 0.0;
    std::size_t num = 0;
    for (const REdge* pRE : vAllRE)
    {
        RTriangle* pRT0 = nullptr;
        RTriangle* pRT1 = nullptr;
        if (!pRE->getTwoT(pRT0, pRT1, true))
            continue;
        bool bOK0 = false;
        bool bOK1 = false;
        const Vector3 nnv0 = pRT0->getNNV(bOK0);
        Vector3 nnv1 = pRT1->getNNV(bOK1);
        if (!bOK0 || !bOK1)
            continue;
        if (pRT0->needFlip(pRT1))
            nnv1.mul(-1.0);
        histogram.add(getAngleDegree(nnv0, nnv1));
        energy += 1.0 - nnv0 * nnv1;
        ++num;
    }
    histogram.print();
    std::cout << "avg. energy (" << toText(num > 0 ? energy / static_cast<double>(num) : 0.0) << ")"
              << std::endl;
}

void RMesh::checkDataStructures(const std::string& name) const
{
    std::size_t numAlive = 0;
    for (const RTriangle* pRT : vAllRT)
    {
        if (!pRT->isAlive())
            continue;
        ++numAlive;
        ASSEX(!pRT->isCombDegenerate());
        for (int i = 0; i < 3; ++i)
        {
            const Point3* pA = pRT->aCorner[RTriangle::getNext(i)];
            const Point3* pB = pRT->aCorner[RTriangle::getPrev(i)];
            const REdge* pRE = pRT->aRE[i];
            ASSEX(getRE(pA, pB) == pRE);
            ASSEX(std::count(pRE->vRT.begin(), pRE->vRT.end(), pRT) == 1);
            std::vector<RTriangle*> vIncT;
            getIncidentT(pRT->aCorner[i], vIncT);
            ASSEX(std::count(vIncT.begin(), vIncT.end(), pRT) == 1);
        }
    }
    ASSEX(numAlive == numAliveT);
    std::cout << "RMesh::checkDataStructures(" << name << ") survived" << std::endl;
}

bool RMesh::checkNoDups(const std::string& name) const
{
    bool bClean = true;
    for (const REdge* pRE : vAllRE)
    {
        std::vector<const Point3*> vOppVtx;
        for (const RTriangle* pRT : pRE->vRT)
            vOppVtx.push_back(pRT->getThirdPoint(pRE->p0, pRE->p1));
        std::sort(vOppVtx.begin(), vOppVtx.end(), ByCreationVtx());
        bClean = bClean && std::adjacent_find(vOppVtx.begin(), vOppVtx.end()) == vOppVtx.end();
    }
    std::cout << "RMesh::checkNoDups(" << name << ") " << (bClean ? "survived" : "has duplicate triangles")
              << std::endl;
    return bClean;
}

bool RMesh::checkNoDegenerate(const std::string& name) const
{
    const auto num = std::count_if(vAllRT.begin(), vAllRT.end(),
                                   [](const RTriangle* pRT) { return pRT->isAlive() && pRT->isZeroArea(); });
    std::cout << "RMesh::checkNoDegenerate(" << name << ") ";
    if (num == 0)
        std::cout << "survived" << std::endl;
    else
        std::cout << "has " << num << " degenerate triangles!" << std::endl;
    return num == 0;
}

} // namespace TARN_ZEF
