#include "cmesh/Dijkstra.h"

#include "geometry/tools.h"

#include <cmath>
#include <queue>

namespace TARN_ZEF
{
namespace
{
const double SHARP_BELOW = 50.0; // dihedral angles in degrees
const double FLAT_ABOVE = 95.0;
const double SHARP_FACTOR = 0.3;
const double FLAT_FACTOR = 1.5;

// A proposal for a node. Nearest first; among equals the edge created first.
struct Proposal
{
    double dist;
    CEdge* pCE; // null only for the first one
    Dijkstra* pNode;
};
struct Later
{
    bool operator()(const Proposal& a, const Proposal& b) const noexcept
    {
        if (a.dist != b.dist)
            return a.dist > b.dist;
        if (a.pCE->getNumber() != b.pCE->getNumber())
            return a.pCE->getNumber() > b.pCE->getNumber();
        return a.pNode->vtx > b.pNode->vtx;
    }
};

double getCost(const CEdge& edge, const std::map<u64, Point3>& mPos)
{
    const double angle = edge.getDihedralAngle(mPos);
    const double factor = angle < SHARP_BELOW ? SHARP_FACTOR : angle > FLAT_ABOVE ? FLAT_FACTOR : 1.0;
    return factor * std::sqrt(sqDistance(mPos.at(edge.v0), mPos.at(edge.v1)));
}

Dijkstra* getOrMakeNode(const Dijkstra& from, u64 vtx)
{
    std::unique_ptr<Dijkstra>& pNode = (*from.pmVCD2Dijkstra)[vtx];
    if (!pNode)
        pNode = std::make_unique<Dijkstra>(vtx, from.pmVCD2Dijkstra, from.pmVCD2InnerCEVec);
    return pNode.get();
}
} // namespace

Dijkstra::Dijkstra(u64 vtx_, NodeMap* pmVCD2Dijkstra_, const EdgeMap* pmVCD2InnerCEVec_)
    : vtx(vtx_)
    , pmVCD2Dijkstra(pmVCD2Dijkstra_)
    , pmVCD2InnerCEVec(pmVCD2InnerCEVec_)
{
}

void Dijkstra::update(CEdge* pCE, double newDist, const std::map<u64, Point3>& mPos)
{
    std::priority_queue<Proposal, std::vector<Proposal>, Later> queue;
    queue.push({newDist, pCE, this});
    while (!queue.empty())
    {
        const Proposal next = queue.top();
        queue.pop();
        if (!(next.dist < next.pNode->dist))
            continue;
        next.pNode->dist = next.dist;
        next.pNode->pIncomingCE = next.pCE;
        const auto q_it = pmVCD2InnerCEVec->find(next.pNode->vtx);
        ASSEX(q_it != pmVCD2InnerCEVec->end());
        for (CEdge* pInnerCE : q_it->second)
        {
            const double proposed = next.dist + getCost(*pInnerCE, mPos);
            Dijkstra* pNeig = getOrMakeNode(*this, pInnerCE->getOtherVCD(next.pNode->vtx));
            if (proposed < pNeig->dist)
                queue.push({proposed, pInnerCE, pNeig});
        }
    }
}

void Dijkstra::getBackPath(std::vector<CEdge*>& vPath) const
{
    const Dijkstra* pNode = this;
    while (pNode->dist != 0.0)
    {
        ASSEX(pNode->pIncomingCE != nullptr);
        vPath.push_back(pNode->pIncomingCE);
        const auto q_it2 = pmVCD2Dijkstra->find(pNode->pIncomingCE->getOtherVCD(pNode->vtx));
        ASSEX_TEXT(q_it2 != pmVCD2Dijkstra->end(), "q_it2!=mVCD2Dijkstra.end()");
        pNode = q_it2->second.get();
    }
}

} // namespace TARN_ZEF
