#include "MeshSource.h"

#include "MeshReading.h"
#include "Reconstruction.h"
#include "Remeshing.h"

namespace TARN_TOOL
{
TARN_ZEF::MeshCheck MeshSource::check(const TARN_ZEF::Mesh& mesh, const TARN_ZEF::CheckOptions& options) const
{
    return TARN_ZEF::checkMesh(mesh, options);
}

std::unique_ptr<MeshSource> MeshSource::create(const JobContext& context)
{
    switch (context.options.task)
    {
    case Task::REMESH:
        return std::make_unique<Remeshing>(context);
    case Task::MESH:
        return std::make_unique<MeshReading>(context);
    default:
        return std::make_unique<Reconstruction>(context);
    }
}

} // namespace TARN_TOOL
