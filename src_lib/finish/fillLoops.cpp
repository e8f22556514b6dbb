#include "finish/fillLoops.h"

#include "geometry/tools.h"

#include <array>
#include <cfloat>
#include <cstdint>
#include <vector>

namespace TARN_ZEF
{
namespace
{

// The loop of border vertices that starts at v, in the direction of the border half-edges.
std::vector<int> walkLoop(const HalfEdgeMesh& mesh, int v, std::size_t maxEdges)
{
    std::vector<int> vLoop;
    int at = v;
    do
    {
        vLoop.push_back(at);
        at = mesh.to(mesh.outgoing(at));
    } while (at != v && vLoop.size() <= maxEdges);
    return vLoop;
}

// The triangulation of least area of a polygon, over all ways to cut it.
class LeastArea
{
public:
    LeastArea(const HalfEdgeMesh& mesh_, const std::vector<int>& vLoop_)
        : mesh(mesh_)
        , vLoop(vLoop_)
        , num(vLoop_.size())
        , vArea(num * num, 0.0)
        , vMiddle(num * num, 0)
    {
    }

    // Appends the triangles, facing against the loop. False if there is no way.
    [[nodiscard]] bool run(std::vector<std::array<int, 3>>& vTriangles)
    {
        for (std::size_t width = 2; width < num; ++width)
            for (std::size_t i = 0; i + width < num; ++i)
                choose(i, i + width);
        if (!(vArea[num - 1] < DBL_MAX))
            return false;
        collect(0, num - 1, vTriangles);
        return true;
    }

private:
    void choose(std::size_t i, std::size_t k)
    {
        const bool bIsChord = !(i == 0 && k + 1 == num);
        double& best = vArea[i * num + k];
        best = DBL_MAX;
        if (bIsChord && mesh.hasEdge(vLoop[i], vLoop[k]))
            return;
        for (std::size_t j = i + 1; j < k; ++j)
        {
            const double area =
                vArea[i * num + j] + vArea[j * num + k] +
                getAreaByCross(mesh.point(vLoop[i]), mesh.point(vLoop[j]), mesh.point(vLoop[k]));
            if (area < best)
            {
                best = area;
                vMiddle[i * num + k] = j;
            }
        }
    }

    void collect(std::size_t i, std::size_t k, std::vector<std::array<int, 3>>& vTriangles) const
    {
        if (k < i + 2)
            return;
        const std::size_t j = vMiddle[i * num + k];
        vTriangles.push_back({vLoop[k], vLoop[j], vLoop[i]});
        collect(i, j, vTriangles);
        collect(j, k, vTriangles);
    }

    const HalfEdgeMesh& mesh;
    const std::vector<int>& vLoop;
    std::size_t num;
    std::vector<double> vArea; // of the polygon i to k
    std::vector<std::size_t> vMiddle;
};

void addTriangles(HalfEdgeMesh& mesh, const std::vector<std::array<int, 3>>& vTriangles)
{
    std::vector<int> vAdded;
    vAdded.reserve(vTriangles.size());
    for (const auto& corners : vTriangles)
        vAdded.push_back(mesh.addTriangle(corners[0], corners[1], corners[2]));
    const auto findOpen = [&](int a, int b)
    {
        // Of an old triangle, or of a new one that is not linked yet.
        for (const int t : vAdded)
            for (int h = 4 * t; h < 4 * t + 3; ++h)
                if (mesh.from(h) == a && mesh.to(h) == b)
                    return h;
        return mesh.outgoing(a);
    };
    for (const int t : vAdded)
        for (int h = 4 * t; h < 4 * t + 3; ++h)
            if (mesh.isBorder(h))
                mesh.link(h, findOpen(mesh.to(h), mesh.from(h)));
    for (const int t : vAdded)
        for (int h = 4 * t; h < 4 * t + 3; ++h)
            mesh.refreshVertex(mesh.from(h), h);
}
} // namespace

std::size_t fillLoops(HalfEdgeMesh& mesh, std::size_t maxEdges, const std::function<bool(int)>& mayFill)
{
    std::size_t numFilled = 0;
    std::vector<std::uint8_t> vDone(static_cast<std::size_t>(mesh.endVertices()), 0);
    for (int v = 0; v < mesh.endVertices(); ++v)
    {
        if (vDone[static_cast<std::size_t>(v)] != 0 || !mesh.isAliveVertex(v) || !mesh.isBorderVertex(v) ||
            !mayFill(v))
            continue;
        const std::vector<int> vLoop = walkLoop(mesh, v, maxEdges);
        for (const int u : vLoop)
            vDone[static_cast<std::size_t>(u)] = 1;
        std::vector<std::array<int, 3>> vTriangles;
        if (vLoop.size() < 3 || vLoop.size() > maxEdges || !LeastArea(mesh, vLoop).run(vTriangles))
            continue;
        addTriangles(mesh, vTriangles);
        ++numFilled;
    }
    return numFilled;
}

} // namespace TARN_ZEF
