#ifndef ZEF_POINTNUMBERING_H
#define ZEF_POINTNUMBERING_H

#include "Point3.h"

#include <cstddef>
#include <vector>

namespace TARN_ZEF
{
// Numbers points, told apart by their address, from 0 in the order in which they come first: what an indexed
// file needs of a list of triangle corners.
//
// Invariant:  the order of the numbers never depends on the addresses.
// Cost:       constant per point; an open hash table, at most half full.
class PointNumbering
{
public:
    PointNumbering();

    // The number of a point; one that is new gets the next.
    [[nodiscard]] unsigned int getNumber(const Point3* pPoint);

    // The points by their numbers.
    [[nodiscard]] const std::vector<const Point3*>& getPoints() const noexcept { return vPoints; }

private:
    [[nodiscard]] std::size_t findSlot(const Point3* pPoint) const noexcept;
    void grow();

    std::vector<const Point3*> vPoints;
    std::vector<unsigned int> vSlots; // number + 1 of the point in the slot; 0: empty
    int numSlotBits;
};

} // namespace TARN_ZEF

#endif
