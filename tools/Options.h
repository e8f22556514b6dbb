#ifndef ZEF_TOOLS_OPTIONS_H
#define ZEF_TOOLS_OPTIONS_H

#include "Step.h"
#include "ViewOptions.h"
#include "zef.h"

#include <cstddef>
#include <string>
#include <vector>

namespace TARN_TOOL
{
// What is done with the input.
enum class Task
{
    RECONSTRUCT, // a mesh of points
    REMESH,      // a mesh of triangles, evenly
    SAMPLE,      // points on triangles
    MESH,        // a finished mesh: improved, judged, drawn, as asked
    CONVERT,     // into another format, as it is
    COMPARE,     // how far two surfaces are apart
    SPACING,     // that of the points, and nothing else
    DRAW         // the points, and nothing else
};

enum class ColorUse
{
    AUTO, // on a terminal, unless NO_COLOR is set
    ALWAYS,
    NEVER
};

// Text or binary, where a format has both.
enum class FileForm
{
    USUAL, // PLY binary, STL text
    TEXT,
    BINARY
};

// What the command line asks for, checked: after parseCommandLine() all values are usable together.
struct Options
{
    // Files, BUILT_IN_CLOUD for the sample cloud, STANDARD_STREAM for standard input. COMPARE has two, other tasks
    // take all of them as one cloud or one surface.
    std::vector<std::string> vInputs;
    std::string outName;      // empty: nothing is written
    std::string pngName;      // empty: no picture of the mesh
    std::string pngCloudName; // empty: no picture of the points
    std::string htmlName;     // empty: no page that shows the mesh
    std::string batchFolder;  // not empty: each input for itself, its result there
    std::string format;       // of standard input and output, and of the results of a batch: "stl"

    Task task = Task::RECONSTRUCT;
    // Whether what the input holds may make the task MESH.
    bool bTaskByContent = false;

    TARN_ZEF::ReadOptions reading;
    FileForm form = FileForm::USUAL;
    bool bCompress = false; // PCD
    bool bYUp = false;      // GLB: what points up along z is written along y

    double spacingAbs = -1.0;   // in units of the points; counts only if above 0.0
    double spacingFactor = 1.0; // factor on the detected spacing
    bool bSmooth = false;
    bool bAuto = false;      // factor and smoothing are chosen from the cloud
    bool bPlain = false;     // without the last stage; REMESH: made from cells, the spacing is given
    bool bOuter = false;     // REMESH: the outer hull alone
    int numBridgedCells = 0; // only with bOuter
    double featureAngle =
        -1.0; // degrees above which an edge of the triangles stays sharp; below 0: not given

    std::vector<Step> vSteps; // on the finished mesh, in this order

    ViewOptions view;

    bool bCheck = false;  // judge the mesh before it is written
    bool bHoles = false;  // list its borders
    bool bReport = false; // tell what each call of the library has done

    // What the library may take for the reconstruction, for a melt or for samples, in bytes; 0: whatever it needs.
    std::size_t memoryLimit = 0;
    bool bDryRun = false; // only tell how much that would be

    int numThreads = 0; // 0: as many as the machine has
    bool bVerbose = false;
    bool bQuiet = false;
    bool bJson = false;
    ColorUse color = ColorUse::AUTO;

    static constexpr const char* BUILT_IN_CLOUD = "artificial123.xyz";
    static constexpr const char* STANDARD_STREAM = "-";

    // Whether the input is triangles.
    [[nodiscard]] bool hasTriangles() const
    {
        return task == Task::REMESH || task == Task::SAMPLE || task == Task::MESH;
    }
    // Whether triangles are remeshed on their own surface.
    [[nodiscard]] bool isRemesh() const { return task == Task::REMESH && !bPlain; }
    // For what is made from cells.
    [[nodiscard]] double getCellFeatureAngle() const { return featureAngle < 0.0 ? 10.0 : featureAngle; }
    [[nodiscard]] bool drawsMesh() const { return !pngName.empty() || !htmlName.empty(); }
    [[nodiscard]] bool isToStandardOutput() const { return outName == STANDARD_STREAM; }
    // A name whose extension tells the format of OUT.
    [[nodiscard]] std::string getOutFormatName() const
    {
        return isToStandardOutput() ? "stdout." + format : outName;
    }
    // What to do if there are no triangles in the input after all.
    [[nodiscard]] const char* getCloudHint() const
    {
        return task == Task::REMESH || task == Task::SAMPLE ? "; for a cloud leave out -m" : "";
    }
    // For messages: the first input, and how many more there are.
    [[nodiscard]] std::string getInputText() const;
};

} // namespace TARN_TOOL

#endif
