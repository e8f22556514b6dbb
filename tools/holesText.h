#ifndef ZEF_TOOLS_HOLESTEXT_H
#define ZEF_TOOLS_HOLESTEXT_H

#include "JsonLine.h"
#include "meshHoles.h"

#include <string>
#include <vector>

namespace TARN_TOOL
{
// The borders of a mesh for people: one line for each, with the number that --fill takes.
[[nodiscard]] std::string holesText(const std::vector<TARN_ZEF::BorderLoop>& vLoops);

// The same figures for programs.
[[nodiscard]] std::vector<JsonLine> holesJson(const std::vector<TARN_ZEF::BorderLoop>& vLoops);

} // namespace TARN_TOOL

#endif
