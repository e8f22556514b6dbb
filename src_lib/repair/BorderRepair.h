#ifndef ZEF_BORDERREPAIR_H
#define ZEF_BORDERREPAIR_H

#include <vector>

namespace TARN_ZEF
{
class CEdge;
class CMesh;

// What single triangles at borders and between fins need.
//
// Invariant:  each verb only kills, splits or closes; orientation is left to a later pass.
// Cost:       what the border and non-manifold edges do.
class BorderRepair
{
public:
    explicit BorderRepair(CMesh* pCMesh_);

    // Kills each triangle that hangs between two non-manifold edges; appends the border edges that remain.
    void getBordersKillDeg1nn(std::vector<CEdge*>& vBorders);
    // Takes the free corner of a triangle with two borders into the fin that it hangs on; a triangle that
    // stands alone dies.
    void integrateCCD(CEdge* pCE);
    // Kills triangles with a border at edges of more than two triangles, smallest first, until two are left.
    void killBorderEars();
    // Closes each hole of three edges, whatever lies around it.
    void closeTriangularHoles();
    // Kills triangles with a border, of the cube configurations that leave such triangles behind.
    void pruneCases();

private:
    CMesh* pCMesh;
};

} // namespace TARN_ZEF

#endif
