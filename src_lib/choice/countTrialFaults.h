#ifndef ZEF_COUNTTRIALFAULTS_H
#define ZEF_COUNTTRIALFAULTS_H

#include "Point3.h"
#include "autoReconstruct.h"

#include <cstddef>
#include <vector>

namespace TARN_ZEF
{
// The counts of a trial: faults of a mesh that another factor may mend. factor and bSmooth stay as they are.
//
// mostEdgesOfHole  a border of up to so many edges that hang together is a hole
// Cost             a sort of the edges
void countTrialFaults(const std::vector<Point3>& vPoints, const std::vector<int>& vCorners,
                      std::size_t mostEdgesOfHole, AutoTrial& trial);

} // namespace TARN_ZEF

#endif
