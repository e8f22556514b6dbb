#ifndef ZEF_TOOLS_HTMLPICTURE_H
#define ZEF_TOOLS_HTMLPICTURE_H

#include "MeshDrawing.h"
#include "ViewOptions.h"

#include <cstddef>
#include <string>

namespace TARN_TOOL
{
// Beyond it a page takes browsers too long, and some refuse it.
constexpr std::size_t MAX_HTML_TRIANGLES = 8'000'000;
// With more vertices their coordinates are stored in 65535 steps of the box instead of floats, to half the size.
constexpr std::size_t MAX_FLOAT_VERTICES = 1'000'000;

// Writes a page that shows the mesh in any browser with WebGL 2, to turn, shift and magnify. All is in the file: no
// network is used. It is some 30 bytes for each triangle long.
//
// Throws   ToolError if the file cannot be written or the mesh has more than MAX_HTML_TRIANGLES
void writeHtmlPicture(const std::string& fileName, const std::string& title, const MeshDrawing& mesh,
                      const ViewOptions& options);

} // namespace TARN_TOOL

#endif
