#include "callReportText.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "numberText.h"

namespace TARN_TOOL
{
using TARN_ZEF::CallReport;
using TARN_ZEF::PassReport;
using TARN_ZEF::StageReport;

namespace
{
constexpr double BYTES_PER_MEGABYTE = 1e6;

struct Figure
{
    std::size_t CallReport::*pValue;
    const char* pKey;
    const char* pWords;
};

// Of one line each; figures of 0 are left out in text.
constexpr std::array<Figure, 4> POINTS = {{
    {&CallReport::numPoints, "points", "in"},
    {&CallReport::numNotFinite, "notFinite", "not finite"},
    {&CallReport::numFlatCorners, "flatCorners", "of flat triangles"},
    {&CallReport::numUsedPoints, "usedPoints", "used"},
}};
constexpr std::array<Figure, 5> CELLS = {{
    {&CallReport::numPointCells, "pointCells", "of points"},
    {&CallReport::numFilledCells, "filledCells", "filled"},
    {&CallReport::numMovedCells, "movedCells", "by smoothing"},
    {&CallReport::numRemovedCells, "removedCells", "removed"},
    {&CallReport::numCells, "cells", "used"},
}};
constexpr std::array<Figure, 6> MESH = {{
    {&CallReport::numHolesClosed, "holesClosed", "holes closed"},
    {&CallReport::numPiecesDropped, "piecesDropped", "pieces dropped"},
    {&CallReport::numPieces, "pieces", "pieces"},
    {&CallReport::numBorderLoops, "borderLoops", "open borders"},
    {&CallReport::numBorderEdges, "borderEdges", "border edges"},
    {&CallReport::numNonManifoldEdges, "nonManifoldEdges", "non-manifold edges"},
}};

template <std::size_t N>
std::string lineOf(const char* pTitle, const std::array<Figure, N>& figures, const CallReport& report)
{
    std::string text;
    for (const Figure& figure : figures)
        if (report.*figure.pValue != 0)
            text += (text.empty() ? "" : ", ") + std::to_string(report.*figure.pValue) + " " + figure.pWords;
    return text.empty() ? "" : std::string("    ") + pTitle + ": " + text + "\n";
}

template <std::size_t N>
void add(JsonLine& line, const std::array<Figure, N>& figures, const CallReport& report)
{
    for (const Figure& figure : figures)
        line.add(figure.pKey, report.*figure.pValue);
}

std::string megabytesText(std::size_t bytes)
{
    return std::to_string(std::llround(static_cast<double>(bytes) / BYTES_PER_MEGABYTE)) + " MB";
}

std::string latticeText(const CallReport& report)
{
    if (report.usedSpacing == 0.0)
        return "";
    std::string text = "    spacing: ";
    if (report.detectedSpacing > 0.0)
        text += textOf(report.detectedSpacing) + " found, ";
    text += textOf(report.usedSpacing) + " in force";
    if (report.latticeBits > 0)
        text += ", " + std::to_string(report.latticeBits) + " bits an axis";
    return text + "\n";
}

std::string trianglesText(const CallReport& report)
{
    if (report.numRawT == 0 && report.numT == 0)
        return "";
    std::string text = "    triangles: " + std::to_string(report.numRawT) + " at first\n";
    for (const PassReport& pass : report.vPasses)
        if (pass.numAddedT != 0 || pass.numKilledT != 0)
            text += "        " + pass.name + ": +" + std::to_string(pass.numAddedT) + " -" +
                    std::to_string(pass.numKilledT) + "\n";
    return text + "        at the end: " + std::to_string(report.numT) + "\n";
}
} // namespace

std::string callReportText(const CallReport& report)
{
    std::string text = report.call + ": " + secondsText(report.seconds) + ", " +
                       megabytesText(report.bytesAtStart) + " before, " + megabytesText(report.peakBytes) +
                       " at most\n";
    text += lineOf("points", POINTS, report) + latticeText(report) + lineOf("cells", CELLS, report);
    text += trianglesText(report) + lineOf("mesh", MESH, report);
    if (report.numT != 0)
        text += "    Euler number: " + std::to_string(report.eulerNumber) + "\n";
    for (const StageReport& stage : report.vStages)
        text += "    stage " + stage.name + ": " + secondsText(stage.seconds) + ", " +
                megabytesText(stage.peakBytes) + "\n";
    return text;
}

JsonLine callReportJson(const CallReport& report)
{
    JsonLine line;
    line.add("call", report.call);
    add(line, POINTS, report);
    line.add("detectedSpacing", report.detectedSpacing);
    line.add("spacing", report.usedSpacing);
    line.add("latticeBits", static_cast<std::int64_t>(report.latticeBits));
    add(line, CELLS, report);
    line.add("rawTriangles", report.numRawT);
    std::vector<JsonLine> vPasses(report.vPasses.size());
    for (std::size_t i = 0; i < vPasses.size(); ++i)
    {
        vPasses[i].add("pass", report.vPasses[i].name);
        vPasses[i].add("added", report.vPasses[i].numAddedT);
        vPasses[i].add("killed", report.vPasses[i].numKilledT);
    }
    line.add("passes", vPasses);
    line.add("triangles", report.numT);
    add(line, MESH, report);
    line.add("euler", report.eulerNumber);
    line.add("seconds", report.seconds);
    line.add("startBytes", report.bytesAtStart);
    line.add("peakBytes", report.peakBytes);
    std::vector<JsonLine> vStages(report.vStages.size());
    for (std::size_t i = 0; i < vStages.size(); ++i)
    {
        vStages[i].add("stage", report.vStages[i].name);
        vStages[i].add("seconds", report.vStages[i].seconds);
        vStages[i].add("peakBytes", report.vStages[i].peakBytes);
    }
    line.add("stages", vStages);
    return line;
}

} // namespace TARN_TOOL
