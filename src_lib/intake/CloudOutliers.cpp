// The part of Cloud that tells why a cloud may have no surface: a few points so far off that all others fall together.
#include "intake/Cloud.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "core/numbers.h"
#include "intake/SNode.h"

namespace TARN_ZEF
{
namespace
{
// A gap of this part of the extent with at most this part of the points beyond it.
constexpr double LEAST_GAP = 0.5;
constexpr double MOST_OUTLIERS = 0.1;

double coordinateOf(const Point3& p, int axis)
{
    return axis == 0 ? p.x() : axis == 1 ? p.y() : p.z();
}

struct Gap
{
    double width = 0.0;
    std::size_t place = 0; // of the first node behind it
};

Gap findWidestGap(const std::vector<const SNode*>& vSorted, int axis)
{
    Gap widest;
    for (std::size_t i = 1; i < vSorted.size(); ++i)
    {
        const double width =
            coordinateOf(vSorted[i]->getPoint(), axis) - coordinateOf(vSorted[i - 1]->getPoint(), axis);
        if (width > widest.width)
            widest = {width, i};
    }
    return widest;
}

double countPoints(const std::vector<const SNode*>& vNodes, std::size_t from, std::size_t to)
{
    double num = 0.0;
    for (std::size_t i = from; i < to; ++i)
        num += std::max(vNodes[i]->getNumPoints(), 0);
    return num;
}

std::vector<const SNode*> sortAlong(int axis, const std::vector<SNode>& vNodes)
{
    std::vector<const SNode*> vSorted;
    vSorted.reserve(vNodes.size());
    for (const SNode& node : vNodes)
        vSorted.push_back(&node);
    std::sort(vSorted.begin(), vSorted.end(),
              [axis](const SNode* pA, const SNode* pB)
              { return coordinateOf(pA->getPoint(), axis) < coordinateOf(pB->getPoint(), axis); });
    return vSorted;
}

// The sorted nodes along the axis on which they reach farthest.
struct Row
{
    explicit Row(const std::vector<SNode>& vNodes)
    {
        for (int i = 0; i < 3 && !vNodes.empty(); ++i)
        {
            std::vector<const SNode*> vOther = sortAlong(i, vNodes);
            const double reach =
                coordinateOf(vOther.back()->getPoint(), i) - coordinateOf(vOther.front()->getPoint(), i);
            if (reach <= extent)
                continue;
            extent = reach;
            axis = i;
            vSorted = std::move(vOther);
        }
    }

    std::vector<const SNode*> vSorted; // none if all are at one place
    int axis = 0;
    double extent = 0.0;
};
} // namespace

void Cloud::tellOutliers(const std::vector<SNode>& vNodes) const
{
    const Row row(vNodes);
    if (row.vSorted.empty())
        return;
    const Gap gap = findWidestGap(row.vSorted, row.axis);
    const double numBelow = countPoints(row.vSorted, 0, gap.place);
    const double numAbove = countPoints(row.vSorted, gap.place, row.vSorted.size());
    const double numFew = std::min(numBelow, numAbove);
    if (gap.width < LEAST_GAP * row.extent || numFew < 1.0 ||
        numFew > MOST_OUTLIERS * static_cast<double>(numInputPoints))
        return;
    const SNode* const pFar = numBelow < numAbove ? row.vSorted.front() : row.vSorted.back();
    const Point3 place = frame.leave(pFar->getPoint());
    warningMessage("Outliers", toText(numFew) + " of " + std::to_string(numInputPoints) +
                                   " points lie far from all others, so that these fall together: one at " +
                                   toText(place.x()) + ", " + toText(place.y()) + ", " + toText(place.z()) +
                                   ", by a gap of " + toText(gap.width) + "; remove them");
}

} // namespace TARN_ZEF
