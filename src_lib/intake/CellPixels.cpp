#include "intake/CellPixels.h"

#include "core/largeVectors.h"
#include "parallel/sortMT2.h"

namespace TARN_ZEF
{
// Neighbouring rows hit the same cells: what goes here need not be sorted with all the others. Of a large triangle that
// would take long, and is left to compact().
void CellPixels::endTriangle()
{
    if (vPixels.size() - firstOfTriangle > MOST_OF_TRIANGLE)
        return;
    const auto begin = vPixels.begin() + static_cast<std::ptrdiff_t>(firstOfTriangle);
    std::sort(begin, vPixels.end());
    vPixels.erase(std::unique(begin, vPixels.end()), vPixels.end());
}

std::vector<RCDPoint> CellPixels::take()
{
    compact();
    return std::move(vPixels);
}

void CellPixels::compact()
{
    sortMT(vPixels.begin(), vPixels.end());
    const auto isSameCell = [](const RCDPoint& a, const RCDPoint& b) { return a.first == b.first; };
    vPixels.erase(std::unique(vPixels.begin(), vPixels.end(), isSameCell), vPixels.end());
}

void CellPixels::makeRoom()
{
    compact();
    firstOfTriangle = vPixels.size();
    mostPixels = std::max(FEWEST_TO_COMPACT, 2 * vPixels.size());
    makeRoomFor(vPixels, mostPixels - vPixels.size());
}

} // namespace TARN_ZEF
