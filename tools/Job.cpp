#include "Job.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <limits>

#include "PngRenderer.h"
#include "ToolError.h"
#include "numberText.h"
#include "platform.h"

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
// Of a remesh at a spacing that was asked for: about 4 GB.
constexpr int MOST_REMESHED = 20000000;

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

// Leaves out what has a corner that is not finite; returns how many triangles went.
std::size_t dropUnusableTriangles(std::vector<Point3>& vTriCorners)
{
    std::size_t numKept = 0;
    for (std::size_t i = 0; i + 2 < vTriCorners.size(); i += 3)
        if (isFinite(vTriCorners[i]) && isFinite(vTriCorners[i + 1]) && isFinite(vTriCorners[i + 2]))
            for (std::size_t k = 0; k < 3; ++k)
                vTriCorners[numKept++] = vTriCorners[i + k];
    const std::size_t numDropped = (vTriCorners.size() - numKept) / 3;
    vTriCorners.resize(numKept);
    return numDropped;
}

double areaOf(const std::vector<Point3>& vTriCorners)
{
    double sum = 0.0;
    for (std::size_t i = 0; i + 2 < vTriCorners.size(); i += 3)
    {
        const TARN_ZEF::Vector3 a = vTriCorners[i + 1] - vTriCorners[i];
        const TARN_ZEF::Vector3 b = vTriCorners[i + 2] - vTriCorners[i];
        const double dot = a * b;
        sum += 0.5 * std::sqrt(std::max(0.0, a.sqLength() * b.sqLength() - dot * dot));
    }
    return sum;
}

// The library would read the rest of a cut ".bin" as zeros.
void requireWholeBin(const std::string& name)
{
    std::error_code ec;
    const std::uintmax_t numBytes = std::filesystem::file_size(name, ec);
    std::ifstream file(name, std::ios::binary);
    std::int32_t typ = 0;
    std::uint64_t num = 0;
    file.read(reinterpret_cast<char*>(&typ), sizeof typ);
    file.read(reinterpret_cast<char*>(&num), sizeof num);
    if (ec || !file) // no regular file, or for the library to refuse
        return;
    const std::uint64_t numPresent = (numBytes - sizeof typ - sizeof num) / (typ == 20 ? 16 : 24);
    if (numPresent < num)
        throw ToolError("cannot read " + name + ": the file is cut, it counts " + std::to_string(num) +
                        " points and holds only " + std::to_string(numPresent) + "; get the whole file");
}

bool isEmpty(const std::shared_ptr<TARN_ZEF::Mesh>& pMesh)
{
    std::vector<Point3*> vTriCorners;
    if (pMesh)
        pMesh->getTriangles(vTriCorners);
    return vTriCorners.empty();
}

LibraryMessages::Mode messagesMode(const Options& options)
{
    if (!options.bVerbose)
        return LibraryMessages::Mode::HOLD;
    // Standard output then belongs to the line of figures alone.
    return options.bJson ? LibraryMessages::Mode::TO_ERROR_STREAM : LibraryMessages::Mode::PASS;
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
    readInput();
    checkInput();
    if (options.bDryRun)
    {
        forecastMemory();
        print(report.getForecast(options));
        return;
    }
    if (options.bSpacingOnly)
    {
        report.spacing = estimateSpacing();
        print(report.getSpacing(options));
        return;
    }
    if (outFile)
    {
        if (options.bCloud)
            sampleTriangles();
        else
            makeMesh();
        checkResult();
        writeResult();
        report.peakMegabytes = peakMegabytesOfProcess();
        if (!options.bQuiet || options.bJson)
            report.spacing = getSpacing();
        noteLostDigits();
    }
    drawPictures();
    if (options.bJson)
        print(report.getJson(options));
    else if (!options.bQuiet)
        print(report.getSummary(options));
    commitTargets();
}

template <typename F>
auto Job::library(F call)
{
    heldMessages.clear();
    LibraryMessages messages(messagesMode(options));
    try
    {
        TARN_ZEF::CallReport callReport;
        std::optional<TARN_ZEF::ReportScope> scope;
        if (options.bReport)
            scope.emplace(callReport);
        std::optional<TARN_ZEF::MemoryLimitScope> limit;
        if (options.memoryLimit > 0)
            limit.emplace(options.memoryLimit);
        auto result = call();
        progressBar.clear();
        heldMessages = messages.finish();
        if (!callReport.call.empty())
            report.vCalls.push_back(std::move(callReport));
        return result;
    }
    catch (const TARN_ZEF::ZefRefusedException& refused)
    {
        progressBar.clear();
        // The reason alone; it names both by their words.
        throw ToolError(std::string(refused.what()) +
                        (options.bMelt ? " (spacing: -a)" : " (spacing: -a, factor: -f)"));
    }
    catch (...)
    {
        progressBar.clear();
        heldMessages = messages.finish();
        throw;
    }
}

