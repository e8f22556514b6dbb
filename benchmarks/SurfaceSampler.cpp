#include "SurfaceSampler.h"

#include <array>
#include <cmath>
#include <map>
#include <numbers>

namespace TARN_ZEF
{
namespace
{
constexpr double RADIUS = 2.2;      // of the ball around all shapes
constexpr double LEAST_STEP = 5e-4; // thinner than all walls
constexpr int LINES_ALONG_AXIS = 500;
constexpr int LINES_FOR_AREA = 150'000;

double uniform(std::mt19937_64& rng)
{
    return static_cast<double>(rng() >> 11) * 0x1p-53;
}

double normal(std::mt19937_64& rng)
{
    return std::sqrt(-2.0 * std::log(1.0 - uniform(rng))) * std::cos(2.0 * std::numbers::pi * uniform(rng));
}

Point3 at(const Point3& from, const Point3& direction, double t)
{
    return Point3(from.x() + t * direction.x(), from.y() + t * direction.y(), from.z() + t * direction.z());
}

// Refuses points too close to an earlier one.
class DartBoard
{
public:
    explicit DartBoard(double gap_)
        : gap(gap_)
    {
    }
    bool add(const Point3& p)
    {
        const Key key = {floorOf(p.x()), floorOf(p.y()), floorOf(p.z())};
        for (int i = 0; i < 27; ++i)
        {
            const auto it = mCells.find({key[0] + i % 3 - 1, key[1] + i / 3 % 3 - 1, key[2] + i / 9 - 1});
            if (it == mCells.end())
                continue;
            for (const Point3& q : it->second)
                if (std::hypot(p.x() - q.x(), p.y() - q.y(), p.z() - q.z()) < gap)
                    return false;
        }
        mCells[key].push_back(p);
        return true;
    }

private:
    using Key = std::array<int, 3>;
    [[nodiscard]] int floorOf(double x) const { return static_cast<int>(std::floor(x / gap)); }

    double gap;
    std::map<Key, std::vector<Point3>> mCells;
};
} // namespace

SurfaceSampler::SurfaceSampler(const ClosedShape& shape_)
    : shape(shape_)
    , area(findArea())
    , volume(findVolume())
{
}

void SurfaceSampler::cross(const Point3& from, const Point3& direction, std::vector<double>& vAt) const
{
    vAt.clear();
    double t = -RADIUS;
    double f = shape.distance(at(from, direction, t));
    while (t < RADIUS)
    {
        const double tNext = t + std::max(LEAST_STEP, std::abs(f));
        const double fNext = shape.distance(at(from, direction, tNext));
        if ((f < 0.0) != (fNext < 0.0))
        {
            double low = t;
            double high = tNext;
            for (int i = 0; i < 30; ++i)
            {
                const double mid = 0.5 * (low + high);
                ((shape.distance(at(from, direction, mid)) < 0.0) == (f < 0.0) ? low : high) = mid;
            }
            vAt.push_back(low);
        }
        t = tNext;
        f = fNext;
    }
}

void SurfaceSampler::crossRandomLine(std::mt19937_64& rng, std::vector<Point3>& vPoints) const
{
    const double z = 2.0 * uniform(rng) - 1.0;
    const double angle = 2.0 * std::numbers::pi * uniform(rng);
    const double r = std::sqrt(1.0 - z * z);
    const Point3 direction(r * std::cos(angle), r * std::sin(angle), z);
    // Any two directions across; the offset is even on a disc.
    const Point3 u(-std::sin(angle), std::cos(angle), 0.0);
    const Point3 v(-z * std::cos(angle), -z * std::sin(angle), r);
    const double offset = RADIUS * std::sqrt(uniform(rng));
    const double turn = 2.0 * std::numbers::pi * uniform(rng);
    const Point3 from = at(at(Point3(0, 0, 0), u, offset * std::cos(turn)), v, offset * std::sin(turn));
    std::vector<double> vAt;
    cross(from, direction, vAt);
    for (const double t : vAt)
        vPoints.push_back(at(from, direction, t));
}

double SurfaceSampler::findArea() const
{
    std::mt19937_64 rng(12345);
    std::vector<Point3> vPoints;
    for (int i = 0; i < LINES_FOR_AREA; ++i)
        crossRandomLine(rng, vPoints);
    return static_cast<double>(vPoints.size()) / LINES_FOR_AREA * 2.0 * std::numbers::pi * RADIUS * RADIUS;
}

double SurfaceSampler::findVolume() const
{
    const double step = 2.0 * RADIUS / LINES_ALONG_AXIS;
    double sum = 0.0;
    std::vector<double> vAt;
    for (int i = 0; i < LINES_ALONG_AXIS; ++i)
        for (int k = 0; k < LINES_ALONG_AXIS; ++k)
        {
            cross(Point3((i + 0.5) * step - RADIUS, (k + 0.5) * step - RADIUS, 0.0), Point3(0, 0, 1), vAt);
            for (std::size_t a = 0; a + 1 < vAt.size(); a += 2)
                sum += vAt[a + 1] - vAt[a];
        }
    return sum * step * step;
}

double SurfaceSampler::getSpacing(std::size_t num) const
{
    return std::sqrt(area / static_cast<double>(num));
}

double SurfaceSampler::getVolume(std::size_t num) const
{
    const double spacing = getSpacing(num);
    return volume / (spacing * spacing * spacing);
}

std::vector<Point3> SurfaceSampler::sample(const Wish& wish) const
{
    std::mt19937_64 rng(wish.seed);
    const double spacing = getSpacing(wish.num);
    DartBoard board(wish.gap > 0.0 ? wish.gap : 1.0);
    std::vector<Point3> vPoints;
    std::vector<Point3> vFound;
    while (vPoints.size() < wish.num)
    {
        vFound.clear();
        crossRandomLine(rng, vFound);
        for (const Point3& found : vFound)
        {
            Point3 p = at(Point3(0, 0, 0), found, 1.0 / spacing);
            if (wish.gap > 0.0 && !board.add(p))
                continue;
            if (wish.noise > 0.0)
                p = Point3(p.x() + wish.noise * normal(rng), p.y() + wish.noise * normal(rng),
                           p.z() + wish.noise * normal(rng));
            vPoints.push_back(p);
        }
    }
    vPoints.resize(wish.num);
    return vPoints;
}

} // namespace TARN_ZEF
