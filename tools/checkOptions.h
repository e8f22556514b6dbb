#ifndef ZEF_TOOLS_CHECKOPTIONS_H
#define ZEF_TOOLS_CHECKOPTIONS_H

#include "Options.h"

#include <string>
#include <vector>

namespace TARN_TOOL
{
// What the command line says beside the values of Options.
struct RawOptions
{
    std::vector<std::string> vNames; // inputs, and behind them OUT where one is needed
    std::string angles;              // of --view
    std::string focus;
    std::string classes;
    std::string paint;
    std::string size; // of pictures
    std::string color = "auto";
    bool bMesh = false;
    bool bMelt = false;
    bool bCloud = false;
    bool bConvert = false;
    bool bCompare = false;
    bool bSpacing = false;
    bool bAscii = false;
    bool bBinary = false;
};

// Why a mesh of triangles cannot be painted by distance.
constexpr const char* NO_DISTANCE =
    "distance is that to the points of a cloud; for two surfaces use --compare";

// Brings what the options ask for together: the task, the names, the values that are lists.
// Throws CLI::ParseError, which names the option and tells what to do, if that does not fit together.
void settleOptions(const RawOptions& raw, Options& options);

} // namespace TARN_TOOL

#endif
