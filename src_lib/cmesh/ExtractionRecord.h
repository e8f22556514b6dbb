#ifndef ZEF_EXTRACTIONRECORD_H
#define ZEF_EXTRACTIONRECORD_H

#include "cmesh/CTriangle.h"

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
// What a mesh remembers of its last extraction, so that another one can come back to it.
//
// Ownership:  refers to triangles of one mesh.
// Invariant:  while known, vKilled holds the triangles of the extraction that have died since, in order of death.
// Threads:    none.
class ExtractionRecord
{
public:
    // Where a mesh of a renewed extraction differs from what it was right before.
    struct Renewed
    {
        std::vector<CTriangle*> vMadeT;     // made anew
        std::vector<CTriangle*> vTakenOutT; // dead; stood in their place
        std::vector<CTriangle*> vRevivedT;  // killed by passes since the extraction before
    };

    // An extraction has ended with so many triangles, numCubeT of them of cubes that are not flat: the first ones.
    void mark(std::size_t numT_, std::size_t numCubeT_, std::size_t numEdgeSlots_)
    {
        numT = numT_;
        numCubeT = numCubeT_;
        numEdgeSlots = numEdgeSlots_;
        vKilled.clear();
        pRenewed.reset();
        ++numExtractions;
    }
    // To be called after mark() for a renewed extraction.
    void setRenewed(Renewed renewed) { pRenewed = std::make_unique<Renewed>(std::move(renewed)); }
    void noteKilled(CTriangle* pCT)
    {
        if (pCT->getNumber() < numT)
            vKilled.push_back(pCT);
    }
    // The mesh is something else from now on. Hands out what has died.
    std::vector<CTriangle*> forget()
    {
        numT = numCubeT = numEdgeSlots = 0;
        return std::exchange(vKilled, {});
    }
    void clear()
    {
        forget();
        pRenewed.reset();
    }

    [[nodiscard]] bool isKnown() const noexcept { return numT > 0; }
    [[nodiscard]] std::size_t getNumT() const noexcept { return numT; }
    [[nodiscard]] std::size_t getNumCubeT() const noexcept { return numCubeT; }
    [[nodiscard]] std::size_t getNumEdgeSlots() const noexcept { return numEdgeSlots; }
    [[nodiscard]] bool hasKilled() const noexcept { return !vKilled.empty(); }
    [[nodiscard]] unsigned int getNumExtractions() const noexcept { return numExtractions; } // ever
    // Null if the last extraction was a whole one. Holds until the next extraction or clear().
    [[nodiscard]] const Renewed* getRenewed() const noexcept { return pRenewed.get(); }

private:
    std::size_t numT = 0; // 0: not known
    std::size_t numCubeT = 0;
    std::size_t numEdgeSlots = 0;
    std::vector<CTriangle*> vKilled;
    unsigned int numExtractions = 0;
    std::unique_ptr<Renewed> pRenewed;
};

} // namespace TARN_ZEF

#endif
