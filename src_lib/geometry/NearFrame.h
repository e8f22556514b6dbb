#ifndef ZEF_NEARFRAME_H
#define ZEF_NEARFRAME_H

#include "Point3.h"
#include "geometry/isFinite.h"

#include <vector>

namespace TARN_ZEF
{
// A frame near points that lie far from the origin, as map coordinates do: what is worked out in it depends neither on
// where the points lie nor on how many digits their distance from the origin takes.
//
// Its own origin is a multiple, on each axis, of a power of two that is 4 to 8 times the extent of the points. So points
// that are no farther from the origin than twice their extent are in their own frame, and points that are shifted by a
// multiple of that power get the frame that is shifted by it.
//
// Invariant:  enter() is exact for the points that the frame was made for; a coordinate that would lose a digit by
//             it, just beyond half that power, keeps the frame of its axis at the origin.
class NearFrame
{
public:
    NearFrame() = default; // the frame of the points themselves

    // forEachPoint(f)  calls f(const Point3&) for each of the points; those that are not finite do not count
    // size             a further length that the frame is made wide for, such as a spacing
    template <typename ForEach>
    [[nodiscard]] static NearFrame around(const ForEach& forEachPoint, double size = 0.0);
    [[nodiscard]] static NearFrame around(const std::vector<Point3>& vPoints, double size = 0.0);

    // Whether it is another frame than that of the points.
    [[nodiscard]] bool isShifted() const noexcept
    {
        return !(aOrigin[0] == 0 && aOrigin[1] == 0 && aOrigin[2] == 0);
    }

    // Into the frame, and back.
    [[nodiscard]] Point3 enter(const Point3& p) const noexcept;
    [[nodiscard]] Point3 leave(const Point3& p) const noexcept;
    void enter(std::vector<Point3>& vPoints) const noexcept;
    void leave(std::vector<Point3>& vPoints) const noexcept;
    // The points in the frame: themselves if it is their own, else their copies in vCopies.
    [[nodiscard]] const std::vector<Point3>& enter(const std::vector<Point3>& vPoints,
                                                   std::vector<Point3>& vCopies) const;

private:
    struct Extents
    {
        void include(const Point3& p) noexcept;
        [[nodiscard]] double getLargest() const noexcept;

        Point3 low;
        Point3 high;
        bool bAny = false;
    };

    NearFrame(const Extents& extents, double size) noexcept;
    void keepAxesThatLoseDigits(const Point3& p) noexcept;

    double aOrigin[3] = {0.0, 0.0, 0.0};
};

template <typename ForEach>
NearFrame NearFrame::around(const ForEach& forEachPoint, double size)
{
    Extents extents;
    forEachPoint([&extents](const Point3& p) { extents.include(p); });
    NearFrame frame(extents, size);
    if (frame.isShifted())
        forEachPoint([&frame](const Point3& p) { frame.keepAxesThatLoseDigits(p); });
    return frame;
}

} // namespace TARN_ZEF

#endif
