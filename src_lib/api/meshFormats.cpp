// Finished meshes to files of every format, and back.
#include "api/flatMesh.h"
#include "geometry/PointTable.h"
#include "geometry/isFinite.h"
#include "geometry/requireTriangles.h"
#include "zef_formats.h"

#include <utility>

namespace TARN_ZEF
{
namespace
{
// The mean edge of the triangles, for the lengths of post-processing.
[[nodiscard]] double meanEdge(const std::vector<Point3>& vPoints, const std::vector<std::uint32_t>& vCorners)
{
    double sum = 0.0;
    for (std::size_t i = 0; i < vCorners.size(); ++i)
    {
        const std::size_t next = i % 3 == 2 ? i - 2 : i + 1;
        sum += (vPoints[vCorners[next]] - vPoints[vCorners[i]]).length();
    }
    return vCorners.empty() ? 0.0 : sum / static_cast<double>(vCorners.size());
}
} // namespace

void writeMesh(const std::string& path, const Mesh& mesh, const WriteOptions& options)
{
    TriangleData data;
    std::vector<int> vCorners;
    getFlat(mesh, data.vPoints, vCorners);
    data.vCorners.assign(vCorners.begin(), vCorners.end());
    writeTriangles(path, data, options);
}

std::shared_ptr<Mesh> makeMesh(const TriangleData& data)
{
    requireTriangles(data.vPoints.size(), data.vCorners);
    std::vector<Point3> vVertices;
    vVertices.reserve(data.vPoints.size()); // the table keeps pointers
    PointTable table;
    table.reserve(data.vPoints.size());
    const auto getNumber = [&](const Point3& p)
    {
        if (const Point3* pFound = table.find(p))
            return static_cast<std::uint32_t>(pFound - vVertices.data());
        vVertices.push_back(p);
        static_cast<void>(table.insert(&vVertices.back()));
        return static_cast<std::uint32_t>(vVertices.size() - 1);
    };
    std::vector<std::uint32_t> vCorners;
    vCorners.reserve(data.vCorners.size());
    for (std::size_t i = 0; i < data.vCorners.size(); i += 3)
    {
        const Point3& a = data.vPoints[data.vCorners[i]];
        const Point3& b = data.vPoints[data.vCorners[i + 1]];
        const Point3& c = data.vPoints[data.vCorners[i + 2]];
        if (isFinite(a) && isFinite(b) && isFinite(c) && a != b && b != c && c != a)
            vCorners.insert(vCorners.end(), {getNumber(a), getNumber(b), getNumber(c)});
    }
    if (vCorners.empty())
        return nullptr;
    const double cellSize = meanEdge(vVertices, vCorners);
    return makeMesh(std::move(vVertices), std::move(vCorners), cellSize);
}

} // namespace TARN_ZEF
