#ifndef ZEF_TOOLS_TARGETS_H
#define ZEF_TOOLS_TARGETS_H

#include "MeshSource.h"
#include "Pictures.h"
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

    [[nodiscard]] Pictures& getPictures() { return pictures; }

    void commit();

private:
    template <typename F>
    void writeOut(F f);
    [[nodiscard]] TARN_ZEF::WriteOptions getWriteOptions(double spacing) const;
    void noteLostDigits(const std::vector<TARN_ZEF::Point3>& vPoints, double spacing) const;

    JobContext context;
    std::optional<SafeOutputFile> outFile;
    Pictures pictures;
};

} // namespace TARN_TOOL

#endif
