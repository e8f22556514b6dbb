#include "rmesh/LaplacianSmoother.h"

#include "core/Progress.h"
#include "parallel/parallelFor.h"
#include "rmesh/RMesh.h"

#include <algorithm>

namespace TARN_ZEF
{
namespace
{
const std::size_t MIN_MEANS_PER_JOB = 5000;
const std::size_t MEANS_PER_REPORT = 100000;

void finishStep(Progress* pProgress)
{
    if (pProgress != nullptr)
        pProgress->setFinished(true);
}
} // namespace

LaplacianSmoother::LaplacianSmoother(RMesh* pRMesh_, bool bReport_)
    : pRMesh(pRMesh_)
    , bReport(bReport_)
{
}

void LaplacianSmoother::run(int numIterations)
{
    markBorder();
    listNeighbours();
    vPlaces.reserve(pRMesh->getNumVertices());
    pRMesh->forEachVertex([this](const Point3& point) { vPlaces.push_back(point); });
    vOldVtx2NewPnt.resize(vSources.size());
    for (int iteration = 0; iteration < numIterations; ++iteration)
        iterate(iteration);
}

Progress* LaplacianSmoother::startStep(const std::string& tag, u64 todo) const
{
    return bReport ? getRootProgress()->getChildProgressSetTodo(tag, todo) : nullptr;
}

void LaplacianSmoother::markBorder()
{
    Progress* pProgress = startStep("border", pRMesh->getAllRE().size());
    vIsBorder.assign(pRMesh->getNumVertices(), 0);
    for (const REdge* pRE : pRMesh->getAllRE())
    {
        if (pProgress != nullptr)
            pProgress->increment();
        if (!pRE->isBorder())
            continue;
        vIsBorder[RVertex::of(pRE->getVtx0())->number] = 1;
        vIsBorder[RVertex::of(pRE->getVtx1())->number] = 1;
    }
    finishStep(pProgress);
}

// Counting sort: edges come by creation, so the neighbours of each vertex do too.
void LaplacianSmoother::listNeighbours()
{
    Progress* pProgress = startStep("list", pRMesh->getAllRE().size());
    const auto forEachPull = [this](auto f)
    {
        for (const REdge* pRE : pRMesh->getAllRE())
        {
            const unsigned int number0 = RVertex::of(pRE->getVtx0())->number;
            const unsigned int number1 = RVertex::of(pRE->getVtx1())->number;
            if (vIsBorder[number0] == 0)
                f(number0, pRE->getVtx0(), number1);
            if (vIsBorder[number1] == 0)
                f(number1, pRE->getVtx1(), number0);
        }
    };
    std::vector<Point3*> vPulled(vIsBorder.size(), nullptr);
    std::vector<std::size_t> vEnd(vIsBorder.size() + 1, 0);
    forEachPull(
        [&](unsigned int number, Point3* pFrom, unsigned int)
        {
            vPulled[number] = pFrom;
            ++vEnd[number + 1];
        });
    for (std::size_t number = 0; number < vPulled.size(); ++number)
    {
        vEnd[number + 1] += vEnd[number];
        if (vPulled[number] == nullptr)
            continue;
        vSources.push_back(vPulled[number]);
        vFirst.push_back(vEnd[number]);
    }
    vFirst.push_back(vEnd.back());
    vNeighbours.resize(vEnd.back());
    forEachPull(
        [&](unsigned int number, Point3*, unsigned int neighbour)
        {
            // The start of a vertex moves up to its end.
            vNeighbours[vEnd[number]++] = neighbour;
        });
    finishStep(pProgress);
}

Point3 LaplacianSmoother::getMean(std::size_t source) const noexcept
{
    const std::size_t first = vFirst[source];
    const std::size_t last = vFirst[source + 1];
    double x = vPlaces[vNeighbours[first]].x();
    double y = vPlaces[vNeighbours[first]].y();
    double z = vPlaces[vNeighbours[first]].z();
    for (std::size_t i = first + 1; i < last; ++i)
        vPlaces[vNeighbours[i]].addOwnCoords(x, y, z);
    const auto num = static_cast<double>(last - first);
    return {x / num, y / num, z / num};
}

void LaplacianSmoother::iterate(int iteration)
{
    Progress* pProgress = startStep(smoothingTag(iteration), vNeighbours.size());
    for (std::size_t from = 0; from < vSources.size(); from += MEANS_PER_REPORT)
    {
        const std::size_t to = std::min(from + MEANS_PER_REPORT, vSources.size());
        parallelFor(to - from, MIN_MEANS_PER_JOB,
                    [this, from](std::size_t jobFrom, std::size_t jobTo)
                    {
                        for (std::size_t i = from + jobFrom; i < from + jobTo; ++i)
                            vOldVtx2NewPnt[i] = {vSources[i], getMean(i)};
                    });
        if (pProgress != nullptr)
            pProgress->increment(vFirst[to] - vFirst[from]);
    }
    pRMesh->moveVertices(vOldVtx2NewPnt);
    rereadPlaces();
    finishStep(pProgress);
}

// A vertex may have stayed where it was.
void LaplacianSmoother::rereadPlaces()
{
    parallelFor(vSources.size(), MIN_MEANS_PER_JOB,
                [this](std::size_t from, std::size_t to)
                {
                    for (std::size_t i = from; i < to; ++i)
                        vPlaces[RVertex::of(vSources[i])->number] = *vSources[i];
                });
}

} // namespace TARN_ZEF
