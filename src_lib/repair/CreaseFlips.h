#ifndef ZEF_CREASEFLIPS_H
#define ZEF_CREASEFLIPS_H

#include <utility>
#include <vector>

namespace TARN_ZEF
{
class CEdge;
class CMesh;

// Flips of edges that bend sharply, where that makes the bend smaller by 5 degrees.
class CreaseFlips
{
public:
    explicit CreaseFlips(CMesh* pCMesh_);

    // Of edges that bend by minAngle degrees or more, the largest bend first.
    void run(double minAngle);
    // Appends (bend in degrees, edge) for the edges of degree 2 that bend by minAngle or more, the largest
    // bend first, equal ones by creation.
    void getAngles(double minAngle, std::vector<std::pair<double, CEdge*>>& vAngle) const;
    // Degrees between the triangles at an edge of degree 2; false if one has no normal.
    [[nodiscard]] bool getBend(const CEdge* pCE, double& angle) const;

private:
    bool tryFlipCrease(CEdge* pCE, double curAngle);

    CMesh* pCMesh;
};

} // namespace TARN_ZEF

#endif
