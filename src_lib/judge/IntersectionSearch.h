#ifndef ZEF_INTERSECTIONSEARCH_H
#define ZEF_INTERSECTIONSEARCH_H

#include "judge/BoxTree.h"
#include "judge/CornerNumbering.h"
#include "judge/LowestPairs.h"
#include "judge/TrianglePair.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace TARN_ZEF
{
// Finds all pairs of triangles that intersect: a tree of boxes around triangles that come in the order of their
// lowest corner numbers, each block of it asked for the boxes that it meets.
//
// Threads:    works on the pool. The result, also of a search that is cut off, is the same for every number of
//             threads.
class IntersectionSearch
{
public:
    // None of the triangles is flat or has a corner that is not finite. Keeps a reference to numbering.
    // vTriangles: for each entry of vCornerNumbers_ the number by which its triangle is told.
    IntersectionSearch(const CornerNumbering& numbering_, const UnitFrame& frame,
                       std::vector<CornerNumbers> vCornerNumbers_, std::vector<std::uint32_t> vTriangles_);

    // maxPlaces: how many pairs are told. Ends after about maxPairs pairs of overlapping boxes.
    void run(std::size_t maxPlaces, std::uint64_t maxPairs);

    [[nodiscard]] std::size_t getNumFound() const { return found.numIntersecting; }
    [[nodiscard]] bool isComplete() const { return bComplete; }
    // The lowest pairs of triangles, the lower one first.
    [[nodiscard]] std::vector<LowestPairs::Pair> getPairs() const { return found.lowest.getSorted(); }

private:
    struct Found
    {
        std::uint64_t numLookedAt = 0;
        std::size_t numIntersecting = 0;
        LowestPairs lowest;
    };

    [[nodiscard]] std::vector<FloatBox> makeBoxes(const UnitFrame& frame) const;
    void searchBlocks(std::size_t from, std::size_t to, std::uint64_t maxPairs, Found& part) const;
    void lookAt(std::size_t i, std::size_t k, Found& part) const;

    const CornerNumbering& numbering;
    ExactSigns signs;
    std::vector<CornerNumbers> vCornerNumbers;
    std::vector<std::uint32_t> vTriangles;
    BoxTree tree;
    Found found;
    bool bComplete = false;
};

} // namespace TARN_ZEF

#endif
