#ifndef ZEF_FINISH_CREASECHAINS_H
#define ZEF_FINISH_CREASECHAINS_H

#include "surface/HalfEdgeMesh.h"

#include <array>

namespace TARN_ZEF
{
// Number of feature edges at a vertex: two on a chain, more in a corner.
[[nodiscard]] int getNumFeatures(const HalfEdgeMesh& mesh, int v);
// The neighbours along the chain; NONE as the second one where there are not two.
[[nodiscard]] std::array<int, 2> getChainEnds(const HalfEdgeMesh& mesh, int v);
// Cosine of the angle between both edges of a chain: -1 where it goes straight on.
[[nodiscard]] double getTurn(const HalfEdgeMesh& mesh, int v, const std::array<int, 2>& ends);

// Cosine of 50 degrees: a chain that turns more has a corner there.
constexpr double SHARP_TURN = 0.643;

} // namespace TARN_ZEF

#endif
