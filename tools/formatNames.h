#ifndef ZEF_TOOLS_FORMATNAMES_H
#define ZEF_TOOLS_FORMATNAMES_H

#include "zef_files.h"

#include <string>

namespace TARN_TOOL
{
// In small letters, with its point; empty without one.
[[nodiscard]] std::string extensionOf(const std::string& name);

// The type by extension for the library's earlier calls; any name will do.
[[nodiscard]] TARN_ZEF::FileType oldTypeOf(const std::string& name);

// By extension: whether the tool writes such files.
[[nodiscard]] bool isMeshFormat(const std::string& name);
[[nodiscard]] bool isPointFormat(const std::string& name);

// For messages.
[[nodiscard]] const char* meshFormats();
[[nodiscard]] const char* pointFormats();

} // namespace TARN_TOOL

#endif
