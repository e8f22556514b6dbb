#include "commandLine.h"

#include <algorithm>
#include <iostream>
#include <numeric>

#include <CLI/CLI.hpp>

#include "byteSize.h"
#include "checkOptions.h"
#include "exitCodes.h"
#include "helpDocuments.h"
#include "numberText.h"
#include "writePng.h"

namespace TARN_TOOL
{
namespace
{
constexpr const char* EXAMPLES = R"(Files, told apart by what they hold, and where that tells nothing by name:
  points     .ply .las .pcd .xyz .txt .asc .csv .pts .ptx .obj .off .bin,
             or artificial123.xyz for the built-in sample cloud
  triangles  .ply .stl .obj .off .glb, and .list (Geomview) to write
             A PLY with both is taken for its points, unless --mesh or -m is given.
  -          standard input, or with --format standard output

Examples:
  zef scan.las mesh.ply                     spacing detected from the points
  zef scan1.las scan2.las mesh.ply          several scans of one object
  zef scan.xyz mesh.stl -f 1.3 -s           coarser by 1.3, points smoothed first
  zef scan.ply mesh.ply --auto              factor and smoothing chosen from the points
  zef scan.ply mesh.ply -a 0.5              spacing of 0.5, in units of the points
  zef scan.ply --spacing                    print the detected spacing
  zef scan.ply mesh.ply --png mesh.png      draw the mesh
  zef scan.ply mesh.ply --html mesh.html    a page to turn it in a browser
  zef part.stl mesh.ply -m -a 0.5           remesh triangles evenly, edges about 0.5 long
  zef part.stl mesh.ply -m --outer          one closed surface around all parts
  zef scan.ply mesh.ply --reduce 3c --flips thin flat regions, then even out the triangles
  zef part.obj --check --holes              judge a mesh, list its borders
  zef part.obj closed.stl --fill all-but-rim --binary
                                            close its holes, for a printer
  zef scan.las scan.ply --convert           another format, nothing else
  zef scans/*.las --batch meshes --format stl
                                            one mesh for each scan
  zef mesh.ply model.stl --compare          how far two surfaces are apart
  zef artificial123.xyz mesh.ply --json     figures for scripts

Exit status: 0 success, 1 input or result unusable, 2 wrong usage, 3 with --check a mesh with faults,
130 interrupted.)";

constexpr const char* PICTURES = "Pictures"; // group of options

std::string versionText()
{
    int major = 0;
    int minor = 0;
    TARN_ZEF::getVersion(major, minor);
    return "zef " + std::to_string(major) + (minor < 10 ? ".0" : ".") + std::to_string(minor);
}

std::string checkPositive(const std::string& text)
{
    const auto value = parseNumber(text);
    return value && *value > 0.0 ? std::string() : "expects a number above 0, not " + text;
}

std::string checkAngle(const std::string& text)
{
    const auto value = parseNumber(text);
    return value && *value >= 0.0 ? std::string() : "expects degrees of at least 0, not " + text;
}

void defineReconstruction(CLI::App& app, Options& options, RawOptions& raw)
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
        app.add_flag("--spacing", raw.bSpacing, "Print the detected spacing and stop")->group(reconstruction);
    app.add_flag(
           "--plain", options.bPlain,
           "Leave out the last stage, which makes the mesh sound and even; with -m remesh from cells of the "
           "spacing, needs -a")
        ->group(reconstruction);
    CLI::Option* pMelt =
        app.add_flag("-m,--fmelt", raw.bMelt, "IN holds triangles: remesh them evenly, edges about -a long")
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
    CLI::Option* pOuter = app.add_flag("--outer", options.bOuter,
                                       "With -m: the outer hull alone, closed, of all parts together")
                              ->needs(pMelt)
                              ->group(reconstruction);
    app.add_option("--bridge", options.numBridgedCells,
                   "With --outer: close gaps of up to N cells, two of them a length (0)")
        ->check(CLI::Range(0, 100))
        ->type_name("N")
        ->needs(pOuter)
        ->group(reconstruction);
    app.add_flag("--cloud", raw.bCloud, "With -m: write points on the surface instead of a mesh; needs -a")
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
    app.add_option_function<std::string>(
           "--fill",
           [&options](const std::string& text)
           {
               const std::optional<Step> step = Step::parseFill(text);
               if (!step)
                   throw CLI::ValidationError(
                       "--fill", "expects numbers of --holes like 1,4, a length like 3.5 or 20c, "
                                 "all-but-rim or all, not " +
                                     text);
               options.vSteps.push_back(*step);
           },
           "Close holes: by number as --holes lists them, up to a length (3.5, 20c), all-but-rim, or all")
        ->trigger_on_parse()
        ->type_name("N|LENGTH|WHICH")
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

// What needs the library for pictures of pixels.
void definePixelPictures(CLI::App& app, Options& options, RawOptions& raw)
{
    CLI::Option* pPng = app.add_option("--png", options.pngName, "Draw the mesh; back sides are orange")
                            ->type_name("FILE")
                            ->group(PICTURES);
    app.add_option("--png-cloud", options.pngCloudName, "Draw the points; without OUT nothing else is done")
        ->type_name("FILE")
        ->group(PICTURES);
    app.add_option("--turntable", options.view.numTurns,
                   "N pictures of --png once around: NAME_000.png and so on")
        ->check(CLI::Range(2, 360))
        ->type_name("N")
        ->needs(pPng)
        ->group(PICTURES);
    app.add_option("--size", raw.size, "Width and height of pictures in pixels (1200,900)")
        ->type_name("W,H")
        ->group(PICTURES);
    app.add_flag("--scale-bar", options.view.bScaleBar,
                 "Draw a bar of a round length, in units of the points")
        ->group(PICTURES);
}

void definePictures(CLI::App& app, Options& options, RawOptions& raw)
{
    if (canWritePng())
        definePixelPictures(app, options, raw);
    app.add_option("--html", options.htmlName,
                   "A page with the mesh, to turn in any browser, without a network")
        ->type_name("FILE")
        ->group(PICTURES);
    app.add_option("--paint", raw.paint, "Colors of the mesh: distance to the points, curvature, or pieces")
        ->check(CLI::IsMember({"distance", "curvature", "pieces"}))
        ->type_name("WHAT")
        ->group(PICTURES);
    app.add_flag("--marks", options.view.bMarks,
                 "Draw borders red, and edges of more than two triangles violet")
        ->group(PICTURES);
    app.add_option("--view", raw.angles, "Degrees from which to look, such as 30,20; chosen if not given")
        ->type_name("AZ,EL")
        ->group(PICTURES);
    app.add_option("--up", options.view.up, "Axis that points up (z)")
        ->check(CLI::IsMember({"x", "y", "z", "-x", "-y", "-z"}))
        ->type_name("AXIS")
        ->group(PICTURES);
    app.add_option("--zoom", options.view.zoom, "Magnification (1.0)")
        ->check(checkPositive)
        ->type_name("FACTOR")
        ->group(PICTURES);
    app.add_option("--focus", raw.focus, "What to zoom at: from 0,0 (upper left) to 1,1 of the whole picture")
        ->type_name("X,Y")
        ->group(PICTURES);
    app.add_flag("--wire", options.view.bWire, "Draw the edges of the triangles")->group(PICTURES);
}

void defineRunning(CLI::App& app, Options& options, RawOptions& raw)
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
    app.add_flag("--report", options.bReport,
                 "Tell what each call has done: points, cells, passes, seconds and memory of each stage")
        ->group(running);
    app.add_flag("--json", options.bJson, "Print the figures as one line of JSON")->group(running);
    CLI::Option* pVerbose =
        app.add_flag("-v,--verbose", options.bVerbose, "Let the library's messages through")->group(running);
    app.add_flag("-q,--quiet", options.bQuiet, "Print nothing but errors")
        ->excludes(pVerbose)
        ->group(running);
    app.add_option("--color", raw.color, "Colors on the error stream: auto, always or never")
        ->check(CLI::IsMember({"auto", "always", "never"}))
        ->type_name("WHEN")
        ->group(running);
}

void defineFiles(CLI::App& app, Options& options, RawOptions& raw)
{
    const std::string files = "Files";
    app.add_option(
           "--columns", options.reading.columns,
           "What the columns of a text hold, such as x,y,z,i,r,g,b; - is passed over; found if not given")
        ->type_name("LIST")
        ->group(files);
    app.add_option("--classes", raw.classes, "Of a LAS: only points of these classes, such as 2,6")
        ->type_name("LIST")
        ->group(files);
    app.add_flag("--last-returns", options.reading.bLastReturns,
                 "Of a LAS: only the last return of each pulse")
        ->group(files);
    CLI::Option* pAscii =
        app.add_flag("--ascii", raw.bAscii, "Write text where the format has both")->group(files);
    app.add_flag("--binary", raw.bBinary, "Write binary where the format has both, as for a printer's STL")
        ->excludes(pAscii)
        ->group(files);
    app.add_flag("--compress", options.bCompress, "PCD: write it compressed")->excludes(pAscii)->group(files);
    app.add_flag("--y-up", options.bYUp, "GLB: turn what points up along z to y, as viewers expect")
        ->group(files);
    app.add_option("--batch", options.batchFolder,
                   "Each input for itself, its result in this folder; goes on after a failure")
        ->type_name("DIR")
        ->group(files);
    app.add_option("--format", options.format,
                   "Format of standard input or output (-), and of the results of --batch (ply)")
        ->type_name("NAME")
        ->group(files);
}

// What is done with a mesh from a file, or with the one that was made.
void defineMeshes(CLI::App& app, Options& options, RawOptions& raw)
{
    const std::string meshes = "Meshes";
    CLI::Option* pMelt = app.get_option("--fmelt");
    CLI::Option* pSpacing = app.get_option("--spacing");
    const auto addTask = [&](const char* pName, bool& value, const char* pText)
    { return app.add_flag(pName, value, pText)->excludes(pMelt)->excludes(pSpacing)->group(meshes); };
    CLI::Option* pMesh =
        addTask("--mesh", raw.bMesh, "IN is a finished mesh, also where a PLY would be taken for its points");
    addTask("--convert", raw.bConvert, "Write points or triangles as they are in the format of OUT")
        ->excludes(pMesh);
    addTask("--compare", raw.bCompare,
            "Tell how far two surfaces are apart, both ways; --png draws the first in colors")
        ->excludes(pMesh)
        ->excludes(app.get_option("--convert"));
    app.add_flag("--check", options.bCheck,
                 "Judge the mesh: manifold, oriented, free of intersections...; status 3 if not")
        ->excludes(pSpacing)
        ->group(meshes);
    app.add_flag("--holes", options.bHoles, "List the borders of the mesh, holes and rims")
        ->excludes(pSpacing)
        ->group(meshes);
}

void defineOptions(CLI::App& app, Options& options, RawOptions& raw)
{
    app.add_option("IN", raw.vNames,
                   "Files of points or triangles, one cloud together; behind them the file to write")
        ->required()
        ->type_name("");
    app.set_version_flag("--version", versionText());
    defineReconstruction(app, options, raw);
    defineMeshes(app, options, raw);
    defineSteps(app, options);
    defineFiles(app, options, raw);
    definePictures(app, options, raw);
    defineRunning(app, options, raw);
}

// For the build, not shown in the help.
void defineDocuments(CLI::App& app)
{
    app.add_option_function<std::string>("--generate",
                                         [&app](const std::string& kind)
                                         {
                                             std::cout << makeHelpDocument(app, kind, versionText());
                                             throw CLI::Success();
                                         })
        ->check(CLI::IsMember({"man", "bash", "zsh", "fish"}))
        ->trigger_on_parse()
        ->group("");
}

// Letters to put in, leave out, or change (Levenshtein 1965).
std::size_t editDistance(const std::string& a, const std::string& b)
{
    std::vector<std::size_t> vRow(b.size() + 1);
    std::iota(vRow.begin(), vRow.end(), std::size_t{0});
    for (std::size_t i = 0; i < a.size(); ++i)
    {
        std::size_t diagonal = vRow[0]++;
        for (std::size_t k = 0; k < b.size(); ++k)
        {
            const std::size_t changed = diagonal + (a[i] == b[k] ? 0 : 1);
            diagonal = vRow[k + 1];
            vRow[k + 1] = std::min({changed, vRow[k] + 1, vRow[k + 1] + 1});
        }
    }
    return vRow.back();
}

// The option that a mistyped one may mean; empty if none is near.
std::string findNearest(const CLI::App& app, const std::string& mistyped)
{
    const std::string word = mistyped.substr(0, mistyped.find('='));
    std::string nearest;
    std::size_t least = word.size() / 3 + 1;
    for (const CLI::Option* pOption : app.get_options())
        for (const std::string& name : pOption->get_lnames())
            if (const std::size_t distance = editDistance(word, "--" + name); distance < least)
            {
                least = distance;
                nearest = "--" + name;
            }
    return nearest;
}

int refuseExtras(const CLI::App& app, const CLI::ExtrasError& wrong)
{
    std::cerr << wrong.what() << "\n";
    for (const std::string& word : app.remaining())
        if (const std::string nearest = findNearest(app, word); word.starts_with("--") && !nearest.empty())
            std::cerr << "Did you mean " << nearest << "?\n";
    std::cerr << "Run with --help for more information.\n";
    return EXIT_USAGE;
}
} // namespace

std::optional<int> parseCommandLine(int argc, char** argv, Options& options)
{
    CLI::App app("Turns a point cloud, or a triangle soup, into a clean triangle mesh.", "zef");
    app.footer(EXAMPLES);
    RawOptions raw;
    setHelpForm(app);
    defineOptions(app, options, raw);
    defineDocuments(app);
    try
    {
        app.parse(argc, argv);
        settleOptions(raw, options);
    }
    catch (const CLI::Success& asked)
    {
        app.exit(asked);
        return std::cout.flush() ? 0 : 1;
    }
    catch (const CLI::ExtrasError& wrong)
    {
        return refuseExtras(app, wrong);
    }
    catch (const CLI::ParseError& wrong)
    {
        app.exit(wrong);
        return EXIT_USAGE;
    }
    return std::nullopt;
}

} // namespace TARN_TOOL
