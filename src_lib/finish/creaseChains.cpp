#include "finish/creaseChains.h"

#include <cmath>

namespace TARN_ZEF
{
int getNumFeatures(const HalfEdgeMesh& mesh, int v)
{
    int number = 0;
    mesh.forEachOutgoing(v, [&](int h) { number += mesh.feature(h) != 0 ? 1 : 0; });
    return number;
}

std::array<int, 2> getChainEnds(const HalfEdgeMesh& mesh, int v)
{
    std::array<int, 2> ends = {HalfEdgeMesh::NONE, HalfEdgeMesh::NONE};
    std::size_t number = 0;
    mesh.forEachOutgoing(v,
                         [&](int h)
                         {
                             if (mesh.feature(h) == 0)
                                 return;
                             if (number < 2)
                                 ends[number] = mesh.to(h);
                             ++number;
                         });
    if (number != 2)
        ends[1] = HalfEdgeMesh::NONE;
    return ends;
}

double getTurn(const HalfEdgeMesh& mesh, int v, const std::array<int, 2>& ends)
{
    const Vector3 a = mesh.point(ends[0]) - mesh.point(v);
    const Vector3 b = mesh.point(ends[1]) - mesh.point(v);
    const double lengths = std::sqrt(a.sqLength() * b.sqLength());
    return lengths > 0.0 ? a * b / lengths : 1.0;
}

} // namespace TARN_ZEF
