#ifndef ZEF_HULLTIDIER_H
#define ZEF_HULLTIDIER_H

#include "outer/SoupPlanes.h"
#include "surface/HalfEdgeMesh.h"

#include <vector>

namespace TARN_ZEF
{
// Makes the raw surface of a hull fit to be remeshed: vertices that came to stand close together become one, the one on the
// corner or crease staying, and edges turn until creases run along them. No flat triangle is left if that can be avoided.
class HullTidier
{
public:
    // The corners must be those of an oriented manifold. cell: of the lattice
    HullTidier(const std::vector<HullVertex>& vVertices, const std::vector<int>& vCorners, double cell_);

    void run();

    [[nodiscard]] const HalfEdgeMesh& getMesh() const { return mesh; }

private:
    void collapseShort(double part);
    [[nodiscard]] bool mayVanish(int h) const;
    void flipToCreases();
    [[nodiscard]] bool wantsFlip(int h) const;
    [[nodiscard]] Vector3 normalOf(int h) const;
    [[nodiscard]] int mendFlat();
    [[nodiscard]] bool isFlat(int t) const;
    [[nodiscard]] bool mend(int t);
    [[nodiscard]] bool takeSpare(int v);

    HalfEdgeMesh mesh;
    std::vector<int> vRank;     // by vertex
    std::vector<Point3> vSpare; // by vertex
    double cell;
};

} // namespace TARN_ZEF

#endif
