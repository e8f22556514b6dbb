#ifndef ZEF_TOOLS_MESHSOURCE_H
#define ZEF_TOOLS_MESHSOURCE_H

#include "JobContext.h"
#include "Report.h"
#include "zef.h"

#include <memory>
#include <vector>

namespace TARN_TOOL
{
// Where the mesh of a job comes from: read() takes in the input, make() turns it into a mesh.
//
// Errors:     ToolError with the reason if it cannot be done.
class MeshSource
{
public:
    explicit MeshSource(const JobContext& context_)
        : context(context_)
    {
    }
    virtual ~MeshSource() = default;
    MeshSource(const MeshSource&) = delete;
    MeshSource& operator=(const MeshSource&) = delete;

    // Input that cannot be used is refused here, before anything is computed.
    virtual void read(Report& report) = 0;
    // A mesh with triangles. What took time and what was found goes into the report.
    [[nodiscard]] virtual std::shared_ptr<TARN_ZEF::Mesh> make(Report& report) = 0;
    // Judges the mesh as it is now, in the precision of the library.
    [[nodiscard]] virtual TARN_ZEF::MeshCheck check(const TARN_ZEF::Mesh& mesh,
                                                    const TARN_ZEF::CheckOptions& options) const;
    // The length that counts as one cell in steps on this mesh.
    [[nodiscard]] virtual double getCell(const TARN_ZEF::Mesh& mesh, Report& report) = 0;
    // Brings a mesh, and the points, to where the input was.
    virtual void putBack(const TARN_ZEF::Mesh& mesh) { static_cast<void>(mesh); }

    // The input as points, for a picture: also the corners of its triangles.
    [[nodiscard]] const std::vector<TARN_ZEF::Point3>& getPoints() const { return vPoints; }

    // The one for the task of the options.
    [[nodiscard]] static std::unique_ptr<MeshSource> create(const JobContext& context);

protected:
    JobContext context;
    std::vector<TARN_ZEF::Point3> vPoints; // finite
};

} // namespace TARN_TOOL

#endif
