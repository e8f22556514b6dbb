#include "formats/coordinateForm.h"

#include "files/plyOutput.h"

#include <algorithm>

namespace TARN_ZEF
{
namespace
{
constexpr double LEAST_DETAIL = 1e-3;

[[nodiscard]] bool isFloat(double value) noexcept
{
    // Not equal only if it is lost, or NaN, which a float holds as well.
    return !(static_cast<double>(static_cast<float>(value)) != value) || value != value;
}
} // namespace

bool areFloatsEnough(const std::vector<Point3>& vPoints, double spacing)
{
    if (!(spacing > 0.0))
        return std::all_of(vPoints.begin(), vPoints.end(),
                           [](const Point3& p)
                           { return isFloat(p.x()) && isFloat(p.y()) && isFloat(p.z()); });
    std::vector<const Point3*> vPointers;
    vPointers.reserve(vPoints.size());
    for (const Point3& p : vPoints)
        vPointers.push_back(&p);
    return doFloatsTell(vPointers, LEAST_DETAIL * spacing);
}

} // namespace TARN_ZEF
