#include "Options.h"

#include <array>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <iostream>
#include <system_error>

#include <CLI/CLI.hpp>

#include "zef.h"

namespace TARN_TOOL
{
namespace
{
constexpr int EXIT_USAGE = 2;

constexpr const char* EXAMPLES = R"(Files:
  IN   .ply .xyz .txt .asc .bin, or artificial123.xyz for the built-in sample cloud
  OUT  .ply (binary, coordinates as float), .stl (text, 10 digits) or .list (Geomview)

Examples:
  zef scan.ply mesh.ply                     spacing detected from the points
  zef scan.xyz mesh.stl -f 1.3 -s           coarser by 1.3, points smoothed first
  zef scan.ply mesh.ply -a 0.5              spacing of 0.5, in units of the points
  zef scan.ply --spacing                    print the detected spacing
  zef scan.ply mesh.ply --png mesh.png      draw the mesh
  zef artificial123.xyz mesh.ply --json     figures for scripts

Exit status: 0 success, 1 input or result unusable, 2 wrong usage.)";

std::string versionText()
{
    int major = 0;
    int minor = 0;
    TARN_ZEF::getVersion(major, minor);
    return "zef " + std::to_string(major) + (minor < 10 ? ".0" : ".") + std::to_string(minor);
}

// The whole of text as a finite number, independent of the locale.
std::optional<double> parseNumber(const std::string& text)
{
    double value = 0.0;
    const char* const pEnd = text.data() + text.size();
    const auto [pStop, error] = std::from_chars(text.data(), pEnd, value);
    if (error != std::errc() || pStop != pEnd || !std::isfinite(value))
        return std::nullopt;
    return value;
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

bool isMeshName(const std::string& name)
{
    if (name.size() < 4)
        return false;
    const TARN_ZEF::FileType type = TARN_ZEF::getFileType(name);
    return type == TARN_ZEF::FT_PLY || type == TARN_ZEF::FT_STL || type == TARN_ZEF::FT_LIST;
}

void checkPngName(const std::string& optionName, const std::string& name)
{
    const std::string extension = std::filesystem::path(name).extension().string();
    if (!name.empty() && extension != ".png" && extension != ".PNG")
        throw CLI::ValidationError(optionName, "the name of a picture ends in .png, not " + name);
}

void checkTogether(const Options& options)
{
    if (!options.outName.empty() && !isMeshName(options.outName))
        throw CLI::ValidationError("OUT", "unknown extension of " + options.outName +
                                              ", expected .ply, .stl or .list");
    checkPngName("--png", options.pngName);
    checkPngName("--png-cloud", options.pngCloudName);
    if (!options.pngName.empty() && options.pngName == options.pngCloudName)
        throw CLI::ValidationError("--png-cloud", "needs another name than --png");
    if (options.outName.empty() && !options.pngName.empty())
        throw CLI::ValidationError("--png", "draws the mesh and needs OUT; --png-cloud draws the points");
    if (options.outName.empty() && options.pngCloudName.empty() && !options.bSpacingOnly)
        throw CLI::RequiredError("OUT");
    std::error_code ec;
    if (!options.outName.empty() && std::filesystem::equivalent(options.inName, options.outName, ec))
        throw CLI::ValidationError("OUT", "would replace the input " + options.inName);
}

void defineOptions(CLI::App& app, Options& options, std::string& angles, std::string& focus)
{
    app.add_option("IN", options.inName, "Points to read")->required();
    app.add_option("OUT", options.outName, "Mesh to write; not needed with --spacing or --png-cloud");
    app.set_version_flag("--version", versionText());

    const std::string reconstruction = "Reconstruction";
    CLI::Option* pAbs =
        app.add_option("-a,--spacing-abs", options.spacingAbs, "Point spacing, in units of the points")
            ->check(checkPositive)
            ->type_name("LENGTH")
            ->group(reconstruction);
    app.add_option("-f,--spacing-factor", options.spacingFactor,
                   "Factor on the detected spacing (1.0): 1.25 to 1.5 for uneven clouds")
        ->check(checkPositive)
        ->type_name("FACTOR")
        ->excludes(pAbs)
        ->group(reconstruction);
    app.add_flag("-s,--smooth", options.bSmooth, "Smooth the points first, for noisy scans")
        ->group(reconstruction);
    app.add_flag("--spacing", options.bSpacingOnly, "Print the detected spacing and stop")
        ->group(reconstruction);

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

    const std::string running = "Running";
    app.add_option("--threads", options.numThreads, "Worker threads; as many as the machine has if not given")
        ->check(CLI::Range(1, 256))
        ->type_name("N")
        ->group(running);
    app.add_flag("--json", options.bJson, "Print the figures as one line of JSON")->group(running);
    CLI::Option* pVerbose =
        app.add_flag("-v,--verbose", options.bVerbose, "Let the library's messages through")->group(running);
    app.add_flag("-q,--quiet", options.bQuiet, "Print nothing but errors")
        ->excludes(pVerbose)
        ->group(running);
}
} // namespace

std::optional<int> Options::parse(int argc, char** argv)
{
    CLI::App app("Turns a point cloud into a clean triangle mesh.", "zef");
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

} // namespace TARN_TOOL
