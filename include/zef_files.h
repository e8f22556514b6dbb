// Reading and writing of point files, and reading of triangle soups. zef_api_functions.h includes this.
#ifndef ZEF_ZEF_FILES_H
#define ZEF_ZEF_FILES_H

#include "Point3.h"
#include "zef_export.h"

#include <string>
#include <vector>

namespace TARN_ZEF
{
// The values matter. Extensions count in lower case, in upper case, and with a capital first letter.
enum FileType
{
    FT_STL = 0,    // .stl
    FT_PLY = 1,    // .ply
    FT_ASCII = 2,  // .xyz .txt .asc
    FT_BIN = 3,    // .bin
    FT_LIST = 4,   // .list
    FT_UNKNOWN = 5 // anything else
};

// By extension. Throws std::out_of_range, whose what() names the file, if the name is shorter than an
// extension. So do the calls that choose by extension.
[[nodiscard]] ZEF_API FileType getFileType(const std::string& filename);

// Readers append to vPoints and leave what was there. On failure the result is false, one line tells the
// file and the reason, and nothing was appended.

// By extension: PLY, text or ".bin". STL is not read here.
[[nodiscard]] ZEF_API bool readPoints_auto(std::string& filename, std::vector<Point3>& vPoints);
// One point a line, three numbers separated by white space; the rest of a line is ignored, and a line that
// does not start with three numbers is skipped. Independent of the locale.
[[nodiscard]] ZEF_API bool readPoints_ASCII(const char* filename, std::vector<Point3>& vPoints);
// int32 30 (or 20: no z, read as 0.0), uint64 count, then the coordinates as doubles, little-endian,
// without padding. A file that is too short reads as 0.0 from where it ends, with a warning that tells both
// numbers of points; if it lacks more than 65536 points and more than it holds, it is refused.
[[nodiscard]] ZEF_API bool readPoints_BIN(const char* filename, std::vector<Point3>& vPoints);
// Triangle corners of an ASCII STL: three entries are one triangle. Binary STL is refused.
[[nodiscard]] ZEF_API bool readSTL_ASCII(const char* filename, std::vector<Point3>& vPoints);
// The vertices of a PLY, or, without bPointsOnly, its triangle corners: three entries are one triangle. A
// face of n corners counts as the fan of n - 2 triangles.
[[nodiscard]] ZEF_API bool readPly(const char* filename, bool bPointsOnly, std::vector<Point3>& vPoints);

// Writers. Lines end in a line feed on every system. The result is false, with one line that tells why, if the file could not be written whole.

// By extension. An unknown one is reported, a PLY is written under the given name, and the result is false.
[[nodiscard]] ZEF_API bool writePoints_auto(std::string& filename, std::vector<Point3>& vPoints, bool bASCII);
// 18 digits: the doubles come back exactly.
[[nodiscard]] ZEF_API bool writePoints_ASCII(const char* filename, const std::vector<Point3>& vPoints);
[[nodiscard]] ZEF_API bool writePoints_BIN(const char* filename, std::vector<Point3>& vPoints);
// PLY holds the coordinates as float: large coordinates lose digits.
[[nodiscard]] ZEF_API bool writePointsPly(const std::string& filename, std::vector<Point3>& vPoints,
                                          bool bASCII);

} // namespace TARN_ZEF

#endif
