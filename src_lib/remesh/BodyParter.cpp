#include "remesh/BodyParter.h"

#include "core/cancel.h"
#include "geometry/tools.h"
#include "remesh/SoupEdgeTable.h"
#include "remesh/triangles.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace TARN_ZEF
{
namespace
{
constexpr int ABSENT = -1;
constexpr int MAX_ROUNDS = 4;
constexpr int MAYBE_BODY = 4; // a rating
constexpr int FORBIDDEN = 100;
// Where more triangles meet in an edge, only neighbours round it are paired: to weigh all pairs goes with the fourth
// power of their number.
constexpr std::size_t MOST_WEIGHED = 16;

Point3 middleOf(const Point3& a, const Point3& b)
{
    return a + (b - a) * 0.5;
}

// Cuts all edges of the list in their middles. An edge of the list is given by its ends, low one first.
void splitEdges(FlatSoup& soup, const std::vector<std::pair<int, int>>& vEnds)
{
    std::vector<int> vMiddle(vEnds.size());
    for (std::size_t i = 0; i < vEnds.size(); ++i)
    {
        vMiddle[i] = static_cast<int>(soup.vPoints.size());
        soup.vPoints.push_back(middleOf(soup.vPoints[vEnds[i].first], soup.vPoints[vEnds[i].second]));
    }
    // A new triangle can have a second edge to cut: it is looked at in its turn.
    for (int c = 0; c < static_cast<int>(soup.vCorners.size()); ++c)
    {
        const int end = soup.vCorners[FlatSoup::next(c)];
        const std::pair<int, int> ends = std::minmax(soup.vCorners[c], end);
        const auto it = std::lower_bound(vEnds.begin(), vEnds.end(), ends);
        if (it == vEnds.end() || *it != ends)
            continue;
        const int middle = vMiddle[it - vEnds.begin()];
        soup.vCorners[FlatSoup::next(c)] = middle;
        const int opposite = soup.vCorners[FlatSoup::prev(c)];
        soup.vCorners.insert(soup.vCorners.end(), {middle, end, opposite});
        c -= c % 3 + 1; // again from its first edge
    }
}
} // namespace

// A triangle at a crowded edge.
struct BodyParter::Spoke
{
    int corner;    // that begins the edge
    double angle;  // round the edge
    bool bForward; // runs along the edge as it is looked at, as the triangle came in
    int set;       // of the triangle, at the time of sorting
    int behind;    // 1: its back looks to larger angles, -1: to smaller ones, 0: unknown
};

// Whether nothing stands between two spokes, counter-clockwise, but what lies on one of them.
bool BodyParter::isBeside(const std::vector<Spoke>& vSpokes, std::size_t i, std::size_t j)
{
    for (std::size_t k = (i + 1) % vSpokes.size(); k != j; k = (k + 1) % vSpokes.size())
        if (vSpokes[k].angle != vSpokes[i].angle && vSpokes[k].angle != vSpokes[j].angle)
            return false;
    return true;
}

// Two sheets can end up with two edges between the same two vertices. Such edges are cut in the middle, and all
// is parted again.
void BodyParter::run(FlatSoup& soup)
{
    *this = BodyParter();
    for (int round = 0; round < MAX_ROUNDS; ++round)
        if (tryToPart(soup, round + 1 == MAX_ROUNDS))
            return;
}

// The last resort: triangles that are in the way become parts of their own.
void BodyParter::isolate(FlatSoup& soup, const std::vector<int>& vTriangles)
{
    for (const int t : vTriangles)
    {
        vPart[t] = numParts++;
        for (int c = 3 * t; c < 3 * t + 3; ++c)
        {
            soup.vPoints.emplace_back(soup.pointOf(c));
            soup.vCorners[c] = static_cast<int>(soup.vPoints.size()) - 1;
        }
    }
    renumberParts();
}

// By first appearance: a part can have lost all its triangles.
void BodyParter::renumberParts()
{
    std::vector<int> vNumber(numParts, ABSENT);
    numParts = 0;
    for (int& part : vPart)
    {
        if (vNumber[part] == ABSENT)
            vNumber[part] = numParts++;
        part = vNumber[part];
    }
}

std::vector<int> BodyParter::findBackToBack(const FlatSoup& soup) const
{
    std::vector<int> vFound;
    for (int c = 0; c < static_cast<int>(vPartner.size()); ++c)
        if (vPartner[c] != ABSENT &&
            soup.vCorners[FlatSoup::prev(c)] == soup.vCorners[FlatSoup::prev(vPartner[c])])
            vFound.push_back(c / 3);
    return vFound;
}

bool BodyParter::tryToPart(FlatSoup& soup, bool bLast)
{
    *this = BodyParter();
    vPartner.assign(soup.vCorners.size(), ABSENT);
    TurnedSets sets(soup.numTriangles());
    const SoupEdgeTable edges(soup.vPoints.size(), soup.vCorners);
    pairPlain(soup, edges, sets);
    if (numParted != 0)
    {
        findFacing(soup, sets);
        pairCrowded(soup, edges, sets);
    }
    FlatSoup parted = soup;
    turn(parted, sets);
    partVertices(parted);
    // Of the cut edges none is in the way: its triangles have different vertices, or it is cut once more.
    std::vector<std::pair<int, int>> vAgain;
    // Two triangles back to back on the same corners are in each other's way: an edge of them, once split, would be
    // two edges from the new vertex to the same apex.
    std::vector<int> vInTheWay = findBackToBack(parted);
    const auto unmoved = [this](int c) { return vTurned[c / 3] ? 3 * (c / 3) + 2 - c % 3 : c; };
    SoupEdgeTable(parted.vPoints.size(), parted.vCorners)
        .forEachEdge(
            [&](const int* pCorners, int num)
            {
                if (num > 2 || (num == 2 && vPartner[pCorners[0]] != pCorners[1]))
                {
                    const int c = unmoved(pCorners[0]);
                    vAgain.emplace_back(std::minmax(soup.vCorners[c], soup.vCorners[FlatSoup::next(c)]));
                    for (int i = 0; i < num; ++i)
                        vInTheWay.push_back(pCorners[i] / 3);
                }
            });
    if (vAgain.empty() || bLast)
    {
        std::sort(vInTheWay.begin(), vInTheWay.end());
        vInTheWay.erase(std::unique(vInTheWay.begin(), vInTheWay.end()), vInTheWay.end());
        isolate(parted, vInTheWay);
        soup = std::move(parted);
        return true;
    }
    std::sort(vAgain.begin(), vAgain.end());
    vAgain.erase(std::unique(vAgain.begin(), vAgain.end()), vAgain.end());
    splitEdges(soup, vAgain);
    return false;
}

void BodyParter::pairPlain(const FlatSoup& soup, const SoupEdgeTable& edges, TurnedSets& sets)
{
    edges.forEachEdge(
        [&](const int* pCorners, int num)
        {
            if (num > 2)
                ++numParted;
            if (num != 2)
                return;
            const int a = pCorners[0];
            const int b = pCorners[1];
            if (!sets.join(a / 3, b / 3, soup.vCorners[a] == soup.vCorners[b]))
            {
                ++numCut;
                return;
            }
            vPartner[a] = b;
            vPartner[b] = a;
        });
}

// Which sets enclose a space, and on which side.
void BodyParter::findFacing(const FlatSoup& soup, TurnedSets& sets)
{
    vFacing.assign(soup.numTriangles(), 0);
    std::vector<double> vVolume(soup.numTriangles(), 0.0);
    std::vector<double> vArea(soup.numTriangles(), 0.0);
    CancelStride cancel;
    for (int t = 0; t < soup.numTriangles(); ++t)
    {
        cancel.step();
        const TurnedSets::Place place = sets.find(t);
        const Point3& base = soup.pointOf(3 * place.set);
        const Vector3 a = soup.pointOf(3 * t) - base;
        const Vector3 b = soup.pointOf(3 * t + 1) - base;
        const Vector3 c = soup.pointOf(3 * t + 2) - base;
        const double volume = crossProduct(a, b) * c / 6.0;
        vVolume[place.set] += place.bTurned ? -volume : volume;
        vArea[place.set] += 0.5 * crossProduct(b + a * -1.0, c + a * -1.0).length();
    }
    for (int t = 0; t < soup.numTriangles(); ++t)
    {
        if (enclosesSpace(std::fabs(vVolume[t]), vArea[t]))
            vFacing[t] = vVolume[t] > 0.0 ? 1 : -1;
    }
}

void BodyParter::pairCrowded(const FlatSoup& soup, const SoupEdgeTable& edges, TurnedSets& sets)
{
    edges.forEachEdge(
        [&](const int* pCorners, int num)
        {
            if (num > 2)
                pairAround(soup, pCorners, num, sets);
        });
}

void BodyParter::pairAround(const FlatSoup& soup, const int* pCorners, int num, TurnedSets& sets)
{
    const int start = soup.vCorners[pCorners[0]];
    const Point3& a = soup.pointOf(pCorners[0]);
    const Vector3 axis = normalizeInline(soup.pointOf(FlatSoup::next(pCorners[0])) - a);
    const auto awayFrom = [&](int c)
    {
        const Vector3 v = soup.pointOf(FlatSoup::prev(c)) - a;
        return v + axis * -(v * axis);
    };
    const Vector3 x = normalizeInline(awayFrom(pCorners[0]));
    const Vector3 y = crossProduct(axis, x);
    std::vector<Spoke> vSpokes;
    for (int i = 0; i < num; ++i)
    {
        const Vector3 v = awayFrom(pCorners[i]);
        vSpokes.push_back(
            {pCorners[i], pseudoAngle(v * x, v * y), soup.vCorners[pCorners[i]] == start, 0, 0});
    }
    std::sort(vSpokes.begin(), vSpokes.end(),
              [](const Spoke& s, const Spoke& t)
              { return s.angle != t.angle ? s.angle < t.angle : s.corner < t.corner; });
    if (vSpokes.size() > MOST_WEIGHED)
        pairNeighbours(vSpokes, sets);
    else
        pairBest(std::move(vSpokes), sets);
}

void BodyParter::look(Spoke& spoke, TurnedSets& sets) const
{
    const TurnedSets::Place place = sets.find(spoke.corner / 3);
    spoke.set = place.set;
    spoke.behind = vFacing[place.set] * (place.bTurned ? -1 : 1) * (spoke.bForward ? -1 : 1);
}

// One after the other, each with the next if that is allowed.
void BodyParter::pairNeighbours(std::vector<Spoke>& vSpokes, TurnedSets& sets)
{
    for (std::size_t i = 0; i + 1 < vSpokes.size(); ++i)
    {
        look(vSpokes[i], sets);
        look(vSpokes[i + 1], sets);
        const int rating = rate(vSpokes[i], vSpokes[i + 1], true, sets);
        if (rating >= FORBIDDEN)
            continue;
        joinPair(vSpokes[i], vSpokes[i + 1], rating, sets);
        ++i;
    }
}

// The best pair of all, again and again; neighbours round the edge come first.
void BodyParter::pairBest(std::vector<Spoke> vSpokes, TurnedSets& sets)
{
    while (vSpokes.size() > 1)
    {
        for (Spoke& s : vSpokes)
            look(s, sets);
        int best = FORBIDDEN;
        std::size_t bestI = 0;
        std::size_t bestJ = 0;
        for (std::size_t i = 0; i < vSpokes.size(); ++i)
            for (std::size_t j = 0; j < vSpokes.size(); ++j)
            {
                const int rating =
                    i == j ? FORBIDDEN : rate(vSpokes[i], vSpokes[j], isBeside(vSpokes, i, j), sets);
                if (rating < best)
                {
                    best = rating;
                    bestI = i;
                    bestJ = j;
                }
            }
        if (best >= FORBIDDEN)
            return;
        joinPair(vSpokes[bestI], vSpokes[bestJ], best, sets);
        vSpokes.erase(vSpokes.begin() + static_cast<std::ptrdiff_t>(std::max(bestI, bestJ)));
        vSpokes.erase(vSpokes.begin() + static_cast<std::ptrdiff_t>(std::min(bestI, bestJ)));
    }
}

void BodyParter::joinPair(const Spoke& lower, const Spoke& upper, int rating, TurnedSets& sets)
{
    const int c = lower.corner;
    const int d = upper.corner;
    int facingC = vFacing[sets.find(c / 3).set] * (sets.find(c / 3).bTurned ? -1 : 1);
    const int facingD = vFacing[sets.find(d / 3).set] * (sets.find(d / 3).bTurned ? -1 : 1);
    // Taken for a corner of a body, they have it behind them.
    if (rating == MAYBE_BODY)
        facingC = lower.bForward ? -1 : 1;
    if (!sets.join(c / 3, d / 3, lower.bForward == upper.bForward))
        return;
    // The joint set faces as the part of it does that encloses a space.
    const TurnedSets::Place place = sets.find(facingC != 0 ? c / 3 : d / 3);
    vFacing[place.set] = (facingC != 0 ? facingC : facingD) * (place.bTurned ? -1 : 1);
    vPartner[c] = d;
    vPartner[d] = c;
}

// 0 is best, FORBIDDEN is not allowed. lower stands before upper round the edge; the space between them is that of a
// body if lower's back looks up and upper's back looks down.
int BodyParter::rate(const Spoke& lower, const Spoke& upper, bool bBeside, TurnedSets& sets) const
{
    const bool bSame = lower.set == upper.set;
    if (bSame)
    {
        const bool bAgainst = sets.find(lower.corner / 3).bTurned != sets.find(upper.corner / 3).bTurned;
        if ((lower.bForward == upper.bForward) != bAgainst)
            return FORBIDDEN;
    }
    const bool bTogether = lower.angle == upper.angle; // one lies on the other
    const bool bBody = bBeside && lower.behind == 1 && upper.behind == -1;
    const bool bMayBeBody = bBeside && lower.behind >= 0 && upper.behind <= 0 && !bTogether;
    if (bSame)
        return bBody ? 0 : (bTogether ? 8 : 1);
    if (bMayBeBody)
        return lower.behind != 0 || upper.behind != 0 ? 2 : MAYBE_BODY;
    return bTogether ? 9 : 6;
}

void BodyParter::turn(FlatSoup& soup, TurnedSets& sets)
{
    const int num = soup.numTriangles();
    vTurned.assign(num, false);
    vPart.assign(num, ABSENT);
    for (int t = 0; t < num; ++t)
    {
        const TurnedSets::Place place = sets.find(t);
        if (place.set == t)
            vPart[t] = numParts++;
        vPart[t] = vPart[place.set];
        vTurned[t] = place.bTurned;
        if (place.bTurned)
            std::swap(soup.vCorners[3 * t + 1], soup.vCorners[3 * t + 2]);
    }
    // The edges of a turned triangle stand in the other order.
    const auto moved = [this](int c) { return c != ABSENT && vTurned[c / 3] ? 3 * (c / 3) + 2 - c % 3 : c; };
    std::vector<int> vMoved(vPartner.size());
    for (int c = 0; c < static_cast<int>(vPartner.size()); ++c)
        vMoved[moved(c)] = moved(vPartner[c]);
    vPartner = std::move(vMoved);
}

// Corners that paired edges join are one vertex.
void BodyParter::partVertices(FlatSoup& soup) const
{
    TurnedSets corners(static_cast<int>(soup.vCorners.size()));
    for (int c = 0; c < static_cast<int>(soup.vCorners.size()); ++c)
    {
        const int d = vPartner[c];
        if (d == ABSENT || d < c)
            continue;
        static_cast<void>(corners.join(c, FlatSoup::next(d), false));
        static_cast<void>(corners.join(FlatSoup::next(c), d, false));
    }
    std::vector<Point3> vPoints;
    std::vector<int> vNumber(soup.vCorners.size(), ABSENT);
    for (int c = 0; c < static_cast<int>(soup.vCorners.size()); ++c)
    {
        const int set = corners.find(c).set;
        if (vNumber[set] == ABSENT)
        {
            vNumber[set] = static_cast<int>(vPoints.size());
            vPoints.push_back(soup.vPoints[soup.vCorners[c]]);
        }
        vNumber[c] = vNumber[set];
    }
    soup.vPoints = std::move(vPoints);
    soup.vCorners = std::move(vNumber);
}

} // namespace TARN_ZEF
