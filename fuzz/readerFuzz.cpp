// A file of one format: it is read or not, without harm, and no reader forgets what it was given before.
#include "fuzzing.h"

using namespace TARN_ZEF;

namespace
{
// What the earlier calls read is appended, or nothing is.
void requireAppended(std::string& name)
{
    std::vector<Point3> v = {Point3(7, 7, 7)};
    const bool bRead =
        getFileType(name) == FT_STL ? readSTL_ASCII(name.c_str(), v) : readPoints_auto(name, v);
    require(!v.empty() && v.front() == Point3(7, 7, 7));
    require(bRead || v.size() == 1);
}

template <typename Attributes>
void requireFitting(const Attributes& v, const std::vector<Point3>& vPoints)
{
    require(v.empty() || v.size() == vPoints.size());
}

void requirePoints(const std::string& name)
{
    try
    {
        const PointData data = readPoints(name);
        requireFitting(data.vNormals, data.vPoints);
        requireFitting(data.vColors, data.vPoints);
        requireFitting(data.vIntensities, data.vPoints);
    }
    catch (const ZefBadFile&)
    {
    }
}

void requireTriangles(const std::string& name)
{
    try
    {
        static_cast<void>(holdsTriangles(name));
        const TriangleData data = readTriangles(name);
        requireFitting(data.vColors, data.vPoints);
        require(data.vCorners.size() % 3 == 0);
        for (const std::uint32_t corner : data.vCorners)
            require(corner < data.vPoints.size());
    }
    catch (const ZefBadFile&)
    {
    }
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t num)
{
    beSilent();
    std::string name = getFileName(ZEF_FUZZ_EXTENSION);
    std::FILE* const pFile = std::fopen(name.c_str(), "wb");
    require(pFile != nullptr && std::fwrite(pData, 1, num, pFile) == num);
    std::fclose(pFile);
    if (getFileType(name) != FT_UNKNOWN)
        requireAppended(name);
    requirePoints(name);
    requireTriangles(name);
    std::remove(name.c_str());
    return 0;
}
