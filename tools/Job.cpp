#include "Job.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <limits>
#include <locale>
#include <sstream>

#include <sys/resource.h>
#include <unistd.h>

#include "JsonLine.h"
#include "PngRenderer.h"
#include "ToolError.h"

namespace TARN_TOOL
{
using TARN_ZEF::Point3;

namespace
{
// Lattice cells along the extent that the library can tell apart, its frame left out.
constexpr double MAX_CELLS = 2097152.0 - 9.0;
constexpr std::size_t MAX_POINTS = 2147483647;
// Open surfaces of at most this many triangles are taken for frayed pieces and removed.
constexpr int SMALLEST_OPEN_SURFACE = 100;

class Stopwatch
{
public:
    [[nodiscard]] double getSeconds() const
    {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    }

private:
    std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
};

std::string textOf(double value)
{
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << value;
    return text.str();
}

std::string secondsText(double seconds)
{
    return textOf(std::round(100.0 * seconds) / 100.0) + " s";
}

bool isFinite(const Point3& p)
{
    return std::isfinite(p.x()) && std::isfinite(p.y()) && std::isfinite(p.z());
}

// The longest edge of the box.
double maxExtent(const std::vector<Point3>& vPoints)
{
    Point3 low = vPoints.front();
    Point3 high = low;
    for (const Point3& p : vPoints)
    {
        low.set(std::min(low.x(), p.x()), std::min(low.y(), p.y()), std::min(low.z(), p.z()));
        high.set(std::max(high.x(), p.x()), std::max(high.y(), p.y()), std::max(high.z(), p.z()));
    }
    return (high - low).getMaxComponent();
}

double peakMegabytesOfProcess()
{
    struct rusage usage;
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024.0;
}

OutputCapture::Mode captureMode(const Options& options)
{
    if (!options.bVerbose)
        return OutputCapture::Mode::HOLD;
    // Standard output then belongs to the line of figures alone.
    return options.bJson ? OutputCapture::Mode::TO_ERROR_STREAM : OutputCapture::Mode::PASS;
}
} // namespace

Job::Job(const Options& options_)
    : options(options_)
{
    if (!options.bQuiet)
        TARN_ZEF::subscribe(&progressBar);
}

void Job::run()
{
    openTargets();
    readCloud();
    checkCloud();
    if (options.bSpacingOnly)
    {
        estimateSpacing();
        printSpacing();
        return;
    }
    if (outFile)
    {
        reconstruct();
        writeMesh();
        peakMegabytes = peakMegabytesOfProcess();
        if (options.spacingAbs > 0.0)
            spacing = options.spacingAbs;
        else if (!options.bQuiet || options.bJson)
        {
            // Only now: the first call in a process fixes a limit of the plane fit, and that must be the
            // reconstruction.
            estimateSpacing();
            spacing *= options.spacingFactor;
        }
        noteLostDigits();
    }
    drawPictures();
    if (options.bJson)
        printFigures();
    else if (!options.bQuiet)
        printSummary();
    if (!std::cout.flush())
        throw ToolError("cannot write to standard output; no file was written");
    commitTargets();
}

template <typename F>
auto Job::library(F call)
{
    heldMessages.clear();
    OutputCapture capture(captureMode(options));
    try
    {
        auto result = call();
        progressBar.clear();
        heldMessages = capture.finish();
        return result;
    }
    catch (...)
    {
        progressBar.clear();
        heldMessages = capture.finish();
        throw;
    }
}

void Job::openTargets()
{
    if (options.bSpacingOnly)
        return;
    if (!options.outName.empty())
        outFile.emplace(options.outName);
    if (!options.pngName.empty())
        pngFile.emplace(options.pngName);
    if (!options.pngCloudName.empty())
        pngCloudFile.emplace(options.pngCloudName);
}

void Job::readCloud()
{
    const Stopwatch stopwatch;
    if (options.inName == Options::BUILT_IN_CLOUD)
        TARN_ZEF::generateSampleSurface(TARN_ZEF::SAMPLE_SURFACE_POINTS, TARN_ZEF::SAMPLE_SURFACE_SEED,
                                        vPoints);
    else
    {
        std::string name = options.inName;
        std::error_code ec;
        if (!std::filesystem::exists(name, ec))
            throw ToolError("cannot read " + name + ": there is no such file");
        if (std::filesystem::is_directory(name, ec))
            throw ToolError("cannot read " + name + ": it is a folder; give the name of a file");
        if (access(name.c_str(), R_OK) != 0)
            throw ToolError("cannot read " + name + ": " + std::strerror(errno));
        const TARN_ZEF::FileType type = name.size() < 4 ? TARN_ZEF::FT_UNKNOWN : TARN_ZEF::getFileType(name);
        if (type == TARN_ZEF::FT_STL)
            throw ToolError("cannot read " + name + ": an STL holds triangles, not points; give a cloud");
        if (type == TARN_ZEF::FT_UNKNOWN || type == TARN_ZEF::FT_LIST)
            throw ToolError("cannot read " + name +
                            ": unknown extension, expected .ply, .xyz, .txt, .asc or .bin");
        if (!library([&] { return TARN_ZEF::readPoints_auto(name, vPoints); }))
            throw ToolError("cannot read " + name + ": not a readable file of points; check its format");
        heldMessages.clear();
    }
    dropUnusablePoints();
    readSeconds = stopwatch.getSeconds();
}

void Job::dropUnusablePoints()
{
    const std::size_t numDropped = std::erase_if(vPoints, [](const Point3& p) { return !isFinite(p); });
    if (numDropped != 0)
        note(std::to_string(numDropped) + " points with a NaN or infinite coordinate are left out");
}

void Job::checkCloud() const
{
    const std::string& name = options.inName;
    if (vPoints.empty())
        throw ToolError(name + " holds no points with finite coordinates; check its format");
    if (vPoints.size() > MAX_POINTS)
        throw ToolError(name + " holds more than 2147483647 points; thin it out");
    const double extent = maxExtent(vPoints);
    if (!std::isfinite(extent))
        throw ToolError("the coordinates in " + name + " are too large to work with; check its format");
    const bool bDrawOnly = options.outName.empty() && !options.bSpacingOnly;
    if (bDrawOnly)
        return;
    if (vPoints.size() < 3)
        throw ToolError(name + " holds only " + std::to_string(vPoints.size()) +
                        " points, too few for a surface; give a denser cloud");
    if (extent == 0.0)
        throw ToolError("all points in " + name + " are the same; give a cloud with an extent");
    if (options.spacingAbs > 0.0 && extent / options.spacingAbs > MAX_CELLS)
        throw ToolError("a spacing of " + textOf(options.spacingAbs) + " is too small for an extent of " +
                        textOf(extent) + "; try -a " + textOf(2.0 * extent / MAX_CELLS) + " or more");
}

void Job::reconstruct()
{
    const Stopwatch stopwatch;
    try
    {
        pMesh = library(
            [&]
            {
                return options.spacingAbs > 0.0
                           ? TARN_ZEF::reconstruct_abs(vPoints, options.bSmooth, options.spacingAbs)
                           : TARN_ZEF::reconstruct_auto(vPoints, options.bSmooth, options.spacingFactor);
            });
    }
    catch (const TARN_ZEF::ZefBugException&)
    {
        throw ToolError(
            options.spacingAbs > 0.0
                ? "the points cannot be reconstructed at this spacing; try another one with -a"
                : "no usable spacing: the points lie too close together for their extent; remove far "
                  "outliers or give a spacing with -a");
    }
    computeSeconds = stopwatch.getSeconds();
    if (pMesh)
        pMesh->getVertexIndexData(vVertices, vCorners);
    if (vCorners.empty())
        throw ToolError(
            "no surface found at this spacing; try another one with -a or -f (an open surface of at most " +
            std::to_string(SMALLEST_OPEN_SURFACE) + " triangles is taken for debris and removed)");
    statistics = MeshStatistics(vVertices.size(), vCorners);
    heldMessages.clear();
}

void Job::writeMesh()
{
    const Stopwatch stopwatch;
    const std::string& tempName = outFile->create();
    // For PLY, true asks for the binary form.
    const bool bWritten = library([&] { return TARN_ZEF::writeMesh_auto(tempName, pMesh, true); });
    if (!bWritten)
        throw ToolError("cannot write " + options.outName + " whole: is the disk full?");
    writeSeconds = stopwatch.getSeconds();
    heldMessages.clear();
}

void Job::drawPictures()
{
    if (!pngFile && !pngCloudFile)
        return;
    PngRenderer renderer(options.view);
    const auto write = [](SafeOutputFile& file, const Image& image)
    {
        const std::string reason = image.writePng(file.create());
        if (!reason.empty())
            throw ToolError("cannot write " + file.getName() + ": " + reason);
    };
    // The mesh first, so that both pictures are taken from its side.
    if (pngFile)
        write(*pngFile, renderer.drawMesh(vVertices, vCorners));
    if (pngCloudFile)
        write(*pngCloudFile, renderer.drawCloud(vPoints));
}

void Job::estimateSpacing()
{
    try
    {
        spacing = library([&] { return TARN_ZEF::estimateAvgSpacing(vPoints); });
    }
    catch (const TARN_ZEF::ZefBugException&)
    {
        throw ToolError(
            "no spacing can be detected: the points lie too close together for their extent; remove far "
            "outliers");
    }
    heldMessages.clear();
}

void Job::noteLostDigits()
{
    if (TARN_ZEF::getFileType(options.outName) != TARN_ZEF::FT_PLY)
        return;
    double largest = 0.0;
    for (const Point3* pPoint : vVertices)
        largest = std::max({largest, std::fabs(pPoint->x()), std::fabs(pPoint->y()), std::fabs(pPoint->z())});
    const auto stored = static_cast<float>(largest);
    const double step = std::nextafter(stored, std::numeric_limits<float>::max()) - stored;
    const double detail = spacing > 0.0 ? spacing : pMesh->getAverageEdgeLength();
    if (step > detail / 1000.0)
        note("PLY stores these large coordinates only in steps of " + textOf(step) +
             "; to keep their digits write .stl, which has 10");
}

void Job::commitTargets()
{
    for (std::optional<SafeOutputFile>* pFile : {&outFile, &pngFile, &pngCloudFile})
        if (*pFile)
            (*pFile)->commit();
}

void Job::printSpacing() const
{
    if (options.bJson)
    {
        JsonLine line;
        line.add("points", vPoints.size());
        line.add("spacing", spacing);
        std::cout << line.getText() << "\n";
    }
    else
        std::cout << textOf(spacing) << "\n";
    if (!std::cout.flush())
        throw ToolError("cannot write to standard output");
}

void Job::printFigures() const
{
    JsonLine line;
    line.add("points", vPoints.size());
    if (pMesh)
    {
        line.add("spacing", spacing);
        line.add("vertices", statistics.numVertices);
        line.add("triangles", statistics.numTriangles);
        line.add("borderEdges", statistics.numBorderEdges);
        line.add("nonManifoldEdges", statistics.numNonManifoldEdges);
        line.add("components", statistics.numComponents);
        line.add("read_s", readSeconds);
        line.add("compute", computeSeconds);
        line.add("write_s", writeSeconds);
        line.add("peak_mb", peakMegabytes);
    }
    std::cout << line.getText() << "\n";
}

void Job::printSummary() const
{
    std::cout << options.inName << ": " << vPoints.size() << " points";
    if (pMesh)
    {
        std::cout << ", spacing " << textOf(spacing);
        if (options.spacingAbs > 0.0)
            std::cout << " (given)";
        else if (options.spacingFactor != 1.0)
            std::cout << " (" << textOf(options.spacingFactor) << " times the detected one)";
        else
            std::cout << " (detected)";
        std::cout << "\n"
                  << options.outName << ": " << statistics.numVertices << " vertices, "
                  << statistics.numTriangles << " triangles, " << statistics.numComponents
                  << (statistics.numComponents == 1 ? " piece, " : " pieces, ");
        if (statistics.numBorderEdges == 0)
            std::cout << "closed";
        else
            std::cout << statistics.numBorderEdges << " border edges";
        if (statistics.numNonManifoldEdges != 0)
            std::cout << ", " << statistics.numNonManifoldEdges << " non-manifold edges";
        std::cout << "\nread " << secondsText(readSeconds) << ", reconstruct " << secondsText(computeSeconds)
                  << ", write " << secondsText(writeSeconds) << ", peak memory "
                  << std::llround(peakMegabytes) << " MB";
    }
    std::cout << "\n";
    for (const std::string& name : {options.pngName, options.pngCloudName})
        if (!name.empty())
            std::cout << name << ": picture\n";
}

void Job::note(const std::string& text)
{
    if (!options.bQuiet)
        std::cerr << "zef: note: " << text << "\n";
}

} // namespace TARN_TOOL
