#include "geometry/Segment3.h"

#include "geometry/tools.h"

#include <ostream>
#include <utility>

namespace TARN_ZEF
{
double Segment3::getSqLen() const noexcept
{
    return sqDistance(source, target);
}

void Segment3::swap() noexcept
{
    std::swap(source, target);
}

bool Segment3::operator==(const Segment3& other) const noexcept
{
    return (source == other.source && target == other.target) ||
           (source == other.target && target == other.source);
}

std::ostream& operator<<(std::ostream& os, const Segment3& segment)
{
    return os << "Segment3 (" << static_cast<const void*>(&segment) << "): " << segment.getSource() << ","
              << segment.getTarget();
}

} // namespace TARN_ZEF
