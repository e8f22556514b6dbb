#ifndef ZEF_PATCHFLOOD_H
#define ZEF_PATCHFLOOD_H

#include "cmesh/CEdge.h"
#include "cmesh/CPatch.h"
#include "cmesh/CTriangle.h"

#include <set>
#include <vector>

namespace TARN_ZEF
{
// Fills patches from seed triangles, one after the other; its lists serve all of them. A triangle counts as
// visited as soon as it has the patch.
//
// Threads:    none.
// Cost:       linear in the members and their edges; no allocation but for the lists of the patch.
class PatchFlood
{
public:
    using CutSet = std::set<CEdge*, ByCreationCE>;

    // What stops a flood: borders and non-manifold edges, or borders alone; besides the given cuts, which may
    // be null.
    enum class Stops
    {
        BORDERS_AND_NON_MANIFOLD,
        BORDERS
    };

    PatchFlood(Stops stops_, const CutSet* pCuts_)
        : stops(stops_)
        , pCuts(pCuts_)
    {
    }

    // Adds all that the alive seed reaches, depth first. f(pCT, i) for each edge i of degree above 2 at a
    // member.
    template <typename F>
    void fill(CPatch& patch, CTriangle* pSeed, F f)
    {
        vWalls.clear();
        push(patch, pSeed);
        while (!vWorkspace.empty())
        {
            CTriangle* pCurrentCT = vWorkspace.back();
            vWorkspace.pop_back();
            patch.addT(pCurrentCT);
            for (int i = 0; i < 3; ++i)
            {
                CEdge* pCE = pCurrentCT->getCEdge(i);
                ASSEX(pCE != 0);
                if (pCE->isNonManifold())
                    f(pCurrentCT, i);
                if (isWall(pCE))
                {
                    vWalls.push_back(pCE);
                    continue;
                }
                for (CTriangle* pNeigT : pCE->vCT)
                    if (!patch.isMember(pNeigT))
                        push(patch, pNeigT);
            }
        }
        patch.setWalls({vWalls.begin(), vWalls.end()});
    }
    void fill(CPatch& patch, CTriangle* pSeed)
    {
        fill(patch, pSeed, [](const CTriangle*, int) {});
    }

private:
    [[nodiscard]] bool isWall(CEdge* pCE) const
    {
        const int degree = pCE->getDegree();
        if (stops == Stops::BORDERS)
            return degree < 2;
        return degree != 2 || (pCuts != nullptr && pCuts->count(pCE) != 0);
    }
    void push(CPatch& patch, CTriangle* pCT)
    {
        pCT->setPatch(&patch);
        vWorkspace.push_back(pCT);
    }

    Stops stops;
    const CutSet* pCuts;
    std::vector<CTriangle*> vWorkspace;
    std::vector<CEdge*> vWalls; // of the present patch, once for each side that a member has
};

} // namespace TARN_ZEF

#endif
