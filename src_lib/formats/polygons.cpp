#include "formats/polygons.h"

#include <algorithm>
#include <cmath>

namespace TARN_ZEF
{
namespace
{
struct Flat
{
    double u = 0.0;
    double v = 0.0;
};

// Twice the area of a triangle, positive if it turns to the left.
[[nodiscard]] double turn(const Flat& a, const Flat& b, const Flat& c) noexcept
{
    return (b.u - a.u) * (c.v - a.v) - (b.v - a.v) * (c.u - a.u);
}

// On the coordinate plane on which the face has the largest shadow, turned so that the shadow goes to the left;
// empty if it has none.
[[nodiscard]] std::vector<Flat> project(const std::vector<Point3>& vPoints,
                                        std::span<const std::uint32_t> polygon)
{
    const Point3& origin = vPoints[polygon[0]];
    Vector3 normal;
    for (std::size_t i = 1; i + 1 < polygon.size(); ++i)
    {
        const Vector3 a = vPoints[polygon[i]] - origin;
        const Vector3 b = vPoints[polygon[i + 1]] - origin;
        normal.add(Vector3(a.y() * b.z() - a.z() * b.y(), a.z() * b.x() - a.x() * b.z(),
                           a.x() * b.y() - a.y() * b.x()));
    }
    const double aNormal[3] = {normal.x(), normal.y(), normal.z()};
    if (!std::isfinite(normal.sqLength()) || normal.isDegenerate())
        return {};
    const int axis = normal.getMaxAbsIndex();
    std::vector<Flat> vFlat;
    vFlat.reserve(polygon.size());
    for (const std::uint32_t index : polygon)
    {
        const Vector3 d = vPoints[index] - origin;
        const double aXYZ[3] = {d.x(), d.y(), d.z()};
        Flat flat{aXYZ[(axis + 1) % 3], aXYZ[(axis + 2) % 3]};
        if (aNormal[axis] < 0.0)
            std::swap(flat.u, flat.v);
        vFlat.push_back(flat);
    }
    return vFlat;
}

[[nodiscard]] bool isConvex(const std::vector<Flat>& vFlat)
{
    const std::size_t n = vFlat.size();
    for (std::size_t i = 0; i < n; ++i)
    {
        // Against the first corner too: one that winds twice turns left everywhere.
        if (turn(vFlat[i], vFlat[(i + 1) % n], vFlat[(i + 2) % n]) < 0.0 ||
            turn(vFlat[0], vFlat[i], vFlat[(i + 1) % n]) < 0.0)
            return false;
    }
    return true;
}

class EarCutter
{
public:
    EarCutter(const std::vector<Flat>& vFlat_, std::span<const std::uint32_t> polygon_)
        : vFlat(vFlat_)
        , polygon(polygon_)
    {
        for (std::size_t i = 0; i < polygon.size(); ++i)
            vLeft.push_back(i);
    }

    void run(std::vector<std::uint32_t>& vCorners)
    {
        while (vLeft.size() > 3)
            cut(findEar(), vCorners);
        cut(1, vCorners);
    }

private:
    [[nodiscard]] std::size_t at(std::size_t i) const { return vLeft[i % vLeft.size()]; }

    [[nodiscard]] bool isEar(std::size_t i) const
    {
        const Flat& a = vFlat[at(i + vLeft.size() - 1)];
        const Flat& b = vFlat[at(i)];
        const Flat& c = vFlat[at(i + 1)];
        if (turn(a, b, c) <= 0.0)
            return false;
        return std::none_of(vLeft.begin(), vLeft.end(),
                            [&](std::size_t other) { return isWithin(vFlat[other], a, b, c); });
    }

    // On a side counts, so that no cut runs along another corner; a corner at the place of one of the
    // triangle's own does not, as where a face is joined to its hole by a double edge.
    [[nodiscard]] static bool isWithin(const Flat& p, const Flat& a, const Flat& b, const Flat& c)
    {
        const auto isSame = [&p](const Flat& q) { return p.u == q.u && p.v == q.v; };
        return !isSame(a) && !isSame(b) && !isSame(c) && turn(a, b, p) >= 0.0 && turn(b, c, p) >= 0.0 &&
               turn(c, a, p) >= 0.0;
    }

    // Corners on a straight line go when nothing better is left; in a face that crosses itself any corner does.
    [[nodiscard]] std::size_t findEar() const
    {
        for (std::size_t i = 1; i <= vLeft.size(); ++i)
        {
            if (isEar(i % vLeft.size()))
                return i % vLeft.size();
        }
        return 1;
    }

    void cut(std::size_t i, std::vector<std::uint32_t>& vCorners)
    {
        for (const std::size_t corner : {at(i + vLeft.size() - 1), at(i), at(i + 1)})
            vCorners.push_back(polygon[corner]);
        vLeft.erase(vLeft.begin() + static_cast<std::ptrdiff_t>(i));
    }

    const std::vector<Flat>& vFlat;
    std::span<const std::uint32_t> polygon;
    std::vector<std::size_t> vLeft; // corners that are not cut off yet, in order
};

} // namespace

void appendPolygon(const std::vector<Point3>& vPoints, std::span<const std::uint32_t> polygon,
                   std::vector<std::uint32_t>& vCorners)
{
    if (polygon.size() > 3 && polygon.size() <= MAX_EARS)
    {
        const std::vector<Flat> vFlat = project(vPoints, polygon);
        if (!vFlat.empty() && !isConvex(vFlat))
        {
            EarCutter(vFlat, polygon).run(vCorners);
            return;
        }
    }
    for (std::size_t i = 2; i < polygon.size(); ++i)
        vCorners.insert(vCorners.end(), {polygon[0], polygon[i - 1], polygon[i]});
}

void noteSmallFaces(TriangleData& data, std::uint64_t num)
{
    data.numSkipped = num;
    if (num > 0)
        data.vNotes.push_back("faces of fewer than three corners left out: " + std::to_string(num));
}

} // namespace TARN_ZEF
