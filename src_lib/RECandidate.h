#ifndef ZEF_RECANDIDATE_H
#define ZEF_RECANDIDATE_H

namespace TARN_ZEF
{
class REdge;

// One possible collapse. A candidate without an edge stands for a collapse that is forbidden.
struct RECandidate
{
    RECandidate() = default;
    RECandidate(REdge* pRE_, int iSrc_) noexcept
        : pRE(pRE_)
        , iSrc(iSrc_)
    {
    }

    double penalty = 0.0; // at the time of the evaluation; NaN if no normal could be compared
    REdge* pRE = nullptr;
    int iSrc = 0;           // which end disappears: vertex 0 or vertex 1 of the edge
    unsigned int epoch = 0; // how many collapses the mesh had seen at the evaluation
};

} // namespace TARN_ZEF

#endif
