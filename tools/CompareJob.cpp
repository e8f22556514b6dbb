#include "CompareJob.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "PointBox.h"
#include "ToolError.h"
#include "numberText.h"

namespace TARN_TOOL
{
using TARN_ZEF::Point3;
using TARN_ZEF::SurfaceDistances;

namespace
{
std::string placeText(const Point3& p)
{
    return textOf(p.x()) + " " + textOf(p.y()) + " " + textOf(p.z());
}

std::string distancesText(const std::string& from, const std::string& to, const SurfaceDistances& d)
{
    return from + " to " + to + ": mean " + textOf(d.mean) + ", rms " + textOf(d.rms) + ", 99 % within " +
           textOf(d.percentile99) + ", largest " + textOf(d.largest) + " at " + placeText(d.largestPlace) +
           "\n";
}

JsonLine placeJson(const Point3& p)
{
    JsonLine line;
    line.add("x", p.x());
    line.add("y", p.y());
    line.add("z", p.z());
    return line;
}

JsonLine distancesJson(const SurfaceDistances& d)
{
    JsonLine line;
    line.add("samples", d.numSamples);
    line.add("mean", d.mean);
    line.add("rms", d.rms);
    line.add("percentile99", d.percentile99);
    line.add("largest", d.largest);
    line.add("largestPlace", placeJson(d.largestPlace));
    line.add("nearestToThere", placeJson(d.nearestToThere));
    return line;
}
} // namespace

void CompareJob::run()
{
    Targets targets(context);
    const Surface first = readSurface(options.vInputs[0]);
    const Surface second = readSurface(options.vInputs[1]);
    const TARN_ZEF::MeshComparison found = context.calls.run(
        [&]
        { return TARN_ZEF::compareMeshes(first.vPoints, first.vCorners, second.vPoints, second.vCorners); });
    context.calls.forgetMessages();
    // Outliers beyond the percentile would leave the rest in one color.
    PictureFigures pictures;
    if (targets.getPictures().showMesh())
    {
        MeshDrawing drawing(first.vPoints, first.vCorners);
        drawing.paintByDistance(found.toSecond.vAtPoints, found.toSecond.percentile99);
        pictures = targets.getPictures().draw(std::move(drawing));
    }
    tell(first, second, found, pictures);
    targets.commit();
}

CompareJob::Surface CompareJob::readSurface(const std::string& name)
{
    TARN_ZEF::TriangleData data = context.reader.readTriangles(name);
    if (data.vCorners.empty())
        throw ToolError(name + " holds no triangles to compare; for a cloud make its mesh first");
    Surface surface{name, std::move(data.vPoints), {}};
    surface.vCorners.assign(data.vCorners.begin(), data.vCorners.end());
    return surface;
}

void CompareJob::tell(const Surface& first, const Surface& second, const TARN_ZEF::MeshComparison& found,
                      const PictureFigures& pictures) const
{
    if (options.bJson)
    {
        JsonLine line = startJson(options);
        line.add("toSecond", distancesJson(found.toSecond));
        line.add("toFirst", distancesJson(found.toFirst));
        pictures.addTo(line);
        context.console.print(line.getText() + "\n");
        return;
    }
    std::string text = distancesText(first.name, second.name, found.toSecond) +
                       distancesText(second.name, first.name, found.toFirst);
    for (const std::string& name : {options.pngName, options.htmlName})
        if (!name.empty())
            text += name + ": picture of " + first.name + "\n";
    text += pictures.getText();
    if (!options.bQuiet)
        context.console.print(text);
}

} // namespace TARN_TOOL
