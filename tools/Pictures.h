#ifndef ZEF_TOOLS_PICTURES_H
#define ZEF_TOOLS_PICTURES_H

#include "JobContext.h"
#include "MeshDrawing.h"
#include "PictureFigures.h"
#include "SafeOutputFile.h"
#include "zef.h"

#include <memory>
#include <vector>

namespace TARN_TOOL
{
class PngRenderer;

// The pictures that the options ask for: all of their files appear at commit(), or none.
//
// Errors:     ToolError with the name and the reason.
class Pictures
{
public:
    explicit Pictures(const JobContext& context_);

    // Whether any of them shows a mesh.
    [[nodiscard]] bool showMesh() const { return !vMeshFiles.empty() || pHtmlFile != nullptr; }

    // The mesh, if there is one, painted as the options say, and the points, from the same side.
    PictureFigures draw(const TARN_ZEF::Mesh* pMesh, const std::vector<TARN_ZEF::Point3>& vPoints);
    // The mesh as it is painted.
    PictureFigures draw(MeshDrawing drawing);

    void commit();

private:
    PictureFigures drawMesh(PngRenderer& renderer, MeshDrawing drawing);
    [[nodiscard]] MeshDrawing makeDrawing(const TARN_ZEF::Mesh& mesh,
                                          const std::vector<TARN_ZEF::Point3>& vCloud) const;
    void paintByDistance(MeshDrawing& drawing, const std::vector<TARN_ZEF::Point3>& vCloud) const;
    void writeHtml(const MeshDrawing& drawing);

    JobContext context;
    std::vector<std::unique_ptr<SafeOutputFile>> vMeshFiles; // one for each turn
    std::unique_ptr<SafeOutputFile> pCloudFile;
    std::unique_ptr<SafeOutputFile> pHtmlFile;
};

} // namespace TARN_TOOL

#endif
