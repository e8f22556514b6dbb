#include "zef_files.h"

#include <string_view>

namespace TARN_ZEF
{
namespace
{
struct Extension
{
    std::string_view spelling;
    FileType type;
};

constexpr Extension EXTENSIONS_4[] = {
    {".stl", FT_STL},   {".STL", FT_STL},   {".Stl", FT_STL},   {".ply", FT_PLY},   {".PLY", FT_PLY},
    {".Ply", FT_PLY},   {".xyz", FT_ASCII}, {".XYZ", FT_ASCII}, {".Xyz", FT_ASCII}, {".txt", FT_ASCII},
    {".TXT", FT_ASCII}, {".Txt", FT_ASCII}, {".asc", FT_ASCII}, {".ASC", FT_ASCII}, {".Asc", FT_ASCII},
    {".bin", FT_BIN},   {".BIN", FT_BIN},   {".Bin", FT_BIN},
};
constexpr Extension EXTENSIONS_5[] = {{".list", FT_LIST}, {".LIST", FT_LIST}, {".List", FT_LIST}};
} // namespace

FileType getFileType(const std::string& filename)
{
    // In a name that is too short the position wraps, and substr throws.
    const std::string tail4 = filename.substr(filename.length() - 4);
    for (const Extension& extension : EXTENSIONS_4)
    {
        if (tail4 == extension.spelling)
            return extension.type;
    }
    const std::string tail5 = filename.substr(filename.length() - 5);
    for (const Extension& extension : EXTENSIONS_5)
    {
        if (tail5 == extension.spelling)
            return extension.type;
    }
    return FT_UNKNOWN;
}

} // namespace TARN_ZEF
