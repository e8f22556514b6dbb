#ifndef ZEF_MESH_H
#define ZEF_MESH_H

#include "Point3.h"
#include "zef_export.h"

#include <string>
#include <vector>

namespace TARN_ZEF
{
class RMesh;

// A finished triangle mesh, as the reconstruction hands it out in a std::shared_ptr.
//
// Ownership:  owns its vertices and triangles. Every Point3* that it hands out points into the mesh and is
//             valid as long as the mesh lives; smoothing moves the point under the pointer.
// Threads:    none; one mesh belongs to one thread at a time.
class ZEF_API Mesh
{
public:
    // Takes ownership. Only the library itself can make an RMesh.
    explicit Mesh(RMesh* pRMesh);
    ~Mesh();
    Mesh(const Mesh&) = delete;
    Mesh& operator=(const Mesh&) = delete;

    // For the library's own functions.
    [[nodiscard]] RMesh* getRMesh();
    [[nodiscard]] const RMesh* getRMesh() const;

    // The vertices that triangles use, each once, in an order that is the same in every run. vPoints must
    // come in empty.
    void getPoints(std::vector<Point3*>& vPoints) const;

    // Appends the corners of all triangles; three consecutive entries are one triangle, counter-clockwise
    // seen from outside.
    void getTriangles(std::vector<Point3*>& vTriCorners) const;

    // The indexed mesh: vPoints as getPoints() gives it, and three consecutive entries of vTriangleCorners,
    // indices into vPoints, for each triangle. Both must come in empty.
    void getVertexIndexData(std::vector<Point3*>& vPoints, std::vector<int>& vTriangleCorners) const;

    // Mean length of the edges in use, in units of the points; -1.0 without any.
    [[nodiscard]] double getAverageEdgeLength() const;

    // Prints the number of triangles, and of edges by the number of triangles they carry, under the title s.
    void printStatistics(const std::string& s) const;

    // Writers. The result is false, with a message that tells why, if the file could not be written whole.
    // PLY holds coordinates as float, or as double where a float is coarser than a thousandth of a cell. Mind the two PLY names: they are crossed. writePly_BIN writes ASCII,
    // writePly_ASCII writes binary; callers rely on it, so it stays.
    [[nodiscard]] bool writePly_ASCII(const std::string& name) const;
    [[nodiscard]] bool writePly_BIN(const std::string& name) const;
    [[nodiscard]] bool writeStl_ASCII(const std::string& name) const;
    // A Geomview scene (".list").
    [[nodiscard]] bool writeGeomview_ASCII(const std::string& name) const;

private:
    RMesh* pRMesh;
};

} // namespace TARN_ZEF

#endif
