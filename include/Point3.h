#ifndef ZEF_POINT3_H
#define ZEF_POINT3_H

#include "zef_export.h"

#include <iosfwd>

namespace TARN_ZEF
{
class Vector3;

// A point in space: three doubles, nothing else, so that vectors of it can be handed over as raw
// coordinates. Units are those of the caller's data. All comparisons are exact; there is no tolerance.
class ZEF_API Point3
{
public:
    constexpr Point3() noexcept = default;
    constexpr Point3(double x, double y, double z) noexcept
        : cx(x)
        , cy(y)
        , cz(z)
    {
    }

    [[nodiscard]] constexpr double x() const noexcept { return cx; }
    [[nodiscard]] constexpr double y() const noexcept { return cy; }
    [[nodiscard]] constexpr double z() const noexcept { return cz; }

    void xyz(double& x, double& y, double& z) const noexcept
    {
        x = cx;
        y = cy;
        z = cz;
    }
    void set(double x, double y, double z) noexcept
    {
        cx = x;
        cy = y;
        cz = z;
    }
    void set(const Point3& other) noexcept { *this = other; }

    // Adds the own coordinates, or w times each of them, onto three running sums.
    void addOwnCoords(double& x, double& y, double& z) const noexcept
    {
        x += cx;
        y += cy;
        z += cz;
    }
    void addWeightedOwnCoords(double w, double& x, double& y, double& z) const noexcept
    {
        x += w * cx;
        y += w * cy;
        z += w * cz;
    }

    // A NaN coordinate makes a point unequal to every point, itself included.
    [[nodiscard]] constexpr bool operator==(const Point3& other) const noexcept
    {
        return cx == other.cx && cy == other.cy && cz == other.cz;
    }
    [[nodiscard]] constexpr bool operator!=(const Point3& other) const noexcept { return !(*this == other); }

    // Strict lexicographic order on x, then y, then z.
    [[nodiscard]] constexpr bool operator<(const Point3& other) const noexcept
    {
        if (cx != other.cx)
            return cx < other.cx;
        if (cy != other.cy)
            return cy < other.cy;
        return cz < other.cz;
    }

    // Not the mirror of operator<: z is never looked at. Sort with operator<.
    [[nodiscard]] constexpr bool operator>(const Point3& other) const noexcept
    {
        if (cx != other.cx)
            return cx > other.cx;
        return cy > other.cy;
    }

    [[nodiscard]] inline Vector3 operator-(const Point3& other) const noexcept;
    [[nodiscard]] inline Point3 operator-(const Vector3& v) const noexcept;
    [[nodiscard]] inline Point3 operator+(const Vector3& v) const noexcept;

private:
    double cx = 0.0;
    double cy = 0.0;
    double cz = 0.0;
};

// Debug form: "Point3 (address): x, y, z".
ZEF_API std::ostream& operator<<(std::ostream& os, const Point3& p);

} // namespace TARN_ZEF

#include "Vector3.h"

#endif
