// Triangles of any kind: remeshed or melted they are sound once finished.
#include "fuzzing.h"

using namespace TARN_ZEF;

namespace
{
void tryRemesh(const std::vector<Point3>& soup)
{
    RemeshOptions options;
    options.maxTriangles = 1000;
    try
    {
        const std::shared_ptr<Mesh> pMesh = remesh(soup, options);
        if (pMesh != nullptr)
            requireSound(finishSurface(*pMesh));
    }
    catch (const ZefRefusedException&)
    {
        // With a reason: as promised.
    }
}

void tryMelt(std::vector<Point3> soup, double spacing)
{
    try
    {
        const std::shared_ptr<Mesh> pMesh = melt(soup, spacing, 30.0);
        if (pMesh != nullptr)
            requireSound(finishSurface(*pMesh));
    }
    catch (const ZefRefusedException&)
    {
        // Likewise.
    }
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t num)
{
    beSilent();
    Bytes bytes(pData, num);
    const double spacing = 0.5 + bytes.take() / 64.0;
    std::vector<Point3> soup = bytes.takePoints(90);
    soup.resize(soup.size() / 3 * 3);
    tryRemesh(soup);
    tryMelt(soup, spacing);
    return 0;
}
