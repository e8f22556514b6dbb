#ifndef ZEF_TOOLS_OPTIONS_H
#define ZEF_TOOLS_OPTIONS_H

#include "Step.h"
#include "ViewOptions.h"
#include "zef.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace TARN_TOOL
{
// What the command line asks for, checked: after parse() all values are usable together.
struct Options
{
    // A file of points, BUILT_IN_CLOUD for the sample cloud, or with bMelt a file of triangles.
    std::string inName;
    std::string outName;      // empty: no mesh is wanted; with bCloud a file of points
    std::string pngName;      // empty: no picture of the mesh
    std::string pngCloudName; // empty: no picture of the points

    double spacingAbs = -1.0;   // in units of the points; counts only if above 0.0
    double spacingFactor = 1.0; // factor on the detected spacing
    bool bSmooth = false;
    bool bAuto = false;        // factor and smoothing are chosen from the cloud
    bool bSpacingOnly = false; // print the detected spacing and stop
    bool bPlain = false;       // without the last stage; with bMelt: made from cells, the spacing is given

    bool bMelt = false;  // IN holds triangles; the spacing is their edge length
    bool bCloud = false; // only with bMelt: sample points instead of a mesh; the spacing is given
    double featureAngle =
        -1.0; // degrees above which an edge of the triangles stays sharp; below 0: not given

    std::vector<Step> vSteps; // on the finished mesh, in this order

    ViewOptions view;

    bool bCheck = false;  // judge the mesh before it is written
    bool bReport = false; // tell what each call of the library has done

    // What the library may take for the reconstruction, for a melt or for samples, in bytes; 0: whatever it needs.
    std::size_t memoryLimit = 0;
    bool bDryRun = false; // only tell how much that would be

    int numThreads = 0; // 0: as many as the machine has
    bool bVerbose = false;
    bool bQuiet = false;
    bool bJson = false;

    static constexpr const char* BUILT_IN_CLOUD = "artificial123.xyz";

    // Whether the soup is remeshed on its own surface.
    [[nodiscard]] bool isRemesh() const { return bMelt && !bPlain && !bCloud; }
    // For what is made from cells.
    [[nodiscard]] double getCellFeatureAngle() const { return featureAngle < 0.0 ? 10.0 : featureAngle; }

    // Reads the command line. Returns the status to end the process with, or nothing if there is a job to
    // do: help and version end with 0, wrong usage with 2 and a line on the error stream.
    [[nodiscard]] std::optional<int> parse(int argc, char** argv);

    // By extension; the library's own answer but for names too short to have one.
    [[nodiscard]] static TARN_ZEF::FileType typeOf(const std::string& name);
};

} // namespace TARN_TOOL

#endif
