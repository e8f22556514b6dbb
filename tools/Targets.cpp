#include "Targets.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "PointBox.h"
#include "ToolError.h"
#include "formatNames.h"
#include "numberText.h"

namespace TARN_TOOL
{
using TARN_ZEF::Point3;

namespace
{
// The formats that the tool has always written, byte for byte as ever.
bool isOldMeshFormat(const std::string& name, FileForm form)
{
    const TARN_ZEF::FileType type = oldTypeOf(name);
    return type == TARN_ZEF::FT_LIST || (type == TARN_ZEF::FT_PLY && form != FileForm::TEXT) ||
           (type == TARN_ZEF::FT_STL && form != FileForm::BINARY);
}

// Between neighbouring floats of the largest coordinate.
double floatStep(const std::vector<Point3>& vPoints)
{
    double largest = 0.0;
    for (const Point3& p : vPoints)
        largest = std::max({largest, std::fabs(p.x()), std::fabs(p.y()), std::fabs(p.z())});
    const auto stored = static_cast<float>(largest);
    return std::nextafter(stored, std::numeric_limits<float>::max()) - stored;
}
} // namespace

Targets::Targets(const JobContext& context_)
    : context(context_)
    , pictures(context_)
{
    const Options& options = context.options;
    if (!options.outName.empty())
        outFile.emplace(options.outName, options.getOutFormatName());
}

template <typename F>
void Targets::writeOut(F f)
{
    const std::string& tempName = outFile->create();
    bool bWritten = false;
    try
    {
        bWritten = context.calls.run([&] { return f(tempName); });
    }
    catch (const ToolError& error)
    {
        // The reason begins with the name of the file.
        const std::string reason = error.what();
        throw ToolError("cannot write " + outFile->getName() +
                        (reason.starts_with(tempName) ? reason.substr(tempName.size()) : ": " + reason));
    }
    if (!bWritten)
        throw ToolError("cannot write " + outFile->getName() + " whole: is the disk full?");
    context.calls.forgetMessages();
}

void Targets::write(const std::shared_ptr<TARN_ZEF::Mesh>& pMesh, double spacing)
{
    const std::string name = context.options.getOutFormatName();
    if (isOldMeshFormat(name, context.options.form))
        return writeOut([&](const std::string& file) { return TARN_ZEF::writeMesh_auto(file, pMesh, true); });
    writeOut(
        [&](const std::string& file)
        {
            TARN_ZEF::writeMesh(file, *pMesh, getWriteOptions(spacing));
            return true;
        });
    std::vector<Point3*> vVertices;
    pMesh->getPoints(vVertices);
    std::vector<Point3> vPoints;
    vPoints.reserve(vVertices.size());
    for (const Point3* pVertex : vVertices)
        vPoints.push_back(*pVertex);
    noteLostDigits(vPoints, spacing);
}

void Targets::write(const TARN_ZEF::TriangleData& data)
{
    writeOut(
        [&](const std::string& file)
        {
            TARN_ZEF::writeTriangles(file, data, getWriteOptions(0.0));
            return true;
        });
    noteLostDigits(data.vPoints, 0.0);
}

void Targets::write(const TARN_ZEF::PointData& data, double spacing)
{
    if (oldTypeOf(context.options.getOutFormatName()) == TARN_ZEF::FT_ASCII && data.vNormals.empty() &&
        data.vColors.empty() && data.vIntensities.empty())
        return writeOut([&](const std::string& file)
                        { return TARN_ZEF::writePoints_ASCII(file.c_str(), data.vPoints); });
    writeOut(
        [&](const std::string& file)
        {
            TARN_ZEF::writePoints(file, data, getWriteOptions(spacing));
            return true;
        });
}

TARN_ZEF::WriteOptions Targets::getWriteOptions(double spacing) const
{
    TARN_ZEF::WriteOptions result;
    result.bASCII =
        context.options.form == FileForm::TEXT || (context.options.form == FileForm::USUAL &&
                                                   extensionOf(context.options.getOutFormatName()) == ".stl");
    result.spacing = spacing;
    result.bCompressed = context.options.bCompress;
    result.bYUp = context.options.bYUp;
    return result;
}

// Binary STL knows floats only.
void Targets::noteLostDigits(const std::vector<Point3>& vPoints, double spacing) const
{
    if (extensionOf(context.options.getOutFormatName()) != ".stl" ||
        context.options.form != FileForm::BINARY || vPoints.empty())
        return;
    const double step = floatStep(vPoints);
    const double detail = spacing > 0.0 ? spacing : PointBox(vPoints).getMaxExtent() / 1000.0;
    if (step > detail / 1000.0)
        context.console.note("binary STL stores these large coordinates only in steps of " + textOf(step) +
                             "; to keep their digits write .ply, or .stl without --binary");
}

void Targets::commit()
{
    Interruption::check();
    if (outFile)
        outFile->commit();
    pictures.commit();
}

} // namespace TARN_TOOL
