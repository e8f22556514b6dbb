#include "checkOptions.h"

#include <array>
#include <filesystem>
#include <system_error>

#include <CLI/CLI.hpp>

#include "formatNames.h"
#include "numberText.h"

namespace TARN_TOOL
{
namespace
{
[[noreturn]] void refuse(const std::string& name, const std::string& reason)
{
    throw CLI::ValidationError(name, reason);
}

// Two numbers with a comma between.
std::array<double, 2> parsePair(const std::string& optionName, const std::string& text)
{
    const std::size_t comma = text.find(',');
    const auto first = parseNumber(text.substr(0, comma));
    const auto second = comma == std::string::npos ? std::nullopt : parseNumber(text.substr(comma + 1));
    if (!first || !second)
        refuse(optionName, "expects two numbers like 30,20, not " + text);
    return {*first, *second};
}

void settleSize(const std::string& text, ViewOptions& view)
{
    constexpr double LEAST = 100.0;
    constexpr double MOST = 8000.0;
    const std::array<double, 2> size = parsePair("--size", text);
    for (const double pixels : size)
        if (pixels < LEAST || pixels > MOST || pixels != static_cast<int>(pixels))
            refuse("--size", "expects whole numbers from 100 to 8000 like 1200,900, not " + text);
    view.width = static_cast<int>(size[0]);
    view.height = static_cast<int>(size[1]);
}

std::vector<int> parseClasses(const std::string& text)
{
    std::vector<int> vClasses;
    for (const std::string& word : CLI::detail::split(text, ','))
    {
        const auto number = parseNumber(word);
        if (!number || *number < 0.0 || *number > 255.0 || *number != static_cast<int>(*number))
            refuse("--classes", "expects whole numbers like 2,6, not " + text);
        vClasses.push_back(static_cast<int>(*number));
    }
    return vClasses;
}

void settleValues(const RawOptions& raw, Options& options)
{
    if (!raw.angles.empty())
        options.view.angles = parsePair("--view", raw.angles);
    if (!raw.size.empty())
        settleSize(raw.size, options.view);
    if (!raw.focus.empty())
        options.view.focus = parsePair("--focus", raw.focus);
    if (!raw.classes.empty())
        options.reading.vClasses = parseClasses(raw.classes);
    options.view.paint = raw.paint == "distance"    ? Paint::DISTANCE
                         : raw.paint == "curvature" ? Paint::CURVATURE
                         : raw.paint == "pieces"    ? Paint::PIECES
                                                    : Paint::SIDES;
    options.color = raw.color == "always"  ? ColorUse::ALWAYS
                    : raw.color == "never" ? ColorUse::NEVER
                                           : ColorUse::AUTO;
    options.form = raw.bAscii ? FileForm::TEXT : raw.bBinary ? FileForm::BINARY : FileForm::USUAL;
    if (!options.format.empty() && options.format.front() == '.')
        options.format.erase(0, 1);
}

// All names are inputs where nothing is written; else the last one is OUT, if there are two.
void settleNames(const RawOptions& raw, Options& options)
{
    options.vInputs = raw.vNames;
    if (raw.bSpacing || raw.bCompare || !options.batchFolder.empty() || raw.vNames.size() < 2)
        return;
    options.outName = options.vInputs.back();
    options.vInputs.pop_back();
}

// Whether the last stages of a mesh are asked for, which a mesh from a file serves as well.
bool wantsMesh(const Options& options)
{
    return options.bCheck || options.bHoles || options.drawsMesh() || !options.vSteps.empty();
}

Task taskOf(const RawOptions& raw, const Options& options)
{
    if (raw.bConvert)
        return Task::CONVERT;
    if (raw.bCompare)
        return Task::COMPARE;
    if (raw.bSpacing)
        return Task::SPACING;
    if (raw.bMelt)
        return raw.bCloud ? Task::SAMPLE : Task::REMESH;
    if (raw.bMesh)
        return Task::MESH;
    if (!options.outName.empty() || !options.batchFolder.empty())
        return Task::RECONSTRUCT;
    if (!options.pngCloudName.empty())
        return Task::DRAW;
    return wantsMesh(options) ? Task::MESH : Task::RECONSTRUCT;
}

void checkSample(const Options& options)
{
    if ((options.outName.empty() && options.batchFolder.empty() && !options.bDryRun) || options.drawsMesh())
        refuse("--cloud", "writes points to OUT and makes no mesh to draw");
    if (options.bCheck || options.bHoles)
        refuse("--cloud", std::string("makes no mesh that ") + (options.bCheck ? "--check" : "--holes") +
                              " could judge");
    if (!options.vSteps.empty())
        refuse("--cloud", "makes no mesh that --" + options.vSteps.front().getText() + " could improve");
}

void checkConvert(const Options& options)
{
    if (wantsMesh(options))
        refuse("--convert", "writes the input as it is; for steps, --check, --holes and --png use --mesh");
    const TARN_ZEF::FormatUse use = TARN_ZEF::getFormatUse(options.getOutFormatName());
    if (!options.outName.empty() && !use.bWritesTriangles && !use.bWritesPoints)
        refuse("OUT", "unknown extension of " + options.outName + ", expected " + meshFormats() +
                          " for triangles, " + pointFormats() + " for points");
}

void checkDraw(const Options& options)
{
    if (!options.vSteps.empty())
        refuse("OUT", "is missing: --" + options.vSteps.front().getText() + " works on a mesh");
    if (options.bCheck)
        refuse("--check", "judges a mesh and draws no points: give OUT, or leave out --png-cloud");
    if (options.bHoles)
        refuse("--holes", "lists those of a mesh and draws no points: give OUT, or leave out --png-cloud");
    if (options.drawsMesh())
        refuse(options.pngName.empty() ? "--html" : "--png",
               "draws the mesh and needs OUT; --png-cloud draws the points");
}

void checkMemory(const Options& options)
{
    if (!options.bDryRun && options.memoryLimit == 0)
        return;
    const bool bFromCells = options.task == Task::RECONSTRUCT || options.task == Task::SAMPLE ||
                            (options.task == Task::REMESH && options.bPlain);
    if (!bFromCells)
        refuse(options.bDryRun ? "--dry-run" : "--limit-memory",
               "knows the memory of meshes from cells only: with -m add --plain or --cloud");
}

void checkTask(const Options& options)
{
    if (options.bOuter && !options.isRemesh())
        refuse("--outer", "remeshes triangles on their own surface; leave out " +
                              std::string(options.bPlain ? "--plain" : "--cloud"));
    switch (options.task)
    {
    case Task::RECONSTRUCT:
        if (options.outName.empty() && options.batchFolder.empty() && !options.bDryRun)
            throw CLI::RequiredError("OUT");
        break;
    case Task::REMESH:
        if (options.spacingAbs <= 0.0 && !options.isRemesh())
            refuse("--fmelt", "For an STL provide also the -a option please");
        break;
    case Task::SAMPLE:
        if (options.spacingAbs <= 0.0)
            refuse("--fmelt", "For an STL provide also the -a option please");
        checkSample(options);
        break;
    case Task::MESH:
        if (options.outName.empty() && options.batchFolder.empty() && !wantsMesh(options))
            throw CLI::RequiredError("OUT");
        break;
    case Task::CONVERT:
        if (options.outName.empty() && options.batchFolder.empty())
            throw CLI::RequiredError("OUT");
        checkConvert(options);
        break;
    case Task::COMPARE:
        if (options.vInputs.size() != 2)
            refuse("--compare", "compares two surfaces, give A and B");
        if (options.bCheck || options.bHoles || !options.vSteps.empty() || !options.pngCloudName.empty())
            refuse("--compare",
                   "measures two surfaces as they are; for steps, --check and --holes use --mesh");
        break;
    case Task::SPACING:
        break;
    case Task::DRAW:
        checkDraw(options);
        break;
    }
}

bool writesPoints(const Options& options)
{
    return options.task == Task::SAMPLE;
}

void checkFormat(const Options& options)
{
    if (options.outName.empty() || options.task == Task::CONVERT)
        return;
    const std::string name = options.getOutFormatName();
    if (options.isToStandardOutput() && options.format.empty())
        refuse("--format", "is needed for standard output, such as --format ply");
    if (writesPoints(options) ? !isPointFormat(name) : !isMeshFormat(name))
        refuse("OUT", "unknown extension of " + name + ", expected " +
                          (writesPoints(options) ? pointFormats() : meshFormats()));
}

void checkTarget(const Options& options)
{
    checkFormat(options);
    for (const std::string& input : options.vInputs)
    {
        std::error_code ec;
        if (!options.outName.empty() && std::filesystem::equivalent(input, options.outName, ec))
            refuse("OUT", "would replace the input " + input);
    }
}

void checkBatch(const Options& options)
{
    if (options.batchFolder.empty())
        return;
    if (options.task == Task::SPACING || options.task == Task::COMPARE || options.task == Task::DRAW)
        refuse("--batch", "writes a result for each input; leave it out with --spacing and --compare");
    if (options.drawsMesh() || !options.pngCloudName.empty())
        refuse("--batch", "draws no pictures; leave out --png, --png-cloud and --html");
    for (const std::string& input : options.vInputs)
        if (input == Options::STANDARD_STREAM)
            refuse("--batch", "names its results after its inputs, and standard input has no name");
    const std::string name = "x." + (options.format.empty() ? "ply" : options.format);
    const bool bPoints = options.task == Task::SAMPLE || options.task == Task::CONVERT;
    const bool bMesh = options.task != Task::SAMPLE;
    if (!(bPoints && isPointFormat(name)) && !(bMesh && isMeshFormat(name)))
        refuse("--format", "the results of the batch cannot be of the format " + options.format);
}

void checkPictureName(const std::string& optionName, const std::string& name, const std::string& extension)
{
    if (!name.empty() && extensionOf(name) != extension)
        refuse(optionName, "the name of a picture ends in " + extension + ", not " + name);
}

// Points have no surface to paint, and where there is no cloud there is no distance to it.
void checkPaint(const Options& options)
{
    const ViewOptions& view = options.view;
    if (view.paint == Paint::SIDES && !view.bMarks)
        return;
    const std::string name = view.bMarks ? "--marks" : "--paint";
    if (!options.drawsMesh())
        refuse(name, "is for pictures of the mesh; give --png or --html");
    if (view.paint != Paint::SIDES && options.task == Task::COMPARE)
        refuse("--paint", "leave it out: the colors of --compare tell the distances of the two surfaces");
    if (view.paint == Paint::DISTANCE && options.hasTriangles())
        refuse("--paint", NO_DISTANCE);
}

void checkPictures(const Options& options)
{
    checkPictureName("--png", options.pngName, ".png");
    checkPictureName("--png-cloud", options.pngCloudName, ".png");
    checkPictureName("--html", options.htmlName, ".html");
    if (!options.pngName.empty() && options.pngName == options.pngCloudName)
        refuse("--png-cloud", "needs another name than --png");
    if (options.view.bScaleBar && options.pngName.empty() && options.pngCloudName.empty())
        refuse("--scale-bar", "belongs to a picture; give --png or --png-cloud");
    checkPaint(options);
}
} // namespace

void settleOptions(const RawOptions& raw, Options& options)
{
    settleValues(raw, options);
    settleNames(raw, options);
    options.task = taskOf(raw, options);
    options.bTaskByContent = options.task == Task::RECONSTRUCT && !options.bDryRun;
    checkMemory(options);
    checkBatch(options);
    checkTask(options);
    checkTarget(options);
    checkPictures(options);
}

} // namespace TARN_TOOL
