#ifndef ZEF_TOOLS_TARGETS_H
#define ZEF_TOOLS_TARGETS_H

#include "Image.h"
#include "MeshSource.h"
#include "SafeOutputFile.h"

#include <optional>
#include <string>

namespace TARN_TOOL
{
// The files that a job writes: all of them appear at commit(), or none.
//
// Errors:     ToolError with the name and the reason.
class Targets
{
public:
    // Opens those that the options name.
    explicit Targets(const JobContext& context_);

    [[nodiscard]] bool hasOut() const { return outFile.has_value(); }

    // OUT in the format of its extension, once.
    //
    // spacing  of the mesh or points: what the coordinates must tell; 0.0: all digits
    void write(const std::shared_ptr<TARN_ZEF::Mesh>& pMesh, double spacing);
    void write(const TARN_ZEF::TriangleData& data);
    void write(const TARN_ZEF::PointData& data, double spacing);

    // The pictures that are wanted: the mesh, if there is one, and the points, from the same side.
    void draw(const TARN_ZEF::Mesh* pMesh, const std::vector<TARN_ZEF::Point3>& vPoints);

    // The picture of the mesh, if it is wanted, in one color for each point. Points that are not finite must not be
    // used by triangles, of which there must be one.
    void drawPainted(std::vector<TARN_ZEF::Point3> vPoints, const std::vector<int>& vCorners,
                     const std::vector<Colour>& vColors);

    void commit();

private:
    template <typename F>
    void writeOut(F f);
    [[nodiscard]] TARN_ZEF::WriteOptions getWriteOptions(double spacing) const;
    void noteLostDigits(const std::vector<TARN_ZEF::Point3>& vPoints, double spacing) const;

    JobContext context;
    std::optional<SafeOutputFile> outFile;
    std::optional<SafeOutputFile> pngFile;
    std::optional<SafeOutputFile> pngCloudFile;
};

} // namespace TARN_TOOL

#endif
