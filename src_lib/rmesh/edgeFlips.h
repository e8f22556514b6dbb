// The loops that flip edges of a refined mesh. Both need a tree of progress and run on the caller's thread,
// which evaluates on the pool.
#ifndef ZEF_EDGEFLIPS_H
#define ZEF_EDGEFLIPS_H

#include <vector>

namespace TARN_ZEF
{
class RMesh;

// Greedy descent over the edges that the mesh has at the start, the largest gain first. New diagonals are
// looked at by the next call. Each flip lowers the energy of REdgeEnergy or leaves it. Returns the number of
// flips tried.
int flipGreedily(RMesh* pRMesh);

// One pass of annealing: flips all edges that gain and, by chance, some that lose; a loss of the temperature
// is accepted with probability 1/e. Order and losses are drawn: the result depends on the earlier random
// numbers of the calling thread, not on the number of threads.
void edgeFlipsSimA(RMesh* pRMesh, double temperature);

// The falling temperatures of the passes.
[[nodiscard]] std::vector<double> getAnnealingTemperatures();

} // namespace TARN_ZEF

#endif
