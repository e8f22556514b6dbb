#ifndef ZEF_VECTOR3_H
#define ZEF_VECTOR3_H

#include "Point3.h"
#include "zef_export.h"

#include <cmath>
#include <iosfwd>

namespace TARN_ZEF
{
// A direction or difference of points: three doubles, nothing else. A name that ends in nv or NV is a
// normal vector, meant to have length 1.
class ZEF_API Vector3
{
public:
    constexpr Vector3() noexcept = default;
    constexpr Vector3(double x, double y, double z) noexcept
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

    void add(const Vector3& other) noexcept { set(cx + other.cx, cy + other.cy, cz + other.cz); }
    void sub(const Vector3& other) noexcept { set(cx - other.cx, cy - other.cy, cz - other.cz); }
    void mul(double factor) noexcept { set(cx * factor, cy * factor, cz * factor); }
    // The divisor is not checked.
    void div(double divisor) noexcept { set(cx / divisor, cy / divisor, cz / divisor); }

    [[nodiscard]] constexpr double sqLength() const noexcept { return cx * cx + cy * cy + cz * cz; }
    [[nodiscard]] double length() const noexcept { return std::sqrt(sqLength()); }

    // True only if all three components are exactly 0.0.
    [[nodiscard]] constexpr bool isDegenerate() const noexcept { return cx == 0.0 && cy == 0.0 && cz == 0.0; }
    // Whether the squared length lies within 0.01 of 1.
    [[nodiscard]] bool isNV() const noexcept { return 0.01 > std::fabs(1.0 - sqLength()); }

    // Index (0 x, 1 y, 2 z) and value of the component of largest magnitude; ties go to the lower index.
    [[nodiscard]] int getMaxAbsIndex() const noexcept;
    [[nodiscard]] double getMaxAbsComponent() const noexcept;
    // The largest signed component.
    [[nodiscard]] double getMaxComponent() const noexcept;
    // Component by index; any index but 0, 1, 2 is reported on the error stream and gives the largest double.
    [[nodiscard]] double getCartesian(int i) const;

    // Dot product.
    [[nodiscard]] constexpr double operator*(const Vector3& other) const noexcept
    {
        return cx * other.cx + cy * other.cy + cz * other.cz;
    }
    [[nodiscard]] constexpr Vector3 operator*(double factor) const noexcept
    {
        return {cx * factor, cy * factor, cz * factor};
    }
    [[nodiscard]] constexpr Vector3 operator/(double divisor) const noexcept
    {
        return {cx / divisor, cy / divisor, cz / divisor};
    }
    [[nodiscard]] constexpr Vector3 operator+(const Vector3& other) const noexcept
    {
        return {cx + other.cx, cy + other.cy, cz + other.cz};
    }

private:
    double cx = 0.0;
    double cy = 0.0;
    double cz = 0.0;
};

// v divided by its length. A null vector gives (0,0,0) and a line on the error stream, no exception:
// test isDegenerate() on the result.
[[nodiscard]] ZEF_API Vector3 normalize(const Vector3& v);

// Debug form: "Vector3: x, y, z".
ZEF_API std::ostream& operator<<(std::ostream& os, const Vector3& v);

inline Vector3 Point3::operator-(const Point3& other) const noexcept
{
    return {cx - other.cx, cy - other.cy, cz - other.cz};
}
inline Point3 Point3::operator-(const Vector3& v) const noexcept
{
    return {cx - v.x(), cy - v.y(), cz - v.z()};
}
inline Point3 Point3::operator+(const Vector3& v) const noexcept
{
    return {cx + v.x(), cy + v.y(), cz + v.z()};
}

} // namespace TARN_ZEF

#endif
