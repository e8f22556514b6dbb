#include "Options.h"

#include <array>
#include <filesystem>
#include <iostream>
#include <system_error>

#include <CLI/CLI.hpp>

#include "byteSize.h"
#include "numberText.h"
#include "writePng.h"

namespace TARN_TOOL
{
namespace
{
constexpr int EXIT_USAGE = 2;

constexpr const char* EXAMPLES = R"(Files:
  IN   .ply .xyz .txt .asc .bin, or artificial123.xyz for the built-in sample cloud;
       with -m triangles: .stl .ply
  OUT  .ply (binary, coordinates as float), .stl (text, 10 digits) or .list (Geomview);
       with --cloud points: .ply .xyz .txt .asc .bin

Examples:
  zef scan.ply mesh.ply                     spacing detected from the points
  zef scan.xyz mesh.stl -f 1.3 -s           coarser by 1.3, points smoothed first
  zef scan.ply mesh.ply --auto              factor and smoothing chosen from the points
  zef scan.ply mesh.ply -a 0.5              spacing of 0.5, in units of the points
  zef scan.ply --spacing                    print the detected spacing
  zef scan.ply mesh.ply --png mesh.png      draw the mesh
  zef part.stl mesh.ply -m -a 0.5           remesh triangles evenly, edges about 0.5 long
  zef scan.ply mesh.ply --reduce 3c --flips thin flat regions, then even out the triangles
  zef artificial123.xyz mesh.ply --json     figures for scripts

Exit status: 0 success, 1 input or result unusable or, with --check, a mesh with faults, 2 wrong usage.)";

std::string versionText()
{
    int major = 0;
    int minor = 0;
    TARN_ZEF::getVersion(major, minor);
    return "zef " + std::to_string(major) + (minor < 10 ? ".0" : ".") + std::to_string(minor);
}

// Two numbers with a comma between.
std::array<double, 2> parsePair(const std::string& optionName, const std::string& text)
{
    const std::size_t comma = text.find(',');
    const auto first = parseNumber(text.substr(0, comma));
    const auto second = comma == std::string::npos ? std::nullopt : parseNumber(text.substr(comma + 1));
    if (!first || !second)
        throw CLI::ValidationError(optionName, "expects two numbers like 30,20, not " + text);
    return {*first, *second};
}

std::string checkPositive(const std::string& text)
{
    const auto value = parseNumber(text);
    return value && *value > 0.0 ? std::string() : "expects a number above 0, not " + text;
}

bool isMeshType(TARN_ZEF::FileType type)
{
    return type == TARN_ZEF::FT_PLY || type == TARN_ZEF::FT_STL || type == TARN_ZEF::FT_LIST;
}

bool isPointType(TARN_ZEF::FileType type)
{
    return type == TARN_ZEF::FT_PLY || type == TARN_ZEF::FT_ASCII || type == TARN_ZEF::FT_BIN;
}

std::string checkAngle(const std::string& text)
{
    const auto value = parseNumber(text);
    return value && *value >= 0.0 ? std::string() : "expects degrees of at least 0, not " + text;
}

void checkPngName(const std::string& optionName, const std::string& name)
{
    const std::string extension = std::filesystem::path(name).extension().string();
    if (!name.empty() && extension != ".png" && extension != ".PNG")
        throw CLI::ValidationError(optionName, "the name of a picture ends in .png, not " + name);
}

// Triangles want -m, -m wants triangles, and what is made from cells wants a spacing.
void checkMelt(const Options& options)
{
    const TARN_ZEF::FileType type = Options::typeOf(options.inName);
    if (!options.bMelt)
    {
        if (type == TARN_ZEF::FT_STL)
            throw CLI::ValidationError("IN", "Input file is of type STL, use --fmelt (-m) instead");
        return;
    }
    if (type != TARN_ZEF::FT_STL && type != TARN_ZEF::FT_PLY)
        throw CLI::ValidationError("--fmelt",
                                   "reads triangles from .stl or .ply, not from " + options.inName);
    if (options.spacingAbs <= 0.0 && !options.isRemesh())
        throw CLI::ValidationError("--fmelt", "For an STL provide also the -a option please");
    if (!options.bCloud)
        return;
    if ((options.outName.empty() && !options.bDryRun) || !options.pngName.empty())
        throw CLI::ValidationError("--cloud", "writes points to OUT and makes no mesh to draw");
    if (options.bCheck)
        throw CLI::ValidationError("--cloud", "makes no mesh that --check could judge");
    if (!options.vSteps.empty())
        throw CLI::ValidationError("--cloud", "makes no mesh that --" + options.vSteps.front().getText() +
                                                  " could improve");
}

void checkTarget(const Options& options)
{
    const std::string& name = options.outName;
    if (name.empty())
    {
        if (!options.pngName.empty())
            throw CLI::ValidationError("--png", "draws the mesh and needs OUT; --png-cloud draws the points");
        if (options.bCheck)
            throw CLI::ValidationError("--check", "judges the mesh and needs OUT");
        if (!options.vSteps.empty())
            throw CLI::ValidationError("OUT", "is missing: --" + options.vSteps.front().getText() +
                                                  " works on a mesh");
        if (options.pngCloudName.empty() && !options.bSpacingOnly && !options.bDryRun)
            throw CLI::RequiredError("OUT");
        return;
    }
    const TARN_ZEF::FileType type = Options::typeOf(name);
    if (options.bCloud ? !isPointType(type) : !isMeshType(type))
        throw CLI::ValidationError(
            "OUT", "unknown extension of " + name + ", expected " +
                       (options.bCloud ? ".ply, .xyz, .txt, .asc or .bin" : ".ply, .stl or .list"));
    std::error_code ec;
    if (std::filesystem::equivalent(options.inName, name, ec))
        throw CLI::ValidationError("OUT", "would replace the input " + options.inName);
}

void checkMemory(const Options& options)
{
    const bool bAny = options.bDryRun || options.memoryLimit > 0;
    if (bAny && options.isRemesh())
        throw CLI::ValidationError(
            options.bDryRun ? "--dry-run" : "--limit-memory",
            "knows the memory of meshes from cells only: with -m add --plain or --cloud");
}

void checkTogether(const Options& options)
{
    checkMemory(options);
    checkMelt(options);
    checkTarget(options);
    checkPngName("--png", options.pngName);
    checkPngName("--png-cloud", options.pngCloudName);
    if (!options.pngName.empty() && options.pngName == options.pngCloudName)
        throw CLI::ValidationError("--png-cloud", "needs another name than --png");
}

void defineReconstruction(CLI::App& app, Options& options)
{
    const std::string reconstruction = "Reconstruction";
    CLI::Option* pAbs =
        app.add_option("-a,--spacing-abs", options.spacingAbs, "Point spacing, in units of the points")
            ->check(checkPositive)
            ->type_name("LENGTH")
            ->group(reconstruction);
    CLI::Option* pFactor =
        app.add_option("-f,--spacing-factor", options.spacingFactor,
                       "Factor on the detected spacing (1.0): 1.25 to 1.5 for uneven clouds")
            ->check(checkPositive)
            ->type_name("FACTOR")
            ->excludes(pAbs)
            ->group(reconstruction);
    CLI::Option* pSmooth =
        app.add_flag("-s,--smooth", options.bSmooth, "Smooth the points first, for noisy scans")
            ->group(reconstruction);
    CLI::Option* pAuto =
        app.add_flag("--auto", options.bAuto,
                     "Choose -f and -s from the cloud: the smallest factor without holes; tells why")
            ->excludes(pAbs)
            ->excludes(pFactor)
            ->excludes(pSmooth)
            ->group(reconstruction);
    CLI::Option* pSpacing =
        app.add_flag("--spacing", options.bSpacingOnly, "Print the detected spacing and stop")
            ->group(reconstruction);
    app.add_flag(
           "--plain", options.bPlain,
           "Leave out the last stage, which makes the mesh sound and even; with -m remesh from cells of the "
           "spacing, needs -a")
        ->group(reconstruction);
    CLI::Option* pMelt = app.add_flag("-m,--fmelt", options.bMelt,
                                      "IN holds triangles: remesh them evenly, edges about -a long")
                             ->excludes(pSmooth)
                             ->excludes(pAuto)
                             ->excludes(pSpacing)
                             ->group(reconstruction);
    app.add_option("--feature-angle", options.featureAngle,
                   "With -m: edges of more degrees stay sharp (found; with --plain 10); 361 keeps none")
        ->check(checkAngle)
        ->type_name("ANGLE")
        ->needs(pMelt)
        ->group(reconstruction);
    app.add_flag("--cloud", options.bCloud,
                 "With -m: write points on the surface instead of a mesh; needs -a")
        ->needs(pMelt)
        ->excludes(pFactor)
        ->group(reconstruction);
}

// Each use of one of these options adds a step, so that the order on the command line counts.
void defineSteps(CLI::App& app, Options& options)
{
    const std::string group = "Post-processing, in the order given";
    const auto addFlag = [&](const char* pName, Step::Kind kind, const char* pText)
    {
        app.add_flag_callback(
               pName, [&options, kind] { options.vSteps.push_back({.kind = kind}); }, pText)
            ->trigger_on_parse()
            ->group(group);
    };
    addFlag("--flips", Step::Kind::FLIPS, "Turn edges where that makes the surface smoother");
    addFlag("--anneal", Step::Kind::ANNEAL, "The same by annealing: slow, a little better");
    app.add_option_function<std::string>(
           "--reduce",
           [&options](const std::string& text)
           {
               const std::optional<Step> step = Step::parseReduce(text);
               if (!step)
                   throw CLI::ValidationError("--reduce",
                                              "expects LEN or LEN,ANGLE like 0.5 or 2c,25, not " + text);
               options.vSteps.push_back(*step);
           },
           "Thin flat regions: collapse edges up to LEN (2c: two spacings) that turn no triangle by more "
           "than "
           "ANGLE degrees (25)")
        ->trigger_on_parse()
        ->type_name("LEN[,ANGLE]")
        ->group(group);
    app.add_option_function<int>(
           "--laplace",
           [&options](int num)
           { options.vSteps.push_back({.kind = Step::Kind::LAPLACE, .numIterations = num}); },
           "Move each vertex to the mean of its neighbours, N times")
        ->check(CLI::Range(1, 1000))
        ->trigger_on_parse()
        ->type_name("N")
        ->group(group);
}

void definePictures(CLI::App& app, Options& options, std::string& angles, std::string& focus)
{
    const std::string pictures = "Pictures";
    app.add_option("--png", options.pngName, "Draw the mesh; back sides are orange")
        ->type_name("FILE")
        ->group(pictures);
    app.add_option("--png-cloud", options.pngCloudName, "Draw the points; without OUT nothing else is done")
        ->type_name("FILE")
        ->group(pictures);
    app.add_option("--view", angles, "Degrees from which to look, such as 30,20; chosen if not given")
        ->type_name("AZ,EL")
        ->group(pictures);
    app.add_option("--up", options.view.up, "Axis that points up (z)")
        ->check(CLI::IsMember({"x", "y", "z", "-x", "-y", "-z"}))
        ->type_name("AXIS")
        ->group(pictures);
    app.add_option("--zoom", options.view.zoom, "Magnification (1.0)")
        ->check(checkPositive)
        ->type_name("FACTOR")
        ->group(pictures);
    app.add_option("--focus", focus, "What to zoom at: from 0,0 (upper left) to 1,1 of the whole picture")
        ->type_name("X,Y")
        ->group(pictures);
    app.add_flag("--wire", options.view.bWire, "Draw the edges of the triangles")->group(pictures);
}

void defineRunning(CLI::App& app, Options& options)
{
    const std::string running = "Running";
    app.add_option("--threads", options.numThreads, "Worker threads; as many as the machine has if not given")
        ->check(CLI::Range(1, 256))
        ->type_name("N")
        ->group(running);
    app.add_option_function<std::string>(
           "--limit-memory",
           [&options](const std::string& text) { options.memoryLimit = parseByteSize(text).value_or(0); },
           "Refuse to make the mesh if that would take more; names a spacing that fits")
        ->check([](const std::string& text)
                { return parseByteSize(text) ? "" : "expects bytes like 500M or 1.5G, not " + text; })
        ->type_name("SIZE")
        ->group(running);
    app.add_flag("--dry-run", options.bDryRun, "Tell how much memory the mesh would take, and stop")
        ->group(running);
    app.add_flag("--check", options.bCheck,
                 "Judge the mesh: manifold, oriented, free of intersections...; status 1 if not")
        ->group(running);
    app.add_flag("--report", options.bReport,
                 "Tell what each call has done: points, cells, passes, seconds and memory of each stage")
        ->group(running);
    app.add_flag("--json", options.bJson, "Print the figures as one line of JSON")->group(running);
    CLI::Option* pVerbose =
        app.add_flag("-v,--verbose", options.bVerbose, "Let the library's messages through")->group(running);
    app.add_flag("-q,--quiet", options.bQuiet, "Print nothing but errors")
        ->excludes(pVerbose)
        ->group(running);
}

void defineOptions(CLI::App& app, Options& options, std::string& angles, std::string& focus)
{
    app.add_option("IN", options.inName, "Points to read, or triangles with -m")->required();
    app.add_option("OUT", options.outName, "Mesh to write; not needed with --spacing or --png-cloud");
    app.set_version_flag("--version", versionText());
    defineReconstruction(app, options);
    defineSteps(app, options);
    if (canWritePng())
        definePictures(app, options, angles, focus);
    defineRunning(app, options);
}
} // namespace

std::optional<int> Options::parse(int argc, char** argv)
{
    CLI::App app("Turns a point cloud, or a triangle soup, into a clean triangle mesh.", "zef");
    app.footer(EXAMPLES);
    std::string angles;
    std::string focus;
    defineOptions(app, *this, angles, focus);
    try
    {
        app.parse(argc, argv);
        if (!angles.empty())
            view.angles = parsePair("--view", angles);
        if (!focus.empty())
            view.focus = parsePair("--focus", focus);
        checkTogether(*this);
    }
    catch (const CLI::Success& asked)
    {
        app.exit(asked);
        return std::cout.flush() ? 0 : 1;
    }
    catch (const CLI::ParseError& wrong)
    {
        app.exit(wrong);
        return EXIT_USAGE;
    }
    return std::nullopt;
}

TARN_ZEF::FileType Options::typeOf(const std::string& name)
{
    // An unknown extension, where the library refuses a name that is shorter than any.
    return TARN_ZEF::getFileType(std::string(5, '_') + name);
}

} // namespace TARN_TOOL
