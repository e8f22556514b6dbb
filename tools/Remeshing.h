#ifndef ZEF_TOOLS_REMESHING_H
#define ZEF_TOOLS_REMESHING_H

#include "MeshSource.h"

namespace TARN_TOOL
{
// A triangle soup as a mesh of even triangles: on its own surface, or from cells of a lattice.
class Remeshing : public MeshSource
{
public:
    using MeshSource::MeshSource;

    void read(Report& report) override;
    [[nodiscard]] std::shared_ptr<TARN_ZEF::Mesh> make(Report& report) override;
    // The edge length in force.
    [[nodiscard]] double getCell(const TARN_ZEF::Mesh& mesh, Report& report) override;

private:
    [[nodiscard]] std::shared_ptr<TARN_ZEF::Mesh> melt(Report& report);
    [[nodiscard]] std::shared_ptr<TARN_ZEF::Mesh> remesh(Report& report);
    void tell(const TARN_ZEF::RemeshReport& found) const;
};

// The corners of the triangles of the input, checked for being remeshed or sampled.
[[nodiscard]] std::vector<TARN_ZEF::Point3> readSoup(const JobContext& context, Report& report);

} // namespace TARN_TOOL

#endif
