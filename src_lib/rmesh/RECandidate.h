#ifndef ZEF_RECANDIDATE_H
#define ZEF_RECANDIDATE_H

namespace TARN_ZEF
{
// One possible collapse.
struct RECandidate
{
    double penalty = 0.0;  // at the time of the evaluation; NaN if no normal could be compared
    unsigned int edge = 0; // creation number
    int iSrc = 0;          // which end disappears: vertex 0 or vertex 1 of the edge
};

} // namespace TARN_ZEF

#endif
