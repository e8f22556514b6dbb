#ifndef ZEF_LATTICEFLIPS_H
#define ZEF_LATTICEFLIPS_H

#include "core/definitions.h"

namespace TARN_ZEF
{
class CEdge;
class CMesh;
struct RepairState;

// Flips that bring feature lines into the mesh, and flips of very wide triangles. No new edge touches a known
// border.
class LatticeFlips
{
public:
    explicit LatticeFlips(const RepairState& state_);

    // Three turns of flips that join lattice neighbours on features by edges.
    void flipFeatures();
    // Edges that go on at a or b straight from the line (a, b), to 0.2 degrees.
    [[nodiscard]] int countCollinearConnectors(u64 a, u64 b) const;
    // Whether the diagonal (v0, v1), v0 < v1, may become (ccd0, ccd1): a new edge, off known borders, that
    // bends by less than 120 degrees.
    [[nodiscard]] bool canFlip(u64 v0, u64 v1, u64 ccd0, u64 ccd1) const;
    // Flips the long edges of triangles with an angle of 170 degrees or more; with bFinal, one that cannot be
    // flipped loses that corner. Returns the number of changes.
    int flipExtremeCaps(bool bFinal);

private:
    void flipFeaturesAt(u64 ccd);
    [[nodiscard]] bool removeCap(CEdge* pCE, u64 apex);

    const RepairState& state;
    CMesh* pCMesh;
};

} // namespace TARN_ZEF

#endif
