#include "remesh/ChainSampler.h"

#include "remesh/samePlaces.h"
#include "remesh/triangles.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <tuple>

namespace TARN_ZEF
{
namespace
{
constexpr double NODES_PER_LENGTH = 4.0;
// Pieces beside a strip may be this much longer than it is wide; and they never get shorter than a part of the length.
constexpr double PIECE_PER_ROOM = 2.0;
constexpr double LEAST_PIECE = 0.08;
// What lies farther to the side than this, in cosines against the chain, is beside it, not before it.
constexpr double BESIDE = 0.7;
// Along one chain, places are apart if the way along it is this many times the way across.
constexpr double APART = 3.0;
constexpr double SIZE_SLOPE = 0.4;
constexpr int SMOOTH_ROUNDS = 4;
constexpr double MORE_PIECES = 1.2;
constexpr double SNAP = 0.05; // in sizes
// Pieces may be this much longer than wanted, as edges between the features may, rather than half as long.
constexpr double LONGER = 1.0 / 3.0;
constexpr double ROUNDING = 1e-9;
// Of the boxes that room is looked for in.
constexpr double FIRST_BOX = 1.0 / 16.0;
constexpr double WIDER = 4.0;
} // namespace

ChainSampler::ChainSampler(const SourceSurface& source_, double length_, double chordError_, bool bGraded_)
    : source(source_)
    , length(length_)
    , chordError(chordError_)
    , bGraded(bGraded_)
    , vNodes(source_.getChains().size())
    , vSamples(source_.getChains().size())
    , vCornerSize(source_.getMesh().endVertices(), length_)
{
}

void ChainSampler::run()
{
    const int num = static_cast<int>(vNodes.size());
    for (int i = 0; i < num; ++i)
        fillNodes(i);
    if (bGraded)
    {
        fillTree();
        for (int i = 0; i < num; ++i)
            if (source.getChains()[i].right != HalfEdgeMesh::NONE)
                measureRoom(i);
    }
    smoothSizes();
    for (int i = 0; i < num; ++i)
        sample(i);
    shareSamples();
}

// Of chains on the same course, the one that is cut finest gives its pieces to the others.
void ChainSampler::shareSamples()
{
    const std::vector<std::vector<int>> vCourses = findCourses();
    std::vector<int> vOrder(vCourses.size());
    std::iota(vOrder.begin(), vOrder.end(), 0);
    std::vector<std::vector<int>> vNames; // the same in both directions
    vNames.reserve(vCourses.size());
    for (const std::vector<int>& course : vCourses)
        vNames.push_back(std::min(course, std::vector<int>(course.rbegin(), course.rend())));
    std::sort(vOrder.begin(), vOrder.end(),
              [&](int a, int b) { return std::tie(vNames[a], a) < std::tie(vNames[b], b); });
    for (std::size_t from = 0; from < vOrder.size();)
    {
        std::size_t to = from + 1;
        while (to < vOrder.size() && vNames[vOrder[to]] == vNames[vOrder[from]])
            ++to;
        const int finest =
            *std::max_element(vOrder.begin() + static_cast<std::ptrdiff_t>(from),
                              vOrder.begin() + static_cast<std::ptrdiff_t>(to),
                              [&](int a, int b) { return vSamples[a].size() < vSamples[b].size(); });
        for (; from < to; ++from)
            if (vOrder[from] != finest)
                vSamples[vOrder[from]] = vCourses[vOrder[from]] == vCourses[finest]
                                             ? vSamples[finest]
                                             : turnedOver(finest, vSamples[finest]);
    }
}

// For each chain its vertices, those at equal places by the same number.
std::vector<std::vector<int>> ChainSampler::findCourses() const
{
    std::vector<Point3> vPoints;
    for (const CreaseChain& chain : source.getChains())
        for (const int v : chain.vVertices)
            vPoints.push_back(source.getMesh().point(v));
    const std::vector<int> vPlace = findSamePlaces(vPoints);
    std::vector<std::vector<int>> vCourses;
    auto it = vPlace.begin();
    for (const CreaseChain& chain : source.getChains())
    {
        const auto end = it + static_cast<std::ptrdiff_t>(chain.vVertices.size());
        vCourses.emplace_back(it, end);
        it = end;
    }
    return vCourses;
}

// For a chain that runs the other way.
std::vector<ChainSample> ChainSampler::turnedOver(int chain, const std::vector<ChainSample>& vOther) const
{
    const int numSegments = static_cast<int>(source.getChains()[chain].vVertices.size()) - 1;
    std::vector<ChainSample> vTurned(vOther.rbegin(), vOther.rend());
    for (ChainSample& s : vTurned)
    {
        const bool bOnVertex = s.along <= 0.0;
        s.segment = numSegments - s.segment - (bOnVertex ? 0 : 1);
        s.along = bOnVertex ? 0.0 : 1.0 - s.along;
    }
    return vTurned;
}

const Point3& ChainSampler::pointOf(int chain, int idx) const
{
    return source.getMesh().point(source.getChains()[chain].vVertices[idx]);
}

// The chord that leaves the chord error over the circle of each bend; a segment gets the shorter of its ends.
std::vector<double> ChainSampler::sizesByBend(int chain) const
{
    const int numSegments = static_cast<int>(source.getChains()[chain].vVertices.size()) - 1;
    std::vector<double> vSizes(numSegments, length);
    for (int i = 1; i < numSegments; ++i)
    {
        const Vector3 before = pointOf(chain, i) - pointOf(chain, i - 1);
        const Vector3 after = pointOf(chain, i + 1) - pointOf(chain, i);
        const double bend = (unitOrNull(after) + unitOrNull(before) * -1.0).length(); // radians, nearly
        const double radius = 0.5 * (before.length() + after.length()) / std::max(bend, ROUNDING);
        const double size =
            std::max(std::sqrt(8.0 * radius * chordError), std::min(before.length(), after.length()));
        vSizes[i - 1] = std::min(vSizes[i - 1], size);
        vSizes[i] = std::min(vSizes[i], size);
    }
    return vSizes;
}

void ChainSampler::fillNodes(int chain)
{
    const std::vector<double> vSizes = sizesByBend(chain);
    const int numSegments = static_cast<int>(vSizes.size());
    double arc = 0.0;
    for (int i = 0; i < numSegments; ++i)
    {
        const double len = (pointOf(chain, i + 1) - pointOf(chain, i)).length();
        vSegments.push_back({chain, i, arc});
        const int num = std::max(1, static_cast<int>(std::ceil(NODES_PER_LENGTH * len / length)));
        for (int k = 0; k < num; ++k)
            vNodes[chain].push_back({i, static_cast<double>(k) / num, arc + len * k / num, vSizes[i]});
        arc += len;
    }
    vNodes[chain].push_back({numSegments - 1, 1.0, arc, vSizes.back()});
}

void ChainSampler::fillTree()
{
    for (Segment& s : vSegments)
    {
        const Point3& a = pointOf(s.chain, s.idx);
        const Point3& b = pointOf(s.chain, s.idx + 1);
        tree.addObject(&s, std::min(a.x(), b.x()), std::min(a.y(), b.y()), std::min(a.z(), b.z()),
                       std::max(a.x(), b.x()), std::max(a.y(), b.y()), std::max(a.z(), b.z()));
    }
    tree.build();
}

void ChainSampler::measureRoom(int chain)
{
    const CreaseChain& own = source.getChains()[chain];
    const double whole = vNodes[chain].back().arc;
    for (Node& node : vNodes[chain])
    {
        const double room = std::min(PIECE_PER_ROOM * roomAt(chain, node), whole);
        node.size = std::min(node.size, std::max(room, LEAST_PIECE * length));
    }
    for (const int end : {own.vVertices.front(), own.vVertices.back()})
        vCornerSize[end] =
            std::min(vCornerSize[end], std::max(LEAST_PIECE * length, std::min(whole, length)));
}

// Chains that share a patch, but no corner: towards a corner the room always shrinks to nothing.
bool ChainSampler::mayCrowd(int chain, int otherChain) const
{
    const CreaseChain& a = source.getChains()[chain];
    const CreaseChain& b = source.getChains()[otherChain];
    const auto isBeside = [&b](int patch)
    { return patch != HalfEdgeMesh::NONE && (patch == b.left || patch == b.right); };
    const auto isEnd = [&b](int v) { return v == b.vVertices.front() || v == b.vVertices.back(); };
    return (isBeside(a.left) || isBeside(a.right)) &&
           (chain == otherChain || (!isEnd(a.vVertices.front()) && !isEnd(a.vVertices.back())));
}

// In boxes that grow until one holds the nearest.
double ChainSampler::roomAt(int chain, const Node& node) const
{
    const Point3& a = pointOf(chain, node.segment);
    const Vector3 ab = pointOf(chain, node.segment + 1) - a;
    const Point3 p = a + ab * node.along;
    const double largest = std::min(length, source.getExtent());
    for (double d = FIRST_BOX * largest; d < largest; d *= WIDER)
    {
        const double room = roomWithin(d, chain, node, p);
        if (room < d)
            return room;
    }
    return std::min(length, roomWithin(largest, chain, node, p));
}

// p is the place of the node. DBL_MAX if nothing is that near.
double ChainSampler::roomWithin(double distance, int chain, const Node& node, const Point3& p) const
{
    const Vector3 direction = unitOrNull(pointOf(chain, node.segment + 1) - pointOf(chain, node.segment));
    const double whole = vNodes[chain].back().arc;
    std::vector<void*> vFound;
    tree.query(vFound, {p.x() - distance, p.y() - distance, p.z() - distance, p.x() + distance,
                        p.y() + distance, p.z() + distance});
    double room = DBL_MAX;
    for (const void* pFound : vFound)
    {
        const Segment& s = *static_cast<const Segment*>(pFound);
        if (!mayCrowd(chain, s.chain))
            continue;
        Point3 foot;
        const double d =
            std::sqrt(sqDistanceToSegment(p, pointOf(s.chain, s.idx), pointOf(s.chain, s.idx + 1), &foot));
        const double way = std::fabs(s.arc + (foot - pointOf(s.chain, s.idx)).length() - node.arc);
        const bool bNearAlong = s.chain == chain && std::min(way, std::fabs(whole - way)) < APART * d;
        if (d > 0.0 && d < room && !bNearAlong && std::fabs((foot - p) * direction) < BESIDE * d)
            room = d;
    }
    return room;
}

// No size grows faster along a chain than by the slope; corners hand it on.
void ChainSampler::smoothSizes()
{
    for (int round = 0; round < SMOOTH_ROUNDS; ++round)
        for (std::size_t i = 0; i < vNodes.size(); ++i)
        {
            std::vector<Node>& v = vNodes[i];
            double& first = vCornerSize[source.getChains()[i].vVertices.front()];
            double& last = vCornerSize[source.getChains()[i].vVertices.back()];
            v.front().size = first = std::min(first, v.front().size);
            v.back().size = last = std::min(last, v.back().size);
            for (std::size_t k = 1; k < v.size(); ++k)
                v[k].size = std::min(v[k].size, v[k - 1].size + SIZE_SLOPE * (v[k].arc - v[k - 1].arc));
            for (std::size_t k = v.size() - 1; k > 0; --k)
                v[k - 1].size = std::min(v[k - 1].size, v[k].size + SIZE_SLOPE * (v[k].arc - v[k - 1].arc));
            first = v.front().size;
            last = v.back().size;
        }
}

void ChainSampler::sample(int chain)
{
    const std::vector<Node>& v = vNodes[chain];
    double wanted = 0.0;
    for (std::size_t k = 1; k < v.size(); ++k)
        wanted += (v[k].arc - v[k - 1].arc) * 2.0 / (v[k].size + v[k - 1].size);
    const CreaseChain& own = source.getChains()[chain];
    const bool bClosed = own.vVertices.front() == own.vVertices.back();
    const int most = 2 * static_cast<int>(own.vVertices.size()) + static_cast<int>(wanted);
    for (int num = std::max(bClosed ? 3 : 1, static_cast<int>(std::ceil(wanted - LONGER))); num <= most;
         num = std::max(num + 1, static_cast<int>(MORE_PIECES * num)))
    {
        vSamples[chain] = place(chain, num);
        if (followsChain(chain, vSamples[chain]))
            return;
    }
    vSamples[chain] = placeOnAll(chain);
}

// At even steps of the integral of 1 / size.
std::vector<ChainSample> ChainSampler::place(int chain, int numPieces) const
{
    const std::vector<Node>& v = vNodes[chain];
    std::vector<double> vSum(v.size(), 0.0);
    for (std::size_t k = 1; k < v.size(); ++k)
        vSum[k] = vSum[k - 1] + (v[k].arc - v[k - 1].arc) * 2.0 / (v[k].size + v[k - 1].size);
    const int numVertices = static_cast<int>(source.getChains()[chain].vVertices.size());
    std::vector<ChainSample> vPlaced;
    std::size_t k = 1;
    for (int i = 1; i < numPieces; ++i)
    {
        const double at = vSum.back() * i / numPieces;
        while (k + 1 < v.size() && vSum[k] < at)
            ++k;
        const double part = (at - vSum[k - 1]) / (vSum[k] - vSum[k - 1]);
        int segment = v[k - 1].segment;
        const double end = v[k].segment == segment ? v[k].along : 1.0;
        double along = v[k - 1].along + part * (end - v[k - 1].along);
        const double size = v[k - 1].size + part * (v[k].size - v[k - 1].size);
        const Point3& a = pointOf(chain, segment);
        const Point3& b = pointOf(chain, segment + 1);
        // A vertex of the chain that is that near is taken as it is.
        const double len = (b - a).length();
        if (along * len < SNAP * size && segment > 0)
            along = 0.0;
        else if ((1.0 - along) * len < SNAP * size && segment + 2 < numVertices)
        {
            ++segment;
            along = 0.0;
        }
        const Point3 point = along == 0.0 ? pointOf(chain, segment) : a + (b - a) * along;
        const bool bAgain =
            !vPlaced.empty() && vPlaced.back().segment == segment && vPlaced.back().along == along;
        if (!bAgain)
            vPlaced.push_back({segment, along, point, size});
    }
    return vPlaced;
}

// Where even pieces would cut too much off, all vertices stay and the pieces between them are cut.
std::vector<ChainSample> ChainSampler::placeOnAll(int chain) const
{
    const std::vector<Node>& v = vNodes[chain];
    std::vector<ChainSample> vPlaced;
    const int numSegments = static_cast<int>(source.getChains()[chain].vVertices.size()) - 1;
    std::size_t k = 0;
    for (int i = 0; i < numSegments; ++i)
    {
        double size = length;
        for (; k < v.size() && v[k].segment <= i; ++k)
            size = std::min(size, v[k].size);
        const Point3& a = pointOf(chain, i);
        const Point3& b = pointOf(chain, i + 1);
        const int num = std::max(1, static_cast<int>(std::ceil((b - a).length() / size - LONGER)));
        for (int n = i == 0 ? 1 : 0; n < num; ++n)
        {
            const double along = static_cast<double>(n) / num;
            vPlaced.push_back({i, along, a + (b - a) * along, std::min(size, (b - a).length() / num)});
        }
    }
    return vPlaced;
}

bool ChainSampler::followsChain(int chain, const std::vector<ChainSample>& vPlaced) const
{
    const int numSegments = static_cast<int>(source.getChains()[chain].vVertices.size()) - 1;
    const auto sampleAt = [&](std::size_t i) -> const Point3&
    { return i < vPlaced.size() ? vPlaced[i].point : pointOf(chain, numSegments); };
    std::size_t next = 0; // the sample that ends the current piece
    for (int idx = 1; idx < numSegments; ++idx)
    {
        while (next < vPlaced.size() && vPlaced[next].segment < idx)
            ++next;
        const Point3& from = next == 0 ? pointOf(chain, 0) : vPlaced[next - 1].point;
        if (sqDistanceToSegment(pointOf(chain, idx), from, sampleAt(next)) > chordError * chordError)
            return false;
    }
    return true;
}

} // namespace TARN_ZEF
