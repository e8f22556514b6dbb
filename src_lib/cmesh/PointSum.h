// Means of positions, and steps towards them.
#ifndef ZEF_POINTSUM_H
#define ZEF_POINTSUM_H

#include "Point3.h"
#include "Vector3.h"

namespace TARN_ZEF
{
// A running mean of positions.
struct PointSum
{
    double x = 0.0, y = 0.0, z = 0.0;
    double count = 0.0;

    void add(const Point3& p)
    {
        p.addOwnCoords(x, y, z);
        count += 1.0;
    }
    void add(const PointSum& other)
    {
        x += other.x;
        y += other.y;
        z += other.z;
        count += other.count;
    }
    [[nodiscard]] Point3 getMean() const { return {x / count, y / count, z / count}; }
};

// to, or the point at maxMove from from on the way there.
[[nodiscard]] inline Point3 limitMove(const Point3& from, const Point3& to, double maxMove)
{
    const Vector3 move = to - from;
    const double len = move.length();
    return len > maxMove ? from + move * (maxMove / len) : to;
}

} // namespace TARN_ZEF

#endif
