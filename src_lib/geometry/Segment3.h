#ifndef ZEF_SEGMENT3_H
#define ZEF_SEGMENT3_H

#include "Point3.h"
#include "core/definitions.h"

#include <iosfwd>

namespace TARN_ZEF
{
// A straight piece between two points, in order start then end. A default segment has all six coordinates
// at the lowest double, which marks it as unset.
class Segment3
{
public:
    Segment3() noexcept = default;
    Segment3(const Point3& source_, const Point3& target_) noexcept
        : source(source_)
        , target(target_)
    {
    }

    [[nodiscard]] Point3 getSource() const noexcept { return source; }
    [[nodiscard]] Point3 getTarget() const noexcept { return target; }
    [[nodiscard]] double getSqLen() const noexcept;
    // Exchanges the ends.
    void swap() noexcept;

    // Equal ends in either orientation.
    [[nodiscard]] bool operator==(const Segment3& other) const noexcept;

private:
    Point3 source = {LOWEST_DBL, LOWEST_DBL, LOWEST_DBL};
    Point3 target = {LOWEST_DBL, LOWEST_DBL, LOWEST_DBL};
};

// Debug form: "Segment3 (address): " and both points.
std::ostream& operator<<(std::ostream& os, const Segment3& segment);

} // namespace TARN_ZEF

#endif