void Job::openTargets()
{
    if (options.bSpacingOnly || options.bDryRun)
        return;
    if (!options.outName.empty())
        outFile.emplace(options.outName);
    if (!options.pngName.empty())
        pngFile.emplace(options.pngName);
    if (!options.pngCloudName.empty())
        pngCloudFile.emplace(options.pngCloudName);
}

void Job::readInput()
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
        if (!mayRead(name))
            throw ToolError("cannot read " + name + ": " + std::strerror(errno));
        if (options.bMelt)
            readTriangles(name);
        else
            readPoints(name);
        heldMessages.clear();
    }
    report.numPoints = vPoints.size();
    report.readSeconds = stopwatch.getSeconds();
}

void Job::readPoints(std::string& name)
{
    const TARN_ZEF::FileType type = Options::typeOf(name);
    if (type == TARN_ZEF::FT_UNKNOWN || type == TARN_ZEF::FT_LIST)
        throw ToolError("cannot read " + name +
                        ": unknown extension, expected .ply, .xyz, .txt, .asc or .bin");
    if (type == TARN_ZEF::FT_BIN)
        requireWholeBin(name);
    if (!library([&] { return TARN_ZEF::readPoints_auto(name, vPoints); }))
        throw ToolError("cannot read " + name + ": not a readable file of points; check its format");
    const std::size_t numDropped = std::erase_if(vPoints, [](const Point3& p) { return !isFinite(p); });
    if (numDropped != 0)
        note("points left out for a NaN or infinite coordinate: " + std::to_string(numDropped));
}

void Job::readTriangles(const std::string& name)
{
    const bool bStl = Options::typeOf(name) == TARN_ZEF::FT_STL;
    if (!library(
            [&]
            {
                return bStl ? TARN_ZEF::readSTL_ASCII(name.c_str(), vPoints)
                            : TARN_ZEF::readPly(name.c_str(), false, vPoints);
            }))
        throw ToolError("cannot read " + name +
                        (bStl ? ": not a readable text STL; check its format (binary STL is not read)"
                              : ": not a readable PLY of triangles; for a cloud leave out -m"));
    const std::size_t numDropped = dropUnusableTriangles(vPoints);
    if (numDropped != 0)
        note("triangles left out for a NaN or infinite coordinate: " + std::to_string(numDropped));
    report.numInputTriangles = vPoints.size() / 3;
}

void Job::checkInput() const
{
    const std::string& name = options.inName;
    if (vPoints.empty())
        throw ToolError(name + (options.bMelt
                                    ? " holds no triangles with finite coordinates; for a cloud leave out -m"
                                    : " holds no points with finite coordinates; check its format"));
    if (vPoints.size() > MAX_POINTS)
        throw ToolError(name + " holds more than 2147483647 points or corners; thin it out");
    const double extent = maxExtent(vPoints);
    if (!std::isfinite(extent))
        throw ToolError("the coordinates in " + name + " are too large to work with; check its format");
    const bool bDrawOnly = options.outName.empty() && !options.bSpacingOnly && !options.bDryRun;
    if (bDrawOnly)
        return;
    if (vPoints.size() < 3)
        throw ToolError(name + " holds only " + std::to_string(vPoints.size()) +
                        " points, too few for a surface; give a denser cloud");
    if (extent == 0.0)
        throw ToolError("all points in " + name + " are the same; give input with an extent");
    if (options.spacingAbs > 0.0)
        checkSpacing(extent);
}

void Job::checkSpacing(double extent) const
{
    const double given = options.spacingAbs;
    if (extent / given > MAX_CELLS)
        throw ToolError("a spacing of " + textOf(given) + " is too small for an extent of " + textOf(extent) +
                        "; try -a " + textOf(2.0 * extent / MAX_CELLS) + " or more");
    if (!options.bMelt)
        return;
    // About one point for each cell that the triangles cross.
    const double area = areaOf(vPoints);
    const double most = static_cast<double>(MAX_POINTS);
    if (area / (given * given) > most)
        throw ToolError("a spacing of " + textOf(given) + " is too small for an area of " + textOf(area) +
                        "; try -a " + textOf(2.0 * std::sqrt(area / most)) + " or more");
}

