// Points of any kind become a mesh, that one a sound mesh, and that a file whose points can be read.
#include "fuzzing.h"

using namespace TARN_ZEF;

namespace
{
// What is left of a heap of folds can be nothing.
bool hasTriangles(const Mesh& mesh)
{
    std::vector<Point3*> vPoints;
    std::vector<int> vCorners;
    mesh.getVertexIndexData(vPoints, vCorners);
    return !vCorners.empty();
}

void requireWritable(const std::shared_ptr<Mesh>& pMesh)
{
    std::string name = getFileName("_chain.ply");
    require(writeMesh_auto(name, pMesh, true));
    std::vector<Point3> v;
    require(readPoints_auto(name, v) && !v.empty());
    std::remove(name.c_str());
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t num)
{
    beSilent();
    Bytes bytes(pData, num);
    const bool bSmooth = (bytes.take() & 1) != 0;
    const double factor = 0.5 + bytes.take() / 64.0;
    std::vector<Point3> cloud = bytes.takePoints(400);
    try
    {
        const std::shared_ptr<Mesh> pMesh = reconstruct_auto(cloud, bSmooth, factor);
        if (pMesh == nullptr)
            return 0;
        const std::shared_ptr<Mesh> pDone = finishSurface(*pMesh, cloud);
        requireSound(pDone);
        if (pDone != nullptr && hasTriangles(*pDone))
            requireWritable(pDone);
    }
    catch (const ZefRefusedException&)
    {
        // With a reason: as promised.
    }
    return 0;
}
