#ifndef ZEF_PLY_H
#define ZEF_PLY_H

#include <string>

namespace TARN_ZEF
{
class RMesh;

// Writes meshes as PLY files.
class PLY
{
public:
    // The alive triangles, and the vertices that they use in the order of their first use; coordinates as
    // float. False, with a message, if the file could not be written whole.
    [[nodiscard]] static bool writePly(const RMesh* pRMesh, const std::string& name, bool bASCII);
};

} // namespace TARN_ZEF

#endif
