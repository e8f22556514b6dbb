#ifndef ZEF_TOOLS_CHECKTEXT_H
#define ZEF_TOOLS_CHECKTEXT_H

#include "JsonLine.h"
#include "checkMesh.h"

#include <string>

namespace TARN_TOOL
{
// The verdict on a mesh for people, in lines: one if all is well, else one more for each kind of fault and for each of
// its places.
[[nodiscard]] std::string checkText(const TARN_ZEF::MeshCheck& check);

// The same figures for programs.
[[nodiscard]] JsonLine checkJson(const TARN_ZEF::MeshCheck& check);

} // namespace TARN_TOOL

#endif
