#ifndef ZEF_TOOLS_OPTIONS_H
#define ZEF_TOOLS_OPTIONS_H

#include "ViewOptions.h"

#include <optional>
#include <string>

namespace TARN_TOOL
{
// What the command line asks for, checked: after parse() all values are usable together.
struct Options
{
    // A file of points, or BUILT_IN_CLOUD for the sample cloud.
    std::string inName;
    std::string outName;      // empty: no mesh is wanted
    std::string pngName;      // empty: no picture of the mesh
    std::string pngCloudName; // empty: no picture of the points

    double spacingAbs = -1.0;   // in units of the points; counts only if above 0.0
    double spacingFactor = 1.0; // factor on the detected spacing
    bool bSmooth = false;
    bool bSpacingOnly = false; // print the detected spacing and stop

    ViewOptions view;

    int numThreads = 0; // 0: as many as the machine has
    bool bVerbose = false;
    bool bQuiet = false;
    bool bJson = false;

    static constexpr const char* BUILT_IN_CLOUD = "artificial123.xyz";

    // Reads the command line. Returns the status to end the process with, or nothing if there is a job to
    // do: help and version end with 0, wrong usage with 2 and a line on the error stream.
    [[nodiscard]] std::optional<int> parse(int argc, char** argv);
};

} // namespace TARN_TOOL

#endif
