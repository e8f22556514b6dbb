#include "Vector3.h"

#include "core/definitions.h"

#include <algorithm>
#include <limits>
#include <ostream>
#include <string>

namespace TARN_ZEF
{
static_assert(sizeof(Vector3) == 3 * sizeof(double));

int Vector3::getMaxAbsIndex() const noexcept
{
    const double absX = std::fabs(cx);
    const double absY = std::fabs(cy);
    const double absZ = std::fabs(cz);
    if (absX >= absY && absX >= absZ)
        return 0;
    return absY >= absZ ? 1 : 2;
}

double Vector3::getMaxAbsComponent() const noexcept
{
    const double components[] = {cx, cy, cz};
    return std::fabs(components[getMaxAbsIndex()]);
}

double Vector3::getMaxComponent() const noexcept
{
    return std::max({cx, cy, cz});
}

double Vector3::getCartesian(int i) const
{
    switch (i)
    {
    case 0:
        return cx;
    case 1:
        return cy;
    case 2:
        return cz;
    default:
        printErrorText("getCartesian for i=" + std::to_string(i) + "\n");
        return std::numeric_limits<double>::max();
    }
}

Vector3 normalize(const Vector3& v)
{
    const double len = v.length();
    if (len > 0.0)
        return v / len;
    printErrorText("\n\n** warning: normalize(const Vector3& other), Null length vector!\n");
    return {};
}

std::ostream& operator<<(std::ostream& os, const Vector3& v)
{
    return os << "Vector3: " << v.x() << ", " << v.y() << ", " << v.z();
}

} // namespace TARN_ZEF
