#include "remesh/EdgeSplitter.h"

#include "core/largeVectors.h"
#include "remesh/EdgeFlipper.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace TARN_ZEF
{
namespace
{
constexpr int NONE = HalfEdgeMesh::NONE;
constexpr int MAX_PASSES = 40;
constexpr double SQ_TOO_LONG = 16.0 / 9.0; // in wanted lengths, squared
} // namespace

// From 0; NONE if h is not too long, or must stay.
int EdgeSplitter::classOf(int h) const
{
    if (mesh.feature(h) != 0)
        return NONE;
    const double size = work.sizeOf(h);
    const double sqRatio = sqDistance(mesh.point(mesh.from(h)), mesh.point(mesh.to(h))) / (size * size);
    if (!(sqRatio > SQ_TOO_LONG))
        return NONE;
    return std::clamp(std::ilogb(sqRatio), 0, NUM_CLASSES - 1);
}

void EdgeSplitter::enqueue(int h)
{
    const int edge = mesh.isEdge(h) ? h : mesh.partner(h);
    const int lengthClass = classOf(edge);
    if (lengthClass != NONE)
        vQueues[lengthClass].push_back(edge);
}

void EdgeSplitter::splitLong()
{
    mesh.forEachEdge([this](int h) { enqueue(h); });
    for (int i = NUM_CLASSES - 1; i >= 0; --i)
        for (int pass = 0; pass < MAX_PASSES && !vQueues[i].empty() && !work.isFull(); ++pass)
        {
            std::vector<int> vTouched = splitClass(i);
            flipper.flipFrom(vTouched, EdgeFlipper::Aim::SHAPE, &vTouched);
            for (const int h : vTouched)
                enqueue(h);
        }
    for (std::vector<int>& vQueue : vQueues)
        vQueue.clear();
}

// Those that are in the queue now. Returns the half-edges of the new triangles.
std::vector<int> EdgeSplitter::splitClass(int i)
{
    const std::vector<int> vQueue = std::move(vQueues[i]);
    vQueues[i].clear();
    std::vector<int> vTouched;
    for (const int h : vQueue)
    {
        const int lengthClass = classOf(h);
        if (lengthClass != i || work.isFull())
        {
            // Flips may have changed it since; what got longer comes back with what was touched.
            if (lengthClass != NONE && lengthClass < i)
                vQueues[lengthClass].push_back(h);
            continue;
        }
        work.makeRoom();
        const int v = work.splitInMiddle(h);
        if (v == NONE)
            continue;
        mesh.forEachOutgoing(v,
                             [&vTouched](int g)
                             {
                                 makeRoomFor(vTouched, 2);
                                 vTouched.push_back(g);
                                 vTouched.push_back(HalfEdgeMesh::next(g));
                             });
    }
    return vTouched;
}

} // namespace TARN_ZEF
