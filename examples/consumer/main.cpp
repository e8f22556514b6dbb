// Reconstructs the sample surface, follows the progress, writes the mesh and reads it back.
#include "zef.h"

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace
{
class LastFraction : public TARN_ZEF::ProgressBase
{
public:
    void update(const std::string&, double fraction) override { last = fraction; }
    double last = 0.0;
};

bool run(const std::string& meshName)
{
    LastFraction progress;
    TARN_ZEF::subscribe(&progress);

    std::vector<TARN_ZEF::Point3> points;
    TARN_ZEF::generateSampleSurface(20000, 1, points);
    const std::shared_ptr<TARN_ZEF::Mesh> pMesh = TARN_ZEF::reconstruct_auto(points, false, 1.0);
    if (!pMesh || progress.last != 1.0)
        return false;

    std::vector<TARN_ZEF::Point3*> vertices;
    std::vector<int> corners; // three indices into vertices are one triangle
    pMesh->getVertexIndexData(vertices, corners);

    std::vector<TARN_ZEF::Point3> written;
    if (!TARN_ZEF::writeMesh_auto(meshName, pMesh, true) ||
        !TARN_ZEF::readPly(meshName.c_str(), false, written))
        return false;
    std::printf("%zu points, %zu vertices, %zu triangles\n", points.size(), vertices.size(),
                corners.size() / 3);
    return !corners.empty() && written.size() == corners.size();
}

// An exception of the library must be caught by its type across the library's boundary.
bool refusesBadSpacing()
{
    std::vector<TARN_ZEF::Point3> points;
    TARN_ZEF::generateSampleSurface(100, 1, points);
    try
    {
        const auto pMesh = TARN_ZEF::reconstruct_abs(points, false, -1.0);
        std::printf("unexpected answer %p\n", static_cast<void*>(pMesh.get()));
    }
    catch (const TARN_ZEF::ZefBadArgument& refused)
    {
        return std::string(refused.what()).find("spacing is -1") == 0;
    }
    return false;
}
} // namespace

int main(int argc, char** argv)
{
    return argc == 2 && run(argv[1]) && refusesBadSpacing() ? 0 : 1;
}
