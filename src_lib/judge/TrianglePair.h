#ifndef ZEF_TRIANGLEPAIR_H
#define ZEF_TRIANGLEPAIR_H

#include "judge/ExactSigns.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace TARN_ZEF
{
// Three numbers of corners; equal numbers are equal coordinates.
using CornerNumbers = std::array<std::uint32_t, 3>;

// Two triangles, neither of them flat, and whether they share a point besides their common corner or edge.
//
// What they share is convex. Beyond one common corner it therefore holds a piece of a ray from there, and beyond
// a common edge it holds a triangle on that edge: both can be told from the corners' sides of planes and lines.
// Rounded arithmetic that errs to the safe side settles the usual cases, and those in one plane, first.
class TrianglePair
{
public:
    // pPlaces by corner number; kept, as signs is, for the life of the pair.
    TrianglePair(const ExactSigns& signs_, const Place* pPlaces, const CornerNumbers& first,
                 const CornerNumbers& second);

    // How many corners are common, 0 to 3.
    [[nodiscard]] std::size_t getNumCommon() const { return numCommon; }
    // Requires fewer than 3 common corners.
    [[nodiscard]] bool isIntersecting() const;

private:
    using Corners = std::array<const Place*, 3>; // the common ones first, in the same order in both
    using Sides = std::array<int, 3>;

    void sortCorners(const Place* pPlaces, const CornerNumbers& first, const CornerNumbers& second);

    [[nodiscard]] bool meetBeyondEdge() const;
    [[nodiscard]] bool openWide() const;

    [[nodiscard]] bool meetBeyondCorner() const;
    [[nodiscard]] bool partAtCorner() const;
    [[nodiscard]] bool coneIsHit(const Corners& cone, const Corners& other, int sideFirst,
                                 int sideSecond) const;
    [[nodiscard]] bool conesOverlapInView() const;
    [[nodiscard]] bool isInCone(int axis, const Corners& cone, const Place& p) const;

    [[nodiscard]] bool meet() const;
    [[nodiscard]] bool partAlongCentres() const;
    [[nodiscard]] Sides getSides(const Corners& plane, const Corners& other) const;
    [[nodiscard]] bool edgeHits(const Corners& triangle, const Corners& other, const Sides& sides) const;
    [[nodiscard]] bool segmentHits(const Corners& triangle, const Place& above, const Place& below) const;
    [[nodiscard]] bool overlapInView() const;
    [[nodiscard]] bool edgeParts(int axis, const Corners& triangle, const Corners& other) const;

    const ExactSigns& signs;
    Corners a = {};
    Corners b = {};
    std::size_t numCommon = 0;
};

} // namespace TARN_ZEF

#endif
