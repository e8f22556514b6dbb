#ifndef ZEF_LINECROSSINGS_H
#define ZEF_LINECROSSINGS_H

#include "outer/HullLattice.h"

#include <array>
#include <cstddef>
#include <vector>

namespace TARN_ZEF
{
// Where the lines of a lattice along one axis cross triangles.
//
// Invariant:  a line crosses a closed surface as often in as out. Sides are told exactly, and a line that meets an edge or
//             a corner counts as moved a little, for all triangles alike.
// Cost        16 bytes a crossing, 4 a line.
class LineCrossings
{
public:
    struct Crossing
    {
        double at;    // on the line, in cells
        int triangle; // turned over (~) where the line leaves what the triangle bounds

        [[nodiscard]] int getTriangle() const noexcept { return triangle < 0 ? ~triangle : triangle; }
        [[nodiscard]] bool enters() const noexcept { return triangle >= 0; }
    };
    struct Range
    {
        const Crossing* pBegin;
        const Crossing* pEnd;
        [[nodiscard]] const Crossing* begin() const noexcept { return pBegin; }
        [[nodiscard]] const Crossing* end() const noexcept { return pEnd; }
        [[nodiscard]] bool empty() const noexcept { return pBegin == pEnd; }
    };

    // vPlaces: corners in cells of the lattice. Three consecutive entries of vCorners are one triangle.
    LineCrossings(const HullLattice& lattice_, int axis_, const std::vector<Place>& vPlaces_,
                  const std::vector<int>& vCorners_);

    // In order along the line.
    [[nodiscard]] Range onLine(std::size_t line) const noexcept
    {
        return {vCrossings.data() + vOffsets[line], vCrossings.data() + vOffsets[line + 1]};
    }
    // Between p and the next point of its line.
    [[nodiscard]] Range after(const HullLattice::Cell& p) const noexcept;

private:
    struct Found
    {
        std::size_t line;
        Crossing crossing;
    };

    void cross(int t, const std::vector<Place>& vPlaces, const std::vector<int>& vCorners,
               std::vector<Found>& vFound) const;
    void crossRow(int t, const std::array<Place, 3>& corners, int row, std::vector<Found>& vFound) const;
    [[nodiscard]] int sideOf(const Place& from, const Place& to, const Place& p) const;
    void sortIn(const std::vector<Found>& vFound);

    const HullLattice& lattice;
    const int axis;
    const int right; // the axes that number lines
    const int up;
    ExactSigns signs;
    std::vector<unsigned> vOffsets; // by line
    std::vector<Crossing> vCrossings;
};

} // namespace TARN_ZEF

#endif
