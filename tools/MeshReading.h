#ifndef ZEF_TOOLS_MESHREADING_H
#define ZEF_TOOLS_MESHREADING_H

#include "MeshSource.h"

namespace TARN_TOOL
{
// A finished mesh from a file. Nothing is repaired.
class MeshReading : public MeshSource
{
public:
    using MeshSource::MeshSource;

    void read(Report& report) override;
    [[nodiscard]] std::shared_ptr<TARN_ZEF::Mesh> make(Report& report) override;
    // The triangles of the file, if nothing has been done to them: those that make no mesh are judged, too.
    [[nodiscard]] TARN_ZEF::MeshCheck check(const TARN_ZEF::Mesh& mesh,
                                            const TARN_ZEF::CheckOptions& options) const override;
    // Mean length of its edges.
    [[nodiscard]] double getCell(const TARN_ZEF::Mesh& mesh, Report& report) override;

private:
    TARN_ZEF::TriangleData data; // empty once the mesh is made, but for a check of the triangles as they came
};

} // namespace TARN_TOOL

#endif
