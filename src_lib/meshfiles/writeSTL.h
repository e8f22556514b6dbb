#ifndef ZEF_WRITESTL_H
#define ZEF_WRITESTL_H

#include <string>

namespace TARN_ZEF
{
class RMesh;

// Writes the alive triangles as ASCII STL with 10 digits. A degenerate triangle gets the normal (0,0,0).
// False, with a message, if the file could not be written whole.
[[nodiscard]] bool writeSTL(const RMesh* pRMesh, const std::string& name);

} // namespace TARN_ZEF

#endif
