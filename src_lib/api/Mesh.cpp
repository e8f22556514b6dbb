#include "Mesh.h"

#include "rmesh/RMesh.h"

namespace TARN_ZEF
{
Mesh::Mesh(RMesh* pRMesh_)
    : pRMesh(pRMesh_)
{
}

Mesh::~Mesh()
{
    delete pRMesh;
    pRMesh = nullptr;
}

RMesh* Mesh::getRMesh()
{
    return pRMesh;
}

const RMesh* Mesh::getRMesh() const
{
    return pRMesh;
}

void Mesh::getPoints(std::vector<Point3*>& vPoints) const
{
    pRMesh->getPoints(vPoints);
}

void Mesh::getTriangles(std::vector<Point3*>& vTriCorners) const
{
    pRMesh->getTriangles(vTriCorners);
}

void Mesh::getVertexIndexData(std::vector<Point3*>& vPoints, std::vector<int>& vTriangleCorners) const
{
    constexpr int ABSENT = -1;
    getPoints(vPoints);
    std::vector<int> vIndexOfNumber(pRMesh->getNumVertices(), ABSENT);
    for (std::size_t i = 0; i < vPoints.size(); ++i)
        vIndexOfNumber[RVertex::of(vPoints[i])->number] = static_cast<int>(i);
    std::vector<Point3*> vCorners;
    getTriangles(vCorners);
    vTriangleCorners.reserve(vCorners.size());
    for (const Point3* pCorner : vCorners)
    {
        const int index = vIndexOfNumber[RVertex::of(pCorner)->number];
        ASSEX_TEXT(index != ABSENT, "q_it!=mVertexToIndex.end()");
        vTriangleCorners.push_back(index);
    }
}

double Mesh::getAverageEdgeLength() const
{
    return pRMesh->getAverageEdgeLength();
}

void Mesh::printStatistics(const std::string& s) const
{
    pRMesh->printStatistics(s);
}

} // namespace TARN_ZEF
