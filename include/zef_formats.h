// Files of points and of triangles in all formats that the library knows, told apart by what they hold.
// zef_files.h has the earlier calls, each for one format.
#ifndef ZEF_ZEF_FORMATS_H
#define ZEF_ZEF_FORMATS_H

#include "Mesh.h"
#include "Point3.h"
#include "Vector3.h"
#include "ZefRefusedException.h"
#include "zef_export.h"

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace TARN_ZEF
{
// A file cannot be read or written. what() tells the file, the line or byte, what was found there, and what to
// do about it.
class ZEF_API ZefBadFile : public ZefRefusedException
{
public:
    explicit ZefBadFile(const std::string& reason);
    ~ZefBadFile() override;
};

// Red, green, blue.
using PointColor = std::array<std::uint8_t, 3>;

// Points, and what a file tells about each of them.
//
// Invariant:  an attribute is empty, or has an entry for each point.
struct PointData
{
    std::vector<Point3> vPoints;
    std::vector<Vector3> vNormals; // as the file has them
    std::vector<PointColor> vColors;
    std::vector<double> vIntensities;

    std::string format;              // name of the format that the file has: "PCD"
    std::uint64_t numSkipped = 0;    // rows or records that were left out
    std::vector<std::string> vNotes; // for the user: what was left out, or taken for what
};

// A mesh of triangles, or a soup.
struct TriangleData
{
    std::vector<Point3> vPoints;
    std::vector<std::uint32_t> vCorners; // indices into vPoints; three consecutive entries are one triangle
    std::vector<PointColor> vColors;     // empty, or one for each point

    std::string format;
    std::uint64_t numSkipped = 0; // faces that were left out
    std::vector<std::string> vNotes;
};

struct ReadOptions
{
    // Text: what the columns hold, as in "x,y,z,i,r,g,b"; nx, ny, nz are a normal, "-" is passed over. Empty:
    // found from a header line or from the shape of the rows.
    std::string columns;
    // LAS: which classes are taken; empty: all. 2 is ground, 6 is buildings, 7 is noise.
    std::vector<int> vClasses;
    // LAS: whether only the last return of each pulse is taken.
    bool bLastReturns = false;
};

struct WriteOptions
{
    bool bASCII = false; // text where a format has both forms
    // Length in units of the points that the coordinates must tell. Floats are written where they tell a
    // thousandth of it, doubles elsewhere. 0.0: doubles, unless floats hold the coordinates exactly.
    double spacing = 0.0;
    bool bCompressed = false; // PCD, unless bASCII: as binary_compressed, which takes longer
    bool bYUp = false; // GLB: turned so that what pointed up along z points up along y, as viewers expect
};

// Each call finds the format by what the file holds, and where that tells nothing by its name. It reports
// progress under "Read" or "Write" and throws ZefBadFile; then no half-written file stays. Coordinates are
// doubles throughout.

// PLY, OBJ, OFF, PCD, LAS, BIN, and text in columns: XYZ, ASC, CSV, TXT, PTS, PTX. Without points the result
// is empty and has a note.
[[nodiscard]] ZEF_API PointData readPoints(const std::string& path, const ReadOptions& options = {});

// PLY, STL, OBJ, OFF, GLB. A face of more than three corners is cut into triangles, a concave one rightly if
// it is plane.
[[nodiscard]] ZEF_API TriangleData readTriangles(const std::string& path);

// Whether the file holds triangles, as far as its format and head tell.
[[nodiscard]] ZEF_API bool holdsTriangles(const std::string& path);

// By extension: PLY, OBJ, OFF, PCD, LAS, BIN, XYZ, ASC, TXT, CSV, PTS, PTX. Attributes go along where the
// format has a place for them.
ZEF_API void writePoints(const std::string& path, const PointData& data, const WriteOptions& options = {});

// By extension: PLY, STL, OBJ, OFF, GLB.
ZEF_API void writeTriangles(const std::string& path, const TriangleData& data,
                            const WriteOptions& options = {});
ZEF_API void writeMesh(const std::string& path, const Mesh& mesh, const WriteOptions& options = {});

// A finished mesh of the triangles, for post-processing and judging; corners at one place become one vertex.
// Triangles with a corner that is not finite, or two at one place, are left out. An empty pointer if none is
// left. Nothing is repaired: where more than two triangles meet, finishSurface() parts them.
// Throws ZefBadArgument if the number of corners is no multiple of 3, or a corner is no index of a point.
[[nodiscard]] ZEF_API std::shared_ptr<Mesh> makeMesh(const TriangleData& data);

// What an extension stands for.
struct FormatUse
{
    bool bReadsPoints = false;
    bool bReadsTriangles = false;
    bool bWritesPoints = false;
    bool bWritesTriangles = false;
};
// All false for an extension that is not known.
[[nodiscard]] ZEF_API FormatUse getFormatUse(const std::string& path);

} // namespace TARN_ZEF

#endif
