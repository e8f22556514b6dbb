// Members of RMesh that report and check; none changes the mesh.
#include "rmesh/RMesh.h"

#include "core/Histogram.h"
#include "geometry/tools.h"

#include <algorithm>
#include <map>
#include <string>

namespace TARN_ZEF
{
void RMesh::printStatistics(const std::string& s) const
{
    std::map<int, std::size_t> mDegreeCount;
    for (const REdge* pRE : getAllRE())
        if (pRE->isAlive())
            ++mDegreeCount[pRE->getDegree()];
    std::string text =
        "\nRMesh::printStatistics(" + s + ")\n NumTriangles: " + std::to_string(getNumT()) + "\n";
    for (const auto& [degree, num] : mDegreeCount)
        text += " Degree " + std::to_string(degree) + ": " + std::to_string(num) + "\n";
    printText(text);
}

void RMesh::printEnergy()
{
    Histogram histogram("DIHEDRAL ANGLES");
    for (const double limit : {1.0, 5.0, 10.0, 20.0, 30.0, 45.0, 60.0, 90.0, 120.0, 150.0, 170.0})
        histogram.addBin(limit);
    double energy = 0.0;
    std::size_t num = 0;
    for (const REdge* pRE : getAllRE())
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
    printText("avg. energy (" + toText(num > 0 ? energy / static_cast<double>(num) : 0.0) + ")\n");
}

void RMesh::checkDataStructures(const std::string& name) const
{
    std::size_t numAlive = 0;
    for (const RTriangle* pRT : getAllT())
    {
        if (!pRT->isAlive())
            continue;
        ++numAlive;
        ASSEX(!pRT->isCombDegenerate());
        for (int i = 0; i < 3; ++i)
        {
            const Point3* pA = pRT->getCorner(RTriangle::getNext(i));
            const Point3* pB = pRT->getCorner(RTriangle::getPrev(i));
            const REdge* pRE = pRT->getRE(i);
            ASSEX(getRE(pA, pB) == pRE);
            ASSEX(std::count(pRE->getTriangles().begin(), pRE->getTriangles().end(), pRT) == 1);
            std::vector<RTriangle*> vIncT;
            getIncidentT(pRT->getCorner(i), vIncT);
            ASSEX(std::count(vIncT.begin(), vIncT.end(), pRT) == 1);
        }
    }
    ASSEX_TEXT(numAlive == getNumT(), "numAlive == numAliveT");
    printText("RMesh::checkDataStructures(" + name + ") survived\n");
}

bool RMesh::checkNoDups(const std::string& name) const
{
    bool bClean = true;
    for (const REdge* pRE : getAllRE())
    {
        std::vector<const Point3*> vOppVtx;
        for (const RTriangle* pRT : pRE->getTriangles())
            vOppVtx.push_back(pRT->getThirdPoint(pRE->getVtx0(), pRE->getVtx1()));
        std::sort(vOppVtx.begin(), vOppVtx.end(), ByCreationVtx());
        bClean = bClean && std::adjacent_find(vOppVtx.begin(), vOppVtx.end()) == vOppVtx.end();
    }
    printText("RMesh::checkNoDups(" + name + ") " + (bClean ? "survived\n" : "has duplicate triangles\n"));
    return bClean;
}

bool RMesh::checkNoDegenerate(const std::string& name) const
{
    const auto num = std::count_if(getAllT().begin(), getAllT().end(),
                                   [](const RTriangle* pRT) { return pRT->isAlive() && pRT->isZeroArea(); });
    printText("RMesh::checkNoDegenerate(" + name + ") " +
              (num == 0 ? "survived" : "has " + std::to_string(num) + " degenerate triangles!") + "\n");
    return num == 0;
}

} // namespace TARN_ZEF
