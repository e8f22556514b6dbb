#ifndef ZEF_UNITEACROSSEDGES_H
#define ZEF_UNITEACROSSEDGES_H

#include "cmesh/TriangleUnion.h"
#include "parallel/JobGroup.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace TARN_ZEF
{
// In how many parts a number of edges is worth to be looked at.
[[nodiscard]] inline std::size_t getNumUnionParts(std::size_t numEdges)
{
    constexpr std::size_t minEdges = 100000; // of a part
    constexpr std::size_t partsPerThread = 4;
    const auto numThreads = static_cast<std::size_t>(getNumThreads());
    const std::size_t wanted = std::min(numEdges / minEdges, partsPerThread * numThreads);
    return wanted < 2 || numThreads < 2 || isWorkerThread() ? 1 : wanted;
}

// Joins triangles across edges. Edges and triangles are made together, so in each part of the edges nearly all
// join triangles of the same part of the triangles: the workers unite these, the rest follows on the caller's
// thread. The sets are the same for every number of parts.
//
// turns     of numT triangles
// numParts  see getNumUnionParts()
// visit(part, from, to, join)  calls join(Joint) for those edges of [from, to) that join; must write to nothing
//           that another part does
// Returns a triangle of each joint that contradicted the earlier ones: the sets that no orientation fits are
// those of these triangles.
template <typename Visit>
std::vector<std::uint32_t> uniteAcrossEdges(TriangleUnion& turns, std::size_t numT, std::size_t numEdges,
                                            std::size_t numParts, Visit visit)
{
    constexpr std::size_t JOINTS_PER_BATCH = 256;
    struct Part
    {
        std::vector<Joint> vAcross; // with triangles of other parts
        std::vector<std::uint32_t> vTwisted;
    };
    std::vector<Part> vParts(numParts);
    const auto unite = [&turns](const Joint& joint, std::vector<std::uint32_t>& vTwisted)
    {
        if (!turns.unite(joint))
            vTwisted.push_back(joint.first);
    };
    const auto visitPart = [&](std::size_t k)
    {
        const std::size_t low = numT * k / numParts;
        const std::size_t high = numT * (k + 1) / numParts;
        const auto isOwn = [=](std::uint32_t number) { return number >= low && number < high; };
        Part& part = vParts[k];
        // Joints are gathered first: what they are read from comes from memory all at once then.
        std::array<Joint, JOINTS_PER_BATCH> batch;
        std::size_t num = 0;
        const auto uniteBatch = [&]
        {
            for (std::size_t i = 0; i < num; ++i)
                if (isOwn(batch[i].first) && isOwn(batch[i].second))
                    unite(batch[i], part.vTwisted);
                else
                    part.vAcross.push_back(batch[i]);
            num = 0;
        };
        visit(k, numEdges * k / numParts, numEdges * (k + 1) / numParts,
              [&](const Joint& joint)
              {
                  batch[num++] = joint;
                  if (num == batch.size())
                      uniteBatch();
              });
        uniteBatch();
    };
    if (numParts == 1)
        visitPart(0);
    else
    {
        JobGroup jobs;
        for (std::size_t k = 0; k < numParts; ++k)
            jobs.push([&visitPart, k] { visitPart(k); });
        jobs.finish();
    }
    std::vector<std::uint32_t> vTwisted;
    for (const Part& part : vParts)
    {
        vTwisted.insert(vTwisted.end(), part.vTwisted.begin(), part.vTwisted.end());
        for (const Joint& joint : part.vAcross)
            unite(joint, vTwisted);
    }
    return vTwisted;
}

} // namespace TARN_ZEF

#endif
