#include "Pictures.h"

#include <filesystem>
#include <utility>

#include "PngRenderer.h"
#include "ToolError.h"
#include "htmlPicture.h"

namespace TARN_TOOL
{
using TARN_ZEF::Point3;

namespace
{
// "a.png", 7: "a_007.png"
std::string nameOfTurn(const std::string& name, int turn)
{
    const std::filesystem::path path(name);
    const std::string digits = std::to_string(1000 + turn).substr(1);
    return (path.parent_path() / (path.stem().string() + "_" + digits + path.extension().string())).string();
}

void writePng(SafeOutputFile& file, const Image& image)
{
    const std::string reason = image.writePng(file.create());
    if (!reason.empty())
        throw ToolError("cannot write " + file.getName() + ": " + reason);
}

std::unique_ptr<SafeOutputFile> openIfNamed(const std::string& name)
{
    return name.empty() ? nullptr : std::make_unique<SafeOutputFile>(name);
}

MeshDrawing flatDrawing(const TARN_ZEF::Mesh& mesh)
{
    std::vector<Point3*> vVertices;
    std::vector<int> vCorners;
    mesh.getVertexIndexData(vVertices, vCorners);
    std::vector<Point3> vPoints;
    vPoints.reserve(vVertices.size());
    for (const Point3* pVertex : vVertices)
        vPoints.push_back(*pVertex);
    return {vPoints, vCorners};
}

// As triangles without extent, which count as points where distances are measured.
std::vector<int> cornersOfPoints(std::size_t numPoints)
{
    std::vector<int> vCorners;
    vCorners.reserve(3 * numPoints);
    for (std::size_t i = 0; i < numPoints; ++i)
        vCorners.insert(vCorners.end(), 3, static_cast<int>(i));
    return vCorners;
}
} // namespace

Pictures::Pictures(const JobContext& context_)
    : context(context_)
    , pCloudFile(openIfNamed(context_.options.pngCloudName))
    , pHtmlFile(openIfNamed(context_.options.htmlName))
{
    const std::string& pngName = context.options.pngName;
    if (const int numTurns = context.options.view.numTurns; numTurns > 0)
        for (int turn = 0; turn < numTurns; ++turn)
            vMeshFiles.push_back(std::make_unique<SafeOutputFile>(nameOfTurn(pngName, turn)));
    else if (!pngName.empty())
        vMeshFiles.push_back(std::make_unique<SafeOutputFile>(pngName));
}

PictureFigures Pictures::draw(const TARN_ZEF::Mesh* pMesh, const std::vector<Point3>& vPoints)
{
    PngRenderer renderer(context.options.view);
    PictureFigures figures;
    // The mesh first, so that the points are drawn from its side.
    if (pMesh != nullptr && showMesh())
        figures = drawMesh(renderer, makeDrawing(*pMesh, vPoints));
    if (pCloudFile)
        writePng(*pCloudFile, renderer.drawCloud(vPoints));
    figures.barLength = renderer.getBarLength();
    return figures;
}

PictureFigures Pictures::draw(MeshDrawing drawing)
{
    PngRenderer renderer(context.options.view);
    return drawMesh(renderer, std::move(drawing));
}

PictureFigures Pictures::drawMesh(PngRenderer& renderer, MeshDrawing drawing)
{
    // In the page they can be switched on.
    if (context.options.view.bMarks || pHtmlFile)
        drawing.markEdges();
    for (std::size_t turn = 0; turn < vMeshFiles.size(); ++turn)
        writePng(*vMeshFiles[turn], renderer.drawMesh(drawing, static_cast<int>(turn)));
    if (pHtmlFile)
        writeHtml(drawing);
    return {renderer.getBarLength(), drawing.getLegend()};
}

void Pictures::writeHtml(const MeshDrawing& drawing)
{
    const Options& options = context.options;
    const std::string title = options.outName.empty() || options.isToStandardOutput()
                                  ? options.getInputText()
                                  : std::filesystem::path(options.outName).filename().string();
    try
    {
        writeHtmlPicture(pHtmlFile->create(), title, drawing, options.view);
    }
    catch (const ToolError& error)
    {
        throw ToolError("cannot write " + pHtmlFile->getName() + ": " + error.what());
    }
}

MeshDrawing Pictures::makeDrawing(const TARN_ZEF::Mesh& mesh, const std::vector<Point3>& vCloud) const
{
    MeshDrawing drawing = flatDrawing(mesh);
    switch (context.options.view.paint)
    {
    case Paint::SIDES:
        break;
    case Paint::DISTANCE:
        paintByDistance(drawing, vCloud);
        break;
    case Paint::CURVATURE:
        drawing.paintByCurvature();
        break;
    case Paint::PIECES:
        drawing.paintByPiece();
        break;
    }
    return drawing;
}

void Pictures::paintByDistance(MeshDrawing& drawing, const std::vector<Point3>& vCloud) const
{
    const TARN_ZEF::SurfaceDistances found =
        context.calls
            .run(
                [&]
                {
                    return TARN_ZEF::compareMeshes(drawing.getPoints(), drawing.getCorners(), vCloud,
                                                   cornersOfPoints(vCloud.size()));
                })
            .toSecond;
    context.calls.forgetMessages();
    drawing.paintByDistance(found.vAtPoints);
}

void Pictures::commit()
{
    for (const std::unique_ptr<SafeOutputFile>& pFile : vMeshFiles)
        pFile->commit();
    for (const std::unique_ptr<SafeOutputFile>* ppFile : {&pCloudFile, &pHtmlFile})
        if (*ppFile)
            (*ppFile)->commit();
}

} // namespace TARN_TOOL
