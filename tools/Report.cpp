#include "Report.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "callReportText.h"
#include "checkText.h"
#include "holesText.h"
#include "numberText.h"

namespace TARN_TOOL
{
namespace
{
std::string anglesText(const TriangleAngles& angles)
{
    const auto rounded = [](double degrees) { return textOf(std::round(10.0 * degrees) / 10.0); };
    return std::to_string(angles.numTriangles) + " triangles, smallest angle " + rounded(angles.smallest) +
           " degrees, in the mean " + rounded(angles.mean);
}

const char* nameOf(Task task)
{
    switch (task)
    {
    case Task::RECONSTRUCT:
        return "reconstruct";
    case Task::REMESH:
        return "remesh";
    case Task::SAMPLE:
        return "sample";
    case Task::MESH:
        return "mesh";
    case Task::CONVERT:
        return "convert";
    case Task::COMPARE:
        return "compare";
    case Task::SPACING:
        return "spacing";
    case Task::DRAW:
        return "draw";
    }
    return "";
}

constexpr const char* BY_FACING = "bodies by facing";

std::string choiceText(const TARN_ZEF::AutoReport& choice)
{
    const auto rounded = [](double x) { return textOf(std::round(100.0 * x) / 100.0); };
    std::string text = "chosen: " +
                       (choice.bByFacing ? std::string(BY_FACING)
                                         : "factor " + textOf(choice.factor) +
                                               (choice.bSmooth ? ", smoothed" : ", not smoothed")) +
                       ": " + choice.reason + "\n";
    if (choice.cloud.noise >= 0.0)
        text += "cloud: evenness " + rounded(choice.cloud.evenness) + ", noise " +
                rounded(choice.cloud.noise) + " spacings, layers at " + rounded(100.0 * choice.cloud.layers) +
                " % of the points\n";
    for (const TARN_ZEF::AutoTrial& trial : choice.vTrials)
        text += "tried: " +
                (trial.bByFacing ? std::string(BY_FACING)
                                 : "factor " + textOf(trial.factor) + (trial.bSmooth ? ", smoothed" : "")) +
                ": " + std::to_string(trial.numHoles) + " holes, " +
                std::to_string(trial.numNonManifoldEdges) + " non-manifold edges, " +
                std::to_string(trial.numNonManifoldVertices) + " vertices\n";
    return text;
}

JsonLine choiceJson(const TARN_ZEF::AutoReport& choice)
{
    JsonLine line;
    line.add("factor", choice.factor);
    line.add("smooth", std::size_t{choice.bSmooth});
    line.add("byFacing", std::size_t{choice.bByFacing});
    line.add("reason", choice.reason);
    line.add("evenness", choice.cloud.evenness);
    line.add("noise", choice.cloud.noise);
    line.add("layers", choice.cloud.layers);
    std::vector<JsonLine> vTrials(choice.vTrials.size());
    for (std::size_t i = 0; i < vTrials.size(); ++i)
    {
        vTrials[i].add("factor", choice.vTrials[i].factor);
        vTrials[i].add("smooth", std::size_t{choice.vTrials[i].bSmooth});
        vTrials[i].add("byFacing", std::size_t{choice.vTrials[i].bByFacing});
        vTrials[i].add("holes", choice.vTrials[i].numHoles);
        vTrials[i].add("nonManifoldEdges", choice.vTrials[i].numNonManifoldEdges);
        vTrials[i].add("nonManifoldVertices", choice.vTrials[i].numNonManifoldVertices);
    }
    line.add("trials", vTrials);
    return line;
}
} // namespace

JsonLine startJson(const Options& options)
{
    JsonLine line;
    line.add("schema", JSON_SCHEMA);
    line.add("task", std::string(nameOf(options.task)));
    line.add("input", options.getInputText());
    return line;
}

std::string Report::getJson(const Options& options) const
{
    JsonLine line = startJson(options);
    if (options.hasTriangles())
        line.add("inputTriangles", numInputTriangles);
    if (!options.hasTriangles() || options.task == Task::SAMPLE)
        line.add("points", numPoints);
    if (options.task == Task::DRAW)
        return line.getText() + "\n";
    line.add("spacing", spacing);
    if (options.isRemesh())
        line.add("featureAngle", featureAngle);
    if (choice)
        line.add("auto", choiceJson(*choice));
    if (options.task != Task::SAMPLE)
        addMesh(line);
    line.add("read_s", readSeconds);
    line.add("compute", computeSeconds);
    if (finishSeconds > 0.0)
        line.add("finish_s", finishSeconds);
    line.add("write_s", writeSeconds);
    line.add("peak_mb", peakMegabytes);
    addSteps(line);
    pictures.addTo(line);
    if (!vCalls.empty())
    {
        std::vector<JsonLine> vLines;
        for (const TARN_ZEF::CallReport& call : vCalls)
            vLines.push_back(callReportJson(call));
        line.add("calls", vLines);
    }
    return line.getText() + "\n";
}

void Report::addMesh(JsonLine& line) const
{
    line.add("vertices", statistics.numVertices);
    line.add("triangles", statistics.numTriangles);
    line.add("borderEdges", statistics.numBorderEdges);
    line.add("nonManifoldEdges", statistics.numNonManifoldEdges);
    line.add("components", statistics.numComponents);
    if (check)
        line.add("check", checkJson(*check));
    if (borders)
        line.add("borders", holesJson(*borders));
}

void Report::addSteps(JsonLine& line) const
{
    if (vSteps.empty())
        return;
    std::vector<JsonLine> vLines(vSteps.size());
    for (std::size_t i = 0; i < vSteps.size(); ++i)
    {
        vLines[i].add("step", vSteps[i].text);
        vLines[i].add("triangles", vSteps[i].angles.numTriangles);
        vLines[i].add("compute", vSteps[i].seconds);
        if (!vSteps[i].remark.empty())
            vLines[i].add("remark", vSteps[i].remark);
    }
    line.add("steps", vLines);
}

std::string Report::getSummary(const Options& options) const
{
    std::string text = options.getInputText() + ": ";
    text += options.hasTriangles() ? std::to_string(numInputTriangles) + " triangles"
                                   : std::to_string(numPoints) + " points";
    if (options.task != Task::DRAW)
        text += getSpacingText(options) + getAngleRemark(options) + "\n" + getResultText(options) +
                getTimesText(options);
    text += "\n";
    if (check)
        text += checkText(*check);
    if (borders)
        text += holesText(*borders);
    for (const TARN_ZEF::CallReport& call : vCalls)
        text += callReportText(call);
    return text + getPicturesText(options);
}

std::string Report::getPicturesText(const Options& options) const
{
    std::string text;
    if (options.view.numTurns > 0)
        text += options.pngName + ": " + std::to_string(options.view.numTurns) +
                " pictures, their numbers behind the name\n";
    else if (!options.pngName.empty())
        text += options.pngName + ": picture\n";
    if (!options.pngCloudName.empty())
        text += options.pngCloudName + ": picture\n";
    if (!options.htmlName.empty())
        text += options.htmlName + ": page for a browser\n";
    return text + pictures.getText();
}

std::string Report::getResultText(const Options& options) const
{
    std::string text = (choice ? choiceText(*choice) : "") + getSteps();
    text += options.outName.empty()        ? "mesh: "
            : options.isToStandardOutput() ? "standard output: "
                                           : options.outName + ": ";
    return text + (options.task == Task::SAMPLE ? std::to_string(numPoints) + " points" : getMeshLine());
}

std::string Report::getTimesText(const Options& options) const
{
    const double stepSeconds = std::accumulate(
        vSteps.begin(), vSteps.end(), 0.0, [](double sum, const StepResult& s) { return sum + s.seconds; });
    std::string text = "\nread " + secondsText(readSeconds);
    if (options.task != Task::MESH)
        text += (options.task == Task::SAMPLE   ? ", sample "
                 : options.isRemesh()           ? ", remesh "
                 : options.task == Task::REMESH ? ", melt "
                                                : ", reconstruct ") +
                secondsText(std::max(0.0, computeSeconds - finishSeconds - stepSeconds));
    if (finishSeconds > 0.0)
        text += ", finish " + secondsText(finishSeconds);
    if (!vSteps.empty())
        text += ", post-process " + secondsText(stepSeconds);
    return text + ", write " + secondsText(writeSeconds) + ", peak memory " +
           std::to_string(std::llround(peakMegabytes)) + " MB";
}

std::string Report::getSpacing(const Options& options) const
{
    if (!options.bJson)
        return textOf(spacing) + "\n";
    JsonLine line = startJson(options);
    line.add("points", numPoints);
    line.add("spacing", spacing);
    return line.getText() + "\n";
}

std::string Report::getForecast(const Options& options) const
{
    if (!options.bJson)
        return std::to_string(std::llround(static_cast<double>(forecastBytes) / 1e6)) + " MB\n";
    JsonLine line = startJson(options);
    line.add("points", numPoints);
    line.add("forecastBytes", forecastBytes);
    return line.getText() + "\n";
}

std::string Report::getSteps() const
{
    if (vSteps.empty())
        return "";
    std::string text = "before: " + anglesText(anglesBefore) + "\n";
    for (const StepResult& step : vSteps)
        text += step.text + ": " + anglesText(step.angles) + ", " + secondsText(step.seconds) +
                (step.remark.empty() ? "" : "; " + step.remark) + "\n";
    return text;
}

std::string Report::getSpacingText(const Options& options) const
{
    if (options.task == Task::MESH)
        return ", edges of " + textOf(spacing) + " in the mean";
    const std::string text = ", spacing " + textOf(spacing);
    if (options.spacingAbs > 0.0)
        return text + " (given)";
    const double factor = choice ? choice->factor : options.spacingFactor;
    return text + (factor != 1.0 ? " (" + textOf(factor) + " times the detected one)" : " (detected)");
}

std::string Report::getAngleRemark(const Options& options) const
{
    if (!options.isRemesh())
        return "";
    return ", edges above " + textOf(featureAngle) + " degrees kept" +
           (options.featureAngle < 0.0 ? " (found)" : " (given)");
}

std::string Report::getMeshLine() const
{
    std::string text = std::to_string(statistics.numVertices) + " vertices, " +
                       std::to_string(statistics.numTriangles) + " triangles, " +
                       std::to_string(statistics.numComponents) +
                       (statistics.numComponents == 1 ? " piece, " : " pieces, ");
    text += statistics.numBorderEdges == 0 ? "closed"
                                           : std::to_string(statistics.numBorderEdges) + " border edges";
    if (statistics.numNonManifoldEdges != 0)
        text += ", " + std::to_string(statistics.numNonManifoldEdges) + " non-manifold edges";
    return text;
}

} // namespace TARN_TOOL
