#ifndef ZEF_ORIENTEDFLOOD_H
#define ZEF_ORIENTEDFLOOD_H

#include <vector>

namespace TARN_ZEF
{
class Calc;
class CMesh;
class CPatch;
class CTriangle;

// Turns all that the seed reaches over edges of degree 2 to agree with it, and appends it to vFlood: breadth
// first, over triangles whose edges all have degree 2 as long as there are any. bVisited tells what was
// reached.
void floodOriented(CTriangle* pSeed, std::vector<CTriangle*>& vFlood);

// Cuts the alive triangles of vT into patches that hang together over edges of degree 2, and orients each
// of them in itself: through clean surface first, beside borders and non-manifold edges last. vPatches
// must be empty; the caller owns what it gets.
void createPatchesOrient(CMesh* pCMesh, Calc* pCalc, const std::vector<CTriangle*>& vT,
                         std::vector<CPatch*>& vPatches);

} // namespace TARN_ZEF

#endif
