#ifndef ZEF_TOOLS_RECONSTRUCTION_H
#define ZEF_TOOLS_RECONSTRUCTION_H

#include "CommonOffset.h"
#include "MeshSource.h"

namespace TARN_TOOL
{
// The mesh of a cloud.
class Reconstruction : public MeshSource
{
public:
    using MeshSource::MeshSource;

    void read(Report& report) override;
    [[nodiscard]] std::shared_ptr<TARN_ZEF::Mesh> make(Report& report) override;
    // The spacing in force. Detecting it takes in the points once more.
    [[nodiscard]] double getCell(const TARN_ZEF::Mesh& mesh, Report& report) override;
    void putBack(const TARN_ZEF::Mesh& mesh) override;

private:
    [[nodiscard]] std::shared_ptr<TARN_ZEF::Mesh> reconstruct(Report& report);
    [[nodiscard]] std::shared_ptr<TARN_ZEF::Mesh> reconstructAsAsked(Report& report);
    [[nodiscard]] std::shared_ptr<TARN_ZEF::Mesh> finish(std::shared_ptr<TARN_ZEF::Mesh> pMesh,
                                                         Report& report);

    CommonOffset offset;
};

// That of a cloud as the library detects it.
[[nodiscard]] double detectSpacing(LibraryCalls& calls, std::vector<TARN_ZEF::Point3>& vPoints);

} // namespace TARN_TOOL

#endif
