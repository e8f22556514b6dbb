#ifndef ZEF_REDGEENERGY_H
#define ZEF_REDGEENERGY_H

#include "Point3.h"
#include "Vector3.h"
#include "core/definitions.h"

namespace TARN_ZEF
{
class REdge;
class RMesh;
class RTriangle;

// What the mesh gains if the diagonal of two triangles is flipped.
//
// The energy of a quadrilateral is the sum over its five edges of ((1 - cos d) * length)^0.335, with d the
// dihedral angle. The gain is the present energy minus the flipped one, minus a penalty for bad angles: a
// flip that makes the largest angle worse, and above 130 or 160 degrees, must gain much to pay.
//
// Ownership:  none; the mesh must outlive it.
// Threads:    one object a thread. tryGetImprovement() may run in parallel while nothing changes and all
//             normals are filled; the other evaluations may edit the mesh.
// Cost:       ten powers and two normals; no allocation.
class REdgeEnergy
{
public:
    // Evaluates at once if pRE_ isn't null.
    REdgeEnergy(RMesh* pRMesh_, REdge* pRE_);

    // Above 0.0 if the flip lowers the energy; LOWEST_DBL if it is impossible. The evaluation turns the
    // second triangle if the two disagree, and moves an opposite corner that coincides with the other one.
    double getImprovement(REdge* pRE_);
    // Whether that improvement is above LOWEST_DBL; for less. Edits the mesh as the evaluation does.
    [[nodiscard]] bool isPossible(REdge* pRE_);
    // As getImprovement(), but leaves the mesh alone: false, without a result, where it would have to edit. A
    // caller that drops what is below bar anyway says so: then such a result is any number below bar.
    [[nodiscard]] bool tryGetImprovement(REdge* pRE_, double& result, double bar = LOWEST_DBL);
    [[nodiscard]] double getLastImprovement() const noexcept { return improvement; }
    void compute();

    // Cosine of the largest inner angle. A side without length counts as a right angle on both ends.
    [[nodiscard]] static double getMinCosPhi(const Point3* p0, const Point3* p1, const Point3* p2);

private:
    // The two triangles at the edge: (p0, p1, p2) and (px, p2, p1).
    struct Quad
    {
        RTriangle* pRT0 = nullptr;
        RTriangle* pRT1 = nullptr;
        Point3* p0 = nullptr; // corners opposite the edge
        Point3* px = nullptr;
        Point3* p1 = nullptr; // ends of the edge
        Point3* p2 = nullptr;
        int ici0 = 0; // of p0 and px in their triangles
        int ici1 = 0;
    };
    // (1 - cos d) * length of the edges of the two configurations, the diagonal first.
    struct Bends
    {
        void add(double cur, double alt) noexcept
        {
            aCur[num] = cur;
            aAlt[num] = alt;
            ++num;
        }

        double aCur[5];
        double aAlt[5];
        int num = 0;
    };

    [[nodiscard]] bool prepare(Quad& quad);
    [[nodiscard]] bool findTriangles(Quad& quad) const;
    static void findCorners(Quad& quad, const REdge* pEdge);
    [[nodiscard]] bool isDiagonalTaken(const Quad& quad) const;
    void separate(const Quad& quad);
    [[nodiscard]] static double getAnglePenalty(const Quad& quad);
    [[nodiscard]] double getLength(const Point3& a, const Point3& b) const;
    [[nodiscard]] double evaluate(const Quad& quad, double bar) const;
    [[nodiscard]] bool getBends(const Quad& quad, Bends& bends) const;
    static void addSide(const RTriangle* pT, int ici, double length, const Vector3& cur, const Vector3& alt,
                        Bends& bends);

    RMesh* pRMesh;
    REdge* pRE;
    double improvement;
};

} // namespace TARN_ZEF

#endif
