#ifndef ZEF_ANGLEENTRY_H
#define ZEF_ANGLEENTRY_H

#include "Point3.h"
#include "Vector3.h"
#include "core/definitions.h"

#include <vector>

namespace TARN_ZEF
{
class CMesh;
class CTriangle;

// One corner of a ring whose inside is filled by cutting ears.
//
// The ring runs so that the hole lies on its left, seen against the normals of the surface around it. The
// inner angle of a corner is that of the hole: the normals tell which of the two angles it is, so no
// projection is needed.
//
// Ownership:  none; entries belong to the loop, bundles to the mesh's map.
// Invariant:  the ring is linked both ways among alive entries.
// Cost:       a fresh angle walks the triangles at the corner.
class AngleEntry
{
public:
    // States of a corner.
    static constexpr int CONVEX = 1;      // can be cut
    static constexpr int FLAT = 2;        // flat, reflex, or its edges are collinear
    static constexpr int RING_OF_TWO = 3; // nothing left to cut

    // The angle where none can be told.
    static constexpr double NO_ANGLE = 720.0;

    // bBorderPair  both edges of the ring at this corner are borders of the surface
    AngleEntry(CMesh* pCMesh_, u64 vcd_, bool bBorderPair_);

    [[nodiscard]] u64 getVCD() const noexcept { return vcd; }
    [[nodiscard]] bool isAlive() const noexcept { return bAlive; }
    void kill() noexcept { bAlive = false; }

    [[nodiscard]] AngleEntry* getPrevAE() const noexcept { return pPrevAE; }
    [[nodiscard]] AngleEntry* getNextAE() const noexcept { return pNextAE; }
    void setPrevAE(AngleEntry* pPrevAE_); // null is fatal, here and below
    void setNextAE(AngleEntry* pNextAE_);

    // The inner angle in degrees, or NO_ANGLE; aes gets the state. Without bRecompute both are those of the
    // last time, but for RING_OF_TWO.
    double getAngle(bool bRecompute, int& aes_);
    // The unit normal at the corner: that of the sum of the unit normals of its triangles, or (1,0,0) if they
    // cancel out.
    Vector3 getNNV(bool bRecompute);
    // Degrees between the fresh normals of the previous and the next corner. This corner and both neighbours
    // must be alive and three different entries.
    [[nodiscard]] double getPrevNextDihedral();

private:
    int aes = FLAT;
    CMesh* pCMesh;
    u64 vcd;
    const Point3* pVtx; // its position
    AngleEntry* pPrevAE = nullptr;
    AngleEntry* pNextAE = nullptr;
    double angle = -1.0; // last inner angle
    Vector3 nnv;         // last normal of the surface at the corner
    Vector3 crossNV;     // last normal of the corner's own plane
    bool bAlive = true;
    bool bBorderPair;
    std::vector<CTriangle*> vIncT; // scratch of getNNV(), kept for its storage
};

} // namespace TARN_ZEF

#endif
