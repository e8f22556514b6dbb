#ifndef ZEF_CELLPIXELS_H
#define ZEF_CELLPIXELS_H

#include "Point3.h"
#include "core/definitions.h"
#include "lattice/Calc.h"

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
// A point of the surface and the cell that it stands for.
using RCDPoint = std::pair<RCD, Point3>;

// Collects the pixels of the insides of triangles, of which the lowest one of each cell counts. Those that cannot count
// go on the way, so that the memory is that of the cells and not that of all pixels, which are several times as many
// and come back with every triangle at the cell.
//
// Threads:    one; the sorts use the pool
// Cost:       n log n
class CellPixels
{
public:
    // The pixels that follow are those of one triangle, until endTriangle().
    void startTriangle() noexcept { firstOfTriangle = vPixels.size(); }
    void add(RCD rcd, const Point3& point)
    {
        if (vPixels.size() >= mostPixels)
            makeRoom();
        vPixels.emplace_back(rcd, point);
    }
    void endTriangle();

    // One for each cell, ascending by cell. Leaves nothing behind.
    [[nodiscard]] std::vector<RCDPoint> take();

private:
    static constexpr std::size_t FEWEST_TO_COMPACT = std::size_t{1} << 17;
    static constexpr std::size_t MOST_OF_TRIANGLE = std::size_t{1} << 14;

    void compact();
    void makeRoom();

    std::vector<RCDPoint> vPixels;
    std::size_t firstOfTriangle = 0;
    std::size_t mostPixels = FEWEST_TO_COMPACT; // before they are compacted
};

} // namespace TARN_ZEF

#endif
