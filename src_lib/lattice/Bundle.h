#ifndef ZEF_BUNDLE_H
#define ZEF_BUNDLE_H

#include "Point3.h"
#include "core/definitions.h"

namespace TARN_ZEF
{
// The record of one occupied lattice cell.
//
// Ownership:  the point belongs to whoever made the bundle: the cloud for the cells of the input, the
//             combinatorial mesh for the extra cells that it adds.
struct Bundle
{
    explicit Bundle(Point3* pPoint_) noexcept
        : pPoint(pPoint_)
    {
    }

    Point3* pPoint;             // the representative point of the cell
    u64 ccd = 0;                // the cell; set by the creator
    int forbiddenDirection = 0; // mask of axes in which the cell may not be thinned away; -1: cell lost
    unsigned char bFlag = 0;    // weight 0 to 32 while cells slide
};

} // namespace TARN_ZEF

#endif
