#include "formatNames.h"

#include <algorithm>
#include <filesystem>

#include "zef_formats.h"

namespace TARN_TOOL
{
std::string extensionOf(const std::string& name)
{
    std::string extension = std::filesystem::path(name).extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return extension;
}

TARN_ZEF::FileType oldTypeOf(const std::string& name)
{
    // The library refuses a name that is shorter than any extension.
    return TARN_ZEF::getFileType(std::string(5, '_') + name);
}

bool isMeshFormat(const std::string& name)
{
    return TARN_ZEF::getFormatUse(name).bWritesTriangles || oldTypeOf(name) == TARN_ZEF::FT_LIST;
}

bool isPointFormat(const std::string& name)
{
    return TARN_ZEF::getFormatUse(name).bWritesPoints;
}

const char* meshFormats()
{
    return ".ply, .stl, .obj, .off, .glb or .list";
}

const char* pointFormats()
{
    return ".ply, .las, .pcd, .xyz, .txt, .asc, .csv, .pts, .ptx, .obj, .off or .bin";
}

} // namespace TARN_TOOL
