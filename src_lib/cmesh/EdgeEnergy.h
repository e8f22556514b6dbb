#ifndef ZEF_EDGEENERGY_H
#define ZEF_EDGEENERGY_H

#include "Point3.h"
#include "Vector3.h"
#include "core/definitions.h"

namespace TARN_ZEF
{
class CEdge;
class CMesh;
class CTriangle;

// What a combinatorial mesh gains if the diagonal of two of its triangles is flipped.
//
// The energy of a quadrilateral is the sum over its five edges of ((1 - cos b) * length)^0.3, with b the bend
// between the two triangles, 0 where they lie in one plane. The gain is the present energy minus that of the
// flipped quadrilateral. A flip to an angle near 180 degrees or to a fold is refused.
//
// Ownership:  none; the mesh must outlive it.
// Threads:    the evaluation may turn a triangle and move corners: one at a time on a mesh.
// Cost:       ten powers and eight normals; no allocation unless corners coincide.
class EdgeEnergy
{
public:
    // Evaluates at once.
    EdgeEnergy(CMesh* pCMesh_, CEdge* pCE_);

    // Evaluates again. Turns the second triangle if the two disagree, and moves opposite corners that
    // coincide.
    void compute();
    // Of the last evaluation: above 0.0 if the flip pays, LOWEST_DBL if the edge must not flip.
    [[nodiscard]] double getImprovement() const noexcept { return improvement; }
    [[nodiscard]] CEdge* getCEdge() const noexcept { return pCE; }

    // Cosine of the largest inner angle. A side without length is fatal.
    [[nodiscard]] double getMinCosPhi(const Point3* p0, const Point3* p1, const Point3* p2) const;

private:
    // The triangles (a, c1, c2) and (b, c2, c1) on the edge (c1, c2), and their corners' positions.
    struct Quad
    {
        CTriangle* pT0 = nullptr;
        CTriangle* pT1 = nullptr;
        int ici0 = 0; // of a in pT0
        int ici1 = 0; // of b in pT1
        u64 a = 0;
        u64 b = 0;
        Point3* pa = nullptr;
        Point3* pb = nullptr;
        Point3* p1 = nullptr;
        Point3* p2 = nullptr;
    };
    // Unit normals of the present triangles, and of (a, c1, b) and (a, b, c2), which would replace them.
    struct Normals
    {
        Vector3 old0;
        Vector3 old1;
        Vector3 new1;
        Vector3 new2;
    };
    // Sums of both configurations.
    struct Energies
    {
        double oldEnergy;
        double newEnergy;
    };

    [[nodiscard]] bool findQuad(Quad& quad) const;
    void separate(const Quad& quad) const;
    // False if the flip must not be; bWide tells that it makes a wide angle wider.
    [[nodiscard]] bool checkAngles(const Quad& quad, bool& bWide) const;
    [[nodiscard]] bool getNormals(const Quad& quad, Normals& normals) const;
    [[nodiscard]] double evaluate(const Quad& quad) const;
    void addOuterEdge(const CTriangle* pCT, int ici, double outLen, const Vector3& oldNNV,
                      const Vector3& newNNV, Energies& energies) const;
    [[noreturn]] void failDegenerate(const Point3* p0, const Point3* p1, const Vector3& vec01,
                                     const Vector3& vec02, const Vector3& vec12) const;

    CMesh* pCMesh;
    CEdge* pCE;
    double improvement;
};

} // namespace TARN_ZEF

#endif
