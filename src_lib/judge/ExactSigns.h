#ifndef ZEF_EXACTSIGNS_H
#define ZEF_EXACTSIGNS_H

#include <array>

namespace TARN_ZEF
{
// The coordinates of a point, for access by axis.
using Place = std::array<double, 3>;

// On which side points lie, without rounding: a bound on the error of plain double arithmetic settles nearly all
// questions, exact arithmetic the rest.
//
// Exact       for all finite coordinates. Where each is 0 or between 2^-297 and 2^338 in magnitude, the exact
//             path works on expansions of doubles, in about a microsecond; else on whole numbers of any size, in
//             some ten. Plain arithmetic decides only for coordinates up to 2^60, as bounds for what underflow
//             takes reach no further: setLargest() tells.
// Threads:    queries from any thread.
// Source:     J. R. Shewchuk, Adaptive precision floating-point arithmetic and fast robust geometric predicates,
//             1997, for the bounds; rounded up, as differences come first here too. We have two stages, not four.
class ExactSigns
{
public:
    static constexpr double LARGEST_PLAIN = 1152921504606846976.0; // 2^60

    // The largest magnitude among the coordinates that will be asked about.
    explicit ExactSigns(double largest);

    // 1 if d lies on the side of the triangle abc from which its corners run counter-clockwise, -1 on the other, 0 in
    // its plane.
    [[nodiscard]] int getSide(const Place& a, const Place& b, const Place& c, const Place& d) const;

    // Seen along the axis, from its positive end: 1 if abc runs counter-clockwise, -1 clockwise, 0 on one line.
    [[nodiscard]] int getTurn(int axis, const Place& a, const Place& b, const Place& c) const;

    // The first axis along which the triangle is not seen as a line; -1 if its corners lie on one line in space.
    [[nodiscard]] int findViewAxis(const Place& a, const Place& b, const Place& c) const;

    // What underflow can take from a polynomial of up to four differences of coordinates; infinite where no bound
    // is known.
    [[nodiscard]] double getUnderflowBound() const { return underflowBound; }

private:
    double underflowBound;
};

} // namespace TARN_ZEF

#endif
