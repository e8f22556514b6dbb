#include "helpers/meshShapes.h"

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

std::vector<Point3> boxSoup(const Point3& low, const Vector3& size)
{
    const int aSides[6][4] = {{0, 2, 3, 1}, {4, 5, 7, 6}, {0, 1, 5, 4},
                              {2, 6, 7, 3}, {0, 4, 6, 2}, {1, 3, 7, 5}};
    std::vector<Point3> vSoup;
    for (const auto& side : aSides)
        for (const int i : {0, 1, 2, 0, 2, 3})
            vSoup.push_back(low + Vector3((side[i] & 1) != 0 ? size.x() : 0.0,
                                          (side[i] & 2) != 0 ? size.y() : 0.0,
                                          (side[i] & 4) != 0 ? size.z() : 0.0));
    return vSoup;
}

} // namespace TARN_ZEF
