#include "Point3.h"

#include <ostream>

namespace TARN_ZEF
{
// Vectors of points are handed out as raw coordinates.
static_assert(sizeof(Point3) == 3 * sizeof(double));

std::ostream& operator<<(std::ostream& os, const Point3& p)
{
    return os << "Point3 (" << static_cast<const void*>(&p) << "): " << p.x() << ", " << p.y() << ", "
              << p.z();
}

} // namespace TARN_ZEF
