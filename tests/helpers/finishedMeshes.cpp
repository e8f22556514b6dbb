#include "helpers/finishedMeshes.h"

#include "geometry/tools.h"
#include "helpers/checkMesh.h"
#include "helpers/meshShapes.h"
#include "rmesh/RTop.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <set>

namespace TARN_ZEF
{
namespace
{
// Two triangles of the plane get a third and a fourth one on their common edges.
RMeshSource withFins(RMeshSource source)
{
    for (const std::size_t t : {20u, 61u})
    {
        const std::uint32_t a = source.vCorners[3 * t];
        const std::uint32_t b = source.vCorners[3 * t + 1];
        const auto tip = static_cast<std::uint32_t>(source.vPoints.size());
        source.vPoints.push_back(source.vPoints[a] + Vector3(0.4, 0.1, 0.9));
        source.vCorners.insert(source.vCorners.end(), {a, b, tip});
    }
    return source;
}

bool facesOutward(const RMesh& mesh, bool bClosed)
{
    const std::vector<Point3> v = getCorners(mesh);
    if (bClosed)
        return computeVolume(v) > 0.0;
    double z = 0.0;
    for (std::size_t i = 0; i < v.size(); i += 3)
        z += crossProduct(v[i + 1] - v[i], v[i + 2] - v[i]).z();
    return z > 0.0;
}
} // namespace

RMeshSource merged(RMeshSource a, const RMeshSource& b, const Vector3& shift)
{
    const auto first = static_cast<std::uint32_t>(a.vPoints.size());
    for (const Point3& p : b.vPoints)
        a.vPoints.push_back(p + shift);
    for (const std::uint32_t corner : b.vCorners)
        a.vCorners.push_back(first + corner);
    return a;
}

RMeshSource jittered(RMeshSource source, double amplitude, unsigned int seed)
{
    std::mt19937 rng(seed);
    const auto draw = [&] { return amplitude * (2.0 * static_cast<double>(rng()) / 4294967295.0 - 1.0); };
    for (Point3& p : source.vPoints)
    {
        const double dx = draw();
        const double dy = draw();
        p = p + Vector3(dx, dy, draw());
    }
    return source;
}

std::vector<FinishedMesh> finishedMeshes()
{
    const RMeshSource ball = jittered(cubeSource(8, true), 0.15, 1);
    return {{"ball", ball},
            {"torus", jittered(torusSource(36, 12), 0.15, 2)},
            {"cube", cubeSource(6, false)},
            {"flat plane", planeSource(12)},
            {"rough plane", jittered(planeSource(14), 0.2, 3)},
            {"plane with fins", withFins(jittered(planeSource(10), 0.15, 4))},
            {"two pieces", merged(ball, jittered(torusSource(24, 9), 0.1, 5), Vector3(40.0, 0.0, 0.0))},
            {"nothing", RMeshSource()}};
}

std::shared_ptr<Mesh> makeFinished(const RMeshSource& source)
{
    const PreparedTree tree;
    auto pMesh = std::make_shared<Mesh>(new RMesh(source));
    RTop(pMesh->getRMesh()).run();
    return pMesh;
}

std::size_t countBorderLoops(const RMesh& mesh)
{
    std::vector<REdge*> vRE;
    mesh.getDegN(DEG_BORDER, vRE);
    std::size_t numLoops = 0;
    for (; !vRE.empty(); ++numLoops)
    {
        std::vector<const Point3*> vWork{vRE.back()->getVtx0()};
        while (!vWork.empty())
        {
            const Point3* pVtx = vWork.back();
            vWork.pop_back();
            const auto it =
                std::partition(vRE.begin(), vRE.end(), [=](const REdge* p) { return !p->has(pVtx); });
            std::for_each(it, vRE.end(), [&](const REdge* p) { vWork.push_back(p->getOtherPoint(pVtx)); });
            vRE.erase(it, vRE.end());
        }
    }
    return numLoops;
}

Topology::Topology(const RMesh& mesh)
    : numBorderLoops(countBorderLoops(mesh))
    , bFacesOutward(facesOutward(mesh, numBorderLoops == 0))
{
}

void expectSound(const RMesh& mesh, const Topology& before)
{
    expectConsistent(mesh);
    std::set<std::array<unsigned int, 3>> sCorners;
    std::vector<RTriangle*> vT;
    mesh.getAliveT(vT);
    for (const RTriangle* pRT : vT)
    {
        std::array<unsigned int, 3> corners{};
        for (std::size_t i = 0; i < 3; ++i)
            corners[i] = RVertex::of(pRT->getCorner(static_cast<int>(i)))->number;
        std::sort(corners.begin(), corners.end());
        EXPECT_TRUE(sCorners.insert(corners).second) << "duplicate of triangle " << pRT->getNumber();
    }
    EXPECT_EQ(countDisagreeing(mesh), 0u);
    const Topology after(mesh);
    EXPECT_EQ(after.numBorderLoops, before.numBorderLoops);
    EXPECT_EQ(after.bFacesOutward, before.bFacesOutward);
}

double getEnergySum(const RMesh& mesh)
{
    double sum = 0.0;
    for (const REdge* pRE : mesh.getAllRE())
    {
        RTriangle* aT[2] = {nullptr, nullptr};
        if (!pRE->getTwoT(aT[0], aT[1], true))
            continue;
        Vector3 aN[2];
        for (int i = 0; i < 2; ++i)
        {
            bool bOK = false;
            aN[i] = getNormalVector(aT[i]->getCorner(0), aT[i]->getCorner(1), aT[i]->getCorner(2), bOK);
        }
        const double cosine =
            std::clamp(aT[0]->needFlip(aT[1]) ? -(aN[0] * aN[1]) : aN[0] * aN[1], -1.0, 1.0);
        sum += std::pow((1.0 - cosine) * std::sqrt(pRE->getSqLength()), 0.335);
    }
    return sum;
}

long getEulerNumber(const RMesh& mesh)
{
    std::vector<Point3*> vP;
    mesh.getPoints(vP);
    return static_cast<long>(vP.size()) - static_cast<long>(countEdges(mesh, -99)) +
           static_cast<long>(mesh.getNumT());
}

} // namespace TARN_ZEF
