#include "finish/SmallHoles.h"

#include "finish/directions.h"
#include "finish/fillLoops.h"
#include "geometry/tools.h"

#include <cmath>

namespace TARN_ZEF
{
namespace
{
// A sum of angles of triangles, by half turns and a direction within the last one. Roots are all that it takes, so
// that it is the same on every system.
class AngleSum
{
public:
    // The angle between the vectors.
    void add(const Vector3& a, const Vector3& b)
    {
        const double cosine = a * b;
        const double sine = crossProduct(a, b).length();
        const double length = std::sqrt(cosine * cosine + sine * sine);
        if (!(length > 0.0))
            return;
        const double oldX = x;
        x = (oldX * cosine - y * sine) / length;
        y = (oldX * sine + y * cosine) / length;
        if (y >= 0.0)
            return;
        x = -x;
        y = -y;
        ++numHalfTurns;
    }
    [[nodiscard]] std::size_t getNumHalfTurns() const noexcept { return numHalfTurns; }

private:
    std::size_t numHalfTurns = 0;
    double x = 1.0;
    double y = 0.0;
};
} // namespace

SmallHoles::SmallHoles(HalfEdgeMesh& mesh_)
    : mesh(mesh_)
{
}

std::size_t SmallHoles::close(std::size_t maxEdges)
{
    std::vector<std::uint8_t> vIsSeen(static_cast<std::size_t>(mesh.endVertices()), 0);
    std::vector<std::uint8_t> vIsHole(vIsSeen);
    for (int v = 0; v < mesh.endVertices(); ++v)
    {
        if (!mesh.isAliveVertex(v) || !mesh.isBorderVertex(v) || vIsSeen[static_cast<std::size_t>(v)] != 0)
            continue;
        std::vector<int> vLoop;
        for (int u = v; vIsSeen[static_cast<std::size_t>(u)] == 0; u = mesh.to(mesh.outgoing(u)))
        {
            vIsSeen[static_cast<std::size_t>(u)] = 1;
            vLoop.push_back(u);
        }
        if (vLoop.size() <= maxEdges && isHole(vLoop))
            vIsHole[static_cast<std::size_t>(v)] = 1;
    }
    return fillLoops(mesh, maxEdges, [&](int v) { return vIsHole[static_cast<std::size_t>(v)] != 0; });
}

bool SmallHoles::isHole(const std::vector<int>& vLoop) const
{
    AngleSum sum;
    for (const int v : vLoop)
        mesh.forEachOutgoing(v,
                             [&](int h)
                             {
                                 const Point3& p = mesh.point(v);
                                 sum.add(mesh.point(mesh.to(h)) - p, mesh.point(mesh.apex(h)) - p);
                             });
    return sum.getNumHalfTurns() > vLoop.size();
}

} // namespace TARN_ZEF
