#include "closing/LoopFinder.h"

#include "core/cancel.h"
#include "geometry/tools.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <utility>

namespace TARN_ZEF
{
namespace
{
constexpr std::size_t NO_PLACE = std::numeric_limits<std::size_t>::max();
// Of the area of its piece: what a loop encloses of it makes a rim.
constexpr double LEAST_RIM = 0.25;
// How far a loop may run against its piece, from 0 to 1, and still be a rim.
constexpr double MOST_AGAINST = 0.25;

std::string percent(double part)
{
    return std::to_string(std::lround(100.0 * std::min(part, 1e6))) + " %";
}
} // namespace

LoopFinder::LoopFinder(const std::vector<Point3>& vPoints_, const std::vector<int>& vCorners_,
                       const EdgeMates& mates_)
    : vPoints(vPoints_)
    , vCorners(vCorners_)
    , mates(mates_)
{
}

std::vector<BorderLoop> LoopFinder::run()
{
    findPieces();
    measurePieces();
    vSeen.assign(mates.getNum(), 0);
    vPlaces.assign(vPoints.size(), NO_PLACE);
    for (std::uint32_t h = 0; h < mates.getNum(); ++h)
    {
        checkCancelledAt(h);
        if (mates.get(h) == EdgeMates::BORDER && vSeen[h] == 0)
            walkFrom(h);
    }
    for (BorderLoop& loop : vLoops)
        judge(loop);
    return std::move(vLoops);
}

// --- Pieces -----------------------------------------------------------------------------------------------

void LoopFinder::findPieces()
{
    std::vector<std::size_t> vParents(vCorners.size() / 3);
    std::iota(vParents.begin(), vParents.end(), std::size_t{0});
    const auto findRoot = [&vParents](std::size_t t)
    {
        while (vParents[t] != t)
            t = vParents[t] = vParents[vParents[t]];
        return t;
    };
    mates.forEachPair(
        [&](std::uint32_t h, std::uint32_t g)
        {
            const std::size_t a = findRoot(h / 3);
            const std::size_t b = findRoot(g / 3);
            vParents[std::max(a, b)] = std::min(a, b);
        });
    vPieceOf.resize(vParents.size());
    std::size_t num = 0;
    for (std::size_t t = 0; t < vParents.size(); ++t)
    {
        const std::size_t root = findRoot(t);
        vPieceOf[t] = root == t ? num++ : vPieceOf[root];
    }
    vPieces.resize(num);
}

void LoopFinder::measurePieces()
{
    for (std::size_t t = 0; t < vPieceOf.size(); ++t)
    {
        const Point3& a = vPoints[static_cast<std::size_t>(vCorners[3 * t])];
        const Point3& b = vPoints[static_cast<std::size_t>(vCorners[3 * t + 1])];
        const Point3& c = vPoints[static_cast<std::size_t>(vCorners[3 * t + 2])];
        const Vector3 half = crossProduct(b - a, c - a) * 0.5;
        Piece& piece = vPieces[vPieceOf[t]];
        piece.area += half.length();
        piece.areaVector.add(half);
    }
    mates.forEachPair(
        [&](std::uint32_t h, std::uint32_t g)
        {
            if (mates.get(h) != EdgeMates::CROWDED && mates.from(h) == mates.from(g))
                vPieces[vPieceOf[h / 3]].bOriented = false;
        });
}

// --- Loops ------------------------------------------------------------------------------------------------

void LoopFinder::walkFrom(std::uint32_t start)
{
    const std::size_t piece = vPieceOf[start / 3];
    std::vector<int> vWay = {mates.from(start)};
    vPlaces[static_cast<std::size_t>(vWay.front())] = 0;
    int at = mates.to(start);
    std::uint32_t h = start;
    while (true)
    {
        vSeen[h] = 1;
        const std::size_t met = vPlaces[static_cast<std::size_t>(at)];
        if (met != NO_PLACE)
            cutLoop(vWay, met, piece);
        else
        {
            vPlaces[static_cast<std::size_t>(at)] = vWay.size();
            vWay.push_back(at);
        }
        const std::uint32_t next = getNextBorder(h, at);
        if (next == EdgeMates::CROWDED || vSeen[next] != 0)
            break;
        at = mates.from(next) == at ? mates.to(next) : mates.from(next);
        h = next;
    }
    for (const int v : vWay)
        vPlaces[static_cast<std::size_t>(v)] = NO_PLACE;
    if (vWay.size() > 1)
        addLoop(std::move(vWay), piece, false);
}

std::uint32_t LoopFinder::getNextBorder(std::uint32_t h, int v) const
{
    // The other edge of the triangle at v.
    std::uint32_t side = mates.to(h) == v ? EdgeMates::next(h) : EdgeMates::prev(h);
    while (mates.get(side) < EdgeMates::NO_EDGE)
    {
        const std::uint32_t mate = mates.get(side);
        side = mates.from(mate) == v ? EdgeMates::prev(mate) : EdgeMates::next(mate);
    }
    return mates.get(side) == EdgeMates::BORDER ? side : EdgeMates::CROWDED;
}

// The vertex where the way met itself stays on it.
void LoopFinder::cutLoop(std::vector<int>& vWay, std::size_t from, std::size_t piece)
{
    const auto first = vWay.begin() + static_cast<std::ptrdiff_t>(from);
    for (auto it = first + 1; it != vWay.end(); ++it)
        vPlaces[static_cast<std::size_t>(*it)] = NO_PLACE;
    addLoop({first, vWay.end()}, piece, true);
    vWay.erase(first + 1, vWay.end());
}

void LoopFinder::addLoop(std::vector<int> vVertices, std::size_t piece, bool bClosed)
{
    BorderLoop loop;
    loop.vVertices = std::move(vVertices);
    loop.piece = piece;
    loop.bClosed = bClosed;
    vLoops.push_back(std::move(loop));
}

// --- Rims and holes ---------------------------------------------------------------------------------------

// Half the sum of the cross products of a fan of triangles: the same for every surface that the loop bounds.
Vector3 LoopFinder::getAreaVector(const std::vector<int>& vLoop) const
{
    const auto place = [&](std::size_t i) { return vPoints[static_cast<std::size_t>(vLoop[i])]; };
    Vector3 sum;
    for (std::size_t i = 1; i + 1 < vLoop.size(); ++i)
        sum.add(crossProduct(place(i) - place(0), place(i + 1) - place(0)) * 0.5);
    return sum;
}

void LoopFinder::judge(BorderLoop& loop) const
{
    const std::size_t num = loop.vVertices.size();
    for (std::size_t i = loop.bClosed ? 0 : 1; i < num; ++i)
        loop.length += (vPoints[static_cast<std::size_t>(loop.vVertices[i])] -
                        vPoints[static_cast<std::size_t>(loop.vVertices[i == 0 ? num - 1 : i - 1])])
                           .length();
    if (!loop.bClosed)
    {
        loop.reason = "it ends where more than two triangles meet";
        return;
    }
    const Vector3 areaVector = getAreaVector(loop.vVertices);
    loop.area = areaVector.length();
    const Piece& piece = vPieces[loop.piece];
    const double part = piece.area > 0.0 ? loop.area / piece.area : 0.0;
    const std::string share = "it encloses " + percent(part) + " of the area of its piece";
    if (part < LEAST_RIM)
    {
        loop.reason = share + ", less than a quarter";
        return;
    }
    // From -1 to 1: against or along the border of the piece as a whole.
    const double along = (areaVector * piece.areaVector) / (loop.area * piece.area);
    loop.bRim = !piece.bOriented || along >= -MOST_AGAINST;
    loop.reason = share + (loop.bRim ? ", at least a quarter, as its outer border" : ", but lies within it");
}

} // namespace TARN_ZEF