void Job::forecastMemory()
{
    using Call = TARN_ZEF::ForecastCall;
    const bool bGiven = options.spacingAbs > 0.0;
    Call call = options.bSmooth ? Call::ReconstructAutoSmoothed : Call::ReconstructAuto;
    if (options.bMelt)
        call = options.bCloud ? Call::ToCloud : Call::Melt;
    else if (bGiven)
        call = options.bSmooth ? Call::ReconstructAbsSmoothed : Call::ReconstructAbs;
    const double spacing = bGiven ? options.spacingAbs : options.spacingFactor;
    report.forecastBytes = library([&] { return TARN_ZEF::estimateMemory(vPoints, spacing, call); });
}

void Job::makeMesh()
{
    if (options.isRemesh())
        remesh();
    else if (options.bMelt)
        melt();
    else
        reconstruct();
    if (!options.bMelt && !options.bPlain)
        finish();
    improveMesh();
    takeMesh();
}

void Job::reconstruct()
{
    const Stopwatch stopwatch;
    try
    {
        pMesh = library([&] { return reconstructAsAsked(); });
    }
    catch (const TARN_ZEF::ZefBugException&)
    {
        throw ToolError("the points cannot be reconstructed at this spacing; try another one with -a");
    }
    report.computeSeconds = stopwatch.getSeconds();
    if (isEmpty(pMesh))
        throw ToolError(
            "no surface found at this spacing; try another one with -a or -f (an open surface of at most " +
            std::to_string(SMALLEST_OPEN_SURFACE) + " triangles is taken for debris and removed)");
    heldMessages.clear();
}

void Job::finish()
{
    const Stopwatch stopwatch;
    // The PLY that is written holds floats.
    TARN_ZEF::FinishOptions finishOptions;
    finishOptions.bRoundToFloat = true;
    pMesh = library([&] { return TARN_ZEF::finishSurface(*pMesh, vPoints, finishOptions); });
    report.finishSeconds = stopwatch.getSeconds();
    report.computeSeconds += report.finishSeconds;
    if (isEmpty(pMesh))
        throw ToolError("no sound surface is left at this spacing; try another one with -a or -f");
    heldMessages.clear();
}

std::shared_ptr<TARN_ZEF::Mesh> Job::reconstructAsAsked()
{
    if (options.bAuto)
    {
        report.choice.emplace();
        return TARN_ZEF::autoReconstruct(vPoints, TARN_ZEF::AutoOptions(), &*report.choice);
    }
    if (options.spacingAbs > 0.0)
        return TARN_ZEF::reconstruct_abs(vPoints, options.bSmooth, options.spacingAbs);
    return TARN_ZEF::reconstruct_auto(vPoints, options.bSmooth, options.spacingFactor);
}

void Job::melt()
{
    const Stopwatch stopwatch;
    try
    {
        pMesh = library(
            [&] { return TARN_ZEF::melt(vPoints, options.spacingAbs, options.getCellFeatureAngle()); });
    }
    catch (const TARN_ZEF::ZefBugException&)
    {
        throw ToolError("the triangles cannot be remeshed at this spacing; try another one with -a");
    }
    report.computeSeconds = stopwatch.getSeconds();
    if (isEmpty(pMesh))
        throw ToolError("no surface came out at this spacing; try a smaller one with -a");
    heldMessages.clear();
}

// The length in force becomes the spacing, found or given.
void Job::remesh()
{
    TARN_ZEF::RemeshOptions remeshOptions;
    if (options.spacingAbs > 0.0)
    {
        remeshOptions.length = options.spacingAbs;
        remeshOptions.maxTriangles = MOST_REMESHED;
    }
    remeshOptions.lengthFactor = options.spacingFactor;
    if (options.featureAngle >= 0.0)
        remeshOptions.featureAngle = options.featureAngle;
    TARN_ZEF::RemeshReport remeshReport;
    const Stopwatch stopwatch;
    try
    {
        pMesh = library([&] { return TARN_ZEF::remesh(vPoints, remeshOptions, &remeshReport); });
    }
    catch (const TARN_ZEF::ZefBugException&)
    {
        throw ToolError("the triangles cannot be remeshed at this spacing; try another one with -a");
    }
    report.computeSeconds = stopwatch.getSeconds();
    if (isEmpty(pMesh))
        throw ToolError("no surface came out: no triangle has a height");
    report.spacing = remeshReport.length;
    heldMessages.clear();
    noteRemesh(remeshReport);
}

void Job::noteRemesh(const TARN_ZEF::RemeshReport& found)
{
    if (found.numParted != 0)
        note("edges of more than two triangles, parted: " + std::to_string(found.numParted));
    if (found.numFarPlaces != 0)
        note("places farther off the triangles than the tolerance: " + std::to_string(found.numFarPlaces));
}

