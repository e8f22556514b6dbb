// The part of Smooth that finds a plane for each node.
#include "intake/Smooth.h"

#include <algorithm>

#include "geometry/tools.h"
#include "parallel/parallelFor.h"
#include "parallel/sortMT2.h"

namespace TARN_ZEF
{
namespace
{
constexpr std::size_t MIN_CHUNK = 5000;

// Degrees: normals that agree, that may be averaged, and the bend of a crease (folded back less this one
// counts as flat again, since a normal's sign means nothing).
constexpr double GOOD_ANGLE = 15.0;
constexpr double AVERAGE_ANGLE = 20.0;
constexpr double CREASE_ANGLE = 20.0;
constexpr double HALF_TURN = 180.0;

constexpr std::size_t MIN_TRUSTED = 4;
constexpr int MIN_GOOD = 4;
// Reach of the wider search, in cells.
constexpr int SEARCH_REACH = 2;

// Second moments of vectors.
struct Moments
{
    double xx = 0.0, xy = 0.0, xz = 0.0, yy = 0.0, yz = 0.0, zz = 0.0;

    void add(const Vector3& v) noexcept
    {
        xx += v.x() * v.x();
        xy += v.x() * v.y();
        xz += v.x() * v.z();
        yy += v.y() * v.y();
        yz += v.y() * v.z();
        zz += v.z() * v.z();
    }
};

// Across the least-squares plane through the origin; not of length 1, zero if there is no such plane. The
// equations are solved for the component with the largest determinant. NaN is fatal.
Vector3 getNormalOfFit(const Moments& m)
{
    const double detX = m.yy * m.zz - m.yz * m.yz;
    const double detY = m.xx * m.zz - m.xz * m.xz;
    const double detZ = m.xx * m.yy - m.xy * m.xy;
    if (detX >= detY && detX >= detZ)
        return {detX, m.xz * m.yz - m.xy * m.zz, m.xy * m.yz - m.xz * m.yy};
    if (detY >= detX && detY >= detZ)
        return {m.xz * m.yz - m.xy * m.zz, detY, m.xy * m.xz - m.yz * m.xx};
    ASSEX_TEXT(detZ >= detX && detZ >= detY, "detZ>=detX && detZ>=detY");
    return {m.xy * m.yz - m.xz * m.yy, m.xy * m.xz - m.yz * m.xx, detZ};
}

double getMinAreaOf(double cellSize)
{
    return (cellSize / 5.0) * (cellSize / 5.0);
}
} // namespace

double Smooth::getMinArea(double firstCellSize)
{
    static const double minArea = getMinAreaOf(firstCellSize);
    return minArea;
}

void Smooth::estimateNNV()
{
    parallelFor(vNodes.size(), MIN_CHUNK,
                [this](std::size_t from, std::size_t to)
                {
                    for (std::size_t i = from; i < to; ++i)
                        estimateNNVatCentroid(vNodes[i], getLinks(i));
                });
    const std::vector<std::uint32_t> vRelNodes = sortOutUnreliable();
    // One after the other: a repaired normal helps the next one.
    const AngleLimit limit(AVERAGE_ANGLE);
    std::vector<Vector3> vVecs;
    for (const std::uint32_t node : vRelNodes)
        averageNNV(node, limit, vVecs);
    parallelFor(vRelNodes.size(), MIN_CHUNK / 10,
                [&](std::size_t from, std::size_t to)
                {
                    std::vector<std::uint32_t> vGathered;
                    for (std::size_t i = from; i < to; ++i)
                        if (!vNodes[vRelNodes[i]].isTrusted())
                            searchNNV(vRelNodes[i], vGathered);
                });
    markCreases(CREASE_ANGLE);
}

bool Smooth::estimateNNVatCentroid(SNode& node, std::span<const std::uint32_t> neighbours) const
{
    if (neighbours.size() < 2)
        return false;
    const double minArea = bOwnMinArea ? getMinAreaOf(cellSize) : getMinArea(cellSize);
    const Vector3 first = vNodes[neighbours[0]].getPoint() - node.getPoint();
    Moments moments;
    moments.add(first);
    double area = 0.0;
    for (const std::uint32_t link : neighbours.subspan(1))
    {
        const Vector3 vec = vNodes[link].getPoint() - node.getPoint();
        moments.add(vec);
        area += 0.5 * crossProduct(first, vec).length();
    }
    if (area < minArea)
        return false;
    const Vector3 n = getNormalOfFit(moments);
    if (n.isDegenerate())
        return false;
    node.setPlane(normalizeInline(n), area);
    return true;
}

std::vector<std::uint32_t> Smooth::sortOutUnreliable()
{
    const AngleLimit limit(GOOD_ANGLE);
    std::vector<char> vGood(vNodes.size());
    parallelFor(vNodes.size(), MIN_CHUNK,
                [&](std::size_t from, std::size_t to)
                {
                    for (std::size_t i = from; i < to; ++i)
                        vGood[i] = isGoodPlane(i, limit) ? 1 : 0;
                });
    // The number in the high half decides between equal areas.
    std::vector<std::pair<double, u64>> vRelNodes;
    vRelNodes.reserve(vNodes.size() - static_cast<std::size_t>(std::count(vGood.begin(), vGood.end(), 1)));
    for (std::size_t i = 0; i < vNodes.size(); ++i)
    {
        if (vGood[i] != 0)
            vNodes[i].setTrusted();
        else
            vRelNodes.emplace_back(vNodes[i].getArea(), u64{vNodes[i].getNumber()} << 32 | i);
    }
    sortMT(vRelNodes.begin(), vRelNodes.end());
    std::vector<std::uint32_t> vResult;
    vResult.reserve(vRelNodes.size());
    for (const auto& [area, numberAndNode] : vRelNodes)
        vResult.push_back(static_cast<std::uint32_t>(numberAndNode));
    return vResult;
}

bool Smooth::isGoodPlane(std::size_t node, const AngleLimit& limit) const
{
    if (!vNodes[node].hasPlane())
        return false;
    const Vector3& nnv = vNodes[node].getNNV();
    int numGood = 0;
    int numBad = 0;
    for (const std::uint32_t link : getLinks(node))
        if (vNodes[link].hasPlane())
            ++(limit.isBelow(nnv, vNodes[link].getNNV()) ? numGood : numBad);
    return numGood >= MIN_GOOD && numGood > 2 * numBad;
}

bool Smooth::averageNNV(std::size_t node, const AngleLimit& limit, std::vector<Vector3>& vVecs)
{
    const std::span<const std::uint32_t> neighbours = getLinks(node);
    if (neighbours.size() < MIN_TRUSTED)
        return false;
    vVecs.clear();
    for (const std::uint32_t link : neighbours)
        if (vNodes[link].isTrusted())
            vVecs.push_back(vNodes[link].getNNV());
    if (vVecs.size() < MIN_TRUSTED)
        return false;
    // The first normal is only the reference for the sign, the second counts twice: the limits are tuned to
    // this mean.
    static const AngleLimit rightAngle(90.0);
    Vector3 avgVec = vVecs[1];
    for (std::size_t i = 1; i < vVecs.size(); ++i)
    {
        if (rightAngle.isBelow(vVecs[i], vVecs[0]))
            avgVec.add(vVecs[i]);
        else
            avgVec.sub(vVecs[i]);
    }
    if (avgVec.isDegenerate())
        return false;
    avgVec = normalizeInline(avgVec);
    for (const Vector3& vec : vVecs)
        if (limit.isAbove(vec, avgVec))
            return false;
    vNodes[node].setPlane(avgVec, DBL_MAX);
    return true;
}

bool Smooth::searchNNV(std::size_t node, std::vector<std::uint32_t>& vGathered)
{
    u64 baseX, baseY, baseZ;
    splitRCD(vNodes[node].getRCD(), baseX, baseY, baseZ);
    vGathered.clear();
    for (int dx = -SEARCH_REACH; dx <= SEARCH_REACH; ++dx)
        for (int dy = -SEARCH_REACH; dy <= SEARCH_REACH; ++dy)
        {
            const RCD mid = makeRCD(baseX + static_cast<u64>(dx), baseY + static_cast<u64>(dy), baseZ);
            auto it = std::lower_bound(vNodes.begin(), vNodes.end(), mid - SEARCH_REACH,
                                       [](const SNode& a, RCD rcd) { return a.getRCD() < rcd; });
            for (; it != vNodes.end() && it->getRCD() <= mid + SEARCH_REACH; ++it)
            {
                const auto place = static_cast<std::size_t>(it - vNodes.begin());
                if (place != node)
                    vGathered.push_back(static_cast<std::uint32_t>(place));
            }
        }
    if (!estimateNNVatCentroid(vNodes[node], vGathered))
        return false;
    vNodes[node].setTrusted();
    return true;
}

void Smooth::markCreases(double minAngle)
{
    const AngleLimit lower(minAngle);
    const AngleLimit upper(HALF_TURN - minAngle);
    const auto isCrease = [&](std::size_t node)
    {
        if (!vNodes[node].hasPlane())
            return false;
        const Vector3& nnv = vNodes[node].getNNV();
        const std::span<const std::uint32_t> neighbours = getLinks(node);
        return std::any_of(neighbours.begin(), neighbours.end(),
                           [&](std::uint32_t link)
                           {
                               if (!vNodes[link].hasPlane())
                                   return false;
                               const Vector3& other = vNodes[link].getNNV();
                               return lower.isAbove(nnv, other) && upper.isBelow(nnv, other);
                           });
    };
    // The bend is the same seen from either end of a link, so each node can mark itself.
    parallelFor(vNodes.size(), MIN_CHUNK,
                [&](std::size_t from, std::size_t to)
                {
                    for (std::size_t i = from; i < to; ++i)
                        if (isCrease(i))
                            vNodes[i].setCrease();
                });
}

Point3 Smooth::seatOnSheet(std::size_t node, const Point3& mid) const
{
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
    std::size_t num = 0;
    for (const std::uint32_t link : getLinks(node))
    {
        const SNode& neighbour = vNodes[link];
        if (neighbour.getNumPoints() == SNode::GAP_FILLER || !neighbour.hasPlane())
            continue;
        neighbour.projection(mid).addOwnCoords(x, y, z);
        ++num;
    }
    if (num == 0)
        return vNodes[node].getPoint();
    const double count = static_cast<double>(num);
    return {x / count, y / count, z / count};
}

} // namespace TARN_ZEF
