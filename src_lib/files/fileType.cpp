#include "zef_files.h"

#include <stdexcept>
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

std::string_view getTail(const std::string& filename, std::size_t length)
{
    if (filename.length() < length)
        throw std::out_of_range(
            "invalid string position: the file name \"" + filename +
            "\" is shorter than an extension; give a name that ends in one, such as .ply");
    return std::string_view(filename).substr(filename.length() - length);
}
} // namespace

FileType getFileType(const std::string& filename)
{
    const std::string_view tail4 = getTail(filename, 4);
    for (const Extension& extension : EXTENSIONS_4)
    {
        if (tail4 == extension.spelling)
            return extension.type;
    }
    const std::string_view tail5 = getTail(filename, 5);
    for (const Extension& extension : EXTENSIONS_5)
    {
        if (tail5 == extension.spelling)
            return extension.type;
    }
    return FT_UNKNOWN;
}

} // namespace TARN_ZEF