void Job::sampleTriangles()
{
    std::vector<Point3> vSamples;
    const Stopwatch stopwatch;
    try
    {
        library(
            [&]
            {
                TARN_ZEF::toCloud(vPoints, options.spacingAbs, options.getCellFeatureAngle(), vSamples);
                return true;
            });
    }
    catch (const TARN_ZEF::ZefBugException&)
    {
        throw ToolError("the triangles cannot be sampled at this spacing; try another one with -a");
    }
    report.computeSeconds = stopwatch.getSeconds();
    if (vSamples.empty())
        throw ToolError("no points came out: are all triangles degenerate?");
    vPoints = std::move(vSamples);
    report.numPoints = vPoints.size();
    heldMessages.clear();
}

void Job::improveMesh()
{
    if (options.vSteps.empty())
        return;
    const bool bNeedsSpacing = std::any_of(options.vSteps.begin(), options.vSteps.end(),
                                           [](const Step& s) { return s.needsSpacing(); });
    const double cell = bNeedsSpacing ? getSpacing() : 0.0;
    report.anglesBefore = TriangleAngles(*pMesh);
    for (const Step& step : options.vSteps)
    {
        const Stopwatch stopwatch;
        try
        {
            library(
                [&]
                {
                    step.apply(pMesh, cell);
                    return true;
                });
        }
        catch (const TARN_ZEF::ZefBugException&)
        {
            throw ToolError("--" + step.getText() + " failed on this mesh; leave it out or try other values");
        }
        const double seconds = stopwatch.getSeconds();
        report.computeSeconds += seconds;
        report.vSteps.push_back({step.getText(), TriangleAngles(*pMesh), seconds});
        if (report.vSteps.back().angles.numTriangles == 0)
            throw ToolError("--" + step.getText() + " left no triangle; try smaller values");
        heldMessages.clear();
    }
}

void Job::takeMesh()
{
    pMesh->getVertexIndexData(vVertices, vCorners);
    report.statistics = MeshStatistics(vVertices.size(), vCorners);
}

// In the precision of the library; the file may hold less.
void Job::checkResult()
{
    if (!options.bCheck)
        return;
    TARN_ZEF::CheckOptions checkOptions;
    checkOptions.maxPlaces = 3;
    report.check = library([&] { return TARN_ZEF::checkMesh(*pMesh, checkOptions); });
}

void Job::writeResult()
{
    const Stopwatch stopwatch;
    std::string tempName = outFile->create();
    // For a PLY, binary form is true with meshes and false with points.
    const bool bWritten = library(
        [&]
        {
            return options.bCloud ? TARN_ZEF::writePoints_auto(tempName, vPoints, false)
                                  : TARN_ZEF::writeMesh_auto(tempName, pMesh, true);
        });
    if (!bWritten)
        throw ToolError("cannot write " + options.outName + " whole: is the disk full?");
    report.writeSeconds = stopwatch.getSeconds();
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

double Job::getSpacing()
{
    if (options.spacingAbs > 0.0)
        return options.spacingAbs;
    if (report.spacing < 0.0)
        report.spacing = report.choice ? report.choice->cloud.spacing * report.choice->factor
                                       : estimateSpacing() * options.spacingFactor;
    return report.spacing;
}

double Job::estimateSpacing()
{
    const double detected = library([&] { return TARN_ZEF::estimateAvgSpacing(vPoints); });
    heldMessages.clear();
    return detected;
}

void Job::noteLostDigits()
{
    // A mesh is written with doubles then.
    if (!options.bCloud || Options::typeOf(options.outName) != TARN_ZEF::FT_PLY)
        return;
    double largest = 0.0;
    const auto include = [&largest](const Point3& p) {
        largest = std::max({largest, std::fabs(p.x()), std::fabs(p.y()), std::fabs(p.z())});
    };
    std::for_each(vPoints.begin(), vPoints.end(), include);
    const auto stored = static_cast<float>(largest);
    const double step = std::nextafter(stored, std::numeric_limits<float>::max()) - stored;
    if (step > options.spacingAbs / 1000.0)
        note("PLY stores these large coordinates only in steps of " + textOf(step) +
             "; to keep their digits write .xyz or .bin");
}

void Job::commitTargets()
{
    for (std::optional<SafeOutputFile>* pFile : {&outFile, &pngFile, &pngCloudFile})
        if (*pFile)
            (*pFile)->commit();
}

void Job::print(const std::string& text) const
{
    if (!(std::cout << text).flush())
        throw ToolError("cannot write to standard output; no file was written");
}

void Job::note(const std::string& text)
{
    if (!options.bQuiet)
        std::cerr << "zef: note: " << text << "\n";
}

} // namespace TARN_TOOL
