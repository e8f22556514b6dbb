#include "remesh/TwinPatches.h"

#include "core/cancel.h"
#include "remesh/samePlaces.h"

#include <algorithm>
#include <array>
#include <map>

namespace TARN_ZEF
{
namespace
{
constexpr int NONE = HalfEdgeMesh::NONE;

std::vector<int> placesOf(const HalfEdgeMesh& mesh)
{
    std::vector<Point3> vPoints;
    vPoints.reserve(mesh.endVertices());
    for (int v = 0; v < mesh.endVertices(); ++v)
        vPoints.push_back(mesh.point(v));
    return findSamePlaces(vPoints);
}

// A triangle by its corners from the lowest place on; turned over it has the same name.
struct NamedTriangle
{
    std::array<int, 3> places;
    bool bTurned = false;
    int triangle = NONE;
};

NamedTriangle nameOf(const HalfEdgeMesh& mesh, int t, const std::vector<int>& vPlace)
{
    NamedTriangle named;
    for (int k = 0; k < 3; ++k)
        named.places[k] = vPlace[mesh.from(4 * t + k)];
    std::rotate(named.places.begin(), std::min_element(named.places.begin(), named.places.end()),
                named.places.end());
    named.bTurned = named.places[1] > named.places[2];
    if (named.bTurned)
        std::swap(named.places[1], named.places[2]);
    named.triangle = t;
    return named;
}

// By triangle, the only other one on the same corners if it faces the other way.
std::vector<int> findOpposites(const HalfEdgeMesh& mesh)
{
    const std::vector<int> vPlace = placesOf(mesh);
    std::vector<NamedTriangle> vNamed;
    vNamed.reserve(mesh.endTriangles());
    for (int t = 0; t < mesh.endTriangles(); ++t)
        vNamed.push_back(nameOf(mesh, t, vPlace));
    std::sort(vNamed.begin(), vNamed.end(),
              [](const NamedTriangle& a, const NamedTriangle& b)
              { return a.places != b.places ? a.places < b.places : a.triangle < b.triangle; });
    std::vector<int> vOpposite(mesh.endTriangles(), NONE);
    for (std::size_t from = 0; from < vNamed.size();)
    {
        std::size_t to = from + 1;
        while (to < vNamed.size() && vNamed[to].places == vNamed[from].places)
            ++to;
        if (to - from == 2 && vNamed[from].bTurned != vNamed[from + 1].bTurned)
        {
            vOpposite[vNamed[from].triangle] = vNamed[from + 1].triangle;
            vOpposite[vNamed[from + 1].triangle] = vNamed[from].triangle;
        }
        from = to;
    }
    return vOpposite;
}
} // namespace

TwinPatches::TwinPatches(const SourceSurface& source)
{
    findTwins(source);
}

// Each triangle of the one lies on one of the other.
void TwinPatches::findTwins(const SourceSurface& source)
{
    const HalfEdgeMesh& mesh = source.getMesh();
    const std::vector<int> vOpposite = findOpposites(mesh);
    constexpr int unknown = -2;
    std::vector<int> vTwinOf(source.getPatches().size(), unknown);
    for (int t = 0; t < mesh.endTriangles(); ++t)
    {
        int& twin = vTwinOf[mesh.label(t)];
        const int other = vOpposite[t] == NONE ? NONE : mesh.label(vOpposite[t]);
        twin = twin == unknown || twin == other ? other : NONE;
    }
    for (int i = 0; i < static_cast<int>(vTwinOf.size()); ++i)
        if (vTwinOf[i] > i && vTwinOf[vTwinOf[i]] == i)
            vTwins.emplace_back(i, vTwinOf[i]);
}

void TwinPatches::getFlat(const HalfEdgeMesh& mesh, FlatSoup& flat) const
{
    if (vTwins.empty())
    {
        mesh.getFlat(flat.vPoints, flat.vCorners);
        return;
    }
    std::map<int, std::vector<int>> trianglesOf;
    for (const auto& [kept, replaced] : vTwins)
    {
        trianglesOf[kept];
        trianglesOf[replaced];
    }
    for (int t = 0; t < mesh.endTriangles(); ++t)
        if (const auto it = mesh.isAlive(t) ? trianglesOf.find(mesh.label(t)) : trianglesOf.end();
            it != trianglesOf.end())
            it->second.push_back(t);
    // Numbers are those of the mesh until the end; dead triangles and those that are replaced have no corners.
    FlatSoup all;
    for (int v = 0; v < mesh.endVertices(); ++v)
        all.vPoints.push_back(mesh.point(v));
    for (int t = 0; t < mesh.endTriangles(); ++t)
        for (int k = 0; k < 3; ++k)
            all.vCorners.push_back(mesh.isAlive(t) ? mesh.from(4 * t + k) : NONE);
    const std::vector<int> vPlace = findSamePlaces(all.vPoints);
    for (const auto& [label, twin] : vTwins)
    {
        checkCancelled();
        const Face kept = collectFace(mesh, trianglesOf[label], vPlace);
        const Face replaced = collectFace(mesh, trianglesOf[twin], vPlace);
        if (fit(kept, replaced))
            replace(mesh, kept, replaced, all);
    }
    std::vector<int> vNumber(all.vPoints.size(), NONE);
    for (const int v : all.vCorners)
    {
        if (v == NONE)
            continue;
        if (vNumber[v] == NONE)
        {
            vNumber[v] = static_cast<int>(flat.vPoints.size());
            flat.vPoints.push_back(all.vPoints[v]);
        }
        flat.vCorners.push_back(vNumber[v]);
    }
}

TwinPatches::Face TwinPatches::collectFace(const HalfEdgeMesh& mesh, std::vector<int> vTriangles,
                                           const std::vector<int>& vPlace)
{
    Face face;
    for (const int t : vTriangles)
        for (int h = 4 * t; h < 4 * t + 3; ++h)
            if (mesh.feature(h) != 0)
            {
                face.vBorder.emplace_back(vPlace[mesh.from(h)], vPlace[mesh.to(h)]);
                face.vRim.emplace_back(vPlace[mesh.from(h)], mesh.from(h));
            }
    std::sort(face.vBorder.begin(), face.vBorder.end());
    std::sort(face.vRim.begin(), face.vRim.end());
    face.vTriangles = std::move(vTriangles);
    return face;
}

// Whether the borders are the same edges, run the other way, and pass each place once.
bool TwinPatches::fit(const Face& kept, const Face& replaced)
{
    std::vector<std::pair<int, int>> vTurned;
    for (const auto& [from, to] : replaced.vBorder)
        vTurned.emplace_back(to, from);
    std::sort(vTurned.begin(), vTurned.end());
    const auto isOnce = [](const Face& face)
    {
        return std::adjacent_find(face.vRim.begin(), face.vRim.end(),
                                  [](const auto& a, const auto& b)
                                  { return a.first == b.first; }) == face.vRim.end();
    };
    return vTurned == kept.vBorder && isOnce(kept) && isOnce(replaced);
}

void TwinPatches::replace(const HalfEdgeMesh& mesh, const Face& kept, const Face& replaced, FlatSoup& flat)
{
    for (const int t : replaced.vTriangles)
        std::fill_n(flat.vCorners.begin() + 3 * static_cast<std::ptrdiff_t>(t), 3, NONE);
    std::map<int, int> copyOf; // of a vertex of the kept face
    for (const auto& [place, v] : kept.vRim)
        copyOf[v] = std::lower_bound(replaced.vRim.begin(), replaced.vRim.end(), std::pair(place, 0))->second;
    for (const int t : kept.vTriangles)
        for (const int k : {0, 2, 1})
        {
            const int v = mesh.from(4 * t + k);
            const auto [it, bNew] = copyOf.try_emplace(v, static_cast<int>(flat.vPoints.size()));
            if (bNew)
                flat.vPoints.push_back(mesh.point(v));
            flat.vCorners.push_back(it->second);
        }
}

} // namespace TARN_ZEF
