#include "finish/BorderEvening.h"

#include "finish/directions.h"
#include "geometry/tools.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace TARN_ZEF
{
namespace
{
constexpr int NONE = HalfEdgeMesh::NONE;
constexpr int MAX_ROUNDS = 8;
// What a change has to gain at least: a turn of about 30 degrees that goes.
constexpr double MIN_GAIN = 0.25;
// A notch is rather filled than a tooth beside it dropped, since points are there.
constexpr double FILL_BONUS = 0.3;
// Cosine of 25 degrees: a new triangle has no smaller angle.
constexpr double THIN = 0.9063;
// Cosine of 45 degrees: it bends no more against its neighbours.
constexpr double MAX_BEND = 0.7071;
constexpr int SMOOTH_ROUNDS = 3;
constexpr double SMOOTH_STEP = 0.5;
constexpr double UNSHRINK_STEP = -0.53;
// A border that turns more than 60 degrees at a vertex has a corner there: the cosine between both ways from it.
constexpr double CORNER = -0.5;
// Cosine of 37 degrees: no triangle tilts more as its vertex moves.
constexpr double MAX_TILT = 0.8;

double getTurn(const Point3& a, const Point3& b, const Point3& c)
{
    return std::sqrt(std::max(0.0, 0.5 - 0.5 * getCosine(b - a, c - b)));
}

bool isThin(const Point3& a, const Point3& b, const Point3& c)
{
    return std::max({getCosine(b - a, c - a), getCosine(c - b, a - b), getCosine(a - c, b - c)}) > THIN;
}
} // namespace

BorderEvening::BorderEvening(HalfEdgeMesh& mesh_)
    : mesh(mesh_)
{
}

void BorderEvening::trim()
{
    for (int round = 0; round < MAX_ROUNDS; ++round)
    {
        bool bChanged = false;
        for (const Candidate& candidate : findCandidates())
            bChanged |= change(candidate);
        if (!bChanged)
            return;
    }
}

// Two steps a round, one to the middle and one back by a little more: the teeth that are left get lower, and arcs do
// not shrink.
void BorderEvening::smooth()
{
    for (int round = 0; round < SMOOTH_ROUNDS; ++round)
        for (const double step : {SMOOTH_STEP, UNSHRINK_STEP})
            move(step);
}

void BorderEvening::move(double step)
{
    std::vector<std::pair<int, Point3>> vMoves;
    for (int v = 0; v < mesh.endVertices(); ++v)
    {
        if (!mesh.isAliveVertex(v) || !mesh.isBorderVertex(v) || mesh.kind(v) != HalfEdgeMesh::Kind::FREE)
            continue;
        const Bend bend = getBend(v);
        const Point3& p = mesh.point(v);
        const Vector3 before = mesh.point(mesh.from(bend.in)) - p;
        const Vector3 after = mesh.point(mesh.to(bend.out)) - p;
        if (getCosine(before, after) > CORNER)
            continue;
        const Point3 target = p + (before + after) * (0.5 * step);
        if (isHarmless(v, target))
            vMoves.emplace_back(v, target);
    }
    for (const auto& [v, p] : vMoves)
        mesh.setPoint(v, p);
}

bool BorderEvening::isHarmless(int v, const Point3& target) const
{
    const Point3& p = mesh.point(v);
    bool bHarmless = true;
    mesh.forEachOutgoing(v,
                         [&](int h)
                         {
                             const Point3& b = mesh.point(mesh.to(h));
                             const Point3& c = mesh.point(mesh.apex(h));
                             const double cosine =
                                 getCosine(crossProduct(b - p, c - p), crossProduct(b - target, c - target));
                             bHarmless = bHarmless && cosine > MAX_TILT && !isThin(target, b, c);
                         });
    return bHarmless;
}

// Those that gain most come first.
std::vector<BorderEvening::Candidate> BorderEvening::findCandidates() const
{
    std::vector<Candidate> vCandidates;
    for (int v = 0; v < mesh.endVertices(); ++v)
    {
        if (!mesh.isAliveVertex(v) || !mesh.isBorderVertex(v))
            continue;
        const Bend bend = getBend(v);
        const double gain = getGain(bend);
        if (!(gain > MIN_GAIN))
            continue;
        const bool bFill = mayFill(bend);
        if (bFill || mayDrop(bend))
            vCandidates.push_back({gain, v, bFill});
    }
    const auto rank = [](const Candidate& c)
    { return std::pair(c.bFill ? -c.gain - FILL_BONUS : -c.gain, c.v); };
    std::sort(vCandidates.begin(), vCandidates.end(),
              [&](const Candidate& a, const Candidate& b) { return rank(a) < rank(b); });
    return vCandidates;
}

BorderEvening::Bend BorderEvening::getBend(int v) const
{
    int last = NONE;
    mesh.forEachOutgoing(v, [&last](int h) { last = h; });
    return {HalfEdgeMesh::prev(last), mesh.outgoing(v)};
}

// How much less the border turns if it goes straight from one neighbour to the other.
double BorderEvening::getGain(const Bend& bend) const
{
    const int u = mesh.from(bend.in);
    const int w = mesh.to(bend.out);
    if (u == w)
        return 0.0;
    const Point3& before = mesh.point(mesh.from(getBend(u).in));
    const Point3& after = mesh.point(mesh.to(mesh.outgoing(w)));
    const Point3& from = mesh.point(u);
    const Point3& at = mesh.point(mesh.to(bend.in));
    const Point3& to = mesh.point(w);
    return getTurn(before, from, at) + getTurn(from, at, to) + getTurn(at, to, after) -
           getTurn(before, from, to) - getTurn(from, to, after);
}

bool BorderEvening::mayFill(const Bend& bend) const
{
    const int u = mesh.from(bend.in);
    const int v = mesh.to(bend.in);
    const int w = mesh.to(bend.out);
    if (mesh.hasEdge(u, w) || isThin(mesh.point(u), mesh.point(v), mesh.point(w)))
        return false;
    const Vector3 normal = crossProduct(mesh.point(v) - mesh.point(w), mesh.point(u) - mesh.point(w));
    const auto isFlat = [&](int h)
    {
        const Point3& p = mesh.point(mesh.from(h));
        const Vector3 other = crossProduct(mesh.point(mesh.to(h)) - p, mesh.point(mesh.apex(h)) - p);
        return getCosine(normal, other) > MAX_BEND;
    };
    return isFlat(bend.in) && isFlat(bend.out);
}

bool BorderEvening::mayDrop(const Bend& bend) const
{
    return HalfEdgeMesh::next(bend.in) == bend.out && !mesh.isBorder(HalfEdgeMesh::next(bend.out)) &&
           mesh.feature(HalfEdgeMesh::next(bend.out)) == 0 &&
           mesh.kind(mesh.to(bend.in)) == HalfEdgeMesh::Kind::FREE;
}

// False if it is none any more.
bool BorderEvening::change(const Candidate& candidate)
{
    if (!mesh.isAliveVertex(candidate.v) || !mesh.isBorderVertex(candidate.v))
        return false;
    const Bend bend = getBend(candidate.v);
    if (getGain(bend) != candidate.gain)
        return false;
    if (mayFill(bend))
        fill(bend);
    else if (mayDrop(bend))
    {
        mesh.killTriangle(HalfEdgeMesh::triangleOf(bend.in));
        ++numDropped;
    }
    else
        return false;
    return true;
}

void BorderEvening::fill(const Bend& bend)
{
    const int u = mesh.from(bend.in);
    const int v = mesh.to(bend.in);
    const int w = mesh.to(bend.out);
    const int h = 4 * mesh.addTriangle(w, v, u);
    mesh.setLabel(HalfEdgeMesh::triangleOf(h), mesh.label(HalfEdgeMesh::triangleOf(bend.in)));
    mesh.link(h, bend.out);
    mesh.link(h + 1, bend.in);
    mesh.refreshVertex(w, h);
    mesh.refreshVertex(v, h + 1);
    mesh.refreshVertex(u, h + 2);
    ++numFilled;
}

} // namespace TARN_ZEF
