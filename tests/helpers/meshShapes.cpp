#include "meshShapes.h"

#include <array>
#include <map>

namespace TARN_ZEF
{
RMeshSource cubeSource(int n, bool bBall)
{
    RMeshSource source;
    std::map<std::array<int, 3>, std::uint32_t> mIndex;
    const auto vertex = [&](std::array<int, 3> p)
    {
        const auto [it, bNew] = mIndex.emplace(p, static_cast<std::uint32_t>(source.vPoints.size()));
        if (bNew)
        {
            const Vector3 v(p[0] - n / 2.0, p[1] - n / 2.0, p[2] - n / 2.0);
            const Vector3 placed = bBall ? normalize(v) * n : v;
            source.vPoints.emplace_back(placed.x(), placed.y(), placed.z());
        }
        return it->second;
    };
    for (std::size_t axis = 0; axis < 3; ++axis)
        for (const int level : {0, n})
            for (int i = 0; i < n; ++i)
                for (int k = 0; k < n; ++k)
                {
                    const auto at = [&](int di, int dk)
                    {
                        std::array<int, 3> p{};
                        p[axis] = level;
                        p[(axis + 1) % 3] = i + di;
                        p[(axis + 2) % 3] = k + dk;
                        return vertex(p);
                    };
                    if (level == n)
                        addQuad(source, at(0, 0), at(1, 0), at(1, 1), at(0, 1));
                    else
                        addQuad(source, at(0, 0), at(0, 1), at(1, 1), at(1, 0));
                }
    return source;
}

} // namespace TARN_ZEF
