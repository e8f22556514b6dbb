#include "finish/FlatMesh.h"

namespace TARN_ZEF
{
void FlatMesh::keepTriangles(const std::vector<std::uint8_t>& vKeep)
{
    std::size_t num = 0;
    for (std::size_t t = 0; t < vKeep.size(); ++t)
    {
        if (vKeep[t] == 0)
            continue;
        for (std::size_t i = 0; i < 3; ++i)
            vCorners[num++] = vCorners[3 * t + i];
    }
    vCorners.resize(num);
}

} // namespace TARN_ZEF
